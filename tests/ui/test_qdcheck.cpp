// frmCheckQD and frmEdQD on a demo install, offscreen: the walk in the background and its
// grid (sorted, searched, missing entries marked), the refusal on fragments, and an
// edit saved with a backup after a refused drivable flag.

#include "consists/frmcheckqd.h"
#include "consists/frmedqd.h"
#include "common/frmreport.h"
#include "demoscreens.h"
#include "../core/tempdir.h"
#include "velmora/consists/qdcheck.h"
#include "velmora/consists/qdedit.h"
#include "velmora/core/convert.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;
namespace cs = velmora::consists;

namespace {

std::vector<int> visibleRows(const QTableWidget* grid) {
    std::vector<int> rows;
    for (int r = 0; r < grid->rowCount(); ++r)
        if (!grid->isRowHidden(r))
            rows.push_back(r);
    return rows;
}

} // namespace

class TestQdCheck : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    fs::path preload() const { return m_demo.dir / "rw/Assets/DemoRail/Class66Pack/PreLoad"; }

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("uiqd"));
        // A fragment naming a wagon that is not there, with a name a CSV would trip on.
        std::string xml;
        QVERIFY(binToXmlText(preload() / "Fragments/HTA_Rake_Fragment.bin", xml));
        const std::string real = "RailVehicles\\Freight\\HTA\\HTA_Coal.xml";
        xml.replace(xml.find(real), real.size(), "RailVehicles\\Freight\\HTA\\HTA_Gone, \"old\".xml");
        std::string bin;
        QVERIFY(xmlTextToBin(xml, bin));
        std::ofstream(preload() / "Fragments/Gone_Fragment.bin", std::ios::binary) << bin;
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true); // an edit that adds a route fills the program's Templates/QD6.txt
        m_demo.ui->prompts.clear(); // what start-up said of the missing language table
    }

    void fragmentsAreCheckedMissingMarkedAndSearched() {
        ui::frmCheckQD screen(*m_demo.ctx);
        screen.Command2_Click();
        QTableWidget* grid = screen.grid();
        // One loco; six wagons; the demo's withdrawn pair; six more of which one is gone.
        QCOMPARE(grid->rowCount(), 1 + 6 + 2 + 6);
        int missing = -1, missingRows = 0;
        for (int r = 0; r < grid->rowCount(); ++r)
            if (grid->item(r, cs::kQdStatusColumn)->text() == "missing") {
                ++missingRows;
                if (grid->item(r, 8)->text().contains("HTA_Gone"))
                    missing = r;
            }
        QCOMPARE(missingRows, 2);
        QVERIFY(missing >= 0);
        QVERIFY(grid->item(missing, 8)->text().contains("HTA_Gone, \"old\""));
        QVERIFY(grid->item(missing, 0)->foreground() != grid->item(missing == 0 ? 1 : 0, 0)->foreground());
        // The report names it under the heading; nothing else was said.
        QVERIFY(m_demo.ui->prompts.empty());
        auto* report = screen.findChild<ui::frmReport*>();
        QVERIFY(report);
        QVERIFY(report->textBox()->toPlainText().contains(cs::kQdMissingHeading));

        screen.searchBox()->setText("gone, \"OLD\"");
        QCOMPARE(visibleRows(grid).size(), 1u);
        screen.searchBox()->setText("MISSING");
        QCOMPARE(visibleRows(grid).size(), 2u);
        screen.searchBox()->clear();
        QCOMPARE(visibleRows(grid).size(), static_cast<std::size_t>(grid->rowCount()));
        grid->sortItems(cs::kQdStatusColumn, Qt::DescendingOrder);
        QCOMPARE(grid->item(0, cs::kQdStatusColumn)->text(), QString("missing"));

        // Editing is for consists only.
        screen.Command6_Click();
        QVERIFY(m_demo.prompted("This option is for full Consists only."));
    }

    void aConsistIsEditedFromTheList() {
        ui::frmCheckQD screen(*m_demo.ctx);
        m_demo.ui->pushAnswer(Answer::Yes);
        screen.Command7_Click();
        QCOMPARE(screen.grid()->rowCount(), 1);
        screen.grid()->selectRow(0);
        screen.Command6_Click();
        auto* editor = screen.findChild<ui::frmEdQD*>();
        QVERIFY(editor && editor->loaded());
        QCOMPARE(editor->field(1)->text(), QString("Class 66 with HTA coal hoppers"));
        QCOMPARE(editor->field(5)->text(), QString("eTrue"));
        QCOMPARE(editor->consistType()->currentText(), QString("Consist Type Freight Coal"));
        QCOMPARE(editor->contents()->count(), 2);
        const int routes = editor->routes()->count();
        QVERIFY(routes > 0);

        const fs::path file = preload() / "Class66_Coal_QD.bin";
        const std::string before = test::slurp(file);
        editor->field(5)->setText("maybe");
        editor->Command4_Click();
        QVERIFY(m_demo.prompted("eTrue or eFalse"));
        QCOMPARE(test::slurp(file), before);

        editor->Command2_Click();
        QVERIFY(m_demo.prompted("You have not selected any consists?"));
        editor->routes()->item(0)->setSelected(true);
        editor->Command2_Click();
        QCOMPARE(editor->routes()->count(), routes - 1);
        editor->field(1)->setText(QString::fromUtf8("Zürich, \"fast\""));
        editor->field(5)->setText("False");
        editor->consistType()->setCurrentText("Consist Type Preserved");
        editor->Command4_Click();
        QVERIFY(m_demo.prompted(cs::kQdModified));

        std::string xml;
        QVERIFY(binToXmlText(file, xml));
        cs::QdDocument d;
        QVERIFY(cs::parseQuickDrive(xml, d));
        QCOMPARE(d.name, std::string("Z\xFCrich, \"fast\""));
        QVERIFY(!d.drivable);
        QCOMPARE(d.consistType, std::string("eConsistTypePreserved"));
        QCOMPARE(static_cast<int>(d.routes.size()), routes - 1);
        std::ofstream(file, std::ios::binary | std::ios::trunc) << before;
    }
};

int runTestQdCheck(int argc, char** argv) {
    TestQdCheck t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_qdcheck.moc"
