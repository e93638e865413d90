// Built-in Delaunay sweep and mesh linking (see delaunay.hpp).
#include "gridding/delaunay.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "gridding/predicates.hpp"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace zemath {

void prefault(void* block, std::size_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
    constexpr std::uintptr_t kPage = 4096;
    if (block == nullptr || bytes < (std::size_t{1} << 22)) return;
    const std::uintptr_t first =
        (reinterpret_cast<std::uintptr_t>(block) + kPage - 1) & ~(kPage - 1);
    const std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(block) + bytes) & ~(kPage - 1);
    // Contents are kept (pages already mapped stay as they are); a failure leaves the
    // mapping to the writes.
    if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
#else
    (void)block, (void)bytes;
#endif
}

namespace {

inline int nxt(int k) {
    return k == 2 ? 0 : k + 1;
}
inline int prv(int k) {
    return k == 0 ? 2 : k - 1;
}

// The sweep keeps its own compact state: coordinates interleaved (one cache line per
// point), triangles sized for the largest possible mesh, each triangle's corners beside
// its twin half-edges in one 32-byte block (a walk or a flip touches one cache line per
// triangle). A half-edge is coded 4 t + slot; its twin is the same edge seen from the
// other triangle (-1 on the hull), so that a flip finds and relinks its neighbours
// without searching them.
using SweepTriangle = TriangleBlock;

struct Sweep {
    std::unique_ptr<double[]> xy_store;  // not zero-filled: setup writes it whole
    double* xy = nullptr;
    // Triangles in raw storage (not zero-filled: every triangle is written whole when
    // added), which the record may take over once the mesh has been copied out.
    RawBlock tris_store;
    std::size_t tris_bytes = 0;
    SweepTriangle* tris = nullptr;
    int capacity = 0;
    int count = 0;  // triangles so far
    std::vector<int> hull_next, hull_prev;
    std::vector<int> hull_edge;  // per hull node u: half-edge of the edge (u, hull_next[u])
    std::vector<int> stack;
    bool tie = false;     // some in-circle or orientation test was exactly 0 (or NaN)
    long long flips = 0;  // by legalize

    static int code(int t, int s) { return 4 * t + s; }
    int& vert(int t, int s) { return tris[static_cast<std::size_t>(t)].v[s]; }
    int vert(int t, int s) const { return tris[static_cast<std::size_t>(t)].v[s]; }
    int& twin(int e) { return tris[static_cast<std::size_t>(e >> 2)].twin[e & 3]; }
    int twin(int e) const { return tris[static_cast<std::size_t>(e >> 2)].twin[e & 3]; }

    // Orientation of points a, b, c of the interleaved coordinates, as orient2d (positive:
    // they turn counter-clockwise). The walks pass the array held in a local, which the
    // calls between their steps do not make them reload.
    static double orient(const double* xy, int a, int b, int c) {
        return orient2d(xy[2 * a], xy[2 * a + 1], xy[2 * b], xy[2 * b + 1], xy[2 * c],
                        xy[2 * c + 1]);
    }
    double orient(int a, int b, int c) const { return orient(xy, a, b, c); }

    // Steps after which a point-location walk gives up: four visits per triangle the mesh
    // can hold. A walk in a Delaunay triangulation ends; the bound only keeps finite a walk
    // through a mesh that is not (after a tie).
    long long walk_limit() const { return 4LL * capacity + 16; }

    int add_triangle(int a, int b, int c) {
        SweepTriangle& r = tris[static_cast<std::size_t>(count)];
        r.v[0] = a, r.v[1] = b, r.v[2] = c;
        r.twin[0] = r.twin[1] = r.twin[2] = -1;
        return count++;
    }

    void link(int e, int f) {
        SweepTriangle& r = tris[static_cast<std::size_t>(e >> 2)];
        r.twin[e & 3] = f;
        if (f >= 0) tris[static_cast<std::size_t>(f >> 2)].twin[f & 3] = e;
    }

    // Legalises edge slot 0 of triangle t, whose opposite vertex (slot 2) is the new point,
    // and every edge that its flips expose. Every triangle a flip leaves at the new point
    // has that form again, so the stack holds triangles and no corner is looked up.
    void legalize(int t0) {
        // The flip stack grows by one per flip (at most the new point's degree).
        int* pending = stack.data();
        int top = 0;
        pending[top++] = t0;
        while (top > 0) {
            const int t = pending[--top];
            SweepTriangle& rt = tris[static_cast<std::size_t>(t)];
            const int across = rt.twin[0];
            if (across < 0) continue;
            const int n = across >> 2, k = across & 3;
            const int a = rt.v[0], b = rt.v[1], c = rt.v[2];
            const int d = tris[static_cast<std::size_t>(n)].v[prv(k)];
            const double in = incircle(xy[2 * a], xy[2 * a + 1], xy[2 * b], xy[2 * b + 1],
                                       xy[2 * c], xy[2 * c + 1], xy[2 * d], xy[2 * d + 1]);
            // Flip only on a definite 'inside' (a NaN from overflowing input never flips).
            if (!(in > 0.0)) {
                if (!(in < 0.0)) tie = true;
                continue;
            }
            flip(t, 0, n, k);
            ++flips;
            if (top + 2 > static_cast<int>(stack.size())) {
                stack.resize(2 * stack.size());
                pending = stack.data();
            }
            pending[top++] = t;  // (a,d), opposite c
            pending[top++] = n;  // (d,b), opposite c
        }
    }

    // Starts loading the triangle of half-edge e (if any), which a test reads soon: the
    // triangles across a new point's edges lie anywhere in the array.
    void prefetch(int e) const { __builtin_prefetch(tris + (e < 0 ? 0 : e >> 2)); }

    // Points half-edge f (if any) back at e.
    void point_back(int f, int e) {
        if (f >= 0) tris[static_cast<std::size_t>(f >> 2)].twin[f & 3] = e;
    }

