// Every family's exports called from 8 threads at once: each thread works on its own
// data and all of them read the same shared inputs. Deterministic rows must give exactly
// the single-threaded result; random rows must succeed and differ between threads. Run
// under ThreadSanitizer by the tsan preset (`make tsan`), where any data race fails it.
//
// A new family adds its rows to kRows: a name, whether the result is deterministic, and
// a function of (shared inputs, thread number) returning the values to compare.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <thread>
#include <vector>

#include "zemath.h"
#include "zemath/sort.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRepeats = 4;

// Read-only inputs every thread uses at once.
struct Shared {
    std::vector<double> data;    // unsorted, with NANUM and NaN gaps
    std::vector<double> sorted;  // ascending
    std::vector<double> targets;
    std::vector<double> table;  // probabilities summing to 1
};

const Shared& shared() {
    static const Shared s = [] {
        Shared out;
        for (int i = 0; i < 4096; ++i)
            out.data.push_back(static_cast<double>((i * 7919) % 10007) / 10007.0 - 0.3);
        out.data[17] = NANUM;
        out.data[101] = NAN;
        out.sorted = out.data;
        out.sorted[17] = 0.0;
        out.sorted[101] = 0.0;
        std::sort(out.sorted.begin(), out.sorted.end());
        out.targets = {-1.0, 0.0, 0.25, 0.5, 0.7, 2.0};
        out.table.assign(16, 1.0 / 16);
        return out;
    }();
    return s;
}

struct Row {
    const char* name;
    bool deterministic;
    std::function<std::vector<double>(const Shared&, int thread)> run;
};

// The thread number only selects data slices, so that threads work on different inputs
// while a deterministic row's result still depends on the thread alone.
std::vector<double> slice(const std::vector<double>& v, int thread) {
    const size_t begin = static_cast<size_t>(thread) * 64;
    return {v.begin() + static_cast<long>(begin), v.begin() + static_cast<long>(begin + 2048)};
}

const Row kRows[] = {
    {"primitives", true,
     [](const Shared& s, int t) {
         std::vector<double> x = slice(s.data, t), out;
         double mn = 0, mx = 0, variance = 0;
         int imin = 0, imax = 0, count = 0;
         out.push_back(zemath_d_sum(x.data(), 2048, &mn, &mx, &imin, &imax, &count));
         out.push_back(zemath_d_mean_variance(x.data(), 2048, &variance, &count));
         out.push_back(variance);
         double fraction = 0;
         out.push_back(zemath_d_find_most(s.data.data(), 4096, 20, &fraction));
         std::vector<double> cumulative(2048);
         zemath_d_cumulative_sum(x.data(), 0, 2048, cumulative.data(), nullptr);
         out.push_back(cumulative.back());
         zemath_d_stretch(x.data(), 2048, 0.0, 1.0, 0.0, 100.0);
         out.push_back(x[5]);
         return out;
     }},
    {"sort", true,
     [](const Shared& s, int t) {
         std::vector<double> x = slice(s.data, t);
         theMergeSort(x.data(), 0, 2047, sizeof(double), GetAppropriateCompareAscend(11));
         std::vector<double> y = slice(s.data, t);
         theQuickSort(y.data(), 0, 2047, sizeof(double), GetAppropriateCompareDescend(11));
         x.insert(x.end(), y.begin(), y.end());
         return x;
     }},
    {"search", true,
     [](const Shared& s, int t) {
         const int n = static_cast<int>(s.sorted.size());
         std::vector<int> found(s.targets.size());
         std::vector<double> values(s.targets.size()), out;
         zemath_array_find_indices(s.sorted.data(), n, s.targets.data(), 6, found.data());
         out.insert(out.end(), found.begin(), found.end());
         zemath_find_nearest_values(s.sorted.data(), n, s.targets.data(), 6, found.data(),
                                    values.data());
         out.insert(out.end(), values.begin(), values.end());
         int index = -1, order = -1;
         zemath_find_nearest_index(s.data.data(), n, 0.01 * t, &index);
         out.push_back(index);
         zemath_check_order(s.data.data(), n, 0.1, &order);
         out.push_back(order);
         double lower = -0.3 * t, upper = 17.0;
         zemath_round_range(&lower, &upper, 7, nullptr);
         out.push_back(lower);
         return out;
     }},
    {"distributions", true,
     [](const Shared&, int t) {
         int status = 0;
         const double x = 0.5 + t;
         return std::vector<double>{normcdf(x, 1, &status),
                                    tcdf(x, 7.5, 1, &status),
                                    finv(0.9, 3.0, 12.0 + t, &status),
                                    betainv(0.3, 2.0, 3.0 + t, &status),
                                    gaminv(0.7, 2.5, 1.0, &status),
                                    binocdf(t, 20, 0.3, 2, &status),
                                    nctcdf(x, 5.0, 1.0, 50, &status),
                                    ncchi2cdf(x, 3.0, 2.0, &status),
                                    srangecdf(x, 10.0, 3, &status),
                                    lambertW(x, 0, 0, &status)};
     }},
    {"random", false,
     [](const Shared& s, int) {
         std::vector<double> out(256);
         std::vector<int> counts(256);
         EXPECT_EQ(normrnd(out.data(), 256, 0.0, 1.0), 0);
         EXPECT_EQ(gamrnd(out.data(), 256, 3.0, 1.0), 0);
         EXPECT_EQ(disrnd(counts.data(), 256, s.table.data(), 16, 0, 0), 0);
         EXPECT_EQ(binornd(counts.data() + 128, 128, 10, 0.4), 0);
         const double identity[] = {1.0, 0.0, 0.0, 1.0}, mean[] = {0.0, 0.0};
         EXPECT_EQ(mvnrnd(out.data() + 128, 64, 2, mean, identity), 0);
         out.insert(out.end(), counts.begin(), counts.end());
         return out;
     }},
};

TEST(Concurrency, EightThreadsMatchSingleThreadedResults) {
    const Shared& s = shared();
    // Expected results, one thread at a time.
    std::vector<std::vector<std::vector<double>>> expected(std::size(kRows));
    for (size_t r = 0; r < std::size(kRows); ++r)
        for (int t = 0; t < kThreads; ++t) expected[r].push_back(kRows[r].run(s, t));

    std::vector<std::vector<std::vector<double>>> got(
        kThreads, std::vector<std::vector<double>>(std::size(kRows)));
    {
        std::vector<std::jthread> pool;
        for (int t = 0; t < kThreads; ++t)
            pool.emplace_back([&, t] {
                for (int repeat = 0; repeat < kRepeats; ++repeat)
                    for (size_t r = 0; r < std::size(kRows); ++r) got[t][r] = kRows[r].run(s, t);
            });
    }
    const auto same = [](const std::vector<double>& a, const std::vector<double>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
            return x == y || (std::isnan(x) && std::isnan(y));
        });
    };
    for (size_t r = 0; r < std::size(kRows); ++r) {
        for (int t = 0; t < kThreads; ++t) {
            ASSERT_EQ(got[t][r].size(), expected[r][t].size()) << kRows[r].name;
            if (kRows[r].deterministic) {
                EXPECT_TRUE(same(got[t][r], expected[r][t])) << kRows[r].name << " thread " << t;
            } else if (t > 0) {  // independent streams
                EXPECT_FALSE(same(got[t][r], got[t - 1][r])) << kRows[r].name << " thread " << t;
            }
        }
    }
}

}  // namespace
