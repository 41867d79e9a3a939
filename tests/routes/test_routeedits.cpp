// Edits of whole routes on a fresh demo install each: the track's heights and speed limits,
// clones, deletion and blank terrain, each taken back whole by one undo.

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routecheck.h"
#include "velmora/routes/providers.h"
#include "velmora/routes/routeedits.h"
#include "velmora/textures/texture.h"

#include "../common/unprivileged.h"
#include "routefixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::routes;
using velmora::test::decoded;
namespace fs = std::filesystem;

namespace {

// Every file below a folder with its bytes.
std::map<std::string, std::string> treeBytes(const fs::path& folder) {
    std::map<std::string, std::string> out;
    for (const auto& e : fs::recursive_directory_iterator(folder))
        if (e.is_regular_file())
            out[fs::relative(e.path(), folder).string()] = ReadTextFile(e.path());
    return out;
}

// The value of a line's element and the line without it and without the float's exact encoding.
bool splitValue(const std::string& line, std::string& frame, double& value) {
    const std::size_t gt = line.find('>'), lt = line.find("</");
    if (gt == std::string::npos || lt == std::string::npos || lt < gt)
        return false;
    value = std::atof(line.substr(gt + 1, lt - gt - 1).c_str());
    frame = line.substr(0, gt);
    if (const std::size_t alt = frame.find(" d:alt_encoding="); alt != std::string::npos)
        frame.erase(alt, frame.find(' ', alt + 1) - alt);
    frame += line.substr(lt);
    return true;
}

class RouteEdits : public test::RouteTest {
protected:
    fs::path tracks() const { return m_valley.path / "Networks" / "Tracks.bin"; }
};

TEST_F(RouteEdits, RaiseChangesEveryTrackHeightByExactlyThatAndNothingElse) {
    const std::string oldBin = ReadTextFile(tracks());
    const std::vector<std::string> before = SplitLines(decoded(tracks()));
    const EditReport r = raiseTrack(*m_ctx, m_valley, {0.25, std::nullopt, false});
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.message, "Your Tracks.bin file has been altered as requested.");
    const std::vector<std::string> after = SplitLines(decoded(tracks()));
    ASSERT_EQ(before.size(), after.size());
    std::size_t heights = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i].find("<_height ") == std::string::npos) {
            EXPECT_EQ(before[i], after[i]) << "line " << i + 1;
            continue;
        }
        std::string frameBefore, frameAfter;
        double was = 0, now = 0;
        ASSERT_TRUE(splitValue(before[i], frameBefore, was) && splitValue(after[i], frameAfter, now));
        EXPECT_EQ(frameBefore, frameAfter);
        EXPECT_NEAR(now - was, 0.25, 1e-3) << before[i] << " -> " << after[i];
        ++heights;
    }
    EXPECT_GT(heights, 0u);
    EXPECT_EQ(r.count, heights);
    // The old file is the backup; a second raise keeps the first state there and its own in the
    // next numbered name; one undo after another puts each back byte for byte.
    EXPECT_EQ(ReadTextFile(fs::path(tracks().string() + ".bak")), oldBin);
    const std::string raised = ReadTextFile(tracks());
    ASSERT_TRUE(raiseTrack(*m_ctx, m_valley, {0.25, std::nullopt, false}).ok);
    EXPECT_EQ(ReadTextFile(fs::path(tracks().string() + ".bak")), oldBin);
    EXPECT_EQ(ReadTextFile(fs::path(tracks().string() + ".bak1")), raised);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(tracks()), raised);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(tracks()), oldBin);
}

