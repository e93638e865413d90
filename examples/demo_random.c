/* zeMath demo, random family: normal samples and a random permutation. Every call seeds
 * a fresh generator from the system's entropy and the clock, so this output differs from
 * run to run by design. */
#include <stdio.h>

#include "zemath.h"

enum { DEMO_SAMPLES = 10000 };

void demo_random(void);

void demo_random(void) {
    static double x[DEMO_SAMPLES];
    double ends[6] = {10.0, 0.0, 0.0, 0.0, 0.0, 60.0};
    double sum = 0.0, squares = 0.0, mean, variance;
    int i, status;

    printf("\nrandom samples (not reproducible by design: fresh seed per call)\n");
    /* The second parameter is the variance: 4 means a standard deviation of 2. */
    status = normrnd(x, DEMO_SAMPLES, 5.0, 4.0);
    if (status != 0) {
        printf("normrnd failed: %d (%s)\n", status, zemath_status_string(status));
        return;
    }
    for (i = 0; i < DEMO_SAMPLES; ++i) sum += x[i];
    mean = sum / DEMO_SAMPLES;
    for (i = 0; i < DEMO_SAMPLES; ++i) squares += (x[i] - mean) * (x[i] - mean);
    variance = squares / (DEMO_SAMPLES - 1);
    printf("normrnd(n = %d, mean 5, variance 4): sample mean %.4f, sample variance %.4f\n",
           DEMO_SAMPLES, mean, variance);

    /* Only the two ends matter: the values permuted are 10, 20, ..., 60. */
    status = permrnd(ends, 6);
    printf("permrnd of 10, 20, ..., 60 (status %d):", status);
    for (i = 0; i < 6; ++i) printf(" %g", ends[i]);
    printf("\n");
    printf("normrnd with variance -1 returns %d (%s)\n", normrnd(x, 10, 0.0, -1.0),
           "the generator's 'below lower limit' code");
}
