/* zeMath: distributions family. Probabilities (cdf), deviates (inv) and densities (pdf)
 * of the continuous laws (normal, Student's t, chi-square, F, beta, gamma, exponential,
 * Cauchy, Laplace, log-normal, Weibull), their non-central forms, the bivariate normal and
 * the studentized range; the binomial, Poisson and hypergeometric laws; the real Lambert W.
 *
 * Conventions for every function of this header.
 * - Each returns its value as a double and reads only its scalar arguments; nothing is
 *   written but the optional last argument `status` (NULL: not written). Every function is
 *   reentrant.
 * - status: 0 on success; -110 (ZEMATH_ERR_STATS_INPUT) when an argument is missing or
 *   fails one of the function's own checks; otherwise a positive code of the computing
 *   routine (ZEMATH_NAG_*, status.h): 5 below a lower limit, 6 at or below it, 7 above an
 *   upper limit, 8 at or above it, 11 / 12 an integer below / above its limit, 15 a NaN
 *   argument, 70 a refused tail code, 300 a series or root finder stopped at its cap,
 *   301 a deviate outside the normal double range (p too close to 0 or 1), 422 / 424 as
 *   stated at finv and fcdf, betacdf. A failure returns NANUM unless the function says
 *   otherwise.
 * - Check order, the same everywhere: (1) a double argument equal to NANUM (a missing
 *   value) gives NANUM and -110; (2) the function's own parameter checks (-110), where it
 *   has them; (3) the tail code (70); (4) the computing routine's range checks (positive
 *   codes), NaN before ranges. The first failing check decides the status.
 * - tail: 1 upper P(X > x), 2 lower P(X <= x), 3 two-tailed significance P(|X| >= |x|),
 *   4 two-tailed confidence P(|X| <= |x|); any other value reads as 2, except: 0 means 3 in
 *   normcdf, tcdf, tinv and logncdf (the two-sided choice of the two-sample test) and is
 *   refused elsewhere; 5 is always refused; chi2cdf, fcdf, gamcdf, betacdf and the discrete
 *   cdfs take only 1 and 2. A refused tail gives NANUM with status 70.
 * - NaN arguments give status 15, except in the functions with their own parameter checks
 *   (normpdf, exppdf, cauchypdf, lappdf, the log-normal and Weibull functions), where they
 *   give -110. x = +-infinity is accepted where the law is defined on it (a probability 0
 *   or 1, a density 0); infinite parameters are refused.
 * - Accuracy: within 1e-13 relative error of 50-digit references, both tails down to
 *   1e-300, parameters 1e-3 to 1e6 (log-normal: while |ln x| / sigma stays below 5e4). */

#ifndef ZEMATH_DISTRIBUTIONS_H
#define ZEMATH_DISTRIBUTIONS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Normal, Student's t, chi-square, F, beta, gamma, log-normal, Weibull and the
 *      other densities ----------------------------------------------------------------- */

/* Further rules of this section.
 * - Range failures: 301 for a deviate outside the normal double range (betainv instead
 *   rounds such a deviate to 0). Densities are +infinity at a pole (x at 0 with shape < 1).
 * - Shape limits: beta a, b <= 1e6 and gaminv's shape <= 1e6; chi-square and F degrees of
 *   freedom and the gamma shape <= 1e10 elsewhere (status 7 above); Student's t needs
 *   df >= 1 (+infinity is the normal law). */

/* Standard normal probability of x for the tail code (tails 0-4). */
ZEMATH_API double normcdf(double x, int tail, int* status) ZEMATH_NOEXCEPT;
/* Standard normal deviate z with P(Z <= z) = p; p <= 0 gives status 6, p >= 1 status 8. */
ZEMATH_API double norminv(double p, int* status) ZEMATH_NOEXCEPT;
/* Normal density with mean mu and standard deviation sigma; sigma <= 0 gives -110. */
ZEMATH_API double normpdf(double x, double mu, double sigma, int* status) ZEMATH_NOEXCEPT;

/* Student's t probability of t with df >= 1 degrees of freedom (tails 0-4; df < 1: 5). */
ZEMATH_API double tcdf(double t, double df, int tail, int* status) ZEMATH_NOEXCEPT;
/* Student's t deviate for probability p in (0, 1) and df >= 1: P(T <= t) = p (tail 2),
 * P(T >= t) = p (1), P(|T| >= t) = p (3 and 0) or P(|T| <= t) = p (4), t >= 0 for 0, 3, 4. */
ZEMATH_API double tinv(double p, double df, int tail, int* status) ZEMATH_NOEXCEPT;

