// Stock chosen from a row of the rolling-stock index: the same stock chooseStock gives for the
// row's blueprint, reskin values included; hostile rows are refused with the row named.

#include "scenariofixture.h"

#include "velmora/scenarios/indexstock.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace velmora;
using namespace velmora::scenarios;

namespace {

struct IndexRows : test::DemoInstallTest<IndexRows> {
    static constexpr const char* kName = "scenario-indexstock";
};

// A row as Index.csv holds it: Provider, Product, Path, Name, In Scene, Category, Blueprint, Index.
std::vector<std::string> row(const std::string& provider, const std::string& product, const std::string& path,
                             const std::string& name = "A name", const std::string& category = "Freight Wagon") {
    return {provider, product, path, name, "Yes", category, "cWagonBlueprint", "7"};
}

const char* const kLivery3 = "RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery3.bin";

TEST(IndexRow, TheFiveValuesAreReadTrimmed) {
    std::string error;
    const auto s = readIndexRow(row("  DemoRail ", "Class66Pack\t", " RailVehicles\\a.bin ", " Caf\xE9 wagon ", " Freight "), error);
    ASSERT_TRUE(s) << error;
    EXPECT_EQ(s->provider, "DemoRail");
    EXPECT_EQ(s->product, "Class66Pack");
    EXPECT_EQ(s->path, "RailVehicles\\a.bin");
    EXPECT_EQ(s->name, "Caf\xE9 wagon");
    EXPECT_EQ(s->category, "Freight");
}

TEST(IndexRow, HostileRowsAreRefused) {
    std::string error;
    EXPECT_FALSE(readIndexRow({"DemoRail", "Class66Pack", "a.bin", "Name", "Yes"}, error));
    EXPECT_NE(error.find("5 cells"), std::string::npos) << error;
    EXPECT_FALSE(readIndexRow({}, error));
    for (const auto& cells : {row("", "Class66Pack", "a.bin"), row("DemoRail", " ", "a.bin"), row("DemoRail", "P", "")}) {
        error.clear();
        EXPECT_FALSE(readIndexRow(cells, error));
        EXPECT_NE(error.find("lacks its provider, product or path"), std::string::npos) << error;
    }
    for (const auto& cells : {row("DemoRail", "Class66Pack", "..\\..\\..\\Content\\Routes\\r\\Scenarios\\s\\Scenario.bin"),
                              row("DemoRail", "Class66Pack", "RailVehicles/../../../x.bin"),
                              row("..", "Class66Pack", "a.bin"), row("DemoRail", "Class66Pack\\..", "a.bin"),
                              row("DemoRail", "Class66Pack", "C:\\Windows\\x.bin"), row("DemoRail", "Class66Pack", "\\x.bin"),
                              row("Demo/Rail", "Class66Pack", "a.bin")}) {
        error.clear();
        EXPECT_FALSE(readIndexRow(cells, error)) << cells[0] << " " << cells[1] << " " << cells[2];
        EXPECT_NE(error.find("does not name a file below Assets"), std::string::npos) << error;
        EXPECT_NE(error.find(cells[2]), std::string::npos) << "the row is named: " << error;
    }
}

TEST_F(IndexRows, AnIndexRowGivesTheStockAvailableStockWouldGive) {
    std::string error;
    const auto fromIndex = chooseIndexStock(*m_ctx, row(" DemoRail", "Class66Pack ", kLivery3, "HTA Livery 3", "Freight Wagon"), error);
    ASSERT_TRUE(fromIndex) << error;
    const auto direct = chooseStock(*m_ctx, std::string("DemoRail\\Class66Pack\\") + kLivery3, error);
    ASSERT_TRUE(direct) << error;
    EXPECT_EQ(fromIndex->provider, "DemoRail");
    EXPECT_EQ(fromIndex->product, "Class66Pack");
    EXPECT_EQ(fromIndex->path, "RailVehicles\\Freight\\HTA\\Reskins\\HTA_Livery3.xml");
    EXPECT_EQ(fromIndex->path, direct->path);
    EXPECT_EQ(fromIndex->file, direct->file);
    EXPECT_EQ(fromIndex->name, direct->name);
    EXPECT_EQ(fromIndex->category, direct->category) << "the category the swap's test knows, not the index's wording";
    // The reskin values come from the blueprint, as for a row of Available Stock.
    EXPECT_TRUE(fromIndex->reskin);
    EXPECT_EQ(fromIndex->reskinName, direct->reskinName);
    EXPECT_EQ(fromIndex->base.provider, direct->base.provider);
    EXPECT_EQ(fromIndex->base.blueprintId, direct->base.blueprintId);
    EXPECT_FALSE(fromIndex->base.empty());

    const std::string shown = chosenStockPath(*m_ctx, *fromIndex);
    EXPECT_EQ(shown, (m_ctx->railWorks() / "Assets").string() + "\\DemoRail\\Class66Pack\\" + kLivery3);
}

TEST_F(IndexRows, AMissingBlueprintIsNamed) {
    std::string error;
    EXPECT_FALSE(chooseIndexStock(*m_ctx, row("DemoRail", "Class66Pack", "RailVehicles\\Gone\\Nothing here.bin"), error));
    EXPECT_NE(error.find("Nothing here"), std::string::npos) << error;
    EXPECT_NE(error.find("does not exist"), std::string::npos) << error;
    error.clear();
    EXPECT_FALSE(chooseIndexStock(*m_ctx, row("DemoRail", "Class66Pack", "..\\..\\Heritage\\SteamDays\\x.bin"), error));
    EXPECT_NE(error.find("does not name a file below Assets"), std::string::npos) << error;
}

TEST_F(IndexRows, RowsOfTheProgramsIndexFile) {
    std::string error;
    const std::filesystem::path index = m_ctx->reports() / "Index.csv";
    std::filesystem::remove(index);
    EXPECT_FALSE(chooseIndexStockAt(*m_ctx, 1, error));
    EXPECT_EQ(error, kNoIndexFile);
    std::filesystem::create_directories(index.parent_path());
    std::ofstream(index, std::ios::binary) << "Provider,Product,Path,Name,In Scene,Category,Blueprint,Index\r\n"
                                           << "DemoRail,Class66Pack,..\\..\\x.bin,Escape,Yes,Freight Wagon,w,1\r\n"
                                           << "DemoRail,Class66Pack," << kLivery3 << ",HTA livery 3,No,,r,2\r\n";
    const auto livery = chooseIndexStockAt(*m_ctx, 2, error);
    ASSERT_TRUE(livery) << error;
    EXPECT_TRUE(livery->reskin);
    EXPECT_FALSE(chooseIndexStockAt(*m_ctx, 1, error));
    EXPECT_NE(error.find("does not name a file below Assets"), std::string::npos) << error;
    for (int past : {0, 3}) {
        EXPECT_FALSE(chooseIndexStockAt(*m_ctx, past, error));
        EXPECT_NE(error.find(index.string() + " has 2 rows of stock; there is no row " + std::to_string(past)),
                  std::string::npos)
            << error;
    }
}

} // namespace
