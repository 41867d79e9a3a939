// The Available Stock walk on the demo install and on a hand-made tree built to hurt a walker:
// what each category lists and why, the tables and the preview, what cannot be read, and Abort.

#include "velmora/scenarios/stocklist.h"

#include "../common/demofixture.h"
#include "../common/unprivileged.h"
#include "stockfiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include <sys/stat.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

class StockWalk : public test::DemoInstallTest<StockWalk> {
public:
    static constexpr const char* kName = "stock-walk";

protected:
    fs::path assets() const { return s_dir / "rw" / "Assets"; }

    static std::set<std::string> names(const StockListing& l, StockCategory category) {
        std::set<std::string> out;
        for (const auto& item : l.items)
            if (item.category == category)
                out.insert(item.name);
        return out;
    }
};

bool mentions(const std::vector<std::string>& lines, const std::string& what) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.find(what) != std::string::npos; });
}

} // namespace

TEST_F(StockWalk, OutsideRailVehiclesTheEngineTypeMustFitTheCategory) {
    const std::vector<StockCategory> categories = {StockCategory::Diesel,    StockCategory::Electric, StockCategory::Steam,
                                                   StockCategory::Passenger, StockCategory::Freight,  StockCategory::Tender};
    const StockListing one = listStock(*m_ctx, assets(), categories, 1);
    const StockListing many = listStock(*m_ctx, assets(), categories, 4);
    EXPECT_TRUE(one.notRailVehicles);
    EXPECT_FALSE(one.stopped);

    EXPECT_EQ(names(one, StockCategory::Diesel), (std::set<std::string>{"DemoRail Class 66 EWS"}));
    EXPECT_EQ(names(one, StockCategory::Electric),
              (std::set<std::string>{"Alpenbahn Re 460 SBB", "Alpenbahn RABDe 500 motor car"}));
    EXPECT_EQ(names(one, StockCategory::Steam), (std::set<std::string>{"Heritage Black 5", "Heritage Black 5 tender"}))
        << "in this mode Steam lists tenders too";
    EXPECT_EQ(names(one, StockCategory::Tender), (std::set<std::string>{"Heritage Black 5 tender"}));
    const auto passenger = names(one, StockCategory::Passenger);
    for (const char* coach : {"Alpenbahn EW IV 1. Klasse", "Alpenbahn EW IV 2. Klasse", "Heritage Mk1 BSK"})
        EXPECT_TRUE(passenger.count(coach)) << coach << " (the first one is write-protected)";
    EXPECT_EQ(passenger, names(one, StockCategory::Freight)) << "no path test tells them apart here";

    // Each row: the two folders below Assets, the path below them ending .xml, the file itself.
    const auto tender = std::find_if(one.items.begin(), one.items.end(),
                                     [](const StockItem& i) { return i.category == StockCategory::Tender; });
    ASSERT_NE(tender, one.items.end());
    EXPECT_EQ(tender->kind, StockKind::Tender);
    EXPECT_EQ(tender->provider, "Heritage");
    EXPECT_EQ(tender->product, "SteamDays");
    EXPECT_EQ(tender->path, "RailVehicles\\Steam\\Black5\\Tender\\Black5_Tender.xml");
    EXPECT_TRUE(fs::is_regular_file(tender->file));

    // The demo's zero-length blueprint is named, not dropped; and threads change nothing.
    EXPECT_TRUE(mentions(one.unreadable, "Empty_Hut.bin"));
    ASSERT_EQ(one.items.size(), many.items.size());
    for (std::size_t i = 0; i < one.items.size(); ++i)
        EXPECT_EQ(one.items[i].file, many.items[i].file);
    EXPECT_EQ(one.unreadable, many.unreadable);
}

