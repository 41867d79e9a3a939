// Add to List over the whole Assets tree of a scaled demo install, in blueprints per second.
// The install is generated once into the build folder (scale from VELMORA_BENCH_SCALE, 100 by
// default) and reused by later runs.

#include "velmora/assets/assetlist.h"
#include "benchinstall.h"
#include "benchscaling.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;

namespace {

using velmora::bench::demoInstall;

void AddToList(benchmark::State& state) {
    static const fs::path root = demoInstall();
    velmora::assets::AssetListOptions options;
    options.threads = static_cast<int>(state.range(0));
    long converted = 0;
    std::size_t rows = 0;
    for (auto _ : state) {
        const auto result = velmora::assets::buildAssetList(root / "Assets", options);
        converted = result.converted;
        rows = result.rows.size();
        benchmark::DoNotOptimize(rows);
    }
    state.counters["blueprints"] = static_cast<double>(converted);
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["blueprints/s"] =
        benchmark::Counter(static_cast<double>(converted), benchmark::Counter::kIsIterationInvariantRate);
}

// One thread against one per core, alternating in one run: the ratio is the gain of the
// second core (and the cores the run saw and the load it met say what the machine allowed).
void AddToListScaling(benchmark::State& state) {
    static const fs::path root = demoInstall();
    const double load = velmora::bench::loadAverage();
    velmora::bench::Scaling s;
    for (auto _ : state) {
        s = velmora::bench::measureScaling(
            [&](int threads) {
                velmora::assets::AssetListOptions options;
                options.threads = threads;
                benchmark::DoNotOptimize(velmora::assets::buildAssetList(root / "Assets", options).rows.size());
            },
            3);
    }
    velmora::bench::reportScaling(state, s, load);
}

} // namespace

BENCHMARK(AddToListScaling)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(AddToList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

BENCHMARK_MAIN();
