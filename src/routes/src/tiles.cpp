#include "tiles.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"

#include <algorithm>

namespace velmora::routes::detail {

std::vector<fs::path> binFiles(const fs::path& folder, std::vector<std::string>* unreadable) {
    std::vector<fs::path> out;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        // The name first: a folder full of backups is not looked at file by file.
        if (iendsWith(it->path().filename().string(), ".bin") && entryKind(*it) == EntryKind::File)
            out.push_back(it->path());
    }
    if (ec && unreadable)
        unreadable->push_back(folder.string() + ": " + ec.message());
    std::sort(out.begin(), out.end(), [](const fs::path& a, const fs::path& b) {
        return toLowerAscii(a.filename().string()) < toLowerAscii(b.filename().string());
    });
    return out;
}

bool lineValue(const std::string& line, std::string& value) {
    const std::size_t gt = line.find('>');
    const std::size_t lt = gt == std::string::npos ? gt : line.find('<', gt + 1);
    if (lt == std::string::npos)
        return false;
    value = line.substr(gt + 1, lt - gt - 1);
    return true;
}

std::string binOf(const std::string& id) { return id.size() >= 3 ? id.substr(0, id.size() - 3) + "bin" : id; }

Triple readTriple(const std::string& xml, std::size_t pos) {
    const BlueprintRef r = GetBlueprintRef(xml, pos, kBinary);
    return {r.provider, r.product, r.blueprintId};
}

std::vector<TileJob> routeTiles(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios,
                                std::vector<std::string>* unreadable) {
    std::vector<TileJob> jobs;
    auto folder = [&](const std::string& relative, const char* label) {
        if (auto f = ctx.resolver.resolve(route.path, relative))
            for (const auto& file : binFiles(*f, unreadable))
                jobs.push_back({file, label});
    };
    folder("Scenery", "(Scenery Item)");
    folder("Networks\\Loft Tiles", "(Loft Item)");
    folder("Networks\\Road Tiles", "(Road Item)");
    folder("Networks", "(Track Item)");
    for (const auto& s : scenarios)
        folder("Scenarios\\" + s.folder + "\\Scenery", "(Scenery Item)");
    return jobs;
}

AssetFiles::AssetFiles(AppContext& ctx)
    : m_ctx(ctx), m_assets(ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets")) {}

bool AssetFiles::exists(const std::string& relative, fs::path* real) const {
    if (auto f = m_ctx.resolver.resolve(m_assets, relative); f && fs::is_regular_file(*f)) {
        if (real)
            *real = *f;
        return true;
    }
    const std::string repaired = latin1ToUtf8(DecodedChars(relative));
    if (repaired != relative)
        if (auto f = m_ctx.resolver.resolve(m_assets, repaired); f && fs::is_regular_file(*f)) {
            if (real)
                *real = *f;
            return true;
        }
    return false;
}

std::string AssetFiles::display(const std::string& relative) const {
    std::string p = relative;
    std::replace(p.begin(), p.end(), '\\', '/');
    return (m_assets / p).string();
}

std::string AssetFiles::relative(const std::string& shown) const {
    const std::string prefix = m_assets.string() + "/";
    std::string r = shown.rfind(prefix, 0) == 0 ? shown.substr(prefix.size()) : shown;
    std::replace(r.begin(), r.end(), '/', '\\');
    return r;
}

std::string referenceWarning(bool provider, const std::string& label, const fs::path& tile) {
    return std::string(provider ? "There is an error in a Provider description in tile"
                                : "There is an error in a Product description in tile") +
           "\n" + label + " - " + tile.filename().string() + "\nThis may/may not cause TS2019 to fail.";
}

std::vector<Triple> tileReferences(const std::string& xml, const std::string& label, const fs::path& tile,
                                   std::string& warning) {
    std::vector<Triple> out;
    const std::vector<std::string> lines = SplitLines(xml);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!find(lines[i], "<Provider"))
            continue;
        Triple t;
        lineValue(lines[i], t.provider);
        const bool productOk = i + 1 < lines.size() && lineValue(lines[i + 1], t.product);
        if (i + 4 < lines.size())
            lineValue(lines[i + 4], t.id);
        const bool emptyProvider = t.provider.empty() || t.provider == " ";
        if (emptyProvider && t.product.empty() && t.id.empty()) {
            i += 4;
            continue;
        }
        if (emptyProvider || !productOk) {
            warning = referenceWarning(emptyProvider, label, tile);
            break;
        }
        i += 4;
        if (!t.id.empty())
            out.push_back(std::move(t));
    }
    return out;
}

namespace {

Ref makeRef(const AssetFiles& files, const std::string& path, bool inTransfer) {
    fs::path real;
    const bool found = files.exists(path, &real);
    return {path, found, inTransfer, found ? real.string() : std::string()};
}

// A transfer point's container: every Provider, Product, BlueprintID behind it.
void transferContents(const AssetFiles& files, const std::string& relative, TileScan& scan) {
    fs::path real;
    std::string xml;
    if (!files.exists(relative, &real) || !binToXmlText(real, xml))
        return;
    std::size_t pos = find(xml, "</ContainerBlueprintID>");
    if (!pos)
        return;
    for (;;) {
        std::string provider, product, id;
        GetDetail(xml, pos, "Provider", provider, kBinary);
        if (!pos || provider.empty())
            break;
        GetDetail(xml, pos, "Product", product, kBinary);
        GetDetail(xml, pos, "BlueprintID", id, kBinary);
        if (!pos)
            break;
        scan.refs.push_back(makeRef(files, Triple{provider, product, id}.bin(), true));
    }
}

// A tile whose XML could not be had is the tile's error, not a tile without references.
TileScan readTile(const AssetFiles& files, const fs::path& file, const std::string& label) {
    TileScan scan;
    std::string xml;
    if (const ConvertResult r = binToXmlText(file, xml); !r) {
        scan.error = r.message;
        return scan;
    }
    for (const Triple& t : tileReferences(xml, label, file, scan.warning)) {
        const std::string path = t.bin();
        if (find(path, "TransferPoints"))
            transferContents(files, path, scan);
        scan.refs.push_back(makeRef(files, path, false));
    }
    return scan;
}

} // namespace

TileScan scanTile(const AssetFiles& files, const fs::path& file, const std::string& label) {
    return onePiece([&] { return readTile(files, file, label); }, [&](const std::string& why) {
        TileScan failed;
        failed.error = file.string() + ": " + why;
        return failed;
    });
}

} // namespace velmora::routes::detail
