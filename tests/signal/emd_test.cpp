// Empirical mode decomposition: envelopes, zero crossings, one sifting and a decomposition
// against NumPy/SciPy (tests/reference/gen_emd.py), separation of sums of tones, the
// reconstruction identity, the stopping rule, the deliberate quirks (ten-subtraction cap,
// vanished remainder, IMF rows bounded by the caller's), missing points, and one table of
// refused calls that must leave every output untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "signal/emd.hpp"
#include "zemath/emd.h"
#include "zemath/peaks.h"
#include "zemath/status.h"

namespace {

struct EnvelopeReference {
    int mode, maxima, minima;
    std::vector<double> upper, lower;
};
struct CrossingReference {
    std::vector<double> x, y, cross_x;
    std::vector<int> direction;
};
#include "reference/emd_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSentinel = -777.25;

double max_abs_diff(const std::vector<double>& a, const double* b) {
    double worst = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::fabs(a[i] - b[i]));
    return worst;
}

double correlation(const double* a, const double* b, std::size_t from, std::size_t to) {
    double ma = 0, mb = 0;
    for (std::size_t i = from; i < to; ++i) ma += a[i], mb += b[i];
    ma /= static_cast<double>(to - from);
    mb /= static_cast<double>(to - from);
    double sab = 0, saa = 0, sbb = 0;
    for (std::size_t i = from; i < to; ++i) {
        sab += (a[i] - ma) * (b[i] - mb);
        saa += (a[i] - ma) * (a[i] - ma);
        sbb += (b[i] - mb) * (b[i] - mb);
    }
    return sab / std::sqrt(saa * sbb);
}

