// The route list and the route check on the demo install, against its manifest of faults.

#include "../common/demofixture.h"
#include "velmora/core/appcontext.h"
#include "velmora/archives/productarchives.h"
#include "velmora/archives/zipreader.h"
#include "velmora/core/convert.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routecheck.h"
#include "velmora/routes/routeitems.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "../common/unprivileged.h"

using namespace velmora;
using namespace velmora::routes;
namespace fs = std::filesystem;

namespace {

// The tiles of a folder in name order.
std::vector<fs::path> binFilesOf(const fs::path& folder) {
    std::vector<fs::path> out;
    for (const auto& e : fs::directory_iterator(folder))
        if (e.path().extension() == ".bin")
            out.push_back(e.path());
    std::sort(out.begin(), out.end());
    return out;
}

class DemoRoutes : public test::DemoInstallTest<DemoRoutes> {
public:
    static constexpr const char* kName = "routes";
    static void SetUpTestSuite() {
        DemoInstallTest::SetUpTestSuite();
        const std::string text = ReadTextFile(s_dir / "rw/manifest.json");
        s_manifest = QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size()))).object();
    }

protected:
    // The faults of a kind the manifest lists for a route.
    static std::vector<QJsonObject> faults(const QString& kind, const std::string& route = {}) {
        std::vector<QJsonObject> out;
        for (const auto& f : s_manifest["faults"].toArray()) {
            const QJsonObject o = f.toObject();
            if (o["kind"].toString() != kind)
                continue;
            bool forRoute = route.empty();
            for (const auto& r : o["routes"].toArray())
                forRoute = forRoute || r.toString().toStdString() == route;
            if (forRoute)
                out.push_back(o);
        }
        return out;
    }
    RouteCheckResult check(const std::string& folder, bool deep, int threads = 0) {
        RouteCheckOptions o;
        o.deep = deep;
        o.threads = threads;
        return check(folder, o);
    }
    RouteCheckResult check(const std::string& folder, const RouteCheckOptions& o) {
        const auto routes = listRoutes(*m_ctx);
        const RouteEntry* r = findRoute(routes, folder);
        EXPECT_TRUE(r);
        const auto scenarios = listScenarios(*m_ctx, *r);
        return RouteCheck(*m_ctx, *r, scenarios).run(o);
    }
    static inline QJsonObject s_manifest;
};

bool endsWithPath(const std::string& full, const QString& relative) {
    return full.size() >= static_cast<std::size_t>(relative.size()) &&
           full.compare(full.size() - static_cast<std::size_t>(relative.size()), std::string::npos, relative.toStdString()) == 0;
}

} // namespace

TEST_F(DemoRoutes, RoutesAreGuidFoldersWithANameAndScenariosHaveClasses) {
    const auto routes = listRoutes(*m_ctx);
    ASSERT_EQ(routes.size(), 3u) << "the 35-character folder and the route without a name are not routes";
    for (const auto& f : faults("route-folder-35-chars"))
        for (const auto& r : routes)
            EXPECT_FALSE(endsWithPath(r.path.string(), f["path"].toString()));
    // A route folder holding only its MainContent.ap is no route until unpacked; one unpacked in
    // part is.
    for (const auto& f : faults("ap-not-unpacked"))
        for (const auto& r : routes)
            EXPECT_FALSE(endsWithPath((r.path / "MainContent.ap").generic_string(), f["path"].toString()));
    EXPECT_TRUE(findRoute(routes, "Dockside Tramway"));
    EXPECT_FALSE(findRoute(routes, "Harbour Branch, Line: East"));
    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
    // What the commands say of the names they do not find: a folder whose route is only packed
    // is told to be unpacked first; other names get the plain words.
    for (const auto& f : faults("ap-not-unpacked")) {
        const std::string path = f["path"].toString().toStdString();
        if (path.rfind("Content/Routes/", 0) != 0)
            continue;
        const std::string folder = path.substr(15, 36);
        EXPECT_EQ(routeNotFound(*m_ctx, folder), "no route with the folder or name '" + folder +
                                                     "': the folder holds no RouteProperties.xml, the route is "
                                                     "packed in its MainContent.ap; unpack it first");
        std::string upper = folder;
        for (char& c : upper)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        EXPECT_NE(routeNotFound(*m_ctx, upper).find("unpack it first"), std::string::npos) << "any letter case";
    }
    EXPECT_EQ(routeNotFound(*m_ctx, "Harbour Branch, Line: East"),
              "no route with the folder or name 'Harbour Branch, Line: East'");
    const std::string unknown = valley->folder.substr(0, 35) + "x";
    EXPECT_EQ(routeNotFound(*m_ctx, unknown), "no route with the folder or name '" + unknown + "'");
    EXPECT_EQ(routeNotFound(*m_ctx, "../Routes/" + valley->folder.substr(10)),
              "no route with the folder or name '../Routes/" + valley->folder.substr(10) + "'");
    EXPECT_EQ(findRoute(routes, valley->folder), valley);
    EXPECT_EQ(findRoute(routes, "Gotthard S\xFC" "drampe")->folder, "593ed595-72ee-d41b-1d43-d88e5bac221a")
        << "names are repaired";

    const auto scenarios = listScenarios(*m_ctx, *valley);
    std::set<std::string> legends;
    for (const auto& s : scenarios)
        legends.insert(s.legend());
    for (const char* l : {"Standard Scenario", "Free Roam Scenario", "Career Scenario", "Timetable Scenario",
                          "Quick Drive Scenario", "Workshop Scenario"})
        EXPECT_TRUE(legends.count(l)) << l;
    for (const auto& f : faults("scenario-without-properties"))
        for (const auto& s : scenarios)
            EXPECT_FALSE(f["path"].toString().endsWith(QString::fromStdString(s.folder)));
    ScenarioEntry workshop{"x", "x", "eStandardScenarioClass", true};
    EXPECT_EQ(workshop.colour(), 0x00FFFFu);
    EXPECT_EQ(workshop.reportWord(), "") << "workshop scenarios have no word of their own";

    const std::string table = scenarioTypesTable(*m_ctx, routes);
    EXPECT_NE(table.find("Route Name"), std::string::npos);
    EXPECT_NE(table.find("Demo Valley Line"), std::string::npos);
}

