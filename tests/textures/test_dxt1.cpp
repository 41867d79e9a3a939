#include "velmora/textures/dxt1.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace velmora::textures;

namespace {

Image filled(int w, int h, auto colour) {
    Image p{w, h, std::vector<std::uint8_t>(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 4)};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const auto [r, g, b] = colour(x, y);
            std::uint8_t* px = &p.rgba[(static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x)) * 4];
            px[0] = static_cast<std::uint8_t>(r);
            px[1] = static_cast<std::uint8_t>(g);
            px[2] = static_cast<std::uint8_t>(b);
            px[3] = 255;
        }
    return p;
}

// The largest difference in any colour of any pixel.
int worst(const Image& a, const Image& b) {
    int most = 0;
    for (std::size_t i = 0; i < a.rgba.size(); ++i)
        if (i % 4 != 3)
            most = std::max(most, std::abs(int(a.rgba[i]) - int(b.rgba[i])));
    return most;
}

} // namespace

TEST(Dxt1, ColoursComeBackCloseAndFlatBlocksExactlyAsFar565Allows) {
    // Flat colours that 5-6-5 holds exactly come back exactly; others within its steps.
    const Image red = filled(8, 8, [](int, int) { return std::tuple{255, 0, 0}; });
    EXPECT_EQ(worst(red, decodeLevel(PixelFormat::Dxt1, 8, 8, encodeDxt1(red))), 0);
    const Image grey = filled(8, 8, [](int, int) { return std::tuple{100, 100, 100}; });
    EXPECT_LE(worst(grey, decodeLevel(PixelFormat::Dxt1, 8, 8, encodeDxt1(grey))), 4);
    // A gradient across each block: every pixel within a third of the block's range.
    const Image ramp = filled(64, 32, [](int x, int y) { return std::tuple{x * 4, y * 8, 255 - x * 4}; });
    const Image back = decodeLevel(PixelFormat::Dxt1, 64, 32, encodeDxt1(ramp));
    ASSERT_TRUE(back.valid());
    EXPECT_LE(worst(ramp, back), 16);
    // Two colours in one block, as on a sharp edge: both kept.
    const Image edge = filled(4, 4, [](int x, int) { return x < 2 ? std::tuple{0, 0, 0} : std::tuple{255, 255, 255}; });
    EXPECT_EQ(worst(edge, decodeLevel(PixelFormat::Dxt1, 4, 4, encodeDxt1(edge))), 0);
}

TEST(Dxt1, ScalingAveragesAndLevelsHaveTheirSizes) {
    const Image checks = filled(2, 2, [](int x, int y) { return (x + y) % 2 ? std::tuple{200, 0, 0} : std::tuple{0, 0, 100}; });
    const Image one = halved(checks);
    ASSERT_EQ(one.width, 1);
    EXPECT_EQ(one.rgba[0], 100);
    EXPECT_EQ(one.rgba[2], 50);
    // Up and down to sizes that do not divide: every pixel covered, no reading past the edge.
    const Image odd = filled(7, 3, [](int x, int y) { return std::tuple{x * 30, y * 80, 9}; });
    EXPECT_TRUE(scaled(odd, 256, 128).valid());
    EXPECT_TRUE(scaled(odd, 2, 1).valid());
    EXPECT_TRUE(scaled(Image{}, 4, 4).valid()) << "an empty picture gives a black one, not a fault";

    // The thumbnail the simulator wants: 256 x 128, six levels, DXT1; the DDS reads back so.
    const TextureLevels t = dxt1Levels(odd, 256, 128, 6);
    ASSERT_EQ(t.levels.size(), 6u);
    const std::size_t expected[] = {256 * 128 / 2, 128 * 64 / 2, 64 * 32 / 2, 32 * 16 / 2, 16 * 8 / 2, 8 * 4 / 2};
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(t.levels[i].size(), expected[i]) << "level " << i;
    TextureLevels read;
    std::vector<std::string_view> views;
    std::string why;
    const std::string dds = ddsBytes(t);
    ASSERT_TRUE(readDdsLevels(dds, read, views, why)) << why;
    EXPECT_EQ(read.width, 256);
    EXPECT_EQ(read.height, 128);
    EXPECT_EQ(read.format, PixelFormat::Dxt1);
    EXPECT_EQ(views.size(), 6u);
}
