// Swaps over a whole route: Swap in ALL Scenarios by a vehicle's name, and the swap by a rule
// file. Each test works on its own copy of the demo install, since a batch rewrites every
// scenario of a route.

#include "../core/faultyfiles.h"
#include "scenariofixture.h"
#include "velmora/core/journal.h"
#include "velmora/scenarios/batchswap.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

const char* const kSludge = "DemoRail,Class66Pack,RailVehicles\\Freight\\HTA\\HTA_Sludge.xml,";
const char* const kCoal = "DemoRail\\Class66Pack\\RailVehicles\\Freight\\HTA\\HTA_Coal.bin";
const char* const kCoach = "Heritage\\SteamDays\\RailVehicles\\Passenger\\Mk1\\Mk1_BSK.bin";

struct BatchSwap : test::DemoInstallTest<BatchSwap> {
    static constexpr const char* kName = "scenario-batch";

    void SetUp() override {
        test::DemoInstallTest<BatchSwap>::SetUp();
        fs::copy(s_dir / "rw", m_work.path() / "rw", fs::copy_options::recursive);
        m_ctx =
            std::make_unique<AppContext>(m_work.path() / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        StartupOptions o;
        o.railWorks = m_work.path() / "rw";
        o.askForRoot = false;
        runStartup(*m_ctx, o);
    }

    // The route whose scenario has a missing wagon.
    routes::RouteEntry route() {
        for (const auto& r : routes::listRoutes(*m_ctx))
            for (const auto& s : routes::listScenarios(*m_ctx, r))
                if (s.name == "O'Connor's coal run")
                    return r;
        ADD_FAILURE() << "no route with O'Connor's coal run";
        return {};
    }
    fs::path scenarios() { return route().path / "Scenarios"; }

    fs::path rules(const std::string& text) {
        const fs::path file = m_work.path() / "rules.csv";
        std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
        return file;
    }
    SwapRules readRules(const std::string& text) {
        std::vector<std::string> errors;
        auto r = readSwapRules(*m_ctx, rules(text), errors);
        EXPECT_TRUE(r) << (errors.empty() ? std::string() : errors.front());
        return r.value_or(SwapRules{});
    }
    ChosenStock stock(const std::string& typed) {
        std::string error;
        auto s = chooseStock(*m_ctx, typed, error);
        EXPECT_TRUE(s) << error;
        return s.value_or(ChosenStock{});
    }
    BatchOptions fixed() {
        BatchOptions o;
        o.swap.randomFraction = [] { return 0.5; };
        return o;
    }
    int missingVehicles() {
        int n = 0;
        const routes::RouteEntry r = route();
        for (const auto& s : routes::listScenarios(*m_ctx, r)) {
            const ScenarioDocument d = openScenario(*m_ctx, r.path / "Scenarios" / s.folder);
            for (const auto& c : d.consists)
                for (const auto& v : c.vehicles)
                    n += v.missing;
        }
        return n;
    }
    // Every file of the route's scenarios that was there before holds its old bytes.
    void expectUnchanged(const std::map<std::string, std::string>& before) {
        const auto now = test::snapshot(scenarios());
        for (const auto& [name, bytes] : before) {
            ASSERT_TRUE(now.count(name)) << name;
            EXPECT_TRUE(now.at(name) == bytes) << name << " changed";
        }
    }
    test::TempDir m_work;
};

TEST_F(BatchSwap, MissingOnlyLeavesNoMissingStockAndOneUndoPutsEveryFileBack) {
    ASSERT_GT(missingVehicles(), 0);
    const auto before = test::snapshot(scenarios());
    const SwapRules r =
        readRules(std::string("# the sludge wagon was never released\n") + kSludge + kCoal + "\n");

    BatchOptions dry = fixed();
    dry.dryRun = dry.missingOnly = true;
    const BatchResult preview = swapByRules(*m_ctx, route(), r, dry);
    ASSERT_TRUE(preview) << preview.message;
    EXPECT_EQ(preview.swapped, 1);
    EXPECT_EQ(preview.written, 0);
    EXPECT_EQ(test::snapshot(scenarios()), before);
    const std::string report = batchReport(preview);
    EXPECT_NE(report.find("HTA_Sludge"), std::string::npos) << report;
    EXPECT_NE(report.find("rule of line 2"), std::string::npos) << report;
    EXPECT_NE(report.find("passed over: a Quick Drive scenario"), std::string::npos) << report;

    BatchOptions real = fixed();
    real.missingOnly = true;
    const long entriesBefore = static_cast<long>(m_ctx->journal().entries().size());
    const BatchResult done = swapByRules(*m_ctx, route(), r, real);
    ASSERT_TRUE(done) << done.message;
    EXPECT_EQ(done.message, kAllScenariosSaved);
    EXPECT_EQ(done.written, 1);
    EXPECT_EQ(missingVehicles(), 0);
    // The stock's product joins the preload list of the scenario written.
    const auto entries = m_ctx->journal().entries();
    ASSERT_EQ(static_cast<long>(entries.size()), entriesBefore + 1);
    EXPECT_EQ(entries.back().files.size(), 2u); // Scenario.bin and ScenarioProperties.xml

    const UndoResult u = undoEntry(m_ctx->files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    expectUnchanged(before);
}

TEST_F(BatchSwap, EveryMatchingVehicleOfEveryScenarioIsSwappedAsOneEntry) {
    const auto before = test::snapshot(scenarios());
    // Every coal hopper of the route becomes a sludge-free coach: wagons for wagons.
    const SwapRules r = readRules("provider,product,blueprint,stock\n"
                                  "DemoRail,Class66Pack,RailVehicles/Freight/HTA/HTA_Coal.bin," +
                                  std::string(kCoach) + "\n");
    const BatchResult done = swapByRules(*m_ctx, route(), r, fixed());
    ASSERT_TRUE(done) << done.message;
    EXPECT_GT(done.written, 3);
    EXPECT_GE(done.swapped, done.written);
    const routes::RouteEntry rt = route();
    for (const auto& s : routes::listScenarios(*m_ctx, rt)) {
        const ScenarioDocument d = openScenario(*m_ctx, rt.path / "Scenarios" / s.folder);
        for (const auto& c : d.consists)
            for (const auto& v : c.vehicles)
                EXPECT_NE(v.name, "DemoRail HTA Coal Hopper") << s.name;
    }
    const auto entries = m_ctx->journal().entries();
    EXPECT_EQ(entries.back().command, "Swap stock by rules");
    EXPECT_EQ(entries.back().files.size(), 2u * static_cast<std::size_t>(done.written));
    ASSERT_TRUE(undoEntry(m_ctx->files(), entries.back().id, false).ok);
    expectUnchanged(before);
}

TEST_F(BatchSwap, ARefusedVehicleStopsTheBatchBeforeAnyWrite) {
    const auto before = test::snapshot(scenarios());
    // A whole product of wagons for a locomotive.
    const SwapRules r =
        readRules("DemoRail,Class66Pack,*,Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Black5.bin\n");
    const BatchResult done = swapByRules(*m_ctx, route(), r, fixed());
    EXPECT_FALSE(done);
    EXPECT_NE(done.message.find("nothing was written"), std::string::npos) << done.message;
    int refused = 0;
    for (const auto& o : done.scenarios)
        for (const auto& f : o.refused) {
            EXPECT_EQ(f.reason, kLocosForWagons);
            ++refused;
        }
    EXPECT_GT(refused, 0);
    EXPECT_EQ(test::snapshot(scenarios()), before);
}

TEST_F(BatchSwap, RuleFileFaultsAreNamedByLineAndNothingIsRead) {
    std::vector<std::string> errors;
    const std::string text =
        std::string("provider,product,blueprint,stock\n") +
        "DemoRail,Class66Pack,RailVehicles\\Freight\\HTA\\HTA_Coal.xml\n" +   // line 2: three cells
        "DemoRail,,x.xml," + kCoal + "\n" +                                   // line 3: empty cell
        "\"Demo, Rail\",\"P \"\"1\"\"\",*," + kCoal + "\n" +                  // line 4: fine, quoted
        kSludge + "DemoRail\\Class66Pack\\RailVehicles\\Nothing.bin\n" +      // line 5: no stock
        kSludge + "DemoRail\\Class66Pack\\..\\..\\..\\..\\etc\\passwd.bin\n"; // line 6: leads out
    EXPECT_FALSE(readSwapRules(*m_ctx, rules(text), errors));
    ASSERT_EQ(errors.size(), 4u);
    for (const auto& [i, line] : std::vector<std::pair<int, int>>{{0, 2}, {1, 3}, {2, 5}, {3, 6}})
        EXPECT_NE(errors[i].find("line " + std::to_string(line) + ":"), std::string::npos) << errors[i];
    EXPECT_NE(errors[0].find("rules.csv"), std::string::npos);
    EXPECT_NE(errors[3].find("leads out"), std::string::npos) << errors[3];

    errors.clear();
    const SwapRules quoted = readRules("\"Demo, Rail\",\"P \"\"1\"\"\",*," + std::string(kCoal) + "\r\n");
    ASSERT_EQ(quoted.rules.size(), 1u);
    EXPECT_EQ(quoted.rules[0].provider, "Demo, Rail");
    EXPECT_EQ(quoted.rules[0].product, "P \"1\"");
    EXPECT_FALSE(readSwapRules(*m_ctx, rules("# nothing but a comment\n\n"), errors));
    EXPECT_FALSE(readSwapRules(*m_ctx, m_work.path() / "absent.csv", errors));
    EXPECT_NE(errors.back().find("absent.csv"), std::string::npos);
}

TEST_F(BatchSwap, AScenarioThatCannotBeReadStopsTheBatchAndIsNamed) {
    const SwapRules r = readRules(std::string(kSludge) + kCoal + "\n");
    const routes::RouteEntry rt = route();
    const auto list = routes::listScenarios(*m_ctx, rt);
    ASSERT_GT(list.size(), 2u);
    const fs::path broken = rt.path / "Scenarios" / list[1].folder / "Scenario.bin";
    {
        std::ofstream(broken, std::ios::binary | std::ios::trunc) << "SERZ\x01\x02 not a document";
        const auto before = test::snapshot(scenarios());
        const BatchResult done = swapByRules(*m_ctx, rt, r, fixed());
        EXPECT_FALSE(done);
        EXPECT_NE(done.message.find(broken.string()), std::string::npos) << done.message;
        EXPECT_NE(done.message.find("before anything was written"), std::string::npos) << done.message;
        EXPECT_EQ(test::snapshot(scenarios()), before);
    }
    // A pipe in place of the document is named too, and never opened (it would hang).
    fs::remove(broken);
    ASSERT_EQ(::mkfifo(broken.c_str(), 0600), 0);
    const BatchResult piped = swapByRules(*m_ctx, rt, r, fixed());
    EXPECT_FALSE(piped);
    EXPECT_NE(piped.message.find(broken.string()), std::string::npos) << piped.message;
}

TEST_F(BatchSwap, AFailedWritePutsBackWhatTheBatchHadWritten) {
    const auto before = test::snapshot(scenarios());
    const SwapRules r =
        readRules("DemoRail,Class66Pack,RailVehicles/Freight/HTA/HTA_Coal.bin," + std::string(kCoach) + "\n");
    // Three documents go through whole, the fourth write finds the disk full.
    test::FaultyFiles faulty(WriteStep::Write, std::errc::no_space_on_device, 3);
    m_ctx->files().setFileOps(&faulty);
    const BatchResult done = swapByRules(*m_ctx, route(), r, fixed());
    m_ctx->files().setFileOps(nullptr);
    EXPECT_FALSE(done);
    EXPECT_NE(done.message.find("put back"), std::string::npos) << done.message;
    expectUnchanged(before);
    for (const auto& [name, bytes] : test::snapshot(scenarios()))
        EXPECT_EQ(name.find("velmora-tmp"), std::string::npos) << name;
}

TEST_F(BatchSwap, AllScenariosByNameKeepsTheFirstVehicleTest) {
    const auto before = test::snapshot(scenarios());
    // Wagons by name: the test looks at each document's first vehicle, a locomotive, and refuses.
    const BatchResult wagons =
        swapInAllScenarios(*m_ctx, route(), "DemoRail HTA Coal Hopper", stock(kCoach), fixed());
    EXPECT_FALSE(wagons);
    EXPECT_NE(wagons.message.find(kWagonsForLocos), std::string::npos) << wagons.message;
    EXPECT_EQ(test::snapshot(scenarios()), before);

    // A locomotive for a locomotive goes through in every scenario that runs it.
    const routes::RouteEntry rt = route();
    const ScenarioDocument first =
        openScenario(*m_ctx, rt.path / "Scenarios" / routes::listScenarios(*m_ctx, rt)[0].folder);
    ASSERT_FALSE(first.consists.empty());
    const std::string loco = first.consists[0].vehicles[0].name;
    const ChosenStock black5 = stock("Heritage/SteamDays/RailVehicles/Steam/Black5/Engine/Black5.bin");
    const BatchResult done = swapInAllScenarios(*m_ctx, rt, loco, black5, fixed());
    ASSERT_TRUE(done) << done.message;
    EXPECT_EQ(done.message, kAllScenariosSaved);
    EXPECT_GT(done.written, 1);
    for (const auto& s : routes::listScenarios(*m_ctx, rt)) {
        const ScenarioDocument d = openScenario(*m_ctx, rt.path / "Scenarios" / s.folder);
        for (const auto& c : d.consists)
            for (const auto& v : c.vehicles)
                EXPECT_NE(v.name, loco) << s.name;
    }
    const auto entries = m_ctx->journal().entries();
    EXPECT_EQ(entries.back().command, "Swap in ALL Scenarios for this route");
    ASSERT_TRUE(undoEntry(m_ctx->files(), entries.back().id, false).ok);
    expectUnchanged(before);

    const BatchResult none = swapInAllScenarios(*m_ctx, rt, "No such wagon", black5, fixed());
    EXPECT_FALSE(none);
    EXPECT_NE(none.message.find("No vehicle is named"), std::string::npos);
}

} // namespace
