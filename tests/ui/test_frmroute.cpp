// Direct Route Setup, the route's details, description and template check, driven offscreen on a
// demo install of their own; each write then undone.

#include "routes/frmdelroute.h"
#include "routes/frmdesc.h"
#include "routes/frmroute.h"
#include "routes/frmroutedetails.h"
#include "routes/frmsetas.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "demoscreens.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <filesystem>

using namespace velmora;
namespace fs = std::filesystem;

class TestFrmRoute : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    bool undo() {
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        return last && undoEntry(m_ctx->files(), *last, false).ok;
    }
    void selectValley(ui::frmDelRoute& screen) {
        for (int r = 0; r < screen.routeList()->count(); ++r)
            if (screen.routeList()->item(r)->text().contains("Demo Valley Line")) {
                screen.routeList()->setCurrentRow(r);
                screen.routeList()->item(r)->setSelected(true);
            }
    }
    fs::path valley() const { return m_demo.dir / "rw" / "Content" / "Routes" / "51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb"; }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uiroutetemplate")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true);
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void buildTemplateFromTheBoxes() {
        ui::frmRoute screen(*m_ctx);
        // The pickers start with the simulator's own items.
        QCOMPARE(screen.text3(routes::SpringSky)->text(), QString("RailSimulatorCore"));
        QCOMPARE(screen.text4(routes::Terrain)->text(), QString("Environment\\Terrain\\Terrain.xml"));
        screen.findChild<QPushButton*>("Command4")->click();
        QVERIFY(m_demo.prompted("You have not entered details in all the boxes, please complete"));

        screen.text1(0)->setText(QString::fromUtf8("Vallée, \"Süd\""));
        screen.text1(1)->setText("NewDev");
        screen.text1(2)->setText("Valley");
        // A picked file fills the three boxes of its item.
        m_ui->pushPath(m_demo.dir / "rw" / "Assets" / "Kuju" / "RailSimulatorCore" / "Weather" / "Clear.bin");
        screen.findChild<QPushButton*>("Command3_4")->click();
        QCOMPARE(screen.text4(routes::Weather)->text(), QString("Weather\\Clear.xml"));
        screen.findChild<QRadioButton*>("Option1_2")->setChecked(true); // Australia
        screen.findChild<QRadioButton*>("Option2_0")->setChecked(true); // Heritage
        screen.findChild<QCheckBox*>("Check1_3")->setChecked(true);     // Urban
        screen.findChild<QPushButton*>("Command4")->click();
        QVERIFY(m_demo.prompted("Your new route template has been placed in your TemplateRoutes folder"));
        const fs::path made = m_demo.dir / "rw" / "Assets" / "NewDev" / "Valley" / "TemplateRoutes" / "Vallée, _Süd_.bin";
        QVERIFY(fs::exists(made));
        std::string xml;
        QVERIFY(binToXmlText(made, xml));
        QVERIFY(xml.find("<Australia d:type=\"cDeltaString\">eTrue</Australia>") != std::string::npos);
        QVERIFY(xml.find("<Heritage d:type=\"cDeltaString\">eTrue</Heritage>") != std::string::npos);
        QVERIFY(xml.find("<Countryside d:type=\"cDeltaString\">eTrue</Countryside>") != std::string::npos);
        QVERIFY(xml.find("<Urban d:type=\"cDeltaString\">eTrue</Urban>") != std::string::npos);
        QVERIFY(undo());
        QVERIFY(!fs::exists(made));
    }

    void detailsShowAndSaveThePosition() {
        ui::frmDelRoute routes(*m_ctx);
        selectValley(routes);
        routes.findChild<QPushButton*>("Command11")->click();
        auto* details = qobject_cast<ui::frmRouteDetails*>(routes.routePage());
        QVERIFY(details);
        QCOMPARE(details->name(0)->text(), QString("Demo Valley Line"));
        QCOMPARE(details->item(0)->text(), QString("Kuju\\RailSimulatorCore\\TemplateRoutes\\Demo_Template.xml"));
        QCOMPARE(details->latLong(0)->text(), QString("52.0459"));
        const std::string old = ReadTextFile(valley() / "RouteProperties.xml");
        details->latLong(0)->setText("north");
        details->findChild<QPushButton*>("Command2")->click();
        QVERIFY(m_demo.prompted("The latitude 'north' is not a number"));
        QCOMPARE(ReadTextFile(valley() / "RouteProperties.xml"), old);
        details->latLong(0)->setText("47.25");
        details->findChild<QPushButton*>("Command2")->click();
        QCOMPARE(ReadTextFile(valley() / "RouteProperties.xmlbak"), old);
        QVERIFY(undo());
        QCOMPARE(ReadTextFile(valley() / "RouteProperties.xml"), old);
        details->close();
    }

    void descriptionFromTheRouteScreen() {
        ui::frmDelRoute routes(*m_ctx);
        selectValley(routes);
        routes.findChild<QPushButton*>("mnuRouteInfo")->click();
        auto* desc = qobject_cast<ui::frmDesc*>(routes.routePage());
        QVERIFY(desc);
        const fs::path page = valley() / "RouteInformation" / "En" / "Description.html";
        const bool had = fs::exists(page);
        desc->title()->setText("Rails & <Roads>");
        desc->para(0)->setPlainText("One");
        desc->para(2)->setPlainText("Three");
        desc->findChild<QPushButton*>("Command1")->click();
        QVERIFY(m_demo.prompted("Your Description file has been saved in the route's"));
        const std::string html = ReadTextFile(page);
        QVERIFY(html.find("<h1>Rails &amp; &lt;Roads&gt;</h1>") != std::string::npos);
        QVERIFY(html.find("<h2></h2>") != std::string::npos);
        QVERIFY(html.find("<p>One</p>\r\n<p></p>\r\n<p>Three</p>") != std::string::npos);
        QVERIFY(undo());
        QCOMPARE(fs::exists(page), had);
        desc->close();
    }

    void checkRouteTemplateAsksThenAddsTheFilterChosen() {
        ui::frmDelRoute routes(*m_ctx);
        selectValley(routes);
        const fs::path file = m_demo.dir / "rw" / "Assets" / "Kuju" / "RailSimulatorCore" / "TemplateRoutes" / "Demo_Template.bin";
        const std::string old = ReadTextFile(file);
        m_ui->pushAnswer(Answer::No);
        routes.findChild<QPushButton*>("Command25")->click();
        QVERIFY(m_demo.prompted("BrowseFiltering section, so will not sort correctly"));
        QCOMPARE(ReadTextFile(file), old);
        // Yes opens the filter choice; its OK takes the default choice.
        m_ui->pushAnswer(Answer::Yes);
        QTimer::singleShot(0, [] {
            for (QWidget* w : QApplication::topLevelWidgets())
                if (w->objectName() == "dlgBrowseFilter")
                    if (auto* ok = w->findChild<QPushButton*>("OKButton"))
                        ok->click();
        });
        routes.findChild<QPushButton*>("Command25")->click();
        QVERIFY(m_demo.prompted("Your Route Template has been updated."));
        QCOMPARE(ReadTextFile(fs::path(file.string() + ".bak")), old);
        QVERIFY(undo());
        QCOMPARE(ReadTextFile(file), old);
    }

    void developerFoldersFromTheirScreen() {
        ui::frmSetAS screen(*m_ctx);
        screen.provider()->setText(QString::fromUtf8("Ñandú"));
        screen.product()->setText("Works, One");
        screen.findChild<QPushButton*>("Command1")->click();
        QVERIFY(m_demo.prompted("Your Provider and Product folders have been set up"));
        QVERIFY(fs::is_directory(m_demo.dir / "rw" / "Source" / "Ñandú" / "Works, One" / "Scenery" / "Clutter"));
        QVERIFY(fs::is_directory(m_demo.dir / "rw" / "Assets" / "Ñandú" / "Works, One" / "RailVehicles" / "Diesel"));
    }
};

int runTestFrmRoute(int argc, char** argv) {
    TestFrmRoute t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmroute.moc"
