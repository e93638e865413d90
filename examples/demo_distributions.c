/* zeMath demo: a short table of critical values from the distribution functions.
 * Built as C99 with the rest of the demo. */
#include <stdio.h>

#include "zemath.h"

void demo_distributions(void);

void demo_distributions(void) {
    static const double dfs[] = {1, 2, 5, 10, 30};
    int status = 0;
    size_t i;
    printf("\ncritical values\n");
    printf("  z: norminv(0.975) = %.6f\n", norminv(0.975, &status));
    printf("  %4s %12s %12s %12s %14s\n", "df", "t 95% (2s)", "t 99% (2s)", "chi2 95%",
           "F(df, 10) 95%");
    for (i = 0; i < sizeof dfs / sizeof dfs[0]; ++i) {
        const double df = dfs[i];
        /* tail 3: t with P(|T| >= t) = p, the two-sided critical value */
        const double t95 = tinv(0.05, df, 3, &status);
        const double t99 = tinv(0.01, df, 3, &status);
        const double chi2 = chi2inv(0.95, df, &status);
        const double f = finv(0.95, df, 10, &status);
        printf("  %4g %12.6f %12.6f %12.6f %14.6f\n", df, t95, t99, chi2, f);
    }
    printf("  status of the last call: %d; tail code 5 is refused: tcdf(1, 5, 5) status ", status);
    (void)tcdf(1.0, 5.0, 5, &status);
    printf("%d\n", status);
}
