// The checks and files-used reports on the demo install, against its manifest of faults.

#include "../common/demofixture.h"
#include "velmora/assets/checks.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <unistd.h>

using namespace velmora;
using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

bool mentions(const Report& r, const std::string& what, bool missing) {
    for (const auto& l : r.lines)
        if (l.text.find(what) != std::string::npos && l.missing == missing)
            return true;
    return false;
}

std::string linesOf(const Report& r) {
    std::string s;
    for (const auto& l : r.lines)
        s += (l.missing ? "[missing] " : "") + l.text + "\n";
    return s;
}

class DemoChecks : public test::DemoInstallTest<DemoChecks> {
public:
    static constexpr const char* kName = "checks";

protected:
    AssetRow row(const std::string& relative) {
        AssetRow r;
        EXPECT_TRUE(rowForBlueprint(relative, s_dir / "rw/Assets", r)) << relative;
        r.name = "x";
        return r;
    }
};

} // namespace

TEST(TexturePaths, CodesAndClimbs) {
    const std::string shape = "DemoRail\\Pack\\Scenery\\Sheds\\Shed.GeoPcDx";
    EXPECT_EQ(texturePath("[00]body", shape), "DemoRail\\Pack\\Scenery\\Sheds\\body.TgPcDx");
    EXPECT_EQ(texturePath("Textures\\[0c]roof", shape), "DemoRail\\Pack\\Scenery\\Sheds\\Textures\\roof.TgPcDx");
    EXPECT_EQ(texturePath("..\\Shared\\brick", shape), "DemoRail\\Pack\\Scenery\\Shared\\brick.TgPcDx");
    EXPECT_EQ(texturePath("..\\..\\Shared\\brick", shape), "DemoRail\\Pack\\Shared\\brick.TgPcDx");
    // Three or more: from where the value's first folder stands in the shape's path.
    EXPECT_EQ(texturePath("..\\..\\..\\Scenery\\Shared\\brick", shape), "DemoRail\\Pack\\Scenery\\Shared\\brick.TgPcDx");
    // Five levels are counted; climbing out of the tree leaves no base, and then the shape's
    // own folder is taken.
    EXPECT_EQ(texturePath("..\\..\\..\\..\\..\\x", shape), "DemoRail\\Pack\\Scenery\\Sheds\\x.TgPcDx");
    EXPECT_EQ(texturePath("..\\..\\..\\Common\\x", shape), "DemoRail\\Common\\x.TgPcDx");
    EXPECT_EQ(texturePath("TEXTURES\\a", shape), "DemoRail\\Pack\\Scenery\\Sheds\\TEXTURES\\a.TgPcDx");
}

TEST(BlueprintRows, FromFullOrRelativePaths) {
    AssetRow r;
    ASSERT_TRUE(rowForBlueprint("/rw/Assets/DTG/Class66/RailVehicles/a.bin", "/rw/Assets", r));
    EXPECT_EQ(r.relativePath(), "DTG\\Class66\\RailVehicles\\a.bin");
    ASSERT_TRUE(rowForBlueprint("DTG\\Class66\\a.bin", "/rw/Assets", r));
    EXPECT_EQ(r.product, "Class66");
    EXPECT_FALSE(rowForBlueprint("a.bin", "/rw/Assets", r));
}

TEST_F(DemoChecks, CheckLocoFindsEverythingOfACompleteLoco) {
    AssetChecks checks(*m_ctx);
    const Report r = checks.checkLoco({row("DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin")});
    EXPECT_FALSE(r.anyMissing()) << linesOf(r);
    EXPECT_FALSE(checks.fileList.anyMissing()) << linesOf(checks.fileList);
    // The report says which blueprint it checked.
    EXPECT_NE(r.text().find("Class66_EWS.bin"), std::string::npos);
}

