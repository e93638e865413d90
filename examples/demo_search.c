/* zeMath demo, search and sort part: order of the abscissas, where a few x values fall,
 * and the five largest y values found by sorting (y, index) records with the library's
 * merge sort and its descending double comparator. Missing y values (NANUM) are tiny
 * negative numbers to the comparator, so they sort below every real y here. */
#include <stdio.h>

#include "zemath.h"

void demo_search(const double* x, const double* y, int n);

enum { DEMO_MAX_POINTS = 4096 };

/* A double key followed by the point's index: the comparator reads the leading key. */
struct y_record {
    double y;
    int index;
};

void demo_search(const double* x, const double* y, int n) {
    static struct y_record records[DEMO_MAX_POINTS];
    const double probes[] = {-1.0, 0.0, 2.52, 5.0, 9.95, 12.0};
    int where[sizeof probes / sizeof probes[0]];
    int i, nearest, lo, hi;
    const int nprobes = (int)(sizeof probes / sizeof probes[0]);
    if (n < 1 || n > DEMO_MAX_POINTS) return;

    printf("x is monotonic (2 up, 1 down): %d (strict: %d)\n",
           zemath_is_monotonic(x, (unsigned)n, false), zemath_is_monotonic(x, (unsigned)n, true));
    if (zemath_array_find_indices(x, n, probes, nprobes, where) == 0)
        for (i = 0; i < nprobes; ++i)
            printf("  x = %5.2f falls at index %3d\n", probes[i], where[i]);
    if (zemath_find_nearest_index(y, n, 0.5, &nearest) == 0)
        printf("y nearest to 0.5: %.6f at x = %.2f\n", y[nearest], x[nearest]);
    if (zemath_get_lower_upper_bounds_index(x, n, 2.0, 3.0, &lo, &hi) == 0)
        printf("x in [2, 3]: indices %d..%d\n", lo, hi);

    for (i = 0; i < n; ++i) {
        records[i].y = y[i];
        records[i].index = i;
    }
    if (theMergeSort(records, 0, n - 1, (int)sizeof records[0], GetAppropriateCompareDescend(11)) ==
        1) {
        printf("five largest y:\n");
        for (i = 0; i < 5 && i < n; ++i)
            printf("  y = %.6f at x = %.2f (index %d)\n", records[i].y, x[records[i].index],
                   records[i].index);
    }
}
