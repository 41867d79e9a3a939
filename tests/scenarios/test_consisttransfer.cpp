// Copying a consist into another scenario: the copy is the consist byte for byte behind the chosen
// one, the rest of the target and its properties stay as they were, the old Scenario.bin is kept
// and one undo brings it back; refused transfers and failed writes change nothing.

#include "scenariofixture.h"

#include "../core/faultyfiles.h"
#include "velmora/core/journal.h"
#include "velmora/scenarios/consisttransfer.h"
#include "velmora/scenarios/scenario.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

struct Transfer : test::ScenarioTest<Transfer> {
    static constexpr const char* kName = "scenario-transfer";
    ListedScenario listed(const fs::path& folder) {
        ListedScenario s = readScenarioText(*m_ctx, folder);
        EXPECT_TRUE(s.ok()) << s.error;
        return s;
    }
};

std::string consistText(const std::string& text, int occurrence) {
    const auto span = consistOccurrence(text, occurrence);
    return span ? text.substr(span->first, span->second - span->first) : std::string();
}

TEST(ConsistLines, TheNumberInBracketsIsTheOnlyThingRead) {
    EXPECT_EQ(occurrenceIn("[2] Coal train, 3 vehicles"), 2);
    EXPECT_EQ(occurrenceIn("  [ 12 ]"), 12);
    EXPECT_EQ(occurrenceIn("Coal train, 3 vehicles"), std::nullopt);
    EXPECT_EQ(occurrenceIn(""), std::nullopt);
    EXPECT_EQ(occurrenceIn("[] empty"), std::nullopt);
    EXPECT_EQ(occurrenceIn("[x1] letters"), std::nullopt);
    EXPECT_EQ(occurrenceIn("[3 no closing bracket"), std::nullopt);
    EXPECT_EQ(occurrenceIn("[99999999999] too long"), std::nullopt);
    // The first bracket counts, whatever follows in the line.
    EXPECT_EQ(occurrenceIn("[4] \"Caf\xE9 [7]\", 1 vehicle"), 4);
}

TEST(ConsistLines, OccurrencesOfUnclosedOrMissingConsists) {
    const std::string text = "<r><cConsist d:id=\"1\"><a/></cConsist><cConsistList/><cConsist d:id=\"2\"><b/></r>";
    EXPECT_EQ(consistCount(text), 2) << "<cConsistList is no consist";
    EXPECT_EQ(consistText(text, 1), "<cConsist d:id=\"1\"><a/></cConsist>");
    EXPECT_FALSE(consistOccurrence(text, 2)) << "not closed";
    EXPECT_FALSE(consistOccurrence(text, 0));
    EXPECT_FALSE(consistOccurrence(text, 3));
    const auto lines = consistLines(text);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "[1] Loose Consist, 0 vehicles");
    EXPECT_EQ(occurrenceIn(lines[1]), 2);
    std::string error;
    EXPECT_EQ(withConsistCopied(text, 2, text, 1, "source", "target", error), "");
    EXPECT_EQ(error, "source holds 2 consists; there is no consist [2].");
}

TEST_F(Transfer, ListsNameEachConsistWithItsNumberVehiclesAndFirstVehicle) {
    const fs::path folder = copyOf();
    ListedScenario s = listed(folder);
    // A service name with an accent, quotes and a comma, as the simulator writes it (UTF-8).
    const std::size_t name = s.text.find("<English", s.text.find("<ServiceName>"));
    ASSERT_NE(name, std::string::npos);
    const std::size_t from = s.text.find('>', name) + 1;
    s.text.replace(from, s.text.find("</English>", from) - from, "Caf\xC3\xA9 \"Express\", O&apos;Neill");
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    const auto lines = consistLines(s.text);
    ASSERT_EQ(lines.size(), d.consists.size());
    EXPECT_EQ(lines[0].rfind("[1] Caf\xE9 \"Express\", O'Neill, ", 0), 0u) << lines[0];
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(occurrenceIn(lines[i]), static_cast<int>(i) + 1);
        const Consist& c = d.consists[i];
        EXPECT_NE(lines[i].find(std::to_string(c.vehicles.size()) + " vehicle"), std::string::npos) << lines[i];
        if (!c.vehicles.empty()) {
            EXPECT_NE(lines[i].find("first: " + c.vehicles.front().name), std::string::npos) << lines[i];
        }
    }
    EXPECT_NE(lines[2].find("Loose Consist"), std::string::npos);
}

