// The route list and the route check on the demo install, against its manifest of faults.

#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routecheck.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <filesystem>
#include <fstream>
#include <set>
#include <unistd.h>
#include "velmora/core/services.h"

using namespace velmora;
using namespace velmora::routes;
namespace fs = std::filesystem;

namespace {

class DemoRoutes : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = fs::temp_directory_path() / ("velmora-routes-" + std::to_string(::getpid()));
        fs::remove_all(s_dir);
        s_ok = demo::generateDemoInstall(s_dir / "rw", {}).ok;
        const std::string text = ReadTextFile(s_dir / "rw/manifest.json");
        s_manifest = QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size()))).object();
    }
    static void TearDownTestSuite() { fs::remove_all(s_dir); }
    void SetUp() override {
        ASSERT_TRUE(s_ok);
        m_ctx = std::make_unique<AppContext>(s_dir / "home", s_dir / "data", m_ui);
        StartupOptions o;
        o.railWorks = s_dir / "rw";
        o.askForRoot = false;
        runStartup(*m_ctx, o);
    }
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
        const auto routes = listRoutes(*m_ctx);
        const RouteEntry* r = findRoute(routes, folder);
        EXPECT_TRUE(r);
        const auto scenarios = listScenarios(*m_ctx, *r);
        RouteCheckOptions o;
        o.deep = deep;
        o.threads = threads;
        return RouteCheck(*m_ctx, *r, scenarios).run(o);
    }
    static inline fs::path s_dir;
    static inline bool s_ok = false;
    static inline QJsonObject s_manifest;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
};

bool endsWithPath(const std::string& full, const QString& relative) {
    return full.size() >= static_cast<std::size_t>(relative.size()) &&
           full.compare(full.size() - static_cast<std::size_t>(relative.size()), std::string::npos, relative.toStdString()) == 0;
}

} // namespace

TEST_F(DemoRoutes, RoutesAreGuidFoldersWithANameAndScenariosHaveClasses) {
    const auto routes = listRoutes(*m_ctx);
    ASSERT_EQ(routes.size(), 2u) << "the 35-character folder and the route without a name are not routes";
    for (const auto& f : faults("route-folder-35-chars"))
        for (const auto& r : routes)
            EXPECT_FALSE(endsWithPath(r.path.string(), f["path"].toString()));
    const RouteEntry* valley = findRoute(routes, "Demo Valley Line");
    ASSERT_TRUE(valley);
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
    EXPECT_EQ(files.size(), 5u);
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
