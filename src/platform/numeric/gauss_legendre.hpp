// Gauss-Legendre rules of 6, 12 and 20 points, exact for polynomials of degree 2n - 1 on
// [-1, 1]: the positive nodes, largest first, and their weights (each node +-x shares its
// weight). Digits: the roots of P_n and the weights 2 / ((1 - x^2) P_n'(x)^2) from mpmath at
// 40 digits, each rounded once to double, written by tests/reference/gen_numeric_tables.py
// (a test compares every entry with that script's output).
#pragma once

#include <array>
#include <cstddef>

namespace zemath::numeric {

template <std::size_t Half>
struct GaussLegendreRule {
    std::array<double, Half> node;
    std::array<double, Half> weight;
};

inline constexpr GaussLegendreRule<3> kGaussLegendre6 = {
    {0.932469514203152, 0.6612093864662645, 0.2386191860831969},
    {0.17132449237917036, 0.3607615730481386, 0.46791393457269104}};

inline constexpr GaussLegendreRule<6> kGaussLegendre12 = {
    {0.9815606342467192, 0.9041172563704749, 0.7699026741943047, 0.5873179542866175,
     0.3678314989981802, 0.1252334085114689},
    {0.04717533638651183, 0.10693932599531843, 0.16007832854334622, 0.20316742672306592,
     0.2334925365383548, 0.24914704581340277}};

inline constexpr GaussLegendreRule<10> kGaussLegendre20 = {
    {0.9931285991850949, 0.9639719272779138, 0.912234428251326, 0.8391169718222188,
     0.7463319064601508, 0.636053680726515, 0.5108670019508271, 0.37370608871541955,
     0.22778585114164507, 0.07652652113349734},
    {0.017614007139152118, 0.04060142980038694, 0.06267204833410907, 0.08327674157670475,
     0.10193011981724044, 0.11819453196151841, 0.13168863844917664, 0.14209610931838204,
     0.14917298647260374, 0.15275338713072584}};

// Integral of f over [lo, hi] by the 20-point rule.
template <class F>
double gauss_legendre20(const F& f, double lo, double hi) {
    const double mid = 0.5 * (lo + hi);
    const double half = 0.5 * (hi - lo);
    double sum = 0.0;
    for (std::size_t i = 0; i < kGaussLegendre20.node.size(); ++i) {
        const double offset = half * kGaussLegendre20.node[i];
        sum += kGaussLegendre20.weight[i] * (f(mid + offset) + f(mid - offset));
    }
    return sum * half;
}

}  // namespace zemath::numeric
