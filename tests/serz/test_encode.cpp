#include "numbers.h"

#include <algorithm>
#include "serz/serz.h"
#include "testfiles.h"

using namespace serz;
using namespace serztest;

namespace {

const std::string kRoot = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                          "<R xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n";

std::string roundTrip(const std::string& body, const ReadOptions& o = {}) {
    std::string bin, xml;
    Status s = encode(kRoot + body + "</R>\r\n", bin, o);
    EXPECT_TRUE(s.ok) << s.message;
    s = decode(bin, xml);
    EXPECT_TRUE(s.ok) << s.message;
    return xml;
}

Status refused(const std::string& xml) {
    std::string bin = "stale";
    const Status s = encode(xml, bin);
    EXPECT_FALSE(s.ok) << xml;
    EXPECT_TRUE(bin.empty());
    return s;
}

} // namespace

TEST(Encode, ConverterXmlGivesTheConvertersBinary) {
    SKIP_WITHOUT_TESTDATA();
    const std::string xml = slurp(testdata("routeproperties.serz.xml"));
    std::string bin;
    ASSERT_TRUE(encode(xml, bin).ok);
    EXPECT_EQ(bin, slurp(testdata("routeproperties.bin")));
    ASSERT_TRUE(encode(toCrLf(xml), bin).ok);
    EXPECT_EQ(bin, slurp(testdata("routeproperties.bin"))) << "line ends do not matter";
}

TEST(Encode, FloatsLosslessFromAltEncodingUnlessTheTextWasEdited) {
    // 305.6754455566406 prints as 305.675; its exact value comes back only from d:alt_encoding.
    const float value = 305.6754455566406f;
    std::string alt, text;
    appendAltEncoding(alt, value);
    appendFloatG(text, value, 3);
    ASSERT_EQ(text, "305.675");
    const std::string exact = "<v d:type=\"sFloat32\" d:alt_encoding=\"" + alt + "\" d:precision=\"string\">305.675</v>\r\n";
    std::string bin;
    ASSERT_TRUE(encode(kRoot + exact + "</R>", bin).ok);
    std::string xml;
    ASSERT_TRUE(decode(bin, xml).ok);
    EXPECT_NE(xml.find("d:alt_encoding=\"" + alt + "\""), std::string::npos);

    // The converter's way: the text, so the value moves to the nearest float of 305.675.
    ASSERT_TRUE(encode(kRoot + exact + "</R>", bin, {FloatImport::Compatible}).ok);
    ASSERT_TRUE(decode(bin, xml).ok);
    EXPECT_EQ(xml.find(alt), std::string::npos);
    EXPECT_NE(xml.find(">305.675<"), std::string::npos);

    // An edited text always wins.
    const std::string edited = "<v d:type=\"sFloat32\" d:alt_encoding=\"000000E0CE1A7340\" d:precision=\"string\">12.5</v>\r\n";
    EXPECT_NE(roundTrip(edited).find("d:alt_encoding=\"0000000000002940\" d:precision=\"string\">12.5<"), std::string::npos);
    // serz64's two-digit exponent is recognised as unedited too.
    const std::string two = "<v d:type=\"sFloat64\" d:alt_encoding=\"00000080CC015641\" d:precision=\"string\">5.76901e+06</v>\r\n";
    EXPECT_NE(roundTrip(two).find("00000080CC015641"), std::string::npos);
}

