// g05m*, g05nac: discrete random variates and permutations.
//
// Methods (exact in distribution up to the 53-bit resolution of the uniforms and the
// rounding of the probabilities; the documented truncations are below 1e-20):
//   uniform integers   Lemire's multiply-and-reject, no modulo bias
//   geometric          inversion, floor(ln U / ln(1 - p)) (Devroye 1986, X.2)
//   binomial           BTRD, Hormann (1993) "The generation of binomial random
//                      variates", for n min(p, 1-p) >= 10; sequential inversion below
//   Poisson            PTRS, Hormann (1993) "The transformed rejection method for
//                      generating Poisson random variables", for lambda >= 10;
//                      sequential inversion below
//   negative binomial  Poisson(Gamma(m, (1 - p)/p)) mixture
//   hypergeometric     HRUA, Stadlober (1989/1990) ratio of uniforms with the exact mode
//                      and no truncation of the support, for means >= 10; sequential
//                      inversion from 0 below
//   general table      inversion by indexed search (Chen and Asau 1974) in a cumulative
//                      table with a guide table
//   permutation        Fisher-Yates shuffle with unbiased bounded integers
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

#include "platform/nag/g05_engine.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::nag {

namespace {

using numeric::log_factorial;
using rng::Engine;

constexpr double kIntMax = static_cast<double>(INT_MAX);

// Sequential inversion of a law on 0, 1, 2, ... from P(0) and the ratio P(k)/P(k-1).
// A uniform beyond the total computed mass (rounding leaves up to ~1e-16 of it) or one
// that walks past the point where the remaining mass is below 1e-20 is redrawn.
template <class Ratio>
int invert_sequentially(Engine& eng, double p0, double mean, int upper, Ratio ratio) {
    for (;;) {
        double u = eng.uniform();
        double pk = p0;
        int k = 0;
        bool restart = false;
        while (u > pk) {
            u -= pk;
            if (k == upper) {
                restart = true;
                break;
            }
            ++k;
            pk *= ratio(k);
            // Past the mean with a probability below 1e-20 the walk can only be following rounding
            // in u: start again with a fresh uniform.
            if (pk < 1e-20 && k > mean) {
                restart = true;
                break;
            }
        }
        if (!restart) return k;
    }
}

// Stirling correction of ln k!: ln k! - [(k + 1/2) ln(k + 1) - (k + 1) + ln sqrt(2 pi)],
// which is Stirling's error term at k + 1.
double stirling_correction(double k) {
    return numeric::stirling_error(k + 1.0);
}

class BinomialSampler {
  public:
    BinomialSampler(int trials, double p) : n_(trials), flip_(p > 0.5) {
        p_ = flip_ ? 1.0 - p : p;
        const double q = 1.0 - p_;
        const double nd = n_;
        mean_ = nd * p_;
        degenerate_ = n_ == 0 || p_ == 0.0;
        inversion_ = mean_ < 10.0;
        if (degenerate_) return;
        if (inversion_) {
            s_ = p_ / q;
            a_ = (nd + 1.0) * s_;
            p0_ = std::exp(nd * std::log1p(-p_));
            return;
        }
        m_ = std::floor((nd + 1.0) * p_);
        r_ = p_ / q;
        nr_ = (nd + 1.0) * r_;
        npq_ = nd * p_ * q;
        const double sq = std::sqrt(npq_);
        b_ = 1.15 + 2.53 * sq;
        a_ = -0.0873 + 0.0248 * b_ + 0.01 * p_;
        c_ = nd * p_ + 0.5;
        alpha_ = (2.83 + 5.1 / b_) * sq;
        vr_ = 0.92 - 4.2 / b_;
        urvr_ = 0.86 * vr_;
        h_ = (m_ + 0.5) * std::log((m_ + 1.0) / (r_ * (nd - m_ + 1.0))) + stirling_correction(m_) +
             stirling_correction(nd - m_);
    }

    int operator()(Engine& eng) const {
        int k;
        if (degenerate_)
            k = 0;
        else if (inversion_)
            k = invert(eng);
        else
            k = btrd(eng);
        return flip_ ? n_ - k : k;
    }

  private:
    int invert(Engine& eng) const {
        return invert_sequentially(eng, p0_, mean_, n_, [this](int k) { return a_ / k - s_; });
    }

