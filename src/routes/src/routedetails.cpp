// A route's details and its latitude and longitude, its description page, and its loading
// picture with the metadata the route list reads.

#include "velmora/routes/routetemplate.h"
#include "velmora/textures/dxt1.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"
#include "velmora/textures/dds.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

namespace velmora::routes {

namespace {

// The whole file, or false with the reason naming it.
bool readWhole(const fs::path& file, std::string& bytes, std::string& error) {
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) {
        error = file.string() + ": the file is missing";
        return false;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        error = file.string() + ": the file cannot be read (" + std::strerror(errno) + ")";
        return false;
    }
    std::ostringstream s;
    s << in.rdbuf();
    if (in.bad()) {
        error = file.string() + ": the file cannot be read";
        return false;
    }
    bytes = std::move(s).str();
    return true;
}

std::string detail(const std::string& text, std::size_t& pos, const char* tag) {
    std::string value;
    GetDetail(text, pos, tag, value, ScanSettings{Match::Text});
    return value;
}

TemplateItem referenceAt(const std::string& text, const char* tag) {
    const std::size_t at = InStr(1, text, std::string("<") + tag, Match::Text);
    if (!at)
        return {};
    const BlueprintRef r = GetBlueprintRef(text, at);
    return {r.provider, r.product, r.blueprintId};
}

// A number as typed, with its range; nothing when it is no number or out of range.
std::optional<double> coordinate(const std::string& typed, double limit) {
    std::string t = typed;
    while (!t.empty() && t.front() == ' ')
        t.erase(t.begin());
    while (!t.empty() && t.back() == ' ')
        t.pop_back();
    double v = 0;
    const char* begin = t.data() + (!t.empty() && t.front() == '+');
    const auto [end, ec] = std::from_chars(begin, t.data() + t.size(), v);
    if (t.empty() || ec != std::errc() || end != t.data() + t.size() || !std::isfinite(v) || std::fabs(v) > limit)
        return std::nullopt;
    return v;
}

// The value's d:alt_encoding: its eight bytes as they lie in memory, in hex.
std::string altEncoding(double v) {
    unsigned char bytes[8];
    std::memcpy(bytes, &v, 8);
    char out[17];
    for (int i = 0; i < 8; ++i)
        std::snprintf(out + 2 * i, 3, "%02X", bytes[i]);
    return out;
}

// Replaces the value of the first <tag> at or after `from`, and its d:alt_encoding when it has one,
// so that a reader that trusts the encoding reads the new value too.
bool putCoordinate(std::string& text, std::size_t from, const char* tag, const std::string& value, double number) {
    std::size_t pos = from;
    const std::size_t open = InStr(from, text, std::string("<") + tag, Match::Text);
    if (!open)
        return false;
    PutDetail(text, pos, tag, value, ScanSettings{Match::Text});
    if (!pos)
        return false;
    const std::size_t close = text.find('>', open - 1);
    const std::size_t alt = text.find("d:alt_encoding=\"", open - 1);
    if (alt != std::string::npos && alt < close) {
        const std::size_t start = alt + std::strlen("d:alt_encoding=\"");
        const std::size_t end = text.find('"', start);
        text.replace(start, end - start, altEncoding(number));
    }
    return true;
}

} // namespace

bool readRouteDetails(AppContext& ctx, const RouteEntry& route, RouteDetails& out, std::string& error) {
    out = {};
    out.file = ctx.resolver.resolveForWrite(route.path, "RouteProperties.xml");
    std::string text;
    if (!readWhole(out.file, text, error))
        return false;
    if (text.rfind("SERZ", 0) == 0) {
        error = out.file.string() + ": the file is in the simulator's binary form, not XML";
        return false;
    }
    if (const std::size_t at = InStr(1, text, "<DisplayName", Match::Text)) {
        const char* languages[] = {"English", "French", "Italian", "German", "Spanish"};
        for (std::size_t i = 0; i < 5; ++i) {
            std::size_t pos = at;
            out.names[i] = detail(text, pos, languages[i]);
        }
    }
    if (const std::size_t at = InStr(1, text, "<BlueprintSetID", Match::Text)) {
        const BlueprintRef r = GetBlueprintRef(text, at);
        out.routeTemplate = {r.provider, r.product, r.blueprintId};
    }
    const char* items[kTemplateSlots] = {"SpringSkyBlueprint", "SummerSkyBlueprint", "AutumnSkyBlueprint",
                                         "WinterSkyBlueprint", "WeatherBlueprint", "TerrainBlueprint"};
    for (int i = 0; i < kTemplateSlots; ++i)
        out.items[static_cast<std::size_t>(i)] = referenceAt(text, items[i]);
    if (const std::size_t at = InStr(1, text, "<sGeoPosition", Match::Text)) {
        std::size_t pos = at;
        out.latitude = detail(text, pos, "Lat");
        pos = at;
        out.longitude = detail(text, pos, "Long");
    }
    return true;
}

