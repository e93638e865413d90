// The central distribution exports as a caller sees them: status codes, tail codes, the
// optional status pointer, bad input (NANUM, NaN, infinities, out-of-range parameters),
// and the exceptions kept deliberately (Weibull, finv's table fallback, betacdf's tails,
// exppdf's rate, the log-normal checks). Accuracy lives in distributions_accuracy_test.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "platform/util/probability.hpp"
#include "stats/distribution_calls.hpp"
#include "zemath/distributions.h"
#include "zemath/status.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool is_nanum(double v) {
    return v == NANUM;
}

using dist_test::Fn;

// One export: its argument count, whether NaN is refused in-house (-110) rather than by the
// back end (15), and a valid argument set.
struct Export {
    Fn fn;
    const char* name;
    int nargs;
    bool in_house;
    double valid[3];
    double call(const double* a, int tail, int* status) const {
        return dist_test::call(fn, a, tail, status);
    }
};

// clang-format off
const Export kExports[] = {
    {Fn::normcdf, "normcdf", 1, false, {0.3}},       {Fn::norminv, "norminv", 1, false, {0.3}},
    {Fn::normpdf, "normpdf", 3, true, {0.3, 1, 2}},  {Fn::tcdf, "tcdf", 2, false, {0.3, 4}},
    {Fn::tinv, "tinv", 2, false, {0.3, 4}},          {Fn::chi2cdf, "chi2cdf", 2, false, {2, 3}},
    {Fn::chi2inv, "chi2inv", 2, false, {0.3, 3}},    {Fn::fcdf, "fcdf", 3, false, {2, 3, 7}},
    {Fn::finv, "finv", 3, false, {0.3, 3, 7}},       {Fn::betacdf, "betacdf", 3, false, {0.3, 2, 3}},
    {Fn::betainv, "betainv", 3, false, {0.3, 2, 3}}, {Fn::betapdf, "betapdf", 3, false, {0.3, 2, 3}},
    {Fn::gamcdf, "gamcdf", 3, false, {2, 3, 0.5}},   {Fn::gaminv, "gaminv", 3, false, {0.3, 3, 0.5}},
    {Fn::gampdf, "gampdf", 3, false, {2, 3, 0.5}},   {Fn::exppdf, "exppdf", 2, true, {2, 0.5}},
    {Fn::cauchypdf, "cauchypdf", 3, true, {2, 1, 3}}, {Fn::lappdf, "lappdf", 3, true, {2, 1, 3}},
    {Fn::lognpdf, "lognpdf", 3, true, {2, 1, 3}},    {Fn::logncdf, "logncdf", 3, true, {2, 1, 3}},
    {Fn::logninv, "logninv", 3, true, {0.3, 1, 3}},  {Fn::wblpdf, "wblpdf", 3, true, {2, 1, 3}},
    {Fn::wblcdf, "wblcdf", 3, true, {2, 1, 3}},      {Fn::wblinv, "wblinv", 3, true, {0.3, 1, 3}},
};
// clang-format on

TEST(DistributionExports, ValidCallWritesStatusZeroAndNullStatusIsSafe) {
    for (const Export& e : kExports) {
        int status = 12345;
        const double v = e.call(e.valid, 2, &status);
        EXPECT_EQ(status, 0) << e.name;
        EXPECT_TRUE(std::isfinite(v) && !is_nanum(v)) << e.name;
        EXPECT_EQ(e.call(e.valid, 2, nullptr), v) << e.name << " without a status pointer";
    }
}

TEST(DistributionExports, MissingOrNanArgumentIsRefused) {
    for (const Export& e : kExports) {
        for (int i = 0; i < e.nargs; ++i) {
            double args[3] = {e.valid[0], e.valid[1], e.valid[2]};
            int status = 0;
            args[i] = NANUM;
            EXPECT_TRUE(is_nanum(e.call(args, 2, &status))) << e.name << " arg " << i;
            EXPECT_EQ(status, ZEMATH_ERR_STATS_INPUT) << e.name << " NANUM arg " << i;
            args[i] = kNaN;
            status = 0;
            EXPECT_TRUE(is_nanum(e.call(args, 2, &status))) << e.name << " arg " << i;
            EXPECT_EQ(status, e.in_house ? int{ZEMATH_ERR_STATS_INPUT} : int{ZEMATH_NAG_REAL})
                << e.name << " NaN arg " << i;
            EXPECT_TRUE(is_nanum(e.call(args, 2, nullptr))) << e.name << " null status";
        }
    }
}

