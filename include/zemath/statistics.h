/* zeMath: statistics family: descriptive statistics and quantiles, the percentile
 * engine, frequency lists and bin widths, parametric tests and confidence intervals,
 * and the Shapiro-Wilk normality test.
 *
 * Conventions of this family.
 * - A value equal to NANUM is missing and skipped where a function says so; NaN is not
 *   missing (it propagates, see each function).
 * - Moment-denominator flag (nMomentDenFlag), the divisor d of the variance:
 *   0 N - 1 (the default), 1 N, 2 W - 1, 3 W (W the weight sum), 4 W - sum(w^2) / W.
 * - Percentile rule (nInterpolate), 0..5: 0 empirical distribution function averaging at
 *   jumps, 1 nearest observation (ties to the even rank), 2 empirical distribution
 *   function, 3 weighted average aimed at (n + 1) p, 4 weighted average aimed at n p,
 *   5 none (Tukey's five-number summary: only 0, 25, 50, 75 and 100 have values).
 * - Warning codes of the percentile engine ("_ZEMS_CW_3" a negative weight, "_ZEMS_CW_5"
 *   after every weight check) go to the message sink the host registers; nothing is
 *   printed and nothing is kept when no sink is registered.
 * - Output pointers of the scalar-output functions may be NULL (that output is skipped). */
#ifndef ZEMATH_STATISTICS_H
#define ZEMATH_STATISTICS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Records ------------------------------------------------------------------------ */

/* Descriptive statistics of one sample (zemath_desc_stats). Every double that cannot be
 * computed holds NANUM. */
typedef struct DescStatResults {
    int N;             /* usable points (points minus missing) */
    int Missing;       /* missing points: value NANUM, or weight NANUM */
    double Mean;       /* sum w x / sum w */
    double SD;         /* sqrt(Variance) */
    double SEM;        /* SD / sqrt(WeightSum) (flag 0, or 4 with unit weights) */
    double LCL;        /* lower confidence limit of the mean (same flags) */
    double UCL;        /* upper confidence limit of the mean */
    double Variance;   /* CorSumSq / d, d by the moment-denominator flag */
    double Sum;        /* Mean * WeightSum */
    double Skewness;   /* third standardised moment, formula by flag */
    double Kurtosis;   /* fourth standardised moment minus 3 */
    double UncorSumSq; /* sum w x^2 */
    double CorSumSq;   /* sum w (x - Mean)^2 */
    double COV;        /* SD / Mean */
    double MAD;        /* sum w |x - Mean| / sum w */
    double SDx2;       /* 2 SD */
    double SDx3;       /* 3 SD */
    double GeoMean;    /* geometric mean (unweighted) */
    double GeoSD;      /* geometric standard deviation (unweighted) */
    double Mode;       /* most frequent value (the smallest of several) */
    double WeightSum;  /* sum w (N without weights) */
} DescStatResults;

/* Output selection of zemath_desc_stats_ex and zemath_row_desc_stats_ex: the
 * moment-denominator flag, then one flag per field of DescStatResults, in its order. */
typedef struct DescStatOptions {
    int nMomentDenFlag;
    bool N, Missing, Mean, SD, SEM, LCL, UCL, Variance, Sum, Skewness, Kurtosis, UncorSumSq,
        CorSumSq, COV, MAD, SDx2, SDx3, GeoMean, GeoSD, Mode, WeightSum;
} DescStatOptions;

/* Selection record of zemath_quantiles: the rule, a second word (not read), then which
 * outputs to compute. */
typedef struct QuantileOptions {
    int nInterpolate;
    int nOption2;
    bool bMin, biMin, bQ1, bMedian, bQ3, bMax, biMax, bIQR, bRange;
} QuantileOptions;

/* Results of zemath_quantiles; unselected or unavailable doubles NANUM, indices -1. */
typedef struct QuantileResults {
    double Min;
    int iMin;
    double Q1, Median, Q3, Max;
    int iMax;
    double IQR, Range;
} QuantileResults;

/* Results of zemath_range; on failure doubles NANUM and indices -1. */
typedef struct RangeResults {
    double Min, Max;
    int iMin, iMax;
    double Range;
} RangeResults;

/* ---- Records of the parametric tests ------------------------------------------------ */

/* A sample summary (input of the summarized tests). */
typedef struct TTestSummary {
    int N;
    double Mean;
    double SD;
} TTestSummary;

/* The hypothesis: a leading word not read, the hypothesised value (the mean, or the mean
 * difference), the tail: 0 two-tailed, 1 upper (the alternative is a mean above the
 * value), 2 lower. */
typedef struct TTestHypothesis {
    int Reserved;
    double Value;
    int TailType;
} TTestHypothesis;

/* One-sample result. SE (standard error of the mean) is filled by the raw-data tests
 * and NANUM from the summarized test. */
