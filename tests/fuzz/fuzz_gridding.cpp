// Fuzz target: XYZ examination and conversion, Delaunay triangulation and its evaluators,
// and kriging, on scattered points with duplicates, collinear runs, NaN, NANUM and huge
// ranges. Checked on each call: returned counts never exceed the points given; refused
// calls leave outputs untouched; a built triangulation keeps its documented invariants
// (indices inside the node and edge arrays, symmetric neighbours, boundary nodes inside
// the nodes) and every record built is released.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;

// Aborts on a broken property, naming its line, so that the fuzzer keeps the input.
#define require(ok) zemath_fuzz::require_at((ok), __LINE__)

namespace {

constexpr double kMark = -7.25e77;  // sentinel of untouched output slots

bool untouched(const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [](double e) { return e == kMark; });
}

// Scattered points: fuzzed doubles, a small integer lattice (duplicates, collinear rows,
// sparse grids), or a lattice scaled to a huge or tiny range.
struct Points {
    std::vector<double> x, y, z;
};

Points points(Input& in, int n) {
    Points p;
    const int len = std::max(n, 0);
    const int style = in.pick(4);
    const double scale = style == 2 ? std::ldexp(1.0, in.pick(2048) - 1024) : 1.0;
    const int side = 1 + in.pick(12);
    for (int i = 0; i < len; ++i) {
        if (style == 0 || in.byte() % 32 == 0) {
            p.x.push_back(in.real());
            p.y.push_back(in.real());
        } else if (style == 3) {  // on a line
            const double t = in.pick(64);
            p.x.push_back(t);
            p.y.push_back(2 * t + 1);
        } else {
            const int k = in.byte() & 1 ? i : in.pick(256);
            p.x.push_back(scale * (k % side));
            p.y.push_back(scale * ((k / side) % 64));
        }
        p.z.push_back(in.byte() % 16 ? static_cast<double>(in.byte()) / 16.0 : in.real());
    }
    return p;
}

// The documented invariants of a built record.
void check_triangulation(const Triangulation& t) {
    if (!t.valid) return;
    if (std::getenv("ZEMATH_FUZZ_TRACE")) {
        std::fprintf(stderr, "nodes %d triangles %d edges %d\n", t.nodes, t.triangles, t.edges);
        for (int k = 0; k < t.triangles; ++k)
            std::fprintf(stderr, "tri %d: %d %d %d | %d %d %d\n", k, t.tri[6 * k], t.tri[6 * k + 1],
                         t.tri[6 * k + 2], t.tri[6 * k + 3], t.tri[6 * k + 4], t.tri[6 * k + 5]);
    }
    require(t.nodes >= 1 && t.triangles >= 0 && t.edges >= 0);
    for (int k = 0; k < t.triangles; ++k) {
        for (int v = 0; v < 3; ++v) require(t.tri[6 * k + v] >= 0 && t.tri[6 * k + v] < t.nodes);
        for (int e = 3; e < 6; ++e) require(t.tri[6 * k + e] >= 0 && t.tri[6 * k + e] < t.edges);
        if (t.neighbor) {
            for (int e = 0; e < 3; ++e) {
                const int other = t.neighbor[3 * k + e];
                require(other >= -1 && other < t.triangles);
                if (other >= 0) {
                    const int* back = t.neighbor + 3 * other;
                    require(back[0] == k || back[1] == k || back[2] == k);
                }
            }
        }
    }
    for (int e = 0; e < t.edges; ++e) {
        require(t.edge[3 * e] >= 0 && t.edge[3 * e] < t.edge[3 * e + 1] &&
                t.edge[3 * e + 1] < t.nodes);
        require(t.edge[3 * e + 2] == 0 || t.edge[3 * e + 2] == 1);
    }
    require(t.boundaryCount >= 0 && t.boundaryCount <= t.nodes);
    for (int b = 0; b < t.boundaryCount; ++b)
        require(t.boundary[b] >= 0 && t.boundary[b] < t.nodes);
    for (int h = 0; h < t.holeCount; ++h) require(t.holeIndex[h] >= -1 && t.holeIndex[h] < t.nodes);
}

