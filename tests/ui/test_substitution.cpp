// The missing-items grid's substitution offscreen: dlgMissShape, a substitution and a removal
// driven from frmListRS over the demo route's tiles, the provider list rebuilt, and undo.

#include "routes/dlgmissshape.h"
#include "routes/frmdelroute.h"
#include "routes/frmlistrs.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/routes/routecheck.h"
#include "demoscreens.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

#include <filesystem>

using namespace velmora;
namespace fs = std::filesystem;

class TestSubstitution : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    AppContext* m_ctx = nullptr;
    ScriptedUi* m_ui = nullptr;

    routes::RouteEntry valley() {
        const auto all = routes::listRoutes(*m_ctx);
        const auto* r = routes::findRoute(all, "Demo Valley Line");
        return r ? *r : routes::RouteEntry{};
    }
    std::vector<std::string> missingRows(const routes::RouteEntry& route) {
        const auto scenarios = routes::listScenarios(*m_ctx, route);
        std::vector<std::string> rows;
        for (const auto& m : routes::RouteCheck(*m_ctx, route, scenarios).run({}).missing)
            rows.push_back(m.row());
        return rows;
    }
    static int rowOf(QTableWidget* grid, const QString& part) {
        for (int r = 0; r < grid->rowCount(); ++r)
            for (int c = 0; c < grid->columnCount(); ++c)
                if (grid->item(r, c) && grid->item(r, c)->text().contains(part))
                    return r;
        return -1;
    }
    void undoLast() {
        const auto entries = m_ctx->journal().entries();
        const auto last = lastUndoableEntry(entries);
        QVERIFY(last.has_value());
        QVERIFY(undoEntry(m_ctx->files(), *last, false).ok);
    }

