// Randomised robustness of every distribution export (and the sampling exports that take
// arbitrary doubles, permrnd; see random_test): arguments drawn over the whole double and int
// range (zeros of both signs, infinities, NaN, NANUM, subnormals, DBL_MIN, DBL_MAX, huge
// parameters, INT_MIN / INT_MAX) mixed with ordinary values, with a fixed seed. Every call
// must keep the contract of its header: a probability in [0, 1], a density >= 0, a finite
// deviate, or NANUM with a failure status (never NaN, never a value with a failure status
// except the documented ones), and it must come back promptly. The time bound is a hang
// detector, not a speed test: it is generous (50 ms of processor time per call in an
// optimised build, more under sanitizers or without optimisation) and the slowest call
// per export is printed.
#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "stats/distribution_calls.hpp"
#include "zemath/random.h"
#include "zemath/status.h"

namespace {

using dist_test::at;
using dist_test::Fn;
using dist_test::name;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kSlowdown = 20.0;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer) || __has_feature(undefined_behavior_sanitizer)
constexpr double kSlowdown = 20.0;
#else
constexpr double kSlowdown = 1.0;
#endif
#else
constexpr double kSlowdown = 1.0;
#endif
#ifdef NDEBUG
constexpr double kOptimised = 1.0;
#else
constexpr double kOptimised = 10.0;
#endif
// Hang detector: a call slower than this is a defect whatever its arguments.
constexpr double kBoundMs = 50.0 * kSlowdown * kOptimised;

enum class Kind { probability, density, deviate };

// One export: its arguments ('d' a double, 'i' an int), whether it takes a tail code,
// what it returns, and whether a refusal may be a quiet NANUM with status 0 (Weibull's
// bad parameters and finv's table fallback, kept deliberately).
struct Export {
    Fn fn;
    const char* args;
    bool tail;
    Kind kind;
    bool quiet_nanum = false;
};

// clang-format off
const Export kExports[] = {
    {Fn::normcdf, "d", true, Kind::probability}, {Fn::norminv, "d", false, Kind::deviate},
    {Fn::normpdf, "ddd", false, Kind::density}, {Fn::tcdf, "dd", true, Kind::probability},
    {Fn::tinv, "dd", true, Kind::deviate}, {Fn::chi2cdf, "dd", true, Kind::probability},
    {Fn::chi2inv, "dd", false, Kind::deviate}, {Fn::fcdf, "ddd", true, Kind::probability},
    {Fn::finv, "ddd", false, Kind::deviate, true}, {Fn::betacdf, "ddd", true, Kind::probability},
    {Fn::betainv, "ddd", false, Kind::deviate}, {Fn::betapdf, "ddd", false, Kind::density},
    {Fn::gamcdf, "ddd", true, Kind::probability}, {Fn::gaminv, "ddd", false, Kind::deviate},
    {Fn::gampdf, "ddd", false, Kind::density}, {Fn::exppdf, "dd", false, Kind::density},
    {Fn::cauchypdf, "ddd", false, Kind::density}, {Fn::lappdf, "ddd", false, Kind::density},
    {Fn::lognpdf, "ddd", false, Kind::density}, {Fn::logncdf, "ddd", true, Kind::probability},
    {Fn::logninv, "ddd", false, Kind::deviate}, {Fn::wblpdf, "ddd", false, Kind::density, true},
    {Fn::wblcdf, "ddd", false, Kind::probability, true},
    {Fn::wblinv, "ddd", false, Kind::deviate, true},
    {Fn::binocdf, "iid", true, Kind::probability}, {Fn::binopdf, "iid", false, Kind::probability},
    {Fn::poisscdf, "id", true, Kind::probability}, {Fn::poisspdf, "id", false, Kind::probability},
    {Fn::hygecdf, "iiii", true, Kind::probability}, {Fn::nctcdf, "dddi", false, Kind::probability},
    {Fn::ncchi2cdf, "ddd", false, Kind::probability}, {Fn::ncfcdf, "dddd", false, Kind::probability},
    {Fn::ncbetacdf, "dddd", false, Kind::probability},
    {Fn::bivarnormcdf, "ddd", false, Kind::probability},
    {Fn::srangecdf, "ddi", false, Kind::probability}, {Fn::srangeinv, "ddi", false, Kind::deviate},
    {Fn::lambertW, "dii", false, Kind::deviate},
};
// clang-format on

