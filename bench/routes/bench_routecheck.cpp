// The whole route check (tiles, then shapes, textures and sounds) of the first route of a
// scaled demo install (scale from VELMORA_BENCH_SCALE, 100 by default), in tiles per second.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "benchinstall.h"
#include "benchscaling.h"
#include "velmora/routes/routecheck.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

using velmora::bench::demoInstall;

// The context started on the demo install, and the first route with its scenarios.
struct FirstRoute {
    ScriptedUi ui;
    AppContext ctx{fs::temp_directory_path() / "velmora-bench-routes", fs::temp_directory_path(), ui};
    std::vector<routes::RouteEntry> all;
    std::vector<routes::ScenarioEntry> scenarios;

    FirstRoute() {
        StartupOptions options;
        options.railWorks = demoInstall();
        options.askForRoot = false;
        runStartup(ctx, options);
        all = routes::listRoutes(ctx);
        if (!all.empty())
            scenarios = routes::listScenarios(ctx, all.front());
    }
    routes::RouteCheckResult check(int threads) {
        routes::RouteCheckOptions options;
        options.deep = true;
        options.threads = threads;
        return routes::RouteCheck(ctx, all.front(), scenarios).run(options);
    }
};

void RouteCheck(benchmark::State& state) {
    FirstRoute route;
    if (route.all.empty()) {
        state.SkipWithError("no route");
        return;
    }
    routes::RouteCheckResult result;
    for (auto _ : state) {
        result = route.check(static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(result.assetsUnique.size());
    }
    state.counters["tiles"] = static_cast<double>(result.tiles);
    state.counters["blueprints"] = static_cast<double>(result.assetsUnique.size());
    state.counters["shapes"] = static_cast<double>(result.geoFiles.size());
    state.counters["tiles/s"] =
        benchmark::Counter(static_cast<double>(result.tiles), benchmark::Counter::kIsIterationInvariantRate);
}

// One thread against one per core, alternating in one run, best of three rounds each: the
// ratio is the gain of the other cores; the spread shows how much a shared machine disturbed it.
void RouteCheckScaling(benchmark::State& state) {
    FirstRoute route;
    if (route.all.empty()) {
        state.SkipWithError("no route");
        return;
    }
    const double load = velmora::bench::loadAverage();
    velmora::bench::Scaling s;
    for (auto _ : state)
        s = velmora::bench::measureScaling([&](int threads) { benchmark::DoNotOptimize(route.check(threads).tiles); }, 3);
    velmora::bench::reportScaling(state, s, load);
}

} // namespace

BENCHMARK(RouteCheckScaling)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(RouteCheck)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

BENCHMARK_MAIN();
