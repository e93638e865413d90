// The Triangulation record: node preparation, the built-in and engine builds, the grid
// build, the record's derived lists (edges from the lower node, triangles from their
// lowest vertex, the counter-clockwise boundary from node 0), the missing-z pass, the
// boundary query, flattening, and the two evaluators.
// Failure codes: -1 null, -2 too few nodes or failure, -130 collinear, -19 memory;
// evaluators -11, -15, -37.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <span>
#include <vector>

#include "core/allocate.hpp"
#include "core/guard.hpp"
#include "core/missing.hpp"
#include "gridding/delaunay.hpp"
#include "gridding/duplicates.hpp"
#include "gridding/predicates.hpp"
#include "gridding/triangulation.hpp"
#include "zemath/status.h"
#include "zemath/triangulation.h"

extern "C" int zemath_qhull_delaunay(int n, double* points, int extra_setting, int* tri,
                                     int capacity, int* count);

namespace zemath {
namespace {

constexpr unsigned kKeepMissingZ = 0x10000;
constexpr unsigned kMissingZPass = 0x20000;
constexpr unsigned kNormalised = 0x40000;
constexpr unsigned kBoundaryForward = 0x80000;
constexpr unsigned kEngine = 0x100000;
constexpr unsigned kEngineScaled = 0x200000;
// Nodes within this fraction of the x and y ranges are one node.
constexpr double kDuplicateTol = 1e-8;

template <class T>
T* alloc_array(std::size_t count) {
    T* p = raw_array<T>(count);
    if (p == nullptr) throw std::bad_alloc();
    prefault(p, count * sizeof(T));  // record arrays, written whole once filled
    return p;
}

template <class T>
T* copy_array(const std::vector<T>& v) {
    T* p = alloc_array<T>(v.size());
    if (!v.empty()) std::memcpy(p, v.data(), v.size() * sizeof(T));
    return p;
}

// The node array's storage for a record (n is at least 3 where records are filled).
double* take_array(NodeArray& a) {
    double* const block = a.release();
    return block != nullptr ? block : alloc_array<double>(0);
}

inline int nxt(int k) {
    return k == 2 ? 0 : k + 1;
}
inline int prv(int k) {
    return k == 0 ? 2 : k - 1;
}

bool usable_coordinate(double v) {
    return !is_missing(v) && std::isfinite(v);
}

// Engine build on the prepared nodes; false when the engine fails or its triangles are
// not the unique Delaunay triangulation of all nodes (the built-in method runs then).
bool build_engine(const Nodes& nodes, bool scaled, Mesh& mesh) {
    const int n = static_cast<int>(nodes.x.size());
    if (n < 4) return false;
    // All nodes on one line (the built-in method reports it): the engine is not asked.
    int off_line = 1;
    while (off_line < n - 1 && orient2d(nodes.x[0], nodes.y[0], nodes.x[n - 1], nodes.y[n - 1],
                                        nodes.x[off_line], nodes.y[off_line]) == 0.0)
        ++off_line;
    if (off_line == n - 1) return false;
    // Relative to the first node: the engine lifts the points to a paraboloid, whose
    // curvature term drowns in rounding when the coordinates carry a large offset.
    std::vector<double> points(2 * static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        points[2 * i] = nodes.x[i] - nodes.x[0], points[2 * i + 1] = nodes.y[i] - nodes.y[0];
    std::vector<int> tri(3 * (2 * static_cast<std::size_t>(n) + 8));
    int count = 0;
    const int status = zemath_qhull_delaunay(n, points.data(), scaled ? 1 : 0, tri.data(),
                                             static_cast<int>(tri.size() / 3), &count);
    if (status != 0) return false;
    mesh.v.clear();
    mesh.v.reserve(3 * static_cast<std::size_t>(count));
    for (int t = 0; t < count; ++t) {
        int a = tri[3 * t], b = tri[3 * t + 1], c = tri[3 * t + 2];
        if (a < 0 || b < 0 || c < 0 || a >= n || b >= n || c >= n) return false;
        const double o =
            orient2d(nodes.x[a], nodes.y[a], nodes.x[b], nodes.y[b], nodes.x[c], nodes.y[c]);
        if (o == 0.0) return false;
        if (o < 0.0) std::swap(b, c);
        mesh.v.insert(mesh.v.end(), {a, b, c});
    }
    if (!link_mesh(n, mesh)) return false;
    // Accept the engine's mesh only when it is exactly Delaunay with a convex hull (the
    // engine works in rounded arithmetic and may not be on nearly degenerate inputs), and
    // strictly so across every interior edge: then no empty circle passes through four
    // nodes, the triangulation is unique and the record is the built-in method's. Where
    // there is a tie (cocircular nodes, as on a grid) the built-in method decides it, so
    // the record never depends on the build.
    const NodeArray &x = nodes.x, &y = nodes.y;
    int u = 0;
    do {
        const int v = mesh.hull_next[u], w = mesh.hull_next[v];
        if (orient2d(x[u], y[u], x[v], y[v], x[w], y[w]) < 0.0) return false;
        u = v;
    } while (u != 0);
    for (int t = 0; t < mesh.triangles(); ++t)
        for (int s = 0; s < 3; ++s) {
            const int nb = mesh.nb[3 * t + s];
            if (nb < t) continue;  // each interior edge once; hull edges skipped
            int k = 0;
            while (k < 3 && mesh.nb[3 * nb + k] != t) ++k;
            const int a = mesh.v[3 * t], b = mesh.v[3 * t + 1], c = mesh.v[3 * t + 2];
            const int d = mesh.v[3 * nb + (k + 2) % 3];
            if (incircle(x[a], y[a], x[b], y[b], x[c], y[c], x[d], y[d]) >= 0.0) return false;
        }
    return true;
}

void reset(Triangulation* t) {
    std::memset(t, 0, sizeof *t);
}

// Sorts the nodes lexicographically (x, then y) when no two of them would merge as
// duplicates, the usual case: one sort by x (the radix sort shared with the duplicate
// merging) instead of the general merge. False, the nodes untouched, when some would
// merge. Whether nodes merge depends on the point set only: x values chained by gaps
// within xtol form runs, inside a run y values chained by gaps within ytol form groups,
// and a group of two or more merges.
// The nodes are read from x, y and z (n each) and written to nodes, which may hold them.
bool sort_distinct_nodes(std::size_t n, const double* x, const double* y, const double* z,
                         Nodes& nodes, double xtol, double ytol) {
    std::vector<KeyedPosition> order;
    order.reserve(n);
    for (std::size_t i = 0; i < n; ++i) order.push_back(keyed(x[i], static_cast<int>(i)));
    sort_by_key(order);
    std::vector<int> idx;
    idx.reserve(n);
    for (std::size_t k = 0; k < n; ++k) idx.push_back(position_of(order[k]));
    auto chained = [](double a, double b, double tol) { return b == a || b - a <= tol; };
    std::vector<double> run_y, run_scratch;
    for (std::size_t first = 0; first < n;) {
        std::size_t last = first + 1;
        while (last < n && chained(key_of(order[last - 1]), key_of(order[last]), xtol)) ++last;
        if (last - first > 1) {
            run_y.clear();
            for (std::size_t k = first; k < last; ++k) run_y.push_back(y[idx[k]]);
            // Long runs (the columns of a perturbed grid) by the radix sort, several times
            // faster than comparisons there; y is finite here, which it requires.
            run_scratch.resize(run_y.size());
            if (run_y.size() < 256 ||
                !util::radix_sort<double, sizeof(double), false>(
                    reinterpret_cast<unsigned char*>(run_y.data()), run_y.size(),
                    reinterpret_cast<unsigned char*>(run_scratch.data())))
                std::sort(run_y.begin(), run_y.end());
            for (std::size_t k = 1; k < run_y.size(); ++k)
                if (chained(run_y[k - 1], run_y[k], ytol)) return false;
            // The run is in x order already; stretches of equal x (-0.0 and 0.0 among
            // them) go by y, which no two of their nodes share.
            for (std::size_t k = first; k < last;) {
                std::size_t end = k + 1;
                while (end < last && key_of(order[end]) == key_of(order[k])) ++end;
                if (end - k > 1)
                    std::sort(idx.begin() + static_cast<std::ptrdiff_t>(k),
                              idx.begin() + static_cast<std::ptrdiff_t>(end),
                              [&](int a, int b) { return y[a] < y[b]; });
                k = end;
            }
        }
        first = last;
    }
    NodeArray sx, sy, sz;
    sx.reserve(n), sy.reserve(n), sz.reserve(n);
    // x from the sorted keys (equal keys are equal values, zeros apart: -0.0 == 0.0),
    // which saves one of the three scattered reads.
    for (std::size_t k = 0; k < n; ++k) {
        const std::size_t i = static_cast<std::size_t>(idx[k]);
        const double key = key_of(order[k]);
        sx.push_back(key != 0.0 ? key : x[i]), sy.push_back(y[i]), sz.push_back(z[i]);
    }
    nodes.x.swap(sx), nodes.y.swap(sy), nodes.z.swap(sz);
    return true;
}

// Division by the ranges keeps the order but can round values that differ by less than the
// smallest subnormal times a range onto one (x = 5e-324 beside 0 over a range of 400):
// such new x ties need their y order again, which the builds rely on, and nodes that
// became equal on both axes (they would have been within the duplicate tolerance, so this
// is not expected) keep the first.
void restore_order(Nodes& nodes) {
    const std::size_t count = nodes.x.size();
    auto less = [&](std::size_t a, std::size_t b) {
        return nodes.x[a] < nodes.x[b] || (nodes.x[a] == nodes.x[b] && nodes.y[a] < nodes.y[b]);
    };
    bool strict = true;
    for (std::size_t i = 1; i < count && strict; ++i) strict = less(i - 1, i);
    if (strict) return;
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), less);
    const auto last = std::unique(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return nodes.x[a] == nodes.x[b] && nodes.y[a] == nodes.y[b];
    });
    order.erase(last, order.end());
    std::vector<double> moved;
    for (NodeArray* axis : {&nodes.x, &nodes.y, &nodes.z}) {
        moved.clear();
        for (std::size_t k : order) moved.push_back((*axis)[k]);
        axis->resize(order.size());
        std::copy(moved.begin(), moved.end(), axis->begin());
    }
}

}  // namespace