private slots:
    void initTestCase() { QVERIFY(m_demo.generate("uisubstitute")); }
    void cleanupTestCase() { m_demo.remove(); }
    void init() {
        m_demo.start(true);
        m_ctx = m_demo.ctx.get();
        m_ui = m_demo.ui.get();
    }

    void dlgMissShapeShowsTheItemAndTakesTheReplacement() {
        ui::MissShape prefill;
        prefill.missing = *routes::parseAssetName("Heritage/SteamDays/Scenery/Station/Platform_Canopy.xml");
        prefill.kind = routes::ItemKind::Loft;
        ui::dlgMissShape dialog(*m_ctx, prefill);
        QCOMPARE(dialog.windowTitle(), QString("Substitute for a missing Asset."));
        auto* text1 = dialog.findChild<QLineEdit*>("Text1");
        QVERIFY(text1 && text1->isReadOnly());
        QCOMPARE(dialog.findChild<QLineEdit*>("Text3")->text(), QString("Scenery\\Station\\Platform_Canopy.xml"));
        QVERIFY(dialog.findChild<QRadioButton*>("Option1_1")->isChecked());
        // Browse: the chosen .bin cut at Assets, its ending made .xml.
        m_ui->pushPath(m_demo.dir / "rw" / "Assets" / "Heritage" / "SteamDays" / "Scenery" / "Generated" / "Set0" / "Obj10.bin");
        dialog.findChild<QPushButton*>("Command1")->click();
        QCOMPARE(dialog.findChild<QLineEdit*>("Text4")->text(), QString("Heritage"));
        QCOMPARE(dialog.findChild<QLineEdit*>("Text6")->text(), QString("Scenery\\Generated\\Set0\\Obj10.xml"));
        dialog.findChild<QRadioButton*>("Option1_0")->setChecked(true);
        dialog.findChild<QPushButton*>("OKButton")->click();
        QVERIFY(dialog.result().has_value());
        QCOMPARE(dialog.result()->replacement.product, std::string("SteamDays"));
        QVERIFY(dialog.result()->kind == routes::ItemKind::Scenery);

        ui::dlgMissShape cancelled(*m_ctx, prefill);
        cancelled.findChild<QPushButton*>("Command3")->click();
        QVERIFY(!cancelled.result().has_value());
    }

    void substitutionFromTheGridChangesTheTilesAndOneUndoRestoresThem() {
        const routes::RouteEntry route = valley();
        const fs::path tile = route.path / "Scenery" / "-000001-000001.bin";
        const std::string before = ReadTextFile(tile);
        ui::frmListRS list(*m_ctx, ui::ReportKind::MissingItems, "Missing", missingRows(route), route.name);
        list.offerSubstitution(route, routes::listScenarios(*m_ctx, route));
        QSignalSpy spy(&list, &ui::frmListRS::scenerySubstituted);
        list.askMissShape = [](const ui::MissShape& prefill) {
            ui::MissShape s = prefill;
            s.replacement = *routes::parseAssetName("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml");
            return std::optional<ui::MissShape>(s);
        };
        QTableWidget* grid = list.grid();
        grid->selectRow(rowOf(grid, "Platform_Canopy"));
        list.findChild<QPushButton*>("MissCommand6")->click();
        QVERIFY(m_demo.prompted("You must click the 'Remove Duplicates' button"));
        QCOMPARE(ReadTextFile(tile), before);

        list.findChild<QPushButton*>("Command1")->click();
        const int rows = grid->rowCount();
        grid->selectRow(rowOf(grid, "Platform_Canopy"));
        list.findChild<QPushButton*>("MissCommand6")->click();
        QVERIFY(m_demo.prompted("The requested changes have been made."));
        QCOMPARE(spy.count(), 1);
        QVERIFY(list.substituted());
        QCOMPARE(grid->rowCount(), rows - 1);
        QCOMPARE(rowOf(grid, "Platform_Canopy"), -1);
        std::string xml;
        QVERIFY(binToXmlText(tile, xml));
        QVERIFY(xml.find("Platform_Canopy") == std::string::npos);
        QCOMPARE(ReadTextFile(route.path / "Scenery" / "-000001-000001.bin.bak"), before);

        undoLast();
        QCOMPARE(ReadTextFile(tile), before);
    }

    void emptyReplacementAsksThenRemovesAndLoftRemovalBlanks() {
        const routes::RouteEntry route = valley();
        const fs::path tile = route.path / "Scenery" / "-000001-000001.bin";
        const std::string before = ReadTextFile(tile);
        ui::frmListRS list(*m_ctx, ui::ReportKind::MissingItems, "Missing", missingRows(route), route.name);
        list.offerSubstitution(route, {});
        list.askMissShape = [](const ui::MissShape& prefill) { return std::optional<ui::MissShape>(prefill); };
        list.Command1_Click();
        list.grid()->selectRow(rowOf(list.grid(), "Coal_Drops"));
        m_ui->pushAnswer(Answer::No);
        list.Substitute_Click();
        QVERIFY(m_demo.prompted("correct that you wish the items to be removed from your route?"));
        QCOMPARE(ReadTextFile(tile), before);
        m_ui->pushAnswer(Answer::Yes);
        list.Substitute_Click();
        std::string xml;
        QVERIFY(binToXmlText(tile, xml));
        QVERIFY(xml.find("Coal_Drops") == std::string::npos);
        QVERIFY(xml.find("Platform_Canopy") != std::string::npos);
        undoLast();
        QCOMPARE(ReadTextFile(tile), before);
    }

    void providersListedThenFixed() {
        const routes::RouteEntry route = valley();
        const fs::path properties = route.path / "RouteProperties.xml";
        const std::string before = ReadTextFile(properties);
        ui::frmListRS list(*m_ctx, ui::ReportKind::MissingItems, "Missing", missingRows(route), route.name);
        list.offerSubstitution(route, routes::listScenarios(*m_ctx, route));
        auto* fix = list.findChild<QPushButton*>("MissCommand11");
        QVERIFY(fix && fix->isHidden());
        list.findChild<QPushButton*>("MissCommand5")->click();
        QVERIFY(!fix->isHidden());
        QVERIFY(!list.providerPairs().empty());
        fix->click();
        QVERIFY(m_demo.prompted("Your RouteProperties.xml file has been modified as requested."));
        QCOMPARE(ReadTextFile(route.path / "RouteProperties.xml.bak"), before);
        QVERIFY(!routes::routeProviders(*m_ctx, route).empty());
        undoLast();
        QCOMPARE(ReadTextFile(properties), before);
    }

    void theRouteCheckStopsAfterTheShapesQuestionOnceSomethingWasSubstituted() {
        ui::frmDelRoute screen(*m_ctx);
        screen.routeList()->setCurrentRow(0);
        // While the check asks about the list of shapes, a missing item is removed in its grid.
        m_ui->onPrompt = [&](const ScriptedUi::Prompt& p) {
            if (p.text.find("list of Shapes") == std::string::npos)
                return;
            m_ui->onPrompt = nullptr;
            const auto lists = screen.findChildren<ui::frmListRS*>();
            QVERIFY(!lists.empty());
            ui::frmListRS* list = lists.front();
            list->askMissShape = [](const ui::MissShape& prefill) { return std::optional<ui::MissShape>(prefill); };
            list->Command1_Click();
            list->grid()->selectRow(rowOf(list->grid(), "Coal_Drops"));
            list->RemoveScenery_Click();
        };
        m_ui->pushAnswer(Answer::No);  // no list of shapes
        m_ui->pushAnswer(Answer::Yes); // on to textures and sounds, were it asked
        screen.Command4_Click();
        QVERIFY(m_demo.prompted("The requested changes have been made."));
        QVERIFY(!m_demo.prompted("Would you like to check for missing Texture/Audio/Animation & Script files?"));
        QVERIFY(!screen.lastCheck().deepDone);
        undoLast();
    }
};

int runTestSubstitution(int argc, char** argv) {
    TestSubstitution t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_substitution.moc"
