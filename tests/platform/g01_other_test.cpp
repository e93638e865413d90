// Back-end routines of the non-central and discrete distributions, the bivariate normal,
// the studentized range and Lambert W: accuracy against the mpmath tables of
// tests/reference/distributions_other_ref.inc, the published discrete check values,
// identities between the outputs, and what only the back end shows (its own codes, the
// outputs a failure leaves alone). The exports' conventions and the check values of the
// continuous laws are tested through the exports (tests/stats).
//
// Worst relative errors measured on the reference grid (the tests print them):
//   g01bjc binomial   P(X<=k) 1.1e-15  P(X>k) 1.2e-15  P(X=k) 4.4e-16   (n up to 1e6)
//   g01bkc Poisson    P(X<=k) 7.8e-16  P(X>k) 8.1e-16  P(X=k) 2.8e-16   (lambda up to 1e6)
//   g01blc hypergeom. P(X<=k) 3.2e-15  P(X>k) 1.7e-15  P(X=k) 4.1e-16   (N up to 1e6)
//   g01gbc non-central t 2.5e-14, g01gcc chi-square 2.9e-15, g01gdc F 1.3e-15,
//   g01gec beta 1.3e-15, g01hac bivariate normal 5.7e-15, g01emc studentized range
//   6.9e-15, c05bac Lambert W 2.8e-16; values down to 1e-300.
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <string>

#include "platform/nag/c05.hpp"
#include "platform/nag/g01.hpp"
#include "platform/numeric/chi_scale.hpp"
#include "platform/numeric/gauss_legendre.hpp"
#include "reference/distributions_other_ref.inc"
#include "stats/distribution_calls.hpp"