typedef struct OneSampleTTestResults {
    int N;
    double Mean;
    double SD;
    double SE;
    int DOF;
    double t;
    double P;
} OneSampleTTestResults;

/* Two-sample result (the paired tests put the difference sample in both sample slots).
 * SE1/SE2 (standard errors of the means) and SEDiff (standard error of the difference
 * used by t) are filled by the raw-data tests and NANUM from the summarized tests. */
typedef struct TwoSampleTTestResults {
    int N1;
    double Mean1, SD1, SE1;
    int N2;
    double Mean2, SD2, SE2;
    double MeanDiff;
    double SEDiff;
    double DOF;
    double t;
    double P;
} TwoSampleTTestResults;

/* Shapiro-Wilk result: the sample size as given, W and its p-value (NANUM until
 * computed). */
typedef struct ShapiroWilkResults {
    int N;
    double W;
    double P;
} ShapiroWilkResults;

/* ---- Message codes ---------------------------------------------------------------- */

/* A message sink receives each posted code (a static string) and the registered context,
 * on the thread that posts it. */
typedef void (*zemath_message_sink)(const char* code, void* context);

/* Registers the sink (NULL unregisters). Thread-safe; a sink may call this itself. */
ZEMATH_API void zemath_set_message_sink(zemath_message_sink sink, void* context) ZEMATH_NOEXCEPT;

/* ---- Descriptive statistics ---------------------------------------------------------- */

/* Fills *res with the descriptive statistics of data[0..n-1]. weights (NULL: all 1) holds
 * n values; a point is missing when its value or weight is NANUM. level is the
 * confidence level of LCL/UCL (two-sided Student's t with N - 1 degrees of freedom),
 * computed only for flag 0 or flag 4 with unit weights (so is SEM). One usable point:
 * Mean = x, Variance and SD 0 for flags 1 and 3, else NANUM. Skewness needs N >= 3 and
 * kurtosis N >= 4 with flag 0; flags 2 and 3 give neither. GeoMean: 0 with a zero value,
 * NANUM with an odd number of negative values, else that of the absolute values.
 * GeoSD: NANUM when a value is <= 0. Mode: NANUM when no value repeats; the smallest of
 * several. A usable NaN value makes the moments NaN (the mode skips it).
 * Returns 0; -156 when data or res is NULL; -196 when level is not strictly between 0
 * and 1; -155 when n exceeds INT_MAX; -151 when nMomentDenFlag is outside 0..4 (res
 * untouched by these), or when no point is usable (res reset: doubles NANUM, counts
 * filled). */
ZEMATH_API int zemath_desc_stats(const double* data, unsigned int n, DescStatResults* res,
                                 const double* weights, double level,
                                 int nMomentDenFlag) ZEMATH_NOEXCEPT;

/* The moment fields of zemath_desc_stats for data[0..n-1], each to its own optional
 * output (NULL skips it). Outputs are written on success and on the -151 "no usable
 * point" failure (NANUM, counts filled). Returns 0; -156 when data is NULL; -155 when
 * n < 0; -151 when nMomentDenFlag is outside 0..4 or no point is usable. */
ZEMATH_API int zemath_basic_summary_stats(int n, const double* data, int* N, double* Mean,
                                          double* SD, double* SE, double* Variance, double* Sum,
                                          double* Skewness, double* Kurtosis, double* UncorSumSq,
                                          double* CorSumSq, double* COV, double* MAD, int* Missing,
                                          double* WeightSum, double* GeoMean, int nMomentDenFlag,
                                          const double* weights) ZEMATH_NOEXCEPT;

/* The remaining fields of zemath_desc_stats (Mode, whether several values share the
 * mode's count, GeoSD, LCL, UCL, SDx2, SDx3), each optional. Returns as zemath_desc_stats
 * (-156 for a NULL data pointer). */
ZEMATH_API int zemath_opt_summary_stats(unsigned int n, const double* data, double level,
                                        double* Mode, bool* several_modes, double* GeoSD,
                                        double* LCL, double* UCL, double* SDx2, double* SDx3,
                                        int nMomentDenFlag, const double* weights) ZEMATH_NOEXCEPT;

/* zemath_desc_stats over nRanges ranges of data: range r is points bounds[2r] ..
 * bounds[2r+1] (0-based, inclusive, integral values). out[r] is reset (doubles NANUM,
 * counts -1) and receives the fields options selects, computed with
 * options->nMomentDenFlag; weights (NULL: all 1) are read over the same points. The last
 * argument is not read. Returns the first non-zero status of the ranges, or before any
 * work: -156 (data, bounds, options or out NULL), -196 (level), -155 (n > INT_MAX),
 * -151 (flag outside 0..4, or a range outside 0..n-1, inverted or not integral). */
ZEMATH_API int zemath_desc_stats_ex(const double* data, unsigned int n, const double* bounds,
                                    unsigned int nRanges, const DescStatOptions* options,
                                    DescStatResults* out, const double* weights, double level,
                                    int reserved) ZEMATH_NOEXCEPT;

