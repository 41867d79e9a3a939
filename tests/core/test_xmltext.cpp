#include "tempdir.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

const char* kBlueprintRef = "<Blueprint>\r\n"
                            "<iBlueprintLibrary-cAbsoluteBlueprintID>\r\n"
                            "<BlueprintSetID>\r\n"
                            "<iBlueprintLibrary-cBlueprintSetID>\r\n"
                            "<Provider d:type=\"cDeltaString\">DTG</Provider>\r\n"
                            "<Product d:type=\"cDeltaString\">Class66Pack01</Product>\r\n"
                            "</iBlueprintLibrary-cBlueprintSetID>\r\n"
                            "</BlueprintSetID>\r\n"
                            "<BlueprintID d:type=\"cDeltaString\">RailVehicles\\Class66.xml</BlueprintID>\r\n"
                            "<BlueprintIDs d:type=\"cDeltaString\">second</BlueprintIDs>\r\n"
                            "<Empty d:type=\"cDeltaString\"></Empty>\r\n"
                            "</iBlueprintLibrary-cAbsoluteBlueprintID>\r\n"
                            "</Blueprint>\r\n";

} // namespace

TEST(GetDetail, WalksRepeatedTagsAndFindsLongerTagsThatBeginWithTheName) {
    std::string text = kBlueprintRef;
    std::size_t pos = 1;
    std::string value;
    GetDetail(text, pos, "BlueprintID", value);
    EXPECT_EQ(value, "RailVehicles\\Class66.xml");
    ASSERT_GT(pos, 0u);
    EXPECT_EQ(text.compare(pos - 1, 13, "</BlueprintID"), 0);

    // The next call from the returned position finds the longer tag that begins with the name.
    GetDetail(text, pos, "BlueprintID", value);
    EXPECT_EQ(value, "second");

    // Then nothing: pos ends the scan and the value is left alone.
    GetDetail(text, pos, "BlueprintID", value);
    EXPECT_EQ(pos, 0u);
    EXPECT_EQ(value, "second");

    pos = 1;
    GetDetail(text, pos, "Empty", value);
    EXPECT_EQ(value, "");
    EXPECT_EQ(text.compare(pos - 1, 7, "</Empty"), 0);
}

TEST(GetDetail, TextModeIgnoresCaseAndDecodeRepairsTheValue) {
    const std::string text = "<NAME d:type=\"cDeltaString\">M&amp;apos;s M\xC3\xBChle</name>";
    std::size_t pos = 1;
    std::string value;
    GetDetail(text, pos, "Name", value);
    EXPECT_EQ(pos, 0u) << "binary mode keeps exact case";

    pos = 1;
    GetDetail(text, pos, "Name", value, {Match::Text, false, true});
    EXPECT_EQ(value, "M's M\xFChle");
}

TEST(GetDetail, MissingClosingTagIsLoggedAndEndsTheScan) {
    test::TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    ScanSettings settings;
    settings.log = &log;
    std::size_t pos = 1;
    std::string value = "old";
    GetDetail("<Name>unfinished", pos, "Name", value, settings);
    EXPECT_EQ(pos, 0u);
    EXPECT_EQ(value, "old");
    EXPECT_EQ(log.count(), 1);
}

TEST(PutDetail, ReplacesOneValueAndReturnsThePositionInTheOldText) {
    std::string text = "<a><Name d:type=\"cDeltaString\">old</Name><Name>two</Name></a>";
    std::size_t pos = 1;
    ScanSettings trim;
    trim.trim = true;
    PutDetail(text, pos, "Name", "  longer value ", trim);
    EXPECT_EQ(text, "<a><Name d:type=\"cDeltaString\">longer value</Name><Name>two</Name></a>");
    EXPECT_EQ(pos, std::string("<a><Name d:type=\"cDeltaString\">old").size() + 1);

    std::size_t second = 45;
    PutDetail(text, second, "Name", " x ");
    EXPECT_EQ(text, "<a><Name d:type=\"cDeltaString\">longer value</Name><Name> x </Name></a>");
}

