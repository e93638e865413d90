/* The companion library of colliding export names. Each export forwards to its
 * collision-free namesake in zemath. This file never includes the C math headers: an
 * ELF library defining these names would otherwise capture the process's own calls;
 * hosts open this library with RTLD_LOCAL so the real math functions stay untouched. */
#include "zemath/complex.h"
#include "zemath/plainnames.h"
#include "zemath/special.h"

ZEMATH_API double cabs(d_complex z) { return cabsz(z); }
ZEMATH_API double erf(double x) { return erfz(x); }
ZEMATH_API double erfc(double x) { return erfcz(x); }
ZEMATH_API double gamma(double x) { return gammaz(x); }
