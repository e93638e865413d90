// Exact orientation and in-circle signs behind the filters of predicates.hpp.
//
// Method: adaptive stages after the header's filter (J. R. Shewchuk, "Adaptive precision
// floating-point arithmetic and fast robust geometric predicates", Discrete Comput.
// Geom. 18, 1997, sections 4.3 and 6), each accepted only when its error bound decides:
// - B: the determinant of the rounded coordinate differences (adx = fl(ax - dx), ...),
//   computed exactly and rounded to one double. Each term of the determinant is a
//   product of 2 (orientation) or 4 (in-circle) differences, each difference off by a
//   relative eps = 2^-53 at most, so the determinant of the rounded differences is off by
//   (2 eps + O(eps^2)), resp. (4 eps + O(eps^2)), times the permanent (the sum of the
//   terms' magnitudes); the rounding of the permanent itself and of the exact value to
//   double bring the bounds to (2 + 12 eps) eps and (4 + 48 eps) eps (the in-circle
//   test's integer evaluation: (4 + 64 eps) eps plus 2 eps times the rounded value,
//   derived at kInCircleBoundBRounded). The orientation determinant is a short expansion;
//   the in-circle one is evaluated in 64-bit limbs when the differences, as integers in
//   units of their finest bit, span at most 126 bits (one limb up to 62: dense curves,
//   grids, most triangles of a convex point set), else as an expansion. When every
//   difference is exact (tails zero: grids, and neighbours on a dense curve, whose
//   coordinates are within a factor 2 of each other), this value is the exact
//   determinant and gives the sign at once.
// - C: the first-order corrections by the difference tails (each at most eps times its
//   difference) added in double; bounds (9 + 64 eps) eps^2 and (44 + 576 eps) eps^2 times
//   the permanent for the neglected second-order terms and the corrections' rounding,
//   plus (3 + 8 eps) eps times the corrected value for its own rounding.
// - D: the determinant of the exact differences (two-component expansions), exactly.
// All expansions live in fixed-size stack arrays (lengths bounded from the determinant's
// structure below), with zero components eliminated, so gridded and cocircular inputs
// carry short expansions.
// Exponent range: error-free expansion arithmetic in double is exact as long as nothing
// overflows and every product's rounding error is representable. The double stages run
// only when every coordinate is 0 or of magnitude in [2^-215, 2^250] (orientation:
// [2^-480, 2^500]): then every difference and tail is a multiple of 2^-267 (resp. 2^-532)
// and every product of four (two) of them a multiple of 2^-1068 (2^-1064), so all
// rounding errors are representable, subnormal or not, and no sum passes 2^1010. Their
// bounds also carry the header's kUnderflowSlack (covering products that underflowed in
// the permanent and in stage C's corrections). Other coordinates go to stage D in a
// wider type (below), where no product of four differences of finite doubles leaves the
// range. Accuracy: the signs are exact for all finite coordinates (where long double
// has the exponent range of double: for all whose products of four differences stay in
// double's range). No failure mode; no allocation (stage D's expansions take about 25 kB
// of stack in the wide type, 12.5 kB in double). The integer stage needs a 128-bit integer type
// (__int128 of GCC and Clang); without one the expansion takes its place. Cost on dense
// convex curves: about 0.1 to 0.3 microseconds per call past the filter, most of them
// decided by stage B with exact differences.
#include "gridding/predicates.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <type_traits>

