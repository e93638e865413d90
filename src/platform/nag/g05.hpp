// g05: random numbers of the back end. A non-repeatable initialisation (g05kcc), the
// continuous generators g05l*, the discrete generators g05m* in their set-up-and-generate
// form, the general discrete table generator g05mzc and the permutation g05nac.
//
// Every generator draws from a G05State the caller keeps as a value (on its stack);
// nothing is shared between states, so the routines are reentrant. Argument order follows
// the routines they replace: distribution parameters, n, the output array x, the state,
// then (where present) the reference vector r[nr], then the error record. Arguments are
// checked before anything is written: a refused call leaves x (and r) untouched.
//
// Failure codes (NagError.code, numbers in status.h):
//   NE_INT_ARG_LT   n < 1, or an integer parameter below its lower limit
//   NE_INT_ARG_GT   an integer parameter above its upper limit
//   NE_REAL_ARG_LT  a real parameter below its lower limit (var < 0, p < 0, ...)
//   NE_REAL_ARG_LE  a real parameter at or below a limit that must be exceeded (a <= 0)
//   NE_REAL_ARG_GT  a real parameter above its upper limit (p > 1, lambda too large)
//   NE_REAL_ARG_TOO_SMALL  p so small that the counts would overflow an int
//   NE_REAL         a real parameter is NaN or infinite, or a relation between real
//                   parameters fails (a > b, covariance not symmetric or not positive
//                   semi-definite, a table that does not sum to 1)
//   NE_INT          a relation between integer parameters fails (a > b, sample > population)
//   NE_BAD_PARAM    an enumerated argument out of range
//   NE_INCOMPAT_PARAM  a reference vector too short or not set up for these arguments
// Allocation failure propagates as std::bad_alloc (the rule in nag.hpp).
#pragma once

#include <cstdint>

#include "platform/nag/nag.hpp"

