// Exports are reentrant: several threads calling the same families at once on their own
// data get exactly the results of a single-threaded call.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>
#include <vector>

#include "zemath.h"
#include "zemath/sort.h"

namespace {

struct Results {
    double sum = 0.0;
    double t_upper = 0.0;
    double quantile = 0.0;
    std::vector<int> found;
    std::vector<double> sorted;
    bool operator==(const Results&) const = default;
};

Results run_once(const std::vector<double>& data) {
    Results r;
    int status = -1;
    r.sum = zemath_d_sum(data.data(), static_cast<int>(data.size()), nullptr, nullptr, nullptr,
                         nullptr, nullptr);
    r.t_upper = tcdf(2.5, 7.5, 1, &status);
    r.quantile = finv(0.9, 3.0, 12.0, &status);
    r.sorted = data;
    theMergeSort(r.sorted.data(), 0, static_cast<int>(r.sorted.size()) - 1, sizeof(double),
                 GetAppropriateCompareAscend(11));
    const std::vector<double> targets = {-1.0, 0.25, 0.5, 2.0};
    r.found.assign(targets.size(), -9);
    zemath_array_find_indices(r.sorted.data(), static_cast<int>(r.sorted.size()), targets.data(),
                              static_cast<int>(targets.size()), r.found.data());
    return r;
}

}  // namespace

TEST(Reentrancy, ConcurrentCallsMatchSingleThreadedResults) {
    std::vector<double> data(20000);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<double>((i * 7919) % 10007) / 10007.0;
    const Results expected = run_once(data);
    ASSERT_TRUE(std::is_sorted(expected.sorted.begin(), expected.sorted.end()));

    constexpr int kThreads = 4;
    std::vector<Results> got(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int repeat = 0; repeat < 20; ++repeat) got[t] = run_once(data);
        });
    for (auto& th : threads) th.join();
    for (const Results& r : got) EXPECT_TRUE(r == expected);
}