    // Flips the edge in slot j of t (= slot k of n): t = (a,b,c), n = (b,a,d) become
    // t = (a,d,c), n = (d,b,c), the quadrilateral's outer sides in slot 0 and the corner
    // c, opposite them, in slot 2 (the form legalize reads).
    void flip(int t, int j, int n, int k) {
        SweepTriangle &rt = tris[static_cast<std::size_t>(t)],
                      &rn = tris[static_cast<std::size_t>(n)];
        const int a = rt.v[j], b = rt.v[nxt(j)], c = rt.v[prv(j)];
        const int d = rn.v[prv(k)];
        const int x1 = rn.twin[nxt(k)];  // across (a,d)
        const int x2 = rn.twin[prv(k)];  // across (d,b)
        const int y1 = rt.twin[nxt(j)];  // across (b,c)
        const int y2 = rt.twin[prv(j)];  // across (c,a)
        prefetch(x1);                    // tested after (d,b)'s test and flips
        rt.v[0] = a, rt.v[1] = d, rt.v[2] = c;
        rn.v[0] = d, rn.v[1] = b, rn.v[2] = c;
        rt.twin[0] = x1, rt.twin[1] = code(n, 2), rt.twin[2] = y2;
        rn.twin[0] = x2, rn.twin[1] = y1, rn.twin[2] = code(t, 1);
        point_back(x1, code(t, 0));
        point_back(y2, code(t, 2));
        point_back(x2, code(n, 0));
        point_back(y1, code(n, 1));
        if (x1 < 0) hull_edge[a] = code(t, 0);
        if (y2 < 0) hull_edge[c] = code(t, 2);
        if (x2 < 0) hull_edge[d] = code(n, 0);
        if (y1 < 0) hull_edge[b] = code(n, 1);
    }

    // Flips edges of the current triangles until every interior edge is strictly Delaunay
    // (Lawson's flip algorithm: each flip lowers the lifted surface, so it ends). False on
    // an exact tie (or NaN), or when more than budget flips are needed.
    bool flip_to_delaunay(long long budget) {
        auto in_circle = [&](int e, int f) {
            const int a = vert(e >> 2, e & 3), b = vert(e >> 2, nxt(e & 3));
            const int c = vert(e >> 2, prv(e & 3)), d = vert(f >> 2, prv(f & 3));
            return incircle(xy[2 * a], xy[2 * a + 1], xy[2 * b], xy[2 * b + 1], xy[2 * c],
                            xy[2 * c + 1], xy[2 * d], xy[2 * d + 1]);
        };
        std::vector<int> pending;
        for (int t = 0; t < count; ++t)
            for (int j = 0; j < 3; ++j)
                if (twin(code(t, j)) > code(t, j)) pending.push_back(code(t, j));
        while (!pending.empty()) {
            const int e = pending.back();
            pending.pop_back();
            const int f = twin(e);
            if (f < 0) continue;
            const double in = in_circle(e, f);
            if (!(in != 0.0)) return false;
            if (in < 0.0) continue;
            if (--budget < 0) return false;
            // Flip, then recheck the quadrilateral's four sides.
            const int t = e >> 2, j = e & 3, n = f >> 2, k = f & 3;
            const int x1 = twin(code(n, nxt(k))), x2 = twin(code(n, prv(k)));
            const int y1 = twin(code(t, nxt(j))), y2 = twin(code(t, prv(j)));
            flip(t, j, n, k);
            for (int g : {x1, x2, y1, y2})
                if (g >= 0) pending.push_back(g);
        }
        return true;
    }

    // Splits t = (a, b, c) into (a, b, p), (b, c, p), (c, a, p) (t keeps the first) and
    // legalises their old sides. p lies inside t; room for two more triangles.
    void split(int t, int p) {
        const SweepTriangle& r = tris[static_cast<std::size_t>(t)];
        const int a = r.v[0], b = r.v[1], c = r.v[2];
        const int tab = r.twin[0], tbc = r.twin[1], tca = r.twin[2];
        prefetch(tbc), prefetch(tca);  // tested after (a, b)
        const int t1 = count, t2 = count + 1;
        count += 2;
        // The old sides (slot 0) are tested by the legalisation.
        SweepTriangle& r0 = tris[static_cast<std::size_t>(t)];
        SweepTriangle& r1 = tris[static_cast<std::size_t>(t1)];
        SweepTriangle& r2 = tris[static_cast<std::size_t>(t2)];
        r0.v[2] = p;
        r0.twin[1] = code(t1, 2), r0.twin[2] = code(t2, 1);
        r1.v[0] = b, r1.v[1] = c, r1.v[2] = p;
        r1.twin[0] = tbc, r1.twin[1] = code(t2, 2), r1.twin[2] = code(t, 1);
        r2.v[0] = c, r2.v[1] = a, r2.v[2] = p;
        r2.twin[0] = tca, r2.twin[1] = code(t, 2), r2.twin[2] = code(t1, 1);
        point_back(tab, code(t, 0));
        point_back(tbc, code(t1, 0));
        point_back(tca, code(t2, 0));
        if (tab < 0) hull_edge[a] = code(t, 0);
        if (tbc < 0) hull_edge[b] = code(t1, 0);
        if (tca < 0) hull_edge[c] = code(t2, 0);
        legalize(t);
        legalize(t1);
        legalize(t2);
    }

    // Writes triangle t = (a, b, p) with its sides' twins (slot 0 the outer side (a, b),
    // p in slot 2, the form legalize reads).
    void put(int t, int a, int b, int p, int ab, int bp, int pa) {
        SweepTriangle& r = tris[static_cast<std::size_t>(t)];
        r.v[0] = a, r.v[1] = b, r.v[2] = p;
        r.twin[0] = ab, r.twin[1] = bp, r.twin[2] = pa;
        point_back(ab, code(t, 0));
        if (ab < 0) hull_edge[a] = code(t, 0);
    }

