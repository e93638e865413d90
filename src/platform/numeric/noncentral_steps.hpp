// The step factors of the Poisson-weighted incomplete beta series (the non-central beta,
// F and t laws), each formed from its exact parts and rounded once.
//
// Neighbouring central terms differ by d(s) = x^s y^b / (s B(s, b)):
//     I_x(s, b) = I_x(s + 1, b) + d(s),   d(s + 1) = d(s) x (s + b) / (s + 1),
// and the series run these recurrences over hundreds of steps. A factor built from rounded
// pieces (x rounded from the caller's t^2/(df + t^2), s + b rounded at every step with the
// same low bits while s + b stays in one binade) would carry the same relative error into
// every step: a drift linear in the number of steps, 3e-14 after 250 steps. So would a
// factor rounded once where it does not change from step to step (b = 1: the factor is
// 1/x at every step). Here x comes in two parts, s + b is carried exactly in two parts,
// the factor is their quotient to twice the precision, and it is applied in two parts
// (d hi + d lo by one fused multiply-add): each step rounds only the new term, by an error
// that depends on the term's own digits, and the drift after n steps is about sqrt(n) ulps.
#pragma once

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

// x (s + b) / (s + 1) with s = s.hi + s.lo, n = s + b (n.hi + n.lo), x = x.hi + x.lo, all
// exact; the quotient to twice the precision.
inline TwoPart beta_step_up(TwoPart x, TwoPart n, TwoPart s_plus_1) {
    return divide(multiply(x, n), s_plus_1);
}

// The reciprocal (s + 1) / (x (s + b)), for the downward run.
inline TwoPart beta_step_down(TwoPart x, TwoPart n, TwoPart s_plus_1) {
    return divide(s_plus_1, multiply(x, n));
}

// v times a two-part factor, rounded once.
inline double times(double v, TwoPart factor) {
    return std::fma(v, factor.hi, v * factor.lo);
}

}  // namespace zemath::numeric
