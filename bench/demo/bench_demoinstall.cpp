// Generation time of the demo install by scale, through the codec when it encodes, and with the
// documents left as XML to show the generator's own share.

#include "serz/serz.h"
#include "velmora/demo/demoinstall.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

fs::path scratch() {
    return fs::temp_directory_path() / ("velmora-bench-demo-" + std::to_string(::getpid()));
}

void generate(benchmark::State& state, velmora::demo::Encoder encoder) {
    const int scale = static_cast<int>(state.range(0));
    velmora::demo::DemoResult result;
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(scratch());
        state.ResumeTiming();
        result = velmora::demo::generateDemoInstall(scratch(), {scale, 1, encoder});
        if (!result.ok) {
            state.SkipWithError(result.error.c_str());
            break;
        }
    }
    state.counters["files"] = static_cast<double>(result.files);
    state.counters["blueprints"] = static_cast<double>(result.blueprints);
    state.counters["tiles"] = static_cast<double>(result.tiles);
    state.counters["scenarios"] = static_cast<double>(result.scenarios);
    fs::remove_all(scratch());
}

void BM_DemoInstall(benchmark::State& state) { generate(state, {}); }

void BM_DemoInstallXmlOnly(benchmark::State& state) {
    generate(state, [](std::string_view xml, std::string& out, std::string&) {
        out.assign(xml);
        return true;
    });
}

} // namespace

BENCHMARK(BM_DemoInstall)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_DemoInstallXmlOnly)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->Iterations(1);

BENCHMARK_MAIN();