    // Splits the side in slot s of t at p, which lies on it strictly between its ends: t
    // = (a, b, c) and, across (a, b), n = (b, a, d) become (b, c, p), (c, a, p), (a, d, p),
    // (d, b, p); on the hull (no n) t becomes (b, c, p), (c, a, p) and p joins the hull
    // between a and b. The outer sides are legalised. Room for two more triangles.
    void split_side(int t, int s, int p) {
        const SweepTriangle& r = tris[static_cast<std::size_t>(t)];
        const int a = r.v[s], b = r.v[nxt(s)], c = r.v[prv(s)];
        const int tab = r.twin[s], tbc = r.twin[nxt(s)], tca = r.twin[prv(s)];
        const int t2 = count++;
        if (tab < 0) {
            put(t, b, c, p, tbc, code(t2, 2), -1);
            put(t2, c, a, p, tca, -1, code(t, 1));
            hull_next[a] = p, hull_prev[p] = a, hull_next[p] = b, hull_prev[b] = p;
            hull_edge[a] = code(t2, 1), hull_edge[p] = code(t, 2);
            legalize(t);
            legalize(t2);
            return;
        }
        const int n = tab >> 2, k = tab & 3;
        const SweepTriangle& rn = tris[static_cast<std::size_t>(n)];
        const int d = rn.v[prv(k)];
        const int tad = rn.twin[nxt(k)], tdb = rn.twin[prv(k)];
        const int t4 = count++;
        put(t, b, c, p, tbc, code(t2, 2), code(t4, 1));
        put(t2, c, a, p, tca, code(n, 2), code(t, 1));
        put(n, a, d, p, tad, code(t4, 2), code(t2, 1));
        put(t4, d, b, p, tdb, code(t, 2), code(n, 1));
        legalize(t);
        legalize(t2);
        legalize(n);
        legalize(t4);
    }

    // Whether every interior edge is strictly Delaunay (the point across it strictly
    // outside the circle of each of its triangles).
    bool strictly_delaunay() const {
        for (int t = 0; t < count; ++t)
            for (int s = 0; s < 3; ++s) {
                const int f = twin(code(t, s));
                if (f < code(t, s)) continue;  // each interior edge once, hull edges skipped
                const int a = vert(t, s), b = vert(t, nxt(s)), c = vert(t, prv(s));
                const int d = vert(f >> 2, prv(f & 3));
                if (!(incircle(xy[2 * a], xy[2 * a + 1], xy[2 * b], xy[2 * b + 1], xy[2 * c],
                               xy[2 * c + 1], xy[2 * d], xy[2 * d + 1]) < 0.0))
                    return false;
            }
        return true;
    }

    bool visible(int a, int b, int p) {
        const double o = orient(a, b, p);
        tie = tie || !(o != 0.0);
        return o < 0.0;
    }

    // Inserts point p, outside the hull; q is a hull node that p sees.
    bool insert(int p, int q) {
        std::vector<int>& next = hull_next;
        const int bound = static_cast<int>(next.size());
        int s = q;
        // Back up while the edge ending at s is visible (bounded by the hull size).
        for (int guard = 0; visible(hull_prev[s], s, p); ++guard) {
            s = hull_prev[s];
            if (s == q || guard > bound) return false;
        }
        if (!visible(s, next[s], p)) {
            // q sees p only through a vertex: search the whole hull once.
            int e = next[q];
            while (e != q && !visible(e, next[e], p)) e = next[e];
            if (e == q) return false;
            s = e;
            for (int guard = 0; visible(hull_prev[s], s, p); ++guard) {
                s = hull_prev[s];
                if (guard > bound) return false;
            }
        }
        int e = s, first = -1, previous = -1;
        do {
            const int f = next[e];
            if (count >= capacity) return false;  // cannot happen
            const int t = add_triangle(f, e, p);  // (f, e) is the old hull edge (e, f) reversed
            link(code(t, 0), hull_edge[e]);
            if (previous >= 0) {
                link(code(previous, 2), code(t, 1));  // (p, e) of the previous, (e, p) of t
            } else {
                first = t;
            }
            if (e != s) {
                hull_edge[e] = -1;
                next[e] = -1;
            }
            previous = t;
            e = f;
        } while (visible(e, next[e], p) && e != s);
        const int t_end = e;
        next[s] = p;
        hull_prev[p] = s;
        next[p] = t_end;
        hull_prev[t_end] = p;
        hull_edge[s] = code(first, 1);
        hull_edge[p] = code(previous, 2);
        for (int t = first; t <= previous; ++t) legalize(t);
        return true;
    }

    // Point i of the sweep is point order[i] of x and y (i itself without an order). The
    // hull arrays cover points 0 .. hull_points - 1 (all of them for the sweep; the fast
    // build's hull keeps its first points, the others being inside it).
    void setup(std::span<const double> x, std::span<const double> y, const int* order,
               std::size_t hull_points) {
        const std::size_t size = x.size();
        xy_store.reset(new double[2 * size]);
        xy = xy_store.get();
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t k = order != nullptr ? static_cast<std::size_t>(order[i]) : i;
            xy[2 * i] = x[k], xy[2 * i + 1] = y[k];
        }
        // At most 2 n - 5 triangles in a triangulation of n points.
        tris_bytes = 2 * size * sizeof(SweepTriangle) + alignof(SweepTriangle);
        tris_store.reset(raw_alloc(tris_bytes));
        if (!tris_store) throw std::bad_alloc();
        prefault(tris_store.get(), tris_bytes);
        void* aligned = tris_store.get();
        std::size_t room = tris_bytes;
        tris = static_cast<SweepTriangle*>(
            std::align(alignof(SweepTriangle), 2 * size * sizeof(SweepTriangle), aligned, room));
        capacity = static_cast<int>(2 * size);
        hull_next.assign(hull_points, -1);
        hull_prev.assign(hull_points, -1);
        hull_edge.assign(hull_points, -1);
        stack.resize(64);
    }

