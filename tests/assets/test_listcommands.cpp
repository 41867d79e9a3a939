#include "velmora/core/services.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/journal.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace velmora;
using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

const std::string kContainer =
    "<cEngineBlueprint>\r\n<Name d:type=\"cDeltaString\">Class 66</Name>\r\n"
    "<DisplayName><English d:type=\"cDeltaString\">Class 66</English><French d:type=\"cDeltaString\"></French>"
    "</DisplayName>\r\n"
    "<ContainerComponent>\r\n<Children>\r\n"
    "\t<cEntityContainerBlueprint-sChild d:id=\"1\">\r\n\t\t<ChildName d:type=\"cDeltaString\">Exhaust</ChildName>\r\n"
    "\t</cEntityContainerBlueprint-sChild>\r\n"
    "\t<cEntityContainerBlueprint-sChild d:id=\"2\">\r\n\t\t<ChildName d:type=\"cDeltaString\">HeadLight</ChildName>\r\n"
    "\t</cEntityContainerBlueprint-sChild>\r\n"
    "\t<cEntityContainerBlueprint-sChild d:id=\"3\">\r\n\t\t<ChildName d:type=\"cDeltaString\">smoke1</ChildName>\r\n"
    "\t</cEntityContainerBlueprint-sChild>\r\n"
    "</Children>\r\n</ContainerComponent>\r\n</cEngineBlueprint>\r\n";

const std::vector<AssetRow> kRows = {
    {"DTG", "Class66", "a.bin", "Class 66 EWS", "Yes", "Diesel", "EngineBlueprint", "1"},
    {"DTG", "Class66", "b.bin", "class 66 GBRf", "Yes", "Diesel", "EngineBlueprint", "2"},
    {"DTG", "Class66", "c.bin", "HTA Hopper", "Yes", "Freight Wagon", "WagonBlueprint", "3"},
};

} // namespace

TEST(AssetFind, FirstLetterInEitherCaseAndStepsOn) {
    auto hit = findRow(kRows, 3, "Class", 0);
    ASSERT_TRUE(hit);
    EXPECT_EQ(*hit, 0u);
    hit = findRow(kRows, 3, "Class", *hit + 1);
    ASSERT_TRUE(hit);
    EXPECT_EQ(*hit, 1u) << "the lower-case first letter matches too";
    EXPECT_FALSE(findRow(kRows, 3, "Class", 2));
    EXPECT_FALSE(findRow(kRows, 3, "CLASS", 0)) << "only the first letter changes case";
    EXPECT_EQ(matchingRows(kRows, 5, "diesel"), (std::vector<std::size_t>{0, 1}));
    std::string error;
    EXPECT_FALSE(findRow(kRows, 3, "(unclosed", 0, &error));
    EXPECT_NE(error.find("cannot be searched for"), std::string::npos);
    // Show All with an empty Find box keeps every row, empty cells included.
    EXPECT_EQ(matchingRows(kRows, 3, ""), (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(matchingRows({{"A", "B", "c.bin", "", "", "", "", "1"}}, 4, ""), (std::vector<std::size_t>{0}));
}

TEST(ChildEntries, ListRemoveAndRepairTheSmokeStack) {
    EXPECT_EQ(childEntries(kContainer), (std::vector<std::string>{"Exhaust", "HeadLight", "smoke1"}));
    EXPECT_TRUE(childEntries("<cWagonBlueprint/>").empty());

    const std::string without = removeChildEntries(kContainer, {"HeadLight"});
    EXPECT_EQ(childEntries(without), (std::vector<std::string>{"Exhaust", "smoke1"}));
    EXPECT_EQ(without.find("d:id=\"2\""), std::string::npos);
    EXPECT_EQ(without.find("\r\n\r\n"), std::string::npos) << "no empty line is left";

    const std::string repaired = correctSmokeStack(kContainer, {"SMOKE1", "Exhaust"});
    EXPECT_EQ(childEntries(repaired), (std::vector<std::string>{"Main Smoke Stack", "HeadLight", "Main Smoke Stack"}));

    std::string renamed = kContainer;
    renameBlueprint(renamed, "Class 66 weathered");
    EXPECT_NE(renamed.find("<Name d:type=\"cDeltaString\">Class 66 weathered</Name>"), std::string::npos);
    EXPECT_NE(renamed.find("<French d:type=\"cDeltaString\">Class 66 weathered</French>"), std::string::npos);
}

class AssetFiles : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-listcmd-" + std::to_string(::getpid()));
        fs::remove_all(m_dir);
        write("rw/RailWorks.exe", "");
        write("rw/Content/Routes/.keep", "");
        m_ctx = std::make_unique<AppContext>(m_dir / "home", m_dir / "data", m_ui);
        StartupOptions o;
        o.railWorks = m_dir / "rw";
        o.askForRoot = false;
        runStartup(*m_ctx, o);
    }
    void TearDown() override {
        m_ctx.reset();
        fs::remove_all(m_dir);
    }
    void write(const std::string& rel, const std::string& bytes) {
        fs::create_directories((m_dir / rel).parent_path());
        std::ofstream(m_dir / rel, std::ios::binary) << bytes;
    }
    fs::path m_dir;
    ScriptedUi m_ui;
    std::unique_ptr<AppContext> m_ctx;
};

