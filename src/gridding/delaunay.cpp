// Built-in Delaunay sweep and mesh linking (see delaunay.hpp).
#include "gridding/delaunay.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "gridding/predicates.hpp"

namespace zemath {
namespace {

inline int nxt(int k) {
    return k == 2 ? 0 : k + 1;
}
inline int prv(int k) {
    return k == 0 ? 2 : k - 1;
}

struct Sweep {
    std::span<const double> x, y;
    Mesh& m;
    std::vector<int> hull_prev;
    std::vector<int> hull_edge;  // per hull node u: 3 t + slot of the edge (u, hull_next[u])
    std::vector<int> stack;

    double orient(int a, int b, int c) const {
        return orient2d(x[a], y[a], x[b], y[b], x[c], y[c]);
    }

    int add_triangle(int a, int b, int c) {
        const int t = m.triangles();
        m.v.insert(m.v.end(), {a, b, c});
        m.nb.insert(m.nb.end(), {-1, -1, -1});
        return t;
    }

    void replace_neighbor(int t, int old_t, int new_t) {
        if (t < 0) return;
        for (int k = 0; k < 3; ++k)
            if (m.nb[3 * t + k] == old_t) {
                m.nb[3 * t + k] = new_t;
                return;
            }
    }

    // Legalises edge slot s of triangle t, whose opposite vertex is the new point, and
    // every edge that its flips expose.
    void legalize(int t0, int s0) {
        stack.clear();
        stack.push_back(3 * t0 + s0);
        while (!stack.empty()) {
            const int code = stack.back();
            stack.pop_back();
            const int t = code / 3, j = code % 3;
            const int n = m.nb[3 * t + j];
            if (n < 0) continue;
            const int a = m.v[3 * t + j], b = m.v[3 * t + nxt(j)], c = m.v[3 * t + prv(j)];
            int k = 0;
            while (k < 3 && m.nb[3 * n + k] != t) ++k;
            if (k == 3) continue;  // cannot happen in a consistent mesh
            const int d = m.v[3 * n + prv(k)];
            // Flip only on a definite 'inside' (a NaN from overflowing input never flips).
            if (!(incircle(x[a], y[a], x[b], y[b], x[c], y[c], x[d], y[d]) > 0.0)) continue;
            // Flip (a,b): t = (a,b,c), n = (b,a,d) become t = (c,a,d), n = (d,b,c).
            const int x1 = m.nb[3 * n + nxt(k)];  // across (a,d)
            const int x2 = m.nb[3 * n + prv(k)];  // across (d,b)
            const int y1 = m.nb[3 * t + nxt(j)];  // across (b,c)
            const int y2 = m.nb[3 * t + prv(j)];  // across (c,a)
            m.v[3 * t] = c, m.v[3 * t + 1] = a, m.v[3 * t + 2] = d;
            m.nb[3 * t] = y2, m.nb[3 * t + 1] = x1, m.nb[3 * t + 2] = n;
            m.v[3 * n] = d, m.v[3 * n + 1] = b, m.v[3 * n + 2] = c;
            m.nb[3 * n] = x2, m.nb[3 * n + 1] = y1, m.nb[3 * n + 2] = t;
            replace_neighbor(x1, n, t);
            replace_neighbor(y1, t, n);
            if (x1 < 0) hull_edge[a] = 3 * t + 1;
            if (y2 < 0) hull_edge[c] = 3 * t + 0;
            if (x2 < 0) hull_edge[d] = 3 * n + 0;
            if (y1 < 0) hull_edge[b] = 3 * n + 1;
            stack.push_back(3 * t + 1);  // (a,d), opposite c
            stack.push_back(3 * n + 0);  // (d,b), opposite c
        }
    }

    bool visible(int a, int b, int p) const { return orient(a, b, p) < 0.0; }

