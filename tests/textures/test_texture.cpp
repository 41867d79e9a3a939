#include "velmora/demo/demoinstall.h"
#include "velmora/textures/texture.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace velmora::textures;

namespace {

std::string block(std::initializer_list<int> bytes) {
    std::string s;
    for (int b : bytes)
        s.push_back(static_cast<char>(b));
    return s;
}

std::array<int, 4> pixel(const Image& img, int x, int y) {
    const auto* p = &img.rgba[(static_cast<std::size_t>(y) * static_cast<std::size_t>(img.width) + static_cast<std::size_t>(x)) * 4];
    return {p[0], p[1], p[2], p[3]};
}

} // namespace

TEST(Dxt, OneBlockOfEachFormat) {
    // DXT1, c0 red > c1 blue: index 0 red, 1 blue, 2 two thirds red, 3 one third red.
    // Indices row by row, two bits a pixel, lowest first: row 0 = 0,1,2,3.
    const std::string dxt1 = block({0x00, 0xF8, 0x1F, 0x00, 0b11100100, 0, 0, 0});
    Image img = decodeLevel(PixelFormat::Dxt1, 4, 4, dxt1);
    ASSERT_TRUE(img.valid());
    EXPECT_EQ(pixel(img, 0, 0), (std::array<int, 4>{255, 0, 0, 255}));
    EXPECT_EQ(pixel(img, 1, 0), (std::array<int, 4>{0, 0, 255, 255}));
    EXPECT_EQ(pixel(img, 2, 0), (std::array<int, 4>{170, 0, 85, 255}));
    EXPECT_EQ(pixel(img, 3, 0), (std::array<int, 4>{85, 0, 170, 255}));

    // c0 <= c1 switches DXT1 to three colours and transparent black.
    const std::string punch = block({0x1F, 0x00, 0x00, 0xF8, 0b11000000, 0, 0, 0});
    img = decodeLevel(PixelFormat::Dxt1, 4, 4, punch);
    EXPECT_EQ(pixel(img, 3, 0), (std::array<int, 4>{0, 0, 0, 0}));

    // DXT3: explicit four-bit alpha, first pixel 0x3 -> 51, second 0xF -> 255.
    std::string dxt3 = block({0xF3, 0, 0, 0, 0, 0, 0, 0}) + dxt1;
    img = decodeLevel(PixelFormat::Dxt3, 4, 4, dxt3);
    EXPECT_EQ(pixel(img, 0, 0)[3], 51);
    EXPECT_EQ(pixel(img, 1, 0)[3], 255);

    // DXT5: a0 = 255, a1 = 0, codes 0 and 1 for the first two pixels, 7 for the third.
    std::string dxt5 = block({255, 0, 0b11001000, 0b00000001, 0, 0, 0, 0}) + dxt1;
    img = decodeLevel(PixelFormat::Dxt5, 4, 4, dxt5);
    EXPECT_EQ(pixel(img, 0, 0)[3], 255);
    EXPECT_EQ(pixel(img, 1, 0)[3], 0);
    EXPECT_EQ(pixel(img, 2, 0)[3], (1 * 255 + 6 * 0) / 7);
}

TEST(Dxt, SizesAndShortData) {
    EXPECT_EQ(levelSize(PixelFormat::Dxt1, 1024, 1024), 524288u);
    EXPECT_EQ(levelSize(PixelFormat::Dxt3, 2, 2), 16u);
    EXPECT_EQ(levelSize(PixelFormat::Argb8888, 3, 2), 24u);
    EXPECT_FALSE(decodeLevel(PixelFormat::Dxt1, 8, 8, std::string(8, '\0')).valid());
    EXPECT_FALSE(decodeLevel(PixelFormat::Unknown, 4, 4, std::string(64, '\0')).valid());
    // A 2x2 level takes a whole block and keeps its own size.
    const Image small = decodeLevel(PixelFormat::Dxt1, 2, 2, std::string(8, '\0'));
    EXPECT_EQ(small.width, 2);
    EXPECT_EQ(small.rgba.size(), 16u);
}

TEST(TextureDocument, FirstLevelFromTheXml) {
    const std::string xml = "<cHcTexture><Width d:type=\"sUInt32\">4</Width><Data><cHcTextureData><Mip>"
                            "<cHcImageDx><Format d:type=\"cDeltaString\">HC_IMAGE_FORMAT_COMPRESSED</Format>"
                            "<IsSwizzled d:type=\"bool\">0</IsSwizzled><Width d:type=\"sUInt16\">4</Width>"
                            "<Height d:type=\"sUInt16\">4</Height><d:blob d:size=\"8\">00F81F00E4000000</d:blob>"
                            "</cHcImageDx></Mip></cHcTextureData></Data></cHcTexture>";
    std::string error;
    const Image img = textureFromXml(xml, &error);
    ASSERT_TRUE(img.valid()) << error;
    EXPECT_EQ(pixel(img, 1, 0), (std::array<int, 4>{0, 0, 255, 255}));

    EXPECT_FALSE(textureFromXml("<cHcTexture/>", &error).valid());
    EXPECT_EQ(error, "the document holds no image");
}

TEST(TextureDocument, ARealTextureThroughTheCodec) {
    const std::filesystem::path file = std::filesystem::path(VELMORA_TESTDATA) / "WheelCompleteMap.TgPcDx";
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "the shared test documents are not beside this checkout";
    std::string error;
    const Image img = readTexture(file, &error);
    ASSERT_TRUE(img.valid()) << error;
    EXPECT_EQ(img.width, 1024);
    EXPECT_EQ(img.height, 1024);
}

TEST(TextureDocument, EveryShippedDemoTextureDecodes) {
    // A handful of the generator's textures: DXT1, DXT3 and DXT5 with their mip chains.
    const auto dir = std::filesystem::temp_directory_path() / "velmora-texture-demo";
    std::filesystem::remove_all(dir);
    ASSERT_TRUE(velmora::demo::generateDemoInstall(dir, {}).ok);
    int decoded = 0;
    for (const auto& e : std::filesystem::recursive_directory_iterator(dir / "Assets")) {
        if (e.path().extension() != ".TgPcDx" || decoded >= 40)
            continue;
        std::string error;
        const Image img = readTexture(e.path(), &error);
        EXPECT_TRUE(img.valid()) << e.path() << ": " << error;
        EXPECT_EQ(img.width & (img.width - 1), 0) << "powers of two";
        ++decoded;
    }
    EXPECT_GT(decoded, 10);
    std::filesystem::remove_all(dir);
}
