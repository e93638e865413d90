// The central g01 routines and the utility probability helpers, for what the exports do not
// show: the routines' failure value 0 and zeroed outputs, the deviate failure 422 that finv
// replaces by its table fallback, the caller's errno, and the helpers' accuracy against the
// mpmath values of tests/reference/gen_distributions_central.py. Tail codes, range codes
// and accuracy of the routines are tested through the exports (tests/stats).
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <functional>

#include "platform/nag/g01.hpp"
#include "platform/util/probability.hpp"

namespace {

using namespace zemath::nag;
using Tail = Nag_TailProbability;

TEST(G01Central, FailureValueIsZero) {
    // clang-format off
    struct Case { const char* what; std::function<double(NagError*)> call; int code; };
    // clang-format on
    const Case cases[] = {
        {"g01fdc underflow", [](NagError* f) { return g01fdc(1e-300, 1.7, 5, f); },
         NE_DEVIATE_FAILED},
        {"g01fdc overflow", [](NagError* f) { return g01fdc(1 - 0x1p-53, 1, 0.01, f); },
         NE_DEVIATE_FAILED},
        {"g01ecc two-sided", [](NagError* f) { return g01ecc(Tail::Nag_TwoTailSignif, 1, 3, f); },
         NE_BAD_PARAM},
        {"g01eac NaN", [](NagError* f) { return g01eac(Tail::Nag_LowerTail, NAN, f); }, NE_REAL},
    };
    for (const Case& c : cases) {
        NagError fail;
        fail.code = 99;  // a stale code is replaced
        EXPECT_EQ(c.call(&fail), 0.0) << c.what;
        EXPECT_EQ(fail.code, c.code) << c.what;
    }
    NagError fail;
    double p = 1, q = 1, pdf = 1;
    g01eec(1.5, 2, 3, 0, &p, &q, &pdf, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_GT);
    EXPECT_TRUE(p == 0 && q == 0 && pdf == 0) << "outputs zeroed on failure";
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
// clang-format off
struct UtilCase { Util fn; double a0, a1, a2, expected; };
// clang-format on
#define REF(fn, a0, a1, a2, tail, expected)
#define REF_UTIL(fn, a0, a1, a2, expected) {Util::fn, a0, a1, a2, expected},
const UtilCase kUtilCases[] = {
#include "reference/distributions_central_ref.inc"
};
#undef REF
#undef REF_UTIL

TEST(ProbabilityHelpers, MatchTheReferences) {
    using namespace zemath::util;
    double worst = 0;
    for (const UtilCase& c : kUtilCases) {
        const double got = c.fn == Util::incbeta   ? incbeta(c.a0, c.a1, c.a2)
                           : c.fn == Util::prob    ? prob(c.a0)
                           : c.fn == Util::invprob ? invprob(c.a0)
                                                   : Ftable(c.a0, int(c.a1), int(c.a2));
        const double err = std::fabs(got - c.expected) / std::max(std::fabs(c.expected), DBL_MIN);
        worst = std::max(worst, err);
        EXPECT_LE(err, 1e-13) << int(c.fn) << "(" << c.a0 << ", " << c.a1 << ", " << c.a2 << ")";
    }
    std::printf("[accuracy] probability helpers: %zu cases, worst relative error %.3e\n",
                std::size(kUtilCases), worst);
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
