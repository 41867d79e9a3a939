// The route screen's edits driven offscreen on a demo install of their own: clone and delete a
// route, clone and delete scenarios, raise the track and blank the terrain, each then undone.

#include "routes/frmdelroute.h"
#include "routes/frmmix.h"
#include "routes/frmprovider.h"
#include "velmora/routes/routes.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "demoscreens.h"

#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>

using namespace velmora;
namespace fs = std::filesystem;

class TestFrmDelRouteEdits : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    ScriptedUi* m_ui = nullptr;
    AppContext* m_ctx = nullptr;

    int rowOf(ui::frmDelRoute& screen, const QString& name) {
        for (int r = 0; r < screen.routeList()->count(); ++r)
            if (screen.routeList()->item(r)->text().contains(name))
                return r;
        return -1;
    }
    void select(ui::frmDelRoute& screen, int row) {
        screen.routeList()->clearSelection();
        screen.routeList()->setCurrentRow(row);
        screen.routeList()->item(row)->setSelected(true);
    }
    bool undo() {
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        return last && undoEntry(m_ctx->files(), *last, false).ok;
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uirouteedits")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true);
        m_ui = m_demo.ui.get();
        m_ctx = m_demo.ctx.get();
    }

    void cloneThenDeleteARoute() {
        ui::frmDelRoute screen(*m_ctx);
        const int routes = screen.routeList()->count();
        select(screen, rowOf(screen, "Demo Valley Line"));
        // An empty name asks again; OK goes on to the name.
        m_ui->pushText("");
        m_ui->pushAnswer(Answer::Ok);
        m_ui->pushText("Vallée, \"Nord\"");
        m_ui->pushAnswer(Answer::Yes); // in the normal routes folder
        screen.Command9_Click();
        QVERIFY(m_demo.prompted("You have not selected a new name for your cloned route?"));
        QCOMPARE(screen.routeList()->count(), routes + 1);
        const int clone = rowOf(screen, QString::fromUtf8("Vallée, 'Nord'"));
        QVERIFY(clone >= 0);
        const QString folder = screen.routeList()->item(clone)->text().section('\t', 0, 0);
        const fs::path made = m_demo.dir / "rw" / "Content" / "Routes" / folder.toStdString();
        QVERIFY(fs::exists(made / "RouteProperties.xml"));

        // Deleting asks first; No keeps the route.
        select(screen, clone);
        m_ui->pushAnswer(Answer::No);
        screen.OKButton_Click();
        QCOMPARE(screen.routeList()->count(), routes + 1);
        m_ui->pushAnswer(Answer::Yes);
        screen.findChild<QPushButton*>("OKButton")->click();
        QVERIFY(m_demo.prompted("Do you really wish to delete the selected route?"));
        QCOMPARE(screen.routeList()->count(), routes);
        QVERIFY(!fs::exists(made));
        // Undo brings the route back from the Deleted folder.
        QVERIFY(undo());
        QVERIFY(fs::exists(made / "RouteProperties.xml"));
    }

    void cloneAndDeleteScenarios() {
        ui::frmDelRoute screen(*m_ctx);
        select(screen, rowOf(screen, "Demo Valley Line"));
        screen.Command1_Click();
        QTableWidget* list = screen.scenarioList();
        const int scenarios = list->rowCount();
        int career = -1;
        for (int r = 0; r < list->rowCount(); ++r)
            if (list->item(r, 2)->text() == "Career Scenario")
                career = r;
        QVERIFY(career >= 0);
        list->setCurrentCell(career, 0);
        m_ui->pushText("Career, copied");
        m_ui->pushAnswer(Answer::Yes); // as a standard scenario
        screen.Command8_Click();
        QVERIFY(m_demo.prompted("Your Scenario has been Duplicated as requested."));
        QCOMPARE(list->rowCount(), scenarios + 1);
        int copy = -1;
        for (int r = 0; r < list->rowCount(); ++r)
            if (list->item(r, 1)->text() == "Career, copied")
                copy = r;
        QVERIFY(copy >= 0);
        QCOMPARE(list->item(copy, 2)->text(), QString("Standard Scenario"));

        // No selection: said; then the copy deleted after the question.
        list->clearSelection();
        screen.Command2_Click();
        QCOMPARE(list->rowCount(), scenarios + 1);
        list->selectRow(copy);
        m_ui->pushAnswer(Answer::Yes);
        screen.Command2_Click();
        QVERIFY(m_demo.prompted("Do you really wish to delete the selected scenario(s)?"));
        QCOMPARE(list->rowCount(), scenarios);
    }

    void raiseTheTrackAndUndo() {
        ui::frmDelRoute screen(*m_ctx);
        select(screen, rowOf(screen, "Demo Valley Line"));
        const fs::path tracks = m_demo.dir / "rw" / "Content" / "Routes" /
                                screen.routeList()->currentItem()->text().section('\t', 0, 0).toStdString() /
                                "Networks" / "Tracks.bin";
        const std::string before = ReadTextFile(tracks);
        m_ui->pushAnswer(Answer::Ok);
        m_ui->pushText("nonsense");
        screen.Command7_Click();
        QVERIFY(m_demo.prompted("'nonsense' is not a number"));
        QCOMPARE(ReadTextFile(tracks), before);
        m_ui->pushAnswer(Answer::Ok);
        m_ui->pushText("-0.2000");
        m_ui->pushAnswer(Answer::No); // no trackside objects
        screen.Command7_Click();
        QVERIFY(m_demo.prompted("Your Tracks.bin file has been altered as requested."));
        QVERIFY(ReadTextFile(tracks) != before);
        QVERIFY(undo());
        QCOMPARE(ReadTextFile(tracks), before);
    }

    void blankTerrainThroughFrmMix() {
        ui::frmDelRoute screen(*m_ctx);
        select(screen, rowOf(screen, "Demo Valley Line"));
        m_ui->pushAnswer(Answer::Yes);
        screen.mnuTex_Click();
        auto* mix = qobject_cast<ui::frmMix*>(screen.mixScreen());
        QVERIFY(mix);
        QCOMPARE(mix->files()->count(), 2);
        mix->Command1_Click();
        mix->Command2_Click();
        QVERIFY(m_demo.prompted("All selected files have been modified."));
        QVERIFY(undo());
        mix->close();
    }

    void providersMarkedAndUpdated() {
        ui::frmProvider screen(*m_ctx);
        QTableWidget* grid = screen.grid();
        int valley = -1;
        for (int r = 0; r < screen.routeList()->count(); ++r)
            if (screen.routeList()->item(r)->text() == "Demo Valley Line")
                valley = r;
        QVERIFY(valley >= 0);
        screen.routeList()->setCurrentRow(valley);
        screen.Command1_Click();
        const int listed = grid->rowCount();
        QVERIFY(listed >= 3);
        for (int r = 0; r < listed; ++r)
            QCOMPARE(grid->item(r, 0)->text(), QString("X"));
        screen.Command3_Click(); // every product below Assets joins, unmarked
        QVERIFY(grid->rowCount() >= listed);
        // Only the first row kept: Hide Unused hides the rest, Update writes the one.
        screen.Command5_Click();
        grid->item(0, 0)->setText("X");
        screen.Command6_Click();
        QVERIFY(!grid->isRowHidden(0));
        QVERIFY(grid->isRowHidden(1));
        screen.Command2_Click();
        QVERIFY(m_demo.prompted("now lists 1 Provider/Product pair(s)"));
        const auto routes = routes::listRoutes(*m_ctx);
        const auto* route = routes::findRoute(routes, "Demo Valley Line");
        QVERIFY(route);
        QCOMPARE(routes::routeProviders(*m_ctx, *route).size(), std::size_t(1));
        QVERIFY(undo());
        QCOMPARE(routes::routeProviders(*m_ctx, *route).size(), std::size_t(listed));
    }
};

int runTestFrmDelRouteEdits(int argc, char** argv) {
    TestFrmDelRouteEdits t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_frmdelroute_edits.moc"