// Every parameter (not the variable) at +-infinity is refused; the codes differ by family.
TEST(DistributionExports, InfiniteParametersAreRefused) {
    for (const Export& e : kExports) {
        for (int i = 1; i < e.nargs; ++i) {
            for (double inf : {kInf, -kInf}) {
                const std::string name = e.name;
                if (inf > 0 && (name == "tcdf" || name == "tinv")) continue;  // the normal law
                double args[3] = {e.valid[0], e.valid[1], e.valid[2]};
                args[i] = inf;
                int status = 0;
                const double v = e.call(args, 2, &status);
                if (name.rfind("wbl", 0) == 0 && inf < 0) {
                    EXPECT_EQ(status, 0) << e.name << ": a <= 0 or b <= 0 is NANUM, status 0";
                } else {
                    EXPECT_NE(status, 0) << e.name << " arg " << i << " = " << inf;
                }
                EXPECT_TRUE(is_nanum(v)) << e.name << " arg " << i << " = " << inf;
            }
        }
    }
    int status = -1;
    EXPECT_DOUBLE_EQ(tcdf(1.0, kInf, 2, &status), normcdf(1.0, 2, nullptr))
        << "df = +infinity is the normal law";
    EXPECT_EQ(status, 0);
}

TEST(DistributionExports, InfiniteVariableGivesTheLimit) {
    struct Case {
        double got, expected;
    };
    const Case cases[] = {
        {normcdf(-kInf, 2, nullptr), 0},     {normcdf(kInf, 2, nullptr), 1},
        {normcdf(kInf, 3, nullptr), 0},      {normcdf(-kInf, 4, nullptr), 1},
        {tcdf(-kInf, 3, 2, nullptr), 0},     {tcdf(kInf, 3, 1, nullptr), 0},
        {tcdf(kInf, 3, 4, nullptr), 1},      {chi2cdf(kInf, 3, 2, nullptr), 1},
        {chi2cdf(kInf, 3, 1, nullptr), 0},   {fcdf(kInf, 3, 4, 2, nullptr), 1},
        {gamcdf(kInf, 3, 4, 1, nullptr), 0}, {gampdf(kInf, 3, 4, nullptr), 0},
        {normpdf(-kInf, 0, 1, nullptr), 0},  {exppdf(kInf, 2, nullptr), 0},
        {cauchypdf(kInf, 0, 1, nullptr), 0}, {lappdf(-kInf, 0, 1, nullptr), 0},
        {lognpdf(kInf, 0, 1, nullptr), 0},   {logncdf(kInf, 0, 1, 2, nullptr), 1},
        {wblpdf(kInf, 1, 3, nullptr), 0},    {wblcdf(kInf, 1, 3, nullptr), 1},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
        EXPECT_EQ(cases[i].got, cases[i].expected) << "case " << i;
    }
}

// ---- tail codes ------------------------------------------------------------------------

// The exports with a tail code, at one valid argument set; two_sided: they have
// significance and confidence probabilities, so tail 0 reads as 3.
struct TailExport {
    Fn fn;
    const char* name;
    double args[3];
    bool two_sided;
    double call(int tail, int* status) const { return dist_test::call(fn, args, tail, status); }
};

// clang-format off
const TailExport kTailExports[] = {
    {Fn::normcdf, "normcdf", {0.7}, true},          {Fn::tcdf, "tcdf", {0.7, 5}, true},
    {Fn::tinv, "tinv", {0.3, 5}, true},             {Fn::logncdf, "logncdf", {2, 0.1, 1.5}, true},
    {Fn::chi2cdf, "chi2cdf", {2, 3}, false},        {Fn::fcdf, "fcdf", {2, 3, 7}, false},
    {Fn::gamcdf, "gamcdf", {2, 3, 0.5}, false},     {Fn::betacdf, "betacdf", {0.3, 2, 3}, false},
};
// clang-format on

