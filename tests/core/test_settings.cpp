#include "tempdir.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/settings.h"
#include "velmora/core/writelist.h"

#include <gtest/gtest.h>

using namespace velmora;
using velmora::test::TempDir;

namespace {

Settings sample() {
    Settings s;
    s.editor = {12000, 9000, 300, 400};
    s.textureEditor = "/usr/bin/gimp";
    s.graphicsViewer = "C:\\Viewers\\view.exe";
    s.railWorks = "/games/RailWorks";
    s.reserved8 = true;
    s.reserved9 = "keep me";
    s.pdfReader = "evince";
    s.rsBinTool = "";
    s.language = "German";
    s.railWorksBackup = "/backup";
    s.aboutDontShow = true;
    s.dontAskOnClose = true;
    s.fontSize = "11";
    s.reserved17 = "x";
    s.editorState = 2;
    s.scenarioEditor = {1, 2, 3, 4};
    s.warnIfNotSaved = true;
    s.reserved24 = false;
    s.preloadFolder = "/games/RailWorks/Assets/Kuju/RailSimulator/PreLoad";
    s.noNewVersionNotice = true;
    s.reserved27 = true;
    s.reportGrid = {-5, 32767, -32768, 7};
    return s;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::size_t pos = 0;
    while (pos < text.size()) {
        auto end = text.find("\r\n", pos);
        out.push_back(text.substr(pos, end - pos));
        pos = end + 2;
    }
    return out;
}

} // namespace

TEST(Settings, WritesAll31FieldsInOrderAndReadsThemBack) {
    Settings s = sample();
    std::string text = writeSettingsText(s, s.aboutDontShow);
    auto l = lines(text);
    ASSERT_EQ(l.size(), 31u);
    EXPECT_EQ(l[0], "12000");
    EXPECT_EQ(l[4], "\"/usr/bin/gimp\"");
    EXPECT_EQ(l[6], "\"/games/RailWorks\"");
    EXPECT_EQ(l[7], "#TRUE#");
    EXPECT_EQ(l[11], "\"German\"");
    EXPECT_EQ(l[13], "#TRUE#");
    EXPECT_EQ(l[17], "2");
    EXPECT_EQ(l[22], "#TRUE#");
    EXPECT_EQ(l[27], "-5");
    EXPECT_EQ(l[30], "7");

    Settings back;
    EXPECT_EQ(readSettingsText(text, back, nullptr), 31);
    EXPECT_EQ(back, s);
}

TEST(Settings, DefaultsReplaceZeroGeometryAndEmptyLanguage) {
    Settings s;
    s.editor = {0, 500, 0, 20};
    s.reportGrid = {0, 0, 0, 0};
    s.applyDefaults();
    EXPECT_EQ(s.editor.width, 10000);
    EXPECT_EQ(s.editor.height, 500);
    EXPECT_EQ(s.editor.top, 1000);
    EXPECT_EQ(s.editor.left, 20);
    EXPECT_EQ(s.scenarioEditor.width, 10000);
    EXPECT_EQ(s.scenarioEditor.height, 8000);
    EXPECT_EQ(s.reportGrid.top, 1000);
    EXPECT_EQ(s.reportGrid.left, 1000);
    EXPECT_EQ(s.language, "English");
    // Paths have no defaults of their own.
    EXPECT_TRUE(s.railWorks.empty());
    EXPECT_FALSE(s.dontAskOnClose);
}

TEST(Settings, ShortOrDamagedFileIsLoggedOnceAndKeepsWhatWasRead) {
    TempDir dir;
    ErrorLog log(dir.path(), nullptr);
    std::string full = writeSettingsText(sample(), true);
    // The first twelve fields only.
    std::size_t cut = 0;
    for (int i = 0; i < 12; ++i)
        cut = full.find("\r\n", cut) + 2;
    Settings s;
    EXPECT_EQ(readSettingsText(full.substr(0, cut), s, &log), 12);
    EXPECT_EQ(s.language, "German");
    EXPECT_EQ(s.railWorks, "/games/RailWorks");
    EXPECT_FALSE(s.dontAskOnClose); // field 15 never came
    EXPECT_EQ(log.count(), 1);
    EXPECT_NE(test::slurp(log.file()).find("field 13"), std::string::npos);

    // A width beyond 16 bits and a word where a Boolean belongs.
    std::string bad = full;
    bad.replace(0, 5, "99999");
    bad.replace(bad.find("#TRUE#"), 6, "\"yes\"");
    Settings t;
    ErrorLog log2(dir.path() / "second", nullptr);
    std::filesystem::create_directories(dir.path() / "second");
    EXPECT_EQ(readSettingsText(bad, t, &log2), 29);
    EXPECT_EQ(t.editor.width, 0);
    EXPECT_EQ(t.language, "German");
    EXPECT_EQ(log2.count(), 1);
}

TEST(Settings, FieldFourteenDependsOnTheWriter) {
    Settings s = sample();
    s.aboutDontShow = false; // as read at start
    auto l = lines(writeSettingsText(s, true));
    EXPECT_EQ(l[13], "#TRUE#");
    l = lines(writeSettingsText(s, s.aboutDontShow));
    EXPECT_EQ(l[13], "#FALSE#");
}

TEST(WriteList, ReadsQuotedUnquotedAndCommaSeparatedItems) {
    WriteListReader r("1,\"Files\"\r\n  2 , \"Open, please\"\r\n\r\n#TRUE#\n\"\"\n-17");
    auto a = r.next();
    ASSERT_TRUE(a);
    EXPECT_EQ(a->text, "1");
    EXPECT_EQ(r.next()->text, "Files");
    EXPECT_EQ(r.next()->text, "2");
    auto q = r.next();
    EXPECT_EQ(q->text, "Open, please");
    EXPECT_TRUE(q->quoted);
    EXPECT_EQ(toBool(*r.next()), true);
    auto e = r.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->text, "");
    EXPECT_EQ(toInt16(*r.next()), -17);
    EXPECT_FALSE(r.next());
    EXPECT_FALSE(toInt16({"40000", false}));
    EXPECT_FALSE(toInt16({"12a", false}));
}