int prepare_nodes(int n, const double* x, const double* y, const double* z, unsigned options,
                  Nodes& nodes) {
    const bool keep_missing = (options & kKeepMissingZ) != 0;
    nodes.x.clear(), nodes.y.clear(), nodes.z.clear();
    auto usable = [&](int i) {
        return usable_coordinate(x[i]) && usable_coordinate(y[i]) &&
               (keep_missing || !is_missing(z[i]));
    };
    int first_unusable = 0;
    while (first_unusable < n && usable(first_unusable)) ++first_unusable;
    // Every node usable, the usual case: the sort reads the caller's arrays (no copy).
    const bool all_usable = first_unusable == n;
    if (!all_usable) {
        nodes.x.reserve(static_cast<std::size_t>(n));
        nodes.y.reserve(static_cast<std::size_t>(n));
        nodes.z.reserve(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i)
            if (usable(i))
                nodes.x.push_back(x[i]), nodes.y.push_back(y[i]), nodes.z.push_back(z[i]);
        if (nodes.x.size() < 3) return -2;
    } else if (n < 3) {
        return -2;
    }
    const std::span<const double> sx = all_usable
                                           ? std::span<const double>(x, static_cast<std::size_t>(n))
                                           : std::span<const double>(nodes.x);
    const std::span<const double> sy = all_usable
                                           ? std::span<const double>(y, static_cast<std::size_t>(n))
                                           : std::span<const double>(nodes.y);
    const double* const sz = all_usable ? z : nodes.z.data();
    const auto [xlo, xhi] = std::minmax_element(sx.begin(), sx.end());
    const auto [ylo, yhi] = std::minmax_element(sy.begin(), sy.end());
    double xr = *xhi - *xlo, yr = *yhi - *ylo;
    if (!(xr > 0.0) || !std::isfinite(xr)) xr = 1.0;  // a zero range: no scaling on that axis
    if (!(yr > 0.0) || !std::isfinite(yr)) yr = 1.0;
    // Duplicates within 1e-8 of the ranges, merged on the caller's coordinates (the same
    // test as on coordinates divided by the ranges, up to rounding) so that the nodes keep
    // the caller's exact values when they are not normalised.
    if (!sort_distinct_nodes(sx.size(), sx.data(), sy.data(), sz, nodes, kDuplicateTol * xr,
                             kDuplicateTol * yr)) {
        if (all_usable)
            nodes.x.assign(x, x + n), nodes.y.assign(y, y + n), nodes.z.assign(z, z + n);
        double* const values[] = {nodes.z.data()};
        const int count = merge_duplicates(static_cast<int>(nodes.x.size()), nodes.x.data(),
                                           nodes.y.data(), values, DupMethod::mean,
                                           {kDuplicateTol * xr, kDuplicateTol * yr, true, true});
        nodes.x.resize(static_cast<std::size_t>(count));
        nodes.y.resize(static_cast<std::size_t>(count));
        nodes.z.resize(static_cast<std::size_t>(count));
        // Exact lexicographic order (tolerance clusters may hold x slightly out of order).
        auto less = [&](int a, int b) {
            return nodes.x[a] < nodes.x[b] || (nodes.x[a] == nodes.x[b] && nodes.y[a] < nodes.y[b]);
        };
        bool sorted = true;
        for (int i = 1; i < count && sorted; ++i) sorted = !less(i, i - 1);
        if (!sorted) {
            // Only the stretches between cuts need sorting, a cut being a position with every
            // node before it below every node from it on (the clusters are short): the
            // largest node so far against the smallest node from there on.
            std::vector<int> suffix_min(static_cast<std::size_t>(count));
            suffix_min[count - 1] = count - 1;
            for (int i = count - 2; i >= 0; --i)
                suffix_min[i] = less(i, suffix_min[i + 1]) ? i : suffix_min[i + 1];
            std::vector<int> order;
            std::vector<double> moved;
            auto sort_stretch = [&](int first, int last) {
                if (last - first < 2) return;
                order.resize(static_cast<std::size_t>(last - first));
                std::iota(order.begin(), order.end(), first);
                std::sort(order.begin(), order.end(), less);
                for (NodeArray* axis : {&nodes.x, &nodes.y, &nodes.z}) {
                    moved.clear();
                    for (int k : order) moved.push_back((*axis)[k]);
                    std::copy(moved.begin(), moved.end(), axis->begin() + first);
                }
            };
            int largest = 0, first = 0;
            for (int i = 1; i < count; ++i) {
                if (less(largest, suffix_min[i])) {
                    sort_stretch(first, i);
                    first = i;
                    largest = i - 1;  // where the stretch's largest node now is
                }
                if (less(largest, i)) largest = i;
            }
            sort_stretch(first, count);
        }
    }
    const int count = static_cast<int>(nodes.x.size());  // after merging
    if (count < 3) return -2;
    if ((options & kNormalised) != 0) {  // scaled without a shift
        for (double& v : nodes.x) v /= xr;
        for (double& v : nodes.y) v /= yr;
        nodes.xrange = xr;
        nodes.yrange = yr;
        restore_order(nodes);
        if (nodes.x.size() < 3) return -2;
    }
    return 0;
}

