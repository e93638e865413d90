// a02: complex elementary functions of the back end, principal values (arg in (-pi, pi]).
//
// Method: the modulus through hypot (no intermediate overflow or underflow); square
// root, logarithm, exponential, sine, cosine, tangent and hyperbolic tangent through the
// C++ runtime's complex functions, which are correctly signed on the branch cuts (a
// signed zero imaginary part selects the side of a cut) and accurate to a few ulps;
// the integer power by binary powering (error grows as log2|n| ulps); the real and
// complex powers in polar form, |z|^r from pow and the angle r arg z (relative error of
// order |r arg z| ulps in the angle).
// Accuracy: within 1e-14 relative of the principal values off the branch cuts for the
// elementary functions; the powers as above.
// Failures: none are reported. At the singular points (log 0, 0 to a negative power,
// tan at a pole) the results are the IEEE ones (+-inf or NaN); callers guard them.
#pragma once

#include "zemath/types.h"

namespace zemath::nag {

double a02dbc(double re, double im) noexcept;         // |z|
d_complex a02dcc(d_complex z) noexcept;               // principal sqrt z
d_complex a02ddc(d_complex z, int n) noexcept;        // z^n, n integer
d_complex a02dec(d_complex z, double r) noexcept;     // z^r, r real
d_complex a02dfc(d_complex z, d_complex w) noexcept;  // z^w = exp(w log z)
d_complex a02dgc(d_complex z) noexcept;               // principal log z
d_complex a02dhc(d_complex z) noexcept;               // exp z
d_complex a02djc(d_complex z) noexcept;               // sin z
d_complex a02dkc(d_complex z) noexcept;               // cos z
d_complex a02dlc(d_complex z) noexcept;               // tan z
d_complex complex_tanh(d_complex z) noexcept;         // tanh z (the library's own routine)

}  // namespace zemath::nag
