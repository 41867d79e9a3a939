// About and `velmora-cli version` share one text: the version from the build, the licence and
// the libraries that ship in the program.

#include "velmora/core/about.h"
#include "velmora/core/version.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

using namespace velmora;

TEST(About, NamesVersionLicenceAndShippedLibraries) {
    const AboutInfo info = aboutInfo();
    EXPECT_EQ(info.version, std::to_string(Version::major) + "." + std::to_string(Version::minor) + "." +
                                std::to_string(Version::revision));
    EXPECT_FALSE(info.licence.empty());
    std::set<std::string> names;
    for (const auto& [library, version] : info.libraries) {
        names.insert(library);
        EXPECT_TRUE(std::regex_search(version, std::regex("^[0-9]+\\.[0-9]+"))) << library << ": " << version;
    }
    EXPECT_TRUE(names.count("Qt"));
    EXPECT_TRUE(names.count("libzip"));
    EXPECT_FALSE(names.count("GoogleTest")); // test tools do not ship

    const std::string text = aboutText(info);
    EXPECT_EQ(text.rfind("Velmora " + info.version + "\n", 0), 0u);
    EXPECT_NE(text.find("Licence: " + info.licence + "\n"), std::string::npos);
    for (const auto& [library, version] : info.libraries)
        EXPECT_NE(text.find("  " + library + " " + version + "\n"), std::string::npos) << library;
}

TEST(About, TheVersionIsTheProjectVersion) {
    std::ifstream in(VELMORA_SOURCE_DIR "/CMakeLists.txt");
    std::stringstream cmake;
    cmake << in.rdbuf();
    std::smatch m;
    const std::string text = cmake.str();
    ASSERT_TRUE(std::regex_search(text, m, std::regex("project\\(Velmora VERSION ([0-9.]+)")));
    EXPECT_EQ(m[1].str(), Version::text);
}
