/* zeMath: random family. Random samples from the common distributions, filled into
 * a caller's array.
 *
 * Every function sets up a fresh generator state seeded from the system's entropy
 * source and the clock, draws from it and discards it: two calls never continue one
 * stream, and results cannot be reproduced by seeding (by design). The functions are
 * reentrant and keep no state.
 *
 * Arguments: the output array, the count n, then the distribution parameters. The
 * output must hold n values (mvnrnd: samples * dimension). Parameters mean what the
 * generator behind each function means by them; several differ from the textbook or
 * from the density functions of distributions.h, as noted per function.
 *
 * Samples beyond the double range: parameters whose law reaches past +-DBL_MAX (lognrnd
 * with mu above about 709.8, exprnd or caurnd with a scale near DBL_MAX, wblrnd with a very
 * small shape, gamrnd with a shape near DBL_MAX) give +-infinity for the samples that lie
 * there, with status 0, as IEEE arithmetic rounds them; no sample is ever NaN.
 *
 * Status codes (a refused call writes nothing):
 *     0     success: out[0..n-1] written
 *   -151    out is NULL, or n <= 0 (a negative count is refused like 0), or a parameter
 *           is NaN, infinite or NANUM, or a required table pointer is NULL
 *   -19     working storage could not be allocated (disrnd, mvnrnd, permrnd)
 *   > 0     the generator refused its parameters (numbers in status.h):
 *           5 (REAL_ARG_LT) a parameter below its lower limit (variance < 0, p < 0)
 *           6 (REAL_ARG_LE) a parameter that must be positive is not
 *           7 (REAL_ARG_GT) a parameter above its upper limit (p > 1, lambda too large)
 *           11 (INT_ARG_LT) an integer parameter below its lower limit (df < 1)
 *           12 (INT_ARG_GT) an integer parameter above its upper limit
 *           15 (REAL) a relation between real parameters fails (a > b, a table that does
 *              not sum to 1, a covariance not symmetric or not positive semi-definite)
 *           16 (INT) a relation between integer parameters fails (lowest > highest,
 *              sample > population)
 *           17 (REAL_ARG_TOO_SMALL) p so small that the counts could overflow an int
 */
#ifndef ZEMATH_RANDOM_H
#define ZEMATH_RANDOM_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Continuous distributions: out receives n doubles ---------------------------- */

/* Normal with the given mean and VARIANCE (the second parameter is not the standard
 * deviation). variance >= 0 (else 5); variance 0 gives the mean. */
ZEMATH_API int normrnd(double* out, int n, double mean, double variance) ZEMATH_NOEXCEPT;

/* Uniform on [a, b]; a <= b (else 15), a = b gives a. */
ZEMATH_API int unifrnd(double* out, int n, double a, double b) ZEMATH_NOEXCEPT;

/* Exponential with the given MEAN > 0 (else 6): density (1/mean) e^(-x/mean). Note
 * that exppdf takes a rate instead, deliberately. */
ZEMATH_API int exprnd(double* out, int n, double mean) ZEMATH_NOEXCEPT;

/* Beta(a, b), a > 0 and b > 0 (else 6). Shapes below about 0.01 put much of the mass
 * within rounding of 0 or 1; such samples come out as exactly 0 or 1. */
ZEMATH_API int betarnd(double* out, int n, double a, double b) ZEMATH_NOEXCEPT;

/* Gamma with shape a > 0 and scale b > 0 (else 6): density x^(a-1) e^(-x/b) / (b^a G(a)).
 * Shapes below about 0.01 put much of the mass below the smallest double; such samples
 * come out as 0. */
ZEMATH_API int gamrnd(double* out, int n, double a, double b) ZEMATH_NOEXCEPT;

/* Chi-square with df >= 1 degrees of freedom (else 11). */
ZEMATH_API int chi2rnd(double* out, int n, int df) ZEMATH_NOEXCEPT;

/* Student's t with df >= 1 degrees of freedom (else 11). */
ZEMATH_API int trnd(double* out, int n, int df) ZEMATH_NOEXCEPT;

/* F with df1 >= 1 and df2 >= 1 degrees of freedom (else 11). */
ZEMATH_API int frnd(double* out, int n, int df1, int df2) ZEMATH_NOEXCEPT;

/* Cauchy with the given median and semi-interquartile range (the scale) >= 0 (else 5);
 * a range of 0 gives the median. */
ZEMATH_API int caurnd(double* out, int n, double median, double semi_iqr) ZEMATH_NOEXCEPT;

/* Log-normal: ln X is normal with mean mu and VARIANCE sigma2 >= 0 (else 5); note that
 * lognpdf and logncdf take the standard deviation. */
ZEMATH_API int lognrnd(double* out, int n, double mu, double sigma2) ZEMATH_NOEXCEPT;

