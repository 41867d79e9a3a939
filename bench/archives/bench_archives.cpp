// The archive tools at scale.
//
//   Entries50k      opening an archive of 50,000 entries and reading every entry's details
//   UnpackDemo      every .ap of the scale-100 demo install unpacked into a fresh folder, with
//                   the write service's staging, backups-ready journal and durable data, in MB/s
//                   of unpacked data; SevenZipDemo does the same with `7zz x` (not run when 7zz
//                   is not installed); UnpackOver7zz gives the ratio measured in one run
//   ApIndex         finding every .ap of the scale-100 install and making AP-Index.csv's text
//
// Figures: see the README's table of benchmarks.

#include "common/benchinstall.h"
#include "velmora/archives/aptable.h"
#include "velmora/archives/routenames.h"
#include "velmora/archives/unpack.h"
#include "velmora/archives/zipreader.h"
#include "velmora/core/filewrite.h"

#include <benchmark/benchmark.h>
#include <zip.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>

namespace fs = std::filesystem;
using namespace velmora;
using namespace velmora::archives;

namespace {

fs::path bigArchive() {
    const fs::path file = fs::path(VELMORA_BENCH_DIR) / "entries-50000.ap";
    if (fs::exists(file))
        return file;
    fs::create_directories(file.parent_path());
    int code = 0;
    zip_t* zip = zip_open((file.string() + ".part").c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    static const char kText[] = "<cBlueprint/>";
    for (int i = 0; i < 50000; ++i) {
        const std::string name = "RailVehicles/Freight/W" + std::to_string(i % 500) + "/Wagon" + std::to_string(i) + ".bin";
        zip_file_add(zip, name.c_str(), zip_source_buffer(zip, kText, sizeof kText - 1, 0), 0);
    }
    zip_close(zip);
    fs::rename(file.string() + ".part", file);
    return file;
}

std::vector<fs::path> demoArchives() {
    static const std::vector<fs::path> found = [] {
        std::vector<fs::path> aps;
        ApFindOptions o;
        o.details = false;
        for (const auto& f : findApFiles(bench::demoInstall(), o, nullptr).files)
            aps.push_back(f.path);
        return aps;
    }();
    return found;
}

std::uint64_t unpackedBytes() {
    std::uint64_t total = 0;
    for (const auto& ap : demoArchives()) {
        ZipReader zip;
        if (zip.open(ap))
            for (const auto& e : zip.entries())
                total += e.size;
    }
    return total;
}

fs::path scratch() { return fs::path(VELMORA_BENCH_DIR) / ("unpack-" + std::to_string(::getpid())); }

double unpackAllSeconds() {
    fs::remove_all(scratch());
    WriteService files;
    const auto start = std::chrono::steady_clock::now();
    int n = 0;
    for (const auto& ap : demoArchives()) {
        UnpackOptions o;
        o.destination = scratch() / std::to_string(n++);
        unpackArchive(files, ap, o, nullptr);
    }
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    fs::remove_all(scratch());
    return s;
}

double sevenZipSeconds() {
    static const bool installed = std::system("7zz > /dev/null 2>&1") == 0;
    if (!installed)
        return -1;
    fs::remove_all(scratch());
    const auto start = std::chrono::steady_clock::now();
    int n = 0;
    for (const auto& ap : demoArchives()) {
        const std::string command = "7zz x -y -bso0 -bsp0 -o'" + (scratch() / std::to_string(n++)).string() + "' '" +
                                    ap.string() + "' > /dev/null 2>&1";
        // The demo's damaged archive and the one with unsafe names end 7zz with an error; the
        // rest is unpacked all the same, as ours are.
        [[maybe_unused]] const int code = std::system(command.c_str());
    }
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    fs::remove_all(scratch());
    return s;
}

void Entries50k(benchmark::State& state) {
    const fs::path file = bigArchive();
    for (auto _ : state) {
        ZipReader zip;
        zip.open(file);
        benchmark::DoNotOptimize(zip.entries());
    }
    state.counters["entries"] = 50000;
}
BENCHMARK(Entries50k)->Unit(benchmark::kMillisecond);

void UnpackDemo(benchmark::State& state) {
    const double mb = static_cast<double>(unpackedBytes()) / (1 << 20);
    double seconds = 0;
    for (auto _ : state) {
        const double s = unpackAllSeconds();
        seconds += s;
        state.SetIterationTime(s);
    }
    state.counters["archives"] = static_cast<double>(demoArchives().size());
    state.counters["MB/s"] = mb * static_cast<double>(state.iterations()) / seconds;
}
BENCHMARK(UnpackDemo)->UseManualTime()->Unit(benchmark::kMillisecond);

void SevenZipDemo(benchmark::State& state) {
    const double mb = static_cast<double>(unpackedBytes()) / (1 << 20);
    double seconds = 0;
    for (auto _ : state) {
        const double s = sevenZipSeconds();
        if (s < 0) {
            state.SkipWithError("7zz is not installed");
            return;
        }
        seconds += s;
        state.SetIterationTime(s);
    }
    state.counters["MB/s"] = mb * static_cast<double>(state.iterations()) / seconds;
}
BENCHMARK(SevenZipDemo)->UseManualTime()->Unit(benchmark::kMillisecond);

// Both in one run, alternating, so that the load of the machine falls on both alike.
void UnpackOver7zz(benchmark::State& state) {
    double ours = 0, theirs = 0;
    for (auto _ : state) {
        ours += unpackAllSeconds();
        const double s = sevenZipSeconds();
        if (s < 0) {
            state.SkipWithError("7zz is not installed");
            return;
        }
        theirs += s;
    }
    state.counters["velmora_s"] = ours / static_cast<double>(state.iterations());
    state.counters["7zz_s"] = theirs / static_cast<double>(state.iterations());
    state.counters["ratio"] = ours / theirs; // below 1: faster than 7zz
}
BENCHMARK(UnpackOver7zz)->Iterations(5)->Unit(benchmark::kMillisecond);

void ApIndex(benchmark::State& state) {
    const fs::path root = bench::demoInstall();
    std::size_t count = 0;
    for (auto _ : state) {
        ApFindOptions o;
        o.details = false;
        const ApTable t = findApFiles(root, o, nullptr);
        std::vector<fs::path> files;
        for (const auto& f : t.files)
            files.push_back(f.path);
        benchmark::DoNotOptimize(apIndexText(files));
        count = files.size();
    }
    state.counters["archives"] = static_cast<double>(count);
}
BENCHMARK(ApIndex)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