TEST_F(RouteEdits, HeightsAreWrittenWithFourPlacesAndObjectsOnlyWhenAsked) {
    const std::string xml = "<Height>\n<_height d:type=\"sFloat32\">10.5000</_height>\n</Height>\n"
                            "<Height d:type=\"sFloat32\">1.5</Height>\n";
    std::size_t heights = 0, objects = 0;
    std::string error;
    EXPECT_EQ(adjustTrackHeights(xml, {-0.2, std::nullopt, false}, "T", heights, objects, error),
              "<Height>\n<_height d:type=\"sFloat32\">10.3000</_height>\n</Height>\n"
              "<Height d:type=\"sFloat32\">1.5</Height>\n");
    EXPECT_EQ(heights, 1u);
    EXPECT_EQ(objects, 0u);
    const std::string both = adjustTrackHeights(xml, {-0.2, 0.1, false}, "T", heights, objects, error);
    EXPECT_NE(both.find(">1.6000</Height>"), std::string::npos) << both;
    EXPECT_NE(both.find("<Height>\n"), std::string::npos) << "the ribbon's Height holder is no object";
    EXPECT_EQ(objects, 1u);

    // A height that is no number is named with its file and line, and nothing is made.
    const std::string bad = "<a/>\n<_height d:type=\"sFloat32\">4.5</_height>\n<_height d:type=\"sFloat32\">abc</_height>\n";
    EXPECT_EQ(adjustTrackHeights(bad, {0.25, std::nullopt, false}, "Tracks.bin", heights, objects, error), "");
    EXPECT_NE(error.find("Tracks.bin: line 3"), std::string::npos) << error;
    EXPECT_NE(error.find("'abc'"), std::string::npos) << error;
}

TEST_F(RouteEdits, ATrackFileThatDoesNotDecodeIsNamedAndLeftAsItIs) {
    std::ofstream(tracks(), std::ios::binary | std::ios::trunc) << "SERZ broken";
    const std::string oldBin = ReadTextFile(tracks());
    const EditReport r = raiseTrack(*m_ctx, m_valley, {0.25, 0.1, false});
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.message.find("Tracks.bin"), std::string::npos) << r.message;
    EXPECT_EQ(ReadTextFile(tracks()), oldBin);
    EXPECT_FALSE(fs::exists(tracks().string() + ".bak"));
    // No Tracks.bin at all: said, nothing changes.
    fs::remove(tracks());
    EXPECT_NE(raiseTrack(*m_ctx, m_valley, {0.25, {}, false}).message.find("there is no such file"), std::string::npos);
}

TEST_F(RouteEdits, SpeedLimitsSetBothValuesOfEveryLimitOnly) {
    const std::string xml = "<Network-iTrackNetworkSpeedLimit d:id=\"1\">\n<Primary d:type=\"sUInt32\">40</Primary>\n"
                            "<Secondary d:type=\"sUInt32\">30</Secondary>\n</Network-iTrackNetworkSpeedLimit>\n"
                            "<Network-iTrackNetworkSpeedLimit d:id=\"2\">\n</Network-iTrackNetworkSpeedLimit>\n"
                            "<Network-iTrackNetworkSpeedLimit d:id=\"3\">\n<Primary d:type=\"sUInt32\">90</Primary>\n"
                            "<Secondary d:type=\"sUInt32\">80</Secondary>\n</Network-iTrackNetworkSpeedLimit>\n"
                            "<Other><Primary>7</Primary></Other>\n";
    std::size_t count = 0;
    const std::string out = setSpeedLimitsText(xml, {"60", "50", false}, count);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(out.find(">40<"), std::string::npos);
    EXPECT_EQ(out.find(">90<"), std::string::npos);
    EXPECT_NE(out.find("<Primary>7</Primary>"), std::string::npos) << "what follows the limits is not theirs";
    // A value that is no number is refused before anything is read.
    EXPECT_FALSE(setSpeedLimits(*m_ctx, m_valley, {"fast", "50", false}).ok);
    // The demo network has no limits: nothing to write, and nothing written.
    const std::string oldBin = ReadTextFile(tracks());
    const EditReport r = setSpeedLimits(*m_ctx, m_valley, {"60", "50", false});
    EXPECT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.count, 0u);
    EXPECT_EQ(ReadTextFile(tracks()), oldBin);
}

