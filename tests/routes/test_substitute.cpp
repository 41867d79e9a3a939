// Substitution and removal over a route's tiles on the demo install: exactly the named references
// change, a whole substitution is one undo, and a bad tile or replacement writes nothing.

#include "../common/demofixture.h"
#include "../common/unprivileged.h"
#include "../core/faultyfiles.h"
#include "routefixture.h"

#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/routes/substitute.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::routes;
using velmora::test::count;
using velmora::test::decoded;
namespace fs = std::filesystem;

namespace {

constexpr const char* kValley = "51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb";

std::string bytesOf(const fs::path& p) { return ReadTextFile(p); }

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

AssetName name(const std::string& text) {
    const auto n = parseAssetName(text);
    EXPECT_TRUE(n) << text;
    return n.value_or(AssetName{});
}

// Every file of a folder with its bytes, names included, so that a stray temporary or backup
// file shows as well as a changed tile.
std::map<std::string, std::string> folderBytes(const fs::path& folder) {
    std::map<std::string, std::string> out;
    for (const auto& e : fs::directory_iterator(folder))
        if (e.is_regular_file())
            out[e.path().filename().string()] = bytesOf(e.path());
    return out;
}

class Substitute : public test::DemoInstallTest<Substitute> {
public:
    static constexpr const char* kName = "substitute";

protected:
    RouteEntry valley() {
        const auto routes = listRoutes(*m_ctx);
        const RouteEntry* r = findRoute(routes, kValley);
        EXPECT_TRUE(r);
        return r ? *r : RouteEntry{};
    }
    TileEditResult run(const std::vector<Substitution>& changes, ItemKind kind = ItemKind::Scenery, bool dryRun = false,
                       int threads = 0) {
        const RouteEntry route = valley();
        TileEditOptions o;
        o.kind = kind;
        o.dryRun = dryRun;
        o.threads = threads;
        o.command = "test substitution";
        o.scenarios = listScenarios(*m_ctx, route);
        return substituteInTiles(*m_ctx, route, changes, o);
    }
    void undoLast() {
        const auto entries = m_ctx->journal().entries();
        const auto last = lastUndoableEntry(entries);
        ASSERT_TRUE(last);
        const UndoResult u = undoEntry(m_ctx->files(), *last, false);
        ASSERT_TRUE(u.ok) << u.message;
    }
    fs::path scenery() { return valley().path / "Scenery"; }
};

} // namespace

TEST(SubstituteNames, PathsAsTypedAndRowsOfTheCheck) {
    const auto a = parseAssetName("Kuju/RailSimulator/Scenery/Trees/Oak.bin");
    ASSERT_TRUE(a);
    EXPECT_EQ(a->provider, "Kuju");
    EXPECT_EQ(a->product, "RailSimulator");
    EXPECT_EQ(a->path, "Scenery\\Trees\\Oak.xml");
    EXPECT_EQ(a->binPath(), "Kuju\\RailSimulator\\Scenery\\Trees\\Oak.bin");
    const auto b = parseAssetName("Kuju\\RailSimulator\\Scenery\\Trees\\Oak.XML");
    ASSERT_TRUE(b);
    EXPECT_EQ(b->path, "Scenery\\Trees\\Oak.XML");
    std::string why;
    EXPECT_FALSE(parseAssetName("Kuju/RailSimulator", &why));
    EXPECT_NE(why.find("is not PROVIDER/PRODUCT/PATH"), std::string::npos);
    EXPECT_FALSE(parseAssetName("Kuju//Scenery/Oak.xml", &why));
    EXPECT_FALSE(parseAssetName("Kuju/RS/Scenery/Oak.GeoPcDx", &why));
    EXPECT_NE(why.find("does not name a blueprint"), std::string::npos);
    EXPECT_FALSE(parseAssetName("Kuju/RS/../../Other/Oak.xml", &why));

    const auto row = assetNameFromMissing("/rw/Assets/Heritage/SteamDays/Scenery/Station/Platform_Canopy.bin");
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text(), "Heritage/SteamDays/Scenery\\Station\\Platform_Canopy.xml");
    EXPECT_EQ(kindFromLabel("(Loft Item) on tile +000000+000000.bin"), ItemKind::Loft);
    EXPECT_EQ(kindFromWord("TRACK"), ItemKind::Track);
    EXPECT_FALSE(kindFromWord("bridge"));

    EXPECT_EQ(providerPairs({"/rw/Assets/Kuju/RSC/a.bin", "/rw/Assets/kuju/rsc/b.bin", "/rw/Assets/A/B/c.bin", "x"}),
              (std::vector<std::string>{"A\\B", "Kuju\\RSC"}));
}

