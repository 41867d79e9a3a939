// frmEdQD's Save: a Quick Drive consist changed in place.

#include "velmora/consists/qdedit.h"

#include "velmora/consists/consisttemplates.h"
#include "velmora/consists/qdcheck.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

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

// The route list written whole: one <e> element a route, as the simulator keeps it.
bool putRoutes(std::string& xml, const std::vector<std::string>& routes) {
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
        for (const auto& r : routes)
            text += indent + "\t<e d:type=\"cDeltaString\">" + r + "</e>" + eol;
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

std::string consistTypeValue(const std::string& typed) {
    std::string out;
    for (char c : typed)
        if (c != ' ')
            out += c;
    if (!out.empty() && out[0] != 'e')
        out.insert(out.begin(), 'e');
    return out;
}

const std::vector<std::string>& qdConsistTypes() {
    static const std::vector<std::string> types{
        "Consist Type Passenger Regional", "Consist Type Passenger Fast",     "Consist Type Passenger Intercity",
        "Consist Type Passenger International", "Consist Type Passenger Commuter", "Consist Type Passenger Scrap",
        "Consist Type Freight Coal",       "Consist Type Freight Gravel",     "Consist Type Freight Oil",
        "Consist Type Freight Wood",       "Consist Type Freight Paper",      "Consist Type Freight Livestock",
        "Consist Type Freight Nuclear Flask", "Consist Type Freight Container", "Consist Type Freight Scrap",
        "Consist Type Preserved",          "Consist Type Custom 1",           "Consist Type Custom 2",
        "Consist Type Custom 3",           "Consist Type Custom 4",           "Consist Type Custom 5",
        "Consist Type Custom 6",           "Consist Type Custom 7",           "Consist Type Custom 8",
        "Consist Type Do Not Spawn"};
    return types;
}

std::string consistTypeCaption(const std::string& stored) {
    for (const auto& caption : qdConsistTypes())
        if (consistTypeValue(caption) == stored)
            return caption;
    return stored;
}

bool applyQdChanges(std::string& xml, const QdChanges& c, std::string& error) {
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
        ok = ok && putRoutes(xml, *c.routes);
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
    if (!applyQdChanges(xml, changes, error)) {
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
