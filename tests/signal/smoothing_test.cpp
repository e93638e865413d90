// Smoothing filters against SciPy/NumPy (tests/reference/gen_smoothing.py): Savitzky-Golay
// coefficients and every end mode with a SciPy equivalent, the derivative export, adjacent
// averages, binomial passes and the FFT low-pass; property checks (polynomials reproduced,
// sums kept); the deliberate differences between filters; refusals that write nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "signal/smoothing.hpp"
#include "signal/smoothing_reference.hpp"
#include "zemath/progress.h"
#include "zemath/smoothing.h"

namespace {

using namespace smoothing_reference;

struct LoessReference {
    double frac;
    int method;
    std::vector<double> x, y, fit;
};
#include "reference/loess_ref.inc"

constexpr double kTol = 1e-12;
constexpr double kUntouched = 777.0;

// Relative to the largest magnitude in the reference: coefficients and filtered values
// are sums of terms of that size.
void expect_all_close(const std::vector<double>& got, const std::vector<double>& want,
                      double tol = kTol) {
    ASSERT_EQ(got.size(), want.size());
    double scale = 1.0;
    for (double v : want) scale = std::max(scale, std::fabs(v));
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], want[i], tol * scale) << "at " << i;
}

int size_of(const std::vector<double>& v) {
    return static_cast<int>(v.size());
}

TEST(SavitzkyGolay, CoefficientsMatchScipy) {
    for (const auto& c : kCoefficientReference) {
        SCOPED_TRACE(testing::Message() << c.left << "/" << c.right << " order " << c.order);
        expect_all_close(zemath::savgol_coefficients(c.left, c.right, c.order, c.deriv), c.c);
    }
}

TEST(SavitzkyGolay, PaddedEndModesMatchCorrelate) {
    for (const auto& c : kSavgolPadded) {
        SCOPED_TRACE(testing::Message() << "half " << c.half << " mode " << c.mode);
        std::vector<double> out(c.x.size());
        ASSERT_EQ(zemath_savitsky_golay(c.x.data(), out.data(), size_of(c.x), c.half, -1, c.order,
                                        c.deriv, c.mode),
                  0);
        expect_all_close(out, c.y);
    }
}

TEST(SavitzkyGolay, EndModeZeroMatchesInterp) {
    for (const auto& c : kSavgolInterp) {
        SCOPED_TRACE(testing::Message() << "half " << c.half << " deriv " << c.deriv);
        std::vector<double> out(c.x.size());
        ASSERT_EQ(zemath_savitsky_golay(c.x.data(), out.data(), size_of(c.x), c.half, c.half,
                                        c.order, c.deriv, 0),
                  0);
        // The interior yields a_d, the polynomial end fits the true derivative d! a_d.
        const double factorial = std::tgamma(c.deriv + 1.0);
        const int n = size_of(c.x);
        for (int i = 0; i < n; ++i) {
            const bool end = i < c.half || i >= n - c.half;
            if (!end || c.deriv == 0) out[i] *= factorial;
        }
        expect_all_close(out, c.y);
    }
}

TEST(SavitzkyGolay, DerivativeExportScalesByStepAndKeepsTheExtraFactorialAtEnds) {
    for (const auto& c : kSavgolDerivative) {
        SCOPED_TRACE(testing::Message() << "deriv " << c.deriv);
        const int n = size_of(c.y);
        std::vector<double> out(n), reversed_out(n);
        ASSERT_EQ(zemath_savitsky_golay_derivative(c.x.data(), c.y.data(), out.data(), n, c.half,
                                                   -1, c.order, c.deriv, false),
                  0);
        std::vector<double> want = c.d;
        const double factorial = std::tgamma(c.deriv + 1.0);
        for (int i = 0; i < c.half; ++i) {  // deliberate: d! once more at both ends
            want[i] *= factorial;
            want[n - 1 - i] *= factorial;
        }
        expect_all_close(out, want, 1e-11);
        // The same data on decreasing X: odd orders change sign.
        std::vector<double> xr(c.x.rbegin(), c.x.rend());
        ASSERT_EQ(zemath_savitsky_golay_derivative(xr.data(), c.y.data(), reversed_out.data(), n,
                                                   c.half, -1, c.order, c.deriv, false),
                  0);
        for (int i = 0; i < n; ++i) EXPECT_EQ(reversed_out[i], c.deriv % 2 == 1 ? -out[i] : out[i]);
    }
}

