// One-dimensional smoothers over caller arrays.
//
// Savitzky-Golay: convolution coefficients from the normal equations of the local
// least-squares polynomial, solved by LU decomposition with partial pivoting on abscissae
// scaled to [-1, 1] (the solution is the same; the scaling keeps the normal matrix well
// conditioned), applied as a blocked convolution over the padded data; end mode 0 fits
// polynomials to the first and last windows. Adjacent averages: one pass with a
// compensated running sum and count over a window whose bounds only move forward.
// Binomial: repeated (1, 2, 1)/4 passes in place; beyond 1024 passes and 2^26 point
// updates all passes at once in the frequency domain of the end mode's symmetric extension (FFTW
// real transforms), so that the time is O(n log n) whatever the pass count. Polynomial fit:
// Householder QR of the column-scaled Vandermonde matrix. Accuracy: the coefficients agree with an
// SVD least-squares solution to about 1e-15 relative for the windows in use; the convolution is a
// plain dot product. Status codes are those documented in zemath/smoothing.h. Reference: A.
// Savitzky, M. J. E. Golay, Anal. Chem. 36 (1964) 1627-1639.
#include "signal/smoothing.hpp"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/fft/fft_filter.hpp"
#include "platform/util/approx.hpp"
#include "zemath/smoothing.h"

