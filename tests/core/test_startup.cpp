#include "tempdir.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace velmora;
using velmora::test::TempDir;
namespace fs = std::filesystem;

namespace {

struct Fixture {
    TempDir dir;
    ScriptedUi ui;
    AppContext ctx{dir / "home", dir / "data", ui};

    Fixture() {
        dir.write("data/Language/Lang_English.txt", "1,\"Files\"\r\n2,\"Open TS 2019 File\"\r\n0,\"\"\r\n");
        dir.write("data/Language/Lang_Test.txt", "1,\"Dateien\"\r\n");
        dir.write("rw/RailWorks.exe", "");
        fs::create_directories(dir / "rw/Assets");
        fs::create_directories(dir / "rw/Content/Routes");
    }

    StartupResult start(std::string commandLine = {}) {
        StartupOptions o;
        o.commandLinePath = std::move(commandLine);
        o.askForRoot = true;
        return runStartup(ctx, o);
    }
};

} // namespace

TEST(Startup, FirstRunAsksForTheRootAndUsesDefaults) {
    Fixture f;
    f.ui.pushPath(f.dir / "rw/RailWorks.exe");
    auto r = f.start();
    ASSERT_EQ(f.ui.prompts.size(), 1u);
    EXPECT_EQ(f.ui.prompts[0].text, "Select your RailWorks.exe File");
    EXPECT_EQ(f.ui.prompts[0].title, "TrainSimulator 2019 Files (*.exe)|*.exe");
    EXPECT_EQ(f.ctx.railWorks(), f.dir / "rw");
    EXPECT_TRUE(r.problems.empty());
    EXPECT_EQ(r.geometry.width, 10000);
    EXPECT_FALSE(r.maximised);
    EXPECT_EQ(f.ctx.lang.text(1), "Files");
    EXPECT_TRUE(fs::is_directory(f.dir / "home/TempFiles"));
    EXPECT_EQ(r.caption, "VL editor  Version 0.1.0   Rail Works path = " + (f.dir / "rw").string());
    EXPECT_EQ(r.statusLanguage, "English");
    // No settings file yet, so the chosen root is not written until the program closes.
    EXPECT_FALSE(fs::exists(f.dir / "home/VLpreferences.txt"));
}

TEST(Startup, MissingRootIsReportedAndTheStartGoesOn) {
    Fixture f;
    auto r = f.start();
    EXPECT_FALSE(r.problems.empty());
    f.ctx.setRailWorksOverride(f.dir / "not-there");
    StartupOptions o;
    o.railWorks = f.dir / "not-there";
    r = runStartup(f.ctx, o);
    ASSERT_FALSE(r.problems.empty());
    EXPECT_NE(r.problems[0].find("does not exist"), std::string::npos);
    EXPECT_EQ(f.ctx.lang.text(1), "Files");
}

TEST(Startup, CommandLineDocumentIsOpenedMaximisedByItsEnding) {
    Fixture f;
    f.ctx.settings.railWorks = (f.dir / "rw").string();
    auto r = f.start("\"/routes/x/Scenario.bin\"");
    EXPECT_EQ(f.ctx.currentFile, "/routes/x/Scenario.bin");
    EXPECT_TRUE(f.ctx.openedFromCommandLine);
    EXPECT_TRUE(r.maximised);
    EXPECT_EQ(r.open, OpenAction::OpenBinary);

    Fixture g;
    g.ctx.settings.railWorks = (g.dir / "rw").string();
    r = g.start("/somewhere/readme.pdf");
    EXPECT_TRUE(r.maximised);
    EXPECT_EQ(r.open, OpenAction::None);

    EXPECT_EQ(dispatchByPathEnd("abcbin"), OpenAction::OpenBinary);
    EXPECT_EQ(dispatchByPathEnd("a.XSEC"), OpenAction::OpenBinary);
    EXPECT_EQ(dispatchByPathEnd("a.geopcdx"), OpenAction::OpenBinary);
    EXPECT_EQ(dispatchByPathEnd("a.proxybin"), OpenAction::OpenBinary);
    EXPECT_EQ(dispatchByPathEnd("a.TgPcDx"), OpenAction::OpenTexture);
    EXPECT_EQ(dispatchByPathEnd("a.proxyxml"), OpenAction::OpenXml);
    EXPECT_EQ(dispatchByPathEnd("a.cost"), OpenAction::OpenXml);
    EXPECT_EQ(dispatchByPathEnd("a.tgt"), OpenAction::OpenXml);
    EXPECT_EQ(dispatchByPathEnd("a.dcsv"), OpenAction::None);
}

