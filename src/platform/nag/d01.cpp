// d01sjc, d01smc: globally adaptive quadrature with extrapolation.
//
// Goal: |I - result| <= max(epsabs, epsrel |I|), or a failure report with the best
// estimate reached.
//
// Method (QUADPACK's QAGS and QAGI). d01sjc integrates over [a, b] with the 21-point
// Gauss-Kronrod pair. d01smc maps its range onto t in (0, 1] by x = bound + (1 - t)/t
// (upper), bound - (1 - t)/t (lower), or both with bound 0 and the two values added
// (whole line), dx = dt / t^2, and starts from the 15-point pair over (0, 1] (whose nodes
// never touch t = 0). Its first bisection differs from QAGI: the half t in [1/2, 1],
// the unit distance next to the bound, is integrated in the distance s = (1 - t)/t
// itself with the 21-point pair, because next to t = 1 the map resolves s only to the
// spacing of doubles near 1 (2e-16): mapped, x^-0.9 e^-x on [0, inf) stopped at a
// relative error of 1e-10, above its own error estimate, with no convergence reported;
// the rest stays mapped, where t -> 0 resolves the tail to the smallest doubles.
// The error estimate of a pair on an interval of half-length h is
//     err = resasc min(1, (200 |K - G| h / resasc)^1.5),  floored at 50 eps resabs,
// with resasc the integral of |f - K/(2h)| and resabs that of |f| (both by the Kronrod
// weights). The interval with the largest estimate is bisected until the sum of the
// estimates meets the goal. Once the interval due for bisection is among the smallest
// ones (below a width that halves at each round), the larger intervals are refined
// first, then the sequence of the total integral at each round is extrapolated by Wynn's
// epsilon algorithm: the table keeps at most 50 elements, its estimate is the smallest
// difference of a new diagonal entry with its neighbours, and its error estimate is the
// sum of the distances of the newest extrapolated value to the three before it (never
// below 5 eps |value|). The result is the extrapolated value when its error estimate is
// the smaller, the plain sum of the pieces otherwise. This converges geometrically on
// integrable end-point singularities (x^-0.5, log x, x^-0.9 on (0, 1)) and on slowly
// decaying tails mapped to t -> 0: with epsrel 1e-10 each of the classic singular
// integrands of the tests converges within 40 subintervals.
//
// Accuracy: the requested one, with abserr an upper estimate of the actual error in the
// test integrands; below about 50 eps times the integral of |f| round-off limits it.
//
// Failures (result and abserr keep the best estimate):
//   NE_QUAD_MAX_SUBDIV    the subinterval limit reached;
//   NE_QUAD_ROUNDOFF_TOL  round-off: bisections stopped reducing the error (ten with a
//                         result unchanged to 1e-5 or twenty raising it), or round-off
//                         detected in the extrapolation;
//   NE_QUAD_BAD_SUBDIV    an interval too short to bisect (a non-integrable singularity
//                         or a discontinuity at a point the bisection cannot reach);
//   NE_QUAD_NO_CONV       the extrapolation table stopped improving (five rounds without
//                         progress while its error is far below the sum of the pieces');
//   NE_QUAD_DIVERGENT     the extrapolated and plain sums disagree by more than a factor
//                         of 100, or the error sum exceeds the integral: divergent or too
//                         slowly convergent;
//   NE_REAL               the integrand returned NaN or an infinity, or values whose
//                         rule sums overflow (the driver stops at once and reports the
//                         estimate of the pieces formed before).
// Divergent integrals (1/x on (0, 1), 1/sqrt(x) on (1, inf)) end in one of the first five.
//
// References: R. Piessens, E. de Doncker-Kapenga, C. W. Ueberhuber and D. K. Kahaner
// (1983), QUADPACK: a subroutine package for automatic integration, Springer (routines
// QAGS, QAGI, QK21, QK15I, QELG); P. Wynn (1956), On a device for computing the
// e_m(S_n) transformation, MTAC 10, 91-96; A. S. Kronrod (1965), Nodes and weights of
// quadrature formulas, Consultants Bureau.
#include "platform/nag/d01.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "platform/numeric/gauss_kronrod.hpp"

