// Fuzz target: the mode decomposition family on arrays exactly as long as their counts.
// Signals are raw doubles or tones built from the input with special values mixed in, X
// an even ramp, a sorted or a raw array. Properties: refused calls leave every output
// untouched, the decomposition fills at most the rows given and no row past its count,
// counts of extremes and crossings lie within the point count, and crossings are written
// only up to their count.
#include <algorithm>
#include <cmath>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;
using zemath_fuzz::require;

namespace {

constexpr double kSentinel = -777.25;

bool untouched(const std::vector<double>& v, std::size_t from = 0) {
    return std::all_of(v.begin() + static_cast<std::ptrdiff_t>(std::min(from, v.size())), v.end(),
                       [](double e) { return e == kSentinel; });
}

std::vector<double> signal(Input& in, int n) {
    if (in.byte() % 3 == 0) return in.reals(n);
    std::vector<double> y(static_cast<std::size_t>(n > 0 ? n : 0));
    const double w1 = 0.05 + in.byte() / 64.0, w2 = 0.002 + in.byte() / 2048.0;
    const double a = in.real(), b = 1.0 + in.byte() / 16.0;
    for (std::size_t i = 0; i < y.size(); ++i)
        y[i] =
            a * std::sin(w1 * static_cast<double>(i)) + b * std::sin(w2 * static_cast<double>(i));
    for (int k = in.byte() % 4; k > 0 && !y.empty(); --k) y[in.byte() % y.size()] = in.real();
    return y;
}

std::vector<double> abscissas(Input& in, int n) {
    const int kind = in.pick(3);
    if (kind == 2) return in.reals(n);
    std::vector<double> x(static_cast<std::size_t>(n > 0 ? n : 0));
    if (kind == 1) {
        x = in.reals(n);
        std::sort(x.begin(), x.end(), [](double p, double q) { return p < q; });
        return x;
    }
    const double step = 0.5 + in.byte() / 32.0;
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<double>(i) * step;
    if (in.byte() % 8 == 0 && !x.empty()) x[in.byte() % x.size()] = in.real();
    return x;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(5);
    // The decomposition and the sifting run up to eleven envelope passes per row over every
    // point: 128 points give them plenty of extremes at a rate a long run can afford. The
    // single-pass exports take up to 300.
    const int n = in.count(which <= 1 ? 128 : 300);
    const std::size_t len = static_cast<std::size_t>(n > 0 ? n : 0);
    std::vector<double> x = abscissas(in, n), y = signal(in, n);
    const double* px = in.byte() % 32 ? data_or_null(x) : nullptr;
    const double* py = in.byte() % 32 ? data_or_null(y) : nullptr;
    const int mode = in.byte() % 16 ? in.pick(7) - 1 : in.integer();
    std::vector<double> a(len, kSentinel), b(len, kSentinel), c(len, kSentinel), d(len, kSentinel);
    int ia = -5, ib = -5;
    switch (which) {
        case 0: {
            // The rows must exist: large integers only as negative counts.
            const int rows = in.byte() % 16 ? in.pick(6) : std::min(in.integer(), 5);
            const std::size_t cells = rows > 0 ? len * static_cast<std::size_t>(rows) : 0;
            std::vector<double> imf(cells, kSentinel);
            const double t1 = in.byte() % 4 ? 0.05 : in.real();
            const double t2 = in.byte() % 4 ? 0.5 : in.real();
            const double tol = in.byte() % 4 ? 0.05 : in.real();
            const int status = zemath_empirical_mode_decomposition(
                n, px, py, t1, t2, tol, data_or_null(imf), rows, &ia, data_or_null(b), mode);
            if (status == 0 || status == -106 || status == -109) {
                require(ia >= 0 && ia <= rows);
                require(untouched(imf, static_cast<std::size_t>(ia) * len));
                require(!untouched(b) || len == 0);
            } else {
                require(ia == -5 && untouched(imf) && untouched(b));
            }
            break;
        }
        case 1: {
            const int status =
                zemath_emd_stop_sifting(n, px, py, in.real(), in.real(), in.real(), data_or_null(a),
                                        data_or_null(b), data_or_null(c), data_or_null(d), mode);
            if (status != 0) require(untouched(a) && untouched(b) && untouched(c) && untouched(d));
            break;
        }
        case 2:
        case 3: {
            const int status =
                which == 2 ? zemath_emd_envelope_mean_amp(n, px, py, data_or_null(a),
                                                          data_or_null(b), &ia, &ib, mode)
                           : zemath_emd_get_upper_lower_envelope(n, px, py, data_or_null(a),
                                                                 data_or_null(b), &ia, &ib, mode);
            if (status == 0)
                require(ia >= 1 && ib >= 1 && ia <= n && ib <= n);
            else
                require(ia == -5 && ib == -5 && untouched(a) && untouched(b));
            break;
        }
        default: {
            std::vector<int> direction(len, -9);
            const bool want = in.byte() & 1;
            const int status =
                zemath_emd_get_zero_crossing(n, px, py, &ia, want ? data_or_null(a) : nullptr,
                                             want ? data_or_null(direction) : nullptr);
            if (status == 0) {
                require(ia >= 0 && ia <= n);
                require(untouched(a, want ? static_cast<std::size_t>(ia) : 0));
                for (std::size_t k = 0; k < len; ++k)
                    require(k < static_cast<std::size_t>(ia) && want
                                ? direction[k] >= -1 && direction[k] <= 1
                                : direction[k] == -9);
            } else {
                require(ia == -5 && untouched(a));
            }
            break;
        }
    }
    return 0;
}