TEST(Encode, WhatTheConverterAccepts) {
    // A leaf without a type is a string, <X/> an empty element, comments are passed over.
    const std::string xml = roundTrip("<!-- a note -->\r\n<Plain>text</Plain>\r\n<Empty/>\r\n"
                                      "<Blank d:type=\"cDeltaString\"> \r\n</Blank>\r\n"
                                      "<Net-cThing d:id=\"-3\">\r\n<e d:type=\"sInt64\">-9000000000</e>\r\n</Net-cThing>\r\n"
                                      "<b d:type=\"bool\">yes</b>\r\n<d:nil/>\r\n"
                                      "<a d:numElements=\"2\" d:elementType=\"sFloat32\" d:precision=\"string\">1.5 -0.0000000</a>\r\n"
                                      "<d:blob d:size=\"3\">0A0b\r\n0C</d:blob>\r\n"
                                      "<q d:type=\"cDeltaString\">&#233;&#x20AC;&apos;</q>\r\n");
    EXPECT_NE(xml.find("\t<Plain d:type=\"cDeltaString\">text</Plain>"), std::string::npos);
    EXPECT_NE(xml.find("\t<Empty/>"), std::string::npos);
    EXPECT_NE(xml.find("<Blank d:type=\"cDeltaString\"> \r\n</Blank>"), std::string::npos) << "blank text kept";
    EXPECT_NE(xml.find("\t<Net-cThing d:id=\"-3\">\r\n\t\t<e d:type=\"sInt64\">-9000000000</e>"), std::string::npos);
    EXPECT_NE(xml.find("<b d:type=\"bool\">1</b>"), std::string::npos);
    EXPECT_NE(xml.find("\t<d:nil/>"), std::string::npos);
    EXPECT_NE(xml.find(">1.5000000 -0.0000000</a>"), std::string::npos);
    EXPECT_NE(xml.find("<d:blob d:size=\"3\">0A0B0C</d:blob>"), std::string::npos);
    EXPECT_NE(xml.find(">\xC3\xA9\xE2\x82\xAC&apos;</q>"), std::string::npos);
}

TEST(Encode, ChildCountsAreTheTrueCounts) {
    std::string bin;
    ASSERT_TRUE(encode(kRoot + "<a>\r\n<x d:type=\"bool\">1</x>\r\n<d:nil/>\r\n<y/>\r\n</a>\r\n</R>", bin).ok);
    // R: one child; a: three. The count follows the name and the id of each open token.
    const std::size_t a = bin.find(std::string("\x01\x00\x00\x00" "a", 5)); // the strref of "a"
    ASSERT_NE(a, std::string::npos);
    const std::uint8_t count = static_cast<std::uint8_t>(bin[a + 5 + 4]);
    EXPECT_EQ(count, 3);
}

TEST(Encode, BadXmlIsRefusedWithTheLine) {
    EXPECT_EQ(refused("\xEF\xBB\xBF" + kRoot + "</R>").line, 1u);
    Status s = refused(kRoot + "<a>\r\n<b/>\r\n</c>\r\n</R>");
    EXPECT_EQ(s.line, 5u);
    EXPECT_NE(s.message.find("</c> closes <a>"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<a>").message.find("a>"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<v d:type=\"sFloat128\">1</v></R>").message.find("sFloat128"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<v d:type=\"sUInt8\">256</v></R>").message.find("not an sUInt8"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<v d:type=\"sInt32\">12abc</v></R>").message.find("not an sInt32"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<v d:type=\"sFloat32\">one</v></R>").message.find("not a number"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<d:blob d:size=\"4\">0A0B</d:blob></R>").message.find("d:size says 4"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<d:blob d:size=\"1\">0G</d:blob></R>").message.find("hex digit"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<a d:numElements=\"3\" d:elementType=\"sFloat32\">1 2</a></R>").message.find("holds 2"),
              std::string::npos);
    EXPECT_NE(refused(kRoot + "<a x=1/></R>").message.find("not in quotes"), std::string::npos);
    EXPECT_NE(refused(kRoot + "<v d:type=\"cDeltaString\">a &nbsp; b</v></R>").message.find("&nbsp;"), std::string::npos);
    EXPECT_NE(refused(kRoot + "</R><Second/>").message.find("second root"), std::string::npos);
    refused("");
    refused("<?xml version=\"1.0\"?>");
    refused("<v d:type=\"sInt32\">1</v>");
}

TEST(Encode, MoreThan65535StringsAreRefused) {
    std::string xml = kRoot;
    for (int i = 0; i < 66000; ++i)
        xml += "<v d:type=\"cDeltaString\">" + std::to_string(i) + "</v>\n";
    xml += "</R>\n";
    EXPECT_NE(refused(xml).message.find("65,535"), std::string::npos);
}

