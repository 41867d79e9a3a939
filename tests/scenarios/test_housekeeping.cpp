// Revert to Default and Make Standard on copies of demo scenarios: what a file held before is
// kept as a numbered backup, a scenario without its default is left alone, the make-standard run
// stops at the first scenario of a class it keeps, and one undo takes a whole run back.

#include "scenariofixture.h"
#include "velmora/core/journal.h"
#include "velmora/scenarios/housekeeping.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

struct Housekeeping : test::ScenarioTest<Housekeeping> {
    static constexpr const char* kName = "scenario-housekeeping";
    static void put(const fs::path& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    }
    UndoResult undoLast() { return undoEntry(m_ctx->files(), m_ctx->journal().entries().back().id, false); }
};

TEST_F(Housekeeping, RevertPutsTheFirstBackupBackAndKeepsWhatWasThere) {
    const fs::path saved = copyOf("Free roam");
    const fs::path plain = copyOf("Timetable: morning");
    const std::string original = test::slurp(saved / "Scenario.bin");
    put(saved / "Scenario.bak", original);
    put(saved / "Scenario.bin", original + "edited since");
    const std::string edited = test::slurp(saved / "Scenario.bin");
    const auto untouched = test::snapshot(plain);

    const CommandResult r = revertToDefault(*m_ctx, {saved, plain});
    ASSERT_TRUE(r) << r.message;
    EXPECT_NE(r.message.find("1 scenario was"), std::string::npos) << r.message;
    EXPECT_NE(r.message.find("1 had no Scenario.bak"), std::string::npos) << r.message;
    EXPECT_EQ(test::slurp(saved / "Scenario.bin"), original);
    EXPECT_EQ(test::slurp(saved / "Scenario.bak"), original); // the default stays
    EXPECT_EQ(test::slurp(saved / "Scenario.bak1"), edited);  // nothing is lost
    EXPECT_EQ(test::snapshot(plain), untouched);

    ASSERT_TRUE(undoLast().ok);
    EXPECT_EQ(test::slurp(saved / "Scenario.bin"), edited);
}

TEST_F(Housekeeping, AnEmptyDefaultIsNeverPutInPlace) {
    const fs::path folder = copyOf("Free roam");
    const std::string bin = test::slurp(folder / "Scenario.bin");
    put(folder / "Scenario.bak", "");
    const CommandResult r = revertToDefault(*m_ctx, {folder});
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("Scenario.bak"), std::string::npos);
    EXPECT_EQ(test::slurp(folder / "Scenario.bin"), bin);
}

TEST_F(Housekeeping, MakeStandardChangesTheClassAndStopsAtTheFirstItKeeps) {
    const fs::path career = copyOf("Career: first turn");
    const fs::path timetable = copyOf("Timetable: morning");
    const fs::path later = copyOf("Free roam");
    const std::string careerText = test::slurp(career / "ScenarioProperties.xml");
    const std::string timetableText = test::slurp(timetable / "ScenarioProperties.xml");
    const auto laterFiles = test::snapshot(later);

    // The career command: the career scenario changes, the timetable one stops the run.
    const CommandResult r = makeStandard(*m_ctx, {career, timetable, later}, MakeStandardFrom::Career);
    ASSERT_TRUE(r) << r.message;
    EXPECT_NE(r.message.find("stopped there"), std::string::npos) << r.message;
    const std::string changed = test::slurp(career / "ScenarioProperties.xml");
    EXPECT_NE(changed.find(">eStandardScenarioClass<"), std::string::npos);
    EXPECT_EQ(changed.find("eCareerScenarioClass"), std::string::npos);
    EXPECT_EQ(test::slurp(career / "ScenarioProperties.bak"), careerText);
    EXPECT_EQ(test::slurp(timetable / "ScenarioProperties.xml"), timetableText);
    EXPECT_EQ(test::snapshot(later), laterFiles);
    ASSERT_TRUE(undoLast().ok);
    EXPECT_EQ(test::slurp(career / "ScenarioProperties.xml"), careerText);

    // The timetable command changes the timetable scenario; Scenario.bin is never touched.
    const std::string bin = test::slurp(timetable / "Scenario.bin");
    ASSERT_TRUE(makeStandard(*m_ctx, {timetable}, MakeStandardFrom::Timetable));
    EXPECT_NE(test::slurp(timetable / "ScenarioProperties.xml").find(">eStandardScenarioClass<"),
              std::string::npos);
    EXPECT_EQ(test::slurp(timetable / "Scenario.bin"), bin);
    // A missing properties file is named.
    fs::remove(later / "ScenarioProperties.xml");
    const CommandResult missing = makeStandard(*m_ctx, {later}, MakeStandardFrom::Career);
    EXPECT_FALSE(missing);
    EXPECT_NE(missing.message.find("ScenarioProperties.xml"), std::string::npos);
}

} // namespace