void Nodes::scale_back() {
    for (double& v : x) v *= xrange;
    for (double& v : y) v *= yrange;
    xrange = yrange = 1.0;
}

int triangulate_nodes(const Nodes& nodes, unsigned options, Mesh& mesh, bool neighbours) {
    // Coordinates far from 1 are scaled by one power of 2 on both axes when that is exact
    // (no scaled value leaves the normal range), so that the predicates' filters decide
    // and the engine's rounded arithmetic works near 1. Otherwise (coordinates spanning
    // more than the double range can scale) they stay as given: the exact predicates
    // hold for all finite values.
    double largest = 0.0;
    for (std::size_t i = 0; i < nodes.x.size(); ++i)
        largest = std::max({largest, std::fabs(nodes.x[i]), std::fabs(nodes.y[i])});
    Nodes scaled;
    const Nodes* use = &nodes;
    // Within 1e-60 .. 1e60 the in-circle test's fourth powers of coordinate differences stay
    // in the double range (1e-240 .. 1e240); outside it the scaling keeps them there.
    if (largest > 0.0 && (largest > 1e60 || largest < 1e-60)) {
        const int e = std::ilogb(largest);
        scaled = nodes;
        bool exact = true;
        for (NodeArray* axis : {&scaled.x, &scaled.y})
            for (double& v : *axis) {
                const double w = std::ldexp(v, -e);
                exact = exact && (v == 0.0 || std::fabs(w) >= std::numeric_limits<double>::min());
                v = w;
            }
        if (exact) use = &scaled;
        // The engine's rounded arithmetic cannot work on such a span: built-in method.
        if (!exact) options &= ~(kEngine | kEngineScaled);
    }
    if ((options & (kEngine | kEngineScaled)) != 0 &&
        build_engine(*use, (options & kEngineScaled) != 0, mesh))
        return 0;
    const int status = build_sweep(use->x, use->y, mesh, neighbours);
    if (status == 3) return ZEMATH_ERR_COLLINEAR;
    if (status != 0) return -2;
    return 0;
}

// The mesh's triangles as the record's walk reads them: half-edge codes W t + slot, the
// corner and the twin code of a half-edge, and a place per triangle for the walk's own
// mark (-1 before the walk, which sets it).
struct SlotLayout {  // v and twin, 3 per triangle; the marks beside them
    static constexpr int W = 3;
    const int *v, *tw;
    int* marks;
    int vert(int e) const { return v[e]; }
    int twin(int e) const { return tw[e]; }
    int& placed(int t) const { return marks[t]; }
};
struct BlockLayout {  // one TriangleBlock per triangle, the mark in its spare field
    static constexpr int W = 4;
    TriangleBlock* b;
    int vert(int e) const { return b[static_cast<unsigned>(e) >> 2].v[e & 3]; }
    int twin(int e) const { return b[static_cast<unsigned>(e) >> 2].twin[e & 3]; }
    int& placed(int t) const { return b[t].spare; }
};