TEST(Encode, EveryTruncationOfARealDocumentFailsOrIsWellFormed) {
    SKIP_WITHOUT_TESTDATA();
    const std::string xml = slurp(testdata("routeproperties.serz.xml"));
    // Cutting the text anywhere before the root's end must fail, never crash or hang.
    const std::size_t end = xml.rfind("</cRouteProperties>");
    for (std::size_t n = 0; n < end; n += 7) {
        std::string bin;
        ASSERT_FALSE(encode(std::string_view(xml).substr(0, n), bin).ok) << n;
        ASSERT_TRUE(bin.empty());
    }
}

// A generated corpus: every value type with edge values, arrays, references, nils, blobs and
// 1,200 element names, so the template ring wraps several times. XML -> binary -> XML must give
// the same text, and the binary written again must be the same bytes.
TEST(Encode, GeneratedCorpusRoundTrips) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                      "<cCorpus xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\" d:id=\"-77\">\r\n";
    auto line = [&](const std::string& s) { xml += "\t" + s + "\r\n"; };
    const char* values[][2] = {{"bool", "0"}, {"bool", "1"}, {"sInt8", "-128"}, {"sUInt8", "255"},
                               {"sInt16", "-32768"}, {"sUInt16", "65535"}, {"sInt32", "-2147483648"},
                               {"sUInt32", "4294967295"}, {"sInt64", "-9223372036854775808"},
                               {"sUInt64", "18446744073709551615"}};
    for (const auto& v : values)
        line(std::string("<v d:type=\"") + v[0] + "\">" + v[1] + "</v>");
    for (double f : {0.0, -0.0, 1.5, -2.25e-30, 3.4028234663852886e38, 1.015625, 725.5625}) {
        std::string alt, text;
        serz::appendAltEncoding(alt, static_cast<float>(f));
        serz::appendFloatG(text, static_cast<float>(f), 3);
        line("<f d:type=\"sFloat32\" d:alt_encoding=\"" + alt + "\" d:precision=\"string\">" + text + "</f>");
        alt.clear();
        text.clear();
        serz::appendAltEncoding(alt, f * 3.3);
        serz::appendFloatG(text, f * 3.3, 3);
        line("<g d:type=\"sFloat64\" d:alt_encoding=\"" + alt + "\" d:precision=\"string\">" + text + "</g>");
    }
    line("<m d:numElements=\"16\" d:elementType=\"sFloat32\" d:precision=\"string\">1.0000000 0.0000000 0.0000000 "
         "0.0000000 0.0000000 1.0000000 0.0000000 0.0000000 0.0000000 0.0000000 1.0000000 0.0000000 12.5000000 "
         "-3.2500000 0.1250000 1.0000000</m>");
    line("<r d:type=\"ref\">-123456</r>");
    line("<d:nil/>");
    line("<d:blob d:size=\"40\">0001020304050607 08090A0B0C0D0E0F 1011121314151617 18191A1B1C1D1E1F\r\n2021222324252627</d:blob>");
    line("<d:blob d:size=\"0\"></d:blob>");
    line("<s d:type=\"cDeltaString\">Gr\xC3\xBCn &amp; \xEF\xBF\xA9 &apos;q&quot; \x01</s>");
    for (int i = 0; i < 1200; ++i) {
        // An id of 0 is no id, and is not written.
        line("<Net-cItem" + std::to_string(i) + (i == 600 ? std::string() : " d:id=\"" + std::to_string(i - 600) + "\"") + ">");
        line("\t<x" + std::to_string(i % 700) + " d:type=\"sInt32\">" + std::to_string(i) + "</x" + std::to_string(i % 700) + ">");
        line("\t<Empty/>");
        line("</Net-cItem" + std::to_string(i) + ">");
    }
    xml += "</cCorpus>\r\n";

    std::string bin, back, again;
    const Status s = encode(xml, bin);
    ASSERT_TRUE(s.ok) << s.message;
    ASSERT_TRUE(decode(bin, back).ok);
    const auto diff = std::mismatch(back.begin(), back.end(), xml.begin(), xml.end());
    EXPECT_TRUE(back == xml) << "first difference at " << (diff.first - back.begin()) << ": "
                             << back.substr(static_cast<std::size_t>(diff.first - back.begin()) - 40, 80) << " | expected "
                             << xml.substr(static_cast<std::size_t>(diff.first - back.begin()) - 40, 80);
    ASSERT_TRUE(encode(back, again).ok);
    EXPECT_TRUE(again == bin);
}
