/* zeMath: frame functions: NaN, infinity and missing-value handling, the bridge
 * records of the numerical back end and the release of what the library allocated
 * for a caller, and the double sum and minmax scans. */
#ifndef ZEMATH_FRAME_H
#define ZEMATH_FRAME_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Flags NaN elements: flags[i] = 1 when data[i] is NaN, else 0; returns the NaN count.
 * Returns 0 and writes nothing when data or flags is NULL, n != nflags, or n < 1. */
ZEMATH_API int zemath_check_nan(const double* data, int n, unsigned int* flags,
                                int nflags) ZEMATH_NOEXCEPT;

/* Flags infinite elements (beyond +-DBL_MAX; NaN is not infinite) and returns their count.
 * Same flag convention and refusals as zemath_check_nan. */
ZEMATH_API int zemath_check_infinity(const double* data, int n, unsigned int* flags,
                                     int nflags) ZEMATH_NOEXCEPT;

/* Replaces every NaN in data[0..n-1] by NANUM in place; returns how many were replaced
 * (0 when data is NULL or n <= 0). */
ZEMATH_API int zemath_check_replace_nan_with_missing_value(double* data, int n) ZEMATH_NOEXCEPT;

/* Compacts the pairs (x[i], y[i]) in place, keeping, in input order, those where neither
 * value equals missing; kept_index (optional, n slots) receives each kept pair's input
 * index. Returns the number kept, or -1 when x or y is NULL or n is 0. */
ZEMATH_API int zemath_1d_remove_missingvalue(double* x, double* y, unsigned int n, double missing,
                                             int* kept_index) ZEMATH_NOEXCEPT;

/* Copies the communication record library -> back end (words 17-20 go to 19-22, words
 * 21-22 to 17-18). Returns 0, or -11 when either pointer is NULL. */
ZEMATH_API int copy_comm_to_nag(zemath_Comm* lib, comm_struct* nag) ZEMATH_NOEXCEPT;
/* Copies the communication record back end -> library (inverse of copy_comm_to_nag). */
ZEMATH_API int copy_comm_to_zemath(zemath_Comm* lib, comm_struct* nag) ZEMATH_NOEXCEPT;
/* Copies the five spline words library -> back end. Returns 0, or -11 on a NULL pointer. */
ZEMATH_API int copy_spline_to_nag(zemath_Spline* lib, Nag_Spline* nag) ZEMATH_NOEXCEPT;
/* Copies the five spline words back end -> library. Returns 0, or -11 on a NULL pointer. */
ZEMATH_API int copy_spline_to_zemath(zemath_Spline* lib, Nag_Spline* nag) ZEMATH_NOEXCEPT;

/* Releases one block that the library allocated and handed to the caller; NULL is ignored. */
ZEMATH_API void zemath_free(void* block) ZEMATH_NOEXCEPT;
/* Releases the coefficient array, then the knot array, of a spline record (each when
 * non-NULL) and nulls those words; the record itself stays the caller's. */
ZEMATH_API void zemath_free_spline_struct(zemath_Spline* spline) ZEMATH_NOEXCEPT;
/* Releases words 4 (coefficients), 1 and 3 (knot arrays) of a 2-D spline record. */
ZEMATH_API void zemath_free_2dSpline_struct(zemath_2dSpline* spline) ZEMATH_NOEXCEPT;
/* Releases the arrays in words 15, 16, 18, 19, 21 and 22 of a communication record. */
ZEMATH_API void zemath_free_comm_struct(zemath_Comm* comm) ZEMATH_NOEXCEPT;

/* Sum of data[0..n-1], skipping values equal to NANUM (NaN is not skipped). Optional
 * outputs: min, max and their first-occurrence indices, count of points used. With no
 * usable point: min = max = 0.0, indices -1, count 0, sum 0.0. The sum is formed in 16
 * partial sums per 512-value block (same result on every processor; see primitives.h). */
ZEMATH_API double zemath_d_sum(const double* data, int n, double* min, double* max,
                               int* index_of_min, int* index_of_max, int* count) ZEMATH_NOEXCEPT;

/* Indices of the minimum and maximum of data[first..last] (inclusive), skipping NANUM,
 * first occurrence on ties; -1 when no point is usable or first > last. Returns the
 * number of missing points met. A NULL data pointer, a negative first index or last =
 * INT_MAX is refused:
 * returns -1 and writes nothing. */
ZEMATH_API int zemath_d_minmax(const double* data, int first, int last, int* index_of_min,
                               int* index_of_max) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_FRAME_H */
