// s21bac RC(x, y), s21bbc RF(x, y, z), s21bcc RD(x, y, z), s21bdc RJ(x, y, z, r):
// Carlson's symmetric elliptic integrals; RC for y < 0 and RJ for r < 0 give the
// Cauchy principal value.
//
// Method: Boost.Math's implementations of Carlson's duplication algorithms with the
// fifth-order series at the end (a few ulps; the principal values through Carlson's
// transformations).
//
// Failures (value 0): a negative argument where the integral needs x, y, z >= 0
// (NE_REAL_ARG_LT); y = 0 in RC or r = 0 in RJ (NE_REAL); more than one of the
// arguments that may be zero being zero, z = 0 in RD, or an argument outside
// [lolim, uplim] = [5 * DBL_MIN, DBL_MAX / 5] (NE_REAL_ARG_GT for too large,
// NE_REAL for the rest); NaN (NE_REAL).
// Reference: B. C. Carlson (1995), Numerical computation of real or complex elliptic
// integrals, Numer. Algorithms 10, 13-26.
#include <cmath>
#include <limits>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/ellint_rc.hpp>
#include <boost/math/special_functions/ellint_rd.hpp>
#include <boost/math/special_functions/ellint_rf.hpp>
#include <boost/math/special_functions/ellint_rj.hpp>

#include "platform/nag/s.hpp"

namespace zemath::nag {

namespace {

// RC keeps Boost's long double evaluation: in double its principal value for y < 0
// loses every digit when x and |y| are 350 decades apart. RF, RD, RJ are accurate to
// about 3e-14 in double and three times faster so.
using QuietPolicy = numeric::BoostPolicy;
using DoublePolicy = detail::SpecialPolicy;
constexpr double kUpLim = std::numeric_limits<double>::max() / 5.0;
constexpr double kLoLim = 5.0 * std::numeric_limits<double>::min();

// The common checks: every argument a number, at most kUpLim in size, and those that
// must be non-negative so. Returns the failure code or 0.
int check_sizes(std::initializer_list<double> args, std::initializer_list<double> non_negative) {
    for (double v : args) {
        if (std::isnan(v)) return NE_REAL;
        if (std::fabs(v) > kUpLim) return NE_REAL_ARG_GT;
    }
    for (double v : non_negative)
        if (v < 0.0) return NE_REAL_ARG_LT;
    return NE_NOERROR;
}

int zeros(std::initializer_list<double> args) {
    int n = 0;
    for (double v : args) n += v == 0.0;
    return n;
}

}  // namespace

double s21bac(double x, double y, NagError* fail) {
    fail->set(check_sizes({x, y}, {x}));
    if (fail->failed()) return 0.0;
    if (y == 0.0) return fail->set(NE_REAL), 0.0;
    if (x + std::fabs(y) < kLoLim) return fail->set(NE_REAL), 0.0;
    return boost::math::ellint_rc(x, y, QuietPolicy());
}

double s21bbc(double x, double y, double z, NagError* fail) {
    fail->set(check_sizes({x, y, z}, {x, y, z}));
    if (fail->failed()) return 0.0;
    if (zeros({x, y, z}) > 1 || std::fmin(x + y, std::fmin(x + z, y + z)) < kLoLim)
        return fail->set(NE_REAL), 0.0;
    return boost::math::ellint_rf(x, y, z, DoublePolicy());
}

double s21bcc(double x, double y, double z, NagError* fail) {
    fail->set(check_sizes({x, y, z}, {x, y, z}));
    if (fail->failed()) return 0.0;
    if (zeros({x, y}) > 1 || x + y < kLoLim || z < kLoLim) return fail->set(NE_REAL), 0.0;
    return boost::math::ellint_rd(x, y, z, DoublePolicy());
}

double s21bdc(double x, double y, double z, double r, NagError* fail) {
    fail->set(check_sizes({x, y, z, r}, {x, y, z}));
    if (fail->failed()) return 0.0;
    if (r == 0.0) return fail->set(NE_REAL), 0.0;
    if (zeros({x, y, z}) > 1 || std::fmin(x + y, std::fmin(x + z, y + z)) < kLoLim ||
        std::fabs(r) < kLoLim)
        return fail->set(NE_REAL), 0.0;
    return boost::math::ellint_rj(x, y, z, r, DoublePolicy());
}

}  // namespace zemath::nag
