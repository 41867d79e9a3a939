// A route's Provider/Product list against the products below Assets.

#include "velmora/routes/providers.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textsearch.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <random>

namespace velmora::routes {

namespace {

std::string lower(std::string t) {
    for (char& c : t)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return t;
}

std::vector<fs::path> folders(const fs::path& parent) {
    std::vector<fs::path> out;
    std::error_code ec;
    for (fs::directory_iterator it(parent, ec), end; !ec && it != end; it.increment(ec))
        if (it->is_directory(ec) && !it->is_symlink(ec))
            out.push_back(it->path());
    return out;
}

} // namespace

std::vector<ProductPair> assetProducts(AppContext& ctx) {
    std::vector<ProductPair> out;
    const auto assets = ctx.resolver.resolve(ctx.railWorks(), "Assets");
    if (!assets)
        return out;
    for (const fs::path& provider : folders(*assets))
        for (const fs::path& product : folders(provider))
            out.emplace_back(provider.filename().string(), product.filename().string());
    std::sort(out.begin(), out.end(), [](const ProductPair& a, const ProductPair& b) {
        return lower(a.first + "\\" + a.second) < lower(b.first + "\\" + b.second);
    });
    return out;
}

std::vector<std::string> missingProductFolders(AppContext& ctx, const RouteEntry& route) {
    std::vector<std::string> out;
    const auto assets = ctx.resolver.resolve(ctx.railWorks(), "Assets");
    for (const auto& [provider, product] : routeProviders(ctx, route))
        if (!assets || !ctx.resolver.resolve(*assets, provider + "\\" + product))
            out.push_back(provider + "\\" + product);
    return out;
}

std::string preloadEntries(const std::string& header, std::vector<std::string> pairs) {
    std::stable_sort(pairs.begin(), pairs.end(), [&](const std::string& a, const std::string& b) { return lower(a) < lower(b); });
    pairs.erase(std::unique(pairs.begin(), pairs.end(), [&](const std::string& a, const std::string& b) { return lower(a) == lower(b); }),
                pairs.end());
    static thread_local std::mt19937 generator{std::random_device{}()};
    std::string out;
    for (const std::string& pair : pairs) {
        const std::size_t bar = pair.find('|');
        std::string provider = pair.substr(0, bar), product = bar == std::string::npos ? std::string() : pair.substr(bar + 1);
        ReplaceApos(provider);
        ReplaceApos(product);
        const long id = 10000000 + static_cast<long>(std::uniform_real_distribution<double>(0.0, 1.0)(generator) * 2e7);
        std::string entry = header;
        for (const auto& [token, by] : {std::pair<std::string, std::string>{"xxxxxxxx", std::to_string(id)},
                                        {"aaaaaa", provider}, {"bbbbbb", product}})
            for (std::size_t p = entry.find(token); p != std::string::npos; p = entry.find(token, p + by.size()))
                entry.replace(p, token.size(), by);
        out += entry;
    }
    return out;
}

EditReport updateProviders(AppContext& ctx, const RouteEntry& route, const std::vector<ProductPair>& pairs, bool dryRun) {
    EditReport report;
    const auto file = ctx.resolver.resolve(route.path, "RouteProperties.xml");
    std::string text = file ? ReadTextFile(*file) : std::string();
    if (text.empty()) {
        report.message = (route.path / "RouteProperties.xml").string() + ": cannot be read, or is empty; nothing was changed.";
        return report;
    }
    const std::size_t open = InStr(1, text, "<RBlueprintSetPreLoad>", Match::Binary);
    const std::size_t close = open ? InStr(open, text, "</RBlueprintSetPreLoad>", Match::Binary) : 0;
    if (!close) {
        report.message = file->string() + ": holds no <RBlueprintSetPreLoad> list; nothing was changed.";
        return report;
    }
    std::string error;
    const std::string header = readTemplate(ctx, "ProvHeader.txt", error);
    if (header.empty()) {
        report.message = error;
        return report;
    }
    std::vector<std::string> joined;
    for (const auto& [provider, product] : pairs) {
        joined.push_back(provider + "|" + product);
        report.lines.push_back(file->string() + ": " + provider + "\\" + product);
    }
    const std::size_t from = open - 1 + std::string_view("<RBlueprintSetPreLoad>").size();
    // The entries start on a line of their own, as the template's lines do.
    const std::string lineBreak = text.find("\r\n") != std::string::npos ? "\r\n" : "\n";
    text.replace(from, close - 1 - from, lineBreak + preloadEntries(header, joined) + "\t");
    report.count = pairs.size();
    report.files.push_back(*file);
    report.ok = true;
    if (dryRun)
        return report;
    JournalCommand entry(&ctx.journal(), "Update Providers: " + route.name);
    const WriteResult w = ctx.files().write(*file, text);
    if (!w) {
        report.ok = false;
        report.message = w.message;
        return report;
    }
    report.message = "RouteProperties.xml now lists " + std::to_string(pairs.size()) + " Provider/Product pair(s).";
    return report;
}

} // namespace velmora::routes
