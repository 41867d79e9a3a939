// Cloning on the demo install: the clones stand on their own, refuse what they must, and one
// undo takes a clone back.

#include "../common/demofixture.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/clone.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <QXmlStreamReader>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

const std::string kClass66 = "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
const std::string kHta = "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin";

std::string lower(std::string s) {
    return toLowerAscii(s);
}

std::vector<fs::path> filesBelow(const fs::path& folder) {
    std::vector<fs::path> out;
    std::error_code ec;
    if (fs::exists(folder, ec))
        for (const auto& e : fs::recursive_directory_iterator(folder))
            if (e.is_regular_file(ec))
                out.push_back(e.path());
    return out;
}

class DemoClone : public test::DemoInstallTest<DemoClone> {
public:
    static constexpr const char* kName = "clone";

protected:
    void SetUp() override {
        // The shipped language table and template, as the program finds them beside it.
        fs::create_directories(s_dir / "data");
        for (const char* folder : {"Language", "Templates"})
            fs::copy(fs::path(VELMORA_SOURCE_DIR) / "data" / folder, s_dir / "data" / folder,
                     fs::copy_options::recursive | fs::copy_options::skip_existing);
        test::DemoInstallTest<DemoClone>::SetUp();
    }
    AssetRow row(const std::string& relative) {
        AssetRow r;
        EXPECT_TRUE(rowForBlueprint(relative, assets(), r)) << relative;
        return r;
    }
    fs::path assets() const { return s_dir / "rw/Assets"; }
    std::string decoded(const fs::path& file) {
        std::string xml;
        EXPECT_TRUE(binToXmlText(file, xml)) << file;
        return xml;
    }
    CloneNames names(const std::string& file, const std::string& display, const std::string& folder) {
        return {file, display, folder, "Rolling stock"};
    }
    // Every path of the clone that named the source folder names the clone's, the display name
    // is in place, and the loco check finds all it needs.
    void expectIndependent(const fs::path& blueprint, const std::string& sourceFolder,
                           const std::string& cloneFolder, const std::string& display) {
        const std::string xml = decoded(blueprint);
        EXPECT_EQ(lower(xml).find(lower(sourceFolder) + "\\"), std::string::npos) << xml;
        EXPECT_NE(xml.find(cloneFolder + "\\Bogies\\"), std::string::npos);
        EXPECT_NE(xml.find(cloneFolder + "\\Scripts\\Class66_EWS.lua"), std::string::npos);
        EXPECT_NE(xml.find("RailVehicles\\Couplings\\Buckeye\\Buckeye.xml"), std::string::npos)
            << "shared parts stay shared";
        std::size_t pos = 1;
        std::string english;
        GetDetail(xml, pos, "English", english);
        EXPECT_EQ(english, documentText(display));
        AssetChecks checks(*m_ctx);
        AssetRow r;
        ASSERT_TRUE(rowForBlueprint(blueprint.string(), assets(), r));
        const Report report = checks.checkLoco({r});
        for (const auto& l : report.lines)
            EXPECT_FALSE(l.missing) << l.text;
        for (const auto& l : checks.fileList.lines)
            EXPECT_FALSE(l.missing) << l.text;
    }
};

} // namespace

TEST(CloneTargets, OnlyFoldersBelowAProduct) {
    std::string problem;
    for (const char* bad : {"", "..\\x\\y", "A\\B\\..\\..\\..\\etc", "/tmp/x/y", "\\A\\B\\C", "C:\\A\\B\\C",
                            "A:B\\C\\D", "A\\B", "A\\B\\C\x01", "A\\B\\C|D"}) {
        EXPECT_TRUE(targetElements(bad, problem).empty()) << bad;
        EXPECT_FALSE(problem.empty()) << bad;
    }
    EXPECT_EQ(targetElements("Prov/Prod/RailVehicles//New\\", problem),
              (std::vector<std::string>{"Prov", "Prod", "RailVehicles", "New"}));
    EXPECT_TRUE(problem.empty());
}