// Derives the record's lists from the mesh, straight into the record's arrays. The order
// depends only on the triangle set, not on how the build numbered its triangles: node by
// node in index order, around each node counter-clockwise from its hull edge on the hull,
// else from its neighbour of smallest index; an edge listed from its lower node, a
// triangle from its lowest vertex (rotated to start there). One counting pass finds each
// node's start corner and share of the lists, one walk around each node writes them:
// its triangles, its edges, and for each edge the edge id and neighbour of both its
// triangles, placed by then (the builds order their triangles by lowest node, so these
// walks stay local). False on an inconsistent mesh (cannot happen for the builds'
// meshes; nothing is written past the arrays either way).
template <class Layout>
bool fill_record_from(Triangulation* out, Nodes& nodes, const Layout& L, int tc,
                      const std::vector<int>& hull_next, RawBlock& spare, std::size_t spare_bytes) {
    constexpr int W = Layout::W;
    const int n = static_cast<int>(nodes.x.size());
    // Offsets: edges by lower node (each edge counted once, from its hull slot or from
    // the later of its two slots), triangles by lowest vertex. Start corner per node: the
    // one of its hull edge, else the one whose next vertex is smallest.
    std::vector<int> edge_next(static_cast<std::size_t>(n) + 1, 0),
        tri_next(static_cast<std::size_t>(n) + 1, 0), start(static_cast<std::size_t>(n), -1),
        start_next(static_cast<std::size_t>(n), n);
    for (int t = 0; t < tc; ++t) {
        const int a = L.vert(W * t), b = L.vert(W * t + 1), c = L.vert(W * t + 2);
        if (std::min({a, b, c}) < 0 || std::max({a, b, c}) >= n) return false;
        ++tri_next[std::min({a, b, c}) + 1];
        L.placed(t) = -1;
        const int corner[3][2] = {{a, b}, {b, c}, {c, a}};
        for (int s = 0; s < 3; ++s) {
            const int e = W * t + s, i = corner[s][0], j = corner[s][1];
            if (L.twin(e) < e) ++edge_next[std::min(i, j) + 1];
            if (L.twin(e) < 0) {
                start[i] = e, start_next[i] = -1;  // the hull edge leaving i
            } else if (j < start_next[i]) {
                start[i] = e, start_next[i] = j;
            }
        }
    }
    for (int i = 0; i < n; ++i) edge_next[i + 1] += edge_next[i], tri_next[i + 1] += tri_next[i];
    const int edge_count = edge_next[n];
    // The record takes the nodes' storage (no copy).
    out->x = take_array(nodes.x);
    out->y = take_array(nodes.y);
    out->z = take_array(nodes.z);
    out->nodes = n;
    // The triangle table in the build's spare storage when it is large enough: the fast
    // build's triangle array, already mapped (32 bytes per triangle where the table needs
    // 24; the record keeps the whole block, fresh pages cost more than the difference).
    int* tri;
    if (spare && spare_bytes >= sizeof(int) * 6 * static_cast<std::size_t>(tc)) {
        tri = static_cast<int*>(spare.release());
    } else {
        tri = alloc_array<int>(6 * static_cast<std::size_t>(tc));
    }
    out->tri = tri;
    out->triangles = tc;
    int* const edge = out->edge = alloc_array<int>(3 * static_cast<std::size_t>(edge_count));
    out->edges = edge_count;
    int* const neighbor = out->neighbor = alloc_array<int>(3 * static_cast<std::size_t>(tc));
    // Per triangle of the mesh, once its lowest vertex's walk has met it: 4 k + r, k its
    // place in the record and r the corner the record starts it from (L.placed, -1 until
    // then). Half-edge codes are not negative here.
    auto placed = [&](int e) -> int& {
        return L.placed(static_cast<int>(static_cast<unsigned>(e) / W));
    };
    long long incidences = 0;  // triangle sides given their edge (3 tc in the end)
    // Gives the side in slot of a placed triangle its edge id and its neighbour.
    auto mark = [&](int slot, int id, int across) {
        const int code = placed(slot);
        if (code < 0) return false;
        const int k = code >> 2, d = static_cast<int>(static_cast<unsigned>(slot) % W) - (code & 3);
        const int s = d < 0 ? d + 3 : d;
        tri[6 * k + 3 + s] = id;
        neighbor[3 * k + s] = across < 0 ? -1 : placed(across) >> 2;
        ++incidences;
        return true;
    };
    // Lists edge (i, j) of slot; both its triangles get its id, except a twin not placed
    // yet (kept in late: the last triangle of an interior node's walk, done after it).
    auto list_edge = [&](int i, int j, int slot, int& late, int& late_id) {
        const int id = edge_next[i]++;
        if (id >= edge_count) return false;
        const int across = L.twin(slot);
        edge[3 * id] = i, edge[3 * id + 1] = j, edge[3 * id + 2] = across < 0 ? 1 : 0;
        if (across >= 0 && placed(across) < 0) {
            if (late >= 0) return false;
            late = slot, late_id = id;
            return true;
        }
        return mark(slot, id, across) && (across < 0 || mark(across, id, slot));
    };
    for (int i = 0; i < n; ++i) {
        const int first = start[i];
        if (first < 0) continue;
        // Counter-clockwise from the start: triangles whose lowest vertex is i (placed as
        // met, so that every side listed here has its triangles placed, the walk's last
        // triangle excepted), edges to higher nodes, and on the hull the closing edge.
        int t = first / W, r = first % W;
        int late = -1, late_id = -1;
        for (int guard = 0; guard <= tc; ++guard) {
            const int b = L.vert(W * t + nxt(r)), c = L.vert(W * t + prv(r));
            if (i < b && i < c) {
                const int k = tri_next[i]++;
                if (k >= tc || L.placed(t) >= 0) return false;
                L.placed(t) = 4 * k + r;
                tri[6 * k] = i, tri[6 * k + 1] = b, tri[6 * k + 2] = c;
            }
            if (b > i && !list_edge(i, b, W * t + r, late, late_id)) return false;
            const int f = L.twin(W * t + prv(r));  // (c, i) seen from the counter-clockwise side
            if (f < 0) {
                if (c > i && !list_edge(i, c, W * t + prv(r), late, late_id)) return false;
                break;
            }
            t = f / W, r = f % W;
            if (W * t + r == first) break;
            if (r > 2 || L.vert(W * t + r) != i) return false;
        }
        if (late >= 0 && !(mark(late, late_id, L.twin(late)) && mark(L.twin(late), late_id, late)))
            return false;
    }
    if (incidences != 3LL * tc) return false;
    for (int k = 0; k < tc; ++k)
        if (L.placed(k) < 0) return false;
    std::vector<int> boundary;
    if (!hull_next.empty() && hull_next[0] >= 0) {
        int u = 0;
        do {
            boundary.push_back(u);
            u = hull_next[u];
        } while (u != 0 && u >= 0 && static_cast<int>(boundary.size()) <= n);
    }
    out->boundary = copy_array(boundary);
    out->boundaryCount = static_cast<int>(boundary.size());
    return true;
}