namespace zemath {
namespace {

// The wide type: a type whose exponent range holds every product of four coordinate
// differences of finite doubles (up to 2^4100, down to 2^-4296): the x87 or quadruple
// long double where there is one.
using Wide = std::conditional_t<(std::numeric_limits<long double>::max_exponent >= 4400 &&
                                 std::numeric_limits<long double>::min_exponent <= -4400),
                                long double, double>;

template <class Real>
inline void two_sum(Real a, Real b, Real& x, Real& y) {
    x = a + b;
    const Real bv = x - a;
    const Real av = x - bv;
    y = (a - av) + (b - bv);
}

// Veltkamp's split of a into two halves of at most ceil(p/2) bits each.
template <class Real>
inline void split(Real a, Real& hi, Real& lo) {
    constexpr int half = (std::numeric_limits<Real>::digits + 1) / 2;
    const Real factor = static_cast<Real>((1ULL << half) + 1);
    const Real c = factor * a;
    hi = c - (c - a);
    lo = a - hi;
}

// The fused multiply-add only where the compiler emits it as one instruction: otherwise
// std::fma is a library call, several times slower than Dekker's product.
#if defined(__FMA__) || defined(__aarch64__)
constexpr bool kFastFma = true;
#else
constexpr bool kFastFma = false;
#endif

// x + y = a * b exactly, b given with its split halves (the fused multiply-add, or
// Dekker's product: exact while the halves' products are representable, which the range
// conditions below ensure).
template <class Real>
inline void two_product_split(Real a, Real b, Real bhi, Real blo, Real& x, Real& y) {
    x = a * b;
    // Where double is also the wide type, its products may come near overflow, where
    // Veltkamp's split overflows: the fused multiply-add then, fast or not.
    if constexpr (std::is_same_v<Real, double> && (kFastFma || std::is_same_v<Wide, double>)) {
        y = std::fma(a, b, -x);
    } else {
        Real ahi, alo;
        split(a, ahi, alo);
        y = alo * blo - (((x - ahi * bhi) - alo * bhi) - ahi * blo);
    }
}

template <class Real>
inline void two_product(Real a, Real b, Real& x, Real& y) {
    Real bhi, blo;
    split(b, bhi, blo);
    two_product_split(a, b, bhi, blo, x, y);
}

// Expansions: arrays of nonoverlapping components in increasing magnitude, no zeros (the
// empty expansion is 0). h = e + f (Fast-Expansion-Sum with zero elimination: merge by
// magnitude, then error-free sums); h has room for ne + nf components and does not
// overlap f; it may start nf or more places before e (each component written follows at
// least one more read). Returns the length of h.
template <class Real>
int sum(const Real* e, int ne, const Real* f, int nf, Real* h) {
    int i = 0, j = 0, k = 0;
    auto next = [&]() {
        if (j >= nf || (i < ne && std::fabs(e[i]) <= std::fabs(f[j]))) return e[i++];
        return f[j++];
    };
    if (ne + nf == 0) return 0;
    Real q = next();
    while (i < ne || j < nf) {
        Real s, t;
        two_sum(q, next(), s, t);
        if (t != 0) h[k++] = t;
        q = s;
    }
    if (q != 0) h[k++] = q;
    return k;
}

// h = e * b (Scale-Expansion with zero elimination); h has room for 2 ne components.
template <class Real>
int scale(const Real* e, int ne, Real b, Real* h) {
    if (ne == 0 || b == 0) return 0;
    int k = 0;
    Real q, t, bhi, blo;
    split(b, bhi, blo);
    two_product_split(e[0], b, bhi, blo, q, t);
    if (t != 0) h[k++] = t;
    for (int i = 1; i < ne; ++i) {
        Real p, pt, s;
        two_product_split(e[i], b, bhi, blo, p, pt);
        two_sum(q, pt, s, t);
        if (t != 0) h[k++] = t;
        two_sum(p, s, q, t);
        if (t != 0) h[k++] = t;
    }
    if (q != 0) h[k++] = q;
    return k;
}

// Small fixed-capacity expansion, for the short products below.
template <class Real, int N>
struct Exp {
    Real c[N];
    int n = 0;
};

// The exact a - b.
template <class Real>
Exp<Real, 2> difference(double a, double b) {
    Exp<Real, 2> d;
    Real x, y;
    two_sum(static_cast<Real>(a), -static_cast<Real>(b), x, y);
    if (y != 0) d.c[d.n++] = y;
    if (x != 0) d.c[d.n++] = x;
    return d;
}

// e * f for e, f of at most 2 components (at most 8).
template <class Real>
Exp<Real, 8> product(const Exp<Real, 2>& e, const Exp<Real, 2>& f) {
    Exp<Real, 8> h;
    Real s0[4], s1[4];
    const int n0 = f.n > 0 ? scale(e.c, e.n, f.c[0], s0) : 0;
    const int n1 = f.n > 1 ? scale(e.c, e.n, f.c[1], s1) : 0;
    h.n = sum(s0, n0, s1, n1, h.c);
    return h;
}

template <class Real, int N, int M>
Exp<Real, N + M> add(const Exp<Real, N>& e, const Exp<Real, M>& f, bool subtract = false) {
    Exp<Real, N + M> h;
    Real g[M];
    for (int i = 0; i < f.n; ++i) g[i] = subtract ? -f.c[i] : f.c[i];
    h.n = sum(e.c, e.n, g, f.n, h.c);
    return h;
}

template <class Real>
double sign_of(const Real* e, int n) {
    return n == 0 ? 0.0 : (e[n - 1] > 0 ? 1.0 : -1.0);
}

// Stage D: the orientation determinant of the exact differences.
template <class Real>
double orient2d_full(double ax, double ay, double bx, double by, double cx, double cy) {
    const auto acx = difference<Real>(ax, cx), bcy = difference<Real>(by, cy);
    const auto acy = difference<Real>(ay, cy), bcx = difference<Real>(bx, cx);
    const auto det = add(product(acx, bcy), product(acy, bcx), true);
    return sign_of(det.c, det.n);
}

// Stage D: the in-circle determinant of the exact differences, as
// alift (bdx cdy - cdx bdy) + blift (cdx ady - adx cdy) + clift (adx bdy - bdx ady), with
// lifts and minors of at most 16 components each, so at most 3 * 16 * 32 = 1536 in all.
template <class Real>
double incircle_full(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                     double dy) {
    const auto adx = difference<Real>(ax, dx), ady = difference<Real>(ay, dy);
    const auto bdx = difference<Real>(bx, dx), bdy = difference<Real>(by, dy);
    const auto cdx = difference<Real>(cx, dx), cdy = difference<Real>(cy, dy);
    const Exp<Real, 16> lift[3] = {add(product(adx, adx), product(ady, ady)),
                                   add(product(bdx, bdx), product(bdy, bdy)),
                                   add(product(cdx, cdx), product(cdy, cdy))};
    const Exp<Real, 16> minor[3] = {add(product(bdx, cdy), product(cdx, bdy), true),
                                    add(product(cdx, ady), product(adx, cdy), true),
                                    add(product(adx, bdy), product(bdx, ady), true)};
    // One buffer (its size is most of the stack a build needs): the running sum sits kTerm
    // places up; each new sum is written from the start, which never overtakes the
    // components of the running sum still to be read (sum writes fewer components than it
    // has read, at most kTerm of them from the term), then moved back up.
    constexpr int kTerm = 32, kMax = 3 * 16 * kTerm;
    Real buffer[kMax + kTerm], term[kTerm];
    int n = 0;
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < lift[i].n; ++k) {
            const int nt = scale(minor[i].c, minor[i].n, lift[i].c[k], term);
            n = sum(buffer + kTerm, n, term, nt, buffer);
            std::copy_backward(buffer, buffer + n, buffer + kTerm + n);
        }
    }
    return sign_of(buffer + kTerm, n);
}