/* zemath_desc_stats of each row of the row-major matrix (rows x columns) into
 * results[row]; weights (NULL or columns values) apply to every row. Returns the first
 * non-zero row status (every row is still computed), or before any work: -156 (matrix or
 * results NULL), -155 (rows or columns < 1), -196 (level), -151 (flag). */
ZEMATH_API int zemath_row_desc_stats(int rows, int columns, const double* matrix,
                                     DescStatResults* results, const double* weights, double level,
                                     int nMomentDenFlag) ZEMATH_NOEXCEPT;
/* The same with the output selection of zemath_desc_stats_ex (unselected fields NANUM,
 * counts -1); -156 also for a NULL options. Rows are written as they are computed: -19
 * (working storage exhausted) leaves the rows before the failing one written. */
ZEMATH_API int zemath_row_desc_stats_ex(int rows, int columns, const double* matrix,
                                        const DescStatOptions* options, DescStatResults* results,
                                        const double* weights, double level) ZEMATH_NOEXCEPT;

/* sum x^3 / (n s^3) and sum x^4 / (n s^4) of the (already centred) data[0..n-1]; a
 * negative scale s uses the root mean square. 0.0 for n <= 0, NANUM for NULL data. */
ZEMATH_API double zemath_skewness(const double* data, int n, double scale) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_kurtosis(const double* data, int n, double scale) ZEMATH_NOEXCEPT;
/* sqrt(sum x^2 / n) and sum |x| / n: 0.0 for n <= 0, NANUM for NULL data. No missing
 * values are skipped. */
ZEMATH_API double zemath_root_mean_square(const double* data, int n) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_absolute_arithmetic_average(const double* data, int n) ZEMATH_NOEXCEPT;

/* ---- Percentiles -------------------------------------------------------------------- */

/* results[k] = the percents[k]-th percentile (0..100) of the usable points of
 * data[0..n-1] under rule nInterpolate. weights (NULL, or n values) weight each point: a
 * point whose value or weight is NANUM is skipped; unequal weights use the cumulative
 * weight rule (the first sorted value whose cumulative weight passes sum * p / 100; the
 * average with the next value when one equals it exactly) whatever the rule; equal
 * weights use the rule. A percent outside [0, 100] (or NaN) gives NANUM; no usable
 * point gives NANUM everywhere; a usable NaN value or weight gives NaN everywhere.
 * results holds nPercents values and may alias data or percents.
 * Returns 0; -156 when data, percents or results is NULL; -155 when n <= 0 or
 * nPercents <= 0; -151 when nInterpolate is outside 0..5; -108 when a weight is negative
 * (results untouched). */
ZEMATH_API int zemath_percentiles(const double* data, int n, const double* percents, int nPercents,
                                  double* results, int nInterpolate,
                                  const double* weights) ZEMATH_NOEXCEPT;

/* ---- Quantiles, ranges, frequencies ------------------------------------------------- */

/* Quantile summary of data[0..n-1]: *res is reset first (doubles NANUM, indices -1), then
 * the outputs opt selects are filled: Min/Max and their first indices over the usable
 * points (NaN takes no part), Q1/Median/Q3 at 25/50/75 by the rule opt->nInterpolate
 * with the weights (NULL or n values), IQR = Q3 - Q1, Range = Max - Min. Rule 5 with no
 * or unit weights uses Tukey's five-number summary (hinges) instead, and answers only
 * percents 0, 25, 50, 75, 100 (others NANUM). results (nPercents values) receives the
 * percentiles of percents by the same rule (both may be NULL). n = 0 returns 0 with
 * everything reset and results NANUM. Returns 0; -156 when data, opt or res is NULL;
 * -155 when n or nPercents exceeds INT_MAX; -151 when the rule is outside 0..5; -108
 * for a negative weight (posting "_ZEMS_CW_3"); -158 when no value is usable. */
ZEMATH_API int zemath_quantiles(const double* data, unsigned int n, const QuantileOptions* opt,
                                QuantileResults* res, const double* percents,
                                unsigned int nPercents, double* results,
                                const double* weights) ZEMATH_NOEXCEPT;

/* Min, Max, Q1, Median, Q3 (each optional) of data[0..n-1]. Kept deliberately: five or
 * more values always give the five-number summary (hinges) over the raw values, NANUM
 * included, whatever the rule; fewer use zemath_quantiles with the rule.
 * Returns 0; -3 when n is 0; -11 when data is NULL; -151 (rule) or -158 (no usable
 * value) from zemath_quantiles for n < 5. */
ZEMATH_API int zemath_one_row_quantiles(const double* data, unsigned int n, double* Min,
                                        double* Max, double* Q1, double* Median, double* Q3,
                                        int nInterpolate) ZEMATH_NOEXCEPT;

