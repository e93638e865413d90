// d01sjc, d01smc: globally adaptive quadrature.
//
// Goal: |I - result| <= max(epsabs, epsrel |I|), or a failure report with the best
// estimate. Method (after QUADPACK's QAGS and QAGI, without their extrapolation): the
// interval with the largest error estimate is bisected until the sum of the estimates
// meets the goal. Each interval is integrated by a Gauss-Kronrod pair (21 points on a
// finite interval; for an infinite range, 21 points on the unit interval next to the
// bound and 15 points on (0, 1/2] after the map x = bound +- (1 - t)/t, dx = dt / t^2,
// for the rest, the two halves of (-inf, inf) folded together).
// The error estimate of a pair is QUADPACK's
//     err = resasc * min(1, (200 |K - G| / resasc)^1.5),  floored at 50 eps resabs,
// with resasc the integral of |f - K/(b-a)|. Integrable endpoint singularities are
// resolved by the bisection itself: each level adds one interval at the singular end, so
// x^-0.9 reaches 1e-10 within about 400 intervals. The reported error is always the
// plain sum of the pieces' estimates.
//
// Failures: the subinterval limit (NE_TOO_MANY_ITER); round-off: ten bisections in a row
// that did not reduce the error estimate of their interval, or an interval too short to
// split (NE_CONV); a non-finite integrand value (NE_REAL). Divergent integrals end in
// one of the first two.
// Reference: R. Piessens, E. de Doncker-Kapenga, C. W. Ueberhuber and D. K. Kahaner
// (1983), QUADPACK, Springer (QAGS, QAGI, QK21, QK15).
#include "platform/nag/d01.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