TEST_F(AssetFiles, DeleteFindsFilesWhateverTheirCase) {
    write("rw/Assets/DTG/Class66/RailVehicles/A.BIN", "x");
    write("rw/Assets/DTG/Class66/RailVehicles/keep.bin", "x");
    const std::vector<AssetRow> rows = {{"dtg", "class66", "railvehicles\\a.bin", "", "", "", "", "1"},
                                        {"DTG", "Class66", "RailVehicles\\gone.bin", "", "", "", "", "2"},
                                        {"", "", "", "", "", "", "", ""}};
    const DeleteResult r = deleteRowFiles(*m_ctx, rows);
    EXPECT_EQ(r.deleted, 1);
    EXPECT_TRUE(r.errors.empty());
    EXPECT_FALSE(fs::exists(m_dir / "rw/Assets/DTG/Class66/RailVehicles/A.BIN"));
    EXPECT_TRUE(fs::exists(m_dir / "rw/Assets/DTG/Class66/RailVehicles/keep.bin"));
    // Nothing is gone for good: the file keeps its backup name, and one undo puts it back.
    EXPECT_TRUE(fs::exists(m_dir / "rw/Assets/DTG/Class66/RailVehicles/A.BIN.bak"));
    const auto entries = m_ctx->journal().entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().command, "Delete Selected");
    ASSERT_TRUE(undoEntry(m_ctx->files(), entries.back().id, false).ok);
    EXPECT_TRUE(fs::exists(m_dir / "rw/Assets/DTG/Class66/RailVehicles/A.BIN"));
}

TEST_F(AssetFiles, PictureComesFromTheThumbnailThenLocoInformationThenNothing) {
    const AssetRow row{"DTG", "Class66", "RailVehicles\\Engine\\c66.bin", "Class 66: EWS's", "", "", "", "1"};
    write("rw/Assets/DTG/Class66/RailVehicles/Engine/c66.bin", "not a document");
    EXPECT_EQ(rowPicture(*m_ctx, row).source, RowPicture::Source::NoPicture);
    write("rw/Assets/DTG/Class66/RailVehicles/Engine/locoinformation/IMAGE.png", "png");
    m_ctx->resolver.invalidate();
    EXPECT_EQ(rowPicture(*m_ctx, row).source, RowPicture::Source::LocoInformation);
    write("home/Thumbnails/Class 66 EWSs.jpg", "jpg");
    const RowPicture p = rowPicture(*m_ctx, row);
    EXPECT_EQ(p.source, RowPicture::Source::Thumbnail);
    EXPECT_EQ(p.file.filename(), "Class 66 EWSs.jpg") << "quotes and colons are left out of the name";
}

TEST_F(AssetFiles, LocoInformationNeedsAThumbnailAndKeepsAnOldPicture) {
    const AssetRow row{"DTG", "Class66", "RailVehicles\\Engine\\c66.bin", "Class 66", "", "", "", "1"};
    write("rw/Assets/DTG/Class66/RailVehicles/Engine/c66.bin", "x");
    auto copy = [](const fs::path& from) -> std::optional<std::string> { return velmora::ReadTextFile(from); };
    EXPECT_EQ(addLocoInformation(*m_ctx, row, copy),
              "There does not appear to be a thumbnail for\nthis loco in your Velmora\\Thumbnails folder?");
    write("home/Thumbnails/Class 66.jpg", "new picture");
    write("rw/Assets/DTG/Class66/RailVehicles/Engine/LocoInformation/image.png", "old picture");
    EXPECT_EQ(addLocoInformation(*m_ctx, row, copy), "");
    const fs::path info = m_dir / "rw/Assets/DTG/Class66/RailVehicles/Engine/LocoInformation";
    std::ifstream in(info / "image.png");
    std::string text((std::istreambuf_iterator<char>(in)), {});
    EXPECT_EQ(text, "new picture");
    EXPECT_TRUE(fs::exists(info / "image.png.bak"));
    EXPECT_FALSE(fs::exists(m_dir / "home/Thumbnails/Class 66.png"));
}

TEST_F(AssetFiles, AStoredItemStandsBesideItsSourceAndDropsTheProductsCache) {
    const std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                            "<cBlueprintLoader xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n"
                            "\t<Name d:type=\"cDeltaString\">Class 66</Name>\r\n"
                            "</cBlueprintLoader>\r\n";
    write("rw/Assets/DTG/Class66/RailVehicles/Loco.bin", "source");
    write("rw/Assets/DTG/Class66/BluePrints.pak", "cache");
    write("rw/Assets/DTG/Class66/RailVehicles/Loco_New.bin", "an older item of the new name");
    const fs::path source = m_dir / "rw/Assets/DTG/Class66/RailVehicles/Loco.bin";

    StoreResult r = storeBlueprint(*m_ctx, source, xml, "Loco_New..");
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.written, source.parent_path() / "Loco_New.bin") << "trailing dots are dropped";
    EXPECT_TRUE(fs::exists(source.parent_path() / "Loco_New.bin.bak")) << "an older file of that name is kept";
    EXPECT_FALSE(fs::exists(m_dir / "rw/Assets/DTG/Class66/BluePrints.pak"));
    EXPECT_EQ(std::ifstream(source).rdbuf()->sgetc(), 's') << "the source stays as it was";

    // Names that would put the item elsewhere are refused and nothing is written.
    for (const char* bad : {"../../Escaped", "sub/Item", "C:Item", "..\\Up", ""}) {
        r = storeBlueprint(*m_ctx, source, xml, bad);
        EXPECT_FALSE(r.ok) << bad;
        EXPECT_FALSE(r.message.empty());
    }
    EXPECT_FALSE(fs::exists(m_dir / "rw/Assets/DTG/Escaped.bin"));
    // Text the codec refuses says so in the simulator converter's words.
    r = storeBlueprint(*m_ctx, source, "<cBlueprintLoader>", "Broken");
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.message.rfind("Serz.exe could not convert file Broken.bin\n", 0), 0u) << r.message;
    EXPECT_FALSE(fs::exists(source.parent_path() / "Broken.bin"));
}