inline bool in_range(double v, double lo, double hi) {
    const double m = std::fabs(v);
    return m == 0.0 || (m >= lo && m <= hi);
}

inline double tail_of(double a, double b, double rounded) {  // (a - b) - fl(a - b)
    const double bv = a - rounded;
    const double av = rounded + bv;
    return (a - av) + (bv - b);
}

// Two-term products a b - c d as an expansion of at most 4 components.
inline int two_two_diff(double a, double b, double c, double d, double* h) {
    double p[2], q[2];
    int np = 0, nq = 0;
    double x, y;
    two_product(a, b, x, y);
    if (y != 0) p[np++] = y;
    if (x != 0) p[np++] = x;
    two_product(c, d, x, y);
    if (y != 0) q[nq++] = -y;
    if (x != 0) q[nq++] = -x;
    return sum(p, np, q, nq, h);
}

double estimate(const double* e, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += e[i];
    return s;
}

#if defined(__SIZEOF_INT128__)
// The in-circle determinant of six doubles taken as exact differences, in integer
// arithmetic: every nonzero difference is m 2^e with m odd; with q the smallest e, the
// differences are integers times 2^q. When they stay below 2^(64 L - 2) in those units
// (L = 1 or 2 limbs of 64 bits), the lifts and minors stay below 2^(128 L - 3) and the
// determinant below 2^(256 L - 4), so 2 L and 4 L limbs hold them exactly (the minors
// and the sum in two's complement).
using U128 = unsigned __int128;

