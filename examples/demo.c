/* zeMath demo: loads a measured curve with a few missing values and prints what the
 * library reports about it. Built as C to show the C interface. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "zemath.h"

void demo_primitives(const double* x, const double* y, int n);
void demo_search(const double* x, const double* y, int n);
void demo_random(void);
void demo_rainflow(void);
void demo_emd(void);
void demo_imaging(const double* x, const double* y, int n);
void demo_gridding(void);
void demo_statistics(const double* y, int n);
void demo_smoothing(const double* x, const double* y, int n);
void demo_peaks(const double* x, const double* y, int n);
void demo_special(void);

#ifndef ZEMATH_SAMPLE_DATA
#define ZEMATH_SAMPLE_DATA "examples/data/sample_curve.dat"
#endif

void demo_distributions(void);

enum { MAX_POINTS = 4096 };

static int load_curve(const char* path, double* x, double* y) {
    FILE* f = fopen(path, "r");
    char line[256];
    int n = 0;
    if (!f) return -1;
    while (n < MAX_POINTS && fgets(line, sizeof line, f)) {
        char ytext[64];
        if (line[0] == '#') continue;
        if (sscanf(line, "%lf %63s", &x[n], ytext) != 2) continue;
        y[n] = strcmp(ytext, "missing") == 0 ? NANUM : atof(ytext);
        ++n;
    }
    fclose(f);
    return n;
}

int main(int argc, char** argv) {
    static double x[MAX_POINTS], y[MAX_POINTS], y_work[MAX_POINTS], x_work[MAX_POINTS];
    static int kept[MAX_POINTS];
    const char* path = argc > 1 ? argv[1] : ZEMATH_SAMPLE_DATA;
    double ymin, ymax, sum;
    int imin, imax, count, missing, nkept;
    int n = load_curve(path, x, y);
    if (n < 1) {
        fprintf(stderr, "cannot read %s\n", path);
        return 1;
    }
    printf("zeMath demo: %s\n", path);
    printf("points read                : %d\n", n);

    sum = zemath_d_sum(y, n, &ymin, &ymax, &imin, &imax, &count);
    printf("usable points (NANUM skipped): %d\n", count);
    printf("sum of y                   : %.6f\n", sum);
    printf("mean of y                  : %.6f\n", sum / count);
    printf("minimum y                  : %.6f at x = %.2f (index %d)\n", ymin, x[imin], imin);
    printf("maximum y                  : %.6f at x = %.2f (index %d)\n", ymax, x[imax], imax);

    missing = zemath_d_minmax(y, 100, n - 1, &imin, &imax);
    printf("second half: max at x = %.2f, %d missing value(s) met\n", x[imax], missing);

    memcpy(x_work, x, sizeof(double) * (size_t)n);
    memcpy(y_work, y, sizeof(double) * (size_t)n);
    nkept = zemath_1d_remove_missingvalue(x_work, y_work, (unsigned)n, NANUM, kept);
    printf("after removing missing pairs: %d points (first gap after index %d)\n", nkept, kept[16]);
    printf("status -11 reads           : \"%s\"\n", zemath_status_string(-11));
    demo_primitives(x, y, n);
    demo_search(x, y, n);
    demo_peaks(x, y, n);
    demo_distributions();
    demo_random();
    demo_rainflow();
    demo_emd();
    demo_imaging(x, y, n);
    demo_gridding();
    demo_statistics(y, n);
    demo_smoothing(x, y, n);
    demo_special();
    return 0;
}
