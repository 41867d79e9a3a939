// ConsistTemplates.bin: reading the saved consists, and adding one made from the templates.

#include "velmora/consists/consisttemplates.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace velmora::consists {

const char* const kInvalidFile = "This Consist Template file appears to be invalid.";
const char* const kReady = "Your new ConsistTemplate.bin file is now ready for use.";
const char* const kNotWritten = "Your new ConsistTemplate.bin file was not written.\n"
                                "No changes have been made to the original.";
const char* const kSaveCommand = "Save as Named Consist";
const char* const kFooter = "\t</Record>\r\n</cRecordSet>\r\n";

namespace {

const ScanSettings kExact{Match::Binary};

// Where a line's indentation in front of `at` (0-based) begins.
std::size_t lineIndentStart(std::string_view text, std::size_t at) {
    while (at > 0 && (text[at - 1] == '\t' || text[at - 1] == ' '))
        --at;
    return at;
}

// The value of `tag` after `from` (1-based) in `s`; empty when absent.
std::string valueFrom(std::string_view s, std::size_t from, std::string_view tag) {
    std::string value;
    std::size_t pos = from;
    GetDetail(s, pos, tag, value, kExact);
    return pos ? value : std::string();
}

// One consist's text, from "<cConsistTemplate d" to its closing tag. False when it has no
// <Name>, which ends the scan.
bool readConsist(std::string_view s, ConsistTemplate& c) {
    if (const std::size_t at = s.find("d:id"); at != std::string_view::npos) {
        const std::size_t gt = s.find('>', at);
        if (gt != std::string_view::npos && gt > at + 7)
            c.id = std::string(s.substr(at + 6, gt - 1 - (at + 6)));
    }
    const std::size_t name = InStr(1, s, "<Name>", Match::Text);
    if (!name)
        return false;
    for (const char* language : {"English", "French", "Italian", "German", "Spanish"}) {
        c.name = valueFrom(s, name, language);
        if (!c.name.empty())
            break;
    }
    c.key = valueFrom(s, name, "Key");
    for (std::size_t e = InStr(1, s, "<cConsistTemplateEntry", Match::Text); e;
         e = InStr(e + 1, s, "<cConsistTemplateEntry", Match::Text)) {
        TemplateEntry entry;
        const std::size_t q1 = s.find('"', e);
        const std::size_t q2 = q1 == std::string_view::npos ? q1 : s.find('"', q1 + 1);
        if (q2 != std::string_view::npos)
            entry.id = std::string(s.substr(q1 + 1, q2 - q1 - 1));
        const BlueprintRef ref = GetBlueprintRef(s, e, kExact);
        entry.provider = ref.provider;
        entry.product = ref.product;
        entry.blueprintId = ref.blueprintId;
        entry.flipped = valueFrom(s, e, "Flipped");
        c.entries.push_back(std::move(entry));
    }
    return true;
}

} // namespace

fs::path consistTemplatesFile(AppContext& ctx) {
    return ctx.resolver.resolveForWrite(ctx.railWorks(), "Content/ConsistTemplates.bin");
}

bool parseConsistTemplates(const std::string& xml, TemplatesDocument& doc) {
    doc = {};
    std::size_t at = InStr(1, xml, "<cConsistTemplate", Match::Text);
    if (!at)
        return false;
    doc.header = xml.substr(0, lineIndentStart(xml, at - 1));
    const std::string_view all(xml);
    for (at = InStr(1, xml, "<cConsistTemplate d", Match::Text); at;) {
        const std::size_t end = InStr(at, xml, "</cConsistTemplate>", Match::Text);
        const std::string_view slice = all.substr(at - 1, end ? end - at : std::string_view::npos);
        ConsistTemplate c;
        if (!readConsist(slice, c))
            break;
        if (!doc.consists.empty() && doc.consists.back().id == c.id) {
            auto& entries = doc.consists.back().entries;
            entries.insert(entries.end(), c.entries.begin(), c.entries.end());
        } else {
            doc.consists.push_back(std::move(c));
        }
        at = end ? InStr(end + 1, xml, "<cConsistTemplate d", Match::Text) : 0;
    }
    return true;
}

ReadResult readConsistTemplates(AppContext& ctx) {
    ReadResult r;
    const fs::path file = consistTemplatesFile(ctx);
    std::error_code ec;
    r.exists = fs::exists(file, ec);
    if (!r.exists)
        return r;
    std::string xml;
    if (const ConvertResult c = binToXmlText(file, xml); !c) {
        r.error = c.message;
        return r;
    }
    if (!parseConsistTemplates(xml, r.doc))
        r.error = kInvalidFile;
    return r;
}

