/* zeMath demo, mode decomposition part: two tones (periods 16 and 150 points) on a slow
 * trend decomposed into IMFs with spline envelopes; each IMF's extremes, zero crossings
 * and amplitude, and how closely IMFs plus residue give the signal back. */
#include <math.h>
#include <stdio.h>

#include "zemath.h"

void demo_emd(void);

void demo_emd(void) {
    enum { N = 1200, ROWS = 6 };
    static double x[N], y[N], imf[ROWS * N], residue[N], upper[N], lower[N];
    const double pi = 3.14159265358979323846;
    double worst = 0.0;
    int i, k, nimf = 0, status, nmax, nmin, ncross;
    for (i = 0; i < N; ++i) {
        x[i] = i;
        y[i] = sin(2 * pi * i / 16.0) + 2.0 * sin(2 * pi * i / 150.0 + 0.5) + 0.001 * i;
    }
    status = zemath_empirical_mode_decomposition(N, x, y, 0.05, 0.5, 0.05, imf, ROWS, &nimf,
                                                 residue, ZEMATH_INTERP_SPLINE_NOT_A_KNOT);
    if (status != 0 && status != ZEMATH_ERR_REMAINDER_VANISHED) return;
    printf("mode decomposition: sin(2 pi t/16) + 2 sin(2 pi t/150 + 0.5) + 0.001 t, %d points\n",
           N);
    for (k = 0; k < nimf; ++k) {
        const double* row = imf + k * N;
        if (zemath_emd_get_upper_lower_envelope(N, x, row, upper, lower, &nmax, &nmin,
                                                ZEMATH_INTERP_SPLINE_NOT_A_KNOT) != 0)
            nmax = nmin = 0;
        zemath_emd_get_zero_crossing(N, x, row, &ncross, NULL, NULL);
        printf(
            "  IMF %d: %3d maxima, %3d minima, %3d zero crossings (period ~%.1f), "
            "amplitude at t=600 %.3f\n",
            k, nmax, nmin, ncross, ncross > 1 ? 2.0 * N / ncross : 0.0,
            nmax > 0 ? 0.5 * (upper[600] - lower[600]) : 0.0);
    }
    for (i = 0; i < N; ++i) {
        double sum = residue[i];
        for (k = 0; k < nimf; ++k) sum += imf[k * N + i];
        if (fabs(sum - y[i]) > worst) worst = fabs(sum - y[i]);
    }
    printf("  residue from %.3f to %.3f; IMFs + residue - signal: %.1e at most\n", residue[0],
           residue[N - 1], worst);
}
