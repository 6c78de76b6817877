#include "hlnglobals.h"

namespace hln {

const double g_DistEpsilon = 1e-6;

} // namespace hln
