#include "velmora/core/xmlhighlight.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

// The colour each character ends with, as one digit a character.
std::string paint(const QString& line, bool& inComment) {
    std::string colours(static_cast<std::size_t>(line.size()), '0');
    for (const ColourSpan& s : xmlColourSpans(line, inComment))
        for (int i = s.start; i < s.start + s.length; ++i)
            colours[static_cast<std::size_t>(i)] = static_cast<char>('0' + static_cast<int>(s.colour));
    return colours;
}

std::string paint(const QString& line) {
    bool inComment = false;
    return paint(line, inComment);
}

} // namespace

TEST(XmlHighlight, TagsAttributesAndValues) {
    // <e d:type="sUInt64">42</e>
    EXPECT_EQ(paint(R"(<e d:type="sUInt64">42</e>)"),
              "11"         // <e
              "22222222"   //  d:type=
              "333333333"  // "sUInt64"
              "1"          // > goes on in the tag colour
              "00"         // 42
              "1111");     // </e>
    EXPECT_EQ(paint("\t<Name>"), "0111111");
    EXPECT_EQ(paint("a <> b"), "000000") << "no tag without a name";
    // Digits and single quotes are values too; an empty quoted value is not.
    EXPECT_EQ(paint("<a n=5 m='x'>"), "11" "222" "3" "222" "333" "1");
    EXPECT_EQ(paint(R"(<a n="">)"), "11111111");
}

TEST(XmlHighlight, EqualsSignBetweenTagsStaysPlain) {
    EXPECT_EQ(paint("<e>a = 5</e>"), "111" "00000" "1111");
    EXPECT_EQ(paint("<e>x=1</e><f>"), "111" "000" "1111" "111");
}

TEST(XmlHighlight, CommentsAcrossLines) {
    bool inComment = false;
    EXPECT_EQ(paint("<a/><!-- one", inComment), "1111" "44444444");
    EXPECT_TRUE(inComment);
    EXPECT_EQ(paint("two --> <b/>", inComment), "4444444" "0" "1111");
    EXPECT_FALSE(inComment);
    EXPECT_EQ(paint("<!-- <x a=\"1\"> -->", inComment), std::string(18, '4'));
}

TEST(XmlHighlight, RtfColourTable) {
    EXPECT_EQ(fcnGetRTFColor(0xC00000u), "\\red0\\green0\\blue192;");
    EXPECT_EQ(fcnGetRTFColor(0x00C000u), "\\red0\\green192\\blue0;");
    EXPECT_EQ(fcnGetRTFColor(std::string("#FF8000")), "\\red255\\green128\\blue0;");
    EXPECT_EQ(fcnGetRTFColor(std::string("zz")), "\\red0\\green0\\blue0;");
}
