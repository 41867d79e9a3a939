// What packaging the scale-100 demo route with its assets costs: the route folder, its template
// and every file its check's reports name, copied through the write service (cloned where the
// file system allows) with the manifest hashed, against `cp -a` of the same files in the same
// iteration. Prints both times and their ratio, with the cores seen.

#include "benchinstall.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/userinterface.h"
#include "velmora/packaging/packaging.h"
#include "velmora/routes/routecheck.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

void BM_PackageRouteWithAssets(benchmark::State& state) {
    const fs::path root = bench::demoInstall();
    const fs::path work = fs::path(VELMORA_BENCH_DIR) / "packaging";
    fs::remove_all(work);
    ScriptedUi ui;
    AppContext ctx(work / "home", work / "data", ui);
    ctx.setRailWorksOverride(root);
    const auto routes = routes::listRoutes(ctx);
    const routes::RouteEntry* route = routes::findRoute(routes, "Demo Valley Line");
    if (!route) {
        state.SkipWithError("no Demo Valley Line in the demo install");
        return;
    }
    routes::RouteCheckOptions deep;
    deep.deep = true;
    routes::saveRouteReports(ctx,
                             routes::RouteCheck(ctx, *route, routes::listScenarios(ctx, *route)).run(deep));

    packaging::PackageOptions options;
    options.base = work / "packages";
    const fs::path copies = work / "cp-a";
    double packageSeconds = 0, cpSeconds = 0;
    packaging::PackageReport report;
    for (auto _ : state) {
        fs::remove_all(options.base);
        fs::remove_all(copies);
        packaging::PackageState packageState;
        const auto start = std::chrono::steady_clock::now();
        {
            JournalCommand entry(&ctx.journal(), "package route");
            report = packaging::packageRoute(ctx, *route, packageState, options, nullptr, true);
        }
        const double made = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!report.ok() || !report.problems.empty()) {
            state.SkipWithError("the package was not made whole");
            return;
        }
        // The yardstick: the same source files copied by the system's cp, keeping their folders.
        std::string list;
        for (const auto& row : report.manifest)
            if (row.path.rfind("RailWorks/", 0) == 0)
                list += row.path.substr(10) + '\n';
        std::ofstream(work / "files.txt") << list;
        fs::create_directories(copies);
        const std::string command = "cd '" + root.string() + "' && xargs -d '\\n' -a '" +
                                    (work / "files.txt").string() + "' cp -a --parents -t '" +
                                    copies.string() + "'";
        const auto cpStart = std::chrono::steady_clock::now();
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("cp -a failed");
            return;
        }
        const double copied =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - cpStart).count();
        state.SetIterationTime(made);
        packageSeconds += made;
        cpSeconds += copied;
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["files"] = static_cast<double>(report.copied.size());
    state.counters["MB"] = static_cast<double>(report.bytes) / 1e6;
    state.counters["package_ms"] = 1000 * packageSeconds / n;
    state.counters["cp_a_ms"] = 1000 * cpSeconds / n;
    state.counters["ratio"] = cpSeconds > 0 ? packageSeconds / cpSeconds : 0;
    state.counters["cores"] = static_cast<double>(std::thread::hardware_concurrency());
    fs::remove_all(options.base);
    fs::remove_all(copies);
}

} // namespace

BENCHMARK(BM_PackageRouteWithAssets)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);
BENCHMARK_MAIN();
