// The physics grids and the simulation tables, one document at a time as the screen works:
// a diesel's two grids opened (both documents decoded and their rows read), one value changed
// and the simulation encoded again, and a curve table read and encoded again. On the demo
// install's Class 66, generated once into a scratch folder. One thread: each is one document.

#include "velmora/core/convert.h"
#include "velmora/core/paths.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/physics/dcsvtable.h"
#include "velmora/physics/physicsdoc.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <iostream>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

const fs::path& install() {
    static const fs::path root = [] {
        const fs::path r = fs::temp_directory_path() / ("velmora-bench-physics-" + std::to_string(::getpid()));
        fs::remove_all(r);
        if (!demo::generateDemoInstall(r, {}).ok) {
            std::cerr << "cannot generate the demo install\n";
            std::exit(2);
        }
        std::atexit([] { fs::remove_all(fs::temp_directory_path() / ("velmora-bench-physics-" + std::to_string(::getpid()))); });
        return r;
    }();
    return root;
}

fs::path engine() { return install() / "Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin"; }

void BM_OpenBothGrids(benchmark::State& state) {
    PathResolver resolver;
    std::size_t rows = 0;
    const fs::path file = engine(), root = install(); // the install is generated before the clock runs
    for (auto _ : state) {
        physics::PhysicsSet set;
        physics::openPhysics(file, root, resolver, set);
        rows = set.vehicle.rows.size() + set.simulation.rows.size();
        benchmark::DoNotOptimize(rows);
    }
    state.counters["rows"] = static_cast<double>(rows);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_OpenBothGrids)->Unit(benchmark::kMicrosecond);

void BM_ChangeAndEncodeSimulation(benchmark::State& state) {
    PathResolver resolver;
    physics::PhysicsSet set;
    physics::openPhysics(engine(), install(), resolver, set);
    const std::size_t row = physics::findRows(set.simulation.rows, "DynamicBrakesSystem/MaxForce").front();
    int value = 200;
    for (auto _ : state) {
        physics::PhysicsDocument doc = set.simulation;
        physics::setValue(doc, row, std::to_string(++value % 400));
        std::string bin;
        xmlTextToBin(doc.xml, bin);
        benchmark::DoNotOptimize(bin);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ChangeAndEncodeSimulation)->Unit(benchmark::kMicrosecond);

void BM_TableReadAndEncode(benchmark::State& state) {
    const fs::path table = engine().parent_path() / "Simulation/Class66_EWS_TractiveEffortVsThrottle.dcsv";
    for (auto _ : state) {
        physics::DcsvTable t;
        physics::readTable(table, t);
        physics::setPoint(t, 4, t.points[4].x, "0.45");
        std::string bin;
        xmlTextToBin(t.xml, bin);
        benchmark::DoNotOptimize(bin);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TableReadAndEncode)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