/* zemath_one_row_quantiles of each row of the row-major matrix rows x columns; element r
 * of each output array (rows values, each optional) belongs to row r (NANUM for a row
 * that fails). Returns the first failing row's status, or -3 when rows or columns is
 * <= 0, -11 when matrix is NULL, -19 when working storage fails (rows before the failing
 * one keep their results). */
ZEMATH_API int zemath_row_quantiles(int rows, int columns, const double* matrix, double* Min,
                                    double* Max, double* Q1, double* Median, double* Q3,
                                    int nInterpolate) ZEMATH_NOEXCEPT;
/* The same with IQR and Range per row (rows values each, optional). */
ZEMATH_API int zemath_row_quantiles_ex(int rows, int columns, const double* matrix, double* Min,
                                       double* Max, double* Q1, double* Median, double* Q3,
                                       double* IQR, double* Range,
                                       int nInterpolate) ZEMATH_NOEXCEPT;

/* Minimum, maximum (first occurrences), their indices and the range of the usable
 * values of data[0..n-1] (NANUM and NaN skipped). Returns 0; -156 when data or res is
 * NULL (res untouched); -158 when no value is usable (doubles NANUM, indices -1). */
ZEMATH_API int zemath_range(const double* data, unsigned int n, RangeResults* res) ZEMATH_NOEXCEPT;

/* Median (the usual: mean of the two middle values for an even count) of the usable
 * values of data[0..n-1] into *median. Returns 0; -18 when n < 1 or a pointer is NULL;
 * -65 when no value is usable (median untouched). A usable NaN gives NaN. */
ZEMATH_API int zemath_get_median_in_vector(int n, const double* data,
                                           double* median) ZEMATH_NOEXCEPT;

/* Distinct usable values of data[0..n-1] (NANUM and NaN skipped) ascending into values
 * and their counts into counts (both need room for n values); their number into
 * *nDistinct. Returns 0; -165 when n is 0; -156 when a pointer is NULL; -155 when n
 * exceeds INT_MAX. */
ZEMATH_API int zemath_discrete_frequencies(const double* data, unsigned int n, double* values,
                                           double* counts, int* nDistinct) ZEMATH_NOEXCEPT;

/* The distinct values of zemath_discrete_frequencies without counts, into values
 * (capacity slots); their number into *count (optional). Returns 0; -110 when data or
 * values is NULL or there are more distinct values than capacity (values untouched). */
ZEMATH_API int zemath_censored_value_list(const double* data, unsigned int n, double* values,
                                          int capacity, int* count) ZEMATH_NOEXCEPT;

/* Zeroes counts[0..highest-lowest] and counts each data[i] within [lowest, highest] in
 * counts[data[i] - lowest]; other values are ignored. Returns 0; -151 when data or counts
 * is NULL or lowest > highest. */
ZEMATH_API int zemath_frequency_count_i(const int* data, unsigned int n, int lowest, int highest,
                                        int* counts) ZEMATH_NOEXCEPT;

/* Counts of the usable values of data[0..n-1] in bins of width increment from start to
 * end: bin k is [start + k inc, start + (k+1) inc), the last bin closed at end; the bin
 * count is (end - start) / inc when that is a whole number to 1e-11 relative, else its
 * ceiling (a partial last bin). A value on an inner edge to the same tolerance goes to
 * the upper bin; values outside [start, end] are ignored. counts has capacity slots;
 * *nBins receives the bin count. Returns 0; -156 when a pointer is NULL; -151 when
 * increment <= 0, end <= start or start/end are not finite; -155 when more bins than
 * capacity are needed (nothing written). */
ZEMATH_API int zemath_frequency_count(const double* data, unsigned int n, double start, double end,
                                      double increment, double* counts, int capacity,
                                      int* nBins) ZEMATH_NOEXCEPT;

/* The thresholds of a receiver-operating curve over the scores data[0..n-1]: the
 * distinct usable values ascending, then one value above them all (max + max(1, |max|))
 * at which nothing is classified positive (+infinity when that sum overflows); *count
 * receives their number (distinct + 1). When the largest value is +infinity nothing lies
 * above it: the list ends there and holds distinct values only; when every usable value
 * is -infinity the cut above is -DBL_MAX. Returns 0; -156 when a
 * pointer is NULL; -158 when no value is usable; -155 when capacity is below the list's
 * length (nothing written). */
ZEMATH_API int zemath_threshold_list(const double* data, unsigned int n, double* thresholds,
                                     int capacity, int* count) ZEMATH_NOEXCEPT;

/* Percentiles of grouped data: for group g in 0..nGroups-1, the points i with
 * groups[i] == g (other labels are ignored) get their percentiles (zemath_percentiles
 * rules, weights NULL or n values) in results[g * nPercents .. + nPercents - 1]; an empty
 * group gives NANUM. Returns 0; -156 when data, groups, percents or results is NULL;
 * -155 when n is 0 or exceeds INT_MAX, nGroups < 1 or nPercents < 1; -151 (rule); -108
 * (negative weight). */
