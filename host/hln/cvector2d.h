#pragma once

#include "tovhost_export.h"

namespace hln {

// A two-dimensional vector of the geometry library.
class TOVHOST_EXPORT CVector2d
{
public:
    CVector2d() = default;
    CVector2d(double x, double y)
        : x(x)
        , y(y)
    { }

    // Equal when both coordinates differ by no more than g_DistEpsilon.
    bool isEqual(const CVector2d &other) const;
    bool operator==(const CVector2d &other) const { return x == other.x && y == other.y; }
    bool operator!=(const CVector2d &other) const { return !(*this == other); }

    double x = 0.0;
    double y = 0.0;
};

} // namespace hln