TEST_F(DemoRoutes, TheCheckReportsWhatTheManifestSaysAndNothingElse) {
    for (const auto& r : listRoutes(*m_ctx)) {
        const RouteCheckResult result = check(r.folder, true);
        std::set<std::string> expected;
        for (const char* kind : {"missing-blueprint", "blueprint-in-archive"})
            for (const auto& f : faults(kind, r.folder))
                expected.insert(f["path"].toString().toStdString());
        std::set<std::string> reported;
        for (const auto& m : result.missing) {
            const std::string rel = m.path.substr(m.path.find("/Assets/") + 1);
            reported.insert(rel);
            EXPECT_NE(m.row().find(" on tile "), std::string::npos);
        }
        EXPECT_EQ(reported, expected) << r.name;

        // Shapes, textures, seasonal variants, companions, sounds.
        std::set<std::string> files;
        for (const auto& line : result.missingFiles)
            files.insert(line.substr(line.find("/Assets/") + 1, line.find(" Called by ") - line.find("/Assets/") - 1));
        std::set<std::string> expectedFiles;
        for (const char* kind : {"missing-texture", "missing-seasonal-texture", "texture-path-too-deep", "missing-proxy",
                                 "missing-sound"})
            for (const auto& f : faults(kind, r.folder))
                expectedFiles.insert(f["path"].toString().toStdString());
        EXPECT_EQ(files, expectedFiles) << r.name;
        EXPECT_FALSE(result.texturesUsed.empty());

        // Shapes the blueprints name that are not there: a note beside the geometry list,
        // which holds only the shapes found.
        std::set<std::string> shapes, expectedShapes;
        for (const auto& m : result.missingShapes) {
            shapes.insert(m.path.substr(m.path.find("/Assets/") + 1));
            EXPECT_TRUE(std::find(result.assetsUnique.begin(), result.assetsUnique.end(), m.where) !=
                        result.assetsUnique.end())
                << m.where;
            EXPECT_EQ(std::find(result.geoFiles.begin(), result.geoFiles.end(), m.path), result.geoFiles.end());
        }
        for (const auto& f : faults("missing-shape", r.folder))
            expectedShapes.insert(f["path"].toString().toStdString());
        EXPECT_EQ(shapes, expectedShapes) << r.name;
        if (!expectedShapes.empty()) {
            EXPECT_TRUE(result.anyMissing());
            EXPECT_NE(result.marksReport().find("Shapes the blueprints name that do not exist"), std::string::npos);
        }
        EXPECT_TRUE(result.unreadable.empty()) << result.unreadable.front();
    }
}

TEST_F(DemoRoutes, AnEmptyProviderWarnsAndAnEmptyReferenceDoesNot) {
    for (const auto& f : faults("empty-provider")) {
        const std::string tile = f["path"].toString().toStdString();
        const std::string route = tile.substr(std::string("Content/Routes/").size(), 36);
        const RouteCheckResult result = check(route, false);
        ASSERT_EQ(result.warnings.size(), 1u);
        EXPECT_EQ(result.warnings[0].rfind("There is an error in a Provider description in tile\n(Scenery Item) - ", 0), 0u);
        EXPECT_NE(result.warnings[0].find(fs::path(tile).filename().string()), std::string::npos);
    }
    // The other route's tiles carry empty reskin references behind every item: no warning.
    EXPECT_TRUE(check("51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb", false).warnings.empty());
}

