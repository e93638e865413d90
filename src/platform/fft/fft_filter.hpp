// FFT filter substitute: frequency-domain filter windows and their application to a real
// signal of any length, on FFTW (real-to-complex and back, double precision).
#pragma once

#include <complex>
#include <span>
#include <vector>

namespace zemath {

// Window type codes.
inline constexpr int kFftLowPass = 4;    // keep frequencies below the cutoff
inline constexpr int kFftHighPass = 5;   // keep frequencies at or above the cutoff
inline constexpr int kFftBandPass = 6;   // keep cutoff <= f < upper_cutoff
inline constexpr int kFftBandBlock = 7;  // remove cutoff <= f < upper_cutoff

// Gains of a rectangular filter window, one per real-FFT bin k = 0..n/2 (window must hold
// n/2 + 1 values): bin k has frequency k / (n * interval); its gain is 1 when the window
// type keeps that frequency, else 0. upper_cutoff is used by the band types only.
// keep_mean: the mean (bin 0) keeps gain 1 whatever the type. Returns 0, or -151 when
// n < 1, the type is unknown, a cutoff is negative or NaN, or interval is not positive.
int fft_filter_window(int n, int type, double cutoff, double interval, double upper_cutoff,
                      int keep_mean, std::span<double> window);

// Filters data (n values) in place: forward real FFT, multiplication of bin k by
// window[k], inverse FFT scaled by 1/n. Returns 0, -151 when n < 1, -19 when FFTW cannot
// allocate or plan.
int fft_fft_filter(int n, double* data, std::span<const double> window);
// The same from in to out (n values each; out may be in, else the two must not overlap).
int fft_fft_filter(int n, const double* in, double* out, std::span<const double> window);

// The symmetric extensions of a real signal whose filtering is a real even or odd
// transform (FFTW's r2r kinds): the extension's frequencies and the transform pair.
enum class FftSymmetry {
    whole_even,  // mirrored about the end points, x[-1] = x[1]: DCT-I (n >= 2),
                 // coefficient k has angular frequency pi k / (n - 1), k = 0..n-1
    half_even,   // mirrored between samples, x[-1] = x[0]: DCT-II and its inverse DCT-III,
                 // coefficient k has angular frequency pi k / n, k = 0..n-1
    whole_odd,   // odd about the points -1 and n, x[-1] = x[n] = 0: DST-I,
                 // coefficient k has angular frequency pi (k + 1) / (n + 1), k = 0..n-1
};

// Filters data (n values) in place in the basis of the symmetric extension: forward
// transform, coefficient k multiplied by gains[k] (n values), inverse transform scaled to
// undo the pair's factor. Returns 0, -151 when n < 1 (n < 2 for whole_even) or gains is
// short, -19 when FFTW cannot allocate or plan.
int fft_symmetric_filter(int n, double* data, FftSymmetry symmetry, std::span<const double> gains);

// Complex transforms of length n (forward: sign -1, no scaling; inverse: sign +1,
// scaled by 1/n), out-of-place. Returns 0 or -19.
int fft_complex(std::span<const std::complex<double>> in, std::span<std::complex<double>> out,
                bool inverse);

}  // namespace zemath
