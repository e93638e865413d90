// Exports of the central continuous distributions: normal, Student's t, chi-square, F,
// beta and gamma probabilities, deviates and densities over the back end's g01 routines,
// and the in-house exponential, Cauchy, Laplace, log-normal and Weibull functions.
//
// Method: the back-end functions translate the tail code and hand the routine's error
// number on; the in-house formulas are evaluated in long double, with the arguments of
// exp and log formed there too, so that the far tails keep their relative accuracy (the
// relative condition number of exp(-z^2/2) in z is z^2, about 1400 at a density of
// 1e-300). The Weibull functions carry ln(x/a) with the quotient split into two doubles,
// because shapes up to 1e6 multiply its error.
//
// Accuracy: within 1e-13 relative error of 50-digit mpmath references on the grid of
// tests/reference/gen_distributions_central.py (worst errors per function in
// tests/reference/distributions_central_worst_errors.txt). Exception: the log-normal
// argument z = (ln x - mu)/sigma carries the long double rounding of ln x, 5e-20 |ln x|, so
// the tails lose about |z| 5e-20 |ln x| / sigma (past 1e-13 only for |ln x| / sigma above
// about 5e4) and the confidence probability 5e-20 |ln x| / (sigma |z|) near the median.
//
// Failure codes: see include/zemath/distributions.h (team decisions on tails 0 and 5, the
// Weibull, finv and fcdf exceptions kept deliberately for the hosts that rely on them).
#include "zemath/distributions.h"

#include <climits>
#include <cmath>
#include <limits>
#include <utility>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/g01.hpp"
#include "platform/nag/g01_extended.hpp"
#include "platform/numeric/double_double.hpp"
#include "platform/numeric/extended.hpp"
#include "platform/util/probability.hpp"
#include "stats/distribution_common.hpp"

namespace {

using namespace zemath;
using namespace zemath::stats;
using nag::NagError;

using Real = numeric::Extended;
using numeric::narrow;

constexpr Real kPi = 3.14159265358979323846264338327950288L;
constexpr Real kSqrt2Pi = 2.50662827463100050241576528481104525L;
constexpr double kInf = std::numeric_limits<double>::infinity();

// The in-house functions refuse NaN as well as NANUM.
template <class... T>
bool any_unusable(T... values) {
    return ((is_missing(values) || std::isnan(values)) || ...);
}

// A successful in-house value.
double accept(double value, int* status) {
    set_status(status, ZEMATH_OK);
    return value;
}

// Weibull's deliberate refusal: NANUM with status 0.
double quiet_nanum(int* status) {
    return accept(kNanum, status);
}

// Tail code of the functions that have a two-tailed significance probability: 0, the
// two-sample test's two-sided choice, reads as 3 there. Elsewhere translate_tail's
// TwoTail selector is refused by the routine with 70, like 5 everywhere.
nag::Nag_TailProbability two_sided_tail(int tail) {
    return tail == 0 ? nag::Nag_TailProbability::Nag_TwoTailSignif : translate_tail(tail);
}

// Degrees of freedom for the F table fallback: truncated toward zero, at most INT_MAX.
int truncated_df(double df) {
    return df >= static_cast<double>(INT_MAX) ? INT_MAX : static_cast<int>(df);
}

// ln(x / a) for finite x, a > 0, with the quotient carried to about 106 bits: q + r/a with
// r = x - q a exact (the remainder of the division). The Weibull shape multiplies this logarithm,
// up to 1e6 times.
Real log_ratio(double x, double a) {
    const double q = x / a;
    if (std::isnormal(q) && std::fabs(x) > 1e-290) {  // r exact: no overflow, no underflow
        const double r = numeric::remainder_of(x, q, a);
        return std::log(Real(q)) + std::log1p(Real(r) / (Real(q) * a));
    }
    return std::log(Real(x)) - std::log(Real(a));
}

}  // namespace

// ---- normal ----------------------------------------------------------------------------

