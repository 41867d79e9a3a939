#include "velmora/core/installinfo.h"

#include "velmora/core/services.h"

#include <algorithm>

namespace velmora {

namespace fs = std::filesystem;

namespace {
std::vector<std::string> subfolders(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    for (auto e = fs::directory_iterator(folder, ec); !ec && e != fs::directory_iterator(); e.increment(ec))
        if (entryKind(*e) == EntryKind::Folder)
            names.push_back(e->path().filename().string());
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return toLowerAscii(a) < toLowerAscii(b); });
    return names;
}

} // namespace

InstallSummary summarizeInstall(const fs::path& root, const PathResolver& resolver) {
    InstallSummary s;
    s.root = root;
    s.hasExecutable = resolver.exists(root, "RailWorks.exe");
    if (auto assets = resolver.resolve(root, "Assets")) {
        for (const auto& provider : subfolders(*assets))
            for (const auto& product : subfolders(*assets / provider))
                s.products.push_back({provider, product});
    }
    return s;
}

} // namespace velmora
