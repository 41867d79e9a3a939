#include "tempdir.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace velmora;
using velmora::test::TempDir;
namespace fs = std::filesystem;

TEST(Files, ExistenceChecks) {
    TempDir dir;
    dir.write("a/file.txt", "x");
    EXPECT_TRUE(FileExists(dir / "a/file.txt"));
    EXPECT_FALSE(FileExists(dir / "a"));       // a folder is not a file
    EXPECT_FALSE(FileExists(dir / "a/none"));
    EXPECT_TRUE(FolderExists(dir / "a"));
    EXPECT_TRUE(FolderExists((dir / "a").string() + "/"));
    EXPECT_FALSE(FolderExists(dir / "a/file.txt"));
    EXPECT_FALSE(FolderExists(dir / "b"));
    if (::geteuid() != 0) { // root may write anywhere
        fs::permissions(dir / "a", fs::perms::owner_write, fs::perm_options::remove);
        EXPECT_FALSE(FolderExists(dir / "a"));
        fs::permissions(dir / "a", fs::perms::owner_write, fs::perm_options::add);
    }
}

TEST(Files, ReadAndWriteText) {
    TempDir dir;
    ScriptedUi ui;
    std::string bytes("caf\xE9\0\r\n\xFF", 8);
    EXPECT_TRUE(WriteTextFile(dir / "t.txt", bytes, &ui));
    EXPECT_EQ(ReadTextFile(dir / "t.txt"), bytes);
    EXPECT_EQ(ReadTextFile(dir / "missing.txt"), "");
    EXPECT_TRUE(ui.prompts.empty());
    EXPECT_TRUE(fs::directory_iterator(dir.path())->path().filename() == "t.txt"); // no scratch left

    // An empty result is reported as a failed write.
    EXPECT_FALSE(WriteTextFile(dir / "empty.txt", "", &ui));
    ASSERT_EQ(ui.prompts.size(), 1u);
    EXPECT_EQ(ui.prompts[0].text, "An error occurred while writing " + (dir / "empty.txt").string());

    // Marker files are UTF-16.
    std::string utf16("\xFF\xFE" "A\0\xE9\0\xAC\x20", 8);
    dir.write("route.mkr", utf16);
    EXPECT_EQ(ReadTextFile(dir / "route.mkr"), "A\xE9\x80");
}

TEST(Files, TreesAndPaths) {
    TempDir dir;
    EXPECT_TRUE(MakePath(dir / "x/y/z"));
    EXPECT_TRUE(MakePath(dir / "x/y/z")); // an existing folder is fine
    dir.write("x/y/z/f.txt", "1");
    dir.write("x/top.txt", "2");
    fs::permissions(dir / "x/top.txt", fs::perms::owner_write, fs::perm_options::remove);
    DeleteTree(dir / "x");
    EXPECT_FALSE(fs::exists(dir / "x"));
    DeleteTree(dir / "never-there");
}

TEST(Text, SortStringsIgnoresCaseBetweenIndexes) {
    std::vector<std::string> v{"", "pear", "Apple", "banana", "apple2", "Cherry", "zulu"};
    SortStrings(v, 1, 5); // leaves the slots outside the range alone
    EXPECT_EQ(v, (std::vector<std::string>{"", "Apple", "apple2", "banana", "Cherry", "pear", "zulu"}));
    std::vector<std::string> many;
    for (int i = 0; i < 2000; ++i)
        many.push_back(std::to_string((i * 7919) % 2000));
    SortStrings(many, 0, static_cast<std::ptrdiff_t>(many.size()) - 1);
    EXPECT_TRUE(std::is_sorted(many.begin(), many.end()));
}

