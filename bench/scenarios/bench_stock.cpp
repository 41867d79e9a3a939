// The Available Stock walk over the whole Assets tree of the scale-100 demo install, against
// Add to List over the same tree, on one thread and on all cores. The install is generated
// once into the build folder (scale from VELMORA_BENCH_SCALE, 100 by default) and reused.
//
// Figures (RelWithDebInfo, scale 100: 24.5k blueprints opened by each walk, 16 stock items in
// the six categories; a 2-core machine shared with another build, so single runs vary by 30%;
// "0" is all cores, i.e. 2 threads here):
//   StockList/1            2020 ms   12.1k blueprints/s
//   StockList/0            2702 ms    9.1k blueprints/s
//   AddToList/1            2800 ms    8.8k blueprints/s
//   AddToList/0            2289 ms   10.7k blueprints/s
//   StockOverAddToList/1   stock 2856 ms, Add to List 2524 ms: ratio 1.13
//   StockOverAddToList/0   stock 1863 ms, Add to List 1998 ms: ratio 0.93
// The ratio, both walks timed in the same iteration, is the figure to trust.

#include "velmora/assets/assetlist.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/scenarios/stocklist.h"
#include "benchinstall.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

using bench::demoInstall;

// The six categories the stock list command walks by default, in one pass.
const std::vector<scenarios::StockCategory> kCategories = {
    scenarios::StockCategory::Diesel,    scenarios::StockCategory::Electric, scenarios::StockCategory::Steam,
    scenarios::StockCategory::Passenger, scenarios::StockCategory::Freight,  scenarios::StockCategory::Tender};

struct Program {
    ScriptedUi ui;
    std::unique_ptr<AppContext> ctx;
};

Program& program(const fs::path& root) {
    static Program p = [&] {
        Program made;
        const fs::path home = fs::temp_directory_path() / "velmora-bench-stock-home";
        made.ctx = std::make_unique<AppContext>(home, home / "data", made.ui);
        made.ctx->setRailWorksOverride(root);
        return made;
    }();
    return p;
}

double stockWalk(const fs::path& root, int threads, std::size_t& items, long& tested) {
    const auto start = std::chrono::steady_clock::now();
    const auto listing = scenarios::listStock(*program(root).ctx, root / "Assets", kCategories, threads);
    items = listing.items.size();
    tested = listing.tested;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double addToList(const fs::path& root, int threads, long& converted) {
    assets::AssetListOptions options;
    options.threads = threads;
    const auto start = std::chrono::steady_clock::now();
    const auto result = assets::buildAssetList(root / "Assets", options);
    converted = result.converted;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void StockList(benchmark::State& state) {
    static const fs::path root = demoInstall();
    std::size_t items = 0;
    long tested = 0;
    for (auto _ : state)
        state.SetIterationTime(stockWalk(root, static_cast<int>(state.range(0)), items, tested));
    state.counters["items"] = static_cast<double>(items);
    state.counters["blueprints"] = static_cast<double>(tested);
    state.counters["blueprints/s"] =
        benchmark::Counter(static_cast<double>(tested), benchmark::Counter::kIsIterationInvariantRate);
}

void AddToList(benchmark::State& state) {
    static const fs::path root = demoInstall();
    long converted = 0;
    for (auto _ : state)
        state.SetIterationTime(addToList(root, static_cast<int>(state.range(0)), converted));
    state.counters["blueprints"] = static_cast<double>(converted);
    state.counters["blueprints/s"] =
        benchmark::Counter(static_cast<double>(converted), benchmark::Counter::kIsIterationInvariantRate);
}

// Both walks in each iteration, so that their ratio is measured under the same conditions:
// stock list time over Add to List time (below 1: the stock list is faster).
void StockOverAddToList(benchmark::State& state) {
    static const fs::path root = demoInstall();
    const int threads = static_cast<int>(state.range(0));
    double stock = 0, add = 0;
    std::size_t items = 0;
    long tested = 0, converted = 0;
    for (auto _ : state) {
        const double s = stockWalk(root, threads, items, tested);
        const double a = addToList(root, threads, converted);
        stock += s;
        add += a;
        state.SetIterationTime(s + a);
    }
    state.counters["stock_ms"] = benchmark::Counter(stock * 1000, benchmark::Counter::kAvgIterations);
    state.counters["addtolist_ms"] = benchmark::Counter(add * 1000, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = add > 0 ? stock / add : 0;
}

} // namespace

BENCHMARK(StockList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);
BENCHMARK(AddToList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);
BENCHMARK(StockOverAddToList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

BENCHMARK_MAIN();
