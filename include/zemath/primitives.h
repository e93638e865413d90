/* zeMath: typed array primitives. One-pass operations over a caller's array of one
 * element type, named by a type letter: b unsigned char, c signed char, s short,
 * us unsigned short, i int, ui unsigned int, f float, d double, z d_complex.
 *
 * Shared rules:
 * - Missing values: the d members of minmax and sum (frame.h) and of mean_variance skip
 *   values equal to NANUM; the other members of minmax, minmax_in_range, sum,
 *   mean_variance and cumulative_sum take an optional marker pointer of their own element
 *   type (NULL: nothing is skipped). NaN is never missing.
 * - Min/max scans keep the first occurrence on ties; the z minmax compares by modulus.
 * - Sums are accumulated exactly in 64 bits for integer data and in double (16 partial
 *   sums per 512-value block, combined in a fixed order: the result is the same on every
 *   processor but may differ in the last bits from a single running sum) for f and d.
 * - A refused call writes nothing. Arrays are only read unless stated otherwise. */
#ifndef ZEMATH_PRIMITIVES_H
#define ZEMATH_PRIMITIVES_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- copy: destination[0..n-1] = source[0..n-1]; the regions may overlap. Both arrays
 * hold n elements. Returns 0 (n = 0 copies nothing), or -1 when source or destination is
 * NULL or n < 0. */
ZEMATH_API int zemath_b_copy(const unsigned char* source, unsigned char* destination,
                             int n) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_us_copy(const unsigned short* source, unsigned short* destination,
                              int n) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_ui_copy(const unsigned int* source, unsigned int* destination,
                              int n) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_copy(const float* source, float* destination, int n) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_d_copy(const double* source, double* destination, int n) ZEMATH_NOEXCEPT;

/* ---- minmax: indices of the min and max of data[first..last] (inclusive), skipping
 * values equal to *marker (optional), first occurrence on ties; the index outputs are
 * optional. Writes -1 for both when no value is usable or first > last. Returns the
 * number of missing values met, or -1 (nothing written) when data is NULL, first < 0 or
 * last = INT_MAX. The d member is zemath_d_minmax (frame.h). */
