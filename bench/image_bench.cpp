// Image rank filters and XY reduction: the percentile filter on a 2048 x 2048 16-bit
// image (uniform random pixels, fixed seed) with square windows of side 3 to 101
// at 50%, and the median-rank call of the same window; bench/table/families/image.py times SciPy
// on the same sizes.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "gridding/image_filters.hpp"
#include "zemath/image.h"
#include "zemath/reduction.h"

namespace {

std::vector<unsigned short> random_image(int side) {
    std::mt19937 gen(20241123);
    std::vector<unsigned short> image(static_cast<size_t>(side) * side);
    for (auto& v : image) v = static_cast<unsigned short>(gen() & 0xFFFF);
    return image;
}

void BM_percentile_filter(benchmark::State& state) {
    const int side = 2048, window = static_cast<int>(state.range(0));
    const std::vector<unsigned short> original = random_image(side);
    std::vector<unsigned short> image;
    for (auto _ : state) {
        state.PauseTiming();
        image = original;
        state.ResumeTiming();
        benchmark::DoNotOptimize(zemath_us_percentile_filter(image.data(), side, side, 50.0, window,
                                                             window, 0, 0.0, 0, 0, -1, -1));
    }
    state.SetItemsProcessed(state.iterations() * side * side);
}
BENCHMARK(BM_percentile_filter)
    ->Arg(3)
    ->Arg(7)
    ->Arg(15)
    ->Arg(31)
    ->Arg(51)
    ->Arg(101)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

// The histogram paths (0 row, 1 column, 3 coarse-to-fine) and the selection network (2) of the
// rectangle percentile filter forced, by window side, on a 1024 x 1024 image: where the row path's
// O(height) per pixel overtakes the column path's flat cost (the automatic choice switches
// at kRowHistogramMaxHeight[3]), and up to which window the network costs less.
void BM_rank_path(benchmark::State& state) {
    const int side = 1024, window = static_cast<int>(state.range(1));
    const zemath::RankPath paths[4] = {
        zemath::RankPath::row_histogram, zemath::RankPath::column_histogram,
        zemath::RankPath::selection_network, zemath::RankPath::coarse_fine};
    const auto path = paths[state.range(0)];
    const std::vector<unsigned short> original = random_image(side);
    std::vector<unsigned short> image;
    const zemath::FilterRegion region{0, 0, side - 1, side - 1};
    for (auto _ : state) {
        state.PauseTiming();
        image = original;
        state.ResumeTiming();
        benchmark::DoNotOptimize(zemath::run_image_filter(image.data(), side, side,
                                                          zemath::FilterKind::percentile, 50.0,
                                                          window, window, 0, 0.0, region, path));
    }
    state.SetItemsProcessed(state.iterations() * side * side);
}
BENCHMARK(BM_rank_path)
    ->ArgsProduct({{0, 1, 3}, {5, 9, 11, 15, 21, 31, 51, 101}})
    ->ArgsProduct({{2}, {3, 5, 7, 9, 11}})
    ->Unit(benchmark::kMillisecond);

// Reduction of 1e7 standard normal points by groups of 10 and 1000 points: mean (0),
// maximum (2), median (3).
void BM_reduce_n_points(benchmark::State& state) {
    const unsigned n = 10000000, group = static_cast<unsigned>(state.range(0));
    const int method = static_cast<int>(state.range(1));
    std::mt19937_64 gen(20241123);
    std::normal_distribution<double> normal;
    std::vector<double> y(n), out(n / group + 1);
    for (auto& v : y) v = normal(gen);
    for (auto _ : state)
        benchmark::DoNotOptimize(zemath_reducexy_n_points(y.data(), out.data(), n, group, method));
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_reduce_n_points)
    ->ArgsProduct({{10, 1000}, {0, 2, 3}})
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