namespace {

using namespace zemath::nag;
using dist_test::at;
using dist_test::Worst;
using ref_other::Four, ref_other::Lambert, ref_other::Srange, ref_other::Three;

constexpr double kTarget = 1e-13;  // the library's accuracy target for distributions

// One discrete routine call, outputs P(X <= k), P(X > k), P(X = k):
// law 0 binomial (n, p, k), 1 Poisson (lambda, k), 2 hypergeometric (n, l, m, k).
void discrete(int law, const double* a, double* out, NagError* f) {
    const auto i = [a](int k) { return static_cast<int>(a[k]); };
    if (law == 0) g01bjc(i(0), a[1], i(2), &out[0], &out[1], &out[2], f);
    if (law == 1) g01bkc(a[0], i(1), &out[0], &out[1], &out[2], f);
    if (law == 2) g01blc(i(0), i(1), i(2), i(3), &out[0], &out[1], &out[2], f);
}

TEST(G01Discrete, AgainstReference) {
    const auto check = [](int law, const std::string& name, const auto& rows, auto args_of) {
        Worst w[3];
        for (const auto& r : rows) {
            const auto args = args_of(r);
            double out[3] = {-1, -1, -1};
            NagError fail;
            discrete(law, args.data(), out, &fail);
            const std::string where = at({args[0], args[1], args[2], args[3]});
            ASSERT_EQ(fail.code, 0) << name << where;
            w[0].add(out[0], r.lower, where);
            w[1].add(out[1], r.upper, where);
            w[2].add(out[2], r.point, where);
        }
        for (int k = 0; k < 3; ++k) {
            const char* what[] = {" P(X<=k)", " P(X>k)", " P(X=k)"};
            EXPECT_LE(w[k].report(name + what[k]), kTarget);
        }
    };
    using A = std::array<double, 4>;
    check(0, "g01bjc", ref_other::kBinomial, [](const auto& r) {
        return A{1.0 * r.n, r.p, 1.0 * r.k};
    });
    check(1, "g01bkc", ref_other::kPoisson, [](const auto& r) { return A{r.lambda, 1.0 * r.k}; });
    check(2, "g01blc", ref_other::kHypergeometric, [](const auto& r) {
        return A{1.0 * r.n, 1.0 * r.l, 1.0 * r.m, 1.0 * r.k};
    });
}

// Published check values (five digits), the degenerate laws (exact), and
// failures, which leave the outputs as they were (the codes are checked through the exports).
TEST(G01Discrete, SheetExamplesDegenerateLawsAndFailures) {
    // clang-format off
    struct Row { int law; double a[4]; double want[3]; double tol; int code = 0; };
    // clang-format on
    const Row rows[] = {
        {0, {4, 0.5, 2}, {0.68750, 0.31250, 0.37500}, 5e-6},
        {0, {19, 0.44, 13}, {0.99138, 0.00862, 0.01939}, 5e-6},
        {0, {100, 0.75, 67}, {0.04460, 0.95540, 0.01700}, 5e-6},
        {0, {2000, 0.33, 700}, {0.97251, 0.02749, 0.00312}, 5e-6},
        {1, {0.75, 3}, {0.99271, 0.00729, 0.03321}, 5e-6},
        {1, {9.2, 12}, {0.86074, 0.13926, 0.07755}, 5e-6},
        {1, {34, 25}, {0.06736, 0.93264, 0.02140}, 5e-6},
        {1, {175, 175}, {0.52009, 0.47991, 0.03014}, 5e-6},
        {2, {10, 2, 5, 1}, {0.77778, 0.22222, 0.55556}, 5e-6},
        {2, {40, 10, 3, 2}, {0.98785, 0.01215, 0.13664}, 5e-6},
        {2, {155, 35, 122, 22}, {0.01101, 0.98899, 0.00779}, 5e-6},
        {2, {1000, 444, 500, 220}, {0.42429, 0.57571, 0.04913}, 5e-6},
        {0, {10, 0.0, 0}, {1, 0, 1}, 0},  // p = 0
        {0, {10, 1.0, 9}, {0, 1, 0}, 0},  // p = 1
        {0, {0, 0.3, 0}, {1, 0, 1}, 0},   // no trials
        {2, {7, 0, 3, 0}, {1, 0, 1}, 0},  // empty sample
        {0, {5, 1.5, 0}, {7, 7, 7}, 0, NE_REAL_ARG_GT},
        {1, {0.0, 1}, {7, 7, 7}, 0, NE_REAL_ARG_LE},
        {2, {10, 8, 5, 2}, {7, 7, 7}, 0, NE_INT_ARG_LT},
    };
    for (const Row& r : rows) {
        double out[3] = {7, 7, 7};
        NagError fail;
        discrete(r.law, r.a, out, &fail);
        EXPECT_EQ(fail.code, r.code) << r.law << " " << r.a[0];
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(out[k], r.want[k], r.tol) << r.law << " " << r.a[0];
    }
    // Null outputs are skipped; the others are those of a full call.
    double full[3], only = -1;
    NagError fail;
    g01bjc(30, 0.3, 11, &full[0], &full[1], &full[2], &fail);
    g01bjc(30, 0.3, 11, nullptr, &only, nullptr, &fail);
    EXPECT_EQ(only, full[1]);
}

// A discrete cdf is the running sum of its point probabilities, and the tails add to 1.
TEST(G01Discrete, CdfIsRunningSumOfPmf) {
    // clang-format off
    struct Law { int law, k_at, hi; double a[4]; };
    // clang-format on
    for (Law l : {Law{0, 2, 40, {40, 0.3}}, Law{1, 1, 60, {7.5}}, Law{2, 3, 18, {60, 25, 18}}}) {
        double running = 0.0;
        for (int k = 0; k <= l.hi; ++k) {
            l.a[l.k_at] = k;
            double out[3];
            NagError fail;
            discrete(l.law, l.a, out, &fail);
            ASSERT_EQ(fail.code, 0) << l.law << " k=" << k;
            running += out[2];
            EXPECT_NEAR(out[0], running, 1e-14 * running + 1e-300) << l.law << " k=" << k;
            EXPECT_NEAR(out[0] + out[1], 1.0, 4 * DBL_EPSILON) << l.law << " k=" << k;
        }
    }
}

// ------------------------------------------------------------------ continuous laws

// clang-format off
std::string args_of(const Three& r) { return at({r.x, r.a, r.b}); }
std::string args_of(const Four& r) { return at({r.x, r.a, r.b, r.c}); }
std::string args_of(const Srange& r) { return at({r.q, r.v, 1.0 * r.r}); }
std::string args_of(const Lambert& r) { return at({r.x, 1.0 * r.branch, 1.0 * r.offset}); }
// clang-format on

template <class Rows, class F>
void against(const char* name, const Rows& rows, F fn, double tolerance = kTarget) {
    Worst w;
    for (const auto& r : rows) {
        NagError fail;
        const double v = fn(r, &fail);
        ASSERT_EQ(fail.code, 0) << name << args_of(r);
        w.add(v, r.value, args_of(r));
    }
    EXPECT_LE(w.report(name), tolerance);
}

TEST(G01Continuous, AgainstReference) {
    against("g01gbc non-central t", ref_other::kNonCentralT,
            [](const Three& r, NagError* f) { return g01gbc(r.x, r.a, r.b, 0.0, 100, f); });
    against("g01gcc non-central chi2", ref_other::kNonCentralChi2,
            [](const Three& r, NagError* f) { return g01gcc(r.x, r.a, r.b, 0.0, 100, f); });
    against("g01gec non-central beta", ref_other::kNonCentralBeta,
            [](const Four& r, NagError* f) { return g01gec(r.x, r.a, r.b, r.c, 0.0, 100, f); });
    against("g01gdc non-central F", ref_other::kNonCentralF,
            [](const Four& r, NagError* f) { return g01gdc(r.x, r.a, r.b, r.c, 0.0, 100, f); });
    against("g01hac bivariate normal", ref_other::kBivariateNormal,
            [](const Three& r, NagError* f) {
                const double v = g01hac(r.x, r.a, r.b, f);
                EXPECT_EQ(v, g01hac(r.a, r.x, r.b, f)) << "symmetric in x and y" << args_of(r);
                return v;
            });
    against("g01emc studentized range", ref_other::kStudentizedRange,
            [](const Srange& r, NagError* f) { return g01emc(r.q, r.v, r.r, f); });
    against(
        "c05bac Lambert W", ref_other::kLambertW,
        [](const Lambert& r, NagError* f) { return c05bac(r.x, r.branch, r.offset != 0, f); },
        8 * DBL_EPSILON);
}

// The deviate reproduces the probability it was given, and the probability's deviate
// returns the starting q.
TEST(G01Srange, RoundTrip) {
    for (double p : {0.01, 0.1, 0.5, 0.9, 0.95, 0.99, 0.999}) {
        for (double v : {1.0, 5.0, 20.0, 300.0}) {
            for (int r : {2, 3, 10, 50}) {
                NagError fail;
                const double q = g01fmc(p, v, r, &fail);
                ASSERT_EQ(fail.code, 0) << p << " " << v << " " << r;
                const double back = g01emc(q, v, r, &fail);
                EXPECT_NEAR(back, p, 1e-13 + 1e-12 * p) << p << " " << v << " " << r;
                EXPECT_NEAR(g01fmc(back, v, r, &fail), q, 1e-11 * q) << p << " " << v << " " << r;
            }
        }
    }
}

// Group counts up to INT_MAX: the range's integral ends where its integrand has died out
// (panels of width 1/sqrt(r) over the whole range took hours there). More groups give a
// wider range, so P(q) falls with r; at r = 2 it is the reference grid's law.
TEST(G01Srange, HugeGroupCountsStayOrderedAndAnswer) {
    for (double q : {3.0, 6.0, 12.0}) {
        double previous = 1.0;
        for (int r : {1000, 100000, 10000000, 2147483646}) {
            NagError fail;
            const double p = g01emc(q, 10.0, r, &fail);
            ASSERT_EQ(fail.code, 0) << q << " " << r;
            EXPECT_LE(p, previous) << q << " " << r;
            EXPECT_GE(p, 0.0);
            previous = p;
        }
    }
    NagError fail;
    const double q = g01fmc(0.842, 65.0, 2159711, &fail);
    EXPECT_EQ(fail.code, 0);
    EXPECT_NEAR(g01emc(q, 65.0, 2159711, &fail), 0.842, 1e-10);
}

// Far below the median of many groups every R(q s) of the scale's bulk lies below the double
// range while P is a normal double: P must stay positive and grow smoothly with q there (it
// once dropped to 0 below q = 0.88336 at v = 5, r = 1.2e8, where P is about 3e-156), and the
// deviate must give back such a p (it returned a q where P was 0).
TEST(G01Srange, LowerTailBelowTheRangeLawsDoubleRange) {
    const double v = 5.0;
    const int r = 122651915;
    double previous = 0.0, previous_q = 0.0;
    for (double q : {0.5, 0.8, 0.88, 0.8833, 0.88335, 0.8834, 0.885, 0.9}) {
        NagError fail;
        const double p = g01emc(q, v, r, &fail);
        ASSERT_EQ(fail.code, 0) << q;
        if (q >= 0.8) {
            EXPECT_GE(p, DBL_MIN) << q;
        }
        EXPECT_GE(p, previous) << q;
        // ln P against ln q: the local power (its elasticity) stays between the group count's
        // bounds, 0 and r - 1, between neighbours; a value that fell to 0 breaks it.
        if (previous > 0.0) {
            const double power = std::log(p / previous) / std::log(q / previous_q);
            EXPECT_TRUE(power > 0.0 && power < r) << q << " " << power;
        }
        previous = p;
        previous_q = q;
    }
    // q at the subnormals, where w/2 underflows erf's argument: a probability, never NaN
    // (the scaled law once divided by a subnormal D there), at most q: R(w) <= w / sqrt(pi)
    // (two groups, the most likely range) and E[S] <= 1.
    for (double tiny : {5e-324, 1e-320, 1e-310, DBL_MIN, 1e-300})
        for (int groups : {2, 3, 10, 46, 100000})
            for (double df : {1.0, 5.0, 1e6}) {
                NagError fail;
                const double p = g01emc(tiny, df, groups, &fail);
                EXPECT_TRUE(fail.code == 0 && p >= 0.0 && p <= tiny)
                    << tiny << " " << df << " " << groups << ": " << p;
            }
    for (double target : {1.9493284874924116e-156, 1e-250, 3e-300}) {
        NagError fail;
        const double q = g01fmc(target, v, r, &fail);
        ASSERT_EQ(fail.code, 0) << target;
        EXPECT_NEAR(g01emc(q, v, r, &fail) / target, 1.0, 1e-6) << target << " at q " << q;
    }
}

// The probability is the scale law's mixture of the range law, P(q; v, r) =
// integral f_Y(y) R(q e^y) dy (R itself the v = infinity limit): at 2^31 - 2 groups the
// range law's step spans 33 decades within 9% of q, which the fixed panels once missed by
// 16% (3.3e-44 for 2.87e-44). Checked against 4000 fine panels over the step.
TEST(G01Srange, HugeGroupCountIsTheMixtureOfTheRangeLaw) {
    const double q = 2.5, v = 10.0;
    const int r = 2147483646;
    NagError fail;
    const auto integrand = [&](double y) {
        const double density = zemath::numeric::chi_scale_log_density(y, v);
        return density == 0.0 ? 0.0 : density * g01emc(q * std::exp(y), 1e300, r, &fail);
    };
    constexpr int kPanels = 4000;
    const double lo = std::log(9.5 / q), hi = std::log(16.0 / q), h = (hi - lo) / kPanels;
    double sum = 0.0;
    for (int i = 0; i < kPanels; ++i)
        sum += zemath::numeric::gauss_legendre20(integrand, lo + i * h, lo + (i + 1) * h);
    EXPECT_NEAR(g01emc(q, v, r, &fail), sum, 1e-8 * sum);
    EXPECT_EQ(fail.code, 0);
}

TEST(C05Lambert, IdentityAndOwnScreening) {
    // w e^w = x on both branches (w e^w carries w's relative error times 1 + |w|).
    NagError fail;
    for (double x : {-0.36, -0.2, -1e-3, 1e-8, 0.3, 2.0, 50.0, 1e5}) {
        for (int branch : {0, -1}) {
            if (branch == -1 && x >= 0) continue;
            const double w = c05bac(x, branch, false, &fail);
            EXPECT_NEAR(w * std::exp(w), x, 4 * DBL_EPSILON * std::fabs(x) * (1 + std::fabs(w)))
                << x;
            EXPECT_EQ(w <= -1.0, branch == -1) << x;
        }
    }
    // Monotone in the offset across the switch between the series and Newton's method.
    double previous = -1.0;
    for (double dx = 1e-12; dx < 1.0; dx *= 1.7) {
        const double w = c05bac(dx, 0, true, &fail);
        EXPECT_GT(w, previous) << dx;
        previous = w;
    }
    // The export screens the domain before calling; the routine's own checks remain.
    // clang-format off
    struct Case { double x; int branch; bool offset; int code; };
    // clang-format on
    for (const Case& c : {Case{1.0, 1, false, NE_INT}, Case{-0.5, 0, false, NE_REAL},
                          Case{0.0, -1, false, NE_REAL}, Case{0.37, -1, true, NE_REAL}}) {
        c05bac(c.x, c.branch, c.offset, &fail);
        EXPECT_EQ(fail.code, c.code) << c.x << " " << c.branch;
    }
}

}  // namespace
