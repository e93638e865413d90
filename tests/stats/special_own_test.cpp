// The library's own special functions, the zemath_-prefixed family: accuracy against the
// 50-digit mpmath references of tests/reference/gen_special.py (the grids shared with the
// table functions) and gen_special_own.py (the switch points of the own algorithms and
// the regions the shared grids leave out); agreement with the table namesakes on the
// shared grids, so that each family checks the other; and the NANUM rules. The worst
// errors are printed; the committed table is tests/reference/special_own_worst_errors.txt.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <string>

#include "zemath/special.h"

namespace {

struct RefCase {
    const char* name;
    double args[4];
    double expected;
    double scale;
};

#define REF(name, a0, a1, a2, a3, expected, scale) {name, {a0, a1, a2, a3}, expected, scale},
const RefCase kShared[] = {
#include "reference/special_ref.inc"
};
const RefCase kOwnGrid[] = {
#include "reference/special_own_ref.inc"
};
#undef REF

constexpr double kTolerance = 1e-13;
constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

using Call = double (*)(const double*);

struct Pair {
    const char* name;  // the table name
    Call own;          // zemath_<name>
    Call table;        // the unprefixed namesake
};

int order(double v) {
    return static_cast<int>(v);
}

#define ONE(name, table_fn)                                                                        \
    {                                                                                              \
#name,                                                                                     \
            [](const double* a) { return zemath_##name(a[0]); },                                   \
                                                              [](const double*                     \
                                                                     a) { return table_fn(a[0]); } \
    }
#define WITH_ORDER(name)                                                       \
    {                                                                          \
#name, [](const double* a) { return zemath_##name(a[0], order(a[1])); },     \
     [](const double* a) { return name(a[0], order(a[1])); } \
    }

const Pair kPairs[] = {
    ONE(bessel_i0_scaled, bessel_i0_scaled),
    ONE(bessel_i1, bessel_i1),
    ONE(bessel_i1_scaled, bessel_i1_scaled),
    WITH_ORDER(bessel_i_nu),
    WITH_ORDER(bessel_i_nu_scaled),
    ONE(bessel_j0, bessel_j0),
    ONE(bessel_j1, bessel_j1),
    ONE(bessel_k0, bessel_k0),
    ONE(bessel_k0_scaled, bessel_k0_scaled),
    ONE(bessel_k1, bessel_k1),
    ONE(bessel_k1_scaled, bessel_k1_scaled),
    WITH_ORDER(bessel_k_nu),
    WITH_ORDER(bessel_k_nu_scaled),
    ONE(bessel_y0, bessel_y0),
    ONE(bessel_y1, bessel_y1),
    ONE(cos_integral, cos_integral),
    ONE(cumul_normal, cumul_normal),
    ONE(cumul_normal_complem, cumul_normal_complem),
    {"elliptic_integral_rc",
     [](const double* a) { return zemath_elliptic_integral_rc(a[0], a[1]); },
     [](const double* a) { return elliptic_integral_rc(a[0], a[1]); }},
    {"elliptic_integral_rd",
     [](const double* a) { return zemath_elliptic_integral_rd(a[0], a[1], a[2]); },
     [](const double* a) { return elliptic_integral_rd(a[0], a[1], a[2]); }},
    {"elliptic_integral_rf",
     [](const double* a) { return zemath_elliptic_integral_rf(a[0], a[1], a[2]); },
     [](const double* a) { return elliptic_integral_rf(a[0], a[1], a[2]); }},
    {"elliptic_integral_rj",
     [](const double* a) { return zemath_elliptic_integral_rj(a[0], a[1], a[2], a[3]); },
     [](const double* a) { return elliptic_integral_rj(a[0], a[1], a[2], a[3]); }},
    ONE(erf, erfz),
    ONE(erfc, erfcz),
    ONE(exp_integral, exp_integral),
    ONE(fresnel_c, fresnel_c),
    ONE(fresnel_s, fresnel_s),
    ONE(gamma, gammaz),
    {"incomplete_gamma", [](const double* a) { return zemath_incomplete_gamma(a[0], a[1]); },
     [](const double* a) { return incomplete_gamma(a[0], a[1]); }},
    {"jacobian_theta",
     [](const double* a) { return zemath_jacobian_theta(order(a[0]), a[1], a[2]); },
     [](const double* a) { return jacobian_theta(order(a[0]), a[1], a[2]); }},
    ONE(kelvin_bei, kelvin_bei),
    ONE(kelvin_ber, kelvin_ber),
    ONE(kelvin_kei, kelvin_kei),
    ONE(kelvin_ker, kelvin_ker),
    ONE(log_gamma, log_gamma),
    WITH_ORDER(real_polygamma),
    ONE(sin_integral, sin_integral),
};
#undef ONE
#undef WITH_ORDER

const Pair* find_pair(const char* name) {
    for (const Pair& p : kPairs)
        if (std::string(p.name) == name) return &p;
    return nullptr;
}

// |got - expected| relative to max(|expected|, scale); NANUM or NaN count as a miss.
double error_of(double got, double expected, double scale) {
    if (got == NANUM || std::isnan(got)) return kInf;
    const double denom = std::fmax(std::fabs(expected), scale);
    return denom == 0.0 ? std::fabs(got) : std::fabs(got - expected) / denom;
}

struct Worst {
    double error = 0.0;
    int cases = 0;
    const RefCase* at = nullptr;
};

void record(std::map<std::string, Worst>& worst, const RefCase& c, double error) {
    Worst& w = worst[c.name];
    ++w.cases;
    if (w.at == nullptr || !(error <= w.error)) {
        w.error = error;
        w.at = &c;
    }
}

void print_table(const std::map<std::string, Worst>& worst) {
    std::printf("%-22s %6s %10s  %s\n", "function", "cases", "worst", "at (args)");
    for (const auto& [fn, w] : worst)
        std::printf("%-22s %6d %10.3e  (%.17g, %.17g, %.17g, %.17g)%s\n", fn.c_str(), w.cases,
                    w.error, w.at->args[0], w.at->args[1], w.at->args[2], w.at->args[3],
                    w.at->scale > std::fabs(w.at->expected) ? " envelope" : "");
}

TEST(SpecialOwn, EveryPrefixedFunctionWithin1e13OfMpmath) {
    std::map<std::string, Worst> worst;
    const auto walk = [&](const RefCase* begin, const RefCase* end) {
        for (const RefCase* c = begin; c != end; ++c) {
            const Pair* p = find_pair(c->name);
            if (p == nullptr) continue;  // a table-only row (Airy, erfcx, ...)
            const double error = error_of(p->own(c->args), c->expected, c->scale);
            record(worst, *c, error);
            EXPECT_LE(error, kTolerance)
                << "zemath_" << c->name << "(" << c->args[0] << ", " << c->args[1] << ", "
                << c->args[2] << ", " << c->args[3] << "), expected " << c->expected;
        }
    };
    walk(std::begin(kShared), std::end(kShared));
    walk(std::begin(kOwnGrid), std::end(kOwnGrid));
    print_table(worst);
    EXPECT_EQ(worst.size(), std::size(kPairs)) << "every prefixed function has references";
}

// Both families on the shared grids, each value against the other: the same value to the
// same bar, and the same NANUM decisions.
TEST(SpecialOwn, PrefixedFamilyAgreesWithTableNamesakes) {
    std::map<std::string, Worst> worst;
    for (const RefCase& c : kShared) {
        const Pair* p = find_pair(c.name);
        if (p == nullptr) continue;
        const double own = p->own(c.args), table = p->table(c.args);
        double error = 0.0;
        if ((own == NANUM) != (table == NANUM)) {
            error = kInf;
        } else if (own != NANUM) {
            error = error_of(own, table, c.scale);
        }
        record(worst, c, error);
        EXPECT_LE(error, kTolerance)
            << c.name << "(" << c.args[0] << ", " << c.args[1] << ", " << c.args[2] << ", "
            << c.args[3] << "): own " << own << ", table " << table;
    }
    print_table(worst);
}

TEST(SpecialOwn, BadArgumentsPolesAndDomainGiveNanum) {
    const struct {
        const char* what;
        double got;
    } cases[] = {
        {"erf NaN", zemath_erf(kNaN)},
        {"erf +inf", zemath_erf(kInf)},
        {"erfc NANUM", zemath_erfc(NANUM)},
        {"Phi -inf", zemath_cumul_normal(-kInf)},
        {"1 - Phi NaN", zemath_cumul_normal_complem(kNaN)},
        {"Gamma pole 0", zemath_gamma(0.0)},
        {"Gamma pole -3", zemath_gamma(-3.0)},
        {"Gamma overflow", zemath_gamma(172.0)},
        {"Gamma underflow", zemath_gamma(-171.5)},
        {"Gamma 1/x overflows", zemath_gamma(1e-310)},
        {"ln Gamma at 0", zemath_log_gamma(0.0)},
        {"ln Gamma negative", zemath_log_gamma(-2.5)},
        {"ln Gamma overflow", zemath_log_gamma(1e306)},
        {"psi order 7", zemath_real_polygamma(1.0, 7)},
        {"psi order -1", zemath_real_polygamma(1.0, -1)},
        {"psi pole", zemath_real_polygamma(-2.0, 0)},
        {"psi below -1e6", zemath_real_polygamma(-2e6 - 0.5, 1)},
        {"P a = 0", zemath_incomplete_gamma(0.0, 1.0)},
        {"P x < 0", zemath_incomplete_gamma(1.0, -1.0)},
        {"P NANUM", zemath_incomplete_gamma(NANUM, 1.0)},
        {"P x inf", zemath_incomplete_gamma(1.0, kInf)},
        {"RC x < 0", zemath_elliptic_integral_rc(-1.0, 1.0)},
        {"RC y = 0", zemath_elliptic_integral_rc(1.0, 0.0)},
        {"RF two zeros", zemath_elliptic_integral_rf(0.0, 0.0, 1.0)},
        {"RF negative", zemath_elliptic_integral_rf(-1.0, 1.0, 1.0)},
        {"RF beyond DBL_MAX/5", zemath_elliptic_integral_rf(1.0, 1.0, 1e308)},
        {"RD z = 0", zemath_elliptic_integral_rd(1.0, 1.0, 0.0)},
        {"RD x = y = 0", zemath_elliptic_integral_rd(0.0, 0.0, 1.0)},
        {"RJ r = 0", zemath_elliptic_integral_rj(1.0, 1.0, 1.0, 0.0)},
        {"RJ two zeros", zemath_elliptic_integral_rj(0.0, 0.0, 1.0, 1.0)},
        // Rescaled, the principal value's 1e-300 becomes 0: refused at once, where the
        // duplication would run its whole cap (a tenth of a second) before refusing.
        {"RJ principal value, span beyond range",
         zemath_elliptic_integral_rj(0.0, 1e-300, 1e-300, -1e300)},
        {"E1 at 0", zemath_exp_integral(0.0)},
        {"E1 overflow", zemath_exp_integral(-710.0)},
        {"Ci at 0", zemath_cos_integral(0.0)},
        {"Ci negative", zemath_cos_integral(-1.0)},
        {"Si inf", zemath_sin_integral(kInf)},
        {"S NaN", zemath_fresnel_s(kNaN)},
        {"C -inf", zemath_fresnel_c(-kInf)},
        {"theta k = 5", zemath_jacobian_theta(5, 0.5, 0.5)},
        {"theta k = -1", zemath_jacobian_theta(-1, 0.5, 0.5)},
        {"theta q = 1", zemath_jacobian_theta(0, 0.5, 1.0)},
        {"theta q < 0", zemath_jacobian_theta(3, 0.5, -0.1)},
        {"theta x inf", zemath_jacobian_theta(3, kInf, 0.5)},
    };
    for (const auto& c : cases) EXPECT_EQ(c.got, NANUM) << c.what;
}

// Limits that are values, not refusals: underflow to 0, the saturated tails, the exact
// special points.
TEST(SpecialOwn, TailsAndExactPoints) {
    const double pi = std::acos(-1.0);
    const struct {
        const char* what;
        double got, expected;
    } cases[] = {
        {"erfc far out underflows", zemath_erfc(30.0), 0.0},
        {"erfc far left", zemath_erfc(-30.0), 2.0},
        {"erf far out", zemath_erf(-8.0), -1.0},
        {"1 - Phi underflows", zemath_cumul_normal_complem(40.0), 0.0},
        {"Phi saturates", zemath_cumul_normal(40.0), 1.0},
        {"E1 underflows", zemath_exp_integral(800.0), 0.0},
        {"S at 1e18", zemath_fresnel_s(1e18), 0.5},
        {"C at -1e18", zemath_fresnel_c(-1e18), -0.5},
        {"P(a, 0)", zemath_incomplete_gamma(2.5, 0.0), 0.0},
        // 1 - 1.4e-286 exactly rounds to 1 (the series gave 1 + 2^-52).
        {"P at a tiny a", zemath_incomplete_gamma(1.0255004989698012e-286, 0.17254901960784313),
         1.0},
        {"theta_3 at q = 0", zemath_jacobian_theta(3, 0.3, 0.0), 1.0},
        {"theta_1 at q = 0", zemath_jacobian_theta(1, 0.3, 0.0), 0.0},
        {"Gamma(1)", zemath_gamma(1.0), 1.0},
        {"Gamma(5)", zemath_gamma(5.0), 24.0},
        {"ln Gamma(1)", zemath_log_gamma(1.0), 0.0},
        {"ln Gamma(2)", zemath_log_gamma(2.0), 0.0},
        {"Si(0)", zemath_sin_integral(0.0), 0.0},
        {"RC(1, 1)", zemath_elliptic_integral_rc(1.0, 1.0), 1.0},
        {"RF(1, 1, 1)", zemath_elliptic_integral_rf(1.0, 1.0, 1.0), 1.0},
        {"RD(1, 1, 1)", zemath_elliptic_integral_rd(1.0, 1.0, 1.0), 1.0},
        {"RJ(1, 1, 1, 1)", zemath_elliptic_integral_rj(1.0, 1.0, 1.0, 1.0), 1.0},
        {"RC(0, 1) = pi/2", zemath_elliptic_integral_rc(0.0, 1.0), pi / 2},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(c.got, c.expected, 4e-16 * std::fabs(c.expected)) << c.what;
    // theta_4 is theta_0, and the odd functions are odd.
    EXPECT_EQ(zemath_jacobian_theta(4, 0.37, 0.6), zemath_jacobian_theta(0, 0.37, 0.6));
    EXPECT_EQ(zemath_fresnel_s(-2.7), -zemath_fresnel_s(2.7));
    EXPECT_EQ(zemath_sin_integral(-7.1), -zemath_sin_integral(7.1));
    EXPECT_EQ(zemath_erf(-0.3), -zemath_erf(0.3));
}

}  // namespace