/* Chi-square probability of x >= 0 with df > 0 degrees of freedom (tails 1 and 2). */
ZEMATH_API double chi2cdf(double x, double df, int tail, int* status) ZEMATH_NOEXCEPT;
/* Chi-square deviate x with P(X <= x) = p, 0 <= p < 1, df > 0. */
ZEMATH_API double chi2inv(double p, double df, int* status) ZEMATH_NOEXCEPT;

/* F probability of f >= 0 with ndf, fdf > 0 degrees of freedom (tails 1 and 2). Status 424
 * (reduced accuracy) is a warning: the computed probability is returned with it. */
ZEMATH_API double fcdf(double f, double ndf, double fdf, int tail, int* status) ZEMATH_NOEXCEPT;
/* F deviate f with P(F <= f) = p, 0 <= p < 1, df1, df2 > 0. Kept deliberately: when the
 * routine fails with 422 (its solver stops, or f lies outside the normal double range) the
 * result is Ftable(p, df1, df2) with both truncated to integers (at most INT_MAX), i.e. the
 * UPPER-tail quantile P(F > f) = p, with status 0; NANUM with status 0 when that table
 * value cannot be computed either (a truncated df below 1). */
ZEMATH_API double finv(double p, double df1, double df2, int* status) ZEMATH_NOEXCEPT;

/* Beta probability of x in [0, 1] with shapes a, b in (0, 1e6]: tail 1 upper, 2 lower,
 * every other tail refused with 70. */