template <int N>
struct Big {
    std::uint64_t w[N] = {};
};

template <int A, int B>
Big<A + B> multiply(const Big<A>& a, const Big<B>& b) {  // unsigned
    Big<A + B> r;
    for (int i = 0; i < A; ++i) {
        std::uint64_t carry = 0;
        for (int j = 0; j < B; ++j) {
            const U128 t = static_cast<U128>(a.w[i]) * b.w[j] + r.w[i + j] + carry;
            r.w[i + j] = static_cast<std::uint64_t>(t);
            carry = static_cast<std::uint64_t>(t >> 64);
        }
        r.w[i + B] = carry;
    }
    return r;
}

template <int N>
void add_to(Big<N>& acc, const Big<N>& b) {  // modulo 2^(64 N)
    std::uint64_t carry = 0;
    for (int i = 0; i < N; ++i) {
        const U128 t = static_cast<U128>(acc.w[i]) + b.w[i] + carry;
        acc.w[i] = static_cast<std::uint64_t>(t);
        carry = static_cast<std::uint64_t>(t >> 64);
    }
}

template <int N>
Big<N> negated(Big<N> a) {
    for (auto& limb : a.w) limb = ~limb;
    add_to(a, Big<N>{{1}});
    return a;
}

template <int N>
bool is_negative(const Big<N>& a) {
    return (a.w[N - 1] >> 63) != 0;
}

// The value times 2^(4 unit) rounded to double: the top 128 bits converted with one
// rounding, so the relative error is below eps (1 + 2^-60).
template <int N>
double to_double(const Big<N>& value, int unit) {
    const bool negative = is_negative(value);
    const Big<N> m = negative ? negated(value) : value;
    int top = N - 1;
    while (top > 0 && m.w[top] == 0) --top;
    const double v =
        top == 0 ? std::ldexp(static_cast<double>(m.w[0]), 4 * unit)
                 : std::ldexp(static_cast<double>(static_cast<U128>(m.w[top]) << 64 | m.w[top - 1]),
                              64 * (top - 1) + 4 * unit);
    return negative ? -v : v;
}

template <int L>
int incircle_limbs(const std::uint64_t (&mag)[6][2], const bool (&neg)[6], int unit,
                   double& value) {
    Big<L> v[6];
    for (int i = 0; i < 6; ++i)
        for (int k = 0; k < L; ++k) v[i].w[k] = mag[i][k];
    Big<4 * L> acc;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        Big<2 * L> lift = multiply(v[2 * i], v[2 * i]);
        add_to(lift, multiply(v[2 * i + 1], v[2 * i + 1]));
        // minor: v[2j] v[2k+1] - v[2k] v[2j+1]
        Big<2 * L> p = multiply(v[2 * j], v[2 * k + 1]);
        Big<2 * L> q = multiply(v[2 * k], v[2 * j + 1]);
        if (neg[2 * j] != neg[2 * k + 1]) p = negated(p);
        if (neg[2 * k] == neg[2 * j + 1]) q = negated(q);
        add_to(p, q);
        const bool negative = is_negative(p);
        Big<4 * L> term = multiply(lift, negative ? negated(p) : p);
        add_to(acc, negative ? negated(term) : term);
    }
    value = to_double(acc, unit);
    if (is_negative(acc)) return -1;
    for (auto limb : acc.w)
        if (limb != 0) return 1;
    return 0;
}

