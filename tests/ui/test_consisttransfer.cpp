// The consist transfer screen and the scenario editor's Use Index File on a demo install of their
// own, offscreen: two consist lists, a line chosen in each, the copy written and listed again;
// stock chosen in the rolling-stock index and swapped in as a row of Available Stock would be.

#include "assets/frmindex.h"
#include "demoscreens.h"
#include "scenarios/frmconsistdupe.h"
#include "scenarios/frmostrand.h"
#include "scenarios/frmshowroutes.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/consisttransfer.h"
#include "velmora/scenarios/indexstock.h"
#include "velmora/scenarios/swap.h"

#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextEdit>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

bool selectRow(QTableWidget* list, const QString& name) {
    for (int r = 0; r < list->rowCount(); ++r)
        if (list->item(r, 1) && list->item(r, 1)->text().startsWith(name)) {
            list->setCurrentCell(r, 1);
            return true;
        }
    return false;
}

QStringList linesOf(const QTextEdit* view) { return view->toPlainText().split('\n', Qt::SkipEmptyParts); }

} // namespace

class TestConsistTransfer : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    bool prompted(const std::string& part) const {
        for (const auto& p : m_ui->prompts)
            if (p.text.find(part) != std::string::npos)
                return true;
        return false;
    }
    std::unique_ptr<ui::frmConsistDupe> transferScreen() {
        auto screen = std::make_unique<ui::frmConsistDupe>(*m_ctx);
        screen->routeList()->setCurrentRow(0);
        screen->Command1_Click();
        return screen;
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uitransfer")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start();
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void aConsistIsCopiedBehindTheSelectedLineOfTheOtherList() {
        auto screen = transferScreen();
        QVERIFY(screen->scenarioList()->rowCount() >= 6);
        for (const char* name : {"Command1", "Command5", "Command2", "Command7", "Command3", "Command4", "Command6",
                                 "Command8", "Command9"})
            QVERIFY2(screen->button(name) && screen->button(name)->isEnabled(), name);
        QCOMPARE(screen->button("Command7")->text(), QString("Transfer Selected Consist"));

        QVERIFY(selectRow(screen->scenarioList(), "O'Connor"));
        screen->Command5_Click();
        QVERIFY(selectRow(screen->scenarioList(), "Free roam"));
        screen->Command2_Click();
        const QStringList one = linesOf(screen->consists1()), two = linesOf(screen->consists2());
        QCOMPARE(one.size(), 3);
        QVERIFY(one[0].startsWith("[1] ") && one[2].startsWith("[3] Loose Consist"));
        QVERIFY(two.size() >= 2);
        const fs::path target = screen->second().folder;
        const std::string before = ReadTextFile(target / "Scenario.bin");

        // A selection without "[" does nothing at all.
        QTextCursor part(screen->consists1()->document()->findBlockByNumber(2));
        part.setPosition(part.position() + 4);
        part.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        screen->consists1()->setTextCursor(part);
        ui::frmConsistDupe::selectLine(screen->consists2(), 0);
        const std::size_t prompts = m_ui->prompts.size();
        screen->Command7_Click();
        QCOMPARE(m_ui->prompts.size(), prompts);
        QCOMPARE(ReadTextFile(target / "Scenario.bin"), before);

        // The loose rake behind the first consist of Free roam.
        ui::frmConsistDupe::selectLine(screen->consists1(), 2);
        screen->Command7_Click();
        QVERIFY(prompted(scenarios::kConsistTransferred));
        const QStringList now = linesOf(screen->consists2());
        QCOMPARE(now.size(), two.size() + 1);
        QVERIFY(now[1].startsWith("[2] Loose Consist"));
        QCOMPARE(ReadTextFile(target / "Scenario.bak"), before);
        const scenarios::ScenarioDocument opened = scenarios::openScenario(*m_ctx, target);
        QCOMPARE(opened.consists.size(), static_cast<std::size_t>(two.size() + 1));

        // Files > Undo Last Change puts the old file back byte for byte.
        const auto entries = m_ctx->journal().entries();
        QCOMPARE(entries.back().command, std::string("Transfer Selected Consist"));
        QVERIFY(undoEntry(m_ctx->files(), entries.back().id, false).ok);
        QCOMPARE(ReadTextFile(target / "Scenario.bin"), before);
    }

    void withinOneScenarioASecondCopyIsAddedAndTheListsAreCleared() {
        auto screen = transferScreen();
        QVERIFY(selectRow(screen->scenarioList(), "Workshop"));
        screen->Command5_Click();
        screen->Command2_Click();
        const int count = static_cast<int>(linesOf(screen->consists1()).size());
        QVERIFY(count >= 2);
        ui::frmConsistDupe::selectLine(screen->consists1(), 0);
        ui::frmConsistDupe::selectLine(screen->consists2(), 0);
        screen->Command7_Click();
        // Both lists show the one file as it is now.
        QCOMPARE(linesOf(screen->consists1()).size(), count + 1);
        QCOMPARE(linesOf(screen->consists2()).size(), count + 1);
        const QString first = linesOf(screen->consists2())[0], second = linesOf(screen->consists2())[1];
        QCOMPARE(first.mid(first.indexOf(']')), second.mid(second.indexOf(']')));

        // A list whose scenario lost its empty consists is read again.
        QVERIFY(selectRow(screen->scenarioList(), "Workshop"));
        screen->Command3_Click();
        QVERIFY(prompted("No empty consists were found"));

        screen->Command4_Click();
        QVERIFY(screen->consists1()->toPlainText().isEmpty());
        QCOMPARE(linesOf(screen->consists2()).size(), count + 1);
        screen->Command8_Click();
        QVERIFY(screen->consists2()->toPlainText().isEmpty());
        const std::size_t prompts = m_ui->prompts.size();
        screen->Command7_Click(); // nothing listed: no line to take
        QCOMPARE(m_ui->prompts.size(), prompts);
        // Nothing selected in the scenario list: the list's own words.
        screen->scenarioList()->setCurrentCell(-1, -1);
        screen->Command5_Click();
        QVERIFY(prompted("No Scenarios were found."));
    }

    void stockChosenFromTheIndexIsSwappedIn() {
        ui::frmShowRoutes list(*m_ctx);
        list.routeList()->setCurrentRow(0);
        list.Command1_Click();
        QVERIFY(selectRow(list.scenarioList(), "Timetable"));
        list.Command10_Click();
        ui::frmOstrand* editor = list.editor();
        QVERIFY(editor);
        QVERIFY(editor->document().consists.size() == 3 && !editor->document().consists[2].vehicles.empty());
        QPushButton* use = editor->findChild<QPushButton*>("Command8");
        QVERIFY(use);
        QCOMPARE(use->text(), QString("Use Index File"));

        // No index yet: said, and the flag stays clear.
        const fs::path index = m_ctx->reports() / "Index.csv";
        fs::remove(index);
        use->click();
        QVERIFY(prompted(scenarios::kNoIndexFile));
        QVERIFY(!editor->usesIndexFile() && !editor->indexScreen());

        const std::string livery = "RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery3.bin";
        MakePath(m_ctx->reports());
        std::ofstream(index, std::ios::binary)
            << "Provider,Product,Path,Name,In Scene,Category,Blueprint,Index\r\n"
            << "DemoRail,Class66Pack,..\\..\\..\\Content\\Routes\\x.bin,Escape,Yes,Freight Wagon,cWagonBlueprint,1\r\n"
            << "DemoRail,Class66Pack, " << livery << " ,HTA Livery 3,Yes,Freight Wagon,cReskinBlueprint,2\r\n";
        use->click();
        QVERIFY(editor->usesIndexFile());
        ui::frmIndex* screen = editor->indexScreen();
        QVERIFY(screen && screen->grid()->rowCount() == 2);
        screen->grid()->clearSelection();
        screen->Command1_Click();
        QVERIFY(prompted(scenarios::kNoIndexSelection));

        // A row that leads out of Assets is refused, Label5 stays as it was.
        QLabel* label5 = editor->findChild<QLabel*>("Label5");
        QVERIFY(label5);
        int escape = -1, hta = -1;
        for (int r = 0; r < 2; ++r)
            (screen->grid()->item(r, 3)->text() == "Escape" ? escape : hta) = r;
        emit screen->grid()->cellClicked(escape, 0);
        QVERIFY(prompted("does not name a file below Assets"));
        QVERIFY(label5->text().isEmpty());

        screen->grid()->selectRow(hta);
        screen->Command1_Click();
        std::string error;
        const auto chosen = scenarios::chooseStock(*m_ctx, "DemoRail\\Class66Pack\\" + livery, error);
        QVERIFY(chosen);
        QCOMPARE(label5->text(), QString::fromStdString((m_ctx->railWorks() / "Assets").string() +
                                                        "\\DemoRail\\Class66Pack\\" + livery));

        // The swap uses the index's stock: the reskin written as from Available Stock.
        editor->consistList()->setCurrentRow(2);
        editor->itemGrid()->selectRow(0);
        editor->findChild<QPushButton*>("Command10")->click();
        QVERIFY(prompted(scenarios::kConsistSwapped));
        const scenarios::Vehicle& v = editor->document().consists[2].vehicles[0];
        QCOMPARE(v.name, chosen->reskinName);
        QCOMPARE(v.reskin.blueprintId, chosen->path);
        QCOMPARE(v.blueprint.blueprintId, chosen->base.blueprintId);

        // A listing of Available Stock clears the flag; a row click then chooses nothing.
        editor->stockCategory()->setCurrentText("Freight");
        editor->Command6_Click();
        QVERIFY(!editor->usesIndexFile());
        const QString shown = label5->text();
        emit screen->grid()->cellClicked(hta, 0);
        QCOMPARE(label5->text(), shown);
        m_ui->pushAnswer(Answer::Yes);
        editor->close();
    }
};

int runTestConsistTransfer(int argc, char** argv) {
    TestConsistTransfer t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_consisttransfer.moc"
