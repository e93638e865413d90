/* zeMath: empirical mode decomposition. A signal (pX, pY) is split into intrinsic mode
 * functions (IMFs), fastest oscillation first, and a residue: the mean of an upper and a
 * lower envelope is subtracted from the signal until a stopping test passes (sifting),
 * the IMF so found is removed, and the process repeats on what is left.
 *
 * Curves: nSize points, pX[i] and pY[i]. A point whose X or Y equals NANUM is missing:
 * it is left out of every computation and the outputs hold NANUM at its position (the
 * counts of maxima, minima and crossings refer to the usable points). NaN is not missing:
 * a NaN Y propagates into the envelopes (through a whole spline) and the IMFs. Except for
 * the zero crossings, the usable X must be finite and strictly ascending (-17 otherwise).
 *
 * Envelopes: the local maxima (minima) are the points above (below) both neighbours; on
 * a flat top (bottom) the leftmost point of the run counts, and the first and last points
 * are never extremes. The envelope interpolates them at every X by the method
 * nEnvelopeMode names (the codes of zemath/interpolation.h):
 *     0  linear                          3  Akima
 *     1  natural cubic spline            4  monotone cubic Hermite (PCHIP)
 *     2  not-a-knot cubic spline         5  nearest extreme (a step envelope)
 * Mode 2 is the usual choice. End treatment: beyond the first and the last extreme the
 * two nearest extremes of the same kind (one when there is only one) are mirrored about
 * the first and the last X, keeping their Y, so that the envelope is interpolated, never
 * extrapolated, up to both ends; an image that would not be finite (X near the double
 * range) is left out and the end value of the envelope is held there instead.
 *
 * Stopping test, on the envelope mean m and amplitude a of a candidate with nMax maxima,
 * nMin minima and nZero zero crossings: A is the average of |a| (NANUM skipped) and
 * sigma[i] = |m[i]| / A (every point against the AVERAGE amplitude, not its own; kept
 * deliberately). Sifting goes on while some sigma[i] > dThreshold2 or
 * |nMax + nMin - nZero| >= 2; otherwise it stops when the count of points with
 * sigma[i] > dThreshold1, divided by nSize (missing points included), is at most
 * dTolerance. Usual values: 0.05, 0.5, 0.05. A NaN threshold makes its comparison
 * false (a NaN dThreshold2 never continues, a NaN dTolerance never stops before the
 * cap). Sifting subtracts the envelope mean at most 10 times; the candidate reached is
 * then accepted even if the test still fails, and the call succeeds (kept deliberately:
 * sifting always ends; -107 is reserved for a sifting limit and never returned).
 *
 * Status codes: 0 success; -10 unknown envelope mode; -11 a required pointer is NULL;
 * -17 usable X not finite and strictly ascending; -18 too few points or extremes, or a
 * negative count or mode; -19 working storage could not be allocated; -105 too few
 * extremes to start a decomposition; -106 the remainder vanished; -109 envelopes could
 * not be built while sifting; -110 envelopes could not be built for their mean. Each
 * function lists the codes it returns. Unless a function says otherwise, a call that
 * returns a negative code writes nothing. Inputs are never modified. */
#ifndef ZEMATH_EMD_H
#define ZEMATH_EMD_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Decomposes (pX, pY) into IMFs and a residue. pIMF holds nMaxIMF rows of nSize doubles
 * (row k, pIMF[k*nSize .. k*nSize+nSize-1], receives IMF k); pResidue holds nSize
 * doubles; *pnIMF receives the number of IMFs stored. At most nMaxIMF rows are written,
 * never more. The loop removes IMFs while the remainder has at least two maxima and two
 * minima and fewer than nMaxIMF rows are filled; the IMFs plus the residue sum back to
 * the signal (to rounding). The signal is copied first, so pResidue and pIMF may be the
 * caller's pX or pY storage; they must not overlap each other.
 * Thresholds and nEnvelopeMode: see above.
 * Returns, after the checks in this order:
 *   -11  pX, pY, pIMF, pnIMF or pResidue is NULL;
 *   -18  nSize < 1, nMaxIMF < 0 or nEnvelopeMode < 0;
 *   -10  nEnvelopeMode > 5;
 *   -17  usable X not finite and strictly ascending;
 *   -105 the signal has fewer than two maxima or two minima (monotonic, constant,
 *        all missing, fewer than 5 usable points): nothing is written;
 *    0   success, *pnIMF and the residue written (nMaxIMF = 0: no IMF, the residue is
 *        the signal);
 *   -106 the largest |value| of the remainder fell below 1e-10 (an absolute level, kept
 *        deliberately), tested before each sifting and before the extreme test, so a
 *        remainder that becomes exactly 0 ends here: the IMFs found so far, *pnIMF and
 *        the residue are written and valid. This is the usual ending on clean sums of
 *        tones: when the last tone passes the stopping test at once, its IMF is the
 *        whole remainder and the next remainder is exactly 0;
 *   -109 an envelope could not be built while sifting: the same outputs are written,
 *        with the remainder before that sifting as residue;
 *   -19  storage exhausted (rows already stored stay written). */