namespace zemath::nag {

namespace {

using numeric::KronrodNode;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kTiny = std::numeric_limits<double>::min();
constexpr double kHuge = std::numeric_limits<double>::max();

// The integrand as the driver sees it. On a finite range, the caller's f(x). On an
// infinite one, g(s) of the distance s >= 0 from the bound: f(bound + s), f(bound - s),
// or f(s) + f(-s) for the whole line (bound 0); a plain piece integrates g over s, a
// mapped one g((1 - t)/t) / t^2 over t.
struct Integrand {
    QuadFunction f;
    void* comm;
    int map;  // 0 finite range; 1 [bound, inf); 2 (-inf, bound]; 3 (-inf, inf)
    double bound;
    int count = 0;
    bool bad = false;
    double operator()(double u, bool mapped) {
        const double s = mapped ? (1.0 - u) / u : u;
        double v;
        if (map == 0) {
            v = f(s, comm);
        } else {
            v = f(map == 2 ? bound - s : bound + s, comm);
            if (map == 3) {
                v += f(-s, comm);
                ++count;
            }
        }
        ++count;
        if (mapped) v = v / u / u;  // two divisions: f t^-2 overflows later than t^-2
        if (!std::isfinite(v)) {
            bad = true;
            return 0.0;
        }
        return v;
    }
};

struct RuleResult {
    double result, error, resabs, resasc;
};

template <std::size_t N>
RuleResult gauss_kronrod(const KronrodNode (&rule)[N], Integrand& fn, double a, double b,
                         bool mapped) {
    const double centre = 0.5 * (a + b);
    const double half = 0.5 * (b - a);
    double v1[N], v2[N];
    const double fc = fn(centre, mapped);
    double k = rule[0].wk * fc, g = rule[0].wg * fc, abs_k = std::fabs(k);
    for (std::size_t i = 1; i < N; ++i) {
        const double d = half * rule[i].x;
        v1[i] = fn(centre - d, mapped);
        v2[i] = fn(centre + d, mapped);
        k += rule[i].wk * (v1[i] + v2[i]);
        g += rule[i].wg * (v1[i] + v2[i]);
        abs_k += rule[i].wk * (std::fabs(v1[i]) + std::fabs(v2[i]));
    }
    const double mean = 0.5 * k;
    double asc = rule[0].wk * std::fabs(fc - mean);
    for (std::size_t i = 1; i < N; ++i)
        asc += rule[i].wk * (std::fabs(v1[i] - mean) + std::fabs(v2[i] - mean));
    const double ah = std::fabs(half);
    RuleResult r{k * half, std::fabs((k - g) * half), abs_k * ah, asc * ah};
    if (r.resasc != 0.0 && r.error != 0.0)
        r.error = r.resasc * std::min(1.0, std::pow(200.0 * r.error / r.resasc, 1.5));
    // Never less than 50 units of rounding of the integral of |f|: the sum itself carries
    // that much.
    if (r.resabs > kTiny / (50.0 * kEps)) r.error = std::max(50.0 * kEps * r.resabs, r.error);
    return r;
}

// Wynn's epsilon algorithm over the sequence of total integrals, one new element per
// round: the table's last diagonal is kept in place (at most kLimit elements; the oldest
// are dropped beyond that), and the three previous extrapolated values give the error.
class EpsilonTable {
  public:
    void append(double s) {
        // A full table (only after a round that returned early on convergence) drops its
        // two oldest elements, which keeps the parity its diagonals rely on.
        if (n_ >= kLimit) {
            std::copy(table_ + 2, table_ + n_, table_);
            n_ -= 2;
        }
        table_[n_++] = s;
    }
    int size() const { return n_; }

