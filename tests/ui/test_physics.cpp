// frmPhysics and frmGraphs on the demo install, offscreen: the grids of a diesel and its
// simulation changed and saved (a value that is no number refused), a wagon without a
// simulation, the question before adding the simulation to changed data, the asset grid's menu
// entry, and a curve drawn, changed in its boxes, redrawn, saved and saved as a picture.

#include "demoscreens.h"

#include "assets/assetbatch.h"
#include "physics/frmgraphs.h"
#include "physics/frmphysics.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"

#include <QAbstractAxis>
#include <QChart>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

using namespace velmora;
namespace fs = std::filesystem;

class TestPhysics : public QObject {
    Q_OBJECT
    test::DemoScreens m_demo;

    fs::path engine() const {
        return m_demo.dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
    }
    fs::path simulation() const {
        return m_demo.dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Simulation/Class66_EWS_EngineSim.bin";
    }
    static int rowOf(QTableWidget* grid, const QString& item) {
        for (int r = 0; r < grid->rowCount(); ++r)
            if (grid->item(r, 0)->text() == item)
                return r;
        return -1;
    }
    static std::string xmlOf(const fs::path& file) {
        std::string xml;
        binToXmlText(file, xml);
        return xml;
    }
    static void click(QWidget& screen, const char* name) {
        auto* b = screen.findChild<QPushButton*>(name);
        QVERIFY2(b, name);
        b->click();
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiphysics")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(true); }

    void changesBothGridsAndSavesEach() {
        ui::frmPhysics screen(*m_demo.ctx, engine(), false);
        QVERIFY(screen.loaded());
        QVERIFY(screen.findChild<QPushButton*>("Command2")->isVisibleTo(&screen));
        QVERIFY(!screen.findChild<QPushButton*>("Command6")->isVisibleTo(&screen));
        QTableWidget* grid = screen.vehicleGrid();
        QCOMPARE(screen.findChild<QLabel*>("Label2")->text().toStdString(), engine().string());
        const int mass = rowOf(grid, "Mass");
        QVERIFY(mass >= 0);
        QCOMPARE(grid->item(mass, 1)->text(), QString("126"));
        QVERIFY(grid->isColumnHidden(3));
        // A reference is shown, not changed.
        const int coupling = rowOf(grid, "FrontCouplingBlueprintID");
        QVERIFY(!(grid->item(coupling, 1)->flags() & Qt::ItemIsEditable));

        grid->item(mass, 1)->setText("heavy");
        QVERIFY(m_demo.prompted("'heavy' is not a number"));
        QCOMPARE(grid->item(mass, 1)->text(), QString("126"));
        QVERIFY(!screen.changed());
        grid->item(mass, 1)->setText("130");
        QVERIFY(screen.changed());
        const std::size_t entries = m_demo.ctx->journal().entries().size();
        click(screen, "Command4");
        QVERIFY(!screen.changed());
        QVERIFY(xmlOf(engine()).find(">130</Mass>") != std::string::npos);
        QVERIFY(fs::exists(engine().string() + ".bak"));
        QCOMPARE(m_demo.ctx->journal().entries().size(), entries + 1);

        click(screen, "Command2");
        QTableWidget* sim = screen.simulationGrid();
        const int dynamic = rowOf(sim, "DynamicBrakesSystem/MaxForce");
        QVERIFY(dynamic >= 0);
        QCOMPARE(sim->item(dynamic, 1)->text(), QString("200"));
        sim->item(dynamic, 1)->setText("250");
        click(screen, "Command5");
        const std::string xml = xmlOf(simulation());
        QVERIFY(xml.find(">250</MaxForce>") != std::string::npos);
        QVERIFY(xml.find(">20</MaxForce>") != std::string::npos); // the handbrake's stays
    }

    void aWagonKeepsItsFirstGridAndChangedDataIsAskedAbout() {
        ui::frmPhysics wagon(*m_demo.ctx, m_demo.dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin",
                             false);
        QVERIFY(wagon.loaded());
        QVERIFY(wagon.vehicleGrid()->rowCount() > 10);
        click(wagon, "Command2");
        QVERIFY(m_demo.prompted("There is apparently no Engine Simulation file called by this .bin file"));
        QCOMPARE(wagon.simulationGrid()->rowCount(), 0);

        ui::frmPhysics screen(*m_demo.ctx, engine(), false);
        screen.vehicleGrid()->item(rowOf(screen.vehicleGrid(), "Mass"), 1)->setText("131");
        m_demo.ui->pushAnswer(Answer::Yes); // save first: the simulation is not added
        click(screen, "Command2");
        QVERIFY(m_demo.prompted("You have changed some Data, do you wish to SAVE it before"));
        QCOMPARE(screen.simulationGrid()->rowCount(), 0);
        m_demo.ui->pushAnswer(Answer::No);
        click(screen, "Command2");
        QVERIFY(screen.simulationGrid()->rowCount() > 50);
    }

    void theAssetGridOpensTheScreenOnItsSelectedRow() {
        QWidget host;
        std::vector<assets::AssetRow> rows;
        ui::AssetBatchCommands commands(*m_demo.ctx, &host, [&rows] { return rows; });
        commands.openPhysics(false);
        QVERIFY(m_demo.prompted("You do not appear to have selected any items in the grid?"));
        QVERIFY(!host.findChild<ui::frmPhysics*>());
        assets::AssetRow row;
        row.provider = "Heritage";
        row.product = "SteamDays";
        row.path = "RailVehicles\\Steam\\Black5\\Engine\\Black5.bin";
        rows = {row};
        commands.openPhysics(true);
        auto* screen = host.findChild<ui::frmPhysics*>();
        QVERIFY(screen);
        QVERIFY(screen->findChild<QPushButton*>("Command6")->isVisibleTo(screen));
        click(*screen, "Command6");
        QVERIFY(rowOf(screen->simulationGrid(), "Boiler/MaxPressure") >= 0);
        // The steam loco's graphs offer the steam curves.
        click(*screen, "Command3");
        ui::frmGraphs* graphs = screen->graphs();
        QVERIFY(graphs);
        QVERIFY(graphs->findChild<QPushButton*>("Command12"));
        QVERIFY(!graphs->findChild<QPushButton*>("Command1"));
        QVERIFY(graphs->loadCurve("TractiveEffortVsCutoff"));
        QCOMPARE(graphs->drawn().size(), std::size_t{6});
        screen->close();
    }

    void aCurveIsDrawnChangedSavedAndPictured() {
        ui::frmPhysics screen(*m_demo.ctx, engine(), false);
        click(screen, "Command2");
        click(screen, "Command3");
        ui::frmGraphs* graphs = screen.graphs();
        QVERIFY(graphs);
        QVERIFY(!graphs->loadCurve("TractiveEffortVFieldDivertProportion"));
        QVERIFY(m_demo.prompted("No TractiveEffortVFieldDivertProportion file found for this loco"));
        click(*graphs, "Command1");
        QCOMPARE(graphs->heading()->text(), QString("TractiveEffortVsThrottle Data for DemoRail Class 66 EWS"));
        QCOMPARE(graphs->xBox(4)->text(), QString("0.5"));
        QCOMPARE(graphs->yBox(4)->text(), QString("0.406"));
        QCOMPARE(graphs->drawn().size(), std::size_t{9});
        QStringList titles;
        for (QAbstractAxis* axis : graphs->chart()->axes())
            titles << axis->titleText();
        QVERIFY(titles.contains("Throttle"));
        QVERIFY(titles.contains("Tractive effort"));

        graphs->yBox(4)->setText("0.45");
        click(*graphs, "Command7");
        QCOMPARE(graphs->drawn()[4].second, 0.45);
        graphs->yBox(2)->setText("much");
        click(*graphs, "Command7");
        QVERIFY(m_demo.prompted("Row 3: 'much' is not a number"));
        QCOMPARE(graphs->drawn()[4].second, 0.45);
        graphs->yBox(2)->setText("0.165");
        click(*graphs, "Command8");
        physics::DcsvTable saved;
        QCOMPARE(physics::readTable(graphs->table().file, saved), std::string());
        QCOMPARE(saved.points.size(), std::size_t{9});
        QCOMPARE(saved.points[4].y, std::string("0.45"));
        QCOMPARE(saved.points[2].y, std::string("0.165"));

        graphs->resize(900, 600);
        const fs::path png = m_demo.dir / "Graph, \"Zürich\".png";
        QVERIFY(graphs->savePicture(png));
        QImage picture(QString::fromStdString(png.string()));
        QVERIFY(!picture.isNull());
        QVERIFY(picture.width() > 100);
        int red = 0;
        for (int y = 0; y < picture.height(); y += 2)
            for (int x = 0; x < picture.width(); x += 2) {
                const QColor c = picture.pixelColor(x, y);
                if (c.red() > 200 && c.green() < 80 && c.blue() < 80)
                    ++red;
            }
        QVERIFY2(red > 20, "the curve is in the picture");

        click(*graphs, "Command5");
        QVERIFY(graphs->xBox(0)->text().isEmpty());
        QVERIFY(graphs->drawn().empty());
    }
};

int runTestPhysics(int argc, char** argv) {
    TestPhysics t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_physics.moc"