TEST(Startup, SettingsDecideGeometryFontAndLanguage) {
    Fixture f;
    Settings s;
    s.railWorks = (f.dir / "rw").string();
    s.editor = {0, 7000, 50, 0};
    s.editorState = 2;
    s.fontSize = "12.5";
    s.language = "Test";
    f.dir.write("home/VLpreferences.txt", writeSettingsText(s, false));
    f.dir.write("home/Reports/RouteIndex.csv", "r1,One\r\nr2,Two\r\n\r\n");
    fs::create_directories(f.dir / "home/RSBinTool");
    auto r = f.start();
    EXPECT_TRUE(r.maximised);
    EXPECT_EQ(r.geometry.width, 10000);
    EXPECT_EQ(r.geometry.height, 7000);
    EXPECT_EQ(r.geometry.left, 1000);
    EXPECT_TRUE(r.fontSizeSet);
    EXPECT_DOUBLE_EQ(r.fontSize, 12.5);
    EXPECT_EQ(f.ctx.lang.text(1), "Dateien");
    EXPECT_EQ(f.ctx.routes.size(), 2u);
    EXPECT_TRUE(r.showRsBinTool);
    EXPECT_EQ(f.ctx.settings.rsBinTool, (f.dir / "home/RSBinTool/rsbintool.exe").string());
    EXPECT_TRUE(f.ui.prompts.empty());
}

TEST(Startup, ConverterFilesAreCopiedOnlyWhenTheSimulatorHasThem) {
    Fixture f;
    f.ctx.settings.railWorks = (f.dir / "rw").string();
    f.start();
    EXPECT_FALSE(fs::exists(f.dir / "home/serz.exe"));
    f.dir.write("rw/serz.exe", "exe");
    f.dir.write("rw/zlibwapi.dll", "z");
    f.dir.write("rw/stlport_vc10.5.2.dll", "s");
    f.dir.write("home/serz.exe", "stale");
    copyConverterFiles(f.ctx);
    EXPECT_EQ(test::slurp(f.dir / "home/serz.exe"), "exe");
    // zlibwapi.dll present: an existing serz.exe is trusted as it stands.
    f.dir.write("home/serz.exe", "mine");
    copyConverterFiles(f.ctx);
    EXPECT_EQ(test::slurp(f.dir / "home/serz.exe"), "mine");
}

TEST(Shutdown, SettingsAreWrittenBeforeTheExitQuestionEvenWhenCancelled) {
    Fixture f;
    f.ctx.settings.railWorks = (f.dir / "rw").string();
    f.start();
    f.dir.write("home/TempFiles/scratch.xml", "x");
    const fs::path settingsFile = f.dir / "home/VLpreferences.txt";
    bool writtenWhenAsked = false;
    f.ui.onPrompt = [&](const ScriptedUi::Prompt& p) {
        if (p.text == "Do you really wish to exit Velmora?")
            writtenWhenAsked = fs::exists(settingsFile);
    };
    f.ui.pushAnswer(Answer::No);
    EXPECT_FALSE(runShutdown(f.ctx, false, {11000, 9000, 10, 20}));
    EXPECT_TRUE(writtenWhenAsked);
    EXPECT_TRUE(fs::exists(f.dir / "home/TempFiles/scratch.xml")); // the close was cancelled
    Settings back;
    loadSettings(settingsFile, back, nullptr);
    EXPECT_EQ(back.editor.width, 11000);

    f.ui.pushAnswer(Answer::Yes);
    EXPECT_TRUE(runShutdown(f.ctx, false, {11000, 9000, 10, 20}));
    EXPECT_FALSE(fs::exists(f.dir / "home/TempFiles/scratch.xml"));
    EXPECT_TRUE(fs::is_directory(f.dir / "home/TempFiles"));
}

TEST(Shutdown, UnsavedEditWarningComesFirstAndCanStopEverything) {
    Fixture f;
    f.start();
    f.ctx.settings.warnIfNotSaved = true;
    f.ui.pushAnswer(Answer::No);
    EXPECT_FALSE(runShutdown(f.ctx, true, {}));
    ASSERT_EQ(f.ui.prompts.size(), 2u); // the root question at start, then the warning
    EXPECT_EQ(f.ui.prompts[1].text,
              "You edited a file in the .bin file editor but do\nnot appear to have saved it. Do you really\nwant to exit?");
    EXPECT_FALSE(fs::exists(f.dir / "home/VLpreferences.txt"));

    // Not asked about the edit without mnuWarn, nor about exiting with mnuDont.
    f.ctx.settings.warnIfNotSaved = false;
    f.ctx.settings.dontAskOnClose = true;
    std::size_t before = f.ui.prompts.size();
    EXPECT_TRUE(runShutdown(f.ctx, true, {}));
    EXPECT_EQ(f.ui.prompts.size(), before);
}

