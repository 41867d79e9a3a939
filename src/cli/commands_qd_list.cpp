// Quick Drive consists and fragments from the command line: the check of what they name, and
// the in-place edit of a consist.

#include "session.h"

#include "velmora/consists/qdcheck.h"
#include "velmora/consists/qdedit.h"
#include "velmora/core/services.h"

namespace velmora::cli {

namespace {

using consists::QdDocument;

std::string boolText(bool b) { return b ? "true" : "false"; }

std::string documentsAsJson(const std::vector<QdDocument>& docs) {
    std::string out = "[\n";
    for (std::size_t i = 0; i < docs.size(); ++i) {
        const QdDocument& d = docs[i];
        out += "  {\"path\": " + jsonString(d.path) + ", \"kind\": " + jsonString(consists::qdKindName(d.kind)) +
               ", \"name\": " + jsonString(d.name) + ", \"engineType\": " + jsonString(d.engineType) +
               ", \"eraStart\": " + std::to_string(d.eraStart) + ", \"eraEnd\": " + std::to_string(d.eraEnd) +
               ", \"drivable\": " + boolText(d.drivable) + ", \"entries\": [";
        for (std::size_t k = 0; k < d.entries.size(); ++k) {
            const auto& e = d.entries[k];
            out += std::string(k ? ", " : "") + "{\"provider\": " + jsonString(e.provider) +
                   ", \"product\": " + jsonString(e.product) + ", \"blueprint\": " + jsonString(e.blueprint) +
                   ", \"flipped\": " + boolText(e.flipped) + ", \"missing\": " + boolText(e.missing) + "}";
        }
        out += std::string("]}") + (i + 1 < docs.size() ? ",\n" : "\n");
    }
    return out + "]\n";
}

std::string documentsAsText(const std::vector<QdDocument>& docs) {
    std::string out = "Path\tKind\tName\tEngine type\tEra\tDrivable\tEntries\tMissing\n";
    for (const auto& d : docs) {
        out += shown(d.path) + '\t' + consists::qdKindName(d.kind) + '\t' + shown(d.name) + '\t' + d.engineType + '\t' +
               (d.kind == consists::QdKind::Consist ? std::to_string(d.eraStart) + "-" + std::to_string(d.eraEnd) : "") +
               '\t' + (d.kind == consists::QdKind::Consist ? (d.drivable ? "yes" : "no") : "") + '\t' +
               std::to_string(d.entries.size()) + '\t' + std::to_string(d.missingCount()) + '\n';
        for (const auto& e : d.entries)
            if (e.missing)
                out += "  missing: " + shown(e.provider + "\\" + e.product + "\\" + e.blueprint) + '\n';
    }
    return out;
}

int cmdQdList(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--threads"}, {"--json"});
    if (!s.noWords(a))
        return Error;
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    s.start();
    if (!s.requireRoot())
        return Error;
    const auto assets = s.ctx.resolver.resolve(s.ctx.railWorks(), "Assets");
    if (!assets)
        return s.fail((s.ctx.railWorks() / "Assets").string() + ": the simulator root has no Assets folder");
    const auto listing = consists::checkQuickDrive(s.ctx, *assets, *threads, &s.ui);
    for (const auto& u : listing.unreadable)
        s.err << "velmora-cli: " << s.g.command << ": cannot read " << shown(u) << '\n';
    if (listing.stopped)
        return s.fail("stopped");
    s.out << (a.has("--json") ? documentsAsJson(listing.documents) : documentsAsText(listing.documents));
    return listing.missingCount() ? ProblemsFound : Success;
}

int cmdQdEdit(Session& s) {
    const Arguments a = parseArguments(
        s.g.rest, {"--name", "--loco-name", "--era", "--type", "--drivable", "--routes"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail("give one Quick Drive consist (.bin)");
    consists::QdChanges c;
    c.displayName = a.value("--name");
    c.locoName = a.value("--loco-name");
    if (const auto era = a.value("--era")) {
        const std::size_t dash = era->find('-');
        const auto from = dash == std::string::npos ? std::nullopt : parseNumber(era->substr(0, dash));
        const auto to = dash == std::string::npos ? std::nullopt : parseNumber(era->substr(dash + 1));
        if (!from || !to || *from < 0 || *to < 0 || *from > 9999 || *to > 9999)
            return s.fail("--era must be FROM-TO in years, not '" + *era + "'");
        c.eraStart = static_cast<long>(*from);
        c.eraEnd = static_cast<long>(*to);
    }
    c.consistType = a.value("--type");
    if (const auto d = a.value("--drivable")) {
        if (*d != "yes" && *d != "no")
            return s.fail("--drivable must be yes or no, not '" + *d + "'");
        c.drivable = *d == "yes" ? "eTrue" : "eFalse";
    }
    if (const auto routes = a.value("--routes")) {
        std::vector<std::string> list;
        for (std::size_t from = 0; from <= routes->size();) {
            const std::size_t comma = std::min(routes->find(',', from), routes->size());
            if (comma > from)
                list.push_back(routes->substr(from, comma - from));
            from = comma + 1;
        }
        c.routes = std::move(list);
    }
    s.start();
    const auto r = consists::editQuickDrive(s.ctx, fs::path(a.plain[0]), c);
    if (!r)
        return s.fail(shown(r.message));
    s.out << r.message << '\n';
    if (!r.backup.empty())
        s.out << "Backup: " << r.backup.string() << '\n';
    return Success;
}

const char* const kQdListHelp = R"(Walks the Assets folder on all cores for Quick Drive documents: every .bin
below a PreLoad folder whose blueprint is a consist (cConsistBlueprint) or a
fragment (cConsistFragmentBlueprint); other PreLoad files are left out.

  --threads N     documents read on N threads (default: one per core)
  --json          a JSON array instead of tab-separated text

JSON: an array of objects with exactly these keys:
  "path"        the document, relative to the simulator root, with '/'
  "kind"        "consist" or "fragment"
  "name"        the display name (a fragment's name)
  "engineType"  "eraStart"  "eraEnd"  "drivable"   (consists; empty or 0 for fragments)
  "entries"     what it names, front to back: "provider", "product",
                "blueprint" (as the document writes it), "flipped", "missing"
An entry is missing when no .bin of its path is below Assets, also after the
repair of its letters; a path leading out of Assets is missing. A stock file
packed in an .ap archive is reported as missing.
Documents that cannot be decoded and folders that cannot be read are named on
standard error and the walk goes on. Exit 1 when anything named is missing.
)";

const char* const kQdEditHelp = R"(Changes a Quick Drive consist in place; what is not given stays as it is.

  --name T        the display name (the Quick Drive consist screen)
  --loco-name T   the locomotive name (the Quick Drive locomotive screen)
  --era FROM-TO   the years of the era
  --type T        the consist type, "Consist Type Freight Coal" or
                  "eConsistTypeFreightCoal"
  --drivable yes|no
  --routes G,...  the routes (their GUIDs) on which it may run as AI traffic,
                  the whole new list; "" for none

The new document is made whole before the file is written; the old file is
kept as a numbered backup, and undo takes the edit back. Fragments are refused.
)";

} // namespace

std::vector<Command> qdCommands() {
    return {
        {"qd list", "[--json] [--threads N]", "the Quick Drive consists and fragments and what they name (exit 1 if any is missing)",
         cmdQdList, true, kQdListHelp},
        {"qd edit", "FILE [--name T] [--loco-name T] [--era FROM-TO] [--type T] [--drivable yes|no] [--routes GUID,...]",
         "changes a Quick Drive consist in place, with a backup", cmdQdEdit, true, kQdEditHelp},
    };
}

} // namespace velmora::cli
