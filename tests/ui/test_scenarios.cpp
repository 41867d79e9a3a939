// The scenario list and the scenario editor on a demo install, offscreen: from the list of routes
// to a saved scenario, with the saves, the refusals and the missing stock on the way.

#include "routes/frmlistrs.h"
#include "scenarios/frmostrand.h"
#include "scenarios/frmshowroutes.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "demoscreens.h"
#include "scenarioscreens.h"
#include "velmora/scenarios/consistedit.h"
#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/swap.h"
#include "velmora/scenarios/scenariosave.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>

using namespace velmora;
namespace fs = std::filesystem;

class TestScenarios : public QObject {
    Q_OBJECT

    fs::path m_dir;
    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    // The scenario screen on the first route, its scenarios listed.
    std::unique_ptr<ui::frmShowRoutes> listed() { return test::listedScenarios(*m_ctx); }
    // Selects the scenario row whose name starts with `name`; false when there is none.
    bool select(ui::frmShowRoutes& screen, const QString& name) { return test::selectScenario(screen, name); }
    // The editor on the scenario whose name starts with `name`, or null.
    ui::frmOstrand* edit(ui::frmShowRoutes& screen, const QString& name) {
        if (!select(screen, name))
            return nullptr;
        screen.Command10_Click();
        return screen.editor();
    }
    bool prompted(const std::string& part) const { return m_demo.prompted(part); }

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("uiscen"));
        m_dir = m_demo.dir;
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start();
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void theListShowsRoutesScenariosAndTheInvalidOnes() {
        auto screen = listed();
        QCOMPARE(screen->routeList()->count(), 3); // the route unpacked in part beside its MainContent.ap too
        QVERIFY(screen->scenarioList()->rowCount() >= 6);
        QVERIFY(select(*screen, "Free roam"));
        QCOMPARE(screen->scenarioList()->item(screen->scenarioList()->currentRow(), 2)->text(), QString("Free Roam Scenario"));
        // The commands that wait for their tool say so.
        QPushButton* waiting = screen->button("Command6");
        QVERIFY(!waiting->isEnabled() && !waiting->toolTip().isEmpty());
        // The folder without properties is listed only among the invalid scenarios.
        screen->Command13_Click();
        auto* invalid = screen->findChild<ui::frmListRS*>();
        QVERIFY(invalid);
        QCOMPARE(invalid->rows().size(), std::size_t(1));
        // Nothing selected: the list's own words.
        screen->scenarioList()->setCurrentCell(-1, -1);
        screen->Command10_Click();
        QVERIFY(prompted("No Scenarios were found."));
    }

    void savedCopiesAreKeptWithTheirHash() {
        auto screen = listed();
        QVERIFY(select(*screen, "O'Connor"));
        screen->Command15_Click();
        QVERIFY(screen->savedCopies()->count() >= 1);
        m_ui->pushText("Before the junction");
        screen->Command4_Click();
        QStringList names;
        for (int i = 0; i < screen->savedCopies()->count(); ++i)
            names << screen->savedCopies()->item(i)->data(Qt::UserRole).toString();
        QVERIFY(names.contains("Before the junction.bin"));
        bool hash = false;
        for (const auto& e : fs::recursive_directory_iterator(m_dir / "rw/Content/Routes"))
            hash = hash || e.path().filename() == "Before the junction.bin.MD5";
        QVERIFY(hash);
        // Overwrite the simulator's save with it: asked first, and its hash goes along.
        for (int i = 0; i < screen->savedCopies()->count(); ++i)
            if (screen->savedCopies()->item(i)->data(Qt::UserRole).toString() == "Before the junction.bin")
                screen->savedCopies()->setCurrentRow(i);
        m_ui->pushAnswer(Answer::Yes);
        screen->Command5_Click();
        QVERIFY(prompted("replace it"));
    }

    void quickDriveIsRefusedAndCareerWarned() {
        auto screen = listed();
        QVERIFY(select(*screen, "[QD]"));
        screen->Command10_Click();
        QVERIFY(prompted("This is a Quick Drive scenario"));
        QVERIFY(!screen->editor());
        QVERIFY(m_ui->prompts.back().icon == Icon::Critical);

        QVERIFY(select(*screen, "Career"));
        screen->Command10_Click();
        QVERIFY(prompted("This is a Career Scenario and may not work if edited."));
        QVERIFY(screen->editor());
        // A career scenario shows neither the author nor the start location.
        QVERIFY(screen->editor()->authorField()->isHidden());
        QVERIFY(screen->editor()->locationField()->isHidden());
    }

    void theEditorShowsConsistsVehiclesAndMissingStock() {
        auto screen = listed();
        ui::frmOstrand* editor = edit(*screen, "O'Connor");
        QVERIFY(editor);
        QCOMPARE(editor->consistList()->count(), 3);
        QCOMPARE(editor->consistList()->item(2)->text(), QString("Loose Consist"));
        // The AI train's last wagon runs reversed.
        editor->consistList()->setCurrentRow(1);
        const int last = editor->itemGrid()->rowCount() - 1;
        QCOMPARE(editor->itemGrid()->item(last, 5)->text(), QString("Reversed"));
        editor->showItem(last);
        QVERIFY(editor->details().contains("Orientation = Reversed"));
        // The loose consist holds the wagon whose blueprint is missing: a word, not colour alone.
        editor->consistList()->setCurrentRow(2);
        bool marked = false;
        for (int r = 0; r < editor->itemGrid()->rowCount(); ++r)
            marked = marked || (editor->itemGrid()->item(r, 0)->text() == "missing" &&
                                editor->itemGrid()->item(r, 1)->text().contains("Sludge"));
        QVERIFY(marked);
        // Leaving without changes asks nothing.
        const std::size_t before = m_ui->prompts.size();
        editor->close();
        QCOMPARE(m_ui->prompts.size(), before);
    }

    void fieldsAreSavedWithBothBackups() {
        auto screen = listed();
        ui::frmOstrand* editor = edit(*screen, "Free roam");
        QVERIFY(editor);
        QVERIFY(!editor->authorField()->isHidden() && !editor->locationField()->isHidden());
        const fs::path folder = editor->document().folder;
        const std::string oldProperties = ReadTextFile(folder / "ScenarioProperties.xml");
        const std::string oldScenario = ReadTextFile(folder / "Scenario.bin");

        // Leaving with a change asks; No keeps the screen.
        editor->field(0)->setText("Free roam, caf\xC3\xA9 \"stop\"");
        m_ui->pushAnswer(Answer::No);
        editor->close();
        QVERIFY(editor->isVisible());
        QVERIFY(prompted("but have not saved them"));

        // A time that is no time refuses the save and writes nothing.
        editor->field(3)->setText("2561");
        QVERIFY(!editor->Command1_Click());
        QVERIFY(prompted(scenarios::kTimeFormat));
        QCOMPARE(ReadTextFile(folder / "ScenarioProperties.xml"), oldProperties);

        editor->field(3)->setText("0630");
        QVERIFY(editor->Command1_Click());
        QVERIFY(prompted(scenarios::kSaved));
        QVERIFY(editor->saved());
        QCOMPARE(ReadTextFile(folder / "ScenarioProperties.bak"), oldProperties);
        QCOMPARE(ReadTextFile(folder / "Scenario.bak"), oldScenario);
        const std::string saved = ReadTextFile(folder / "ScenarioProperties.xml");
        QVERIFY(saved.find("Free roam, caf") != std::string::npos);
        QVERIFY(saved.find("23400") != std::string::npos); // 06:30
        // Saved: nothing is left to save, and leaving asks nothing.
        QVERIFY(!editor->findChild<QPushButton*>("Command1")->isEnabled());
    }

    void availableStockIsFoundOffTheGuiThreadAndPreviewed() {
        auto screen = listed();
        ui::frmOstrand* editor = edit(*screen, "Free roam");
        QVERIFY(editor);
        editor->stockCategory()->setCurrentText("Diesel");
        editor->Command6_Click();
        QStringList names;
        for (int i = 0; i < editor->stockList()->count(); ++i)
            names << editor->stockList()->item(i)->text();
        QVERIFY2(names.contains("DemoRail Class 66 EWS"), qPrintable(names.join(", ")));
        editor->stockList()->setCurrentRow(static_cast<int>(names.indexOf("DemoRail Class 66 EWS")));
        QVERIFY(editor->stockPreviewText().contains("Class66_EWS.bin"));
        // Pinned rows stay when the next category is listed, the new rows join them.
        editor->stockList()->clearSelection();
        editor->findChild<QPushButton*>("Command24")->click();
        QVERIFY(prompted("You have not selected any rolling-stock?"));
        editor->stockList()->item(0)->setSelected(true);
        editor->findChild<QPushButton*>("Command24")->click();
        QCOMPARE(editor->stockList()->count(), 1);
        const QString pinned = editor->stockList()->item(0)->text();
        editor->stockCategory()->setCurrentText("Steam");
        editor->Command6_Click();
        QVERIFY(editor->stockList()->count() > 1);
        QCOMPARE(editor->stockList()->item(0)->text(), pinned);
        editor->findChild<QPushButton*>("Command25")->click();
        QVERIFY(!editor->stockTables().pinned);
        const int listed = editor->stockList()->count();
        // A folder that is not there is said, and the list stays as it was.
        editor->stockFolder()->setText(QString::fromStdString((m_dir / "nowhere").string()));
        editor->Command6_Click();
        QVERIFY(prompted("no such folder"));
        QCOMPARE(editor->stockList()->count(), listed);
    }

    void consistTimesAndSpeedsAreChangedThenSaved() {
        auto screen = listed();
        ui::frmOstrand* editor = edit(*screen, "Workshop");
        QVERIFY(editor);
        editor->consistList()->setCurrentRow(1); // the AI train
        editor->startTimeField()->setText("0930");
        editor->findChild<QPushButton*>("Command17")->click();
        QVERIFY(editor->changed());
        QCOMPARE(editor->document().consists[1].vehicles.front().startTime, std::string("0930"));
        // The driven train's speed, asked in mph.
        m_ui->pushAnswer(Answer::Yes);
        m_ui->pushText("30");
        editor->findChild<QPushButton*>("Command13")->click();
        QVERIFY(prompted("Current speed 0 mph Replace with"));
        QVERIFY(std::abs(*scenarios::drivenStartSpeed(editor->document()).value - 30 / 2.24) < 1e-3);
        // This scenario was written without trigger distances: said so, nothing changed.
        m_ui->pushAnswer(Answer::Yes);
        editor->findChild<QPushButton*>("Command27")->click();
        QVERIFY(prompted("There is no option to change the 'Start Trigger Distance'"));
        const fs::path folder = editor->document().folder;
        QVERIFY(editor->Command1_Click());
        const scenarios::ScenarioDocument saved = scenarios::openScenario(*m_ctx, folder);
        QCOMPARE(saved.consists[1].vehicles.front().startTime, std::string("0930"));
        QVERIFY(std::abs(*scenarios::drivenStartSpeed(saved).value - 30 / 2.24) < 1e-3);
    }

    void vehiclesAndConsistsAreEditedAndDriveItChangesTheDriver() {
        auto screen = listed();
        ui::frmOstrand* editor = edit(*screen, "Workshop");
        QVERIFY(editor);
        editor->consistList()->setCurrentRow(1); // the AI train
        editor->itemGrid()->selectRow(0);
        editor->findChild<QPushButton*>("Command21")->click(); // flip its locomotive
        QCOMPARE(editor->itemGrid()->item(0, 5)->text(), QString("Reversed"));
        QVERIFY(prompted(scenarios::kEditNote));
        // Drive It: the AI train becomes the driven one.
        editor->itemGrid()->selectRow(0);
        editor->findChild<QPushButton*>("Command4")->click();
        QVERIFY(prompted(scenarios::kDriverNote));
        QCOMPARE(editor->document().drivenConsist, 1);
        QCOMPARE(editor->drivenField()->text(),
                 QString::fromStdString(editor->document().consists[1].serviceName));
        // Renamed, and with the messages suppressed no note is shown.
        editor->findChild<QCheckBox*>("chkMsg")->setChecked(true);
        const std::size_t prompts = m_ui->prompts.size();
        m_ui->pushText("Late freight");
        editor->consistList()->setCurrentRow(1);
        editor->findChild<QPushButton*>("Command23")->click();
        QCOMPARE(editor->consistList()->item(1)->text(), QString("Late freight"));
        QCOMPARE(m_ui->prompts.size(), prompts + 1); // the question for the name only
        // One consist may go between saves; the list follows at once.
        editor->consistList()->setCurrentRow(2);
        editor->findChild<QPushButton*>("Command18")->click();
        QCOMPARE(editor->consistList()->count(), 2);
        editor->consistList()->setCurrentRow(0);
        editor->findChild<QPushButton*>("Command18")->click();
        QVERIFY(prompted("You have already deleted one consist"));
        QCOMPARE(editor->consistList()->count(), 2);
        const fs::path folder = editor->document().folder;
        QVERIFY(editor->Command1_Click());
        const scenarios::ScenarioDocument saved = scenarios::openScenario(*m_ctx, folder);
        QCOMPARE(saved.drivenConsist, 1);
        QCOMPARE(saved.consists.size(), std::size_t(2));
        QCOMPARE(saved.consists[1].serviceName, std::string("Late freight"));
        QCOMPARE(saved.consists[1].vehicles[0].flipped, std::string("1"));
    }

    void aVehicleIsSwappedForTheChosenStock() {
        auto screen = listed();
        ui::frmOstrand* editor = edit(*screen, "Timetable"); // a scenario no other case saves
        QVERIFY(editor);
        QVERIFY(editor->document().consists.size() == 3 && editor->document().consists[2].vehicles.size() >= 1);
        editor->stockCategory()->setCurrentText("Freight");
        editor->Command6_Click();
        int hopper = -1;
        for (int i = 0; i < editor->stockList()->count(); ++i)
            if (editor->stockList()->item(i)->text() == "DemoRail HTA Coal Hopper")
                hopper = i;
        QVERIFY(hopper >= 0);
        // Nothing chosen: said, nothing changed.
        editor->findChild<QPushButton*>("Command10")->click();
        QVERIFY(prompted("You have not selected"));
        QVERIFY(!editor->changed());
        editor->stockList()->setCurrentRow(hopper);
        editor->consistList()->setCurrentRow(2); // the loose rake
        editor->itemGrid()->selectRow(0);
        editor->findChild<QCheckBox*>("Check2")->setChecked(true);
        const std::string number = editor->document().consists[2].vehicles[0].number;
        editor->findChild<QPushButton*>("Command10")->click();
        QVERIFY(prompted(scenarios::kConsistSwapped));
        QCOMPARE(editor->document().consists[2].vehicles[0].name, std::string("DemoRail HTA Coal Hopper"));
        QCOMPARE(editor->document().consists[2].vehicles[0].number, number); // kept, as asked
        // A locomotive is not swapped for a wagon.
        editor->consistList()->setCurrentRow(0);
        editor->itemGrid()->selectRow(0);
        const std::string before = editor->document().scenarioText;
        editor->findChild<QPushButton*>("Command10")->click();
        QCOMPARE(editor->document().scenarioText, before);
        QVERIFY(m_ui->prompts.back().icon == Icon::Warning);
    }

    void aMissingWeatherFolderIsSaid() {
        auto screen = listed();
        QVERIFY(select(*screen, "Timetable"));
        screen->Command10_Click();
        QVERIFY(prompted("The Weather folder for this scenario is missing"));
        QVERIFY(screen->editor());
    }
};

int runTestScenarios(int argc, char** argv) {
    TestScenarios t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_scenarios.moc"
