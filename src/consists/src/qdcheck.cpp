// The Quick Drive walk: which PreLoad documents there are, what each names, what is missing.

#include "velmora/consists/qdcheck.h"

#include "velmora/consists/consisttemplates.h"

#include "velmora/assets/scanpath.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace velmora::consists {

const char* const kQdMissingWord = "missing";
const char* const kQdMissingHeading = "The following items were missing/not found (could be in .ap files)) ";

namespace {

const ScanSettings kExact{Match::Binary};

std::string valueAfter(std::string_view s, std::size_t from, std::string_view tag) {
    std::string value;
    std::size_t pos = from;
    GetDetail(s, pos, tag, value, kExact);
    return pos ? value : std::string();
}

// The English text of a localised element, or empty.
std::string localised(std::string_view s, std::string_view element) {
    const std::string open = "<" + std::string(element) + ">";
    const std::size_t at = InStr(1, s, open, Match::Binary);
    return at ? shownName(valueAfter(s, at, "English")) : std::string();
}

long number(const std::string& text) {
    long n = 0;
    const auto r = std::from_chars(text.data(), text.data() + text.size(), n);
    return r.ec == std::errc() ? n : 0;
}

// The class that follows "<Blueprint>": what kind of blueprint the document is.
std::string rootClass(std::string_view s) {
    const std::size_t at = InStr(1, s, "<Blueprint>", Match::Binary);
    if (!at)
        return {};
    const std::size_t lt = s.find('<', at - 1 + 11);
    if (lt == std::string_view::npos)
        return {};
    const std::size_t end = s.find_first_of(" />", lt + 1);
    return end == std::string_view::npos ? std::string() : std::string(s.substr(lt + 1, end - lt - 1));
}

struct Outcome {
    std::optional<QdDocument> document;
    std::string error;
};

} // namespace

const char* qdKindName(QdKind kind) { return kind == QdKind::Fragment ? "fragment" : "consist"; }

std::size_t QdDocument::missingCount() const {
    return static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(), [](const QdEntry& e) { return e.missing; }));
}

std::size_t QdListing::missingCount() const {
    std::size_t n = 0;
    for (const auto& d : documents)
        n += d.missingCount();
    return n;
}

bool isQuickDrivePath(std::string_view path) {
    return InStr(1, path, "PreLoad", Match::Text) != 0 && iendsWith(path, ".bin");
}

bool parseQuickDrive(std::string_view s, QdDocument& doc) {
    const std::string root = rootClass(s);
    if (root == "cConsistFragmentBlueprint")
        doc.kind = QdKind::Fragment;
    else if (root == "cConsistBlueprint")
        doc.kind = QdKind::Consist;
    else
        return false;
    for (std::size_t e = InStr(1, s, "<cConsistEntry", Match::Binary); e;
         e = InStr(e + 1, s, "<cConsistEntry", Match::Binary)) {
        const BlueprintRef ref = GetBlueprintRef(s, e, kExact);
        QdEntry entry{ref.provider, ref.product, ref.blueprintId};
        entry.flipped = valueAfter(s, e, "Flipped") == "eTrue";
        doc.entries.push_back(std::move(entry));
    }
    // What follows the last entry: the document's own values.
    const std::size_t tail = std::max<std::size_t>(1, InStr(1, s, "</ConsistEntry>", Match::Binary));
    const std::string_view rest = s.substr(tail - 1);
    if (doc.kind == QdKind::Fragment) {
        doc.name = shownName(valueAfter(s, InStr(1, s, "<cConsistFragmentBlueprint", Match::Binary), "Name"));
        if (doc.name.empty())
            doc.name = localised(rest, "DisplayName");
        return true;
    }
    doc.locoName = localised(rest, "LocoName");
    doc.name = localised(rest, "DisplayName");
    doc.engineType = valueAfter(rest, 1, "EngineType");
    doc.eraStart = number(valueAfter(rest, 1, "EraStartYear"));
    doc.eraEnd = number(valueAfter(rest, 1, "EraEndYear"));
    const std::string drivable = valueAfter(rest, 1, "DrivableConsist");
    doc.drivable = drivable == "eTrue" || drivable == "True";
    doc.consistType = valueAfter(rest, 1, "ConsistType");
    if (const std::size_t at = InStr(1, rest, "<ValidBuildAndDriveRoutes>", Match::Binary)) {
        const std::size_t end = InStr(at, rest, "</ValidBuildAndDriveRoutes>", Match::Binary);
        const std::string_view list = rest.substr(at - 1, end ? end - at : std::string_view::npos);
        // Each route its own element with a RouteID, as the builder's templates write them; older
        // documents keep a plain list of <e> values.
        for (const char* tag : {"RouteID", "e"}) {
            for (std::size_t pos = 1;;) {
                std::string route;
                GetDetail(list, pos, tag, route, kExact);
                if (!pos)
                    break;
                doc.routes.push_back(route);
            }
            if (!doc.routes.empty())
                break;
        }
    }
    return true;
}