TEST_F(DemoChecks, AScriptGivenOnlyCompiledCountsAsPresent) {
    AssetChecks checks(*m_ctx);
    for (const auto& e : fs::recursive_directory_iterator(s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA")) {
        if (e.path().extension() != ".bin" || e.path().string().find("Reskins") != std::string::npos)
            continue;
        const Report shown = checks.filesUsedByWagons({row(e.path().string())});
        EXPECT_FALSE(mentions(shown, "HTA_Coal.lua", true)) << linesOf(shown);
    }
}

TEST_F(DemoChecks, FileListsReportMissingTexturesSeasonsAndCompanions) {
    AssetChecks checks(*m_ctx);
    const Report r = checks.getAssetBits({row("DemoRail/Class66Pack/Scenery/Faulty/Coal_Stage.bin")});
    EXPECT_TRUE(mentions(r, "CoalStage_Missing.TgPcDx", true)) << linesOf(r);
    EXPECT_EQ(r.lines.back().text, "+++");
    // The case-mismatched texture of the goods shed is found.
    const Report shed = checks.getAssetBits({row("DemoRail/Class66Pack/Scenery/Industry/GoodsShed/Goods_Shed.bin")});
    EXPECT_FALSE(shed.anyMissing()) << linesOf(shed);
    // A path that climbs one folder too many names a texture that is not there.
    const Report hut = checks.getAssetBits({row("DemoRail/Class66Pack/Scenery/Faulty/LampHut/Lamp_Hut.bin")});
    EXPECT_TRUE(hut.anyMissing()) << linesOf(hut);
}

TEST_F(DemoChecks, AudioThroughProxiesToSoundFiles) {
    AssetChecks checks(*m_ctx);
    checks.currentFile = "Church_Bells.bin";
    bool exists = false;
    checks.GetAudio(checks.resolve("DemoRail\\Class66Pack\\Audio\\Ambient\\Church_Bells.bin", exists));
    ASSERT_TRUE(exists);
    EXPECT_TRUE(mentions(checks.fileList, "Church_Bells.proxyxml Called by Church_Bells.bin", true)) << linesOf(checks.fileList);
    checks.fileList = {};
    checks.GetAudio(checks.resolve("DemoRail\\Class66Pack\\Audio\\Ambient\\Stream.bin", exists));
    EXPECT_TRUE(mentions(checks.fileList, "Stream2.wav", true)) << linesOf(checks.fileList);
    EXPECT_TRUE(mentions(checks.fileList, "Stream1.wav", false)) << linesOf(checks.fileList);
}

TEST_F(DemoChecks, NamesWithApostrophesAreRepairedBeforeTheyCountAsMissing) {
    AssetChecks checks(*m_ctx);
    bool exists = false;
    checks.resolve("DemoRail\\Class66Pack\\Scenery\\Buildings\\O&apos;Brien&apos;s Shed.bin", exists);
    EXPECT_TRUE(exists);
    checks.resolve("demorail\\CLASS66PACK\\scenery\\buildings\\o'brien's shed.BIN", exists, false);
    EXPECT_TRUE(exists) << "letter case does not matter";
}

TEST_F(DemoChecks, PackageMissingAssetsCopiesFilesAndTheirSeasons) {
    AssetChecks checks(*m_ctx);
    EXPECT_NE(checks.packageMissingAssets().find("Reports\\MissingFiles.txt"), std::string::npos);
    const Report r = checks.getAssetBits({row("DemoRail/Class66Pack/Scenery/Faulty/Coal_Stage.bin")});
    fs::create_directories(m_ctx->reports());
    std::ofstream(m_ctx->reports() / "MissingFiles.txt", std::ios::binary)
        << (s_dir / "rw/Assets/../../NewPackage2/Assets/x.bin").string() << "\r\n/etc/passwd\r\n" << r.text();
    fs::create_directories(s_dir / "NewPackage2/Assets");
    std::ofstream(s_dir / "NewPackage2/Assets/x.bin") << "x";
    int copied = 0;
    EXPECT_EQ(checks.packageMissingAssets(&copied), "");
    EXPECT_GT(copied, 2);
    EXPECT_TRUE(fs::exists(m_ctx->appPath() / "NewPackage/Assets/DemoRail/Class66Pack/Scenery/Faulty/Coal_Stage.bin"));
    EXPECT_FALSE(fs::exists(m_ctx->appPath() / "NewPackage/etc")) << "nothing outside the Assets tree";
    EXPECT_FALSE(fs::exists(m_ctx->appPath() / "NewPackage2")) << "nor beside the package, by way of ..";
}

TEST_F(DemoChecks, LoftsListTheTexturesOfTheirCrossSection) {
    AssetChecks checks(*m_ctx);
    const Report r = checks.filesUsedByLofts({row("Alpenbahn/Gotthard/Loft/Fence_Wood.bin")});
    EXPECT_TRUE(mentions(r, "Fence_Wood.XSec", false)) << linesOf(r);
    // The section's texture, its value read from the list the section holds.
    bool texture = false;
    for (const auto& l : r.lines)
        texture = texture || l.text.find("Fence_Wood.TgPcDx") != std::string::npos;
    EXPECT_TRUE(texture) << linesOf(r);
    EXPECT_TRUE(checks.fileList.lines.empty()) << "the buffer is handed back and cleared";
    // An asset without a shape says why it shows no textures.
    const Report sound = checks.filesUsedByAsset({row("DemoRail/Class66Pack/Audio/Ambient/Stream.bin")});
    EXPECT_TRUE(mentions(sound, "Selected item did not have an associated .GeoPcDx file", false)) << linesOf(sound);
}

TEST_F(DemoChecks, UseInScenariosStoresWithABackupAndDropsTheCache) {
    // A copy of a scenery blueprint that the simulator would not offer in scenarios.
    const fs::path folder = s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Buildings";
    const fs::path source = folder / "SignalBox.bin";
    std::string xml;
    ASSERT_TRUE(binToXmlText(source, xml));
    const auto valid = xml.find("<ValidInScenarios");
    ASSERT_NE(valid, std::string::npos);
    const auto gt = xml.find('>', valid);
    const auto lt = xml.find('<', gt);
    xml.replace(gt + 1, lt - gt - 1, "eFalse");
    std::string bin;
    ASSERT_TRUE(xmlTextToBin(xml, bin));
    const fs::path copy = folder / "Hidden_Box.bin";
    ASSERT_TRUE(WriteTextFile(copy, bin));
    const fs::path pak = s_dir / "rw/Assets/DemoRail/Class66Pack/BluePrints.pak";
    if (!fs::exists(pak))
        std::ofstream(pak) << "cache";
    m_ctx->resolver.invalidate();

    AssetChecks checks(*m_ctx);
    std::vector<AssetRow> rows{row("DemoRail/Class66Pack/Scenery/Buildings/Hidden_Box.bin")};
    rows[0].inScene = "No";
    EXPECT_TRUE(checks.useInScenarios(rows).empty());
    EXPECT_EQ(rows[0].inScene, "Yes");
    EXPECT_TRUE(fs::exists(copy.string() + ".bak"));
    EXPECT_FALSE(fs::exists(pak)) << "the simulator rebuilds its cache";
    std::string after;
    ASSERT_TRUE(binToXmlText(copy, after));
    EXPECT_NE(after.find(">eTrue</ValidInScenarios>"), std::string::npos);

    // A blueprint already offered is left as it stands: no second backup.
    EXPECT_TRUE(checks.useInScenarios(rows).empty());
    EXPECT_FALSE(fs::exists(copy.string() + ".bak1"));
}

TEST_F(DemoChecks, ProcessMissingAssetsFindsTheNamedBlueprints) {
    AssetChecks checks(*m_ctx);
    std::vector<AssetRow> rows;
    EXPECT_EQ(checks.missingAssetRows(rows, "*.bin", ""),
              "Your missing assets file could not be found, must be saved as\nReports\\MissingAssets.csv");
    fs::create_directories(m_ctx->reports());
    std::ofstream(m_ctx->reports() / "MissingAssets.csv", std::ios::binary)
        << (s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Faulty/Coal_Stage.bin").string() << "\r\n\r\n"
        << "C:\\RailWorks\\Assets\\Nobody\\Nothing\\Gone.bin\r\n";
    EXPECT_EQ(checks.missingAssetRows(rows, "*.bin", ""), "");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].path, "Scenery\\Faulty\\Coal_Stage.bin");
    const Report bits = checks.getAssetBits(rows);
    EXPECT_TRUE(mentions(bits, "CoalStage_Missing.TgPcDx", true));
}