    // Inserts point p, outside the hull; q is a hull node that p sees.
    bool insert(int p, int q) {
        std::vector<int>& next = m.hull_next;
        int s = q;
        // Back up while the edge ending at s is visible (bounded by the hull size).
        for (int guard = 0; visible(hull_prev[s], s, p); ++guard) {
            s = hull_prev[s];
            if (s == q || guard > static_cast<int>(next.size())) return false;
        }
        if (!visible(s, next[s], p)) {
            // q sees p only through a vertex: search the whole hull once.
            int e = next[q];
            while (e != q && !visible(e, next[e], p)) e = next[e];
            if (e == q) return false;
            s = e;
            for (int guard = 0; visible(hull_prev[s], s, p); ++guard) {
                s = hull_prev[s];
                if (guard > static_cast<int>(next.size())) return false;
            }
        }
        int e = s, first = -1, previous = -1;
        do {
            const int f = next[e];
            const int t = add_triangle(f, e, p);  // (f, e) is the old hull edge (e, f) reversed
            const int h = hull_edge[e];
            m.nb[3 * t] = h / 3;
            m.nb[h] = t;
            if (previous >= 0) {
                m.nb[3 * previous + 2] = t;  // (p, e) of the previous triangle
                m.nb[3 * t + 1] = previous;  // (e, p)
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
        hull_edge[s] = 3 * first + 1;
        hull_edge[p] = 3 * previous + 2;
        for (int t = first; t <= previous; ++t) legalize(t, 0);
        return true;
    }
};

}  // namespace

int build_sweep(std::span<const double> x, std::span<const double> y, Mesh& mesh) {
    const int n = static_cast<int>(x.size());
    mesh.v.clear();
    mesh.nb.clear();
    if (n < 3) return 1;
    int k = 2;
    while (k < n && orient2d(x[0], y[0], x[1], y[1], x[k], y[k]) == 0.0) ++k;
    if (k == n) return 3;
    mesh.v.reserve(6 * static_cast<std::size_t>(n));
    mesh.nb.reserve(6 * static_cast<std::size_t>(n));
    mesh.hull_next.assign(static_cast<std::size_t>(n), -1);
    Sweep sweep{x,
                y,
                mesh,
                std::vector<int>(static_cast<std::size_t>(n), -1),
                std::vector<int>(static_cast<std::size_t>(n), -1),
                {}};
    // Fan from the collinear run 0..k-1 (ordered along its line) to point k. The fan is
    // Delaunay: each circle meets the line only at its own two run points.
    const bool left = orient2d(x[0], y[0], x[1], y[1], x[k], y[k]) > 0.0;
    for (int i = 0; i + 1 < k; ++i) {
        const int t = left ? sweep.add_triangle(i, i + 1, k) : sweep.add_triangle(i + 1, i, k);
        if (i > 0) {
            // Shared edge (i, k): slot 2 of (i, i+1, k) and slot 1 of the previous
            // (i-1, i, k); mirrored for the clockwise-ordered fan.
            mesh.nb[3 * t + (left ? 2 : 1)] = t - 1;
            mesh.nb[3 * (t - 1) + (left ? 1 : 2)] = t;
        }
    }
    // Hull from the fan's free edges.
    for (int t = 0; t < mesh.triangles(); ++t)
        for (int s = 0; s < 3; ++s)
            if (mesh.nb[3 * t + s] < 0) {
                const int u = mesh.v[3 * t + s], w = mesh.v[3 * t + nxt(s)];
                mesh.hull_next[u] = w;
                sweep.hull_prev[w] = u;
                sweep.hull_edge[u] = 3 * t + s;
            }
    int last = k;
    for (int p = 0; p < n; ++p) {
        if (p < k + 1) continue;
        if (!sweep.insert(p, last)) return 2;
        last = p;
    }
    return 0;
}

bool link_mesh(int nodes, Mesh& mesh) {
    const int t_count = mesh.triangles();
    mesh.nb.assign(3 * static_cast<std::size_t>(t_count), -1);
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