TEST_F(RouteEdits, IdentitiesAreStoredAsTheDocumentsStoreThem) {
    // Each demo scenario's ID holds its two numbers and its text, as the simulator writes them.
    const auto scenarios = listScenarios(*m_ctx, m_valley);
    ASSERT_FALSE(scenarios.empty());
    const std::string text = ReadTextFile(m_valley.path / "Scenarios" / scenarios.front().folder / "ScenarioProperties.xml");
    const std::size_t dev = text.find("<DevString"), gt = text.find('>', dev), end = text.find("</DevString");
    const auto id = identityOf(text.substr(gt + 1, end - gt - 1));
    ASSERT_TRUE(id.has_value());
    EXPECT_NE(text.find(">" + std::to_string(id->a) + "</e>"), std::string::npos);
    EXPECT_NE(text.find(">" + std::to_string(id->b) + "</e>"), std::string::npos);
    const Identity fresh = newIdentity();
    EXPECT_EQ(identityOf(fresh.text)->a, fresh.a);
    EXPECT_NE(fresh.text, newIdentity().text);
    EXPECT_FALSE(identityOf("not-a-guid").has_value());
}

TEST_F(RouteEdits, AClonedRouteListsWithItsNewNameAndIdentityAndChecksAsItsSource) {
    const auto sourceBytes = treeBytes(m_valley.path);
    const std::string name = "Vallée, \"Nord\" O'Brien";
    const EditReport r = cloneRoute(*m_ctx, m_valley, {name, {}, false, false, false});
    ASSERT_TRUE(r.ok) << r.message;
    const fs::path made(r.made);
    const auto id = identityOf(made.filename().string());
    ASSERT_TRUE(id.has_value()) << made;
    const auto routes = listRoutes(*m_ctx);
    ASSERT_EQ(routes.size(), m_routes.size() + 1);
    const RouteEntry* clone = findRoute(routes, made.filename().string());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->name, "Vall\xE9" "e, 'Nord' O'Brien") << "double quotes are kept as the simulator's apostrophe";
    const std::string props = ReadTextFile(made / "RouteProperties.xml");
    EXPECT_NE(props.find(">" + std::to_string(id->a) + "</e>"), std::string::npos);
    EXPECT_NE(props.find("<Key d:type=\"cDeltaString\">" + id->text + "</Key>"), std::string::npos);
    EXPECT_NE(props.find("O&apos;Brien"), std::string::npos);
    // Every scenario comes along under an identity of its own; the source is untouched.
    const auto sourceScenarios = listScenarios(*m_ctx, m_valley);
    const auto cloneScenarios = listScenarios(*m_ctx, *clone);
    EXPECT_EQ(cloneScenarios.size(), sourceScenarios.size());
    for (const auto& s : cloneScenarios) {
        for (const auto& o : sourceScenarios)
            EXPECT_NE(s.folder, o.folder);
        const std::string sp = ReadTextFile(made / "Scenarios" / s.folder / "ScenarioProperties.xml");
        EXPECT_NE(sp.find(">" + s.folder + "</DevString>"), std::string::npos) << s.folder;
    }
    EXPECT_EQ(treeBytes(m_valley.path), sourceBytes);
    const RouteCheckResult a = RouteCheck(*m_ctx, m_valley, sourceScenarios).run({});
    const RouteCheckResult b = RouteCheck(*m_ctx, *clone, cloneScenarios).run({});
    EXPECT_EQ(a.missing.size(), b.missing.size());
    EXPECT_EQ(a.assetsUnique, b.assetsUnique);
    EXPECT_EQ(a.unreadable.size(), b.unreadable.size());

    // A second clone of that name is refused; one undo takes the clone out of the list.
    const EditReport again = cloneRoute(*m_ctx, m_valley, {"Vallée, 'Nord' O'Brien", {}, false, false, false});
    EXPECT_FALSE(again.ok);
    EXPECT_NE(again.message.find("exists already"), std::string::npos) << again.message;
    EXPECT_EQ(cloneRoute(*m_ctx, m_valley, {"", {}, false, false, false}).message,
              "You have not selected a new name for your cloned route?");
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(listRoutes(*m_ctx).size(), m_routes.size());
}