ZEMATH_API int zemath_empirical_mode_decomposition(int nSize, const double* pX, const double* pY,
                                                   double dThreshold1, double dThreshold2,
                                                   double dTolerance, double* pIMF, int nMaxIMF,
                                                   int* pnIMF, double* pResidue,
                                                   int nEnvelopeMode) ZEMATH_NOEXCEPT;

/* One sifting of (pX, pY): pIMF receives the accepted candidate, pRemainder the signal
 * minus it, pMean and pAmp the envelope mean and amplitude of the accepted candidate;
 * each holds nSize doubles. The candidate is tested first as it is, then after each
 * subtraction of its envelope mean, at most 10 subtractions (see the stopping test
 * above). Outputs are written only on success; they may share storage with pX or pY
 * (work is done in private storage) but not with each other. The share test divides
 * by nSize. Returns, in this order: -11 a pointer is NULL; -18 nSize < 1; -109 when an
 * envelope cannot be built (a mode outside 0..5, usable X not finite and strictly
 * ascending, a candidate without a maximum or a minimum); 0 success; -19 storage
 * exhausted. */
ZEMATH_API int zemath_emd_stop_sifting(int nSize, const double* pX, const double* pY,
                                       double dThreshold1, double dThreshold2, double dTolerance,
                                       double* pIMF, double* pRemainder, double* pMean,
                                       double* pAmp, int nEnvelopeMode) ZEMATH_NOEXCEPT;

/* Envelope mean pMean[i] = (upper + lower)/2 and amplitude pAmp[i] = (upper - lower)/2
 * at every point (nSize doubles each); *pnMax and *pnMin receive the numbers of maxima
 * and minima. Outputs must not overlap the inputs or each other. Returns, in this order:
 * -11 a pointer is NULL; -18 nSize < 1; -110 when the envelopes cannot be built (every
 * failure of zemath_emd_get_upper_lower_envelope, an unknown mode included); 0 success;
 * -19 storage exhausted. */
ZEMATH_API int zemath_emd_envelope_mean_amp(int nSize, const double* pX, const double* pY,
                                            double* pMean, double* pAmp, int* pnMax, int* pnMin,
                                            int nEnvelopeMode) ZEMATH_NOEXCEPT;

/* Upper envelope (through the maxima) into pUpper and lower envelope (through the minima)
 * into pLower, nSize doubles each, with the end treatment above; *pnMax and *pnMin receive
 * the numbers of maxima and minima. One maximum and one minimum suffice (with their mirror
 * images). Outputs must not overlap the inputs or each other. Returns, in this order:
 * -11 any of the six pointers is NULL; -18 nSize < 1 or nEnvelopeMode < 0; -10
 * nEnvelopeMode > 5; -17 usable X not finite and strictly ascending; -18 no maximum or no
 * minimum; 0 success; -19 storage exhausted. */
ZEMATH_API int zemath_emd_get_upper_lower_envelope(int nSize, const double* pX, const double* pY,
                                                   double* pUpper, double* pLower, int* pnMax,
                                                   int* pnMin, int nEnvelopeMode) ZEMATH_NOEXCEPT;

/* Zero crossings of (pX, pY), in point order, after the missing points are removed (X in
 * any order). Between consecutive values of opposite signs the crossing is the linear root
 * x0 + (0 - y0)/(y1 - y0)(x1 - x0), direction +1 for a rise and -1 for a fall. A value
 * equal to 0 (exactly; -0 included) is itself a crossing at its X, with direction
 * sign(sign(next) - sign(previous)), a missing neighbour counting as 0: at the first
 * point the sign of the next value, at the last the opposite of the previous one's sign,
 * 0 for a touch. NaN values cross nothing. *pnCrossings receives the count (at most
 * nSize); pCrossX (crossing X) and pDirection (+1, -1 or 0) are optional (NULL: not
 * written) and must hold nSize entries otherwise. Returns, in this order: -11 pX, pY or
 * pnCrossings is NULL; -18 nSize < 2; 0 success (fewer than 2 usable points may give 0
 * or 1 crossing); -19 storage exhausted. */
ZEMATH_API int zemath_emd_get_zero_crossing(int nSize, const double* pX, const double* pY,
                                            int* pnCrossings, double* pCrossX,
                                            int* pDirection) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_EMD_H */