bool blueprintMissing(AppContext& ctx, const TemplateEntry& entry) {
    const fs::path assets = ctx.railWorks() / "Assets";
    std::string path = entry.provider + "\\" + entry.product + "\\" + entry.blueprintId;
    if (iendsWith(path, "xml"))
        path.replace(path.size() - 3, 3, "bin");
    auto exists = [&](const std::string& p) {
        for (const auto& part : splitDocumentPath(p))
            if (part == ".." || part == ".")
                return false;
        return ctx.resolver.exists(assets, p);
    };
    if (exists(path))
        return false;
    const std::string repaired = utf8FromDocument(shownName(path));
    return repaired == path || !exists(repaired);
}

std::string consistText(const std::string& nameTemplate, const std::string& entryTemplate, const ConsistTemplate& consist) {
    std::string out = fillTemplate(nameTemplate, {{"zzzzz", consist.id}, {"xxxxx", consist.name}, {"yyyyy", consist.key}});
    for (const TemplateEntry& e : consist.entries)
        out += fillTemplate(entryTemplate, {{"aaaaa", e.id},
                                            {"bbbbb", e.provider},
                                            {"ccccc", e.product},
                                            {"ddddd", e.blueprintId},
                                            {"eeeee", e.flipped.empty() ? "0" : e.flipped}});
    return out + "\t\t\t</ConsistEntry>\r\n\t\t</cConsistTemplate>\r\n";
}

std::string newConsistText(const std::string& nameTemplate, const std::string& entryTemplate,
                           const std::string& name, const std::vector<NewVehicle>& vehicles, const IdSource& ids) {
    ConsistTemplate c;
    c.id = randomId(ids);
    c.name = documentText(name);
    c.key = ids.guid();
    for (const NewVehicle& v : vehicles)
        c.entries.push_back({randomId(ids), v.provider, v.product, v.blueprintId, v.flipped});
    return consistText(nameTemplate, entryTemplate, c);
}

bool mergedDocument(const std::string& existing, bool exists, const std::string& headerTemplate,
                    const std::string& consistText, const IdSource& ids, std::string& out) {
    std::string head;
    if (exists) {
        const std::size_t at = InStr(1, existing, "</Record", Match::Text);
        if (!at)
            return false;
        // The indentation in front of </Record> belongs to the footer.
        head = existing.substr(0, lineIndentStart(existing, at - 1));
        if (!head.empty() && head.back() != '\n')
            head += "\r\n";
    } else {
        head = fillTemplate(headerTemplate, {{"qqqqq", randomId(ids)}});
    }
    out = head + consistText + kFooter;
    return true;
}

SaveResult saveNamedConsist(AppContext& ctx, const std::string& name, const std::vector<NewVehicle>& vehicles,
                            const IdSource* ids) {
    SaveResult r;
    r.file = consistTemplatesFile(ctx);
    const IdSource system = ids ? IdSource{} : systemIds();
    const IdSource& use = ids ? *ids : system;
    auto failed = [&](const char* message, std::string detail) {
        r.message = message;
        r.detail = std::move(detail);
        return r;
    };
    std::string error;
    const std::string nameTemplate = readTemplate(ctx, "ConsistName.txt", error);
    const std::string entryTemplate = readTemplate(ctx, "ConsistTemplateEntry.txt", error);
    std::error_code ec;
    const bool exists = fs::exists(r.file, ec);
    const std::string headerTemplate = exists ? std::string() : readTemplate(ctx, "ConsistHeader.txt", error);
    if (!error.empty())
        return failed(kNotWritten, error);
    std::string existing;
    if (exists)
        if (const ConvertResult c = binToXmlText(r.file, existing); !c)
            return failed(kNotWritten, c.message);
    std::string xml;
    if (!mergedDocument(existing, exists, headerTemplate, newConsistText(nameTemplate, entryTemplate, name, vehicles, use),
                        use, xml))
        return failed(kInvalidFile, r.file.string() + ": there is no </Record> to add the consist before.");
    return writeConsistTemplates(ctx, xml, kSaveCommand);
}

SaveResult writeConsistTemplates(AppContext& ctx, const std::string& xml, const std::string& command) {
    SaveResult r;
    r.file = consistTemplatesFile(ctx);
    // The whole new document is encoded before the old one is touched.
    std::string bin;
    const ConvertResult encoded = xmlTextToBin(xml, bin, r.file.string());
    if (!encoded || bin.size() <= 8) {
        r.message = kNotWritten;
        r.detail = encoded ? r.file.string() + ": the new document came out empty." : encoded.message;
        return r;
    }
    JournalCommand entry(&ctx.journal(), command);
    const WriteResult w = ctx.files().write(r.file, bin);
    if (!w) {
        r.message = kNotWritten;
        r.detail = w.message;
        return r;
    }
    r.ok = true;
    r.message = kReady;
    r.backup = w.backup;
    r.created = w.created;
    return r;
}

} // namespace velmora::consists