/* Logistic with location a and spread b > 0 (else 6): density
 * e^((x-a)/b) / (b (1 + e^((x-a)/b))^2). */
ZEMATH_API int lgsrnd(double* out, int n, double a, double b) ZEMATH_NOEXCEPT;

/* Weibull with shape a > 0 and parameter b > 0 (else 6), density
 * (a/b) x^(a-1) exp(-x^a / b): b is the textbook scale lambda to the power a, and the
 * roles differ from wblpdf/wblcdf/wblinv (scale first, shape second, (x/scale)^shape).
 * The samples follow wblcdf(x, b^(1/a), a). */
ZEMATH_API int wblrnd(double* out, int n, double a, double b) ZEMATH_NOEXCEPT;

/* Triangular on [xmin, xmax] with mode xmode: xmin <= xmode <= xmax and xmin < xmax
 * (else 15). */
ZEMATH_API int trirnd(double* out, int n, double xmin, double xmode, double xmax) ZEMATH_NOEXCEPT;

/* ---- Discrete distributions: out receives n ints ---------------------------------- */

/* Binomial: successes in trials >= 0 (else 11) trials of probability 0 <= p <= 1
 * (else 5 or 7). */
ZEMATH_API int binornd(int* out, int n, int trials, double p) ZEMATH_NOEXCEPT;

/* Geometric: the number of FAILURES before the first success (values 0, 1, 2, ...),
 * P(k) = p (1-p)^k, 0 < p <= 1 (else 6 or 7; p below about 1.7e-8 gives 17). */
ZEMATH_API int geornd(int* out, int n, double p) ZEMATH_NOEXCEPT;

/* Negative binomial: failures before the m-th success, P(k) = C(m+k-1, k) p^m (1-p)^k,
 * m >= 1 (else 11), 0 < p <= 1 (else 6 or 7; a mean m(1-p)/p that could overflow an
 * int gives 17). */
ZEMATH_API int nbinrnd(int* out, int n, int m, double p) ZEMATH_NOEXCEPT;

/* Poisson with mean 0 <= lambda <= 1073741823 (else 5 or 7). */
ZEMATH_API int poissrnd(int* out, int n, double lambda) ZEMATH_NOEXCEPT;

/* Hypergeometric: successes in a sample of `sample` items drawn without replacement
 * from `population` items of which `successes` are successes. All >= 0 (else 11),
 * sample <= population and successes <= population (else 16). */
ZEMATH_API int hygernd(int* out, int n, int population, int sample, int successes) ZEMATH_NOEXCEPT;

/* Uniform on the integers lowest, lowest+1, ..., highest; lowest <= highest (else 16). */
ZEMATH_API int unidrnd(int* out, int n, int lowest, int highest) ZEMATH_NOEXCEPT;

/* General discrete law on first_value, first_value+1, ..., first_value+table_size-1.
 * table_is_cdf = 0: table[i] is the probability of first_value+i (>= 0, summing to 1
 * within 1e-6); table_is_cdf = 1: table[i] is the cumulative probability up to
 * first_value+i (non-decreasing, last within 1e-6 of 1). The table is normalised to an
 * exact total of 1; values of probability 0 never occur. -151 for a NULL table or
 * table_is_cdf other than 0 or 1; 11 (12) for table_size < 1 (> 1533916885); 5 for a
 * negative entry; 15 for a bad sum or a decreasing cumulative table; 16 when the last
 * value overflows an int. */
ZEMATH_API int disrnd(int* out, int n, const double* table, int table_size, int first_value,
                      int table_is_cdf) ZEMATH_NOEXCEPT;

/* ---- Multivariate normal and permutation ------------------------------------------ */

/* Multivariate normal: samples vectors of the given dimension with mean[dimension] and
 * covariance[dimension * dimension] (row by row; symmetric to a relative 1e-10 and
 * positive semi-definite, else 15). out receives samples * dimension values, sample i
 * in out[i*dimension .. i*dimension + dimension - 1]. -151 for samples <= 0, a NULL
 * pointer, or a NaN, infinite or NANUM entry in mean or covariance; 11 (12) for a
 * dimension below 1 (above 46340). */
ZEMATH_API int mvnrnd(double* out, int samples, int dimension, const double* mean,
                      const double* covariance) ZEMATH_NOEXCEPT;

/* Random permutation in place of the n values x[0], x[0] + h, ..., x[n-1], with
 * h = (x[n-1] - x[0]) / (n - 1): x is first overwritten with that evenly spaced
 * sequence, then shuffled (every order equally likely). Deliberately only x[0] and
 * x[n-1] matter; the interior input values are ignored. n = 1 leaves x as it is. -151
 * for a NULL x, n <= 0, or x[0] or x[n-1] NaN, infinite or NANUM. */
ZEMATH_API int permrnd(double* x, int n) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_RANDOM_H */
