// a02: complex arithmetic. The modulus uses hypot, which scales internally so that
// |z| neither overflows nor underflows when it is representable.
#include "platform/nag/a02.hpp"

#include <cmath>

namespace zemath::nag {

double a02dbc(double re, double im) noexcept {
    return std::hypot(re, im);
}

}  // namespace zemath::nag
