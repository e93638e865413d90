/* zeMath: neighbourhood filters over 16-bit grey images (unsigned short pixels, row-major,
 * nRows rows of nCols pixels), filtered in place over a rectangular region of interest.
 *
 * Window: nWidth columns by nHeight rows around each pixel, column offsets
 * -(nWidth / 2) .. (nWidth - 1) / 2 and row offsets likewise (an even side has its extra
 * cell before the pixel), of shape nShape (0 rectangle, 1 inscribed ellipse, 2 cross,
 * 3 diagonal cross; see get_sampling_window_offset in reduction.h). Every window is read
 * from an unfiltered copy of the image, so the result does not depend on the walking
 * order. Window cells outside the image are skipped: border windows are smaller.
 *
 * Region: rows nRowFrom..nRowTo and columns nColFrom..nColTo inclusive; nRowTo and
 * nColTo of -1 mean the last row and column. Pixels outside the region are unchanged.
 *
 * Threshold: when dThreshold is not 0, T = trunc((max - min pixel of the whole image)
 * |dThreshold| / 100), kept in 16 bits (saturated at 65535; +-inf gives 65535), and a
 * filtered value replaces a pixel only when it moves the pixel by at least T
 * (dThreshold > 0) or by at most T (dThreshold < 0). A NaN dThreshold means no threshold.
 *
 * Status, checks in this order: -11 image NULL; -5 nRows or nCols below 1; -4 nWidth or
 * nHeight below 1, nWidth > nCols or nHeight > nRows; -5 a bad region (a start negative
 * or above its end, an end outside the image); -1 an unknown shape (the engine failed);
 * -19 working storage could not be allocated. A refused call leaves the image untouched.
 */
#ifndef ZEMATH_IMAGE_H
#define ZEMATH_IMAGE_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Percentile (rank) filter. For m window cells, k = trunc(dPercent / 100 m): k <= 1
 * (dPercent 0, small or negative) gives the window minimum; k - 1 < m the value of
 * ascending rank k - 1 (0-based; dPercent 100 gives the largest, rank m - 1); larger
 * (dPercent above 100) the maximum. A window clipped at the border with count < m cells
 * uses rank k' - 1 with k' = trunc(dPercent / 100 count), rank 0 when k' is 0 (the
 * minimum and maximum filters stay minimum and maximum). Kept deliberately: the rank is
 * k - 1, not k (a 3 x 3 window at 50% gives rank 3, not the median 4), and hosts rely on
 * it. Status as above, and -1 when dPercent is NaN. */
ZEMATH_API int zemath_us_percentile_filter(unsigned short* image, int nRows, int nCols,
                                           double dPercent, int nWidth, int nHeight, int nShape,
                                           double dThreshold, int nRowFrom, int nColFrom,
                                           int nRowTo, int nColTo) ZEMATH_NOEXCEPT;

/* Conservative smoothing: each pixel is clamped into [min, max] of the other pixels of
 * its window (unchanged when the window holds only the pixel). Status as above. */
ZEMATH_API int zemath_us_conserve_filter(unsigned short* image, int nRows, int nCols, int nWidth,
                                         int nHeight, int nShape, double dThreshold, int nRowFrom,
                                         int nColFrom, int nRowTo, int nColTo) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_IMAGE_H */