    int btrd(Engine& eng) const {
        const double nd = n_;
        for (;;) {
            double v = eng.uniform_open();
            double u;
            if (v <= urvr_) {
                // The centre of the hat lies wholly under the distribution: immediate accept.
                u = v / vr_ - 0.43;
                return static_cast<int>(std::floor((2.0 * a_ / (0.5 - std::abs(u)) + b_) * u + c_));
            }
            if (v >= vr_) {
                u = eng.uniform_open() - 0.5;
            } else {
                u = v / vr_ - 0.93;
                u = (u < 0 ? -0.5 : 0.5) - u;
                v = eng.uniform_open() * vr_;
            }
            const double us = 0.5 - std::abs(u);
            const double k = std::floor((2.0 * a_ / us + b_) * u + c_);
            if (!(k >= 0.0 && k <= nd)) continue;
            v = v * alpha_ / (a_ / (us * us) + b_);
            const double km = std::abs(k - m_);
            if (km <= 15.0) {
                // Recursive evaluation of f(k) / f(m).
                double f = 1.0;
                if (m_ < k) {
                    for (double i = m_ + 1.0; i <= k; i += 1.0) f *= nr_ / i - r_;
                } else if (m_ > k) {
                    for (double i = k + 1.0; i <= m_; i += 1.0) v *= nr_ / i - r_;
                }
                if (v <= f) return static_cast<int>(k);
                continue;
            }
            // Squeeze on ln f(k)/f(m), then the exact test with Stirling corrections.
            v = std::log(v);
            const double rho = (km / npq_) * (((km / 3.0 + 0.625) * km + 1.0 / 6.0) / npq_ + 0.5);
            const double t = -km * km / (2.0 * npq_);
            if (v < t - rho) return static_cast<int>(k);
            if (v > t + rho) continue;
            const double nm = nd - m_ + 1.0;
            const double nk = nd - k + 1.0;
            if (v <= h_ + (nd + 1.0) * std::log(nm / nk) +
                         (k + 0.5) * std::log(nk * r_ / (k + 1.0)) - stirling_correction(k) -
                         stirling_correction(nd - k)) {
                return static_cast<int>(k);
            }
        }
    }

    int n_;
    bool flip_;
    double p_ = 0, mean_ = 0;
    bool degenerate_ = false, inversion_ = false;
    double s_ = 0, p0_ = 0;                                    // inversion
    double m_ = 0, r_ = 0, nr_ = 0, npq_ = 0, b_ = 0, a_ = 0;  // BTRD
    double c_ = 0, alpha_ = 0, vr_ = 0, urvr_ = 0, h_ = 0;
};

class PoissonSampler {
  public:
    explicit PoissonSampler(double lambda) : lambda_(lambda), inversion_(lambda < 10.0) {
        if (inversion_) {
            p0_ = std::exp(-lambda);
            return;
        }
        slam_ = std::sqrt(lambda);
        loglam_ = std::log(lambda);
        b_ = 0.931 + 2.53 * slam_;
        a_ = -0.059 + 0.02483 * b_;
        log_inv_alpha_ = std::log(1.1239 + 1.1328 / (b_ - 3.4));
        vr_ = 0.9277 - 3.6224 / (b_ - 2.0);
    }

    int operator()(Engine& eng) const {
        if (inversion_) {
            const double lambda = lambda_;
            return invert_sequentially(eng, p0_, lambda, INT_MAX,
                                       [lambda](int k) { return lambda / k; });
        }
        for (;;) {
            const double u = eng.uniform_open() - 0.5;
            const double v = eng.uniform_open();
            const double us = 0.5 - std::abs(u);
            const double k = std::floor((2.0 * a_ / us + b_) * u + lambda_ + 0.43);
            if (us >= 0.07 && v <= vr_) return static_cast<int>(k);
            if (k < 0.0 || k > kIntMax || (us < 0.013 && v > us)) continue;
            if (std::log(v) + log_inv_alpha_ - std::log(a_ / (us * us) + b_) <=
                -lambda_ + k * loglam_ - log_factorial(k)) {
                return static_cast<int>(k);
            }
        }
    }