TEST(CloneTargets, CategoriesOfTheDialogBecomeBrowseCategories) {
    ASSERT_EQ(cloneCategories().size(), 13u);
    EXPECT_EQ(categoryValue("Rolling stock"), "eRailVehicles");
    EXPECT_EQ(categoryValue("Locomotoves"), "eRailVehicles");
    EXPECT_EQ(categoryValue("Bridges and viaducts"), "eBridgesAndViaducts");
    EXPECT_EQ(categoryValue("Commercial industrial buildings"), "eCommercialIndustrialBuildings");
    EXPECT_EQ(categoryValue("Misc"), "eMisc");
}

TEST(RepointPaths, OnlyPathsIntoTheSourceFolderMove) {
    const std::string xml =
        "<a>\n"
        "\t<GeometryID d:type=\"cDeltaString\">dtg\\CLASS66\\RailVehicles\\Engine\\Body</GeometryID>\n"
        "\t<CsvFile d:type=\"cDeltaString\">DTG\\Class66\\RailVehicles\\\\Engine\\n.csv</CsvFile>\n"
        "\t<Name d:type=\"cDeltaString\">DTG\\Class66\\RailVehicles\\EngineOld\\s.lua</Name>\n"
        "\t<Provider d:type=\"cDeltaString\">DTG</Provider>\n"
        "\t<Product d:type=\"cDeltaString\">Class66</Product>\n"
        "\t</x>\n"
        "\t</y>\n"
        "\t<BlueprintID d:type=\"cDeltaString\">RailVehicles\\engine\\Bogie.xml</BlueprintID>\n"
        "\t<Provider d:type=\"cDeltaString\">Other</Provider>\n"
        "\t<Product d:type=\"cDeltaString\">Class66</Product>\n"
        "\t<BlueprintID d:type=\"cDeltaString\">RailVehicles\\Engine\\Bogie.xml</BlueprintID>\n"
        "\t<Provider d:type=\"cDeltaString\">DTG</Provider>\n"
        "\t<Product d:type=\"cDeltaString\">Class66</Product>\n"
        "\t<BlueprintID d:type=\"cDeltaString\">RailVehicles\\Couplings\\C.xml</BlueprintID>\n"
        "\t<Other d:type=\"cDeltaString\">O&apos;Brien\\Pack\\Sheds\\x</Other>\n"
        "</a>\n";
    const std::string out = repointPaths(xml, "DTG\\Class66\\RailVehicles\\Engine", "Me\\Mine\\Stock\\E2");
    EXPECT_NE(out.find(">Me\\Mine\\Stock\\E2\\Body<"), std::string::npos) << out;
    EXPECT_NE(out.find(">Me\\Mine\\Stock\\E2\\n.csv<"), std::string::npos) << out;
    EXPECT_NE(out.find("EngineOld\\s.lua"), std::string::npos)
        << "a folder of a longer name is another folder";
    EXPECT_NE(out.find(">Me</Provider>\n\t<Product d:type=\"cDeltaString\">Mine</Product>"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(">Stock\\E2\\Bogie.xml<"), std::string::npos);
    EXPECT_NE(out.find(">Other</Provider>"), std::string::npos) << "another provider's reference stays";
    EXPECT_NE(out.find(">RailVehicles\\Engine\\Bogie.xml<"), std::string::npos);
    EXPECT_NE(out.find(">RailVehicles\\Couplings\\C.xml<"), std::string::npos);
    // A source with an apostrophe is matched in the document's escaped spelling.
    const std::string sheds = repointPaths(xml, "O'Brien\\Pack\\Sheds", "A\\B\\C'D");
    EXPECT_NE(sheds.find(">A\\B\\C&apos;D\\x<"), std::string::npos) << sheds;
}

TEST_F(DemoClone, PrefillsFollowTheKind) {
    const CloneNames asset = clonePrefill(*m_ctx, row(kClass66), CloneKind::Asset);
    EXPECT_EQ(asset.fileName, "Class66_EWS_");
    EXPECT_EQ(asset.displayName, "DemoRail Class 66 EWS_");
    EXPECT_EQ(asset.targetFolder, "DemoRail\\Class66Pack\\RailVehicles\\Diesel\\Class66\\");
    EXPECT_EQ(clonePrefill(*m_ctx, row(kClass66), CloneKind::Vehicle).targetFolder,
              "DemoRail\\Class66Pack\\RailVehicles\\Diesel\\");
}

TEST_F(DemoClone, AssetAndVehicleClonesStandAloneAndOneUndoTakesThemBack) {
    const std::string display = "Clàsse 66, \"Zug\" & 'Co' <1>";
    {
        const CloneResult r = cloneRow(
            *m_ctx, row(kClass66), CloneKind::Asset,
            names("Class66_C", display, "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/EngineC"), &m_ui);
        ASSERT_TRUE(r.ok) << r.message;
        EXPECT_TRUE(r.skipped.empty());
        const fs::path clone = assets() / "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/EngineC";
        EXPECT_FALSE(fs::exists(clone / "Class66_EWS.bin"))
            << "the source blueprint is not copied under its old name";
        EXPECT_EQ(filesBelow(clone).size(), r.written.size());
        expectIndependent(clone / "Class66_C.bin", "RailVehicles\\Diesel\\Class66\\Engine",
                          "RailVehicles\\Diesel\\Class66\\EngineC", display);
    }
    {
        const CloneResult r = cloneRow(
            *m_ctx, row(kClass66), CloneKind::Vehicle,
            names("Class66_V", "V", "DemoRail\\Class66Pack\\RailVehicles\\Diesel\\Class66V\\"), &m_ui);
        ASSERT_TRUE(r.ok) << r.message;
        const fs::path clone = assets() / "DemoRail/Class66Pack/RailVehicles/Diesel/Class66V";
        EXPECT_TRUE(fs::exists(clone / "Bogies/Textures/Class66_Bogie.TgPcDx"))
            << "sibling folders come along";
        expectIndependent(clone / "Engine/Class66_V.bin", "RailVehicles\\Diesel\\Class66\\",
                          "RailVehicles\\Diesel\\Class66V\\Engine", "V");

        const auto id = lastUndoableEntry(m_ctx->journal().entries());
        ASSERT_TRUE(id);
        ASSERT_TRUE(undoEntry(m_ctx->files(), *id, false).ok);
        for (const auto& f : r.written)
            EXPECT_FALSE(fs::exists(f)) << f;
    }
}

TEST_F(DemoClone, AReskinBlueprintHasTheReskinOutline) {
    const std::string folder = "DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\Grey";
    CloneNames n = names("HTA_Grey", "Grau, \"gggggg\" & Co", folder);
    const CloneResult r = cloneRow(*m_ctx, row(kHta), CloneKind::ReskinBlueprint, n, &m_ui);
    ASSERT_TRUE(r.ok) << r.message;
    const fs::path target = assets() / "DemoRail/Class66Pack/RailVehicles/Freight/HTA/Grey";
    EXPECT_TRUE(fs::exists(target / "HTA_Body.TgPcDx"));
    EXPECT_TRUE(fs::exists(target / "HTA_Body_WI.TgPcDx")) << "the winter variant travels with the skin";
    EXPECT_EQ(filesBelow(target).size(), 3u);

    // The outline, read as XML: each element's children in order.
    const std::string xml = decoded(target / "HTA_Grey.bin");
    QXmlStreamReader reader(QByteArray::fromStdString(xml));
    std::vector<std::string> stack;
    std::map<std::string, std::vector<std::string>> children;
    std::map<std::string, std::string> values;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            const std::string name = reader.name().toString().toStdString();
            if (!stack.empty())
                children[stack.back()].push_back(name);
            stack.push_back(name);
        } else if (reader.isCharacters() && !reader.isWhitespace() && !stack.empty()) {
            values[stack.back()] += reader.text().toString().toStdString();
        } else if (reader.isEndElement()) {
            stack.pop_back();
        }
    }
    ASSERT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    using V = std::vector<std::string>;
    EXPECT_EQ(children["cBlueprintLoader"], V{"Blueprint"});
    EXPECT_EQ(children["Blueprint"], V{"cReskinBlueprint"});
    EXPECT_EQ(children["cReskinBlueprint"],
              (V{"Name", "BrowseInformation", "ReskinAssetBpId", "TextureEntry"}));
    EXPECT_EQ(children["iBrowseableBlueprint-cBrowseInformation"],
              (V{"DisplayName", "Description", "Category", "ValidInScenarios"}));
    EXPECT_EQ(children["TextureEntry"], V{"cReskinBlueprint-sTextureEntry"});
    EXPECT_EQ(children["cReskinBlueprint-sTextureEntry"], (V{"TextureName", "TextureID"}));
    EXPECT_EQ(values["BlueprintID"], "RailVehicles\\Freight\\HTA\\HTA_Coal.xml");
    EXPECT_EQ(values["Provider"], "DemoRail");
    EXPECT_EQ(values["TextureName"], "HTA_Body");
    EXPECT_EQ(values["TextureID"], folder + "\\[00]HTA_Body");
    EXPECT_EQ(values["Category"], "eRailVehicles");
    EXPECT_EQ(values["English"], "Grau, \"gggggg\" & Co"
                                 "Grau, \"gggggg\" & Co")
        << "display name and description";
}

