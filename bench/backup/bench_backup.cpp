// What a backup of the scale-100 demo install costs: the full copy cloned where the file system
// allows, the same forced to plain copies, `cp -a` of the same tree in the same run, and an
// incremental run over an up-to-date copy. The copies go to VELMORA_BACKUP_TARGET when set (to
// measure another file system: btrfs or XFS clone), else beside the demo install. The full
// copies run with one thread and with one a core.

#include "benchinstall.h"
#include "velmora/backup/housekeeping.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora;
using namespace velmora::backup;

namespace {

fs::path targetFolder(const char* name) {
    const char* chosen = std::getenv("VELMORA_BACKUP_TARGET");
    const fs::path base = chosen ? fs::path(chosen) : fs::path(VELMORA_BENCH_DIR) / "backup-targets";
    fs::create_directories(base);
    return base / name;
}

void countTree(benchmark::State& state, const TreeCopyReport& r) {
    state.counters["files"] = static_cast<double>(r.copied);
    state.counters["cloned"] = static_cast<double>(r.cloned);
    state.counters["MB"] = static_cast<double>(r.bytes) / 1e6;
    state.counters["cores"] = static_cast<double>(std::thread::hardware_concurrency());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * r.bytes));
}

void fullBackup(benchmark::State& state, bool clone) {
    const fs::path root = bench::demoInstall();
    const fs::path target = targetFolder(clone ? "full-clone" : "full-plain");
    TreeCopyOptions options;
    options.clone = clone;
    options.threads = static_cast<int>(state.range(0)); // 1, or 0 for one a core
    TreeCopyReport r;
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(target);
        state.ResumeTiming();
        r = copyTree(root, simulatorParts(root), target, options, nullptr);
        if (!r.complete())
            state.SkipWithError(r.refused.empty() ? "something was not copied" : r.refused.c_str());
    }
    countTree(state, r);
    fs::remove_all(target);
}

void BM_FullBackupCloned(benchmark::State& state) { fullBackup(state, true); }
void BM_FullBackupPlainCopy(benchmark::State& state) { fullBackup(state, false); }

// The yardstick: the system's own copy of the same tree, as a user would make the backup by hand.
void BM_CpA(benchmark::State& state) {
    const fs::path root = bench::demoInstall();
    const fs::path target = targetFolder("cp-a");
    const std::string command = "cp -a '" + root.string() + "' '" + target.string() + "'";
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(target);
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("cp -a failed");
    }
    fs::remove_all(target);
}

// Nothing changed since the last run: every file is looked at, none copied.
void BM_IncrementalUpToDate(benchmark::State& state) {
    const fs::path root = bench::demoInstall();
    const fs::path target = targetFolder("incremental");
    fs::remove_all(target);
    TreeCopyOptions options;
    options.rule = CopyRule::NewerOnly;
    copyTree(root, simulatorParts(root), target, options, nullptr);
    TreeCopyReport r;
    for (auto _ : state)
        r = copyTree(root, simulatorParts(root), target, options, nullptr);
    state.counters["unchanged"] = static_cast<double>(r.unchanged);
    state.counters["files"] = static_cast<double>(r.copied);
    fs::remove_all(target);
}

} // namespace

// Argument: threads, 1 or 0 (one a core), so the scaling shows as a ratio within one run.
BENCHMARK(BM_FullBackupCloned)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FullBackupPlainCopy)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CpA)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_IncrementalUpToDate)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_MAIN();
