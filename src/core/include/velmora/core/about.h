#pragma once
// What the program is: its name, version, licence and the libraries it ships with. One text
// for the About screen and for `velmora-cli version`.

#include <string>
#include <utility>
#include <vector>

namespace velmora {

struct AboutInfo {
    std::string name;
    std::string version;
    std::string licence;
    // Library and its version: as built against, and as loaded where the two can differ.
    std::vector<std::pair<std::string, std::string>> libraries;
};

AboutInfo aboutInfo();
// The lines shown by About and printed by the command line, ending in a line feed.
std::string aboutText(const AboutInfo& info = aboutInfo());

} // namespace velmora