std::vector<double> ramp(int n) {
    std::vector<double> x(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = i;
    return x;
}

// Envelopes through the extremes with the mirrored ends, every mode against SciPy.
TEST(EmdEnvelope, MatchesScipyInterpolatorsOnMirroredExtremes) {
    const int n = static_cast<int>(kEnvelopeX.size());
    for (const EnvelopeReference& ref : kEnvelopeReference) {
        SCOPED_TRACE(ref.mode);
        std::vector<double> upper(kEnvelopeX.size()), lower(kEnvelopeX.size());
        int n_max = -1, n_min = -1;
        ASSERT_EQ(zemath_emd_get_upper_lower_envelope(n, kEnvelopeX.data(), kEnvelopeY.data(),
                                                      upper.data(), lower.data(), &n_max, &n_min,
                                                      ref.mode),
                  0);
        EXPECT_EQ(n_max, ref.maxima);
        EXPECT_EQ(n_min, ref.minima);
        // Different tridiagonal solvers: a few hundred units of rounding on values near 1.
        EXPECT_LT(max_abs_diff(ref.upper, upper.data()), 1e-12);
        EXPECT_LT(max_abs_diff(ref.lower, lower.data()), 1e-12);

        std::vector<double> mean(kEnvelopeX.size()), amp(kEnvelopeX.size());
        ASSERT_EQ(zemath_emd_envelope_mean_amp(n, kEnvelopeX.data(), kEnvelopeY.data(), mean.data(),
                                               amp.data(), &n_max, &n_min, ref.mode),
                  0);
        for (std::size_t i = 0; i < mean.size(); ++i) {
            EXPECT_NEAR(mean[i], (ref.upper[i] + ref.lower[i]) / 2, 1e-12);
            EXPECT_NEAR(amp[i], (ref.upper[i] - ref.lower[i]) / 2, 1e-12);
        }
    }
}

// A single maximum and minimum suffice: their mirror images make the linear envelope
// constant, and a missing point keeps NANUM in both envelopes.
TEST(EmdEnvelope, SingleExtremesAndMissingPoints) {
    const std::vector<double> x = {0, 1, 2, 3, 4, 5};
    const std::vector<double> y = {0, 2, 1, NANUM, -1, 0};
    std::vector<double> upper(6), lower(6);
    int n_max = 0, n_min = 0;
    ASSERT_EQ(zemath_emd_get_upper_lower_envelope(6, x.data(), y.data(), upper.data(), lower.data(),
                                                  &n_max, &n_min, 0),
              0);
    EXPECT_EQ(n_max, 1);
    EXPECT_EQ(n_min, 1);
    for (std::size_t i = 0; i < 6; ++i) {
        if (i == 3) {
            EXPECT_EQ(upper[i], NANUM);
            EXPECT_EQ(lower[i], NANUM);
        } else {
            EXPECT_EQ(upper[i], 2.0);
            EXPECT_EQ(lower[i], -1.0);
        }
    }
}

// The envelopes count the extremes of zemath_find_local_extremes over three-point windows,
// plateaus (the leftmost point) and a NaN included.
TEST(EmdEnvelope, ExtremesAreThoseOfTheLocalExtremeDetector) {
    const std::vector<std::vector<double>> signals = {
        {0, 2, 2, 1, 1, 3, 0, 0, 0, 2, -1, -1, 4, 4, 4, 0},
        {1, 0, 0, 1, 1, 0, 2, 2, 0, -1, 3, 3, 3, 3, -2, 5},
        {0, 1, 0, kNaN, 1, -1, 2, -2, 0, 3, 1, -3, 0, 2},
    };
    for (const std::vector<double>& y : signals) {
        const int n = static_cast<int>(y.size());
        const std::vector<double> x = ramp(n);
        std::vector<double> px(y.size()), py(y.size()), upper(y.size()), lower(y.size());
        int n_max = -1, n_min = -1;
        ASSERT_EQ(zemath_emd_get_upper_lower_envelope(n, x.data(), y.data(), upper.data(),
                                                      lower.data(), &n_max, &n_min, 0),
                  0);
        int expect_max = n, expect_min = n;
        ASSERT_EQ(zemath_find_local_extremes(&expect_max, x.data(), y.data(), px.data(), py.data(),
                                             nullptr, 1, 1),
                  0);
        ASSERT_EQ(zemath_find_local_extremes(&expect_min, x.data(), y.data(), px.data(), py.data(),
                                             nullptr, 2, 1),
                  0);
        EXPECT_EQ(n_max, expect_max);
        EXPECT_EQ(n_min, expect_min);
    }
}

TEST(EmdZeroCrossing, MatchesLinearRootsAndZeroRule) {
    for (const CrossingReference& ref : kCrossingReference) {
        const int n = static_cast<int>(ref.x.size());
        std::vector<double> cross(ref.x.size() + 1, kSentinel);
        std::vector<int> direction(ref.x.size() + 1, -9);
        int count = -1;
        ASSERT_EQ(zemath_emd_get_zero_crossing(n, ref.x.data(), ref.y.data(), &count, cross.data(),
                                               direction.data()),
                  0);
        ASSERT_EQ(count, static_cast<int>(ref.cross_x.size()));
        for (int k = 0; k < count; ++k) {
            EXPECT_NEAR(cross[k], ref.cross_x[k], 4e-16 * std::fabs(ref.cross_x[k]) + 1e-300);
            EXPECT_EQ(direction[k], ref.direction[k]) << k;
        }
        EXPECT_EQ(cross[count], kSentinel);  // nothing past the count
        EXPECT_EQ(direction[count], -9);
        int bare = -1;  // the optional outputs may be NULL
        ASSERT_EQ(
            zemath_emd_get_zero_crossing(n, ref.x.data(), ref.y.data(), &bare, nullptr, nullptr),
            0);
        EXPECT_EQ(bare, count);
    }
}

TEST(EmdSifting, MatchesNumpySiftingAndTheTenSubtractionCap) {
    const int n = static_cast<int>(kSiftSignal.size());
    const std::vector<double> x = ramp(n);
    std::vector<double> imf(kSiftSignal.size()), rem(imf.size()), mean(imf.size()), amp(imf.size());
    ASSERT_EQ(zemath_emd_stop_sifting(n, x.data(), kSiftSignal.data(), 0.05, 0.5, 0.05, imf.data(),
                                      rem.data(), mean.data(), amp.data(), 2),
              0);
    EXPECT_LT(max_abs_diff(kSiftImf, imf.data()), 1e-10);
    EXPECT_LT(max_abs_diff(kSiftMean, mean.data()), 1e-10);
    EXPECT_LT(max_abs_diff(kSiftAmp, amp.data()), 1e-10);
    for (std::size_t i = 0; i < imf.size(); ++i) EXPECT_EQ(rem[i], kSiftSignal[i] - imf[i]);

    // dThreshold2 < 0 never lets the test pass: the candidate after exactly ten
    // subtractions is accepted and the call succeeds (-107 is never returned).
    ASSERT_EQ(zemath_emd_stop_sifting(n, x.data(), kSiftSignal.data(), 0.05, -1.0, 0.05, imf.data(),
                                      rem.data(), mean.data(), amp.data(), 2),
              0);
    EXPECT_LT(max_abs_diff(kSiftCappedImf, imf.data()), 1e-9);
}

TEST(EmdDecomposition, MatchesNumpyDecomposition) {
    const int n = static_cast<int>(kSiftSignal.size());
    const std::vector<double> x = ramp(n);
    const int rows = 8;
    std::vector<double> imfs(static_cast<std::size_t>(rows * n)), residue(kSiftSignal.size());
    int count = -1;
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), kSiftSignal.data(), 0.05, 0.5, 0.05,
                                                  imfs.data(), rows, &count, residue.data(), 2),
              kDecomposeStatus);
    ASSERT_EQ(count, static_cast<int>(kDecomposeImfs.size()));
    for (int k = 0; k < count; ++k)
        EXPECT_LT(max_abs_diff(kDecomposeImfs[static_cast<std::size_t>(k)], &imfs[k * n]), 1e-9);
    EXPECT_LT(max_abs_diff(kDecomposeResidue, residue.data()), 1e-9);
}

