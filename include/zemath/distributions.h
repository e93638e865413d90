/* zeMath: distributions family. Probabilities (cdf), deviates (inv) and densities (pdf)
 * of the continuous laws (normal, Student's t, chi-square, F, beta, gamma, exponential,
 * Cauchy, Laplace, log-normal, Weibull), their non-central forms, the bivariate normal and
 * the studentized range; the binomial, Poisson and hypergeometric laws; the real Lambert W.
 *
 * Conventions for every function of this header.
 * - Each returns its value as a double and reads only its scalar arguments; nothing is
 *   written but the optional last argument `status` (NULL: not written). Every function is
 *   reentrant and keeps no state.
 * - NANUM: a double argument equal to NANUM (a missing value) is refused with NANUM and
 *   status -110. Every refusal returns NANUM unless the function says otherwise.
 * - Status preset: every function except normpdf, exppdf, cauchypdf, lappdf, lognpdf, the
 *   Weibull functions, binopdf and poisspdf first sets *status to -19 (ZEMATH_ERR_ALLOC)
 *   and overwrites it with the outcome; -19 (with NANUM) would remain only if working
 *   storage could not be allocated, and no function of this header allocates any.
 * - Status codes (numbers and names in status.h):
 *       0     success
 *    -110     ZEMATH_ERR_STATS_INPUT: a missing (NANUM) argument, or one of the checks a
 *             function lists with -110
 *     -19     ZEMATH_ERR_ALLOC: see the preset above
 *       5     REAL_ARG_LT: a real argument below its lower limit
 *       6     REAL_ARG_LE: a real argument at or below a limit it must exceed
 *       7     REAL_ARG_GT: a real argument above its upper limit
 *       8     REAL_ARG_GE: a real argument at or above a limit it must stay below
 *      11     INT_ARG_LT: an integer argument below its lower limit
 *      12     INT_ARG_GT: an integer argument above its upper limit
 *      15     REAL: a NaN argument (lambertW: also an infinite x, see there)
 *      70     BAD_PARAM: a refused tail code
 *     300     CONV: a series, quadrature or root finder did not reach the result (NANUM)
 *     301     PROB_LIMIT: the deviate lies outside the normal double range (p too close
 *             to 0 or 1)
 *     424     ACCURACY_WARNING: the incomplete beta function stopped at its iteration cap
 *             (fcdf returns its value with it; betacdf and betapdf return NANUM)
 *   Each function lists every code it can give besides 0, the -110 of NANUM and the -19
 *   of the preset. 300 and 424 mark iteration caps that the tested parameter ranges
 *   (see Accuracy) do not reach, unless the function names a case.
 * - Check order, the same everywhere; the first failing check decides the status:
 *   (1) a double argument equal to NANUM: -110;
 *   (2) the function's own checks, where it lists -110;
 *   (3) the tail code: 70;
 *   (4) the argument checks, in the order the function lists them under "Codes:"; a code
 *       listed as "NaN 15" there is the NaN test of the arguments named (of all of them
 *       when none is named), made before the range checks that follow it;
 *   (5) the computation: 300, 301, 424.
 * - Infinities: x = +-infinity is accepted where the law is defined on it (a probability 0
 *   or 1, a density 0). An infinite parameter fails the limit it crosses: +infinity the
 *   upper one (7), -infinity the lower one (5 or 6), unless the function says otherwise
 *   (Student's t and the studentized range take df = +infinity as their limit law).
 * - tail: 1 upper P(X > x), 2 lower P(X <= x), 3 two-tailed significance P(|X| >= |x|),
 *   4 two-tailed confidence P(|X| <= |x|); any other value reads as 2, except: 0 means 3 in
 *   normcdf, tcdf, tinv and logncdf (the two-sided choice of the two-sample test) and is
 *   refused elsewhere; 5 is always refused; chi2cdf, fcdf, gamcdf, betacdf and the discrete
 *   cdfs take only 1 and 2. A refused tail gives NANUM with status 70.
 * - Accuracy: within 1e-13 relative error of 50-digit references, both tails down to
 *   1e-300, parameters 1e-3 to 1e6 (log-normal: while |ln x| / sigma stays below 5e4). */

