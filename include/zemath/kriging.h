/* zeMath: ordinary kriging of scattered XYZ data with a power-law generalised
 * covariance C(h) = 50 - (h / r)^e (C = 50 for coincident points, h below 1e-15), on a
 * local neighbourhood found through a square bucket grid; one LU factorisation per
 * bucket serves every target in it.
 *
 * Distances are measured in bucket units: x and y are each mapped by
 * u = (x - xmin) k / (xmax - xmin) / 1.01 over the data's bounding box (k buckets per
 * side, from the bucket size rule below), so the two axes are scaled independently.
 * Bucket size: t = min(trunc(16 dSmooth^2), n); p = 50 when t < 50, 16 when t > 100,
 * else t; then k = max(1, trunc(sqrt(n / p) + 0.5)) and p = trunc(n / k^2 + 0.5) until
 * p settles. Range r = 2 dSmooth / sqrt(p). dSmooth above 3 counts as 3, dExponent above
 * 2 as 2 (0 < e < 2 gives a valid generalised covariance; e = 2 is the degenerate limit).
 *
 * Neighbour search, once per bucket from its first target (in caller order): rings of
 * buckets around the target's bucket (clamped to the grid, so targets outside the data
 * box search from the nearest edge bucket) are added one at a time, at least the
 * target's bucket and its first ring (3 x 3 buckets), until each of the four quadrants
 * around the target (x above / not above, y above / not above) holds nPoint points or
 * has reached the edge of the bucket grid in x or in y, and at least one point is held.
 * The list (nearest rings first) is cut to nMaxNeighbors when that is positive.
 * Data points whose x or y is NaN, infinite or NANUM, or whose z is NANUM, are left out.
 * The Lagrange row and column of the system hold 50, not 1 (kept deliberately: hosts
 * rely on the results of that scaling). Coincident data points in one neighbourhood make
 * the system singular (-38): merge them first (zemath_xyz_remove_duplicates).
 * Targets whose x or y is NaN, infinite or NANUM get NANUM, and so do targets so far
 * from the data that their covariances overflow the system's arithmetic (an estimate or
 * variance that would not be finite). Outputs may not alias inputs. */
#ifndef ZEMATH_KRIGING_H
#define ZEMATH_KRIGING_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Kriging estimates at the m targets (xTarget, yTarget) into zTarget. Returns 0;
 * -37 dSmooth not above 0 (or NaN) or dExponent below 0 (or NaN), checked first;
 * -11 a NULL array; -8 no usable data point (n below 1 included); -38 a kriging system
 * could not be factorised (a pivot below 1e-13 of the largest); -19 out of memory.
 * m below 1 returns 0 and writes nothing. */
ZEMATH_API int zemath_2d_kriging_scat(int n, const double* x, const double* y, const double* z,
                                      int nPoint, double dSmooth, double dExponent, int m,
                                      const double* xTarget, const double* yTarget, double* zTarget,
                                      int nMaxNeighbors) ZEMATH_NOEXCEPT;

/* The same on the grid xGrid[0..nx-1] by yGrid[0..ny-1]: zGrid is ny by nx, row-major,
 * row j holding yGrid[j] (x varying fastest). Codes as the scattered form; -11 also for
 * NULL grid arrays; -8 when nx * ny exceeds the int range. nx or ny below 1: 0, nothing
 * written. */
ZEMATH_API int zemath_2d_kriging_grid(int n, const double* x, const double* y, const double* z,
                                      int nPoint, double dSmooth, double dExponent, int nx,
                                      const double* xGrid, int ny, const double* yGrid,
                                      double* zGrid, int nMaxNeighbors) ZEMATH_NOEXCEPT;

/* zemath_2d_kriging_scat with the kriging variance beside each estimate:
 * variance[k] = 50 - (c' w + 50 mu) for the target's right-hand side c and solution
 * (w, mu), in the units of the generalised covariance (0 at a data point, growing with
 * the distance to the data); NANUM where the estimate is NANUM. variance may be NULL
 * (then this is zemath_2d_kriging_scat). Each variance costs one solve with the bucket's
 * factors. Codes as zemath_2d_kriging_scat. */
ZEMATH_API int zemath_2d_kriging_scat_ex(int n, const double* x, const double* y, const double* z,
                                         int nPoint, double dSmooth, double dExponent, int m,
                                         const double* xTarget, const double* yTarget,
                                         double* zTarget, double* variance,
                                         int nMaxNeighbors) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_KRIGING_H */