TEST_F(DemoRoutes, TheSameReportsOnOneThreadAndOnMany) {
    const RouteCheckResult one = check("51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb", true, 1);
    const RouteCheckResult many = check("51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb", true, 6);
    EXPECT_EQ(one.missingReport(), many.missingReport());
    EXPECT_EQ(one.texturesReport(), many.texturesReport());
    EXPECT_EQ(one.assetsUnique, many.assetsUnique);
    EXPECT_EQ(one.texturesUsed, many.texturesUsed);
}

TEST_F(DemoRoutes, ReportsAreSavedUnderReports) {
    const RouteCheckResult r = check("51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb", true);
    const auto files = saveRouteReports(*m_ctx, r);
    EXPECT_EQ(files.written.size(), 5u);
    EXPECT_TRUE(files.ok());
    EXPECT_TRUE(fs::exists(m_ctx->reports() / "Demo Valley Line_Assets.csv"));
    EXPECT_TRUE(fs::exists(m_ctx->reports() / "Demo Valley Line_Textures.csv"));
    const std::string missing = ReadTextFile(m_ctx->reports() / "MissingAssets.csv");
    EXPECT_NE(missing.find("Coal_Drops.bin"), std::string::npos);
    // A second save keeps the first as a backup.
    saveRouteReports(*m_ctx, r);
    EXPECT_TRUE(fs::exists(m_ctx->reports() / "MissingAssets.csv.bak"));
}

TEST_F(DemoRoutes, AbortStopsTheCheck) {
    const auto routes = listRoutes(*m_ctx);
    const auto scenarios = listScenarios(*m_ctx, routes[0]);
    ScriptedUi ui;
    ui.cancelAfter(0);
    const RouteCheckResult r = RouteCheck(*m_ctx, routes[0], scenarios).run({true, 2}, &ui);
    EXPECT_TRUE(r.aborted);
    EXPECT_FALSE(r.deepDone);
}

TEST_F(DemoRoutes, ScenarioStockAndWhereItIsUsed) {
    const auto routes = listRoutes(*m_ctx);
    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
    std::size_t withStock = 0;
    for (const auto& s : listScenarios(*m_ctx, *valley)) {
        std::string message;
        const auto stock = scenarioStock(*m_ctx, *valley, s, &message);
        if (s.scenarioClass == "eTemplateScenarioClass") {
            EXPECT_NE(message.find("Quick Drive"), std::string::npos);
        }
        withStock += stock.empty() ? 0 : 1;
        for (const auto& item : stock)
            EXPECT_TRUE(iendsWith(item.path, ".bin")) << item.path;
    }
    EXPECT_GT(withStock, 0u);
    // The missing wagon of the manifest is named by a scenario's stock.
    for (const auto& f : faults("missing-stock")) {
        const std::string rel = f["path"].toString().toStdString().substr(std::string("Assets/").size());
        EXPECT_FALSE(whereUsed(*m_ctx, routes, rel).empty()) << rel;
    }
    EXPECT_TRUE(whereUsed(*m_ctx, routes, "Nobody\\Nothing\\none.bin").empty());

    // Running numbers with the vehicle that carries each.
    for (const auto& s : listScenarios(*m_ctx, *valley)) {
        const auto numbers = scenarioNumbers(*m_ctx, *valley, s);
        for (const auto& row : numbers)
            EXPECT_NE(row.find('\t'), std::string::npos) << row;
        if (s.name.find("coal run") != std::string::npos) {
            ASSERT_FALSE(numbers.empty());
            EXPECT_EQ(numbers.front(), "66 251\tDemoRail Class 66 EWS");
        }
    }
}

TEST(RouteNames, LanguagesInOrderAndEmptyValuesSkipped) {
    const std::string text = "<DevString>guid</DevString><DisplayName><English d:type=\"cDeltaString\"></English>"
                             "<French d:type=\"cDeltaString\">Ligne</French><German d:type=\"cDeltaString\">Linie</German>"
                             "</DisplayName>";
    EXPECT_EQ(localisedName(text, 1, "English"), "Ligne") << "an empty English name counts as none";
    EXPECT_EQ(localisedName(text, 1, "German"), "Linie") << "the user's language first";
    EXPECT_EQ(localisedName("<DevString>x</DevString>", 1, "English"), "");
}

