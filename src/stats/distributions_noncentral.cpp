// Exports of the non-central t, chi-square, F and beta lower tails, the bivariate normal,
// the studentized range and the real Lambert W function: thin adapters over the back-end
// routines g01gbc, g01gcc, g01gdc, g01gec, g01hac, g01emc, g01fmc and c05bac through the
// family's one adapter (stats/distribution_common.hpp): a missing value (NANUM) in a
// double argument is refused before the call (-110); the routine's error number is handed
// on otherwise.
#include <cmath>
#include <initializer_list>
#include <limits>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/c05.hpp"
#include "platform/nag/c05_eval.hpp"
#include "platform/nag/g01.hpp"
#include "stats/distribution_common.hpp"
#include "zemath/distributions.h"

namespace zemath::stats {

namespace {

// The non-central series take no caller cap here; the back end sums them to convergence.
constexpr int kSeriesTerms = 10000;

}  // namespace

}  // namespace zemath::stats

using namespace zemath;
using namespace zemath::stats;

extern "C" {

ZEMATH_API double nctcdf(double t, double df, double delta, int maxiter, int* status) noexcept {
    return routine_export(status, {t, df, delta}, [&](nag::NagError* fail) {
        return nag::g01gbc(t, df, delta, 0.0, maxiter, fail);
    });
}

ZEMATH_API double ncchi2cdf(double x, double f, double lambda, int* status) noexcept {
    return routine_export(status, {x, f, lambda}, [&](nag::NagError* fail) {
        return nag::g01gcc(x, f, lambda, 0.0, kSeriesTerms, fail);
    });
}

ZEMATH_API double ncfcdf(double f, double df1, double df2, double lambda, int* status) noexcept {
    return routine_export(status, {f, df1, df2, lambda}, [&](nag::NagError* fail) {
        return nag::g01gdc(f, df1, df2, lambda, 0.0, kSeriesTerms, fail);
    });
}

ZEMATH_API double ncbetacdf(double x, double a, double b, double lambda, int* status) noexcept {
    return routine_export(status, {x, a, b, lambda}, [&](nag::NagError* fail) {
        return nag::g01gec(x, a, b, lambda, 0.0, kSeriesTerms, fail);
    });
}

ZEMATH_API double bivarnormcdf(double x, double y, double corre, int* status) noexcept {
    return routine_export(status, {x, y, corre},
                          [&](nag::NagError* fail) { return nag::g01hac(x, y, corre, fail); });
}

ZEMATH_API double srangecdf(double q, double v, int group, int* status) noexcept {
    return routine_export(status, {q, v},
                          [&](nag::NagError* fail) { return nag::g01emc(q, v, group, fail); });
}

ZEMATH_API double srangeinv(double p, double v, int ir, int* status) noexcept {
    return routine_export(status, {p, v},
                          [&](nag::NagError* fail) { return nag::g01fmc(p, v, ir, fail); });
}

ZEMATH_API double lambertW(double x, int branch, int offset, int* status) noexcept {
    // The common call on a short path: a direct argument inside its branch's domain goes
    // straight to the inline evaluation (NaN, the infinities and NANUM fail these tests and
    // take the full checks below; nothing on this path allocates).
    if (offset == 0 && !is_missing(x) && x >= -nag::lambert::kInvEHi) {
        if (branch == 0 && x <= std::numeric_limits<double>::max()) {
            set_status(status, nag::NE_NOERROR);
            return nag::lambert::principal_branch(x);
        }
        if (branch == -1 && x < 0.0) {
            set_status(status, nag::NE_NOERROR);
            return nag::lambert::lower_branch(x);
        }
    }
    return routine_frame(status, [&] {
        if (is_missing(x)) return reject(status);
        if (branch != 0 && branch != -1) return reject(status);
        // The branch point -1/e rounded once to double, exp(-1): callers test their
        // arguments against exactly this edge (kept deliberately).
        const double inv_e = std::exp(-1.0);
        const bool shifted = offset != 0;
        const bool outside =
            branch == 0 ? (shifted ? x < 0.0 : x < -inv_e) : (shifted ? x >= inv_e : x >= 0.0);
        if (outside) return reject(status);
        nag::NagError fail;
        const double value = nag::c05bac(x, branch, shifted, &fail);
        return finish(value, fail, status);
    });
}

}  // extern "C"
