/* zeMath demo, rainflow part: a short load history reduced to its turning points with a
 * hysteresis of 0.5, its cycles (closed and residue half cycles, with ranges), and a
 * 5-class rainflow matrix of closed and residue cycles. */
#include <stdio.h>

#include "zemath.h"

void demo_rainflow(void);

void demo_rainflow(void) {
    enum { N = 16, BINS = 5 };
    const double history[N] = {0.0,  2.1, 1.8, 4.0, 1.0, 3.2, 0.2,  0.4,
                               -2.0, 3.6, 2.9, 5.0, 1.5, 2.5, -1.0, 0.0};
    double time[N], load[N], range[N], count[N];
    int from[N], to[N], total[BINS * BINS], closed[BINS * BINS];
    int i, r, c, n = N, ncycles = 0, nclosed = 0;
    for (i = 0; i < N; ++i) {
        time[i] = i;
        load[i] = history[i];
    }
    if (Rainflow_Filtering(&n, time, load, 0.5) != 0) return;
    printf("rainflow: %d of %d points are turning points:", n, N);
    for (i = 0; i < n; ++i) printf(" %.1f", load[i]);
    printf("\n");
    if (zemath_rainflow_cycles(history, N, 0.5, 0, N, from, to, range, NULL, count, &ncycles,
                               &nclosed) != 0)
        return;
    printf("  %d closed cycles, %d residue half cycles\n", nclosed, ncycles - nclosed);
    for (i = 0; i < ncycles; ++i)
        printf("  %-6s %5.1f -> %5.1f (t = %2d..%2d) range %.1f\n",
               count[i] == 1.0 ? "cycle" : "half", history[from[i]], history[to[i]], from[i], to[i],
               range[i]);
    if (Rainflow_Matrix(N, time, (double*)history, BINS, total, closed, 0.5, 0, 0, 0, 0) != 0)
        return;
    printf("  rainflow matrix (from-to classes, all cycles, folded):\n       ");
    for (c = 0; c < BINS; ++c) printf("%4d", c);
    printf("\n");
    for (r = 0; r < BINS; ++r) {
        printf("  %4d ", r);
        for (c = 0; c < BINS; ++c) printf("%4d", total[r * BINS + c]);
        printf("\n");
    }
}