TEST(DistributionTails, RefusedSelectorsGiveNanumAnd70) {
    for (const TailExport& e : kTailExports) {
        std::vector<int> refused = {5};
        if (!e.two_sided) refused.insert(refused.end(), {0, 3, 4});
        for (int tail : refused) {
            int status = 0;
            EXPECT_TRUE(is_nanum(e.call(tail, &status))) << e.name << " tail " << tail;
            EXPECT_EQ(status, ZEMATH_NAG_BAD_PARAM) << e.name << " tail " << tail;
            EXPECT_TRUE(is_nanum(e.call(tail, nullptr))) << e.name << " tail " << tail;
        }
    }
    int status = 0;
    EXPECT_TRUE(is_nanum(betacdf(0.3, 2, 3, -1, &status))) << "betacdf takes 1 and 2 only";
    EXPECT_EQ(status, ZEMATH_NAG_BAD_PARAM);
}

TEST(DistributionTails, ZeroMeansSignificanceAndUnknownCodesMeanLower) {
    for (const TailExport& e : kTailExports) {
        const double lower = e.call(2, nullptr);
        if (e.two_sided) {
            int status = -1;
            EXPECT_EQ(e.call(0, &status), e.call(3, nullptr)) << e.name;
            EXPECT_EQ(status, 0) << e.name;
        }
        if (std::string(e.name) == "betacdf") continue;  // refuses them instead
        for (int tail : {-1, 6, 42}) EXPECT_EQ(e.call(tail, nullptr), lower) << e.name;
    }
}

TEST(DistributionTails, SelectorsPickTheDocumentedProbability) {
    // (tcdf's four tails are pinned by the published check values.) tinv: lower, upper (P(T >= t) =
    // p) and the two-sided deviates are >= 0.
    const double t975 = 2.2281388519862744;  // P(T <= t) = 0.975 at 10 df
    EXPECT_NEAR(tinv(0.975, 10, 2, nullptr), t975, 1e-13);
    EXPECT_NEAR(tinv(0.025, 10, 1, nullptr), t975, 1e-13);
    EXPECT_NEAR(tinv(0.05, 10, 3, nullptr), t975, 1e-13);
    EXPECT_NEAR(tinv(0.95, 10, 4, nullptr), t975, 1e-13);
    EXPECT_NEAR(tinv(0.05, 10, 0, nullptr), t975, 1e-13);
    // Upper tails are P(X > x), lower P(X <= x), for every law.
    EXPECT_GT(chi2cdf(1, 3, 1, nullptr), chi2cdf(1, 3, 2, nullptr)) << "1 is below the median";
    EXPECT_NEAR(gamcdf(15.5, 4, 2, 1, nullptr), 1 - 0.94987794546734, 1e-13);
    EXPECT_NEAR(betacdf(0.3, 2, 3, 1, nullptr), 1 - 0.3483, 1e-12);
    EXPECT_NEAR(logncdf(std::exp(1.0), 1.0, 2.0, 2, nullptr), 0.5, 1e-16);
}

// ---- back-end range failures are handed on ----------------------------------------------

