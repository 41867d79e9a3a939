#include "tempdir.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/language.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace velmora;
using velmora::test::TempDir;

TEST(Language, PositionDecidesTheEntryAndZeroEndsTheTable) {
    LanguageTable t;
    t.loadText("10,\"Files\"\r\n20,\"Open\"\r\n0,\"End\"\r\n30,\"Never read\"\r\n");
    EXPECT_EQ(t.size(), 2);
    EXPECT_EQ(t.text(1), "Files");
    EXPECT_EQ(t.text(2), "Open");

    // Numbered differently, same texts in the same order: the same table.
    LanguageTable u;
    u.loadText("1,\"Files\"\n2,\"Open\"\n");
    EXPECT_EQ(u.size(), 2);
    EXPECT_EQ(u.text(2), t.text(2));

    // A pair inserted in front shifts every later entry.
    LanguageTable v;
    v.loadText("1,\"New\"\n1,\"Files\"\n2,\"Open\"\n");
    EXPECT_EQ(v.text(2), "Files");
}

TEST(Language, MissingEntryIsLoggedAndEmpty) {
    TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    LanguageTable t;
    t.setErrorLog(&log);
    t.loadText("1,\"Files\"\n");
    EXPECT_EQ(t.text(634), "");
    EXPECT_EQ(t.text(0), "");
    EXPECT_EQ(log.count(), 2);
    EXPECT_NE(test::slurp(log.file()).find("Subscript out of range"), std::string::npos);
}

TEST(Language, FallsBackToEnglishAndFindsUserFolderFirst) {
    TempDir dir;
    dir.write("shipped/Lang_English.txt", "1,\"Files\"\n0,\"\"\n");
    dir.write("shipped/Lang_German.txt", "1,\"Dateien\"\n");
    dir.write("user/Lang_German.txt", "1,\"Meine Dateien\"\n");
    ErrorLog log(dir.path(), nullptr);
    std::vector<std::filesystem::path> folders{dir / "user", dir / "shipped"};

    LanguageTable t;
    std::string name = "Lang_German.txt";
    t.load(folders, name, &log);
    EXPECT_EQ(t.text(1), "Meine Dateien");

    name = "Lang_Klingon.txt";
    t.load(folders, name, &log);
    EXPECT_EQ(name, "Lang_English.txt");
    EXPECT_EQ(t.text(1), "Files");
    EXPECT_EQ(log.count(), 0);

    EXPECT_EQ(listLanguageFiles(folders), (std::vector<std::string>{"Lang_English.txt", "Lang_German.txt"}));
    EXPECT_EQ(languageNameFromFile("Lang_German.txt"), "German");
}

TEST(Language, NoEnglishFileLeavesAnEmptyTableAndLogs) {
    TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    LanguageTable t;
    t.loadText("1,\"old\"\n");
    std::string name = "Lang_French.txt";
    EXPECT_FALSE(t.load({dir / "nowhere"}, name, &log));
    EXPECT_EQ(t.size(), 0);
    EXPECT_EQ(log.count(), 1);
}

TEST(Language, ShippedEnglishTableIsComplete) {
    // The table the program ships must hold every entry that the screens ask for, in the
    // write-list layout that translators copy: "n,\"text\"" a line, 1 to 634 in order, CR LF line
    // ends, closed by 0,"End".
    std::filesystem::path file = std::filesystem::path(VELMORA_SOURCE_DIR) / "data/Language/Lang_English.txt";
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "no shipped English table yet";
    LanguageTable t;
    std::string name = "Lang_English.txt";
    ASSERT_TRUE(t.load({file.parent_path()}, name, nullptr));
    ASSERT_EQ(t.size(), LanguageTable::kHighestEntry);
    for (int n = 1; n <= t.size(); ++n)
        EXPECT_FALSE(t.text(n).empty()) << "entry " << n;

    const std::string raw = test::slurp(file);
    ASSERT_GE(raw.size(), 2u);
    EXPECT_EQ(raw.substr(raw.size() - 2), "\r\n");
    std::vector<std::string> lines;
    for (std::size_t pos = 0; pos < raw.size();) {
        std::size_t end = raw.find('\n', pos);
        ASSERT_NE(end, std::string::npos) << "last line without a line break";
        ASSERT_GT(end, pos) << "empty line at byte " << pos;
        EXPECT_EQ(raw[end - 1], '\r') << "line " << lines.size() + 1 << " not ended by CR LF";
        lines.push_back(raw.substr(pos, end - 1 - pos));
        pos = end + 1;
    }
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(LanguageTable::kHighestEntry) + 1);
    for (int n = 1; n <= LanguageTable::kHighestEntry; ++n) {
        const std::string& line = lines[static_cast<std::size_t>(n - 1)];
        const std::string expected = std::to_string(n) + ",\"" + t.text(n) + "\"";
        EXPECT_EQ(line, expected) << "line " << n;
        EXPECT_EQ(std::count(line.begin(), line.end(), '"'), 2) << "line " << n;
        for (unsigned char c : line)
            EXPECT_TRUE(c >= 0x20 && c != 0x7F) << "control character in line " << n;
    }
    EXPECT_EQ(lines.back(), "0,\"End\"");

    // Captions that the main screen and the shared buttons rely on.
    EXPECT_EQ(t.text(1), "Files");
    EXPECT_EQ(t.text(3), "SaveTS 2019 File");
    EXPECT_EQ(t.text(8), "Print");
    EXPECT_EQ(t.text(9), "Exit");
    EXPECT_EQ(t.text(31), "Convert  Marker files");
    EXPECT_EQ(t.text(386), "Clear Railworks\\Temp");
    EXPECT_EQ(t.text(389), "View Rolling-stock list");
}
