// A texture to a .dds file and back, through the files as the commands do it (the codec, the
// write service with its sync and backup), on one core. Sizes 1024 to 4096 DXT5 with the whole
// mip chain down to 4x4; the time should grow with the pixel count (about 4x a size step).
// Also what the picture viewer does on opening a texture (read and decode the largest level)
// and with Flip, Rotate and Grey Scale on the decoded picture.

#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/textures/dds.h"
#include "velmora/textures/picture.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;
using namespace velmora::textures;

namespace {

fs::path benchDir() {
    static const fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / ("velmora-bench-dds-" + std::to_string(::getpid()));
        fs::remove_all(d);
        fs::create_directories(d);
        return d;
    }();
    return dir;
}

// A DXT5 texture document of `size` pixels square with its mips, written once per size.
fs::path texture(int size) {
    const fs::path file = benchDir() / ("T" + std::to_string(size) + ".TgPcDx");
    if (fs::exists(file))
        return file;
    TextureLevels t{PixelFormat::Dxt5, size, size, {}};
    for (int side = size; side >= 4; side /= 2) {
        std::string level(levelSize(PixelFormat::Dxt5, side, side), '\0');
        for (std::size_t i = 0; i < level.size(); ++i)
            level[i] = static_cast<char>((i * 2654435761u) >> 13);
        t.levels.push_back(std::move(level));
    }
    TexturePieces p;
    std::string head = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cHcTextureGroup xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                       "d:version=\"1.0\" d:id=\"1\">\r\n<Texture>\r\n<cHcTexture d:id=\"2\">\r\n<Width d:type=\"sUInt32\">" +
                       std::to_string(size) + "</Width>\r\n<Height d:type=\"sUInt32\">" + std::to_string(size) +
                       "</Height>\r\n<Name d:type=\"cDeltaString\">Bench\\T</Name>\r\n<Data>\r\n<cHcTextureData d:id=\"3\">\r\n<Mip>\r\n";
    int side = size;
    for (const auto& level : t.levels) {
        head += "<cHcImageDx d:id=\"4\">\r\n<Format d:type=\"cDeltaString\">HC_IMAGE_FORMAT_COMPRESSED_INTERP_ALPHA</Format>\r\n"
                "<IsSwizzled d:type=\"bool\">0</IsSwizzled>\r\n<Width d:type=\"sUInt16\">" + std::to_string(side) +
                "</Width>\r\n<Height d:type=\"sUInt16\">" + std::to_string(side) + "</Height>\r\n<d:blob d:size=\"" +
                std::to_string(level.size()) + "\">";
        p.pieces.push_back(head);
        p.sizes.push_back(static_cast<std::uint32_t>(level.size()));
        head = "</d:blob>\r\n</cHcImageDx>\r\n";
        side /= 2;
    }
    p.pieces.push_back(head + "</Mip>\r\n<TextureBlob/>\r\n<Palette>\r\n<d:nil/>\r\n</Palette>\r\n</cHcTextureData>\r\n"
                              "</Data>\r\n</cHcTexture>\r\n</Texture>\r\n</cHcTextureGroup>\r\n");
    std::string bin;
    if (!velmora::xmlTextToBin(rebuildXml(p, t.levels), bin))
        return {};
    std::ofstream(file, std::ios::binary) << bin;
    return file;
}

void TgPcDxToDds(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    const fs::path file = texture(size);
    velmora::WriteService files;
    const fs::path dds = benchDir() / ("T" + std::to_string(size) + ".dds");
    for (auto _ : state) {
        const DdsExport r = textureToDds(files, file, dds);
        if (!r.ok)
            state.SkipWithError(r.message.c_str());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(fs::file_size(file)));
    state.counters["cores"] = std::thread::hardware_concurrency();
}

void DdsToTgPcDx(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    const fs::path file = texture(size);
    velmora::WriteService files;
    const fs::path dds = benchDir() / ("T" + std::to_string(size) + ".dds");
    if (!textureToDds(files, file, dds).ok) {
        state.SkipWithError("no .dds");
        return;
    }
    const fs::path target = benchDir() / ("Back" + std::to_string(size) + ".TgPcDx");
    fs::copy_file(file, target, fs::copy_options::overwrite_existing);
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(target.string() + ".bak");
        state.ResumeTiming();
        const DdsImport r = ddsToTexture(files, dds, target);
        if (!r.ok)
            state.SkipWithError(r.message.c_str());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(fs::file_size(dds)));
    state.counters["cores"] = std::thread::hardware_concurrency();
}

// The viewer's load: the file's levels read and the largest one decoded to RGBA.
void TgPcDxToPicture(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    const fs::path file = texture(size);
    for (auto _ : state) {
        TextureLevels levels;
        std::string error;
        if (!readTextureFile(file, levels, error) || !levelImage(levels, 0).valid())
            state.SkipWithError(error.c_str());
    }
    state.counters["pixels"] = benchmark::Counter(double(size) * size * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["cores"] = std::thread::hardware_concurrency();
}

// Flip, a quarter turn and grey, one after the other, on a decoded picture.
void PictureSteps(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    TextureLevels levels;
    std::string error;
    if (!readTextureFile(texture(size), levels, error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const Image picture = levelImage(levels, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(applied(picture, {PictureStep::Flip, PictureStep::Rotate, PictureStep::Grey}));
    state.counters["pixels"] = benchmark::Counter(double(size) * size * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["cores"] = std::thread::hardware_concurrency();
}

BENCHMARK(TgPcDxToPicture)->Arg(1024)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(PictureSteps)->Arg(1024)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(TgPcDxToDds)->Arg(1024)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(DdsToTgPcDx)->Arg(1024)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    fs::remove_all(benchDir());
    return 0;
}
