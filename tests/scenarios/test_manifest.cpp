// `scenario show --json` on every scenario the demo install's manifest lists agrees with what
// the manifest says of it: folder, name, class, season, weather, and each consist's vehicles with
// their blueprints, reskins, numbers, flips, loads and missing stock.

#include "scenariofixture.h"

#include "cli.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <set>
#include <sstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

struct Manifest : test::ScenarioTest<Manifest> {
    static constexpr const char* kName = "scenario-manifest";
};

QJsonObject readJson(const std::string& text) {
    return QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size()))).object();
}

std::string str(const QJsonValue& v) { return v.toString().toStdString(); }

TEST_F(Manifest, ShowAgreesWithEveryListedScenario) {
    const QJsonObject manifest = readJson(test::slurp(s_dir / "rw" / "manifest.json"));
    // What the manifest says is missing, by the Scenario.bin that names it.
    std::map<std::string, std::set<std::string>> missing;
    for (const auto& f : manifest["faults"].toArray()) {
        const QJsonObject fault = f.toObject();
        if (str(fault["kind"]) == "missing-stock" && iendsWith(str(fault["referencedBy"]), "Scenario.bin"))
            missing[str(fault["referencedBy"])].insert(toLowerAscii(str(fault["reference"])));
    }
    int shown = 0;
    for (const auto& r : manifest["routes"].toArray()) {
        const QJsonObject route = r.toObject();
        if (route["packed"].toBool())
            continue;
        for (const auto& s : route["scenarios"].toArray()) {
            const QJsonObject scenario = s.toObject();
            if (scenario.contains("properties") && !scenario["properties"].toBool())
                continue; // no scenario to the list, only a folder among the invalid ones
            const std::string folder = str(scenario["folder"]);
            SCOPED_TRACE(str(scenario["name"]) + " (" + folder + ")");
            std::ostringstream out, err;
            const int code = cli::run({"--home", (s_dir / "home").string(), "--railworks", (s_dir / "rw").string(),
                                       "scenario", "show", str(route["folder"]), folder, "--json"},
                                      out, err);
            const QJsonObject shownJson = readJson(out.str());
            ASSERT_FALSE(shownJson.isEmpty()) << err.str();
            ++shown;
            EXPECT_EQ(shownJson.keys(), (QStringList{"class", "consists", "folder", "name", "season", "startTime", "weather"}));
            EXPECT_EQ(str(shownJson["folder"]), folder);
            EXPECT_EQ(str(shownJson["class"]), str(scenario["class"]));
            EXPECT_EQ(str(shownJson["name"]), utf8FromDocument(DecodedChars(str(scenario["name"]))));

            const std::string bin = "Content/Routes/" + str(route["folder"]) + "/Scenarios/" + folder + "/Scenario.bin";
            std::set<std::string> missingShown;
            for (const auto& c : shownJson["consists"].toArray()) {
                const QJsonObject consist = c.toObject();
                EXPECT_EQ(consist.keys(), (QStringList{"index", "playerDriven", "service", "serviceClass", "vehicles"}));
                for (const auto& v : consist["vehicles"].toArray()) {
                    const QJsonObject vehicle = v.toObject();
                    EXPECT_EQ(vehicle.size(), 12);
                    EXPECT_TRUE(iendsWith(str(vehicle["blueprint"]), ".xml"));
                    if (vehicle["missing"].toBool())
                        missingShown.insert(toLowerAscii(str(vehicle["blueprint"])));
                }
            }
            EXPECT_EQ(missingShown, missing[bin]);
            // Field by field, where the manifest records the scenario's fields and stock.
            if (scenario.contains("consists") && str(scenario["class"]) != "eTemplateScenarioClass") {
                EXPECT_EQ(str(shownJson["season"]), str(scenario["season"]));
                const QJsonObject weather = shownJson["weather"].toObject(), expectWeather = scenario["weather"].toObject();
                for (const char* key : {"provider", "product", "blueprint"})
                    EXPECT_EQ(str(weather[key]), str(expectWeather[key])) << key;
                const QJsonArray consists = shownJson["consists"].toArray(), expected = scenario["consists"].toArray();
                ASSERT_EQ(consists.size(), expected.size());
                for (qsizetype i = 0; i < consists.size(); ++i) {
                    const QJsonObject c = consists[i].toObject(), e = expected[i].toObject();
                    EXPECT_EQ(c["playerDriven"].toBool(), e["playerDriven"].toBool()) << i;
                    const QJsonArray vehicles = c["vehicles"].toArray(), expectVehicles = e["vehicles"].toArray();
                    ASSERT_EQ(vehicles.size(), expectVehicles.size()) << i;
                    for (qsizetype k = 0; k < vehicles.size(); ++k) {
                        const QJsonObject v = vehicles[k].toObject(), ev = expectVehicles[k].toObject();
                        SCOPED_TRACE("consist " + std::to_string(i) + " vehicle " + std::to_string(k));
                        for (const char* key : {"name", "provider", "product", "blueprint", "number"})
                            EXPECT_EQ(str(v[key]), str(ev[key])) << key;
                        for (const char* key : {"flipped", "preloaded", "missing"})
                            EXPECT_EQ(v[key].toBool(), ev[key].toBool()) << key;
                        EXPECT_EQ(v["reskin"].isObject(), ev["reskin"].isObject());
                        if (ev["reskin"].isObject()) {
                            EXPECT_EQ(str(v["reskin"].toObject()["blueprint"]), str(ev["reskin"].toObject()["blueprint"]));
                        }
                    }
                }
            }
            EXPECT_EQ(code, missing[bin].empty() ? 0 : 1) << err.str();
            if (str(scenario["class"]) == "eTemplateScenarioClass") {
                EXPECT_TRUE(shownJson["consists"].toArray().isEmpty());
            }
        }
    }
    EXPECT_GT(shown, 5);
}

} // namespace