#ifndef ZEMATH_DISTRIBUTIONS_H
#define ZEMATH_DISTRIBUTIONS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Normal, Student's t, chi-square, F, beta, gamma, log-normal, Weibull and the
 *      other densities ----------------------------------------------------------------- */

/* Further rules of this section.
 * - A deviate outside the normal double range gives 301 (betainv instead rounds such a
 *   deviate to 0). Densities are +infinity at a pole (x at 0 with shape < 1), and a
 *   density above the largest double (a scale or shape so small that the peak overflows,
 *   e.g. normpdf(0, 0, 1e-320), or x within a few subnormals of a pole) is returned as
 *   +infinity with status 0, as IEEE arithmetic rounds it; no other value is infinite.
 * - Shape limits: beta a, b <= 1e6 and gaminv's shape <= 1e6; chi-square and F degrees of
 *   freedom and the gamma shape <= 1e10 elsewhere (status 7 above); Student's t needs
 *   df >= 1 (+infinity is the normal law). */

/* Standard normal probability of x for the tail code (tails 0-4).
 * Codes: tail 70; NaN 15. */
ZEMATH_API double normcdf(double x, int tail, int* status) ZEMATH_NOEXCEPT;
/* Standard normal deviate z with P(Z <= z) = p.
 * Codes: NaN 15; p <= 0: 6; p >= 1: 8. */
ZEMATH_API double norminv(double p, int* status) ZEMATH_NOEXCEPT;
/* Normal density with mean mu and standard deviation sigma.
 * Codes: -110 when an argument is NaN, mu is infinite or sigma is not a positive finite
 * number. */
ZEMATH_API double normpdf(double x, double mu, double sigma, int* status) ZEMATH_NOEXCEPT;

/* Student's t probability of t with df >= 1 degrees of freedom (tails 0-4).
 * Codes: tail 70; NaN 15; df < 1: 5; 300. */
ZEMATH_API double tcdf(double t, double df, int tail, int* status) ZEMATH_NOEXCEPT;
/* Student's t deviate for probability p in (0, 1) and df >= 1: P(T <= t) = p (tail 2),
 * P(T >= t) = p (1), P(|T| >= t) = p (3 and 0) or P(|T| <= t) = p (4), t >= 0 for 0, 3, 4.
 * Codes: tail 70; NaN 15; p <= 0: 6; p >= 1: 8; df < 1: 5; 301; 300. */
ZEMATH_API double tinv(double p, double df, int tail, int* status) ZEMATH_NOEXCEPT;

/* Chi-square probability of x >= 0 with df > 0 degrees of freedom (tails 1 and 2).
 * Codes: tail 70; NaN 15; x < 0: 5; df <= 0: 6; df > 1e10: 7; 300. */
ZEMATH_API double chi2cdf(double x, double df, int tail, int* status) ZEMATH_NOEXCEPT;
/* Chi-square deviate x with P(X <= x) = p, 0 <= p < 1, df > 0.
 * Codes: NaN 15; p < 0: 5; p >= 1: 8; df <= 0: 6; df > 1e10: 7; 301; 300. */
ZEMATH_API double chi2inv(double p, double df, int* status) ZEMATH_NOEXCEPT;

/* F probability of f >= 0 with ndf, fdf > 0 degrees of freedom (tails 1 and 2).
 * Codes: tail 70; NaN 15; f < 0: 5; ndf or fdf <= 0: 6; ndf or fdf > 1e10: 7; 424 (reduced
 * accuracy) is a warning: the computed probability is returned with it. */
ZEMATH_API double fcdf(double f, double ndf, double fdf, int tail, int* status) ZEMATH_NOEXCEPT;
/* F deviate f with P(F <= f) = p, 0 <= p < 1, df1, df2 > 0.
 * Codes: NaN 15; p < 0: 5; p >= 1: 8; df1 or df2 <= 0: 6; df1 or df2 > 1e10: 7.
 * Kept deliberately: when the deviate cannot be computed (its solver stops at its cap, or
 * f lies outside the normal double range) the result is Ftable(p, df1, df2) with both
 * truncated to integers (at most INT_MAX), i.e. the UPPER-tail quantile P(F > f) = p, with
 * status 0; NANUM with status 0 when that table value cannot be computed either (a
 * truncated df below 1). */
ZEMATH_API double finv(double p, double df1, double df2, int* status) ZEMATH_NOEXCEPT;

