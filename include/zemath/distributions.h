/* zeMath: distributions family. */
#ifndef ZEMATH_DISTRIBUTIONS_H
#define ZEMATH_DISTRIBUTIONS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Normal, Student's t, chi-square, F, beta, gamma, log-normal, Weibull and the
 *      in-house densities ---------------------------------------------------------- */


/* ---- Non-central and discrete distributions, bivariate normal, studentized range,
 *      Lambert W --------------------------------------------------------------------- */
/* Common rules of this section: each function returns a double and writes its status
 * through the optional last pointer (NULL: not written): 0 on success, a positive
 * back-end error number (status.h, ZEMATH_NAG_*) when the computation is refused or
 * fails, -110 (ZEMATH_ERR_STATS_INPUT) when the function's own check refuses. A failure
 * returns NANUM. A double argument equal to NANUM (a missing value) gives NANUM and -110.
 * NaN arguments give NANUM and ZEMATH_NAG_REAL (15); +-infinity in the variable gives the
 * limit 0 or 1, infinite parameters are refused (ZEMATH_NAG_REAL_ARG_GT, 7).
 * tail: 1 upper P(X > k), 2 lower P(X <= k); every other tail code (0 and 5 included) is
 * refused with NANUM and status 70 (ZEMATH_NAG_BAD_PARAM), for these discrete cdfs.
 * Checks run in this order: tail code, missing values, then the computation's own. */

/* Binomial cdf of k successes in n trials with success probability p (0 <= p <= 1;
 * 0 <= k <= n). Back-end codes: 11 (n or k < 0), 12 (k > n), 5/7 (p < 0 / p > 1). */
ZEMATH_API double binocdf(int k, int n, double p, int tail, int* status);
/* Binomial probability C(nt, x) p^x (1-p)^(nt-x). Needs 0 <= x <= nt and 0 <= p <= 1,
 * else NANUM and -110. */
ZEMATH_API double binopdf(int x, int nt, double p, int* status);
/* Poisson cdf at k (>= 0, else 11) with mean lambda (> 0, else 6; finite, else 7). */
ZEMATH_API double poisscdf(int k, double lambda, int tail, int* status);
/* Poisson probability lambda^x e^-lambda / x!. Deliberately 0.0 (not NANUM) with status
 * -110 for x < 0 or lambda <= 0; NANUM and -110 for NaN, infinite or missing lambda. */
ZEMATH_API double poisspdf(int x, double lambda, int* status);
/* Hypergeometric cdf: a population of n items of which m are marked, a sample of l items
 * drawn without replacement, k marked items in the sample. The arguments keep their names
 * in the back-end call (population n, sample l, marked m, count k). Needs n >= 0,
 * 0 <= l <= n, 0 <= m <= n and max(0, l - (n - m)) <= k <= min(l, m); codes 11 / 12. */
ZEMATH_API double hygecdf(int k, int m, int n, int l, int tail, int* status);

/* Non-central t lower tail P(T <= t) with df >= 1 (else 5) degrees of freedom and
 * non-centrality delta. maxiter must be >= 1 (else 11); the series are always summed to
 * full precision, so maxiter never truncates them. 300: a series did not converge. */
ZEMATH_API double nctcdf(double t, double df, double delta, int maxiter, int* status);
/* Non-central chi-square lower tail at x >= 0 (else 5), f > 0 degrees of freedom (else
 * 6), non-centrality lambda >= 0 (else 5). */
ZEMATH_API double ncchi2cdf(double x, double f, double lambda, int* status);
/* Non-central F lower tail at f >= 0 with df1, df2 > 0 and non-centrality lambda >= 0;
 * codes as ncchi2cdf. */
ZEMATH_API double ncfcdf(double f, double df1, double df2, double lambda, int* status);
/* Non-central beta lower tail at 0 <= x <= 1 (else 5 / 7) with shapes a, b > 0 and
 * non-centrality lambda >= 0. */
ZEMATH_API double ncbetacdf(double x, double a, double b, double lambda, int* status);
/* Standard bivariate normal P(X <= x, Y <= y) with correlation corre, |corre| <= 1
 * (else 7). */
ZEMATH_API double bivarnormcdf(double x, double y, double corre, int* status);
/* Studentized range lower tail P(Q <= q) for v >= 1 (else 5) degrees of freedom and
 * group >= 2 (else 11) groups (the range of group normal means over an independent
 * chi_v / sqrt(v) scale); 0 for q <= 0, 1 for q = +infinity; v = +infinity is the
 * limit (the range of group standard normals). */
ZEMATH_API double srangecdf(double q, double v, int group, int* status);
/* Studentized range deviate q with P(Q <= q) = p, 0 < p < 1 (else 6 / 8), v >= 1,
 * ir >= 2; 300 when no deviate is found. */
ZEMATH_API double srangeinv(double p, double v, int ir, int* status);
/* Real Lambert W: w with w e^w = x on branch 0 (principal, w >= -1) or -1 (lower,
 * w <= -1). offset != 0: x is the distance from the branch point, W(-1/e + x), accurate
 * near the branch point. NANUM and -110 for another branch, or outside the domain: branch
 * 0 x < -1/e (offset: x < 0); branch -1 x >= 0 (offset: x >= 1/e). NaN, and +infinity
 * on branch 0: NANUM and 15. */
ZEMATH_API double lambertW(double x, int branch, int offset, int* status);


ZEMATH_EXTERN_C_END

#endif /* ZEMATH_DISTRIBUTIONS_H */
