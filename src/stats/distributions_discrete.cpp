// Discrete distribution exports: binocdf, binopdf, poisscdf, poisspdf, hygecdf.
//
// The cdfs call the back-end routines that return both tails and the point probability
// at once (g01bjc, g01bkc, g01blc) and pick the lower tail for tail code 2, the upper for
// 1; those routines take no tail selector, so any other code is refused with the selector
// error 70, after the missing-value check like every export of the family. The two
// densities are computed here (platform/numeric/discrete_terms).
#include <cmath>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/g01.hpp"
#include "platform/numeric/discrete_terms.hpp"
#include "stats/distribution_common.hpp"
#include "zemath/distributions.h"

using namespace zemath;
using namespace zemath::stats;

extern "C" {

ZEMATH_API double binocdf(int k, int n, double p, int tail, int* status) noexcept {
    return routine_export(status, {p}, [&](nag::NagError* fail) {
        double lower = 0.0, upper = 0.0;
        if (refuse_two_output_tail(tail, fail)) return lower;
        nag::g01bjc(n, p, k, tail == 2 ? &lower : nullptr, tail == 1 ? &upper : nullptr, nullptr,
                    fail);
        return tail == 2 ? lower : upper;
    });
}

ZEMATH_API double binopdf(int x, int nt, double p, int* status) noexcept {
    return guard_value([&] {
        if (x < 0 || x > nt || !(p >= 0.0 && p <= 1.0) || is_missing(p)) return reject(status);
        set_status(status, ZEMATH_OK);
        return numeric::binomial_point(x, nt, p);
    });
}

ZEMATH_API double poisscdf(int k, double lambda, int tail, int* status) noexcept {
    return routine_export(status, {lambda}, [&](nag::NagError* fail) {
        double lower = 0.0, upper = 0.0;
        if (refuse_two_output_tail(tail, fail)) return lower;
        nag::g01bkc(lambda, k, tail == 2 ? &lower : nullptr, tail == 1 ? &upper : nullptr, nullptr,
                    fail);
        return tail == 2 ? lower : upper;
    });
}

ZEMATH_API double poisspdf(int x, double lambda, int* status) noexcept {
    return guard_value([&] {
        if (is_missing(lambda) || std::isnan(lambda) || std::isinf(lambda)) return reject(status);
        // Kept deliberately: hosts read 0.0, not NANUM, outside the support.
        if (x < 0 || lambda <= 0.0) {
            set_status(status, ZEMATH_ERR_STATS_INPUT);
            return 0.0;
        }
        set_status(status, ZEMATH_OK);
        return numeric::poisson_point(x, lambda);
    });
}

ZEMATH_API double hygecdf(int k, int m, int n, int l, int tail, int* status) noexcept {
    return routine_export(status, {}, [&](nag::NagError* fail) {
        double lower = 0.0, upper = 0.0;
        if (refuse_two_output_tail(tail, fail)) return lower;
        nag::g01blc(n, l, m, k, tail == 2 ? &lower : nullptr, tail == 1 ? &upper : nullptr, nullptr,
                    fail);
        return tail == 2 ? lower : upper;
    });
}

}  // extern "C"
