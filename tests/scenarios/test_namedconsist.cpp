// "Save as Named Consist" on the demo install: a scenario's consist added to the saved consists
// the install already has, its vehicles in order, and taken back by one undo.

#include "scenariofixture.h"

#include "velmora/consists/consisttemplates.h"
#include "velmora/core/journal.h"
#include "velmora/scenarios/namedconsist.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::scenarios;
namespace cs = velmora::consists;
namespace fs = std::filesystem;

namespace {

struct NamedConsist : test::ScenarioTest<NamedConsist> {
    static constexpr const char* kName = "scenario-namedconsist";
};

} // namespace

TEST_F(NamedConsist, AScenarioConsistJoinsTheSavedOnesInOrderAndUndoTakesItBack) {
    AppContext shipped(s_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
    shipped.setRailWorksOverride(s_dir / "rw");
    const fs::path file = cs::consistTemplatesFile(shipped);
    const std::string before = test::slurp(file);
    const cs::ReadResult old = cs::readConsistTemplates(shipped);
    ASSERT_TRUE(old.ok()) << old.error;
    ASSERT_EQ(old.doc.consists.size(), 4u); // the demo's saved consists

    const ScenarioDocument d = openScenario(shipped, copyOf());
    ASSERT_TRUE(d.ok()) << d.error;
    ASSERT_FALSE(d.consists.empty());
    const Consist& consist = d.consists[0];
    ASSERT_FALSE(consist.vehicles.empty());
    const std::string name = "O'Connor's \"best\" <coal> & more";
    const cs::SaveResult r = saveAsNamedConsist(shipped, d, 0, name);
    ASSERT_TRUE(r) << r.message << ' ' << r.detail;
    EXPECT_EQ(test::slurp(r.backup), before);

    const cs::ReadResult now = cs::readConsistTemplates(shipped);
    ASSERT_TRUE(now.ok()) << now.error;
    ASSERT_EQ(now.doc.consists.size(), 5u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(now.doc.consists[i].name, old.doc.consists[i].name);
    EXPECT_EQ(now.doc.header, old.doc.header);
    const cs::ConsistTemplate& added = now.doc.consists[4];
    EXPECT_EQ(cs::shownName(added.name), name);
    ASSERT_EQ(added.entries.size(), consist.vehicles.size());
    for (std::size_t i = 0; i < added.entries.size(); ++i) {
        const Vehicle& v = consist.vehicles[i];
        EXPECT_EQ(added.entries[i].provider, v.blueprint.provider) << i;
        EXPECT_EQ(added.entries[i].product, v.blueprint.product) << i;
        EXPECT_EQ(added.entries[i].blueprintId, v.blueprint.blueprintId) << i;
        EXPECT_EQ(added.entries[i].flipped, v.flipped) << i;
        EXPECT_EQ(cs::blueprintMissing(shipped, added.entries[i]), v.missing) << i;
    }

    const auto entries = shipped.journal().entries();
    ASSERT_FALSE(entries.empty());
    const UndoResult u = undoEntry(shipped.files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_EQ(test::slurp(file), before);
}

TEST_F(NamedConsist, AConsistPastTheScenarioWritesNothing) {
    AppContext shipped(s_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
    shipped.setRailWorksOverride(s_dir / "rw");
    const fs::path file = cs::consistTemplatesFile(shipped);
    const std::string before = test::slurp(file);
    const ScenarioDocument d = openScenario(shipped, copyOf());
    const cs::SaveResult r = saveAsNamedConsist(shipped, d, d.consists.size(), "Nowhere");
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message, cs::kNotWritten);
    EXPECT_NE(r.detail.find("there is no consist"), std::string::npos);
    EXPECT_EQ(test::slurp(file), before);
}