TEST_F(StockWalk, InsideRailVehiclesThePathDecides) {
    const fs::path folder = assets() / "Alpenbahn" / "Gotthard" / "RailVehicles";
    const StockListing l = listStock(*m_ctx, folder,
                                     {StockCategory::Diesel, StockCategory::Freight, StockCategory::EMU}, 0);
    EXPECT_FALSE(l.notRailVehicles);
    EXPECT_EQ(l.provider, "Alpenbahn");
    EXPECT_EQ(l.product, "Gotthard");
    EXPECT_TRUE(names(l, StockCategory::Diesel).count("Alpenbahn Re 460 SBB")) << "any locomotive, by path alone";
    EXPECT_EQ(names(l, StockCategory::Freight), (std::set<std::string>{"Alpenbahn RABDe 500 trailer"}))
        << "coaches below \\Passenger\\ are not freight";
    const auto emu = names(l, StockCategory::EMU);
    EXPECT_TRUE(emu.count("Alpenbahn RABDe 500 motor car") && emu.count("Alpenbahn RABDe 500 trailer"));

    // The install path does not trip the tests once steamapps\ is cut off; the rows differ as
    // they are meant to.
    const std::string dmu = "\\RailVehicles\\DMU\\Class101\\Class101_DMBS.bin";
    EXPECT_TRUE(stockPathPasses("D:\\Steam\\steamapps\\common\\RailWorks\\Assets\\P\\Q" + dmu, StockCategory::DMU, false));
    EXPECT_FALSE(stockPathPasses("D:\\Steam\\RailWorks\\Assets\\P\\Q" + dmu, StockCategory::DMU, false));
    const std::string bogie = "C:\\RW\\Assets\\P\\Q\\RailVehicles\\Electric\\X\\Bogie\\B.bin";
    EXPECT_TRUE(stockPathPasses(bogie, StockCategory::Electric, false));
    EXPECT_FALSE(stockPathPasses(bogie, StockCategory::Steam, false));
    EXPECT_FALSE(stockPathPasses(bogie, StockCategory::Electric, true)) << "the other mode rejects the Diesel row's folders";
    EXPECT_FALSE(stockFolderEntered("C:\\RW\\Assets\\P\\Q\\RailVehicles\\X\\LocoInformation\\"));
    EXPECT_TRUE(stockFolderEntered("C:\\RW\\Assets\\P\\Q\\RailVehicles\\X\\Engine\\"));
}

TEST_F(StockWalk, TablesKeepPinnedRowsAndThePreviewFindsThePicture) {
    StockTables tables;
    const fs::path steamDays = assets() / "Heritage" / "SteamDays";
    Command6_Click(*m_ctx, tables, steamDays, StockCategory::Tender);
    ASSERT_EQ(tables.StockNames, (std::vector<std::string>{"Heritage Black 5 tender"}));
    EXPECT_EQ(tables.StockCategory, "Tender");
    EXPECT_EQ(tables.StockProvider, "Heritage");
    EXPECT_EQ(tables.StockProduct, "SteamDays");
    EXPECT_EQ(tables.StockPaths[0], "RailVehicles\\Steam\\Black5\\Tender\\Black5_Tender.xml");

    tables.pinned = true;
    Command6_Click(*m_ctx, tables, steamDays, StockCategory::Steam);
    EXPECT_EQ(tables.size(), 3u) << "a pinned row stays and the new listing is added";
    tables.pinned = false;
    Command6_Click(*m_ctx, tables, steamDays, StockCategory::Freight);
    EXPECT_EQ(tables.StockNames, (std::vector<std::string>{"Heritage Mk1 BSK"}));

    auto preview = stockPreview(*m_ctx, tables, 0);
    ASSERT_TRUE(preview);
    EXPECT_EQ(preview->source, StockPreview::Source::NoPicture);
    EXPECT_EQ(preview->category, "Freight Wagon");
    EXPECT_EQ(preview->label, tables.StockFiles[0]);
    EXPECT_FALSE(stockPreview(*m_ctx, tables, 1));

    const fs::path info = fs::path(tables.StockFiles[0]).parent_path() / "LocoInformation" / "image.png";
    test::writeBytes(info, "png");
    preview = stockPreview(*m_ctx, tables, 0);
    EXPECT_EQ(preview->source, StockPreview::Source::LocoInformation);
    EXPECT_EQ(preview->picture, info);
    fs::remove_all(info.parent_path());

    // Quotes become two apostrophes and colons semicolons in the thumbnail's name.
    tables.StockNames[0] = "Mk1 \"Blood & Custard\": BSK";
    const fs::path thumbnail = m_ctx->appPath() / "Thumbnails" / "Mk1 ''Blood & Custard''; BSK.jpg";
    test::writeBytes(thumbnail, "jpg");
    preview = stockPreview(*m_ctx, tables, 0);
    EXPECT_EQ(preview->source, StockPreview::Source::Thumbnail);
    EXPECT_EQ(preview->picture, thumbnail);
}

