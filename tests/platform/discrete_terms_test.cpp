// The binomial and Poisson point probabilities of platform/numeric/discrete_terms in both of
// their builds (the fused multiply-add one, taken where the processor has it, and the portable
// one), against every mpmath density table: the grids of gen_distributions_other.py and
// gen_distributions_discrete_paths.py, and the switch points of
// gen_distributions_discrete_switch.py (the deviance's two series and its logarithm at |v| = 1/64
// and 1/5, deep in the tails at means up to 1.5e6; Stirling's error on both sides of its table's
// end at 128).
#include <gtest/gtest.h>

#include <string>

#include "platform/numeric/discrete_terms.hpp"
#include "reference/distributions_discrete_paths_ref.inc"
#include "reference/distributions_discrete_switch_ref.inc"
#include "reference/distributions_other_ref.inc"
#include "stats/distribution_calls.hpp"

namespace {

using dist_test::at;
using dist_test::Worst;

// The deviance D to 7e-18 relative (e^-D then to 7e-18 D, 5.2e-15 at the edge of the normal
// range) plus a few ulps from the Stirling terms, exp and the factor in front.
constexpr double kDensityBound = 6e-15;

struct Build {
    const char* name;
    double (*binomial)(int, int, double);
    double (*poisson)(int, double);
};
const Build kBuilds[] = {
    {"dispatched", zemath::numeric::binomial_point, zemath::numeric::poisson_point},
    {"portable", zemath::numeric::binomial_point_portable, zemath::numeric::poisson_point_portable},
};

template <class Rows>
void add_binomial(Worst& w, const Build& b, const Rows& rows) {
    for (const auto& r : rows)
        w.add(b.binomial(r.k, r.n, r.p), r.point, at({1.0 * r.k, 1.0 * r.n, r.p}));
}
template <class Rows>
void add_poisson(Worst& w, const Build& b, const Rows& rows) {
    for (const auto& r : rows) w.add(b.poisson(r.k, r.lambda), r.point, at({1.0 * r.k, r.lambda}));
}

TEST(DiscreteTerms, BothBuildsAgainstEveryDensityTable) {
    for (const Build& b : kBuilds) {
        Worst switch_binomial, switch_poisson, binomial, poisson;
        add_binomial(switch_binomial, b, ref_discrete_switch::kBinomialDensity);
        add_poisson(switch_poisson, b, ref_discrete_switch::kPoissonDensity);
        add_binomial(binomial, b, ref_discrete_paths::kBinomialDensity);
        add_binomial(binomial, b, ref_discrete_paths::kBinomialTails);
        add_binomial(binomial, b, ref_other::kBinomial);
        add_poisson(poisson, b, ref_discrete_paths::kPoissonDensity);
        add_poisson(poisson, b, ref_other::kPoisson);
        const std::string name = b.name;
        EXPECT_LE(switch_binomial.report("binomial switch " + name), kDensityBound);
        EXPECT_LE(switch_poisson.report("Poisson switch " + name), kDensityBound);
        EXPECT_LE(binomial.report("binomial " + name), kDensityBound);
        EXPECT_LE(poisson.report("Poisson " + name), kDensityBound);
    }
}

}  // namespace