TEST_F(RouteEdits, AnAbortedCloneOrBlankLeavesNothingBehind) {
    const std::size_t entries = m_ctx->journal().entries().size();
    m_ui.cancelAfter(5);
    const EditReport r = cloneRoute(*m_ctx, m_valley, {"Half Line", {}, false, false, false});
    EXPECT_TRUE(r.aborted);
    EXPECT_FALSE(r.ok);
    EXPECT_FALSE(fs::exists(r.made)) << r.made;
    EXPECT_EQ(listRoutes(*m_ctx).size(), m_routes.size());
    EXPECT_EQ(m_ctx->journal().entries().size(), entries);
    for (const auto& e : fs::recursive_directory_iterator(m_valley.path.parent_path()))
        EXPECT_EQ(e.path().filename().string().find("velmora-tmp"), std::string::npos) << e.path();

    const auto files = mixMapFiles(*m_ctx, m_valley);
    const std::string first = ReadTextFile(files[0]);
    ScriptedUi abortAtOnce;
    abortAtOnce.cancelAfter(1);
    AppContext other(m_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", abortAtOnce);
    StartupOptions o;
    o.railWorks = m_dir / "rw";
    o.askForRoot = false;
    runStartup(other, o);
    const EditReport blank = blankTerrain(other, m_valley, {}, false);
    EXPECT_TRUE(blank.aborted);
    EXPECT_EQ(ReadTextFile(files[0]), first);
    EXPECT_FALSE(fs::exists(fs::path(files[0].string() + ".bak")));
}

TEST_F(RouteEdits, ACloneNamesLinksAndPipesAndNeverFollowsThem) {
    fs::create_directory_symlink(m_valley.path, m_valley.path / "Scenery" / "Loop");
    ASSERT_EQ(::mkfifo((m_valley.path / "Scenery" / "Pipe.bin").c_str(), 0600), 0);
    const EditReport r = cloneRoute(*m_ctx, m_valley, {"Loop Line", {}, false, false, false});
    ASSERT_TRUE(r.ok) << r.message;
    std::string warnings;
    for (const auto& w : r.warnings)
        warnings += w + "\n";
    EXPECT_NE(warnings.find("Loop: is a link"), std::string::npos) << warnings;
    EXPECT_NE(warnings.find("Pipe.bin: is not a plain file"), std::string::npos) << warnings;
    EXPECT_FALSE(fs::exists(fs::symlink_status(fs::path(r.made) / "Scenery" / "Loop")));
    EXPECT_FALSE(fs::exists(fs::symlink_status(fs::path(r.made) / "Scenery" / "Pipe.bin")));
}

TEST_F(RouteEdits, AnUnreadableFileStopsTheCloneByNameBeforeAnythingIsMade) {
    const fs::path into = m_dir / "clones";
    fs::create_directories(into);
    fs::permissions(into, fs::perms::all);
    fs::permissions(m_dir, fs::perms::all);
    fs::permissions(m_dir / "home", fs::perms::all);
    const fs::path tile = m_valley.path / "Scenery" / "+000000+000000.bin";
    fs::permissions(tile, fs::perms::none);
    velmora::test::whereModesHold([&] {
        const EditReport r = cloneRoute(*m_ctx, m_valley, {"Closed Line", into, false, false, false});
        return !r.ok && r.message.find("+000000+000000.bin") != std::string::npos && fs::is_empty(into);
    });
    fs::permissions(tile, fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(RouteEdits, AClonedScenarioGetsItsIdentityNameAndChosenClass) {
    const auto scenarios = listScenarios(*m_ctx, m_valley);
    auto find = [&](const std::string& cls, bool workshop) {
        for (const auto& s : scenarios)
            if (s.scenarioClass == cls && s.workshop == workshop)
                return s;
        ADD_FAILURE() << cls;
        return ScenarioEntry{};
    };
    const ScenarioEntry career = find("eCareerScenarioClass", false);
    EXPECT_TRUE(scenarioKind(*m_ctx, m_valley, career).career);
    CloneOptions keep{"Career copy", {}, false, false, false};
    EditReport r = cloneScenario(*m_ctx, m_valley, career, keep);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.message, "Your Scenario has been Duplicated as requested.");
    auto entry = readScenarioEntry(*m_ctx, r.made);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->name, "Career copy");
    EXPECT_EQ(entry->scenarioClass, "eCareerScenarioClass") << "answered No, the class stays";
    EXPECT_FALSE(fs::exists(fs::path(r.made) / "ScenarioProperties.xml.MD5"));
    EXPECT_EQ(ReadTextFile(fs::path(r.made) / "ScenarioProperties.xml.bak"),
              ReadTextFile(m_valley.path / "Scenarios" / career.folder / "ScenarioProperties.xml"));

    CloneOptions standard{"Career made standard", {}, true, false, false};
    r = cloneScenario(*m_ctx, m_valley, career, standard);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(readScenarioEntry(*m_ctx, r.made)->scenarioClass, "eStandardScenarioClass");

    const ScenarioEntry workshop = find("eStandardScenarioClass", true);
    EXPECT_TRUE(scenarioKind(*m_ctx, m_valley, workshop).workshop);
    CloneOptions plain{"O'Brien's déjà vu", {}, false, true, false};
    r = cloneScenario(*m_ctx, m_valley, workshop, plain);
    ASSERT_TRUE(r.ok) << r.message;
    entry = readScenarioEntry(*m_ctx, r.made);
    EXPECT_FALSE(entry->workshop) << "WorkshopId 0";
    EXPECT_EQ(entry->name, "O'Brien's d\xE9j\xE0 vu") << "as the list shows names, in Windows-1252";
    EXPECT_EQ(listScenarios(*m_ctx, m_valley).size(), scenarios.size() + 3);

    EXPECT_EQ(cloneScenario(*m_ctx, m_valley, career, {"", {}, false, false, false}).message,
              "You have not selected a new name for your cloned scenario?");
    EXPECT_NE(cloneScenario(*m_ctx, m_valley, career, keep).message.find("exists already"), std::string::npos);
}

TEST_F(RouteEdits, ADeletedRouteOrScenarioComesBackWholeWithOneUndo) {
    const auto bytes = treeBytes(m_valley.path);
    EditReport dry = deleteRoute(*m_ctx, m_valley, false, true);
    ASSERT_TRUE(dry.ok);
    EXPECT_EQ(dry.count, bytes.size());
    EXPECT_EQ(treeBytes(m_valley.path), bytes) << "a dry run moves nothing";
    const EditReport r = deleteRoute(*m_ctx, m_valley, false, false);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_FALSE(fs::exists(m_valley.path));
    EXPECT_EQ(listRoutes(*m_ctx).size(), m_routes.size() - 1);
    EXPECT_TRUE(fs::exists(m_dir / "home" / "Deleted"));
    const UndoResult u = undoLast();
    EXPECT_TRUE(u.ok) << u.message;
    EXPECT_EQ(treeBytes(m_valley.path), bytes);
    EXPECT_EQ(listRoutes(*m_ctx).size(), m_routes.size());

    const auto scenarios = listScenarios(*m_ctx, m_valley);
    ASSERT_GE(scenarios.size(), 2u);
    const EditReport s = deleteScenarios(*m_ctx, m_valley, {scenarios[0], scenarios[1]}, false, false);
    ASSERT_TRUE(s.ok) << s.message;
    EXPECT_EQ(listScenarios(*m_ctx, m_valley).size(), scenarios.size() - 2);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(treeBytes(m_valley.path), bytes);

    // For good when asked: no journal entry, nothing kept.
    const std::size_t entries = m_ctx->journal().entries().size();
    ASSERT_TRUE(deleteScenarios(*m_ctx, m_valley, {scenarios[0]}, true, false).ok);
    EXPECT_FALSE(fs::exists(m_valley.path / "Scenarios" / scenarios[0].folder));
    EXPECT_EQ(m_ctx->journal().entries().size(), entries);

    // A folder that is no route is refused.
    RouteEntry fake = m_valley;
    fake.path = m_dir / "rw" / "Assets";
    EXPECT_NE(deleteRoute(*m_ctx, fake, false, false).message.find("is not a route"), std::string::npos);
    EXPECT_TRUE(fs::exists(fake.path));
}

TEST_F(RouteEdits, BlankTerrainLeavesTextureDocumentsOfZeroesAndUndoPutsThemBack) {
    const auto files = mixMapFiles(*m_ctx, m_valley);
    ASSERT_EQ(files.size(), 2u);
    std::map<fs::path, std::string> before;
    for (const auto& f : files)
        before[f] = ReadTextFile(f);
    const EditReport dry = blankTerrain(*m_ctx, m_valley, {}, true);
    ASSERT_TRUE(dry.ok) << dry.message;
    EXPECT_EQ(dry.count, 2u);
    EXPECT_EQ(ReadTextFile(files[0]), before[files[0]]);

    const EditReport r = blankTerrain(*m_ctx, m_valley, {files[1].filename().string()}, false);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.message, "All selected files have been modified.");
    EXPECT_EQ(ReadTextFile(files[0]), before[files[0]]) << "only the file named";
    const std::string xml = decoded(files[1]);
    // The texture's own shape: the group, its texture, one level of zeroes, the blob and palette.
    for (const char* part : {"<cHcTextureGroup", "<cHcTexture ", "<Mip>", "<cHcImageDx", "<TextureBlob/>", "<d:nil/>"})
        EXPECT_NE(xml.find(part), std::string::npos) << part;
    std::string error;
    const textures::Image image = textures::textureFromXml(xml, &error);
    ASSERT_TRUE(image.valid()) << error;
    EXPECT_EQ(image.width, 16);
    EXPECT_EQ(ReadTextFile(fs::path(files[1].string() + ".bak")), before[files[1]]);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(files[1]), before[files[1]]);

    // A mix map that does not decode stops the run by name before anything is written.
    std::ofstream(files[0], std::ios::binary | std::ios::trunc) << "garbage";
    const std::string second = ReadTextFile(files[1]);
    const EditReport bad = blankTerrain(*m_ctx, m_valley, {}, false);
    EXPECT_FALSE(bad.ok);
    EXPECT_NE(bad.message.find(files[0].filename().string()), std::string::npos) << bad.message;
    EXPECT_EQ(ReadTextFile(files[1]), second);
    EXPECT_NE(blankTerrain(*m_ctx, m_valley, {"Nothing.TgPcDx"}, false).message.find("Nothing.TgPcDx"), std::string::npos);
}