    // Extrapolates from the elements appended so far: {estimate, error estimate}.
    std::pair<double, double> extrapolate() {
        ++calls_;
        double result = table_[n_ - 1];
        double error = kHuge;
        if (n_ < 3) return {result, std::max(error, 5.0 * kEps * std::fabs(result))};
        const int count = n_;
        table_[n_ + 1] = table_[n_ - 1];
        const int new_elements = (n_ - 1) / 2;
        table_[n_ - 1] = kHuge;
        int k1 = n_ - 1;  // 0-based index of the element being replaced
        for (int i = 1; i <= new_elements; ++i) {
            const double e0 = table_[k1 - 2], e1 = table_[k1 - 1], e2 = table_[k1 + 2];
            const double res = e2;
            const double delta2 = e2 - e1, err2 = std::fabs(delta2);
            const double tol2 = std::max(std::fabs(e2), std::fabs(e1)) * kEps;
            const double delta3 = e1 - e0, err3 = std::fabs(delta3);
            const double tol3 = std::max(std::fabs(e1), std::fabs(e0)) * kEps;
            if (err2 <= tol2 && err3 <= tol3) {
                // e0, e1, e2 agree to rounding: the sequence has converged.
                return {res, std::max(err2 + err3, 5.0 * kEps * std::fabs(res))};
            }
            const double e3 = table_[k1];
            table_[k1] = e1;
            const double delta1 = e1 - e3, err1 = std::fabs(delta1);
            const double tol1 = std::max(std::fabs(e1), std::fabs(e3)) * kEps;
            // Two equal neighbours, or a new element that would be ill-conditioned: the
            // table is cut to the part already formed.
            if (err1 <= tol1 || err2 <= tol2 || err3 <= tol3) {
                n_ = 2 * i - 1;
                break;
            }
            const double ss = 1.0 / delta1 + 1.0 / delta2 - 1.0 / delta3;
            if (std::fabs(ss * e1) <= 1e-4) {
                n_ = 2 * i - 1;
                break;
            }
            const double value = e1 + 1.0 / ss;
            table_[k1] = value;
            k1 -= 2;
            const double err = err2 + std::fabs(value - e2) + err3;
            if (err <= error) {
                error = err;
                result = value;
            }
        }
        if (n_ == kLimit) n_ = 2 * (kLimit / 2) - 1;
        // Shift the new diagonal into place.
        int ib = count % 2 == 1 ? 0 : 1;
        for (int i = 0; i <= new_elements; ++i, ib += 2) table_[ib] = table_[ib + 2];
        if (count != n_) {
            for (int i = 0, from = count - n_; i < n_; ++i, ++from) table_[i] = table_[from];
        }
        if (calls_ < 4) {
            last3_[calls_ - 1] = result;
            error = kHuge;
        } else {
            error = std::fabs(result - last3_[2]) + std::fabs(result - last3_[1]) +
                    std::fabs(result - last3_[0]);
            last3_[0] = last3_[1];
            last3_[1] = last3_[2];
            last3_[2] = result;
        }
        return {result, std::max(error, 5.0 * kEps * std::fabs(result))};
    }

