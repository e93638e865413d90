// Gridding: Delaunay triangulation (built-in and engine builds) of 1e5 and 1e6 points,
// uniform in the unit square and on a perturbed grid, and of 4000 and 16000 points on a
// circle, an exact grid and two rows, and of 1e5 points in convex position (on the
// parabolas y = 1e-2 x^2 and y = 1e-6 x^2 and on a circle); examination and duplicate removal
// of 1e6 points; kriging of a 500 x 500 grid from 1e4 scattered points. Items processed
// are input points (targets for kriging). bench/table/families/gridding.py times SciPy on the same
// kinds of data (scipy.spatial.Delaunay, RBFInterpolator with a neighbour count).
#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

struct Cloud {
    std::vector<double> x, y, z;
};

// kind 0: uniform in the unit square; 1: a sqrt(n) grid perturbed by 1e-3 of a cell.
const Cloud& cloud(int n, int kind) {
    static std::map<std::pair<int, int>, Cloud> cache;
    Cloud& c = cache[{n, kind}];
    if (c.x.empty()) {
        std::mt19937_64 gen(20261123);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        const int side = static_cast<int>(std::sqrt(static_cast<double>(n)));
        for (int i = 0; i < n; ++i) {
            double x = u(gen), y = u(gen);
            if (kind == 1)
                x = (i % side + 1e-3 * (x - 0.5)) / side, y = (i / side + 1e-3 * (y - 0.5)) / side;
            c.x.push_back(x), c.y.push_back(y), c.z.push_back(std::sin(6 * x) * std::cos(4 * y));
        }
    }
    return c;
}

// One build per iteration of the cloud's nodes, with the engine where the third argument
// asks for it.
void run_builds(benchmark::State& state, const Cloud& c) {
    const int n = static_cast<int>(c.x.size());
    const unsigned options = state.range(2) ? static_cast<unsigned>(ZEMATH_TRI_ENGINE) : 0u;
    Triangulation t;
    zemath_triangulation_init(&t);
    for (auto _ : state) {
        if (zemath_triangulation(n, c.x.data(), c.y.data(), c.z.data(), &t, options) != 0)
            state.SkipWithError("failed");
        benchmark::DoNotOptimize(t.triangles);
    }
    zemath_triangulation_free(&t);
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_triangulation(benchmark::State& state) {
    run_builds(state, cloud(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))));
}

// Degenerate input for the engine build beside the built-in one (kind 0: n points on a
// circle; 1: an exact sqrt(n) grid; 2: two rows of n / 2 evenly spaced points): ties and
// collinear runs everywhere, on which the engine's facet merging used to take seconds.
const Cloud& degenerate_cloud(int n, int kind) {
    static std::map<std::pair<int, int>, Cloud> cache;
    Cloud& c = cache[{n, kind}];
    if (c.x.empty()) {
        const int side = static_cast<int>(std::sqrt(static_cast<double>(n)));
        for (int i = 0; i < n; ++i) {
            const double angle = 6.283185307179586 * i / n;
            const double x = kind == 0 ? std::cos(angle) : kind == 1 ? i % side : i / 2;
            const double y = kind == 0 ? std::sin(angle) : kind == 1 ? i / side : i % 2;
            c.x.push_back(x), c.y.push_back(y), c.z.push_back(x + y);
        }
    }
    return c;
}

void BM_triangulation_degenerate(benchmark::State& state) {
    run_builds(state, degenerate_cloud(static_cast<int>(state.range(0)),
                                       static_cast<int>(state.range(1))));
}

// Points in convex position (kind 0: y = 1e-2 x^2 and 1: y = 1e-6 x^2, x uniform in
// [-1, 1]; 2: n points on a circle), which the x-order sweep met with O(n^2) flips.
const Cloud& convex_cloud(int n, int kind) {
    static std::map<std::pair<int, int>, Cloud> cache;
    Cloud& c = cache[{n, kind}];
    if (c.x.empty()) {
        std::mt19937_64 gen(20261124);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        for (int i = 0; i < n; ++i) {
            const double t = u(gen), angle = 6.283185307179586 * i / n;
            const double x = kind == 2 ? std::cos(angle) : t;
            const double y = kind == 0 ? 1e-2 * t * t : kind == 1 ? 1e-6 * t * t : std::sin(angle);
            c.x.push_back(x), c.y.push_back(y), c.z.push_back(x + y);
        }
    }
    return c;
}

void BM_triangulation_convex(benchmark::State& state) {
    run_builds(state,
               convex_cloud(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))));
}

void BM_examine(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Cloud& c = cloud(n, 1);
    for (auto _ : state) {
        int nvar = 0;
        double a, b, cc, d, e, f;
        benchmark::DoNotOptimize(zemath_xyz_examine_data(n, c.x.data(), c.y.data(), c.z.data(),
                                                         1e-8, 1e-8, &nvar, &a, &b, &cc, &d, &e, &f,
                                                         true, 0));
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_remove_duplicates(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    // Every point twice: n / 2 distinct points on a lattice.
    std::vector<double> x0(n), y0(n), z0(n);
    for (int i = 0; i < n; ++i) x0[i] = (i / 2) % 1000, y0[i] = (i / 2) / 1000, z0[i] = i;
    std::vector<double> x, y, z;
    for (auto _ : state) {
        state.PauseTiming();
        x = x0, y = y0, z = z0;
        state.ResumeTiming();
        benchmark::DoNotOptimize(
            zemath_xyz_remove_duplicates(n, x.data(), y.data(), z.data(), 0, 1e-8, 1e-8, 1));
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_kriging_grid(benchmark::State& state) {
    const int n = 10000, side = static_cast<int>(state.range(0));
    const Cloud& c = cloud(n, 0);
    std::vector<double> gx(side), gy(side), gz(static_cast<std::size_t>(side) * side);
    for (int i = 0; i < side; ++i) gx[i] = gy[i] = (i + 0.5) / side;
    for (auto _ : state) {
        if (zemath_2d_kriging_grid(n, c.x.data(), c.y.data(), c.z.data(), 4, 1.0, 1.5, side,
                                   gx.data(), side, gy.data(), gz.data(), 64) != 0)
            state.SkipWithError("failed");
    }
    state.SetItemsProcessed(state.iterations() * side * side);
}

}  // namespace

BENCHMARK(BM_triangulation)
    ->ArgsProduct({{100000, 1000000}, {0, 1}, {0, 1}})
    ->ArgNames({"n", "perturbed_grid", "engine"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_triangulation_degenerate)
    ->ArgsProduct({{4000, 16000}, {0, 1, 2}, {0, 1}})
    ->ArgNames({"n", "circle_grid_rows", "engine"})
    ->Unit(benchmark::kMillisecond);
// A 1000 x 1000 exact grid: the sweep's x-order ties would cost half a column of flips
// per node; the build gives way to the random-order rounds.
BENCHMARK(BM_triangulation_degenerate)
    ->Args({1000000, 1, 0})
    ->ArgNames({"n", "circle_grid_rows", "engine"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_triangulation_convex)
    ->ArgsProduct({{100000}, {0, 1, 2}, {0}})
    ->ArgNames({"n", "parabola_flat_circle", "engine"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_examine)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_remove_duplicates)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_kriging_grid)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