// Sums of tones with well separated frequencies: IMF k follows tone k (fastest first)
// with correlation above 0.99 away from the ends, and IMFs plus residue give the signal
// back to 1e-12 relative.
struct Tones {
    int n;
    int mode;
    std::vector<double> period, amplitude;
};

TEST(EmdDecomposition, SeparatesTonesAndSumsBackToTheSignal) {
    const Tones cases[] = {
        {4000, 2, {16, 160}, {1.0, 1.0}}, {8000, 2, {10, 60, 400}, {0.5, 1.0, 2.0}},
        {4000, 1, {25, 300}, {1.0, 2.0}}, {4000, 4, {20, 250}, {1.0, 1.5}},
        {3000, 0, {12, 200}, {1.0, 1.0}},
    };
    for (const Tones& c : cases) {
        SCOPED_TRACE(c.mode);
        const auto n = static_cast<std::size_t>(c.n);
        const std::vector<double> x = ramp(c.n);
        std::vector<std::vector<double>> tone(c.period.size(), std::vector<double>(n));
        std::vector<double> y(n, 0.0);
        for (std::size_t k = 0; k < tone.size(); ++k)
            for (std::size_t i = 0; i < n; ++i) {
                tone[k][i] = c.amplitude[k] *
                             std::sin(2 * std::numbers::pi * x[i] / c.period[k] + 0.3 * (k + 1));
                y[i] += tone[k][i];
            }
        const int rows = 12;
        std::vector<double> imfs(n * rows), residue(n);
        int count = 0;
        const int status =
            zemath_empirical_mode_decomposition(c.n, x.data(), y.data(), 0.05, 0.5, 0.05,
                                                imfs.data(), rows, &count, residue.data(), c.mode);
        ASSERT_TRUE(status == 0 || status == ZEMATH_ERR_REMAINDER_VANISHED) << status;
        ASSERT_GE(count, static_cast<int>(tone.size()));
        for (std::size_t k = 0; k < tone.size(); ++k)
            EXPECT_GT(correlation(&imfs[k * n], tone[k].data(), n / 10, n - n / 10), 0.99) << k;
        double scale = 0.0, worst = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            double sum = residue[i];
            for (int k = 0; k < count; ++k) sum += imfs[static_cast<std::size_t>(k) * n + i];
            worst = std::max(worst, std::fabs(sum - y[i]));
            scale = std::max(scale, std::fabs(y[i]));
        }
        EXPECT_LT(worst, 1e-12 * scale);
    }
}