    // The mesh in the sweep's numbering (half-edges 3 t + slot there).
    void take_mesh(Mesh& mesh, bool neighbours) {
        mesh.blocks.reset();
        mesh.block_count = 0;
        const std::size_t slots = 3 * static_cast<std::size_t>(count);
        mesh.v.resize(slots);
        mesh.twin.resize(slots);
        mesh.nb.resize(neighbours ? slots : 0);
        for (int t = 0; t < count; ++t)
            for (int s = 0; s < 3; ++s) {
                const int f = tris[static_cast<std::size_t>(t)].twin[s];
                mesh.v[3 * t + s] = tris[static_cast<std::size_t>(t)].v[s];
                mesh.twin[3 * t + s] = f < 0 ? -1 : 3 * (f >> 2) + (f & 3);
                if (neighbours) mesh.nb[3 * t + s] = f < 0 ? -1 : f >> 2;
            }
        mesh.hull_next = std::move(hull_next);
    }
};

// Index of the cell (qx, qy) of a 2^levels by 2^levels grid along the Hilbert curve
// (2 levels bits; levels at most 15).
// Level by level from the top: the quadrant's digit, then the quadrant's reflection
// (a swap of the axes, a complement of both) applied to the lower bits. The reflections
// commute, so two flags carry them: a four-state machine, run two levels per table
// look-up (no branches: the quadrants are random).
struct HilbertStep {
    std::uint32_t digit, state;  // state: swap | complement << 1
};
constexpr HilbertStep hilbert_step(std::uint32_t state, std::uint32_t x, std::uint32_t y) {
    const std::uint32_t swap = state & 1u, complement = state >> 1;
    const std::uint32_t bx = x ^ complement, by = y ^ complement;
    const std::uint32_t rx = bx ^ (swap & (bx ^ by)), ry = by ^ (swap & (bx ^ by));
    const std::uint32_t lower = ry ^ 1u;  // quadrants with ry = 0 reflect
    return {(3u * rx) ^ ry, (swap ^ lower) | (complement ^ (lower & rx)) << 1};
}
// Entry [state << 4 | x1 x0 << 2 | y1 y0] (two bits of each coordinate, the upper level
// first): both digits in the low 4 bits, the state after them above.
struct HilbertTable {
    std::uint8_t two[64] = {};
    std::uint8_t one[16] = {};  // [state << 2 | x << 1 | y]: the digit, the state above
    constexpr HilbertTable() {
        for (std::uint32_t state = 0; state < 4; ++state)
            for (std::uint32_t bits = 0; bits < 16; ++bits) {
                const HilbertStep upper = hilbert_step(state, bits >> 3, (bits >> 1) & 1u);
                const HilbertStep lower = hilbert_step(upper.state, (bits >> 2) & 1u, bits & 1u);
                two[state << 4 | bits] =
                    static_cast<std::uint8_t>(upper.digit << 2 | lower.digit | lower.state << 4);
            }
        for (std::uint32_t state = 0; state < 4; ++state)
            for (std::uint32_t bits = 0; bits < 4; ++bits) {
                const HilbertStep step = hilbert_step(state, bits >> 1, bits & 1u);
                one[state << 2 | bits] = static_cast<std::uint8_t>(step.digit | step.state << 2);
            }
    }
};
constexpr HilbertTable kHilbert{};

std::uint32_t hilbert_index(std::uint32_t qx, std::uint32_t qy, int levels) {
    std::uint32_t d = 0, state = 0;
    int level = levels;
    if (level & 1) {
        --level;
        const std::uint32_t e = kHilbert.one[((qx >> level) & 1u) << 1 | ((qy >> level) & 1u)];
        d = e & 3u, state = e >> 2;
    }
    while (level > 0) {
        level -= 2;
        const std::uint32_t e =
            kHilbert.two[state << 4 | ((qx >> level) & 3u) << 2 | ((qy >> level) & 3u)];
        d = d << 4 | (e & 15u), state = e >> 4;
    }
    return d;
}

// Round of point i in the biased randomised insertion order: a fixed hash of the index
// (no generator state, so a build is reproducible), round k + 1 taking about 7/8 of the
// points left after rounds 0..k. 0 .. kRounds - 1, the last round the largest.
constexpr int kRounds = 8;
int insertion_round(std::uint64_t i) {
    std::uint64_t z = i + 0x9e3779b97f4a7c15ULL;  // splitmix64 finaliser
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    z ^= z >> 31;
    int level = 0;  // leading groups of three zero bits: probability 8^-level
    while (level < kRounds - 1 && (z >> (61 - 3 * level)) == 0) ++level;
    return kRounds - 1 - level;
}

// Stable LSD radix sort of keys on bits 31 .. 31 + bits - 1 (bits at most 33) in the
// fewest digits of at most 12 bits; the low 31 bits carry the point index, already
// ascending, so the order is (round, curve, index).
// The m keys are sorted between keys and other (m each); returns the one holding them.
const std::uint64_t* sort_keys(std::uint64_t* keys, std::uint64_t* other, std::size_t m, int bits) {
    const int passes = (bits + 11) / 12, width = (bits + passes - 1) / passes;
    const std::uint64_t mask = (std::uint64_t{1} << width) - 1;
    std::vector<std::size_t> count((std::size_t{1} << width) + 1);
    for (int shift = 31; shift < 31 + bits; shift += width) {
        std::fill(count.begin(), count.end(), std::size_t{0});
        for (std::size_t i = 0; i < m; ++i) ++count[((keys[i] >> shift) & mask) + 1];
        if (count[((keys[0] >> shift) & mask) + 1] == m) continue;  // one digit
        for (std::size_t d = 0; d + 1 < count.size(); ++d) count[d + 1] += count[d];
        for (std::size_t i = 0; i < m; ++i) other[count[(keys[i] >> shift) & mask]++] = keys[i];
        std::swap(keys, other);
    }
    return keys;
}