const double kSpecialDoubles[] = {0.0,
                                  -0.0,
                                  kInf,
                                  -kInf,
                                  kNaN,
                                  NANUM,
                                  DBL_MIN,
                                  -DBL_MIN,
                                  5e-324,
                                  -5e-324,
                                  1e-313,
                                  2.5e-308,
                                  1e-300,
                                  1e-200,
                                  DBL_MAX,
                                  -DBL_MAX,
                                  1e308,
                                  1e300,
                                  1e100,
                                  1e19,
                                  1e10,
                                  -1e10,
                                  -1e300,
                                  1.0,
                                  -1.0,
                                  0.5,
                                  1.0 - DBL_EPSILON / 2,
                                  1.0 + DBL_EPSILON,
                                  DBL_EPSILON,
                                  2147483647.0,
                                  2147483648.0,
                                  4294967296.0,
                                  9007199254740992.0,
                                  1e-10,
                                  65536.0};
const int kSpecialInts[] = {0,       1,           2,           -1,     INT_MAX, INT_MAX - 1,
                            INT_MIN, INT_MIN + 1, 1 << 30,     46340,  46341,   100000,
                            3,       1000000,     INT_MAX / 2, 2159711};

// Arguments over the whole range: a third special values, the rest ordinary values of the
// scales the laws are used at, and log-uniform magnitudes of either sign.
class Draw {
  public:
    explicit Draw(unsigned seed) : engine_(seed) {}

    double real() {
        switch (pick(6)) {
            case 0:
            case 1:
                return kSpecialDoubles[pick(std::size(kSpecialDoubles))];
            case 2:
                return uniform(0.0, 1.0);
            case 3:
                return uniform(-6.0, 6.0);
            case 4:
                return uniform(0.0, 60.0);
            default: {
                const double magnitude = std::pow(10.0, uniform(-323.0, 308.2));
                return pick(4) == 0 ? -magnitude : magnitude;
            }
        }
    }
    int integer() {
        switch (pick(4)) {
            case 0:
                return kSpecialInts[pick(std::size(kSpecialInts))];
            case 1:
                return static_cast<int>(engine_());  // any 32-bit pattern
            default:
                return static_cast<int>(pick(60)) - 5;
        }
    }
    int tail() { return static_cast<int>(pick(8)) - 1; }
    std::size_t pick(std::size_t n) { return engine_() % n; }

  private:
    double uniform(double lo, double hi) {
        return std::uniform_real_distribution<double>(lo, hi)(engine_);
    }
    std::mt19937 engine_;
};

// What the contract allows for a result: empty when it holds, else what is wrong.
std::string violation(const Export& e, double v, int status) {
    if (status == -12345) return "status not written";
    if (std::isnan(v)) return "NaN returned";
    if (v == NANUM) {
        if (status == 0 && !e.quiet_nanum) return "NANUM with status 0";
        return "";
    }
    // A value with a failure status: only the reduced-accuracy warning and poisspdf's 0.
    if (status != 0) {
        const bool warning = status == 424 && (e.fn == Fn::fcdf || e.fn == Fn::betacdf);
        const bool zero = e.fn == Fn::poisspdf && v == 0.0 && status == ZEMATH_ERR_STATS_INPUT;
        if (!warning && !zero) return "a value with status " + std::to_string(status);
    }
    switch (e.kind) {
        case Kind::probability:
            if (!(v >= 0.0 && v <= 1.0)) return "probability outside [0, 1]";
            break;
        case Kind::density:  // +infinity only at a pole
            if (!(v >= 0.0)) return "negative density";
            break;
        case Kind::deviate:
            if (!std::isfinite(v)) return "deviate not finite";
            break;
    }
    return "";
}

// The calling thread's processor time in ms: unlike the wall clock it does not count the
// time other processes take from a loaded machine, so the bound stays meaningful there.
double cpu_ms() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return 1e3 * static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_nsec);
}

struct Slowest {
    double ms = 0.0;
    std::string args;
};