// Sigma is |mean| over the AVERAGE amplitude: a small mean where the amplitude is small
// does not hold sifting back when the amplitude is large elsewhere.
TEST(EmdStoppingTest, RulesInOrder) {
    struct Case {
        std::vector<double> mean, amp;
        int n_max, n_min, n_zero;
        double t1, t2, tol;
        bool done;
    };
    const Case cases[] = {
        // per-point sigma would be 0.5 at point 0 (> t2); against the average 0.5/50.5
        {{0.5, 0.5}, {1.0, 100.0}, 3, 3, 6, 0.05, 0.1, 0.5, true},
        {{0.5, 0.5}, {1.0, 1.0}, 3, 3, 6, 0.05, 0.1, 0.5, false},    // sigma 0.5 > t2
        {{0.0, 0.0}, {1.0, 1.0}, 3, 3, 8, 0.05, 0.5, 0.05, false},   // counts differ by 2
        {{0.0, 0.0}, {1.0, 1.0}, 3, 3, 7, 0.05, 0.5, 0.05, true},    // by 1
        {{0.2, 0.0}, {1.0, 1.0}, 3, 3, 6, 0.1, 0.5, 0.5, true},      // share 1/2 <= 0.5
        {{0.2, 0.0}, {1.0, 1.0}, 3, 3, 6, 0.1, 0.5, 0.49, false},    // share 1/2 > 0.49
        {{0.2, NANUM}, {1.0, NANUM}, 3, 3, 6, 0.1, 0.5, 0.5, true},  // NANUM skipped
    };
    for (const Case& c : cases) {
        const zemath::emd::Thresholds t{c.t1, c.t2, c.tol};
        EXPECT_EQ(
            zemath::emd::sifting_done(c.mean, c.amp, c.n_max, c.n_min, c.n_zero, t, c.mean.size()),
            c.done);
    }
}

std::vector<double> tone(int n, double period) {
    std::vector<double> y(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        y[static_cast<std::size_t>(i)] = std::sin(2 * std::numbers::pi * i / period + 0.3);
    return y;
}

TEST(EmdDecomposition, EndingsAndBounds) {
    const int n = 400;
    const std::vector<double> x = ramp(n);
    const std::vector<double> y = tone(n, 20);
    std::vector<double> imfs(3 * n, kSentinel), residue(n, kSentinel);
    int count = -1;
    // A test that passes at once: the IMF is the signal, the remainder exactly 0, and the
    // vanishing check ends the loop with -106 and one IMF.
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), y.data(), 1e9, 1e9, 1.0, imfs.data(),
                                                  3, &count, residue.data(), 2),
              ZEMATH_ERR_REMAINDER_VANISHED);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(std::vector<double>(imfs.begin(), imfs.begin() + n), y);
    EXPECT_TRUE(std::all_of(residue.begin(), residue.end(), [](double r) { return r == 0.0; }));
    EXPECT_EQ(imfs[n], kSentinel);

    // A signal below 1e-10 throughout vanishes before the first IMF.
    std::vector<double> tiny(y);
    for (double& v : tiny) v *= 1e-11;
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), tiny.data(), 0.05, 0.5, 0.05,
                                                  imfs.data(), 3, &count, residue.data(), 2),
              ZEMATH_ERR_REMAINDER_VANISHED);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(residue, tiny);

    // Rows are bounded by nMaxIMF: one row asked, one written, the next untouched; with
    // none asked the residue is the signal.
    std::vector<double> two(y);
    const std::vector<double> slow = tone(n, 150);
    for (int i = 0; i < n; ++i)
        two[static_cast<std::size_t>(i)] += slow[static_cast<std::size_t>(i)];
    std::fill(imfs.begin(), imfs.end(), kSentinel);
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), two.data(), 0.05, 0.5, 0.05,
                                                  imfs.data(), 1, &count, residue.data(), 2),
              0);
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(std::all_of(imfs.begin() + n, imfs.end(), [](double v) { return v == kSentinel; }));
    for (int i = 0; i < n; ++i) EXPECT_EQ(residue[i], two[i] - imfs[i]);
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), two.data(), 0.05, 0.5, 0.05,
                                                  imfs.data(), 0, &count, residue.data(), 2),
              0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(residue, two);

    // The signal is copied first: the residue may overwrite the caller's Y.
    std::vector<double> in_place(two), separate(n);
    int count2 = 0;
    // (the slow tone passes the test at once, so the remainder after it is exactly 0)
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), two.data(), 0.05, 0.5, 0.05,
                                                  imfs.data(), 3, &count, separate.data(), 2),
              ZEMATH_ERR_REMAINDER_VANISHED);
    ASSERT_EQ(zemath_empirical_mode_decomposition(n, x.data(), in_place.data(), 0.05, 0.5, 0.05,
                                                  imfs.data(), 3, &count2, in_place.data(), 2),
              ZEMATH_ERR_REMAINDER_VANISHED);
    EXPECT_EQ(count2, count);
    EXPECT_EQ(in_place, separate);
}

