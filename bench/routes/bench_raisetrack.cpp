// Raising the track of the first route of a scaled demo install (scale from
// VELMORA_BENCH_SCALE, 100 by default): Tracks.bin decoded, every height changed, encoded and
// written through the write service with its backup and journal record, in heights per second.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "benchinstall.h"
#include "velmora/routes/routeedits.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

using velmora::bench::demoInstall;

void RaiseTrack(benchmark::State& state) {
    const fs::path root = demoInstall();
    ScriptedUi ui;
    const fs::path home = fs::temp_directory_path() / "velmora-bench-raisetrack";
    fs::remove_all(home);
    AppContext ctx(home, fs::temp_directory_path(), ui);
    StartupOptions options;
    options.railWorks = root;
    options.askForRoot = false;
    runStartup(ctx, options);
    const auto routes = routes::listRoutes(ctx);
    if (routes.empty()) {
        state.SkipWithError("no route");
        return;
    }
    // A copy of the route's network, so that the install stays as it was generated.
    routes::RouteEntry route = routes.front();
    route.path = home / "route";
    fs::create_directories(route.path / "Networks");
    fs::copy_file(routes.front().path / "Networks" / "Tracks.bin", route.path / "Networks" / "Tracks.bin");
    const auto bytes = static_cast<double>(fs::file_size(route.path / "Networks" / "Tracks.bin"));
    routes::EditReport report;
    double sign = 1;
    for (auto _ : state) {
        report = routes::raiseTrack(ctx, route, {0.25 * sign, 0.1 * sign, false});
        if (!report.ok) {
            state.SkipWithError(report.message.c_str());
            return;
        }
        sign = -sign;
        state.PauseTiming();
        for (const auto& e : fs::directory_iterator(route.path / "Networks"))
            if (e.path().filename() != "Tracks.bin")
                fs::remove(e.path());
        state.ResumeTiming();
    }
    state.counters["heights"] = static_cast<double>(report.count);
    state.counters["heights/s"] =
        benchmark::Counter(static_cast<double>(report.count), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["MB/s"] = benchmark::Counter(bytes / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["cores"] = static_cast<double>(std::thread::hardware_concurrency());
}

} // namespace

BENCHMARK(RaiseTrack)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);
