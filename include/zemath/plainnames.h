/* zeMath companion library zemath_plain: the exports whose names collide with the C
 * math library, as forwarders to their collision-free namesakes in zemath (complex.h
 * documents each). The plain names are the complex functions, not the real ones: kept
 * deliberately, hosts resolve these names and expect the complex results. Open the
 * library with dlopen(..., RTLD_LOCAL) and resolve by name; do not include this header
 * together with <math.h> or <complex.h>. */
#ifndef ZEMATH_PLAINNAMES_H
#define ZEMATH_PLAINNAMES_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

ZEMATH_API double cabs(d_complex z) ZEMATH_NOEXCEPT;                 /* cabsz */
ZEMATH_API d_complex sqrt(d_complex z) ZEMATH_NOEXCEPT;              /* sqrtz */
ZEMATH_API d_complex log(d_complex z) ZEMATH_NOEXCEPT;               /* logz */
ZEMATH_API d_complex exp(d_complex z) ZEMATH_NOEXCEPT;               /* expz */
ZEMATH_API d_complex sin(d_complex z) ZEMATH_NOEXCEPT;               /* sinz */
ZEMATH_API d_complex cos(d_complex z) ZEMATH_NOEXCEPT;               /* cosz */
ZEMATH_API d_complex tan(d_complex z) ZEMATH_NOEXCEPT;               /* tanz */
ZEMATH_API d_complex tanh(d_complex z) ZEMATH_NOEXCEPT;              /* tanhz */
ZEMATH_API d_complex atan(d_complex z) ZEMATH_NOEXCEPT;              /* atanz */
ZEMATH_API d_complex atanh(d_complex z) ZEMATH_NOEXCEPT;             /* atanhz */
ZEMATH_API d_complex cpow(d_complex z, d_complex w) ZEMATH_NOEXCEPT; /* cpowz */

/* The error function, its complement and the gamma function of the script table;
 * forward to erfz, erfcz and gammaz (special.h). */
ZEMATH_API double erf(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double erfc(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double gamma(double x) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PLAINNAMES_H */