// One timed call with the contract checked; the slowest so far is kept.
void check_call(const Export& e, const double* a, int tail, Slowest& slowest) {
    int status = -12345;
    const double t0 = cpu_ms();
    const double v = dist_test::call(e.fn, a, tail, &status);
    const double ms = cpu_ms() - t0;
    const std::string args = at({a[0], a[1], a[2], a[3]}) + " tail " + std::to_string(tail);
    if (ms > slowest.ms) slowest = {ms, args};
    const std::string wrong = violation(e, v, status);
    EXPECT_TRUE(wrong.empty()) << name(e.fn) << args << ": " << wrong << " (value " << v
                               << ", status " << status << ")";
    EXPECT_LE(ms, kBoundMs) << name(e.fn) << args;
}

TEST(DistributionsRandom, EveryExportKeepsItsContractOverTheWholeRange) {
    constexpr int kCallsPerExport = 2000;
    Draw draw(20261124u);
    std::printf("[slowest] bound %.0f ms per call\n", kBoundMs);
    for (const Export& e : kExports) {
        Slowest slowest;
        for (int c = 0; c < kCallsPerExport; ++c) {
            double a[4] = {0.0, 0.0, 0.0, 0.0};
            for (int k = 0; e.args[k] != '\0'; ++k)
                a[k] = e.args[k] == 'i' ? static_cast<double>(draw.integer()) : draw.real();
            check_call(e, a, e.tail ? draw.tail() : 2, slowest);
        }
        std::printf("[slowest] %-12s %9.4f ms at %s\n", name(e.fn), slowest.ms,
                    slowest.args.c_str());
    }
}

// Calls that failed once (hangs, NaN, values outside the range, wrong codes): each must
// keep the contract and return within the bound.
TEST(DistributionsRandom, ExtremeArgumentsThatOnceFailed) {
    // clang-format off
    struct Case { Fn fn; double a[4]; int tail; };
    const Case cases[] = {
        {Fn::nctcdf, {0.7, 5, 65536, 100}, 2}, {Fn::ncchi2cdf, {2, 3, 1e10}, 2},
        {Fn::ncfcdf, {1.5, 3, 7, 1e10}, 2}, {Fn::ncbetacdf, {0.5, 2, 3, 1e10}, 2},
        {Fn::ncchi2cdf, {2, 3, 4.3e9}, 2}, {Fn::ncbetacdf, {0.5, 2, 3, 1e9}, 2},
        {Fn::finv, {2.2250738585072014e-308, 3.7121092391726429, 1e10}, 2},
        {Fn::finv, {1e-306, 11.34, 8}, 2},
        {Fn::srangecdf, {2.5, 10, 2147483646}, 2}, {Fn::srangeinv, {0.842, 65, 2159711}, 2},
        {Fn::srangeinv, {0.3, 1e100, 3}, 2}, {Fn::srangecdf, {2.5, 1e308, 3}, 2},
        {Fn::srangecdf, {1.6, 1e100, 3}, 2},
        {Fn::hygecdf, {1000, INT_MAX / 2, INT_MAX, INT_MAX / 3}, 2},
        {Fn::hygecdf, {INT_MAX / 6, INT_MAX / 2, INT_MAX, INT_MAX / 3}, 1},
        {Fn::ncfcdf, {1.5, 5e-324, 5e-324, 2.5}, 2},
        {Fn::bivarnormcdf, {-1e300, 0.2, 0.3}, 2}, {Fn::bivarnormcdf, {0.1, 0.2, 5e-324}, 2},
        {Fn::poisspdf, {100, 5e-324}, 2}, {Fn::binopdf, {7, 250, 1e-313}, 2},
        {Fn::srangeinv, {0.22786403099662975, 2.4876298434727726, 24}, 2},
        {Fn::srangeinv, {2.4999999999999998e-308, 3.6398312590764696, 3}, 2},
        {Fn::srangeinv, {0.99999999999999989, 49.282231602669334, 645470721}, 2},
        {Fn::srangeinv, {4.9406564584124654e-324, 3.6729139917661886, 19}, 2},
        {Fn::srangeinv, {0.28964108255937432, 9007199254740992, 538518797}, 2},
        {Fn::ncfcdf, {1.7070002041212748e+225, 1e-200, 1.6648832469206443e-79, 0.86}, 2},
        {Fn::finv, {8.0511372291962623e-196, 6.5440474331690179e-125, 1.9305918745095462e-197}, 2},
        {Fn::betainv, {8.0511372291962623e-196, 3.2720237165845090e-125, 9.652959372547731e-198}, 2},
        {Fn::ncfcdf, {1, 1e300, 1e300, 1.4015357800167431e-309}, 2},
        {Fn::ncfcdf, {1, 1e20, 1e20, 1}, 2}, {Fn::ncbetacdf, {0.5, 1e20, 1e20, 1e-3}, 2},
        {Fn::ncchi2cdf, {1e15, 1e15, 1}, 2}, {Fn::ncchi2cdf, {1e300, 1e300, 1}, 2},
        {Fn::ncchi2cdf, {67767746.34129897, 69531365.77630731, 2.149683931463758}, 2},
        {Fn::ncfcdf, {27.255, 10291.4, 11.52, 5.55e8}, 2},
        {Fn::ncbetacdf, {0.9999999982356719, 10.55, 0.01619, 5.08e8}, 2},
        {Fn::srangeinv, {1.9493284874924116e-156, 5, 122651915}, 2},
        {Fn::srangeinv, {0.71001608832554908, 64.14144843699448, 1559149104}, 2},
        {Fn::srangeinv, {4.9406564584124654e-324, 4.2239931967099444, 46}, 2},
        {Fn::hygecdf, {270168233, 746250299, 1889071879, 683898649}, 1},
    };
    // clang-format on
    for (const Case& c : cases) {
        const Export* e = std::find_if(std::begin(kExports), std::end(kExports),
                                       [&](const Export& x) { return x.fn == c.fn; });
        Slowest slowest;
        check_call(*e, c.a, c.tail, slowest);
    }
}

