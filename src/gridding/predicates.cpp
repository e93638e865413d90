// Exact orientation and in-circle signs (see predicates.hpp).
#include "gridding/predicates.hpp"

#include <cmath>
#include <vector>

namespace zemath {
namespace {

using Expansion = std::vector<double>;  // non-overlapping, increasing magnitude, no zeros

inline void two_sum(double a, double b, double& x, double& y) {
    x = a + b;
    const double bv = x - a;
    const double av = x - bv;
    y = (a - av) + (b - bv);
}

inline void two_product(double a, double b, double& x, double& y) {
    x = a * b;
    y = std::fma(a, b, -x);
}

// e + b (Grow-Expansion with zero elimination).
Expansion grow(const Expansion& e, double b) {
    Expansion h;
    h.reserve(e.size() + 1);
    double q = b;
    for (double component : e) {
        double sum, tail;
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
    for (double component : f) h = grow(h, component);
    return h;
}

// e * b (Scale-Expansion with zero elimination).
Expansion scale(const Expansion& e, double b) {
    Expansion h;
    if (e.empty() || b == 0.0) return h;
    h.reserve(2 * e.size());
    double q, tail;
    two_product(e[0], b, q, tail);
    if (tail != 0.0) h.push_back(tail);
    for (std::size_t i = 1; i < e.size(); ++i) {
        double product, product_tail, sum;
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
    for (double component : f) h = add(h, scale(e, component));
    return h;
}

Expansion negate(Expansion e) {
    for (double& c : e) c = -c;
    return e;
}

Expansion difference(double a, double b) {  // a - b exactly
    double x, y;
    two_sum(a, -b, x, y);
    Expansion h;
    if (y != 0.0) h.push_back(y);
    if (x != 0.0) h.push_back(x);
    return h;
}

double sign_of(const Expansion& e) {
    return e.empty() ? 0.0 : e.back();
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