TEST(SubstituteRules, LinesNamedByNumber) {
    std::vector<std::string> errors;
    const auto rules = parseRules("\xEF\xBB\xBF# note\r\n"
                                  "A/B/x.xml,A/B/y.bin\r\n"
                                  "\r\n"
                                  "\"Prov, \"\"Q\"\"/B/z.xml\",\n"
                                  "only\n"
                                  "A/B/x.xml,A/B/y.xml,A/B/z.xml\n"
                                  "A/B/x.xml,nothing\n",
                                  errors);
    ASSERT_EQ(rules.size(), 2u);
    EXPECT_EQ(rules[0].replacement.path, "y.xml");
    EXPECT_EQ(rules[1].missing.provider, "Prov, \"Q\"");
    EXPECT_TRUE(rules[1].removes());
    ASSERT_EQ(errors.size(), 3u);
    EXPECT_EQ(errors[0].rfind("line 5: ", 0), 0u) << errors[0];
    EXPECT_EQ(errors[1].rfind("line 6: ", 0), 0u) << errors[1];
    EXPECT_EQ(errors[2].rfind("line 7: ", 0), 0u) << errors[2];
}

TEST(SubstituteText, OnlyTheNamedReferenceWhateverItsCaseOrEnding) {
    auto ref = [](const std::string& provider, const std::string& product, const std::string& id) {
        return "\t<cDynamicEntity d:id=\"1\">\r\n\t\t<BlueprintID>\r\n\t\t\t<Provider d:type=\"cDeltaString\">" + provider +
               "</Provider>\r\n\t\t\t<Product d:type=\"cDeltaString\">" + product +
               "</Product>\r\n\t\t\t<BlueprintID d:type=\"cDeltaString\">" + id +
               "</BlueprintID>\r\n\t\t</BlueprintID>\r\n\t</cDynamicEntity>\r\n";
    };
    const std::string head = "<cRecordSet>\r\n<Record>\r\n", tail = "</Record>\r\n</cRecordSet>\r\n";
    const std::string named = ref("Kuju", "RS", "Scenery\\Oak.XML");
    const std::string otherProvider = ref("Other", "RS", "Scenery\\Oak.xml");
    const std::string otherPath = ref("Kuju", "RS", "Scenery\\Oak2.xml");
    const std::string accented = ref("Caf\xC3\xA9 &amp; Co", "O&apos;Neil, &quot;Q&quot;", "Scenery\\Oak.xml");
    std::string xml = head + named + otherProvider + otherPath + accented + tail;

    Substitution s{name("kuju/rs/scenery/oak.bin"), name("New/Prod/Scenery/Elm.xml")};
    Substitution t{name("Café & Co/O'Neil, \"Q\"/Scenery/Oak.xml"), name("Caf\xC3\xA9 & Co/N/x.xml")};
    std::string changed = xml;
    const auto elements = substituteInText(changed, {s, t}, ItemKind::Scenery);
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(elements[0].before, "Kuju/RS/Scenery\\Oak.XML");
    EXPECT_EQ(elements[0].after, "New/Prod/Scenery\\Elm.xml");
    EXPECT_EQ(changed, head + ref("New", "Prod", "Scenery\\Elm.xml") + otherProvider + otherPath +
                           ref("Caf\xC3\xA9 &amp; Co", "N", "x.xml") + tail);

    // Removal: a scenery item's whole block goes, a loft item is blanked in place.
    std::string removed = xml;
    EXPECT_EQ(substituteInText(removed, {{s.missing, {}}}, ItemKind::Scenery).size(), 1u);
    EXPECT_EQ(removed, head + otherProvider + otherPath + accented + tail);
    std::string blanked = xml;
    const auto b = substituteInText(blanked, {{s.missing, {}}}, ItemKind::Loft);
    ASSERT_EQ(b.size(), 1u);
    EXPECT_EQ(b[0].after, "(blanked)");
    EXPECT_EQ(blanked, head + ref("", "", "") + otherProvider + otherPath + accented + tail);

    std::string untouched = xml;
    EXPECT_TRUE(substituteInText(untouched, {{name("Kuju/RS/Scenery/Pine.xml"), {}}}, ItemKind::Scenery).empty());
    EXPECT_EQ(untouched, xml);
}

