// Empirical mode decomposition: envelopes through the local extremes, their mean and
// amplitude, zero crossings, the stopping test, sifting, and the decomposition into
// intrinsic mode functions (IMFs) and a residue. Internal C++ face of zemath/emd.h; the
// functions here work on clean curves (no missing point, X finite and strictly
// ascending), the exports prepare them.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace zemath::emd {

// Subtractions of the envelope mean after which a candidate is accepted as it stands.
inline constexpr int kMaxSubtractions = 10;
// The remainder counts as vanished when its largest |value| is below this (absolute).
inline constexpr double kVanishingLevel = 1e-10;
// Extremes of each kind mirrored beyond each end of the curve.
inline constexpr int kMirroredExtremes = 2;
// Envelope modes: the interpolation method codes 0..5 of zemath/interpolation.h.
inline constexpr int kLastEnvelopeMode = 5;

struct Thresholds {
    double share_level;  // sigma level of the share test
    double hard_level;   // sigma level no point may exceed
    double tolerance;    // admitted share of points above share_level
};

// A curve with its missing points (X or Y equal to NANUM) taken out. x and y view the
// caller's arrays when nothing is missing, else the compacted copies; `positions` then
// holds the caller's index of each usable point.
struct CleanCurve {
    std::span<const double> x, y;
    std::vector<double> x_store, y_store;
    std::vector<std::size_t> positions;  // empty when every point is usable
    std::size_t caller_size = 0;

    // values (one per usable point) to the caller's layout; missing points get NANUM.
    void scatter(std::span<const double> values, double* out) const;
};

// Takes the missing points out. With require_ascending, the usable X must be finite and
// strictly ascending: returns 0, or -17 when they are not.
int prepare_curve(const double* x, const double* y, std::size_t n, bool require_ascending,
                  CleanCurve& curve);

// Working storage of the envelope step, reused across sifting iterations.
struct EnvelopeWork {
    std::vector<int> maxima, minima;
    std::vector<double> node_x, node_y;
    std::vector<double> slope, c2, c3;  // cubic pieces in power form
};

// Upper and lower envelopes of (x, y) at every x: the interpolation (method `mode`,
// 0..5) of the local maxima, respectively minima, with the nearest kMirroredExtremes
// extremes of each kind mirrored about x.front() and x.back() (their Y kept). Counts of
// maxima and minima go to n_max and n_min. Returns 0, or -18 when there is no maximum or
// no minimum (nothing written then).
int envelopes(std::span<const double> x, std::span<const double> y, int mode,
              std::span<double> upper, std::span<double> lower, int& n_max, int& n_min,
              EnvelopeWork& work);

// In place: upper becomes the envelope mean (u + l)/2, lower the amplitude (u - l)/2.
void mean_and_amplitude(std::span<double> upper_to_mean, std::span<double> lower_to_amp);

// Zero crossings of (x, y) in order: between consecutive values of opposite signs the
// linear root (direction +1 rising, -1 falling); a value equal to 0 is a crossing at its
// own x, its direction the sign of sign(next) - sign(prev) (a missing neighbour counts as
// 0). cross_x and direction may be null; otherwise they receive every crossing (at most
// x.size()). Returns the count.
int zero_crossings(std::span<const double> x, std::span<const double> y, double* cross_x,
                   int* direction);

// The stopping test on an envelope mean and amplitude: true when sifting stops. Each
// point's sigma is |mean| over the AVERAGE |amplitude| (NANUM entries skipped); the share
// of points above share_level is taken over share_denominator points.
bool sifting_done(std::span<const double> mean, std::span<const double> amp, int n_max, int n_min,
                  int n_zero, const Thresholds& thresholds, std::size_t share_denominator);

// At least two maxima and two minima: enough to start (or go on with) a decomposition.
bool enough_extremes(std::span<const double> y);

// One sifting of y: imf receives the candidate accepted by the stopping test (or after
// kMaxSubtractions), remainder y - imf, mean and amp the envelope mean and amplitude of
// the accepted candidate. Returns 0, or -109 when an envelope cannot be built (the
// outputs then hold the state reached). Outputs must not overlap y.
int sift(std::span<const double> x, std::span<const double> y, const Thresholds& thresholds,
         int mode, std::size_t share_denominator, std::span<double> imf,
         std::span<double> remainder, std::span<double> mean, std::span<double> amp);

// The decomposition: store(k, imf) receives each IMF in turn (k = 0, 1, ...; at most
// max_imf), residue the final remainder, n_imf their number. Returns 0; -105 when y has
// too few extremes to start (nothing stored, residue untouched); -106 when the remainder
// vanishes (n_imf and residue as reached); -109 from a sifting (the same).
int decompose(std::span<const double> x, std::span<const double> y, const Thresholds& thresholds,
              int mode, int max_imf, std::size_t share_denominator,
              const std::function<void(int, std::span<const double>)>& store,
              std::vector<double>& residue, int& n_imf);

}  // namespace zemath::emd