  private:
    double lambda_;
    bool inversion_;
    double p0_ = 0;
    double slam_ = 0, loglam_ = 0, b_ = 0, a_ = 0, log_inv_alpha_ = 0, vr_ = 0;
};

class HypergeometricSampler {
  public:
    HypergeometricSampler(int ns, int np, int m) : m_(m) {
        swap_sample_ = np > ns - np;
        swap_good_ = m > ns - m;
        const double n = ns;
        sample_ = swap_sample_ ? n - np : np;
        good_ = swap_good_ ? n - m : m;
        bad_ = n - good_;
        const double mean = sample_ * good_ / n;
        degenerate_ = sample_ == 0 || good_ == 0;
        inversion_ = mean < 10.0;
        if (degenerate_) return;
        if (inversion_) {
            // P(0) = C(bad, sample) / C(n, sample); bad >= n/2 >= sample.
            p0_ = std::exp(log_factorial(bad_) + log_factorial(n - sample_) -
                           log_factorial(bad_ - sample_) - log_factorial(n));
            mean_ = mean;
            upper_ = static_cast<int>(std::min(sample_, good_));
            return;
        }
        constexpr double d1 = 1.7155277699214135;  // 2 sqrt(2/e)
        constexpr double d2 = 0.8989161620588988;  // 3 - 2 sqrt(3/e)
        const double p = good_ / n, q = bad_ / n;
        a_ = sample_ * p + 0.5;
        const double var = (n - sample_) * sample_ * p * q / (n - 1.0);
        h_ = d1 * std::sqrt(var + 0.5) + d2;
        // The mode, in exact integer arithmetic: (s + 1)(g + 1) < 2^62.
        const auto s1 = static_cast<std::uint64_t>(sample_) + 1;
        const auto g1 = static_cast<std::uint64_t>(good_) + 1;
        const double mode = static_cast<double>(s1 * g1 / (static_cast<std::uint64_t>(ns) + 2));
        log_f_mode_ = log_weight(mode);
        bound_ = std::min(sample_, good_) + 1.0;
    }

    int operator()(Engine& eng) const {
        double k = 0.0;
        if (!degenerate_) k = inversion_ ? invert(eng) : hrua(eng);
        if (swap_good_) k = sample_ - k;
        if (swap_sample_) k = m_ - k;
        return static_cast<int>(k);
    }

  private:
    // ln of the unnormalised probability of k successes.
    double log_weight(double k) const {
        return -(log_factorial(k) + log_factorial(good_ - k) + log_factorial(sample_ - k) +
                 log_factorial(bad_ - sample_ + k));
    }

    double invert(Engine& eng) const {
        const double good = good_, sample = sample_, base = bad_ - sample_;
        return invert_sequentially(eng, p0_, mean_, upper_, [=](int k) {
            return (good - k + 1) * (sample - k + 1) / (k * (base + k));
        });
    }

    double hrua(Engine& eng) const {
        for (;;) {
            const double u = eng.uniform_open();
            const double v = eng.uniform();
            const double x = a_ + h_ * (v - 0.5) / u;
            if (!(x >= 0.0 && x < bound_)) continue;
            const double k = std::floor(x);
            const double t = log_weight(k) - log_f_mode_;  // ln f(k)/f(mode) <= 0
            if (u * (4.0 - u) - 3.0 <= t) return k;        // squeeze: below 2 ln u
            if (u * (u - t) >= 1.0) continue;              // squeeze: above 2 ln u
            if (2.0 * std::log(u) <= t) return k;
        }
    }

    int m_;
    bool swap_sample_, swap_good_;
    double sample_, good_, bad_;
    bool degenerate_ = false, inversion_ = false;
    double p0_ = 0, mean_ = 0;
    int upper_ = 0;
    double a_ = 0, h_ = 0, log_f_mode_ = 0, bound_ = 0;
};

}  // namespace

void g05mac(int a, int b, int n, int x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (a > b && refuse(fail, NE_INT)) return;
    const auto range = static_cast<std::uint64_t>(static_cast<std::int64_t>(b) - a + 1);
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        x[i] = static_cast<int>(static_cast<std::int64_t>(a) +
                                static_cast<std::int64_t>(eng.bounded(range)));
    }
}

