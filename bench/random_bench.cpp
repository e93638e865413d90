// Throughput of the random-sample exports at 1e7 samples (each call includes its own
// fresh seeding, a few microseconds), in CPU time like the peer (the machine may be shared).
// bench/table/families/random.py draws the same laws with the same parameters through NumPy's
// default generator (PCG64) for the ratio.
#include <benchmark/benchmark.h>

#include <vector>

#include "zemath/random.h"

namespace {

constexpr int kCount = 10000000;

void BM_normrnd(benchmark::State& state) {
    std::vector<double> out(kCount);
    for (auto _ : state) {
        benchmark::DoNotOptimize(normrnd(out.data(), kCount, 0.0, 1.0));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_gamrnd(benchmark::State& state) {
    std::vector<double> out(kCount);
    const double shape = static_cast<double>(state.range(0)) / 10.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(gamrnd(out.data(), kCount, shape, 1.0));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_binornd(benchmark::State& state) {
    std::vector<int> out(kCount);
    const auto trials = static_cast<int>(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(binornd(out.data(), kCount, trials, 0.3));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

}  // namespace

BENCHMARK(BM_normrnd)->Unit(benchmark::kMillisecond);
// Shape 2.5 (Marsaglia-Tsang directly) and 0.5 (with the U^(1/a) boost).
BENCHMARK(BM_gamrnd)->Arg(25)->Arg(5)->Unit(benchmark::kMillisecond);
// 20 trials (inversion) and 1000 trials (BTRD), p = 0.3.
BENCHMARK(BM_binornd)->Arg(20)->Arg(1000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