namespace zemath {
namespace {

// Below this spread a run of abscissae or values counts as a single point (mode 4).
constexpr double kFlatRun = 1e-11;

// Least-squares line through run[0..r-1] at abscissae 0..r-1; false when degenerate.
bool fit_run_line(std::span<const double> run, double& intercept, double& slope) {
    const std::size_t r = run.size();
    if (r < 2 || static_cast<double>(r - 1) < kFlatRun) return false;
    const auto [lo, hi] = std::minmax_element(run.begin(), run.end());
    if (*hi - *lo < kFlatRun) return false;
    const double t_mean = 0.5 * static_cast<double>(r - 1);
    double v_mean = 0.0;
    for (double v : run) v_mean += v;
    v_mean /= static_cast<double>(r);
    double sxy = 0.0, sxx = 0.0;
    for (std::size_t j = 0; j < r; ++j) {
        const double dt = static_cast<double>(j) - t_mean;
        sxy += dt * (run[j] - v_mean);
        sxx += dt * dt;
    }
    slope = sxy / sxx;
    intercept = v_mean - slope * t_mean;
    return true;
}

// Mean of the first two values of a run; a one-point run gives that point.
double degenerate_run_value(std::span<const double> run) {
    return run.size() >= 2 ? 0.5 * (run[0] + run[1]) : run[0];
}

}  // namespace

void pad_ends(std::span<const double> x, int mode, std::size_t left_run, std::size_t right_run,
              std::span<double> left, std::span<double> right) {
    const std::size_t n = x.size();
    auto at = [&](std::size_t k) { return x[std::min(k, n - 1)]; };
    switch (mode) {
        case 1:  // mirror, the end point repeated once
            for (std::size_t k = 0; k < left.size(); ++k) left[k] = at(k);
            for (std::size_t k = 0; k < right.size(); ++k) right[k] = x[n - 1 - std::min(k, n - 1)];
            break;
        case 2:
            std::fill(left.begin(), left.end(), x[0]);
            std::fill(right.begin(), right.end(), x[n - 1]);
            break;
        case 3:  // periodic
            for (std::size_t k = 0; k < left.size(); ++k) left[k] = x[n - 1 - (k % n)];
            for (std::size_t k = 0; k < right.size(); ++k) right[k] = x[k % n];
            break;
        case 4: {
            const std::size_t lr = std::clamp<std::size_t>(left_run, 1, n);
            const std::size_t rr = std::clamp<std::size_t>(right_run, 1, n);
            const auto lsrc = x.subspan(0, lr), rsrc = x.subspan(n - rr, rr);
            double a = 0.0, b = 0.0;
            if (fit_run_line(lsrc, a, b)) {
                for (std::size_t k = 0; k < left.size(); ++k)
                    left[k] = a - b * static_cast<double>(k + 1);
            } else {
                std::fill(left.begin(), left.end(), degenerate_run_value(lsrc));
            }
            if (fit_run_line(rsrc, a, b)) {
                for (std::size_t k = 0; k < right.size(); ++k)
                    right[k] = a + b * static_cast<double>(rr + k);
            } else {
                // A one-point run is the end value itself, never a read past the data.
                std::fill(right.begin(), right.end(),
                          rr >= 2 ? degenerate_run_value(rsrc) : x[n - 1]);
            }
            break;
        }
        default:  // 5: zeros
            std::fill(left.begin(), left.end(), 0.0);
            std::fill(right.begin(), right.end(), 0.0);
            break;
    }
}

std::vector<double> savgol_coefficients(int left, int right, int order, int deriv) {
    const int w = left + 1 + right, m = order + 1;
    // Offsets scaled by s; the coefficient of degree d in sample units is the scaled one
    // divided by s^d.
    const double s = std::max({left, right, 1});
    Eigen::MatrixXd a(w, m);
    for (int j = 0; j < w; ++j) {
        const double t = (j - left) / s;
        double p = 1.0;
        for (int c = 0; c < m; ++c, p *= t) a(j, c) = p;
    }
    const Eigen::MatrixXd normal = a.transpose() * a;
    Eigen::PartialPivLU<Eigen::MatrixXd> lu(normal);
    // Row deriv of the inverse: the normal matrix is symmetric, so solve for column deriv.
    Eigen::VectorXd unit = Eigen::VectorXd::Zero(m);
    unit(deriv) = 1.0;
    const Eigen::VectorXd z = lu.solve(unit);
    const double rcond = lu.rcond();
    // A reciprocal condition number below 1e-15 (a few ulps) leaves no correct digit in the
    // solution.
    if (!z.allFinite() || !(rcond > 1e-15)) return {};
    const Eigen::VectorXd c = a * z;
    std::vector<double> coef(static_cast<std::size_t>(w));
    const double unscale = std::pow(s, -deriv);
    for (int j = 0; j < w; ++j) coef[static_cast<std::size_t>(j)] = c(j) * unscale;
    return coef;
}

int polynomial_fit(std::span<const double> x, std::span<const double> y, int degree,
                   std::span<double> coef) {
    std::vector<double> px, py;
    const std::size_t n = std::min(x.size(), y.size());
    px.reserve(n);
    py.reserve(n);
    double scale = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        if (is_missing(x[i]) || is_missing(y[i])) continue;
        px.push_back(x[i]);
        py.push_back(y[i]);
        scale = std::max(scale, std::fabs(x[i]));
    }
    const auto rows = static_cast<Eigen::Index>(px.size()), cols = Eigen::Index{degree} + 1;
    if (rows < cols) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!(scale > 0.0) || !std::isfinite(scale)) scale = 1.0;
    // Columns x^m / scale^m: the same least-squares solution, a far better conditioned QR.
    Eigen::MatrixXd a(rows, cols);
    Eigen::VectorXd b(rows);
    for (Eigen::Index i = 0; i < rows; ++i) {
        const double t = px[static_cast<std::size_t>(i)] / scale;
        double p = 1.0;
        for (Eigen::Index c = 0; c < cols; ++c, p *= t) a(i, c) = p;
        b(i) = py[static_cast<std::size_t>(i)];
    }
    Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(a);
    if (qr.rank() < cols) return ZEMATH_ERR_GENERAL;
    const Eigen::VectorXd sol = qr.solve(b);
    double unscale = 1.0;
    for (Eigen::Index c = 0; c < cols; ++c, unscale /= scale)
        coef[static_cast<std::size_t>(c)] = sol(c) * unscale;
    return ZEMATH_OK;
}

double polynomial_value(std::span<const double> coef, double x) noexcept {
    double v = 0.0;
    for (std::size_t k = coef.size(); k-- > 0;) v = v * x + coef[k];
    return v;
}

