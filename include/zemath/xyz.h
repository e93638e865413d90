/* zeMath: XYZ examination, step detection, duplicate merging and conversion between
 * scattered XYZ data and matrices.
 *
 * Inputs are never modified unless a function says it works in place. A refused call
 * (negative return) writes nothing. Tolerances are absolute, in the units of the axis,
 * unless said otherwise; a negative tolerance counts as its magnitude.
 *
 * Duplicate methods (the nMethod codes): 0 (and any unknown code) mean of the values
 * that are not NANUM, 1 median (an even count takes the mean of the two middle values),
 * 2 minimum, 3 maximum, 4 sum of the values that are not NANUM, 5 keep all points.
 * A group whose values are all NANUM merges to NANUM; a NaN value propagates.
 * Duplicates are found in two steps: the points sorted by x are cut into x-clusters
 * (sorted neighbours whose x differ by at most the x tolerance, chained), then each
 * cluster is sorted by y (equal y by x) and cut the same way with the y tolerance into
 * groups. The merged point keeps the x and y of its group's point with the smallest y
 * (the smallest x among equal y), which need not be the group's smallest x; merged
 * coordinates are always coordinates of the data.
 *
 * The step finders drop a difference between neighbours a, b as zero when
 * |b - a| <= tol (|a| + |b|): the test is relative, so for coordinates far from 0
 * (1e9 + small steps) the tolerance must be below step / (2 |x|). */
#ifndef ZEMATH_XYZ_H
#define ZEMATH_XYZ_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Result categories of the examination. */
enum zemath_xyz_category {
    ZEMATH_XYZ_REGULAR = 0, /* a full grid */
    ZEMATH_XYZ_SPARSE = 1,  /* grid steps exist, some nodes are missing */
    ZEMATH_XYZ_RANDOM = 2   /* no grid */
};

/* Examination record, filled by zemath_xyz_examine_data_pro. */
typedef struct zemath_xyz_exam {
    double dXTol;       /* x tolerance (1e-8 when no record is given) */
    double dYTol;       /* y tolerance */
    int nMethod;        /* duplicate method; 5 = do not remove duplicates */
    double dXIrregular; /* in: step-fit tolerance in x (<= 0: dXTol); out: largest misfit in x */
    double dYIrregular; /* the same for y */
    int nVar;           /* number of points after duplicate removal */
    double dXmin, dXStep, dXmax;
    double dYmin, dYStep, dYmax;
    int nType; /* category 0/1/2, -1 until set */
} zemath_xyz_exam;

/* Examines x, y, z[0..n-1]: do they lie on a rectangular grid, and with which steps.
 * Points whose x or y is NANUM or NaN are left out. With nMethod other than 5 duplicates
 * are merged first (points with a missing z are kept). Steps come from the block step
 * finder with fitting tolerance dXIrregular/dYIrregular. Fewer than 3 points: the steps
 * are the ranges, category 0. When a step search fails on one axis its step is estimated
 * as range / (k - 1), k the number of distinct values of the other axis (at most
 * floor(sqrt(n)) when n >= 4 and k * k > n), and the category is 2; both failing give
 * steps 0 and category 2. A grid of more than nVar * 1e6 nodes is random (2).
 * Returns the category (also in rec->nType), or -1 for a null array, n < 1 or no usable
 * point; -19 when working storage fails (rec then holds what the examination had
 * reached). rec may be NULL (tolerances 1e-8, nothing removed). */
ZEMATH_API int zemath_xyz_examine_data_pro(int n, const double* x, const double* y, const double* z,
                                           zemath_xyz_exam* rec) ZEMATH_NOEXCEPT;

/* The same with separate outputs (each may be NULL): builds a record with
 * dXIrregular = dXTol, dYIrregular = dYTol, nMethod 5 unless bRemoveDuplicates. */
ZEMATH_API int zemath_xyz_examine_data(int n, const double* x, const double* y, const double* z,
                                       double dXTol, double dYTol, int* nVar, double* dXmin,
                                       double* dXStep, double* dXmax, double* dYmin, double* dYStep,
                                       double* dYmax, bool bRemoveDuplicates,
                                       int nMethod) ZEMATH_NOEXCEPT;

