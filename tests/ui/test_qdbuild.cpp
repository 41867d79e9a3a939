// Build QD Consists or Fragments on a demo install, offscreen: the screen opened from the main
// menu on a PreLoad folder, stock added from the index, a consist built through frmQDSelect, a
// fragment named and listed, and the refusals that leave the folder as it was.

#include "consists/frmqd.h"
#include "consists/frmqdselect.h"
#include "demoscreens.h"
#include "editor/frmeditor.h"
#include "velmora/consists/qdbuild.h"
#include "velmora/core/convert.h"
#include "velmora/scenarios/indexstock.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QXmlStreamReader>
#include <QtTest>

#include <filesystem>
#include <fstream>
#include <functional>

using namespace velmora;
namespace fs = std::filesystem;
namespace cs = velmora::consists;

namespace {

// The texts of every element called `name` in a decoded document.
QStringList valuesOf(const fs::path& file, const char* name) {
    std::string xml;
    if (!binToXmlText(file, xml))
        return {"(not a document)"};
    QXmlStreamReader r(QByteArray::fromStdString(xml));
    QStringList out;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement() && r.name() == QLatin1String(name))
            out << r.readElementText();
    }
    return out;
}

// Runs `fill` on frmQDSelect once the build has opened it.
void whenDetailsOpen(std::function<void(ui::frmQDSelect&)> fill) {
    QTimer::singleShot(0, [fill] {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (auto* select = qobject_cast<ui::frmQDSelect*>(w); select && select->isVisible()) {
                fill(*select);
                return;
            }
    });
}

} // namespace

