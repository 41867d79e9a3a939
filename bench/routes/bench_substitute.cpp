// A substitution over every scenery tile of the first route of the scaled demo install, written
// safely (each tile staged, synced, its old content kept as a backup, one journal entry), in
// tiles per second, on one thread and on every core.
//
// Before the timing every item of the route's scenery is made one blueprint, so that each timed
// substitution (that blueprint for another, then back) changes every tile.

#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "benchinstall.h"
#include "velmora/routes/routecheck.h"
#include "velmora/routes/substitute.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <iostream>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

using velmora::bench::demoInstall;

const char* const kFirst = "Heritage/SteamDays/Scenery/Generated/Set0/Obj1.xml";
const char* const kSecond = "Heritage/SteamDays/Scenery/Generated/Set0/Obj2.xml";

struct Bench {
    ScriptedUi ui;
    AppContext ctx{fs::temp_directory_path() / "velmora-bench-substitute", fs::temp_directory_path(), ui};
    routes::RouteEntry route;
    bool ok = false;

    Bench() {
        StartupOptions options;
        options.railWorks = demoInstall();
        options.askForRoot = false;
        runStartup(ctx, options);
        const auto all = routes::listRoutes(ctx);
        if (all.empty())
            return;
        route = all.front();
        // The backups of earlier runs go, so that every run has its backup names free.
        std::error_code ec;
        for (const auto& e : fs::directory_iterator(route.path / "Scenery", ec))
            if (e.path().filename().string().find(".bin.bak") != std::string::npos)
                fs::remove(e.path(), ec);
        // Every item placed made the first blueprint (once; later runs find it done).
        const auto check = routes::RouteCheck(ctx, route, {}).run({});
        std::vector<routes::Substitution> all_;
        const auto first = *routes::parseAssetName(kFirst);
        std::vector<std::string> used = check.assetsUnique;
        for (const auto& m : check.missing)
            used.push_back(m.path);
        for (const auto& u : used)
            if (auto n = routes::assetNameFromMissing(u); n && foldName(n->text()) != foldName(first.text()))
                all_.push_back({*n, first});
        routes::TileEditOptions o;
        o.command = "bench: one blueprint everywhere";
        const auto r = routes::substituteInTiles(ctx, route, all_, o);
        ok = r.ok();
        if (!ok)
            std::cerr << r.error << '\n';
    }
};

Bench& bench() {
    static Bench b;
    return b;
}

void SubstituteEveryTile(benchmark::State& state) {
    Bench& b = bench();
    if (!b.ok) {
        state.SkipWithError("no route to substitute in");
        return;
    }
    const routes::AssetName first = *routes::parseAssetName(kFirst), second = *routes::parseAssetName(kSecond);
    routes::TileEditOptions o;
    o.threads = static_cast<int>(state.range(0));
    o.command = "bench substitution";
    std::size_t changed = 0, elements = 0, read = 0;
    bool forth = true;
    for (auto _ : state) {
        const auto r = routes::substituteInTiles(b.ctx, b.route, {{forth ? first : second, forth ? second : first}}, o);
        if (!r.ok() || !r.written) {
            state.SkipWithError(r.error.c_str());
            return;
        }
        changed = r.changed.size();
        elements = r.elements();
        read = r.tilesRead;
        forth = !forth;
    }
    // Back to the first blueprint, for the next run.
    if (!forth)
        routes::substituteInTiles(b.ctx, b.route, {{second, first}}, o);
    state.counters["tiles"] = static_cast<double>(read);
    state.counters["written"] = static_cast<double>(changed);
    state.counters["elements"] = static_cast<double>(elements);
    state.counters["cores"] = static_cast<double>(std::thread::hardware_concurrency());
    state.counters["tiles/s"] =
        benchmark::Counter(static_cast<double>(changed), benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(SubstituteEveryTile)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(4);