  private:
    static constexpr int kLimit = 50;
    double table_[kLimit + 2] = {};
    int n_ = 0;
    int calls_ = 0;
    double last3_[3] = {};
};

// Outcomes in the driver's order of precedence.
enum Outcome {
    kConverged = 0,
    kMaxSubdiv,
    kRoundoff,
    kExtrapolationRoundoff,  // reported as round-off
    kBadSubdivision,
    kNoConvergence,
    kDivergent,
};

struct Interval {
    double a, b, result, error;
    bool mapped;
};

// Plain pieces take the 21-point pair, mapped ones the 15-point pair (whose nodes stay
// clear of t = 0).
// Sums that overflow count as a non-finite integrand.
RuleResult estimate(Integrand& fn, double a, double b, bool mapped) {
    RuleResult r = mapped ? gauss_kronrod(numeric::kGaussKronrod15, fn, a, b, true)
                          : gauss_kronrod(numeric::kGaussKronrod21, fn, a, b, false);
    if (!std::isfinite(r.result) || !std::isfinite(r.error) || !std::isfinite(r.resasc)) {
        fn.bad = true;
        r = {0.0, 0.0, 0.0, 0.0};
    }
    return r;
}

// The pieces and their order by error estimate, largest first.
class Pieces {
  public:
    explicit Pieces(int limit) {
        const std::size_t reserve = static_cast<std::size_t>(std::min(limit, 512));
        pieces_.reserve(reserve);
        order_.reserve(reserve);
    }
    int size() const { return static_cast<int>(pieces_.size()); }
    const Interval& at(int i) const { return pieces_[static_cast<std::size_t>(i)]; }
    int ranked(int position) const { return order_[static_cast<std::size_t>(position)]; }
    void add(const Interval& p) {
        pieces_.push_back(p);
        insert(size() - 1);
    }
    // Replaces piece i by its two halves.
    void split(int i, const Interval& left, const Interval& right) {
        auto pos = std::lower_bound(order_.begin(), order_.end(), at(i).error,
                                    [&](int j, double e) { return at(j).error > e; });
        while (pos != order_.end() && *pos != i) ++pos;  // among equal estimates
        if (pos == order_.end()) pos = std::find(order_.begin(), order_.end(), i);
        order_.erase(pos);
        pieces_[static_cast<std::size_t>(i)] = left;
        insert(i);
        add(right);
    }
    double sum() const {
        double s = 0.0;
        for (const Interval& p : pieces_) s += p.result;
        return s;
    }