TEST_F(DemoClone, RefusalsWriteNothing) {
    const fs::path hta = assets() / "DemoRail/Class66Pack/RailVehicles/Freight/HTA";
    const auto before = filesBelow(assets()).size();
    // Out of Assets by "..".
    CloneResult r = cloneRow(*m_ctx, row(kHta), CloneKind::Asset,
                             names("X", "X", "DemoRail\\Class66Pack\\..\\..\\..\\x"), &m_ui);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.message.find(".."), std::string::npos);
    // A folder with files in it, and the answer No.
    m_ui.pushAnswer(Answer::No);
    r = cloneRow(*m_ctx, row(kHta), CloneKind::Asset,
                 names("HTA_2", "X", "DemoRail\\Class66Pack\\RailVehicles\\Freight"), &m_ui);
    EXPECT_FALSE(r.ok);
    ASSERT_EQ(m_ui.prompts.size(), 1u);
    EXPECT_NE(m_ui.prompts[0].text.find("holds files"), std::string::npos);
    EXPECT_FALSE(fs::exists(hta.parent_path() / "HTA_2.bin"));
    // A second skin texture: the language table's box, nothing written.
    r = cloneRow(*m_ctx, row(kClass66), CloneKind::ReskinBlueprint,
                 names("R", "R", "DemoRail\\Class66Pack\\New\\R"), &m_ui);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.message.rfind(m_ctx->lang.text(485), 0), 0u) << r.message;
    // Procedural items, and a file name that is a path.
    r = cloneRow(*m_ctx, row("DemoRail/Class66Pack/Scenery/Procedural/Fence.bin"), CloneKind::SceneryReskin,
                 names("F", "F", "DemoRail\\Class66Pack\\New"), &m_ui);
    EXPECT_EQ(r.message, m_ctx->lang.text(527));
    r = cloneRow(*m_ctx, row(kHta), CloneKind::Asset, names("..\\HTA", "X", "DemoRail\\Class66Pack\\New"),
                 &m_ui);
    EXPECT_FALSE(r.ok);
    // A blueprint too high in its product: its vehicle folder would be a whole kind of assets.
    r = cloneRow(*m_ctx, row("DemoRail/Class66Pack/Scenery/Broken/Empty_Hut.bin"), CloneKind::Vehicle,
                 names("H", "H", "DemoRail\\Class66Pack\\New"), &m_ui);
    EXPECT_NE(r.message.find("too high"), std::string::npos) << r.message;
    EXPECT_EQ(filesBelow(assets()).size(), before);
    EXPECT_FALSE(fs::exists(assets() / "DemoRail/Class66Pack/New"));
}