extern "C" {

ZEMATH_API double normcdf(double x, int tail, int* status) noexcept {
    return routine_export(status, {x}, [&](nag::NagError* fail) {
        return nag::g01eac(two_sided_tail(tail), x, fail);
    });
}

ZEMATH_API double norminv(double p, int* status) noexcept {
    return routine_export(status, {p}, [&](nag::NagError* fail) { return nag::g01cec(p, fail); });
}

ZEMATH_API double normpdf(double x, double mu, double sigma, int* status) noexcept {
    if (any_unusable(x, mu, sigma) || !std::isfinite(mu) || !(sigma > 0) || std::isinf(sigma)) {
        return reject(status);
    }
    if (std::isinf(x)) return accept(0.0, status);
    const Real z = (Real(x) - mu) / sigma;
    return accept(narrow(std::exp(-z * z / 2) / (kSqrt2Pi * sigma)), status);
}

// ---- Student's t -----------------------------------------------------------------------

ZEMATH_API double tcdf(double t, double df, int tail, int* status) noexcept {
    return routine_export(status, {t, df}, [&](nag::NagError* fail) {
        return nag::g01ebc(two_sided_tail(tail), t, df, fail);
    });
}

ZEMATH_API double tinv(double p, double df, int tail, int* status) noexcept {
    return routine_export(status, {p, df}, [&](nag::NagError* fail) {
        return nag::g01fbc(two_sided_tail(tail), p, df, fail);
    });
}

// ---- chi-square ------------------------------------------------------------------------

ZEMATH_API double chi2cdf(double x, double df, int tail, int* status) noexcept {
    return routine_export(status, {x, df}, [&](nag::NagError* fail) {
        return nag::g01ecc(translate_tail(tail), x, df, fail);
    });
}

ZEMATH_API double chi2inv(double p, double df, int* status) noexcept {
    return routine_export(status, {p, df},
                          [&](nag::NagError* fail) { return nag::g01fcc(p, df, fail); });
}

// ---- F ---------------------------------------------------------------------------------

ZEMATH_API double fcdf(double f, double ndf, double fdf, int tail, int* status) noexcept {
    return routine_export(
        status, {f, ndf, fdf},
        [&](NagError* fail) { return nag::g01edc(translate_tail(tail), f, ndf, fdf, fail); },
        [](double v, const NagError& fail, int* out) {
            if (fail.code == nag::NE_ACCURACY_WARNING) {  // a warning: the probability is kept
                set_status(out, fail.code);
                return v;
            }
            return finish(v, fail, out);
        });
}

ZEMATH_API double finv(double p, double df1, double df2, int* status) noexcept {
    return routine_export(
        status, {p, df1, df2}, [&](NagError* fail) { return nag::g01fdc(p, df1, df2, fail); },
        [&](double v, const NagError& fail, int* out) {
            if (fail.code == nag::NE_DEVIATE_FAILED) {
                // Kept deliberately: the table value is the upper-tail quantile at p,
                // returned as it is with status 0 (hosts rely on this fallback).
                set_status(out, ZEMATH_OK);
                return util::Ftable(p, truncated_df(df1), truncated_df(df2));
            }
            return finish(v, fail, out);
        });
}

// ---- beta ------------------------------------------------------------------------------

ZEMATH_API double betacdf(double x, double a, double b, int tail, int* status) noexcept {
    return routine_export(status, {x, a, b}, [&](NagError* fail) {
        double v = 0.0;
        if (refuse_two_output_tail(tail, fail)) return v;
        if (tail == 2) {
            nag::g01eec(x, a, b, 0.0, &v, nullptr, nullptr, fail);
        } else {
            nag::g01eec(x, a, b, 0.0, nullptr, &v, nullptr, fail);
        }
        return v;
    });
}

ZEMATH_API double betainv(double p, double a, double b, int* status) noexcept {
    return routine_export(status, {p, a, b},
                          [&](nag::NagError* fail) { return nag::g01fec(p, a, b, 0.0, fail); });
}

ZEMATH_API double betapdf(double x, double a, double b, int* status) noexcept {
    return routine_export(status, {x, a, b}, [&](NagError* fail) {
        double v = 0.0;
        nag::g01eec(x, a, b, 0.0, nullptr, nullptr, &v, fail);
        return v;
    });
}

// ---- gamma -----------------------------------------------------------------------------

ZEMATH_API double gamcdf(double g, double a, double b, int tail, int* status) noexcept {
    return routine_export(status, {g, a, b}, [&](nag::NagError* fail) {
        return nag::g01efc(translate_tail(tail), g, a, b, fail);
    });
}

ZEMATH_API double gaminv(double p, double a, double b, int* status) noexcept {
    return routine_export(status, {p, a, b},
                          [&](nag::NagError* fail) { return nag::g01ffc(p, a, b, 0.0, fail); });
}

ZEMATH_API double gampdf(double x, double a, double b, int* status) noexcept {
    return routine_export(status, {x, a, b},
                          [&](nag::NagError* fail) { return nag::g01kfc(x, a, b, fail); });
}

// ---- in-house densities ----------------------------------------------------------------

ZEMATH_API double exppdf(double x, double mu, int* status) noexcept {
    // Kept deliberately: mu is a rate, and x < 0 is refused rather than given density 0.
    if (any_unusable(x, mu) || x < 0 || !(mu > 0) || std::isinf(mu)) return reject(status);
    if (std::isinf(x)) return accept(0.0, status);
    return accept(narrow(Real(mu) * std::exp(-Real(x) * mu)), status);
}

ZEMATH_API double cauchypdf(double x, double a, double b, int* status) noexcept {
    if (any_unusable(x, a, b) || !std::isfinite(a) || !(b > 0) || std::isinf(b)) {
        return reject(status);
    }
    if (std::isinf(x)) return accept(0.0, status);
    const Real d = Real(x) - a;
    return accept(narrow(b / (kPi * (d * d + Real(b) * b))), status);
}

ZEMATH_API double lappdf(double x, double mu, double b, int* status) noexcept {
    if (any_unusable(x, mu, b) || !std::isfinite(mu) || !(b > 0) || std::isinf(b)) {
        return reject(status);
    }
    if (std::isinf(x)) return accept(0.0, status);
    return accept(narrow(std::exp(-std::fabs(Real(x) - mu) / b) / (2 * Real(b))), status);
}

// ---- log-normal ------------------------------------------------------------------------
// The status is tested before every write here too: the hosts always pass one, but a
// null pointer must not crash the library.

ZEMATH_API double lognpdf(double x, double mu, double sigma, int* status) noexcept {
    if (any_unusable(x, mu, sigma) || !(x > 0) || !std::isfinite(mu) || !(sigma > 0) ||
        std::isinf(sigma)) {
        return reject(status);
    }
    if (std::isinf(x)) return accept(0.0, status);
    const Real z = (std::log(Real(x)) - mu) / sigma;
    return accept(narrow(std::exp(-z * z / 2) / (kSqrt2Pi * sigma * x)), status);
}

ZEMATH_API double logncdf(double x, double mu, double sigma, int tail, int* status) noexcept {
    return routine_frame(status, [&] {
        if (any_unusable(x, mu, sigma) || !(x > 0) || !std::isfinite(mu) || !(sigma > 0) ||
            std::isinf(sigma)) {
            return reject(status);
        }
        const Real z = (std::log(Real(x)) - mu) / sigma;  // +infinity for x = +infinity
        NagError fail;
        const double v = narrow(nag::g01eac_extended(two_sided_tail(tail), z, &fail));
        return finish(v, fail, status);
    });
}

ZEMATH_API double logninv(double p, double mu, double sigma, int* status) noexcept {
    return routine_frame(status, [&] {
        if (any_unusable(p, mu, sigma) || !(p > 0 && p < 1) || !std::isfinite(mu) || !(sigma > 0) ||
            std::isinf(sigma)) {
            return reject(status);
        }
        NagError fail;
        const Real z = nag::g01cec_extended(p, &fail);
        if (fail.failed()) return finish(0.0, fail, status);
        const double v = narrow(std::exp(z * sigma + mu));
        return std::isinf(v) ? reject(status) : accept(v, status);
    });
}

// ---- Weibull (scale a, shape b) --------------------------------------------------------
// Kept deliberately: a <= 0 or b <= 0 gives NANUM with status 0, x < 0 gives 0.

ZEMATH_API double wblpdf(double x, double a, double b, int* status) noexcept {
    if (any_unusable(x, a, b)) return reject(status);
    if (a <= 0 || b <= 0) return quiet_nanum(status);
    if (std::isinf(a) || std::isinf(b)) return reject(status);
    if (x < 0 || std::isinf(x)) return accept(0.0, status);
    if (x == 0) return accept(b < 1 ? kInf : (b == 1 ? 1.0 / a : 0.0), status);
    // (b/a)(x/a)^(b-1) exp(-t) = (b/x) t exp(-t) with t = (x/a)^b = exp(u).
    const Real u = b * log_ratio(x, a);
    const Real t = std::exp(u);
    return accept(narrow(Real(b) / x * std::exp(u - t)), status);
}

ZEMATH_API double wblcdf(double x, double a, double b, int* status) noexcept {
    if (any_unusable(x, a, b)) return reject(status);
    if (a <= 0 || b <= 0) return quiet_nanum(status);
    if (std::isinf(a) || std::isinf(b)) return reject(status);
    if (x <= 0) return accept(0.0, status);
    if (std::isinf(x)) return accept(1.0, status);
    const Real t = std::exp(b * log_ratio(x, a));
    return accept(narrow(-std::expm1(-t)), status);  // 1 - exp(-t) without cancellation
}

ZEMATH_API double wblinv(double p, double a, double b, int* status) noexcept {
    if (any_unusable(p, a, b)) return reject(status);
    if (a <= 0 || b <= 0) return quiet_nanum(status);
    if (std::isinf(a) || std::isinf(b)) return reject(status);
    if (p <= 0 || p >= 1) return quiet_nanum(status);
    const Real log_survival = -std::log1p(-Real(p));  // -ln(1 - p) > 0, exact 1 - p not needed
    const double v = narrow(a * std::exp(std::log(log_survival) / b));
    return std::isinf(v) ? reject(status) : accept(v, status);
}

}  // extern "C"
