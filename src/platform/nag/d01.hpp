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

// The integral of f over [a, b] (a > b gives the negated integral over [b, a]; a = b
// gives 0 without calling f) to |I - result| <= max(epsabs, epsrel |I|) in at most
// max_num_subint subintervals (storage grows with the subintervals used), by adaptive
// bisection with the 21-point Gauss-Kronrod pair and epsilon-algorithm extrapolation.
// qp (may be null) receives the subintervals used and the calls of f.
// Argument checks, in order: max_num_subint < 1: NE_INT_ARG_LT; a NaN or infinite bound
// or tolerance, or no tolerance above 0: NE_REAL. result and abserr are then 0.
// Failures with the best estimate kept in result and abserr: NE_QUAD_MAX_SUBDIV (the
// subinterval limit), NE_QUAD_ROUNDOFF_TOL (round-off prevents the requested accuracy),
// NE_QUAD_BAD_SUBDIV (an interval too short to bisect: a non-integrable singularity or a
// discontinuity), NE_QUAD_NO_CONV (the extrapolation stopped converging), NE_QUAD_DIVERGENT
// (the integral is probably divergent or too slowly convergent), NE_REAL (f returned NaN
// or an infinity; the driver stops there).
void d01sjc(QuadFunction f, double a, double b, double epsabs, double epsrel, int max_num_subint,
            double* result, double* abserr, Nag_QuadProgress* qp, void* comm, NagError* fail);

// The integral over [bound, inf), (-inf, bound] or (-inf, inf) (bound ignored, even when
// not finite), after the map x = bound +- (1 - t)/t onto t in (0, 1] (the unit distance
// next to the bound integrated unmapped), with the 15-point pair on the mapped part. An
// illegal boundinf value gives NE_BAD_PARAM, checked first; otherwise as d01sjc. On the
// whole line each point costs two calls of f, at x and -x.
void d01smc(QuadFunction f, Nag_BoundInterval boundinf, double bound, double epsabs, double epsrel,
            int max_num_subint, double* result, double* abserr, Nag_QuadProgress* qp, void* comm,
            NagError* fail);

}  // namespace zemath::nag
