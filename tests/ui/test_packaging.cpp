// The packaging screens driven offscreen on a demo install: the route screen in package mode
// (the route, then its assets once the check's reports are there, then scenarios), frmFolder3
// with a row removed, and frmFolder4's guards.

#include "demoscreens.h"
#include "packaging/frmfolder3.h"
#include "packaging/frmfolder4.h"
#include "routes/frmdelroute.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routecheck.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>
#include <filesystem>

using namespace velmora;
namespace fs = std::filesystem;

class TestPackaging : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    void select(ui::frmDelRoute& screen, const QString& name) {
        for (int r = 0; r < screen.routeList()->count(); ++r)
            if (screen.routeList()->item(r)->text().contains(name)) {
                screen.routeList()->setCurrentRow(r);
                screen.routeList()->item(r)->setSelected(true);
                return;
            }
        QFAIL("no such route");
    }
    QPushButton* button(QWidget& screen, const char* name) { return screen.findChild<QPushButton*>(name); }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uipackaging")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true);
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void routeThenItsAssetsOnceTheReportsAreThere() {
        ui::frmDelRoute screen(*m_ctx, true);
        QVERIFY(button(screen, "Command16")->isVisibleTo(&screen));
        QVERIFY(!button(screen, "Command16")->isEnabled());
        QVERIFY(!button(screen, "Command9")->isVisibleTo(&screen)); // no edits in package mode
        select(screen, "Demo Valley Line");
        m_ui->pushAnswer(Answer::Yes); // add assets
        button(screen, "OKButton")->click();
        const fs::path package = m_ctx->appPath() / "Demo Valley Line";
        QVERIFY(m_demo.prompted("Your Route is now saved in " + package.string()));
        QVERIFY(m_demo.prompted("Do you wish to add Assets ready for distribution?"));
        QVERIFY(button(screen, "Command16")->isEnabled());
        QVERIFY(fs::exists(
            package / "RailWorks/Content/Routes/51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb/RouteProperties.xml"));
        QVERIFY(screen.packageReport());

        // No check has been run: the missing report is named.
        button(screen, "Command16")->click();
        QVERIFY(m_demo.prompted("Missing your Assets list which should be:-"));

        const auto routes = routes::listRoutes(*m_ctx);
        const routes::RouteEntry* route = routes::findRoute(routes, "Demo Valley Line");
        QVERIFY(route);
        routes::RouteCheckOptions deep;
        deep.deep = true;
        const auto scenarios = routes::listScenarios(*m_ctx, *route);
        QVERIFY(
            routes::saveRouteReports(*m_ctx, routes::RouteCheck(*m_ctx, *route, scenarios).run(deep)).ok());
        m_ui->pushAnswer(Answer::No); // no zip
        button(screen, "Command16")->click();
        QVERIFY(m_demo.prompted("Do you wish it to be automatically zipped up ready for distribution?"));
        QVERIFY(fs::exists(package / "RailWorks/Assets/DemoRail/Class66Pack"));
        QVERIFY(fs::exists(package / "PackageContents.txt"));
        QVERIFY(!fs::exists(m_ctx->appPath() / "Demo Valley Line.zip"));
    }

    void scenariosAddedThenProcessed() {
        ui::frmDelRoute screen(*m_ctx, true);
        select(screen, "Demo Valley Line");
        screen.Command1_Click();
        QVERIFY(screen.scenarioList()->rowCount() >= 2);
        button(screen, "Command6")->click();
        QVERIFY(m_demo.prompted("Add a scenario to the package first."));
        screen.scenarioList()->selectRow(0);
        screen.scenarioList()->item(1, 0)->setSelected(true);
        button(screen, "Command5")->click();
        QVERIFY(m_demo.prompted("Scenario Added - Add another or click Process to finish."));
        QVERIFY(screen.scenarioPackage());
        QCOMPARE(screen.scenarioPackage()->folders().size(), std::size_t(2));
        m_ui->pushAnswer(Answer::No);
        button(screen, "Command6")->click();
        const fs::path package = savedIn("Your Scenario(s) are now saved in ");
        QVERIFY(fs::exists(package / "Scenario.yyy"));
        QVERIFY(fs::exists(package / "Scenario.qqq"));
        QCOMPARE(package.parent_path(), m_ctx->appPath());
    }

    void assetFoldersWithARowRemoved() {
        packaging::PackageState state;
        ui::frmFolder3 screen(*m_ctx, state);
        const fs::path first = m_demo.dir / "rw/Assets/Alpenbahn/Gotthard/Scenery";
        const fs::path second = m_demo.dir / "rw/Assets/DemoRail/Class66Pack/Scenery";
        QVERIFY(screen.folderBox()->text().endsWith("Assets"));
        screen.folderBox()->setText(QString::fromStdString(first.string()));
        button(screen, "Command1")->click();
        screen.folderBox()->setText(QString::fromStdString(second.string()));
        button(screen, "Command1")->click();
        QCOMPARE(screen.list()->count(), 2);
        screen.list()->item(1)->setSelected(true);
        button(screen, "Command4")->click();
        QCOMPARE(screen.list()->count(), 1);
        m_ui->pushAnswer(Answer::No);
        button(screen, "Command3")->click();
        QVERIFY(m_demo.prompted("Your Assets are now saved in "));
        // The removed row is still copied: the list only shows what was added.
        QVERIFY(fs::exists(m_ctx->appPath() / "Scenery/RailWorks/Assets/DemoRail/Class66Pack/Scenery"));
        QVERIFY(fs::exists(m_ctx->appPath() / "Scenery/AssetSetup.ggg"));
    }

    void reskinGuards() {
        packaging::PackageState state;
        ui::frmFolder4 screen(*m_ctx, state);
        button(screen, "Command5")->click();
        QVERIFY(m_demo.prompted("You do not appear to have selected the folder of your ReSkinned object."));
        screen.reskinBox()->setText(QString::fromStdString((m_demo.dir / "rw/Assets").string()));
        button(screen, "Command5")->click();
        QVERIFY(m_demo.prompted("You do not appear to have selected the folder of your Original object."));
        QVERIFY(state.packageFolder.empty());
    }

private:
    // The folder the last prompt that begins with `words` names.
    fs::path savedIn(const std::string& words) const {
        for (auto it = m_ui->prompts.rbegin(); it != m_ui->prompts.rend(); ++it)
            if (it->text.rfind(words, 0) == 0)
                return it->text.substr(words.size(), it->text.find('\n') - words.size());
        return {};
    }
};

int runTestPackaging(int argc, char** argv) {
    TestPackaging t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_packaging.moc"
