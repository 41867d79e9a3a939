// The route screen on a demo install, offscreen: the lists, the check and its reports.

#include "common/frmreport.h"
#include "common/frmresults.h"
#include "common/palettecolours.h"
#include "routes/frmdelroute.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "demoscreens.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>
#include <map>

using namespace velmora;
namespace fs = std::filesystem;

class TestFrmDelRoute : public QObject {
    Q_OBJECT

    fs::path m_dir;
    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("uiroutes"));
        m_dir = m_demo.dir;
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start();
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void routesAndColouredScenarios() {
        ui::frmDelRoute screen(*m_ctx);
        // Not the routes that lie only in their MainContent.ap; the one unpacked in part.
        QCOMPARE(screen.routeList()->count(), 3);
        QVERIFY(screen.routeList()->item(0)->text().contains("Demo Valley Line"));
        for (int r = 0; r < screen.routeList()->count(); ++r)
            QVERIFY(!screen.routeList()->item(r)->text().contains("Harbour Branch"));
        screen.routeList()->setCurrentRow(0);
        screen.Command1_Click();
        QTableWidget* scenarios = screen.scenarioList();
        QVERIFY(scenarios->rowCount() >= 6);
        // Each class keeps its hue and is readable on the grid's background.
        const std::map<QString, int> hues = {{"Workshop Scenario", 180}, {"Quick Drive Scenario", 120},
                                             {"Free Roam Scenario", 240}, {"Career Scenario", 0},
                                             {"Timetable Scenario", 300}};
        int checked = 0;
        for (int r = 0; r < scenarios->rowCount(); ++r) {
            const QColor colour = scenarios->item(r, 1)->foreground().color();
            QVERIFY(ui::contrastRatio(colour, scenarios->palette().color(QPalette::Base)) >= ui::kReadableContrast);
            auto hue = hues.find(scenarios->item(r, 2)->text());
            if (hue != hues.end()) {
                QCOMPARE(colour.hslHue(), hue->second);
                ++checked;
            }
        }
        QCOMPARE(checked, 5);
        screen.resize(1100, 650);
        screen.show();
        QVERIFY(screen.grab().save(QCoreApplication::applicationDirPath() + "/route-screen.png"));
    }

    void onADarkPaletteEveryClassStaysReadable() {
        ui::frmDelRoute screen(*m_ctx);
        screen.setPalette(ui::darkPalette());
        screen.routeList()->setCurrentRow(0);
        screen.Command1_Click();
        QTableWidget* scenarios = screen.scenarioList();
        const QColor base = scenarios->palette().color(QPalette::Base);
        QVERIFY(ui::relativeLuminance(base) < 0.1);
        for (int r = 0; r < scenarios->rowCount(); ++r) {
            const QColor colour = scenarios->item(r, 1)->foreground().color();
            QVERIFY2(ui::contrastRatio(colour, base) >= ui::kReadableContrast, qPrintable(scenarios->item(r, 2)->text()));
            // A standard scenario is drawn in black on white: on a dark theme it is the plain text.
            if (scenarios->item(r, 2)->text() == "Standard Scenario")
                QCOMPARE(colour, scenarios->palette().color(QPalette::Text));
        }
    }

    void theCheckShowsWhatIsMissingAndSavesItsReports() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        m_ui->pushAnswer(Answer::No);  // no list of shapes
        m_ui->pushAnswer(Answer::Yes); // on to textures and sounds
        m_ui->pushAnswer(Answer::No);  // no list of textures
        m_ui->pushAnswer(Answer::No);  // no list of sounds
        screen.Command4_Click();
        QVERIFY(screen.lastCheck().deepDone);
        QVERIFY(!screen.reports().empty());
        auto* missing = qobject_cast<ui::frmListRS*>(screen.reports().front().data());
        QVERIFY(missing);
        QVERIFY(missing->windowTitle().startsWith("Following Asset(s) were missing"));
        bool coalDrops = false;
        for (const auto& row : missing->rows())
            coalDrops = coalDrops || row.find("Coal_Drops.bin\t(Scenery Item) on tile") != std::string::npos;
        QVERIFY(coalDrops);
        QVERIFY(fs::exists(m_ctx->reports() / "MissingAssets.csv"));
        QVERIFY(fs::exists(m_ctx->reports() / "Demo Valley Line_Textures.csv"));

        // Remove dupes and saving in the three forms.
        missing->Command1_Click();
        for (const char* name : {"m.csv", "m.txt", "m.xls"})
            QVERIFY(missing->saveTo(m_dir / name));
        QVERIFY(!missing->saveTo(m_dir / "m.doc"));
    }

    void theChecksReportsComeIntoOneWindowWithATabEach() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        for (int i = 0; i < 4; ++i)
            m_ui->pushAnswer(Answer::Yes); // every list the check offers
        screen.Command4_Click();
        ui::frmResults* results = screen.results();
        QVERIFY(results);
        QVERIFY(results->windowTitle().contains("Demo Valley Line"));
        QStringList tabs;
        for (int i = 0; i < results->pageCount(); ++i)
            tabs << results->tabs()->tabText(i);
        // The notes on what the check found come last, when there are any.
        if (tabs.back() == "Notes")
            tabs.pop_back();
        QCOMPARE(tabs, QStringList({"Missing items", "Shapes used", "Geometry used", "Missing textures", "Textures used",
                                    "Audio used"}));
        // Every report is a page of that one window, not a window of its own.
        for (const auto& r : screen.reports())
            QVERIFY(r && !r->isWindow() && r->window() == results);
        // The check's questions are asked as they always were, between the reports.
        QCOMPARE(std::count_if(m_ui->prompts.begin(), m_ui->prompts.end(),
                               [](const auto& p) { return p.kind == ScriptedUi::Prompt::Kind::Question; }),
                 4);

        results->resize(1100, 700);
        results->tabs()->setCurrentIndex(0);
        QVERIFY(results->grab().save(QCoreApplication::applicationDirPath() + "/route-check-results.png"));

        // A page's own Exit closes its tab; the window goes with the last one.
        QPointer<ui::frmResults> guard(results);
        auto* first = results->page(0);
        first->findChild<QPushButton*>("Command2")->click();
        QCOMPARE(results->pageCount(), static_cast<int>(screen.reports().size()) - 1);
        QCOMPARE(results->tabs()->tabText(0), QString("Shapes used"));
        while (results->pageCount() > 0)
            results->tabs()->tabCloseRequested(0);
        QTRY_VERIFY(guard.isNull());

        // The next command starts a window of its own.
        screen.Command12_Click();
        QVERIFY(screen.results() && screen.results()->pageCount() == 1);
    }

    void aScenariosMissingStockIsMarkedWithAWord() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        screen.Command15_Click(); // the stock of all the route's scenarios
        auto* stock = qobject_cast<ui::frmListRS*>(screen.reports().back().data());
        QVERIFY(stock);
        QCOMPARE(stock->grid()->horizontalHeaderItem(0)->text(), QString("Status"));
        int missing = 0;
        for (int r = 0; r < stock->grid()->rowCount(); ++r) {
            if (!stock->rowMissing(r))
                continue;
            ++missing;
            QCOMPARE(stock->grid()->item(r, 0)->text(), QString("missing"));
            QVERIFY(stock->grid()->item(r, 1)->text().contains("HTA_Sludge"));
        }
        QVERIFY(missing >= 1);
        QVERIFY(stock->counts().contains(QString("%1 missing").arg(missing)));
        // The status is the window's, not the report's: rows and saves hold the blueprints only.
        QVERIFY(stock->rows().front().find("missing") == std::string::npos);
        QVERIFY(stock->saveTo(m_dir / "stock.csv"));
        QVERIFY(ReadTextFile(m_dir / "stock.csv").find("missing") == std::string::npos);
        // Remove dupes keeps each row's mark with it.
        stock->Command1_Click();
        int after = 0;
        for (int r = 0; r < stock->grid()->rowCount(); ++r)
            after += stock->rowMissing(r);
        QVERIFY(after >= 1 && after <= missing);
    }

    void notesOnArchivesAndLetterCaseWhenAskedFor() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        screen.findChild<QCheckBox*>("chkMarkArchives")->setChecked(true);
        screen.findChild<QCheckBox*>("chkMarkCase")->setChecked(true);
        m_ui->pushAnswer(Answer::No); // no list of shapes
        m_ui->pushAnswer(Answer::No); // no textures and sounds
        screen.Command4_Click();
        QVERIFY(!screen.reports().empty());
        auto* notes = qobject_cast<ui::frmReport*>(screen.reports().back().data());
        QVERIFY(notes);
        const QString text = notes->textBox()->toPlainText();
        QVERIFY(text.contains("SteamDaysAssets.ap"));
        QVERIFY(text.contains("SIGNALBOX.bin"));
        // Without the boxes there are no notes.
        ui::frmDelRoute plain(*m_ctx);
        plain.routeList()->setCurrentRow(0);
        m_ui->pushAnswer(Answer::No);
        m_ui->pushAnswer(Answer::No);
        plain.Command4_Click();
        for (const auto& r : plain.reports())
            QVERIFY(!qobject_cast<ui::frmReport*>(r.data()));
    }

    void itemsWithLocationsAndAProductsUnusedItems() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(1); // the Gotthard route: nothing missing on its network
        screen.Command17_Click();
        QVERIFY(!screen.reports().empty());
        auto* placed = qobject_cast<ui::frmListRS*>(screen.reports().back().data());
        QVERIFY(placed);
        QVERIFY(placed->grid()->rowCount() > 10);
        QCOMPARE(placed->grid()->columnCount(), 5);

        // Command22 waits for the providers of the route.
        auto* command22 = screen.findChild<QPushButton*>("Command22");
        QVERIFY(!command22->isEnabled());
        screen.routeList()->setCurrentRow(0);
        screen.Command14_Click();
        QVERIFY(command22->isEnabled());
        QTableWidget* providers = screen.scenarioList();
        int row = -1;
        for (int r = 0; r < providers->rowCount(); ++r)
            if (providers->item(r, 0)->text() == "DemoRail")
                row = r;
        QVERIFY(row >= 0);
        providers->setCurrentCell(row, 0);
        const std::size_t before = screen.reports().size();
        screen.Command22_Click();
        QVERIFY(screen.reports().size() > before);
        auto* used = qobject_cast<ui::frmListRS*>(screen.reports().back().data());
        QVERIFY(used);
        QVERIFY(used->rows().front().find("DemoRail") != std::string::npos);
        m_ui->pushAnswer(Answer::Yes); // DEL in front of each row
        ui::frmListRS* unused = used->Command23_Click();
        QVERIFY(unused && !unused->rows().empty());
        for (const auto& r : unused->rows())
            QVERIFY(r.rfind("DEL ", 0) == 0);
        QVERIFY(unused->saveBatch(m_dir / "unused.bat"));
        QVERIFY(ReadTextFile(m_dir / "unused.bat").rfind("DEL ", 0) == 0);

        // Back to the scenarios: Command22 is off again.
        screen.Command1_Click();
        QVERIFY(!command22->isEnabled());
    }

    void aScenariosStockAndItsOwnScenery() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        screen.Command1_Click();
        QTableWidget* scenarios = screen.scenarioList();
        std::vector<QString> kinds;
        for (int r = 0; r < scenarios->rowCount(); ++r) {
            scenarios->setCurrentCell(r, 0);
            const std::size_t before = screen.reports().size();
            screen.Command3_Click();
            for (std::size_t i = before; i < screen.reports().size(); ++i)
                kinds.push_back(screen.reports()[i]->windowTitle());
        }
        // Each scenario with stock shows it; the one with its own scenery shows that too, and the
        // others say they have none.
        QVERIFY(std::count(kinds.begin(), kinds.end(), QString("Scenery items of this scenario")) == 1);
        QVERIFY(std::count(kinds.begin(), kinds.end(), QString("Stock used by this scenario")) >= 3);
        bool saidNone = false;
        for (const auto& p : m_ui->prompts)
            saidNone = saidNone || p.text == "There was no Scenery file with this scenario";
        QVERIFY(saidNone);
    }

    void theScreensAbortStopsTheCheck() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        // Abort is pressed while the check asks whether to go on to textures.
        m_ui->onPrompt = [&](const ScriptedUi::Prompt& p) {
            if (p.text.find("Texture/Audio") != std::string::npos)
                screen.Command10_Click();
        };
        m_ui->pushAnswer(Answer::No);
        m_ui->pushAnswer(Answer::Yes);
        screen.Command4_Click();
        QVERIFY(screen.lastCheck().aborted);
        QVERIFY(!screen.lastCheck().deepDone);
        m_ui->onPrompt = nullptr;
    }

    void findLocoFindsTheScenariosThatUseAWagon() {
        ui::frmFindLoco find(*m_ctx, "DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Sludge.bin", "HTA");
        QVERIFY(find.results()->count() >= 1);
        QVERIFY(!find.results()->item(0)->text().startsWith("Not used"));
    }
};

int runTestFrmDelRoute(int argc, char** argv) {
    TestFrmDelRoute t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmdelroute.moc"
