// Gridding exports called from several threads at once (each with its own record and
// outputs) give the single-threaded results: the engine build included, whose state
// lives in a per-call record.
#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

#include "zemath/kriging.h"
#include "zemath/triangulation.h"

namespace {

TEST(GriddingReentrancy, ConcurrentBuildsAgree) {
    std::mt19937_64 rng(21);
    std::uniform_real_distribution<double> u(0, 1);
    std::vector<double> x(3000), y(3000), z(3000);
    for (int i = 0; i < 3000; ++i) x[i] = u(rng), y[i] = u(rng), z[i] = x[i] * y[i];
    const std::vector<double> tx{0.1, 0.5, 0.9}, ty{0.2, 0.5, 0.8};
    auto run = [&](unsigned options, std::vector<int>& tri, std::vector<double>& kz) {
        Triangulation t;
        zemath_triangulation_init(&t);
        ASSERT_EQ(zemath_triangulation(3000, x.data(), y.data(), z.data(), &t, options), 0);
        tri.assign(t.tri, t.tri + 6 * t.triangles);
        zemath_triangulation_free(&t);
        kz.resize(3);
        ASSERT_EQ(zemath_2d_kriging_scat(3000, x.data(), y.data(), z.data(), 4, 1.0, 1.5, 3,
                                         tx.data(), ty.data(), kz.data(), 0),
                  0);
    };
    for (unsigned options : {0u, static_cast<unsigned>(ZEMATH_TRI_ENGINE)}) {
        std::vector<int> tri0;
        std::vector<double> kz0;
        run(options, tri0, kz0);
        std::vector<std::vector<int>> tris(4);
        std::vector<std::vector<double>> kzs(4);
        std::vector<std::thread> threads;
        for (int k = 0; k < 4; ++k) threads.emplace_back([&, k] { run(options, tris[k], kzs[k]); });
        for (auto& th : threads) th.join();
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(tris[k], tri0);
            EXPECT_EQ(kzs[k], kz0);
        }
    }
}

}  // namespace