// Appends to global the points i with skip[i] == 0 (every point when skip is null),
// in rounds of random samples, each round along the Hilbert curve.
void append_round_order(std::span<const double> x, std::span<const double> y,
                        const unsigned char* skip, std::vector<int>& global) {
    const int n = static_cast<int>(x.size());
    const auto [xlo, xhi] = std::minmax_element(x.begin(), x.end());
    const auto [ylo, yhi] = std::minmax_element(y.begin(), y.end());
    // About one cell per point (at most 2^15 by 2^15 cells): points sharing a cell
    // follow each other in index order, a walk of a step or two.
    int levels = 1;
    while (levels < 15 && (std::int64_t{1} << (2 * levels)) < n) ++levels;
    const double top = static_cast<double>((1 << levels) - 1);
    const double sx = *xhi > *xlo ? top / (*xhi - *xlo) : 0.0;
    const double sy = *yhi > *ylo ? top / (*yhi - *ylo) : 0.0;
    // Rounds of random samples, each along the Hilbert curve: consecutive points are
    // neighbours (short walks, nearby triangles in memory), and every round refines
    // an already triangulated sample of the whole set, so a new point meets small
    // triangles only (few flips; a plain curve order leaves long edges across the
    // part not yet visited).
    std::vector<std::uint64_t> keys;
    keys.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        if (skip != nullptr && skip[i] != 0) continue;
        // NaN from an overflowed range (infinite difference times 0) goes to cell 0.
        double fx = (x[i] - *xlo) * sx, fy = (y[i] - *ylo) * sy;
        fx = fx >= 0.0 ? std::min(fx, top) : 0.0;
        fy = fy >= 0.0 ? std::min(fy, top) : 0.0;
        const std::uint64_t d =
            hilbert_index(static_cast<std::uint32_t>(fx), static_cast<std::uint32_t>(fy), levels);
        const std::uint64_t round = static_cast<std::uint64_t>(insertion_round(i));
        keys.push_back((round << (2 * levels) | d) << 31 | static_cast<std::uint32_t>(i));
    }
    const std::size_t m = keys.size();
    // Not zero-filled: the sort writes it whole before reading it.
    const std::unique_ptr<std::uint64_t[]> other(new std::uint64_t[m > 0 ? m : 1]);
    const std::uint64_t* const sorted =
        m > 0 ? sort_keys(keys.data(), other.get(), m, 3 + 2 * levels) : keys.data();
    for (std::size_t q = 0; q < m; ++q) {
        const std::uint64_t key = sorted[q];
        global.push_back(static_cast<int>(key & 0x7fffffffu));
    }
}

// Moves the sweep's mesh, numbered as global (point k of the sweep is point global[k]),
// into mesh.
void copy_out(Sweep& sw, const std::vector<int>& global, Mesh& mesh, bool neighbours) {
    const int n = static_cast<int>(global.size());
    // Back to the caller's numbering, the triangles ordered by their lowest node (a
    // counting sort) and copied in that order: the record's walks then read neighbouring
    // triangles and nodes close together in memory (a scatter: independent writes, which
    // overlap; permuting in place measured slower, its swaps wait on each other). The copy
    // pays for itself: the record's walk over the build's own array, in insertion order,
    // measured 5 to 15 % slower in all at 1e6 points, for 23 MB (9 %) less peak memory.
    const int tc = sw.count;
    std::unique_ptr<TriangleBlock[]> blocks(new TriangleBlock[static_cast<std::size_t>(tc)]);
    prefault(blocks.get(), sizeof(TriangleBlock) * static_cast<std::size_t>(tc));
    {
        // Not zero-filled: first is cleared and slot written whole.
        const std::unique_ptr<int[]> first(new int[static_cast<std::size_t>(n) + 1]),
            slot(new int[static_cast<std::size_t>(tc)]);
        std::fill(first.get(), first.get() + n + 1, 0);
        for (int k = 0; k < tc; ++k) {
            int* const corners = sw.tris[static_cast<std::size_t>(k)].v;
            for (int s = 0; s < 3; ++s) corners[s] = global[corners[s]];
            slot[k] = std::min({corners[0], corners[1], corners[2]});
            ++first[slot[k] + 1];
        }
        for (int i = 0; i < n; ++i) first[i + 1] += first[i];
        for (int k = 0; k < tc; ++k) slot[k] = first[slot[k]]++;
        for (int k = 0; k < tc; ++k) {
            const SweepTriangle& r = sw.tris[static_cast<std::size_t>(k)];
            TriangleBlock& to = blocks[static_cast<std::size_t>(slot[k])];
            for (int s = 0; s < 3; ++s) {
                const int f = r.twin[s];
                to.v[s] = r.v[s];
                to.twin[s] = f < 0 ? -1 : 4 * slot[f >> 2] + (f & 3);
            }
            to.aux = 0;
        }
    }
    if (!neighbours) {
        mesh.blocks = std::move(blocks);
        mesh.block_count = tc;
        mesh.v.clear(), mesh.nb.clear(), mesh.twin.clear();
        // The build's triangles are copied out: the record may take their storage.
        mesh.spare = std::move(sw.tris_store);
        mesh.spare_bytes = sw.tris_bytes;
    } else {
        mesh.blocks.reset();
        mesh.block_count = 0;
        mesh.v.resize(3 * static_cast<std::size_t>(tc));
        mesh.nb.resize(3 * static_cast<std::size_t>(tc));
        mesh.twin.resize(3 * static_cast<std::size_t>(tc));
        for (int k = 0; k < tc; ++k) {
            const TriangleBlock& r = blocks[static_cast<std::size_t>(k)];
            for (int s = 0; s < 3; ++s) {
                const int f = r.twin[s];
                mesh.v[3 * k + s] = r.v[s];
                mesh.nb[3 * k + s] = f < 0 ? -1 : f >> 2;
                mesh.twin[3 * k + s] = f < 0 ? -1 : 3 * (f >> 2) + (f & 3);
            }
        }
    }
    const std::vector<int>& hull_local = sw.hull_next;
    mesh.hull_next.assign(static_cast<std::size_t>(n), -1);
    for (std::size_t k = 0; k < hull_local.size(); ++k)
        if (hull_local[k] >= 0) mesh.hull_next[global[k]] = global[hull_local[k]];
}