ZEMATH_API int zemath_get_percentiles_data(const double* data, unsigned int n, const int* groups,
                                           int nGroups, const double* percents, int nPercents,
                                           double* results, int nInterpolate,
                                           const double* weights) ZEMATH_NOEXCEPT;

/* Histogram bin width for data[0..n-1]: method 0 2 (P75 - P25) n^(-1/3), percentiles by
 * the rule; 1 3.49 SD n^(-1/3) (flag-0 SD); 2 (Max - Min) / (log2 n + 1). NANUM for
 * NULL data, n <= 0, another method, or when the ingredients are not available. */
ZEMATH_API double zemath_bin_width(const double* data, int n, int method,
                                   int nInterpolate) ZEMATH_NOEXCEPT;

/* Percentiles of a distribution curve: (x, y) with x non-decreasing is a density curve;
 * its cumulative area (trapezoid rule; points whose y is NANUM are skipped) is searched
 * for each probability q in probabilities[0..nProb-1]: percentiles[k] is the abscissa
 * where the area reaches q times the total, linear between the bracketing points (the
 * lower point itself when the area there equals the target to 1e-11 relative); indices[k]
 * (optional) receives the lower bracketing point. q = 0 gives x[0] (index 0), q = 1
 * x[n-1] (index n-1), any other q outside (0, 1) NANUM (index 0). y should be >= 0.
 * Returns 0; -156 when x, y, probabilities or percentiles is NULL; -110 when n < 3;
 * -220 when x holds a non-finite or NANUM value, decreases, or has x[n-1] == x[0];
 * -166 when working storage cannot be had. */
ZEMATH_API int zemath_percentiles_distribution(int n, const double* x, const double* y,
                                               const double* probabilities, int nProb,
                                               double* percentiles, int* indices) ZEMATH_NOEXCEPT;

/* ---- Parametric tests ------------------------------------------------------------------
 * Common to this section: TailType 0 two-tailed, 1 upper, 2 lower. P values use Student's t
 * through the regularised incomplete beta (one-sample and paired tests) or the two-sample
 * back-end routine (pooled variance; Satterthwaite's degrees of freedom for the unequal-
 * variance output). Raw-data tests skip NANUM (pairs with a missing member for the paired
 * test) and need 2 usable points per sample (-165). */

/* One-sample t test from a summary: res gets N, Mean, SD, SE = NANUM, DOF = N - 1,
 * t = sqrt(N) (Mean - Value) / SD and its P (NANUM for N = 1). Returns 0; -151 when a
 * pointer is NULL, TailType is outside 0..2, or Mean, SD or t is NANUM; -155 when N < 1. */
ZEMATH_API int zemath_one_sample_t_test_with_summarized_data(
    const TTestSummary* summary, const TTestHypothesis* hyp,
    OneSampleTTestResults* res) ZEMATH_NOEXCEPT;
/* Paired t test from the summary of the differences, which fills both sample slots and
 * MeanDiff; DOF = N - 1 and, when SD != 0, t = (Mean - Value) / (SD / sqrt(N)) and P (other
 * statistics NANUM). N = 1: DOF 0, statistics NANUM, returns 0. Returns 0; -151 when a
 * pointer is NULL or TailType is outside 0..2; -165 when N < 1. */
ZEMATH_API int zemath_two_sample_t_test_pair_with_summarized_data(
    const TTestSummary* diff, const TTestHypothesis* hyp,
    TwoSampleTTestResults* res) ZEMATH_NOEXCEPT;
/* Two-sample t test (equal variances) of mean1 - mean2 = Value from summaries: DOF =
 * N1 + N2 - 2, t and P (NANUM when N < 2 or SD <= 0 in either sample). unequal (optional,
 * 3 doubles) receives t, DOF and P of the unequal-variance test. Returns 0; -151 when a
 * pointer other than unequal is NULL or TailType is outside 0..2. */
ZEMATH_API int zemath_two_sample_t_test_with_summarized_data(const TTestSummary* s1,
                                                             const TTestSummary* s2,
                                                             const TTestHypothesis* hyp,
                                                             TwoSampleTTestResults* res,
                                                             double* unequal) ZEMATH_NOEXCEPT;

/* One-sample t test of data[0..n-1] (SE filled). Returns 0; -156 when a pointer is NULL;
 * -151 (tail); -155 when n > INT_MAX; -165 with fewer than 2 usable points; -151 as the
 * summarized test. */
ZEMATH_API int zemath_one_sample_t_test(const double* data, unsigned int n,
                                        const TTestHypothesis* hyp,
                                        OneSampleTTestResults* res) ZEMATH_NOEXCEPT;
/* The same with scalar outputs (each optional): t, P and DOF for the hypothesised mean. */
ZEMATH_API int zemath_t_test_one_sample(const double* data, unsigned int n, double mean, int tail,
                                        double* t, double* P, int* DOF) ZEMATH_NOEXCEPT;
