// The central g01 routines and the utility probability helpers: tail selectors, the error
// record, failure codes and values, the conventions traps (upper tail computed directly,
// densities at their poles, the two-output beta routine), and the helpers' accuracy
// against the mpmath values of tests/reference/gen_distributions_central.py.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

#include "platform/nag/g01.hpp"
#include "platform/nag/g01_extended.hpp"
#include "platform/util/probability.hpp"

namespace {

using namespace zemath::nag;
using Tail = Nag_TailProbability;
constexpr Tail kAllTails[] = {Tail::Nag_LowerTail,     Tail::Nag_UpperTail, Tail::Nag_TwoTailSignif,
                              Tail::Nag_TwoTailConfid, Tail::Nag_TwoTail,   Tail::Nag_Further};

struct TailRoutine {
    const char* name;
    std::function<double(Tail, NagError*)> call;
    bool two_sided;  // accepts the significance and confidence selectors
};

const TailRoutine kTailRoutines[] = {
    {"g01eac", [](Tail t, NagError* f) { return g01eac(t, 0.4, f); }, true},
    {"g01ebc", [](Tail t, NagError* f) { return g01ebc(t, 0.4, 3, f); }, true},
    {"g01fbc", [](Tail t, NagError* f) { return g01fbc(t, 0.4, 3, f); }, true},
    {"g01ecc", [](Tail t, NagError* f) { return g01ecc(t, 0.4, 3, f); }, false},
    {"g01edc", [](Tail t, NagError* f) { return g01edc(t, 0.4, 3, 5, f); }, false},
    {"g01efc", [](Tail t, NagError* f) { return g01efc(t, 0.4, 3, 5, f); }, false},
};

TEST(G01Central, TailSelectors) {
    for (const TailRoutine& r : kTailRoutines) {
        for (Tail tail : kAllTails) {
            const bool one_sided = tail == Tail::Nag_LowerTail || tail == Tail::Nag_UpperTail;
            const bool accepted = one_sided || (r.two_sided && (tail == Tail::Nag_TwoTailSignif ||
                                                                tail == Tail::Nag_TwoTailConfid));
            NagError fail;
            fail.code = 99;  // a stale code is reset by every call
            const double v = r.call(tail, &fail);
            EXPECT_EQ(fail.code, accepted ? NE_NOERROR : NE_BAD_PARAM) << r.name;
            if (!accepted) {
                EXPECT_EQ(v, 0.0) << r.name << ": the failure value is 0";
            }
        }
        NagError fail;
        const double lower = r.call(Tail::Nag_LowerTail, &fail);
        const double upper = r.call(Tail::Nag_UpperTail, &fail);
        if (std::string(r.name) != "g01fbc") {  // a deviate: lower and upper are -t and t
            EXPECT_NEAR(lower + upper, 1.0, 2 * DBL_EPSILON) << r.name;
        } else {
            EXPECT_EQ(lower, -upper);
        }
    }
}

TEST(G01Central, FailureCodesAndValues) {
    struct Case {
        const char* what;
        std::function<double(NagError*)> call;
        int code;
    };
    const double nan = std::nan("");
    const Tail lower = Tail::Nag_LowerTail;
    const Case cases[] = {
        {"g01eac NaN", [&](NagError* f) { return g01eac(lower, nan, f); }, NE_REAL},
        {"g01cec p 0", [](NagError* f) { return g01cec(0, f); }, NE_REAL_ARG_LE},
        {"g01cec p 1", [](NagError* f) { return g01cec(1, f); }, NE_REAL_ARG_GE},
        {"g01ebc df NaN", [&](NagError* f) { return g01ebc(lower, 1, nan, f); }, NE_REAL},
        {"g01ebc df < 1", [=](NagError* f) { return g01ebc(lower, 1, 0.99, f); }, NE_REAL_ARG_LT},
        {"g01fbc overflow", [=](NagError* f) { return g01fbc(lower, 1e-320, 1, f); },
         NE_PROB_LIMIT},
        {"g01ecc x < 0", [=](NagError* f) { return g01ecc(lower, -1, 2, f); }, NE_REAL_ARG_LT},
        {"g01ecc df > 1e10", [=](NagError* f) { return g01ecc(lower, 1, 1.0001e10, f); },
         NE_REAL_ARG_GT},
        {"g01fcc underflow", [](NagError* f) { return g01fcc(0.5, 1e-3, f); }, NE_PROB_LIMIT},
        {"g01fcc p NaN", [&](NagError* f) { return g01fcc(nan, 1, f); }, NE_REAL},
        {"g01edc df1 0", [=](NagError* f) { return g01edc(lower, 1, 0, 2, f); }, NE_REAL_ARG_LE},
        {"g01fdc underflow", [](NagError* f) { return g01fdc(1e-300, 1.7, 5, f); },
         NE_DEVIATE_FAILED},
        {"g01fdc overflow", [](NagError* f) { return g01fdc(1 - 0x1p-53, 1, 0.01, f); },
         NE_DEVIATE_FAILED},
        {"g01fdc p < 0", [](NagError* f) { return g01fdc(-0.5, 1, 2, f); }, NE_REAL_ARG_LT},
        {"g01fec b > 1e6", [](NagError* f) { return g01fec(0.5, 1, 1.5e6, 0, f); }, NE_REAL_ARG_GT},
        {"g01efc g < 0", [=](NagError* f) { return g01efc(lower, -1, 2, 1, f); }, NE_REAL_ARG_LT},
        {"g01ffc underflow", [](NagError* f) { return g01ffc(1e-10, 1e-3, 1, 0, f); },
         NE_PROB_LIMIT},
        {"g01ffc p 1", [](NagError* f) { return g01ffc(1, 2, 1, 0, f); }, NE_REAL_ARG_GE},
        {"g01kfc scale inf", [](NagError* f) { return g01kfc(1, 2, HUGE_VAL, f); }, NE_REAL_ARG_GT},
    };
    for (const Case& c : cases) {
        NagError fail;
        EXPECT_EQ(c.call(&fail), 0.0) << c.what;
        EXPECT_EQ(fail.code, c.code) << c.what;
    }
    NagError fail;
    double p = 1, q = 1, pdf = 1;
    g01eec(1.5, 2, 3, 0, &p, &q, &pdf, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_GT);
    EXPECT_EQ(p + q + pdf, 0.0) << "outputs zeroed on failure";
}

TEST(G01Central, BoundaryValuesAreExactAndNotFailures) {
    NagError fail;
    EXPECT_EQ(g01fcc(0, 3, &fail), 0.0);
    EXPECT_EQ(g01fdc(0, 3, 4, &fail), 0.0);
    EXPECT_EQ(g01fec(0, 3, 4, 0, &fail), 0.0);
    EXPECT_EQ(g01fec(1, 3, 4, 0, &fail), 1.0);
    EXPECT_EQ(g01ffc(0, 3, 4, 0, &fail), 0.0);
    EXPECT_EQ(g01fec(0.3, 1e-3, 1, 0, &fail), 0.0) << "0.3^1000 rounds to 0 inside [0, 1]";
    EXPECT_EQ(fail.code, NE_NOERROR);
    EXPECT_EQ(g01fbc(Tail::Nag_LowerTail, 0.5, 7, &fail), 0.0);
    EXPECT_EQ(fail.code, NE_NOERROR);
    // Density limits at the ends: +infinity below shape 1, the finite value at shape 1.
    double p = 0, q = 0, pdf = 0;
    g01eec(0, 0.5, 2, 0, &p, &q, &pdf, &fail);
    EXPECT_EQ(pdf, HUGE_VAL);
    EXPECT_EQ(p, 0.0);
    EXPECT_EQ(q, 1.0);
    g01eec(1, 2, 1, 0, nullptr, nullptr, &pdf, &fail);
    EXPECT_EQ(pdf, 2.0);
    EXPECT_EQ(g01kfc(0, 1, 4, &fail), 0.25);
    EXPECT_EQ(g01kfc(0, 0.5, 4, &fail), HUGE_VAL);
    EXPECT_EQ(g01kfc(-3, 2, 4, &fail), 0.0);
    EXPECT_EQ(fail.code, NE_NOERROR);
}

// The side of I_x(a, b) near 1 is never taken from a subtraction that loses the small side:
// the arcsine law I_x(1/2, 1/2) = (2/pi) asin(sqrt x) at x = 1e-20 has q = 1 - 6.4e-11.
TEST(G01Central, BetaTailsKeepBothSidesAccurate) {
    NagError fail;
    double p = 0, q = 0, pdf = 0, q_only = 0;
    g01eec(1e-20, 0.5, 0.5, 0, &p, &q, &pdf, &fail);
    const double small = 2 / M_PI * std::asin(1e-10);
    EXPECT_NEAR(p / small, 1.0, 1e-15);
    EXPECT_EQ(q, 1 - small);
    EXPECT_NEAR(pdf * M_PI * std::sqrt(1e-20 * (1 - 1e-20)), 1.0, 1e-15);
    g01eec(1 - 0x1p-40, 0.5, 0.5, 0, nullptr, &q_only, nullptr, &fail);
    EXPECT_NEAR(q_only / (2 / M_PI * std::asin(std::sqrt(0x1p-40))), 1.0, 1e-15);
    // Student's t at df = 1 is the Cauchy law: P(T > t) = 1/2 - atan(t)/pi.
    EXPECT_NEAR(g01ebc(Tail::Nag_UpperTail, 1e-10, 1, &fail), 0.5 - 1e-10 / M_PI, 1.2e-16);
}

TEST(G01Central, ExtendedFormsCarryMoreDigits) {
    NagError fail;
    // z for the double nearest 0.975 is 1.9599639845400538556044 (mpmath): the long double
    // deviate holds it to about 1e-19, the double one to rounding.
    const long double z = g01cec_extended(0.975, &fail);
    EXPECT_LT(std::fabs(z - 1.9599639845400538556044L), 4e-19L);
    EXPECT_EQ(static_cast<double>(z), g01cec(0.975, &fail));
    for (double x : {-37.5, -3.0, 0.0, 2.0, 38.0}) {
        for (Tail t : {Tail::Nag_LowerTail, Tail::Nag_UpperTail, Tail::Nag_TwoTailConfid}) {
            EXPECT_EQ(static_cast<double>(g01eac_extended(t, x, &fail)), g01eac(t, x, &fail));
        }
    }
    EXPECT_EQ(g01eac_extended(Tail::Nag_TwoTail, 1.0L, &fail), 0.0L);
    EXPECT_EQ(fail.code, NE_BAD_PARAM);
}

TEST(G01Central, LimitsOfTheParameters) {
    NagError fail;
    // Student's t beyond 1e25 degrees of freedom, and at +infinity, is the normal law.
    EXPECT_EQ(g01ebc(Tail::Nag_LowerTail, -5, 1e30, &fail), g01eac(Tail::Nag_LowerTail, -5, &fail));
    EXPECT_NEAR(
        g01ebc(Tail::Nag_LowerTail, -5, 1e20, &fail) / g01eac(Tail::Nag_LowerTail, -5, &fail), 1.0,
        1e-15);
    EXPECT_NEAR(g01fbc(Tail::Nag_TwoTailSignif, 0.05, HUGE_VAL, &fail), 1.959963984540054, 1e-15);
    // The chi-square cap is inclusive.
    EXPECT_NEAR(g01ecc(Tail::Nag_LowerTail, 1e10, 1e10, &fail), 0.5, 1e-5);
    EXPECT_EQ(fail.code, NE_NOERROR);
}

TEST(G01Central, CallerErrnoIsLeftAlone) {
    NagError fail;
    errno = 1234;
    g01fdc(1e-300, 10, 3, &fail);  // Boost's own inverse stalls here and reports through errno
    g01ecc(Tail::Nag_UpperTail, 1e300, 0.5, &fail);
    g01kfc(1e-320, 0.5, 1, &fail);
    EXPECT_EQ(errno, 1234);
}

// ---- utility helpers -------------------------------------------------------------------

enum class Util { incbeta, prob, invprob, Ftable };
struct UtilCase {
    Util fn;
    const char* name;
    double a0, a1, a2, expected;
};
#define REF(fn, a0, a1, a2, tail, expected)
#define REF_UTIL(fn, a0, a1, a2, expected) {Util::fn, #fn, a0, a1, a2, expected},
const UtilCase kUtilCases[] = {
#include "reference/distributions_central_ref.inc"
};
#undef REF
#undef REF_UTIL

TEST(ProbabilityHelpers, MatchTheReferences) {
    using namespace zemath::util;
    double worst = 0;
    for (const UtilCase& c : kUtilCases) {
        double got = 0;
        switch (c.fn) {
            case Util::incbeta:
                got = incbeta(c.a0, c.a1, c.a2);
                break;
            case Util::prob:
                got = prob(c.a0);
                break;
            case Util::invprob:
                got = invprob(c.a0);
                break;
            case Util::Ftable:
                got = Ftable(c.a0, int(c.a1), int(c.a2));
                break;
        }
        const double err = std::fabs(got - c.expected) / std::max(std::fabs(c.expected), DBL_MIN);
        worst = std::max(worst, err);
        EXPECT_LE(err, 1e-13) << c.name << "(" << c.a0 << ", " << c.a1 << ", " << c.a2 << ")";
    }
    std::printf("probability helpers: %zu cases, worst relative error %.3e\n",
                sizeof kUtilCases / sizeof kUtilCases[0], worst);
}

TEST(ProbabilityHelpers, DomainAndDirection) {
    using namespace zemath::util;
    // Ftable is the UPPER-tail quantile: P(F > f) = 0.05 at 2 and 10 df is 4.1028.
    EXPECT_NEAR(Ftable(0.05, 2, 10), 4.1028210151304, 1e-12);
    EXPECT_EQ(Ftable(1, 2, 10), 0.0);
    for (double v : {Ftable(0, 2, 10), Ftable(0.5, 0, 10), Ftable(0.5, 2, -1), Ftable(NAN, 2, 2),
                     incbeta(1.5, 2, 3), incbeta(0.5, 0, 3), incbeta(0.5, 2, 2e6), prob(NANUM),
                     invprob(0), invprob(1), invprob(NAN)}) {
        EXPECT_EQ(v, NANUM);
    }
    EXPECT_EQ(prob(-HUGE_VAL), 0.0);
    EXPECT_EQ(prob(HUGE_VAL), 1.0);
}

}  // namespace
