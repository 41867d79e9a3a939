// The editor's vehicle and consist commands on a demo scenario: each changes what it names and
// nothing else, refuses in the editor's words, and reaches the disk only with Save.

#include "scenariofixture.h"

#include "velmora/scenarios/consistedit.h"
#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/scenariosave.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::scenarios;

namespace {

struct ConsistEdit : test::ScenarioTest<ConsistEdit> {
    static constexpr const char* kName = "scenario-consist-edit";
    // O'Connor's coal run: the driven train, an AI train, a loose rake.
    static constexpr int kDriven = 0, kAi = 1, kLoose = 2;
};

int count(const std::string& text, const std::string& what) {
    int n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

TEST_F(ConsistEdit, NumbersFlipsAndLoads) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    const std::string before = d.scenarioText;
    const std::string untouched = d.consists[kDriven].vehicles[3].number;
    EXPECT_EQ(changeNumbers(d, kDriven, {1, 2}, "310100", [] { return 0.5; }), "");
    EXPECT_EQ(d.consists[kDriven].vehicles[1].number, "310100");
    EXPECT_EQ(d.consists[kDriven].vehicles[2].number, "310501"); // 999 * 0.5 + 2, as "000"
    EXPECT_EQ(d.consists[kDriven].vehicles[3].number, untouched);
    EXPECT_EQ(changeNumbers(d, kDriven, {}, "1"), "You have not selected an item to renumber?");

    // Flipping twice gives the text back as it was.
    const std::string numbered = d.scenarioText;
    EXPECT_EQ(flipVehicles(d, kAi, {0, 4}), "");
    EXPECT_EQ(d.consists[kAi].vehicles[0].flipped, "1");
    EXPECT_EQ(d.consists[kAi].vehicles[4].flipped, "0");
    EXPECT_EQ(flipVehicles(d, kAi, {0, 4}), "");
    EXPECT_EQ(d.scenarioText, numbered);

    // The locomotive has nothing to load: Load stops there, the wagons before it stay loaded.
    int loadable = -1, empty = -1;
    for (int v = 0; v < static_cast<int>(d.consists[kAi].vehicles.size()); ++v)
        (d.consists[kAi].vehicles[static_cast<std::size_t>(v)].loadable ? loadable : empty) = v;
    ASSERT_GE(loadable, 0);
    ASSERT_GE(empty, 0);
    EXPECT_EQ(loadVehicles(d, kAi, {loadable}, false), "");
    EXPECT_EQ(d.consists[kAi].vehicles[static_cast<std::size_t>(loadable)].preloaded, "eFalse");
    EXPECT_EQ(loadVehicles(d, kAi, {loadable, empty}, true),
              d.consists[kAi].vehicles[static_cast<std::size_t>(empty)].name + " is not a loadable vehicle");
    EXPECT_EQ(d.consists[kAi].vehicles[static_cast<std::size_t>(loadable)].preloaded, "eTrue");
    EXPECT_NE(d.scenarioText, before);
}

TEST_F(ConsistEdit, DuplicateAndDeleteAVehicle) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    const std::string before = d.scenarioText;
    const auto vehicles = d.consists[kAi].vehicles.size();
    const std::string number = d.consists[kAi].vehicles[0].number; // "66 nnn"
    EXPECT_EQ(duplicateVehicle(d, kAi, 0), "");
    ASSERT_EQ(d.consists[kAi].vehicles.size(), vehicles + 1);
    EXPECT_EQ(d.consists[kAi].vehicles[1].name, d.consists[kAi].vehicles[0].name);
    std::string digits;
    for (char c : number)
        if (c != ' ')
            digits += c;
    EXPECT_EQ(d.consists[kAi].vehicles[1].number, std::to_string(std::stol(digits) + 3));
    // Deleting the copy gives the document back.
    EXPECT_EQ(deleteVehicle(d, kAi, 1), "");
    EXPECT_EQ(d.scenarioText, before);
    EXPECT_EQ(deleteVehicle(d, kAi, 99), "You have not selected an item to delete?");
    EXPECT_EQ(duplicateVehicle(d, 99, 0), "You have not selected an item to duplicate?");
}

