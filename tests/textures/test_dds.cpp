#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/textures/dds.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace velmora::textures;
namespace fs = std::filesystem;

namespace {

std::string readAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void writeAll(const fs::path& file, const std::string& bytes) {
    std::ofstream out(file, std::ios::binary);
    out << bytes;
}

std::string hex(const std::string& bytes) {
    static const char* d = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        out += d[c >> 4];
        out += d[c & 15];
    }
    return out;
}

// Bytes that differ from level to level and byte to byte.
std::string pattern(std::size_t n, int seed) {
    std::string s(n, '\0');
    for (std::size_t i = 0; i < n; ++i)
        s[i] = static_cast<char>((i * 131 + static_cast<std::size_t>(seed) * 17 + (i >> 7)) & 0xFF);
    return s;
}

// A texture document's XML in the converter's shape, one cHcImageDx a level.
std::string textureXml(const std::string& format, int size, const std::vector<std::string>& levels,
                       const std::string& name = "Textures\\Body") {
    std::string x = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cHcTextureGroup xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                    "d:version=\"1.0\" d:id=\"1\">\r\n<Texture>\r\n<cHcTexture d:id=\"2\">\r\n"
                    "<Width d:type=\"sUInt32\">" + std::to_string(size) + "</Width>\r\n<Height d:type=\"sUInt32\">" +
                    std::to_string(size) + "</Height>\r\n<Name d:type=\"cDeltaString\">" + name +
                    "</Name>\r\n<Data>\r\n<cHcTextureData d:id=\"3\">\r\n<Mip>\r\n";
    int side = size;
    for (const std::string& level : levels) {
        x += "<cHcImageDx d:id=\"4\">\r\n<Format d:type=\"cDeltaString\">" + format +
             "</Format>\r\n<IsSwizzled d:type=\"bool\">0</IsSwizzled>\r\n<Width d:type=\"sUInt16\">" +
             std::to_string(side) + "</Width>\r\n<Height d:type=\"sUInt16\">" + std::to_string(side) +
             "</Height>\r\n<d:blob d:size=\"" + std::to_string(level.size()) + "\">" + hex(level) +
             "</d:blob>\r\n</cHcImageDx>\r\n";
        side = std::max(1, side / 2);
    }
    x += "</Mip>\r\n<TextureBlob/>\r\n<Palette>\r\n<d:nil/>\r\n</Palette>\r\n</cHcTextureData>\r\n</Data>\r\n"
         "</cHcTexture>\r\n</Texture>\r\n</cHcTextureGroup>\r\n";
    return x;
}

std::vector<std::string> chain(PixelFormat f, int size, int count) {
    std::vector<std::string> levels;
    for (int i = 0; i < count; ++i)
        levels.push_back(pattern(levelSize(f, std::max(1, size >> i), std::max(1, size >> i)), i));
    return levels;
}

