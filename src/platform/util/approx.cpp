// Utility-library substitute: tolerant comparison of doubles (see approx.hpp).
#include "platform/util/approx.hpp"

#include <algorithm>
#include <cmath>

namespace zemath::util {

bool approx_equal(double a, double b, double relative_tolerance, double absolute_floor) {
    if (a == b) return true;
    const double difference = std::fabs(a - b);  // inf - inf and NaN give NaN: not equal
    const double allowed =
        std::max(relative_tolerance * std::max(std::fabs(a), std::fabs(b)), absolute_floor);
    return difference <= allowed && std::isfinite(difference);
}

int approx_compare(double a, double b, double relative_tolerance, double absolute_floor) {
    const bool a_nan = std::isnan(a), b_nan = std::isnan(b);
    if (a_nan || b_nan) return a_nan == b_nan ? 0 : (a_nan ? 1 : -1);
    if (approx_equal(a, b, relative_tolerance, absolute_floor)) return 0;
    return a < b ? -1 : 1;
}

}  // namespace zemath::util
