// Gridding exports called from several threads at once (each with its own record and
// outputs) give the single-threaded results: the engine build included, whose state
// lives in a per-call record.
#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <thread>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <pthread.h>
#define ZEMATH_TEST_SMALL_STACK 1
#endif

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

#ifdef ZEMATH_TEST_SMALL_STACK
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__OPTIMIZE__)
constexpr std::size_t kSmallStack = 1 << 20;  // instrumented or unoptimised frames are larger
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr std::size_t kSmallStack = 1 << 20;
#else
constexpr std::size_t kSmallStack = 48 << 10;
#endif
#else
constexpr std::size_t kSmallStack = 48 << 10;
#endif

struct StackJob {
    std::vector<double> x, y, z;
    std::vector<int> tri;
    int status = -1;
};

void* build_job(void* job) {
    StackJob& w = *static_cast<StackJob*>(job);
    Triangulation t;
    zemath_triangulation_init(&t);
    w.status = zemath_triangulation(static_cast<int>(w.x.size()), w.x.data(), w.y.data(),
                                    w.z.data(), &t, 0);
    w.tri.assign(t.tri, t.tri + 6 * t.triangles);
    zemath_triangulation_free(&t);
    return nullptr;
}

// The header's stack promise (about 40 kB at most): a build whose exact in-circle tests
// run in the wide range (a grid at 1e300 and a node at 1e-10, which no power of 2 brings
// near 1 together) on a thread with a 48 kB stack gives the main thread's record.
TEST(GriddingReentrancy, BuildOnSmallStack) {
    StackJob job;
    for (int i = 0; i < 12; ++i)
        for (int j = 0; j < 12; ++j)
            job.x.push_back(i * 1e300), job.y.push_back(j * 1e300), job.z.push_back(i + j);
    job.x.push_back(1e-10), job.y.push_back(5.5e300), job.z.push_back(0.0);
    StackJob main_thread = job;
    build_job(&main_thread);
    ASSERT_EQ(main_thread.status, 0);
    pthread_attr_t attr;
    ASSERT_EQ(pthread_attr_init(&attr), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attr, kSmallStack), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attr, build_job, &job), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
    EXPECT_EQ(job.status, 0);
    EXPECT_EQ(job.tri, main_thread.tri);
}
#endif

}  // namespace
