/* zeMath demo, smoothing part: the sample curve smoothed by each method (how far each
 * result departs from the data on average, and the smoothed height at the tallest point), its
 * derivative, and the area and peak record of zemath_integrate. */
#include <stdio.h>

#include "zemath.h"

void demo_smoothing(const double* x, const double* y, int n);

enum { SMOOTH_MAX_POINTS = 4096 };

static void report(const char* name, int status, const double* y, const double* s, int n,
                   int peak) {
    double total = 0.0;
    int i, used = 0;
    if (status != 0) {
        printf("  %-26s status %d\n", name, status);
        return;
    }
    for (i = 0; i < n; ++i) {
        if (y[i] == NANUM || s[i] == NANUM) continue;
        total += s[i] > y[i] ? s[i] - y[i] : y[i] - s[i];
        ++used;
    }
    printf("  %-26s mean change %.5f, value at the tallest point %.5f\n", name,
           total / (used > 0 ? used : 1), s[peak]);
}

void demo_smoothing(const double* x, const double* y, int n) {
    static double filled[SMOOTH_MAX_POINTS], s[SMOOTH_MAX_POINTS], d[SMOOTH_MAX_POINTS];
    double span = 0.1, ymin, ymax;
    int i, imin, imax, count;
    zemath_IntegrationResult r;
    if (n < 11 || n > SMOOTH_MAX_POINTS) return;
    zemath_d_sum(y, n, &ymin, &ymax, &imin, &imax, &count);
    /* Filters that treat every value as a number get the gaps filled by a trailing mean. */
    zemath_adj_average(filled, y, n, 2, 2, 0);
    for (i = 0; i < n; ++i) filled[i] = y[i] == NANUM ? filled[i] : y[i];
    printf("smoothing the sample curve (max y %.5f at x = %.2f):\n", ymax, x[imax]);
    report("adjacent average, 7", zemath_adjave_smooth(y, s, n, 3, 1, false), y, s, n, imax);
    report("weighted average, 7", zemath_adjave_smooth(y, s, n, 3, 1, true), y, s, n, imax);
    report("Savitzky-Golay 11/2", zemath_savitsky_golay(filled, s, n, 5, 5, 2, 0, 0), y, s, n,
           imax);
    report("median, 7", zemath_median_filter(n, y, s, 3, 50.0, 2, false), y, s, n, imax);
    report("binomial, 4 passes", zemath_binomial_smooth(n, filled, s, 0, 4), y, s, n, imax);
    report("FFT low-pass, 20 cycles", zemsp_fft_filter_smoothing(n, filled, s, 20.0), y, s, n,
           imax);
    report("loess, span 0.1", zemath_loess_xUnevenly(n, 1, 1, &span, x, y, s, false), y, s, n,
           imax);

    for (i = 0; i < n; ++i) d[i] = y[i];
    if (zemath_derivative(x, d, n, 1) == 0)
        printf("derivative at the tallest point (mode 1 snaps extremes to 0): %.5f\n", d[imax]);
    if (zemath_integrate(x, y, 0, n - 1, &r, 1, 0, NULL) == 0)
        printf("area by the quadratic rule %.5f\n", r.area);
    if (zemath_integrate(x, y, 0, n - 1, &r, 0, 0, NULL) == 0)
        printf(
            "area by the trapezoid rule %.5f, half area at x = %.3f, peak %.5f at x = %.2f, "
            "width at half height %.3f\n",
            r.area, r.x_half_area, r.y_peak, r.x_peak, r.fwhm);
}
