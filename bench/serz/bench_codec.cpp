// Codec throughput in MB/s of binary, both ways, on the shipped documents and on a large
// synthetic document shaped like a scenario (many small elements, floats, strings, blobs).

#include "serz/serz.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

namespace {

std::string slurp(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

const std::string& document(int which) {
    static const std::string texture = slurp(std::filesystem::path(VELMORA_TESTDATA) / "WheelCompleteMap.TgPcDx");
    static const std::string large = [] {
        std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                          "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n<Record>\r\n";
        for (int i = 0; i < 200000; ++i) {
            xml += "\t<cDynamicEntity d:id=\"" + std::to_string(100000 + i) + "\">\r\n"
                   "\t\t<Name d:type=\"cDeltaString\">Item " + std::to_string(i % 500) + "</Name>\r\n"
                   "\t\t<X d:type=\"sFloat32\" d:alt_encoding=\"0000000000405E40\" d:precision=\"string\">121</X>\r\n"
                   "\t\t<M d:numElements=\"4\" d:elementType=\"sFloat32\" d:precision=\"string\">1.0000000 0.0000000 -0.5000000 0.2500000</M>\r\n"
                   "\t\t<Id d:type=\"sUInt64\">" + std::to_string(11157694588110849463ull - static_cast<unsigned>(i)) + "</Id>\r\n"
                   "\t\t<Flag d:type=\"bool\">1</Flag>\r\n"
                   "\t</cDynamicEntity>\r\n";
        }
        xml += "</Record>\r\n</cRecordSet>\r\n";
        std::string bin;
        serz::encode(xml, bin);
        return bin;
    }();
    return which == 0 ? texture : large;
}

void Decode(benchmark::State& state) {
    const std::string& bin = document(static_cast<int>(state.range(0)));
    std::string xml;
    for (auto _ : state) {
        serz::decode(bin, xml);
        benchmark::DoNotOptimize(xml.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bin.size()));
    state.counters["xml MB"] = static_cast<double>(xml.size()) / 1e6;
}

void Encode(benchmark::State& state) {
    const std::string& bin = document(static_cast<int>(state.range(0)));
    std::string xml, back;
    serz::decode(bin, xml);
    for (auto _ : state) {
        serz::encode(xml, back);
        benchmark::DoNotOptimize(back.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bin.size()));
}

} // namespace

// Argument 0: the 1024x1024 texture (blob-heavy); 1: 200,000 scenery entities.
BENCHMARK(Decode)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