bool fill_record(Triangulation* out, Nodes& nodes, Mesh& m) {
    const int tc = m.triangles();
    if (m.blocks)
        return fill_record_from(out, nodes, BlockLayout{m.blocks.get()}, tc, m.hull_next, m.spare,
                                m.spare_bytes);
    if (m.twin.size() != m.v.size()) return false;
    std::vector<int> marks(static_cast<std::size_t>(tc));
    return fill_record_from(out, nodes, SlotLayout{m.v.data(), m.twin.data(), marks.data()}, tc,
                            m.hull_next, m.spare, m.spare_bytes);
}

// Hole rings around the triangles that touch a missing z (see the public header).
void missing_z_pass(Triangulation* t) {
    const int tc = t->triangles;
    std::vector<char> missing(static_cast<std::size_t>(tc), 0);
    bool any = false;
    for (int k = 0; k < tc; ++k) {
        for (int s = 0; s < 3; ++s) missing[k] = missing[k] || is_missing(t->z[t->tri[6 * k + s]]);
        any = any || missing[k];
    }
    if (!any) return;
    struct RingEdge {
        int from, to, triangle;
    };
    std::vector<RingEdge> ring_edges;
    for (int k = 0; k < tc; ++k) {
        if (missing[k]) continue;
        for (int s = 0; s < 3; ++s) {
            const int across = t->neighbor[3 * k + s];
            if (across < 0 || missing[across])
                ring_edges.push_back({t->tri[6 * k + s], t->tri[6 * k + nxt(s)], k});
        }
    }
    std::sort(ring_edges.begin(), ring_edges.end(),
              [](const RingEdge& a, const RingEdge& b) { return a.from < b.from; });
    std::vector<int> first_out(static_cast<std::size_t>(t->nodes) + 1, 0);
    for (const RingEdge& e : ring_edges) ++first_out[e.from + 1];
    for (int i = 0; i < t->nodes; ++i) first_out[i + 1] += first_out[i];
    std::vector<int> cursor(first_out.begin(), first_out.end() - 1);
    std::vector<int> index;
    std::vector<double> value;
    for (std::size_t e0 = 0; e0 < ring_edges.size(); ++e0) {
        const int origin = ring_edges[e0].from;
        if (cursor[origin] >= first_out[origin + 1]) continue;
        int u = origin;
        // In-degree equals out-degree at every node, so the walk closes at its origin.
        for (std::size_t guard = 0; guard <= ring_edges.size(); ++guard) {
            if (cursor[u] >= first_out[u + 1]) break;
            const RingEdge& e = ring_edges[static_cast<std::size_t>(cursor[u]++)];
            index.push_back(u);
            value.push_back(static_cast<double>(e.triangle));
            u = e.to;
            if (u == origin) break;
        }
        index.push_back(-1);
        value.push_back(kNanum);
    }
    t->holeIndex = copy_array(index);
    t->holeValue = copy_array(value);
    t->holeCount = static_cast<int>(index.size());
}

}  // namespace zemath

using zemath::guard_status;

ZEMATH_API void zemath_triangulation_init(Triangulation* t) noexcept {
    if (t != nullptr) zemath::reset(t);
}

ZEMATH_API void zemath_triangulation_free(Triangulation* t) noexcept {
    if (t == nullptr) return;
    zemath::raw_free(t->x), zemath::raw_free(t->y), zemath::raw_free(t->z),
        zemath::raw_free(t->tri), zemath::raw_free(t->edge);
    zemath::raw_free(t->boundary), zemath::raw_free(t->holeIndex), zemath::raw_free(t->holeValue),
        zemath::raw_free(t->neighbor);
    zemath::reset(t);
}

ZEMATH_API int zemath_triangulation(int n, const double* x, const double* y, const double* z,
                                    Triangulation* out, unsigned int options) noexcept {
    zemath_triangulation_free(out);
    if (out == nullptr || x == nullptr || y == nullptr || z == nullptr) return ZEMATH_ERR_GENERAL;
    if (n < 3) return ZEMATH_ERR_TOO_FEW_CURVES;
    const int status = guard_status([&] {
        zemath::Nodes nodes;
        if (const int s = zemath::prepare_nodes(n, x, y, z, options, nodes); s != 0) return s;
        zemath::Mesh mesh;
        // The record's neighbours come from the twin links.
        if (const int s = zemath::triangulate_nodes(nodes, options, mesh, false); s != 0) return s;
        nodes.scale_back();
        if (!zemath::fill_record(out, nodes, mesh)) return -2;
        if (options & zemath::kMissingZPass) zemath::missing_z_pass(out);
        out->valid = 1;
        return 0;
    });
    if (status != 0) zemath_triangulation_free(out);
    return status;
}

