// Search and replace over 5,000 documents of the scale-100 demo install: each document decoded
// to its XML, the search text replaced, encoded again and written through the write service
// with its numbered backup, the whole run one journal entry. In documents per second, on one
// thread and on all, in one run.
//
// The documents are copied out of the install into a scratch folder beside it, so the install
// stays as generated. The search is "cDeltaString" and the replacement the same word: most
// documents hold it several times, so nearly every one goes the whole way (decode, replace,
// encode, write, backup) and still reads back as the same document, run after run. The backups
// of one run are cleared before the next.

#include "benchinstall.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/multireplace.h"
#include "velmora/core/userinterface.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

constexpr std::size_t kDocuments = 5000;

std::vector<fs::path> scratchDocuments() {
    const fs::path demo = bench::demoInstall();
    const fs::path root = demo.parent_path() / "replace-documents";
    std::vector<fs::path> files;
    if (!fs::exists(root / "done")) {
        std::vector<fs::path> sources;
        for (const auto& e : fs::recursive_directory_iterator(demo / "Assets"))
            if (e.is_regular_file() && e.path().extension() == ".bin")
                sources.push_back(e.path());
        std::sort(sources.begin(), sources.end());
        if (sources.size() < kDocuments) {
            std::cerr << "the demo install has only " << sources.size() << " documents\n";
            std::exit(2);
        }
        std::cerr << "Copying " << kDocuments << " documents into " << root << " ...\n";
        for (std::size_t i = 0; i < kDocuments; ++i) {
            const fs::path to = root / ("D" + std::to_string(i / 100)) / ("Doc" + std::to_string(i) + ".bin");
            fs::create_directories(to.parent_path());
            fs::copy_file(sources[i], to, fs::copy_options::overwrite_existing);
        }
        fs::create_directories(root / "done");
    }
    for (std::size_t i = 0; i < kDocuments; ++i)
        files.push_back(root / ("D" + std::to_string(i / 100)) / ("Doc" + std::to_string(i) + ".bin"));
    return files;
}

void clearBackups(const fs::path& root) {
    std::vector<fs::path> old;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.path().extension().string().rfind(".bak", 0) == 0)
            old.push_back(e.path());
    for (const auto& p : old)
        fs::remove(p);
}

void ReplaceInDocuments(benchmark::State& state) {
    static const std::vector<fs::path> files = scratchDocuments();
    const fs::path root = files.front().parent_path().parent_path();
    ScriptedUi ui;
    AppContext ctx(root.parent_path() / "replace-home", root.parent_path() / "replace-data", ui);
    MultiReplaceOptions options;
    options.find = "cDeltaString";
    options.replacement = "cDeltaString";
    options.threads = static_cast<int>(state.range(0));
    std::size_t written = 0;
    for (auto _ : state) {
        state.PauseTiming();
        clearBackups(root);
        state.ResumeTiming();
        const auto result = replaceInFiles(ctx, files, options, nullptr);
        written = result.changed;
        if (!result.error.empty() || result.anyFailed()) {
            state.SkipWithError(describe(result).substr(0, 400).c_str());
            break;
        }
    }
    state.counters["documents"] = static_cast<double>(files.size());
    state.counters["written"] = static_cast<double>(written);
    state.counters["cores"] = static_cast<double>(std::thread::hardware_concurrency());
    state.counters["documents/s"] =
        benchmark::Counter(static_cast<double>(files.size()), benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(ReplaceInDocuments)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK_MAIN();
