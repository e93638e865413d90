/* zeMath: rainflow family. Fatigue cycle counting of load histories: a hysteresis filter
 * that reduces a history to its turning points, four-point rainflow counting, residue
 * rules, load classes and rainflow matrices (from-to and range-mean), a cycle list with
 * the turning-point indices of each cycle, and a Palmgren-Miner damage sum.
 *
 * Turning points (hysteresis h >= 0). The first point is kept and is the first
 * candidate; the direction is unknown. A later point y moves the direction: while it is
 * unknown, to down when y < candidate - h, to up when y > candidate + h; when going up,
 * to down when y < candidate - h; when going down, to up when y > candidate + h. While
 * the direction holds, the candidate moves to y when y extends the run (y >= candidate
 * going up, y <= candidate going down: on equal loads the later point wins). When the
 * direction changes, y becomes the candidate, and on a reversal (up to down or down to
 * up) the previous candidate is kept as a turning point. After the last point the
 * candidate is kept when the history moved at all and it lies at least h from the last
 * kept point. A monotonic history keeps its first and last points; a history that never
 * leaves the band [first - h, first + h] keeps its first point only.
 *
 * Four-point rule. Turning points are pushed on a stack; after each push, while the
 * four newest points A, B, C, D satisfy min(B, C) >= min(A, D) and max(B, C) <= max(A, D),
 * B -> C is a closed cycle and B, C are removed. What stays on the stack is the residue.
 * Each closed cycle uses two turning points and each residue point one.
 *
 * Residue modes (nResidueMode, 0..3):
 *   0  rising half cycles: r[i] -> r[i+1] for i = s, s+2, ..., s = 1 when r[0] > r[1]
 *      else 0;
 *   1  falling half cycles: the same with s = 1 when r[1] > r[0] else 0;
 *   2  the residue is repeated once (r followed by r), reduced to turning points again
 *      and counted with the four-point rule; the cycles found are added, the rest dropped;
 *   3  as 2, and the matrices are returned in range-mean form.
 *
 * Load classes (nClassMode, 0..2, with the range arguments dClassLower, dClassUpper):
 *   0  nBins equal-width classes from the smallest to the largest load (the range
 *      arguments are not read); a history of one load value puts it in class 0;
 *   1  nBins equal-width classes over [dClassLower, dClassUpper]; a load outside is an
 *      error;
 *   2  as 1, but a load below dClassLower goes to class 0 and one above dClassUpper to
 *      the last class.
 * The class of a load y is floor((y - lower) / (upper - lower) * nBins); the upper bound
 * itself falls in the last class. In modes 1 and 2 the bounds must be finite with
 * dClassLower < dClassUpper.
 *
 * Matrices are nBins x nBins ints, row-major, caller-owned. From-to form: [r][c] counts
 * cycles between classes r and c; a matrix is folded (for r < c, [r][c] and [c][r] both
 * hold the count of both directions), so either triangle reads the counts. Range-mean
 * form: row d = c - r (the range in classes), column floor((r + c + 1) / 2) (the mean
 * class, rounded up on odd sums: kept deliberately, stored matrices rely on it); row 0
 * and everything else not reached stays 0.
 *
 * Missing values: loads equal to NANUM are skipped (never turning points). NaN loads are
 * skipped before the history first moves and are an error after that.
 *
 * Status codes of the five matrix functions: 0 success, -1 bad arguments, -2 the
 * filtering or the classification of Rainflow_Matrix failed, -19 working storage could
 * not be allocated. A refused call writes nothing. The zemath_ functions use the library's
 * usual codes, listed with each. */
#ifndef ZEMATH_RAINFLOW_H
#define ZEMATH_RAINFLOW_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Reduces the history (pTime[i], pValue[i]), i < *pnSize, to its turning points with
 * hysteresis dHysteresis, compacting both arrays in place (pTime may be NULL: then only
 * the loads are compacted) and storing the number kept in *pnSize.
 * Returns -1 when pnSize or pValue is NULL or *pnSize < 1; 0 without any change when
 * dHysteresis is negative or NaN or when *pnSize < 3; otherwise -1 when a NaN load follows
 * the first move (nothing is then written), else 0. */
ZEMATH_API int Rainflow_Filtering(int* pnSize, double* pTime, double* pValue,
                                  double dHysteresis) ZEMATH_NOEXCEPT;

/* Rainflow matrices of the history pValue[0..nSize-1] (pTime, nSize entries, is checked
 * but not read; neither input is modified). The loads are filtered with dHysteresis,
 * mapped to nBins classes by nClassMode (and dClassLower, dClassUpper), reduced to
 * turning points again in class space (for nSize >= 3) and counted with the four-point
 * rule; the residue is treated by nResidueMode. pClosedMatrix (nBins * nBins) receives
 * the closed cycles, pTotalMatrix (nBins * nBins) the closed and the residue cycles,
 * each folded; with nResidueMode 3 both are converted to range-mean form. A negative or
 * NaN dHysteresis, or nSize < 3, counts the loads as they stand.
 * Returns -1 when nSize < 2, nBins < 2, any pointer is NULL, nResidueMode or nClassMode
 * (read as unsigned) exceeds 3 or 2, or the class bounds of modes 1 and 2 are invalid;
 * -2 when a NaN load follows the first move, when the loads to classify hold a NaN (any
 * mode) or an infinity (mode 0) or are all missing, or when a load lies outside the
 * bounds of mode 1; -19; 0. */