TEST_F(Substitute, ChangesExactlyTheNamedReferencesInEveryTileAndOneUndoRestoresThem) {
    const fs::path folder = scenery();
    const auto before = folderBytes(folder);
    std::map<std::string, std::string> xmlBefore;
    for (const auto& [file, bytes] : before)
        xmlBefore[file] = decoded(folder / file);
    const std::string from = ">Scenery\\Generated\\Set0\\Obj10.xml</BlueprintID>";
    const std::string to = ">Scenery\\Generated\\Set0\\Obj11.xml</BlueprintID>";
    std::size_t expected = 0, tilesWith = 0;
    for (const auto& [file, xml] : xmlBefore) {
        expected += count(xml, from);
        tilesWith += count(xml, from) > 0;
    }
    ASSERT_GT(tilesWith, 1u) << "the demo places the item on several tiles";

    const auto dry = run({{name("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml"),
                           name("Heritage/SteamDays/Scenery/Generated/Set0/Obj11.xml")}},
                         ItemKind::Scenery, true);
    ASSERT_TRUE(dry.ok()) << dry.error;
    EXPECT_EQ(dry.elements(), expected);
    EXPECT_EQ(folderBytes(folder), before) << "a dry run writes nothing";

    const auto r = run({{name("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml"),
                         name("Heritage/SteamDays/Scenery/Generated/Set0/Obj11.xml")}});
    ASSERT_TRUE(r.ok()) << r.error;
    EXPECT_TRUE(r.written);
    EXPECT_EQ(r.elements(), expected);
    EXPECT_EQ(r.changed.size(), tilesWith);
    for (const auto& [file, xml] : xmlBefore) {
        EXPECT_EQ(decoded(folder / file), replaced(xml, from, to)) << file;
        // A tile without a hit is not rewritten and gets no backup.
        EXPECT_EQ(fs::exists(folder / (file + ".bak")), count(xml, from) > 0) << file;
        if (count(xml, from)) {
            EXPECT_EQ(bytesOf(folder / (file + ".bak")), before.at(file));
        }
    }
    const auto entries = m_ctx->journal().entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().command, "test substitution");
    EXPECT_EQ(entries.back().files.size(), tilesWith) << "one journal entry for every tile";

    undoLast();
    for (const auto& [file, bytes] : before)
        EXPECT_EQ(bytesOf(folder / file), bytes) << file << " is back byte for byte";
}

TEST_F(Substitute, ARefusedReplacementOrABadTileWritesNothingAndIsNamed) {
    const fs::path folder = scenery();
    const auto before = folderBytes(folder);
    const Substitution canopy{name("Heritage/SteamDays/Scenery/Station/Platform_Canopy.xml"),
                              name("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml")};
    auto gone = canopy;
    gone.replacement = name("Heritage/SteamDays/Scenery/Déjà, \"vu\".xml");
    const auto refused = run({gone});
    EXPECT_FALSE(refused.ok());
    EXPECT_NE(refused.error.find("Déjà, \"vu\".bin: the replacement does not exist"), std::string::npos) << refused.error;
    EXPECT_EQ(refused.tilesRead, 0u) << "refused before any tile was read";

    // A tile that does not decode stops the whole command, whatever the other tiles hold.
    const fs::path bad = folder / "+000009+000009.bin";
    std::ofstream(bad, std::ios::binary) << "not a tile";
    const auto stopped = run({canopy});
    EXPECT_FALSE(stopped.ok());
    EXPECT_NE(stopped.error.find("+000009+000009.bin"), std::string::npos) << stopped.error;
    EXPECT_NE(stopped.error.find("no tile was changed"), std::string::npos);
    fs::remove(bad);
    EXPECT_EQ(folderBytes(folder), before) << "no tile, backup or temporary file";

    // A tile that cannot be read is named the same way.
    const fs::path locked = folder / "+000000+000001.bin";
    fs::permissions(locked, fs::perms::none);
    test::whereModesHold([&] {
        const auto r = run({canopy});
        return !r.ok() && r.error.find("+000000+000001.bin") != std::string::npos;
    });
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::others_read);
    EXPECT_EQ(folderBytes(folder), before);
}

