/* zeMath demo, imaging part: the sample curve reduced by groups of 20 points and by
 * x bins of width 2, a small synthetic 16-bit image cleaned of a hot pixel by a 3 x 3
 * percentile filter, and a few complex values. */
#include <stdio.h>

#include "zemath.h"

void demo_imaging(const double* x, const double* y, int n);

void demo_imaging(const double* x, const double* y, int n) {
    static double groups[256];
    unsigned short image[5 * 6];
    const d_complex z = {1.0, 2.0};
    d_complex w;
    int k, g;

    if (n > 0 && n <= 4096) {
        g = zemath_reducexy_n_points(y, groups, (unsigned)n, 20u, 3);
        printf("median of each 20 points   :");
        for (k = 0; k < g && k < 6; ++k) printf(" %.4f", groups[k]);
        printf("%s\n", g > 6 ? " ..." : "");
        g = zemath_reducexy_fixing_increbin(x, y, (unsigned)n, 0.0, 0.0, 2, groups, 2.0);
        printf("maximum per x bin of 2     :");
        for (k = 0; k < g; ++k) printf(" %.4f", groups[k]);
        printf("\n");
    }

    for (k = 0; k < 30; ++k) image[k] = (unsigned short)(1000 + 10 * (k % 6));
    image[2 * 6 + 3] = 60000; /* a hot pixel */
    if (zemath_us_percentile_filter(image, 5, 6, 50.0, 3, 3, 0, 0.0, 0, 0, -1, -1) == 0)
        printf("hot pixel after 3x3 50%% filter: %u (row 2: %u %u %u %u %u %u)\n",
               (unsigned)image[2 * 6 + 3], (unsigned)image[12], (unsigned)image[13],
               (unsigned)image[14], (unsigned)image[15], (unsigned)image[16], (unsigned)image[17]);

    w = sqrtz(z);
    printf("sqrt(1 + 2i)   = %.15f %+.15fi\n", w.re, w.im);
    w = atanz(z);
    printf("atan(1 + 2i)   = %.15f %+.15fi\n", w.re, w.im);
    w = cpowz(z, z);
    printf("(1+2i)^(1+2i)  = %.15f %+.15fi\n", w.re, w.im);
    w = atanhz((d_complex){1.0, 0.0});
    printf("atanh(1) is missing: %s\n", w.re == NANUM && w.im == NANUM ? "yes" : "no");
}