TEST(SavitzkyGolay, ReproducesPolynomialsUpToItsOrder) {
    const int n = 40;
    for (int order = 1; order <= 5; ++order) {
        std::vector<double> x(n), out(n);
        for (int i = 0; i < n; ++i) {
            double t = (i - 17.0) / 10.0, p = 1.0, v = 0.0;
            for (int k = 0; k <= order; ++k, p *= t) v += (k % 2 ? -0.7 : 1.3) * p;
            x[i] = v;
        }
        for (int half : {order, 4, 9}) {
            if (2 * half < order) continue;
            for (int mode : {0, 4}) {
                if (mode == 4 && order > 1) continue;  // the padding is a line
                ASSERT_EQ(zemath_savitsky_golay(x.data(), out.data(), n, half, -1, order, 0, mode),
                          0);
                expect_all_close(out, x, 1e-11);
            }
        }
    }
}

TEST(SavitzkyGolay, SnapZeroCrossings) {
    const double x[] = {0, 1, 2, 3, 4, 5, 6, 7};
    const double y[] = {0, 2, 3, 2.5, 1, 0.5, 1.5, 3};
    std::vector<double> plain(8), snapped(8);
    ASSERT_EQ(zemath_savitsky_golay_derivative(x, y, plain.data(), 8, 1, 1, 2, 1, false), 0);
    ASSERT_EQ(zemath_savitsky_golay_derivative(x, y, snapped.data(), 8, 1, 1, 2, 1, true), 0);
    for (std::size_t i = 0, skip = 0; i + 1 < 8; i += 1 + skip) {
        skip = plain[i] * plain[i + 1] < 0.0 ? 1 : 0;
        if (skip) {
            EXPECT_EQ(snapped[i + 1], 0.0);
        }
    }
    EXPECT_NE(plain, snapped);
}

TEST(AdjacentAverage, MatchesUniformFilterAndShrinkingWindows) {
    for (const auto& c : kAdjacentAverage) {
        std::vector<double> out(c.x.size());
        ASSERT_EQ(zemath_adjave_smooth(c.x.data(), out.data(), size_of(c.x), c.half, c.mode, false),
                  0);
        expect_all_close(out, c.y);
    }
    const std::vector<double> x{1, 2, 4, 8, 16, 32};
    const std::vector<double> shrinking{1, 7.0 / 3, 31.0 / 5, 62.0 / 5, 56.0 / 3, 32};
    for (int mode : {0, 5}) {
        std::vector<double> out(6);
        ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), 6, 2, mode, false), 0);
        expect_all_close(out, shrinking);
    }
    // Mode 4: from the end pair (1, 2) the virtual values are 0 and -1.
    std::vector<double> out(6);
    ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), 6, 2, 4, false), 0);
    EXPECT_DOUBLE_EQ(out[0], (-1 + 0 + 1 + 2 + 4) / 5.0);
    // Weighted: 1 - (d/3)^2 -> weights 5/9, 8/9, 1, 8/9, 5/9.
    ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), 6, 2, 2, true), 0);
    EXPECT_DOUBLE_EQ(out[2], (5 * 1 + 8 * 2 + 9 * 4 + 8 * 8 + 5 * 16) / 35.0);
    ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), 6, 2, 0, true), 0);
    EXPECT_DOUBLE_EQ(out[1], (8 * 1 + 9 * 2 + 8 * 4) / 25.0);  // divisor stays nHalf + 1
}

TEST(AdjacentAverage, MissingValues) {
    const std::vector<double> x{NANUM, NANUM, NANUM, 3, NANUM, 5};
    std::vector<double> out(6, kUntouched);
    ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), 6, 1, 2, false), 0);
    const std::vector<double> want{NANUM, NANUM, 3, 3, 4, 5};
    EXPECT_EQ(out, want);
    ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), 6, 1, 4, false), 0);
    EXPECT_EQ(out[5], 6.0);  // inward pair (5, 3): virtual 7, mean of 5 and 7
    const std::vector<double> single{NANUM, 4, NANUM};
    std::vector<double> kept(3, kUntouched);
    EXPECT_EQ(zemath_adjave_smooth(single.data(), kept.data(), 3, 1, 4, false), -9);
    EXPECT_EQ(kept, std::vector<double>(3, kUntouched));
    // One-sided average: cut windows, missing skipped or taken as zero.
    ASSERT_EQ(zemath_adj_average(out.data(), x.data(), 6, 2, 0, 0), 0);
    const std::vector<double> trailing{NANUM, NANUM, NANUM, 3, 3, 4};
    EXPECT_EQ(out, trailing);
    ASSERT_EQ(zemath_adj_average(out.data(), x.data(), 6, 1, 1, 1), 0);
    const std::vector<double> zeros{0, 0, 1, 1, 8.0 / 3, 2.5};
    expect_all_close(out, zeros);
}