/* Two-sample t test of x[0..nx-1] against y[0..ny-1] (SE1, SE2 and the pooled SEDiff
 * filled); unequal as the summarized form. Returns 0, -156, -151, -155 or -165. */
ZEMATH_API int zemath_two_sample_t_test(const double* x, unsigned int nx, const double* y,
                                        unsigned int ny, const TTestHypothesis* hyp,
                                        TwoSampleTTestResults* res,
                                        double* unequal) ZEMATH_NOEXCEPT;
/* Paired t test of x[i] - y[i], i < n (SE slots hold the SE of the mean difference).
 * Returns 0, -156, -151, -155 or -165 (fewer than 2 complete pairs). */
ZEMATH_API int zemath_two_sample_t_test_pair(const double* x, const double* y, unsigned int n,
                                             const TTestHypothesis* hyp,
                                             TwoSampleTTestResults* res) ZEMATH_NOEXCEPT;
/* Row-wise two-sample t tests (equal variances, hypothesised difference 0) of row r of
 * m1 (rows x columns1, row-major) against row r of m2 (rows x columns2): t[r], P[r],
 * DOF[r] (each array optional, rows values; NANUM for a failing row). Returns the first
 * failing row's status, or -156 (m1 or m2 NULL), -155 (a size < 1), -151 (tail). */
ZEMATH_API int zemath_row_ttest2(int rows, const double* m1, int columns1, const double* m2,
                                 int columns2, int tail, double* t, double* P,
                                 double* DOF) ZEMATH_NOEXCEPT;
/* One-sample z test of the mean of data[0..n-1] against mean with known sigma: z and P
 * (optional). Returns 0; -156 (data NULL); -151 (tail, sigma <= 0 or not finite, mean not
 * finite); -155 (n > INT_MAX); -165 (no usable point). */
ZEMATH_API int zemath_one_sample_z_test(const double* data, unsigned int n, double mean,
                                        double sigma, int tail, double* z,
                                        double* P) ZEMATH_NOEXCEPT;
/* F test of equal variances: F = var(x) / var(y) with df1 = Nx - 1, df2 = Ny - 1; P upper
 * (tail 1), lower (2) or twice the smaller tail, at most 1 (0). Outputs optional; F and P
 * NANUM when var(y) = 0. Returns 0, -156, -151, -155 or -165. */
ZEMATH_API int zemath_f_test(const double* x, unsigned int nx, const double* y, unsigned int ny,
                             int tail, double* F, double* P, double* df1,
                             double* df2) ZEMATH_NOEXCEPT;
/* One-sample chi-square variance test: chi2 = (N - 1) s^2 / variance, DOF = N - 1, P by
 * the tail as zemath_f_test. Returns 0, -156, -151 (tail, variance <= 0), -155 or -165. */
ZEMATH_API int zemath_chi_square_test(const double* data, unsigned int n, double variance, int tail,
                                      double* chi2, double* P, double* DOF) ZEMATH_NOEXCEPT;
/* Two-sample chi-square variance test (Bartlett's statistic, 1 degree of freedom, upper
 * tail): chi2 and P (optional; NANUM when a variance is 0). Returns 0, -156, -155 or -165. */
ZEMATH_API int zemath_two_sample_chi_square_test(const double* x, unsigned int nx, const double* y,
                                                 unsigned int ny, double* chi2,
                                                 double* P) ZEMATH_NOEXCEPT;

/* ---- Confidence intervals ------------------------------------------------------------
 * A level c in (0, 1) becomes p = 1 - (1 - c) / 2 (two-sided, one_sided = 0) or p = c.
 * lower and upper hold count values and are set to NANUM first. */

/* Interval for a variance: S = SD^2 DOF; lower = S / chi2inv(p, DOF), upper =
 * S / chi2inv(1 - p, DOF); NANUM for DOF 0 or -1. Returns 0; -151 when count is 0, a
 * pointer is NULL, or a level is outside (0, 1) (at once: that and later entries NANUM). */
ZEMATH_API int zemath_confidence_levels_for_variance(unsigned int count, const double* levels,
                                                     double SD, double DOF, double* lower,
                                                     double* upper, int one_sided) ZEMATH_NOEXCEPT;
/* Interval for the ratio of two variances: R = SD1^2 / SD2^2 from SDs[2] and sizes[2];
 * lower = R / finv(p, N1 - 1, N2 - 1), upper = R / finv(1 - p, ...); everything NANUM
 * when N1 + N2 < 3. Levels are not range-checked (a bad level leaves NANUM). Returns 0;
 * -151 when count is 0 or a pointer is NULL. */
ZEMATH_API int zemath_two_sample_confidence_levels_for_variance(unsigned int count,
                                                                const double* levels,
                                                                const double* SDs, const int* sizes,
                                                                double* lower, double* upper,
                                                                int one_sided) ZEMATH_NOEXCEPT;
