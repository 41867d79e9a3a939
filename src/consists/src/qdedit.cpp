// frmEdQD's Save: a Quick Drive consist changed in place.

#include "velmora/consists/qdedit.h"

#include "velmora/consists/consisttemplates.h"
#include "velmora/consists/qdbuild.h"
#include "velmora/consists/qdcheck.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cctype>

namespace velmora::consists {

const char* const kQdModified = "File has been modified.";
const char* const kQdDrivableBad = "Drivable Consist must be either\neTrue or eFalse, please correct it";
const char* const kQdNotAConsist = "You have listed Fragments not Consists\nThis option is for full Consists only.";
const char* const kQdEditCommand = "Edit QD consist";

namespace {

const ScanSettings kExact{Match::Binary};

// Replaces the value of `tag` after the first `<within>` (or from the start), false when absent.
bool put(std::string& xml, std::string_view within, std::string_view tag, const std::string& value) {
    std::size_t pos = 1;
    if (!within.empty() && !(pos = InStr(1, xml, "<" + std::string(within) + ">", Match::Binary)))
        return false;
    PutDetail(xml, pos, tag, value, kExact);
    return pos != 0;
}

bool isGuid(const std::string& s) {
    if (s.empty())
        return false;
    for (char c : s)
        if (!std::isxdigit(static_cast<unsigned char>(c)) && c != '-')
            return false;
    return true;
}

// The route list written whole. A route already listed keeps its element as it stands; a new
// one gets an element made by `newRoute` (the QD6 template with a new id).
bool putRoutes(std::string& xml, const std::vector<std::string>& routes, const RouteElement& newRoute) {
    const std::string tag = "ValidBuildAndDriveRoutes";
    std::size_t begin = xml.find("<" + tag + "/>");
    std::size_t end = begin == std::string::npos ? begin : begin + tag.size() + 3;
    if (begin == std::string::npos) {
        begin = xml.find("<" + tag + ">");
        const std::size_t close = xml.find("</" + tag + ">");
        if (begin == std::string::npos || close == std::string::npos || close < begin)
            return false;
        end = close + tag.size() + 3;
    }
    // The elements there now, by their route.
    const std::string element = "cConsistBlueprint-cValidRoute";
    std::vector<std::pair<std::string, std::string>> kept;
    for (std::size_t at = xml.find("<" + element, begin); at != std::string::npos && at < end;
         at = xml.find("<" + element, at + 1)) {
        const std::size_t close = xml.find("</" + element + ">", at);
        if (close == std::string::npos || close > end)
            break;
        const std::string block = xml.substr(at, close + element.size() + 3 - at);
        std::size_t pos = 1;
        std::string route;
        GetDetail(block, pos, "RouteID", route, kExact);
        if (pos)
            kept.emplace_back(route, block);
    }
    // The indentation of the element's own line, one tab deeper for its values.
    std::size_t lineStart = xml.rfind('\n', begin);
    lineStart = lineStart == std::string::npos ? 0 : lineStart + 1;
    const std::string indent = xml.substr(lineStart, begin - lineStart);
    std::string text;
    if (routes.empty()) {
        text = "<" + tag + "/>";
    } else {
        const std::string eol = xml.find("\r\n") != std::string::npos ? "\r\n" : "\n";
        text = "<" + tag + ">" + eol;
        for (const auto& r : routes) {
            const auto old = std::find_if(kept.begin(), kept.end(), [&](const auto& k) { return k.first == r; });
            if (old != kept.end()) {
                text += indent + "\t" + old->second + eol;
                continue;
            }
            std::string made = newRoute ? newRoute(r) : std::string();
            if (made.empty())
                return false;
            if (made.size() < eol.size() || made.compare(made.size() - eol.size(), eol.size(), eol) != 0)
                made += eol;
            text += made;
        }
        text += indent + "</" + tag + ">";
    }
    xml.replace(begin, end - begin, text);
    return true;
}

} // namespace

std::optional<std::string> drivableValue(const std::string& typed) {
    if (typed == "True" || typed == "eTrue")
        return "eTrue";
    if (typed == "False" || typed == "eFalse")
        return "eFalse";
    return std::nullopt;
}

std::string consistTypeCaption(const std::string& stored) {
    for (const auto& caption : consistTypes())
        if (consistTypeValue(caption) == stored)
            return caption;
    return stored;
}

bool applyQdChanges(std::string& xml, const QdChanges& c, std::string& error, const RouteElement& newRoute) {
    QdDocument doc;
    if (!parseQuickDrive(xml, doc) || doc.kind != QdKind::Consist) {
        error = kQdNotAConsist;
        return false;
    }
    std::optional<std::string> drivable;
    if (c.drivable && !(drivable = drivableValue(*c.drivable))) {
        error = kQdDrivableBad;
        return false;
    }
    if (c.routes)
        for (const auto& r : *c.routes)
            if (!isGuid(r)) {
                error = "'" + r + "' is not a route id";
                return false;
            }
    if (c.eraStart && c.eraEnd && *c.eraStart > *c.eraEnd) {
        error = "The era starts after it ends";
        return false;
    }
    bool ok = true;
    if (c.locoName)
        ok = ok && put(xml, "LocoName", "English", documentText(*c.locoName));
    if (c.displayName)
        ok = ok && put(xml, "DisplayName", "English", documentText(*c.displayName));
    if (c.eraStart)
        ok = ok && put(xml, {}, "EraStartYear", std::to_string(*c.eraStart));
    if (c.eraEnd)
        ok = ok && put(xml, {}, "EraEndYear", std::to_string(*c.eraEnd));
    if (drivable)
        ok = ok && put(xml, {}, "DrivableConsist", *drivable);
    if (c.consistType)
        ok = ok && put(xml, {}, "ConsistType", documentText(consistTypeValue(*c.consistType)));
    if (c.routes)
        ok = ok && putRoutes(xml, *c.routes, newRoute);
    if (!ok)
        error = "The document lacks an element to change";
    return ok;
}

QdEditResult editQuickDrive(AppContext& ctx, const fs::path& file, const QdChanges& changes) {
    QdEditResult r;
    std::string xml;
    if (const ConvertResult c = binToXmlText(file, xml); !c) {
        r.message = c.message.empty() ? file.string() + ": cannot be converted" : c.message;
        return r;
    }
    std::string error;
    // New routes are made from Templates\QD6.txt, each with a new id.
    std::string routeTemplate;
    if (changes.routes && !changes.routes->empty()) {
        routeTemplate = readTemplate(ctx, "QD6.txt", error);
        if (!error.empty()) {
            r.message = error;
            return r;
        }
    }
    const IdSource ids = systemIds();
    const RouteElement newRoute = [&](const std::string& route) {
        return fillTemplate(routeTemplate, {{"dddddd", route}, {"nnnnnn", randomId(ids)}});
    };
    if (!applyQdChanges(xml, changes, error, newRoute)) {
        r.message = file.string() + ": " + error;
        return r;
    }
    std::string bin;
    const ConvertResult encoded = xmlTextToBin(xml, bin, file.string());
    if (!encoded || bin.size() <= 8) {
        r.message = encoded ? file.string() + ": the new document came out empty." : encoded.message;
        return r;
    }
    JournalCommand entry(&ctx.journal(), kQdEditCommand);
    const WriteResult w = ctx.files().write(file, bin);
    if (!w) {
        r.message = w.message;
        return r;
    }
    r.ok = true;
    r.message = kQdModified;
    r.backup = w.backup;
    return r;
}

} // namespace velmora::consists