namespace zemath::nag {

// Generator state: the generator number and the four-word seed array, which is also the
// whole state of the 64-bit engine (xoshiro256++). The seed words start with the values
// the library has always pre-filled before initialising; g05kcc overwrites them.
struct G05State {
    int igen = 1;
    std::uint64_t iseed[4] = {1762543, 9324783, 42344, 742355};
};

// What a call of a generator with a reference vector does.
enum class Nag_ModeRNG {
    Nag_InitializeReference = 0,    // set up r only
    Nag_GenerateFromReference = 1,  // generate from an r set up before
    Nag_InitializeAndGenerate = 2   // both
};

// How g05mzc reads its table: probabilities of each value, or cumulative probabilities.
enum class Nag_TableType { Nag_PDF, Nag_CDF };

// Non-repeatable initialisation: state.igen = igen, and the seed words are replaced by
// entropy from std::random_device, the clock, the generator number and their previous
// contents (the pre-filled constants), mixed through SplitMix64. Never fails; if the
// random device is unavailable the clock alone seeds the state.
void g05kcc(int igen, G05State& state);

// ---- Continuous generators ----------------------------------------------------------

// Normal with mean xmu and VARIANCE var >= 0 (not the standard deviation).
void g05lac(double xmu, double var, int n, double x[], G05State& state, NagError* fail);
// Student's t with df >= 1 degrees of freedom.
void g05lbc(int df, int n, double x[], G05State& state, NagError* fail);
// Chi-square with df >= 1 degrees of freedom.
void g05lcc(int df, int n, double x[], G05State& state, NagError* fail);
// F with df1, df2 >= 1 degrees of freedom.
void g05ldc(int df1, int df2, int n, double x[], G05State& state, NagError* fail);
// Beta(a, b), a > 0, b > 0.
void g05lec(double a, double b, int n, double x[], G05State& state, NagError* fail);
// Gamma with shape a > 0 and scale b > 0: density x^(a-1) e^(-x/b) / (b^a Gamma(a)).
void g05lfc(double a, double b, int n, double x[], G05State& state, NagError* fail);
// Uniform on [a, b], a <= b (a = b gives a).
void g05lgc(double a, double b, int n, double x[], G05State& state, NagError* fail);
// Triangular with minimum xmin, mode xmed, maximum xmax: xmin <= xmed <= xmax, xmin < xmax.
void g05lhc(double xmin, double xmed, double xmax, int n, double x[], G05State& state,
            NagError* fail);
// Exponential with MEAN a > 0: density (1/a) e^(-x/a).
void g05ljc(double a, int n, double x[], G05State& state, NagError* fail);
// Log-normal: ln X is normal with mean xmu and VARIANCE var >= 0.
void g05lkc(double xmu, double var, int n, double x[], G05State& state, NagError* fail);
// Cauchy with median xmed and semi-interquartile range semiqr >= 0 (0 gives xmed).
void g05llc(double xmed, double semiqr, int n, double x[], G05State& state, NagError* fail);
// Weibull f(x) = (a/b) x^(a-1) exp(-x^a / b), a > 0, b > 0: b is the textbook scale to
// the power a; drawn as (b E)^(1/a) with E standard exponential.
void g05lmc(double a, double b, int n, double x[], G05State& state, NagError* fail);
// Logistic with location a and spread b > 0: density e^((x-a)/b) / (b (1 + e^((x-a)/b))^2).
void g05lnc(double a, double b, int n, double x[], G05State& state, NagError* fail);

// Multivariate normal, one vector x[m] per call, mean xmu[m], covariance c (m x m, row
// stride tdc >= m), symmetric (to a relative 1e-10) and positive semi-definite (to
// rounding). Mode 0 stores a factor A with A A^T = c in r, mode 1 generates
// x = xmu + A z from it, mode 2 does both. r needs nr >= g05lzc_reference_size(m).
void g05lzc(Nag_ModeRNG mode, int m, const double xmu[], const double c[], int tdc, double x[],
            G05State& state, double r[], int nr, NagError* fail);
int g05lzc_reference_size(int m);
// The generation step of g05lzc without its checks, for a caller that has set r up and
// checked xmu: count vectors x = xmu + A z written one after another (count * m values),
// z the caller's scratch of m doubles, so that many vectors cost no allocation.
void g05lzc_generate(int m, const double xmu[], const double r[], double x[], int count,
                     G05State& state, double z[]);
inline constexpr int g05lzc_max_dimension = 46340;  // m * m + 1 must fit an int

// ---- Discrete generators (set up and generate in one call) ---------------------------

// Uniform on the integers a, a+1, ..., b; a <= b.
void g05mac(int a, int b, int n, int x[], G05State& state, NagError* fail);
// Geometric: the number of failures before the first success, P(X = k) = p (1-p)^k,
// 0 < p <= 1 (p too small for int counts gives NE_REAL_ARG_TOO_SMALL).
void g05mbc(double p, int n, int x[], G05State& state, NagError* fail);
// Negative binomial: failures before the m-th success, P(X = k) = C(m+k-1, k) p^m (1-p)^k,
// m >= 1, 0 < p <= 1 (mean too large for int counts gives NE_REAL_ARG_TOO_SMALL).
void g05mcc(int m, double p, int n, int x[], G05State& state, NagError* fail);
// Binomial with m >= 0 trials and success probability 0 <= p <= 1.
void g05mjc(int m, double p, int n, int x[], G05State& state, NagError* fail);
// Poisson with mean 0 <= lambda <= g05mkc_max_mean.
void g05mkc(double lambda, int n, int x[], G05State& state, NagError* fail);
inline constexpr double g05mkc_max_mean = 1073741823.0;  // INT_MAX / 2: counts stay in int
// Hypergeometric: successes in a sample of np drawn without replacement from a population
// of ns holding m successes; 0 <= np <= ns, 0 <= m <= ns.
void g05mlc(int ns, int np, int m, int n, int x[], G05State& state, NagError* fail);

// General discrete law on ip1, ip1+1, ..., ip1+np-1 from a table p[np] of probabilities
// (PDF: p >= 0, summing to 1 within 1e-6) or cumulative probabilities (CDF:
// non-decreasing in [0, 1], last within 1e-6 of 1); the table is normalised to sum 1.
// r[nr] holds the cumulative table and a guide table (indexed search, Chen and Asau);
// nr >= g05mzc_reference_size(np) = ceil(1.4 np + 8). Modes as in g05lzc.
void g05mzc(Nag_ModeRNG mode, int ip1, const double p[], int np, Nag_TableType itype, int n,
            int x[], G05State& state, double r[], int nr, NagError* fail);
int g05mzc_reference_size(int np);
inline constexpr int g05mzc_max_table_size = 1533916885;  // ceil(1.4 np + 8) fits an int

// Random permutation (uniform over all n! orders) of index[0..n-1] in place, n >= 1.
void g05nac(int index[], int n, G05State& state, NagError* fail);

}  // namespace zemath::nag
