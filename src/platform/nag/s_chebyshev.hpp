// Chebyshev series of the special-function substitutes: the pieces (coefficients from
// tests/reference/gen_s_coefficients.py, mpmath at 50 digits, in s_coefficients.inc) and
// their evaluation by Clenshaw's recurrence.
#pragma once

namespace zemath::nag::detail {

// sum_{k < n} c_k T_k(t), t in [-1, 1], c_0 already halved.
template <int N>
struct ChebPiece {
    int n;
    double c[N];
};

template <int N>
inline double chebyshev(const ChebPiece<N>& p, double t) {
    double b1 = 0.0, b2 = 0.0;
    const double t2 = 2.0 * t;
    for (int k = p.n - 1; k >= 1; --k) {
        const double b0 = p.c[k] + t2 * b1 - b2;
        b2 = b1;
        b1 = b0;
    }
    return p.c[0] + t * b1 - b2;
}

#include "platform/nag/s_coefficients.inc"

}  // namespace zemath::nag::detail