TEST(OptionsMenu, TogglesWriteAtOnceExceptWarn) {
    Fixture f;
    f.ctx.settings.railWorks = (f.dir / "rw").string();
    f.start();
    const fs::path file = f.dir / "home/VLpreferences.txt";
    f.ctx.aboutTick = true; // the About screen's own value
    mnuDont_Click(f.ctx);
    Settings back;
    loadSettings(file, back, nullptr);
    EXPECT_TRUE(back.dontAskOnClose);
    EXPECT_FALSE(back.aboutDontShow); // the copy read at start, not the About screen's value

    mnuWarn_Click(f.ctx);
    loadSettings(file, back, nullptr);
    EXPECT_FALSE(back.warnIfNotSaved);
    mnuNewVer_Click(f.ctx);
    mnuEdMax_Click(f.ctx);
    loadSettings(file, back, nullptr);
    EXPECT_TRUE(back.warnIfNotSaved);
    EXPECT_TRUE(back.noNewVersionNotice);
    EXPECT_EQ(back.editorState, 2);

    f.ui.pushAnswer(Answer::Yes);
    runShutdown(f.ctx, false, {1, 2, 3, 4});
    loadSettings(file, back, nullptr);
    EXPECT_TRUE(back.aboutDontShow); // the closing write takes the About screen's value
}

TEST(OptionsMenu, LanguageSwitchAndHelperPaths) {
    Fixture f;
    f.ctx.settings.railWorks = (f.dir / "rw").string();
    f.start();
    mnuLang_Click(f.ctx, "Lang_Test.txt", {5000, 4000, 100, 200});
    EXPECT_EQ(f.ctx.settings.language, "Test");
    EXPECT_EQ(f.ctx.lang.text(1), "Dateien");
    Settings back;
    loadSettings(f.dir / "home/VLpreferences.txt", back, nullptr);
    EXPECT_EQ(back.language, "Test");
    EXPECT_EQ(back.editor.width, 5000);

    f.ui.pushPath("/usr/bin/evince");
    EXPECT_TRUE(mnuAcro_Click(f.ctx));
    EXPECT_EQ(f.ctx.settings.pdfReader, "/usr/bin/evince");
    EXPECT_EQ(f.ui.prompts.back().text, "Select your PDF Reader");
    EXPECT_FALSE(mnuIRF_Click(f.ctx)); // cancelled: nothing changes
    EXPECT_TRUE(f.ctx.settings.textureEditor.empty());
}

TEST(HelpContents, OpensTheShippedGuideInTheDesktopViewerWithoutAReader) {
    Fixture f;
    const fs::path guide = f.dir / "data/Help/guide.html";
    EXPECT_EQ(userGuide(f.ctx), guide);

    // Missing: a warning that names where it should be, and nothing is opened.
    mnuContents_Click(f.ctx);
    ASSERT_EQ(f.ui.prompts.size(), 1u);
    EXPECT_EQ(f.ui.prompts[0].icon, Icon::Warning);
    EXPECT_NE(f.ui.prompts[0].text.find(guide.string()), std::string::npos);
    EXPECT_TRUE(f.ui.opened.empty());

    // Present: handed to the viewer at once, with no PDF reader set up and no question asked.
    f.dir.write("data/Help/guide.html", "<html></html>");
    f.ctx.settings.pdfReader.clear();
    mnuContents_Click(f.ctx);
    EXPECT_EQ(f.ui.opened, std::vector<fs::path>{guide});
    EXPECT_EQ(f.ui.prompts.size(), 1u);

    // A desktop with nothing to show HTML: the user is told where the file is.
    f.ui.viewerWorks = false;
    mnuContents_Click(f.ctx);
    ASSERT_EQ(f.ui.prompts.size(), 2u);
    EXPECT_NE(f.ui.prompts[1].text.find(guide.string()), std::string::npos);
}

TEST(ConsoleUi, AnswersFromFlagsAndNeverGuesses) {
    std::ostringstream out, err;
    ConsoleUi console(false, {"no", "my text", "yes"}, out, err);
    UserInterface& ui = console; // logic sees only the interface
    EXPECT_EQ(ui.ask("Delete?", Buttons::YesNo), Answer::No);
    EXPECT_EQ(ui.inputText("Name?", ""), "my text");
    EXPECT_EQ(ui.ask("Go on?", Buttons::OkCancel), Answer::Ok);
    EXPECT_FALSE(console.unanswered());
    EXPECT_EQ(ui.ask("Really?", Buttons::YesNo), Answer::No);
    EXPECT_TRUE(console.unanswered());
    EXPECT_EQ(console.unansweredQuestions()[0], "Really?");

    ConsoleUi yesConsole(true, {}, out, err);
    UserInterface& yes = yesConsole;
    EXPECT_EQ(yes.ask("Sure?", Buttons::YesNo), Answer::Yes);
    EXPECT_EQ(yes.ask("OK?", Buttons::OkCancel), Answer::Ok);
    EXPECT_FALSE(yes.chooseFile({}));
    EXPECT_TRUE(yesConsole.unanswered());

    yes.message("careful", Icon::Warning);
    EXPECT_NE(err.str().find("careful"), std::string::npos);
}