// The non-central laws with degrees of freedom and shapes drawn log-uniformly up to the
// double range, non-centralities from subnormal to past their limit, and x within a few
// standard deviations of the mean, where the mixtures' central terms sit in the body of
// huge laws (hangs in an unbounded fraction and wrong values hid there).
double pick_from(std::mt19937& engine, std::initializer_list<double> values) {
    return values.begin()[engine() % values.size()];
}

TEST(DistributionsRandom, NoncentralLawsAtHugeShapesNearTheMean) {
    std::mt19937 engine(20261124u);
    const auto uniform = [&](double lo, double hi) {
        return std::uniform_real_distribution<double>(lo, hi)(engine);
    };
    const auto find = [](Fn fn) {
        return std::find_if(std::begin(kExports), std::end(kExports),
                            [&](const Export& x) { return x.fn == fn; });
    };
    const Export* laws[3] = {find(Fn::ncchi2cdf), find(Fn::ncfcdf), find(Fn::ncbetacdf)};
    Slowest slowest[3];
    for (int c = 0; c < 600; ++c) {
        const double d1 = std::pow(10.0, uniform(0.0, 308.0));
        const double d2 = pick_from(engine, {d1, std::pow(10.0, uniform(0.0, 308.0)), 3.0});
        const double lambda = std::pow(10.0, uniform(-310.0, 10.0));
        const double z = uniform(-8.0, 8.0);
        const double x_chi2[4] = {d1 + lambda + z * std::sqrt(2 * d1 + 4 * lambda), d1, lambda, 0};
        check_call(*laws[0], x_chi2, 2, slowest[0]);
        const double x_f[4] = {std::exp(z * std::sqrt(2 / d1 + 2 / d2)) * (1 + lambda / d1), d1, d2,
                               lambda};
        check_call(*laws[1], x_f, 2, slowest[1]);
        const double a = d1 + lambda / 2, b = d2;
        const double mean = a / (a + b), sd = std::sqrt(mean * (b / (a + b)) / (a + b + 1));
        const double x_beta[4] = {std::clamp(mean + z * sd, 0.0, 1.0), d1, d2, lambda};
        check_call(*laws[2], x_beta, 2, slowest[2]);
    }
    for (int k = 0; k < 3; ++k)
        std::printf("[slowest] %-12s %9.4f ms at %s (huge shapes)\n", name(laws[k]->fn),
                    slowest[k].ms, slowest[k].args.c_str());
}

}  // namespace
