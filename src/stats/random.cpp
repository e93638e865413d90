// Random-sample exports: each call checks its arguments, sets up a fresh generator state
// on its own stack (g05kcc, non-repeatable, generator 1, seed words pre-filled with the
// library's constants), runs one back-end generator and returns its error code.
//
// Checks, in order: out NULL or n <= 0 -> -151; required table pointers NULL -> -151;
// option codes -> -151; parameters NaN, infinite or NANUM -> -151 (the back end would
// take NANUM, a tiny finite number, as a valid location, so it is refused here); then the
// back end's own checks (positive codes, documented in random.h).
#include "zemath/random.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "frame/nrvec.hpp"
#include "platform/nag/g05.hpp"

using namespace zemath;

namespace {

// NaN, infinite or missing.
bool unusable(double v) {
    return !std::isfinite(v) || is_missing(v);
}

bool any_unusable(std::initializer_list<double> values) {
    for (double v : values) {
        if (unusable(v)) return true;
    }
    return false;
}

bool any_unusable(const double* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (unusable(values[i])) return true;
    }
    return false;
}

// A fresh, non-repeatable state per call: the seed words start with the pre-filled
// constants and are replaced by g05kcc.
nag::G05State fresh_state() {
    nag::G05State state;
    nag::g05kcc(1, state);
    return state;
}

// The common shape of the one-call generators.
template <class T, class Generate>
int generate(T* out, int n, std::initializer_list<double> parameters, Generate call) {
    if (out == nullptr || n <= 0) return ZEMATH_ERR_PARAM_RANGE;
    if (any_unusable(parameters)) return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&] {
        nag::G05State state = fresh_state();
        nag::NagError fail;
        call(state, &fail);
        return fail.code;
    });
}

}  // namespace

extern "C" {

ZEMATH_API int normrnd(double* out, int n, double mean, double variance) noexcept {
    return generate(out, n, {mean, variance}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05lac(mean, variance, n, out, s, f);
    });
}

ZEMATH_API int unifrnd(double* out, int n, double a, double b) noexcept {
    return generate(out, n, {a, b},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lgc(a, b, n, out, s, f); });
}

ZEMATH_API int exprnd(double* out, int n, double mean) noexcept {
    return generate(out, n, {mean},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05ljc(mean, n, out, s, f); });
}

ZEMATH_API int betarnd(double* out, int n, double a, double b) noexcept {
    return generate(out, n, {a, b},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lec(a, b, n, out, s, f); });
}

ZEMATH_API int gamrnd(double* out, int n, double a, double b) noexcept {
    return generate(out, n, {a, b},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lfc(a, b, n, out, s, f); });
}

ZEMATH_API int chi2rnd(double* out, int n, int df) noexcept {
    return generate(out, n, {},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lcc(df, n, out, s, f); });
}

ZEMATH_API int trnd(double* out, int n, int df) noexcept {
    return generate(out, n, {},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lbc(df, n, out, s, f); });
}

ZEMATH_API int frnd(double* out, int n, int df1, int df2) noexcept {
    return generate(out, n, {}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05ldc(df1, df2, n, out, s, f);
    });
}

ZEMATH_API int caurnd(double* out, int n, double median, double semi_iqr) noexcept {
    return generate(out, n, {median, semi_iqr}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05llc(median, semi_iqr, n, out, s, f);
    });
}

ZEMATH_API int lognrnd(double* out, int n, double mu, double sigma2) noexcept {
    return generate(out, n, {mu, sigma2}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05lkc(mu, sigma2, n, out, s, f);
    });
}

ZEMATH_API int lgsrnd(double* out, int n, double a, double b) noexcept {
    return generate(out, n, {a, b},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lnc(a, b, n, out, s, f); });
}

ZEMATH_API int wblrnd(double* out, int n, double a, double b) noexcept {
    return generate(out, n, {a, b},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05lmc(a, b, n, out, s, f); });
}

ZEMATH_API int trirnd(double* out, int n, double xmin, double xmode, double xmax) noexcept {
    return generate(out, n, {xmin, xmode, xmax}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05lhc(xmin, xmode, xmax, n, out, s, f);
    });
}

ZEMATH_API int binornd(int* out, int n, int trials, double p) noexcept {
    return generate(out, n, {p}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05mjc(trials, p, n, out, s, f);
    });
}

ZEMATH_API int geornd(int* out, int n, double p) noexcept {
    return generate(out, n, {p},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05mbc(p, n, out, s, f); });
}

ZEMATH_API int nbinrnd(int* out, int n, int m, double p) noexcept {
    return generate(out, n, {p},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05mcc(m, p, n, out, s, f); });
}

ZEMATH_API int poissrnd(int* out, int n, double lambda) noexcept {
    return generate(out, n, {lambda},
                    [&](nag::G05State& s, nag::NagError* f) { nag::g05mkc(lambda, n, out, s, f); });
}