// Long series against means summed directly in long double: the windows inside the data
// (formed in side-by-side blocks when nothing is missing), the padded or cut ends, block
// and window lengths that do not divide the size, windows nearly as long as the data, and
// missing values (the general running mean).
TEST(AdjacentAverage, LongSeriesMatchDirectMeans) {
    struct Case {
        int n, left, right;
        bool missing;
    };
    const Case cases[] = {{20011, 7, 7, false},    {3 * 4096 + 5, 25, 25, false},
                          {1000, 450, 450, false}, {40000, 0, 0, false},
                          {9001, 30, 3, false},    {20011, 7, 7, true},
                          {5000, 0, 40, false},    {777, 20, 700, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "n " << c.n << " window " << c.left << "/" << c.right);
        std::vector<double> x(static_cast<std::size_t>(c.n));
        for (std::size_t i = 0; i < x.size(); ++i)
            x[i] = 1e3 * std::sin(0.37 * static_cast<double>(i)) + static_cast<double>(i % 17);
        if (c.missing) {
            for (std::size_t i = 5; i < x.size(); i += 97) x[i] = NANUM;
        }
        // Mean of x over [lo, hi] with the padded values given by at().
        auto mean = [&](long lo, long hi, auto at) {
            long double s = 0;
            int used = 0;
            for (long k = lo; k <= hi; ++k) {
                const double v = at(k);
                if (v == NANUM) continue;
                s += v;
                ++used;
            }
            return used == 0 ? NANUM : static_cast<double>(s / used);
        };
        const long n = c.n;
        auto inside = [&](long k) { return x[static_cast<std::size_t>(k)]; };
        std::vector<double> out(x.size()), want(x.size());
        if (c.left == c.right) {
            const long h = c.left;
            auto mirror = [&](long k) {
                return inside(k < 0 ? -1 - k : k >= n ? 2 * n - 1 - k : k);
            };
            auto periodic = [&](long k) { return inside((k + n) % n); };
            for (int mode : {0, 1, 3}) {
                for (long i = 0; i < n; ++i) {
                    const long r = std::min({i, n - 1 - i, h});
                    want[static_cast<std::size_t>(i)] =
                        mode == 0 ? mean(i - r, i + r, inside) : mean(i - h, i + h, [&](long k) {
                            return mode == 1 ? mirror(k) : periodic(k);
                        });
                }
                ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), c.n, c.left, mode, false), 0);
                expect_all_close(out, want, 1e-13);
                std::vector<double> in_place = x;
                ASSERT_EQ(zemath_adjave_smooth(in_place.data(), in_place.data(), c.n, c.left, mode,
                                               false),
                          0);
                EXPECT_EQ(in_place, out);
            }
        }
        for (long i = 0; i < n; ++i)
            want[static_cast<std::size_t>(i)] =
                mean(std::max(0L, i - c.left), std::min(n - 1, i + c.right), inside);
        ASSERT_EQ(zemath_adj_average(out.data(), x.data(), c.n, c.left, c.right, 0), 0);
        expect_all_close(out, want, 1e-13);
        std::vector<double> in_place = x;
        ASSERT_EQ(zemath_adj_average(in_place.data(), in_place.data(), c.n, c.left, c.right, 0), 0);
        EXPECT_EQ(in_place, out);
    }
}

