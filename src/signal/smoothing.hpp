// One-dimensional smoothers: the shared end padding, Savitzky-Golay smoothing and
// differentiation, adjacent averages, binomial smoothing, least-squares polynomials, the
// FFT low-pass smoother and local regression. Internal C++ face of zemath/smoothing.h.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace zemath {

// A caller's array of n values as a view; n has been checked non-negative.
inline std::span<const double> span_of(const double* p, int n) {
    return {p, static_cast<std::size_t>(n)};
}

// Running count of a window's non-finite values (NANUM is not one of them), so that a NaN
// or an infinity reaches only the windows that hold it: a running sum that took it in would
// stay NaN long after it left the window.
struct NonFinite {
    std::size_t nans = 0, pos = 0, neg = 0;
    // Adds (step 1) or removes (step -1) v when it is not finite; true when it was.
    bool count(double v, int step) {
        if (std::isfinite(v)) return false;
        std::size_t& c = std::isnan(v) ? nans : v > 0 ? pos : neg;
        c += static_cast<std::size_t>(step);
        return true;
    }
    // The window's mean when it holds a non-finite value (what summing it directly gives).
    double mean() const {
        if (nans > 0 || (pos > 0 && neg > 0)) return std::numeric_limits<double>::quiet_NaN();
        return pos > 0 ? std::numeric_limits<double>::infinity()
                       : -std::numeric_limits<double>::infinity();
    }
    bool any() const { return nans + pos + neg > 0; }
};

// Virtual values beyond the ends of x for the end modes 1..5 (mode 0 has none):
// left[k] is the value at position -1-k (k < left.size()), right[k] the value at
// x.size()+k. Each side is built from a source run of left_run / right_run end points
// (from the opposite end for mode 3); mode 4 fits a least-squares line to the run.
// x must hold at least one value; runs are clipped to the data.
void pad_ends(std::span<const double> x, int mode, std::size_t left_run, std::size_t right_run,
              std::span<double> left, std::span<double> right);

// Savitzky-Golay convolution coefficients for offsets -left..right: the coefficient set
// whose dot product with a window yields the local polynomial's coefficient of degree
// deriv (sample units, no factor deriv!). Empty on a singular normal matrix.
std::vector<double> savgol_coefficients(int left, int right, int order, int deriv);

// Least-squares polynomial of the given degree through (x, y), coefficients from the
// constant term upward into coef (degree + 1 values). Points with a missing x or y are
// skipped. Returns 0, -18 when fewer than degree + 1 usable points remain, -1 when the
// system is rank deficient.
int polynomial_fit(std::span<const double> x, std::span<const double> y, int degree,
                   std::span<double> coef);

// Horner evaluation of the polynomial (constant term first).
double polynomial_value(std::span<const double> coef, double x) noexcept;

// The filters behind the exports, arguments already checked.
int savitzky_golay(std::span<const double> in, double* out, int left, int right, int order,
                   int deriv, int end_mode);
int adjacent_average(std::span<const double> x, double* out, int half, int end_mode, bool weighted);
// Mean of the non-missing values over [i - left, i + right] cut at the ends (NANUM when
// none); out may alias x.
void cut_window_average(std::span<const double> x, double* out, std::size_t left,
                        std::size_t right);
int binomial_passes(std::span<const double> in, double* out, int end_mode, int passes);
// Percentile rule: the statistics family's code (0 or 2 from the filter's flag).
int median_filter(std::span<const double> x, double* out, int half, double percent, int end_mode,
                  int rule);
// Local regression; span is read and the fraction used written back.
int loess_smooth(std::span<const double> x, std::span<const double> y, double* out, double& span,
                 int method, int degree_flag, bool show_progress);

}  // namespace zemath
