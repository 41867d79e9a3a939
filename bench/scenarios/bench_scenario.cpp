// Opening a scenario (decoding Scenario.bin, reading the properties, the consist and item passes,
// the missing-stock test of every vehicle) on the scale-100 demo install (VELMORA_BENCH_SCALE):
// the largest scenario of the install, a scenario of 200 vehicles made from it, and
// `scenario show --json` over every scenario of every route.
//
// Measured on the shared 2-core development machine (2 x 2.1 GHz, RelWithDebInfo, load average
// near 6 from another build, so real time runs about three times the CPU time), scale 100:
//   OpenLargest (13 vehicles)            2.1 ms real, 0.7 ms CPU per scenario
//   Open200Vehicles (208 vehicles)      26.9 ms real, 9.3 ms CPU per scenario (aim: under 50 ms)
//   ShowEveryScenario (1,397 scenarios)  8.6 ms real, 2.8 ms CPU per scenario: 116 scenarios/s
//                                        real, about 360/s of CPU (aim: at least 200/s). Most of
//                                        a show is the command's start-up and route listing.
// The same machine when quiet (load average below 1), 2026-11-24, scale 100:
//   OpenLargest 0.61 ms; Open200Vehicles 9.3 ms; ShowEveryScenario 4.05 s for 1,397 scenarios,
//   2.9 ms each: 345 scenarios/s.

#include "benchinstall.h"
#include "cli.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routes.h"
#include "velmora/scenarios/scenario.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

struct Install {
    fs::path root;
    ScriptedUi ui;
    std::unique_ptr<AppContext> ctx;
    std::vector<std::pair<routes::RouteEntry, routes::ScenarioEntry>> scenarios;
    fs::path largest; // the scenario folder with the largest Scenario.bin

    Install() : root(bench::demoInstall()) {
        ctx = std::make_unique<AppContext>(fs::temp_directory_path() / "velmora-bench-scenarios", fs::temp_directory_path(), ui);
        StartupOptions options;
        options.railWorks = root;
        options.askForRoot = false;
        runStartup(*ctx, options);
        std::uintmax_t size = 0;
        for (const auto& r : routes::listRoutes(*ctx))
            for (const auto& s : routes::listScenarios(*ctx, r)) {
                scenarios.emplace_back(r, s);
                const fs::path folder = r.path / "Scenarios" / s.folder;
                std::error_code ec;
                if (const auto n = fs::file_size(folder / "Scenario.bin", ec); !ec && n > size) {
                    size = n;
                    largest = folder;
                }
            }
    }
};

Install& install() {
    static Install i;
    return i;
}

void report(benchmark::State& state, std::size_t scenariosPerIteration, std::size_t vehicles) {
    const double n = static_cast<double>(scenariosPerIteration);
    state.counters["vehicles"] = static_cast<double>(vehicles);
    state.counters["scenarios/s"] = benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["ms/scenario"] =
        benchmark::Counter(n / 1000.0, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::size_t vehicleCount(const scenarios::ScenarioDocument& d) {
    std::size_t n = 0;
    for (const auto& c : d.consists)
        n += c.vehicles.size();
    return n;
}

void OpenLargest(benchmark::State& state) {
    Install& i = install();
    scenarios::ScenarioDocument d;
    for (auto _ : state) {
        d = scenarios::openScenario(*i.ctx, i.largest);
        benchmark::DoNotOptimize(d.consists.data());
    }
    if (!d.ok())
        state.SkipWithError(d.error.c_str());
    report(state, 1, vehicleCount(d));
}

// The largest scenario with its consists repeated until it holds 200 vehicles.
void Open200Vehicles(benchmark::State& state) {
    Install& i = install();
    const fs::path folder = fs::temp_directory_path() / "velmora-bench-scenario-200";
    fs::remove_all(folder);
    fs::copy(i.largest, folder, fs::copy_options::recursive);
    std::string xml;
    if (!binToXmlText(folder / "Scenario.bin", xml)) {
        state.SkipWithError("cannot decode the largest scenario");
        return;
    }
    const std::size_t first = xml.find("<cConsist");
    const std::size_t last = xml.rfind("</cConsist>") + 11;
    const std::string consists = xml.substr(first, last - first);
    std::string grown = xml.substr(0, last);
    auto vehicles = [&] {
        std::size_t n = 0;
        for (std::size_t at = grown.find("<cOwnedEntity"); at != std::string::npos; at = grown.find("<cOwnedEntity", at + 1))
            ++n;
        return n;
    };
    while (vehicles() < 200)
        grown += "\n" + consists;
    grown += xml.substr(last);
    std::string bin;
    if (!xmlTextToBin(grown, bin)) {
        state.SkipWithError("cannot encode the grown scenario");
        return;
    }
    std::ofstream(folder / "Scenario.bin", std::ios::binary | std::ios::trunc) << bin;
    scenarios::ScenarioDocument d;
    for (auto _ : state) {
        d = scenarios::openScenario(*i.ctx, folder);
        benchmark::DoNotOptimize(d.consists.data());
    }
    if (!d.ok())
        state.SkipWithError(d.error.c_str());
    report(state, 1, vehicleCount(d));
    fs::remove_all(folder);
}

// The command line's show, JSON and all, over every scenario of the install.
void ShowEveryScenario(benchmark::State& state) {
    Install& i = install();
    const std::string home = (fs::temp_directory_path() / "velmora-bench-scenarios").string();
    for (auto _ : state) {
        for (const auto& [route, scenario] : i.scenarios) {
            std::ostringstream out, err;
            cli::run({"--home", home, "--railworks", i.root.string(), "scenario", "show", route.folder, scenario.folder,
                      "--json"},
                     out, err);
            benchmark::DoNotOptimize(out.str().size());
        }
    }
    report(state, i.scenarios.size(), 0);
}

} // namespace

BENCHMARK(OpenLargest)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Open200Vehicles)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ShowEveryScenario)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

BENCHMARK_MAIN();