TEST_F(DemoRoutes, OverviewProvidersAndDuplicateNames) {
    const auto routes = listRoutes(*m_ctx);
    const std::string overview = routesOverview(*m_ctx, routes);
    // One line a scenario, the name padded to 70 columns, then the type word.
    for (const std::string& line : SplitLines(overview)) {
        if (line.empty())
            continue;
        EXPECT_GE(line.size(), 70u) << line;
    }
    EXPECT_NE(overview.find("Timetabled"), std::string::npos);
    EXPECT_NE(overview.find("Quick Drive"), std::string::npos);

    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
    const auto providers = routeProviders(*m_ctx, *valley);
    EXPECT_FALSE(providers.empty());
    for (const auto& [provider, product] : providers)
        EXPECT_FALSE(provider.empty());

    // Two routes of one name: the name finds the first.
    std::vector<RouteEntry> twins = {{"a", "Same", {}, false}, {"b", "Same", {}, false}};
    EXPECT_EQ(findRoute(twins, "Same")->folder, "a");
    EXPECT_EQ(findRoute(twins, "B")->folder, "b") << "folders compare without case";
    EXPECT_EQ(findRoute(twins, "Other"), nullptr);

    bool noFolder = false;
    RouteEntry bare{"x", "Bare", s_dir / "rw/Content", false};
    EXPECT_TRUE(listScenarios(*m_ctx, bare, &noFolder).empty());
    EXPECT_TRUE(noFolder);
}

TEST_F(DemoRoutes, MarksNoteArchivedAndOtherCaseItemsAndLeaveTheReportsAlone) {
    std::set<std::pair<std::string, std::string>> archived, otherCase;
    for (const auto& r : listRoutes(*m_ctx)) {
        RouteCheckOptions o;
        o.deep = true;
        const RouteCheckResult plain = check(r.folder, o);
        EXPECT_TRUE(plain.inArchive.empty() && plain.otherCase.empty()) << "notes only when asked for";
        o.markArchives = o.markCase = true;
        o.threads = 1;
        const RouteCheckResult marked = check(r.folder, o);
        EXPECT_EQ(marked.missingReport(), plain.missingReport());
        EXPECT_EQ(marked.texturesReport(), plain.texturesReport());
        EXPECT_EQ(marked.assetsUnique, plain.assetsUnique);
        EXPECT_EQ(marked.texturesUsed, plain.texturesUsed);
        for (const auto& m : marked.inArchive)
            archived.insert({m.path.substr(m.path.find("/Assets/") + 1), m.where.substr(m.where.find("/Assets/") + 1)});
        for (const auto& m : marked.otherCase) {
            EXPECT_NE(m.path, m.where);
            otherCase.insert({m.path.substr(m.path.find("/Assets/") + 1), m.where.substr(m.where.find("/Assets/") + 1)});
        }
        EXPECT_EQ(marked.marksReport().empty(), marked.inArchive.empty() && marked.otherCase.empty());
    }
    std::set<std::pair<std::string, std::string>> expectedArchived;
    for (const auto& f : faults("blueprint-in-archive"))
        expectedArchived.insert({f["path"].toString().toStdString(),
                                 f["details"].toObject()["archive"].toString().toStdString()});
    EXPECT_EQ(archived, expectedArchived);
    std::set<std::string> expectedFound, found;
    for (const auto& f : faults("case-mismatch"))
        expectedFound.insert(f["path"].toString().toStdString());
    for (const auto& [named, real] : otherCase)
        found.insert(real);
    EXPECT_EQ(found, expectedFound);
}

TEST_F(DemoRoutes, ProductArchivesAnswerWhateverTheCaseAndSeparator) {
    const fs::path assets = s_dir / "rw/Assets";
    const archives::ProductArchives archives(assets, m_ctx->resolver);
    const auto ap = archives.find("Heritage\\SteamDays\\Scenery\\Station\\Platform_Canopy.bin");
    ASSERT_TRUE(ap);
    EXPECT_EQ(ap->filename(), "SteamDaysAssets.ap");
    EXPECT_EQ(archives.find("heritage/STEAMDAYS/scenery/station/platform_canopy.BIN"), ap);
    EXPECT_FALSE(archives.find("Heritage\\SteamDays\\Scenery\\Station\\Nothing.bin"));
    EXPECT_FALSE(archives.find("DemoRail\\Class66Pack\\Scenery\\Station\\Platform_Canopy.bin")) << "other product";
    EXPECT_FALSE(archives.find("NoSuch\\Product\\x.bin"));
    EXPECT_FALSE(archives.find("Heritage\\SteamDays")) << "a product folder is no entry";

    archives::ZipReader zip;
    EXPECT_TRUE(zip.open(*ap)) << zip.error();
    EXPECT_GT(zip.count(), 0u);
    const fs::path notZip = s_dir / "broken.ap";
    std::ofstream(notZip) << "not a zip";
    EXPECT_FALSE(zip.open(notZip));
    EXPECT_EQ(zip.count(), 0u);
    EXPECT_NE(zip.error().find("broken.ap"), std::string::npos) << zip.error();
}