/* Variant of zemath_xyz_examine_data whose steps come from the mode finder
 * (zemath_find_array_step_stat_ex); on an axis where it fails, the gcd finder
 * (zemath_find_array_step_by_gcd, no minimum step) is used instead and the category is
 * then decided from the gcd step exactly as for found steps (regular, sparse, or random
 * when the grid would exceed nVar * 1e6 nodes). Returns 0, 1, 2 or -1. */
ZEMATH_API int zemath_xyz_examine_data_ex(int n, const double* x, const double* y, const double* z,
                                          double dXTol, double dYTol, int* nVar, double* dXmin,
                                          double* dXStep, double* dXmax, double* dYmin,
                                          double* dYStep, double* dYmax, bool bRemoveDuplicates,
                                          int nMethod) ZEMATH_NOEXCEPT;

/* Common step of the values x[0..n-1] (any order; NANUM and NaN ignored) by the block
 * step finder, fitting tolerance tol. Returns 0 and the step; -11 when x or step is NULL;
 * -18 fewer than 2 usable values (step set to 0); -32 no common step (step set to 0). */
ZEMATH_API int zemath_find_array_step(const double* x, int n, double* step,
                                      double tol) ZEMATH_NOEXCEPT;

/* Mode finder: the neighbour differences of the sorted values that are not zero
 * (|b - a| > tol (|a| + |b|)) are grouped within a relative 1e-6; the step is the mean
 * of the most frequent group (the smaller step on ties), *count its size. Returns 0;
 * -11 NULL x, step or count; -18 fewer than 2 values; -32 no non-zero difference. */
ZEMATH_API int zemath_find_array_step_stat(const double* x, unsigned int n, double* step,
                                           double tol, int* count) ZEMATH_NOEXCEPT;

/* As zemath_find_array_step_stat, then every difference must be a whole multiple of the
 * step within a fraction max(tol, 1e-6) of it, else -32 (step and count still written). */
ZEMATH_API int zemath_find_array_step_stat_ex(const double* x, unsigned int n, double* step,
                                              double tol, int* count) ZEMATH_NOEXCEPT;

/* As zemath_find_array_step_stat, but -32 unless the most frequent group holds at least
 * the fraction dProbability (0..1) of the differences. */
ZEMATH_API int zemath_find_array_step_by_probability(const double* x, unsigned int n, double* step,
                                                     double tol,
                                                     double dProbability) ZEMATH_NOEXCEPT;

/* Approximate greatest common divisor of the non-zero neighbour differences (Euclid's
 * algorithm; remainders within tol times the largest difference count as zero). Returns
 * 0; -11 NULL; -18 fewer than 2 values; -32 no difference or a gcd below dMinStep. */
ZEMATH_API int zemath_find_array_step_by_gcd(const double* x, unsigned int n, double* step,
                                             double tol, double dMinStep) ZEMATH_NOEXCEPT;

/* Histogram of the non-zero neighbour differences grouped as by the mode finder: group
 * means ascending into steps[0..] and their sizes into counts[0..], at most nMax of
 * each. Returns the number of groups (which may exceed nMax); -11 NULL x, steps or
 * counts; -18 n < 2. */
ZEMATH_API int zemath_array_step_histogram(const double* x, int n, double tol, double* steps,
                                           int* counts, int nMax) ZEMATH_NOEXCEPT;

/* The non-zero neighbour differences of the sorted values (the intervals between the
 * distinct values, in ascending order of position), at most nMax into intervals.
 * Returns their number; -11 NULL; -18 n < 2. */
ZEMATH_API int zemath_get_intervals(const double* x, int n, double tol, double* intervals,
                                    int nMax) ZEMATH_NOEXCEPT;

/* First grid node of values that lie on a grid of the given step: the smallest value
 * shifted by the mean offset of all values from their nearest grid node (a least-squares
 * phase); the smallest value itself when step is not positive. Returns 0; -11 NULL;
 * -18 no usable value (NANUM and NaN ignored). */
ZEMATH_API int zemath_array_anchor(const double* x, int n, double step,
                                   double* anchor) ZEMATH_NOEXCEPT;

