/* zeMath demo: the typed array primitives on the sample curve. C99. */
#include <stdio.h>

#include "zemath.h"

void demo_primitives(const double* x, const double* y, int n);

void demo_primitives(const double* x, const double* y, int n) {
    double variance = 0.0, ymin = 0.0, ymax = 0.0, first = 0.0, last = 0.0, step = 0.0;
    double width;
    unsigned int counts[10];
    int count = 0, spacing, imin = -1, imax = -1, k;
    const double mean = zemath_d_mean_variance(y, n, &variance, &count);

    printf("\n-- typed array primitives --\n");
    printf("mean, variance of y        : %.6f, %.6f (%d points, NANUM skipped)\n", mean, variance,
           count);

    zemath_d_sum(y, n, &ymin, &ymax, NULL, NULL, NULL);
    width = (ymax - ymin) / 10.0;
    if (zemath_d_frequency_count(y, n, counts, 10, ymin, width) == 0) {
        printf("y in 10 bins of %.4f from %.4f (the maximum sits on the last edge):\n  ", width,
               ymin);
        for (k = 0; k < 10; ++k) printf("%u ", counts[k]);
        printf("\n");
    }

    spacing = zemath_d_get_vector_inc(n, x, 1e-8, &first, &last, &step);
    if (spacing == 1 || spacing == -1)
        printf("x evenly spaced            : from %.2f to %.2f in steps of %.4f\n", first, last,
               step);
    else
        printf("x evenly spaced            : no (code %d)\n", spacing);

    zemath_d_minmax_in_range(y, n, 0.0, 0.5, NULL, &imin, &imax);
    if (imax >= 0) printf("largest y not above 0.5    : %.6f at x = %.2f\n", y[imax], x[imax]);
}
