#include "velmora/core/installinfo.h"

#include "velmora/core/services.h"

#include <algorithm>

namespace velmora {

namespace fs = std::filesystem;

namespace {
std::vector<std::string> subfolders(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    for (auto e = fs::directory_iterator(folder, ec); !ec && e != fs::directory_iterator(); e.increment(ec)) {
        std::error_code de;
        if (e->is_directory(de))
            names.push_back(e->path().filename().string());
    }
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return toLowerAscii(a) < toLowerAscii(b); });
    return names;
}

std::string decodeEntities(std::string_view s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '&') {
            static const std::pair<const char*, char> entities[] = {
                {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&apos;", '\''}, {"&quot;", '"'}};
            bool done = false;
            for (auto [name, ch] : entities) {
                std::string_view n = name;
                if (s.substr(i, n.size()) == n) {
                    out += ch;
                    i += n.size() - 1;
                    done = true;
                    break;
                }
            }
            if (done)
                continue;
        }
        out += s[i];
    }
    return out;
}
} // namespace

std::string englishDisplayName(std::string_view xml) {
    std::size_t start = xml.find("<DisplayName");
    if (start == std::string_view::npos)
        return {};
    std::size_t english = xml.find("<English", start);
    if (english == std::string_view::npos)
        return {};
    std::size_t gt = xml.find('>', english);
    if (gt == std::string_view::npos || xml[gt - 1] == '/')
        return {};
    std::size_t end = xml.find("</English>", gt);
    if (end == std::string_view::npos)
        return {};
    return decodeEntities(xml.substr(gt + 1, end - gt - 1));
}

InstallSummary summarizeInstall(const fs::path& root, const PathResolver& resolver) {
    InstallSummary s;
    s.root = root;
    s.hasExecutable = resolver.exists(root, "RailWorks.exe");
    if (auto assets = resolver.resolve(root, "Assets")) {
        for (const auto& provider : subfolders(*assets))
            for (const auto& product : subfolders(*assets / provider))
                s.products.push_back({provider, product});
    }
    if (auto routes = resolver.resolve(root, "Content\\Routes")) {
        for (const auto& folder : subfolders(*routes)) {
            RouteEntry r{folder, {}};
            if (auto props = resolver.resolve(*routes / folder, "RouteProperties.xml"))
                r.displayName = englishDisplayName(ReadTextFile(*props));
            s.routes.push_back(std::move(r));
        }
    }
    return s;
}

} // namespace velmora
