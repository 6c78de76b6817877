#include "cvector2d.h"

#include "hlnglobals.h"

#include <cmath>

namespace hln {

bool CVector2d::isEqual(const CVector2d &other) const
{
    return std::fabs(x - other.x) <= g_DistEpsilon && std::fabs(y - other.y) <= g_DistEpsilon;
}

} // namespace hln