TEST_F(ConsistEdit, RenameReclassDriveAndDeleteConsists) {
    ScenarioDocument d = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    const std::string old = d.consists[kAi].serviceName;
    ASSERT_NE(d.propertiesText.find(">" + old + "<"), std::string::npos);
    EXPECT_EQ(renameConsist(d, kAi, "Evening freight"), "");
    EXPECT_EQ(d.consists[kAi].serviceName, "Evening freight");
    EXPECT_EQ(d.propertiesText.find(">" + old + "<"), std::string::npos);
    EXPECT_NE(d.propertiesText.find(">Evening freight<"), std::string::npos);
    EXPECT_EQ(renameConsist(d, kLoose, "x"), "A Loose Consist has no name to change.");

    EXPECT_EQ(changeServiceClass(d, kAi, 4), "");
    EXPECT_EQ(d.consists[kAi].serviceClass, "4");

    EXPECT_EQ(driveConsist(d, kAi), "");
    EXPECT_EQ(d.drivenConsist, kAi);
    EXPECT_EQ(count(d.scenarioText, "<PlayerDriver d:type=\"bool\">1<"), 1);

    bool deleted = false;
    EXPECT_EQ(deleteConsist(d, kLoose, deleted), "");
    EXPECT_EQ(d.consists.size(), 2u);
    EXPECT_EQ(deleteConsist(d, kDriven, deleted), kSecondDeletion);
    EXPECT_EQ(d.consists.size(), 2u);

    // Saved, the edits are what the scenario holds when opened again.
    const fs::path folder = d.folder;
    ASSERT_TRUE(saveScenario(*m_ctx, d, fieldsOf(d)));
    const ScenarioDocument saved = openScenario(*m_ctx, folder);
    ASSERT_EQ(saved.consists.size(), 2u);
    EXPECT_EQ(saved.consists[kAi].serviceName, "Evening freight");
    EXPECT_EQ(saved.drivenConsist, kAi);
}

TEST_F(ConsistEdit, ALooseConsistIsSavedAndInsertedElsewhere) {
    ScenarioDocument from = openScenario(*m_ctx, copyOf());
    ASSERT_TRUE(from.ok()) << from.error;
    std::string refused;
    EXPECT_EQ(looseConsistText(from, kAi, refused), "");
    EXPECT_EQ(refused, kNotLoose);
    refused.clear();
    const std::string loose = looseConsistText(from, kLoose, refused);
    ASSERT_EQ(refused, "");
    EXPECT_EQ(loose.rfind("<cConsist d", 0), 0u);
    EXPECT_EQ(loose.substr(loose.size() - 11), "</cConsist>");

    ScenarioDocument into = openScenario(*m_ctx, copyOf("Free roam"));
    ASSERT_TRUE(into.ok()) << into.error;
    const std::size_t consists = into.consists.size();
    const std::string before = into.scenarioText;
    EXPECT_EQ(insertLooseConsist(into, "no consist here"), "The file does not hold one saved Loose Consist.");
    EXPECT_EQ(insertLooseConsist(into, loose + loose), "The file does not hold one saved Loose Consist.");
    EXPECT_EQ(into.scenarioText, before);
    EXPECT_EQ(insertLooseConsist(into, loose), "");
    ASSERT_EQ(into.consists.size(), consists + 1);
    // Behind the first consist, with the rake's vehicles.
    EXPECT_EQ(into.consists[1].serviceName, "Loose Consist");
    EXPECT_EQ(into.consists[1].vehicles.size(), from.consists[kLoose].vehicles.size());
    const fs::path folder = into.folder;
    ASSERT_TRUE(saveScenario(*m_ctx, into, fieldsOf(into)));
    EXPECT_EQ(openScenario(*m_ctx, folder).consists.size(), consists + 1);
}

} // namespace