TEST_F(StockWalk, AHostileTreeIsWalkedOnceAndWhatCannotBeReadIsNamed) {
    // Accents, commas, quotes and a control character in the folder names; a link back up the
    // tree, a link to itself, a FIFO named like a blueprint, and a blueprint that is no document.
    const fs::path product = s_dir / "hostile" / "Assets" / "Zé, \"Quoted\"\x01" / "Prod 'x'";
    const fs::path tenders = product / "RailVehicles" / "Tender";
    fs::remove_all(s_dir / "hostile");
    test::HandVehicle tender;
    tender.name = "Tender, \"Ñ\" 1";
    test::writeDocument(tenders / "Good.bin", test::vehicleXml(tender));
    test::writeBytes(tenders / "Broken.bin", "SERZ\0\0\1\0 cut short");
    fs::create_directory_symlink("../..", tenders / "up");
    fs::create_directory_symlink("loop", tenders / "loop");
    ASSERT_EQ(::mkfifo((tenders / "Fifo.bin").c_str(), 0644), 0);

    const StockListing l = listStock(*m_ctx, s_dir / "hostile" / "Assets", {StockCategory::Tender}, 0);
    ASSERT_EQ(l.items.size(), 1u) << "the links are not followed, the FIFO is not opened";
    EXPECT_EQ(l.items[0].name, "Tender, 'Ñ' 1") << "as the text repair gives it";
    EXPECT_EQ(l.items[0].provider, "Zé, \"Quoted\"\x01");
    EXPECT_EQ(l.items[0].product, "Prod 'x'");
    EXPECT_TRUE(mentions(l.unreadable, "Broken.bin"));
    EXPECT_FALSE(mentions(l.unreadable, "Fifo.bin"));

    // A folder that cannot be read is named too.
    const fs::path locked = product / "RailVehicles" / "Locked";
    fs::create_directories(locked);
    fs::permissions(locked, fs::perms::none);
    fs::permissions(s_dir, fs::perms::others_read | fs::perms::others_exec, fs::perm_options::add);
    test::whereModesHold([&] {
        const StockListing denied = listStock(*m_ctx, s_dir / "hostile" / "Assets", {StockCategory::Tender}, 0);
        return mentions(denied.unreadable, "Locked") && denied.items.size() == 1;
    });
    fs::permissions(locked, fs::perms::owner_all);
}

TEST_F(StockWalk, AbortStopsTheWalk) {
    AbortableUi ui(m_ui);
    ui.abort();
    const StockListing l = listStock(*m_ctx, assets(), {StockCategory::Diesel}, 0, &ui);
    EXPECT_TRUE(l.stopped);
    EXPECT_TRUE(l.items.empty());

    // Abort pressed in the middle of the walk: the demo's Assets tree has more files than one
    // progress step.
    m_ui.cancelAfter(1);
    const StockListing halfway = listStock(*m_ctx, assets(), allStockCategories(), 1, &m_ui);
    EXPECT_TRUE(halfway.stopped);
    EXPECT_TRUE(halfway.items.empty());
}