// One failure per routine is enough here: the codes themselves are the back end's tests.
TEST(DistributionExports, BackEndFailuresAreHandedOn) {
    struct Case {
        const char* what;
        double (*call)(int* status);
        int code;
    };
    const Case cases[] = {
        {"norminv p = 0", [](int* s) { return norminv(0, s); }, ZEMATH_NAG_REAL_ARG_LE},
        {"tcdf df < 1", [](int* s) { return tcdf(1, 0.5, 2, s); }, ZEMATH_NAG_REAL_ARG_LT},
        {"tinv overflow", [](int* s) { return tinv(4.9e-324, 1, 2, s); }, ZEMATH_NAG_PROB_LIMIT},
        {"chi2cdf x < 0", [](int* s) { return chi2cdf(-1, 3, 2, s); }, ZEMATH_NAG_REAL_ARG_LT},
        {"chi2inv underflow", [](int* s) { return chi2inv(0.3, 1e-3, s); }, ZEMATH_NAG_PROB_LIMIT},
        {"fcdf df2 < 0", [](int* s) { return fcdf(1, 3, -2, 2, s); }, ZEMATH_NAG_REAL_ARG_LE},
        {"finv p = 1", [](int* s) { return finv(1, 3, 4, s); }, ZEMATH_NAG_REAL_ARG_GE},
        {"betacdf a > 1e6", [](int* s) { return betacdf(0.5, 2e6, 3, 2, s); },
         ZEMATH_NAG_REAL_ARG_GT},
        {"betapdf b = 0", [](int* s) { return betapdf(0.5, 2, 0, s); }, ZEMATH_NAG_REAL_ARG_LE},
        {"betainv p > 1", [](int* s) { return betainv(1.5, 2, 3, s); }, ZEMATH_NAG_REAL_ARG_GT},
        {"gamcdf scale 0", [](int* s) { return gamcdf(1, 2, 0, 2, s); }, ZEMATH_NAG_REAL_ARG_LE},
        {"gaminv shape > 1e6", [](int* s) { return gaminv(0.5, 2e6, 1, s); },
         ZEMATH_NAG_REAL_ARG_GT},
        {"gampdf shape < 0", [](int* s) { return gampdf(1, -2, 1, s); }, ZEMATH_NAG_REAL_ARG_LE},
    };
    for (const Case& c : cases) {
        int status = 0;
        EXPECT_TRUE(is_nanum(c.call(&status))) << c.what;
        EXPECT_EQ(status, c.code) << c.what;
    }
}

// ---- in-house checks and the deliberate exceptions --------------------------------------

TEST(DistributionExports, InHouseParameterChecksGive110) {
    struct Case {
        const char* what;
        double (*call)(int* status);
    };
    const Case cases[] = {
        {"normpdf sigma 0", [](int* s) { return normpdf(0, 0, 0, s); }},
        {"normpdf sigma < 0", [](int* s) { return normpdf(0, 0, -1, s); }},
        {"exppdf x < 0", [](int* s) { return exppdf(-1e-300, 1, s); }},
        {"exppdf rate 0", [](int* s) { return exppdf(1, 0, s); }},
        {"cauchypdf b 0", [](int* s) { return cauchypdf(1, 0, 0, s); }},
        {"lappdf b < 0", [](int* s) { return lappdf(1, 0, -2, s); }},
        {"lognpdf x 0", [](int* s) { return lognpdf(0, 0, 1, s); }},
        {"lognpdf sigma 0", [](int* s) { return lognpdf(1, 0, 0, s); }},
        {"logncdf x < 0", [](int* s) { return logncdf(-1, 0, 1, 2, s); }},
        {"logncdf sigma < 0", [](int* s) { return logncdf(1, 0, -1, 2, s); }},
        {"logninv p 0", [](int* s) { return logninv(0, 0, 1, s); }},
        {"logninv p 1", [](int* s) { return logninv(1, 0, 1, s); }},
        {"logninv sigma 0", [](int* s) { return logninv(0.5, 0, 0, s); }},
        {"logninv overflow", [](int* s) { return logninv(0.999, 700, 10, s); }},
        {"wblinv overflow", [](int* s) { return wblinv(0.9, 1e300, 1e-3, s); }},
    };
    for (const Case& c : cases) {
        int status = 0;
        EXPECT_TRUE(is_nanum(c.call(&status))) << c.what;
        EXPECT_EQ(status, ZEMATH_ERR_STATS_INPUT) << c.what;
        EXPECT_TRUE(is_nanum(c.call(nullptr))) << c.what << ": a null status is safe";
    }
}

