#pragma once

#include "tovhost_export.h"

namespace hln {

// The geometry library's global distance tolerance.
extern TOVHOST_EXPORT const double g_DistEpsilon;

} // namespace hln
