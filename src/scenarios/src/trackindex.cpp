// The track index: the ribbons of Networks\Tracks.bin with their tiles, read with an XML stream
// reader from the network decoded in memory, and kept as a small text file of the program's own.

#include "velmora/scenarios/trackindex.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include "serz/serz.h"

#include <QByteArray>
#include <QXmlStreamReader>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

namespace velmora::scenarios {

namespace {

constexpr const char* kHeader = "Velmora track index 1: ribbon id, tile x, tile z";

std::optional<long> number(const std::string& text) {
    if (text.empty())
        return std::nullopt;
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (!end || *end != '\0')
        return std::nullopt;
    return v;
}

} // namespace

std::string tileText(Tile tile) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%+07ld%+07ld", tile.x, tile.z);
    return buf;
}

std::optional<Tile> TrackIndex::tileOf(const std::string& ribbonId) const {
    const auto it = ribbons.find(toLowerAscii(ribbonId));
    if (it == ribbons.end())
        return std::nullopt;
    return it->second;
}

fs::path trackIndexFile(const AppContext& ctx, const std::string& routeFolder) {
    return ctx.appPath() / "Index" / (fileNameFromText(routeFolder) + ".txt");
}

fs::path tracksFile(const AppContext& ctx, const fs::path& route) {
    return ctx.resolver.resolve(route, "Networks\\Tracks.bin").value_or(route / "Networks" / "Tracks.bin");
}

std::optional<TrackIndex> readTrackIndex(const fs::path& indexFile, std::string* error) {
    std::ifstream in(indexFile, std::ios::binary);
    std::string line;
    if (!in || !std::getline(in, line)) {
        if (error)
            *error = indexFile.string() + ": there is no track index";
        return std::nullopt;
    }
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    if (line != kHeader) {
        if (error)
            *error = indexFile.string() + ": is no track index of this program";
        return std::nullopt;
    }
    TrackIndex index;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const auto cells = csvCells(line, '\t');
        if (cells.size() != 3)
            continue;
        const auto x = number(cells[1]), z = number(cells[2]);
        if (x && z && !cells[0].empty())
            index.ribbons[toLowerAscii(cells[0])] = {*x, *z};
    }
    return index;
}

std::optional<TrackIndex> indexOfNetwork(std::string_view xml, const IndexProgress& progress, std::string& error) {
    TrackIndex index;
    const QByteArray bytes = QByteArray::fromRawData(xml.data(), static_cast<qsizetype>(xml.size()));
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    // Inside a ribbon: its id is the first DevString under RibbonID, its tile the Distance under
    // RouteVector's X and Z.
    std::vector<QString> path;
    int ribbonDepth = -1;
    std::string id;
    long x = 0, z = 0;
    bool hasX = false, hasZ = false;
    std::int64_t seen = 0;
    const auto total = static_cast<std::int64_t>(xml.size());
    auto inside = [&](const char* name) {
        for (std::size_t i = static_cast<std::size_t>(ribbonDepth); i < path.size(); ++i)
            if (path[i] == QLatin1String(name))
                return true;
        return false;
    };
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const QString name = reader.name().toString();
            path.push_back(name);
            if (ribbonDepth < 0 && name.endsWith(QLatin1String("cTrackRibbon"))) {
                ribbonDepth = static_cast<int>(path.size()) - 1;
                id.clear();
                hasX = hasZ = false;
            } else if (ribbonDepth >= 0 && name == QLatin1String("DevString") && id.empty() && inside("RibbonID")) {
                id = reader.readElementText().toStdString();
                path.pop_back();
            } else if (ribbonDepth >= 0 && name == QLatin1String("Distance") && inside("RouteVector")) {
                const auto v = number(reader.readElementText().trimmed().toStdString());
                path.pop_back();
                if (v && inside("X") && !hasX) {
                    x = *v;
                    hasX = true;
                } else if (v && inside("Z") && !hasZ) {
                    z = *v;
                    hasZ = true;
                }
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (ribbonDepth >= 0 && static_cast<int>(path.size()) - 1 == ribbonDepth) {
                if (!id.empty() && hasX && hasZ)
                    index.ribbons[toLowerAscii(id)] = {x, z};
                ribbonDepth = -1;
                if (progress && ++seen % 256 == 0 && !progress(reader.characterOffset(), total))
                    return std::nullopt;
            }
            if (!path.empty())
                path.pop_back();
        }
    }
    if (reader.hasError()) {
        error = "line " + std::to_string(reader.lineNumber()) + ": " + reader.errorString().toStdString();
        return std::nullopt;
    }
    if (progress && !progress(total, total))
        return std::nullopt;
    return index;
}

IndexResult buildTrackIndex(AppContext& ctx, const fs::path& route, const fs::path& indexFile,
                            const IndexProgress& progress, std::uint64_t maxBytes) {
    IndexResult result;
    const fs::path tracks = tracksFile(ctx, route);
    // Every failure names Tracks.bin, once.
    auto fail = [&](const std::string& why) {
        result.message = (why.find(tracks.string()) == std::string::npos ? tracks.string() + ": " + why : why) +
                         "; the track index was not made.";
        return result;
    };
    auto stop = [&] {
        result.stopped = true;
        result.message = "The indexing was stopped: no track index was made.";
        return result;
    };
    std::string bin;
    if (const serz::Status read = serz::readDocument(tracks, bin, maxBytes ? maxBytes : serz::kMaxDocumentBytes); !read)
        return fail(read.message);
    // The decoding itself cannot be interrupted: the last chance to stop before it.
    if (progress && !progress(0, 1))
        return stop();
    std::string xml;
    if (const serz::Status decoded = serz::decode(bin, xml); !decoded)
        return fail("is no track network the program can read (" + decoded.message + ")");
    bin.clear();
    bin.shrink_to_fit();
    std::string error;
    auto index = indexOfNetwork(xml, progress, error);
    if (!index)
        return error.empty() ? stop() : fail("is no track network the program can read (" + error + ")");
    std::ostringstream text;
    text << kHeader << "\r\n";
    for (const auto& [id, tile] : index->ribbons)
        text << id << '\t' << tile.x << '\t' << tile.z << "\r\n";
    WriteOptions options;
    options.backup = Backup::None;
    options.journal = false;
    if (const WriteResult written = ctx.files().write(indexFile, text.str(), options); !written) {
        result.message = written.message;
        return result;
    }
    result.ok = true;
    result.index = std::move(*index);
    return result;
}

} // namespace velmora::scenarios