namespace {

// out[i] = sum_j c[j] * p[i + j] for i < count, computed in blocks so the inner loop is a
// vectorisable multiply-add over contiguous memory.
void correlate(const double* p, std::span<const double> c, double* out, std::size_t count) {
    constexpr std::size_t kBlock = 512;
    double acc[kBlock];
    for (std::size_t start = 0; start < count; start += kBlock) {
        const std::size_t len = std::min(kBlock, count - start);
        const double* base = p + start;
        const double c0 = c[0];
        for (std::size_t b = 0; b < len; ++b) acc[b] = c0 * base[b];
        for (std::size_t j = 1; j < c.size(); ++j) {
            const double cj = c[j];
            const double* src = base + j;
            for (std::size_t b = 0; b < len; ++b) acc[b] += cj * src[b];
        }
        std::memcpy(out + start, acc, len * sizeof(double));
    }
}

// Coefficient a_m of the fitted polynomial turned into that of its d-th derivative.
std::vector<double> derivative_coefficients(const std::vector<double>& coef, int d) {
    std::vector<double> out;
    for (std::size_t m = static_cast<std::size_t>(d); m < coef.size(); ++m) {
        double factor = 1.0;
        for (std::size_t k = m - static_cast<std::size_t>(d) + 1; k <= m; ++k)
            factor *= static_cast<double>(k);
        out.push_back(coef[m] * factor);
    }
    return out;
}

// Mode 0 end: fit the window starting at data index first (abscissae relative to it, the
// same polynomial as against the indices themselves) and evaluate at index from..to-1
// into out[0..to-from-1].
int fit_end(std::span<const double> in, std::size_t first, std::size_t w, int order, int deriv,
            std::size_t from, std::size_t to, double* out) {
    std::vector<double> t(w), coef(static_cast<std::size_t>(order) + 1);
    for (std::size_t j = 0; j < w; ++j) t[j] = static_cast<double>(j);
    const int status = polynomial_fit(t, in.subspan(first, w), order, coef);
    if (status != ZEMATH_OK) return ZEMATH_ERR_GENERAL;
    const std::vector<double> poly = deriv > 0 ? derivative_coefficients(coef, deriv) : coef;
    for (std::size_t i = from; i < to; ++i)
        out[i - from] = polynomial_value(poly, static_cast<double>(i - first));
    return ZEMATH_OK;
}

}  // namespace

int savitzky_golay(std::span<const double> in, double* out, int left, int right, int order,
                   int deriv, int end_mode) {
    const std::size_t n = in.size(), nl = static_cast<std::size_t>(left),
                      nr = static_cast<std::size_t>(right), w = nl + 1 + nr;
    const std::vector<double> c = savgol_coefficients(left, right, order, deriv);
    if (c.empty()) return ZEMATH_ERR_GENERAL;
    if (end_mode != 0) {
        std::vector<double> lpad(nl), rpad(nr);
        // Source runs of max(2, side count) points; mode 4 always the two end points.
        const std::size_t lrun = end_mode == 4 ? 2 : std::max<std::size_t>(2, nl);
        const std::size_t rrun = end_mode == 4 ? 2 : std::max<std::size_t>(2, nr);
        pad_ends(in, end_mode, lrun, rrun, lpad, rpad);
        // Only the windows that reach past an end go through small padded buffers
        // (W <= n, so both fit inside the data); the interior reads the input directly.
        std::vector<double> head(2 * nl + nr), tail(nl + 2 * nr);
        for (std::size_t k = 0; k < nl; ++k) head[nl - 1 - k] = lpad[k];
        std::copy_n(in.begin(), nl + nr, head.begin() + static_cast<std::ptrdiff_t>(nl));
        std::copy_n(in.begin() + static_cast<std::ptrdiff_t>(n - nr - nl), nl + nr, tail.begin());
        for (std::size_t k = 0; k < nr; ++k) tail[nl + nr + k] = rpad[k];
        correlate(head.data(), c, out, nl);
        correlate(in.data(), c, out + nl, n - nl - nr);
        correlate(tail.data(), c, out + (n - nr), nr);
        return ZEMATH_OK;
    }
    // Mode 0: polynomial fits to the first and last windows, convolution in between.
    // The end fits come first, so a failing fit writes nothing.
    const std::size_t left_end = deriv > 0 ? nl : nl + 1;
    std::vector<double> head(left_end), tail(nr);
    if (fit_end(in, 0, w, order, deriv, 0, left_end, head.data()) != ZEMATH_OK ||
        fit_end(in, n - w, w, order, deriv, n - nr, n, tail.data()) != ZEMATH_OK)
        return ZEMATH_ERR_GENERAL;
    if (n - nr > left_end)
        correlate(in.data() + (left_end - nl), c, out + left_end, n - nr - left_end);
    std::copy(head.begin(), head.end(), out);
    std::copy(tail.begin(), tail.end(), out + (n - nr));
    return ZEMATH_OK;
}

