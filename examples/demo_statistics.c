/* zeMath demo, statistics part: a descriptive report of the sample curve's y values,
 * the quartiles under each percentile rule, a one-sample t test and the Shapiro-Wilk
 * normality test. Missing values (NANUM) are skipped by every function shown. */
#include <stdio.h>

#include "zemath.h"

void demo_statistics(const double* y, int n);

void demo_statistics(const double* y, int n) {
    static const char* const rule_names[] = {"EDF averaged", "nearest", "EDF",
                                             "(n+1)p",       "np",      "hinges"};
    DescStatResults d;
    QuantileOptions opt = {0};
    QuantileResults q;
    OneSampleTTestResults t;
    ShapiroWilkResults sw;
    TTestHypothesis hyp = {0, 0.5, 0};
    int rule;
    if (n < 3) return;

    if (zemath_desc_stats(y, (unsigned)n, &d, NULL, 0.95, 0) == 0) {
        printf("y: N %d (missing %d), mean %.6f, SD %.6f, SEM %.6f\n", d.N, d.Missing, d.Mean, d.SD,
               d.SEM);
        printf("y: 95%% limits of the mean [%.6f, %.6f], skewness %.4f, kurtosis %.4f\n", d.LCL,
               d.UCL, d.Skewness, d.Kurtosis);
    }
    opt.bQ1 = opt.bMedian = opt.bQ3 = true;
    for (rule = 0; rule <= 5; ++rule) {
        opt.nInterpolate = rule;
        if (zemath_quantiles(y, (unsigned)n, &opt, &q, NULL, 0, NULL, NULL) == 0)
            printf("quartiles, rule %d (%-12s): %.6f %.6f %.6f\n", rule, rule_names[rule], q.Q1,
                   q.Median, q.Q3);
    }
    if (zemath_one_sample_t_test(y, (unsigned)n, &hyp, &t) == 0)
        printf("t test of mean y = %.1f: t = %.4f with %d df, P = %.3g\n", hyp.Value, t.t, t.DOF,
               t.P);
    if (zemath_shapiro_wilk_test((unsigned)n, y, &sw, 0) == 0)
        printf("Shapiro-Wilk normality of y: W = %.5f, P = %.3g\n", sw.W, sw.P);
}
