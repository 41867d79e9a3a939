// The commands that write, on the demo install, with every step of the write service failing in
// turn; and the journal's history and undo over whole commands from the command line.

#include "../common/demofixture.h"
#include "../core/faultyfiles.h"

#include "cli.h"

#include "velmora/assets/assetgrid.h"
#include "velmora/assets/checks.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/document.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routecheck.h"
#include "velmora/routes/routes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include <unistd.h>

using namespace velmora;
using velmora::test::FaultyFiles;
namespace fs = std::filesystem;

namespace {

constexpr WriteStep kSteps[] = {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup,
                                WriteStep::Replace};
const char* const kRoute = "51d9cc16-dbd0-b4e6-89be-9dffe0e4d6fb";

std::string slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void put(const fs::path& p, const std::string& bytes) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary | std::ios::trunc) << bytes;
}

// Every plain file below a folder with its bytes, by path relative to it.
std::map<std::string, std::string> snapshot(const fs::path& root) {
    std::map<std::string, std::string> files;
    if (!fs::exists(root))
        return files;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file())
            files[fs::relative(e.path(), root).generic_string()] = slurp(e.path());
    return files;
}

// What differs between two snapshots, for a readable failure.
std::string differences(const std::map<std::string, std::string>& a, const std::map<std::string, std::string>& b) {
    std::string out;
    for (const auto& [name, bytes] : a)
        if (!b.count(name))
            out += "gone: " + name + "\n";
        else if (b.at(name) != bytes)
            out += "changed: " + name + "\n";
    for (const auto& [name, bytes] : b)
        if (!a.count(name))
            out += "new: " + name + "\n";
    return out;
}

int run(const std::vector<std::string>& args, std::string* output = nullptr, std::string* errors = nullptr) {
    std::ostringstream out, err;
    const int code = cli::run(args, out, err);
    if (output)
        *output = out.str();
    if (errors)
        *errors = err.str();
    return code;
}

