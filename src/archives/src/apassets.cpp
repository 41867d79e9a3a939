#include "velmora/archives/apassets.h"

#include "velmora/archives/routenames.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::archives {

namespace {

bool contains(std::string_view text, std::string_view what) { return InStr(1, text, what, Match::Text) > 0; }

std::string backslashed(std::string text) {
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

} // namespace

std::string maskTail(std::string_view mask) { return mask.size() > 2 ? std::string(mask.substr(2)) : std::string(); }

bool entryPasses(std::string_view entryPath, const ApEntryFilter& filter) {
    const std::string path = backslashed(std::string(entryPath));
    const std::string tail = maskTail(filter.mask);
    if (tail.empty() || !iendsWith(path, tail))
        return false;
    if (!filter.rollingStockOnly || contains(path, "Interactive\\"))
        return true;
    return contains(path, "RailVehicles") && (contains(path, "\\Engine\\") || contains(path, "\\Tender\\") ||
                                              contains(path, "\\Freight\\") || contains(path, "\\Passenger\\"));
}

std::vector<ApListedEntry> listApEntries(const ZipReader& zip, const ApEntryFilter& filter) {
    std::vector<ApListedEntry> out;
    for (const ZipEntry& e : zip.entries()) {
        if (e.folder || e.link || !entryPasses(e.name, filter))
            continue;
        out.push_back({e.index, windowsName(e.name)});
    }
    return out;
}

ProviderProduct providerProductOf(const fs::path& apFile) {
    // The path as text: an archive named by a Windows path is cut the same on any system.
    std::string full = "\\" + backslashed(apFile.string());
    full.erase(full.rfind('\\') + 1);
    const std::size_t at = InStrRev(full, "\\Assets\\", std::string::npos, Match::Text);
    if (at == 0)
        return {};
    const std::size_t start = at - 1 + 8; // InStrRev is one-based
    ProviderProduct out;
    const std::size_t b1 = full.find('\\', start);
    if (b1 == std::string::npos || b1 == start)
        return out;
    out.provider = full.substr(start, b1 - start);
    const std::size_t b2 = full.find('\\', b1 + 1);
    if (b2 != std::string::npos)
        out.product = full.substr(b1 + 1, b2 - b1 - 1);
    return out;
}

ApRowsResult apAssetRows(const ZipReader& zip, const std::vector<std::uint64_t>& chosen,
                         const assets::AssetListOptions& options) {
    ApRowsResult out;
    const ProviderProduct pp = providerProductOf(zip.path());
    for (const std::uint64_t index : chosen) {
        if (index >= zip.count())
            continue;
        const ZipEntry e = zip.entry(index);
        if (e.folder || e.link)
            continue;
        const std::string path = windowsName(e.name);
        const std::string number = std::to_string(index);
        if (!iendsWith(path, ".bin")) {
            assets::AssetRow row;
            row.provider = pp.provider;
            row.product = pp.product;
            row.path = path;
            row.index = number;
            out.rows.push_back(std::move(row));
            continue;
        }
        std::string bin;
        if (const ReadResult r = zip.readAll(index, bin, kBlueprintLimit); !r) {
            out.unreadable.push_back(r.message);
            continue;
        }
        std::string xml;
        const serz::Status decoded = serz::decode(bin, xml);
        if (!decoded.ok) {
            out.unreadable.push_back(zip.path().string() + ": " + path + ": " + decoded.message);
            continue;
        }
        auto row = assets::blueprintRow(xml, pp.provider, pp.product, path, options);
        if (!row)
            continue;
        row->index = number;
        out.rows.push_back(std::move(*row));
    }
    return out;
}

bool writeApIndex(AppContext& ctx, const std::vector<fs::path>& apFiles, std::string* error) {
    JournalCommand command(&ctx.journal(), "Save .ap index");
    const WriteResult w = ctx.files().write(ctx.appPath() / "Data" / "AP-Index.csv", apIndexText(apFiles));
    if (!w && error)
        *error = w.message;
    return w.ok;
}

} // namespace velmora::archives
