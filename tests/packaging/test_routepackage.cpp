// A route's package and the package of its assets, on a hand-made route whose check reports are
// written by the test: the rows, their wildcard endings, the terrain, the refusals and undo.

#include "packagefixture.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/packaging/packaging.h"

#include <algorithm>

using namespace velmora;
using namespace velmora::packaging;

namespace {

const char* const kGuid = "11111111-2222-3333-4444-555555555555";

std::string properties(const std::string& terrainProvider, const std::string& terrainProduct) {
    return "<cRouteProperties>\n<DevString d:type=\"cDeltaString\">" + std::string(kGuid) +
           "</DevString>\n<BlueprintID>\n<Provider d:type=\"cDeltaString\">Kuju</Provider>\n"
           "<Product d:type=\"cDeltaString\">RailSimulatorCore</Product>\n"
           "<BlueprintID "
           "d:type=\"cDeltaString\">TemplateRoutes\\Acme_Template.xml</BlueprintID>\n</BlueprintID>\n"
           "<TerrainBlueprint>\n<Provider d:type=\"cDeltaString\">" +
           terrainProvider + "</Provider>\n<Product d:type=\"cDeltaString\">" + terrainProduct +
           "</Product>\n<BlueprintID "
           "d:type=\"cDeltaString\">Environment\\Terrain\\Acme_Terrain.xml</BlueprintID>\n"
           "</TerrainBlueprint>\n</cRouteProperties>\n";
}

class RoutePackage : public test::PackageTest {
protected:
    void SetUp() override {
        PackageTest::SetUp();
        m_route.folder = kGuid;
        m_route.name = "Café, \"Nord\"";
        m_route.path = root() / "Content" / "Routes" / kGuid;
        writeRoute("Acme", "Trains");
        const fs::path assets = root() / "Assets";
        put(assets / "Acme/Trains/Scenery/Hut.bin", "hut");
        put(assets / "Acme/Trains/Scenery/Café, \"Nord\".bin", "cafe");
        put(assets / "Acme/Trains/Scenery/Geometry/Hut.GeoPcDx", "g");
        put(assets / "Acme/Trains/Scenery/Geometry/Hut_LOD1.GeoPcDx", "g1");
        put(assets / "Acme/Trains/Scenery/Geometry/Other.GeoPcDx", "other");
        put(assets / "Acme/Trains/Scenery/Textures/Hut.TgPcDx", "t");
        put(assets / "Acme/Trains/Scenery/Textures/Hut.dds", "dds");
        put(assets / "Acme/Trains/Audio/Bell.Orv", "orv");
        put(assets / "Acme/Trains/Audio/Bell.wav", "wav");
        put(assets / "Acme/Trains/Audio/Horn.wav", "horn");
        put(assets / "Acme/Trains/Environment/Terrain/Acme_Terrain.bin", "terrain");
        put(assets / "Kuju/RailSimulatorCore/TemplateRoutes/Acme_Template.bin", "template");
        put(assets / "Kuju/RailSimulatorCore/Environment/Terrain/Default.bin", "default");
        const std::string r = root().generic_string();
        writeReports({r + "/Assets/Acme/Trains/Scenery/Hut.bin,,1", ",,,,", ",", "",
                      "\"" + r + "/Assets/Acme/Trains/Scenery/Café, \"\"Nord\"\".bin\",,2",
                      r + "/Assets/Acme/Trains/Scenery/Gone.bin,,3"},
                     {r + "/Assets/Acme/Trains/Scenery/Geometry/Hut.GeoPcDx"},
                     {r + "/Assets/Acme/Trains/Scenery/Textures/Hut.TgPcDx"},
                     // A report made on another machine: the path counts from its Assets on.
                     {r + "/Assets/Acme/Trains/Audio/Bell.Orv",
                      "C:\\Games\\RailWorks\\Assets\\Acme\\Trains\\Audio\\Horn.wav"});
    }
    void writeRoute(const std::string& provider, const std::string& product) {
        put(m_route.path / "RouteProperties.xml", properties(provider, product));
        put(m_route.path / "Scenery/+000000+000000.bin", "tile");
        put(m_route.path / "Scenarios.bin", "cache");
        put(m_route.path / "Scenarios/aaaa/Scenario.bin", "scenario");
    }
    void writeReports(const std::vector<std::string>& assets, const std::vector<std::string>& shapes,
                      const std::vector<std::string>& textures, const std::vector<std::string>& sounds) {
        const std::vector<std::string>* lists[] = {&assets, &shapes, &textures, &sounds};
        const auto reports = routeReports(ctx(), m_route);
        for (std::size_t i = 0; i < 4; ++i) {
            std::string text;
            for (const auto& line : *lists[i])
                text += line + "\r\n";
            put(reports[i].file, text);
        }
    }
    PackageOptions options() const {
        PackageOptions o;
        o.base = out();
        return o;
    }
    fs::path packed(const std::string& relative) const {
        return out() / "Café, _Nord_" / "RailWorks" / relative;
    }