TEST_F(Substitute, FifosAndLinkLoopsAmongTheTilesArePassedOver) {
    const fs::path folder = scenery();
    ASSERT_EQ(::mkfifo((folder / "+000008+000008.bin").c_str(), 0600), 0);
    fs::create_symlink(folder / "+000007+000007.bin", folder / "+000007+000007.bin");
    fs::create_symlink(folder / "loopA.bin", folder / "loopB.bin");
    fs::create_symlink(folder / "loopB.bin", folder / "loopA.bin");
    const auto r = run({{name("Heritage/SteamDays/Scenery/Station/Platform_Canopy.xml"),
                         name("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml")}},
                       ItemKind::Scenery, false, 2);
    EXPECT_TRUE(r.ok()) << r.error;
    EXPECT_EQ(r.elements(), 1u);
    undoLast();
    for (const char* f : {"+000008+000008.bin", "+000007+000007.bin", "loopA.bin", "loopB.bin"})
        fs::remove(folder / f);
}

TEST_F(Substitute, AFailedRenameHalfWayPutsBackTheTilesAlreadyWritten) {
    const fs::path folder = scenery();
    const auto before = folderBytes(folder);
    test::FaultyFiles faulty(WriteStep::Replace, std::errc::permission_denied, 1);
    m_ctx->files().setFileOps(&faulty);
    const auto r = run({{name("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml"),
                         name("Heritage/SteamDays/Scenery/Generated/Set0/Obj11.xml")}});
    m_ctx->files().setFileOps(nullptr);
    EXPECT_FALSE(r.ok());
    EXPECT_FALSE(r.written);
    EXPECT_NE(r.error.find(".bin"), std::string::npos) << r.error;
    for (const auto& [file, bytes] : before)
        EXPECT_EQ(bytesOf(folder / file), bytes) << file << " holds its old content";
}

TEST_F(Substitute, ScenarioSceneryAndTrackNetworksAreTilesOfTheirKinds) {
    // Track items are looked for in the track tiles and in Tracks.bin.
    const RouteEntry route = valley();
    const std::string tracks = decoded(route.path / "Networks" / "Tracks.bin");
    ASSERT_NE(tracks.find("RailNetwork\\Track\\Bullhead.xml"), std::string::npos);
    const auto r = run({{name("Alpenbahn/Gotthard/RailNetwork/Track/Bullhead.xml"), {}}}, ItemKind::Track, true);
    ASSERT_TRUE(r.ok()) << r.error;
    ASSERT_FALSE(r.changed.empty());
    EXPECT_EQ(r.changed.back().tile.filename(), "Tracks.bin");
    EXPECT_EQ(r.changed.back().elements.front().after, "(blanked)");
    // A scenery kind never touches the networks.
    const auto s = run({{name("Alpenbahn/Gotthard/RailNetwork/Track/Bullhead.xml"), {}}}, ItemKind::Scenery, true);
    EXPECT_TRUE(s.changed.empty());
}

TEST_F(Substitute, TwoSubstitutionsKeepTwoBackupsAndALoftItemNeverTouchesScenery) {
    const fs::path folder = scenery();
    const auto before = folderBytes(folder);
    const auto obj10 = name("Heritage/SteamDays/Scenery/Generated/Set0/Obj10.xml");
    const auto obj11 = name("Heritage/SteamDays/Scenery/Generated/Set0/Obj11.xml");
    // The scenery blueprint named as a loft item: the loft tiles are read, the scenery left alone.
    const auto loft = run({{obj10, obj11}}, ItemKind::Loft);
    ASSERT_TRUE(loft.ok()) << loft.error;
    EXPECT_TRUE(loft.changed.empty());
    EXPECT_EQ(folderBytes(folder), before);

    ASSERT_TRUE(run({{obj10, obj11}}).written);
    const fs::path tile = run({{obj11, obj10}}).changed.front().tile;
    EXPECT_EQ(bytesOf(fs::path(tile.string() + ".bak")), before.at(tile.filename().string()));
    EXPECT_TRUE(fs::exists(tile.string() + ".bak1")) << "the second keeps the first's result as the next name";
    EXPECT_EQ(bytesOf(tile), before.at(tile.filename().string())) << "there and back again";
    undoLast();
    undoLast();
    for (const auto& [file, bytes] : before)
        EXPECT_EQ(bytesOf(folder / file), bytes) << file;
}
