// The pieces the screens share: document text to views and back, the report screens.

#include "common/doctext.h"
#include "common/frmreport.h"
#include "common/palettecolours.h"
#include "routes/frmlistrs.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>

using namespace velmora;
namespace fs = std::filesystem;

class TestTextViews : public QObject {
    Q_OBJECT

    fs::path m_dir;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<AppContext> m_ctx;

private slots:
    void init() {
        m_dir = fs::temp_directory_path() / ("velmora-uitext-" + std::to_string(QCoreApplication::applicationPid()));
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
        m_ui = std::make_unique<ScriptedUi>();
        m_ctx = std::make_unique<AppContext>(m_dir / "home", m_dir / "data", *m_ui);
    }
    void cleanup() {
        m_ctx.reset();
        fs::remove_all(m_dir);
    }

    void documentTextComesBackByteForByte() {
        // UTF-8 with CR LF, as the converter writes it.
        const std::string utf8 = "<a>M\xC3\xBChle</a>\r\n<b>\xEF\xBF\xBC</b>\r\n";
        ui::TextForm form;
        QString text = ui::decodeDocument(utf8, form);
        QVERIFY(form.utf8);
        QVERIFY(form.crlf);
        QVERIFY(!text.contains('\r'));
        QVERIFY(text.contains(QString::fromUtf8("M\xC3\xBChle")));
        QCOMPARE(ui::encodeDocument(text, form), utf8);

        // Bytes that are not UTF-8 stay bytes; LF stays LF.
        const std::string bytes = "<a>M\xFChle \xC3\xF9</a>\n";
        text = ui::decodeDocument(bytes, form);
        QVERIFY(!form.utf8);
        QVERIFY(!form.crlf);
        QCOMPARE(ui::encodeDocument(text, form), bytes);
    }

    void gridReportsRemoveDupesAndMarkRepeatedNumbers() {
        ui::frmListRS stock(*m_ctx, ui::ReportKind::StockWithNumbers, "Stock", {"66 251\tLoco", "310607\tHTA", "66 251\tLoco 2"});
        QCOMPARE(stock.grid()->columnCount(), 2);
        // Red, as dark as it needs to be to read on the grid's background.
        const QColor mark = stock.grid()->item(0, 0)->foreground().color();
        QCOMPARE(mark.hslHue(), 0);
        QVERIFY(ui::contrastRatio(mark, stock.grid()->palette().color(QPalette::Base)) >= ui::kReadableContrast);
        QCOMPARE(stock.grid()->item(2, 1)->foreground().color(), mark);
        QVERIFY(stock.grid()->item(1, 0)->foreground().color() != mark);

        ui::frmListRS used(*m_ctx, ui::ReportKind::Used, "Used", {"b.bin", "a.bin", "b.bin", "c.bin"}, "Route", "_Assets.csv");
        used.Command1_Click();
        QCOMPARE(used.rows(), (std::vector<std::string>{"a.bin", "b.bin", "c.bin"}));
        QVERIFY(used.saveTo(m_dir / "r.csv"));
        QVERIFY(used.saveTo(m_dir / "r.csv"));
        QVERIFY2(fs::exists(m_dir / "r.csv.bak"), "an older report is kept");
        ui::frmListRS named(*m_ctx, ui::ReportKind::ScenarioStock, "Stock", {"AP\\Wagons, vol. 2\\a.bin\ta, \"b\""});
        QVERIFY(named.saveTo(m_dir / "n.csv"));
        QCOMPARE(ReadTextFile(m_dir / "n.csv"), std::string("\"AP\\Wagons, vol. 2\\a.bin\",\"a, \"\"b\"\"\"\r\n"));
        QVERIFY(used.saveBatch(m_dir / "del.bat"));
        QCOMPARE(ReadTextFile(m_dir / "del.bat"), std::string("a.bin\r\nb.bin\r\nc.bin\r\n"));
    }

    // Headers say what a column holds; any column sorts; a filter shows the rows that hold its
    // text, and the window counts rows and missing items. Rows come in their own order first.
    void gridReportsNameSortFilterAndCount() {
        ui::frmListRS missing(*m_ctx, ui::ReportKind::MissingItems, "Missing",
                              {"Kuju\\Core\\Zeta.xml\t(Scenery Item) on tile -1-1.bin",
                               "DemoRail\\Pack\\Alpha.xml\t(Track Item) on tile 0+0.bin",
                               "DemoRail\\Pack\\Coal_Drops.xml\t(Scenery Item) on tile -1-1.bin"});
        QCOMPARE(missing.grid()->horizontalHeaderItem(0)->text(), QString("Missing item"));
        QCOMPARE(missing.grid()->horizontalHeaderItem(1)->text(), QString("Placed as"));
        QVERIFY(missing.grid()->isSortingEnabled());
        QCOMPARE(missing.grid()->item(0, 0)->text(), QString("Kuju\\Core\\Zeta.xml"));
        QCOMPARE(missing.counts(), QString("3 row(s), 3 missing"));

        missing.grid()->sortItems(0, Qt::AscendingOrder);
        QCOMPARE(missing.grid()->item(0, 0)->text(), QString("DemoRail\\Pack\\Alpha.xml"));

        missing.filterBox()->setText("scenery");
        int shown = 0;
        for (int r = 0; r < missing.grid()->rowCount(); ++r)
            shown += !missing.grid()->isRowHidden(r);
        QCOMPARE(shown, 2);
        QCOMPARE(missing.counts(), QString("2 of 3 row(s), 3 missing"));
        QCOMPARE(missing.rows().size(), std::size_t(3)); // a filter hides rows, never drops them from a save

        ui::frmListRS located(*m_ctx, ui::ReportKind::ItemsWithLocations, "Items", {"a.xml\tScenery\t-1-1.bin\t1.5\t2"});
        QCOMPARE(located.grid()->horizontalHeaderItem(2)->text(), QString("Tile"));
    }

    void theGridOpensWhereTheSettingsSayAndRemembersWhereItWas() {
        m_ctx->settings.reportGrid = {9000, 6000, 1500, 3000}; // twips: 600 x 400 at (200, 100)
        {
            ui::frmListRS grid(*m_ctx, ui::ReportKind::Used, "Used", {"a.bin"});
            QCOMPARE(grid.geometry().size(), QSize(600, 400));
            QCOMPARE(grid.geometry().topLeft(), QPoint(200, 100));
            grid.setGeometry(150, 75, 750, 450);
            grid.accept();
        }
        QCOMPARE(m_ctx->settings.reportGrid.width, std::int16_t(750 * 15));
        QCOMPARE(m_ctx->settings.reportGrid.height, std::int16_t(450 * 15));
        QCOMPARE(m_ctx->settings.reportGrid.top, std::int16_t(75 * 15));
        QCOMPARE(m_ctx->settings.reportGrid.left, std::int16_t(150 * 15));
    }

    void theTextReportSavesUnderReports() {
        ui::frmReport report(*m_ctx, "Report", "line one\nline \xFC two\n");
        QVERIFY(report.textBox()->toPlainText().contains("line"));
        m_ui->pushPath(m_dir / "home/Reports/Check.txt");
        QVERIFY(report.saveReport());
        QCOMPARE(ReadTextFile(m_dir / "home/Reports/Check.txt"), std::string("line one\r\nline \xFC two\r\n"));
    }
};

int runTestTextViews(int argc, char** argv) {
    TestTextViews t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_textviews.moc"
