// Swaps over a whole route from the screens, offscreen on a demo install: the editor's Swap in
// ALL Scenarios for this route, and the route screen's swap by a rule file with its dry run
// first; and the list's Revert to Default and Make Standard. Each ends with one undo that must
// put every scenario back.

#include "demoscreens.h"
#include "scenarios/frmostrand.h"
#include "scenarios/frmshowroutes.h"
#include "velmora/core/journal.h"
#include "velmora/routes/routes.h"
#include "velmora/scenarios/batchswap.h"

#include <QComboBox>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>
#include <fstream>
#include <map>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

std::map<std::string, std::string> filesBelow(const fs::path& root) {
    std::map<std::string, std::string> files;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file()) {
            std::ifstream in(e.path(), std::ios::binary);
            files[fs::relative(e.path(), root).generic_string()].assign(std::istreambuf_iterator<char>(in),
                                                                        {});
        }
    return files;
}

} // namespace

class TestBatchSwap : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;

    std::unique_ptr<ui::frmShowRoutes> listed() {
        auto screen = std::make_unique<ui::frmShowRoutes>(*m_demo.ctx);
        screen->routeList()->setCurrentRow(0);
        screen->Command1_Click();
        return screen;
    }
    fs::path routeFolder() { return routes::listRoutes(*m_demo.ctx).front().path; }
    bool prompted(const std::string& part) const {
        for (const auto& p : m_demo.ui->prompts)
            if (p.text.find(part) != std::string::npos)
                return true;
        return false;
    }
    // One undo of the newest entry puts back every file the batch changed.
    void undoAndCompare(const fs::path& scenarios, const std::map<std::string, std::string>& before,
                        const char* command) {
        const auto entries = m_demo.ctx->journal().entries();
        QVERIFY(!entries.empty());
        QCOMPARE(entries.back().command, std::string(command));
        const UndoResult u = undoEntry(m_demo.ctx->files(), entries.back().id, false);
        QVERIFY2(u.ok, u.message.c_str());
        const auto after = filesBelow(scenarios);
        for (const auto& [name, bytes] : before) {
            QVERIFY2(after.count(name), name.c_str());
            QVERIFY2(after.at(name) == bytes, name.c_str());
        }
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uibatch")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(true); } // the swaps fill in the preload template

    void theEditorSwapsALocomotiveInEveryScenarioOfTheRoute() {
        const fs::path scenarios = routeFolder() / "Scenarios";
        const auto before = filesBelow(scenarios);
        auto screen = listed();
        QTableWidget* list = screen->scenarioList();
        for (int r = 0; r < list->rowCount(); ++r)
            if (list->item(r, 1) && list->item(r, 1)->text() == "Free roam")
                list->setCurrentCell(r, 1);
        screen->Command10_Click();
        QPointer<ui::frmOstrand> editor = screen->editor();
        QVERIFY(editor);
        const std::string loco = editor->document().consists[0].vehicles[0].name;
        editor->stockCategory()->setCurrentText("Steam");
        editor->Command6_Click();
        int black5 = -1;
        for (int i = 0; i < editor->stockList()->count(); ++i)
            if (editor->stockList()->item(i)->text() == "Heritage Black 5")
                black5 = i;
        QVERIFY(black5 >= 0);
        editor->stockList()->setCurrentRow(black5);
        editor->consistList()->setCurrentRow(0);
        editor->itemGrid()->selectRow(0);
        editor->findChild<QPushButton*>("Command20")->click();
        QVERIFY2(prompted(scenarios::kAllScenariosSaved), m_demo.ui->prompts.back().text.c_str());
        QVERIFY(!editor || !editor->isVisible()); // the editor leaves once all are written
        int written = 0;
        const auto route = routes::listRoutes(*m_demo.ctx).front();
        for (const auto& s : routes::listScenarios(*m_demo.ctx, route)) {
            const auto d = scenarios::openScenario(*m_demo.ctx, scenarios / s.folder);
            bool had = false;
            for (const auto& c : d.consists)
                for (const auto& v : c.vehicles) {
                    QVERIFY2(v.name != loco, s.name.c_str());
                    had = had || v.name.find("Black 5") != std::string::npos;
                }
            written += had;
        }
        QVERIFY(written > 1);
        undoAndCompare(scenarios, before, "Swap in ALL Scenarios for this route");
    }

    void theRouteScreenSwapsMissingStockByARuleFile() {
        const fs::path scenarios = routeFolder() / "Scenarios";
        const auto before = filesBelow(scenarios);
        const fs::path rules = m_demo.dir / "rules.csv";
        std::ofstream(rules)
            << "provider,product,blueprint,stock\n"
               "DemoRail,Class66Pack,*,DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Coal.bin\n";
        auto screen = listed();
        // A rule file with a fault: named with its line, nothing asked, nothing written.
        const fs::path bad = m_demo.dir / "bad.csv";
        std::ofstream(bad) << "DemoRail,Class66Pack\n";
        m_demo.ui->pushPath(bad);
        screen->findChild<QPushButton*>("cmdSwapRules")->click();
        QCOMPARE(filesBelow(scenarios), before);

        m_demo.ui->pushPath(rules);
        m_demo.ui->pushAnswer(Answer::Yes); // only missing stock
        m_demo.ui->pushAnswer(Answer::Yes); // write after the preview
        screen->findChild<QPushButton*>("cmdSwapRules")->click();
        QVERIFY(prompted("1 vehicles in 1 scenarios will be swapped"));
        QVERIFY(prompted(scenarios::kAllScenariosSaved));
        const auto route = routes::listRoutes(*m_demo.ctx).front();
        for (const auto& s : routes::listScenarios(*m_demo.ctx, route)) {
            const auto d = scenarios::openScenario(*m_demo.ctx, scenarios / s.folder);
            for (const auto& c : d.consists)
                for (const auto& v : c.vehicles)
                    QVERIFY2(!v.missing, s.name.c_str());
        }
        undoAndCompare(scenarios, before, "Swap stock by rules");
    }

    void theListRevertsAndMakesStandardTheSelectedScenarios() {
        const fs::path scenarios = routeFolder() / "Scenarios";
        const auto before = filesBelow(scenarios);
        auto screen = listed();
        QTableWidget* list = screen->scenarioList();
        auto selectNamed = [&](const QString& name) {
            list->clearSelection();
            for (int r = 0; r < list->rowCount(); ++r)
                if (list->item(r, 1) && list->item(r, 1)->text() == name)
                    list->selectRow(r);
        };
        // The batches above left each scenario's default (Scenario.bak) as it was generated, and
        // undid their changes: reverting the route gives every Scenario.bin the same bytes again.
        screen->findChild<QPushButton*>("Command2")->click();
        QVERIFY(prompted("first saved state"));
        const auto reverted = filesBelow(scenarios);
        for (const auto& [name, bytes] : before)
            QVERIFY2(reverted.count(name) && reverted.at(name) == bytes, name.c_str());
        // The career scenario made Standard; the list shows its new kind.
        selectNamed("Career: first turn");
        screen->findChild<QPushButton*>("Command14")->click();
        QVERIFY(prompted("1 scenario was made Standard."));
        bool standard = false;
        for (int r = 0; r < list->rowCount(); ++r)
            if (list->item(r, 1) && list->item(r, 1)->text() == "Career: first turn")
                standard = list->item(r, 2)->text().contains("Standard");
        QVERIFY(standard);
        // The timetable command stops at it now.
        selectNamed("Career: first turn");
        screen->findChild<QPushButton*>("Command16")->click();
        QVERIFY(prompted("stopped there"));
        undoAndCompare(scenarios, before, "Make Selected Career Scenarios 'Standard'");
    }
};

int runTestBatchSwap(int argc, char** argv) {
    TestBatchSwap t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_batchswap.moc"
