/* zeMath companion library zemath_plain: the exports whose names collide with the C
 * math library, as forwarders to their collision-free namesakes in zemath. Open it with
 * dlopen(..., RTLD_LOCAL) and resolve by name; do not include this header together
 * with <math.h> or <complex.h>. */
#ifndef ZEMATH_PLAINNAMES_H
#define ZEMATH_PLAINNAMES_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Modulus of a d_complex; forwards to cabsz. */
ZEMATH_API double cabs(d_complex z);

/* The error function, its complement and the gamma function of the script table;
 * forward to erfz, erfcz and gammaz (special.h). */
ZEMATH_API double erf(double x);
ZEMATH_API double erfc(double x);
ZEMATH_API double gamma(double x);

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PLAINNAMES_H */