// Fast build for points in general position: the hull (monotone chain over the x
// order) is split into a fan and flipped to its Delaunay triangulation, the other points
// are inserted in Hilbert-curve order (each located by a walk from the previous one, so
// consecutive steps touch nearby triangles in memory) and legalised by Lawson flips.
// Built (0) only when no exact tie was met: then every step kept the triangulation
// strictly Delaunay (delaunay.hpp), the Delaunay triangulation is unique, and equal to
// the one the x-order sweep gives. Otherwise (cocircular or collinear points, a point on
// an edge, a walk that does not end, a hull needing too many flips) 1, and the caller
// runs the sweep, which decides ties by its insertion order; 2 when the hull has too many
// nodes for the fan (which may need about h^2 / 2 flips: points in convex position).
enum HilbertResult { kHilbertBuilt = 0, kHilbertNotGeneral = 1, kHilbertLargeHull = 2 };
int build_hilbert(std::span<const double> x, std::span<const double> y, Mesh& mesh,
                  bool neighbours) {
    const int n = static_cast<int>(x.size());
    if (n < 4) return kHilbertNotGeneral;
    auto turn = [&](int a, int b, int c) { return orient2d(x[a], y[a], x[b], y[b], x[c], y[c]); };
    // Convex hull, counter-clockwise from node 0; any collinear triple met gives up.
    std::vector<int> hull;
    hull.reserve(64);
    for (int pass = 0; pass < 2; ++pass) {
        const std::size_t floor = hull.size();
        for (int k = 0; k < n; ++k) {
            const int i = pass == 0 ? k : n - 1 - k;
            while (hull.size() >= floor + 2) {
                const double o = turn(hull[hull.size() - 2], hull.back(), i);
                if (!(o != 0.0)) return kHilbertNotGeneral;
                if (o > 0.0) break;
                hull.pop_back();
            }
            hull.push_back(i);
        }
        hull.pop_back();  // the chain's last node starts the other chain
    }
    const int h = static_cast<int>(hull.size());
    if (h < 3) return kHilbertNotGeneral;
    // Hulls of ordinary input have O(n^(1/3)) nodes or fewer; above 4 sqrt(n) the fan's
    // flips could pass 8 n.
    if (static_cast<double>(h) * h > 16.0 * n) return kHilbertLargeHull;
    // Local numbering: hull nodes in order, then the rest along the Hilbert curve.
    std::vector<unsigned char> on_hull(static_cast<std::size_t>(n), 0);
    std::vector<int> global;
    global.reserve(static_cast<std::size_t>(n));
    for (int k = 0; k < h; ++k) on_hull[hull[k]] = 1, global.push_back(hull[k]);
    append_round_order(x, y, on_hull.data(), global);
    Sweep sw;
    sw.setup(x, y, global.data(), static_cast<std::size_t>(h));
    // Fan (0, k, k+1) over the hull.
    for (int k = 1; k + 1 < h; ++k) {
        const int t = sw.add_triangle(0, k, k + 1);
        if (k > 1) sw.link(Sweep::code(t - 1, 2), Sweep::code(t, 0));
        sw.hull_edge[k] = Sweep::code(t, 1);
        sw.hull_next[k] = k + 1;
    }
    sw.hull_edge[0] = Sweep::code(0, 0);
    sw.hull_next[0] = 1;
    sw.hull_edge[h - 1] = Sweep::code(h - 3, 2);
    sw.hull_next[h - 1] = 0;
    // The fan made Delaunay: each insertion below then keeps the triangulation strictly
    // Delaunay (see build_hilbert's comment). The flips are bounded as the sweep's are.
    if (!sw.flip_to_delaunay(64LL * n + 64)) return kHilbertNotGeneral;
    const double* const xy = sw.xy;
    int t = 0;
    const long long walk_limit = sw.walk_limit();
    for (int p = h; p < n; ++p) {
        // Walk towards p; the edge just crossed is not tested again.
        int came = -1;
        long long steps = 0;
        for (;;) {
            const SweepTriangle& r = sw.tris[static_cast<std::size_t>(t)];
            int exit_slot = -1;
            for (int s = 0; s < 3; ++s) {
                if (Sweep::code(t, s) == came) continue;
                const double o = Sweep::orient(xy, r.v[s], r.v[nxt(s)], p);
                if (!(o != 0.0))
                    return kHilbertNotGeneral;  // on an edge line (or NaN): not general
                if (o < 0.0) {
                    exit_slot = s;
                    break;
                }
            }
            if (exit_slot < 0) break;
            came = r.twin[exit_slot];
            if (came < 0 || ++steps > walk_limit) return kHilbertNotGeneral;
            t = came >> 2;
        }
        if (sw.count + 2 > sw.capacity) return kHilbertNotGeneral;  // cannot happen
        sw.split(t, p);
        if (sw.tie) return kHilbertNotGeneral;
    }
    copy_out(sw, global, mesh, neighbours);
    return kHilbertBuilt;
}

