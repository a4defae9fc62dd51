#pragma once

#include <cmath>

/// Nearest whole number, ties to even: every rounding and conversion to an integer in this program.
inline int roundToInt(double value)
{
    return static_cast<int>(std::nearbyint(value));
}
