// Exact orientation and in-circle signs (see predicates.hpp).
#include "gridding/predicates.hpp"

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace zemath {
namespace {

// The exact path works in a type whose exponent range holds every product of four
// coordinate differences of finite doubles (up to 2^4100, down to 2^-4296): the x87 or
// quadruple long double where there is one. Then no intermediate overflows or
// underflows, and the signs are exact for all finite coordinates, however far apart in
// magnitude. Where long double is double, the range is that of double (exact while no
// product of four differences leaves it).
using Real = std::conditional_t<(std::numeric_limits<long double>::max_exponent >= 4400 &&
                                 std::numeric_limits<long double>::min_exponent <= -4400),
                                long double, double>;
constexpr bool kWideReal = !std::is_same_v<Real, double>;
using Expansion = std::vector<Real>;  // non-overlapping, increasing magnitude, no zeros

inline void two_sum(Real a, Real b, Real& x, Real& y) {
    x = a + b;
    const Real bv = x - a;
    const Real av = x - bv;
    y = (a - av) + (b - bv);
}

// Veltkamp's split of a into two halves of at most ceil(p/2) bits each.
inline void split(Real a, Real& hi, Real& lo) {
    constexpr int half = (std::numeric_limits<Real>::digits + 1) / 2;
    const Real factor = static_cast<Real>((1ULL << half) + 1);
    const Real c = factor * a;
    hi = c - (c - a);
    lo = a - hi;
}

// x + y = a * b exactly (Dekker's product; the fused multiply-add for double).
inline void two_product(Real a, Real b, Real& x, Real& y) {
    x = a * b;
    if constexpr (kWideReal) {
        Real ahi, alo, bhi, blo;
        split(a, ahi, alo);
        split(b, bhi, blo);
        y = alo * blo - (((x - ahi * bhi) - alo * bhi) - ahi * blo);
    } else {
        y = std::fma(a, b, -x);
    }
}

// e + b (Grow-Expansion with zero elimination).
Expansion grow(const Expansion& e, Real b) {
    Expansion h;
    h.reserve(e.size() + 1);
    Real q = b;
    for (Real component : e) {
        Real sum, tail;
        two_sum(q, component, sum, tail);
        if (tail != 0.0) h.push_back(tail);
        q = sum;
    }
    if (q != 0.0 || h.empty()) h.push_back(q);
    if (h.size() == 1 && h[0] == 0.0) h.clear();
    return h;
}

Expansion add(const Expansion& e, const Expansion& f) {
    Expansion h = e;
    for (Real component : f) h = grow(h, component);
    return h;
}

// e * b (Scale-Expansion with zero elimination).
Expansion scale(const Expansion& e, Real b) {
    Expansion h;
    if (e.empty() || b == 0.0) return h;
    h.reserve(2 * e.size());
    Real q, tail;
    two_product(e[0], b, q, tail);
    if (tail != 0.0) h.push_back(tail);
    for (std::size_t i = 1; i < e.size(); ++i) {
        Real product, product_tail, sum;
        two_product(e[i], b, product, product_tail);
        two_sum(q, product_tail, sum, tail);
        if (tail != 0.0) h.push_back(tail);
        two_sum(product, sum, q, tail);
        if (tail != 0.0) h.push_back(tail);
    }
    if (q != 0.0) h.push_back(q);
    return h;
}

Expansion multiply(const Expansion& e, const Expansion& f) {
    Expansion h;
    for (Real component : f) h = add(h, scale(e, component));
    return h;
}

Expansion negate(Expansion e) {
    for (Real& c : e) c = -c;
    return e;
}

Expansion difference(double a, double b) {  // a - b exactly
    Real x, y;
    two_sum(a, -static_cast<Real>(b), x, y);
    Expansion h;
    if (y != 0) h.push_back(y);
    if (x != 0) h.push_back(x);
    return h;
}

double sign_of(const Expansion& e) {
    return e.empty() ? 0.0 : (e.back() > 0 ? 1.0 : -1.0);
}

}  // namespace

double orient2d_exact(double ax, double ay, double bx, double by, double cx, double cy) {
    const Expansion acx = difference(ax, cx), bcy = difference(by, cy);
    const Expansion acy = difference(ay, cy), bcx = difference(bx, cx);
    return sign_of(add(multiply(acx, bcy), negate(multiply(acy, bcx))));
}

double incircle_exact(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                      double dy) {
    const Expansion adx = difference(ax, dx), ady = difference(ay, dy);
    const Expansion bdx = difference(bx, dx), bdy = difference(by, dy);
    const Expansion cdx = difference(cx, dx), cdy = difference(cy, dy);
    const Expansion alift = add(multiply(adx, adx), multiply(ady, ady));
    const Expansion blift = add(multiply(bdx, bdx), multiply(bdy, bdy));
    const Expansion clift = add(multiply(cdx, cdx), multiply(cdy, cdy));
    const Expansion bc = add(multiply(bdx, cdy), negate(multiply(cdx, bdy)));
    const Expansion ca = add(multiply(cdx, ady), negate(multiply(adx, cdy)));
    const Expansion ab = add(multiply(adx, bdy), negate(multiply(bdx, ady)));
    return sign_of(add(add(multiply(alift, bc), multiply(blift, ca)), multiply(clift, ab)));
}

}  // namespace zemath
