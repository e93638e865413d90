/* zeMath: sorting family, C part: the typed comparison functions, their lookup by type
 * code, and the two record-sort entry points. The sorter class built on them is C++ only
 * (sort.hpp).
 *
 * A comparison function takes pointers to two records whose key comes first and returns
 * an int. Ascending: -1 when a < b, 1 when a > b, 0 otherwise; descending: 1 when a < b,
 * -1 when a > b, 0 otherwise. Comparisons are plain ordered ones: NaN compares equal to
 * everything (it ends wherever the algorithm leaves it), NANUM is an ordinary tiny
 * negative number (just below 0), -0.0 equals 0.0. Records need no alignment. A NULL
 * record pointer is the smallest record (first when ascending, last when descending; two
 * NULLs are equal), so a direct call with NULL never faults.
 *
 * Comparison functions travel as void* (the lookup's return type and the sort entry
 * points' argument), so C callers pass what the lookup returns without casts. */
#ifndef ZEMATH_SORT_H
#define ZEMATH_SORT_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Signed 8-bit keys (type codes 2, 3). */
ZEMATH_API int Compare_char_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_char_Descend(const void* a, const void* b);
/* Unsigned 8-bit keys (type code 4). */
ZEMATH_API int Compare_BYTE_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_BYTE_Descend(const void* a, const void* b);
/* Signed 16-bit keys (type code 5). */
ZEMATH_API int Compare_short_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_short_Descend(const void* a, const void* b);
/* Unsigned 16-bit keys (type code 6). */
ZEMATH_API int Compare_WORD_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_WORD_Descend(const void* a, const void* b);
/* Signed 32-bit keys (type code 8). */
ZEMATH_API int Compare_int_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_int_Descend(const void* a, const void* b);
/* Unsigned 32-bit keys (type code 9). */
ZEMATH_API int Compare_UINT_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_UINT_Descend(const void* a, const void* b);
/* float keys (type code 10). */
ZEMATH_API int Compare_float_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_float_Descend(const void* a, const void* b);
/* double keys (type codes 11, 13). */
ZEMATH_API int Compare_double_Ascend(const void* a, const void* b);
ZEMATH_API int Compare_double_Descend(const void* a, const void* b);

/* The ascending / descending comparison function for a type code (2, 3 char; 4 BYTE;
 * 5 short; 6 WORD; 8 int; 9 UINT; 10 float; 11, 13 double), or NULL for any other code. */
ZEMATH_API void* GetAppropriateCompareAscend(int type_code);
ZEMATH_API void* GetAppropriateCompareDescend(int type_code);

/* Sorts records first..last (inclusive) of width bytes at base in place with compare
 * (a comparison function of the kind above, or the caller's own). theMergeSort is
 * stable; theQuickSort is not, and is O(n log n) on every input. Returns 1 when sorted
 * (also for a single record), 0 with the records untouched when base or compare is
 * NULL, width < 1, first < 0, last < first, or working storage cannot be allocated
 * (theMergeSort needs (last - first + 1) * width bytes; theQuickSort needs that much
 * only for its fast path and otherwise sorts in place). */
ZEMATH_API int theMergeSort(void* base, int first, int last, int width, void* compare);
ZEMATH_API int theQuickSort(void* base, int first, int last, int width, void* compare);

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_SORT_H */