class DdsFiles : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("velmora-dds-" + std::to_string(::getpid()) + "-" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }

    fs::path document(const std::string& name, const std::string& xml) {
        std::string bin;
        const velmora::ConvertResult r = velmora::xmlTextToBin(xml, bin, name);
        EXPECT_TRUE(r.ok) << r.message;
        writeAll(dir / name, bin);
        return dir / name;
    }

    // The texture out to a .dds and back into a copy; the blobs and the pictures of every level
    // must come through unchanged.
    void roundTrip(const fs::path& texture) {
        SCOPED_TRACE(texture.string());
        TextureLevels original;
        std::string error;
        ASSERT_TRUE(readTextureFile(texture, original, error)) << error;
        const fs::path dds = dir / (texture.stem().string() + ".dds");
        const DdsExport out = textureToDds(files, texture, dds);
        ASSERT_TRUE(out.ok) << out.message;
        EXPECT_EQ(out.mips, static_cast<int>(original.levels.size()));
        EXPECT_TRUE(fs::exists(headerFileFor(dds)));

        TextureLevels fromDds;
        ASSERT_TRUE(readTextureFile(dds, fromDds, error)) << error;
        EXPECT_EQ(fromDds.width, original.width);
        EXPECT_EQ(fromDds.levels, original.levels);
        for (int mip = 0; mip < static_cast<int>(original.levels.size()); ++mip) {
            const Image a = levelImage(original, mip), b = levelImage(fromDds, mip);
            ASSERT_TRUE(a.valid());
            EXPECT_EQ(a.rgba, b.rgba) << "mip " << mip;
        }
        identify(dds, original);
        // The pixels read straight from the binary are the ones its XML text gives.
        const Image throughXml = readTexture(texture, &error);
        ASSERT_TRUE(throughXml.valid()) << error;
        EXPECT_EQ(throughXml.rgba, levelImage(original, 0).rgba);

        const fs::path back = dir / ("back-" + texture.filename().string());
        fs::copy_file(texture, back, fs::copy_options::overwrite_existing);
        const DdsImport in = ddsToTexture(files, dds, back);
        ASSERT_TRUE(in.ok) << in.message;
        EXPECT_FALSE(in.backup.empty());
        // Back into its own document nothing but the pixels could change, and they did not.
        EXPECT_EQ(readAll(back), readAll(texture));

        // Into a new file the document is built again from the header file.
        const fs::path rebuilt = dir / ("new-" + texture.filename().string());
        const DdsImport made = ddsToTexture(files, dds, rebuilt);
        ASSERT_TRUE(made.ok) << made.message;
        EXPECT_TRUE(made.backup.empty());
        TextureLevels again;
        ASSERT_TRUE(readTextureFile(rebuilt, again, error)) << error;
        EXPECT_EQ(again.levels, original.levels);
        EXPECT_EQ(again.format, original.format);
        EXPECT_EQ(again.width, original.width);
    }

    // ImageMagick's view of the file, where it is installed (the set-up script installs it): the
    // size, the kind and the compression. It does not list the mips; the header's count and the
    // file's length, which must add up exactly, are checked by the reader.
    void identify(const fs::path& dds, const TextureLevels& t) {
        if (std::system("command -v identify >/dev/null 2>&1") != 0)
            return;
        const fs::path report = dir / "identify.txt";
        const std::string cmd = "identify -format '%w %h %m %C\\n' '" + dds.string() + "' > '" + report.string() + "' 2>&1";
        ASSERT_EQ(std::system(cmd.c_str()), 0) << readAll(report);
        std::istringstream lines(readAll(report));
        int w = 0, h = 0;
        std::string magick, compression;
        lines >> w >> h >> magick >> compression;
        EXPECT_EQ(w, t.width) << dds;
        EXPECT_EQ(h, t.height) << dds;
        EXPECT_EQ(magick, "DDS") << dds;
        if (t.format == PixelFormat::Dxt1 || t.format == PixelFormat::Dxt3 || t.format == PixelFormat::Dxt5) {
            EXPECT_EQ(compression, formatShown(t.format).substr(0, 4)) << dds;
        }
    }

    velmora::WriteService files;
    fs::path dir;
};

} // namespace

TEST_F(DdsFiles, TheShippedRealTextureGoesThroughWhole) {
    const fs::path file = fs::path(VELMORA_TESTDATA) / "WheelCompleteMap.TgPcDx";
    ASSERT_TRUE(fs::exists(file));
    roundTrip(file);
}

TEST_F(DdsFiles, EveryDemoTextureGoesThroughWhole) {
    const fs::path demo = dir / "demo";
    ASSERT_TRUE(velmora::demo::generateDemoInstall(demo, {}).ok);
    int count = 0;
    for (const auto& e : fs::recursive_directory_iterator(demo / "Assets"))
        if (e.path().extension() == ".TgPcDx") {
            const fs::path copy = dir / ("t" + std::to_string(count++) + ".TgPcDx");
            fs::copy_file(e.path(), copy);
            roundTrip(copy);
        }
    EXPECT_GT(count, 10);
}

TEST_F(DdsFiles, UncompressedFormatsAndOneLevel) {
    for (const char* format : {"HC_IMAGE_FORMAT_COLA8888", "HC_IMAGE_FORMAT_COL888"}) {
        const PixelFormat f = pixelFormatNamed(format);
        roundTrip(document(std::string(format) + ".TgPcDx", textureXml(format, 8, chain(f, 8, 4))));
    }
    const fs::path single = document("single.TgPcDx", textureXml("HC_IMAGE_FORMAT_COMPRESSED", 16, chain(PixelFormat::Dxt1, 16, 1)));
    roundTrip(single);
    const DdsExport out = textureToDds(files, single, dir / "single.dds");
    EXPECT_EQ(out.mips, 1);
    EXPECT_NE(out.message.find("3. Number of Mip-Maps - 1"), std::string::npos);
    EXPECT_NE(out.message.find("DXT1 ARGB"), std::string::npos);
}

