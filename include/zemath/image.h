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
 * Working storage: a copy of the image; the percentile filter on the rectangle (shape 0)
 * also takes counts of the 16-bit values, at most 64 MiB whatever the image size (about
 * 8 MiB for windows up to a few hundred columns).
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

/* Structuring element: fills strel (nRows x nCols, row-major) with 1 for the cells of
 * the element and 0 elsewhere, the centre being cell (nRows / 2, nCols / 2). kind:
 * 0 rectangle; 1 ellipse inscribed in it; 2 diamond inscribed in it; 3 cross (centre row
 * and column); 4 horizontal line (centre row); 5 vertical line (centre column); 6 line
 * through the centre at params[0] degrees counterclockwise from the +column direction
 * (rows drawn downwards; cells within half a cell of it); 7 octagon: the rectangle with
 * the corner triangles of params[0] cells cut (cells whose row and column distances to
 * the nearest corner sum to at least params[0]). Returns the number of cells set; -52
 * strel NULL or nRows or nCols below 1 (an empty target); -10 kind outside 0..7; -18
 * kinds 6 and 7 without their parameter (params NULL, n_params < 1, NaN or NANUM). */
ZEMATH_API int zemath_make_strel(int kind, const double* params, int n_params, unsigned char* strel,
                                 int nRows, int nCols) ZEMATH_NOEXCEPT;

/* Grey dilation (maximum) and erosion (minimum) of matrix (nRows x nCols, row-major)
 * with the element strel (sRows x sCols, non-zero cells set, centre (sRows / 2,
 * sCols / 2), not reflected: equal for symmetric elements): out[r][c] is the maximum /
 * minimum of matrix over the set cells around (r, c), cells outside the matrix and values
 * equal to NANUM skipped (NANUM when none is left; a NaN met is the result). out needs
 * nRows x nCols slots and may be matrix itself. Returns 0; -11 matrix or out NULL; -15 a
 * size below 1; -52 strel NULL or without a set cell; -54 the matrix smaller than the
 * element; -19 no storage. */
ZEMATH_API int zemath_dilate_matrix_with_strel(const double* matrix, int nRows, int nCols,
                                               const unsigned char* strel, int sRows, int sCols,
                                               double* out) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_erode_matrix_with_strel(const double* matrix, int nRows, int nCols,
                                              const unsigned char* strel, int sRows, int sCols,
                                              double* out) ZEMATH_NOEXCEPT;

/* Profile of image (nRows x nCols, row-major) along the polyline through the vertices
 * (vx[k], vy[k]), k < nVertices, in pixel coordinates (vx column, vy row): nPoints
 * samples at equal arc-length steps from the first vertex to the last, each the
 * bilinear interpolation of the four surrounding pixels (NANUM outside the image or next
 * to a missing pixel). distance (optional) and values need nPoints slots; distance[i] is
 * the arc length of sample i. Returns nPoints; -11 image, vx, vy or values NULL; -15
 * nRows or nCols below 1; -18 nVertices < 2 or nPoints < 2; -1 a non-finite length. */
ZEMATH_API int zemath_image_lines_profile(const double* image, int nRows, int nCols,
                                          const double* vx, const double* vy, int nVertices,
                                          int nPoints, double* distance,
                                          double* values) ZEMATH_NOEXCEPT;

/* XYZ triples of an image: for each pixel (row r, column c) not equal to NANUM, in
 * row-major order, x = x_first + c x_step, y = y_first + r y_step, z = the pixel. x, y
 * and z need up to nRows x nCols slots. Returns the number of triples; -11 a NULL
 * pointer; -15 nRows or nCols below 1. */
ZEMATH_API int zemath_image_xyz_profile(const double* image, int nRows, int nCols, double x_first,
                                        double x_step, double y_first, double y_step, double* x,
                                        double* y, double* z) ZEMATH_NOEXCEPT;

/* Natural axes of a 16-bit image: with pixel weights w = value - threshold for values
 * above threshold (0 otherwise), the weighted centroid (centre_x column, centre_y row),
 * the angle in degrees of the major axis from the +column direction towards +row in
 * (-90, 90], and the standard deviations of the weight along the major and minor axes
 * (square roots of the eigenvalues of the weighted covariance of the pixel positions).
 * Returns 0; -11 a NULL pointer; -15 nRows or nCols below 1; -18 no pixel above the
 * threshold. */
ZEMATH_API int zemath_us_find_natural_axes(const unsigned short* image, int nRows, int nCols,
                                           unsigned short threshold, double* centre_x,
                                           double* centre_y, double* angle, double* major,
                                           double* minor) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_IMAGE_H */