ZEMATH_API int zemath_b_minmax(const unsigned char* data, int first, int last,
                               const unsigned char* marker, int* index_of_min,
                               int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_c_minmax(const signed char* data, int first, int last,
                               const signed char* marker, int* index_of_min,
                               int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_s_minmax(const short* data, int first, int last, const short* marker,
                               int* index_of_min, int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_us_minmax(const unsigned short* data, int first, int last,
                                const unsigned short* marker, int* index_of_min,
                                int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_i_minmax(const int* data, int first, int last, const int* marker,
                               int* index_of_min, int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_ui_minmax(const unsigned int* data, int first, int last,
                                const unsigned int* marker, int* index_of_min,
                                int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_minmax(const float* data, int first, int last, const float* marker,
                               int* index_of_min, int* index_of_max) ZEMATH_NOEXCEPT;
/* Complex values compare by modulus |re + i im|; a value is missing when both parts equal
 * the marker's. */
ZEMATH_API int zemath_z_minmax(const d_complex* data, int first, int last, const d_complex* marker,
                               int* index_of_min, int* index_of_max) ZEMATH_NOEXCEPT;

/* ---- minmax_in_range: indices of the min and max of data[0..n-1] among the values v
 * with low <= v <= high, skipping values equal to *marker (optional); first occurrence on
 * ties; -1 when there is no such value (also for n <= 0 or low > high). Returns the number
 * of missing values met, or -1 (nothing written) when data is NULL. */
ZEMATH_API int zemath_b_minmax_in_range(const unsigned char* data, int n, unsigned char low,
                                        unsigned char high, const unsigned char* marker,
                                        int* index_of_min, int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_us_minmax_in_range(const unsigned short* data, int n, unsigned short low,
                                         unsigned short high, const unsigned short* marker,
                                         int* index_of_min, int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_i_minmax_in_range(const int* data, int n, int low, int high,
                                        const int* marker, int* index_of_min,
                                        int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_minmax_in_range(const float* data, int n, float low, float high,
                                        const float* marker, int* index_of_min,
                                        int* index_of_max) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_d_minmax_in_range(const double* data, int n, double low, double high,
                                        const double* marker, int* index_of_min,
                                        int* index_of_max) ZEMATH_NOEXCEPT;

/* ---- sum: the sum of data[0..n-1] skipping values equal to *marker (optional), with the
 * optional outputs of zemath_d_sum (frame.h): min, max, their first-occurrence indices and
 * the count of values used. NULL data, n <= 0 or no usable value: min = max = 0, indices
 * -1, count 0, returns 0. Integer sums are exact (returned as a double: exact below 2^53). */
ZEMATH_API double zemath_b_sum(const unsigned char* data, int n, const unsigned char* marker,
                               unsigned char* min, unsigned char* max, int* index_of_min,
                               int* index_of_max, int* count) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_us_sum(const unsigned short* data, int n, const unsigned short* marker,
                                unsigned short* min, unsigned short* max, int* index_of_min,
                                int* index_of_max, int* count) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_ui_sum(const unsigned int* data, int n, const unsigned int* marker,
                                unsigned int* min, unsigned int* max, int* index_of_min,
                                int* index_of_max, int* count) ZEMATH_NOEXCEPT;
/* The float member skips nothing and has no count output; the sum is formed in double. */
ZEMATH_API double zemath_f_sum(const float* data, int n, float* min, float* max, int* index_of_min,
                               int* index_of_max) ZEMATH_NOEXCEPT;

/* ---- mean_variance: returns the mean of the usable values of data[0..n-1] (d: not NANUM;
 * others: not equal to *marker, optional) and writes their variance with the N - 1
 * denominator, (S2 - S1^2/N) / (N - 1) over the deviations from the mean, and their count
 * N (both optional). N = 0 (also n <= 0): returns NANUM, variance NANUM, count 0; N = 1:
 * variance 0. NULL data: returns NANUM and writes nothing. */
ZEMATH_API double zemath_b_mean_variance(const unsigned char* data, int n,
                                         const unsigned char* marker, double* variance,
                                         int* count) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_us_mean_variance(const unsigned short* data, int n,
                                          const unsigned short* marker, double* variance,
                                          int* count) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_f_mean_variance(const float* data, int n, const float* marker,
                                         double* variance, int* count) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_d_mean_variance(const double* data, int n, double* variance,
                                         int* count) ZEMATH_NOEXCEPT;

/* ---- cumulative_sum: out[k] = data[first] + ... + data[first + k] for k = 0..end-first-1
 * (out holds end - first elements and is indexed from 0, not from first), a value equal
 * to *marker (optional) adding nothing (a missing first value starts at 0). Sums use the
 * element type's arithmetic: integer members wrap around modulo 2^bits. out may be
 * data + first (in place), no other overlap. Returns the number of missing values met
 * (0 for first = end, nothing written), or -1 when data or out is NULL or first > end. */
ZEMATH_API int zemath_b_cumulative_sum(const unsigned char* data, unsigned int first,
                                       unsigned int end, unsigned char* out,
                                       const unsigned char* marker) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_us_cumulative_sum(const unsigned short* data, unsigned int first,
                                        unsigned int end, unsigned short* out,
                                        const unsigned short* marker) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_i_cumulative_sum(const int* data, unsigned int first, unsigned int end,
                                       int* out, const int* marker) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_cumulative_sum(const float* data, unsigned int first, unsigned int end,
                                       float* out, const float* marker) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_d_cumulative_sum(const double* data, unsigned int first, unsigned int end,
                                       double* out, const double* marker) ZEMATH_NOEXCEPT;

/* ---- frequency_count: counts[k] (bins elements, zeroed first) = number of values of
 * data[0..n-1] with floor((v - start) / width) = k; a value on an inner bin edge counts in
 * the upper bin, also when rounding puts it a few ulps below. Values outside the bins,
 * NaN and infinities are dropped silently. Returns 0 (n = 0: counts all 0), or -1 (nothing
 * written) when data or counts is NULL, n < 0, bins < 1 or width is exactly 0 (a NaN width
 * is accepted and drops every value). */
ZEMATH_API int zemath_b_frequency_count(const unsigned char* data, int n, unsigned int* counts,
                                        int bins, unsigned char start,
                                        unsigned char width) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_us_frequency_count(const unsigned short* data, int n, unsigned int* counts,
                                         int bins, unsigned short start,
                                         unsigned short width) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_frequency_count(const float* data, int n, unsigned int* counts, int bins,
                                        float start, float width) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_d_frequency_count(const double* data, int n, unsigned int* counts, int bins,
                                        double start, double width) ZEMATH_NOEXCEPT;

/* ---- find_most: splits [min, max] of data[0..n-1] (no value skipped, NANUM included;
 * NaN ignored) into bins bins of width (max - min) / bins, counts the values as
 * frequency_count does (so values equal to max, on the last bin's upper edge, are not
 * counted) and returns the lower edge min + k * width of the fullest bin k (the first on
 * ties); *fraction (optional) = its count / the total counted. Constant data: returns the
 * value, fraction 1. Returns NANUM (nothing written) for NULL data, n < 1, bins = 0 or
 * > INT_MAX, no non-NaN value, an infinite value, or a range whose bin width overflows
 * or is 0, and when working storage cannot be allocated. */
ZEMATH_API double zemath_us_find_most(const unsigned short* data, int n, unsigned int bins,
                                      double* fraction) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_d_find_most(const double* data, int n, unsigned int bins,
                                     double* fraction) ZEMATH_NOEXCEPT;

/* ---- stretch, in place: v < low -> new_low; v > high -> new_high; otherwise
 * (v - low) * (new_high - new_low) / (high - low) + (0.5 + new_low), formed in double.
 * The 0.5 is added for every member, floating-point ones included; the us member then
 * truncates (so rounds) into 0..65535, the f member rounds to float. Returns 0, -3 (data
 * untouched) when high - low is exactly 0, or -1 when data is NULL or n < 0. */
ZEMATH_API int zemath_us_stretch(unsigned short* data, int n, unsigned short low,
                                 unsigned short high, unsigned short new_low,
                                 unsigned short new_high) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_stretch(float* data, int n, float low, float high, float new_low,
                                float new_high) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_d_stretch(double* data, int n, double low, double high, double new_low,
                                double new_high) ZEMATH_NOEXCEPT;

/* ---- get_vector_inc: tests whether data[0..n-1] is evenly spaced. Returns 0 for NULL
 * data, n < 2 or data not strictly monotonic (NaN breaks it); with d[i] = data[i+1] -
 * data[i] and m their mean, returns 2 (increasing) or -2 (decreasing) when some
 * |d[i] - m| > |m * tolerance| (also for a NaN tolerance or an infinite m), else 1 or -1
 * and writes first = data[0], last = data[n-1] and increment = d[0] (not m), each
 * optional. Nothing is written unless 1 or -1 is returned. */
ZEMATH_API int zemath_i_get_vector_inc(int n, const int* data, double tolerance, double* first,
                                       double* last, double* increment) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_d_get_vector_inc(int n, const double* data, double tolerance, double* first,
                                       double* last, double* increment) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PRIMITIVES_H */
