// d01: adaptive quadrature of a function of one variable on a finite interval (d01sjc)
// and on an infinite or semi-infinite one (d01smc).
#pragma once

#include "platform/nag/nag.hpp"

namespace zemath::nag {

// The integrand with the caller's context.
using QuadFunction = double (*)(double x, void* comm);

enum class Nag_BoundInterval { Nag_UpperSemiInfinite, Nag_LowerSemiInfinite, Nag_Infinite };

// What the routine did: subintervals used and integrand evaluations.
struct Nag_QuadProgress {
    int num_subint = 0;
    int fun_count = 0;
};

// Failure codes beyond the argument checks: the subinterval limit reached
// (NE_TOO_MANY_ITER), round-off prevents the requested
// accuracy (NE_CONV), the integrand returned a non-finite value (NE_REAL). In each case
// result and abserr hold the best estimate reached. max_num_subint < 1: NE_INT_ARG_LT;
// a NaN or infinite bound or tolerance, or both tolerances 0 or negative: NE_REAL.
void d01sjc(QuadFunction f, double a, double b, double epsabs, double epsrel, int max_num_subint,
            double* result, double* abserr, Nag_QuadProgress* qp, void* comm, NagError* fail);

// The integral over [bound, inf), (-inf, bound] or (-inf, inf) (bound ignored). An
// illegal boundinf value gives NE_BAD_PARAM; otherwise as d01sjc.
void d01smc(QuadFunction f, Nag_BoundInterval boundinf, double bound, double epsabs, double epsrel,
            int max_num_subint, double* result, double* abserr, Nag_QuadProgress* qp, void* comm,
            NagError* fail);

}  // namespace zemath::nag