namespace {

constexpr std::size_t kResumPeriod = 4096;

// The mean of the non-missing values of data over a window [lo(i), hi(i)] whose bounds
// never move backward, for the outputs first <= i < last; NANUM for a window without
// values. The running sum holds the finite values only; the non-finite ones are counted.
template <class Value, class Bounds>
void running_mean(Value value, std::size_t first, std::size_t last, Bounds bounds, double* out) {
    if (first >= last) return;
    double sum = 0.0;
    std::size_t used = 0;
    NonFinite odd;
    std::size_t lo = bounds(first).first, hi = lo;  // current window is [lo, hi)
    // A plain running sum, summed afresh over the window every max(4096, window) steps:
    // the rounding of the additions and removals cannot build up, at O(1) cost per point.
    std::size_t since_resum = 0;
    for (std::size_t i = first; i < last; ++i) {
        const auto [want_lo, want_hi] = bounds(i);  // inclusive bounds
        for (; hi <= want_hi; ++hi) {
            const double v = value(hi);
            const bool missing = is_missing(v);
            sum += missing || odd.count(v, 1) ? 0.0 : v;
            used += missing ? 0 : 1;
        }
        for (; lo < want_lo; ++lo) {
            const double v = value(lo);
            const bool missing = is_missing(v);
            sum -= missing || odd.count(v, -1) ? 0.0 : v;
            used -= missing ? 0 : 1;
        }
        if (used == 0) {
            sum = 0.0;  // an empty window sums to exactly 0
            since_resum = 0;
        } else if (++since_resum >= std::max<std::size_t>(kResumPeriod, hi - lo)) {
            sum = 0.0;
            for (std::size_t k = lo; k < hi; ++k) {
                const double v = value(k);
                sum += is_missing(v) || !std::isfinite(v) ? 0.0 : v;
            }
            since_resum = 0;
        }
        out[i] = used == 0 ? kNanum : odd.any() ? odd.mean() : sum / static_cast<double>(used);
    }
}

// True when some value is missing or not finite (the plain window means take neither).
bool has_missing(std::span<const double> x) {
    bool any = false;  // no early exit: the plain loop vectorises
    for (double v : x) any |= is_missing(v) || !std::isfinite(v);
    return any;
}

// out[i] = mean of x[i - left .. i + right] for a <= i < b, every value a number
// (left <= a, b + right <= x.size()). Four blocks of outputs run side by side, each a
// running sum started afresh from its own window, so the four additions per step do not
// wait on each other; a block holds at most max(4096, window) outputs, which bounds the
// rounding a running sum can gather as the plain running mean does.
void window_means(const double* x, double* out, std::size_t a, std::size_t b, std::size_t left,
                  std::size_t right) {
    const std::size_t w = left + 1 + right;
    const double inv = 1.0 / static_cast<double>(w);
    auto fresh = [&](std::size_t i) {
        double s = 0.0;
        for (std::size_t k = i - left; k <= i + right; ++k) s += x[k];
        return s;
    };
    std::size_t block = std::max(w, std::min(kResumPeriod, (b - a + 3) / 4));
    std::size_t i = a;
    for (; b - i >= 4 * block; i += 4 * block) {
        double s[4];
        for (std::size_t c = 0; c < 4; ++c) {
            s[c] = fresh(i + c * block);
            out[i + c * block] = s[c] * inv;
        }
        for (std::size_t j = 1; j < block; ++j) {
            for (std::size_t c = 0; c < 4; ++c) {
                const std::size_t k = i + c * block + j;  // output k: x[k + right] enters
                s[c] += x[k + right] - x[k - left - 1];
                out[k] = s[c] * inv;
            }
        }
    }
    while (i < b) {  // the rest, one block after another
        const std::size_t len = std::min(block, b - i);
        double s = fresh(i);
        out[i] = s * inv;
        for (std::size_t j = 1; j < len; ++j) {
            s += x[i + j + right] - x[i + j - left - 1];
            out[i + j] = s * inv;
        }
        i += len;
    }
}

// First two non-missing values scanning inward from one end; false if fewer exist.
bool inward_pair(std::span<const double> x, bool from_left, double& e0, double& e1) {
    int found = 0;
    const std::size_t n = x.size();
    for (std::size_t k = 0; k < n && found < 2; ++k) {
        const double v = x[from_left ? k : n - 1 - k];
        if (is_missing(v)) continue;
        (found == 0 ? e0 : e1) = v;
        ++found;
    }
    return found == 2;
}

}  // namespace