/* Places each point in an ny-by-nx row-major matrix: column trunc((x - xmin) / xstep +
 * 0.5), row likewise (index 0 on an axis of step 0), trunc rounding toward zero, so a point
 * up to 1.5 steps below the first node lands in index 0 (kept deliberately: hosts rely
 * on it). All points are checked before any cell is written; untouched cells keep their
 * values; a later point in a cell overwrites an earlier one. Returns 0; -11 a NULL
 * array; -5 n < 1; -18 nx or ny below 1, a step of 0 with more than one column or row,
 * or a point off the grid (NaN coordinates are off the grid). */
ZEMATH_API int zemath_convert_regular_xyz_to_matrix(int n, const double* x, const double* y,
                                                    const double* z, double* mat, double xmin,
                                                    double xstep, int nx, double ymin, double ystep,
                                                    int ny) ZEMATH_NOEXCEPT;

/* As the regular form, but first fills all nx * ny cells with NANUM, skips points off
 * the grid, and places a point only when |x - (xmin + ix xstep)| <= |xstep| xTolFrac and
 * the same holds in y. Returns n minus the number of points placed, or -11 / -5 / -18 as
 * the regular form (off-grid points are not an error here). */
ZEMATH_API int zemath_convert_sparse_xyz_to_matrix(int n, const double* x, const double* y,
                                                   const double* z, double* mat, double xmin,
                                                   double xstep, int nx, double ymin, double ystep,
                                                   int ny, double xTolFrac,
                                                   double yTolFrac) ZEMATH_NOEXCEPT;

/* Unrolls an ny-by-nx row-major matrix into XYZ triples, row by row (x varying fastest):
 * x = xmin + j xstep, y = ymin + i ystep. With bSkipMissing, cells equal to NANUM are
 * left out. x, y, z must hold nx * ny values. Returns the number written; -11 NULL;
 * -18 nx or ny below 1. */
ZEMATH_API int zemath_mat_to_regular_xyz(const double* mat, int nx, int ny, double xmin,
                                         double xstep, double ymin, double ystep, double* x,
                                         double* y, double* z, bool bSkipMissing) ZEMATH_NOEXCEPT;

/* Replaces every blank cell (NANUM or NaN) of mat[0..n-1] by value, in place. Returns
 * the number replaced; -11 NULL; -18 n < 1. */
ZEMATH_API int zemath_mat_replace_blanks(double* mat, int n, double value) ZEMATH_NOEXCEPT;

/* Removes, in place and in order, every point whose x, y or z is NANUM. Returns the new
 * count; -11 NULL; -18 n < 1. */
ZEMATH_API int zemath_xyz_remove_missingvalue(int n, double* x, double* y,
                                              double* z) ZEMATH_NOEXCEPT;

/* Merges duplicate points in place (methods above); the survivors go to the front of
 * x, y, z cluster by cluster in increasing x, by y inside each x-cluster (so x may
 * decrease slightly, within the x tolerance, between the groups of one cluster). Points
 * whose x or y is NANUM or NaN are dropped; points whose z is NANUM are dropped unless
 * bKeepMissingZ. nMethod 5 returns n and changes nothing. Returns the new count (0 when
 * nothing usable is left); -11 a NULL array; -18 n < 1. */
ZEMATH_API int zemath_xyz_remove_duplicates(int n, double* x, double* y, double* z, int nMethod,
                                            double dXTol, double dYTol,
                                            int bKeepMissingZ) ZEMATH_NOEXCEPT;

/* The same with a second value array v merged like z (a point is dropped for a missing
 * z only, as in the XYZ form). */
ZEMATH_API int zemath_xyzv_remove_duplicates(int n, double* x, double* y, double* z, double* v,
                                             int nMethod, double dXTol, double dYTol,
                                             int bKeepMissingZ) ZEMATH_NOEXCEPT;

/* One-key form: points whose x agree within dTol are merged, y combined by the method
 * (NANUM values ignored). Survivors sorted by x. Returns the new count; -11; -18 n < 1. */
ZEMATH_API int zemath_xy_remove_duplicates(int n, double* x, double* y, int nMethod,
                                           double dTol) ZEMATH_NOEXCEPT;

/* Sorts x[0..n-1] ascending in place and keeps one value (the first) of every chain of
 * values within tol of their sorted predecessor; NANUM and NaN are dropped. Returns the
 * new count; -11 NULL; -18 n < 1. */
ZEMATH_API int zemath_array_remove_duplicates(double* x, int n, double tol) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_XYZ_H */