TEST_F(DemoClone, LinksFifosAndUnreadableFilesAreNamedNotFollowed) {
    const fs::path odd = assets() / "DemoRail/Class66Pack/Scenery/Odd";
    fs::create_directories(odd);
    fs::copy_file(assets() / "DemoRail/Class66Pack/Scenery/Buildings/SignalBox.bin", odd / "Odd.bin");
    std::ofstream(odd / "plain.txt") << "kept";
    ASSERT_EQ(::mkfifo((odd / "pipe").c_str(), 0600), 0);
    fs::create_directory_symlink(odd, odd / "loop");
    fs::create_symlink("self", odd / "self");
    const bool asRoot = ::geteuid() == 0;
    std::ofstream(odd / "secret.txt") << "x";
    fs::permissions(odd / "secret.txt", fs::perms::none);

    const CloneResult r =
        cloneRow(*m_ctx, row("DemoRail/Class66Pack/Scenery/Odd/Odd.bin"), CloneKind::Asset,
                 names("Odd2", "Odd, \"2\"", "DemoRail\\Class66Pack\\Scenery\\Odd2"), &m_ui);
    fs::permissions(odd / "secret.txt", fs::perms::owner_all);
    ASSERT_TRUE(r.ok) << r.message;
    std::string skipped;
    for (const auto& s : r.skipped)
        skipped += s + "\n";
    for (const char* name : {"pipe", "loop", "self"})
        EXPECT_NE(skipped.find((odd / name).string()), std::string::npos) << name << " in\n" << skipped;
    if (!asRoot) {
        EXPECT_NE(skipped.find((odd / "secret.txt").string() + ": cannot be read"), std::string::npos)
            << skipped;
    }
    const fs::path clone = assets() / "DemoRail/Class66Pack/Scenery/Odd2";
    EXPECT_TRUE(fs::exists(clone / "plain.txt"));
    EXPECT_TRUE(fs::exists(clone / "Odd2.bin"));
    EXPECT_FALSE(fs::exists(clone / "pipe"));
    EXPECT_FALSE(fs::exists(clone / "loop"));
}