ZEMATH_API int zemath_construct_triangulation(int rows, int cols, const double* x, const double* y,
                                              const double* z, Triangulation* out,
                                              unsigned int options) noexcept {
    zemath_triangulation_free(out);
    if (out == nullptr || x == nullptr || y == nullptr || z == nullptr) return ZEMATH_ERR_GENERAL;
    if (rows < 1 || cols < 1 || static_cast<long long>(rows) * cols < 3 ||
        static_cast<long long>(rows) * cols > 0x7fffffffLL / 4)
        return ZEMATH_ERR_TOO_FEW_CURVES;
    const int status = guard_status([&] {
        const int n = rows * cols;
        std::vector<int> edges, tri, neighbor, boundary;
        // Edge ids by (node, kind): 0 row, 1 column, 2 diagonal.
        std::vector<int> id(3 * static_cast<std::size_t>(n), -1);
        for (int i = 0; i < rows; ++i)
            for (int j = 0; j < cols; ++j) {
                const int a = i * cols + j;
                if (j + 1 < cols) {
                    id[3 * a] = static_cast<int>(edges.size() / 3);
                    edges.insert(edges.end(), {a, a + 1, (i == 0 || i == rows - 1) ? 1 : 0});
                }
                if (i + 1 < rows) {
                    id[3 * a + 1] = static_cast<int>(edges.size() / 3);
                    edges.insert(edges.end(), {a, a + cols, (j == 0 || j == cols - 1) ? 1 : 0});
                }
                if (i + 1 < rows && j + 1 < cols) {
                    id[3 * a + 2] = static_cast<int>(edges.size() / 3);
                    edges.insert(edges.end(), {a + 1, a + cols, 0});
                }
            }
        for (int i = 0; i + 1 < rows; ++i)
            for (int j = 0; j + 1 < cols; ++j) {
                const int a = i * cols + j;
                tri.insert(tri.end(),
                           {a, a + 1, a + cols, id[3 * a], id[3 * a + 2], id[3 * a + 1]});
                tri.insert(tri.end(), {a + 1, a + cols + 1, a + cols, id[3 * (a + 1) + 1],
                                       id[3 * (a + cols)], id[3 * a + 2]});
            }
        // Neighbours: the first triangle meeting an edge records itself, the second links both.
        const int tc = static_cast<int>(tri.size() / 6);
        neighbor.assign(3 * static_cast<std::size_t>(tc), -1);
        std::vector<int> seen(edges.size() / 3, -1);
        for (int k = 0; k < tc; ++k)
            for (int s = 0; s < 3; ++s) {
                const int e = tri[6 * k + 3 + s];
                if (seen[e] < 0) {
                    seen[e] = 3 * k + s;
                } else {
                    neighbor[3 * k + s] = seen[e] / 3;
                    neighbor[seen[e]] = k;
                }
            }
        // Boundary counter-clockwise from node 0: first row, last column, last row back,
        // first column down; each node once.
        for (int j = 0; j < cols; ++j) boundary.push_back(j);
        for (int i = 1; i < rows; ++i) boundary.push_back(i * cols + cols - 1);
        if (rows > 1)
            for (int j = cols - 2; j >= 0; --j) boundary.push_back((rows - 1) * cols + j);
        if (cols > 1)
            for (int i = rows - 2; i >= 1; --i) boundary.push_back(i * cols);
        out->x = zemath::alloc_array<double>(static_cast<std::size_t>(n));
        out->y = zemath::alloc_array<double>(static_cast<std::size_t>(n));
        out->z = zemath::alloc_array<double>(static_cast<std::size_t>(n));
        std::memcpy(out->x, x, sizeof(double) * static_cast<std::size_t>(n));
        std::memcpy(out->y, y, sizeof(double) * static_cast<std::size_t>(n));
        std::memcpy(out->z, z, sizeof(double) * static_cast<std::size_t>(n));
        out->nodes = n;
        out->tri = zemath::copy_array(tri);
        out->triangles = tc;
        out->edge = zemath::copy_array(edges);
        out->edges = static_cast<int>(edges.size() / 3);
        out->boundary = zemath::copy_array(boundary);
        out->boundaryCount = static_cast<int>(boundary.size());
        out->neighbor = zemath::copy_array(neighbor);
        if (options & zemath::kMissingZPass) zemath::missing_z_pass(out);
        out->valid = 1;
        return 0;
    });
    if (status != 0) zemath_triangulation_free(out);
    return status;
}

ZEMATH_API int zemath_triangulation_boundary(const Triangulation* t, int* count, double* bx,
                                             double* by, double* bz,
                                             unsigned int options) noexcept {
    if (t == nullptr || t->valid == 0) return ZEMATH_ERR_GENERAL;
    if (count == nullptr || bx == nullptr || by == nullptr || bz == nullptr)
        return t->boundaryCount;
    const int m = t->boundaryCount;
    const bool forward = (options & zemath::kBoundaryForward) != 0;
    for (int k = 0; k < m; ++k) {
        const int node = t->boundary[forward ? k : m - 1 - k];
        bx[k] = t->x[node], by[k] = t->y[node], bz[k] = t->z[node];
    }
    *count = m;
    return 0;
}

ZEMATH_API bool zemath_triangulation_to_array(const Triangulation* t, double* xyz, int* tri,
                                              int* edge, int* boundary) noexcept {
    if (t == nullptr || t->valid == 0 || xyz == nullptr || tri == nullptr || edge == nullptr ||
        boundary == nullptr)
        return false;
    for (int i = 0; i < t->nodes; ++i)
        xyz[3 * i] = t->x[i], xyz[3 * i + 1] = t->y[i], xyz[3 * i + 2] = t->z[i];
    if (t->triangles > 0)
        std::memcpy(tri, t->tri, sizeof(int) * 6 * static_cast<std::size_t>(t->triangles));
    if (t->edges > 0)
        std::memcpy(edge, t->edge, sizeof(int) * 3 * static_cast<std::size_t>(t->edges));
    if (t->boundaryCount > 0)
        std::memcpy(boundary, t->boundary,
                    sizeof(int) * static_cast<std::size_t>(t->boundaryCount));
    return true;
}

