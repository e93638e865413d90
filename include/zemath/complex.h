/* zeMath: complex functions of one d_complex argument (passed and returned by value),
 * and three complex powers. libzemath exports them under collision-free names (ending
 * in z, plus ipow and rpow); the companion library zemath_plain exports the same
 * functions under the plain names (atan, cabs, sin, ..., cpow; see plainnames.h).
 *
 * Every function first checks its arguments for the missing value: when the real or the
 * imaginary part of any argument equals NANUM the result is NANUM in both parts (cabsz:
 * NANUM) and nothing is computed. NaN is not caught by this check and propagates.
 * No function reports a status; a pole gives NANUM in both parts (atanz, atanhz, tanz,
 * tanhz as documented below) or the IEEE result (+-inf or NaN) for the others.
 * Branch cuts are the principal ones (arg in (-pi, pi]); for sqrtz, logz and the powers
 * a signed zero imaginary part selects the side of a cut. atanz and atanhz (closed form,
 * below) give one value on their cuts whatever the sign of the zero. */
#ifndef ZEMATH_COMPLEX_H
#define ZEMATH_COMPLEX_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Modulus |z|, computed without intermediate overflow. */
ZEMATH_API double cabsz(d_complex z) ZEMATH_NOEXCEPT;

/* Principal square root (real part >= 0). */
ZEMATH_API d_complex sqrtz(d_complex z) ZEMATH_NOEXCEPT;

/* z to the integer power n, by binary powering (z^0 = 1; 0 to a negative power gives
 * the IEEE result of 1/0). NANUM when a part of z is NANUM. */
ZEMATH_API d_complex ipow(d_complex z, int n) ZEMATH_NOEXCEPT;

/* z to the real power r, principal value |z|^r e^(i r arg z); 0^r is 0 for r > 0, 1 for
 * r = 0 and +inf for r < 0. NANUM when a part of z or r is NANUM. */
ZEMATH_API d_complex rpow(d_complex z, double r) ZEMATH_NOEXCEPT;

/* z to the complex power w, principal value exp(w log z); 0^w is 0 when Re w > 0, 1 when
 * w = 0, NaN otherwise. NANUM when a part of z or w is NANUM. */
ZEMATH_API d_complex cpowz(d_complex z, d_complex w) ZEMATH_NOEXCEPT;

/* Principal natural logarithm (imaginary part in (-pi, pi]); log 0 = -inf. */
ZEMATH_API d_complex logz(d_complex z) ZEMATH_NOEXCEPT;

/* Exponential, sine and cosine. */
ZEMATH_API d_complex expz(d_complex z) ZEMATH_NOEXCEPT;
ZEMATH_API d_complex sinz(d_complex z) ZEMATH_NOEXCEPT;
ZEMATH_API d_complex cosz(d_complex z) ZEMATH_NOEXCEPT;

/* Tangent; NANUM in both parts when |cos z| is exactly 0. */
ZEMATH_API d_complex tanz(d_complex z) ZEMATH_NOEXCEPT;

/* Hyperbolic tangent; NANUM in both parts when either part of the result is infinite or
 * NaN (so also for a NaN or infinite argument that gives one). */
ZEMATH_API d_complex tanhz(d_complex z) ZEMATH_NOEXCEPT;

/* Arctangent in closed form, 0.5 i (log|z + i| - log|z - i|) with the real part from the
 * two angles folded into [-pi/2, pi/2]: principal branch (cuts on the imaginary axis
 * beyond +-i). NANUM in both parts at the poles z = i and z = -i. The real-part
 * difference of logarithms cancels near the real axis: the imaginary part there has an
 * absolute, not relative, error of a few ulps. On the cut itself (x = +-0, |y| > 1) the
 * real part is -pi/2 for both signs of zero. Infinite parts give NaN. */
ZEMATH_API d_complex atanz(d_complex z) ZEMATH_NOEXCEPT;

/* Inverse hyperbolic tangent in the same closed form, 0.5 (log|1 + z| - log|1 - z|) +
 * 0.5 i (angle difference folded into [-pi/2, pi/2]): principal branch (cuts on the real
 * axis beyond +-1). NANUM in both parts at z = 1 and z = -1. Near the imaginary axis the
 * real part has an absolute error of a few ulps. On the cut itself (y = +-0, |x| > 1)
 * the imaginary part is +pi/2 for both signs of zero. Infinite parts give NaN. */
ZEMATH_API d_complex atanhz(d_complex z) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_COMPLEX_H */
