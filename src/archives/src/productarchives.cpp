#include "velmora/archives/productarchives.h"

#include "velmora/archives/zipreader.h"

#include "velmora/core/paths.h"


#include <algorithm>
#include <set>

namespace velmora::archives {

namespace {

// A path below a product folder in the form archive entries are compared in.
std::string entryKey(std::string_view path) {
    std::string key;
    for (const auto& part : splitDocumentPath(path)) {
        if (!key.empty())
            key += '/';
        key += foldName(part);
    }
    return key;
}

} // namespace

struct ProductArchives::Product {
    std::vector<std::pair<fs::path, std::set<std::string>>> archives; // in name order
};

ProductArchives::ProductArchives(fs::path assets, const PathResolver& resolver)
    : m_assets(std::move(assets)), m_resolver(resolver) {}

ProductArchives::~ProductArchives() = default;

const ProductArchives::Product& ProductArchives::product(const std::string& provider, const std::string& product) const {
    const std::string key = foldName(provider) + "\\" + foldName(product);
    std::lock_guard lock(m_mutex);
    auto& slot = m_products[key];
    if (slot)
        return *slot;
    slot = std::make_unique<Product>();
    const auto folder = m_resolver.resolve(m_assets, provider + "\\" + product);
    if (!folder)
        return *slot;
    std::vector<fs::path> files;
    std::error_code ec;
    for (fs::directory_iterator it(*folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (name.size() > 3 && foldName(name.substr(name.size() - 3)) == ".ap" && it->is_regular_file(ec))
            files.push_back(it->path());
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        ZipReader zip;
        if (!zip.open(file))
            continue;
        std::set<std::string> keys;
        for (const auto& e : zip.entries())
            keys.insert(entryKey(e.name));
        slot->archives.emplace_back(file, std::move(keys));
    }
    return *slot;
}

std::optional<fs::path> ProductArchives::find(std::string_view relative) const {
    const std::vector<std::string> parts = splitDocumentPath(relative);
    if (parts.size() < 3)
        return std::nullopt;
    std::string inside;
    for (std::size_t i = 2; i < parts.size(); ++i)
        inside += (i > 2 ? "/" : "") + parts[i];
    const std::string key = entryKey(inside);
    for (const auto& [file, keys] : product(parts[0], parts[1]).archives)
        if (keys.count(key))
            return file;
    return std::nullopt;
}

} // namespace velmora::archives