// Returns the sign, and the determinant rounded to double in value; 2 when the
// differences span more than 126 bits.
int incircle_integer(const double (&d)[6], double& value) {
    std::uint64_t m[6];
    bool neg[6];
    int e[6], low = std::numeric_limits<int>::max(), high = std::numeric_limits<int>::min();
    for (int i = 0; i < 6; ++i) {
        const std::uint64_t bits = std::bit_cast<std::uint64_t>(d[i]);
        neg[i] = (bits >> 63) != 0;
        m[i] = 0, e[i] = 0;
        if (d[i] == 0.0) continue;
        const int biased = static_cast<int>((bits >> 52) & 0x7ff);
        std::uint64_t frac = bits & ((std::uint64_t{1} << 52) - 1);
        int exponent = -1074;
        if (biased != 0) frac |= std::uint64_t{1} << 52, exponent = biased - 1075;
        const int zeros = std::countr_zero(frac);
        m[i] = frac >> zeros;
        e[i] = exponent + zeros;
        low = std::min(low, e[i]);
        high = std::max(high, e[i] + static_cast<int>(std::bit_width(m[i])));
    }
    value = 0.0;
    if (low == std::numeric_limits<int>::max()) return 0;
    if (high - low > 126) return 2;
    std::uint64_t mag[6][2];
    for (int i = 0; i < 6; ++i) {
        const U128 v = m[i] == 0 ? 0 : static_cast<U128>(m[i]) << (e[i] - low);
        mag[i][0] = static_cast<std::uint64_t>(v);
        mag[i][1] = static_cast<std::uint64_t>(v >> 64);
    }
    return high - low <= 62 ? incircle_limbs<1>(mag, neg, low, value)
                            : incircle_limbs<2>(mag, neg, low, value);
}
#endif

constexpr double kEps = predicate_detail::kEps;
constexpr double kSlack = predicate_detail::kUnderflowSlack;
constexpr double kResultBound = (3.0 + 8.0 * kEps) * kEps;
constexpr double kOrientBoundB = (2.0 + 12.0 * kEps) * kEps;
constexpr double kOrientBoundC = (9.0 + 64.0 * kEps) * kEps * kEps;
constexpr double kInCircleBoundB = (4.0 + 48.0 * kEps) * kEps;
// With the determinant of the rounded differences rounded once to double (the integer
// stage): each of its terms is a product of four differences, each off by a factor
// (1 + delta), |delta| <= eps, so it is off by at most ((1 + eps)^4 - 1) = (4 + 6 eps + ...)
// eps times the true permanent, which is at most (1 - eps)^-11 times the computed one
// (4 roundings in the true-to-rounded differences, up to 7 in computing it); 64 eps^2
// covers the products of these factors. The rounding to double adds eps (1 + 2^-60) times
// the exact value, at most 2 eps times the rounded one.
constexpr double kInCircleBoundBRounded = (4.0 + 64.0 * kEps) * kEps;
constexpr double kInCircleBoundC = (44.0 + 576.0 * kEps) * kEps * kEps;

// The in-circle determinant of the rounded differences as an expansion (Shewchuk's stage
// B): returns its estimate, and its exact sign in sign.
double incircle_expansion(double adx, double ady, double bdx, double bdy, double cdx, double cdy,
                          int& sign) {
    double bc[4], ca[4], ab[4];
    const int nbc = two_two_diff(bdx, cdy, cdx, bdy, bc);
    const int nca = two_two_diff(cdx, ady, adx, cdy, ca);
    const int nab = two_two_diff(adx, bdy, bdx, ady, ab);
    const double* minor[3] = {bc, ca, ab};
    const int nminor[3] = {nbc, nca, nab};
    const double ux[3] = {adx, bdx, cdx}, uy[3] = {ady, bdy, cdy};
    double part[3][32];
    int npart[3];
    for (int i = 0; i < 3; ++i) {
        double t8[8], xx[16], yy[16];
        int n8 = scale(minor[i], nminor[i], ux[i], t8);
        const int nxx = scale(t8, n8, ux[i], xx);
        n8 = scale(minor[i], nminor[i], uy[i], t8);
        const int nyy = scale(t8, n8, uy[i], yy);
        npart[i] = sum(xx, nxx, yy, nyy, part[i]);
    }
    double partial[64], fin[96];
    const int npartial = sum(part[0], npart[0], part[1], npart[1], partial);
    const int nfin = sum(partial, npartial, part[2], npart[2], fin);
    sign = static_cast<int>(sign_of(fin, nfin));
    return estimate(fin, nfin);
}

}  // namespace

