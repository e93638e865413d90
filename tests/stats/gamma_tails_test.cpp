// The gamma law's tails far from the mean: the tail on the mean's side must be 1 minus the
// far tail, to rounding, from a deviance of 30 (far tail 1e-13) out to 800, including where
// the far tail's prefactor is below e^-700 and the near side is answered as 1 without
// forming it (large deviances, and shapes above 1000 beyond |eta| = 1/2). The far tail
// itself is checked against mpmath elsewhere; here the pair must agree.
#include <gtest/gtest.h>

#include <cmath>

#include "zemath/distributions.h"

namespace {

// x/a on one side of 1 with lambda - 1 - ln lambda = deviance / a, by bisection.
double ratio_for(double a, double deviance, bool above) {
    const double target = deviance / a;
    double lo = above ? 1.0 : 1e-300, hi = above ? 1e6 : 1.0;
    for (int i = 0; i < 2000 && hi - lo > 1e-15 * hi; ++i) {
        const double mid = above ? 0.5 * (lo + hi) : std::sqrt(lo * hi);
        const double f = mid - 1.0 - std::log(mid) - target;
        if ((f > 0.0) == above)
            hi = mid;
        else
            lo = mid;
    }
    return 0.5 * (lo + hi);
}

TEST(GammaTails, NearSideIsOneMinusFarSideAroundTheCutoff) {
    const double shapes[] = {0.5, 3.0, 80.0, 2500.0, 1e5};
    const double deviances[] = {30.0, 36.0, 37.5, 38.5, 39.5, 40.5, 45.0, 80.0, 300.0, 800.0};
    int checked = 0;
    for (const double a : shapes) {
        for (const double deviance : deviances) {
            for (const bool above : {true, false}) {
                const double x = a * ratio_for(a, deviance, above);
                if (!(x > 0.0) || !std::isnormal(x)) continue;
                int status_near = 0, status_far = 0;
                // tail 2: lower P(X <= x), 1: upper.
                const double near = gamcdf(x, a, 1.0, above ? 2 : 1, &status_near);
                const double far = gamcdf(x, a, 1.0, above ? 1 : 2, &status_far);
                ASSERT_EQ(status_near, 0) << a << " " << x;
                if (status_far != 0 || !(far >= 0x1p-1022)) continue;  // far tail underflows
                const double expected = static_cast<double>(1.0L - static_cast<long double>(far));
                // Within 2 ulps of 1 (the small-shape path near 0 may be an ulp off; a near
                // side answered as 1 too early would be off by the far tail, 1e-13 at D = 30).
                EXPECT_NEAR(near, expected, 0x1p-52)
                    << "a = " << a << ", x = " << x << ", D = " << deviance;
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 60);
}

}  // namespace
