// Utility-library substitute: bin index on a regular grid (see bins.hpp).
#include "platform/util/bins.hpp"

#include <cmath>

namespace zemath::util {

int nice_bin_index(double value, double start, double width) {
    const double quotient = (value - start) / width;
    if (std::isnan(quotient)) return kNoBin;
    constexpr double int_top = static_cast<double>(std::numeric_limits<int>::max());
    constexpr double int_bottom = -int_top;  // INT_MIN itself is kNoBin
    if (quotient >= int_top) return std::numeric_limits<int>::max();
    if (quotient <= int_bottom) return std::numeric_limits<int>::min() + 1;
    double bin = std::floor(quotient);
    const double upper = bin + 1.0;
    const double scale =
        (std::fabs(value) + std::fabs(start)) / std::fabs(width) + std::fabs(quotient);
    if (upper - quotient <= kBinEdgeUlps * std::numeric_limits<double>::epsilon() * scale)
        bin = upper;
    return static_cast<int>(bin);
}

}  // namespace zemath::util
