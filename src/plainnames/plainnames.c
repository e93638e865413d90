/* The companion library of colliding export names. Each export forwards to its
 * collision-free namesake in zemath. This file never includes the C math headers: an
 * ELF library defining these names would otherwise capture the process's own calls;
 * hosts open this library with RTLD_LOCAL so the real math functions stay untouched. */
#include "zemath/complex.h"
#include "zemath/plainnames.h"
#include "zemath/special.h"

ZEMATH_API double cabs(d_complex z) {
    return cabsz(z);
}
ZEMATH_API d_complex sqrt(d_complex z) {
    return sqrtz(z);
}
ZEMATH_API d_complex log(d_complex z) {
    return logz(z);
}
ZEMATH_API d_complex exp(d_complex z) {
    return expz(z);
}
ZEMATH_API d_complex sin(d_complex z) {
    return sinz(z);
}
ZEMATH_API d_complex cos(d_complex z) {
    return cosz(z);
}
ZEMATH_API d_complex tan(d_complex z) {
    return tanz(z);
}
ZEMATH_API d_complex tanh(d_complex z) {
    return tanhz(z);
}
ZEMATH_API d_complex atan(d_complex z) {
    return atanz(z);
}
ZEMATH_API d_complex atanh(d_complex z) {
    return atanhz(z);
}
ZEMATH_API d_complex cpow(d_complex z, d_complex w) {
    return cpowz(z, w);
}
ZEMATH_API double erf(double x) {
    return erfz(x);
}
ZEMATH_API double erfc(double x) {
    return erfcz(x);
}
ZEMATH_API double gamma(double x) {
    return gammaz(x);
}
