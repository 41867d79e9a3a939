// The details and work order screens on a demo install, offscreen, opened from the scenario
// list: the index question asked once, the grid saved and printed, the class changed, the order
// coloured, saved and printed.

#include "scenarios/frmscenario.h"
#include "scenarios/frmshowroutes.h"
#include "scenarios/frmworkorder.h"
#include "velmora/scenarios/trackindex.h"
#include "demoscreens.h"
#include "scenarioscreens.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTextEdit>
#include <QtTest>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace velmora;
namespace fs = std::filesystem;

class TestScenarioDetails : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    std::unique_ptr<ui::frmShowRoutes> listed() { return test::listedScenarios(*m_ctx); }
    bool select(ui::frmShowRoutes& screen, const QString& name) { return test::selectScenario(screen, name); }
    int asked(const std::string& part) const {
        int n = 0;
        for (const auto& p : m_ui->prompts)
            n += p.text.find(part) != std::string::npos;
        return n;
    }
    // The grid's rows whose first cell is `label`.
    static QList<QStringList> labelled(const ui::frmScenario& details, const QString& label) {
        QList<QStringList> rows;
        QTableWidget* grid = details.grid();
        for (int r = 0; r < grid->rowCount(); ++r)
            if (grid->item(r, 0) && grid->item(r, 0)->text() == label) {
                QStringList cells;
                for (int c = 0; c < grid->columnCount(); ++c)
                    cells << (grid->item(r, c) ? grid->item(r, c)->text() : QString());
                rows << cells;
            }
        return rows;
    }
    fs::path indexFile() const {
        const auto routes = routes::listRoutes(*m_ctx);
        return scenarios::trackIndexFile(*m_ctx, routes.front().folder);
    }
    static std::string slurp(const fs::path& p) {
        std::ifstream in(p, std::ios::binary);
        std::ostringstream s;
        s << in.rdbuf();
        return s.str();
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uidetails")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start();
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void nothingSelectedSaysSo() {
        auto screen = listed();
        QVERIFY(screen->button("Command7")->isEnabled());
        QVERIFY(screen->button("Command12")->isEnabled());
        screen->Command7_Click();
        screen->Command12_Click();
        QCOMPARE(asked("No Scenarios were found."), 2);
        QVERIFY(!screen->details() && !screen->workOrder());
    }

    void theIndexIsOfferedOnceAndCancelLeavesNoLocations() {
        auto screen = listed();
        QVERIFY(select(*screen, "O'Connor"));
        // Cancel: the grid comes without places, and no index is kept.
        screen->button("Command7")->click();
        ui::frmScenario* details = screen->details();
        QVERIFY(details);
        QCOMPARE(asked("About to index this route's tracks.bin file.\nThis may take some time."), 1);
        QVERIFY(!details->hasLocations());
        QVERIFY(labelled(*details, "Location").isEmpty());
        QVERIFY(labelled(*details, "Origin").isEmpty());
        QVERIFY(!fs::exists(indexFile()));
        QCOMPARE(labelled(*details, "Service Name").front().at(1), QString("Demo service 1"));
        QCOMPARE(details->drivenField()->text(), QString("Demo service 1"));
        QCOMPARE(details->field(0)->text(), QString("O'Connor's coal run"));
        QVERIFY(details->field(5)->text().count('/') == 2);
        details->close();

        // OK: the route is indexed off the GUI thread, and the vehicles are placed.
        m_ui->pushAnswer(Answer::Ok);
        screen->Command7_Click();
        details = screen->details();
        QVERIFY(details && details->hasLocations());
        QVERIFY(fs::exists(indexFile()));
        QVERIFY(!labelled(*details, "Location").isEmpty());
        QVERIFY(labelled(*details, "Origin").front().at(1).startsWith("On Track in tile "));
        details->close();

        // A later display reads the index without asking.
        screen->Command7_Click();
        QCOMPARE(asked("About to index"), 2);
        QVERIFY(screen->details()->hasLocations());
    }

    void rightClickShowsTheCellAndTheGridIsSavedAndPrinted() {
        auto screen = listed();
        QVERIFY(select(*screen, "O'Connor"));
        screen->Command7_Click();
        ui::frmScenario* details = screen->details();
        QVERIFY(details);
        QTableWidget* grid = details->grid();
        // The first consist's destination.
        for (int r = 0; r < grid->rowCount(); ++r)
            if (grid->item(r, 0) && grid->item(r, 0)->text() == "Final Destination") {
                details->VSFG1_MouseDown(r, 1);
                break;
            }
        QCOMPARE(details->cellText()->toPlainText(), QString("Valley Yard"));

        // Save to Excel: the dialog's title and filter, then the form by the ending.
        const fs::path csv = m_demo.dir / "out" / "Grid, \"demo\".csv";
        m_ui->pushPath(csv);
        details->findChild<QPushButton*>("Command2")->click();
        QVERIFY(asked("Save Grid as File") >= 1);
        const std::string saved = slurp(csv);
        QVERIFY(saved.rfind("Service Name,Demo service 1\r\n", 0) == 0);
        QVERIFY(saved.find("Final Destination,Valley Yard") != std::string::npos);
        const fs::path bare = m_demo.dir / "out" / "Grid";
        m_ui->pushPath(bare);
        details->Command2_Click();
        QVERIFY(fs::exists(m_demo.dir / "out" / "Grid.csv"));
        QVERIFY(fs::is_directory(m_ctx->reports()));

        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        const fs::path pdf = m_demo.dir / "out" / "grid.pdf";
        printer.setOutputFileName(QString::fromStdString(pdf.string()));
        details->printTo(printer);
        QVERIFY(fs::exists(pdf) && fs::file_size(pdf) > 0);
        QVERIFY(slurp(pdf).rfind("%PDF", 0) == 0);
    }

    void classChangeAsksFirstAndSaves() {
        auto screen = listed();
        QVERIFY(select(*screen, "Workshop"));
        screen->Command7_Click();
        ui::frmScenario* details = screen->details();
        QVERIFY(details);
        QCOMPARE(details->classGroup()->buttons().size(), 2);
        QVERIFY(details->classGroup()->button(0)->isChecked());
        const fs::path folder = details->document().folder;
        const std::string before = slurp(folder / "ScenarioProperties.xml");
        // Cancel keeps everything.
        details->classGroup()->button(1)->click();
        QVERIFY(details->classGroup()->button(0)->isChecked());
        QCOMPARE(slurp(folder / "ScenarioProperties.xml"), before);
        QVERIFY(!fs::exists(folder / "ScenarioProperties.bak"));
        // OK saves as the editor saves: one word changes, the old file kept.
        m_ui->pushAnswer(Answer::Ok);
        details->classGroup()->button(1)->click();
        QVERIFY(details->classGroup()->button(1)->isChecked());
        QCOMPARE(slurp(folder / "ScenarioProperties.bak"), before);
        QVERIFY(slurp(folder / "ScenarioProperties.xml").find("eTimetableScenarioClass") != std::string::npos);
        QCOMPARE(details->document().cls(), scenarios::ScenarioClass::Timetable);
    }

    void theWorkOrderIsColouredSavedAndPrinted() {
        auto screen = listed();
        QVERIFY(select(*screen, "O'Connor"));
        screen->button("Command12")->click();
        ui::frmWorkOrder* order = screen->workOrder();
        QVERIFY(order);
        const QString text = order->text()->toPlainText();
        QVERIFY(text.contains("Route:- Demo Valley Line"));
        QVERIFY(text.contains("Scenario:- O'Connor's coal run"));
        QVERIFY(text.contains("There are no wagon numbers in this scenario,\nWork Order can be constructed."));
        QVERIFY(text.indexOf("Season: ") < text.indexOf("Service: "));
        QStringList colours;
        for (int i = 0; i < order->fontColor()->count(); ++i)
            colours << order->fontColor()->itemText(i);
        QCOMPARE(colours, QStringList({"Default", "Black", "Blue", "Green", "Red"}));

        order->cmbFontColor_Click(4);
        QVERIFY(order->text()->toHtml().contains("#ff0000"));
        order->cmbFontColor_Click(0);
        QVERIFY(!order->text()->toHtml().contains("#ff0000"));
        order->fontSize()->setCurrentText("14");
        emit order->fontSize()->textActivated("14");
        QVERIFY(order->text()->toHtml().contains("14pt"));

        const fs::path html = m_demo.dir / "out" / "Order.html";
        m_ui->pushPath(html);
        order->findChild<QPushButton*>("Command3")->click();
        const std::string saved = slurp(html);
        QVERIFY(saved.find("Route:- ") != std::string::npos);
        QVERIFY(saved.find("O'Connor") != std::string::npos || saved.find("O&#x27;Connor") != std::string::npos);
        QVERIFY(!m_ctx->journal().entries().empty());

        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        const fs::path pdf = m_demo.dir / "out" / "order.pdf";
        printer.setOutputFileName(QString::fromStdString(pdf.string()));
        order->printTo(printer);
        QVERIFY(fs::exists(pdf) && fs::file_size(pdf) > 0);
    }

    void freeRoamHasNoSingleOrder() {
        auto screen = listed();
        QVERIFY(select(*screen, "Free roam"));
        screen->Command12_Click();
        QVERIFY(screen->workOrder());
        const QString text = screen->workOrder()->text()->toPlainText();
        QVERIFY(text.contains("has no single work order"));
        QVERIFY(!text.contains("Service: "));
    }
};

int runTestScenarioDetails(int argc, char** argv) {
    TestScenarioDetails t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_scenariodetails.moc"
