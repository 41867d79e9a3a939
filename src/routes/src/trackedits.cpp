// The track network's heights and speed limits, edited in its Tracks.bin.

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/textsearch.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"
#include "velmora/routes/routeedits.h"

#include <charconv>
#include <cstdio>

namespace velmora::routes {

namespace {

const ScanSettings kExact{Match::Binary};

// A height as the edit writes it: four decimals, with no "-0.0000".
std::string fourPlaces(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.4f", value);
    std::string out = buf;
    if (out == "-0.0000")
        out = "0.0000";
    return out;
}

// The whole text as a number; false when it is none (blanks around it are allowed).
bool readNumber(std::string_view text, double& value) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    if (text.empty())
        return false;
    if (text.front() == '+')
        text.remove_prefix(1);
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size();
}

std::size_t lineAt(const std::string& text, std::size_t offset, std::size_t& countedTo, std::size_t& line) {
    for (; countedTo < offset && countedTo < text.size(); ++countedTo)
        if (text[countedTo] == '\n')
            ++line;
    return line;
}

// Tracks.bin of a route, or nothing after saying why in `report`.
std::optional<fs::path> tracksFile(AppContext& ctx, const RouteEntry& route, EditReport& report) {
    const auto networks = ctx.resolver.resolve(route.path, "Networks");
    const auto file = networks ? ctx.resolver.resolve(*networks, "Tracks.bin") : std::nullopt;
    std::error_code ec;
    if (!file || !fs::is_regular_file(*file, ec)) {
        report.message = (route.path / "Networks" / "Tracks.bin").string() + ": there is no such file; nothing was changed.";
        return std::nullopt;
    }
    return file;
}

// The new Tracks.bin written as one journal entry, the old one kept as its numbered backup.
void writeTracks(AppContext& ctx, const fs::path& file, const std::string& xml, const std::string& command,
                 EditReport& report) {
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(xml, bin, file.string()); !c) {
        report.message = c.message + " The original file has not been altered.";
        return;
    }
    JournalCommand entry(&ctx.journal(), command);
    const WriteResult w = ctx.files().write(file, bin);
    if (!w) {
        report.message = w.message;
        return;
    }
    report.files.push_back(file);
    report.ok = true;
}

} // namespace

std::string adjustTrackHeights(const std::string& xml, const TrackAdjust& adjust, const std::string& label,
                               std::size_t& heights, std::size_t& objects, std::string& error,
                               std::vector<std::string>* elements) {
    heights = objects = 0;
    std::string out;
    out.reserve(xml.size() + xml.size() / 64);
    std::size_t counted = 0, line = 1, copied = 0;
    static constexpr std::string_view kClose = "</_height>";
    for (std::size_t at = xml.find(kClose); at != std::string::npos; at = xml.find(kClose, at + kClose.size())) {
        const std::size_t gt = xml.rfind('>', at == 0 ? 0 : at - 1);
        if (gt == std::string::npos || gt < copied)
            continue;
        const std::string_view value(xml.data() + gt + 1, at - gt - 1);
        double old = 0;
        if (!readNumber(value, old)) {
            error = label + ": line " + std::to_string(lineAt(xml, at, counted, line)) + ": the height '" +
                    std::string(value) + "' is not a number; nothing was changed.";
            return {};
        }
        out.append(xml, copied, gt + 1 - copied);
        out += fourPlaces(old + adjust.track);
        if (elements)
            elements->push_back("  line " + std::to_string(lineAt(xml, at, counted, line)) + ": _height " +
                                std::string(value) + " -> " + fourPlaces(old + adjust.track));
        copied = at;
        ++heights;
    }
    out.append(xml, copied, std::string::npos);
    if (!adjust.trackside)
        return out;
    // The objects on the track: each "<Height d:" element's value.
    std::size_t pos = InStr(1, out, "<Height d:", Match::Binary);
    while (pos > 0) {
        std::size_t at = pos;
        std::string value;
        GetDetail(out, at, "Height", value, kExact);
        double old = 0;
        if (at == 0 || !readNumber(value, old)) {
            std::size_t c = 0, l = 1;
            error = label + ": line " + std::to_string(lineAt(out, pos, c, l)) + ": the object height '" + value +
                    "' is not a number; nothing was changed.";
            return {};
        }
        at = pos;
        PutDetail(out, at, "Height", fourPlaces(old + *adjust.trackside), kExact);
        if (elements)
            elements->push_back("  Height " + value + " -> " + fourPlaces(old + *adjust.trackside));
        ++objects;
        pos = InStr(pos + 1, out, "<Height d:", Match::Binary);
    }
    return out;
}