// Build in rounds of random samples, each round along the Hilbert curve, for input on
// which the x-order sweep needs too many flips (points in convex position met along the
// curve: each new point's edges sweep across the whole fan). Any input: every point is
// located by a walk from the previous one and split into its triangle (inside), its side
// (on a side), or joined to the hull edges it sees (outside); flips are as the sweep's,
// only on a definite 'inside', so ties are decided by this order. Expected O(1) flips
// per point whatever the input, the order being random (the round of a point a fixed
// hash of its index). Returns 0, 3 (all collinear) or 2; unique tells whether every
// interior edge is strictly Delaunay, which makes the triangulation the only Delaunay
// one (the lifted surface strictly convex across every edge), so the one the sweep gives.
int build_rounds(std::span<const double> x, std::span<const double> y, Mesh& mesh, bool neighbours,
                 bool& unique) {
    const int n = static_cast<int>(x.size());
    std::vector<int> global;
    global.reserve(static_cast<std::size_t>(n));
    append_round_order(x, y, nullptr, global);
    // The first point off the line of the first two goes third.
    auto turn = [&](int a, int b, int c) { return orient2d(x[a], y[a], x[b], y[b], x[c], y[c]); };
    int third = 2;
    while (third < n && turn(global[0], global[1], global[third]) == 0.0) ++third;
    if (third == n) return 3;
    std::rotate(global.begin() + 2, global.begin() + third, global.begin() + third + 1);
    Sweep sw;
    sw.setup(x, y, global.data(), static_cast<std::size_t>(n));
    {
        const bool left = sw.orient(0, 1, 2) > 0.0;
        const int t = left ? sw.add_triangle(0, 1, 2) : sw.add_triangle(0, 2, 1);
        for (int s = 0; s < 3; ++s) {
            const int u = sw.vert(t, s), w = sw.vert(t, nxt(s));
            sw.hull_next[u] = w, sw.hull_prev[w] = u, sw.hull_edge[u] = Sweep::code(t, s);
        }
    }
    const double* const xy = sw.xy;
    int t = 0;
    const long long walk_limit = sw.walk_limit();
    for (int p = 3; p < n; ++p) {
        // Walk towards p; the side just crossed is not tested again. It ends in a triangle
        // holding p inside (on = -1) or on its side in slot on, or leaving the hull
        // through the side in slot out.
        int came = -1, on = -1, out = -1;
        long long steps = 0;
        for (;;) {
            const SweepTriangle& r = sw.tris[static_cast<std::size_t>(t)];
            int exit_slot = -1, zeros = 0;
            on = -1;
            for (int s = 0; s < 3; ++s) {
                if (Sweep::code(t, s) == came) continue;
                const double o = Sweep::orient(xy, r.v[s], r.v[nxt(s)], p);
                if (o < 0.0) {
                    exit_slot = s;
                    break;
                }
                if (!(o > 0.0)) ++zeros, on = s;
            }
            if (exit_slot < 0) {
                if (zeros > 1) return 2;  // p is a corner: the points are not distinct
                break;
            }
            came = r.twin[exit_slot];
            if (came < 0) {
                out = exit_slot;
                break;
            }
            // A walk in a Delaunay triangulation ends; the bound only keeps it finite.
            if (++steps > walk_limit) return 2;
            t = came >> 2;
        }
        if (sw.count + 2 > sw.capacity) return 2;  // cannot happen
        if (out >= 0) {
            if (!sw.insert(p, sw.vert(t, out))) return 2;
            t = sw.count - 1;
        } else if (on >= 0) {
            sw.split_side(t, on, p);
        } else {
            sw.split(t, p);
        }
    }
    unique = sw.strictly_delaunay();
    copy_out(sw, global, mesh, neighbours);
    return 0;
}

// Flips per point and per binary order of magnitude of n after which the sweep gives way
// to the rounds build, and the margin added to the bound: ordinary input stays far below
// (the sweep makes about 14 flips per point on uniform random points; an exact grid costs
// half a column's height per point, so tall grids give way, their ties decided otherwise but
// 20 to 40 times sooner at 1e6 nodes).
constexpr double kFlipsPerLevel = 8.0;
constexpr double kFlipMargin = 4096.0;

// Sweep in the given (lexicographic) order; decides cocircular ties by that order.
// Returns 0, 3 (all collinear), 2, or 4 as soon as its flips pass kFlipsPerLevel log2 n
// per point inserted so far (plus a margin), mesh left as it was.
int build_x_order(std::span<const double> x, std::span<const double> y, Mesh& mesh,
                  bool neighbours) {
    const int n = static_cast<int>(x.size());
    int k = 2;
    while (k < n && orient2d(x[0], y[0], x[1], y[1], x[k], y[k]) == 0.0) ++k;
    if (k == n) return 3;
    Sweep sweep;
    sweep.setup(x, y, nullptr, x.size());
    // Fan from the collinear run 0..k-1 (ordered along its line) to point k. The fan is
    // Delaunay: each circle meets the line only at its own two run points.
    const bool left = orient2d(x[0], y[0], x[1], y[1], x[k], y[k]) > 0.0;
    for (int i = 0; i + 1 < k; ++i) {
        const int t = left ? sweep.add_triangle(i, i + 1, k) : sweep.add_triangle(i + 1, i, k);
        if (i > 0) {
            // Shared edge (i, k): slot 2 of (i, i+1, k) and slot 1 of the previous
            // (i-1, i, k); mirrored for the clockwise-ordered fan.
            sweep.link(Sweep::code(t, left ? 2 : 1), Sweep::code(t - 1, left ? 1 : 2));
        }
    }
    // Hull from the fan's free edges.
    for (int t = 0; t < sweep.count; ++t)
        for (int s = 0; s < 3; ++s)
            if (sweep.twin(Sweep::code(t, s)) < 0) {
                const int u = sweep.vert(t, s), w = sweep.vert(t, nxt(s));
                sweep.hull_next[u] = w;
                sweep.hull_prev[w] = u;
                sweep.hull_edge[u] = Sweep::code(t, s);
            }
    // Flips beyond O(log n) per point on average: points in convex position, met along
    // their curve, make every new point's edges sweep the fan of the earlier ones (O(n^2)
    // flips in all); the caller then turns to the rounds build.
    const double flips_per_point = kFlipsPerLevel * std::log2(static_cast<double>(n));
    const double flip_margin = kFlipMargin;
    int last = k;
    for (int p = k + 1; p < n; ++p) {
        if (!sweep.insert(p, last)) return 2;
        if (sweep.flips > flip_margin + flips_per_point * p) return 4;
        last = p;
    }
    sweep.take_mesh(mesh, neighbours);
    return 0;
}

}  // namespace

