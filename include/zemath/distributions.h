/* zeMath: distributions family. */
#ifndef ZEMATH_DISTRIBUTIONS_H
#define ZEMATH_DISTRIBUTIONS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Normal, Student's t, chi-square, F, beta, gamma, log-normal, Weibull and the
 *      in-house densities ---------------------------------------------------------- */

/* Conventions of the functions of this section.
 * - Each returns its value as a double. The last argument `status` is optional (may be
 *   NULL); when given it always receives 0 on success, a positive back-end code
 *   (ZEMATH_NAG_*, status.h) when the computing routine fails, or -110
 *   (ZEMATH_ERR_STATS_INPUT) when one of this library's own checks fails. A failure returns
 *   NANUM unless the function says otherwise. Nothing else is written.
 * - tail: 1 upper P(X > x), 2 lower P(X <= x), 3 two-tailed significance P(|X| >= |x|),
 *   4 two-tailed confidence P(|X| <= |x|); any other value reads as 2, except:
 *   0 means 3 in normcdf, tcdf, tinv and logncdf (the two-sided choice of the two-sample
 *   test) and is refused elsewhere; 5 is always refused; chi2cdf, fcdf, gamcdf and betacdf
 *   take only 1 and 2. A refused tail gives NANUM with status 70 (ZEMATH_NAG_BAD_PARAM).
 * - An argument equal to NANUM is a missing value: NANUM, status -110, checked first.
 *   A NaN argument gives status 15 (ZEMATH_NAG_REAL) in the functions computed by the
 *   back end and -110 in the in-house ones (normpdf, exppdf, cauchypdf, lappdf, the
 *   log-normal and Weibull functions). x = +-infinity is accepted where the law is
 *   defined on it (a probability 0 or 1, a density 0); infinite parameters are refused.
 * - Back-end range failures: 5 below a lower limit, 6 at or below it, 7 above an upper
 *   limit, 8 at or above it; 301 a deviate outside the normal double range (p too close to
 *   0 or 1; betainv instead rounds such a deviate to 0); 300 a series or root finder
 *   stopped at its cap. Densities are +infinity at a pole (x at 0 with shape < 1).
 * - Shape limits: beta a, b <= 1e6 and gaminv's shape <= 1e6; chi-square and F degrees of
 *   freedom and the gamma shape <= 1e10 elsewhere (status 7 above); Student's t needs
 *   df >= 1 (+infinity is the normal law).
 * - Check order: missing values, the in-house parameter checks, the tail, the back end's
 *   checks. Accuracy: within 1e-13 relative error of 50-digit references, both tails down
 *   to 1e-300, parameters 1e-3 to 1e6 (log-normal: while |ln x| / sigma stays below 5e4). */

/* Standard normal probability of x for the tail code (tails 0-4). */
ZEMATH_API double normcdf(double x, int tail, int* status);
/* Standard normal deviate z with P(Z <= z) = p; p <= 0 gives status 6, p >= 1 status 8. */
ZEMATH_API double norminv(double p, int* status);
/* Normal density with mean mu and standard deviation sigma; sigma <= 0 gives -110. */
ZEMATH_API double normpdf(double x, double mu, double sigma, int* status);

/* Student's t probability of t with df >= 1 degrees of freedom (tails 0-4; df < 1: 5). */
ZEMATH_API double tcdf(double t, double df, int tail, int* status);
/* Student's t deviate for probability p in (0, 1) and df >= 1: P(T <= t) = p (tail 2),
 * P(T >= t) = p (1), P(|T| >= t) = p (3 and 0) or P(|T| <= t) = p (4), t >= 0 for 0, 3, 4. */
ZEMATH_API double tinv(double p, double df, int tail, int* status);

/* Chi-square probability of x >= 0 with df > 0 degrees of freedom (tails 1 and 2). */
ZEMATH_API double chi2cdf(double x, double df, int tail, int* status);
/* Chi-square deviate x with P(X <= x) = p, 0 <= p < 1, df > 0. */
ZEMATH_API double chi2inv(double p, double df, int* status);

/* F probability of f >= 0 with ndf, fdf > 0 degrees of freedom (tails 1 and 2). Status 424
 * (reduced accuracy) is a warning: the computed probability is returned with it. */
ZEMATH_API double fcdf(double f, double ndf, double fdf, int tail, int* status);
/* F deviate f with P(F <= f) = p, 0 <= p < 1, df1, df2 > 0. Kept deliberately: when the
 * routine fails with 422 (its solver stops, or f lies outside the normal double range) the
 * result is Ftable(p, df1, df2) with both truncated to integers (at most INT_MAX), i.e. the
 * UPPER-tail quantile P(F > f) = p, with status 0; NANUM with status 0 when that table
 * value cannot be computed either (a truncated df below 1). */