TEST_F(DdsFiles, TheHeaderIsTheStandardLayout) {
    TextureLevels t{PixelFormat::Dxt5, 64, 32, chain(PixelFormat::Dxt5, 64, 3)};
    t.levels[0].resize(levelSize(PixelFormat::Dxt5, 64, 32));
    t.levels[1].resize(levelSize(PixelFormat::Dxt5, 32, 16));
    t.levels[2].resize(levelSize(PixelFormat::Dxt5, 16, 8));
    const std::string d = ddsBytes(t);
    auto u32 = [&](std::size_t at) {
        return std::uint32_t(std::uint8_t(d[at])) | std::uint32_t(std::uint8_t(d[at + 1])) << 8 |
               std::uint32_t(std::uint8_t(d[at + 2])) << 16 | std::uint32_t(std::uint8_t(d[at + 3])) << 24;
    };
    EXPECT_EQ(d.substr(0, 4), "DDS ");
    EXPECT_EQ(u32(4), 124u);
    EXPECT_EQ(u32(8), 0x000A100Fu) << "caps, height, width, pitch, pixel format, mip count, linear size";
    EXPECT_EQ(u32(12), 32u);
    EXPECT_EQ(u32(16), 64u);
    EXPECT_EQ(u32(20), levelSize(PixelFormat::Dxt5, 64, 32));
    EXPECT_EQ(u32(28), 3u);
    EXPECT_EQ(u32(76), 32u);
    EXPECT_EQ(u32(80), 4u);
    EXPECT_EQ(d.substr(84, 4), "DXT5");
    EXPECT_EQ(u32(108), 0x401008u);
    EXPECT_EQ(d.size(), 128 + t.levels[0].size() + t.levels[1].size() + t.levels[2].size());

    const TextureLevels argb{PixelFormat::Argb8888, 2, 2, {pattern(16, 1)}};
    const std::string a = ddsBytes(argb);
    EXPECT_EQ(std::uint8_t(a[80]), 0x41);
    EXPECT_EQ(std::uint8_t(a[88]), 0x20);
    for (std::size_t at : {94u, 97u, 100u, 107u})
        EXPECT_EQ(std::uint8_t(a[at]), 0xFF) << at;
    EXPECT_EQ(std::uint8_t(a[108]), 0) << "no mip-maps";
    TextureLevels read;
    std::string error;
    ASSERT_TRUE(readDds(a, read, error)) << error;
    EXPECT_EQ(read.format, PixelFormat::Argb8888);
}

TEST_F(DdsFiles, TheXmlScan) {
    std::string error;
    TextureLevels t;
    // Sixteen levels convert, seventeen are a texture group.
    const auto tiny = [&](std::size_t n) {
        std::string x = textureXml("HC_IMAGE_FORMAT_COMPRESSED", 4, std::vector<std::string>(n, pattern(8, 3)));
        return x;
    };
    EXPECT_TRUE(readTextureXml(tiny(16), t, nullptr, error)) << error;
    EXPECT_EQ(t.levels.size(), 16u);
    EXPECT_FALSE(readTextureXml(tiny(17), t, nullptr, error));
    EXPECT_EQ(error, "Sorry, unable to convert files of the following type at this time:-Multiple-Texture file.");

    // The format's case does not matter; another format is named.
    EXPECT_TRUE(readTextureXml(textureXml("hc_image_format_compressed_interp_alpha", 4, {pattern(16, 1)}), t, nullptr, error));
    EXPECT_EQ(t.format, PixelFormat::Dxt5);
    EXPECT_FALSE(readTextureXml(textureXml("HC_IMAGE_FORMAT_PALETTE8", 4, {pattern(16, 1)}), t, nullptr, error));
    EXPECT_EQ(error, "Sorry, unable to convert files of the following type at this time:- HC_IMAGE_FORMAT_PALETTE8");

    // Line breaks and blanks inside a blob's text give the same bytes.
    const std::string plain = textureXml("HC_IMAGE_FORMAT_COMPRESSED", 4, {pattern(8, 5)});
    std::string broken = plain;
    const std::size_t at = broken.find("\">", broken.find("<d:blob")) + 2;
    broken.insert(at + 4, "\r\n\t ");
    broken.insert(at + 2, "\n");
    TextureLevels a, b;
    ASSERT_TRUE(readTextureXml(plain, a, nullptr, error));
    ASSERT_TRUE(readTextureXml(broken, b, nullptr, error)) << error;
    EXPECT_EQ(a.levels, b.levels);

    // A blob shorter than its level, or shorter than its own d:size.
    EXPECT_FALSE(readTextureXml(textureXml("HC_IMAGE_FORMAT_COMPRESSED", 8, {pattern(8, 1)}), t, nullptr, error));
    EXPECT_NE(error.find("mip level 1 is short"), std::string::npos) << error;
    std::string cut = plain;
    cut.erase(cut.find("</d:blob>") - 2, 2);
    EXPECT_FALSE(readTextureXml(cut, t, nullptr, error));
    EXPECT_NE(error.find("is short"), std::string::npos) << error;
}

