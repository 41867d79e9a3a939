// The Quick Drive walk (qd list) over a tree of 2,000 Quick Drive documents, on one thread and
// on all cores, against Add to List over the same tree. The tree is a scale-1 demo install
// whose three Quick Drive documents are copied, renamed, into the PreLoad folders of every
// product until there are 2,000; it is made once into the build folder and reused.
//
// Figures (RelWithDebInfo, 2,000 documents; a 2-core machine shared with other builds, load
// about 3, so "0" = all cores = 2 threads gains little and single runs vary by 30%):
//   QdList/1              140 ms   14.3k documents/s
//   QdList/0              125 ms   16.1k documents/s
//   QdListOneOverAll      one thread 135 ms, all cores 139 ms: speedup 0.97
//   QdOverAddToList/1     qd list 154 ms, Add to List 267 ms (2,313 blueprints): ratio 0.58
//   QdOverAddToList/0     qd list 183 ms, Add to List 332 ms: ratio 0.55

#include "velmora/assets/assetlist.h"
#include "velmora/consists/qdcheck.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

constexpr int kDocuments = 2000;

fs::path qdTree() {
    const fs::path root = fs::path(VELMORA_BENCH_DIR) / "qd-2000";
    if (fs::exists(root / "done"))
        return root;
    fs::remove_all(root);
    std::cerr << "Making the tree of " << kDocuments << " Quick Drive documents in " << root << " ...\n";
    if (const auto r = demo::generateDemoInstall(root, {}); !r.ok) {
        std::cerr << "cannot generate the demo install: " << r.error << '\n';
        std::exit(2);
    }
    std::vector<fs::path> originals;
    for (const auto& e : fs::recursive_directory_iterator(root / "Assets"))
        if (e.is_regular_file() && consists::isQuickDrivePath(e.path().string()))
            originals.push_back(e.path());
    std::vector<fs::path> products;
    for (const auto& provider : fs::directory_iterator(root / "Assets"))
        for (const auto& product : fs::directory_iterator(provider.path()))
            if (product.is_directory())
                products.push_back(product.path());
    if (originals.empty() || products.empty())
        std::exit(2);
    for (int i = static_cast<int>(originals.size()); i < kDocuments; ++i) {
        const fs::path& from = originals[static_cast<std::size_t>(i) % originals.size()];
        const fs::path folder = products[static_cast<std::size_t>(i) % products.size()] / "PreLoad" /
                                ("Set" + std::to_string(i / 100));
        fs::create_directories(folder);
        fs::copy_file(from, folder / (from.stem().string() + "_" + std::to_string(i) + ".bin"));
    }
    std::ofstream(root / "done") << kDocuments;
    return root;
}

AppContext& context(const fs::path& root) {
    static ScriptedUi ui;
    static std::unique_ptr<AppContext> ctx = [&] {
        const fs::path home = fs::temp_directory_path() / "velmora-bench-qd-home";
        auto made = std::make_unique<AppContext>(home, home / "data", ui);
        made->setRailWorksOverride(root);
        return made;
    }();
    return *ctx;
}

double qdList(const fs::path& root, int threads, std::size_t& documents) {
    const auto start = std::chrono::steady_clock::now();
    const auto listing = consists::checkQuickDrive(context(root), root / "Assets", threads, nullptr);
    documents = listing.documents.size();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double addToList(const fs::path& root, int threads, long& converted) {
    assets::AssetListOptions options;
    options.threads = threads;
    const auto start = std::chrono::steady_clock::now();
    converted = assets::buildAssetList(root / "Assets", options).converted;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void QdList(benchmark::State& state) {
    static const fs::path root = qdTree();
    std::size_t documents = 0;
    for (auto _ : state)
        state.SetIterationTime(qdList(root, static_cast<int>(state.range(0)), documents));
    state.counters["documents"] = static_cast<double>(documents);
    state.counters["documents/s"] =
        benchmark::Counter(static_cast<double>(documents), benchmark::Counter::kIsIterationInvariantRate);
}

// One thread against all cores in the same iteration: their ratio under the same conditions.
void QdListOneOverAll(benchmark::State& state) {
    static const fs::path root = qdTree();
    double one = 0, all = 0;
    std::size_t documents = 0;
    for (auto _ : state) {
        const double a = qdList(root, 1, documents);
        const double b = qdList(root, 0, documents);
        one += a;
        all += b;
        state.SetIterationTime(a + b);
    }
    state.counters["one_ms"] = benchmark::Counter(one * 1000, benchmark::Counter::kAvgIterations);
    state.counters["all_ms"] = benchmark::Counter(all * 1000, benchmark::Counter::kAvgIterations);
    state.counters["speedup"] = all > 0 ? one / all : 0;
}

// The Quick Drive walk against Add to List (which converts every .bin) over the same tree.
void QdOverAddToList(benchmark::State& state) {
    static const fs::path root = qdTree();
    const int threads = static_cast<int>(state.range(0));
    double qd = 0, add = 0;
    std::size_t documents = 0;
    long converted = 0;
    for (auto _ : state) {
        const double a = qdList(root, threads, documents);
        const double b = addToList(root, threads, converted);
        qd += a;
        add += b;
        state.SetIterationTime(a + b);
    }
    state.counters["qd_ms"] = benchmark::Counter(qd * 1000, benchmark::Counter::kAvgIterations);
    state.counters["addtolist_ms"] = benchmark::Counter(add * 1000, benchmark::Counter::kAvgIterations);
    state.counters["blueprints"] = static_cast<double>(converted);
    state.counters["ratio"] = add > 0 ? qd / add : 0;
}

} // namespace

BENCHMARK(QdList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);
BENCHMARK(QdListOneOverAll)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);
BENCHMARK(QdOverAddToList)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

BENCHMARK_MAIN();
