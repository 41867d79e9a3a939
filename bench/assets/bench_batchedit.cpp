// A rolling-stock batch edit (Correct Mass/Capacity) over 10,000 wagon blueprints, stored
// safely: every file converted, changed, converted back and written through the write service
// with its numbered backup, the whole batch one journal entry. In blueprints per second, on one
// thread and on all, in one run.
//
// The wagons are the scale-100 demo install's own wagon blueprints, copied over and over into a
// scratch Assets tree beside it until there are 10,000 (the install itself holds a few hundred
// vehicles); the backups of one run are cleared before the next.

#include "benchinstall.h"
#include "velmora/assets/batchedit.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

constexpr std::size_t kWagons = 10000;

// The scratch install: RailWorks.exe, and Assets/Bench/Wagons/... with the copied wagons.
fs::path wagonInstall(std::vector<assets::AssetRow>& rows) {
    const fs::path demo = bench::demoInstall();
    const fs::path root = demo.parent_path() / "batch-wagons";
    const fs::path folder = root / "Assets/Bench/Wagons/RailVehicles/Freight";
    std::vector<fs::path> sources;
    for (const auto& e : fs::recursive_directory_iterator(demo / "Assets")) {
        if (!e.is_regular_file() || e.path().extension() != ".bin" ||
            e.path().string().find("RailVehicles") == std::string::npos)
            continue;
        const std::string head = ReadTextFile(e.path()).substr(0, 4096);
        if (head.find("cWagonBlueprint") != std::string::npos)
            sources.push_back(e.path());
    }
    if (sources.empty()) {
        std::cerr << "the demo install has no wagon blueprints\n";
        std::exit(2);
    }
    if (!fs::exists(root / "RailWorks.exe")) {
        std::cerr << "Copying " << kWagons << " wagon blueprints into " << root << " ...\n";
        fs::create_directories(root / "Content/Routes");
        std::ofstream(root / "RailWorks.exe") << "";
        for (std::size_t i = 0; i < kWagons; ++i) {
            const fs::path to = folder / ("W" + std::to_string(i / 100)) / ("Wagon" + std::to_string(i) + ".bin");
            fs::create_directories(to.parent_path());
            fs::copy_file(sources[i % sources.size()], to, fs::copy_options::overwrite_existing);
        }
    }
    rows.clear();
    for (std::size_t i = 0; i < kWagons; ++i) {
        assets::AssetRow r;
        r.provider = "Bench";
        r.product = "Wagons";
        r.path = "RailVehicles\\Freight\\W" + std::to_string(i / 100) + "\\Wagon" + std::to_string(i) + ".bin";
        rows.push_back(r);
    }
    return root;
}

// The old files kept by the last run are taken away, so each run finds the .bak names free.
void clearBackups(const fs::path& root) {
    std::vector<fs::path> old;
    for (const auto& e : fs::recursive_directory_iterator(root / "Assets"))
        if (e.path().extension().string().rfind(".bak", 0) == 0)
            old.push_back(e.path());
    for (const auto& p : old)
        fs::remove(p);
}

void MassEdit(benchmark::State& state) {
    static std::vector<assets::AssetRow> rows;
    static const fs::path root = wagonInstall(rows);
    ScriptedUi ui;
    AppContext ctx(root.parent_path() / "batch-home", root.parent_path() / "batch-data", ui);
    ctx.setRailWorksOverride(root);
    assets::RsSettings settings;
    settings.command = assets::RsCommand::Mass;
    settings.mass = "31.5";
    settings.capacity = "50";
    settings.assets = root / "Assets";
    assets::BatchOptions options;
    options.command = "Correct Mass/Capacity of Selected";
    options.threads = static_cast<int>(state.range(0));
    std::size_t written = 0;
    int run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        clearBackups(root);
        // A value the wagons do not hold yet, so that every one of them is written.
        settings.mass = std::to_string(30 + ++run) + "." + std::to_string(state.range(0)) + "5";
        state.ResumeTiming();
        const auto result = assets::runBatch(
            ctx, rows, options, [&](const assets::RowInput& in) { return assets::editRow(settings, in); }, nullptr);
        written = result.rowsWritten;
        if (!result.error.empty() || written != rows.size()) {
            const std::string first = result.passedOver.empty() ? "" : ", the first: " + result.passedOver[0].reason;
            state.SkipWithError((result.error + " " + std::to_string(result.passedOver.size()) + " passed over" + first).c_str());
            break;
        }
    }
    state.counters["blueprints"] = static_cast<double>(written);
    state.counters["cores"] = static_cast<double>(std::thread::hardware_concurrency());
    state.counters["blueprints/s"] =
        benchmark::Counter(static_cast<double>(written), benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(MassEdit)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