/* Beta probability of x in [0, 1] with shapes a, b in (0, 1e6]: tail 1 upper, 2 lower.
 * Codes: tail 70 (every tail but 1 and 2); NaN 15; x < 0: 5; x > 1: 7; a or b <= 0: 6;
 * a or b > 1e6: 7; 424 (NANUM). */
ZEMATH_API double betacdf(double x, double a, double b, int tail, int* status) ZEMATH_NOEXCEPT;
/* Beta deviate x with I_x(a, b) = p, 0 <= p <= 1; a deviate below the normal double range
 * is returned rounded to 0, not refused.
 * Codes: NaN 15; p < 0: 5; p > 1: 7; a or b <= 0: 6; a or b > 1e6: 7; 300. */
ZEMATH_API double betainv(double p, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Beta density at x in [0, 1].
 * Codes: NaN 15; x < 0: 5; x > 1: 7; a or b <= 0: 6; a or b > 1e6: 7; 424 (NANUM). */
ZEMATH_API double betapdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;

/* Gamma probability of g >= 0, shape a > 0, scale b > 0 (tails 1 and 2).
 * Codes: tail 70; NaN 15; g < 0: 5; a or b <= 0: 6; a > 1e10 or b = +infinity: 7; 300. */
ZEMATH_API double gamcdf(double g, double a, double b, int tail, int* status) ZEMATH_NOEXCEPT;
/* Gamma deviate g with P(G <= g) = p, 0 <= p < 1, shape a in (0, 1e6], scale b > 0.
 * Codes: NaN 15; p < 0: 5; p >= 1: 8; a or b <= 0: 6; a > 1e6 or b = +infinity: 7; 301;
 * 300. */
ZEMATH_API double gaminv(double p, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Gamma density (shape a, scale b); 0 for x < 0.
 * Codes: NaN 15; a or b <= 0: 6; a > 1e10 or b = +infinity: 7; 300. */
ZEMATH_API double gampdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;

/* Exponential density mu exp(-mu x). Kept deliberately: mu is the RATE (1/mean), not the
 * mean, and x < 0 is refused (not given the density 0).
 * Codes: -110 when an argument is NaN, x < 0 or mu is not a positive finite number. */
ZEMATH_API double exppdf(double x, double mu, int* status) ZEMATH_NOEXCEPT;
/* Cauchy density with location a and scale b.
 * Codes: -110 when an argument is NaN, a is infinite or b is not a positive finite
 * number. */
ZEMATH_API double cauchypdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Laplace density exp(-|x - mu| / b) / (2b).
 * Codes: -110 when an argument is NaN, mu is infinite or b is not a positive finite
 * number. */
ZEMATH_API double lappdf(double x, double mu, double b, int* status) ZEMATH_NOEXCEPT;

/* Log-normal density (mu, sigma of log x); x <= 0 is refused, not given the density 0.
 * Codes: -110 when an argument is NaN, x <= 0, mu is infinite or sigma is not a positive
 * finite number. */
ZEMATH_API double lognpdf(double x, double mu, double sigma, int* status) ZEMATH_NOEXCEPT;
/* Log-normal probability: normcdf((ln x - mu) / sigma, tail) (tails 0-4). Callers should
 * pass a status pointer (hosts rely on it; NULL is still safe).
 * Codes: -110 as lognpdf; tail 70. */
ZEMATH_API double logncdf(double x, double mu, double sigma, int tail, int* status) ZEMATH_NOEXCEPT;
/* Log-normal deviate exp(norminv(p) sigma + mu). Callers should pass a status pointer
 * (NULL is still safe).
 * Codes: -110 when an argument is NaN, p is not in (0, 1), mu is infinite, sigma is not a
 * positive finite number, or the result exceeds the double range. */
ZEMATH_API double logninv(double p, double mu, double sigma, int* status) ZEMATH_NOEXCEPT;

/* Weibull density (b/a)(x/a)^(b-1) exp(-(x/a)^b), scale a, shape b; 0 for x < 0 and
 * x = +infinity.
 * Codes, in order: -110 when an argument is NaN; kept deliberately, a <= 0 or b <= 0
 * gives NANUM with status 0; -110 when a or b is +infinity. */
ZEMATH_API double wblpdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Weibull probability 1 - exp(-(x/a)^b) (lower tail); 0 for x <= 0, 1 for x = +infinity.
 * Codes as wblpdf (a <= 0 or b <= 0: NANUM with status 0). */
ZEMATH_API double wblcdf(double x, double a, double b, int* status) ZEMATH_NOEXCEPT;
/* Weibull deviate a (-ln(1 - p))^(1/b).
 * Codes, in order: -110 when an argument is NaN; kept deliberately, a <= 0 or b <= 0
 * gives NANUM with status 0; -110 when a or b is +infinity; kept deliberately, p <= 0 or
 * p >= 1 gives NANUM with status 0; -110 when the result exceeds the double range. */
ZEMATH_API double wblinv(double p, double a, double b, int* status) ZEMATH_NOEXCEPT;

/* ---- Non-central and discrete distributions, bivariate normal, studentized range,
 *      Lambert W --------------------------------------------------------------------- */
/* Further rules of this section: +-infinity in the variable gives the limit 0 or 1; the
 * discrete cdfs take tails 1 and 2 only. The non-central functions check their arguments
 * one at a time, each one's NaN test (15) before its ranges, in the order listed. */

/* Binomial cdf of k successes in n trials with success probability p (0 <= p <= 1;
 * 0 <= k <= n).
 * Codes: tail 70 (every tail but 1 and 2); n < 0: 11; p NaN 15; p < 0: 5; p > 1: 7;
 * k < 0: 11; k > n: 12; 300. */
ZEMATH_API double binocdf(int k, int n, double p, int tail, int* status) ZEMATH_NOEXCEPT;
/* Binomial probability C(nt, x) p^x (1-p)^(nt-x).
 * Codes: -110 when x < 0, x > nt, or p is NaN or outside [0, 1]. */
ZEMATH_API double binopdf(int x, int nt, double p, int* status) ZEMATH_NOEXCEPT;
/* Poisson cdf at k >= 0 with mean lambda > 0.
 * Codes: tail 70 (every tail but 1 and 2); NaN 15; lambda <= 0: 6; lambda = +infinity: 7;
 * k < 0: 11; 300. */
ZEMATH_API double poisscdf(int k, double lambda, int tail, int* status) ZEMATH_NOEXCEPT;
/* Poisson probability lambda^x e^-lambda / x!.
 * Codes: NANUM and -110 when lambda is NaN or infinite; then, deliberately 0.0 (not
 * NANUM) with -110 when x < 0 or lambda <= 0. */
ZEMATH_API double poisspdf(int x, double lambda, int* status) ZEMATH_NOEXCEPT;
/* Hypergeometric cdf: a population of n items of which m are marked, a sample of l items
 * drawn without replacement, k marked items in the sample (note the argument order:
 * count k, marked m, population n, sample l). Needs n >= 0, 0 <= l <= n, 0 <= m <= n and
 * max(0, l - (n - m)) <= k <= min(l, m). No double argument, hence no -110.
 * Codes: tail 70 (every tail but 1 and 2); n < 0: 11; l < 0: 11; l > n: 12; m < 0: 11;
 * m > n: 12; k below max(0, l - (n - m)): 11; k above min(l, m): 12; 300. */
ZEMATH_API double hygecdf(int k, int m, int n, int l, int tail, int* status) ZEMATH_NOEXCEPT;

/* Non-central t lower tail P(T <= t) with df >= 1 degrees of freedom and non-centrality
 * |delta| <= 1e4. Above df = 1e10 the law is taken
 * from its expansion in 1/df, Phi(c) - phi(c) t (1 + c t) / (4 df) with c = t - delta, where
 * t^2 (1 + c^2) <= 1e-7 df (there within 1e-15 of the law), and refused elsewhere. maxiter
 * must be >= 1; the series are always summed to full precision, so maxiter never truncates
 * them.
 * Codes: NaN 15; df < 1: 5; df = +infinity, |delta| > 1e4, or df > 1e10 with
 * t^2 (1 + (t - delta)^2) > 1e-7 df: 7; maxiter < 1: 11; 300. */
ZEMATH_API double nctcdf(double t, double df, double delta, int maxiter,
                         int* status) ZEMATH_NOEXCEPT;
/* Non-central chi-square lower tail at x >= 0 with 0 < f <= 1e10 degrees of freedom (the
 * central law's limit) and non-centrality 0 <= lambda <= 1e9.
 * Codes: x NaN 15, x < 0: 5; f NaN 15, f <= 0: 6, f > 1e10 (+infinity included): 7;
 * lambda NaN 15, lambda < 0: 5, lambda > 1e9: 7; 300 (seen at f = 4.9e-324, the smallest
 * double). */
ZEMATH_API double ncchi2cdf(double x, double f, double lambda, int* status) ZEMATH_NOEXCEPT;
/* Non-central F lower tail at f >= 0 with 0 < df1, df2 <= 2e9 and non-centrality
 * 0 <= lambda <= 1e9, where a df above 2e5 allows lambda up to 1600 only.
 * Codes: f NaN 15, f < 0: 5; then df1, then df2: NaN 15, <= 0: 6, > 2e9 (+infinity
 * included): 7; lambda NaN 15, lambda < 0: 5, lambda > 1e9: 7; lambda > 1600 beside a df
 * above 2e5: 7; 300. */
ZEMATH_API double ncfcdf(double f, double df1, double df2, double lambda,
                         int* status) ZEMATH_NOEXCEPT;
/* Non-central beta lower tail at 0 <= x <= 1 with shapes 0 < a, b <= 1e9 and
 * non-centrality 0 <= lambda <= 1e9, where a shape above 1e5 allows lambda up to 1600 only.
 * Codes: x NaN 15, x < 0: 5, x > 1: 7; then a, then b: NaN 15, <= 0: 6, > 1e9 (+infinity
 * included): 7; lambda NaN 15, lambda < 0: 5, lambda > 1e9: 7; lambda > 1600 beside a shape
 * above 1e5: 7; 300. */
ZEMATH_API double ncbetacdf(double x, double a, double b, double lambda,
                            int* status) ZEMATH_NOEXCEPT;
/* Standard bivariate normal P(X <= x, Y <= y) with correlation corre, |corre| <= 1.
 * Codes: NaN 15; |corre| > 1: 7. */
ZEMATH_API double bivarnormcdf(double x, double y, double corre, int* status) ZEMATH_NOEXCEPT;
/* Studentized range lower tail P(Q <= q) for v >= 1 degrees of freedom and group >= 2
 * groups (the range of group normal means over an independent chi_v / sqrt(v) scale); 0
 * for q <= 0, 1 for q = +infinity; v = +infinity is the limit (the range of group
 * standard normals). Relative accuracy about 1e-14 up to 100 groups; beyond, about 1e-13
 * up to 2^31 - 1 groups, also far in the lower tail (P down to 1e-189 checked).
 * Codes: q NaN 15; v NaN 15; group < 2: 11; v < 1: 5. */
ZEMATH_API double srangecdf(double q, double v, int group, int* status) ZEMATH_NOEXCEPT;
/* Studentized range deviate q with P(Q <= q) = p, 0 < p < 1, v >= 1, ir >= 2 groups. Above
 * p = 1 - 1e-3 the last steps solve on the upper tail 1 - p (exact for a double p > 1/2),
 * integrated directly: relative accuracy of the tail also for p within an ulp of 1 (such
 * calls cost about 1.4 ms at many groups, up to about 3.5). Subnormal p are solved to their own
 * precision.
 * Codes: p NaN 15; v NaN 15; ir < 2: 11; v < 1: 5; p <= 0: 6; p >= 1: 8; 300 when no
 * deviate is found. */
ZEMATH_API double srangeinv(double p, double v, int ir, int* status) ZEMATH_NOEXCEPT;
/* Real Lambert W: w with w e^w = x on branch 0 (principal, w >= -1) or -1 (lower,
 * w <= -1). offset != 0: x is the distance from the branch point, W(-1/e + x), accurate
 * near the branch point.
 * Codes: -110 for a branch other than 0 and -1, then -110 outside the domain: branch 0
 * x < -1/e (offset: x < 0), branch -1 x >= 0 (offset: x >= 1/e); then 15 for NaN,
 * +infinity on branch 0 and -infinity on branch -1; 300. */
ZEMATH_API double lambertW(double x, int branch, int offset, int* status) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_DISTRIBUTIONS_H */