TEST_F(DdsFiles, QuotesAndHashesInTheHeaderFile) {
    const std::string xml = textureXml("HC_IMAGE_FORMAT_COMPRESSED", 4, {pattern(8, 2)}, "Tex\\Caf\xC3\xA9 #1");
    TextureLevels t;
    TexturePieces pieces;
    std::string error;
    ASSERT_TRUE(readTextureXml(xml, t, &pieces, error)) << error;
    ASSERT_EQ(pieces.pieces.size(), 2u);
    const std::string header = headerFileText(pieces);
    EXPECT_EQ(header.find("d:size=\"8\""), std::string::npos) << "quotes are kept as #";
    EXPECT_NE(header.find("d:size=#8#"), std::string::npos);
    TexturePieces back;
    ASSERT_TRUE(readHeaderFile(header, back, error)) << error;
    EXPECT_EQ(back.sizes, pieces.sizes);
    const std::string rebuilt = rebuildXml(back, t.levels);
    EXPECT_NE(rebuilt.find("d:size=\"8\""), std::string::npos);
    // A "#" of the document comes back as a quote, as the header file's readers always did.
    EXPECT_NE(rebuilt.find("Caf\xC3\xA9 \"1"), std::string::npos);
    // Rows of four pairs, no line feed before the blob's end.
    EXPECT_NE(rebuilt.find(hex(t.levels[0].substr(0, 1)) + " "), std::string::npos);
    EXPECT_EQ(rebuilt.find("\n</d:blob"), std::string::npos);
    TextureLevels again;
    ASSERT_TRUE(readTextureXml(rebuilt, again, nullptr, error)) << error;
    EXPECT_EQ(again.levels, t.levels);

    EXPECT_FALSE(readHeaderFile("2\r\n8\r\n\"head\"\r\n", back, error));
    EXPECT_NE(error.find("damaged"), std::string::npos);
    EXPECT_FALSE(readHeaderFile("", back, error));
}