EditReport raiseTrack(AppContext& ctx, const RouteEntry& route, const TrackAdjust& adjust) {
    EditReport report;
    const auto file = tracksFile(ctx, route, report);
    if (!file)
        return report;
    std::string xml;
    if (const ConvertResult c = binToXmlText(*file, xml); !c) {
        report.message = c.message + " Nothing was changed.";
        return report;
    }
    std::size_t heights = 0, objects = 0;
    std::vector<std::string> elements;
    const std::string text = adjustTrackHeights(xml, adjust, file->string(), heights, objects, report.message,
                                                adjust.dryRun ? &elements : nullptr);
    if (!report.message.empty())
        return report;
    report.count = heights + objects;
    report.lines.push_back(file->string() + ": " + std::to_string(heights) + " track heights " +
                           (adjust.track < 0 ? "lowered by " + fourPlaces(-adjust.track) : "raised by " + fourPlaces(adjust.track)));
    if (adjust.trackside)
        report.lines.push_back(file->string() + ": " + std::to_string(objects) + " trackside object heights " +
                               (*adjust.trackside < 0 ? "lowered by " + fourPlaces(-*adjust.trackside)
                                                      : "raised by " + fourPlaces(*adjust.trackside)));
    if (adjust.dryRun) {
        report.lines.insert(report.lines.end(), elements.begin(), elements.end());
        report.files.push_back(*file);
        report.ok = true;
        return report;
    }
    writeTracks(ctx, *file, text, "Raise or Lower Track: " + route.name, report);
    if (report.ok)
        report.message = "Your Tracks.bin file has been altered as requested.";
    return report;
}

std::string setSpeedLimitsText(const std::string& xml, const SpeedLimits& limits, std::size_t& count) {
    count = 0;
    std::string out = xml;
    static constexpr std::string_view kLimit = "<Network-iTrackNetworkSpeedLimit";
    std::size_t pos = InStr(1, out, kLimit, Match::Binary);
    while (pos > 0) {
        const std::size_t next = InStr(pos + 1, out, kLimit, Match::Binary);
        // Only the limit's own values: never those of the limit after it.
        const std::size_t primary = InStr(pos, out, "<Primary", Match::Binary);
        if (primary > 0 && (next == 0 || primary < next)) {
            std::size_t at = pos;
            PutDetail(out, at, "Primary", limits.primary, kExact);
            at = pos;
            const std::size_t secondary = InStr(pos, out, "<Secondary", Match::Binary);
            const std::size_t after = InStr(pos + 1, out, kLimit, Match::Binary);
            if (secondary > 0 && (after == 0 || secondary < after))
                PutDetail(out, at, "Secondary", limits.secondary, kExact);
            ++count;
        }
        pos = InStr(pos + 1, out, kLimit, Match::Binary);
    }
    return out;
}

EditReport setSpeedLimits(AppContext& ctx, const RouteEntry& route, const SpeedLimits& limits) {
    EditReport report;
    double number = 0;
    for (const std::string* v : {&limits.primary, &limits.secondary})
        if (!readNumber(*v, number) || number < 0) {
            report.message = "The speed limit '" + *v + "' is not a number of zero or more; nothing was changed.";
            return report;
        }
    const auto file = tracksFile(ctx, route, report);
    if (!file)
        return report;
    std::string xml;
    if (const ConvertResult c = binToXmlText(*file, xml); !c) {
        report.message = c.message + " Nothing was changed.";
        return report;
    }
    ctx.ui().beginProgress("Setting speed limits", 1);
    const std::string text = setSpeedLimitsText(xml, limits, report.count);
    ctx.ui().endProgress();
    report.lines.push_back(file->string() + ": " + std::to_string(report.count) + " speed limits set to " +
                           limits.primary + " / " + limits.secondary);
    if (limits.dryRun || report.count == 0) {
        if (report.count > 0)
            report.files.push_back(*file);
        report.ok = true;
        return report;
    }
    writeTracks(ctx, *file, text, "Speed limits: " + route.name, report);
    if (report.ok)
        report.message = "Your Tracks.bin file has been altered as requested.";
    return report;
}

} // namespace velmora::routes
