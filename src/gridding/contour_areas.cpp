// Supplementary areas of contour lines over a triangulation: the open level lines of
// each level are closed along the triangulation's boundary into rings around the parts
// of the hull where the field is above the level.
//
// Method: per level, every open end is placed on the boundary polygon (nearest edge,
// as a position k + u along the counter-clockwise boundary); the ends are sorted by
// position, and each boundary arc between consecutive ends is classed above or below
// the level from the boundary node z inside it (linear z at its middle when it holds
// no node). In consistent data the classes alternate, and the rings follow line, above
// arc, line, ... back to the first line. Closed lines are copied. O(B + P + E log E) per
// level for B boundary nodes, P line points and E open ends, plus P B for placing ends
// (each end is compared with every boundary edge).
// Failure codes: -1 null or inconsistent records, -2 the option is missing, -19 memory.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "core/allocate.hpp"
#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/status.h"
#include "zemath/triangulation.h"

namespace zemath {
namespace {

constexpr unsigned kAreaAbove = 0x10000;
// Open ends may lie this far (relative to the extent of the nodes) off the boundary.
constexpr double kEndTolerance = 1e-6;

struct Ring {
    std::vector<double> x, y;
};

struct Boundary {
    std::vector<double> x, y, z;  // counter-clockwise, m nodes
    int m = 0;
    double extent = 0.0;
};

// The record's boundary, counter-clockwise (reversed when stored clockwise). False
// when the record cannot give one.
bool boundary_of(const Triangulation& t, Boundary& b) {
    const int m = t.boundaryCount;
    if (m < 3 || t.boundary == nullptr || t.x == nullptr || t.y == nullptr || t.z == nullptr)
        return false;
    double area = 0.0;
    for (int k = 0; k < m; ++k) {
        const int i = t.boundary[k];
        if (i < 0 || i >= t.nodes) return false;
        if (!std::isfinite(t.x[i]) || !std::isfinite(t.y[i])) return false;
        b.x.push_back(t.x[i]), b.y.push_back(t.y[i]), b.z.push_back(t.z[i]);
    }
    for (int k = 0; k < m; ++k) {
        const int l = (k + 1) % m;
        area += b.x[k] * b.y[l] - b.x[l] * b.y[k];
    }
    if (area < 0.0) {
        std::reverse(b.x.begin(), b.x.end());
        std::reverse(b.y.begin(), b.y.end());
        std::reverse(b.z.begin(), b.z.end());
    }
    const auto [xlo, xhi] = std::minmax_element(b.x.begin(), b.x.end());
    const auto [ylo, yhi] = std::minmax_element(b.y.begin(), b.y.end());
    b.extent = std::hypot(*xhi - *xlo, *yhi - *ylo);
    b.m = m;
    return b.extent > 0.0 && std::isfinite(b.extent);
}

// Position k + u of (px, py) on the boundary (edge k from node k to node k+1), or -1
// when it lies farther than the tolerance from every edge.
double boundary_position(const Boundary& b, double px, double py) {
    double best = INFINITY, position = -1.0;
    for (int k = 0; k < b.m; ++k) {
        const int l = (k + 1) % b.m;
        const double ex = b.x[l] - b.x[k], ey = b.y[l] - b.y[k];
        const double len2 = ex * ex + ey * ey;
        double u = len2 > 0.0 ? ((px - b.x[k]) * ex + (py - b.y[k]) * ey) / len2 : 0.0;
        u = std::clamp(u, 0.0, 1.0);
        const double d = std::hypot(px - (b.x[k] + u * ex), py - (b.y[k] + u * ey));
        if (d < best) best = d, position = k + u;
    }
    if (!(best <= kEndTolerance * b.extent)) return -1.0;
    return position >= b.m ? position - b.m : position;
}

// Sum of (z - level) over the boundary nodes strictly inside the counter-clockwise arc
// from position s to position e; z at the middle of the arc when it holds no node.
double arc_excess(const Boundary& b, double s, double e, double level) {
    const double length = e > s ? e - s : e + b.m - s;
    double sum = 0.0;
    int nodes = 0;
    // Nodes j with s < j < s + length, taken modulo m.
    for (long long j = static_cast<long long>(std::floor(s)) + 1; j < s + length; ++j) {
        const double zj = b.z[static_cast<std::size_t>(j % b.m)];
        ++nodes;
        if (!is_missing(zj)) sum += zj - level;
    }
    if (nodes > 0) return sum;
    double mid = s + 0.5 * length;
    if (mid >= b.m) mid -= b.m;
    const int k = std::min(static_cast<int>(mid), b.m - 1);
    const double u = mid - k;
    const double z0 = b.z[k], z1 = b.z[(k + 1) % b.m];
    if (is_missing(z0) || is_missing(z1)) return 0.0;
    return z0 + u * (z1 - z0) - level;
}

void append_arc_nodes(const Boundary& b, double s, double e, Ring& ring) {
    const double length = e > s ? e - s : e + b.m - s;
    for (long long j = static_cast<long long>(std::floor(s)) + 1; j < s + length; ++j) {
        ring.x.push_back(b.x[static_cast<std::size_t>(j % b.m)]);
        ring.y.push_back(b.y[static_cast<std::size_t>(j % b.m)]);
    }
}

bool line_usable(const TriContourLine& line) {
    if (line.x == nullptr || line.y == nullptr || line.count < (line.closed ? 3 : 2)) return false;
    for (int k = 0; k < line.count; ++k)
        if (!std::isfinite(line.x[k]) || !std::isfinite(line.y[k])) return false;
    return true;
}

// Rings of one level; false when the level is inconsistent.
bool level_rings(const Boundary& b, const TriContourLevel& level, std::vector<Ring>& rings) {
    if (!std::isfinite(level.level) || level.lineCount < 0 ||
        (level.lineCount > 0 && level.line == nullptr))
        return false;
    struct End {
        double position;
        int line, side;  // side 0: the line's first point, 1: its last
    };
    std::vector<End> ends;
    for (int l = 0; l < level.lineCount; ++l) {
        const TriContourLine& line = level.line[l];
        if (!line_usable(line)) return false;
        if (line.closed) {
            rings.push_back({{line.x, line.x + line.count}, {line.y, line.y + line.count}});
            continue;
        }
        for (int side = 0; side < 2; ++side) {
            const int k = side == 0 ? 0 : line.count - 1;
            const double position = boundary_position(b, line.x[k], line.y[k]);
            if (position < 0.0) return false;
            ends.push_back({position, l, side});
        }
    }
    const double lv = level.level;
    if (ends.empty()) {
        double sum = 0.0;
        for (double zj : b.z)
            if (!is_missing(zj)) sum += zj - lv;
        if (sum > 0.0) rings.push_back({b.x, b.y});
        return true;
    }
    std::sort(ends.begin(), ends.end(), [](const End& a, const End& c) {
        return a.position < c.position ||
               (a.position == c.position &&
                (a.line < c.line || (a.line == c.line && a.side < c.side)));
    });
    const int count = static_cast<int>(ends.size());
    // above[i]: the arc from end i to end i + 1 (cyclically) is above the level.
    std::vector<char> above(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        above[i] = arc_excess(b, ends[i].position, ends[(i + 1) % count].position, lv) > 0.0;
    for (int i = 0; i < count; ++i)
        if (above[i] == above[(i + count - 1) % count]) return false;  // must alternate
    // index of each line end in the sorted list
    std::vector<int> at(2 * static_cast<std::size_t>(level.lineCount), -1);
    for (int i = 0; i < count; ++i) at[2 * ends[i].line + ends[i].side] = i;
    std::vector<char> used(static_cast<std::size_t>(level.lineCount), 0);
    for (int i0 = 0; i0 < count; ++i0) {
        if (!above[i0] || used[ends[i0].line]) continue;
        // Start at the line ending where the above arc i0 starts.
        Ring ring;
        int i = i0;
        for (int guard = 0; guard <= count; ++guard) {
            const End& end = ends[i];  // the arc above starts here: the line arrives here
            const TriContourLine& line = level.line[end.line];
            if (!above[i] || used[end.line]) return false;
            used[end.line] = 1;
            // The line must leave from an end where an above arc stops.
            const int from = at[2 * end.line + (1 - end.side)];
            if (from < 0 || above[from]) return false;
            // The line from its other end to this one, then the above arc's nodes.
            if (end.side == 1)
                for (int k = 0; k < line.count; ++k)
                    ring.x.push_back(line.x[k]), ring.y.push_back(line.y[k]);
            else
                for (int k = line.count - 1; k >= 0; --k)
                    ring.x.push_back(line.x[k]), ring.y.push_back(line.y[k]);
            const int next = (i + 1) % count;
            append_arc_nodes(b, end.position, ends[next].position, ring);
            // The next line starts where the arc stops; it runs to an end where the
            // following above arc starts.
            const int other = at[2 * ends[next].line + (1 - ends[next].side)];
            if (other < 0) return false;
            i = other;
            if (i == i0) break;
            if (guard == count) return false;
        }
        if (ring.x.size() > static_cast<std::size_t>(INT_MAX)) return false;
        rings.push_back(std::move(ring));
    }
    for (int l = 0; l < level.lineCount; ++l)
        if (!level.line[l].closed && !used[l]) return false;
    return true;
}

template <class T>
T* allocate(std::size_t count) {
    T* p = raw_array<T>(count);
    if (p == nullptr) throw std::bad_alloc();
    std::memset(static_cast<void*>(p), 0, std::max<std::size_t>(count, 1) * sizeof(T));
    return p;
}

void release(TriContour* c) {
    if (c->levels != nullptr) {
        for (int l = 0; l < c->levelCount; ++l) {
            TriContourLevel& level = c->levels[l];
            if (level.line != nullptr)
                for (int k = 0; k < level.lineCount; ++k)
                    raw_free(level.line[k].x), raw_free(level.line[k].y);
            raw_free(level.line);
        }
    }
    raw_free(c->levels);
    std::memset(c, 0, sizeof *c);
}

// Builds the whole result in result (released by the caller on failure). 0 or -1.
int supplement(const Triangulation& t, const TriContour& contour, TriContour& result) {
    if (contour.levelCount < 0 || (contour.levelCount > 0 && contour.levels == nullptr))
        return ZEMATH_ERR_GENERAL;
    Boundary b;
    if (!boundary_of(t, b)) return ZEMATH_ERR_GENERAL;
    const int levels = contour.levelCount;
    result.levels = allocate<TriContourLevel>(static_cast<std::size_t>(levels));
    result.levelCount = levels;
    std::vector<Ring> rings;
    for (int l = 0; l < levels; ++l) {
        rings.clear();
        if (!level_rings(b, contour.levels[l], rings)) return ZEMATH_ERR_GENERAL;
        TriContourLevel& out = result.levels[l];
        out.level = contour.levels[l].level;
        out.line = allocate<TriContourLine>(rings.size());
        out.lineCount = static_cast<int>(rings.size());
        for (std::size_t k = 0; k < rings.size(); ++k) {
            TriContourLine& line = out.line[k];
            const std::size_t n = rings[k].x.size();
            line.x = allocate<double>(n);
            line.y = allocate<double>(n);
            std::memcpy(line.x, rings[k].x.data(), n * sizeof(double));
            std::memcpy(line.y, rings[k].y.data(), n * sizeof(double));
            line.count = static_cast<int>(n);
            line.closed = 1;
        }
    }
    return 0;
}

}  // namespace
}  // namespace zemath

ZEMATH_API void zemath_tri_contour_init(TriContour* c) noexcept {
    if (c != nullptr) std::memset(c, 0, sizeof *c);
}

ZEMATH_API void zemath_tri_contour_free(TriContour* c) noexcept {
    if (c != nullptr) zemath::release(c);
}

ZEMATH_API int zemath_triangulation_supplementary_area(const Triangulation* t,
                                                       const TriContour* contour, TriContour* out,
                                                       unsigned int options) noexcept {
    if (t == nullptr || contour == nullptr || out == nullptr || t->valid == 0)
        return ZEMATH_ERR_GENERAL;
    if ((options & zemath::kAreaAbove) == 0) return ZEMATH_ERR_TOO_FEW_CURVES;
    TriContour result;
    std::memset(&result, 0, sizeof result);
    const int status =
        zemath::guard_status([&] { return zemath::supplement(*t, *contour, result); });
    if (status != 0) {
        zemath::release(&result);
        return status;
    }
    zemath::release(out);  // after the last read of contour, which out may alias
    *out = result;
    return 0;
}
