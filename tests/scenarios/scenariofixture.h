#pragma once
// A demo install generated once for the suite; each test works on its own copy of one of its
// scenario folders, so that saves and hostile edits never meet.

#include "../common/demofixture.h"
#include "../core/tempdir.h"

#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/routes/routes.h"

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace velmora::test {

inline std::map<std::string, std::string> snapshot(const std::filesystem::path& root) {
    std::map<std::string, std::string> files;
    for (const auto& e : std::filesystem::recursive_directory_iterator(root))
        if (e.is_regular_file())
            files[std::filesystem::relative(e.path(), root).generic_string()] = slurp(e.path());
    return files;
}

// A text's lines, without their line feeds.
inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

template <typename Suite> class ScenarioTest : public DemoInstallTest<Suite> {
protected:
    // A copy of the route's scenario of that name (or the first standard one), in a fresh folder.
    std::filesystem::path copyOf(const std::string& name = "O'Connor's coal run") {
        const auto routes = routes::listRoutes(*this->m_ctx);
        for (const auto& r : routes)
            for (const auto& s : routes::listScenarios(*this->m_ctx, r))
                if (s.name == name) {
                    const auto to = m_work.path() / s.folder;
                    std::filesystem::copy(r.path / "Scenarios" / s.folder, to, std::filesystem::copy_options::recursive);
                    return to;
                }
        ADD_FAILURE() << "no scenario " << name;
        return {};
    }
    // The scenario text of a folder, decoded.
    static std::string xmlOf(const std::filesystem::path& folder) {
        std::string xml;
        EXPECT_TRUE(binToXmlText(folder / "Scenario.bin", xml));
        return xml;
    }
    // Scenario.bin made from XML text.
    static void putXml(const std::filesystem::path& folder, const std::string& xml) {
        std::string bin;
        ASSERT_TRUE(xmlTextToBin(xml, bin));
        std::ofstream(folder / "Scenario.bin", std::ios::binary | std::ios::trunc) << bin;
    }
    TempDir m_work;
};

} // namespace velmora::test