TEST_F(RouteEdits, TheProviderListIsReplacedByThePairsChosenAndUndoPutsItBack) {
    const fs::path props = m_valley.path / "RouteProperties.xml";
    const std::string before = ReadTextFile(props);
    EXPECT_TRUE(missingProductFolders(*m_ctx, m_valley).empty());
    const auto products = assetProducts(*m_ctx);
    EXPECT_GE(products.size(), 3u);
    const EditReport r = updateProviders(*m_ctx, m_valley, {{"DemoRail", "Class66Pack"}, {"O'Brien, Ltd", "Zü"}}, false);
    ASSERT_TRUE(r.ok) << r.message;
    const auto listed = routeProviders(*m_ctx, m_valley);
    ASSERT_EQ(listed.size(), 2u);
    EXPECT_EQ(listed[0], (std::pair<std::string, std::string>{"DemoRail", "Class66Pack"}));
    EXPECT_EQ(listed[1].first.substr(0, 1), "O");
    // The made-up product is not installed, and is named as such.
    const auto missing = missingProductFolders(*m_ctx, m_valley);
    ASSERT_EQ(missing.size(), 1u);
    EXPECT_EQ(missing.front().substr(0, 2), "O'") << missing.front();
    // Nothing else in the file changed: what stands before and after the list is the same.
    const std::string after = ReadTextFile(props);
    const std::size_t open = before.find("<RBlueprintSetPreLoad>"), close = before.find("</RBlueprintSetPreLoad>");
    EXPECT_EQ(after.substr(0, open), before.substr(0, open));
    EXPECT_EQ(after.substr(after.find("</RBlueprintSetPreLoad>")), before.substr(close));
    EXPECT_EQ(ReadTextFile(fs::path(props.string() + ".bak")), before);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(props), before);
}

} // namespace