TEST(Text, SecondsToHHMMRoundsHalfToEven) {
    EXPECT_EQ(SecondsToHHMM(1800), "0030");
    EXPECT_EQ(SecondsToHHMM(5400), "02-30");
    EXPECT_EQ(SecondsToHHMM(0), "0000");
    EXPECT_EQ(SecondsToHHMM(3600 * 10 + 60 * 5), "1005");
    EXPECT_EQ(SecondsToHHMM(9000), "0230"); // 2.5 hours round to the even 2
    EXPECT_EQ(SecondsToHHMM(1770), "0030"); // 29.5 minutes round to the even 30
}

TEST(Text, TimeConverterKeepsWholeHours) {
    EXPECT_EQ(TimeToHoursMinutes(3599), "0060");
    EXPECT_EQ(TimeToHoursMinutes(5400), "0130");
    EXPECT_EQ(TimeToHoursMinutes(36000 + 600), "1010");
}

TEST(Text, CsvCellsQuoteOnlyWhatNeedsIt) {
    EXPECT_EQ(csvCell("Assets\\DTG\\a.bin"), "Assets\\DTG\\a.bin");
    EXPECT_EQ(csvCell(""), "");
    EXPECT_EQ(csvCell("Wagons, vol. 2"), "\"Wagons, vol. 2\"");
    EXPECT_EQ(csvCell("the \"Q\" stock"), "\"the \"\"Q\"\" stock\"");
    EXPECT_EQ(csvCell("two\r\nlines"), "\"two\r\nlines\"");
}

TEST(Text, JsonStringsEscapeWhatJsonForbids) {
    EXPECT_EQ(jsonQuoted("plain"), "\"plain\"");
    EXPECT_EQ(jsonQuoted("a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_EQ(jsonQuoted("tab\tline\r\n"), "\"tab\\tline\\r\\n\"");
    EXPECT_EQ(jsonQuoted(std::string("\x01\x1f", 2)), "\"\\u0001\\u001f\"");
    EXPECT_EQ(jsonQuoted("D\xC3\xA9j\xC3\xA0"), "\"D\xC3\xA9j\xC3\xA0\"") << "UTF-8 passes through";
}

TEST(Text, HexToDecimal) {
    EXPECT_EQ(HexToDecimal("ff"), "255");
    EXPECT_EQ(HexToDecimal("FFFFFFFFFFFFFFFF"), "18446744073709551615");
    EXPECT_EQ(HexToDecimal("FFFFFFFFFFFFFFFFFFFFFFFF"), "79228162514264337593543950335");
    EXPECT_EQ(HexToDecimal("1FFFFFFFFFFFFFFFFFFFFFFFF"), ""); // beyond 96 bits
    EXPECT_EQ(HexToDecimal("12g4"), "");
    EXPECT_EQ(HexToDecimal("0x10"), "");
    EXPECT_EQ(HexToDecimal("0010"), "16");
}

TEST(Text, GuidForms) {
    GuidForms f = makeGuidForms();
    for (const std::string* g : {&f.uuid1, &f.uuid2, &f.cGuid}) {
        ASSERT_EQ(g->size(), 36u);
        for (std::size_t i : {8u, 13u, 18u, 23u})
            EXPECT_EQ((*g)[i], '-');
        EXPECT_EQ(g->find_first_of("ABCDEF"), std::string::npos);
    }
    EXPECT_NE(f.uuid1, f.uuid2);
    ASSERT_EQ(f.id.size(), 9u);
    EXPECT_GE(std::stol(f.id), 100000000);
    std::string shown = formatGuidForms(f);
    EXPECT_EQ(shown.rfind("UUID1 = ", 0), 0u);
    EXPECT_NE(shown.find("\n\nUUID2 = "), std::string::npos);
    EXPECT_NE(shown.find("\n\ncGUID = "), std::string::npos);
    EXPECT_NE(shown.find("\n\n   ID = "), std::string::npos);
}

TEST(Text, CodePageConversions) {
    EXPECT_EQ(latin1ToUtf8("Gr\xFCn \x80"), "Grün €");
    EXPECT_EQ(utf8ToCp1252("Grün € ☃"), "Gr\xFCn \x80 ?");
}