TEST_F(DemoChecks, TheReadingsOfATexturePathAndOfAnAnimationMeet) {
    // The wagon's shape names a texture below Assets. Read the asset screen's way it is not
    // beside the shape; it is not called missing for that without saying where it is, and the
    // line names the shape that calls it.
    AssetChecks checks(*m_ctx);
    checks.currentFile = "something opened elsewhere";
    const Report loco = checks.checkLoco({row("DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin")});
    EXPECT_FALSE(checks.fileList.anyMissing()) << linesOf(checks.fileList);
    EXPECT_TRUE(mentions(checks.fileList, "Buffers.TgPcDx Called by " + (s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.GeoPcDx").string() +
                                              " (found below Assets as " + (s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/CommonTex/Buffers.TgPcDx").string() + ")",
                         false))
        << linesOf(checks.fileList);
    const Report bits = checks.getAssetBits({row("DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin")});
    EXPECT_TRUE(mentions(bits, "RailVehicles/CommonTex/Buffers.TgPcDx", false)) << linesOf(bits);

    // An engine's animation lies in a folder of its own, where its value says.
    const Report engine = checks.getAssetBits({row("DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin")});
    EXPECT_FALSE(engine.anyMissing()) << linesOf(engine);
    EXPECT_TRUE(mentions(engine, "Engine/Animations/Class66_EWS_Wipers.ban", false)) << linesOf(engine);
}

TEST_F(DemoChecks, ADocumentThatCannotBeReadIsLoggedNotPassedOver) {
    const fs::path broken = s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Broken/Empty_Hut.bin";
    ASSERT_TRUE(fs::exists(broken));
    AssetChecks checks(*m_ctx);
    const int logged = m_ctx->log().count();
    checks.getAssetBits({row(broken.string())});
    ASSERT_EQ(checks.unreadable.size(), 1u);
    EXPECT_NE(checks.unreadable[0].find("Empty_Hut.bin"), std::string::npos);
    EXPECT_EQ(m_ctx->log().count(), logged + 1);
    // A blueprint that is not there at all is a finding of the report, not an error.
    AssetChecks missing(*m_ctx);
    const Report r = missing.getAssetBits({row("DemoRail/Class66Pack/Scenery/Nothing_Here.bin")});
    EXPECT_TRUE(missing.unreadable.empty());
    EXPECT_TRUE(r.anyMissing());
}

TEST_F(DemoChecks, MissingAssetsWithCommasAndPackagesInTheLetterCaseOnDisk) {
    // The route check writes a path holding a comma in quotes; it comes back whole.
    const fs::path odd = s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Odd, Folder/Coal_Stage.bin";
    fs::create_directories(odd.parent_path());
    fs::copy_file(s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Faulty/Coal_Stage.bin", odd,
                  fs::copy_options::overwrite_existing);
    m_ctx->resolver.invalidate();
    fs::create_directories(m_ctx->reports());
    std::ofstream(m_ctx->reports() / "MissingAssets.csv", std::ios::binary) << csvCell(odd.string()) << "\r\n";
    AssetChecks checks(*m_ctx);
    std::vector<AssetRow> rows;
    EXPECT_EQ(checks.missingAssetRows(rows, "*.bin", ""), "");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].path, "Scenery\\Odd, Folder\\Coal_Stage.bin");

    // A seasonal variant is copied under the name it has on disk.
    const fs::path body = s_dir / "rw/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA/Textures/HTA_Body.TgPcDx";
    std::ofstream(m_ctx->reports() / "MissingFiles.txt", std::ios::binary) << body.string() << "\r\n+++\r\n";
    EXPECT_EQ(checks.packageMissingAssets(), "");
    const fs::path copied = m_ctx->appPath() / "NewPackage/Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA/Textures";
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(copied))
        names.insert(e.path().filename().string());
    EXPECT_EQ(names, (std::set<std::string>{"HTA_Body.TgPcDx", "HTA_Body_AU.TgPcDx", "HTA_Body_WI.TgPcDx"}));
    fs::remove_all(odd.parent_path());
}