TEST_F(DdsFiles, BadDdsFilesAreRefusedAndNothingIsWritten) {
    const std::vector<std::string> levels = chain(PixelFormat::Dxt5, 16, 3);
    const fs::path texture = document("Wagen, \"Bräun\".TgPcDx", textureXml("HC_IMAGE_FORMAT_COMPRESSED_INTERP_ALPHA", 16, levels));
    const std::string before = readAll(texture);
    const fs::path dds = dir / "edit.dds";
    ASSERT_TRUE(textureToDds(files, texture, dds).ok);
    const std::string good = readAll(dds);

    // Each bad file in place of the good one, the header file beside it untouched.
    auto refused = [&](const std::string& bytes, const std::string& says) {
        SCOPED_TRACE(says);
        writeAll(dds, bytes);
        const DdsImport r = ddsToTexture(files, dds, texture);
        EXPECT_FALSE(r.ok);
        EXPECT_NE(r.message.find(dds.string()), std::string::npos) << r.message;
        EXPECT_NE(r.message.find(says), std::string::npos) << r.message;
        EXPECT_EQ(readAll(texture), before);
        EXPECT_FALSE(fs::exists(texture.string() + ".bak"));
    };
    TextureLevels other{PixelFormat::Dxt5, 32, 32, chain(PixelFormat::Dxt5, 32, 3)};
    refused(ddsBytes(other), "the picture is 32x32 DXT5 ARGB, 3 mip levels but its texture was 16x16 DXT5 ARGB");
    TextureLevels dxt1{PixelFormat::Dxt1, 16, 16, chain(PixelFormat::Dxt1, 16, 3)};
    refused(ddsBytes(dxt1), "16x16 DXT1 ARGB");
    TextureLevels fewer{PixelFormat::Dxt5, 16, 16, chain(PixelFormat::Dxt5, 16, 2)};
    refused(ddsBytes(fewer), "2 mip levels but its texture was 16x16 DXT5 ARGB, 3 mip levels");
    refused(good.substr(0, good.size() - 1), "the file is cut short");
    refused(good.substr(0, 100), "the file is cut short");
    std::string lying = good;
    lying[28] = 5; // five mips said, three there
    refused(lying, "the file is cut short");
    lying[28] = 1; // one mip said, three there
    refused(lying, "its header does not tell its mip levels right");
    std::string dx10 = good;
    dx10.replace(84, 4, "DX10");
    refused(dx10, "DX10 is none of DXT1");
    refused(std::string(200, 'x'), "not a DDS file");

    // Without its header file.
    writeAll(dds, good);
    fs::remove(headerFileFor(dds));
    const DdsImport lost = ddsToTexture(files, dds, texture);
    EXPECT_FALSE(lost.ok);
    EXPECT_NE(lost.message.find("No header file found in TempFiles for this .dds file, cannot process further."), std::string::npos);
    EXPECT_EQ(readAll(texture), before);

    // A texture whose second level is shorter than a 8x8 DXT5 level.
    std::vector<std::string> cut = levels;
    cut[1].resize(cut[1].size() / 2);
    const fs::path shortBlob = document("Kurz, 'ä'.TgPcDx", textureXml("HC_IMAGE_FORMAT_COMPRESSED_INTERP_ALPHA", 16, cut));
    const DdsExport refusedShort = textureToDds(files, shortBlob, dir / "short.dds");
    EXPECT_FALSE(refusedShort.ok);
    EXPECT_EQ(refusedShort.message, shortBlob.string() + ": mip level 2 is short: it holds 32 bytes, a 8x8 DXT5 ARGB level needs 64");
    EXPECT_FALSE(fs::exists(dir / "short.dds"));
    EXPECT_FALSE(fs::exists(dir / "short.dat"));

    // Not a texture at all, and a texture that does not exist.
    EXPECT_EQ(textureToDds(files, dds, dir / "x.dds").message, dds.string() + ": You do not appear to have opened a .TgPcDx file?");
    const DdsExport missing = textureToDds(files, dir / "Gone, \"é\".TgPcDx", dir / "y.dds");
    EXPECT_FALSE(missing.ok);
    EXPECT_NE(missing.message.find("Gone, \"é\".TgPcDx"), std::string::npos) << missing.message;
    EXPECT_FALSE(fs::exists(dir / "y.dds"));
}

TEST_F(DdsFiles, AFailedWriteLeavesTheOldTextureWhole) {
    struct FailingRename : velmora::FileOps {
        std::error_code rename(const fs::path&, const fs::path&) override { return std::make_error_code(std::errc::io_error); }
    } failing;
    const fs::path texture = document("t.TgPcDx", textureXml("HC_IMAGE_FORMAT_COMPRESSED", 8, chain(PixelFormat::Dxt1, 8, 2)));
    const std::string before = readAll(texture);
    const fs::path dds = dir / "t.dds";
    ASSERT_TRUE(textureToDds(files, texture, dds).ok);
    std::string edited = readAll(dds);
    edited[130] = static_cast<char>(edited[130] ^ 0x55);
    writeAll(dds, edited);
    files.setFileOps(&failing);
    const DdsImport r = ddsToTexture(files, dds, texture);
    files.setFileOps(nullptr);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.message.find("t.TgPcDx"), std::string::npos) << r.message;
    EXPECT_EQ(readAll(texture), before);
    // And once it can write, the edit arrives.
    ASSERT_TRUE(ddsToTexture(files, dds, texture).ok);
    TextureLevels now;
    std::string error;
    ASSERT_TRUE(readTextureFile(texture, now, error)) << error;
    EXPECT_EQ(now.levels[0][2], edited[130]);
}