RouteJob updateLatLong(AppContext& ctx, const RouteEntry& route, const std::string& latitude, const std::string& longitude) {
    RouteJob job;
    const auto lat = coordinate(latitude, 90), lon = coordinate(longitude, 180);
    if (!lat || !lon) {
        job.message = !lat ? "The latitude '" + latitude + "' is not a number from -90 to 90."
                           : "The longitude '" + longitude + "' is not a number from -180 to 180.";
        return job;
    }
    const fs::path file = ctx.resolver.resolveForWrite(route.path, "RouteProperties.xml");
    std::string text;
    if (!readWhole(file, text, job.message))
        return job;
    const std::size_t at = InStr(1, text, "<sGeoPosition", Match::Text);
    auto trimmed = [](std::string s) {
        while (!s.empty() && s.front() == ' ')
            s.erase(s.begin());
        while (!s.empty() && s.back() == ' ')
            s.pop_back();
        if (!s.empty() && s.front() == '+')
            s.erase(s.begin());
        return s;
    };
    if (!at || !putCoordinate(text, at, "Lat", trimmed(latitude), *lat) ||
        !putCoordinate(text, at, "Long", trimmed(longitude), *lon)) {
        job.message = file.string() + ": the file holds no sGeoPosition with Lat and Long";
        return job;
    }
    // This one screen keeps the old file as RouteProperties.xmlbak; when that is taken, the
    // numbered backups go on from there.
    WriteOptions options;
    std::error_code ec;
    const fs::path plain = file.parent_path() / (file.filename().string() + "bak");
    if (!fs::exists(fs::symlink_status(plain, ec)))
        options.backupName = plain;
    JournalCommand command(&ctx.journal(), "Update Lat/Long " + route.name);
    const WriteResult w = ctx.files().write(file, text, options);
    if (job.after(w, "Latitude and longitude have been saved in RouteProperties.xml.").ok && !w.backup.empty())
        job.notes.push_back("The old file is kept as " + w.backup.filename().string());
    return job;
}

RouteJob writeDescription(AppContext& ctx, const RouteEntry& route, const std::array<std::string, 5>& texts) {
    RouteJob job;
    std::string error;
    const std::string page = readTemplate(ctx, "Description.txt", error);
    if (page.empty()) {
        job.message = error;
        return job;
    }
    // The page shows what was typed: <, > and & are written as entities, so that a title such as
    // "Ore & Coal <Part 2>" neither breaks the page nor becomes markup.
    std::vector<std::pair<std::string, std::string>> tokens;
    const char* names[5] = {"AAAAA", "BBBBB", "CCCCC", "DDDDD", "EEEEE"};
    for (std::size_t i = 0; i < 5; ++i)
        tokens.emplace_back(names[i], documentText(texts[i]));
    const fs::path file = ctx.resolver.resolveForWrite(route.path, "RouteInformation\\En\\Description.html");
    JournalCommand command(&ctx.journal(), "Route Description " + route.name);
    const WriteResult w = ctx.files().write(file, fillTemplate(page, tokens));
    ctx.resolver.invalidate();
    return job.after(w, "Your Description file has been saved in the route's\nRouteInformation\\En folder.");
}

