// Fuzz target: the smoothers (smoothing.h), the moving statistics (moving.h) and the
// calculus family (calculus.h) on arrays exactly as long as their counts. Checked on each
// call: a refused call leaves every output as it was (the documented exceptions of the
// function integrals aside), a successful one writes only where documented, and the
// integration record's indices lie inside the range integrated.
#include <algorithm>
#include <cmath>

#include "fuzz_input.hpp"
#include "fuzz_props.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::param;
using zemath_fuzz::require;
using zemath_fuzz::same_bits;

namespace {

// Abscissae: fuzzed, sorted fuzzed, or an even grid (many functions want one of these).
std::vector<double> abscissae(Input& in, int n) {
    const int kind = in.pick(4);
    if (kind == 0) {
        const double start = in.real(), step = in.real();
        std::vector<double> x(static_cast<size_t>(n > 0 ? n : 0));
        for (size_t i = 0; i < x.size(); ++i) x[i] = start + step * static_cast<double>(i);
        return x;
    }
    std::vector<double> x = in.reals(n);
    if (kind >= 2) std::sort(x.begin(), x.end());
    if (kind == 3) std::reverse(x.begin(), x.end());
    return x;
}

struct Integrand {
    int kind;
    double a, b, c;
};

double integrand(double x, void* context) {
    const Integrand& f = *static_cast<const Integrand*>(context);
    switch (f.kind) {
        case 0:
            return f.a + x * (f.b + x * f.c);
        case 1:
            return std::sin(f.a * x) * f.b;
        case 2:
            return 1.0 / (x - f.a);
        case 3:
            return x > f.a ? NAN : f.b;
        case 4:
            return std::exp(f.a * x);
        default:
            return std::sqrt(std::fabs(x - f.a));
    }
}

// Runs a call writing out (which may be the input itself) and checks that a refusal
// (non-zero status) left it as it was.
template <class Call>
int checked(std::vector<double>& out, Call call) {
    const std::vector<double> before = out;
    const int status = call();
    if (status != 0) require(same_bits(out, before));
    return status;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(26);
    const int n = in.count(in.byte() & 1 ? 40 : 600);
    const int len = n > 0 ? n : 0;
    std::vector<double> y = in.reals(n);
    std::vector<double> x = abscissae(in, n);
    const std::vector<double> y0 = y, x0 = x;
    const bool null_in = in.byte() % 32 == 0;
    const bool null_out = in.byte() % 32 == 0;
    const bool alias = in.byte() & 1;
    double* py = null_in ? nullptr : data_or_null(y);
    double* px = null_in ? nullptr : data_or_null(x);
    std::vector<double> out = zemath_fuzz::sentinels(len);
    double* po = null_out ? nullptr : data_or_null(out);
    bool inputs_kept = true;  // whether y must come back unchanged
    switch (which) {
        case 0: {
            const int half = param(in, 30), method = param(in, 4), end = param(in, 6);
            const int right = param(in, 30), order = param(in, 8), deriv = param(in, 4);
            const double percent = in.real();
            const int weighted = in.byte() & 1, rule = in.byte() & 1;
            const int passes = in.integer();  // any count: huge ones are applied at once
            checked(out, [&] {
                return zemath_smooth(n, py, po, half, method, end, right, order, deriv, percent,
                                     weighted, rule, passes);
            });
            break;
        }
        case 1: {
            const int left = param(in, 30), right = param(in, 30), order = param(in, 10);
            const int deriv = param(in, 5), end = param(in, 6);
            checked(out, [&] {
                return zemath_savitsky_golay(py, po, n, left, right, order, deriv, end);
            });
            break;
        }
        case 2: {
            const int left = param(in, 30), right = param(in, 30), order = param(in, 10);
            const int deriv = param(in, 5);
            const bool snap = in.byte() & 1;
            checked(out, [&] {
                return zemath_savitsky_golay_derivative(px, py, po, n, left, right, order, deriv,
                                                        snap);
            });
            break;
        }
        case 3: {
            const int half = param(in, 40), end = param(in, 6);
            const bool weighted = in.byte() & 1;
            checked(out, [&] { return zemath_adjave_smooth(py, po, n, half, end, weighted); });
            break;
        }
        case 4: {
            const int left = param(in, 40), right = param(in, 40), zero = in.byte() & 1;
            std::vector<double>& target = alias ? y : out;
            double* pt = alias ? py : po;
            inputs_kept = !alias;
            const int status =
                checked(target, [&] { return zemath_adj_average(pt, py, n, left, right, zero); });
            if (n < 2) require(same_bits(target, alias ? y0 : zemath_fuzz::sentinels(len)));
            (void)status;
            break;
        }
        case 5: {
            const int half = param(in, 40), end = param(in, 6);
            const double percent = in.real();
            const bool rule = in.byte() & 1;
            const int status = zemath_median_filter(n, py, po, half, percent, end, rule);
            // -155 (every window missing) is a result, not a refusal; others write nothing.
            if (status != 0 && status != -155)
                require(zemath_fuzz::all_equal(out, zemath_fuzz::kSentinel));
            break;
        }
        case 6: {
            const int end = param(in, 5), passes = in.integer();
            std::vector<double>& target = alias ? y : out;
            double* pt = alias ? py : po;
            inputs_kept = !alias;
            checked(target, [&] { return zemath_binomial_smooth(n, py, pt, end, passes); });
            break;
        }
        case 7: {
            const double cutoff = in.real();
            checked(out, [&] { return zemsp_fft_filter_smoothing(n, py, po, cutoff); });
            break;
        }
        case 8:
        case 9: {
            const int method = param(in, 3), degree = in.byte() & 1;
            double span = in.byte() & 1 ? in.real() : static_cast<double>(in.byte() + 1) / 256.0;
            const double span0 = span;
            const int m = std::min(n, 300);  // loess is O(n^2): keep each call quick
            const int status =
                which == 8 ? zemath_loess_xUnevenly(m, method, degree, &span, px, py, po, false)
                           : zemath_loess_xEvenly(m, method, degree, &span, py, po, false);
            if (status != 0) {
                require(same_bits(span, span0));
                require(zemath_fuzz::all_equal(out, zemath_fuzz::kSentinel));
            } else {
                require(span > 0.0 && span <= 1.0);
                for (int i = std::max(m, 0); i < len; ++i)
                    require(same_bits(out[i], zemath_fuzz::kSentinel));
            }
            break;
        }
        case 10: {
            const int degree = param(in, 12);
            // Exactly degree + 1 slots when the degree can succeed, else a short array.
            const int slots = degree >= 0 && degree < len ? degree + 1 : std::min(len, 4);
            std::vector<double> coef = zemath_fuzz::sentinels(slots);
            const int status =
                zemath_polynomial_fit(px, py, n, degree, null_out ? nullptr : data_or_null(coef));
            if (status != 0) require(zemath_fuzz::all_equal(coef, zemath_fuzz::kSentinel));
            break;
        }
        case 11: {
            const int degree = std::min(param(in, 12), len - 1);
            const double v =
                zemath_polynomial(null_in ? nullptr : data_or_null(y), degree, in.real());
            if (null_in || degree < 0) require(v == NANUM);
            break;
        }
        case 12:
        case 13:
        case 14:
        case 15:
        case 16:
        case 17:
        case 18: {
            const int period = param(in, 60), zero = in.byte() & 1, seed = in.byte() & 1;
            std::vector<double> weights = in.reals(std::max(period, 0) <= len ? period : 0);
            std::vector<double>& target = alias ? y : out;
            double* pt = alias ? py : po;
            inputs_kept = !alias;
            checked(target, [&] {
                switch (which) {
                    case 12:
                        return zemath_emovavg(pt, py, n, period, seed, zero);
                    case 13:
                        return zemath_mmovavg(pt, py, n, period, zero);
                    case 14:
                        return zemath_tmovavg(pt, py, n, period, zero);
                    case 15:
                        return zemath_wmovavg(pt, py, n, data_or_null(weights), period, zero);
                    case 16:
                        return zemath_movrms(pt, py, n, period, zero);
                    case 17:
                        return zemath_movslope(pt, py, n, period, zero);
                    default:
                        return zemath_d_running_ave_circular(pt, py, n, period, zero);
                }
            });
            break;
        }
        case 19: {
            inputs_kept = false;
            const int mode = in.integer();
            const int status = zemath_derivative(px, py, n, mode);
            if (status != 0) require(same_bits(y, y0));
            break;
        }
        case 20: {
            int first = in.count(len - 1), last = in.count(len - 1);
            if (in.byte() % 16 == 0) first = in.integer();
            const int method = param(in, 2), sort = in.byte() & 1;
            std::vector<double> base = in.byte() & 1 ? in.reals(n) : std::vector<double>();
            zemath_IntegrationResult result;
            std::memset(&result, 0x5A, sizeof result);
            zemath_IntegrationResult before = result;
            if (first >= len || last >= len) break;  // beyond the caller's arrays
            const int status =
                zemath_integrate(px, py, first, last, &result, method, sort, data_or_null(base));
            if (status != 0) {
                require(std::memcmp(&result, &before, sizeof result) == 0);
            } else {
                const int lo = std::min(first, last), hi = std::max(first, last);
                require(result.peak_index >= lo && result.peak_index <= hi);
                require(result.points >= 2 && result.points <= hi - lo + 1);
            }
            break;
        }
        case 21: {
            double area = zemath_fuzz::kSentinel;
            const double from = in.real(), to = in.real();
            const int status =
                zemath_integrate_with_bounds(px, py, n, from, to, null_out ? nullptr : &area);
            if (status != 0) require(same_bits(area, zemath_fuzz::kSentinel));
            break;
        }
        case 22: {
            const int target_kind = in.pick(3);  // 0 out, 1 over X, 2 over Y
            std::vector<double>& target = target_kind == 0 ? out : target_kind == 1 ? x : y;
            double* pt = target_kind == 0 ? po : target_kind == 1 ? px : py;
            inputs_kept = target_kind != 2;
            const int status =
                checked(target, [&] { return zemath_numeric_integral(px, py, n, pt); });
            if (status == 0 && len > 0 && target_kind == 0) require(out[0] == 0.0);
            if (target_kind != 1) require(same_bits(x, x0));
            break;
        }
        case 23:
        case 24: {
            Integrand f{in.pick(6), in.real(), in.real(), in.real()};
            const double from = in.byte() & 1 ? in.real() : static_cast<double>(in.byte()) - 128;
            const double to = in.byte() & 1 ? in.real() : static_cast<double>(in.byte()) - 128;
            const double tolerance = in.byte() & 1 ? in.real() : 1e-8;
            const int levels = param(in, 14);
            double result = zemath_fuzz::kSentinel, error = zemath_fuzz::kSentinel;
            double* pe = in.byte() & 1 ? &error : nullptr;
            zemath_integrand fn = null_in ? nullptr : integrand;
            const int status =
                which == 23 ? zemath_function_integral(fn, &f, from, to, tolerance, &result, pe)
                            : zemath_function_integral_on_new_romberg(fn, &f, from, to, tolerance,
                                                                      levels, &result, pe);
            if (status != 0 && status != -1) {
                require(same_bits(result, zemath_fuzz::kSentinel));
                require(same_bits(error, zemath_fuzz::kSentinel));
            } else {
                require(!same_bits(result, zemath_fuzz::kSentinel));
            }
            break;
        }
        default: {
            const int m = std::min(n, 256);
            const int scales = in.count(6), wavelet = param(in, 2);
            std::vector<double> s = in.reals(scales);
            for (double& v : s)
                if (in.byte() & 1) v = 1.0 + std::fabs(std::fmod(v, 64.0));
            const double w0 = in.byte() & 1 ? in.real() : 6.0;
            const size_t cells = static_cast<size_t>(std::max(m, 0)) * s.size();
            std::vector<double> re(cells, zemath_fuzz::kSentinel),
                im(cells, zemath_fuzz::kSentinel);
            const bool with_im = in.byte() % 4 != 0;
            const int status = zemath_cwt(py, m, data_or_null(s), scales, wavelet, w0,
                                          null_out ? nullptr : data_or_null(re),
                                          with_im ? data_or_null(im) : nullptr);
            if (status != 0) {
                require(zemath_fuzz::all_equal(re, zemath_fuzz::kSentinel));
                require(zemath_fuzz::all_equal(im, zemath_fuzz::kSentinel));
            }
            break;
        }
    }
    if (inputs_kept) require(same_bits(y, y0));
    return 0;
}
