// How fast document paths resolve without regard to letter case on a large Assets tree.

#include "velmora/core/paths.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

struct Tree {
    fs::path root;
    std::vector<std::string> documentPaths; // as documents write them: backslashes, other case

    Tree() {
        root = fs::temp_directory_path() / "velmora-bench-paths";
        fs::remove_all(root);
        for (int p = 0; p < 10; ++p)
            for (int q = 0; q < 20; ++q)
                for (int f = 0; f < 50; ++f) {
                    fs::path dir = root / ("Provider" + std::to_string(p)) / ("Product" + std::to_string(q)) /
                                   "RailVehicles";
                    fs::create_directories(dir);
                    std::string name = "Wagon_" + std::to_string(f) + ".bin";
                    std::ofstream(dir / name) << "";
                    documentPaths.push_back("provider" + std::to_string(p) + "\\PRODUCT" + std::to_string(q) +
                                            "\\railvehicles\\wagon_" + std::to_string(f) + ".BIN");
                }
    }
    ~Tree() { fs::remove_all(root); }
};

Tree& tree() {
    static Tree t;
    return t;
}

void BM_ResolveWarm(benchmark::State& state) {
    Tree& t = tree();
    velmora::PathResolver resolver;
    for (const auto& p : t.documentPaths)
        resolver.resolve(t.root, p);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(resolver.resolve(t.root, t.documentPaths[i++ % t.documentPaths.size()]));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(BM_ResolveWarm);

void BM_ResolveColdTree(benchmark::State& state) {
    Tree& t = tree();
    for (auto _ : state) {
        velmora::PathResolver resolver;
        for (const auto& p : t.documentPaths)
            benchmark::DoNotOptimize(resolver.resolve(t.root, p));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * t.documentPaths.size()));
}
BENCHMARK(BM_ResolveColdTree)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