int adjacent_average(std::span<const double> x, double* out, int half, int end_mode,
                     bool weighted) {
    const std::size_t n = x.size(), h = static_cast<std::size_t>(half);
    const bool shrinking = end_mode == 0 || end_mode == 5;
    // Virtual values for modes 1..4: lpad[k] at position -1-k, rpad[k] at n+k.
    std::vector<double> lpad(shrinking ? 0 : h), rpad(shrinking ? 0 : h);
    if (end_mode == 4) {
        double l0 = 0, l1 = 0, r0 = 0, r1 = 0;
        if (!inward_pair(x, true, l0, l1) || !inward_pair(x, false, r0, r1))
            return ZEMATH_ERR_KERNEL;
        for (std::size_t k = 0; k < h; ++k) {
            lpad[k] = l0 + static_cast<double>(k + 1) * (l0 - l1);
            rpad[k] = r0 + static_cast<double>(k + 1) * (r0 - r1);
        }
    } else if (!shrinking) {
        pad_ends(x, end_mode, h, h, lpad, rpad);
    }
    // Padded position p (0 = virtual position -h) of modes 1..4.
    auto padded = [&](std::size_t p) {
        return p < h ? lpad[h - 1 - p] : p < h + n ? x[p - h] : rpad[p - h - n];
    };
    // Writing straight into out needs out apart from the input.
    std::vector<double> buffer(out == x.data() ? n : 0);
    double* target = out == x.data() ? buffer.data() : out;
    if (!weighted) {
        const auto direct = [&](std::size_t p) { return x[p]; };
        const auto cut = [&](std::size_t i) {
            const std::size_t r = std::min({i, n - 1 - i, h});
            return std::pair{i - r, i + r};
        };
        const auto whole = [&](std::size_t i) { return std::pair{i, i + 2 * h}; };
        // Without missing values the windows that stay inside the data are plain means of
        // 2h + 1 values; only the first and last h go through the general running mean.
        const bool interior = n > 2 * h && !has_missing(x);
        const std::size_t head = interior ? h : n, tail = interior ? n - h : n;
        if (shrinking) {
            running_mean(direct, 0, head, cut, target);
            running_mean(direct, tail, n, cut, target);
        } else {
            running_mean(padded, 0, head, whole, target);
            running_mean(padded, tail, n, whole, target);
        }
        if (interior) window_means(x.data(), target, h, n - h, h, h);
    } else {
        // Weights 1 - (d / (h + 1))^2, held once for the whole call.
        std::vector<double> weight(h + 1);
        const double divisor = static_cast<double>(h) + 1.0;
        for (std::size_t d = 0; d <= h; ++d) {
            const double q = static_cast<double>(d) / divisor;
            weight[d] = 1.0 - q * q;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t r = shrinking ? std::min({i, n - 1 - i, h}) : h;
            double sw = 0.0, swx = 0.0;
            for (std::size_t p = i + h - r; p <= i + h + r; ++p) {  // padded positions
                const double v = shrinking ? x[p - h] : padded(p);
                if (is_missing(v)) continue;
                const std::size_t d = p > i + h ? p - i - h : i + h - p;
                sw += weight[d];
                swx += weight[d] * v;
            }
            target[i] = sw > 0.0 ? swx / sw : kNanum;
        }
    }
    if (target != out) std::copy(buffer.begin(), buffer.end(), out);
    return ZEMATH_OK;
}

void cut_window_average(std::span<const double> x, double* out, std::size_t left,
                        std::size_t right) {
    const std::size_t n = x.size();
    const auto cut = [&](std::size_t i) {
        return std::pair{i > left ? i - left : 0, std::min(n - 1, i + std::min(right, n))};
    };
    const auto direct = [&](std::size_t p) { return x[p]; };
    // Windows inside the data hold left + 1 + right values when none is missing.
    const bool interior = left < n && right < n - left && !has_missing(x);
    const std::size_t head = interior ? left : n, tail = interior ? n - right : n;
    running_mean(direct, 0, head, cut, out);
    running_mean(direct, tail, n, cut, out);
    if (interior) window_means(x.data(), out, left, n - right, left, right);
}

