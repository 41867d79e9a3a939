// Add to List over the whole Assets tree of a scaled demo install, in blueprints per second.
// The install is generated once into the build folder (scale from VELMORA_BENCH_SCALE, 100 by
// default) and reused by later runs.

#include "velmora/assets/assetlist.h"
#include "benchinstall.h"

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

} // namespace

BENCHMARK(AddToList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

BENCHMARK_MAIN();
