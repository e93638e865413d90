// Stirling's error term and the log-factorial.
//
// Method: at the integers 0..15 Stirling's error is read from a table; elsewhere up to 15
// it is ln Gamma(k + 1) minus the formula; above 15 the asymptotic series
//     1/(12k) - 1/(360k^3) + 1/(1260k^5) - 1/(1680k^7) + 1/(1188k^9)
// truncated where the first omitted term falls below about 1e-16 absolute (at k = 16 it is
// 691/(360360 k^11) = 1.1e-16; beyond 35 below 3e-17). The error term is always added to
// logarithms of order one or larger, so an absolute bound is the one that matters. ln k! is a table
// of summed logarithms below 128 (formed in long double, rounded once), and (x - 1/2) ln x - x +
// ln(2 pi)/2 + stirling_error(x), x = k + 1, above. Accuracy against mpmath
// (tests/reference/gen_numeric_tables.py): ln k! within a few ulps; Stirling's error exact to the
// rounding at the integers 0..15, within 2e-16 absolute from 15 to 35 and 3e-17 above, and within
// 1e-15 absolute at non-integers below 15 (lgamma minus the formula). References: DLMF 5.11.1
// (Stirling's series); Loader (2000), "Fast and accurate computation of binomial probabilities"
// (the error term's use).
#include "platform/numeric/stirling.hpp"

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost

#include <boost/math/special_functions/gamma.hpp>

#include <array>
#include <cmath>
#include <numbers>

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

namespace {

namespace bp = boost::math::policies;
using InDouble = bp::normalise<BoostPolicy, bp::promote_double<false>>::type;

constexpr double kHalfLnTwoPi = 0.91893853320467274178;  // ln(2 pi)/2

// Stirling's error at k = 0..15, from tests/reference/gen_numeric_tables.py (mpmath).
constexpr std::array<double, 16> kStirlingError = {0.0,
                                                   0.08106146679532726,
                                                   0.0413406959554093,
                                                   0.02767792568499834,
                                                   0.020790672103765093,
                                                   0.016644691189821193,
                                                   0.013876128823070748,
                                                   0.01189670994589177,
                                                   0.010411265261972096,
                                                   0.009255462182712733,
                                                   0.00833056343336287,
                                                   0.007573675487951841,
                                                   0.00694284010720953,
                                                   0.006408994188004207,
                                                   0.0059513701127588475,
                                                   0.005554733551962801};

constexpr int kLogFactorialTable = 128;

}  // namespace

double stirling_error(double k) {
    constexpr double kTableEnd = 15.0;
    if (k <= kTableEnd) {
        const double whole = std::floor(k);
        if (whole == k && k >= 0.0) return kStirlingError[static_cast<int>(k)];
        // Boost's lgamma, not the C library's: that one writes the global signgam, a data
        // race between threads.
        return boost::math::lgamma(k + 1.0, InDouble()) - (k + 0.5) * std::log(k) + k -
               kHalfLnTwoPi;
    }
    constexpr double s0 = 1.0 / 12.0, s1 = 1.0 / 360.0, s2 = 1.0 / 1260.0, s3 = 1.0 / 1680.0,
                     s4 = 1.0 / 1188.0;
    // One division, then products in 1/k^2: the nested divisions by k^2 formed a chain of
    // up to five dependent divisions (most of the cost of Gamma and ln Gamma of moderate
    // arguments); the products' extra rounding is below 1e-18 absolute.
    const double r = 1.0 / k;
    const double r2 = r * r;
    // Each threshold is where the first omitted term drops below about 3e-17 absolute.
    if (k > 500.0) return (s0 - s1 * r2) * r;
    if (k > 80.0) return (s0 - (s1 - s2 * r2) * r2) * r;
    if (k > 35.0) return (s0 - (s1 - (s2 - s3 * r2) * r2) * r2) * r;
    return (s0 - (s1 - (s2 - (s3 - s4 * r2) * r2) * r2) * r2) * r;
}

double log_factorial(double k) {
    struct Table {
        double value[kLogFactorialTable];
    };
    static const Table table = [] {
        Table t{};
        long double sum = 0.0L;
        t.value[0] = 0.0;
        for (int i = 1; i < kLogFactorialTable; ++i) {
            sum += std::log(static_cast<long double>(i));
            t.value[i] = static_cast<double>(sum);
        }
        return t;
    }();
    if (k < kLogFactorialTable) return table.value[static_cast<int>(k)];
    const double x = k + 1.0;
    return (x - 0.5) * std::log(x) - x + kHalfLnTwoPi + stirling_error(x);
}

double gamma_moderate(double a) {
    constexpr double kShiftTo = 16.0;
    // a + m in [16, 17) exactly in two parts (it may need more bits than one double), and
    // the factors a + j, j < m, each rounded once: independent, so no dependency chain.
    const double m = a < kShiftTo ? std::ceil(kShiftTo - a) : 0.0;
    const TwoPart shifted = two_sum(a, m);
    double product = 1.0;
    for (double j = 0.0; j < m; j += 1.0) product *= a + j;
    const double big = shifted.hi;
    const TwoPart exponent =
        add(multiply(TwoPart{big, 0.0}, log_two_part(big, 0.0)), TwoPart{-big, 0.0});
    const double at_big = std::sqrt(2.0 * std::numbers::pi / big) *
                          exp_two_part(add(exponent, TwoPart{stirling_error(big), 0.0}));
    // Gamma(big + low) = Gamma(big) (1 + psi(big) low), psi(big) = ln big - 1/(2 big) to 1e-4.
    const double psi = std::log(big) - 0.5 / big;
    return at_big * (1.0 + psi * shifted.lo) / product;
}

}  // namespace zemath::numeric