ZEMATH_API int hygernd(int* out, int n, int population, int sample, int successes) noexcept {
    return generate(out, n, {}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05mlc(population, sample, successes, n, out, s, f);
    });
}

ZEMATH_API int unidrnd(int* out, int n, int lowest, int highest) noexcept {
    return generate(out, n, {}, [&](nag::G05State& s, nag::NagError* f) {
        nag::g05mac(lowest, highest, n, out, s, f);
    });
}

ZEMATH_API int disrnd(int* out, int n, const double* table, int table_size, int first_value,
                      int table_is_cdf) noexcept {
    if (out == nullptr || n <= 0 || table == nullptr) return ZEMATH_ERR_PARAM_RANGE;
    if (table_is_cdf != 0 && table_is_cdf != 1) return ZEMATH_ERR_PARAM_RANGE;
    const bool size_ok = table_size >= 1 && table_size <= nag::g05mzc_max_table_size;
    if (size_ok && any_unusable(table, static_cast<std::size_t>(table_size)))
        return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&] {
        // The reference vector of the indexed search; an invalid size is refused by the
        // generator before it looks at the (then empty) vector.
        NRVec<double> reference(size_ok ? nag::g05mzc_reference_size(table_size) : 0);
        nag::G05State state = fresh_state();
        nag::NagError fail;
        nag::g05mzc(nag::Nag_ModeRNG::Nag_InitializeAndGenerate, first_value, table, table_size,
                    table_is_cdf ? nag::Nag_TableType::Nag_CDF : nag::Nag_TableType::Nag_PDF, n,
                    out, state, reference.data(), reference.size(), &fail);
        return fail.code;
    });
}

ZEMATH_API int mvnrnd(double* out, int samples, int dimension, const double* mean,
                      const double* covariance) noexcept {
    if (out == nullptr || samples <= 0 || mean == nullptr || covariance == nullptr)
        return ZEMATH_ERR_PARAM_RANGE;
    const bool dimension_ok = dimension >= 1 && dimension <= nag::g05lzc_max_dimension;
    if (dimension_ok) {
        const auto m = static_cast<std::size_t>(dimension);
        if (any_unusable(mean, m) || any_unusable(covariance, m * m)) return ZEMATH_ERR_PARAM_RANGE;
    }
    return guard_status([&] {
        NRVec<double> reference(dimension_ok ? nag::g05lzc_reference_size(dimension) : 0);
        nag::G05State state = fresh_state();
        nag::NagError fail;
        // One set-up call (which also checks the dimension), then every vector from one
        // scratch vector allocated once.
        nag::g05lzc(nag::Nag_ModeRNG::Nag_InitializeReference, dimension, mean, covariance,
                    dimension, nullptr, state, reference.data(), reference.size(), &fail);
        if (fail.failed()) return fail.code;
        NRVec<double> scratch(dimension);
        nag::g05lzc_generate(dimension, mean, reference.data(), out, samples, state,
                             scratch.data());
        return fail.code;
    });
}

ZEMATH_API int permrnd(double* x, int n) noexcept {
    if (x == nullptr || n <= 0) return ZEMATH_ERR_PARAM_RANGE;
    const double first = x[0], last = x[n - 1];
    if (any_unusable({first, last})) return ZEMATH_ERR_PARAM_RANGE;
    if (n == 1) return ZEMATH_OK;  // one value, one order; no step to define
    return guard_status([&] {
        // Kept deliberately: the values permuted are the evenly spaced sequence from x[0]
        // to x[n-1]; callers pass only the two ends and rely on the interior being ignored.
        NRVec<int> index(n);
        for (int i = 0; i < n; ++i) index[i] = i;
        nag::G05State state = fresh_state();
        nag::NagError fail;
        nag::g05nac(index.data(), n, state, &fail);
        if (fail.failed()) return fail.code;
        const double intervals = n - 1;
        const double step = (last - first) / intervals;
        // Ends of opposite signs near +-DBL_MAX: the span overflows (and so may
        // first + i * step), so each value is the weighted mean of the ends, whose two
        // terms have opposite signs and cannot overflow.
        // A step that rounds up (ends a few denormals apart: 0 to 234 units over 62
        // intervals steps by 4) carries the last values past x[n-1]: every value is held
        // between the ends.
        const bool span_overflows = !std::isfinite(last - first);
        const double lo = std::min(first, last), hi = std::max(first, last);
        for (int i = 0; i < n; ++i) {
            const double t = index[i] / intervals;
            x[i] = index[i] == n - 1 ? last
                   : span_overflows  ? first * (1.0 - t) + last * t
                                     : std::clamp(first + index[i] * step, lo, hi);
        }
        return static_cast<int>(ZEMATH_OK);
    });
}

}  // extern "C"