// Beyond this many passes, when they also exceed this many point updates (nSize x
// nPasses), the passes are applied at once: the transforms cost about as much as a
// thousand passes at a million points (lengths with large prime factors included).
constexpr int kIteratedPasses = 1024;
constexpr std::int64_t kIteratedPassWork = std::int64_t{1} << 26;

// The gain of `passes` passes of (1, 2, 1)/4 at angular frequency w: the kernel's
// response cos^2(w/2) to the power passes, formed as exp(passes log1p(-sin^2(w/2))) so
// that gains near 1 keep their digits at millions of passes.
double binomial_gain(double w, int passes) {
    const double s = std::sin(0.5 * w);
    return std::exp(static_cast<double>(passes) * std::log1p(-s * s));
}

// All passes at once: each end mode's virtual neighbour makes the pass a symmetric
// convolution of an extension of the data (periodic, mirrored about the end points,
// mirrored between samples; for linear extrapolation the ends stay fixed, so the data
// less the line through its ends is odd about them), so the passes multiply frequency k
// of that extension by the kernel's gain to the power passes. The same linear map as the
// repeated passes, in O(n log n); it agrees with them to rounding for finite data (a NaN
// or infinity spreads to every output). Filters data in place.
int binomial_spectral(std::span<double> data, int end_mode, int passes) {
    const std::size_t n = data.size();
    const double pi = 3.14159265358979323846, dn = static_cast<double>(n);
    const int size = static_cast<int>(n);
    std::vector<double> gains(n);
    switch (end_mode) {
        case 3:  // periodic: real FFT bins k = 0..n/2 at w = 2 pi k / n
            for (std::size_t k = 0; k <= n / 2; ++k)
                gains[k] = binomial_gain(2.0 * pi * static_cast<double>(k) / dn, passes);
            return fft_fft_filter(size, data.data(), gains);
        case 1:  // x[-1] = x[1]
            for (std::size_t k = 0; k < n; ++k)
                gains[k] = binomial_gain(pi * static_cast<double>(k) / (dn - 1.0), passes);
            return fft_symmetric_filter(size, data.data(), FftSymmetry::whole_even, gains);
        case 2:  // x[-1] = x[0]
            for (std::size_t k = 0; k < n; ++k)
                gains[k] = binomial_gain(pi * static_cast<double>(k) / dn, passes);
            return fft_symmetric_filter(size, data.data(), FftSymmetry::half_even, gains);
        default: {  // 0 and 4: the end points stay, the rest relaxes toward their line
            if (n < 3) return ZEMATH_OK;
            const double first = data[0], last = data[n - 1];
            const auto line = [&](std::size_t i) {
                return first + (last - first) * (static_cast<double>(i) / (dn - 1.0));
            };
            for (std::size_t i = 1; i + 1 < n; ++i) data[i] -= line(i);
            for (std::size_t k = 0; k + 2 < n; ++k)
                gains[k] = binomial_gain(pi * static_cast<double>(k + 1) / (dn - 1.0), passes);
            const int status =
                fft_symmetric_filter(size - 2, data.data() + 1, FftSymmetry::whole_odd, gains);
            for (std::size_t i = 1; i + 1 < n; ++i) data[i] += line(i);
            return status;
        }
    }
}

int binomial_passes(std::span<const double> in, double* out, int end_mode, int passes) {
    const std::size_t n = in.size();
    if (passes > kIteratedPasses && static_cast<std::int64_t>(n) * passes > kIteratedPassWork) {
        std::vector<double> data(in.begin(), in.end());  // out is written on success only
        const int status = binomial_spectral(data, end_mode, passes);
        if (status == ZEMATH_OK) std::copy(data.begin(), data.end(), out);
        return status;
    }
    if (out != in.data()) std::memmove(out, in.data(), n * sizeof(double));
    for (int p = 0; p < passes; ++p) {
        double before, after;
        switch (end_mode) {
            case 1:  // mirror about the end point, which is not repeated
                before = out[1];
                after = out[n - 2];
                break;
            case 2:
                before = out[0];
                after = out[n - 1];
                break;
            case 3:
                before = out[n - 1];
                after = out[0];
                break;
            default:  // 0 and 4: linear extrapolation
                before = 2.0 * out[0] - out[1];
                after = 2.0 * out[n - 1] - out[n - 2];
                break;
        }
        double prev = before;
        for (std::size_t i = 0; i < n; ++i) {
            const double cur = out[i], next = i + 1 < n ? out[i + 1] : after;
            out[i] = (prev + cur) * 0.25 + (cur + next) * 0.25;
            prev = cur;
        }
    }
    return ZEMATH_OK;
}

}  // namespace zemath

