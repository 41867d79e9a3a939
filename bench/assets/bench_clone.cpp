// Clone Selected rolling-stock on a vehicle folder of 200 files (a blueprint, shapes and
// scripts of a few KB, textures of 100 KB to 1 MB), in MB/s, beside a plain std::filesystem::copy
// of the same folder, without and with a sync: the disk's own speed for the same bytes without
// backups, hashes or journal.

#include "velmora/assets/clone.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/userinterface.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const char* const kBlueprint = R"(<?xml version="1.0" encoding="utf-8"?>
<cBlueprintLoader xmlns:d="http://www.kuju.com/TnT/2003/Delta" d:version="1.0">
	<Blueprint>
		<cWagonBlueprint>
			<Name d:type="cDeltaString">Bench wagon</Name>
			<RenderComponent>
				<cAnimObjectRenderBlueprint>
					<GeometryID d:type="cDeltaString">Bench\Pack\RailVehicles\Wagon\Body\Wagon</GeometryID>
				</cAnimObjectRenderBlueprint>
			</RenderComponent>
		</cWagonBlueprint>
	</Blueprint>
</cBlueprintLoader>
)";

fs::path g_root; // taken away at exit

struct Folder {
    fs::path root;    // the simulator root
    fs::path vehicle; // the folder that is cloned
    std::uint64_t bytes = 0;
};

// The install, made once per run in the temporary folder.
const Folder& benchFolder() {
    static Folder f = [] {
        Folder made;
        made.root = fs::temp_directory_path() / ("velmora-bench-clone-" + std::to_string(::getpid()));
        made.vehicle = made.root / "Assets/Bench/Pack/RailVehicles/Wagon";
        fs::remove_all(made.root);
        fs::create_directories(made.vehicle / "Body/Textures");
        std::ofstream(made.root / "RailWorks.exe") << "";
        std::string bin;
        if (!velmora::xmlTextToBin(kBlueprint, bin)) {
            std::cerr << "cannot encode the bench blueprint\n";
            std::exit(2);
        }
        std::ofstream(made.vehicle / "Body/Wagon.bin", std::ios::binary) << bin;
        made.bytes = bin.size();
        std::mt19937 random(7);
        for (int i = 1; i < 200; ++i) {
            // Every fourth file a shape, script or table of a few KB, the rest textures.
            const bool small = i % 4 == 0;
            const std::size_t size = small ? 2048 + random() % 18432 : 100 * 1024 + random() % (924 * 1024);
            const fs::path file = made.vehicle / (small ? "Body" : "Body/Textures") /
                                  ("part" + std::to_string(i) + (small ? ".GeoPcDx" : ".TgPcDx"));
            std::string bytes(size, '\0');
            for (auto& c : bytes)
                c = static_cast<char>(random());
            std::ofstream(file, std::ios::binary) << bytes;
            made.bytes += size;
        }
        g_root = made.root;
        std::atexit([] { fs::remove_all(g_root); });
        return made;
    }();
    return f;
}

void CloneVehicleFolder(benchmark::State& state) {
    const Folder& f = benchFolder();
    velmora::ScriptedUi ui;
    const fs::path home = f.root.parent_path() / (f.root.filename().string() + "-home");
    velmora::AppContext ctx(home, home / "data", ui);
    velmora::StartupOptions o;
    o.railWorks = f.root;
    o.askForRoot = false;
    velmora::runStartup(ctx, o);
    velmora::assets::AssetRow row{
        "Bench", "Pack", "RailVehicles\\Wagon\\Body\\Wagon.bin", "Bench wagon", "", "", "", ""};
    int n = 0;
    for (auto _ : state) {
        const std::string target = "Bench\\Pack\\RailVehicles\\Clone" + std::to_string(++n);
        const auto r = velmora::assets::cloneRow(ctx, row, velmora::assets::CloneKind::Vehicle,
                                                 {"Wagon2", "Bench wagon 2", target, ""}, &ui);
        if (!r.ok || r.written.size() != 200)
            state.SkipWithError(r.message.c_str());
        state.PauseTiming();
        fs::remove_all(f.root / "Assets/Bench/Pack/RailVehicles" / ("Clone" + std::to_string(n)));
        state.ResumeTiming();
    }
    fs::remove_all(home);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * f.bytes));
    state.counters["files"] = 200;
    state.counters["MB"] = static_cast<double>(f.bytes) / 1e6;
}

// The same folder copied by std::filesystem::copy; with the argument 1 followed by sync(), so
// that the bytes are on the disk as the clone's are.
void PlainFilesystemCopy(benchmark::State& state) {
    const Folder& f = benchFolder();
    const fs::path target = f.root / "plain";
    for (auto _ : state) {
        fs::copy(f.vehicle, target, fs::copy_options::recursive);
        if (state.range(0))
            ::sync();
        state.PauseTiming();
        fs::remove_all(target);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * f.bytes));
    state.counters["MB"] = static_cast<double>(f.bytes) / 1e6;
}

} // namespace

BENCHMARK(CloneVehicleFolder)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(PlainFilesystemCopy)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
