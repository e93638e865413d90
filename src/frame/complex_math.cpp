// Complex functions under their collision-free names. Each guards against the missing
// value before computing anything; NaN is not caught by the guard.
#include "zemath/complex.h"

#include "core/missing.hpp"
#include "platform/nag/a02.hpp"

using namespace zemath;

extern "C" ZEMATH_API double cabsz(d_complex z) noexcept {
    if (is_missing(z.re) || is_missing(z.im)) return kNanum;
    return nag::a02dbc(z.re, z.im);
}
