// Where document text meets file names and the terminal: one conversion each way, one file name
// maker, one escaper.

#include "tempdir.h"

#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace velmora;

TEST(TextBoundary, DocumentTextAndUtf8MeetInOnePlace) {
    // A repaired name is Windows-1252; a name as the document holds it is UTF-8 already.
    EXPECT_EQ(utf8FromDocument("Gotthard S\xFC" "drampe"), "Gotthard S\xC3\xBC" "drampe");
    EXPECT_EQ(utf8FromDocument("Gotthard S\xC3\xBC" "drampe"), "Gotthard S\xC3\xBC" "drampe");
    EXPECT_EQ(utf8FromDocument("\x80 and \x93quoted\x94"), "\xE2\x82\xAC and \xE2\x80\x9Cquoted\xE2\x80\x9D");
    EXPECT_EQ(documentFromUtf8("S\xC3\xBC" "d"), "S\xFC" "d");
    EXPECT_TRUE(sameName("Gotthard S\xFC" "drampe", "Gotthard S\xC3\xBC" "drampe")) << "as typed on a UTF-8 terminal";
    EXPECT_TRUE(sameName("Demo Valley Line", "Demo Valley Line"));
    EXPECT_FALSE(sameName("Gotthard S\xFC" "drampe", "Gotthard Sudrampe"));
}

TEST(TextBoundary, AFileNameFromDocumentTextStaysInItsFolder) {
    EXPECT_EQ(fileNameFromText("../../../../escape/X"), ".._.._.._.._escape_X");
    EXPECT_EQ(fileNameFromText("..\\..\\Windows"), ".._.._Windows");
    EXPECT_EQ(fileNameFromText(".."), "_");
    EXPECT_EQ(fileNameFromText("."), "_");
    EXPECT_EQ(fileNameFromText(""), "_");
    EXPECT_EQ(fileNameFromText("C:\\Temp"), "C__Temp");
    EXPECT_EQ(fileNameFromText("a\x1B[31mred\x07"), "a_[31mred_") << "no control character reaches a file name";
    EXPECT_EQ(fileNameFromText("What? \"Now\" <here>|*"), "What_ _Now_ _here___");
    EXPECT_EQ(fileNameFromText("Line, with commas. "), "Line, with commas") << "Windows drops the trailing dot";
    EXPECT_EQ(fileNameFromText("Gotthard S\xFC" "drampe"), "Gotthard S\xC3\xBC" "drampe") << "valid UTF-8";
    const std::string longName = fileNameFromText(std::string(150, 'a') + std::string(60, '\xFC'));
    EXPECT_LE(longName.size(), 200u);
    EXPECT_EQ(utf8FromDocument(longName), longName) << "not cut inside a character";

    // Whatever the name, the file made from it is a child of the folder.
    velmora::test::TempDir dir;
    for (const char* hostile : {"../x", "/etc/passwd", "..", "a/../../b", "\\..\\..\\c", "\n", "...."}) {
        const auto file = dir.path() / fileNameFromText(hostile);
        EXPECT_EQ(file.parent_path(), dir.path()) << hostile;
        EXPECT_NE(file.filename(), "..");
    }
}

TEST(TextBoundary, TheTerminalSeesControlCharactersAsText) {
    EXPECT_EQ(forTerminal("plain\ttext\r\nline\n"), "plain\ttext\r\nline\n");
    EXPECT_EQ(forTerminal("folder\x1B]0;owned\x07name"), "folder\\x1B]0;owned\\x07name");
    EXPECT_EQ(forTerminal("over\rwrite"), "over\\x0Dwrite") << "a lone CR would hide what came before";
    EXPECT_EQ(forTerminal(std::string("nul\0here", 8)), "nul\\x00here");
    EXPECT_EQ(forTerminal("del\x7F"), "del\\x7F");
    EXPECT_EQ(forTerminal("csi \xC2\x9B" "2J"), "csi \\u009B2J") << "a C1 control in UTF-8";
    EXPECT_EQ(forTerminal("Z\xC3\xBCrich \xC2\xA0 ok"), "Z\xC3\xBCrich \xC2\xA0 ok");

    // The stream the command line writes through on a terminal: split writes, the same result.
    std::ostringstream target;
    {
        TerminalBuffer buffer(target.rdbuf());
        std::ostream out(&buffer);
        out << "a\x1B" << "[2J" << "\xC2";
        out << "\x9B" << " end\r";
        out << "\nnext\r" << std::flush;
        out << "x\n";
    }
    EXPECT_EQ(target.str(), "a\\x1B[2J\\u009B end\r\nnext\\x0Dx\n");
}

TEST(TextBoundary, TheConsoleSaysDocumentNamesInUtf8) {
    std::ostringstream out, err;
    {
        ConsoleUi console(false, {}, out, err);
        console.message("No route named Gotthard S\xFC" "drampe", Icon::Information, "");
        console.message("S\xFC" "d", Icon::Warning, "Velmora");
        console.beginProgress("Tiles of Gotthard S\xFC" "drampe", 1);
        console.progress(1, "");
    }
    EXPECT_EQ(out.str(), "No route named Gotthard S\xC3\xBC" "drampe\n");
    EXPECT_NE(err.str().find("Velmora: S\xC3\xBC" "d\n"), std::string::npos) << err.str();
    EXPECT_NE(err.str().find("Tiles of Gotthard S\xC3\xBC" "drampe: 1/1"), std::string::npos) << err.str();
}
