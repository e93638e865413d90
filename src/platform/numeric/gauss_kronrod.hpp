// Gauss-Kronrod pairs of 15 and 21 points on [-1, 1]: the 7- and 10-point Gauss rules
// with their Kronrod extensions (exact for polynomials of degree 22 and 31; the Gauss
// rules for degree 13 and 19). Rows hold the non-negative nodes from 0 up, each node
// +-x sharing its weights: {node, Kronrod weight, Gauss weight}, the Gauss weight 0 where
// the node belongs to the Kronrod rule only. Digits: the zeros of P_n and of the
// Stieltjes polynomial E_{n+1}, and the weights from the moment equations, computed in
// exact fractions and mpmath at 60 digits and rounded once to double, written by
// tests/reference/gen_gauss_kronrod.py (a test compares every entry with that script's
// output).
#pragma once

namespace zemath::numeric {

struct KronrodNode {
    double x, wk, wg;
};

inline constexpr KronrodNode kGaussKronrod15[] = {
    {0.0, 0.20948214108472782, 0.4179591836734694},
    {0.20778495500789848, 0.20443294007529889, 0.0},
    {0.4058451513773972, 0.19035057806478542, 0.3818300505051189},
    {0.5860872354676911, 0.1690047266392679, 0.0},
    {0.7415311855993945, 0.14065325971552592, 0.27970539148927664},
    {0.8648644233597691, 0.10479001032225019, 0.0},
    {0.9491079123427585, 0.06309209262997856, 0.1294849661688697},
    {0.9914553711208126, 0.022935322010529224, 0.0},
};

inline constexpr KronrodNode kGaussKronrod21[] = {
    {0.0, 0.1494455540029169, 0.0},
    {0.14887433898163122, 0.14773910490133849, 0.29552422471475287},
    {0.2943928627014602, 0.14277593857706009, 0.0},
    {0.4333953941292472, 0.13470921731147334, 0.26926671930999635},
    {0.5627571346686047, 0.12349197626206584, 0.0},
    {0.6794095682990244, 0.10938715880229764, 0.21908636251598204},
    {0.7808177265864169, 0.0931254545836976, 0.0},
    {0.8650633666889845, 0.07503967481091996, 0.1494513491505806},
    {0.9301574913557082, 0.054755896574351995, 0.0},
    {0.9739065285171717, 0.032558162307964725, 0.06667134430868814},
    {0.9956571630258081, 0.011694638867371874, 0.0},
};

}  // namespace zemath::numeric