  private:
    void insert(int i) {
        const double e = at(i).error;
        auto pos = std::upper_bound(order_.begin(), order_.end(), e,
                                    [&](double v, int j) { return v > at(j).error; });
        order_.insert(pos, i);
    }
    std::vector<Interval> pieces_;
    std::vector<int> order_;
};

double width(const Interval& p) {
    return std::fabs(p.b - p.a);
}

// Integrates fn over [a, b] (t in (0, 1] when mapped); returns the outcome and writes
// the estimate, its error and the number of pieces used.
Outcome adaptive(Integrand& fn, double a, double b, bool mapped, double epsabs, double epsrel,
                 int limit, double* result, double* abserr, int* used) {
    const RuleResult first = estimate(fn, a, b, mapped);
    *result = first.result;
    *abserr = first.error;
    *used = 1;
    const double defabs = first.resabs;
    double errbnd = std::max(epsabs, epsrel * std::fabs(first.result));
    Outcome ier = kConverged;
    if (first.error <= 100.0 * kEps * defabs && first.error > errbnd) ier = kRoundoff;
    if (limit == 1) ier = kMaxSubdiv;
    if (fn.bad || ier != kConverged || (first.error <= errbnd && first.error != first.resasc) ||
        first.error == 0.0)
        return ier;

    Pieces pieces(limit);
    pieces.add({a, b, first.result, first.error, mapped});
    EpsilonTable table;
    table.append(first.result);
    double area = first.result, errsum = first.error;
    double best = first.result, best_error = kHuge;  // the extrapolated estimate
    double erlarg = 0.0, ertest = 0.0, small = 0.0, correc = 0.0;
    int ktmin = 0, iroff1 = 0, iroff2 = 0, iroff3 = 0;
    bool extrap = false, noext = false, roundoff_in_extrapolation = false;
    // ksgn: whether the integrand keeps one sign (to rounding) over [a, b].
    const bool one_sign = std::fabs(first.result) >= (1.0 - 50.0 * kEps) * defabs;
    bool plain_sum = false;  // report the sum of the pieces rather than the extrapolation
    int next = 0;            // the piece to bisect

    for (int last = 2; last <= limit; ++last) {
        const Interval p = pieces.at(next);
        const double mid = 0.5 * (p.a + p.b);
        Interval left{p.a, mid, 0.0, 0.0, p.mapped}, right{mid, p.b, 0.0, 0.0, p.mapped};
        // The mapped range's part next to the bound, t in [1/2, 1], is integrated in s
        // over [0, 1]: near s = 0 the map leaves only the spacing of doubles next to 1,
        // too coarse for a singularity at the bound.
        if (p.mapped && p.b == 1.0) right = {0.0, (1.0 - mid) / mid, 0.0, 0.0, false};
        const RuleResult r1 = estimate(fn, left.a, left.b, left.mapped);
        const RuleResult r2 = estimate(fn, right.a, right.b, right.mapped);
        left.result = r1.result;
        left.error = r1.error;
        right.result = r2.result;
        right.error = r2.error;
        if (fn.bad) {
            *result = pieces.sum();
            *abserr = errsum;
            *used = pieces.size();
            return kConverged;  // the caller reports the non-finite value
        }
        const double area12 = r1.result + r2.result, erro12 = r1.error + r2.error;
        errsum += erro12 - p.error;
        area += area12 - p.result;
        // Round-off detection, skipped where a half's estimate is its whole variation.
        if (r1.resasc != r1.error && r2.resasc != r2.error) {
            if (std::fabs(p.result - area12) <= 1e-5 * std::fabs(area12) &&
                erro12 >= 0.99 * p.error)
                ++(extrap ? iroff2 : iroff1);
            if (last > 10 && erro12 > p.error) ++iroff3;
        }
        pieces.split(next, left, right);
        errbnd = std::max(epsabs, epsrel * std::fabs(area));
        if (iroff1 + iroff2 >= 10 || iroff3 >= 20) ier = kRoundoff;
        if (iroff2 >= 5) roundoff_in_extrapolation = true;
        if (last == limit) ier = kMaxSubdiv;
        // Bisection has reached the spacing of doubles at this point.
        if (std::max(std::fabs(p.a), std::fabs(p.b)) <=
            (1.0 + 100.0 * kEps) * (std::fabs(mid) + 1000.0 * kTiny))
            ier = kBadSubdivision;
        if (errsum <= errbnd) {
            plain_sum = true;
            break;
        }
        if (ier != kConverged) break;
        next = pieces.ranked(0);
        if (last == 2) {
            small = std::fabs(b - a) * 0.375;
            erlarg = errsum;
            ertest = errbnd;
            table.append(area);
            continue;
        }
        if (noext) continue;
        // erlarg: the error sum over the intervals wider than small.
        erlarg -= p.error;
        if (width(left) > small) erlarg += erro12;
        if (!extrap) {
            if (width(pieces.at(next)) > small) continue;
            extrap = true;
        }
        if (!roundoff_in_extrapolation && erlarg > ertest) {
            // Refine the larger intervals first: the first wide one among those that can
            // still be bisected before the limit.
            const int bound = last > 2 + limit / 2 ? limit + 3 - last : last;
            bool found = false;
            for (int pos = 0; pos < std::min(bound, pieces.size()); ++pos) {
                if (width(pieces.at(pieces.ranked(pos))) > small) {
                    next = pieces.ranked(pos);
                    found = true;
                    break;
                }
            }
            if (found) continue;
        }
        // Extrapolate.
        table.append(area);
        const auto [reseps, abseps] = table.extrapolate();
        ++ktmin;
        if (ktmin > 5 && best_error < 1e-3 * errsum) ier = kNoConvergence;
        if (abseps < best_error) {
            ktmin = 0;
            best_error = abseps;
            best = reseps;
            correc = erlarg;
            ertest = std::max(epsabs, epsrel * std::fabs(reseps));
            if (best_error <= ertest) break;
        }
        if (table.size() == 1) noext = true;
        if (ier == kNoConvergence) break;
        next = pieces.ranked(0);
        extrap = false;
        small *= 0.5;
        erlarg = errsum;
    }
    *used = pieces.size();

    // Choose between the extrapolated value and the plain sum, and test for divergence.
    bool divergence_test = !plain_sum;
    if (!plain_sum) {
        if (best_error == kHuge) {
            plain_sum = true;
            divergence_test = false;
        } else if (ier != kConverged || roundoff_in_extrapolation) {
            if (roundoff_in_extrapolation) best_error += correc;
            if (ier == kConverged) ier = kExtrapolationRoundoff;
            if (best != 0.0 && area != 0.0) {
                if (best_error / std::fabs(best) > errsum / std::fabs(area)) plain_sum = true;
            } else if (best_error > errsum) {
                plain_sum = true;
            } else if (area == 0.0) {
                divergence_test = false;
            }
            if (plain_sum) divergence_test = false;
        }
    }
    if (divergence_test) {
        if (one_sign || std::max(std::fabs(best), std::fabs(area)) > 0.01 * defabs) {
            // The extrapolated and plain sums may differ by a factor up to 100 either way.
            const bool ratio_off =
                area == 0.0 ? best != 0.0 : (best / area < 0.01 || best / area > 100.0);
            if (ratio_off || errsum > std::fabs(area)) ier = kDivergent;
        }
        *result = best;
        *abserr = best_error;
        return ier;
    }
    if (plain_sum) {
        *result = pieces.sum();
        *abserr = errsum;
    } else {
        *result = best;
        *abserr = best_error;
    }
    return ier;
}

void report(Outcome outcome, const Integrand& fn, NagError* fail) {
    if (fn.bad) return fail->set(NE_REAL);
    switch (outcome) {
        case kConverged:
            return fail->set(NE_NOERROR);
        case kMaxSubdiv:
            return fail->set(NE_QUAD_MAX_SUBDIV);
        case kRoundoff:
        case kExtrapolationRoundoff:
            return fail->set(NE_QUAD_ROUNDOFF_TOL);
        case kBadSubdivision:
            return fail->set(NE_QUAD_BAD_SUBDIV);
        case kNoConvergence:
            return fail->set(NE_QUAD_NO_CONV);
        case kDivergent:
            return fail->set(NE_QUAD_DIVERGENT);
    }
}

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
    if (qp != nullptr) *qp = {};
    if (max_num_subint < 1) return fail->set(NE_INT_ARG_LT);
    if (!std::isfinite(a) || !std::isfinite(b) || !tolerances_ok(epsabs, epsrel))
        return fail->set(NE_REAL);
    if (a == b) return;
    Integrand fn{f, comm, 0, 0.0};
    int used = 0;
    const Outcome outcome =
        adaptive(fn, a, b, false, epsabs, epsrel, max_num_subint, result, abserr, &used);
    report(outcome, fn, fail);
    if (qp != nullptr) *qp = {used, fn.count};
}

void d01smc(QuadFunction f, Nag_BoundInterval boundinf, double bound, double epsabs, double epsrel,
            int max_num_subint, double* result, double* abserr, Nag_QuadProgress* qp, void* comm,
            NagError* fail) {
    fail->set(NE_NOERROR);
    *result = 0.0;
    *abserr = 0.0;
    if (qp != nullptr) *qp = {};
    int map = 0;
    switch (boundinf) {
        case Nag_BoundInterval::Nag_UpperSemiInfinite:
            map = 1;
            break;
        case Nag_BoundInterval::Nag_LowerSemiInfinite:
            map = 2;
            break;
        case Nag_BoundInterval::Nag_Infinite:
            map = 3;
            break;
        default:
            return fail->set(NE_BAD_PARAM);
    }
    if (max_num_subint < 1) return fail->set(NE_INT_ARG_LT);
    if (map == 3) bound = 0.0;
    if (!std::isfinite(bound) || !tolerances_ok(epsabs, epsrel)) return fail->set(NE_REAL);
    Integrand fn{f, comm, map, bound};
    int used = 0;
    const Outcome outcome =
        adaptive(fn, 0.0, 1.0, true, epsabs, epsrel, max_num_subint, result, abserr, &used);
    report(outcome, fn, fail);
    if (qp != nullptr) *qp = {used, fn.count};
}

}  // namespace zemath::nag
