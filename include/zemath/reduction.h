/* zeMath: XY data reduction and sampling windows. */
#ifndef ZEMATH_REDUCTION_H
#define ZEMATH_REDUCTION_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Cells of a sampling window of nWidth columns by nHeight rows around a centre, in
 * row-major order: row offsets -(nHeight / 2) .. (nHeight - 1) / 2, column offsets
 * -(nWidth / 2) .. (nWidth - 1) / 2, linear offset = row offset x nCols + column offset.
 * nShape: 0 the full rectangle; 1 the ellipse inscribed in it (cells whose centres lie in
 * the ellipse with semi-axes nHeight / 2 and nWidth / 2 about the rectangle's centre);
 * 2 the cross of the centre row and column; 3 the diagonal cross (|row| = |column|).
 * With row_offsets, col_offsets and linear_offsets all NULL, returns the cell count only;
 * otherwise each non-NULL array (capacity slots) receives one entry per cell. Returns
 * the cell count (>= 1); -10 unknown nShape; -18 nCols, nWidth or nHeight below 1,
 * capacity below the count, or a linear offset that does not fit an int; -19 working
 * storage could not be allocated. */
ZEMATH_API int get_sampling_window_offset(int nCols, int nWidth, int nHeight, int nShape,
                                          int* row_offsets, int* col_offsets, int* linear_offsets,
                                          int capacity) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_REDUCTION_H */