TEST(PutDetail, NothingFoundChangesNothingAndIsLogged) {
    test::TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    ScanSettings settings;
    settings.log = &log;
    std::string text = "<Name>only</Name>";
    std::size_t pos = 3; // past the only occurrence
    PutDetail(text, pos, "Name", "new", settings);
    EXPECT_EQ(text, "<Name>only</Name>");
    EXPECT_EQ(pos, 0u);
    EXPECT_EQ(log.count(), 1);
}

TEST(GetProvider, FindsTheReferenceAroundAPosition) {
    const std::string text = kBlueprintRef;
    std::size_t pos = 1;
    std::string id, provider, product;
    GetDetail(text, pos, "BlueprintID", id);
    GetProvider(pos, provider, product, text);
    EXPECT_EQ(provider, "DTG");
    EXPECT_EQ(product, "Class66Pack01");

    test::TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    ScanSettings settings;
    settings.log = &log;
    GetProvider(5, provider, product, text, settings);
    EXPECT_EQ(provider, "");
    EXPECT_EQ(product, "");
    EXPECT_EQ(log.count(), 1);

    ScanSettings decode;
    decode.decode = true;
    GetProvider(200, provider, product, "<Provider>R&amp;D</Provider><Product>Gr\xEF\xBF\xBCn</Product>", decode);
    EXPECT_EQ(provider, "R&D");
    EXPECT_EQ(product, "Gr\xFCn");
}

TEST(GetDetail2, ReadsTheAttributeForm) {
    const std::string text = "<e d:type=\"cDeltaString\" Name=\"Route\">Alpha</e><e Name=\"Route\">Beta</e>";
    std::size_t pos = 1;
    std::string value;
    GetDetail2(text, pos, "Name", value);
    EXPECT_EQ(value, "Alpha");
    GetDetail2(text, pos, "Name", value);
    EXPECT_EQ(value, "Beta");
    GetDetail2(text, pos, "Name", value);
    EXPECT_EQ(pos, 0u);
}

TEST(DecodeChars, EntitiesRepeatUntilGone) {
    EXPECT_EQ(DecodedChars("Driver&amp;apos;s"), "Driver's");
    EXPECT_EQ(DecodedChars("a&amp;amp;b"), "a&b");
    EXPECT_EQ(DecodedChars("say &quot;hi&quot;"), "say 'hi'");
    EXPECT_EQ(DecodedChars("A &AMP; B"), "A & B") << "comparisons ignore case";
    EXPECT_EQ(DecodedChars("plain ASCII name"), "plain ASCII name");
}

TEST(DecodeChars, BothUtf8SpellingsBecomeWindows1252) {
    EXPECT_EQ(DecodedChars("M\xC3\xBCnchen"), "M\xFCnchen");
    EXPECT_EQ(DecodedChars("M\xEF\xBF\xBCnchen"), "M\xFCnchen");
    EXPECT_EQ(DecodedChars("Stra\xEF\xBF\x9F" "e"), "Stra\xDF" "e");
    EXPECT_EQ(DecodedChars("Caf\xC3\xA9"), "Caf\xE9");
    EXPECT_EQ(DecodedChars("\xEF\xBE\xBD"), "\xBD");
    // The mirror of the writer's table: F9 after a lead byte is a ù.
    EXPECT_EQ(DecodedChars("\xC3\xF9"), "\xF9");
    // Sequences outside the table stay as they are.
    EXPECT_EQ(DecodedChars("\xC3\xB8 & x"), "\xC3\xB8 & x");
}

TEST(ReplaceApos, WritesTheSimulatorsFormsInTableOrder) {
    auto apos = [](std::string s) {
        ReplaceApos(s);
        return s;
    };
    EXPECT_EQ(apos("R&D's"), "R&amp;D&quot;s");
    EXPECT_EQ(DecodedChars(apos("R&D's")), "R&D's");
    EXPECT_EQ(apos("&quot;"), "&quot;");
    EXPECT_EQ(apos("&apos;"), "&apos;");
    // The four letters first in the table end in the widened form.
    EXPECT_EQ(apos("\xFC"), "\xEF\xBF\xBC");
    EXPECT_EQ(apos("\xDF"), "\xEF\xBF\x9F");
    // A doubled ö: the second is passed over by its row and caught by the widened row.
    EXPECT_EQ(apos("\xF6\xF6"), "\xC3\xB6\xEF\xBF\xB6");
    // A doubled Ä keeps its second letter.
    EXPECT_EQ(apos("\xC4\xC4"), "\xC3\x84\xC4");
    EXPECT_EQ(apos("\xE9t\xE9"), "\xC3\xA9t\xC3\xA9");
}