using namespace zemath;

ZEMATH_API int zemath_savitsky_golay(const double* pIn, double* pOut, int nSize, int nLeft,
                                     int nRight, int nPolyOrder, int nDeriv,
                                     int nEndMode) noexcept {
    if (nRight < 0) nRight = nLeft;
    if (nLeft < 0 || nPolyOrder < 1 || nDeriv < 0 || static_cast<unsigned>(nEndMode) > 5 ||
        (nDeriv > 0 && nPolyOrder < nDeriv))
        return ZEMATH_ERR_TOO_FEW_POINTS;
    const std::int64_t w = std::int64_t{nLeft} + 1 + nRight;
    if (w - 1 < nPolyOrder || w > nSize) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (pIn == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    return guard_status([&]() -> int {
        return savitzky_golay(span_of(pIn, nSize), pOut, nLeft, nRight, nPolyOrder, nDeriv,
                              nEndMode);
    });
}

ZEMATH_API int zemath_savitsky_golay_derivative(const double* pX, const double* pY, double* pOut,
                                                int nSize, int nLeft, int nRight, int nPolyOrder,
                                                int nDeriv, bool bSnapZeroCrossings) noexcept {
    if (pX == nullptr || pY == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_POINTS;  // x[1] must exist to be compared
    if (util::approx_equal(pX[1], pX[0])) return ZEMATH_ERR_GENERAL;
    if (nRight == -1) nRight = nLeft;
    if (nSize < 3 || nLeft < 1 || nRight < 1 || std::int64_t{nLeft} + nRight > nSize)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    const int status = zemath_savitsky_golay(pY, pOut, nSize, nLeft, nRight, nPolyOrder, nDeriv, 0);
    if (status != ZEMATH_OK) return status;
    const auto n = static_cast<std::size_t>(nSize);
    // Step from the first two abscissae only (even spacing assumed). The end points from
    // the polynomial derivative already carry d!, so for d >= 2 they get it twice: kept
    // deliberately, callers rely on these values.
    double scale = std::pow(std::fabs(1.0 / (pX[1] - pX[0])), nDeriv);
    for (int k = 2; k <= nDeriv; ++k) scale *= k;
    if (!util::approx_equal(scale, 1.0)) {
        for (std::size_t i = 0; i < n; ++i) pOut[i] *= scale;
    }
    if (pX[0] > pX[1] && nDeriv % 2 == 1) {
        for (std::size_t i = 0; i < n; ++i) pOut[i] = -pOut[i];
    }
    if (bSnapZeroCrossings) {
        for (std::size_t i = 0; i + 1 < n;) {
            if (pOut[i] * pOut[i + 1] < 0.0) {
                pOut[i + 1] = 0.0;
                i += 2;
            } else {
                i += 1;
            }
        }
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_adjave_smooth(const double* pIn, double* pOut, int nSize, int nHalf,
                                    int nEndMode, bool bWeighted) noexcept {
    if (nSize == 1) return ZEMATH_OK;
    if (pIn == nullptr || pOut == nullptr || nHalf < 0 || nHalf >= nSize ||
        static_cast<unsigned>(nEndMode) > (bWeighted ? 4u : 5u))
        return ZEMATH_ERR_KERNEL;
    const int status = guard_status(
        [&] { return adjacent_average(span_of(pIn, nSize), pOut, nHalf, nEndMode, bWeighted); });
    return status == ZEMATH_OK ? ZEMATH_OK : ZEMATH_ERR_KERNEL;
}

ZEMATH_API int zemath_adj_average(double* pOut, const double* pIn, int nSize, int nLeft, int nRight,
                                  int nMissingAsZero) noexcept {
    if (pOut == nullptr || pIn == nullptr || nLeft < 0 || nRight < 0) return ZEMATH_ERR_GENERAL;
    if (nSize < 2) return ZEMATH_OK;
    return guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize);
        const auto left = static_cast<std::size_t>(nLeft), right = static_cast<std::size_t>(nRight);
        const std::span<const double> in = span_of(pIn, nSize);
        // A copy only when the output is the input or missing values become zeros.
        if (pOut != pIn && !(nMissingAsZero == 1 && has_missing(in))) {
            cut_window_average(in, pOut, left, right);
            return ZEMATH_OK;
        }
        std::vector<double> data(pIn, pIn + n);
        if (nMissingAsZero == 1) {
            for (double& v : data) {
                if (is_missing(v)) v = 0.0;
            }
        }
        cut_window_average(data, pOut, left, right);
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_binomial_smooth(int nSize, const double* pIn, double* pOut, int nEndMode,
                                      int nPasses) noexcept {
    if (nSize < 2 || nPasses < 1) return ZEMATH_ERR_SIZE_MISMATCH;
    if (static_cast<unsigned>(nEndMode) > 4) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (pIn == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    return guard_status(
        [&]() -> int { return binomial_passes(span_of(pIn, nSize), pOut, nEndMode, nPasses); });
}

ZEMATH_API int zemath_smooth(int nSize, const double* pIn, double* pOut, int nHalf, int nMethod,
                             int nEndMode, int nRight, int nPolyOrder, int nDeriv, double dPercent,
                             int bWeighted, int bPercentileMethod, int nPasses) noexcept {
    if (nSize < 1) return ZEMATH_ERR_SIZE_MISMATCH;
    if (pIn == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    // End mode 5 is refused here although two of the filters accept it: kept
    // deliberately, hosts rely on the dispatcher's narrower set.
    if (static_cast<unsigned>(nEndMode) > 4 || static_cast<unsigned>(nMethod) > 3)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    switch (nMethod) {
        case 0:
            return zemath_adjave_smooth(pIn, pOut, nSize, nHalf, nEndMode, bWeighted != 0);
        case 1:
            return zemath_savitsky_golay(pIn, pOut, nSize, nHalf, nRight, nPolyOrder, nDeriv,
                                         nEndMode);
        case 2:
            return zemath_median_filter(nSize, pIn, pOut, nHalf, dPercent, nEndMode,
                                        bPercentileMethod != 0);
        default:
            return zemath_binomial_smooth(nSize, pIn, pOut, nEndMode, nPasses);
    }
}

ZEMATH_API int zemath_polynomial_fit(const double* pX, const double* pY, int nSize, int nDegree,
                                     double* pCoef) noexcept {
    if (pX == nullptr || pY == nullptr || pCoef == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nDegree < 0 || nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    // Never more usable points than nSize: refused before nDegree + 1 slots are allocated.
    if (nDegree >= nSize) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&]() -> int {
        std::vector<double> coef(static_cast<std::size_t>(nDegree) + 1);
        const int status = polynomial_fit(span_of(pX, nSize), span_of(pY, nSize), nDegree, coef);
        if (status == ZEMATH_OK) std::copy(coef.begin(), coef.end(), pCoef);
        return status;
    });
}

ZEMATH_API double zemath_polynomial(const double* pCoef, int nDegree, double dX) noexcept {
    if (pCoef == nullptr || nDegree < 0 || is_missing(dX)) return NANUM;
    return polynomial_value(span_of(pCoef, nDegree + 1), dX);
}

ZEMATH_API int zemsp_fft_filter_smoothing(int nSize, const double* pIn, double* pOut,
                                          double dCutoff) noexcept {
    if (pIn == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize);
        std::vector<double> window(n / 2 + 1);
        // The signal spans the unit interval; one sample is a single point of it.
        const double interval = nSize > 1 ? 1.0 / (nSize - 1) : 1.0;
        int status = fft_filter_window(nSize, kFftLowPass, dCutoff, interval, 0.0, 1, window);
        if (status != ZEMATH_OK) return status;
        // Nothing can fail once the transforms run: pOut is written on success only.
        return fft_fft_filter(nSize, pIn, pOut, window);
    });
}
