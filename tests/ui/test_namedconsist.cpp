// The scenario editor's "Save as Named Consist" on a demo install, offscreen: the name asked
// with the consist's as default, the consist added to the saved ones, and the refusals.

#include "scenarios/frmostrand.h"
#include "scenarios/frmshowroutes.h"
#include "demoscreens.h"
#include "velmora/consists/consisttemplates.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/namedconsist.h"

#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;
namespace cs = velmora::consists;

namespace {

std::string bytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

class TestNamedConsist : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;
    std::unique_ptr<ui::frmShowRoutes> m_screen;

    // The editor on the first route's free-roam scenario, its first consist selected.
    ui::frmOstrand* editor() {
        m_screen = std::make_unique<ui::frmShowRoutes>(*m_ctx);
        m_screen->routeList()->setCurrentRow(0);
        m_screen->Command1_Click();
        QTableWidget* list = m_screen->scenarioList();
        for (int r = 0; r < list->rowCount(); ++r)
            if (list->item(r, 1) && list->item(r, 1)->text().startsWith("Free roam"))
                list->setCurrentCell(r, 1);
        m_screen->Command10_Click();
        ui::frmOstrand* e = m_screen->editor();
        if (e)
            e->consistList()->setCurrentRow(0);
        return e;
    }
    fs::path file() const { return cs::consistTemplatesFile(*m_ctx); }
    bool prompted(const std::string& part) const { return m_demo.prompted(part); }

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("uinamed"));
        // The program's shipped templates beside its data.
        fs::create_directories(m_demo.dir / "data");
        fs::copy(fs::path(VELMORA_SOURCE_DIR) / "data/Templates", m_demo.dir / "data/Templates",
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start();
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }
    void cleanup() { m_screen.reset(); }

    void theConsistIsSavedUnderTheTypedName() {
        ui::frmOstrand* e = editor();
        QVERIFY(e);
        const std::string before = bytesOf(file());
        const std::string name = "Night freight, \"Z\xC3\xBCrich\" & <more>";
        m_ui->pushText(name);
        e->findChild<QPushButton*>("cmdConsist")->click();
        bool asked = false;
        for (const auto& p : m_ui->prompts)
            asked = asked || (p.kind == ScriptedUi::Prompt::Kind::Text && p.text == scenarios::kConsistNamePrompt);
        QVERIFY(asked);
        QVERIFY(prompted(cs::kReady));
        QCOMPARE(bytesOf(file().string() + ".bak"), before);
        const cs::ReadResult r = cs::readConsistTemplates(*m_ctx);
        QVERIFY(r.ok());
        QCOMPARE(r.doc.consists.size(), std::size_t(5)); // the demo's four and the new one
        QCOMPARE(utf8FromDocument(cs::shownName(r.doc.consists.back().name)), name);
        QCOMPARE(r.doc.consists.back().entries.size(), e->document().consists[0].vehicles.size());
        QVERIFY(!e->changed()); // the scenario itself is not changed
    }

    void cancelOrNoNameWritesNothingAndAnInvalidFileIsSaid() {
        ui::frmOstrand* e = editor();
        QVERIFY(e);
        const std::string before = bytesOf(file());
        e->findChild<QPushButton*>("cmdConsist")->click(); // cancelled
        m_ui->pushText("");
        e->findChild<QPushButton*>("cmdConsist")->click(); // no name
        QCOMPARE(bytesOf(file()), before);
        QVERIFY(!prompted(cs::kReady) && !prompted("not written"));
        // A file the program cannot add to: the failure box, and the file as it was.
        std::ofstream(file(), std::ios::binary | std::ios::trunc) << "not a document";
        m_ui->pushText("Anything");
        e->findChild<QPushButton*>("cmdConsist")->click();
        QVERIFY(prompted(cs::kNotWritten));
        QVERIFY(m_ui->prompts.back().icon == Icon::Warning);
        QCOMPARE(bytesOf(file()), std::string("not a document"));
        std::ofstream(file(), std::ios::binary | std::ios::trunc) << before;
    }
};

int runTestNamedConsist(int argc, char** argv) {
    TestNamedConsist t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_namedconsist.moc"
