#include "tovgraphrevision_p.h"

// Starts above the revision of an image never built.
std::atomic<unsigned long long> TovGraphRevision::s_count { 1 };
