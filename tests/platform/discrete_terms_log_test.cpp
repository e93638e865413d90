// The table-driven two-part logarithm of the discrete laws' deviances, ln(x / (m + m_low)),
// in both builds, against the mpmath values of tests/reference/gen_log_table.py: about 2000
// ratios outside (2/3, 3/2) with the significand in every cell of the table and at both ends
// of each, exponents from -900 to 900, counts x up to 2^31 - 1.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "platform/numeric/discrete_terms.hpp"
#include "reference/log_ratio_ref.inc"

namespace {

// 1e-20 absolute plus 2^-100 relative, the bound the deviance's error analysis takes.
constexpr double kAbsolute = 1e-20;
constexpr double kRelative = 7.9e-31;  // 2^-100

TEST(DiscreteTermsLog, TwoPartRatioAgainstMpmathInEveryCell) {
    using Log = zemath::numeric::TwoPart (*)(double, double, double);
    const struct {
        const char* name;
        Log log;
    } builds[] = {{"dispatched", zemath::numeric::log_ratio_two_part},
                  {"portable", zemath::numeric::log_ratio_two_part_portable}};
    for (const auto& b : builds) {
        double worst = 0.0;
        for (const auto& r : ref_log_ratio::kRows) {
            const zemath::numeric::TwoPart got = b.log(r.x, r.m, r.m_low);
            // The difference of two nearby two-part values, formed without cancelling error.
            const double error = std::fabs((got.hi - r.hi) + (got.lo - r.lo));
            const double bound = kAbsolute + kRelative * std::fabs(r.hi);
            worst = std::fmax(worst, error / bound);
            EXPECT_LE(error, bound)
                << b.name << " x = " << r.x << ", m = " << r.m << ", m_low = " << r.m_low;
        }
        std::printf("[accuracy] log ratio %-10s %zu rows, worst error %.2f of the bound\n", b.name,
                    std::size(ref_log_ratio::kRows), worst);
    }
}

}  // namespace