ZEMATH_API double finv(double p, double df1, double df2, int* status);

/* Beta probability of x in [0, 1] with shapes a, b in (0, 1e6]: tail 1 upper, 2 lower,
 * every other tail refused with 70. */
ZEMATH_API double betacdf(double x, double a, double b, int tail, int* status);
/* Beta deviate x with I_x(a, b) = p, 0 <= p <= 1. */
ZEMATH_API double betainv(double p, double a, double b, int* status);
/* Beta density at x in [0, 1]. */
ZEMATH_API double betapdf(double x, double a, double b, int* status);

/* Gamma probability of g >= 0, shape a > 0, scale b > 0 (tails 1 and 2). */
ZEMATH_API double gamcdf(double g, double a, double b, int tail, int* status);
/* Gamma deviate g with P(G <= g) = p, 0 <= p < 1, shape a in (0, 1e6], scale b > 0. */
ZEMATH_API double gaminv(double p, double a, double b, int* status);
/* Gamma density (shape a, scale b); 0 for x < 0. */
ZEMATH_API double gampdf(double x, double a, double b, int* status);

/* Exponential density mu exp(-mu x). Kept deliberately: mu is the RATE (1/mean), not the
 * mean. x < 0 or mu <= 0 gives -110 (not the density 0). */
ZEMATH_API double exppdf(double x, double mu, int* status);
/* Cauchy density with location a and scale b; b <= 0 gives -110. */
ZEMATH_API double cauchypdf(double x, double a, double b, int* status);
/* Laplace density exp(-|x - mu| / b) / (2b); b <= 0 gives -110. */
ZEMATH_API double lappdf(double x, double mu, double b, int* status);

/* Log-normal density (mu, sigma of log x); needs x > 0 and sigma > 0, else -110 (x <= 0 is
 * refused, not given the density 0). */
ZEMATH_API double lognpdf(double x, double mu, double sigma, int* status);
/* Log-normal probability: normcdf((ln x - mu) / sigma, tail); needs x > 0 and sigma > 0,
 * else -110. Callers should pass a status pointer (hosts rely on it; NULL is still safe). */
ZEMATH_API double logncdf(double x, double mu, double sigma, int tail, int* status);
/* Log-normal deviate exp(norminv(p) sigma + mu); needs 0 < p < 1 and sigma > 0, else -110
 * (also when the result exceeds the double range). Callers should pass a status pointer
 * (NULL is still safe). */
ZEMATH_API double logninv(double p, double mu, double sigma, int* status);

/* Weibull density (b/a)(x/a)^(b-1) exp(-(x/a)^b), scale a, shape b. Kept deliberately:
 * a <= 0 or b <= 0 gives NANUM with status 0, and x < 0 gives 0. */
ZEMATH_API double wblpdf(double x, double a, double b, int* status);
/* Weibull probability 1 - exp(-(x/a)^b) (lower tail); a <= 0 or b <= 0: NANUM with status
 * 0; x < 0: 0. */
ZEMATH_API double wblcdf(double x, double a, double b, int* status);
/* Weibull deviate a (-ln(1 - p))^(1/b). Kept deliberately: a <= 0, b <= 0, p <= 0 or
 * p >= 1 give NANUM with status 0; a result beyond the double range gives -110. */
ZEMATH_API double wblinv(double p, double a, double b, int* status);


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
 * non-centrality |delta| <= 1e4 (else 7: the series' length grows with delta). maxiter
 * must be >= 1 (else 11); the series are always summed to full precision, so maxiter
 * never truncates them. 300: a series did not converge. */
ZEMATH_API double nctcdf(double t, double df, double delta, int maxiter, int* status);
/* Non-central chi-square lower tail at x >= 0 (else 5), f > 0 degrees of freedom (else
 * 6), non-centrality 0 <= lambda <= 1e9 (else 5 / 7). */
ZEMATH_API double ncchi2cdf(double x, double f, double lambda, int* status);
/* Non-central F lower tail at f >= 0 with df1, df2 > 0 and non-centrality
 * 0 <= lambda <= 1e9; codes as ncchi2cdf. */
ZEMATH_API double ncfcdf(double f, double df1, double df2, double lambda, int* status);
/* Non-central beta lower tail at 0 <= x <= 1 (else 5 / 7) with shapes a, b > 0 and
 * non-centrality 0 <= lambda <= 1e9 (else 5 / 7). */
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