TEST_F(Transfer, CopyGoesBehindTheChosenConsistAndUndoTakesItBack) {
    const fs::path source = copyOf();
    const fs::path target = copyOf("Free roam");
    const auto sourceBefore = test::snapshot(source);
    const auto targetBefore = test::snapshot(target);
    const ListedScenario from = listed(source);
    ListedScenario into = listed(target);
    const std::string oldTarget = into.text;
    const int count = consistCount(oldTarget);
    ASSERT_GE(count, 2);

    const CommandResult r = transferConsist(*m_ctx, from, 2, into, 1);
    ASSERT_TRUE(r) << r.message;
    EXPECT_NE(r.message.find("Scenario.bak"), std::string::npos) << r.message;
    EXPECT_EQ(test::slurp(target / "Scenario.bak"), targetBefore.at("Scenario.bin"));
    EXPECT_EQ(test::slurp(target / "ScenarioProperties.xml"), targetBefore.at("ScenarioProperties.xml"));
    EXPECT_EQ(test::snapshot(source), sourceBefore) << "the source is only read";

    // The written document: the old one with the consist, as it was, behind consist 1.
    const std::string now = xmlOf(target);
    EXPECT_EQ(now, into.text);
    ASSERT_EQ(consistCount(now), count + 1);
    EXPECT_EQ(consistText(now, 2), consistText(from.text, 2)) << "ids, numbers and times kept";
    const auto behind = consistOccurrence(oldTarget, 1);
    EXPECT_EQ(now.substr(0, behind->second), oldTarget.substr(0, behind->second));
    EXPECT_EQ(consistText(now, 3), consistText(oldTarget, 2));
    const auto copyEnd = consistOccurrence(now, 2)->second;
    EXPECT_EQ(now.substr(copyEnd), oldTarget.substr(behind->second));
    const ScenarioDocument opened = openScenario(*m_ctx, target);
    ASSERT_TRUE(opened.ok()) << opened.error;
    EXPECT_EQ(opened.consists.size(), static_cast<std::size_t>(count + 1));

    const auto entries = m_ctx->journal().entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().command, "Transfer Selected Consist");
    ASSERT_EQ(entries.back().files.size(), 1u);
    const UndoResult u = undoEntry(m_ctx->files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_EQ(test::slurp(target / "Scenario.bin"), targetBefore.at("Scenario.bin"));
}

TEST_F(Transfer, WithinOneScenarioASecondCopyStandsBehindTheSelectedConsist) {
    const fs::path folder = copyOf();
    const ListedScenario from = listed(folder);
    ListedScenario into = listed(folder);
    ASSERT_TRUE(transferConsist(*m_ctx, from, 1, into, 1));
    const std::string now = xmlOf(folder);
    ASSERT_EQ(consistCount(now), consistCount(from.text) + 1);
    EXPECT_EQ(consistText(now, 1), consistText(from.text, 1));
    EXPECT_EQ(consistText(now, 2), consistText(from.text, 1));
    EXPECT_EQ(consistText(now, 3), consistText(from.text, 2));
    // Behind the last consist, the document's end stays as it was.
    ListedScenario again = listed(folder);
    const int last = consistCount(again.text);
    ASSERT_TRUE(transferConsist(*m_ctx, again, 3, again, last));
    const std::string end = xmlOf(folder);
    EXPECT_EQ(consistText(end, last + 1), consistText(from.text, 2));
    EXPECT_EQ(end.substr(consistOccurrence(end, last + 1)->second),
              now.substr(consistOccurrence(now, last)->second));
}

TEST_F(Transfer, IndexesPastTheEndNameTheScenarioAndWriteNothing) {
    const fs::path source = copyOf();
    const fs::path target = copyOf("Free roam");
    const auto before = test::snapshot(target);
    const ListedScenario from = listed(source);
    ListedScenario into = listed(target);
    const std::size_t entries = m_ctx->journal().entries().size();
    for (auto [n, m] : {std::pair{9, 1}, std::pair{0, 1}, std::pair{1, 9}, std::pair{1, -1}}) {
        const CommandResult r = transferConsist(*m_ctx, from, n, into, m);
        EXPECT_FALSE(r);
        const fs::path named = n == 9 || n == 0 ? source : target;
        EXPECT_NE(r.message.find(named.string()), std::string::npos) << r.message;
        EXPECT_NE(r.message.find("there is no consist ["), std::string::npos) << r.message;
        EXPECT_NE(r.message.find("Nothing was written"), std::string::npos) << r.message;
    }
    EXPECT_EQ(test::snapshot(target), before);
    EXPECT_EQ(m_ctx->journal().entries().size(), entries);
}

TEST_F(Transfer, ATargetChangedSinceItWasListedIsRefused) {
    const fs::path source = copyOf();
    const fs::path target = copyOf("Free roam");
    const ListedScenario from = listed(source);
    ListedScenario into = listed(target);
    std::string changed = into.text;
    changed.insert(consistOccurrence(changed, 1)->second, consistText(changed, 1));
    putXml(target, changed);
    const std::string written = test::slurp(target / "Scenario.bin");
    const CommandResult r = transferConsist(*m_ctx, from, 1, into, 1);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("has changed since it was listed"), std::string::npos) << r.message;
    EXPECT_EQ(test::slurp(target / "Scenario.bin"), written);

    // An unreadable target is named.
    fs::remove(target / "Scenario.bin");
    const ListedScenario gone = readScenarioText(*m_ctx, target);
    EXPECT_FALSE(gone.ok());
    EXPECT_NE(gone.error.find((target / "Scenario.bin").string()), std::string::npos) << gone.error;
}

// Each step of the write failing leaves the target's Scenario.bin whole, with no temporary file.
TEST_F(Transfer, AFailedWriteLeavesTheTargetWhole) {
    const fs::path source = copyOf();
    const fs::path target = copyOf("Free roam");
    const ListedScenario from = listed(source);
    const auto before = test::snapshot(target);
    for (WriteStep step : {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup, WriteStep::Replace}) {
        SCOPED_TRACE(writeStepName(step));
        ListedScenario into = listed(target);
        const std::string listedText = into.text;
        test::FaultyFiles faulty(step, std::errc::no_space_on_device);
        m_ctx->files().setFileOps(&faulty);
        const CommandResult r = transferConsist(*m_ctx, from, 1, into, 1);
        m_ctx->files().setFileOps(nullptr);
        EXPECT_FALSE(r);
        EXPECT_NE(r.message.find(target.string()), std::string::npos) << r.message;
        EXPECT_EQ(into.text, listedText) << "the held text stays what the file holds";
        EXPECT_EQ(test::snapshot(target), before);
    }
}

} // namespace