    routes::RouteEntry m_route;
    PackageState m_state;
};

TEST_F(RoutePackage, RouteFolderWithTemplateWithoutScenarioCache) {
    const PackageReport r = packageRoute(ctx(), m_route, m_state, options(), nullptr);
    ASSERT_TRUE(r.ok()) << r.refused;
    EXPECT_EQ(m_state.packageFolder, "Café, _Nord_");
    const std::string route = std::string("Content/Routes/") + kGuid;
    EXPECT_EQ(read(packed(route + "/Scenery/+000000+000000.bin")), "tile");
    EXPECT_EQ(read(packed(route + "/Scenarios/aaaa/Scenario.bin")), "scenario");
    EXPECT_FALSE(fs::exists(packed(route + "/Scenarios.bin")));
    EXPECT_EQ(read(packed("Assets/Kuju/RailSimulatorCore/TemplateRoutes/Acme_Template.bin")), "template");
    // No installer beside the program: said, and the package is made all the same.
    ASSERT_EQ(r.notes.size(), 1u);
    EXPECT_NE(r.notes[0].find("VL_RouteSetup.exe is not in"), std::string::npos);

    put(home() / kInstaller, "setup");
    const PackageReport again = packageRoute(ctx(), m_route, m_state, options(), nullptr);
    EXPECT_EQ(read(out() / "Café, _Nord_" / kInstaller), "setup");
    EXPECT_TRUE(again.notes.empty());
    EXPECT_FALSE(again.unchanged.empty()); // what the first run copied is left as it is
}

TEST_F(RoutePackage, AssetsFollowTheRowsAndTheirWildcardEndings) {
    const PackageReport r = packageRouteAssets(ctx(), m_route, m_state, options(), nullptr);
    ASSERT_TRUE(r.ok()) << r.refused;
    EXPECT_EQ(read(packed("Assets/Acme/Trains/Scenery/Hut.bin")), "hut");
    EXPECT_EQ(read(packed("Assets/Acme/Trains/Scenery/Café, \"Nord\".bin")), "cafe");
    EXPECT_TRUE(fs::exists(packed("Assets/Acme/Trains/Scenery/Geometry/Hut.GeoPcDx")));
    EXPECT_TRUE(fs::exists(packed("Assets/Acme/Trains/Scenery/Geometry/Hut_LOD1.GeoPcDx")));
    EXPECT_FALSE(fs::exists(packed("Assets/Acme/Trains/Scenery/Geometry/Other.GeoPcDx")));
    EXPECT_EQ(read(packed("Assets/Acme/Trains/Scenery/Textures/Hut.dds")), "dds");
    EXPECT_TRUE(fs::exists(packed("Assets/Acme/Trains/Audio/Bell.wav")));
    EXPECT_TRUE(fs::exists(packed("Assets/Acme/Trains/Audio/Horn.wav")));
    // The terrain is no default one: its Environment travels with the route.
    EXPECT_EQ(read(packed("Assets/Acme/Trains/Environment/Terrain/Acme_Terrain.bin")), "terrain");
    // The row of a blueprint that is not there is named, and nothing else is.
    ASSERT_EQ(r.missing.size(), 1u);
    EXPECT_NE(r.missing[0].find("Gone.bin"), std::string::npos);
    EXPECT_TRUE(r.problems.empty());
    // The check: everything used is in the package but what is missing here as well.
    EXPECT_EQ(r.check.inPackage, 3u);
    EXPECT_TRUE(r.check.notInPackage.empty());
    ASSERT_EQ(r.check.missingAtSource.size(), 1u);
}

TEST_F(RoutePackage, KujuTerrainCopiesNoEnvironment) {
    writeRoute("Kuju", "RailSimulatorCore");
    const PackageReport r = packageRouteAssets(ctx(), m_route, m_state, options(), nullptr);
    ASSERT_TRUE(r.ok());
    EXPECT_FALSE(fs::exists(packed("Assets/Kuju/RailSimulatorCore/Environment")));
    EXPECT_FALSE(fs::exists(packed("Assets/Acme/Trains/Environment")));
    ASSERT_EQ(r.leftOut.size(), 1u);
    EXPECT_NE(r.leftOut[0].find("Kuju\\RailSimulatorCore\\Environment"), std::string::npos);
    EXPECT_EQ(r.check.leftOut, std::vector<std::string>{"Kuju\\RailSimulatorCore"});
}

TEST_F(RoutePackage, MissingReportIsNamedAndNothingIsMade) {
    const auto reports = routeReports(ctx(), m_route);
    fs::remove(reports[2].file);
    PackageReport r = packageRouteAssets(ctx(), m_route, m_state, options(), nullptr);
    EXPECT_EQ(r.refused, "Missing your Textures list which should be:-\n" + reports[2].file.string());
    fs::remove(reports[0].file);
    r = packageRouteAssets(ctx(), m_route, m_state, options(), nullptr);
    EXPECT_EQ(r.refused.rfind("Missing your Assets list which should be:-", 0), 0u);
    EXPECT_FALSE(fs::exists(out()));
}

TEST_F(RoutePackage, RowsToPassOverAndPathsFromAssetsOn) {
    EXPECT_FALSE(reportRowPath(",,,,", root()));
    EXPECT_FALSE(reportRowPath(",", root()));
    EXPECT_FALSE(reportRowPath("", root()));
    EXPECT_FALSE(reportRowPath("no assets here.bin,,1", root()));
    EXPECT_EQ(reportRowPath("D:\\RW\\assets\\P\\Q\\x.bin,,4", root()), "assets\\P\\Q\\x.bin");
    // The root itself may hold a folder called Assets; it is cut first.
    EXPECT_EQ(reportRowPath("/srv/Assets/RW/Assets/P/Q/x.bin", "/srv/Assets/RW"), "Assets\\P\\Q\\x.bin");
}

TEST_F(RoutePackage, RefusedInsideTheSimulatorOrWithoutRoomBeforeCopying) {
    PackageOptions inside;
    inside.base = root() / "Packages";
    PackageReport r = packageRoute(ctx(), m_route, m_state, inside, nullptr);
    EXPECT_NE(r.refused.find("lies inside the simulator's folder"), std::string::npos) << r.refused;
    EXPECT_FALSE(fs::exists(root() / "Packages"));

    PackageOptions tight = options();
    tight.freeSpace = [](const fs::path&) { return std::optional<std::uint64_t>(10); };
    r = packageRouteAssets(ctx(), m_route, m_state, tight, nullptr);
    EXPECT_NE(r.refused.find("There is not enough room for the package in"), std::string::npos) << r.refused;
    EXPECT_FALSE(fs::exists(out()));
}

TEST_F(RoutePackage, ManifestListsEveryFileAndOneUndoTakesThePackageBack) {
    PackageReport r;
    {
        JournalCommand command(&ctx().journal(), "package route");
        r = packageRoute(ctx(), m_route, m_state, options(), nullptr, true);
    }
    ASSERT_TRUE(r.ok());
    const fs::path folder = out() / "Café, _Nord_";
    const std::string manifest = read(folder / kManifestName);
    std::size_t files = 0;
    for (const auto& e : fs::recursive_directory_iterator(folder))
        if (e.is_regular_file() && e.path().filename() != kManifestName) {
            ++files;
            const std::string rel = fs::relative(e.path(), folder).generic_string();
            const std::string content = read(e.path());
            const std::string row =
                csvCell(rel) + "," + std::to_string(content.size()) + "," + sha256Hex(content);
            EXPECT_NE(manifest.find(row + "\r\n"), std::string::npos) << row;
        }
    EXPECT_EQ(files, r.manifest.size());
    EXPECT_EQ(manifest.rfind("Path,Size,SHA-256\r\n", 0), 0u);

    const auto entry = lastUndoableEntry(ctx().journal().entries());
    ASSERT_TRUE(entry);
    const UndoResult undone = undoEntry(ctx().files(), *entry, false);
    ASSERT_TRUE(undone.ok) << undone.message;
    for (const auto& e : fs::recursive_directory_iterator(folder))
        EXPECT_FALSE(e.is_regular_file() && e.path().filename().string().find(".bak") == std::string::npos)
            << e.path();
}

} // namespace
