// The Graphics Tools entries for textures on the main screen, driven offscreen: a texture opened,
// out to TempDDS as a .dds, the .dds back into it with a backup, and TempDDS emptied.

#include "editor/frmeditor.h"
#include "velmora/core/userinterface.h"

#include <QAction>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

#include <algorithm>
#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

class TestTextureMenus : public QObject {
    Q_OBJECT

    fs::path m_dir;

private slots:
    void init() {
        m_dir = fs::temp_directory_path() / ("velmora-ui-tex-" + std::to_string(QCoreApplication::applicationPid()));
        fs::remove_all(m_dir);
        fs::create_directories(m_dir / "data/Language");
        std::ofstream(m_dir / "data/Language/Lang_English.txt") << "0,\"\"\r\n";
        fs::create_directories(m_dir / "rw/Assets");
        fs::create_directories(m_dir / "rw/Content/Routes");
        std::ofstream(m_dir / "rw/RailWorks.exe") << "";
    }
    void cleanup() { fs::remove_all(m_dir); }

    void rsBinToolOnlyWithItsFolderAndNeverAHang() {
        ScriptedUi ui;
        {
            AppContext ctx(m_dir / "home", m_dir / "data", ui);
            StartupOptions o;
            o.railWorks = m_dir / "rw";
            ui::frmEditor editor(ctx, o);
            QVERIFY(!editor.action("mnuRSBT")->isVisible());
        }
        fs::create_directories(m_dir / "home/RSBinTool");
        AppContext ctx(m_dir / "home", m_dir / "data", ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        ui::frmEditor editor(ctx, o);
        QVERIFY(editor.action("mnuRSBT")->isVisible());
        QVERIFY(editor.action("mnuRSBT")->isEnabled());
        editor.action("mnuRSBT")->trigger();
        QVERIFY2(ui.prompts.back().text.find("rsbintool.exe: the program is not there") != std::string::npos,
                 ui.prompts.back().text.c_str());
        if (QStandardPaths::findExecutable("wine").isEmpty()) {
            std::ofstream(m_dir / "home/RSBinTool/rsbintool.exe") << "MZ";
            editor.action("mnuRSBT")->trigger();
            QVERIFY2(ui.prompts.back().text.find("install Wine") != std::string::npos, ui.prompts.back().text.c_str());
        }
    }

    void aTextureOutToDdsAndBack() {
        const fs::path texture = m_dir / "Räder, 'neu'.TgPcDx";
        fs::copy_file(fs::path(VELMORA_TESTDATA) / "WheelCompleteMap.TgPcDx", texture);
        ScriptedUi ui;
        AppContext ctx(m_dir / "home", m_dir / "data", ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        ui::frmEditor editor(ctx, o);
        QVERIFY(editor.action("mnuOpenTex")->isEnabled());
        QVERIFY(!editor.action("mnuDDS")->isEnabled());

        QSignalSpy loaded(&editor, &ui::frmEditor::documentLoaded);
        ui.pushPath(texture);
        editor.action("mnuOpenTex")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(loaded.count() > 0, 20000);
        QVERIFY(editor.action("mnuDDS")->isEnabled());
        QVERIFY(std::any_of(ui.prompts.begin(), ui.prompts.end(),
                            [](const ScriptedUi::Prompt& p) { return p.text == "Open RS Texture files"; }));

        editor.action("mnuDDS")->trigger();
        const fs::path dds = m_dir / "home/TempDDS/Räder, 'neu'.dds";
        QVERIFY(fs::exists(dds));
        QVERIFY(fs::exists(m_dir / "home/TempDDS/Räder, 'neu'.dat"));
        QVERIFY2(ui.prompts.back().text.find("3. Number of Mip-Maps - 9") != std::string::npos, ui.prompts.back().text.c_str());

        // The viewer and the paint program of the options; without one, how to set it.
        QVERIFY(editor.action("mnuView")->isEnabled());
        ctx.settings.graphicsViewer.clear();
        editor.action("mnuView")->trigger();
        QVERIFY(ui.prompts.back().text.find("To view DDS files you need to install a suitable Texture viewer") == 0);
        const std::size_t before = ui.prompts.size();
        ctx.settings.textureEditor = "/bin/true";
        editor.action("mnuEditDDS")->trigger();
        QCOMPARE(ui.prompts.size(), before);

        // No to the question: nothing is written.
        ui.pushPath(dds);
        editor.action("mnuDDStoKrs")->trigger();
        QVERIFY(!fs::exists(texture.string() + ".bak"));
        ui.pushPath(dds);
        ui.pushAnswer(Answer::Yes);
        editor.action("mnuDDStoKrs")->trigger();
        QVERIFY(fs::exists(texture.string() + ".bak"));
        QVERIFY2(ui.prompts.back().text.find("Saved") == 0, ui.prompts.back().text.c_str());

        ui.pushAnswer(Answer::Yes);
        editor.action("mnuEmpt")->trigger();
        QVERIFY(fs::is_directory(m_dir / "home/TempDDS"));
        QVERIFY(fs::is_empty(m_dir / "home/TempDDS"));
    }
};

#include "test_texturemenus.moc"

int runTestTextureMenus(int argc, char** argv) {
    TestTextureMenus t;
    return QTest::qExec(&t, argc, argv);
}
