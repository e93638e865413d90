// g01: distribution functions and deviates of the back end. Each routine fills the
// NagError record: code 0 on success, a positive number (nag.hpp) on failure, in which
// case the returned value is 0 unless the routine documents an approximate result.
// Conventions: "Lower" is P(X <= x), "Upper" P(X > x) (P(X >= x) for continuous laws).
#pragma once

#include <cmath>

#include "platform/nag/nag.hpp"
#include "platform/numeric/normal.hpp"

namespace zemath::nag {

// Standard normal tail probability for any of the four tail selectors. Inline: erfc is
// nearly all of its cost, and a call into another file cost a tenth more.
inline double g01eac(Nag_TailProbability tail, double x, NagError* fail) {
    using Tail = Nag_TailProbability;
    const bool accepted = tail == Tail::Nag_LowerTail || tail == Tail::Nag_UpperTail ||
                          tail == Tail::Nag_TwoTailSignif || tail == Tail::Nag_TwoTailConfid;
    fail->set(!accepted ? NE_BAD_PARAM : std::isnan(x) ? NE_REAL : NE_NOERROR);
    if (fail->failed()) return 0.0;
    switch (tail) {
        case Tail::Nag_LowerTail:
            return numeric::normal_lower(x);
        case Tail::Nag_UpperTail:
            return numeric::normal_upper(x);
        case Tail::Nag_TwoTailSignif:
            return 2.0 * (x < 0.0 ? numeric::normal_lower(x) : numeric::normal_upper(x));
        default:
            return numeric::normal_within(x);
    }
}
// Standard normal deviate z with Phi(z) = p, 0 < p < 1.
double g01cec(double p, NagError* fail);

// Student's t tail probability, all four tails, real df >= 1.
double g01ebc(Nag_TailProbability tail, double t, double df, NagError* fail);
// Student's t deviate for the tail selector, 0 < p < 1, df >= 1.
double g01fbc(Nag_TailProbability tail, double p, double df, NagError* fail);
// Non-central t lower tail; tol is the absolute accuracy (0: default), max_iter >= 1.
double g01gbc(double t, double df, double delta, double tol, int max_iter, NagError* fail);

// Chi-square tail probability, Lower or Upper only; x >= 0, df > 0.
double g01ecc(Nag_TailProbability tail, double x, double df, NagError* fail);
// Chi-square deviate x with P(X <= x) = p, 0 <= p < 1, df > 0.
double g01fcc(double p, double df, NagError* fail);
// Non-central chi-square lower tail, 0 <= lambda <= about 1416.
double g01gcc(double x, double df, double lambda, double tol, int max_iter, NagError* fail);

// F tail probability, Lower or Upper only; f >= 0, df1, df2 > 0. NE_ACCURACY_WARNING
// (424) with the value kept when the beta evaluation reports reduced accuracy.
double g01edc(Nag_TailProbability tail, double f, double df1, double df2, NagError* fail);
// F deviate f with P(F <= f) = p, 0 <= p < 1. NE_DEVIATE_FAILED (422) when the solver
// cannot bracket or converge.
double g01fdc(double p, double df1, double df2, NagError* fail);
// Non-central F lower tail.
double g01gdc(double f, double df1, double df2, double lambda, double tol, int max_iter,
              NagError* fail);

// Beta lower and upper tails and density at once; 0 <= x <= 1, 0 < a, b <= 1e6. tol is
// ignored (kept for the call shape); a null output is skipped (not computed).
void g01eec(double x, double a, double b, double tol, double* p, double* q, double* pdf,
            NagError* fail);
// Beta deviate with I_x(a, b) = p, 0 <= p <= 1.
double g01fec(double p, double a, double b, double tol, NagError* fail);
// Non-central beta lower tail.
double g01gec(double x, double a, double b, double lambda, double tol, int max_iter,
              NagError* fail);

// Gamma tail probability (a shape, b scale), Lower or Upper only.
double g01efc(Nag_TailProbability tail, double g, double a, double b, NagError* fail);
// Gamma deviate (a shape, b scale), 0 <= p < 1.
double g01ffc(double p, double a, double b, double tol, NagError* fail);
// Gamma density (a shape, b scale); 0 for x < 0.
double g01kfc(double x, double a, double b, NagError* fail);

// Binomial(n, p): P(X <= k), P(X > k), P(X = k). For these three routines an output
// pointer may be null; that output is then neither computed nor written.
void g01bjc(int n, double p, int k, double* plek, double* pgtk, double* peqk, NagError* fail);
// Poisson(lambda): P(X <= k), P(X > k), P(X = k).
void g01bkc(double lambda, int k, double* plek, double* pgtk, double* peqk, NagError* fail);
// Hypergeometric: population n, sample l, m marked; P(X <= k), P(X > k), P(X = k).
void g01blc(int n, int l, int m, int k, double* plek, double* pgtk, double* peqk, NagError* fail);

// Bivariate standard normal P(X <= x, Y <= y) with correlation rho, |rho| <= 1.
double g01hac(double x, double y, double rho, NagError* fail);
// Studentized range lower tail for q, v degrees of freedom (>= 1), ir groups (>= 2).
double g01emc(double q, double v, int ir, NagError* fail);
// Studentized range deviate, 0 < p < 1.
double g01fmc(double p, double v, int ir, NagError* fail);
// Studentized range upper tail 1 - P(q), integrated as such where it is below 0.1: relative
// accuracy also where P rounds to 1. The failures of g01emc; 1 for q <= 0, 0 for q = +infinity.
double g01emc_upper(double q, double v, int ir, NagError* fail);

}  // namespace zemath::nag