TEST(DistributionExceptions, WeibullRefusesQuietlyAndIsZeroBelowZero) {
    struct Case {
        const char* what;
        double (*call)(int* status);
        bool nanum;
        double value;
    };
    const Case cases[] = {
        {"wblpdf a 0", [](int* s) { return wblpdf(1, 0, 2, s); }, true, 0},
        {"wblcdf b < 0", [](int* s) { return wblcdf(1, 1, -2, s); }, true, 0},
        {"wblinv a < 0", [](int* s) { return wblinv(0.5, -1, 2, s); }, true, 0},
        {"wblinv p 0", [](int* s) { return wblinv(0, 1, 1, s); }, true, 0},
        {"wblinv p 1", [](int* s) { return wblinv(1, 1, 1, s); }, true, 0},
        {"wblcdf x < 0", [](int* s) { return wblcdf(-1, 1, 1, s); }, false, 0},
        {"wblpdf x < 0", [](int* s) { return wblpdf(-1, 1, 1, s); }, false, 0},
        {"wblpdf pole", [](int* s) { return wblpdf(0, 2, 0.5, s); }, false, kInf},
        {"wblpdf x 0, b 1", [](int* s) { return wblpdf(0, 4, 1, s); }, false, 0.25},
    };
    for (const Case& c : cases) {
        int status = -1;
        const double v = c.call(&status);
        EXPECT_EQ(status, 0) << c.what;
        if (c.nanum) {
            EXPECT_TRUE(is_nanum(v)) << c.what;
        } else {
            EXPECT_EQ(v, c.value) << c.what;
        }
    }
    // Scale a, shape b: the cdf at x = a is 1 - 1/e whatever the shape.
    EXPECT_NEAR(wblcdf(3, 3, 7, nullptr), 1 - std::exp(-1.0), 1e-16);
}

TEST(DistributionExceptions, ExppdfTakesARate) {
    EXPECT_DOUBLE_EQ(exppdf(1, 2, nullptr), 2 * std::exp(-2.0));
    EXPECT_DOUBLE_EQ(exppdf(0, 4, nullptr), 4.0);
}

// The deviate lies below the double range (p too close to 0), the routine fails with 422,
// and finv returns the table value: the UPPER-tail quantile at p for the truncated degrees
// of freedom, with status 0.
TEST(DistributionExceptions, FinvFallsBackToTheUpperTailTable) {
    int status = -1;
    const double v = finv(1e-300, 1.7, 5.2, &status);  // the true deviate is about 1e-353
    EXPECT_EQ(status, 0);
    EXPECT_EQ(v, zemath::util::Ftable(1e-300, 1, 5));
    EXPECT_GT(v, 1e100);
    EXPECT_NEAR(fcdf(v, 1, 5, 1, nullptr) / 1e-300, 1.0, 1e-12) << "P(F > v) = p";
    // A truncated degree of freedom below 1: the table cannot help either, NANUM, status 0.
    status = -1;
    EXPECT_TRUE(is_nanum(finv(1e-200, 0.5, 5, &status)));
    EXPECT_EQ(status, 0);
    // Degrees of freedom beyond INT_MAX are clamped for the table: F(1, 2^31 - 1) is all but
    // chi-square with 1 df, whose upper 1e-300 quantile is norminv(5e-301)^2.
    status = -1;
    const double large = finv(1e-300, 1.0, 5e9, &status);
    EXPECT_EQ(status, 0);
    const double chi2_quantile = std::pow(norminv(5e-301, nullptr), 2);
    EXPECT_NEAR(large / chi2_quantile, 1.0, 1e-5);
}

TEST(DistributionExceptions, DensitiesAtTheirPoles) {
    int status = -1;
    EXPECT_EQ(gampdf(0, 0.5, 2, &status), kInf);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(gampdf(0, 1, 2, nullptr), 0.5);
    EXPECT_EQ(gampdf(0, 3, 2, nullptr), 0.0);
    EXPECT_EQ(gampdf(-1, 3, 2, nullptr), 0.0);
    EXPECT_EQ(betapdf(0, 0.5, 2, nullptr), kInf);
    EXPECT_EQ(betapdf(1, 2, 1, nullptr), 2.0);
    EXPECT_EQ(betapdf(1, 2, 3, nullptr), 0.0);
}

TEST(DistributionExports, ReentrantAcrossThreads) {
    std::vector<double> expected;
    for (int i = 1; i <= 200; ++i) expected.push_back(betacdf(i / 201.0, 3.5, 0.8, 2, nullptr));
    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (int k = 0; k < 4; ++k) {
        threads.emplace_back([&, k] {
            for (int i = 1; i <= 200; ++i) {
                int status = -1;
                if (betacdf(i / 201.0, 3.5, 0.8, 2, &status) != expected[i - 1] || status != 0) {
                    ++mismatches[k];
                }
            }
        });
    }
    for (auto& t : threads) t.join();
    for (int m : mismatches) EXPECT_EQ(m, 0);
}

}  // namespace
