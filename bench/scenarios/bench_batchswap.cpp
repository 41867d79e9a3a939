// Swaps over a whole route of the scale-100 demo install (VELMORA_BENCH_SCALE): Swap in ALL
// Scenarios for this route (a locomotive every scenario runs, so every scenario is written), and
// the swap by rules with every coal hopper covered (every scenario written) and with only missing
// stock (every scenario read, one written). Every write is the real one: a temporary file synced
// to the disk, the numbered backup, the journal. Before each run the route's Scenarios folder is
// put back from a pristine copy, outside the timing. Threads: the argument, 0 for one a core.
//
// The route's pristine scenarios are kept beside the install, so a run stopped half way is
// mended by the next.
//
// Measured 2026-11-24 on the 2-core development machine (RelWithDebInfo, load average near 2),
// scale 100, 699 scenarios, one thread against both cores in the same run:
//   SwapInAllScenarios    220 / 280 scenarios/s (698 written)
//   SwapStockEveryHopper  127 / 181 scenarios/s (6,980 vehicles, 698 written)
//   SwapStockMissingOnly 1,550 / 2,690 scenarios/s (one written)
// The writes, each synced to the disk, run one after the other; reading and changing run on
// every core. Figures: see the README (scenarios a second, one thread against all, and the cores
// seen).

#include "benchinstall.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routes.h"
#include "velmora/scenarios/batchswap.h"

#include <benchmark/benchmark.h>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;
using namespace velmora::scenarios;

namespace {

const char* const kCoach = "Heritage\\SteamDays\\RailVehicles\\Passenger\\Mk1\\Mk1_BSK.bin";
const char* const kBlack5 = "Heritage\\SteamDays\\RailVehicles\\Steam\\Black5\\Engine\\Black5.bin";

struct Install {
    fs::path root, pristine, work;
    ScriptedUi ui;
    std::unique_ptr<AppContext> ctx;
    routes::RouteEntry route; // the first route with scenarios of its own folder
    std::size_t scenarioCount = 0;
    std::string loco; // the name of the first vehicle of the route's first scenario

    Install() : root(bench::demoInstall()) {
        work = fs::temp_directory_path() / "velmora-bench-batchswap";
        fs::remove_all(work);
        ctx = std::make_unique<AppContext>(work / "home", fs::path(VELMORA_SHIPPED_DATA), ui);
        StartupOptions options;
        options.railWorks = root;
        options.askForRoot = false;
        runStartup(*ctx, options);
        for (const auto& r : routes::listRoutes(*ctx)) {
            const auto list = routes::listScenarios(*ctx, r);
            if (list.size() > scenarioCount) {
                scenarioCount = list.size();
                route = r;
                const ScenarioDocument d = openScenario(*ctx, r.path / "Scenarios" / list.front().folder);
                loco = d.consists.empty() || d.consists[0].vehicles.empty() ? std::string()
                                                                            : d.consists[0].vehicles[0].name;
            }
        }
        pristine = root.parent_path() / (root.filename().string() + "-scenarios-of-" + route.folder);
        if (!fs::exists(pristine))
            fs::copy(route.path / "Scenarios", pristine, fs::copy_options::recursive);
    }
    // The route's scenarios as generated, and a journal of its own for each run.
    void reset() {
        fs::remove_all(route.path / "Scenarios");
        fs::copy(pristine, route.path / "Scenarios", fs::copy_options::recursive);
        fs::remove_all(work / "home");
        ctx = std::make_unique<AppContext>(work / "home", fs::path(VELMORA_SHIPPED_DATA), ui);
        StartupOptions options;
        options.railWorks = root;
        options.askForRoot = false;
        runStartup(*ctx, options);
    }
    ~Install() {
        reset();
        fs::remove_all(work);
    }
};

Install& install() {
    static Install i;
    return i;
}

ChosenStock stock(Install& i, const char* typed) {
    std::string error;
    return chooseStock(*i.ctx, typed, error).value_or(ChosenStock{});
}

void run(benchmark::State& state, const std::function<BatchResult(Install&, const BatchOptions&)>& batch) {
    Install& i = install();
    BatchOptions options;
    options.threads = static_cast<int>(state.range(0));
    BatchResult last;
    for (auto _ : state) {
        state.PauseTiming();
        i.reset();
        state.ResumeTiming();
        last = batch(i, options);
    }
    if (!last.ok)
        state.SkipWithError(last.message.c_str());
    const double n = static_cast<double>(i.scenarioCount);
    state.counters["scenarios"] = n;
    state.counters["written"] = last.written;
    state.counters["vehicles"] = last.swapped;
    state.counters["cores"] = std::thread::hardware_concurrency();
    state.counters["scenarios/s"] = benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate);
}

void SwapInAllScenarios(benchmark::State& state) {
    run(state, [](Install& i, const BatchOptions& o) {
        return swapInAllScenarios(*i.ctx, i.route, i.loco, stock(i, kBlack5), o);
    });
}

SwapRules rules(Install& i, const std::string& line) {
    const fs::path file = i.work / "rules.csv";
    std::ofstream(file, std::ios::binary | std::ios::trunc) << line << '\n';
    std::vector<std::string> errors;
    return readSwapRules(*i.ctx, file, errors).value_or(SwapRules{});
}

void SwapStockEveryHopper(benchmark::State& state) {
    run(state, [](Install& i, const BatchOptions& o) {
        return swapByRules(
            *i.ctx, i.route,
            rules(i, std::string("DemoRail,Class66Pack,RailVehicles\\Freight\\HTA\\HTA_Coal.xml,") + kCoach),
            o);
    });
}

void SwapStockMissingOnly(benchmark::State& state) {
    run(state, [](Install& i, BatchOptions o) {
        o.missingOnly = true;
        return swapByRules(
            *i.ctx, i.route,
            rules(i,
                  "DemoRail,Class66Pack,*,DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Coal.bin"),
            o);
    });
}

} // namespace

BENCHMARK(SwapInAllScenarios)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(SwapStockEveryHopper)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(SwapStockMissingOnly)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

BENCHMARK_MAIN();
