// The pieces the screens share: document text to views and back, the report screens.

#include "common/doctext.h"
#include "common/frmreport.h"
#include "common/numberedview.h"
#include "common/windowplace.h"
#include "common/palettecolours.h"
#include "routes/frmlistrs.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextBlock>
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
            grid.show();
            grid.setGeometry(150, 75, 750, 450);
            grid.accept();
        }
        QCOMPARE(m_ctx->settings.reportGrid.width, std::int16_t(750 * 15));
        QCOMPARE(m_ctx->settings.reportGrid.height, std::int16_t(450 * 15));
        QCOMPARE(m_ctx->settings.reportGrid.top, std::int16_t(75 * 15));
        QCOMPARE(m_ctx->settings.reportGrid.left, std::int16_t(150 * 15));
    }

    void theTextReportMarksMissingFilesAndFindsText() {
        ui::frmReport report(*m_ctx, "Check Loco", "Loco: a.bin\nShapes used:\nb.GeoPcDx\nMISSING: c.TgPcDx\n");
        // Nothing looked for: nothing said about missing files.
        QVERIFY(!report.summary().contains("missing"));
        report.markMissing({}, true);
        QVERIFY(report.summary().contains("no missing files"));
        report.markMissing({3}, true);
        QVERIFY(report.summary().contains("1 missing file"));
        // The mark is a word in the margin as well as a tint: the margin grows to hold it.
        QCOMPARE(report.view()->lineMarks().at(3), QString("missing"));
        ui::NumberedView plain;
        plain.setFont(report.view()->font());
        plain.setPlainText(report.textBox()->toPlainText());
        QVERIFY(report.view()->marginWidth() > plain.marginWidth());
        QCOMPARE(report.view()->extraSelections().size(), 1);
        QCOMPARE(report.view()->extraSelections().front().cursor.block().blockNumber(), 3);

        // Find goes from line to line, round to the top, and says when there is nothing.
        report.findBox()->setText("GeoPcDx");
        QVERIFY(report.findNext());
        QCOMPARE(report.textBox()->textCursor().block().blockNumber(), 2);
        QVERIFY(report.findNext()); // round to the top finds the same line again
        QCOMPARE(report.textBox()->textCursor().block().blockNumber(), 2);
        report.findBox()->setText("no such text");
        QVERIFY(!report.findNext());
        QVERIFY(report.summary().contains("\"no such text\" was not found"));
        QCOMPARE(report.textBox()->textCursor().block().blockNumber(), 2); // the cursor stays
    }

    void everyScreenOpensWhereItWasLeft() {
        {
            QWidget screen;
            ui::rememberPlace(*m_ctx, &screen, "frmTest", {640, 480});
            QCOMPARE(screen.size(), QSize(640, 480)); // no place yet: the first size
            screen.show();
            screen.setGeometry(120, 90, 700, 500);
            screen.showMaximized();
            screen.hide();
        }
        const auto place = m_ctx->desktop().place("frmTest");
        QVERIFY(place);
        QCOMPARE(QRect(place->left, place->top, place->width, place->height), QRect(120, 90, 700, 500));
        QVERIFY(place->maximised);
        // A new run reads the place from the program's folder.
        AppContext next(m_dir / "home", m_dir / "data", *m_ui);
        QWidget again;
        ui::rememberPlace(next, &again, "frmTest", {640, 480});
        QCOMPARE(again.geometry(), QRect(120, 90, 700, 500));
        QVERIFY(again.windowState() & Qt::WindowMaximized);

        // A place on no screen any more (a monitor unplugged) gives the first size instead.
        next.desktop().setPlace("frmGone", {-30000, -30000, 500, 400, false});
        QWidget gone;
        ui::rememberPlace(next, &gone, "frmGone", {640, 480});
        QCOMPARE(gone.size(), QSize(640, 480));
        QVERIFY(gone.pos().x() > -30000);
    }

    void theGridMarksMissingRowsWithAWord() {
        ui::frmListRS list(*m_ctx, ui::ReportKind::ScenarioStock, "Stock",
                           {"P\\a.bin\ta.bin", "P\\b.bin\tb.bin", "P\\a.bin\ta.bin"});
        list.markMissing({false, true, false});
        QCOMPARE(list.grid()->columnCount(), 3);
        QCOMPARE(list.grid()->horizontalHeaderItem(0)->text(), QString("Status"));
        QCOMPARE(list.grid()->item(1, 0)->text(), QString("missing"));
        QVERIFY(list.grid()->item(1, 1)->background() != list.grid()->item(0, 1)->background());
        QCOMPARE(list.counts(), QString("3 row(s), 1 missing"));
        QCOMPARE(list.rows().at(1), std::string("P\\b.bin\tb.bin"));
        // The filter looks at the status too: "missing" shows the missing rows.
        list.filterBox()->setText("missing");
        QCOMPARE(list.counts(), QString("1 of 3 row(s), 1 missing"));
        list.filterBox()->clear();
        list.markMissing({false, false, false});
        QCOMPARE(list.counts(), QString("3 row(s), none missing"));
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
