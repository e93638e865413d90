/* zeMath: distributions family. */
#ifndef ZEMATH_DISTRIBUTIONS_H
#define ZEMATH_DISTRIBUTIONS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Normal, Student's t, chi-square, F, beta, gamma, log-normal, Weibull and the
 *      in-house densities ---------------------------------------------------------- */


/* ---- Non-central and discrete distributions, bivariate normal, studentized range,
 *      Lambert W --------------------------------------------------------------------- */


ZEMATH_EXTERN_C_END

#endif /* ZEMATH_DISTRIBUTIONS_H */
