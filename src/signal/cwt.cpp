// Continuous wavelet transform of a sampled signal (unit sampling interval).
//
// Definition: W(a, b) = sum_n x[n] conj(psi_a(n - b)), psi_a(t) = psi(t / a) / sqrt(a),
// over the samples of the signal only (no periodic continuation, no truncation of the
// wavelet), for the Mexican hat psi(t) = 2 / (sqrt(3) pi^(1/4)) (1 - t^2) exp(-t^2 / 2)
// and the Morlet wavelet psi(t) = pi^(-1/4) exp(i w0 t) exp(-t^2 / 2).
// Method: for each scale the sampled wavelet over offsets -(n-1)..(n-1) is convolved with
// the signal by FFT (zero-padded to 3n - 2 points at least, so the circular convolution
// equals the linear one); the signal's transform is computed once. O(n log n) per scale.
// Accuracy: that of the FFT, about eps * log2(n) relative to the transform's magnitude.
// Reference: C. Torrence, G. P. Compo, "A practical guide to wavelet analysis",
// Bull. Amer. Meteor. Soc. 79 (1998) 61-78.
#include <cmath>
#include <complex>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/fft/fft_filter.hpp"
#include "zemath/calculus.h"

namespace zemath {
namespace {

using Complex = std::complex<double>;

Complex wavelet(int kind, double t, double scale, double w0) {
    const double u = t / scale, norm = 1.0 / std::sqrt(scale);
    const double quarter_pi = std::pow(M_PI, -0.25);
    if (kind == ZEMATH_WAVELET_MEXICAN_HAT)
        return 2.0 / std::sqrt(3.0) * quarter_pi * norm * (1.0 - u * u) * std::exp(-0.5 * u * u);
    return quarter_pi * norm * std::exp(-0.5 * u * u) * Complex(std::cos(w0 * u), std::sin(w0 * u));
}

}  // namespace

int continuous_wavelet_transform(std::span<const double> x, std::span<const double> scales,
                                 int kind, double w0, double* out_re, double* out_im) {
    const std::size_t n = x.size(), length = 3 * n;  // >= 3n - 2
    std::vector<Complex> signal(length), spectrum(length), kernel(length), product(length);
    for (std::size_t i = 0; i < n; ++i) signal[i] = is_missing(x[i]) ? 0.0 : x[i];
    int status = fft_complex(signal, spectrum, false);
    if (status != ZEMATH_OK) return status;
    std::vector<Complex> kernel_spectrum(length);
    for (std::size_t s = 0; s < scales.size(); ++s) {
        // g(m) = conj(psi_a(-m)) at circular position m mod length, |m| <= n - 1.
        std::fill(kernel.begin(), kernel.end(), Complex{});
        for (std::size_t m = 0; m < n; ++m) {
            const double t = static_cast<double>(m);
            kernel[m] = std::conj(wavelet(kind, -t, scales[s], w0));
            if (m > 0) kernel[length - m] = std::conj(wavelet(kind, t, scales[s], w0));
        }
        status = fft_complex(kernel, kernel_spectrum, false);
        if (status != ZEMATH_OK) return status;
        for (std::size_t k = 0; k < length; ++k) kernel_spectrum[k] *= spectrum[k];
        status = fft_complex(kernel_spectrum, product, true);
        if (status != ZEMATH_OK) return status;
        for (std::size_t b = 0; b < n; ++b) {
            out_re[s * n + b] = product[b].real();
            if (out_im != nullptr) out_im[s * n + b] = product[b].imag();
        }
    }
    return ZEMATH_OK;
}

}  // namespace zemath

ZEMATH_API int zemath_cwt(const double* pIn, int nSize, const double* pScales, int nScales,
                          int nWavelet, double dParam, double* pOutRe, double* pOutIm) noexcept {
    if (pIn == nullptr || pScales == nullptr || pOutRe == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nScales < 1) return ZEMATH_ERR_TOO_FEW_DERIV;
    if (nWavelet != ZEMATH_WAVELET_MEXICAN_HAT && nWavelet != ZEMATH_WAVELET_MORLET)
        return ZEMATH_ERR_BAD_OPTION;
    if (nWavelet == ZEMATH_WAVELET_MORLET) {
        if (pOutIm == nullptr) return ZEMATH_ERR_NULL_POINTER;
        if (!(dParam > 0.0) || !std::isfinite(dParam)) return ZEMATH_ERR_PARAM_RANGE;
    }
    for (int s = 0; s < nScales; ++s) {
        if (!(pScales[s] > 0.0) || !std::isfinite(pScales[s])) return ZEMATH_ERR_PARAM_RANGE;
    }
    return zemath::guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize), m = static_cast<std::size_t>(nScales);
        std::vector<double> re(n * m), im(pOutIm != nullptr ? n * m : 0);
        const int status = zemath::continuous_wavelet_transform(
            {pIn, n}, {pScales, m}, nWavelet, dParam, re.data(),
            pOutIm != nullptr ? im.data() : nullptr);
        if (status != ZEMATH_OK) return status;
        std::copy(re.begin(), re.end(), pOutRe);
        if (pOutIm != nullptr) std::copy(im.begin(), im.end(), pOutIm);
        return ZEMATH_OK;
    });
}
