#include "tempdir.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(ErrorLog, RecordHasTheFixedLinesInOrder) {
    std::tm when{};
    when.tm_year = 2026 - 1900;
    when.tm_mon = 10;
    when.tm_mday = 2;
    when.tm_hour = 13;
    when.tm_min = 5;
    when.tm_sec = 9;
    std::string r = formatErrorRecord(when, errorTitle(), 0, "Nothing", "Form_Load", "frmEditor");
    std::string expected = "November 02, 2026  at 01:05:09 PM | Unexpected Error in Velmora V0.1.0000\r\n"
                           "Error:\r\n0\r\n\r\n"
                           "Description:\r\nNothing\r\n\r\n"
                           "Procedure:\r\nForm_Load\r\n\r\n"
                           "Module:\r\nfrmEditor\r\n" +
                           std::string(80, '=') + "\r\n\r\n";
    EXPECT_EQ(r, expected);

    when.tm_hour = 0;
    EXPECT_EQ(formatErrorDate(when), "November 02, 2026  at 12:05:09 AM");
    when.tm_hour = 12;
    when.tm_mon = 0;
    EXPECT_EQ(formatErrorDate(when), "January 02, 2026  at 12:05:09 PM");
}

TEST(ErrorLog, DescriptionWrapsAtTheLastBlankWithin80Columns) {
    std::string words;
    for (int i = 0; i < 40; ++i)
        words += "word" + std::to_string(i) + " ";
    std::string wrapped = wrapDescription("  first line\r\nsecond " + words + "  ");
    std::size_t start = 0;
    int lineCount = 0;
    while (start <= wrapped.size()) {
        std::size_t end = wrapped.find("\r\n", start);
        std::string line = wrapped.substr(start, end == std::string::npos ? std::string::npos : end - start);
        EXPECT_LE(line.size(), 80u) << line;
        EXPECT_FALSE(line.empty());
        EXPECT_NE(line.back(), ' ');
        ++lineCount;
        if (end == std::string::npos)
            break;
        start = end + 2;
    }
    EXPECT_GT(lineCount, 3);
    EXPECT_EQ(wrapped.rfind("first line  second word0", 0), 0u);

    // A word longer than a line is cut.
    EXPECT_EQ(wrapDescription(std::string(100, 'x')), std::string(80, 'x') + "\r\n" + std::string(20, 'x'));
    EXPECT_EQ(wrapDescription(std::string(80, 'y')), std::string(80, 'y'));
}

TEST(ErrorLog, AppendsRecordsAndShowsTheMessage) {
    test::TempDir dir;
    ScriptedUi ui;
    ErrorLog log(dir.path(), &ui);
    log.log("modA", "ProcA", 53, "File not found");
    log.log("modB", "ProcB", 0, "zero");
    std::string text = test::slurp(dir / "Errors.txt");
    EXPECT_NE(text.find("ProcA"), std::string::npos);
    EXPECT_NE(text.find("Error:\r\n0\r\n"), std::string::npos);
    EXPECT_LT(text.find("ProcA"), text.find("ProcB"));
    ASSERT_EQ(ui.prompts.size(), 2u);
    EXPECT_EQ(ui.prompts[0].text, "Error: #53 File not found\n\nModule: modA\nProcedure: ProcA\n");
    EXPECT_EQ(ui.prompts[0].icon, Icon::Critical);
    EXPECT_EQ(ui.prompts[0].title, "Unexpected Error in Velmora V0.1.0000");
}