// Two records hold the same arrays, bit for bit.
bool same_record(const Triangulation& a, const Triangulation& b) {
    auto same = [](const void* u, const void* v, size_t bytes) {
        return bytes == 0 || std::memcmp(u, v, bytes) == 0;
    };
    const size_t nodes = static_cast<size_t>(a.nodes), tris = static_cast<size_t>(a.triangles);
    return a.valid == b.valid && a.nodes == b.nodes && a.triangles == b.triangles &&
           a.edges == b.edges && a.boundaryCount == b.boundaryCount && a.holeCount == b.holeCount &&
           same(a.x, b.x, 8 * nodes) && same(a.y, b.y, 8 * nodes) && same(a.z, b.z, 8 * nodes) &&
           same(a.tri, b.tri, 24 * tris) && same(a.neighbor, b.neighbor, 12 * tris) &&
           same(a.edge, b.edge, 12 * static_cast<size_t>(a.edges)) &&
           same(a.boundary, b.boundary, 4 * static_cast<size_t>(a.boundaryCount)) &&
           same(a.holeIndex, b.holeIndex, 4 * static_cast<size_t>(a.holeCount));
}

unsigned tri_options(Input& in) {
    static const unsigned bits[] = {ZEMATH_TRI_KEEP_MISSING_Z, ZEMATH_TRI_MISSING_Z_PASS,
                                    ZEMATH_TRI_NORMALISED,     ZEMATH_TRI_BOUNDARY_FORWARD,
                                    ZEMATH_TRI_ENGINE,         ZEMATH_TRI_ENGINE_SCALED};
    unsigned options = 0;
    const uint8_t choice = in.byte();
    for (int b = 0; b < 6; ++b)
        if (choice & (1u << b)) options |= bits[b];
    if (in.byte() % 16 == 0) options |= in.raw<unsigned>() & 0xffffu;  // unknown bits
    return options;
}