ZEMATH_API bool zemath_array_to_triangulation(int nodes, const double* xyz, int triangles,
                                              const int* tri, int edges, const int* edge,
                                              int boundaryCount, const int* boundary,
                                              Triangulation* out) noexcept {
    zemath_triangulation_free(out);
    if (out == nullptr || xyz == nullptr || nodes < 1 || triangles < 0 || edges < 0 ||
        boundaryCount < 0)
        return false;
    if ((triangles > 0 && tri == nullptr) || (edges > 0 && edge == nullptr) ||
        (boundaryCount > 0 && boundary == nullptr))
        return false;
    for (long long k = 0; k < 6LL * triangles; ++k)
        if (tri[k] < 0 || tri[k] >= ((k % 6) < 3 ? nodes : edges)) return false;
    for (long long k = 0; k < 3LL * edges; ++k)
        if ((k % 3) < 2 && (edge[k] < 0 || edge[k] >= nodes)) return false;
    for (int k = 0; k < boundaryCount; ++k)
        if (boundary[k] < 0 || boundary[k] >= nodes) return false;
    const int status = guard_status([&] {
        out->x = zemath::alloc_array<double>(static_cast<std::size_t>(nodes));
        out->y = zemath::alloc_array<double>(static_cast<std::size_t>(nodes));
        out->z = zemath::alloc_array<double>(static_cast<std::size_t>(nodes));
        for (int i = 0; i < nodes; ++i)
            out->x[i] = xyz[3 * i], out->y[i] = xyz[3 * i + 1], out->z[i] = xyz[3 * i + 2];
        out->nodes = nodes;
        out->tri = zemath::alloc_array<int>(6 * static_cast<std::size_t>(triangles));
        if (triangles > 0)
            std::memcpy(out->tri, tri, sizeof(int) * 6 * static_cast<std::size_t>(triangles));
        out->triangles = triangles;
        out->edge = zemath::alloc_array<int>(3 * static_cast<std::size_t>(edges));
        if (edges > 0)
            std::memcpy(out->edge, edge, sizeof(int) * 3 * static_cast<std::size_t>(edges));
        out->edges = edges;
        out->boundary = zemath::alloc_array<int>(static_cast<std::size_t>(boundaryCount));
        if (boundaryCount > 0)
            std::memcpy(out->boundary, boundary,
                        sizeof(int) * static_cast<std::size_t>(boundaryCount));
        out->boundaryCount = boundaryCount;
        out->valid = 1;
        return 0;
    });
    if (status != 0) zemath_triangulation_free(out);
    return status == 0;
}

ZEMATH_API bool zemath_Triangulation_value(const Triangulation* t, double x, double y,
                                           double* z) noexcept {
    if (t == nullptr || z == nullptr || t->triangles < 1 || t->tri == nullptr) return false;
    // cross(a, b) = a.y b.x - a.x b.y, as the weights below are written with it.
    auto cross = [](double ax, double ay, double bx, double by) { return ay * bx - ax * by; };
    for (int k = 0; k < t->triangles; ++k) {
        const int i0 = t->tri[6 * k], i1 = t->tri[6 * k + 1], i2 = t->tri[6 * k + 2];
        const double x0 = t->x[i0], y0 = t->y[i0], x1 = t->x[i1], y1 = t->y[i1], x2 = t->x[i2],
                     y2 = t->y[i2];
        const double c0 = cross(x1 - x2, y1 - y2, x - x2, y - y2);
        const double c1 = cross(x2 - x0, y2 - y0, x - x0, y - y0);
        const double c2 = cross(x0 - x1, y0 - y1, x - x1, y - y1);
        if (c0 * c2 < 0.0 || c1 * c0 < 0.0) continue;  // zero products count as inside
        const double d = (y1 - y2) * (x0 - x2) - (y0 - y2) * (x1 - x2);
        // Weights rotated by one vertex (at P0 the value is z1): kept, hosts rely on it.
        const double sum =
            std::fabs(c2) * t->z[i0] + std::fabs(c0) * t->z[i1] + std::fabs(c1) * t->z[i2];
        *z = d == 0.0 ? sum : sum / std::fabs(d);
        return true;
    }
    return false;
}

