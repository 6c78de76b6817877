#include "hyncustomexception.h"

HynCustomException::~HynCustomException() = default;