TEST(AdjacentAverage, NonFiniteValuesReachOnlyTheirWindows) {
    // A NaN or an infinity spoils the windows that hold it, as summing them directly
    // would, and no other: a running sum that took it in stayed NaN thousands of points on.
    const long n = 10000, h = 5;
    std::vector<double> x(static_cast<std::size_t>(n));
    for (long i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = std::sin(0.1 * i) + 2.0;
    const double inf = std::numeric_limits<double>::infinity();
    x[3000] = std::numeric_limits<double>::quiet_NaN();
    x[6000] = inf;
    x[6003] = -inf;
    x[8000] = inf;
    x[8100] = NANUM;
    auto check = [&](const std::vector<double>& out, long left, long right, bool shrink) {
        for (long i = 0; i < n; ++i) {
            const long r = shrink ? std::min({i, n - 1 - i, h}) : 0;
            const long lo = shrink ? i - r : std::max(0L, i - left);
            const long hi = shrink ? i + r : std::min(n - 1, i + right);
            long double s = 0;
            int used = 0;
            for (long k = lo; k <= hi; ++k) {
                const double v = x[static_cast<std::size_t>(k)];
                if (v == NANUM) continue;
                s += v;
                ++used;
            }
            const double want = static_cast<double>(s / used);
            const double got = out[static_cast<std::size_t>(i)];
            if (std::isnan(want)) {
                ASSERT_TRUE(std::isnan(got)) << i;
            } else if (std::isinf(want)) {
                ASSERT_EQ(got, want) << i;
            } else {
                ASSERT_NEAR(got, want, 1e-13 * std::fabs(want)) << i;
            }
        }
    };
    std::vector<double> out(x.size());
    ASSERT_EQ(zemath_adjave_smooth(x.data(), out.data(), static_cast<int>(n), h, 0, false), 0);
    check(out, h, h, true);
    ASSERT_EQ(zemath_adj_average(out.data(), x.data(), static_cast<int>(n), 7, 2, 0), 0);
    check(out, 7, 2, false);
}

TEST(Binomial, MatchesCorrelateAndKeepsThePeriodicSum) {
    for (const auto& c : kBinomial) {
        std::vector<double> out(c.x.size());
        ASSERT_EQ(zemath_binomial_smooth(size_of(c.x), c.x.data(), out.data(), c.mode, c.half), 0);
        expect_all_close(out, c.y);
        if (c.mode == 3) {
            const double before = std::accumulate(c.x.begin(), c.x.end(), 0.0);
            const double after = std::accumulate(out.begin(), out.end(), 0.0);
            EXPECT_NEAR(after, before, 1e-13 * c.x.size());
        }
    }
    // Pass counts whose work is applied at once (up to INT_MAX passes, converged to each
    // end mode's limit) match the pass matrix raised to that power.
    for (const auto& c : kBinomialMany) {
        std::vector<double> out(c.x.size());
        ASSERT_EQ(zemath_binomial_smooth(size_of(c.x), c.x.data(), out.data(), c.mode, c.half), 0);
        for (size_t i = 0; i < out.size(); ++i)
            EXPECT_NEAR(out[i], c.y[i], 1e-13) << "mode " << c.mode << " passes " << c.half;
    }
    // The binomial mirror skips the end point, the padding mirror repeats it.
    const std::vector<double> x{1, 5, 2};
    std::vector<double> bin(3), sg(3);
    ASSERT_EQ(zemath_binomial_smooth(3, x.data(), bin.data(), 1, 1), 0);
    EXPECT_EQ(bin[0], (5 + 2 * 1 + 5) / 4.0);
    ASSERT_EQ(zemath_adjave_smooth(x.data(), sg.data(), 3, 1, 1, false), 0);
    EXPECT_EQ(sg[0], (1 + 1 + 5) / 3.0);
}

TEST(FftSmoothing, MatchesRfftLowPass) {
    for (const auto& c : kFftLowPass) {
        std::vector<double> out(c.x.size());
        ASSERT_EQ(zemsp_fft_filter_smoothing(size_of(c.x), c.x.data(), out.data(), c.cutoff), 0);
        expect_all_close(out, c.y, 1e-13 * 10);
    }
}

TEST(PolynomialFit, RecoversCoefficients) {
    std::vector<double> x, y;
    for (int i = 0; i < 12; ++i) {
        x.push_back(1000.0 + 0.5 * i);
        y.push_back(3.0 - 0.01 * x.back() + 2e-5 * x.back() * x.back());
    }
    x.push_back(NANUM);
    y.push_back(1e9);  // skipped
    double coef[3];
    ASSERT_EQ(zemath_polynomial_fit(x.data(), y.data(), size_of(x), 2, coef), 0);
    EXPECT_NEAR(coef[0], 3.0, 1e-6);
    EXPECT_NEAR(coef[1], -0.01, 1e-9);
    EXPECT_NEAR(coef[2], 2e-5, 1e-12);
    EXPECT_NEAR(zemath_polynomial(coef, 2, 1003.0), y[6], 1e-10);
    EXPECT_EQ(zemath_polynomial(nullptr, 2, 1.0), NANUM);
    const double same[] = {1, 1, 1};
    EXPECT_EQ(zemath_polynomial_fit(same, same, 3, 1, coef), -1);
    EXPECT_EQ(zemath_polynomial_fit(same, same, 3, 3, coef), -18);
    // A degree no point count can meet is refused before its coefficients are allocated
    // (INT_MAX + 1 slots were allocated and zero-filled first). coef must stay untouched.
    double guard[3] = {7, 7, 7};
    EXPECT_EQ(zemath_polynomial_fit(same, same, 3, std::numeric_limits<int>::max(), guard), -18);
    EXPECT_EQ(guard[0], 7.0);
}

// Degree-1 loess, plain and with three robustness iterations, against an independent
// lowess (tests/reference/gen_loess.py) on unsorted uneven abscissae with outliers.
TEST(Loess, MatchesReferenceLowess) {
    for (const auto& c : kLoess) {
        SCOPED_TRACE(testing::Message() << "n " << c.x.size() << " method " << c.method);
        std::vector<double> out(c.x.size(), kUntouched);
        double span = c.frac;
        ASSERT_EQ(zemath_loess_xUnevenly(size_of(c.x), c.method, 0, &span, c.x.data(), c.y.data(),
                                         out.data(), false),
                  0);
        expect_all_close(out, c.fit, 1e-11);
    }
}

TEST(Loess, ReproducesLinesAndResistsOutliers) {
    const int n = 60;
    std::vector<double> x(n), y(n), out(n);
    for (int i = 0; i < n; ++i) {
        x[i] = std::pow(i / 10.0, 1.5);  // uneven
        y[i] = 2.0 - 0.5 * x[i];
    }
    for (int method : {0, 1, 2}) {
        double span = 0.3;
        ASSERT_EQ(
            zemath_loess_xUnevenly(n, method, 1, &span, x.data(), y.data(), out.data(), false), 0);
        expect_all_close(out, y, 1e-12);
        EXPECT_DOUBLE_EQ(span, 18.0 / 60.0);
    }
    std::vector<double> spiked = y;
    spiked[30] += 50.0;
    double span = 0.3;
    ASSERT_EQ(zemath_loess_xUnevenly(n, 1, 1, &span, x.data(), spiked.data(), out.data(), false),
              0);
    EXPECT_NEAR(out[30], y[30], 1e-6);  // the robust fit ignores the spike
    ASSERT_EQ(zemath_loess_xUnevenly(n, 0, 1, &span, x.data(), spiked.data(), out.data(), false),
              0);
    EXPECT_GT(std::fabs(out[30] - y[30]), 1.0);
}

TEST(Loess, OrderOfXAndTiesDoNotMatter) {
    const int n = 40;
    std::vector<double> x(n), y(n), xr(n), yr(n), out(n), out_r(n);
    for (int i = 0; i < n; ++i) {
        x[i] = (i / 2) * 0.5;  // pairs of equal abscissae
        y[i] = std::sin(x[i]) + (i % 3) * 0.1;
        xr[n - 1 - i] = x[i];
        yr[n - 1 - i] = y[i];
    }
    for (int method : {0, 1, 2}) {
        double span = 0.4, span_r = 0.4;
        ASSERT_EQ(
            zemath_loess_xUnevenly(n, method, 1, &span, x.data(), y.data(), out.data(), false), 0);
        ASSERT_EQ(zemath_loess_xUnevenly(n, method, 1, &span_r, xr.data(), yr.data(), out_r.data(),
                                         false),
                  0);
        for (int i = 0; i < n; i += 2) {  // a tied pair gets one fitted value
            EXPECT_NEAR(out[i], out[i + 1], 1e-12);
            EXPECT_NEAR(out[i], out_r[n - 1 - i], 1e-12);
        }
    }
}

TEST(FftSmoothing, ConcurrentCallsAgree) {
    std::vector<double> x(3001), single(3001);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::sin(i * 0.01) + std::cos(i * 1.3);
    ASSERT_EQ(zemsp_fft_filter_smoothing(3001, x.data(), single.data(), 30.0), 0);
    std::vector<std::vector<double>> outs(4, std::vector<double>(3001));
    std::vector<int> status(4, -1);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int k = 0; k < 20; ++k)
                status[t] = zemsp_fft_filter_smoothing(3001, x.data(), outs[t].data(), 30.0);
        });
    }
    for (auto& th : threads) th.join();
    for (int t = 0; t < 4; ++t) {
        EXPECT_EQ(status[t], 0);
        EXPECT_EQ(outs[t], single);
    }
}