namespace {

// The success probability of the failure-counting laws: finite, 0 < p <= 1.
bool refuse_success_probability(double p, NagError* fail) {
    if (!std::isfinite(p)) return refuse(fail, NE_REAL);
    if (p <= 0.0) return refuse(fail, NE_REAL_ARG_LE);
    if (p > 1.0) return refuse(fail, NE_REAL_ARG_GT);
    return false;
}

}  // namespace

void g05mbc(double p, int n, int x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (refuse_success_probability(p, fail)) return;
    if (p == 1.0) {  // every trial succeeds: no failures
        std::fill(x, x + n, 0);
        return;
    }
    const double log_q = std::log1p(-p);
    // The smallest uniform is 2^-54, so no draw exceeds 54 ln 2 / -ln(1 - p): refuse p
    // for which that could overflow an int.
    if (54.0 * 0.69314718055994531 / -log_q >= kIntMax && refuse(fail, NE_REAL_ARG_TOO_SMALL))
        return;
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = static_cast<int>(std::log(eng.uniform_open()) / log_q);
}

void g05mcc(int m, double p, int n, int x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (m < 1 && refuse(fail, NE_INT_ARG_LT)) return;
    if (refuse_success_probability(p, fail)) return;
    if (p == 1.0) {  // every trial succeeds: no failures
        std::fill(x, x + n, 0);
        return;
    }
    const double theta = (1.0 - p) / p;
    const double md = m;
    // The Poisson means theta G(m) must stay below the Poisson limit: refuse parameters
    // whose mixing gamma reaches it within 10 standard deviations plus 50 scales.
    if (theta * (md + 10.0 * std::sqrt(md) + 50.0) > g05mkc_max_mean &&
        refuse(fail, NE_REAL_ARG_TOO_SMALL))
        return;
    const rng::GammaSampler gamma(md);
    const auto& zn = rng::normal_ziggurat();
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        double lambda;
        do {
            lambda = theta * gamma(eng, zn);
        } while (lambda > g05mkc_max_mean);  // probability below 1e-20 by the check above
        x[i] = PoissonSampler(lambda)(eng);
    }
}

void g05mjc(int m, double p, int n, int x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (m < 0 && refuse(fail, NE_INT_ARG_LT)) return;
    if (!std::isfinite(p) && refuse(fail, NE_REAL)) return;
    if (p < 0.0 && refuse(fail, NE_REAL_ARG_LT)) return;
    if (p > 1.0 && refuse(fail, NE_REAL_ARG_GT)) return;
    const BinomialSampler binomial(m, p);
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = binomial(eng);
}

void g05mkc(double lambda, int n, int x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if (!std::isfinite(lambda) && refuse(fail, NE_REAL)) return;
    if (lambda < 0.0 && refuse(fail, NE_REAL_ARG_LT)) return;
    if (lambda > g05mkc_max_mean && refuse(fail, NE_REAL_ARG_GT)) return;
    const PoissonSampler poisson(lambda);
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = poisson(eng);
}

void g05mlc(int ns, int np, int m, int n, int x[], G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, x, fail)) return;
    if ((ns < 0 || np < 0 || m < 0) && refuse(fail, NE_INT_ARG_LT)) return;
    if ((np > ns || m > ns) && refuse(fail, NE_INT)) return;
    const HypergeometricSampler hypergeometric(ns, np, m);
    Engine eng(state);
    for (int i = 0; i < n; ++i) x[i] = hypergeometric(eng);
}

// ---- General discrete table ----------------------------------------------------------

// r layout: r[0] = ip1, r[1] = np, r[2] = guide count g, r[3 .. 3+np) the cumulative
// table (last entry exactly 1), r[3+np .. 3+np+g) the guide: entry j is the first index
// whose cumulative probability exceeds j / g.
namespace {
constexpr int kTableHeader = 3;
constexpr int kTableMaxSize = g05mzc_max_table_size;
// Tolerance on the total probability of a table: callers' tables are often rounded.
constexpr double kTableSumTolerance = 1e-6;
}  // namespace

int g05mzc_reference_size(int np) {
    if (np < 1) return 8;
    if (np > kTableMaxSize) return INT_MAX;
    return static_cast<int>((14 * static_cast<std::int64_t>(np) + 9) / 10 + 8);
}

