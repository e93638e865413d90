// FFT filter substitute on FFTW 3 (double precision).
//
// Method: the real signal is transformed with a real-to-complex plan (any length; FFTW
// picks mixed-radix, Rader or Bluestein algorithms, O(n log n)), each bin multiplied by
// the window's gain, and transformed back (complex-to-real) with the 1/n scaling.
// Windows are rectangular (gains 0 or 1). Signals with mirrored or odd ends are filtered
// the same way in the basis of their symmetric extension, by FFTW's real even and odd
// transforms (DCT-I, DCT-II/III, DST-I), which need no complex storage. Accuracy: the transforms'
// rounding, about eps * log2(n) relative to the signal's norm. Plans are made with FFTW_ESTIMATE
// (no timing runs) under one process-wide lock: FFTW's planner is not reentrant, while executing a
// plan is. Failure codes: -151 bad argument, -19 allocation or planning failure. Reference: M.
// Frigo, S. G. Johnson, "The design and implementation of FFTW3", Proc. IEEE 93 (2005) 216-231.
#include "platform/fft/fft_filter.hpp"

#include <fftw3.h>

#include <cmath>
#include <cstring>
#include <mutex>

#include "zemath/status.h"

namespace zemath {
namespace {

std::mutex& planner_lock() {
    static std::mutex lock;  // FFTW's planner shares state between threads
    return lock;
}

struct Buffer {
    void* p;
    explicit Buffer(std::size_t bytes) : p(fftw_malloc(bytes)) {}
    ~Buffer() { fftw_free(p); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
};

struct Plan {
    fftw_plan p = nullptr;
    ~Plan() {
        if (p != nullptr) {
            std::lock_guard<std::mutex> guard(planner_lock());
            fftw_destroy_plan(p);
        }
    }
};

}  // namespace

int fft_filter_window(int n, int type, double cutoff, double interval, double upper_cutoff,
                      int keep_mean, std::span<double> window) {
    if (n < 1 || type < kFftLowPass || type > kFftBandBlock) return ZEMATH_ERR_PARAM_RANGE;
    if (!(cutoff >= 0.0) || !(interval > 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    const bool band = type == kFftBandPass || type == kFftBandBlock;
    if (band && !(upper_cutoff >= 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    const int bins = n / 2 + 1;
    if (window.size() < static_cast<std::size_t>(bins)) return ZEMATH_ERR_PARAM_RANGE;
    const double resolution = 1.0 / (static_cast<double>(n) * interval);
    for (int k = 0; k < bins; ++k) {
        const double f = k * resolution;
        bool keep = false;
        switch (type) {
            case kFftLowPass:
                keep = f < cutoff;
                break;
            case kFftHighPass:
                keep = f >= cutoff;
                break;
            case kFftBandPass:
                keep = f >= cutoff && f < upper_cutoff;
                break;
            default:
                keep = !(f >= cutoff && f < upper_cutoff);
                break;
        }
        window[static_cast<std::size_t>(k)] = keep ? 1.0 : 0.0;
    }
    if (keep_mean != 0) window[0] = 1.0;
    return ZEMATH_OK;
}

int fft_fft_filter(int n, double* data, std::span<const double> window) {
    if (n < 1 || data == nullptr || window.size() < static_cast<std::size_t>(n / 2 + 1))
        return ZEMATH_ERR_PARAM_RANGE;
    const auto size = static_cast<std::size_t>(n), bins = size / 2 + 1;
    Buffer real(sizeof(double) * size), spectrum(sizeof(fftw_complex) * bins);
    if (real.p == nullptr || spectrum.p == nullptr) return ZEMATH_ERR_ALLOC;
    auto* r = static_cast<double*>(real.p);
    auto* c = static_cast<fftw_complex*>(spectrum.p);
    Plan forward, backward;
    {
        std::lock_guard<std::mutex> guard(planner_lock());
        forward.p = fftw_plan_dft_r2c_1d(n, r, c, FFTW_ESTIMATE);
        backward.p = fftw_plan_dft_c2r_1d(n, c, r, FFTW_ESTIMATE | FFTW_DESTROY_INPUT);
    }
    if (forward.p == nullptr || backward.p == nullptr) return ZEMATH_ERR_ALLOC;
    std::memcpy(r, data, size * sizeof(double));
    fftw_execute(forward.p);
    const double scale = 1.0 / static_cast<double>(n);
    for (std::size_t k = 0; k < bins; ++k) {
        const double g = window[k] * scale;
        c[k][0] *= g;
        c[k][1] *= g;
    }
    fftw_execute(backward.p);
    std::memcpy(data, r, size * sizeof(double));
    return ZEMATH_OK;
}

int fft_symmetric_filter(int n, double* data, FftSymmetry symmetry, std::span<const double> gains) {
    const int least = symmetry == FftSymmetry::whole_even ? 2 : 1;
    if (n < least || data == nullptr || gains.size() < static_cast<std::size_t>(n))
        return ZEMATH_ERR_PARAM_RANGE;
    const auto size = static_cast<std::size_t>(n);
    Buffer a(sizeof(double) * size), b(sizeof(double) * size);
    if (a.p == nullptr || b.p == nullptr) return ZEMATH_ERR_ALLOC;
    auto* x = static_cast<double*>(a.p);
    auto* coefficients = static_cast<double*>(b.p);
    fftw_r2r_kind forward_kind = FFTW_REDFT00, backward_kind = FFTW_REDFT00;
    double factor = 2.0 * (n - 1);  // the transform pair multiplies by this
    if (symmetry == FftSymmetry::half_even) {
        forward_kind = FFTW_REDFT10;
        backward_kind = FFTW_REDFT01;
        factor = 2.0 * n;
    } else if (symmetry == FftSymmetry::whole_odd) {
        forward_kind = backward_kind = FFTW_RODFT00;
        factor = 2.0 * (n + 1.0);
    }
    Plan forward, backward;
    {
        std::lock_guard<std::mutex> guard(planner_lock());
        forward.p = fftw_plan_r2r_1d(n, x, coefficients, forward_kind, FFTW_ESTIMATE);
        backward.p =
            fftw_plan_r2r_1d(n, coefficients, x, backward_kind, FFTW_ESTIMATE | FFTW_DESTROY_INPUT);
    }
    if (forward.p == nullptr || backward.p == nullptr) return ZEMATH_ERR_ALLOC;
    std::memcpy(x, data, size * sizeof(double));
    fftw_execute(forward.p);
    for (std::size_t k = 0; k < size; ++k) coefficients[k] *= gains[k] / factor;
    fftw_execute(backward.p);
    std::memcpy(data, x, size * sizeof(double));
    return ZEMATH_OK;
}

int fft_complex(std::span<const std::complex<double>> in, std::span<std::complex<double>> out,
                bool inverse) {
    const std::size_t n = in.size();
    if (n == 0) return ZEMATH_OK;
    Buffer a(sizeof(fftw_complex) * n), b(sizeof(fftw_complex) * n);
    if (a.p == nullptr || b.p == nullptr) return ZEMATH_ERR_ALLOC;
    auto* ia = static_cast<fftw_complex*>(a.p);
    auto* ob = static_cast<fftw_complex*>(b.p);
    Plan plan;
    {
        std::lock_guard<std::mutex> guard(planner_lock());
        plan.p = fftw_plan_dft_1d(static_cast<int>(n), ia, ob,
                                  inverse ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE);
    }
    if (plan.p == nullptr) return ZEMATH_ERR_ALLOC;
    std::memcpy(ia, in.data(), n * sizeof(fftw_complex));
    fftw_execute(plan.p);
    const double scale = inverse ? 1.0 / static_cast<double>(n) : 1.0;
    for (std::size_t k = 0; k < n; ++k)
        out[k] = std::complex<double>(ob[k][0] * scale, ob[k][1] * scale);
    return ZEMATH_OK;
}

}  // namespace zemath