TEST(ReplaceApos, EveryLetterComesBackThroughDecodeChars) {
    // All letters of the writer's table but those the two tables spell differently: ê and å,
    // and ý, whose C3 BD the later ½ row turns into C3 C2 BD.
    for (char c : std::string("\xDF\xFC\xE4\xE1\xC4\xD6\xDC\xF6\xED\xE6\xF1\xE7\xE8\xE9\xE0\xF9")) {
        std::string s(1, c);
        ReplaceApos(s);
        EXPECT_EQ(DecodedChars(s), std::string(1, c)) << "letter 0x" << std::hex << (int)(unsigned char)c;
    }
    std::string y = "\xFD";
    ReplaceApos(y);
    EXPECT_EQ(y, "\xC3\xC2\xBD");
}

TEST(ReplaceApos, RowsThatFeedOnThemselvesEndAndAreLoggedOnce) {
    test::TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    std::string s = "f\xEAte \xEA";
    ReplaceApos(s, &log);
    EXPECT_EQ(s, "f\xC3\xEAte \xC3\xEA");
    EXPECT_EQ(log.count(), 1);

    std::string t = "\xF9\xEA";
    ReplaceApos2(t, &log);
    EXPECT_EQ(t, "\xC3\xF9\xC3\xEA");
    EXPECT_EQ(log.count(), 3);

    std::string plain = "no such letters";
    ReplaceApos(plain, &log);
    EXPECT_EQ(log.count(), 3) << "nothing to log when the letter is absent";
}

TEST(ReplaceApos2, WritesOrdinaryUtf8AndKeepsTheRepeatedRowsLive) {
    auto apos2 = [](std::string s) {
        ReplaceApos2(s);
        return s;
    };
    EXPECT_EQ(apos2("R&D's"), "R&amp;D&apos;s");
    EXPECT_EQ(apos2("&quot;"), "&amp;quot;");
    EXPECT_EQ(apos2("&apos;"), "&apos;");
    EXPECT_EQ(apos2("\xFC\xFC"), "\xC3\xBC\xC3\xBC");
    EXPECT_EQ(apos2("\xDF\xDF"), "\xC3\x9F\xC3\x9F");
    EXPECT_EQ(apos2("\xE4\xE4"), "\xC3\xA4\xC3\xA4");
    EXPECT_EQ(apos2("\xE6"), "\xC3\x9F") << "the table gives ae the bytes of sharp s";
}

TEST(InStr, FoldsWindows1252LettersInTextMode) {
    EXPECT_EQ(InStr(1, "xx\xC4pfel", "\xE4PFEL", Match::Text), 3u);
    EXPECT_EQ(InStr(1, "xx\xC4pfel", "\xE4PFEL", Match::Binary), 0u);
    EXPECT_EQ(InStr(4, "abcabc", "ABC", Match::Text), 4u);
    EXPECT_EQ(InStr(5, "abcabc", "abc", Match::Text), 0u);
    EXPECT_EQ(InStrRev("abcabc", "abc", 6, Match::Binary), 4u);
    EXPECT_EQ(InStrRev("abcabc", "abc", 3, Match::Binary), 1u);
    EXPECT_EQ(InStrRev("abcabc", "x", 6, Match::Binary), 0u);
}

TEST(ElementValues, PlainValuesAndLists) {
    const std::string xml = "<Texture>a\\b</Texture><x/><Texture>\r\n<e d:type=\"cDeltaString\">c</e>\r\n"
                            "<e d:type=\"cDeltaString\"></e>\r\n<e d:type=\"cDeltaString\">d</e>\r\n</Texture><Texture>";
    EXPECT_EQ(ElementValues(xml, "Texture"), (std::vector<std::string>{"a\\b", "c", "d"}));
    EXPECT_TRUE(ElementValues("<Other>x</Other>", "Texture").empty());
}