ZEMATH_API double betacdf(double x, double a, double b, int tail, int* status) ZEMATH_NOEXCEPT;
/* Beta deviate x with I_x(a, b) = p, 0 <= p <= 1. */
ZEMATH_API double betainv(double p, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Beta density at x in [0, 1]. */
ZEMATH_API double betapdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;

/* Gamma probability of g >= 0, shape a > 0, scale b > 0 (tails 1 and 2). */
ZEMATH_API double gamcdf(double g, double a, double b, int tail, int* status) ZEMATH_NOEXCEPT;
/* Gamma deviate g with P(G <= g) = p, 0 <= p < 1, shape a in (0, 1e6], scale b > 0. */
ZEMATH_API double gaminv(double p, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Gamma density (shape a, scale b); 0 for x < 0. */
ZEMATH_API double gampdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;

/* Exponential density mu exp(-mu x). Kept deliberately: mu is the RATE (1/mean), not the
 * mean. x < 0 or mu <= 0 gives -110 (not the density 0). */
ZEMATH_API double exppdf(double x, double mu, int* status) ZEMATH_NOEXCEPT;
/* Cauchy density with location a and scale b; b <= 0 gives -110. */
ZEMATH_API double cauchypdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Laplace density exp(-|x - mu| / b) / (2b); b <= 0 gives -110. */
ZEMATH_API double lappdf(double x, double mu, double b, int* status) ZEMATH_NOEXCEPT;

/* Log-normal density (mu, sigma of log x); needs x > 0 and sigma > 0, else -110 (x <= 0 is
 * refused, not given the density 0). */
ZEMATH_API double lognpdf(double x, double mu, double sigma, int* status) ZEMATH_NOEXCEPT;
/* Log-normal probability: normcdf((ln x - mu) / sigma, tail); needs x > 0 and sigma > 0,
 * else -110. Callers should pass a status pointer (hosts rely on it; NULL is still safe). */
ZEMATH_API double logncdf(double x, double mu, double sigma, int tail, int* status) ZEMATH_NOEXCEPT;
/* Log-normal deviate exp(norminv(p) sigma + mu); needs 0 < p < 1 and sigma > 0, else -110
 * (also when the result exceeds the double range). Callers should pass a status pointer
 * (NULL is still safe). */
ZEMATH_API double logninv(double p, double mu, double sigma, int* status) ZEMATH_NOEXCEPT;

/* Weibull density (b/a)(x/a)^(b-1) exp(-(x/a)^b), scale a, shape b. Kept deliberately:
 * a <= 0 or b <= 0 gives NANUM with status 0, and x < 0 gives 0. */
ZEMATH_API double wblpdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Weibull probability 1 - exp(-(x/a)^b) (lower tail); a <= 0 or b <= 0: NANUM with status
 * 0; x < 0: 0. */
ZEMATH_API double wblcdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Weibull deviate a (-ln(1 - p))^(1/b). Kept deliberately: a <= 0, b <= 0, p <= 0 or
 * p >= 1 give NANUM with status 0; a result beyond the double range gives -110. */
ZEMATH_API double wblinv(double p, double a, double b, int* status) ZEMATH_NOEXCEPT;

/* ---- Non-central and discrete distributions, bivariate normal, studentized range,
 *      Lambert W --------------------------------------------------------------------- */
/* Further rules of this section: +-infinity in the variable gives the limit 0 or 1,
 * infinite parameters are refused with 7; the discrete cdfs take tails 1 and 2 only. */

/* Binomial cdf of k successes in n trials with success probability p (0 <= p <= 1;
 * 0 <= k <= n). Codes: 11 (n or k < 0), 12 (k > n), 5/7 (p < 0 / p > 1). */
ZEMATH_API double binocdf(int k, int n, double p, int tail, int* status) ZEMATH_NOEXCEPT;
/* Binomial probability C(nt, x) p^x (1-p)^(nt-x). Needs 0 <= x <= nt and 0 <= p <= 1,
 * else NANUM and -110. */
ZEMATH_API double binopdf(int x, int nt, double p, int* status) ZEMATH_NOEXCEPT;
/* Poisson cdf at k (>= 0, else 11) with mean lambda (> 0, else 6; finite, else 7). */
ZEMATH_API double poisscdf(int k, double lambda, int tail, int* status) ZEMATH_NOEXCEPT;
/* Poisson probability lambda^x e^-lambda / x!. Deliberately 0.0 (not NANUM) with status
 * -110 for x < 0 or lambda <= 0; NANUM and -110 for NaN, infinite or missing lambda. */
ZEMATH_API double poisspdf(int x, double lambda, int* status) ZEMATH_NOEXCEPT;
/* Hypergeometric cdf: a population of n items of which m are marked, a sample of l items
 * drawn without replacement, k marked items in the sample (note the argument order:
 * count k, marked m, population n, sample l). Needs n >= 0,
 * 0 <= l <= n, 0 <= m <= n and max(0, l - (n - m)) <= k <= min(l, m); codes 11 / 12. */
ZEMATH_API double hygecdf(int k, int m, int n, int l, int tail, int* status) ZEMATH_NOEXCEPT;

/* Non-central t lower tail P(T <= t) with df >= 1 (else 5) degrees of freedom and
 * non-centrality |delta| <= 1e4 (else 7: the series' length grows with delta). maxiter
 * must be >= 1 (else 11); the series are always summed to full precision, so maxiter
 * never truncates them. 300: a series did not converge. */
ZEMATH_API double nctcdf(double t, double df, double delta, int maxiter,
                         int* status) ZEMATH_NOEXCEPT;
/* Non-central chi-square lower tail at x >= 0 (else 5), f > 0 degrees of freedom (else
 * 6), non-centrality 0 <= lambda <= 1e9 (else 5 / 7). */
ZEMATH_API double ncchi2cdf(double x, double f, double lambda, int* status) ZEMATH_NOEXCEPT;
/* Non-central F lower tail at f >= 0 with df1, df2 > 0 and non-centrality
 * 0 <= lambda <= 1e9; codes as ncchi2cdf. */
ZEMATH_API double ncfcdf(double f, double df1, double df2, double lambda,
                         int* status) ZEMATH_NOEXCEPT;
/* Non-central beta lower tail at 0 <= x <= 1 (else 5 / 7) with shapes a, b > 0 and
 * non-centrality 0 <= lambda <= 1e9 (else 5 / 7). */
ZEMATH_API double ncbetacdf(double x, double a, double b, double lambda,
                            int* status) ZEMATH_NOEXCEPT;
/* Standard bivariate normal P(X <= x, Y <= y) with correlation corre, |corre| <= 1
 * (else 7). */
ZEMATH_API double bivarnormcdf(double x, double y, double corre, int* status) ZEMATH_NOEXCEPT;
/* Studentized range lower tail P(Q <= q) for v >= 1 (else 5) degrees of freedom and
 * group >= 2 (else 11) groups (the range of group normal means over an independent
 * chi_v / sqrt(v) scale); 0 for q <= 0, 1 for q = +infinity; v = +infinity is the
 * limit (the range of group standard normals). */
ZEMATH_API double srangecdf(double q, double v, int group, int* status) ZEMATH_NOEXCEPT;
/* Studentized range deviate q with P(Q <= q) = p, 0 < p < 1 (else 6 / 8), v >= 1,
 * ir >= 2; 300 when no deviate is found. */
ZEMATH_API double srangeinv(double p, double v, int ir, int* status) ZEMATH_NOEXCEPT;
/* Real Lambert W: w with w e^w = x on branch 0 (principal, w >= -1) or -1 (lower,
 * w <= -1). offset != 0: x is the distance from the branch point, W(-1/e + x), accurate
 * near the branch point. NANUM and -110 for another branch, or outside the domain: branch
 * 0 x < -1/e (offset: x < 0); branch -1 x >= 0 (offset: x >= 1/e). NaN, and +infinity
 * on branch 0: NANUM and 15. */
ZEMATH_API double lambertW(double x, int branch, int offset, int* status) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_DISTRIBUTIONS_H */