// Missing points are left out: NANUM at their positions in every row and the residue,
// and the rest still sums back to the signal.
TEST(EmdDecomposition, MissingPointsKeepNanum) {
    const int n = 600;
    const std::vector<double> x = ramp(n);
    std::vector<double> y = tone(n, 18), slow = tone(n, 170);
    for (int i = 0; i < n; ++i)
        y[static_cast<std::size_t>(i)] += 2 * slow[static_cast<std::size_t>(i)];
    const int missing[] = {0, 77, 78, 301, 599};
    for (int m : missing) y[static_cast<std::size_t>(m)] = NANUM;
    std::vector<double> imfs(4 * n), residue(n);
    int count = 0;
    const int status = zemath_empirical_mode_decomposition(
        n, x.data(), y.data(), 0.05, 0.5, 0.05, imfs.data(), 4, &count, residue.data(), 2);
    ASSERT_TRUE(status == 0 || status == ZEMATH_ERR_REMAINDER_VANISHED) << status;
    ASSERT_GE(count, 2);
    for (int i = 0; i < n; ++i) {
        const bool gone = std::find(std::begin(missing), std::end(missing), i) != std::end(missing);
        double sum = residue[i];
        for (int k = 0; k < count; ++k) {
            EXPECT_EQ(imfs[k * n + i] == NANUM, gone);
            sum += imfs[k * n + i];
        }
        EXPECT_EQ(residue[i] == NANUM, gone);
        if (!gone) {
            EXPECT_NEAR(sum, y[i], 1e-12);
        }
    }
}

