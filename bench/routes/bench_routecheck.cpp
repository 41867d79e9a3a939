// The whole route check (tiles, then shapes, textures and sounds) of the first route of a
// scaled demo install (scale from VELMORA_BENCH_SCALE, 100 by default), in tiles per second.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "benchinstall.h"
#include "velmora/routes/routecheck.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

using velmora::bench::demoInstall;

void RouteCheck(benchmark::State& state) {
    const fs::path root = demoInstall();
    ScriptedUi ui;
    AppContext ctx(fs::temp_directory_path() / "velmora-bench-routes", fs::temp_directory_path(), ui);
    StartupOptions options;
    options.railWorks = root;
    options.askForRoot = false;
    runStartup(ctx, options);
    const auto routes = routes::listRoutes(ctx);
    if (routes.empty()) {
        state.SkipWithError("no route");
        return;
    }
    const auto scenarios = routes::listScenarios(ctx, routes.front());
    routes::RouteCheckOptions check;
    check.deep = true;
    check.threads = static_cast<int>(state.range(0));
    routes::RouteCheckResult result;
    for (auto _ : state) {
        result = routes::RouteCheck(ctx, routes.front(), scenarios).run(check);
        benchmark::DoNotOptimize(result.assetsUnique.size());
    }
    state.counters["tiles"] = static_cast<double>(result.tiles);
    state.counters["blueprints"] = static_cast<double>(result.assetsUnique.size());
    state.counters["shapes"] = static_cast<double>(result.geoFiles.size());
    state.counters["tiles/s"] =
        benchmark::Counter(static_cast<double>(result.tiles), benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(RouteCheck)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

BENCHMARK_MAIN();
