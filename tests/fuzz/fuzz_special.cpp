// Fuzz target: the special functions (both the unprefixed and the zemath_ families) and
// the script function table. Checked on each call: a failure is NANUM, never a bare NaN;
// a NaN or NANUM argument gives NANUM (infinity too, except where documented); values
// stay inside the function's range (erf, the normal integrals, incomplete gamma); the
// table never reads past the argument count it announces and leaves result untouched
// when it refuses; the integral of a host function always terminates.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.hpp"
#include "zemath.h"
#include "zemath/string_array.hpp"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;

// Aborts on a broken property, naming its line, so that the fuzzer keeps the input.
#define require(ok) zemath_fuzz::require_at((ok), __LINE__)

namespace {

using Unary = double (*)(double);

// Bounds of a function's values (NANUM aside); lo > hi means unbounded.
struct UnaryRow {
    Unary f;
    double lo, hi;
    bool infinity_allowed;  // +-infinity is an argument it evaluates
};

const UnaryRow kUnary[] = {
    {airy_ai, 1, 0, false},
    {airy_ai_deriv, 1, 0, false},
    {airy_bi, 1, 0, false},
    {airy_bi_deriv, 1, 0, false},
    {bessel_j0, -1, 1, false},
    {bessel_j1, -1, 1, false},
    {bessel_y0, 1, 0, false},
    {bessel_y1, 1, 0, false},
    {bessel_i0, 1, HUGE_VAL, false},
    {bessel_i1, 1, 0, false},
    {bessel_k0, 0, HUGE_VAL, false},
    {bessel_k1, 0, HUGE_VAL, false},
    {bessel_i0_scaled, 0, 1, false},
    {bessel_i1_scaled, -1, 1, false},
    {bessel_k0_scaled, 0, HUGE_VAL, false},
    {bessel_k1_scaled, 0, HUGE_VAL, false},
    {kelvin_ber, 1, 0, false},
    {kelvin_bei, 1, 0, false},
    {kelvin_ker, 1, 0, false},
    {kelvin_kei, 1, 0, false},
    {fresnel_s, -1, 1, false},
    {fresnel_c, -1, 1, false},
    {exp_integral, 1, 0, false},
    {cos_integral, 1, 0, false},
    {sin_integral, -2, 2, false},
    {cumul_normal, 0, 1, false},
    {cumul_normal_complem, 0, 1, false},
    {gammaz, 1, 0, false},
    {log_gamma, 1, 0, false},
    {erfz, -1, 1, false},
    {erfcz, 0, 2, false},
    {erfcx, 0, HUGE_VAL, false},
    {erfcinv, 1, 0, false},
    {erfinv, 1, 0, false},
    {degrees, 1, 0, false},
    {radians, 1, 0, false},
    {zemath_bessel_i0_scaled, 0, 1, false},
    {zemath_bessel_i1, 1, 0, false},
    {zemath_bessel_i1_scaled, -1, 1, false},
    {zemath_bessel_j0, -1, 1, false},
    {zemath_bessel_j1, -1, 1, false},
    {zemath_bessel_k0, 0, HUGE_VAL, false},
    {zemath_bessel_k0_scaled, 0, HUGE_VAL, false},
    {zemath_bessel_k1, 0, HUGE_VAL, false},
    {zemath_bessel_k1_scaled, 0, HUGE_VAL, false},
    {zemath_bessel_y0, 1, 0, false},
    {zemath_bessel_y1, 1, 0, false},
    {zemath_cos_integral, 1, 0, false},
    {zemath_cumul_normal, 0, 1, false},
    {zemath_cumul_normal_complem, 0, 1, false},
    {zemath_erf, -1, 1, true},
    {zemath_erfc, 0, 2, true},
    {zemath_exp_integral, 1, 0, false},
    {zemath_fresnel_c, -1, 1, false},
    {zemath_fresnel_s, -1, 1, false},
    {zemath_gamma, 1, 0, false},
    {zemath_kelvin_bei, 1, 0, false},
    {zemath_kelvin_ber, 1, 0, false},
    {zemath_kelvin_kei, 1, 0, false},
    {zemath_kelvin_ker, 1, 0, false},
    {zemath_log_gamma, 1, 0, false},
    {zemath_sin_integral, -2, 2, false},
};
constexpr int kUnaryCount = static_cast<int>(sizeof kUnary / sizeof kUnary[0]);

bool bad(double v) {
    return std::isnan(v) || v == NANUM || std::isinf(v);
}

// The documented contract of every special function: NANUM for a failure, never NaN.
#define check_value(v) require((v) == NANUM || !std::isnan(v))

// A host integrand from fuzzed coefficients: a polynomial, an oscillation, a pole or an
// integrand that goes non-finite.
struct Integrand {
    int kind;
    double a, b, c;
};

double integrand(void* context, double x) {
    const Integrand& f = *static_cast<const Integrand*>(context);
    switch (f.kind) {
        case 0:
            return f.a + x * (f.b + x * f.c);
        case 1:
            return f.a * std::sin(f.b * x + f.c);
        case 2:
            return f.a / (x - f.b);
        case 3:
            return std::exp(-f.a * x * x) * f.b;
        default:
            return f.c > 0 ? NAN : 1.0 / std::sqrt(std::fabs(x - f.a));
    }
}

const char* const kNames[] = {"airy_ai",   "bessel_i_nu", "betacdf", "hygecdf",   "jacobian_theta",
                              "angleint2", "lambertW",    "nctcdf",  "srangeinv", "integral",
                              "wblpdf",    "ksdensity",   "gamma",   "",          "Gamma",
                              "erfcinv"};

// The argument-count word of every row, from the listing and the lookup by name.
const std::vector<int>& row_counts() {
    static const std::vector<int> counts = [] {
        std::vector<int> out(ZEMATH_KS_FUNCTION_COUNT, -1);
        for (int category = 0; category < 6; ++category) {
            CStringArray names, lists;
            const int got = zemath_KS_functions_get_list(&names, &lists, category, nullptr);
            for (int k = 0; k < got; ++k) {
                unsigned long index = 0;
                const int words = zemath_KS_functions(1, const_cast<char*>(names.GetAt(k)), &index,
                                                      nullptr, nullptr);
                if (words > 0 && index < out.size()) out[index] = words;
            }
        }
        for (int words : out) require(words > 0);  // every row is listed under its category
        return out;
    }();
    return counts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(14);
    const double a = in.real(), b = in.real(), c = in.real(), d = in.real();
    const int i = in.integer();
    switch (which) {
        case 0: {  // one-argument functions
            const int pick = in.pick(kUnaryCount);
            const UnaryRow& row = kUnary[pick];
            const double v = row.f(a);
            if (std::getenv("ZEMATH_FUZZ_TRACE"))
                std::fprintf(stderr, "row %d (%.17g) = %.17g\n", pick, a, v);
            check_value(v);
            if (std::isnan(a) || a == NANUM || (std::isinf(a) && !row.infinity_allowed))
                require(v == NANUM);
            if (v != NANUM && row.lo <= row.hi) require(v >= row.lo && v <= row.hi);
            break;
        }
        case 1: {  // orders nu/4
            const int nu = in.byte() & 1 ? i : i % 5;
            double (*const f[])(double, int) = {bessel_i_nu,        bessel_i_nu_scaled,
                                                bessel_k_nu,        bessel_k_nu_scaled,
                                                zemath_bessel_i_nu, zemath_bessel_i_nu_scaled,
                                                zemath_bessel_k_nu, zemath_bessel_k_nu_scaled};
            const double v = f[in.pick(8)](a, nu);
            check_value(v);
            if (bad(a) || nu == 0 || nu > 3 || nu < -3) require(v == NANUM);
            break;
        }
        case 2: {
            const int k = in.byte() & 1 ? i : i % 8;
            const double v = in.byte() & 1 ? real_polygamma(a, k) : zemath_real_polygamma(a, k);
            check_value(v);
            if (bad(a) || k < 0 || k > 6) require(v == NANUM);
            break;
        }
        case 3: {
            const double v = in.byte() & 1 ? incomplete_gamma(a, b) : zemath_incomplete_gamma(a, b);
            check_value(v);
            if (bad(a) || bad(b)) require(v == NANUM);
            if (v != NANUM) require(v >= 0.0 && v <= 1.0);
            break;
        }
        case 4: {
            const int k = in.byte() & 1 ? i : i % 6;
            const double v =
                in.byte() & 1 ? jacobian_theta(k, a, b) : zemath_jacobian_theta(k, a, b);
            check_value(v);
            if (bad(a) || bad(b) || k < 0 || k > 4) require(v == NANUM);
            break;
        }
        case 5: {  // Carlson's integrals: not negative where defined (0 only by underflow)
            if (std::getenv("ZEMATH_FUZZ_TRACE"))
                std::fprintf(stderr, "carlson (%.17g, %.17g, %.17g, %.17g)\n", a, b, c, d);
            const bool prefixed = in.byte() & 1;
            double v = 0;
            switch (in.pick(4)) {
                case 0:
                    v = prefixed ? zemath_elliptic_integral_rc(a, b) : elliptic_integral_rc(a, b);
                    if (v != NANUM && b > 0) require(v >= 0);  // 0: underflow
                    if (bad(a) || bad(b)) require(v == NANUM);
                    break;
                case 1:
                    v = prefixed ? zemath_elliptic_integral_rf(a, b, c)
                                 : elliptic_integral_rf(a, b, c);
                    if (v != NANUM) require(v >= 0);
                    if (bad(a) || bad(b) || bad(c)) require(v == NANUM);
                    break;
                case 2:
                    v = prefixed ? zemath_elliptic_integral_rd(a, b, c)
                                 : elliptic_integral_rd(a, b, c);
                    if (v != NANUM) require(v >= 0);
                    if (bad(a) || bad(b) || bad(c)) require(v == NANUM);
                    break;
                default:
                    v = prefixed ? zemath_elliptic_integral_rj(a, b, c, d)
                                 : elliptic_integral_rj(a, b, c, d);
                    if (v != NANUM && d > 0) require(v >= 0);
                    if (bad(a) || bad(b) || bad(c) || bad(d)) require(v == NANUM);
                    break;
            }
            check_value(v);
            break;
        }
        case 6: {  // angles
            const int unit = in.pick(3), mode = in.pick(3);
            const double full = unit == 1 ? 360.0 : 2 * M_PI;
            const double v = angleint1(a, b, c, d, unit, mode);
            if (std::getenv("ZEMATH_FUZZ_TRACE"))
                std::fprintf(stderr, "angleint1(%.17g, %.17g, %.17g, %.17g, %d, %d) = %.17g\n", a,
                             b, c, d, unit, mode, v);
            check_value(v);
            if (v != NANUM) {
                if (mode != 0)
                    require(v >= 0 && v < full * (1 + 1e-15));
                else
                    require(std::fabs(v) <= full / 4 * (1 + 1e-15));
            }
            const double w =
                angleint2(a, b, c, d, in.real(), in.real(), in.real(), in.real(), unit, mode);
            check_value(w);
            if (w != NANUM) {
                if (mode != 0)
                    require(w >= 0 && w < full * (1 + 1e-15));
                else
                    require(std::fabs(w) <= full / 4 * (1 + 1e-15));
            }
            break;
        }
        case 7: {  // placeholders
            int status = -5;
            require(ksdensity(i, in.integer(), a, in.byte() & 1 ? &status : nullptr) == NANUM);
            require(ks2density(a, b, c, d, in.real(), in.real()) == NANUM);
            break;
        }
        case 8: {  // lookup by a known or fuzzed name
            std::string name;
            if (in.byte() & 1) {
                name = kNames[in.pick(16)];
            } else {
                for (int k = in.pick(24); k > 0; --k) name.push_back(static_cast<char>(in.byte()));
            }
            unsigned long index = 777777;
            const int words = zemath_KS_functions(1, name.data(), &index, nullptr, nullptr);
            if (words == -1) {
                require(index == 777777);
            } else {
                require(words >= 1 && words <= 10 && index < ZEMATH_KS_FUNCTION_COUNT);
            }
            unsigned long base = 777777;
            const int base_words =
                zemath_KS_base_functions(1, name.data(), &base, nullptr, nullptr, nullptr);
            require(base_words == -1 ? base == 777777 : (base_words == 2 && base == 0));
            break;
        }
        case 9: {  // call a row with exactly as many values as it announces
            unsigned long index = static_cast<unsigned long>(in.integer());
            if (in.byte() & 1) index %= ZEMATH_KS_FUNCTION_COUNT + 2;
            const std::vector<int>& counts = row_counts();
            const int words = index < counts.size() ? counts[index] : 10;
            std::vector<double> args = in.reals(words);
            double result = -12345.0;
            const unsigned mode = in.byte() % 8 ? 2u : in.pick(6);
            const int rc = zemath_KS_functions(mode, nullptr, in.byte() % 16 ? &index : nullptr,
                                               in.byte() % 16 ? args.data() : nullptr,
                                               in.byte() % 16 ? &result : nullptr);
            if (rc != 0 || mode != 2) require(result == -12345.0);
            if (rc == 0 && mode == 2) require(result == NANUM || !std::isnan(result));
            break;
        }
        case 10: {  // the integral row through the context table
            Integrand f{in.pick(5), a, b, c};
            KSFInfo info{in.byte() % 16 ? integrand : nullptr, &f};
            unsigned long index = in.byte() % 8 ? 0ul : static_cast<unsigned long>(in.integer());
            double args[2] = {in.real(), in.real()};
            double result = -12345.0;
            const int rc = zemath_KS_base_functions(2, nullptr, &index, &info, args, &result);
            if (rc != 0) require(result == -12345.0);
            if (rc == 0) require(result == NANUM || std::isfinite(result));
            break;
        }
        case 11: {  // integralKS directly, with the bounds' symmetry
            Integrand f{in.pick(5), a, b, c};
            KSFInfo info{integrand, &f};
            const double x1 = d, x2 = in.real();
            const double v = integralKS(in.byte() % 16 ? &info : nullptr, x1, x2);
            require(v == NANUM || std::isfinite(v));
            // Equal finite bounds give 0; NANUM bounds are infinite (x1 -inf, x2 +inf).
            if (x1 == x2 && x1 != NANUM && v != NANUM) require(v == 0.0);
            break;
        }
        case 12: {  // listing by category
            CStringArray names, lists, labels;
            names.Add("stale");
            const int category = in.byte() & 1 ? in.pick(7) : i;
            const int got =
                zemath_KS_functions_get_list(in.byte() % 16 ? &names : nullptr, &lists, category,
                                             in.byte() & 1 ? &labels : nullptr);
            if (got >= 0) {
                require(got <= ZEMATH_KS_FUNCTION_COUNT);
                require(names.GetSize() == static_cast<size_t>(got));
                require(lists.GetSize() == static_cast<size_t>(got));
                for (int k = 0; k < got; ++k) require(std::strlen(names.GetAt(k)) > 0);
            }
            break;
        }
        default: {  // the modified Bessel and exponential integrals near their limits
            const double x = in.byte() & 1 ? a : 700.92 + b / 1e3;
            check_value(bessel_i_nu(x, 1 + in.pick(3)));
            check_value(bessel_i0(x));
            check_value(exp_integral(-x));
            check_value(airy_bi(x / 6.7));
            check_value(airy_ai(-x * 7e7));
            break;
        }
    }
    return 0;
}