void exercise_triangulation(Input& in, Triangulation& t, const Points& p) {
    check_triangulation(t);
    int count = -9;
    const int size = zemath_triangulation_boundary(&t, nullptr, nullptr, nullptr, nullptr, 0);
    if (!t.valid) require(size == -1);
    if (t.valid) {
        require(size == t.boundaryCount);
        std::vector<double> bx(static_cast<size_t>(size)), by(bx), bz(bx);
        if (size > 0) {
            require(zemath_triangulation_boundary(
                        &t, &count, bx.data(), by.data(), bz.data(),
                        in.byte() & 1 ? ZEMATH_TRI_BOUNDARY_FORWARD : 0u) == 0);
            require(count == size);
        }
        std::vector<double> xyz(static_cast<size_t>(3 * t.nodes));
        std::vector<int> tri(static_cast<size_t>(6 * t.triangles) + 1),
            edge(static_cast<size_t>(3 * t.edges) + 1), boundary(static_cast<size_t>(size) + 1);
        if (zemath_triangulation_to_array(&t, xyz.data(), tri.data(), edge.data(),
                                          boundary.data())) {
            Triangulation copy;
            zemath_triangulation_init(&copy);
            if (in.byte() & 1)
                tri[static_cast<size_t>(in.pick(static_cast<int>(tri.size())))] =
                    in.integer();  // a broken index is refused
            if (zemath_array_to_triangulation(t.nodes, xyz.data(), t.triangles, tri.data(), t.edges,
                                              edge.data(), size, boundary.data(), &copy))
                check_triangulation(copy);
            else
                require(!copy.valid);
            double v = kMark;
            const double qx = in.real(), qy = in.real();
            if (!zemath_Triangulation_value(&copy, qx, qy, &v)) require(v == kMark);
            zemath_triangulation_free(&copy);
        }
    }
    const int m = in.count(32);
    std::vector<double> qx = in.reals(m), qy = in.reals(m), qz(qx.size(), kMark);
    for (size_t k = 0; k < qx.size() && !p.x.empty(); ++k)
        if (in.byte() & 1) {  // near a data point
            const size_t d = in.byte() % p.x.size();
            qx[k] = p.x[d] + in.real() * 1e-3;
            qy[k] = p.y[d];
        }
    const int rc =
        zemath_tri_contour_interpolate(m, data_or_null(qx), data_or_null(qy), data_or_null(qz), &t);
    if (rc != 0) require(untouched(qz));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(16);
    const int n = in.count(200);
    if (std::getenv("ZEMATH_FUZZ_TRACE")) std::fprintf(stderr, "case %d n %d\n", which, n);
    const int len = std::max(n, 0);
    Points p = points(in, n);
    double* px = in.byte() % 32 ? data_or_null(p.x) : nullptr;
    switch (which) {
        case 0: {
            zemath_xyz_exam rec;
            rec.dXTol = in.byte() & 1 ? 1e-8 : in.real();
            rec.dYTol = in.byte() & 1 ? 1e-8 : in.real();
            rec.nMethod = in.byte() % 4 ? in.pick(6) : in.integer();
            rec.dXIrregular = in.real();
            rec.dYIrregular = in.real();
            rec.nType = -5;
            const bool with_record = in.byte() % 8;
            const int rc = zemath_xyz_examine_data_pro(n, px, data_or_null(p.y), data_or_null(p.z),
                                                       with_record ? &rec : nullptr);
            require(rc >= -19 && rc <= 2);
            if (rc >= 0 && with_record)
                require(rec.nType == rc && rec.nVar >= 0 && rec.nVar <= len);
            break;
        }
        case 1: {
            int nvar = -9;
            double v[6] = {kMark, kMark, kMark, kMark, kMark, kMark};
            const double xt = in.real(), yt = in.real();
            const bool remove = in.byte() & 1;
            const int method = in.pick(7);
            const int rc =
                in.byte() & 1 ? zemath_xyz_examine_data(n, px, data_or_null(p.y), data_or_null(p.z),
                                                        xt, yt, &nvar, &v[0], &v[1], &v[2], &v[3],
                                                        &v[4], &v[5], remove, method)
                              : zemath_xyz_examine_data_ex(
                                    n, px, data_or_null(p.y), data_or_null(p.z), xt, yt, &nvar,
                                    &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], remove, method);
            require(rc >= -19 && rc <= 2);
            if (rc >= 0) require(nvar >= 0 && nvar <= len);
            break;
        }
        case 2: {
            double step = kMark;
            int count = -9;
            const double tol = in.real();
            const unsigned un = static_cast<unsigned>(len);
            switch (in.pick(5)) {
                case 0:
                    zemath_find_array_step(px, n, &step, tol);
                    break;
                case 1:
                    if (zemath_find_array_step_stat(px, un, &step, tol, &count) == 0)
                        require(count >= 1 && count < len);
                    break;
                case 2:
                    zemath_find_array_step_stat_ex(px, un, &step, tol, &count);
                    require(count == -9 || (count >= 0 && count < len));
                    break;
                case 3:
                    zemath_find_array_step_by_probability(px, un, &step, tol, in.real());
                    break;
                default:
                    zemath_find_array_step_by_gcd(px, un, &step, tol, in.real());
                    break;
            }
            double anchor = kMark;
            if (zemath_array_anchor(px, n, in.real(), &anchor) != 0) require(anchor == kMark);
            break;
        }
        case 3: {
            const int cap = in.count(len);
            std::vector<double> steps(static_cast<size_t>(std::max(cap, 0)) + 1, kMark);
            std::vector<int> counts(steps.size(), -9);
            const double tol = in.real();
            const int groups =
                zemath_array_step_histogram(px, n, tol, steps.data(), counts.data(), cap);
            require(groups < len);
            require(steps.back() == kMark && counts.back() == -9);  // nothing past cap
            std::vector<double> intervals(steps.size(), kMark);
            const int got = zemath_get_intervals(px, n, tol, intervals.data(), cap);
            require(got < len && intervals.back() == kMark);
            break;
        }
        case 4: {
            const int nx = in.count(20), ny = in.count(20);
            const long long cells = static_cast<long long>(std::max(nx, 0)) * std::max(ny, 0);
            std::vector<double> mat(static_cast<size_t>(cells), kMark);
            const double xmin = in.real(), xstep = in.byte() & 1 ? 1.0 : in.real();
            const double ymin = in.real(), ystep = in.byte() & 1 ? 1.0 : in.real();
            if (in.byte() & 1) {
                const int rc = zemath_convert_regular_xyz_to_matrix(
                    n, px, data_or_null(p.y), data_or_null(p.z), data_or_null(mat), xmin, xstep, nx,
                    ymin, ystep, ny);
                if (rc != 0) require(untouched(mat));
            } else {
                const int rc = zemath_convert_sparse_xyz_to_matrix(
                    n, px, data_or_null(p.y), data_or_null(p.z), data_or_null(mat), xmin, xstep, nx,
                    ymin, ystep, ny, in.real(), in.real());
                require(rc <= len);
                if (rc < 0) require(untouched(mat));
            }
            break;
        }
        case 5: {
            const int nx = in.count(20), ny = in.count(20);
            const long long cells = static_cast<long long>(std::max(nx, 0)) * std::max(ny, 0);
            std::vector<double> mat = in.reals(static_cast<int>(cells));
            std::vector<double> ox(mat.size(), kMark), oy(ox), oz(ox);
            const int got = zemath_mat_to_regular_xyz(
                data_or_null(mat), nx, ny, in.real(), in.real(), in.real(), in.real(),
                data_or_null(ox), data_or_null(oy), data_or_null(oz), in.byte() & 1);
            require(got <= cells);
            if (got < 0) require(untouched(ox) && untouched(oz));
            const int replaced =
                zemath_mat_replace_blanks(data_or_null(mat), static_cast<int>(cells), in.real());
            require(replaced <= cells);
            break;
        }
        case 6: {
            const int got =
                zemath_xyz_remove_missingvalue(n, px, data_or_null(p.y), data_or_null(p.z));
            require(got <= len);
            break;
        }
        case 7: {
            const int method = in.byte() % 8 ? in.pick(6) : in.integer();
            const double xt = in.byte() & 1 ? 0.0 : in.real(), yt = in.byte() & 1 ? 0.0 : in.real();
            const int keep = in.pick(2);
            int got = 0;
            if (in.byte() & 1) {
                got = zemath_xyz_remove_duplicates(n, px, data_or_null(p.y), data_or_null(p.z),
                                                   method, xt, yt, keep);
            } else {
                std::vector<double> v = in.reals(n);
                got = zemath_xyzv_remove_duplicates(n, px, data_or_null(p.y), data_or_null(p.z),
                                                    data_or_null(v), method, xt, yt, keep);
            }
            require(got <= len);
            if (std::getenv("ZEMATH_FUZZ_TRACE"))
                for (int k = 0; k < got; ++k)
                    std::fprintf(stderr, "%d: %.17g %.17g %.17g\n", k, p.x[k], p.y[k], p.z[k]);
            if (px && method != 5 && xt == 0 && yt == 0)  // exact duplicates only: survivors
                for (int k = 1; k < got; ++k)             // strictly ascending by x, then y
                    require(p.x[k - 1] < p.x[k] || (p.x[k - 1] == p.x[k] && p.y[k - 1] < p.y[k]));
            break;
        }
        case 8: {
            const int got = zemath_xy_remove_duplicates(
                n, px, data_or_null(p.y), in.byte() % 8 ? in.pick(6) : in.integer(), in.real());
            require(got <= len);
            const int kept = zemath_array_remove_duplicates(data_or_null(p.z), n, in.real());
            require(kept <= len);
            for (int k = 1; k < kept; ++k) require(p.z[k - 1] <= p.z[k]);
            break;
        }
        case 9:
        case 10: {
            Triangulation t;
            zemath_triangulation_init(&t);
            const unsigned options = tri_options(in);
            const int rc =
                zemath_triangulation(n, px, data_or_null(p.y), data_or_null(p.z), &t, options);
            require(rc == 0 ? t.valid == 1 : t.valid == 0);
            if (rc == 0) require(t.nodes >= 3 && t.nodes <= len && t.triangles >= 1);
            const unsigned engine = ZEMATH_TRI_ENGINE | ZEMATH_TRI_ENGINE_SCALED;
            if (options & engine) {  // the engine build gives the built-in build's record
                Triangulation plain;
                zemath_triangulation_init(&plain);
                require(zemath_triangulation(n, px, data_or_null(p.y), data_or_null(p.z), &plain,
                                             options & ~engine) == rc);
                require(same_record(t, plain));
                zemath_triangulation_free(&plain);
            }
            exercise_triangulation(in, t, p);
            if (in.byte() & 1) {  // a rebuild into the same record frees the old arrays
                const int again = zemath_triangulation(n, px, data_or_null(p.y), data_or_null(p.z),
                                                       &t, tri_options(in));
                require(again == 0 ? t.valid == 1 : t.valid == 0);
                check_triangulation(t);
            }
            zemath_triangulation_free(&t);
            require(t.valid == 0 && t.x == nullptr && t.tri == nullptr);
            break;
        }
        case 11: {
            const int cols = 1 + in.pick(16), rows = len / cols;
            Triangulation t;
            zemath_triangulation_init(&t);
            const int rc = zemath_construct_triangulation(rows, cols, px, data_or_null(p.y),
                                                          data_or_null(p.z), &t, tri_options(in));
            if (rc == 0) require(t.nodes == rows * cols);
            exercise_triangulation(in, t, p);
            zemath_triangulation_free(&t);
            break;
        }
        case 12: {
            Triangulation t;
            zemath_triangulation_init(&t);
            const int option = in.byte() % 8 ? 3 + in.pick(40) : in.integer();
            const int rc = zemath_triangulation_reduce(n, px, data_or_null(p.y), data_or_null(p.z),
                                                       &t, option);
            if (rc == 0) require(t.valid && t.nodes <= len);
            exercise_triangulation(in, t, p);
            zemath_triangulation_free(&t);
            break;
        }
        case 13: {
            const int m = in.count(40);
            std::vector<double> xt = in.reals(m), yt = in.reals(m), zt(xt.size(), kMark);
            for (size_t k = 0; k < xt.size() && len > 0; ++k)
                if (in.byte() & 1) {
                    xt[k] = p.x[in.byte() % len] + in.real() * 1e-2;
                    yt[k] = p.y[in.byte() % len];
                }
            const unsigned options = tri_options(in);
            const int rc = in.byte() & 1
                               ? zemath_tri_linear_interpolate(
                                     n, px, data_or_null(p.y), data_or_null(p.z), m,
                                     data_or_null(xt), data_or_null(yt), data_or_null(zt), options)
                               : zemath_tri_natural_neighbor_interpolate(
                                     n, px, data_or_null(p.y), data_or_null(p.z), m,
                                     data_or_null(xt), data_or_null(yt), data_or_null(zt), options);
            if (rc != 0) require(untouched(zt));
            if (rc == 0)
                for (double v : zt) require(v != kMark);
            break;
        }
        default: {  // kriging
            const int npoint = in.byte() % 8 ? 1 + in.pick(8) : in.integer();
            const double smooth = in.byte() % 4 ? 0.1 + in.pick(40) / 10.0 : in.real();
            const double exponent = in.byte() % 4 ? in.pick(21) / 10.0 : in.real();
            const int neighbours = in.byte() % 4 ? in.pick(40) : in.integer();
            const int kind = in.pick(3);
            if (kind == 2) {
                const int nx = in.count(12), ny = in.count(12);
                std::vector<double> gx = in.reals(nx), gy = in.reals(ny);
                const long long cells = static_cast<long long>(std::max(nx, 0)) * std::max(ny, 0);
                std::vector<double> grid(static_cast<size_t>(cells), kMark);
                const int rc = zemath_2d_kriging_grid(
                    n, px, data_or_null(p.y), data_or_null(p.z), npoint, smooth, exponent, nx,
                    data_or_null(gx), ny, data_or_null(gy), data_or_null(grid), neighbours);
                if (rc == -37 || rc == -11 || rc == -8) require(untouched(grid));
                break;
            }
            const int m = in.count(40);
            std::vector<double> xt = in.reals(m), yt = in.reals(m), zt(xt.size(), kMark),
                                var(xt.size(), kMark);
            const int rc =
                kind == 0 ? zemath_2d_kriging_scat(n, px, data_or_null(p.y), data_or_null(p.z),
                                                   npoint, smooth, exponent, m, data_or_null(xt),
                                                   data_or_null(yt), data_or_null(zt), neighbours)
                          : zemath_2d_kriging_scat_ex(
                                n, px, data_or_null(p.y), data_or_null(p.z), npoint, smooth,
                                exponent, m, data_or_null(xt), data_or_null(yt), data_or_null(zt),
                                in.byte() & 1 ? data_or_null(var) : nullptr, neighbours);
            if (rc == -37 || rc == -11 || rc == -8) require(untouched(zt) && untouched(var));
            if (rc == 0)
                for (size_t k = 0; k < zt.size(); ++k)  // every target gets a value or NANUM
                    require(zt[k] != kMark &&
                            (var[k] == kMark || !std::isnan(var[k]) || std::isnan(zt[k])));
            break;
        }
    }
    return 0;
}
