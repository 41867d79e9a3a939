// Codec throughput in MB/s of binary, both ways, on the shipped documents and on a large
// synthetic document shaped like a scenario (many small elements, floats, strings, blobs).

#include "serz/serz.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

std::string slurp(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A track network shaped like a route's Networks/Tracks.bin: ribbons with GUIDs, heights,
// route vectors, float arrays and blueprint references; about 8 MB of binary.
std::string trackNetwork() {
    std::string x = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                    "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n\t<Record>\r\n"
                    "\t\t<Network-cTrackNetwork d:id=\"1\">\r\n\t\t\t<RibbonContainer>\r\n"
                    "\t\t\t\t<Network-cRibbonContainerUnstreamed>\r\n\t\t\t\t\t<Ribbon>\r\n";
    auto f = [](double v) {
        std::string s;
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.6g", static_cast<float>(v));
        return std::string(buf);
    };
    auto alt = [](double v) {
        const double d = static_cast<float>(v);
        unsigned char b[8];
        std::memcpy(b, &d, 8);
        char buf[17];
        for (int i = 0; i < 8; ++i)
            std::snprintf(buf + 2 * i, 3, "%02X", b[i]);
        return std::string(buf);
    };
    auto scalar = [&](const char* name, double v, int depth) {
        return std::string(static_cast<std::size_t>(depth), '\t') + "<" + name + " d:type=\"sFloat32\" d:alt_encoding=\"" +
               alt(v) + "\" d:precision=\"string\">" + f(v) + "</" + name + ">\r\n";
    };
    for (int r = 0; r < 40000; ++r) {
        const std::string t6(6, '\t'), t7(7, '\t'), t8(8, '\t');
        char guid[40];
        std::snprintf(guid, sizeof guid, "%08x-2166-472b-a3d8-%012x", r * 2654435761u, r);
        x += t6 + "<Network-cTrackRibbon d:id=\"" + std::to_string(200000 + r) + "\">\r\n";
        x += scalar("_length", 11.5612 + r % 97, 7);
        x += t7 + "<RibbonID>\r\n" + t8 + "<cGUID>\r\n" + t8 + "\t<UUID>\r\n" + t8 + "\t\t<e d:type=\"sUInt64\">" +
             std::to_string(4767230879230552870ull + r) + "</e>\r\n" + t8 + "\t\t<e d:type=\"sUInt64\">" +
             std::to_string(2585847680561001915ull - r) + "</e>\r\n" + t8 + "\t</UUID>\r\n" + t8 +
             "\t<DevString d:type=\"cDeltaString\">" + guid + "</DevString>\r\n" + t8 + "</cGUID>\r\n" + t7 +
             "</RibbonID>\r\n";
        x += t7 + "<Height>\r\n";
        for (int h = 0; h < 3; ++h)
            x += t8 + "<Network-iRibbon-cHeight>\r\n" + scalar("_position", h * 5.5, 9) + scalar("_height", 4.8601 + h, 9) +
                 t8 + "\t<_manual d:type=\"bool\">0</_manual>\r\n" + t8 + "</Network-iRibbon-cHeight>\r\n";
        x += t7 + "</Height>\r\n";
        x += t7 + "<RBottomLeft d:numElements=\"2\" d:elementType=\"sFloat32\" d:precision=\"string\">100.3391495 " +
             std::to_string(r % 1000) + ".3836517</RBottomLeft>\r\n";
        x += t7 + "<LockCounterWhenModified d:type=\"sUInt32\">1</LockCounterWhenModified>\r\n";
        x += t7 + "<Provider d:type=\"cDeltaString\">Gueterbahnhof</Provider>\r\n" + t7 +
             "<BlueprintID d:type=\"cDeltaString\">RailNetwork\\Track\\BREtrack_wood.xml</BlueprintID>\r\n";
        x += t6 + "</Network-cTrackRibbon>\r\n";
    }
    x += "\t\t\t\t\t</Ribbon>\r\n\t\t\t\t</Network-cRibbonContainerUnstreamed>\r\n\t\t\t</RibbonContainer>\r\n"
         "\t\t</Network-cTrackNetwork>\r\n\t</Record>\r\n</cRecordSet>\r\n";
    std::string bin;
    serz::encode(x, bin);
    return bin;
}

// Scenery entities shaped like a large scenario's, `count` of them (about 400 bytes of XML each).
std::string sceneryXml(int count) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                      "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n<Record>\r\n";
    for (int i = 0; i < count; ++i) {
        xml += "\t<cDynamicEntity d:id=\"" + std::to_string(100000 + i) + "\">\r\n"
               "\t\t<Name d:type=\"cDeltaString\">Item " + std::to_string(i % 500) + "</Name>\r\n"
               "\t\t<X d:type=\"sFloat32\" d:alt_encoding=\"0000000000405E40\" d:precision=\"string\">121</X>\r\n"
               "\t\t<M d:numElements=\"4\" d:elementType=\"sFloat32\" d:precision=\"string\">1.0000000 0.0000000 -0.5000000 0.2500000</M>\r\n"
               "\t\t<Id d:type=\"sUInt64\">" + std::to_string(11157694588110849463ull - static_cast<unsigned>(i)) + "</Id>\r\n"
               "\t\t<Flag d:type=\"bool\">1</Flag>\r\n"
               "\t</cDynamicEntity>\r\n";
    }
    xml += "</Record>\r\n</cRecordSet>\r\n";
    return xml;
}

