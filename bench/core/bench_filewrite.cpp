// What the safe write costs: a blueprint-sized document stored over an existing one with its
// numbered backup and a journal record (as a batch edit stores each row), against the same bytes
// replaced with no sync, no backup and no journal (as the demo generator writes).

#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"

#include <benchmark/benchmark.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

const std::string kBlueprint(24 * 1024, 'b'); // a typical wagon blueprint

fs::path freshFolder(const char* name) {
    const fs::path dir = fs::temp_directory_path() / name;
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir;
}

// Each iteration stores one of 200 documents; backups pile up to .bak50 and are cleared then.
void BM_StoreWithBackupAndJournal(benchmark::State& state) {
    const fs::path dir = freshFolder("velmora-bench-write");
    Journal journal(dir / "Journal.jsonl");
    WriteService files(nullptr, &journal);
    JournalCommand command(&journal, "bench");
    for (int i = 0; i < 200; ++i)
        files.write(dir / ("Wagon" + std::to_string(i) + ".bin"), kBlueprint, {Backup::None, false});
    std::int64_t n = 0;
    for (auto _ : state) {
        if (n > 0 && n % (200 * 50) == 0) {
            state.PauseTiming();
            for (const auto& e : fs::directory_iterator(dir))
                if (e.path().extension().string().rfind(".bak", 0) == 0)
                    fs::remove(e.path());
            state.ResumeTiming();
        }
        const WriteResult r = files.write(dir / ("Wagon" + std::to_string(n % 200) + ".bin"), kBlueprint);
        if (!r)
            state.SkipWithError(r.message.c_str());
        ++n;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlueprint.size()));
    fs::remove_all(dir);
}
BENCHMARK(BM_StoreWithBackupAndJournal)->Unit(benchmark::kMicrosecond);

void BM_GeneratedFileNoSync(benchmark::State& state) {
    const fs::path dir = freshFolder("velmora-bench-write-plain");
    WriteService files;
    WriteOptions generated;
    generated.backup = Backup::None;
    generated.journal = false;
    generated.sync = false;
    std::int64_t n = 0;
    for (auto _ : state) {
        const WriteResult r = files.write(dir / ("Wagon" + std::to_string(n++ % 200) + ".bin"), kBlueprint, generated);
        if (!r)
            state.SkipWithError(r.message.c_str());
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlueprint.size()));
    fs::remove_all(dir);
}
BENCHMARK(BM_GeneratedFileNoSync)->Unit(benchmark::kMicrosecond);

} // namespace