class DemoWrites : public test::DemoInstallTest<DemoWrites> {
public:
    static constexpr const char* kName = "writes";
    static void SetUpTestSuite() {
        DemoInstallTest::SetUpTestSuite();
        // Two scenery blueprints not yet offered in scenarios, for Use in Scenarios.
        for (const char* name : {"Hidden_A", "Hidden_B"}) {
            std::string xml;
            s_ok = s_ok && binToXmlText(s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Buildings/SignalBox.bin", xml);
            const auto at = xml.find("<ValidInScenarios");
            const auto gt = xml.find('>', at), lt = xml.find('<', gt);
            if (at == std::string::npos)
                s_ok = false;
            else
                xml.replace(gt + 1, lt - gt - 1, "eFalse");
            std::string bin;
            s_ok = s_ok && xmlTextToBin(xml, bin);
            put(s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Buildings" / (std::string(name) + ".bin"), bin);
        }
        s_pristine = snapshot(s_dir / "rw");
    }

protected:
    void SetUp() override {
        ASSERT_TRUE(s_ok);
        restore();
        DemoInstallTest::SetUp();
    }

    // The install as generated: later tests start from the same files.
    static void restore() {
        const auto now = snapshot(s_dir / "rw");
        for (const auto& [name, bytes] : now)
            if (!s_pristine.count(name))
                fs::remove(s_dir / "rw" / name);
        for (const auto& [name, bytes] : s_pristine)
            if (!now.count(name) || now.at(name) != bytes)
                put(s_dir / "rw" / name, bytes);
        fs::remove_all(s_dir / "home");
    }

    assets::AssetRow row(const std::string& relative) {
        assets::AssetRow r;
        EXPECT_TRUE(assets::rowForBlueprint(relative, s_dir / "rw/Assets", r)) << relative;
        return r;
    }

    static fs::path blueprint(const std::string& name) {
        return s_dir / "rw/Assets/DemoRail/Class66Pack/Scenery/Buildings" / (name + ".bin");
    }

    static inline std::map<std::string, std::string> s_pristine;
};

} // namespace

// One step of the write service fails, for each step in turn, in the middle of a save, of a batch
// store and of the route check's reports. The file being written keeps its old bytes under its
// name, nothing half-written or temporary is left anywhere, and in a batch the other files go on.
TEST_F(DemoWrites, AFailureAtEveryStepLeavesEachOriginalWhole) {
    // Old reports to be replaced.
    const auto routeList = routes::listRoutes(*m_ctx);
    const routes::RouteEntry* route = routes::findRoute(routeList, kRoute);
    ASSERT_TRUE(route);
    const auto scenarios = routes::listScenarios(*m_ctx, *route);
    const routes::RouteCheckResult check = routes::RouteCheck(*m_ctx, *route, scenarios).run({});
    for (const std::string name : {"Demo Valley Line_Assets.csv", "MissingAssets.csv"})
        put(m_ctx->reports() / name, "the old report " + name);

    for (const WriteStep step : kSteps) {
        SCOPED_TRACE(writeStepName(step));
        FaultyFiles faults(step, std::errc::no_space_on_device);
        m_ctx->files().setFileOps(&faults);

        // The editor's save of one document.
        const fs::path doc = blueprint("SignalBox");
        const std::string before = slurp(doc);
        EditorDocument opened;
        std::string xml;
        ASSERT_TRUE(openBinaryDocument(doc, m_ctx->tempFiles(), opened, xml));
        xml.replace(xml.find("eTrue"), 5, "eFalse");
        const SaveResult saved = saveBinaryDocument(m_ctx->files(), opened, xml);
        EXPECT_FALSE(saved.ok);
        EXPECT_NE(saved.message.find(doc.string()), std::string::npos) << saved.message;
        EXPECT_NE(saved.message.find("No space left on device"), std::string::npos) << saved.message;
        EXPECT_EQ(slurp(doc), before);

        // A batch store: the first blueprint fails and keeps its bytes, the second is stored.
        faults.calls.clear();
        const std::string aBefore = slurp(blueprint("Hidden_A"));
        std::vector<assets::AssetRow> rows{row("DemoRail/Class66Pack/Scenery/Buildings/Hidden_A.bin"),
                                           row("DemoRail/Class66Pack/Scenery/Buildings/Hidden_B.bin")};
        const auto problems = assets::AssetChecks(*m_ctx).useInScenarios(rows);
        ASSERT_EQ(problems.size(), 1u);
        EXPECT_NE(problems[0].find("Hidden_A.bin"), std::string::npos) << problems[0];
        EXPECT_EQ(slurp(blueprint("Hidden_A")), aBefore);
        std::string stored;
        ASSERT_TRUE(binToXmlText(blueprint("Hidden_B"), stored));
        EXPECT_NE(stored.find(">eTrue</ValidInScenarios>"), std::string::npos);

        // The reports: the first cannot be written and says so; the old one stays whole.
        faults.calls.clear();
        const routes::ReportFiles reports = routes::saveRouteReports(*m_ctx, check);
        ASSERT_EQ(reports.errors.size(), 1u);
        EXPECT_NE(reports.errors[0].find("Demo Valley Line_Assets.csv"), std::string::npos) << reports.errors[0];
        EXPECT_EQ(slurp(m_ctx->reports() / "Demo Valley Line_Assets.csv"), "the old report Demo Valley Line_Assets.csv");
        EXPECT_NE(slurp(m_ctx->reports() / "MissingAssets.csv").find("Coal_Drops"), std::string::npos);

        m_ctx->files().setFileOps(nullptr);
        for (const auto& [name, bytes] : snapshot(s_dir))
            EXPECT_EQ(name.find(".velmora-tmp"), std::string::npos) << name;
        restore();
        for (const std::string name : {"Demo Valley Line_Assets.csv", "MissingAssets.csv"})
            put(m_ctx->reports() / name, "the old report " + name);
    }
}

// A batch command from the command line is one journal entry, and one undo takes all of it back.
TEST_F(DemoWrites, HistoryAndUndoRoundTripOverWholeCommands) {
    const std::string home = (s_dir / "home").string(), rw = (s_dir / "rw").string();
    const auto before = snapshot(s_dir / "rw");
    const fs::path out = s_dir / "out";
    ASSERT_EQ(run({"--home", home, "--railworks", rw, "assets", "use-in-scenarios",
                   "DemoRail/Class66Pack/Scenery/Buildings/Hidden_A.bin",
                   "DemoRail/Class66Pack/Scenery/Buildings/Hidden_B.bin"}),
              0);
    ASSERT_EQ(run({"--home", home, "--railworks", rw, "route", "check", kRoute, "--out", out.string()}), 1);
    ASSERT_TRUE(fs::exists(out / "Demo Valley Line_Report.txt"));

    std::string text, errors;
    ASSERT_EQ(run({"--home", home, "history"}, &text), 0);
    EXPECT_EQ(text.rfind("2  ", 0), 0u) << "newest first:\n" << text;
    EXPECT_NE(text.find("route check " + std::string(kRoute) + " --out"), std::string::npos) << text;
    EXPECT_NE(text.find("assets use-in-scenarios"), std::string::npos) << text;
    ASSERT_EQ(run({"--home", home, "history", "--json"}, &text), 0);
    EXPECT_EQ(text.find("[\n  {\"entry\": 2,"), 0u) << text;

    // The newest first: the reports it made are gone from their names.
    ASSERT_EQ(run({"--home", home, "--railworks", rw, "undo"}, &text, &errors), 0) << errors;
    EXPECT_FALSE(fs::exists(out / "Demo Valley Line_Report.txt"));
    EXPECT_FALSE(fs::exists(s_dir / "home/Reports/MissingAssets.csv"));
    // Then the batch: both blueprints back byte for byte.
    ASSERT_EQ(run({"--home", home, "--railworks", rw, "undo"}, &text, &errors), 0) << errors;
    EXPECT_EQ(slurp(blueprint("Hidden_A")), before.at("Assets/DemoRail/Class66Pack/Scenery/Buildings/Hidden_A.bin"));
    EXPECT_EQ(slurp(blueprint("Hidden_B")), before.at("Assets/DemoRail/Class66Pack/Scenery/Buildings/Hidden_B.bin"));
    auto after = snapshot(s_dir / "rw");
    std::erase_if(after, [](const auto& file) { return file.first.find(".bak") != std::string::npos; });
    auto expected = before;
    expected.erase("Assets/DemoRail/Class66Pack/Blueprints.pak"); // a cache the simulator rebuilds
    EXPECT_EQ(differences(expected, after), "");

    // Nothing is left to undo; an undo shows in the history.
    EXPECT_EQ(run({"--home", home, "undo"}, nullptr, &errors), 2);
    EXPECT_NE(errors.find("there is no change left to undo"), std::string::npos) << errors;
    ASSERT_EQ(run({"--home", home, "history"}, &text), 0);
    EXPECT_NE(text.find("undo 1"), std::string::npos) << text;
    EXPECT_NE(text.find("undone by"), std::string::npos) << text;
}

TEST_F(DemoWrites, UndoRefusesChangedFilesAndFullBackupSeriesNeedYes) {
    const std::string home = (s_dir / "home").string(), rw = (s_dir / "rw").string();
    const fs::path a = blueprint("Hidden_A");
    ASSERT_EQ(run({"--home", home, "--railworks", rw, "assets", "use-in-scenarios",
                   "DemoRail/Class66Pack/Scenery/Buildings/Hidden_A.bin"}),
              0);
    const std::string stored = slurp(a);
    put(a, "changed by hand");
    std::string errors;
    EXPECT_EQ(run({"--home", home, "undo"}, nullptr, &errors), 2);
    EXPECT_NE(errors.find("Hidden_A.bin: has changed since"), std::string::npos) << errors;
    EXPECT_NE(errors.find("--force"), std::string::npos) << errors;
    EXPECT_EQ(slurp(a), "changed by hand");
    ASSERT_EQ(run({"--home", home, "undo", "--force"}, nullptr, &errors), 0) << errors;
    EXPECT_EQ(slurp(a), s_pristine.at("Assets/DemoRail/Class66Pack/Scenery/Buildings/Hidden_A.bin"));
    EXPECT_EQ(slurp(a.string() + ".bak1"), "changed by hand") << "the hand edit is kept";

    // Every backup name taken: refused without --yes, and it says why.
    const fs::path doc = blueprint("SignalBox");
    for (int n = 0; n <= 50; ++n)
        put(doc.string() + ".bak" + (n ? std::to_string(n) : ""), "old");
    const fs::path xmlFile = s_dir / "SignalBox.xml";
    ASSERT_EQ(run({"--home", home, "open", doc.string(), "--xml", xmlFile.string()}), 0);
    const std::string original = slurp(doc);
    EXPECT_EQ(run({"--home", home, "save", xmlFile.string(), "--to", doc.string()}, nullptr, &errors), 2);
    EXPECT_NE(errors.find("all 51 backup names"), std::string::npos) << errors;
    EXPECT_EQ(slurp(doc), original);
    EXPECT_EQ(run({"--home", home, "--yes", "save", xmlFile.string(), "--to", doc.string()}, nullptr, &errors), 0)
        << errors;
}