RouteJob makeThumbnail(AppContext& ctx, const ThumbnailRequest& r) {
    RouteJob job;
    if (r.dds.empty()) {
        job.message = "Please enter the name of your DDS picture";
        return job;
    }
    const std::string name = r.metadata;
    if (name.empty() || name.find_first_of(" ./\\:*?\"<>|") != std::string::npos) {
        job.message = "MetaData file name (no spaces or suffix): '" + name + "' is not one";
        return job;
    }
    std::string bytes;
    textures::TextureLevels picture;
    std::vector<std::string_view> levels;
    std::string why;
    if (r.picture) {
        if (!r.picture->valid()) {
            job.message = r.dds.string() + ": the picture holds no pixels";
            return job;
        }
        picture = textures::dxt1Levels(*r.picture, 256, 128, 6);
        levels.assign(picture.levels.begin(), picture.levels.end());
    } else {
        if (!readWhole(r.dds, bytes, job.message))
            return job;
        if (!textures::readDdsLevels(bytes, picture, levels, why)) {
            job.message = r.dds.string() + ": " + why;
            return job;
        }
    }
    if (picture.width != 256 || picture.height != 128 || picture.format != textures::PixelFormat::Dxt1 ||
        levels.size() != 6) {
        job.message = r.dds.string() + ": the picture is " + std::to_string(picture.width) + " by " +
                      std::to_string(picture.height) + ", " + textures::formatShown(picture.format) + ", with " +
                      std::to_string(levels.size()) + " mipmaps; it must be 256 by 128, DXT1, with 6 mipmaps";
        return job;
    }
    // The PreLoad folder must lie below Assets\<Provider>\<Product>: the metadata names the picture
    // by its path from there.
    const fs::path assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    std::error_code ec;
    const fs::path preload = fs::weakly_canonical(r.preload, ec);
    const fs::path below = preload.lexically_relative(fs::weakly_canonical(assets, ec));
    if (r.preload.empty() || below.empty() || *below.begin() == ".." || std::distance(below.begin(), below.end()) < 3) {
        job.message = r.preload.string() + ": the PreLoad folder must lie in a product folder below " + assets.string();
        return job;
    }
    std::string belowText; // Provider\Product\PreLoad...
    for (const auto& part : below)
        belowText += (belowText.empty() ? "" : "\\") + part.string();
    const std::string pictureName = fileNameFromText(r.dds.stem().string());
    std::string inProduct; // the texture's own name: its path below the product, no ending
    {
        auto it = below.begin();
        std::advance(it, 2);
        for (; it != below.end(); ++it)
            inProduct += it->string() + "\\";
        inProduct += pictureName;
    }

    std::string error;
    const std::string header = readTemplate(ctx, "ThumbTemplate.dat", error);
    textures::TexturePieces pieces;
    if (header.empty() ||
        !textures::readHeaderFile(fillTemplate(header, {{"aaaaaa", documentText(r.dds.filename().string())},
                                                        {"bbbbbb", documentText(inProduct)}}),
                                  pieces, why)) {
        job.message = !error.empty() ? error : (ctx.dataPath() / "Templates" / "ThumbTemplate.dat").string() + ": " + why;
        return job;
    }
    for (std::size_t i = 0; i < levels.size() && i < pieces.sizes.size(); ++i)
        if (levels[i].size() != pieces.sizes[i] || pieces.sizes.size() != levels.size()) {
            job.message = r.dds.string() + ": mip level " + std::to_string(i + 1) + " holds " +
                          std::to_string(levels[i].size()) + " bytes, the thumbnail's " + std::to_string(pieces.sizes[i]);
            return job;
        }
    std::string textureBin;
    if (const ConvertResult c = xmlTextToBin(textures::rebuildXml(pieces, levels), textureBin, "ThumbTemplate.dat");
        !c || textureBin.empty()) {
        job.message = "Serz.exe was unable to convert your new texture to\na .TgPcDx file - Sorry but this is out of my control.\n" +
                      c.message;
        return job;
    }
    std::vector<std::pair<std::string, std::string>> tokens;
    const char* location[] = {"ccc", "ddd", "eee", "fff", "ggg", "hhh"};
    for (int i = 0; i < 6; ++i)
        tokens.emplace_back(location[i], r.flags.location == i ? "eTrue" : "eFalse");
    const char* era[] = {"iii", "jjj", "kkk"};
    for (int i = 0; i < 3; ++i)
        tokens.emplace_back(era[i], r.flags.era == i ? "eTrue" : "eFalse");
    std::string picturePath = "Assets\\" + belowText + "\\[00]" + pictureName + ".TgPcDx";
    tokens.insert(tokens.begin(), {{"llllll", documentText(picturePath)}, {"mmmmmm", documentText(name)}});
    const std::string meta = readTemplate(ctx, "MetaData.txt", error);
    std::string metaBin;
    if (meta.empty()) {
        job.message = error;
        return job;
    }
    if (const ConvertResult c = xmlTextToBin(fillTemplate(meta, tokens), metaBin, "MetaData.txt"); !c || metaBin.empty()) {
        job.message = "Serz.exe was unable to convert the metadata to a .bin file.\n" + c.message;
        return job;
    }

    JournalCommand command(&ctx.journal(), "Thumbnail " + name);
    const WriteResult picWrite = ctx.files().write(preload / (pictureName + ".TgPcDx"), textureBin);
    if (!picWrite) {
        job.message = picWrite.message;
        return job;
    }
    const WriteResult metaWrite = ctx.files().write(preload / (name + ".bin"), metaBin);
    if (!metaWrite) {
        job.message = metaWrite.message;
        if (const std::string left = ctx.files().putBack({picWrite}); !left.empty())
            job.message += "\n" + left;
        return job;
    }
    ctx.resolver.invalidate();
    job.ok = true;
    job.written = {picWrite.target, metaWrite.target};
    job.message = "Your new thumbnail and metadata files have been written\nto your PreLoad folder.";
    return job;
}

} // namespace velmora::routes
