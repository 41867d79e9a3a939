#include "velmora/textures/picture.h"

#include <gtest/gtest.h>

using namespace velmora::textures;

namespace {

// A w x h picture whose every pixel is unique: (x, y, x ^ y, 200 + x).
Image numbered(int w, int h) {
    Image img;
    img.width = w;
    img.height = h;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            img.rgba.insert(img.rgba.end(), {std::uint8_t(x), std::uint8_t(y), std::uint8_t(x ^ y), std::uint8_t(200 + x)});
    return img;
}

std::array<int, 4> at(const Image& img, int x, int y) {
    const auto* p = &img.rgba[(std::size_t(y) * std::size_t(img.width) + std::size_t(x)) * 4];
    return {p[0], p[1], p[2], p[3]};
}

} // namespace

TEST(Picture, FlipPutsTheLastRowFirstAndTwiceGivesItBack) {
    const Image img = numbered(3, 5);
    const Image once = flipped(img);
    EXPECT_EQ(at(once, 0, 0), at(img, 0, 4));
    EXPECT_EQ(at(once, 2, 4), at(img, 2, 0));
    EXPECT_EQ(at(once, 1, 2), at(img, 1, 2)); // the middle row stays
    EXPECT_EQ(flipped(once).rgba, img.rgba);
}

TEST(Picture, RotateTurnsClockwiseAndFourTurnsGiveItBack) {
    const Image img = numbered(3, 2); // wider than high
    const Image turned = rotated(img);
    ASSERT_EQ(turned.width, 2);
    ASSERT_EQ(turned.height, 3);
    // Clockwise: the bottom-left corner goes to the top-left, the top-left to the top-right.
    EXPECT_EQ(at(turned, 0, 0), at(img, 0, 1));
    EXPECT_EQ(at(turned, 1, 0), at(img, 0, 0));
    EXPECT_EQ(at(turned, 1, 2), at(img, 2, 0));
    Image back = img;
    for (int i = 0; i < 4; ++i)
        back = rotated(back);
    EXPECT_EQ(back.width, 3);
    EXPECT_EQ(back.rgba, img.rgba);
}

TEST(Picture, GreyMakesTheColoursEqualAndKeepsAlpha) {
    Image img = numbered(4, 4);
    img.rgba[0] = 255, img.rgba[1] = 0, img.rgba[2] = 0; // pure red: 0.299 of full
    const Image g = greyed(img);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            const auto p = at(g, x, y);
            EXPECT_EQ(p[0], p[1]);
            EXPECT_EQ(p[1], p[2]);
            EXPECT_EQ(p[3], at(img, x, y)[3]);
        }
    EXPECT_EQ(at(g, 0, 0)[0], 76);
    // White stays white, black stays black.
    Image bw = numbered(2, 1);
    bw.rgba = {255, 255, 255, 255, 0, 0, 0, 255};
    EXPECT_EQ(greyed(bw).rgba, bw.rgba);
}

TEST(Picture, StepsApplyInOrderAndLeaveAnEmptyPictureEmpty) {
    const Image img = numbered(4, 2);
    // A flip then a turn is not a turn then a flip.
    const Image a = applied(img, {PictureStep::Flip, PictureStep::Rotate});
    const Image b = applied(img, {PictureStep::Rotate, PictureStep::Flip});
    EXPECT_EQ(a.width, 2);
    EXPECT_NE(a.rgba, b.rgba);
    EXPECT_EQ(a.rgba, rotated(flipped(img)).rgba);
    EXPECT_FALSE(applied(Image{}, {PictureStep::Flip, PictureStep::Rotate, PictureStep::Grey}).valid());
}

TEST(Picture, QuarterTurnsFromDegrees) {
    int turns = -1;
    EXPECT_TRUE(quarterTurns(0, turns));
    EXPECT_EQ(turns, 0);
    EXPECT_TRUE(quarterTurns(270, turns));
    EXPECT_EQ(turns, 3);
    EXPECT_TRUE(quarterTurns(-90, turns));
    EXPECT_EQ(turns, 3);
    EXPECT_TRUE(quarterTurns(450, turns));
    EXPECT_EQ(turns, 1);
    EXPECT_FALSE(quarterTurns(45, turns));
}