TEST_F(DemoClone, SceneryReskinBringsItsOwnShapeAndTextures) {
    const CloneResult r = cloneRow(
        *m_ctx, row("DemoRail/Class66Pack/Scenery/Buildings/O'Brien's Shed.bin"), CloneKind::SceneryReskin,
        names("O'Hara's Shed", "O'Hara's shed", "DemoRail\\Class66Pack\\Scenery\\Mine"), &m_ui);
    ASSERT_TRUE(r.ok) << r.message;
    const fs::path mine = assets() / "DemoRail/Class66Pack/Scenery/Mine";
    EXPECT_TRUE(fs::exists(mine / "O'Brien's Shed.GeoPcDx"));
    EXPECT_TRUE(fs::exists(mine / "Textures/Shed.TgPcDx"));
    const std::string xml = decoded(mine / "O'Hara's Shed.bin");
    EXPECT_NE(xml.find(">DemoRail\\Class66Pack\\Scenery\\Mine\\O&apos;Brien&apos;s Shed<"), std::string::npos)
        << xml;
    AssetChecks checks(*m_ctx);
    AssetRow clone;
    ASSERT_TRUE(rowForBlueprint((mine / "O'Hara's Shed.bin").string(), assets(), clone));
    EXPECT_FALSE(checks.getAssetBits({clone}).anyMissing());
}

TEST_F(DemoClone, AFailedCopyPutsBackWhatTheCloneHadWritten) {
    const fs::path source = assets() / "DemoRail/Class66Pack/Scenery/Two";
    const fs::path target = assets() / "DemoRail/Class66Pack/Scenery/Two2";
    fs::create_directories(source);
    fs::create_directories(target / "b.txt"); // a folder where the clone wants a file
    fs::copy_file(assets() / "DemoRail/Class66Pack/Scenery/Buildings/SignalBox.bin", source / "Two.bin");
    std::ofstream(source / "a.txt") << "new";
    std::ofstream(source / "b.txt") << "new";
    std::ofstream(target / "a.txt") << "old";
    m_ui.pushAnswer(Answer::Yes);
    const CloneResult r = cloneRow(*m_ctx, row("DemoRail/Class66Pack/Scenery/Two/Two.bin"), CloneKind::Asset,
                                   names("Two2", "Two", "DemoRail\\Class66Pack\\Scenery\\Two2"), &m_ui);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.message.find((target / "b.txt").string()), std::string::npos) << r.message;
    std::ifstream in(target / "a.txt");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "old");
    EXPECT_FALSE(fs::exists(target / "Two2.bin"));
}
