// About and `velmora-cli version` share one text: the version from the build, the licence and
// the libraries that ship in the program.

#include "velmora/core/about.h"
#include "velmora/core/version.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
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
        // "<digits>.<digits>..." at least.
        const auto dot = version.find('.');
        EXPECT_TRUE(dot != std::string::npos && dot > 0 && dot + 1 < version.size() &&
                    std::isdigit(static_cast<unsigned char>(version[0])) &&
                    std::isdigit(static_cast<unsigned char>(version[dot + 1])))
            << library << ": " << version;
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
    std::ifstream in(VELMORA_SOURCE_DIR "/cmake/Version.cmake");
    std::stringstream cmake;
    cmake << in.rdbuf();
    const std::string text = cmake.str();
    const std::string key = "set(VELMORA_VERSION ";
    const auto at = text.find(key);
    ASSERT_NE(at, std::string::npos);
    const auto end = text.find(')', at);
    EXPECT_EQ(text.substr(at + key.size(), end - at - key.size()), Version::text);
}