QdListing checkQuickDrive(AppContext& ctx, const fs::path& folder, int threads, UserInterface* ui) {
    QdListing listing;
    std::error_code ec;
    const fs::path start = fs::absolute(folder, ec).lexically_normal();
    std::error_code rootEc;
    const fs::path root = fs::absolute(ctx.railWorks(), rootEc).lexically_normal();

    std::vector<fs::path> candidates;
    assets::cScanPath scan;
    scan.ReadOnly = true;
    scan.setFilter("*.bin");
    if (ui)
        ui->beginProgress("Looking for Quick Drive documents in " + start.string(), 0);
    long seen = 0;
    const std::size_t startLength = (ec ? folder : start).string().size();
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        if (ui && ++seen % 256 == 0) {
            ui->progress(seen, "Looking at " + path);
            ui->pumpEvents();
            if (ui->cancelled())
                scan.StopScan();
        }
        // Only the part below the start folder counts: a root that happens to hold "PreLoad" in
        // its own path does not make every blueprint a Quick Drive document.
        const std::string full = path + name;
        const std::string_view below = std::string_view(full).substr(std::min(full.size(), startLength));
        if (isQuickDrivePath(below))
            candidates.push_back(fs::path(path) / name);
    };
    scan.StartScan(ec ? folder : start, true, false, true, false);
    listing.unreadable = scan.UnreadableFolders();
    if (ui)
        ui->endProgress();
    if (scan.stopped()) {
        listing.stopped = true;
        return listing;
    }

    bool stopped = false;
    std::vector<Outcome> outcomes = parallelMap<Outcome>(
        candidates.size(), threads, ui, "Reading Quick Drive documents", stopped, [&](std::size_t i) {
            const fs::path& file = candidates[i];
            return onePiece(
                [&] {
                    Outcome out;
                    std::string xml;
                    if (const ConvertResult r = binToXmlText(file, xml); !r) {
                        out.error = r.message.empty() ? file.string() + ": cannot be converted" : r.message;
                        return out;
                    }
                    QdDocument doc;
                    if (!parseQuickDrive(xml, doc))
                        return out;
                    for (QdEntry& e : doc.entries)
                        e.missing = blueprintMissing(ctx, {{}, e.provider, e.product, e.blueprint, {}});
                    doc.file = file;
                    const fs::path relative = file.lexically_relative(root);
                    doc.path = !rootEc && !relative.empty() && *relative.begin() != ".."
                                   ? relative.generic_string()
                                   : file.string();
                    out.document = std::move(doc);
                    return out;
                },
                [&](const std::string& why) {
                    Outcome failed;
                    failed.error = file.string() + ": " + why;
                    return failed;
                });
        });
    if (stopped) {
        listing.stopped = true;
        return listing;
    }
    listing.tested = static_cast<long>(candidates.size());
    for (Outcome& o : outcomes) {
        if (!o.error.empty())
            listing.unreadable.push_back(std::move(o.error));
        if (o.document)
            listing.documents.push_back(std::move(*o.document));
    }
    return listing;
}

std::string qdMissingReport(const QdListing& listing) {
    std::string out;
    for (const auto& d : listing.documents)
        for (const auto& e : d.entries)
            if (e.missing)
                out += d.path + ": " + e.provider + "\\" + e.product + "\\" + e.blueprint + "\n";
    return out.empty() ? out : std::string(kQdMissingHeading) + "\n" + out;
}

const std::vector<std::string>& qdGridHeader() {
    static const std::vector<std::string> header{"Document", "Kind",    "Name",      "Engine Type", "Era",   "Drivable",
                                                 "Provider", "Product", "Blueprint", "Flipped",     "Status"};
    return header;
}

std::vector<std::vector<std::string>> qdGridRows(const QdListing& listing, QdView view) {
    std::vector<std::vector<std::string>> rows;
    const QdKind kind = view == QdView::Fragments ? QdKind::Fragment : QdKind::Consist;
    for (const QdDocument& d : listing.documents) {
        if (d.kind != kind)
            continue;
        const bool consist = d.kind == QdKind::Consist;
        std::vector<std::string> head{d.path,
                                      qdKindName(d.kind),
                                      utf8FromDocument(d.name),
                                      d.engineType,
                                      consist ? std::to_string(d.eraStart) + "-" + std::to_string(d.eraEnd) : "",
                                      consist ? (d.drivable ? "Yes" : "No") : ""};
        if (view == QdView::AllConsists || d.entries.empty()) {
            auto row = head;
            const std::size_t missing = d.missingCount();
            row.insert(row.end(), {"", "", std::to_string(d.entries.size()) + " entries", "",
                                   missing ? std::to_string(missing) + " " + kQdMissingWord : ""});
            rows.push_back(std::move(row));
            continue;
        }
        for (const QdEntry& e : d.entries) {
            if (InStr(1, e.blueprint, "\\Simulation", Match::Text))
                continue;
            auto row = head;
            row.insert(row.end(), {utf8FromDocument(shownName(e.provider)), utf8FromDocument(shownName(e.product)),
                                   utf8FromDocument(shownName(e.blueprint)),
                                   e.flipped ? "eTrue" : "eFalse", e.missing ? kQdMissingWord : ""});
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

} // namespace velmora::consists