ZEMATH_API int zemath_tri_contour_interpolate(int n, const double* x, const double* y, double* z,
                                              const Triangulation* t) noexcept {
    if (n < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    if (x == nullptr || y == nullptr || z == nullptr || t == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (t->neighbor == nullptr || t->triangles < 1) return ZEMATH_ERR_BAD_INTERVAL;
    constexpr double kEdgeTol = 1e-8;  // points this close outside an edge count as inside
    const int tc = t->triangles;
    int current = 0;
    for (int p = 0; p < n; ++p) {
        const double qx = x[p], qy = y[p];
        double result = NANUM;
        int k = current;
        bool found = false;
        if (!std::isnan(qx) && !std::isnan(qy)) {
            // The walk is bounded; a walk that cycles (possible only on non-Delaunay meshes)
            // ends outside.
            for (int steps = 0; steps <= 3 * tc + 3; ++steps) {
                const int a = t->tri[6 * k], b = t->tri[6 * k + 1], c = t->tri[6 * k + 2];
                const double xa = t->x[a], ya = t->y[a], xb = t->x[b], yb = t->y[b], xc = t->x[c],
                             yc = t->y[c];
                const double s1 = (qx - xb) * (ya - yb) - (qy - yb) * (xa - xb);
                const double s2 = (qx - xc) * (yb - yc) - (qy - yc) * (xb - xc);
                const double s3 = (qx - xa) * (yc - ya) - (qy - ya) * (xc - xa);
                int slot = -1;
                if (s1 < -kEdgeTol)
                    slot = 0;
                else if (s2 < -kEdgeTol)
                    slot = 1;
                else if (s3 < -kEdgeTol)
                    slot = 2;
                if (slot < 0) {
                    found = true;
                    const double za = t->z[a], zb = t->z[b], zc = t->z[c];
                    if (!zemath::is_missing(za) && !zemath::is_missing(zb) &&
                        !zemath::is_missing(zc)) {
                        const double d = (xa - xc) * (yb - yc) - (ya - yc) * (xb - xc);
                        result = za + (zb - za) * s3 / d + (zc - za) * s1 / d;
                    }
                    break;
                }
                const int next = t->neighbor[3 * k + slot];
                if (next < 0) break;
                k = next;
            }
        }
        z[p] = result;
        current = found ? k : 0;
    }
    return 0;
}

namespace zemath {
namespace {

// Vertical error of each node against the mesh of the chosen subset (infinite outside
// its hull, 0 for a NaN z).
void subset_errors(const Nodes& all, const Nodes& sub, const Mesh& mesh,
                   const std::vector<char>& chosen, std::vector<double>& error) {
    int start = 0;
    const double inf = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < all.x.size(); ++i) {
        error[i] = 0.0;
        if (chosen[i]) continue;
        const int t = locate(mesh, sub.x, sub.y, all.x[i], all.y[i], start);
        if (t < 0) {
            error[i] = inf;
            continue;
        }
        const int a = mesh.v[3 * t], b = mesh.v[3 * t + 1], c = mesh.v[3 * t + 2];
        const double xa = sub.x[a], ya = sub.y[a], xb = sub.x[b], yb = sub.y[b], xc = sub.x[c],
                     yc = sub.y[c];
        const double d = (yb - yc) * (xa - xc) + (xc - xb) * (ya - yc);
        const double wa = ((yb - yc) * (all.x[i] - xc) + (xc - xb) * (all.y[i] - yc)) / d;
        const double wb = ((yc - ya) * (all.x[i] - xc) + (xa - xc) * (all.y[i] - yc)) / d;
        const double value = wa * sub.z[a] + wb * sub.z[b] + (1.0 - wa - wb) * sub.z[c];
        const double e = std::fabs(all.z[i] - value);
        error[i] = std::isnan(e) ? 0.0 : e;
    }
}

int reduce(int n, const double* x, const double* y, const double* z, int target,
           Triangulation* out) {
    Nodes all;
    if (prepare_nodes(n, x, y, z, 0, all) != 0) return -1;
    const int count = static_cast<int>(all.x.size());
    std::vector<char> chosen(static_cast<std::size_t>(count), 0);
    // Seeds: the hull of all nodes (every other hull node while it exceeds the target),
    // so that the reduced mesh covers the data; the extreme nodes in x and y always.
    {
        Mesh full;
        if (const int s = triangulate_nodes(all, 0, full); s != 0) return -1;
        std::vector<int> hull;
        for (int u = 0; hull.empty() || u != 0; u = full.hull_next[u]) {
            hull.push_back(u);
            if (static_cast<int>(hull.size()) > count) return -1;
        }
        const std::size_t stride =
            (hull.size() + static_cast<std::size_t>(target) - 1) / static_cast<std::size_t>(target);
        for (std::size_t k = 0; k < hull.size(); k += std::max<std::size_t>(stride, 1))
            chosen[hull[k]] = 1;
    }
    const auto by_y = std::minmax_element(all.y.begin(), all.y.end());
    for (int i : {0, count - 1, static_cast<int>(by_y.first - all.y.begin()),
                  static_cast<int>(by_y.second - all.y.begin())})
        chosen[i] = 1;
    const auto by_z = std::minmax_element(all.z.begin(), all.z.end());
    // Errors below this share of the z range count as an exact fit (rounding).
    const double exact = 1e-12 * std::fabs(*by_z.second - *by_z.first);
    std::vector<double> error(static_cast<std::size_t>(count));
    std::vector<int> index, order;
    Nodes sub;
    Mesh mesh;
    auto build_subset = [&] {
        index.clear();
        sub.x.clear(), sub.y.clear(), sub.z.clear();
        for (int i = 0; i < count; ++i)
            if (chosen[i])
                index.push_back(i), sub.x.push_back(all.x[i]), sub.y.push_back(all.y[i]),
                    sub.z.push_back(all.z[i]);
        return triangulate_nodes(sub, 0, mesh);
    };
    // Greedy insertion: the nodes worst represented by the current mesh join it in
    // batches of up to half the current size, until the target or an exact fit.
    for (int round = 0; round < 64; ++round) {
        const int status = build_subset();
        const int size = static_cast<int>(index.size());
        if (status == ZEMATH_ERR_COLLINEAR) {
            if (size >= count) return -1;
            int best = -1;  // the node farthest off the seeds' line
            double best_area = 0.0;
            for (int i = 0; i < count; ++i) {
                const double area =
                    std::fabs((all.x[count - 1] - all.x[0]) * (all.y[i] - all.y[0]) -
                              (all.y[count - 1] - all.y[0]) * (all.x[i] - all.x[0]));
                if (!chosen[i] && area > best_area) best = i, best_area = area;
            }
            if (best < 0) return -1;
            chosen[best] = 1;
            continue;
        }
        if (status != 0) return -1;
        if (size >= target || size >= count) break;
        subset_errors(all, sub, mesh, chosen, error);
        order.clear();
        for (int i = 0; i < count; ++i)
            if (!chosen[i] && error[i] > exact) order.push_back(i);
        if (order.empty()) break;  // the mesh already reproduces every node
        const int batch =
            std::min({static_cast<int>(order.size()), target - size, std::max(1, size / 2)});
        std::nth_element(order.begin(), order.begin() + (batch - 1), order.end(),
                         [&](int a, int b) { return error[a] > error[b]; });
        for (int k = 0; k < batch; ++k) chosen[order[k]] = 1;
    }
    fill_record(out, sub, mesh);
    out->valid = 1;
    return 0;
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_triangulation_reduce(int n, const double* x, const double* y, const double* z,
                                           Triangulation* out, int option) noexcept {
    zemath_triangulation_free(out);
    if (out == nullptr || x == nullptr || y == nullptr || z == nullptr || n < 3 || option < 3)
        return -1;
    const int status = guard_status([&] { return zemath::reduce(n, x, y, z, option, out); });
    if (status != 0) {
        zemath_triangulation_free(out);
        return -1;
    }
    return 0;
}
