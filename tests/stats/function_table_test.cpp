// The script function table: its rows and order, lookup, the dispatcher's handling of
// integer and status parameters, listing by category, the context table and integralKS,
// and the special functions' refusals and conventions.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "zemath/function_table.h"
#include "zemath/distributions.h"
#include "zemath/special.h"
#include "zemath/string_array.hpp"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

int lookup(const char* name, unsigned long* row) {
    std::string copy(name);
    return zemath_KS_functions(1, copy.data(), row, nullptr, nullptr);
}

double call(const char* name, std::vector<double> args) {
    unsigned long row = 0;
    EXPECT_GE(lookup(name, &row), 0) << name;
    args.resize(10, 0.0);
    double result = -1.0;
    EXPECT_EQ(zemath_KS_functions(2, nullptr, &row, args.data(), &result), 0);
    return result;
}

std::vector<std::string> listed(int category, int* count, CStringArray* labels = nullptr) {
    CStringArray names, arguments;
    *count = zemath_KS_functions_get_list(&names, &arguments, category, labels);
    std::vector<std::string> out;
    for (std::size_t i = 0; i < names.GetSize(); ++i) out.push_back(names.GetAt(i));
    return out;
}

TEST(FunctionTable, LookupByExactNameInAlphabeticalOrder) {
    unsigned long row = 999;
    EXPECT_EQ(lookup("erf", &row), 1);
    EXPECT_EQ(row, 39u);
    const struct {
        const char* name;
        unsigned long row;
        int count;
    } rows[] = {{"airy_ai", 0, 1},     {"angleint2", 5, 10}, {"betacdf", 22, 5},
                {"finv", 47, 5},       {"gamma", 52, 1},     {"hygecdf", 54, 6},
                {"ks2density", 61, 6}, {"lambertW", 63, 4},  {"normcdf", 73, 3},
                {"norminv", 74, 2},    {"wblpdf", 87, 4}};
    for (const auto& r : rows) {
        EXPECT_EQ(lookup(r.name, &row), r.count) << r.name;
        EXPECT_EQ(row, r.row) << r.name;
    }
    for (const char* unknown : {"ERF", "erf ", "", "integral", "bessel_j2"})
        EXPECT_EQ(lookup(unknown, &row), -1) << unknown;
    EXPECT_EQ(zemath_KS_functions(1, nullptr, &row, nullptr, nullptr), -1);
    // Every name is found at its own row, and the names are strictly ascending.
    std::string previous;
    for (int category : {0, 1, 2, 3, 5}) {
        int count = 0;
        for (const std::string& name : listed(category, &count)) {
            EXPECT_EQ(lookup(name.c_str(), &row), lookup(name.c_str(), nullptr)) << name;
        }
    }
    int total = 0;
    for (int category : {0, 1, 2, 3, 5}) {
        int count = 0;
        listed(category, &count);
        total += count;
    }
    EXPECT_EQ(total, ZEMATH_KS_FUNCTION_COUNT);
}

TEST(FunctionTable, ListsByCategory) {
    int count = 0;
    const std::vector<std::string> inverses = {"betainv", "chi2inv",   "finv", "gaminv", "logninv",
                                               "norminv", "srangeinv", "tinv", "wblinv"};
    EXPECT_EQ(listed(3, &count), inverses);
    EXPECT_EQ(count, 9);
    EXPECT_TRUE(listed(4, &count).empty());
    EXPECT_EQ(count, -1);
    CStringArray labels;
    labels.Add("kept");  // labels are appended to, not emptied
    EXPECT_EQ(listed(5, &count, &labels),
              (std::vector<std::string>{"angleint1", "angleint2", "degrees", "radians"}));
    ASSERT_EQ(labels.GetSize(), 5u);
    EXPECT_STREQ(labels.GetAt(0), "kept");
    EXPECT_STREQ(labels.GetAt(4), "Trigonometric");
    CStringArray names, arguments;
    names.Add("old");
    EXPECT_EQ(zemath_KS_functions_get_list(&names, &arguments, 2, nullptr), 12);
    EXPECT_STREQ(names.GetAt(0), "betapdf");
    EXPECT_STREQ(arguments.GetAt(0), "x,a,b");
    EXPECT_EQ(zemath_KS_functions_get_list(nullptr, &arguments, 0, nullptr), -1);
    EXPECT_EQ(zemath_KS_functions_get_list(&names, nullptr, 0, nullptr), -1);
}