namespace zemath::nag {

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr int kMaxIntervals = 2000;  // the storage bound; callers' limits are below it

// The Gauss-Kronrod pairs on [-1, 1], non-negative half (the values of Boost.Math's
// tables, to 17 digits).
struct Node {
    double x, wk, wg;
};
// kRule21: {node, Kronrod weight, Gauss weight (0 for a Kronrod-only node)}
constexpr Node kRule21[] = {
    {0, 0.1494455540029169, 0},
    {0.14887433898163122, 0.14773910490133849, 0.29552422471475287},
    {0.2943928627014602, 0.14277593857706009, 0},
    {0.43339539412924721, 0.13470921731147334, 0.26926671930999635},
    {0.56275713466860466, 0.12349197626206584, 0},
    {0.67940956829902444, 0.10938715880229764, 0.21908636251598204},
    {0.7808177265864169, 0.093125454583697601, 0},
    {0.86506336668898454, 0.075039674810919957, 0.14945134915058059},
    {0.93015749135570824, 0.054755896574351995, 0},
    {0.97390652851717174, 0.032558162307964725, 0.066671344308688138},
    {0.99565716302580809, 0.011694638867371874, 0},
};
// kRule15: {node, Kronrod weight, Gauss weight (0 for a Kronrod-only node)}
constexpr Node kRule15[] = {
    {0, 0.20948214108472782, 0.4179591836734694},
    {0.20778495500789848, 0.20443294007529889, 0},
    {0.40584515137739718, 0.19035057806478542, 0.38183005050511892},
    {0.58608723546769115, 0.16900472663926791, 0},
    {0.74153118559939446, 0.14065325971552592, 0.27970539148927664},
    {0.8648644233597691, 0.10479001032225019, 0},
    {0.94910791234275849, 0.063092092629978558, 0.1294849661688697},
    {0.99145537112081261, 0.022935322010529224, 0},
};

struct Piece {
    double a, b, result, error;
    bool mapped;  // a t interval of the map to infinity, or a plain x interval
};

// The integrand as the driver sees it: the caller's function, possibly mapped.
struct Integrand {
    QuadFunction f;
    void* comm;
    int mapped;  // 0 none; 1 upper, 2 lower semi-infinite, 3 both halves
    double bound;
    int count = 0;
    bool bad = false;
    double operator()(double t, bool use_map) {
        double v = 0.0;
        if (!use_map) {
            v = f(t, comm);
            ++count;
        } else {
            const double s = (1.0 - t) / t;  // t in (0, 1/2]: s >= 1
            const double w = 1.0 / (t * t);
            const double base = mapped == 3 ? 0.0 : bound;
            if (mapped == 1 || mapped == 3) v += f(base + s, comm) * w, ++count;
            if (mapped == 2 || mapped == 3) v += f(base - s, comm) * w, ++count;
        }
        if (!std::isfinite(v)) {
            bad = true;
            return 0.0;
        }
        return v;
    }
};

template <std::size_t N>
Piece gauss_kronrod(const Node (&rule)[N], Integrand& fn, double a, double b, bool use_map) {
    const double centre = 0.5 * (a + b);
    const double half = 0.5 * (b - a);
    constexpr unsigned n = N;
    std::array<double, 2 * N> values{};
    double k = 0.0, g = 0.0, abs_k = 0.0;
    for (unsigned i = 0; i < n; ++i) {
        if (rule[i].x == 0.0) {
            const double v = fn(centre, use_map);
            values[2 * i] = values[2 * i + 1] = v;
            k += rule[i].wk * v;
            g += rule[i].wg * v;
            abs_k += rule[i].wk * std::fabs(v);
            continue;
        }
        const double d = half * rule[i].x;
        const double v1 = fn(centre - d, use_map), v2 = fn(centre + d, use_map);
        values[2 * i] = v1;
        values[2 * i + 1] = v2;
        k += rule[i].wk * (v1 + v2);
        g += rule[i].wg * (v1 + v2);
        abs_k += rule[i].wk * (std::fabs(v1) + std::fabs(v2));
    }
    const double mean = 0.5 * k;
    double asc = 0.0;
    for (unsigned i = 0; i < n; ++i) {
        const double w = rule[i].wk;
        if (rule[i].x == 0.0)
            asc += w * std::fabs(values[2 * i] - mean);
        else
            asc += w * (std::fabs(values[2 * i] - mean) + std::fabs(values[2 * i + 1] - mean));
    }
    const double ah = std::fabs(half);
    const double result = k * half;
    const double resabs = abs_k * ah, resasc = asc * ah;
    double err = std::fabs((k - g) * half);
    if (resasc != 0.0 && err != 0.0)
        err = resasc * std::min(1.0, std::pow(200.0 * err / resasc, 1.5));
    // The error estimate never claims less than 50 units of rounding of the integrand's absolute
    // integral: the 21-point sum itself carries that much rounding (QUADPACK's floor).
    if (resabs > std::numeric_limits<double>::min() / (50.0 * kEps))
        err = std::max(50.0 * kEps * resabs, err);
    return {a, b, result, err, use_map};
}

struct Driver {
    double epsabs, epsrel;
    int limit;
    bool infinite;
    Integrand fn;
    std::array<Piece, kMaxIntervals> pieces{};
    int count = 0;

    Piece integrate(double a, double b, bool use_map) {
        return use_map ? gauss_kronrod(kRule15, fn, a, b, true)
                       : gauss_kronrod(kRule21, fn, a, b, false);
    }

