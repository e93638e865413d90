// The distribution exports as a caller sees them: the optional status pointer, bad input
// (NANUM, NaN, infinities) for every export, the tail codes, every status code, the
// published check values, limits and poles, and the exceptions kept deliberately
// (Weibull's quiet refusals, poisspdf's 0.0, exppdf's rate, hygecdf's argument order,
// lambertW's screening, finv's table fallback). Accuracy lives in
// distributions_accuracy_test; the back-end routines' own behaviour in tests/platform.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "platform/util/probability.hpp"
#include "reference/distributions_limits_ref.inc"
#include "reference/distributions_tiny_x_ref.inc"
#include "stats/distribution_calls.hpp"
#include "zemath/status.h"

namespace {

using dist_test::call;
using dist_test::Fn;
using dist_test::name;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kNA = NANUM;
constexpr int kUntouched = 12345;
constexpr int kIn = ZEMATH_ERR_STATS_INPUT;

// One export: a valid argument set and the kind of each argument: 'v' the variable,
// 'p' a parameter, 'P' a parameter for which +infinity is a limit law, 'w' a Weibull
// parameter (at or below 0 quietly NANUM), 'i' an integer. in_house: NaN is refused by
// this library's own check (-110) instead of the back end's (15).
// clang-format off
struct Export { Fn fn; const char* kinds; bool in_house; double valid[4]; };

const Export kExports[] = {
    {Fn::normcdf, "v", false, {0.3}}, {Fn::norminv, "v", false, {0.3}},
    {Fn::normpdf, "vpp", true, {0.3, 1, 2}}, {Fn::tcdf, "vP", false, {0.3, 4}},
    {Fn::tinv, "vP", false, {0.3, 4}}, {Fn::chi2cdf, "vp", false, {2, 3}},
    {Fn::chi2inv, "vp", false, {0.3, 3}}, {Fn::fcdf, "vpp", false, {2, 3, 7}},
    {Fn::finv, "vpp", false, {0.3, 3, 7}}, {Fn::betacdf, "vpp", false, {0.3, 2, 3}},
    {Fn::betainv, "vpp", false, {0.3, 2, 3}}, {Fn::betapdf, "vpp", false, {0.3, 2, 3}},
    {Fn::gamcdf, "vpp", false, {2, 3, 0.5}}, {Fn::gaminv, "vpp", false, {0.3, 3, 0.5}},
    {Fn::gampdf, "vpp", false, {2, 3, 0.5}}, {Fn::exppdf, "vp", true, {2, 0.5}},
    {Fn::cauchypdf, "vpp", true, {2, 1, 3}}, {Fn::lappdf, "vpp", true, {2, 1, 3}},
    {Fn::lognpdf, "vpp", true, {2, 1, 3}}, {Fn::logncdf, "vpp", true, {2, 1, 3}},
    {Fn::logninv, "vpp", true, {0.3, 1, 3}}, {Fn::wblpdf, "vww", true, {2, 1, 3}},
    {Fn::wblcdf, "vww", true, {2, 1, 3}}, {Fn::wblinv, "vww", true, {0.3, 1, 3}},
    {Fn::binocdf, "iip", false, {3, 10, 0.4}}, {Fn::binopdf, "iip", true, {3, 10, 0.4}},
    {Fn::poisscdf, "ip", false, {3, 2.5}}, {Fn::poisspdf, "ip", true, {3, 2.5}},
    {Fn::hygecdf, "iiii", false, {1, 5, 10, 2}}, {Fn::nctcdf, "vppi", false, {1, 5, 1, 50}},
    {Fn::ncchi2cdf, "vpp", false, {1, 2, 1}}, {Fn::ncfcdf, "vppp", false, {1, 2, 3, 1}},
    {Fn::ncbetacdf, "vppp", false, {0.5, 2, 3, 1}},
    {Fn::bivarnormcdf, "vvp", false, {0.3, -0.2, 0.5}}, {Fn::srangecdf, "vPi", false, {2, 10, 3}},
    {Fn::srangeinv, "vPi", false, {0.5, 10, 3}}, {Fn::lambertW, "vii", false, {1, 0, 0}},
};
// clang-format on

// A valid call writes status 0 and gives the same value without a status pointer. Then
// each double argument in turn is set to NANUM (-110), NaN (15, or -110 in-house) and, for
// the parameters, +-infinity (refused, with the codes of each family's range checks).
TEST(DistributionExports, ValidAndBadInput) {
    EXPECT_EQ(std::size(kExports), 37u);
    for (const Export& e : kExports) {
        int valid_status = kUntouched;
        const double v = call(e.fn, e.valid, 2, &valid_status);
        EXPECT_EQ(valid_status, 0) << name(e.fn);
        EXPECT_TRUE(std::isfinite(v) && v != kNA && call(e.fn, e.valid, 2, nullptr) == v)
            << name(e.fn);
        for (int i = 0; e.kinds[i] != '\0'; ++i) {
            const char kind = e.kinds[i];
            for (double bad : {kNA, kNaN, kInf, -kInf}) {
                if (kind == 'i' || (std::isinf(bad) && (kind == 'v' || (kind == 'P' && bad > 0)))) {
                    continue;
                }
                double a[4] = {e.valid[0], e.valid[1], e.valid[2], e.valid[3]};
                a[i] = bad;
                int status = kUntouched;
                const std::string what = std::string(name(e.fn)) + " arg " + std::to_string(i) +
                                         " = " + std::to_string(bad);
                EXPECT_EQ(call(e.fn, a, 2, &status), kNA) << what;
                EXPECT_EQ(call(e.fn, a, 2, nullptr), kNA) << what;
                if (bad == kNA || (std::isnan(bad) && e.in_house)) {
                    EXPECT_EQ(status, kIn) << what;
                } else if (std::isnan(bad)) {
                    EXPECT_EQ(status, ZEMATH_NAG_REAL) << what;
                } else if (kind == 'w' && bad < 0) {
                    EXPECT_EQ(status, 0) << what << ": a <= 0 or b <= 0 is NANUM with status 0";
                } else {
                    EXPECT_NE(status, 0) << what;
                }
            }
        }
    }
}

// ---- tail codes ------------------------------------------------------------------------

// Tail 0 reads as 3 in the two-sided family; other unknown codes read as 2 except where
// only 1 and 2 are taken; 5 is always refused.
TEST(DistributionTails, ZeroFiveAndUnknownCodes) {
    enum Mode { kTwoSided, kOneSided, kStrict };
    const std::pair<Fn, Mode> exports[] = {
        {Fn::normcdf, kTwoSided}, {Fn::tcdf, kTwoSided},    {Fn::tinv, kTwoSided},
        {Fn::logncdf, kTwoSided}, {Fn::chi2cdf, kOneSided}, {Fn::fcdf, kOneSided},
        {Fn::gamcdf, kOneSided},  {Fn::betacdf, kStrict},   {Fn::binocdf, kStrict},
        {Fn::poisscdf, kStrict},  {Fn::hygecdf, kStrict},
    };
    for (const auto& entry : exports) {
        const Fn fn = entry.first;  // named copies: Clang 14 cannot capture a binding
        const Mode mode = entry.second;
        const double* a = nullptr;
        for (const Export& e : kExports) a = e.fn == fn ? e.valid : a;
        const auto at_tail = [&](int tail, int* s) { return call(fn, a, tail, s); };
        const double lower = at_tail(2, nullptr);
        for (int tail : {0, 3, 4, 5, -1, 6, 42}) {
            const bool refused = tail == 5 ||
                                 (mode != kTwoSided && (tail == 0 || tail == 3 || tail == 4)) ||
                                 mode == kStrict;  // none of 1 and 2 is in the list
            int status = kUntouched;
            const double v = at_tail(tail, &status);
            EXPECT_EQ(status, refused ? ZEMATH_NAG_BAD_PARAM : 0) << name(fn) << " tail " << tail;
            const double want = refused                ? kNA
                                : tail == 0            ? at_tail(3, nullptr)
                                : tail < 3 || tail > 5 ? lower
                                                       : v;
            EXPECT_EQ(v, want) << name(fn) << " tail " << tail;
        }
    }
}

// ---- values and status codes -------------------------------------------------------------

// One call: tol 0 asks for the exact value (NANUM for a refusal); the same value comes back
// without a status pointer.
// clang-format off
struct Row { Fn fn; double a[4]; int tail; double want; double tol; int status = 0; };
// clang-format on

void check(const Row& r) {
    const std::string what = std::string(name(r.fn)) +
                             dist_test::at({r.a[0], r.a[1], r.a[2], r.a[3]}) + " tail " +
                             std::to_string(r.tail);
    int status = kUntouched;
    const double v = call(r.fn, r.a, r.tail, &status);
    EXPECT_EQ(status, r.status) << what;
    if (r.tol == 0) {
        EXPECT_EQ(v, r.want) << what;
    } else {
        EXPECT_NEAR(v, r.want, r.tol) << what;
    }
    EXPECT_EQ(call(r.fn, r.a, r.tail, nullptr), v) << what << " without status";
}

// Published check values at the precision they are quoted, limits of the laws
// at infinite or boundary arguments, and the densities at their poles.
TEST(DistributionValues, CheckValuesLimitsAndPoles) {
    const double phi1 = 0.84134474606854294859, e1 = std::exp(-1.0);
    // clang-format off
    const Row rows[] = {
        {Fn::normcdf, {0}, 2, 0.5, 0}, {Fn::normcdf, {1.96}, 1, 0.024997895148220, 1e-14},
        {Fn::norminv, {0.975}, 0, 1.9599639845401, 1e-12}, {Fn::tcdf, {0.85, 20}, 2, 0.7973, 5e-5},
        {Fn::tcdf, {0.85, 20}, 1, 0.2027, 5e-5}, {Fn::tcdf, {0.85, 20}, 3, 0.4054, 5e-5},
        {Fn::tcdf, {0.85, 20}, 4, 0.5946, 5e-5}, {Fn::tcdf, {-2, 5}, 2, 0.050969739414929, 1e-14},
        {Fn::tinv, {0.95, 10}, 4, 2.2281388519863, 1e-12},
        {Fn::chi2cdf, {3.84146, 1}, 2, 0.95000004, 1e-8},
        {Fn::chi2cdf, {10, 4}, 1, 0.040427681994513, 1e-14},
        {Fn::chi2inv, {0.95, 10}, 0, 18.307038053275, 1e-11},
        {Fn::fcdf, {2.5, 3, 10}, 2, 0.88096043734172, 1e-13},
        {Fn::fcdf, {3.0, 5, 20}, 1, 0.035201337452667, 1e-14},
        {Fn::finv, {0.95, 2, 10}, 0, 4.1028210151304, 1e-12},
        {Fn::betacdf, {0.3, 2, 3}, 2, 0.3483, 5e-5}, {Fn::betapdf, {0.3, 2, 3}, 0, 1.764, 5e-4},
        {Fn::betainv, {0.5, 2, 3}, 0, 0.38572756813239, 1e-13},
        {Fn::gamcdf, {15.5, 4, 2}, 2, 0.94987794546734, 1e-13},
        {Fn::gaminv, {0.5, 2, 3}, 0, 5.0350409700500, 1e-12},
        {Fn::gampdf, {2, 3, 0.5}, 0, 0.29305022221975, 1e-13},
        {Fn::nctcdf, {2, 10, 1, 50}, 0, 0.80761156253038, 1e-13},
        {Fn::nctcdf, {-1, 4, 0.5, 50}, 0, 0.086149569036563, 1e-14},
        {Fn::ncchi2cdf, {8, 4, 2}, 0, 0.74510103425501, 1e-13},
        {Fn::ncfcdf, {2, 3, 12, 1.5}, 0, 0.68583309097454, 1e-13},
        {Fn::ncbetacdf, {0.4, 2, 3, 1}, 0, 0.42946121234784, 1e-13},
        {Fn::bivarnormcdf, {1, -0.5, -0.3}, 0, 0.23203606826855, 1e-14},
        {Fn::bivarnormcdf, {1.5, 2, 0.9}, 0, 0.93072725351264, 1e-14},
        {Fn::bivarnormcdf, {0, 0, 0.5}, 0, 1.0 / 3, 1e-15},
        {Fn::srangecdf, {3.877, 10, 3}, 0, 0.95001, 5e-6},
        {Fn::srangecdf, {4, 20, 5}, 0, 0.93041, 5e-6},
        {Fn::srangeinv, {0.95, 20, 3}, 0, 3.5779, 5e-5},
        {Fn::lambertW, {0.5, 0, 0}, 0, 0.351734, 5e-7},
        {Fn::lambertW, {7e7, 0, 0}, 0, 15.3339, 5e-5},
        {Fn::lambertW, {-0.2, -1, 0}, 0, -2.5426413577735, 1e-13},
        {Fn::lambertW, {1e-4, 0, 1}, 0, -0.97686286557442, 1e-14},
        // Limits in the variable (+-infinity) and in the parameters.
        {Fn::normcdf, {-kInf}, 2, 0, 0}, {Fn::normcdf, {kInf}, 3, 0, 0},
        {Fn::bivarnormcdf, {kInf, kInf, 0.3}, 0, 1, 0},
        {Fn::normcdf, {-kInf}, 4, 1, 0}, {Fn::tcdf, {kInf, 3}, 1, 0, 0},
        {Fn::chi2cdf, {kInf, 3}, 2, 1, 0}, {Fn::fcdf, {kInf, 3, 4}, 2, 1, 0},
        {Fn::gamcdf, {kInf, 3, 4}, 1, 0, 0}, {Fn::gampdf, {kInf, 3, 4}, 0, 0, 0},
        {Fn::normpdf, {-kInf, 0, 1}, 0, 0, 0}, {Fn::exppdf, {kInf, 2}, 0, 0, 0},
        {Fn::cauchypdf, {kInf, 0, 1}, 0, 0, 0}, {Fn::lappdf, {-kInf, 0, 1}, 0, 0, 0},
        {Fn::lognpdf, {kInf, 0, 1}, 0, 0, 0}, {Fn::logncdf, {kInf, 0, 1}, 2, 1, 0},
        {Fn::wblpdf, {kInf, 1, 3}, 0, 0, 0}, {Fn::wblcdf, {kInf, 1, 3}, 0, 1, 0},
        {Fn::nctcdf, {-kInf, 7, 1.5, 50}, 0, 0, 0}, {Fn::nctcdf, {kInf, 7, 1.5, 50}, 0, 1, 0},
        {Fn::ncchi2cdf, {kInf, 3, 1}, 0, 1, 0}, {Fn::bivarnormcdf, {-kInf, 2, 0.3}, 0, 0, 0},
        {Fn::bivarnormcdf, {1, kInf, 0.3}, 0, phi1, 2e-16}, {Fn::srangecdf, {kInf, 20, 5}, 0, 1, 0},
        // df = +infinity, and beyond 1e25, is the normal law; the chi-square df cap is inclusive.
        {Fn::tcdf, {1, kInf}, 2, phi1, 2e-16},
        {Fn::tcdf, {-5, 1e30}, 2, 2.8665157187919391e-07, 1e-22},
        {Fn::tinv, {0.05, kInf}, 3, 1.959963984540054, 1e-15},
        {Fn::chi2cdf, {1e10, 1e10}, 2, 0.5, 1e-5},
        {Fn::nctcdf, {0, 7, 1.5, 50}, 0, 0.066807201268858057, 1e-16},  // Phi(-delta)
        {Fn::ncchi2cdf, {3, 2, 0}, 0, 0.77686983985157020, 1e-15},  // central: 1 - e^-1.5
        {Fn::ncchi2cdf, {0, 3, 1}, 0, 0, 0}, {Fn::ncbetacdf, {1, 3, 1, 2}, 0, 1, 0},
        {Fn::bivarnormcdf, {1, 2, 1}, 0, phi1, 2e-16},  // rho = 1: Phi(min(x, y))
        {Fn::bivarnormcdf, {-1, 0.5, -1}, 0, 0, 0},  // rho = -1, x <= -y
        {Fn::bivarnormcdf, {1, 1, -1}, 0, 2 * phi1 - 1, 1e-15},  // Phi(x) + Phi(y) - 1
        {Fn::srangecdf, {0, 20, 5}, 0, 0, 0}, {Fn::srangecdf, {-1, 20, 5}, 0, 0, 0},
        {Fn::lambertW, {0, 0, 1}, 0, -1, 0}, {Fn::lambertW, {0, -1, 1}, 0, -1, 0},
        {Fn::lambertW, {-e1, 0, 0}, 0, -1, 0},
        // Inverses at p = 0 (and betainv at 1, and its deviate below the double range) are
        // exact; densities are +infinity at a pole and their limit at x = 0 otherwise.
        {Fn::chi2inv, {0, 3}, 0, 0, 0}, {Fn::finv, {0, 3, 4}, 0, 0, 0},
        {Fn::betainv, {0, 3, 4}, 0, 0, 0}, {Fn::betainv, {1, 3, 4}, 0, 1, 0},
        {Fn::betainv, {0.3, 1e-3, 1}, 0, 0, 0}, {Fn::gaminv, {0, 3, 4}, 0, 0, 0},
        {Fn::tinv, {0.5, 7}, 2, 0, 0}, {Fn::gampdf, {0, 0.5, 2}, 0, kInf, 0},
        {Fn::gampdf, {0, 1, 2}, 0, 0.5, 0}, {Fn::gampdf, {0, 3, 2}, 0, 0, 0},
        {Fn::gampdf, {-1, 3, 2}, 0, 0, 0}, {Fn::betapdf, {0, 0.5, 2}, 0, kInf, 0},
        {Fn::betapdf, {1, 2, 1}, 0, 2, 0}, {Fn::betapdf, {1, 2, 3}, 0, 0, 0},
        {Fn::betacdf, {0, 0.5, 2}, 1, 1, 0}, {Fn::logncdf, {std::exp(1.0), 1, 2}, 2, 0.5, 1e-16},
        {Fn::binopdf, {0, 0, 0.3}, 0, 1, 0}, {Fn::binopdf, {0, 7, 0}, 0, 1, 0},
        {Fn::binopdf, {7, 7, 1}, 0, 1, 0}, {Fn::binopdf, {3, 7, 1}, 0, 0, 0},
        // Subnormal and tiny p: n p leaves the normal range (a direct evaluation gives NaN).
        {Fn::binopdf, {7, 250, 1e-313}, 0, 0, 0}, {Fn::binopdf, {0, 250, 1e-313}, 0, 1, 0},
        {Fn::binopdf, {1, 1000, 1e-300}, 0, 1e-297, 1e-12},  // n p (1 - p)^(n-1)
        // The binomial tails at a subnormal p: P(X = 18) is below the double range (the walk
        // from it once gave NaN with status 0), P(X > 18) ~ C(n, 19) p^19 is too.
        {Fn::binocdf, {18, 536870912, 4.9406564584124654e-324}, 2, 1, 0},
        {Fn::binocdf, {18, 536870912, 4.9406564584124654e-324}, 1, 0, 0},
        {Fn::binocdf, {1, 536870912, 4.9406564584124654e-324}, 2, 1, 0},
    };
    // clang-format on
    for (const Row& r : rows) check(r);
}

// Every status code the exports give, once per rule (NANUM and NaN: ValidAndBadInput;
// tails: DistributionTails), and the deliberate exceptions.
TEST(DistributionValues, StatusCodesAndDeliberateExceptions) {
    // clang-format off
    const Row rows[] = {
        // Back-end range failures are handed on.
        {Fn::norminv, {0}, 0, kNA, 0, 6}, {Fn::norminv, {1}, 0, kNA, 0, 8},
        {Fn::tcdf, {1, 0.5}, 2, kNA, 0, 5}, {Fn::tinv, {4.9e-324, 1}, 2, kNA, 0, 301},
        {Fn::chi2cdf, {-1, 3}, 2, kNA, 0, 5}, {Fn::chi2cdf, {1, 1.0001e10}, 2, kNA, 0, 7},
        {Fn::chi2inv, {0.3, 1e-3}, 0, kNA, 0, 301}, {Fn::fcdf, {1, 3, -2}, 2, kNA, 0, 6},
        {Fn::finv, {1, 3, 4}, 0, kNA, 0, 8}, {Fn::finv, {-0.5, 1, 2}, 0, kNA, 0, 5},
        {Fn::betacdf, {0.5, 2e6, 3}, 2, kNA, 0, 7}, {Fn::betapdf, {0.5, 2, 0}, 0, kNA, 0, 6},
        {Fn::betainv, {1.5, 2, 3}, 0, kNA, 0, 7}, {Fn::betainv, {0.5, 1, 1.5e6}, 0, kNA, 0, 7},
        {Fn::gamcdf, {1, 2, 0}, 2, kNA, 0, 6}, {Fn::gamcdf, {-1, 2, 1}, 2, kNA, 0, 5},
        {Fn::gaminv, {0.5, 2e6, 1}, 0, kNA, 0, 7}, {Fn::gaminv, {1e-10, 1e-3, 1}, 0, kNA, 0, 301},
        {Fn::gampdf, {1, -2, 1}, 0, kNA, 0, 6},
        // This library's own checks: -110 (exppdf refuses x < 0 and lognpdf x <= 0 rather
        // than give the density 0).
        {Fn::normpdf, {0, 0, 0}, 0, kNA, 0, kIn}, {Fn::exppdf, {-1e-300, 1}, 0, kNA, 0, kIn},
        {Fn::exppdf, {1, 0}, 0, kNA, 0, kIn}, {Fn::cauchypdf, {1, 0, 0}, 0, kNA, 0, kIn},
        {Fn::lappdf, {1, 0, -2}, 0, kNA, 0, kIn}, {Fn::lognpdf, {0, 0, 1}, 0, kNA, 0, kIn},
        {Fn::lognpdf, {1, 0, 0}, 0, kNA, 0, kIn}, {Fn::logncdf, {-1, 0, 1}, 2, kNA, 0, kIn},
        {Fn::logncdf, {1, 0, -1}, 2, kNA, 0, kIn}, {Fn::logninv, {0, 0, 1}, 0, kNA, 0, kIn},
        {Fn::logninv, {1, 0, 1}, 0, kNA, 0, kIn}, {Fn::logninv, {0.5, 0, 0}, 0, kNA, 0, kIn},
        {Fn::logninv, {0.999, 700, 10}, 0, kNA, 0, kIn},
        {Fn::wblinv, {0.9, 1e300, 1e-3}, 0, kNA, 0, kIn},
        // Weibull: a <= 0, b <= 0 (and wblinv's p outside (0, 1)) quietly NANUM; 0 below x = 0.
        {Fn::wblpdf, {1, 0, 2}, 0, kNA, 0, 0}, {Fn::wblcdf, {1, 1, -2}, 0, kNA, 0, 0},
        {Fn::wblinv, {0.5, -1, 2}, 0, kNA, 0, 0}, {Fn::wblinv, {0, 1, 1}, 0, kNA, 0, 0},
        {Fn::wblinv, {1, 1, 1}, 0, kNA, 0, 0}, {Fn::wblcdf, {-1, 1, 1}, 0, 0, 0, 0},
        {Fn::wblpdf, {-1, 1, 1}, 0, 0, 0, 0}, {Fn::wblpdf, {0, 2, 0.5}, 0, kInf, 0, 0},
        {Fn::wblpdf, {0, 4, 1}, 0, 0.25, 0, 0}, {Fn::wblcdf, {3, 3, 7}, 0, 1 - 1 / M_E, 1e-16, 0},
        // exppdf takes the rate: 2 e^-2, not e^-1/2 / 2.
        {Fn::exppdf, {1, 2}, 0, 2 * std::exp(-2.0), 1e-16, 0}, {Fn::exppdf, {0, 4}, 0, 4, 0, 0},
        // Discrete laws; poisspdf is 0.0 (not NANUM) with -110 outside its support.
        {Fn::binocdf, {0, -5, 0.5}, 1, kNA, 0, 11}, {Fn::binocdf, {6, 5, 0.5}, 2, kNA, 0, 12},
        {Fn::binocdf, {0, 5, -0.1}, 2, kNA, 0, 5}, {Fn::binocdf, {0, 5, 1.1}, 2, kNA, 0, 7},
        {Fn::binopdf, {6, 5, 0.5}, 0, kNA, 0, kIn}, {Fn::binopdf, {-1, 5, 0.5}, 0, kNA, 0, kIn},
        {Fn::binopdf, {1, 5, 1.5}, 0, kNA, 0, kIn}, {Fn::poisscdf, {1, 0}, 2, kNA, 0, 6},
        {Fn::poisscdf, {-1, 2}, 2, kNA, 0, 11}, {Fn::poisspdf, {-1, 2}, 0, 0, 0, kIn},
        {Fn::poisspdf, {3, 0}, 0, 0, 0, kIn}, {Fn::poisspdf, {3, -1}, 0, 0, 0, kIn},
        // hygecdf(k, m, n, l): m marked in a population of n, a sample of l.
        {Fn::hygecdf, {1, 5, 10, 2}, 2, 7.0 / 9, 1e-15, 0},  // 1 - C(5,2)/C(10,2)
        {Fn::hygecdf, {2, 3, 40, 10}, 2, 0.98785, 5e-6, 0},
        {Fn::hygecdf, {22, 122, 155, 35}, 1, 0.98899, 5e-6, 0},
        {Fn::hygecdf, {1, 12, 10, 2}, 2, kNA, 0, 12}, {Fn::hygecdf, {4, 5, 10, 3}, 2, kNA, 0, 12},
        {Fn::hygecdf, {2, 5, 10, 8}, 2, kNA, 0, 11}, {Fn::hygecdf, {0, 2, 10, -1}, 2, kNA, 0, 11},
        // Non-central laws, bivariate normal, studentized range.
        {Fn::nctcdf, {1, 0.5, 1, 50}, 0, kNA, 0, 5}, {Fn::nctcdf, {1, 5, 1, 0}, 0, kNA, 0, 11},
        {Fn::ncchi2cdf, {-1, 5, 1}, 0, kNA, 0, 5}, {Fn::ncchi2cdf, {1, 0, 1}, 0, kNA, 0, 6},
        {Fn::ncchi2cdf, {1, 2, -1}, 0, kNA, 0, 5}, {Fn::ncfcdf, {1, 2, 0, 1}, 0, kNA, 0, 6},
        {Fn::ncbetacdf, {1.5, 2, 3, 1}, 0, kNA, 0, 7},
        {Fn::ncbetacdf, {0.5, -2, 3, 1}, 0, kNA, 0, 6},
        {Fn::bivarnormcdf, {0, 0, -1.5}, 0, kNA, 0, 7}, {Fn::srangecdf, {2, 10, 1}, 0, kNA, 0, 11},
        {Fn::srangecdf, {2, 0.5, 3}, 0, kNA, 0, 5}, {Fn::srangeinv, {1, 10, 3}, 0, kNA, 0, 8},
        {Fn::srangeinv, {0, 10, 3}, 0, kNA, 0, 6},
        // lambertW: another branch or outside the domain is -110; +infinity on branch 0 is 15.
        // Any non-zero offset means "offset": W(-1/e + 0.25).
        {Fn::lambertW, {1, 1, 0}, 0, kNA, 0, kIn}, {Fn::lambertW, {1, -2, 0}, 0, kNA, 0, kIn},
        {Fn::lambertW, {-0.5, 0, 0}, 0, kNA, 0, kIn}, {Fn::lambertW, {-1e-9, 0, 1}, 0, kNA, 0, kIn},
        {Fn::lambertW, {0, -1, 0}, 0, kNA, 0, kIn}, {Fn::lambertW, {0.5, -1, 1}, 0, kNA, 0, kIn},
        {Fn::lambertW, {std::exp(-1.0), -1, 1}, 0, kNA, 0, kIn},
        {Fn::lambertW, {kInf, 0, 0}, 0, kNA, 0, 15},
        {Fn::lambertW, {0.25, 0, 7}, 0, -0.13490446826612135, 1e-15, 0},
        {Fn::lambertW, {-kInf, -1, 0}, 0, kNA, 0, 15},
        // The range code of each limit (+-infinity fails the limit it crosses).
        {Fn::tinv, {0, 5}, 2, kNA, 0, 6}, {Fn::tinv, {1, 5}, 2, kNA, 0, 8},
        {Fn::tinv, {0.3, 0.5}, 2, kNA, 0, 5}, {Fn::chi2cdf, {1, 0}, 2, kNA, 0, 6},
        {Fn::chi2cdf, {1, -kInf}, 2, kNA, 0, 6}, {Fn::chi2inv, {-0.1, 3}, 0, kNA, 0, 5},
        {Fn::chi2inv, {1, 3}, 0, kNA, 0, 8}, {Fn::chi2inv, {0.3, 0}, 0, kNA, 0, 6},
        {Fn::chi2inv, {0.3, 2e10}, 0, kNA, 0, 7}, {Fn::fcdf, {-1, 3, 4}, 2, kNA, 0, 5},
        {Fn::fcdf, {1, 2e10, 4}, 2, kNA, 0, 7}, {Fn::finv, {0.3, 0, 4}, 0, kNA, 0, 6},
        {Fn::finv, {0.3, 3, kInf}, 0, kNA, 0, 7}, {Fn::betacdf, {-0.1, 2, 3}, 2, kNA, 0, 5},
        {Fn::betacdf, {1.1, 2, 3}, 1, kNA, 0, 7}, {Fn::betacdf, {0.5, 0, 3}, 2, kNA, 0, 6},
        {Fn::betainv, {-0.1, 2, 3}, 0, kNA, 0, 5}, {Fn::betainv, {0.5, 2, 0}, 0, kNA, 0, 6},
        {Fn::betapdf, {-0.1, 2, 3}, 0, kNA, 0, 5}, {Fn::betapdf, {1.1, 2, 3}, 0, kNA, 0, 7},
        {Fn::betapdf, {0.5, 2e6, 3}, 0, kNA, 0, 7}, {Fn::gamcdf, {1, 2e10, 1}, 2, kNA, 0, 7},
        {Fn::gamcdf, {1, 2, kInf}, 1, kNA, 0, 7}, {Fn::gaminv, {-0.1, 2, 1}, 0, kNA, 0, 5},
        {Fn::gaminv, {1, 2, 1}, 0, kNA, 0, 8}, {Fn::gaminv, {0.5, 0, 1}, 0, kNA, 0, 6},
        {Fn::gaminv, {0.5, 2, kInf}, 0, kNA, 0, 7}, {Fn::gampdf, {1, 2e10, 1}, 0, kNA, 0, 7},
        {Fn::poisscdf, {1, kInf}, 2, kNA, 0, 7}, {Fn::nctcdf, {1, kInf, 1, 50}, 0, kNA, 0, 7},
        {Fn::ncchi2cdf, {1, kInf, 1}, 0, kNA, 0, 7}, {Fn::ncfcdf, {-1, 2, 3, 1}, 0, kNA, 0, 5},
        {Fn::ncfcdf, {1, 2, 3, -1}, 0, kNA, 0, 5}, {Fn::ncfcdf, {1, kInf, 3, 1}, 0, kNA, 0, 7},
        {Fn::ncbetacdf, {-0.1, 2, 3, 1}, 0, kNA, 0, 5},
        {Fn::ncbetacdf, {0.5, 2, 3, -1}, 0, kNA, 0, 5},
        {Fn::ncbetacdf, {0.5, kInf, 3, 1}, 0, kNA, 0, 7},
        {Fn::srangeinv, {0.5, 10, 1}, 0, kNA, 0, 11}, {Fn::srangeinv, {0.5, 0.5, 3}, 0, kNA, 0, 5},
        // Check order: own checks before the tail, the tail before NaN, NaN before every
        // range in the central laws, one argument at a time in the binomial and the
        // non-central laws, the studentized range's v NaN before its group count.
        {Fn::logncdf, {-1, 0, 1}, 5, kNA, 0, kIn}, {Fn::normcdf, {kNaN}, 5, kNA, 0, 70},
        {Fn::chi2cdf, {-1, kNaN}, 2, kNA, 0, 15}, {Fn::binocdf, {-1, -5, kNaN}, 2, kNA, 0, 11},
        {Fn::ncchi2cdf, {-1, kNaN, 1}, 0, kNA, 0, 5}, {Fn::srangecdf, {2, kNaN, 1}, 0, kNA, 0, 15},
    };
    // clang-format on
    for (const Row& r : rows) check(r);
}

// Kept deliberately: when the F deviate fails (here it lies below the double range, about
// 1e-353) finv returns the table value, the UPPER-tail quantile at p for the truncated
// degrees of freedom, with status 0.
TEST(DistributionValues, FinvFallsBackToTheUpperTailTable) {
    int status = kUntouched;
    const double v = finv(1e-300, 1.7, 5.2, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(v, zemath::util::Ftable(1e-300, 1, 5));
    EXPECT_NEAR(fcdf(v, 1, 5, 1, nullptr) / 1e-300, 1.0, 1e-12) << "P(F > v) = p";
    // A truncated degree of freedom below 1: the table cannot help either, NANUM, status 0.
    status = kUntouched;
    EXPECT_EQ(finv(1e-200, 0.5, 5, &status), kNA);
    EXPECT_EQ(status, 0);
    // Degrees of freedom beyond INT_MAX are clamped for the table: F(1, 2^31 - 1) is all but
    // chi-square with 1 df, whose upper 1e-300 quantile is norminv(5e-301)^2.
    const double large = finv(1e-300, 1.0, 5e9, &status);
    EXPECT_EQ(status, 0);
    EXPECT_NEAR(large / std::pow(norminv(5e-301, nullptr), 2), 1.0, 1e-5);
}

}  // namespace

// Extreme arguments end quickly with the right answer: a studentized range with v far
// beyond 1e19 is the limit law (range of r standard normals; r = 2: erf(q / 2)), and the
// non-central t refuses |delta| above 1e4 and the non-central mixtures lambda above 1e9
// instead of summing for minutes (or overflowing an int index).
TEST(DistributionValues, ExtremeParametersTakeTheLimitOrAreRefused) {
    int status = -1;
    for (double v : {1e20, 1e300, DBL_MAX}) {
        EXPECT_NEAR(srangecdf(1.5, v, 2, &status), std::erf(0.75), 1e-15) << v;
        EXPECT_EQ(status, 0);
        // erf(q / 2) = 0.5 at q = 2 * 0.476936276204469873 (inverse erf of 1/2).
        EXPECT_NEAR(srangeinv(0.5, v, 2, &status), 0.953872552408939746, 1e-12) << v;
        EXPECT_EQ(status, 0);
    }
    // A denormal Poisson mean with a huge count: probability 0 (not NaN); x = 1 keeps
    // the denormal lambda e^-lambda.
    EXPECT_EQ(poisspdf(67116548, 9.8841767809891302e-312, &status), 0.0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(poisspdf(1, 9.8841767809891302e-312, &status), 9.8841767809891302e-312);
    // Huge finite arguments of the bivariate normal are their infinite limits (not NaN).
    for (double rho : {-0.5, 0.0, 0.984}) {
        EXPECT_EQ(bivarnormcdf(4.3e-60, -DBL_MAX, rho, &status), 0.0) << rho;
        EXPECT_EQ(status, 0);
        EXPECT_NEAR(bivarnormcdf(DBL_MAX, 0.5, rho, &status),
                    0.5 * std::erfc(-0.5 / std::sqrt(2.0)), 1e-15)
            << rho;
        EXPECT_EQ(bivarnormcdf(1e300, 1e300, rho, &status), 1.0) << rho;
    }
    // Correlations within a few ulps of 0, either sign, are independence (a negative
    // subnormal put the inner normal's turning point at -infinity: NaN before).
    for (double rho : {-5e-324, 5e-324, -1e-310, -1e-300, 1e-310}) {
        for (auto [x, y] : {std::pair{3.69, -1.32}, std::pair{9.7, -1.9}, std::pair{-2.0, 0.4}}) {
            const double product = normcdf(x, 2, nullptr) * normcdf(y, 2, nullptr);
            EXPECT_NEAR(bivarnormcdf(x, y, rho, &status), product, 1e-15 * product) << rho;
            EXPECT_EQ(status, 0);
        }
    }
    for (double lambda : {1.01e9, 1e12, DBL_MAX}) {
        EXPECT_EQ(ncchi2cdf(0.5, 0.5, lambda, &status), NANUM) << lambda;
        EXPECT_EQ(status, 7) << lambda;
        EXPECT_EQ(ncfcdf(0.5, 0.5, 0.5, lambda, &status), NANUM)
            << lambda;  // an int index would overflow
        EXPECT_EQ(status, 7) << lambda;
        EXPECT_EQ(ncbetacdf(0.5, 0.5, 0.5, lambda, &status), NANUM) << lambda;
        EXPECT_EQ(status, 7) << lambda;
    }
    EXPECT_NEAR(ncchi2cdf(1e9, 0.5, 1e9, &status), 0.5, 1e-4);  // mean f + lambda, sd 6e4
    for (double delta : {1.0001e4, -2e4, 1e300, DBL_MAX}) {
        EXPECT_EQ(nctcdf(2.0, 5.0, delta, 50, &status), NANUM) << delta;
        EXPECT_EQ(status, 7) << delta;
    }
    // At the limit the value is still computed: P(T <= 1e4) for delta = 1e4 is within
    // 1e-4 of P(chi2_5 >= 5) = 0.41588 (the Z term shifts it by O(1 / delta)).
    const double at_limit = nctcdf(1e4, 5.0, 1e4, 50, &status);
    EXPECT_EQ(status, 0);
    EXPECT_NEAR(at_limit, 0.41588, 1e-4);
}

// The studentized range deviate far in the lower tail, where P grows like q^(r-1): the
// deviate's probability is the one asked for (the iteration halved towards such q for a
// hundred steps, or doubled past a converged q, and below q = 1e-16 the range probability
// was lost to the cancellation of Phi(u) - Phi(u - w)).
TEST(DistributionValues, StudentizedRangeDeviateOfTinyProbabilities) {
    for (double p : {1e-300, 1e-100, 1e-20, 0.22786403099662975}) {
        for (auto [v, r] : {std::pair{3.64, 3}, std::pair{20.8, 9}, std::pair{1.0, 2}}) {
            int status = -1;
            const double q = srangeinv(p, v, r, &status);
            ASSERT_EQ(status, 0) << p << " " << v << " " << r;
            EXPECT_NEAR(srangecdf(q, v, r, &status) / p, 1.0, 1e-12) << p << " " << v << " " << r;
        }
    }
    // The smallest subnormal p: a deviate whose probability rounds to a few subnormal
    // spacings (the bracket was halved to the last bit, fifty steps, before).
    int status = -1;
    const double q = srangeinv(4.9406564584124654e-324, 3.6729139917661886, 19, &status);
    EXPECT_EQ(status, 0);
    const double back = srangecdf(q, 3.6729139917661886, 19, &status);
    EXPECT_TRUE(back > 0.0 && back <= 1.5e-323) << q << " " << back;
}

// The symmetric laws' medians are exact: I_(1/2)(a, a) = 1/2, so the beta and F deviates of
// p = 1/2 are 1/2 and 1 (finv(1/2, 1/2, 1/2) came out 4 ulps above 1, the computed tail being
// 3e-16 off 1/2 within its bound).
TEST(DistributionValues, SymmetricMediansAreExact) {
    for (double a : {0.25, 0.5, 3.0, 7.0, 120.5, 2500.0}) {
        int status = -1;
        EXPECT_EQ(betacdf(0.5, a, a, 1, &status), 0.5) << a;
        EXPECT_EQ(betacdf(0.5, a, a, 2, &status), 0.5) << a;
        EXPECT_EQ(betainv(0.5, a, a, &status), 0.5) << a;
        EXPECT_EQ(finv(0.5, 2.0 * a, 2.0 * a, &status), 1.0) << a;
        EXPECT_EQ(status, 0);
    }
}

// Degrees of freedom far beyond 1e19 are the law of the range of r standard normals
// (mpmath references of gen_distributions_limits.py), e.g. P(Q <= 1.6) = 0.5053 for r = 3.
TEST(DistributionValues, StudentizedRangeOfHugeDegreesIsTheRangeLaw) {
    for (double v : {1e20, 1e100, 1e308}) {
        for (const auto& row : ref_limits::kRangeLaw) {
            int status = -1;
            EXPECT_NEAR(srangecdf(row.q, v, row.r, &status), row.p, 1e-14 * row.p)
                << row.q << " " << v << " " << row.r;
            EXPECT_EQ(status, 0);
        }
        for (const auto& row : ref_limits::kRangeDeviate) {
            int status = -1;
            EXPECT_NEAR(srangeinv(row.p, v, row.r, &status), row.q, 1e-13 * row.q)
                << row.p << " " << v << " " << row.r;
            EXPECT_EQ(status, 0);
        }
    }
}

// Non-central beta and F with shapes far below 1e-8 (mpmath references of
// gen_distributions_limits.py): the mixture is summed from j = 0 (the series from the
// Poisson mode stopped at its cap, status 300 after 15 ms), and the F's 1 - x is formed
// directly where x rounds to 1 (the law then sits within 1e-150 of 0 and 1).
TEST(DistributionValues, NonCentralMixturesAtTinyShapes) {
    for (const auto& row : ref_limits::kTinyShapeBeta) {
        int status = -1;
        EXPECT_NEAR(ncbetacdf(row.x, row.a, row.b, row.lambda, &status), row.p, 1e-13 * row.p)
            << row.x << " " << row.a << " " << row.b << " " << row.lambda;
        EXPECT_EQ(status, 0);
    }
    for (const auto& row : ref_limits::kTinyShapeF) {
        int status = -1;
        EXPECT_NEAR(ncfcdf(row.x, row.a, row.b, row.lambda, &status), row.p, 1e-13 * row.p)
            << row.x << " " << row.a << " " << row.b << " " << row.lambda;
        EXPECT_EQ(status, 0);
    }
    // x below the normal range, where x/2 cannot be formed (ncchi2cdf(5e-324, 1e-300, 0)
    // gave 0 for a value of 1).
    for (const auto& row : kTinyXChi2) {
        int status = -1;
        EXPECT_NEAR(ncchi2cdf(row.x, row.df, row.lambda, &status), row.p, 1e-13 * row.p)
            << row.x << " " << row.df << " " << row.lambda;
        EXPECT_EQ(status, 0);
    }
}
