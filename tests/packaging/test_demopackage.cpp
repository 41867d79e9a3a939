// The demo install's route packaged with its assets and installed into an empty simulator folder
// (with only the default content every user has): its check there finds nothing missing that was
// there at the source. And its scenarios' stock list.

#include "common/demofixture.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"
#include "velmora/packaging/packaging.h"
#include "velmora/routes/routecheck.h"

#include <fstream>
#include <set>

using namespace velmora;
using namespace velmora::packaging;

namespace {

struct DemoPackage : test::DemoInstallTest<DemoPackage> {
    static constexpr const char* kName = "demopackage";

    const routes::RouteEntry& valley(std::vector<routes::RouteEntry>& all) {
        all = routes::listRoutes(*m_ctx);
        const routes::RouteEntry* r = routes::findRoute(all, "Demo Valley Line");
        EXPECT_TRUE(r);
        return *r;
    }
    // The rows of what is missing, each without the root it was checked under.
    static std::set<std::string> rows(const routes::RouteCheckResult& r, const fs::path& root) {
        std::set<std::string> out;
        auto add = [&](std::string row) {
            for (const std::string& prefix : {root.string() + "/", root.string() + "\\"})
                for (auto at = row.find(prefix); at != std::string::npos; at = row.find(prefix))
                    row.erase(at, prefix.size());
            out.insert(row);
        };
        for (const auto& m : r.missing)
            add(m.row());
        for (const auto& m : r.missingFiles)
            add(m);
        return out;
    }
};

TEST_F(DemoPackage, InstalledIntoAnEmptyInstallTheRouteMissesNothingThatWasThere) {
    std::vector<routes::RouteEntry> all;
    const routes::RouteEntry& route = valley(all);
    const auto scenarios = routes::listScenarios(*m_ctx, route);
    routes::RouteCheckOptions deep;
    deep.deep = true;
    const routes::RouteCheckResult before = routes::RouteCheck(*m_ctx, route, scenarios).run(deep);
    ASSERT_TRUE(routes::saveRouteReports(*m_ctx, before).ok());

    PackageState state;
    PackageOptions options;
    options.base = s_dir / "packages";
    const PackageReport report = packageRoute(*m_ctx, route, state, options, nullptr, true);
    ASSERT_TRUE(report.ok()) << report.refused;
    EXPECT_TRUE(report.problems.empty()) << report.text();
    EXPECT_TRUE(report.check.notInPackage.empty()) << report.check.text();

    // The user's side: an empty install with the default content, and the package copied in.
    const fs::path user = s_dir / "user";
    fs::create_directories(user / "Assets");
    fs::copy(s_dir / "rw" / "Assets" / "Kuju", user / "Assets" / "Kuju", fs::copy_options::recursive);
    fs::copy(report.folder / "RailWorks", user,
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);

    AppContext there(s_dir / "userhome", s_dir / "data", m_ui);
    there.setRailWorksOverride(user);
    std::vector<routes::RouteEntry> installed = routes::listRoutes(there);
    const routes::RouteEntry* copy = routes::findRoute(installed, route.folder);
    ASSERT_TRUE(copy);
    const routes::RouteCheckResult after =
        routes::RouteCheck(there, *copy, routes::listScenarios(there, *copy)).run(deep);
    EXPECT_EQ(after.assetsUnique.size(), before.assetsUnique.size());
    const std::set<std::string> wasMissing = rows(before, s_dir / "rw");
    for (const std::string& row : rows(after, user))
        EXPECT_TRUE(wasMissing.count(row)) << "missing only after packaging: " << row;
    EXPECT_TRUE(after.unreadable.empty());
}

TEST_F(DemoPackage, ScenarioStockListHoldsEachRowOnceAndTheInstallerLists) {
    std::vector<routes::RouteEntry> all;
    const routes::RouteEntry& route = valley(all);
    const auto scenarios = routes::listScenarios(*m_ctx, route);
    ASSERT_GE(scenarios.size(), 2u);
    PackageState state;
    ScenarioPackage package(*m_ctx, state);
    const std::string added = "Scenario Added - Add another or click Process to finish.";
    EXPECT_EQ(package.add(route, scenarios[0], nullptr), added);
    const std::size_t once = package.stockRows().size();
    ASSERT_GT(once, 0u);
    EXPECT_EQ(package.add(route, scenarios[0], nullptr), added); // the same stock again
    EXPECT_EQ(package.add(route, scenarios[1], nullptr), added);
    PackageOptions options;
    options.base = s_dir / "scenariopackages";
    const PackageReport report = package.process(options, nullptr);
    ASSERT_TRUE(report.ok()) << report.refused;

    const std::set<std::string> distinct(package.stockRows().begin(), package.stockRows().end());
    std::ifstream qqq(report.folder / "Scenario.qqq", std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(qqq)), {});
    std::size_t lines = text.empty() ? 0 : 1;
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at + 2))
        ++lines;
    EXPECT_EQ(lines, distinct.size());
    for (const auto& row : distinct)
        EXPECT_NE(text.find(row), std::string::npos) << row;

    std::ifstream yyy(report.folder / "Scenario.yyy", std::ios::binary);
    const std::string list((std::istreambuf_iterator<char>(yyy)), {});
    EXPECT_EQ(list, state.packageFolder + "\r\n" + scenarios[0].folder + "\r\n" + scenarios[0].folder +
                        "\r\n" + scenarios[1].folder + "\r\n");
    EXPECT_TRUE(fs::exists(report.folder / "RailWorks/Content/Routes" / route.folder / "Scenarios" /
                           scenarios[1].folder / "Scenario.bin"));
}

} // namespace