double orient2d_exact(double ax, double ay, double bx, double by, double cx, double cy) {
    for (double v : {ax, ay, bx, by, cx, cy})
        if (!in_range(v, 0x1p-480, 0x1p500)) return orient2d_full<Wide>(ax, ay, bx, by, cx, cy);
    const double acx = ax - cx, bcx = bx - cx, acy = ay - cy, bcy = by - cy;
    double b[4];
    const int nb = two_two_diff(acx, bcy, acy, bcx, b);
    const double permanent = std::fabs(acx * bcy) + std::fabs(acy * bcx);
    double det = estimate(b, nb);
    double bound = kOrientBoundB * permanent + kSlack;
    if (std::fabs(det) > bound) return det > 0 ? 1.0 : -1.0;
    const double acxt = tail_of(ax, cx, acx), bcxt = tail_of(bx, cx, bcx);
    const double acyt = tail_of(ay, cy, acy), bcyt = tail_of(by, cy, bcy);
    if (acxt == 0.0 && bcxt == 0.0 && acyt == 0.0 && bcyt == 0.0) return sign_of(b, nb);
    bound = kOrientBoundC * permanent + kResultBound * std::fabs(det) + kSlack;
    det += (acx * bcyt + bcy * acxt) - (acy * bcxt + bcx * acyt);
    if (std::fabs(det) > bound) return det > 0 ? 1.0 : -1.0;
    return orient2d_full<double>(ax, ay, bx, by, cx, cy);
}

double incircle_exact(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                      double dy) {
    for (double v : {ax, ay, bx, by, cx, cy, dx, dy})
        if (!in_range(v, 0x1p-215, 0x1p250))
            return incircle_full<Wide>(ax, ay, bx, by, cx, cy, dx, dy);
    const double adx = ax - dx, bdx = bx - dx, cdx = cx - dx;
    const double ady = ay - dy, bdy = by - dy, cdy = cy - dy;
    const double adxt = tail_of(ax, dx, adx), bdxt = tail_of(bx, dx, bdx);
    const double cdxt = tail_of(cx, dx, cdx), adyt = tail_of(ay, dy, ady);
    const double bdyt = tail_of(by, dy, bdy), cdyt = tail_of(cy, dy, cdy);
    const bool exact =
        adxt == 0.0 && bdxt == 0.0 && cdxt == 0.0 && adyt == 0.0 && bdyt == 0.0 && cdyt == 0.0;
    const double alift = adx * adx + ady * ady;
    const double blift = bdx * bdx + bdy * bdy;
    const double clift = cdx * cdx + cdy * cdy;
    const double permanent = (std::fabs(bdx * cdy) + std::fabs(cdx * bdy)) * alift +
                             (std::fabs(cdx * ady) + std::fabs(adx * cdy)) * blift +
                             (std::fabs(adx * bdy) + std::fabs(bdx * ady)) * clift;
    // Stage B: alift bc + blift ca + clift ab from the rounded differences, exactly: in
    // integers where their bits allow, else as an expansion.
    double det = 0.0, bound = 0.0;
    int sign = 2;
#if defined(__SIZEOF_INT128__)
    sign = incircle_integer({adx, ady, bdx, bdy, cdx, cdy}, det);
    if (sign != 2) {
        if (exact) return sign;
        bound = kInCircleBoundBRounded * permanent + 2.0 * kEps * std::fabs(det) + kSlack;
    }
#endif
    if (sign == 2) {
        det = incircle_expansion(adx, ady, bdx, bdy, cdx, cdy, sign);
        if (exact) return sign;
        bound = kInCircleBoundB * permanent + kSlack;
    }
    if (std::fabs(det) > bound) return det > 0 ? 1.0 : -1.0;
    // Stage C: the terms first-order in the tails.
    bound = kInCircleBoundC * permanent + kResultBound * std::fabs(det) + kSlack;
    det += ((adx * adx + ady * ady) * ((bdx * cdyt + cdy * bdxt) - (bdy * cdxt + cdx * bdyt)) +
            2.0 * (adx * adxt + ady * adyt) * (bdx * cdy - bdy * cdx)) +
           ((bdx * bdx + bdy * bdy) * ((cdx * adyt + ady * cdxt) - (cdy * adxt + adx * cdyt)) +
            2.0 * (bdx * bdxt + bdy * bdyt) * (cdx * ady - cdy * adx)) +
           ((cdx * cdx + cdy * cdy) * ((adx * bdyt + bdy * adxt) - (ady * bdxt + bdx * adyt)) +
            2.0 * (cdx * cdxt + cdy * cdyt) * (adx * bdy - ady * bdx));
    if (std::fabs(det) > bound) return det > 0 ? 1.0 : -1.0;
    return incircle_full<double>(ax, ay, bx, by, cx, cy, dx, dy);
}

}  // namespace zemath
