// The converter's XML forms that the generator's documents must match byte for byte, and the
// block-compressed pixel data of its textures.

#include "dxt.h"
#include "velmora/demo/xmlbuilder.h"

#include <gtest/gtest.h>

using namespace velmora::demo;

TEST(XmlBuilder, FloatsPrintLikeTheConverter) {
    // Exact decimal ties go away from zero, where the C library would round to even.
    EXPECT_EQ(formatFloat(1.015625), "1.01563");
    EXPECT_EQ(formatFloat(725.5625), "725.563");
    EXPECT_EQ(formatFloat(-1.015625), "-1.01563");
    EXPECT_EQ(formatFloat(static_cast<float>(514.399)), "514.399");
    EXPECT_EQ(formatFloat(static_cast<float>(0.000358953)), "0.000358953");
    EXPECT_EQ(formatFloat(5769010), "5.76901e+006");
    EXPECT_EQ(formatFloat(5769010, 2), "5.76901e+06");
    EXPECT_EQ(formatFloat(static_cast<float>(1.4013e-45)), "1.4013e-045");
    EXPECT_EQ(formatFloat(999999.5), "1e+006");
    EXPECT_EQ(formatFloat(0.0), "0");
    EXPECT_EQ(formatFloat(-0.0), "-0");
    EXPECT_EQ(formatFloat(121), "121");
    EXPECT_EQ(formatFloat(100000), "100000");
    EXPECT_EQ(formatFloat(0.0001), "0.0001");
    EXPECT_EQ(formatFloat(0.00001), "1e-005");
}

TEST(XmlBuilder, WritesTheConverterLayout) {
    XmlBuilder x("cRecordSet", -12);
    x.open("Record").open("Network::cTrackRibbon", 7).close().str("Name", "O'Brien & \"Sons\"").str("Empty", "");
    x.float32("Mass", 14.7).floats("RBottomLeft", {100.3391495, -0.0000001});
    x.blob(std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09", 9)).nil();
    std::string xml = x.finish();
    const std::string expected =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
        "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\" d:id=\"-12\">\r\n"
        "\t<Record>\r\n"
        "\t\t<Network-cTrackRibbon d:id=\"7\"/>\r\n"
        "\t\t<Name d:type=\"cDeltaString\">O&apos;Brien &amp; &quot;Sons&quot;</Name>\r\n"
        "\t\t<Empty d:type=\"cDeltaString\"></Empty>\r\n"
        "\t\t<Mass d:type=\"sFloat32\" d:alt_encoding=\"0000006066662D40\" d:precision=\"string\">14.7</Mass>\r\n"
        "\t\t<RBottomLeft d:numElements=\"2\" d:elementType=\"sFloat32\" d:precision=\"string\">100.3391495 "
        "-0.0000001</RBottomLeft>\r\n"
        "\t\t<d:blob d:size=\"9\">0102030405060708 09</d:blob>\r\n"
        "\t\t<d:nil/>\r\n"
        "\t</Record>\r\n"
        "</cRecordSet>\r\n";
    EXPECT_EQ(xml, expected);
}

TEST(XmlBuilder, LongBlobsBreakEveryFourGroups) {
    XmlBuilder x("Root");
    x.blob(std::string(40, '\xAB'));
    std::string xml = x.finish();
    std::string group(16, 'B');
    for (std::size_t i = 1; i < group.size(); i += 2)
        group[i] = 'B', group[i - 1] = 'A';
    EXPECT_NE(xml.find(">" + group + " " + group + " " + group + " " + group + "\r\n" + group + "</d:blob>"),
              std::string::npos)
        << xml;
}

namespace {
// Decodes the colour end points and the pixel indices of the first and last row of a block.
struct Block {
    unsigned c0, c1, firstRow, lastRow;
};
Block colourHalf(const std::string& bytes, std::size_t at) {
    auto u8 = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(bytes[at + i])); };
    return {u8(0) | u8(1) << 8, u8(2) | u8(3) << 8, u8(4), u8(7)};
}
} // namespace

TEST(Dxt, LevelsHaveTheFormatsSizes) {
    EXPECT_EQ(encodeDxtLevel(DxtFormat::Dxt1, 64, 64, {}, {}).size(), 16u * 16u * 8u);
    EXPECT_EQ(encodeDxtLevel(DxtFormat::Dxt3, 64, 64, {}, {}).size(), 16u * 16u * 16u);
    EXPECT_EQ(encodeDxtLevel(DxtFormat::Dxt5, 8, 4, {}, {}).size(), 2u * 16u);
    EXPECT_EQ(encodeDxtLevel(DxtFormat::Dxt1, 2, 2, {}, {}).size(), 8u); // a whole block below 4x4
    EXPECT_EQ(dxtLevelSize(DxtFormat::Dxt5, 1024, 1024), 1048576u);
    EXPECT_STREQ(dxtFormatName(DxtFormat::Dxt3), "HC_IMAGE_FORMAT_COMPRESSED_EXPL_ALPHA");
}

TEST(Dxt, SolidAndGradientBlocksDecodeToTheirColours) {
    Rgba red{255, 0, 0, 255}, blue{0, 0, 255, 255};
    Block solid = colourHalf(encodeDxtLevel(DxtFormat::Dxt1, 4, 4, red, red), 0);
    EXPECT_EQ(solid.c0, 0xF800u);
    EXPECT_EQ(solid.c0, solid.c1);
    EXPECT_EQ(solid.firstRow, 0u);

    // One block row from red to blue: the top row picks red, the bottom row blue, and the block
    // stays in four-colour mode (c0 > c1).
    Block g = colourHalf(encodeDxtLevel(DxtFormat::Dxt1, 4, 4, red, blue), 0);
    ASSERT_GT(g.c0, g.c1);
    unsigned redIndex = g.c0 == 0xF800u ? 0u : 1u;
    EXPECT_EQ(g.firstRow, redIndex * 0x55u);
    EXPECT_EQ(g.lastRow, (1u - redIndex) * 0x55u);

    // DXT5 puts an alpha block first; opaque end points give a constant alpha.
    std::string dxt5 = encodeDxtLevel(DxtFormat::Dxt5, 4, 4, red, red);
    EXPECT_EQ(static_cast<unsigned char>(dxt5[0]), 255u);
    EXPECT_EQ(colourHalf(dxt5, 8).c0, 0xF800u);
    // DXT3: sixteen 4-bit alphas, all 15 for opaque pixels.
    std::string dxt3 = encodeDxtLevel(DxtFormat::Dxt3, 4, 4, red, red);
    EXPECT_EQ(dxt3.substr(0, 8), std::string(8, '\xFF'));
}