TEST(FunctionTable, ModesAndNullArguments) {
    unsigned long row = 39;
    double args[10] = {0.5};
    double result = 7.0;
    for (unsigned mode : {0u, 5u, 100u, UINT_MAX})
        EXPECT_EQ(zemath_KS_functions(mode, nullptr, &row, args, &result), -1) << mode;
    for (unsigned mode : {3u, 4u})
        EXPECT_EQ(zemath_KS_functions(mode, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(zemath_KS_functions(2, nullptr, nullptr, args, &result), -1);
    EXPECT_EQ(zemath_KS_functions(2, nullptr, &row, nullptr, &result), -1);
    EXPECT_EQ(zemath_KS_functions(2, nullptr, &row, args, nullptr), -1);
    unsigned long past = ZEMATH_KS_FUNCTION_COUNT;
    EXPECT_EQ(zemath_KS_functions(2, nullptr, &past, args, &result), -1);
    EXPECT_EQ(result, 7.0) << "a refused call writes nothing";
    EXPECT_EQ(zemath_KS_functions(2, nullptr, &row, args, &result), 0);
    EXPECT_EQ(result, erfz(0.5));
}

TEST(FunctionTable, DispatcherTruncatesIntegersAndDiscardsStatus) {
    // {name, args, expected}: integer parameters truncated toward zero.
    const struct {
        const char* name;
        std::vector<double> args;
        double expected;
    } cases[] = {
        {"bessel_i_nu", {1.4, -2.9}, bessel_i_nu(1.4, -2)},
        {"bessel_k_nu", {2.0, 1.99}, bessel_k_nu(2.0, 1)},
        {"real_polygamma", {2.5, 1.7}, real_polygamma(2.5, 1)},
        {"jacobian_theta", {3.999, 0.7, 0.4}, jacobian_theta(3, 0.7, 0.4)},
        {"normcdf", {1.0, 2.5}, normcdf(1.0, 2, nullptr)},
        {"binocdf", {3.9, 10.2, 0.3, 2.0}, binocdf(3, 10, 0.3, 2, nullptr)},
        {"hygecdf", {2.5, 10.9, 5.1, 6.0, 1.0}, hygecdf(2, 10, 5, 6, 1, nullptr)},
        {"lambertW", {-0.2, -1.5, 0.0}, lambertW(-0.2, -1, 0, nullptr)},
        {"angleint1", {0, 0, 0, -1, 1.9, 1.2}, 270.0},
        {"angleint2", {0, 0, 1, 0, 0, 0, 0, 1, 1, 1}, 90.0},
        {"ks2density", {1, 2, 3, 4, 5, 6}, NANUM},
        {"ksdensity", {1, 2, 3}, NANUM},
        {"tinv", {0.975, 10, 2e10}, tinv(0.975, 10, INT_MAX, nullptr)},  // clamped to int
        {"bessel_i_nu", {1.0, kNan}, NANUM},                             // no integer from NaN
        {"bessel_i_nu", {1.0, NANUM}, NANUM},
        {"normcdf", {1.0, 5.0}, NANUM},  // the refused tail's status is discarded
    };
    for (const auto& c : cases) EXPECT_EQ(call(c.name, c.args), c.expected) << c.name;
}

TEST(SpecialFunctions, BadInputGivesNanum) {
    const struct {
        const char* name;
        std::vector<double> args;
    } cases[] = {
        {"erf", {kNan}},
        {"erf", {kInf}},
        {"erfc", {NANUM}},
        {"gamma", {0.0}},
        {"gamma", {-3.0}},
        {"gamma", {172.0}},
        {"log_gamma", {0.0}},
        {"log_gamma", {-1.5}},
        {"bessel_y0", {0.0}},
        {"bessel_y1", {-1.0}},
        {"bessel_k0", {-0.0}},
        {"bessel_i0", {714.0}},
        {"bessel_j0", {1e17}},
        {"bessel_i_nu", {1.0, 0}},
        {"bessel_i_nu", {1.0, 4}},
        {"bessel_i_nu", {0.0, -1}},
        {"bessel_i_nu_scaled", {-1.0, 1}},
        {"bessel_i_nu", {701.0, 1}},
        {"bessel_k_nu", {0.0, 2}},
        {"bessel_k_nu_scaled", {-1.0, 3}},
        {"airy_bi", {105.0}},
        {"airy_ai", {-1e11}},
        {"kelvin_ber", {50.0}},
        {"kelvin_ker", {0.0}},
        {"kelvin_kei", {-1.0}},
        {"cos_integral", {0.0}},
        {"exp_integral", {0.0}},
        {"exp_integral", {-710.0}},
        {"real_polygamma", {-2.0, 0}},
        {"real_polygamma", {1.0, 7}},
        {"real_polygamma", {1.0, -1}},
        {"incomplete_gamma", {0.0, 1.0}},
        {"incomplete_gamma", {1.0, -1.0}},
        {"elliptic_integral_rc", {-1.0, 1.0}},
        {"elliptic_integral_rc", {1.0, 0.0}},
        {"elliptic_integral_rf", {0.0, 0.0, 1.0}},
        {"elliptic_integral_rd", {1.0, 1.0, 0.0}},
        {"elliptic_integral_rj", {1.0, 1.0, 1.0, 0.0}},
        {"jacobian_theta", {5, 0.5, 0.5}},
        {"jacobian_theta", {1, 0.5, 1.0}},
        {"jacobian_theta", {1, 0.5, -0.1}},
        {"erfcinv", {2.5}},
        {"erfcinv", {-0.1}},
        {"erfinv", {1.5}},
        {"erfcx", {-27.0}},
        {"degrees", {kInf}},
        {"angleint1", {0, 0, 0, 0, 0, 0}},
        {"angleint1", {1, 1, 1 + 1e-13, 1, 0, 1}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(call(c.name, c.args), NANUM) << c.name << " " << c.args[0];
}

TEST(SpecialFunctions, ConventionsAndPublishedValues) {
    // {value, expected, tolerance}: the traps of each family's convention.
    const struct {
        const char* what;
        double got, expected, tol;
    } cases[] = {
        {"erfinv(0)", erfinv(0.0), 0.0, 0.0},
        {"erfcinv(1)", erfcinv(1.0), 0.0, 0.0},
        {"angleint1 mode 0 vertical", angleint1(0, 0, 0, -1, 1, 0), 90.0, 0.0},
        {"angleint1 mode 0 falling", angleint1(0, 0, 1, -1, 1, 0), -45.0, 1e-13},
        {"angleint1 radians", angleint1(0, 0, -1, 0, 0, 1), std::acos(-1.0), 0.0},
        {"angleint2 mode 0 wraps", angleint2(0, 0, 1, 1, 0, 0, 1, -1, 1, 0), 90.0, 1e-12},
        {"angleint2 mode 1 turn", angleint2(0, 0, 0, 1, 0, 0, 1, 0, 1, 1), 270.0, 1e-12},
        {"degrees(pi)", degrees(std::acos(-1.0)), 180.0, 0.0},
        {"radians(90)", radians(90.0), std::acos(-1.0) / 2, 0.0},
        {"theta_4 = theta_0", jacobian_theta(4, 0.7, 0.4), jacobian_theta(0, 0.7, 0.4), 0.0},
        {"theta_0(0.7, 0.4)", jacobian_theta(0, 0.7, 0.4), 1.2053680331548, 1e-13},
        {"theta_2(0.7, 0.4)", jacobian_theta(2, 0.7, 0.4), -0.69289100960558, 1e-13},
        {"I_{-3/4}(3.9)", bessel_i_nu(3.9, -3), 9.5207166631781, 1e-13},
        {"e^-x I_{1/4}(6.7)", bessel_i_nu_scaled(6.7, 1), 0.15649389053522, 1e-13},
        {"e^-|x| I0(-3)", bessel_i0_scaled(-3.0), 0.24300035416183, 1e-13},
        {"K_{1/2}(5)", bessel_k_nu(5.0, 2), std::sqrt(std::acos(-1.0) / 10) * std::exp(-5.0),
         1e-15},
        {"S(1)", fresnel_s(1.0), 0.43825914739035, 1e-13},
        {"kei(0)", kelvin_kei(0.0), -std::acos(-1.0) / 4, 0.0},
        {"P(2, 3)", incomplete_gamma(2.0, 3.0), 0.80085172652854, 1e-13},
        {"RC(1, -2)", elliptic_integral_rc(1.0, -2.0), 0.38017299815047, 1e-13},
        {"I_{1/4} scaled where I overflows",
         bessel_i_nu_scaled(800.0, 1) * std::sqrt(2 * std::acos(-1.0) * 800.0), 1.0, 1e-3},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(c.got, c.expected, c.tol * std::fmax(1.0, std::fabs(c.expected))) << c.what;
}

TEST(SpecialFunctions, BesselJ0NeverAboveOneNearZero) {
    // J0(x) = 1 - x^2/4 + x^4/64 - ...: 1 exactly (rounded) for |x| < 2^-27, and just below
    // 1 beyond; a rational approximation alone rounds to 1 + 2^-52 for every |x| < 1.6e-8.
    for (double x : {0.0, -0.0, 4.9e-324, 1e-300, 1.5426549549857303e-178, 1e-20, -3e-9, 1.5e-8,
                     7.4e-9, 1e-5, -1e-4, 1.2e-4, 5e-4}) {
        const double j = bessel_j0(x);
        EXPECT_LE(j, 1.0) << x;
        const double series = 1.0 - x * x / 4 + x * x * x * x / 64;
        EXPECT_NEAR(j, series, 1.2e-16) << x;
    }
    EXPECT_EQ(bessel_j0(1e-9), 1.0);
}

TEST(SpecialFunctions, AnglesBetweenPointsNearTheOverflowLimit) {
    // Differences of coordinates near DBL_MAX overflow; the angle must not (it was NaN).
    const double m = std::numeric_limits<double>::max();
    const struct {
        double x1, y1, x2, y2;
        int mode;
        double degrees;
    } cases[] = {
        {m, 0, -m, 0, 1, 180},
        {m, 0, -m, 0, 0, 0},
        {-m, -m, m, m, 1, 45},
        {-m, -m, m, m, 0, 45},
        {m, -m, -m, m, 1, 135},
        {m, -m, -m, m, 0, -45},
        {-m, m, m / 2, -m / 2, 1, 315},
        {m, 4.9e-324, -9e298, -1, 1, 180},
        {0.75 * m, m, -m, -m, 1, 180 + 180 / std::acos(-1.0) * std::atan(2 / 1.75)},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(angleint1(c.x1, c.y1, c.x2, c.y2, 1, c.mode), c.degrees, 1e-12 * 360)
            << c.x1 << " " << c.y1 << " " << c.x2 << " " << c.y2 << " mode " << c.mode;
    EXPECT_NEAR(angleint2(-m, -m, m, m, m, -m, -m, m, 1, 1), 90.0, 1e-10);
}

TEST(SpecialFunctions, PrefixedFamilyRules) {
    const double pi = std::acos(-1.0);
    const double quarter = std::sqrt(0.5);  // sin(pi/4) = sin(3 pi/4)
    // {what, got, expected}: NANUM rules and the negative-order formula.
    const struct {
        const char* what;
        double got, expected;
    } cases[] = {
        {"j0 beyond 1e16", zemath_bessel_j0(2e16), NANUM},
        {"y1 at 0", zemath_bessel_y1(0.0), NANUM},
        {"i_nu nu 0", zemath_bessel_i_nu(1.0, 0), NANUM},
        {"i_nu nu 4", zemath_bessel_i_nu(1.0, 4), NANUM},
        {"i_nu x < 0", zemath_bessel_i_nu(-1.0, 1), NANUM},
        {"i_nu overflow", zemath_bessel_i_nu(700.9217937, 2), NANUM},
        {"i_nu(0) nu > 0", zemath_bessel_i_nu(0.0, 3), 0.0},
        {"i_nu(0) nu < 0", zemath_bessel_i_nu(0.0, -3), NANUM},
        {"erf at +inf", zemath_erf(kInf), NANUM},
        {"erfc at -inf", zemath_erfc(-kInf), NANUM},
        {"erf NANUM", zemath_erf(NANUM), NANUM},
    };
    for (const auto& c : cases) EXPECT_EQ(c.got, c.expected) << c.what;
    // I_{-3/4} = I_{3/4} + (2/pi) sin(3 pi/4) K_{3/4}; the runtime J0 agrees with the table's.
    EXPECT_NEAR(zemath_bessel_i_nu(2.0, -3),
                bessel_i_nu(2.0, 3) + 2 / pi * quarter * bessel_k_nu(2.0, 3), 1e-14);
    EXPECT_NEAR(zemath_bessel_j0(2.5), bessel_j0(2.5), 1e-15);
    EXPECT_NEAR(zemath_bessel_y0(2.5), 0.49807035961523, 1e-13);
}

// ---- the context table and integralKS ---------------------------------------------

struct Counted {
    double (*f)(double);
    int calls = 0;
};

double eval_counted(void* context, double x) {
    auto* c = static_cast<Counted*>(context);
    ++c->calls;
    return c->f(x);
}

TEST(IntegralKS, ClassicIntegrandsAndDivergentOnes) {
    const double pi = std::acos(-1.0);
    // {integrand, x1, x2, exact}; NANUM bounds are infinite.
    const struct {
        const char* what;
        double (*f)(double);
        double x1, x2, exact;
    } cases[] = {
        {"polynomial", [](double x) { return x * x * x - 2 * x; }, -1.0, 2.0, 0.75},
        {"exp", [](double x) { return std::exp(x); }, 0.0, 1.0, std::exp(1.0) - 1},
        {"reversed bounds", [](double x) { return std::exp(x); }, 1.0, 0.0, 1 - std::exp(1.0)},
        {"1/sqrt(x)", [](double x) { return 1 / std::sqrt(x); }, 0.0, 1.0, 2.0},
        {"log(x)", [](double x) { return std::log(x); }, 0.0, 1.0, -1.0},
        {"x^-0.9", [](double x) { return std::pow(x, -0.9); }, 0.0, 1.0, 10.0},
        {"oscillatory cos(100x)", [](double x) { return std::cos(100 * x); }, 0.0, pi / 2, 0.0},
        {"gaussian, both infinite", [](double x) { return std::exp(-x * x); }, NANUM, NANUM,
         std::sqrt(std::acos(-1.0))},
        {"exp(-x) from 0", [](double x) { return std::exp(-x); }, 0.0, NANUM, 1.0},
        {"1/(1+x^2) up to 0", [](double x) { return 1 / (1 + x * x); }, NANUM, 0.0,
         std::acos(-1.0) / 2},
        {"1/x^2 from 1, -inf bound as +-inf", [](double x) { return 1 / (x * x); }, 1.0, kInf, 1.0},
        {"log(x)/(1+x^2) (0, inf)", [](double x) { return std::log(x) / (1 + x * x); }, 0.0, NANUM,
         0.0},
    };
    for (const auto& c : cases) {
        Counted counted{c.f};
        KSFInfo info{eval_counted, &counted};
        const double got = integralKS(&info, c.x1, c.x2);
        EXPECT_NEAR(got, c.exact, 1e-9 * std::fmax(1.0, std::fabs(c.exact))) << c.what;
        EXPECT_GT(counted.calls, 0) << c.what;
    }
    const struct {
        const char* what;
        double (*f)(double);
        double x1, x2;
    } divergent[] = {
        {"1/x", [](double x) { return 1 / x; }, 0.0, 1.0},
        {"1/x from 1 to inf", [](double x) { return 1 / x; }, 1.0, NANUM},
        {"constant on the line", [](double) { return 1.0; }, NANUM, NANUM},
        {"non-finite value", [](double) { return kNan; }, 0.0, 1.0},
    };
    for (const auto& c : divergent) {
        Counted counted{c.f};
        KSFInfo info{eval_counted, &counted};
        EXPECT_EQ(integralKS(&info, c.x1, c.x2), NANUM) << c.what;
    }
    Counted counted{[](double x) { return x; }};
    KSFInfo info{eval_counted, &counted};
    EXPECT_EQ(integralKS(nullptr, 0, 1), NANUM);
    EXPECT_EQ(integralKS(&info, kNan, 1), NANUM);
    EXPECT_EQ(integralKS(&info, kInf, 1), NANUM);
    EXPECT_EQ(integralKS(&info, 2.0, 2.0), 0.0);
}

TEST(IntegralKS, ThroughTheContextTable) {
    unsigned long row = 9;
    char name[] = "integral";
    EXPECT_EQ(zemath_KS_base_functions(1, name, &row, nullptr, nullptr, nullptr), 2);
    EXPECT_EQ(row, 0u);
    char other[] = "erf";
    EXPECT_EQ(zemath_KS_base_functions(1, other, &row, nullptr, nullptr, nullptr), -1);
    Counted counted{[](double x) { return 3 * x * x; }};
    KSFInfo info{eval_counted, &counted};
    row = 0;
    double args[2] = {0.0, 2.0};
    double result = 0.0;
    EXPECT_EQ(zemath_KS_base_functions(2, nullptr, &row, &info, args, &result), 0);
    EXPECT_NEAR(result, 8.0, 1e-12);
    EXPECT_EQ(zemath_KS_base_functions(2, nullptr, nullptr, &info, args, &result), -1);
    EXPECT_EQ(zemath_KS_base_functions(2, nullptr, &row, &info, nullptr, &result), -1);
    unsigned long past = 1;
    EXPECT_EQ(zemath_KS_base_functions(2, nullptr, &past, &info, args, &result), -1);
    EXPECT_EQ(zemath_KS_base_functions(7, nullptr, &row, &info, args, &result), -1);
}

}  // namespace
