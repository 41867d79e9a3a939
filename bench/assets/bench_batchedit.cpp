// Batch edits over 10,000 wagon blueprints (Correct Mass/Capacity, Change Loco Name/Localized/Key,
// Change BogieAudioControlName), stored safely: every file converted, changed, converted back and
// written through the write service with its numbered backup, the whole batch one journal
// entry. In blueprints per second, on one thread and on all, in one run.
//
// The wagons are the scale-100 demo install's own wagon blueprints, copied over and over into a
// scratch Assets tree beside it until there are 10,000 (the install itself holds a few hundred
// vehicles); the backups of one run are cleared before the next.

#include "benchinstall.h"
#include "velmora/assets/assetedits.h"
#include "velmora/assets/batchedit.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/rsedits.h"
#include "velmora/assets/soundedits.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <functional>
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

// Times one batch command over the 10,000 wagons. `editFor(run)` gives the edit of each timed
// run; it must change every wagon (a value they do not hold yet), so that every one is written.
void timeBatch(benchmark::State& state, const std::string& command,
               const std::function<assets::RowEditor(AppContext&, const fs::path& root, int run)>& editFor) {
    static std::vector<assets::AssetRow> rows;
    static const fs::path root = wagonInstall(rows);
    ScriptedUi ui;
    AppContext ctx(root.parent_path() / "batch-home", root.parent_path() / "batch-data", ui);
    ctx.setRailWorksOverride(root);
    assets::BatchOptions options;
    options.command = command;
    options.threads = static_cast<int>(state.range(0));
    std::size_t written = 0;
    int run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        clearBackups(root);
        const assets::RowEditor edit = editFor(ctx, root, static_cast<int>(++run * 10 + state.range(0)));
        state.ResumeTiming();
        const auto result = assets::runBatch(ctx, rows, options, edit, nullptr);
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

// Edit Rolling Stock: Correct Mass/Capacity of Selected.
void MassEdit(benchmark::State& state) {
    timeBatch(state, "Correct Mass/Capacity of Selected", [](AppContext&, const fs::path& root, int run) {
        assets::RsSettings settings;
        settings.command = assets::RsCommand::Mass;
        settings.mass = std::to_string(30 + run) + ".5";
        settings.capacity = "50";
        settings.assets = root / "Assets";
        return assets::RowEditor([settings](const assets::RowInput& in) { return assets::editRow(settings, in); });
    });
}

// Edit Assets: Change Loco Name/Localized/Key (names numbered, Keys emptied).
void LocoNameEdit(benchmark::State& state) {
    timeBatch(state, "Change Loco Name/Localized/Key", [](AppContext& ctx, const fs::path&, int run) {
        assets::EditSettings settings;
        settings.command = assets::EditCommand::LocoName;
        settings.typed = "Bench wagon " + std::to_string(run) + " #";
        settings.count = kWagons;
        settings.resolver = &ctx.resolver;
        if (const std::string error = assets::loadEditSettings(ctx, settings); !error.empty())
            std::cerr << error << "\n";
        return assets::RowEditor([settings](const assets::RowInput& in) { return assets::editAssetRow(settings, in); });
    });
}

// Update Sounds: Change BogieAudioControlName, a bogie sound the wagons do not have yet.
void BogieSoundEdit(benchmark::State& state) {
    timeBatch(state, "Change BogieAudioControlName", [](AppContext& ctx, const fs::path& root, int run) {
        assets::SoundSettings settings;
        settings.command = assets::SoundCommand::BogieName;
        const auto& words = assets::bogieSounds();
        settings.bogie = words[static_cast<std::size_t>(run) % words.size()];
        settings.assets = root / "Assets";
        if (const std::string error = assets::loadSoundSettings(ctx, settings); !error.empty())
            std::cerr << error << "\n";
        return assets::RowEditor([settings](const assets::RowInput& in) { return assets::editSoundRow(settings, in); });
    });
}

} // namespace

BENCHMARK(MassEdit)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(LocoNameEdit)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(BogieSoundEdit)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