int build_sweep(std::span<const double> x, std::span<const double> y, Mesh& mesh, bool neighbours) {
    mesh.v.clear();
    mesh.nb.clear();
    mesh.blocks.reset();
    mesh.block_count = 0;
    mesh.spare.reset();
    mesh.spare_bytes = 0;
    if (x.size() < 3) return 1;
    const int fast = build_hilbert(x, y, mesh, neighbours);
    if (fast == kHilbertBuilt) return 0;
    // A large hull: the rounds build, taken when the triangulation is unique (then it is
    // the sweep's), else kept aside in case the sweep gives way to it.
    Mesh rounds;
    bool rounds_built = false, unique = false;
    if (fast == kHilbertLargeHull) {
        const int status = build_rounds(x, y, rounds, neighbours, unique);
        if (status != 0) return status;
        if (unique) {
            mesh = std::move(rounds);
            return 0;
        }
        rounds_built = true;
    }
    const int status = build_x_order(x, y, mesh, neighbours);
    if (status != 4) return status;
    if (!rounds_built) {
        const int rounds_status = build_rounds(x, y, rounds, neighbours, unique);
        if (rounds_status != 0) return rounds_status;
    }
    mesh = std::move(rounds);
    return 0;
}

bool link_mesh(int nodes, Mesh& mesh) {
    const int t_count = mesh.triangles();
    mesh.nb.assign(3 * static_cast<std::size_t>(t_count), -1);
    mesh.twin.assign(3 * static_cast<std::size_t>(t_count), -1);
    mesh.hull_next.assign(static_cast<std::size_t>(nodes), -1);
    // Directed edges keyed by (from, to); the twin of (u, w) is (w, u).
    std::vector<std::int64_t> keys(3 * static_cast<std::size_t>(t_count));
    std::vector<int> order(keys.size());
    for (int t = 0; t < t_count; ++t)
        for (int s = 0; s < 3; ++s) {
            const std::int64_t u = mesh.v[3 * t + s], w = mesh.v[3 * t + nxt(s)];
            keys[3 * t + s] = u * nodes + w;
        }
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
    std::sort(order.begin(), order.end(), [&](int a, int b) { return keys[a] < keys[b]; });
    for (std::size_t i = 1; i < order.size(); ++i)
        if (keys[order[i]] == keys[order[i - 1]]) return false;  // a directed edge twice
    int hull_edges = 0;
    for (int t = 0; t < t_count; ++t)
        for (int s = 0; s < 3; ++s) {
            const std::int64_t u = mesh.v[3 * t + s], w = mesh.v[3 * t + nxt(s)];
            const std::int64_t twin = w * nodes + u;
            const auto it =
                std::lower_bound(order.begin(), order.end(), twin,
                                 [&](int a, std::int64_t key) { return keys[a] < key; });
            if (it != order.end() && keys[*it] == twin) {
                mesh.nb[3 * t + s] = *it / 3;
                mesh.twin[3 * t + s] = *it;
            } else {
                if (mesh.hull_next[u] >= 0) return false;  // two hull edges leave u
                mesh.hull_next[u] = static_cast<int>(w);
                ++hull_edges;
            }
        }
    // One hull loop through node 0, and Euler's relation T = 2 n - h - 2 (all nodes used).
    if (mesh.hull_next[0] < 0) return false;
    int walked = 0;
    int u = 0;
    do {
        u = mesh.hull_next[u];
        if (u < 0 || ++walked > hull_edges) return false;
    } while (u != 0);
    return walked == hull_edges && t_count == 2 * nodes - hull_edges - 2;
}

int locate(const Mesh& mesh, std::span<const double> x, std::span<const double> y, double px,
           double py, int& start) {
    const int t_count = mesh.triangles();
    if (t_count == 0) return -1;
    int t = (start >= 0 && start < t_count) ? start : 0;
    // A walk that always leaves by the first edge seeing the point can cycle only in
    // degenerate cases; the visit bound keeps it finite, then a scan decides.
    for (int steps = 0; steps <= 4 * t_count + 8; ++steps) {
        int exit_slot = -1;
        for (int s = 0; s < 3; ++s) {
            const int a = mesh.v[3 * t + s], b = mesh.v[3 * t + nxt(s)];
            if (orient2d(x[a], y[a], x[b], y[b], px, py) < 0.0) {
                exit_slot = s;
                break;
            }
        }
        if (exit_slot < 0) {
            start = t;
            return t;
        }
        const int n = mesh.nb[3 * t + exit_slot];
        if (n < 0) {
            start = t;
            return -1;
        }
        t = n;
    }
    for (t = 0; t < t_count; ++t) {
        bool inside = true;
        for (int s = 0; s < 3 && inside; ++s) {
            const int a = mesh.v[3 * t + s], b = mesh.v[3 * t + nxt(s)];
            inside = orient2d(x[a], y[a], x[b], y[b], px, py) >= 0.0;
        }
        if (inside) {
            start = t;
            return t;
        }
    }
    return -1;
}

}  // namespace zemath