class TestQDBuild : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    fs::path preload() const { return m_demo.dir / "rw/Assets/DemoRail/Class66Pack/PreLoad"; }
    bool prompted(const std::string& part) const { return m_demo.prompted(part); }
    // The stock index as the asset screen saves it: the Class 66 and the HTA hopper.
    void writeIndex() {
        fs::create_directories(m_ctx->reports());
        std::ofstream out(m_ctx->reports() / "Index.csv", std::ios::binary);
        out << "Provider,Product,Path,Name,In Scene,Category,Blueprint,Index\r\n"
            << "DemoRail,Class66Pack,RailVehicles\\Diesel\\Class66\\Engine\\Class66_EWS.bin,DemoRail Class 66 EWS,Yes,"
               "Diesel Loco,cEngineBlueprint,1\r\n"
            << "DemoRail,Class66Pack,RailVehicles\\Freight\\HTA\\HTA_Coal.bin,DemoRail HTA Coal Hopper,Yes,"
               "Freight Wagon,cWagonBlueprint,2\r\n";
    }
    std::unique_ptr<ui::frmQD> open(const fs::path& folder) {
        m_ui->pushPath(folder);
        return std::make_unique<ui::frmQD>(*m_ctx);
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiqd")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true);
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
        writeIndex();
    }

    void theMenuOpensTheScreenOnAPreLoadFolder() {
        StartupOptions o;
        o.railWorks = m_demo.dir / "rw";
        o.askForRoot = false;
        ui::frmEditor editor(*m_ctx, o);
        QVERIFY(editor.action("mnuBuildQD")->isEnabled());
        m_ui->pushPath(preload());
        editor.action("mnuBuildQD")->trigger();
        auto* screen = editor.findChild<ui::frmQD*>();
        QVERIFY(screen);
        QCOMPARE(screen->stock()->rowCount(), 2);
        screen->close();
    }

    void aConsistIsBuiltFromTheIndexAndTheDetails() {
        auto screen = open(preload());
        QVERIFY(screen->opened());
        QCOMPARE(screen->fragments()->rowCount(), 0); // the demo keeps its fragments one folder down
        screen->stock()->selectAll();
        screen->Command2_Click();
        QCOMPARE(screen->vehicles()->rowCount(), 2);
        QCOMPARE(screen->vehicles()->item(1, 2)->text(), QString("RailVehicles\\Freight\\HTA\\HTA_Coal.xml"));
        screen->vehicles()->clearSelection();
        screen->vehicles()->selectRow(1);
        screen->action("mnuFlip")->trigger();
        QCOMPARE(screen->vehicles()->item(1, 3)->text(), QString("eTrue"));
        // Two more hoppers behind the second row, as Insert Multiple Times puts them.
        m_ui->pushText("2");
        screen->mnuMulti_Click();
        QCOMPARE(screen->vehicles()->rowCount(), 4);

        QString folder;
        whenDetailsOpen([&folder](ui::frmQDSelect& d) {
            d.findChild<QLineEdit*>("Text1_0")->setText("[DR] Class 66");
            d.findChild<QLineEdit*>("Text1_1")->setText(QString::fromUtf8("Class 66 \"Zürich\" & coal"));
            d.findChild<QLineEdit*>("Text3")->setText(QString::fromUtf8("Coal/../Zürich"));
            QVERIFY(d.routeGrid()->rowCount() > 0);
            d.routeGrid()->selectRow(0);
            folder = d.routeGrid()->item(0, 1)->text();
            d.findChild<QPushButton*>("cmdOK")->click();
        });
        screen->mnuBQD_Click();
        QVERIFY(prompted("Your new consist has been copied to"));
        const fs::path built = screen->lastBuilt();
        QCOMPARE(built.parent_path(), preload());
        QCOMPARE(QString::fromStdString(built.filename().string()), QString::fromUtf8("Coal_.._Zürich.bin"));
        QCOMPARE(valuesOf(built, "Flipped"), (QStringList{"eFalse", "eTrue", "eFalse", "eFalse"}));
        QCOMPARE(valuesOf(built, "RouteID"), QStringList{folder});
        QCOMPARE(valuesOf(built, "English"), (QStringList{"[DR] Class 66", QString::fromUtf8("Class 66 \"Zürich\" & coal")}));
        QCOMPARE(valuesOf(built, "EraStartYear"), QStringList{"2000"});
    }

    void noRouteAndCancelWriteNothing() {
        auto screen = open(preload());
        QVERIFY(screen->opened());
        whenDetailsOpen([this](ui::frmQDSelect& d) {
            d.findChild<QLineEdit*>("Text3")->setText("Routeless");
            d.findChild<QPushButton*>("cmdOK")->click(); // refused: the screen stays
            QVERIFY(prompted(cs::kNoRoute));
            QVERIFY(d.isVisible());
            d.findChild<QPushButton*>("cmdCancel")->click();
        });
        screen->mnuBQD_Click();
        QVERIFY(!fs::exists(preload() / "Routeless.bin"));
        QVERIFY(screen->lastBuilt().empty());
    }

    void aFragmentIsNamedBuiltAndListed() {
        auto screen = open(preload());
        screen->stock()->selectRow(1);
        screen->Command2_Click();
        m_ui->pushText("Coal rake");     // refused: no "Fragment" in it
        m_ui->pushText("Coal Fragment"); // asked again
        screen->mnuBQDF_Click();
        QVERIFY(prompted("e.g. Scotsman Fragment"));
        QVERIFY(fs::exists(preload() / "Coal Fragment.bin"));
        QCOMPARE(screen->fragments()->rowCount(), 1);
        QCOMPARE(screen->fragments()->item(0, 3)->text(), QString("PreLoad\\Coal Fragment.xml"));
        // A fragment used in a consist is one row whose path begins PreLoad\.
        screen->mnuClear_Click();
        screen->VSFG2_DblClick(0);
        QCOMPARE(screen->vehicles()->rowCount(), 1);
        QCOMPARE(screen->vehicles()->item(0, 2)->text(), QString("PreLoad\\Coal Fragment.xml"));
    }

    void withoutIndexOrFolderTheScreenSaysSo() {
        fs::remove(m_ctx->reports() / "Index.csv");
        auto screen = open(preload());
        QVERIFY(screen->opened());
        QVERIFY(prompted(scenarios::kNoIndexFile));
        QCOMPARE(screen->stock()->rowCount(), 0);
        screen->Command2_Click();
        QVERIFY(prompted(scenarios::kNoIndexSelection));

        auto cancelled = std::make_unique<ui::frmQD>(*m_ctx); // no folder chosen
        QVERIFY(!cancelled->opened());
        auto outside = open(m_demo.dir / "rw/Assets/DemoRail");
        QVERIFY(!outside->opened());
        QVERIFY(prompted("must lie inside a product"));
    }
};

int runTestQDBuild(int argc, char** argv) {
    TestQDBuild t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_qdbuild.moc"