/* Interval for a mean: mean -+ tinv(p, N - 1) SD / sqrt(N) (NANUM for N < 2). Returns 0;
 * -151 as zemath_confidence_levels_for_variance. */
ZEMATH_API int zemath_confidence_levels_for_mean(unsigned int count, const double* levels,
                                                 double mean, double SD, int N, double* lower,
                                                 double* upper, int one_sided) ZEMATH_NOEXCEPT;
/* Interval for mean1 - mean2 from two summaries: pooled (equal_variances non-zero) or
 * Satterthwaite standard error and degrees of freedom (NANUM when a size is below 2).
 * Returns 0; -151 as above (also for a NULL summary). */
ZEMATH_API int zemath_two_sample_confidence_levels_for_mean(
    unsigned int count, const double* levels, const TTestSummary* s1, const TTestSummary* s2,
    int equal_variances, double* lower, double* upper, int one_sided) ZEMATH_NOEXCEPT;

/* Parameters of a normal law fitted to data[0..n-1] (NANUM skipped) with two-sided
 * confidence limits at level: mu = mean with Student's t limits, sigma = SD (divisor
 * N - 1) with chi-square limits SD sqrt((N-1) / chi2inv(p or 1 - p, N - 1)). Outputs
 * optional. Returns 0; -156 (data NULL); -196 (level); -155 (n > INT_MAX); -165 (fewer
 * than 2 usable points). */
ZEMATH_API int zemath_confidence_limit_Norm(const double* data, unsigned int n, double level,
                                            double* mu, double* mu_lower, double* mu_upper,
                                            double* sigma, double* sigma_lower,
                                            double* sigma_upper) ZEMATH_NOEXCEPT;
/* Mean of an exponential law fitted to data[0..n-1] (NANUM skipped) with its exact
 * two-sided limits 2 N mean / chi2inv(p or 1 - p, 2N). Outputs optional. Returns 0; -156;
 * -196; -155; -165 (no usable point); -151 (a negative value). */
ZEMATH_API int zemath_confidence_limit_Exp(const double* data, unsigned int n, double level,
                                           double* mean, double* lower,
                                           double* upper) ZEMATH_NOEXCEPT;
/* Maximum-likelihood fit of a gamma law (shape a, scale b: the a and b of gampdf) to
 * data[0..n-1] (NANUM skipped), with two-sided limits at level from the normal law of
 * ln(estimate): estimate exp(-+z se / estimate), z = norminv(1 - (1 - level) / 2), se from
 * the inverse Fisher information of the sample (limits therefore stay positive). The
 * shape solves ln a - psi(a) = ln(mean) - mean(ln x); the scale is mean / a. Outputs
 * optional (NULL skips one); nothing is written on a refused call. Returns 0; -156 (data
 * NULL); -196 (level not strictly between 0 and 1); -155 (n > INT_MAX); -151 (a value
 * that is not NANUM and not positive and finite, NaN included); -165 (fewer than two
 * distinct usable values: the likelihood has no maximum); -19 (memory). */
ZEMATH_API int zemath_confidence_limit_Gamma(const double* data, unsigned int n, double level,
                                             double* shape, double* shape_lower,
                                             double* shape_upper, double* scale,
                                             double* scale_lower,
                                             double* scale_upper) ZEMATH_NOEXCEPT;
/* Maximum-likelihood fit of a Weibull law (scale a, shape b: the a and b of wblcdf,
 * P(X <= x) = 1 - exp(-(x/a)^b)) to data[0..n-1] (NANUM skipped), with two-sided limits
 * as zemath_confidence_limit_Gamma's, se from the inverse observed information (the
 * negated Hessian of the log-likelihood at the estimate). The shape solves
 * sum x^b ln x / sum x^b - 1/b = mean(ln x); the scale is mean(x^b)^(1/b). Outputs,
 * refusals and codes as zemath_confidence_limit_Gamma. */
ZEMATH_API int zemath_confidence_limit_Wbl(const double* data, unsigned int n, double level,
                                           double* scale, double* scale_lower, double* scale_upper,
                                           double* shape, double* shape_lower,
                                           double* shape_upper) ZEMATH_NOEXCEPT;

/* ---- Power and sample size of t tests ---------------------------------------------------
 * alpha the significance level in (0, 1); difference the true mean difference (to the
 * hypothesised value); SD the standard deviation (of the differences for the paired
 * forms), > 0; tail as the tests. Power is P(reject) under the non-central t law with
 * non-centrality sqrt(n) difference / SD (two samples of n each: difference /
 * (SD sqrt(2 / n)), 2n - 2 degrees of freedom); the two-tailed power counts both
 * rejection regions. A size below 2 gives NANUM. Sample sizes: the smallest n >= 2 (per
 * group) whose power reaches each target, -1 for a target outside (0, 1) or beyond 2^30.
 * Each returns 0; -156 when an array is NULL; -151 for alpha, SD, tail or a non-finite
 * difference. */