    // A finite interval [a, b], or an infinite range: the unit interval next to the
    // bound as a plain piece ([bound, bound + 1], [bound - 1, bound] or [-1, 1]), which
    // keeps full resolution at the bound, and the rest mapped to t in (0, 1/2].
    void run(double a, double b, double* result, double* abserr, NagError* fail) {
        if (!infinite) {
            pieces[0] = integrate(a, b, false);
            count = 1;
        } else {
            const double lo = fn.mapped == 1 ? fn.bound : fn.mapped == 2 ? fn.bound - 1.0 : -1.0;
            const double hi = fn.mapped == 1 ? fn.bound + 1.0 : fn.mapped == 2 ? fn.bound : 1.0;
            pieces[0] = integrate(lo, hi, false);
            pieces[1] = integrate(0.0, 0.5, true);
            count = 2;
        }
        double total = 0.0, total_error = 0.0;
        for (int i = 0; i < count; ++i) total += pieces[i].result, total_error += pieces[i].error;
        int roundoff = 0;
        auto goal = [&](double value) { return std::max(epsabs, epsrel * std::fabs(value)); };
        *result = total;
        *abserr = total_error;
        while (true) {
            if (fn.bad) return fail->set(NE_REAL);
            if (total_error <= goal(total)) break;
            if (count >= limit) {
                *result = total;
                *abserr = total_error;
                return fail->set(NE_TOO_MANY_ITER);
            }
            // The piece with the largest error estimate.
            int worst = 0;
            for (int i = 1; i < count; ++i)
                if (pieces[i].error > pieces[worst].error) worst = i;
            const Piece p = pieces[worst];
            const double mid = 0.5 * (p.a + p.b);
            if (!(mid > std::min(p.a, p.b) && mid < std::max(p.a, p.b))) {
                *result = total;
                *abserr = total_error;
                return fail->set(NE_CONV);  // the interval cannot be split further
            }
            const Piece left = integrate(p.a, mid, p.mapped);
            const Piece right = integrate(mid, p.b, p.mapped);
            const double new_error = left.error + right.error;
            // A split that leaves the result within 1e-5 relative while its error estimate does not
            // fall is counted as a sign that rounding, not the integrand, limits the error (the
            // test of QUADPACK's qagse).
            if (new_error >= p.error && std::fabs(left.result + right.result - p.result) <=
                                            1e-5 * std::fabs(left.result + right.result))
                ++roundoff;
            else
                roundoff = 0;
            pieces[worst] = left;
            pieces[count++] = right;
            total = 0.0;
            total_error = 0.0;
            for (int i = 0; i < count; ++i) {
                total += pieces[i].result;
                total_error += pieces[i].error;
            }
            *result = total;
            *abserr = total_error;
            if (roundoff >= 10) return fail->set(NE_CONV);
        }
    }
};

bool tolerances_ok(double epsabs, double epsrel) {
    if (std::isnan(epsabs) || std::isnan(epsrel)) return false;
    return epsabs > 0.0 || epsrel > 0.0;
}

}  // namespace

void d01sjc(QuadFunction f, double a, double b, double epsabs, double epsrel, int max_num_subint,
            double* result, double* abserr, Nag_QuadProgress* qp, void* comm, NagError* fail) {
    fail->set(NE_NOERROR);
    *result = 0.0;
    *abserr = 0.0;
    if (max_num_subint < 1) return fail->set(NE_INT_ARG_LT);
    if (!std::isfinite(a) || !std::isfinite(b) || !tolerances_ok(epsabs, epsrel))
        return fail->set(NE_REAL);
    auto driver = std::make_unique<Driver>();
    driver->epsabs = epsabs;
    driver->epsrel = epsrel;
    driver->limit = std::min(max_num_subint, kMaxIntervals);
    driver->infinite = false;
    driver->fn = Integrand{f, comm, 0, 0.0};
    if (a != b) driver->run(a, b, result, abserr, fail);
    if (qp != nullptr) *qp = {driver->count, driver->fn.count};
}

void d01smc(QuadFunction f, Nag_BoundInterval boundinf, double bound, double epsabs, double epsrel,
            int max_num_subint, double* result, double* abserr, Nag_QuadProgress* qp, void* comm,
            NagError* fail) {
    fail->set(NE_NOERROR);
    *result = 0.0;
    *abserr = 0.0;
    int mapped = 0;
    switch (boundinf) {
        case Nag_BoundInterval::Nag_UpperSemiInfinite:
            mapped = 1;
            break;
        case Nag_BoundInterval::Nag_LowerSemiInfinite:
            mapped = 2;
            break;
        case Nag_BoundInterval::Nag_Infinite:
            mapped = 3;
            break;
        default:
            return fail->set(NE_BAD_PARAM);
    }
    if (max_num_subint < 1) return fail->set(NE_INT_ARG_LT);
    if (mapped == 3) bound = 0.0;
    if (!std::isfinite(bound) || !tolerances_ok(epsabs, epsrel)) return fail->set(NE_REAL);
    auto driver = std::make_unique<Driver>();
    driver->epsabs = epsabs;
    driver->epsrel = epsrel;
    driver->limit = std::min(max_num_subint, kMaxIntervals);
    driver->infinite = true;
    driver->fn = Integrand{f, comm, mapped, bound};
    driver->run(0.0, 1.0, result, abserr, fail);
    if (qp != nullptr) *qp = {driver->count, driver->fn.count};
}

}  // namespace zemath::nag