std::atomic<int> g_reports{0};
int count_report(void*, const char* caption, const char* label, int) {
    if (std::string(caption) == "Smoothing..." && std::string(label) == "Smooth") ++g_reports;
    return 0;
}

// Plans are kept per length and reused on any caller arrays: results must not depend on
// the arrays' alignment (an unaligned array goes through a copy), on the output being
// the input, or on plans evicted and made again in between (more lengths than the cache
// keeps, and lengths summing past its bound).
TEST(FftSmoothing, CachedPlansOnAnyArrays) {
    for (int pass = 0; pass < 2; ++pass) {
        if (pass == 1) {  // evict every reference length, by count and by summed length
            std::vector<double> churn(3 << 19, 0.5), churn_out(churn.size());
            for (int len : {5, 6, 7, 8, 9, 10, 11, 12, 13, 1 << 20, 3 << 19})
                ASSERT_EQ(zemsp_fft_filter_smoothing(len, churn.data(), churn_out.data(), 1.0), 0);
        }
        for (const auto& c : kFftLowPass) {
            const std::size_t n = c.x.size();
            std::vector<double> block(2 * n + 2);
            double* unaligned_in = block.data() + 1;  // 8 bytes past the allocator's alignment
            double* unaligned_out = block.data() + n + 2;
            std::copy(c.x.begin(), c.x.end(), unaligned_in);
            ASSERT_EQ(
                zemsp_fft_filter_smoothing(size_of(c.x), unaligned_in, unaligned_out, c.cutoff), 0);
            expect_all_close({unaligned_out, unaligned_out + n}, c.y, 1e-12);
            std::vector<double> in_place = c.x;
            ASSERT_EQ(zemsp_fft_filter_smoothing(size_of(c.x), in_place.data(), in_place.data(),
                                                 c.cutoff),
                      0);
            expect_all_close(in_place, c.y, 1e-12);
        }
    }
}

