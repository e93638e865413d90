/* zeMath demo, peaks part: the peaks of the sample curve found with a search window of
 * 1.0 in X above the straight baseline through its ends, base markers where each peak
 * meets that baseline, and a peak table (centre, height above the baseline, FWHM, area)
 * from the integration family; then the peaks picked by prominence and the baseline with
 * those peaks masked out. Missing points are removed first. */
#include <stdio.h>
#include <string.h>

#include "zemath.h"

void demo_peaks(const double* x, const double* y, int n);

enum { DEMO_PEAK_POINTS = 4096 };

void demo_peaks(const double* x, const double* y, int n) {
    static double xs[DEMO_PEAK_POINTS], ys[DEMO_PEAK_POINTS], base[DEMO_PEAK_POINTS],
        above[DEMO_PEAK_POINTS], px[DEMO_PEAK_POINTS], py[DEMO_PEAK_POINTS];
    static int idx[DEMO_PEAK_POINTS], kept[DEMO_PEAK_POINTS];
    double line_x[2], line_y[2], noise, marker_x[2], marker_y[2];
    int i, k, m, npeaks, markers[2];
    const int option = 0;
    if (n < 3 || n > DEMO_PEAK_POINTS) return;
    memcpy(xs, x, sizeof(double) * (size_t)n);
    memcpy(ys, y, sizeof(double) * (size_t)n);
    m = zemath_1d_remove_missingvalue(xs, ys, (unsigned)n, NANUM, kept);
    if (m < 3) return;

    /* Baseline: the straight line through the two end points, evaluated at every x. */
    if (zemath_init_baseline_by_connect_ends(m, xs, ys, 2, line_x, line_y) != 0) return;
    for (i = 0; i < m; ++i) {
        zemath_y_form_x(2, line_x, line_y, xs[i], &base[i], true, false);
        above[i] = ys[i] - base[i];
    }
    noise = zemath_get_noise_level(m, ys);
    printf("peaks: baseline from (%.2f, %.4f) to (%.2f, %.4f), noise level %.4f\n", line_x[0],
           line_y[0], line_x[1], line_y[1], noise);

    npeaks = m;
    if (zemath_find_peaks_by_search_window(&npeaks, xs, above, px, py, idx, 1, 1.0, 10.0 * noise) !=
        0)
        return;
    printf("  %d peak(s)      centre    height      FWHM      area\n", npeaks);
    for (k = 0; k < npeaks; ++k) {
        zemath_IntegrationResult r;
        if (zemath_make_base_markers(markers, marker_x, marker_y, 2, &idx[k], 1, xs, ys, &option,
                                     base, m) != 0)
            continue;
        if (zemath_integrate(xs, ys, markers[0], markers[1], &r, 0, 0, base) != 0) continue;
        printf("  x %5.2f..%5.2f  %8.3f  %8.4f  %8.4f  %8.4f\n", marker_x[0], marker_x[1], px[k],
               py[k], r.fwhm, r.area);
    }

    /* Peaks standing 20 noise levels above their surroundings, and the masked baseline. */
    npeaks = m;
    if (zemath_pick_peaks(&npeaks, xs, ys, px, py, idx, 1, 0.0, 20.0 * noise, 5) == 0 &&
        zemath_create_baseline_by_masking_peaks(m, xs, ys, m, base, above, 1) == 0)
        printf(
            "  picked by prominence: %d peak(s), the first at x %.2f; masked baseline %.4f..%.4f\n",
            npeaks, npeaks > 0 ? px[0] : 0.0, above[0], above[m - 1]);
}
