// Polygon primitives over vertex arrays x[0..n-1], y[0..n-1] (closed implicitly: the
// last vertex joins the first): point location by the even-odd crossing rule with an
// exact on-boundary test, signed area by the shoelace formula, and reordering of the
// vertices by angle around their centroid.
//
// Method: the crossing test counts edges whose half-open y interval holds the point's y
// and which pass to the right of it (Shimrat, Algorithm 112, CACM 5 (1962), with the
// half-open rule that makes vertices count once); a point on an edge or vertex is
// reported apart, found with the exact orientation sign of the edge and the point. The
// area sums (x_i - x_0)(y_{i+1} - y_0) - (x_{i+1} - x_0)(y_i - y_0) in double: shifting
// to the first vertex keeps far-from-origin polygons free of cancellation.
//
// The exported members are stamped in polygon.cpp from the (letter, element type) lists
// below, one template per operation.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <span>
#include <vector>

#define ZEMATH_POINT_IN_POLYGON_MEMBERS(X) X(d, double) X(f, float)
#define ZEMATH_POLYGON_AREA_MEMBERS(X) X(d, double) X(f, float) X(l, long)
#define ZEMATH_POLYGON_REORDER_MEMBERS(X) X(d, double)

namespace zemath {

enum class PointLocation { outside = 0, inside = 1, on_boundary = 2 };

template <class T>
PointLocation locate_point(std::span<const T> x, std::span<const T> y, double px, double py) {
    const std::size_t n = x.size();
    bool inside = false;
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        const double xi = static_cast<double>(x[i]), yi = static_cast<double>(y[i]);
        const double xj = static_cast<double>(x[j]), yj = static_cast<double>(y[j]);
        // On the segment: collinear and inside its bounding box.
        const double cross = (xj - xi) * (py - yi) - (yj - yi) * (px - xi);
        if (cross == 0.0 && px >= std::min(xi, xj) && px <= std::max(xi, xj) &&
            py >= std::min(yi, yj) && py <= std::max(yi, yj))
            return PointLocation::on_boundary;
        if ((yi > py) != (yj > py)) {
            // The edge crosses the horizontal through the point; count it when the
            // crossing lies to the right. The sign of cross decides without a division.
            const bool right = (yj > yi) ? cross > 0.0 : cross < 0.0;
            if (right) inside = !inside;
        }
    }
    return inside ? PointLocation::inside : PointLocation::outside;
}

template <class T>
double polygon_area(std::span<const T> x, std::span<const T> y) {
    const std::size_t n = x.size();
    if (n < 3) return 0.0;
    const double x0 = static_cast<double>(x[0]), y0 = static_cast<double>(y[0]);
    double twice = 0.0;
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double ax = static_cast<double>(x[i]) - x0, ay = static_cast<double>(y[i]) - y0;
        const double bx = static_cast<double>(x[i + 1]) - x0,
                     by = static_cast<double>(y[i + 1]) - y0;
        twice += ax * by - bx * ay;
    }
    return 0.5 * twice;
}

// Reorders the vertices counterclockwise by angle around their centroid, starting from
// the smallest angle in (-pi, pi]; equal angles by distance from the centroid. A vertex
// with a NaN coordinate goes to the end, in input order.
template <class T>
void reorder_polygon(std::span<T> x, std::span<T> y) {
    const std::size_t n = x.size();
    double cx = 0.0, cy = 0.0;
    std::size_t usable = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (std::isnan(x[i]) || std::isnan(y[i])) continue;
        cx += x[i];
        cy += y[i];
        ++usable;
    }
    if (usable > 0) {
        cx /= static_cast<double>(usable);
        cy /= static_cast<double>(usable);
    }
    struct Key {
        bool nan;
        double angle, distance;
    };
    std::vector<Key> key(n);
    for (std::size_t i = 0; i < n; ++i) {
        const bool nan = std::isnan(x[i]) || std::isnan(y[i]);
        const double dx = x[i] - cx, dy = y[i] - cy;
        key[i] = {nan, nan ? 0.0 : std::atan2(dy, dx), nan ? 0.0 : std::hypot(dx, dy)};
    }
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        if (key[a].nan != key[b].nan) return key[b].nan;
        if (key[a].nan) return false;
        if (key[a].angle != key[b].angle) return key[a].angle < key[b].angle;
        return key[a].distance < key[b].distance;
    });
    std::vector<T> sx(n), sy(n);
    for (std::size_t k = 0; k < n; ++k) {
        sx[k] = x[order[k]];
        sy[k] = y[order[k]];
    }
    std::copy(sx.begin(), sx.end(), x.begin());
    std::copy(sy.begin(), sy.end(), y.begin());
}

}  // namespace zemath