ZEMATH_API int zemath_tTest_powers(double alpha, double difference, double SD, int tail,
                                   unsigned int count, const int* sizes,
                                   double* powers) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_tTest_powers1(double alpha, double difference, double SD, int tail, int size,
                                    double* power) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_tTest_samplesize(double alpha, double difference, double SD, int tail,
                                       unsigned int count, const double* targets,
                                       int* sizes) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_two_sample_tTest_powers(double alpha, double difference, double SD, int tail,
                                              unsigned int count, const int* sizes,
                                              double* powers) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_two_sample_tTest_powers1(double alpha, double difference, double SD, int tail,
                                               int size, double* power) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_two_sample_tTest_samplesize(double alpha, double difference, double SD,
                                                  int tail, unsigned int count,
                                                  const double* targets,
                                                  int* sizes) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_two_sample_tTest_powers_pair(double alpha, double difference, double SD,
                                                   int tail, unsigned int count, const int* sizes,
                                                   double* powers) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_two_sample_tTest_powers_pair1(double alpha, double difference, double SD,
                                                    int tail, int size,
                                                    double* power) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_two_sample_tTest_samplesize_pair(double alpha, double difference, double SD,
                                                       int tail, unsigned int count,
                                                       const double* targets,
                                                       int* sizes) ZEMATH_NOEXCEPT;

/* ---- Shapiro-Wilk normality test ------------------------------------------------------ */

/* Shapiro and Wilk's W test of data[0..n-1] (NANUM values skipped). res->N receives n and
 * W, P start as NANUM; on success they receive W and its p-value (upper tail: small W,
 * small P, evidence against normality). method 0: the library's AS R94 (n <= 5000);
 * 1: the back end's routine, kept deliberately limited to n <= 2000 (hosts rely on it);
 * kept deliberately: any other method computes nothing and gives W = P = 0 with status 0.
 * n = 3 uses the exact distribution of W. Returns 0; -156 when data or res is NULL;
 * -165 when n < 3 or fewer than 3 values are usable; -166 when n > 5000, or n > 2000 with
 * method 1; -110 when a usable value is NaN or infinite; -185 when all values are equal;
 * a positive AS R94 indicator or back-end error number as it stands. */
ZEMATH_API int zemath_shapiro_wilk_test(unsigned int n, const double* data, ShapiroWilkResults* res,
                                        int method) ZEMATH_NOEXCEPT;

/* Algorithm AS R94 on x[0..n-1] sorted ascending: a (na >= n/2 slots) receives the
 * coefficients of the pairs (x[n-1-i] - x[i]), i < n/2; w and pw the statistic and its
 * p-value (pw = 1 unless computed). The indicator goes to *ifault and is returned: 0; 1
 * n < 3; 2 n > 5000 (W and p still computed); 3 na < n/2; 6 range below 1e-19; 7 x not
 * ascending. Returns -156 (nothing written) when a pointer is NULL. */
ZEMATH_API int zemath_shapiro_wilk_test_R94(const double* x, int n, double* a, int na, double* w,
                                            double* pw, int* ifault) ZEMATH_NOEXCEPT;

/* Algorithm AS 181 in single precision as published (approximate normal scores, its own
 * p-value approximations; accuracy of the published algorithm: a few units in the third
 * digit of p) on data[0..n-1] in any order (a sorted copy is used; data is not changed).
 * Its W is not AS R94's beyond about 20 points: the published algorithm takes the extreme
 * coefficient from Shapiro and Wilk's a_1^2 = Gamma((n+1)/2) / (sqrt(2) Gamma(n/2+1)),
 * which grows far above AS R94's for large n (a_1 0.178 against 0.109 at n = 1000, 0.150
 * against 0.081 at n = 2000), weighting the extreme pair too much, so its W runs lower: measured on
 * normal samples, on average 0.008 below AS R94's W at n = 100 and 0.011 to 0.012 at n = 250 to
 * 2000 (at most 0.02); on uniform samples up to 0.028 below. This is the published method, not a
 * rounding effect: the library's W matches a double-precision evaluation of the published formulas
 * to single precision. Its p-value is calibrated for its own W (under normality 5 to 6 % of
 * p-values fall below 0.05 at every n from 20 to 2000), so the test keeps its size, but W and p are
 * not interchangeable with zemath_shapiro_wilk_test's.
 * W, pw receive the statistic and p-value (1 and 1 on failure); the indicator goes to
 * *ifault and is returned: 0; 1 n <= 2; 2 n > 2000. Returns -156 when a pointer is
 * NULL. */
ZEMATH_API int zemath_shapiro_wilk_test_AS181(const float* data, unsigned int n, float* W,
                                              float* pw, int* ifault) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_STATISTICS_H */