const std::string& document(int which) {
    if (which == 2) {
        static const std::string tracks = trackNetwork();
        return tracks;
    }
    static const std::string texture = slurp(std::filesystem::path(VELMORA_TESTDATA) / "WheelCompleteMap.TgPcDx");
    static const std::string large = [] {
        std::string bin;
        serz::encode(sceneryXml(200000), bin);
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
    state.counters["binary MB"] = static_cast<double>(bin.size()) / 1e6;
    state.counters["xml MB/s"] = benchmark::Counter(static_cast<double>(xml.size()), benchmark::Counter::kIsIterationInvariantRate);
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
    state.counters["xml MB/s"] = benchmark::Counter(static_cast<double>(xml.size()), benchmark::Counter::kIsIterationInvariantRate);
}

// The conversions of a document of about 500 MB of XML, each in a process of its own so that
// its peak resident memory (ru_maxrss) is the conversion's alone. Writing the files takes about
// 600 MB of disk and a minute, so it runs only with VELMORA_BENCH_SERZ_LARGE=1.
const char* g_self = nullptr;

std::filesystem::path largeDir() { return std::filesystem::path(VELMORA_BENCH_DIR); }

// Runs this program with the arguments; the child's peak resident memory in MB, or -1.
double childPeakMb(std::vector<std::string> args) {
    const pid_t pid = fork();
    if (pid == 0) {
        std::vector<char*> argv{const_cast<char*>(g_self)};
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        execv(g_self, argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (pid < 0 || wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

// The child's side: "--make-large BIN XML" writes the document both ways; "--decode IN OUT" and
// "--encode IN OUT" convert one file; "--idle" does nothing, for the process's own size.
int childMain(int argc, char** argv) {
    const std::string what = argv[1];
    if (what == "--idle")
        return 0;
    if (argc != 4)
        return 2;
    std::string in, out;
    serz::Status st;
    if (what == "--make-large") {
        out = sceneryXml(1250000);
        st = serz::encode(out, in);
        std::ofstream(argv[2], std::ios::binary).write(in.data(), static_cast<std::streamsize>(in.size()));
    } else {
        st = serz::readDocument(argv[2], in);
        if (!st)
            return 3;
        st = what == "--decode" ? serz::decode(in, out) : serz::encode(in, out);
    }
    if (!st) {
        std::cerr << st.message << '\n';
        return 4;
    }
    std::ofstream file(argv[3], std::ios::binary);
    file.write(out.data(), static_cast<std::streamsize>(out.size()));
    return file.good() ? 0 : 5;
}

void LargeConversionMemory(benchmark::State& state) {
    if (!std::getenv("VELMORA_BENCH_SERZ_LARGE")) {
        state.SkipWithError("set VELMORA_BENCH_SERZ_LARGE=1 to convert the 500 MB document");
        return;
    }
    std::filesystem::create_directories(largeDir());
    const auto bin = largeDir() / "serz-large.bin", xml = largeDir() / "serz-large.xml";
    const auto outXml = largeDir() / "serz-large-out.xml", outBin = largeDir() / "serz-large-out.bin";
    if (!std::filesystem::exists(bin) || !std::filesystem::exists(xml))
        childPeakMb({"--make-large", bin.string(), xml.string()});
    double decodePeak = 0, encodePeak = 0;
    const double idle = childPeakMb({"--idle"});
    for (auto _ : state) {
        decodePeak = childPeakMb({"--decode", bin.string(), outXml.string()});
        encodePeak = childPeakMb({"--encode", xml.string(), outBin.string()});
    }
    auto mib = [](const std::filesystem::path& f) { return static_cast<double>(std::filesystem::file_size(f)) / (1 << 20); };
    const double binMb = mib(bin), xmlMb = mib(xml);
    // Each conversion against its own input and output: the decoded text is not the generated
    // XML byte for byte (its floats carry their exact encodings), so it has a size of its own.
    const double decodeInOut = binMb + mib(outXml), encodeInOut = xmlMb + mib(outBin);
    state.counters["binary MiB"] = binMb;
    state.counters["xml MiB"] = xmlMb;
    state.counters["decoded xml MiB"] = mib(outXml);
    state.counters["decode peak MiB"] = decodePeak;
    state.counters["encode peak MiB"] = encodePeak;
    state.counters["process alone MiB"] = idle;
    // 1 means the conversion held no more than its input and its output; the second pair leaves
    // out what the process holds before it reads anything (its code and libraries).
    state.counters["decode peak/(in+out)"] = decodePeak / decodeInOut;
    state.counters["encode peak/(in+out)"] = encodePeak / encodeInOut;
    state.counters["decode conversion/(in+out)"] = (decodePeak - idle) / decodeInOut;
    state.counters["encode conversion/(in+out)"] = (encodePeak - idle) / encodeInOut;
    std::filesystem::remove(outXml);
    std::filesystem::remove(outBin);
}

} // namespace

// Argument 0: the 1024x1024 texture (blob-heavy); 1: 200,000 scenery entities; 2: a track
// network of 40,000 ribbons. Throughput counters are in bytes of binary; "xml MB/s" of text.
BENCHMARK(Decode)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

BENCHMARK(LargeConversionMemory)->Unit(benchmark::kSecond)->Iterations(1);

int main(int argc, char** argv) {
    g_self = "/proc/self/exe";
    if (argc > 1 && (std::strcmp(argv[1], "--make-large") == 0 || std::strcmp(argv[1], "--decode") == 0 ||
                     std::strcmp(argv[1], "--encode") == 0 || std::strcmp(argv[1], "--idle") == 0))
        return childMain(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
