// A consist's start time, the start speeds and the trigger distance, changed in the scenario text
// and then saved: each reaches the right consist, the others stay as they were, and what the
// editor refuses is refused in its own words.

#include "scenariofixture.h"

#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/scenariosave.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

struct ConsistFields : test::ScenarioTest<ConsistFields> {
    static constexpr const char* kName = "scenario-consist-fields";
    // The consists by role in the demo's scenarios: driven, AI, loose.
    static constexpr int kDriven = 0, kAi = 1, kLoose = 2;
};

// The text of consist i's slice.
std::string slice(const ScenarioDocument& d, int i) {
    const std::size_t from = d.consists[static_cast<std::size_t>(i)].start;
    const std::size_t to = static_cast<std::size_t>(i) + 1 < d.consists.size() ? d.consists[static_cast<std::size_t>(i) + 1].start
                                                                                : d.scenarioText.size();
    return d.scenarioText.substr(from, to - from);
}

TEST_F(ConsistFields, AStartTimeMovesOnlyItsConsist) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    ASSERT_EQ(d.drivenConsist, kDriven);
    const std::string driven = slice(d, kDriven);
    EXPECT_EQ(setConsistStartTime(d, kAi, "0930"), "");
    EXPECT_NE(slice(d, kAi).find(">34200.0000<"), std::string::npos);
    EXPECT_EQ(slice(d, kDriven), driven);
    EXPECT_EQ(d.consists[kAi].vehicles.front().startTime, "0930");
    // The editor's refusals.
    EXPECT_EQ(setConsistStartTime(d, kAi, "2401"), kTimeFormat);
    EXPECT_EQ(setConsistStartTime(d, kAi, "930"), kTimeFormat);
    EXPECT_EQ(setConsistStartTime(d, 99, "0930"), kNoConsist);
    EXPECT_NE(setConsistStartTime(d, kLoose, "0930").find("no service"), std::string::npos);
}

TEST_F(ConsistFields, SpeedsOfTheDrivenAndOfAnAiConsist) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    const ConsistValue driven = drivenStartSpeed(d);
    ASSERT_TRUE(driven.ok()) << driven.error;
    EXPECT_EQ(driven.value, 0.0);
    // 30 mph as the editor converts it.
    EXPECT_EQ(setDrivenStartSpeed(d, 30 / kMphPerMetreSecond), "");
    EXPECT_NEAR(*drivenStartSpeed(d).value, 13.3929, 1e-3);
    // The AI consist has its own; the driven and loose ones are refused there.
    EXPECT_EQ(setAiStartSpeed(d, kAi, 5), "");
    EXPECT_EQ(aiStartSpeed(d, kAi).value, 5.0);
    EXPECT_EQ(aiStartSpeed(d, kDriven).error, kDrivenSelected);
    EXPECT_EQ(aiStartSpeed(d, kLoose).error, kLooseSelected);
    EXPECT_NEAR(*drivenStartSpeed(d).value, 13.3929, 1e-3); // untouched by the AI change

    // The changes reach the disk with Save, and only then.
    const fs::path folder = d.folder;
    const std::string before = xmlOf(folder);
    EXPECT_EQ(before.find(">13.39"), std::string::npos);
    ASSERT_TRUE(saveScenario(*m_ctx, d, fieldsOf(d)));
    const ScenarioDocument saved = openScenario(*m_ctx, folder);
    EXPECT_NEAR(*drivenStartSpeed(saved).value, 13.3929, 1e-3);
    EXPECT_EQ(aiStartSpeed(saved, kAi).value, 5.0);
}

TEST_F(ConsistFields, TheTriggerDistanceIsKeptSquared) {
    const fs::path folder = copyOf();
    ScenarioDocument d = openScenario(*m_ctx, folder);
    ASSERT_TRUE(d.ok()) << d.error;
    // Written by an earlier version: no trigger at all.
    EXPECT_EQ(triggerDistance(d, kAi).error, kNoTriggerOption);
    // Give the AI consist one of 100 m, as later versions write it.
    std::string xml = xmlOf(folder);
    const std::size_t ai = xml.find("<cConsist", xml.find("<cConsist") + 1);
    const std::size_t end = xml.find("<EndSpeed", ai);
    ASSERT_NE(end, std::string::npos);
    xml.insert(end, "<StartTriggerDistanceFromPlayerSquared d:type=\"sFloat32\">10000</StartTriggerDistanceFromPlayerSquared>\r\n");
    putXml(folder, xml);
    d = openScenario(*m_ctx, folder);
    EXPECT_EQ(triggerDistance(d, kAi).value, 100.0);
    EXPECT_EQ(triggerDistance(d, kDriven).error, kDrivenSelected);
    EXPECT_EQ(setTriggerDistance(d, kAi, 250), "");
    EXPECT_EQ(triggerDistance(d, kAi).value, 250.0);
    EXPECT_NE(slice(d, kAi).find(">62500<"), std::string::npos);
}

} // namespace