namespace {

void set_up_table(int ip1, const double p[], int np, Nag_TableType itype, double r[], int nr,
                  NagError* fail) {
    // Validate completely before writing r.
    double total = 0.0;
    if (itype == Nag_TableType::Nag_PDF) {
        for (int i = 0; i < np; ++i) {
            if (!std::isfinite(p[i]) && refuse(fail, NE_REAL)) return;
            if (p[i] < 0.0 && refuse(fail, NE_REAL_ARG_LT)) return;
            total += p[i];
        }
    } else {
        double previous = 0.0;
        for (int i = 0; i < np; ++i) {
            if (!std::isfinite(p[i]) && refuse(fail, NE_REAL)) return;
            if (p[i] < 0.0 && refuse(fail, NE_REAL_ARG_LT)) return;
            if (p[i] < previous && refuse(fail, NE_REAL)) return;  // not non-decreasing
            previous = p[i];
        }
        total = p[np - 1];
    }
    if (!(std::abs(total - 1.0) <= kTableSumTolerance) && refuse(fail, NE_REAL)) return;

    double* cdf = r + kTableHeader;
    double running = 0.0;
    int last_positive = 0;
    for (int i = 0; i < np; ++i) {
        const double before = running;
        running = itype == Nag_TableType::Nag_PDF ? running + p[i] : p[i];
        cdf[i] = running / total;
        if (running > before) last_positive = i;
    }
    // From the last value with positive probability on, the table is exactly 1, so a
    // uniform just below 1 can never select a value of probability 0.
    for (int i = last_positive; i < np; ++i) cdf[i] = 1.0;
    const int guide_count = nr - kTableHeader - np;
    double* guide = cdf + np;
    int index = 0;
    for (int j = 0; j < guide_count; ++j) {
        const double level = static_cast<double>(j) / guide_count;
        while (cdf[index] <= level) ++index;
        guide[j] = index;
    }
    r[0] = ip1;
    r[1] = np;
    r[2] = guide_count;
}

}  // namespace

void g05mzc(Nag_ModeRNG mode, int ip1, const double p[], int np, Nag_TableType itype, int n,
            int x[], G05State& state, double r[], int nr, NagError* fail) {
    fail->set(NE_NOERROR);
    const auto [set_up, generate] = mode_steps(mode);
    if (!set_up && !generate && refuse(fail, NE_BAD_PARAM)) return;
    if (set_up && itype != Nag_TableType::Nag_PDF && itype != Nag_TableType::Nag_CDF &&
        refuse(fail, NE_BAD_PARAM))
        return;
    if (np < 1 && refuse(fail, NE_INT_ARG_LT)) return;
    if (np > kTableMaxSize && refuse(fail, NE_INT_ARG_GT)) return;
    if (static_cast<std::int64_t>(ip1) + np - 1 > INT_MAX && refuse(fail, NE_INT)) return;
    if (generate && bad_count(n, x, fail)) return;
    if (set_up && p == nullptr && refuse(fail, NE_BAD_PARAM)) return;
    if ((r == nullptr || nr < g05mzc_reference_size(np)) && refuse(fail, NE_INCOMPAT_PARAM)) return;
    if (set_up) {
        set_up_table(ip1, p, np, itype, r, nr, fail);
        if (fail->failed()) return;
    } else if (r[0] != ip1 || r[1] != np || !(r[2] >= 1.0 && r[2] <= nr - kTableHeader - np) ||
               r[kTableHeader + np - 1] != 1.0) {
        fail->set(NE_INCOMPAT_PARAM);
        return;
    }
    if (!generate) return;
    const double* cdf = r + kTableHeader;
    const double* guide = cdf + np;
    const auto guide_count = static_cast<int>(r[2]);
    Engine eng(state);
    for (int i = 0; i < n; ++i) {
        const double u = eng.uniform();
        auto index = static_cast<int>(guide[static_cast<int>(u * guide_count)]);
        while (cdf[index] <= u) ++index;
        x[i] = ip1 + index;
    }
}

void g05nac(int index[], int n, G05State& state, NagError* fail) {
    fail->set(NE_NOERROR);
    if (bad_count(n, index, fail)) return;
    Engine eng(state);
    for (int i = n - 1; i > 0; --i) {
        const auto j = static_cast<int>(eng.bounded(static_cast<std::uint64_t>(i) + 1));
        std::swap(index[i], index[j]);
    }
}

}  // namespace zemath::nag