// Every refusal with its code, outputs untouched.
TEST(EmdRefusals, DocumentedCodesWriteNothing) {
    const int n = 12;
    const std::vector<double> x = ramp(n);
    const std::vector<double> wave = {0, 1, 0, -1, 0, 1, 0, -1, 0, 1, 0, -1};
    const std::vector<double> rising = ramp(n);
    const std::vector<double> constant(n, 3.0);
    const std::vector<double> all_missing(n, NANUM);
    const std::vector<double> hump = {0, 1, 2, 3, 4, 5, 4, 3, 2, 1, 0, -1};  // no minimum
    std::vector<double> descending(x.rbegin(), x.rend());
    std::vector<double> x_nan(x);
    x_nan[4] = kNaN;
    const double* X = x.data();
    const double* W = wave.data();

    struct Case {
        const char* what;
        int expected;
        int (*call)(const double* px, const double* py, int n, int mode, int rows, double* a,
                    double* b, double* c, double* d, int* ia, int* ib);
        const double* px;
        const double* py;
        int n, mode, rows;
        bool null_a = false;
    };
    const auto emd = [](const double* px, const double* py, int m, int mode, int rows, double* a,
                        double* b, double*, double*, int* ia, int*) {
        return zemath_empirical_mode_decomposition(m, px, py, 0.05, 0.5, 0.05, a, rows, ia, b,
                                                   mode);
    };
    const auto sift = [](const double* px, const double* py, int m, int mode, int, double* a,
                         double* b, double* c, double* d, int*, int*) {
        return zemath_emd_stop_sifting(m, px, py, 0.05, 0.5, 0.05, a, b, c, d, mode);
    };
    const auto mean = [](const double* px, const double* py, int m, int mode, int, double* a,
                         double* b, double*, double*, int* ia, int* ib) {
        return zemath_emd_envelope_mean_amp(m, px, py, a, b, ia, ib, mode);
    };
    const auto env = [](const double* px, const double* py, int m, int mode, int, double* a,
                        double* b, double*, double*, int* ia, int* ib) {
        return zemath_emd_get_upper_lower_envelope(m, px, py, a, b, ia, ib, mode);
    };
    const auto cross = [](const double* px, const double* py, int m, int, int, double* a, double*,
                          double*, double*, int* ia,
                          int* ib) { return zemath_emd_get_zero_crossing(m, px, py, ia, a, ib); };
    const Case cases[] = {
        {"emd null x", -11, emd, nullptr, W, n, 2, 2},
        {"emd null imf", -11, emd, X, W, n, 2, 2, true},
        {"emd n 0", -18, emd, X, W, 0, 2, 2},
        {"emd n INT_MIN", -18, emd, X, W, INT_MIN, 2, 2},
        {"emd rows -1", -18, emd, X, W, n, 2, -1},
        {"emd mode -1", -18, emd, X, W, n, -1, 2},
        {"emd mode 6", -10, emd, X, W, n, 6, 2},
        {"emd descending x", -17, emd, descending.data(), W, n, 2, 2},
        {"emd NaN x", -17, emd, x_nan.data(), W, n, 2, 2},
        {"emd monotonic", -105, emd, X, rising.data(), n, 2, 2},
        {"emd constant", -105, emd, X, constant.data(), n, 2, 2},
        {"emd all missing", -105, emd, X, all_missing.data(), n, 2, 2},
        {"emd one hump", -105, emd, X, hump.data(), n, 2, 2},
        {"emd four points", -105, emd, X, W, 4, 2, 2},
        {"sift null y", -11, sift, X, nullptr, n, 2, 0},
        {"sift null imf", -11, sift, X, W, n, 2, 0, true},
        {"sift n 0", -18, sift, X, W, 0, 2, 0},
        {"sift no minimum", -109, sift, X, hump.data(), n, 2, 0},
        {"sift mode 9", -109, sift, X, W, n, 9, 0},
        {"sift descending x", -109, sift, descending.data(), W, n, 2, 0},
        {"mean null x", -11, mean, nullptr, W, n, 2, 0},
        {"mean n -3", -18, mean, X, W, -3, 2, 0},
        {"mean no minimum", -110, mean, X, hump.data(), n, 2, 0},
        {"mean mode -1", -110, mean, X, W, n, -1, 0},
        {"env null y", -11, env, X, nullptr, n, 2, 0},
        {"env null upper", -11, env, X, W, n, 2, 0, true},
        {"env n 0", -18, env, X, W, 0, 2, 0},
        {"env mode -1", -18, env, X, W, n, -1, 0},
        {"env mode 6", -10, env, X, W, n, 6, 0},
        {"env descending x", -17, env, descending.data(), W, n, 2, 0},
        {"env monotonic", -18, env, X, rising.data(), n, 2, 0},
        {"env no minimum", -18, env, X, hump.data(), n, 2, 0},
        {"cross null x", -11, cross, nullptr, W, n, 0, 0},
        {"cross n 1", -18, cross, X, W, 1, 0, 0},
        {"cross n INT_MIN", -18, cross, X, W, INT_MIN, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<double> a(4 * n, kSentinel), b(n, kSentinel), cc(n, kSentinel), d(n, kSentinel);
        int ia = -5, ib = -5;
        EXPECT_EQ(c.call(c.px, c.py, c.n, c.mode, c.rows, c.null_a ? nullptr : a.data(), b.data(),
                         cc.data(), d.data(), &ia, &ib),
                  c.expected);
        const auto untouched = [](const std::vector<double>& v) {
            return std::all_of(v.begin(), v.end(), [](double e) { return e == kSentinel; });
        };
        EXPECT_TRUE(untouched(a) && untouched(b) && untouched(cc) && untouched(d));
        EXPECT_EQ(ia, -5);
        EXPECT_EQ(ib, -5);
    }
    int count = -1;  // the count pointer is required
    EXPECT_EQ(zemath_emd_get_zero_crossing(n, X, W, nullptr, nullptr, nullptr), -11);
    EXPECT_EQ(count, -1);
}

}  // namespace