// Threads filtering different lengths at once, so that plans are made, shared and evicted
// while others execute them.
TEST(FftSmoothing, ConcurrentLengthsAgree) {
    constexpr int kThreads = 4, kLengths = 12;
    std::vector<std::vector<double>> single(kLengths);
    std::vector<double> x(1000 + kLengths);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::sin(i * 0.02) + std::cos(i * 1.7);
    for (int k = 0; k < kLengths; ++k) {
        single[k].resize(1000 + k);
        ASSERT_EQ(zemsp_fft_filter_smoothing(1000 + k, x.data(), single[k].data(), 40.0), 0);
    }
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::vector<double> out(x.size());
            for (int r = 0; r < 30; ++r) {
                const int k = (r * 5 + t * 7) % kLengths;
                const int status = zemsp_fft_filter_smoothing(1000 + k, x.data(), out.data(), 40.0);
                if (status != 0 || !std::equal(single[k].begin(), single[k].end(), out.begin()))
                    ++mismatches;
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(mismatches.load(), 0);
}

TEST(Loess, EvenlySpacedAndProgress) {
    const int n = 20000;
    std::vector<double> y(n), out(n);
    for (int i = 0; i < n; ++i) y[i] = 1.0 + i * 1e-3 - (i * 1e-3) * (i * 1e-3);
    double span = 0.001;
    ASSERT_EQ(zemath_loess_xEvenly(n, 0, 1, &span, y.data(), out.data(), false), 0);
    EXPECT_EQ(g_reports.load(), 0);
    zemath_set_progress_callback(count_report, nullptr);
    ASSERT_EQ(zemath_loess_xEvenly(n, 0, 1, &span, y.data(), out.data(), true), 0);
    zemath_set_progress_callback(nullptr, nullptr);
    EXPECT_GE(g_reports.load(), 100);  // 0, every 1 percent, 100
    EXPECT_LE(g_reports.load(), 103);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(out[i], y[i], 1e-9);
}

TEST(Smoothing, RefusalsWriteNothing) {
    const std::vector<double> x{1, 2, 3, 4, 5};
    std::vector<double> out(5, kUntouched);
    const double* in = x.data();
    double* o = out.data();
    std::vector<double> scratch(5);
    double span = 0.5, zero_span = 0.0, xs[] = {0, 0, 1, 2, 3};
    struct Case {
        const char* what;
        int got, want;
    } cases[] = {
        {"sg window equal n", zemath_savitsky_golay(in, scratch.data(), 5, 2, 2, 4, 0, 0), 0},
        {"sg window one larger", zemath_savitsky_golay(in, o, 5, 3, 2, 2, 0, 1), -18},
        {"sg negative left", zemath_savitsky_golay(in, o, 5, -1, 2, 2, 0, 1), -18},
        {"sg order 0", zemath_savitsky_golay(in, o, 5, 2, 2, 0, 0, 1), -18},
        {"sg deriv above order", zemath_savitsky_golay(in, o, 5, 2, 2, 1, 2, 1), -18},
        {"sg mode 6", zemath_savitsky_golay(in, o, 5, 1, 1, 2, 0, 6), -18},
        {"sg null", zemath_savitsky_golay(nullptr, o, 5, 1, 1, 2, 0, 1), -11},
        {"sgd equal x", zemath_savitsky_golay_derivative(xs, in, o, 5, 1, 1, 2, 1, false), -1},
        {"sgd too wide", zemath_savitsky_golay_derivative(in, in, o, 5, 3, 3, 2, 1, false), -18},
        {"adj half = n", zemath_adjave_smooth(in, o, 5, 5, 0, false), -9},
        {"adj mode 6", zemath_adjave_smooth(in, o, 5, 1, 6, false), -9},
        {"adj weighted mode 5", zemath_adjave_smooth(in, o, 5, 1, 5, true), -9},
        {"adj null", zemath_adjave_smooth(nullptr, o, 5, 1, 0, false), -9},
        {"adj n 1", zemath_adjave_smooth(in, o, 1, 0, 0, false), 0},
        {"one-sided negative", zemath_adj_average(o, in, 5, -1, 0, 0), -1},
        {"one-sided n 1", zemath_adj_average(o, in, 1, 0, 0, 0), 0},
        {"binomial n 1", zemath_binomial_smooth(1, in, o, 0, 1), -5},
        {"binomial passes 0", zemath_binomial_smooth(5, in, o, 0, 0), -5},
        {"binomial mode 5", zemath_binomial_smooth(5, in, o, 5, 1), -18},
        {"smooth n 0", zemath_smooth(0, in, o, 1, 0, 0, 1, 2, 0, 50, 0, 0, 1), -5},
        {"smooth null", zemath_smooth(5, nullptr, o, 1, 0, 0, 1, 2, 0, 50, 0, 0, 1), -11},
        // Mode 5 is refused by the dispatcher although the filter itself accepts it.
        {"smooth mode 5", zemath_smooth(5, in, o, 1, 1, 5, 1, 2, 0, 50, 0, 0, 1), -18},
        {"smooth method 4", zemath_smooth(5, in, o, 1, 4, 0, 1, 2, 0, 50, 0, 0, 1), -18},
        {"smooth bad inner", zemath_smooth(5, in, o, 9, 0, 0, 1, 2, 0, 50, 0, 0, 1), -9},
        {"fft null", zemsp_fft_filter_smoothing(5, nullptr, o, 1.0), -11},
        {"fft cutoff -1", zemsp_fft_filter_smoothing(5, in, o, -1.0), -151},
        {"fft n 0", zemsp_fft_filter_smoothing(0, in, o, 1.0), -151},
        {"loess span 0", zemath_loess_xEvenly(5, 0, 0, &zero_span, in, o, false), -151},
        {"loess method 3", zemath_loess_xEvenly(5, 3, 0, &span, in, o, false), -10},
        {"loess null", zemath_loess_xUnevenly(5, 0, 0, &span, nullptr, in, o, false), -11},
        {"loess n 0", zemath_loess_xEvenly(0, 0, 0, &span, in, o, false), -18},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.want) << c.what;
    EXPECT_EQ(out, std::vector<double>(5, kUntouched));
    EXPECT_EQ(span, 0.5);
    EXPECT_EQ(zemath_savitsky_golay(in, o, 5, 2, 2, 4, 0, 5), 0);  // the filter takes mode 5
}

}  // namespace