ZEMATH_API int Rainflow_Matrix(int nSize, double* pTime, double* pValue, int nBins,
                               int* pTotalMatrix, int* pClosedMatrix, double dHysteresis,
                               int nResidueMode, int nClassMode, double dClassLower,
                               double dClassUpper) ZEMATH_NOEXCEPT;

/* Rainflow matrix of a given cycle list: cycle k runs from load pFrom[k] to pTo[k],
 * k < nCycles. The 2 * nCycles loads define the classes (nClassMode, dClassLower,
 * dClassUpper as above); pMatrix (nBins * nBins) is zeroed, each cycle adds 1 to
 * [from class][to class], the matrix is folded, and with nResidueMode 3 converted to
 * range-mean form (nResidueMode 0..2 give from-to form).
 * Returns -1 when nCycles < 1, nBins < 2, a pointer is NULL, nResidueMode > 3 or
 * nClassMode > 2 (as unsigned), the bounds of modes 1 and 2 are invalid, a load is NaN
 * or NANUM, a load is infinite in mode 0, or a load lies outside the bounds in mode 1;
 * -19; 0. */
ZEMATH_API int Rainflow_Cycle_2_Rainflow_Matrix(int nCycles, double* pFrom, double* pTo, int nBins,
                                                int* pMatrix, int nClassMode, int nResidueMode,
                                                double dClassLower,
                                                double dClassUpper) ZEMATH_NOEXCEPT;

/* From-to to range-mean form in place: out[c - r][floor((r + c + 1) / 2)] = in[r][c] for
 * every r < c; the diagonal and the lower triangle of the input are dropped.
 * Returns -1 when nBins < 2 or pMatrix is NULL; -19; 0. */
ZEMATH_API int MinToMax_RFM_2_RangeMean_RFM(int nBins, int* pMatrix) ZEMATH_NOEXCEPT;

/* Range-mean to from-to form in place, the inverse placement: in[d][m] goes to [r][r + d]
 * with r = m - floor((d + 1) / 2), for d >= 1 and r, r + d inside the matrix; other
 * entries (row 0, unreachable means) are dropped and the lower triangle is 0 (the result
 * is not folded). Returns -1 when nBins < 2 or pMatrix is NULL; -19; 0. */
ZEMATH_API int RangeMean_RFM_2_MinToMax_RFM(int nBins, int* pMatrix) ZEMATH_NOEXCEPT;

/* Cycle list of the history load[0..n-1]: turning points with the given hysteresis,
 * four-point counting, then the residue: residue_mode 0 counts every step between
 * consecutive residue points as a half cycle (weight 0.5), residue_mode 1 repeats the
 * residue once and counts the full cycles found (weight 1). Closed cycles come first, in
 * the order found, then the residue cycles. For cycle k (k < *n_cycles) each optional
 * output receives: from_index[k] and to_index[k] the indices into load of its start and
 * end, range[k] = |load[to] - load[from]|, mean[k] = (load[from] + load[to]) / 2,
 * count[k] its weight (1 for a closed cycle). *n_cycles receives the number of cycles and
 * *n_closed (optional) the number of closed ones. With every per-cycle output NULL the
 * call only counts and capacity is not read; otherwise the outputs must hold capacity
 * entries. Loads equal to NANUM are skipped.
 * Returns 0; -11 when load or n_cycles is NULL; -18 when n < 2; -14 when hysteresis is
 * negative or NaN; -10 when residue_mode is not 0 or 1; -1 when a load is NaN; -25 when
 * more cycles were found than capacity (only *n_cycles and *n_closed are then written,
 * with the counts needed); -19. */
ZEMATH_API int zemath_rainflow_cycles(const double* load, int n, double hysteresis,
                                      int residue_mode, int capacity, int* from_index,
                                      int* to_index, double* range, double* mean, double* count,
                                      int* n_cycles, int* n_closed) ZEMATH_NOEXCEPT;

/* Palmgren-Miner damage sum for a Basquin S-N curve N(S) = intercept * S^(-exponent),
 * S the cycle's range: *damage = sum over k < n of count[k] * range[k]^exponent /
 * intercept, where a cycle whose range does not exceed endurance_limit does no damage
 * (endurance_limit <= 0: every cycle counts). count may be NULL: each range is then one
 * full cycle. n = 0 gives 0.
 * Returns 0; -11 when range or damage is NULL; -18 when n < 0; -151 when exponent or
 * intercept is not a positive finite number, endurance_limit is NaN, or a range or count
 * is negative, NaN or infinite. */
ZEMATH_API int zemath_rainflow_damage(const double* range, const double* count, int n,
                                      double exponent, double intercept, double endurance_limit,
                                      double* damage) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_RAINFLOW_H */