TEST(RouteBadInput, UnreadableTilesDamagedPropertiesAndRoutesWithoutScenarios) {
    const fs::path dir = fs::temp_directory_path() / ("velmora-routes-bad-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    ASSERT_TRUE(demo::generateDemoInstall(dir / "rw", {}).ok);
    ScriptedUi ui;
    AppContext ctx(dir / "home", dir / "data", ui);
    StartupOptions o;
    o.railWorks = dir / "rw";
    o.askForRoot = false;
    runStartup(ctx, o);
    const auto routes = listRoutes(ctx);
    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
    const auto scenarios = listScenarios(ctx, *valley);
    const RouteCheckResult before = RouteCheck(ctx, *valley, scenarios).run({});

    std::ofstream(valley->path / "Scenery" / "+000099+000099.bin", std::ios::binary) << "SERZ\x01\x02garbage";
    const int logged = ctx.log().count();
    const RouteCheckResult after = RouteCheck(ctx, *valley, scenarios).run({});
    EXPECT_EQ(after.tiles, before.tiles + 1);
    EXPECT_EQ(after.missingReport(), before.missingReport()) << "the bad tile adds nothing and stops nothing";
    EXPECT_EQ(ctx.log().count(), logged + 1);
    EXPECT_NE(ReadTextFile(ctx.log().file()).find("+000099+000099.bin"), std::string::npos);
    ASSERT_EQ(after.unreadable.size(), 1u) << "the result says the route was not read whole";
    EXPECT_NE(after.unreadable[0].find("+000099+000099.bin: "), std::string::npos);

    // An emptied tile: what it placed must not be taken for unused.
    const fs::path placed = binFilesOf(valley->path / "Scenery").front();
    std::ofstream(placed, std::ios::binary | std::ios::trunc);
    const ProductItemsResult product = productItemsUsed(ctx, *valley, scenarios, "DemoRail", "Class66Pack");
    EXPECT_EQ(product.unreadable.size(), 2u);
    const PlacedItemsResult items = listPlacedItems(ctx, *valley);
    EXPECT_EQ(items.unreadable.size(), 2u);
    ASSERT_EQ(::mkfifo((valley->path / "Scenery" / "Pipe.bin").c_str(), 0600), 0);
    EXPECT_EQ(RouteCheck(ctx, *valley, scenarios).run({}).tiles, after.tiles) << "a FIFO is no tile";

    // A tile folder that cannot be read is named as well.
    fs::permissions(valley->path / "Networks" / "Road Tiles", fs::perms::none);
    velmora::test::whereModesHold([&] {
        const RouteCheckResult closed = RouteCheck(ctx, *valley, scenarios).run({});
        return std::any_of(closed.unreadable.begin(), closed.unreadable.end(),
                           [](const std::string& u) { return u.find("Road Tiles: ") != std::string::npos; });
    });
    fs::permissions(valley->path / "Networks" / "Road Tiles", fs::perms::owner_all);

    // A damaged ScenarioProperties.xml fails the format test by name; the others pass.
    ASSERT_FALSE(scenarios.empty());
    for (const auto& sc : scenarios)
        EXPECT_EQ(scenarioPropertiesProblem(ctx, *valley, sc), "") << sc.name;
    const fs::path props = valley->path / "Scenarios" / scenarios.front().folder / "ScenarioProperties.xml";
    std::ofstream(props, std::ios::binary | std::ios::trunc) << "<cScenarioProperties><unclosed></cScenarioProperties>";
    const std::string problem = scenarioPropertiesProblem(ctx, *valley, scenarios.front());
    EXPECT_EQ(problem.rfind("If you saw a message regarding Line 113, there is a format\nerror in ", 0), 0u) << problem;
    EXPECT_NE(problem.find(scenarios.front().folder), std::string::npos);

    // All stock of all routes: once each whatever the letter case, sorted; a route without
    // scenarios is named.
    std::vector<std::string> warnings;
    const auto stock = allRoutesStock(ctx, routes, &warnings);
    ASSERT_FALSE(stock.empty());
    for (std::size_t i = 1; i < stock.size(); ++i)
        EXPECT_LT(toLowerAscii(stock[i - 1]), toLowerAscii(stock[i]));
    EXPECT_TRUE(warnings.empty());
    fs::remove_all(valley->path / "Scenarios");
    allRoutesStock(ctx, routes, &warnings);
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_EQ(warnings.front(), "There are no scenarios in:-\nDemo Valley Line");

    // A route folder without RouteProperties.xml is not a route.
    fs::remove(valley->path / "RouteProperties.xml");
    for (const auto& r : listRoutes(ctx))
        EXPECT_NE(r.folder, valley->folder);
    fs::remove_all(dir);
}

TEST(TileNumbers, SignAndSixDigits) {
    EXPECT_EQ(tileNumber("0"), "+000000");
    EXPECT_EQ(tileNumber("12"), "+000012");
    EXPECT_EQ(tileNumber("-1"), "-000001");
    EXPECT_EQ(tileNumber("-0"), "-000000") << "the sign comes from the text";
    EXPECT_EQ(tileNumber("1234567"), "+1234567");
    EXPECT_EQ(tileNumber("3.75"), "+000003");
}

TEST_F(DemoRoutes, PlacedItemsAreTheTilesItemsWithTheirPlaces) {
    for (const auto& r : listRoutes(*m_ctx)) {
        const RouteCheckResult check = this->check(r.folder, false);
        const std::set<std::string> used(check.assetsUnique.begin(), check.assetsUnique.end());
        std::set<std::string> checkMissing, networkMissing;
        for (const auto& m : check.missing) {
            checkMissing.insert(m.row());
            if (m.label != "(Scenery Item)")
                networkMissing.insert(m.row());
        }
        const PlacedItemsResult placed = listPlacedItems(*m_ctx, r, 1);
        ASSERT_FALSE(placed.items.empty()) << r.name;
        std::set<std::string> labels, placedMissing;
        for (const auto& item : placed.items) {
            EXPECT_TRUE(used.count(item.path)) << item.path;
            EXPECT_EQ(item.tile.size(), 14u) << item.tile;
            EXPECT_TRUE(item.tile[0] == '+' || item.tile[0] == '-');
            EXPECT_FALSE(item.x.empty() || item.z.empty()) << item.row();
            labels.insert(item.label);
        }
        for (const auto& m : placed.missing) {
            EXPECT_TRUE(checkMissing.count(m.row())) << m.row();
            placedMissing.insert(m.row());
        }
        // Loft, road and track references come only from the tiles both read.
        for (const auto& m : networkMissing)
            EXPECT_TRUE(placedMissing.count(m)) << m;
        EXPECT_TRUE(labels.count("(Scenery Item)") && labels.count("(Track Item)")) << r.name;

        const PlacedItemsResult parallel = listPlacedItems(*m_ctx, r, 4);
        ASSERT_EQ(parallel.items.size(), placed.items.size());
        for (std::size_t i = 0; i < placed.items.size(); ++i)
            EXPECT_EQ(parallel.items[i].row(), placed.items[i].row());
    }
}

TEST_F(DemoRoutes, AProductsItemsUsedAndNotUsed) {
    const auto routes = listRoutes(*m_ctx);
    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
    const auto scenarios = listScenarios(*m_ctx, *valley);
    const ProductItemsResult used = productItemsUsed(*m_ctx, *valley, scenarios, "DemoRail", "Class66Pack");
    ASSERT_FALSE(used.used.empty());
    const std::string product = (s_dir / "rw/Assets/").string();
    bool signalBox = false;
    for (const auto& u : used.used) {
        EXPECT_EQ(foldName(u.substr(product.size(), 20)), foldName("DemoRail/Class66Pack")) << u;
        signalBox = signalBox || u.find("SIGNALBOX.bin") != std::string::npos;
    }
    EXPECT_TRUE(signalBox) << "references in other letter case belong to the product too";
    EXPECT_TRUE(std::is_sorted(used.used.begin(), used.used.end(), [](const std::string& a, const std::string& b) {
        return foldName(a) < foldName(b);
    }));
    const ProductItemsResult folded = productItemsUsed(*m_ctx, *valley, scenarios, "demorail", "CLASS66PACK");
    EXPECT_EQ(folded.used, used.used);
    EXPECT_TRUE(productItemsUsed(*m_ctx, *valley, scenarios, "Nobody", "Nothing").used.empty());

    const RouteCheckResult check = this->check(valley->folder, false);
    for (const auto& m : used.missing)
        EXPECT_TRUE(std::any_of(check.missing.begin(), check.missing.end(),
                                [&](const MissingItem& c) { return c.row() == m.row(); }))
            << m.row();

    const auto unused = productItemsNotUsed(*m_ctx, used);
    const auto del = productItemsNotUsed(*m_ctx, used, true);
    ASSERT_EQ(unused.size(), del.size());
    std::set<std::string> usedFolded;
    for (const auto& u : used.used)
        usedFolded.insert(foldName(u));
    bool loco = false;
    for (std::size_t i = 0; i < unused.size(); ++i) {
        EXPECT_EQ(del[i], "DEL " + unused[i]);
        EXPECT_TRUE(fs::exists(unused[i])) << unused[i];
        EXPECT_FALSE(usedFolded.count(foldName(unused[i]))) << unused[i];
        EXPECT_NE(foldName(unused[i]).find("class66pack"), std::string::npos);
        loco = loco || unused[i].ends_with("Engine/Class66_EWS.bin");
    }
    EXPECT_TRUE(loco) << "rolling stock is placed by scenarios, not by tiles";
}

TEST_F(DemoRoutes, AScenariosOwnSceneryIsPartOfWhatTheRouteUses) {
    const auto routes = listRoutes(*m_ctx);
    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
    const RouteCheckResult check = this->check(valley->folder, false);
    const std::set<std::string> used(check.assetsUnique.begin(), check.assetsUnique.end());
    int withScenery = 0;
    for (const auto& sc : listScenarios(*m_ctx, *valley)) {
        const ScenarioSceneryResult r = scenarioScenery(*m_ctx, *valley, sc);
        EXPECT_EQ(r.hasScenery, fs::exists(valley->path / "Scenarios" / sc.folder / "Scenery")) << sc.name;
        if (!r.hasScenery) {
            EXPECT_TRUE(r.items.empty());
            continue;
        }
        ++withScenery;
        EXPECT_FALSE(r.items.empty());
        for (const auto& item : r.items)
            EXPECT_TRUE(used.count(item)) << item;
        for (const auto& m : r.missing)
            EXPECT_TRUE(std::any_of(check.missing.begin(), check.missing.end(),
                                    [&](const MissingItem& c) { return c.row() == m.row(); }));
    }
    EXPECT_EQ(withScenery, 1);
}

namespace {

std::string farVector(const std::string& tileX, const std::string& x, const std::string& tileZ, const std::string& z) {
    auto axis = [](const char* name, const std::string& tile, const std::string& offset) {
        return std::string("<") + name + "><cFarCoordinate><RouteCoordinate><cRouteCoordinate>" +
               "<Distance d:type=\"sInt32\">" + tile + "</Distance></cRouteCoordinate></RouteCoordinate>" +
               "<TileCoordinate><cTileCoordinate><Distance d:type=\"sFloat32\">" + offset +
               "</Distance></cTileCoordinate></TileCoordinate></cFarCoordinate></" + name + ">\n";
    };
    return "<cFarVector2>\n" + axis("X", tileX, x) + axis("Z", tileZ, z) + "</cFarVector2>\n";
}

std::string reference(const std::string& provider, const std::string& product, const std::string& id) {
    return "<BlueprintID>\n<iBlueprintLibrary-cAbsoluteBlueprintID>\n<BlueprintSetID>\n"
           "<iBlueprintLibrary-cBlueprintSetID>\n<Provider d:type=\"cDeltaString\">" + provider +
           "</Provider>\n<Product d:type=\"cDeltaString\">" + product +
           "</Product>\n</iBlueprintLibrary-cBlueprintSetID>\n</BlueprintSetID>\n"
           "<BlueprintID d:type=\"cDeltaString\">" + id +
           "</BlueprintID>\n</iBlueprintLibrary-cAbsoluteBlueprintID>\n</BlueprintID>\n";
}

void writeDocument(const fs::path& file, const std::string& body) {
    const std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                            "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\" d:id=\"1\">\n"
                            "<Record>\n" + body + "</Record>\n</cRecordSet>\n";
    std::string bin;
    ASSERT_TRUE(xmlTextToBin(xml, bin)) << xml;
    fs::create_directories(file.parent_path());
    ASSERT_TRUE(WriteTextFile(file, bin));
}

} // namespace

TEST(PlacedItems, EachItemKeepsItsOwnPlaceAndTracksTakeTheirTileFromTheRibbon) {
    const fs::path dir = fs::temp_directory_path() / ("velmora-placed-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    const fs::path rw = dir / "rw";
    const fs::path route = rw / "Content/Routes/00000000-0000-0000-0000-000000000001";
    for (const char* file : {"RailWorks.exe", "Assets/P/Q/Scenery/A.bin", "Assets/P/Q/Track/Rail.bin"}) {
        ASSERT_TRUE(MakePath((rw / file).parent_path()));
        ASSERT_TRUE(WriteTextFile(rw / file, "x"));
    }
    // An entity with neither place nor reference stands between two placed ones: it must not
    // take the next one's place or blueprint.
    writeDocument(route / "Scenery/+000000-000001.bin",
                  "<cDynamicEntity d:id=\"2\">\n<Component>\n" + farVector("-1", "12.5", "-1", "7.25") +
                      "</Component>\n" + reference("P", "Q", "Scenery\\A.xml") + "</cDynamicEntity>\n" +
                      "<cDynamicEntity d:id=\"3\">\n<Name d:type=\"cDeltaString\">bare</Name>\n</cDynamicEntity>\n" +
                      "<cDynamicEntity d:id=\"4\">\n<Component>\n" + farVector("-1", "100", "-1", "200") +
                      "</Component>\n" + reference("P", "Q", "Scenery\\B.xml") + "</cDynamicEntity>\n");
    writeDocument(route / "Networks/Tracks.bin",
                  "<Network-cTrackRibbon d:id=\"5\">\n" + farVector("-1", "3.5", "2", "4.5") +
                      reference("P", "Q", "Track\\Rail.xml") + reference("P", "Q", "Track\\Gone.xml") +
                      "</Network-cTrackRibbon>\n");
    // A track tile of another name in Networks is not read by this list.
    writeDocument(route / "Networks/Other.bin", "<Network-cTrackRibbon d:id=\"6\">\n" + farVector("0", "1", "0", "1") +
                                                    reference("P", "Q", "Track\\Other.xml") +
                                                    "</Network-cTrackRibbon>\n");

    ScriptedUi ui;
    AppContext ctx(dir / "home", dir / "data", ui);
    StartupOptions o;
    o.railWorks = rw;
    o.askForRoot = false;
    runStartup(ctx, o);
    const RouteEntry entry{route.filename().string(), "Test", route, false};
    const PlacedItemsResult r = listPlacedItems(ctx, entry, 2);
    ASSERT_EQ(r.items.size(), 4u);
    EXPECT_TRUE(r.items[0].path.ends_with("P/Q/Scenery/A.bin") && r.items[0].found);
    EXPECT_EQ(r.items[0].tile, "+000000-000001");
    EXPECT_EQ(r.items[0].x, "12.5");
    EXPECT_EQ(r.items[0].z, "7.25");
    EXPECT_TRUE(r.items[1].path.ends_with("P/Q/Scenery/B.bin"));
    EXPECT_EQ(r.items[1].x, "100");
    EXPECT_EQ(r.items[1].z, "200");
    for (std::size_t i : {2u, 3u}) {
        EXPECT_EQ(r.items[i].label, "(Track Item)");
        EXPECT_EQ(r.items[i].tile, "-000001+000002");
        EXPECT_EQ(r.items[i].x, "3.5");
        EXPECT_EQ(r.items[i].z, "4.5");
    }
    EXPECT_TRUE(r.items[2].found);
    ASSERT_EQ(r.missing.size(), 2u);
    EXPECT_EQ(r.missing[0].row(), (rw / "Assets/P/Q/Scenery/B.bin").string() + "\t(Scenery Item) on tile +000000-000001.bin");
    EXPECT_EQ(r.missing[1].row(), (rw / "Assets/P/Q/Track/Gone.bin").string() + "\t(Track Item) on tile Tracks.bin");
    fs::remove_all(dir);
}

TEST_F(DemoRoutes, GoingDeepAfterTheTilesGivesWhatOneDeepRunGives) {
    const auto routes = listRoutes(*m_ctx);
    for (const auto& r : routes) {
        const auto scenarios = listScenarios(*m_ctx, r);
        RouteCheckOptions o;
        o.markArchives = o.markCase = true;
        RouteCheck check(*m_ctx, r, scenarios);
        RouteCheckResult stepwise = check.run(o);
        EXPECT_FALSE(stepwise.deepDone);
        ASSERT_TRUE(check.deepen(stepwise, o));
        EXPECT_TRUE(check.deepen(stepwise, o)) << "a second call does nothing more";
        o.deep = true;
        const RouteCheckResult once = check.run(o);
        EXPECT_TRUE(stepwise.deepDone);
        EXPECT_EQ(stepwise.missingReport(), once.missingReport()) << r.name;
        EXPECT_EQ(stepwise.texturesReport(), once.texturesReport()) << r.name;
        EXPECT_EQ(stepwise.geoFiles, once.geoFiles);
        EXPECT_EQ(stepwise.texturesUsed, once.texturesUsed);
        EXPECT_EQ(stepwise.audioUsed, once.audioUsed);
        EXPECT_EQ(stepwise.marksReport(), once.marksReport());
    }
}
