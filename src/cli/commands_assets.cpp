// The asset list and the rolling-stock index from the command line.

#include "session.h"

#include "velmora/assets/assetlist.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/routes/routes.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace velmora::cli {

namespace {

std::string rowsAsJson(const std::vector<assets::AssetRow>& rows) {
    return tableJson(assets::assetColumns(), assets::cellsOf(rows));
}

std::string rowsAsText(const std::vector<assets::AssetRow>& rows, char separator) {
    return tableText(assets::assetColumns(), assets::cellsOf(rows), separator, false);
}

// The options every list command shares.
const std::vector<std::string> kValueOptions = {"--category", "--mask", "--from", "--threads", "--out"};
const std::vector<std::string> kFlags = {"--rolling-stock", "--exclude-preload", "--default-folders", "--json", "--csv"};

bool readListOptions(Session& s, const Arguments& a, assets::AssetListOptions& o) {
    o.rollingStockOnly = a.has("--rolling-stock");
    o.excludePreload = a.has("--exclude-preload");
    o.defaultFolders = a.has("--default-folders");
    if (auto v = a.value("--category"))
        o.category = *v;
    if (auto v = a.value("--mask"))
        o.mask = *v;
    const auto threads = s.threads(a);
    if (!threads)
        return false;
    o.threads = *threads;
    o.log = &s.ctx.log();
    // Names are taken in the language the user chose, as the screen shows them.
    const std::string language = s.ctx.settings.language;
    if (!language.empty() && language != "English")
        o.languageTag = language;
    return true;
}

// The start folder: --from, else the Assets folder of the simulator root.
std::optional<fs::path> startFolder(Session& s, const Arguments& a) {
    if (auto from = a.value("--from")) {
        if (!fs::is_directory(*from)) {
            s.fail(*from + ": no such folder");
            return std::nullopt;
        }
        return fs::path(*from);
    }
    if (!s.requireRoot())
        return std::nullopt;
    auto assetsFolder = s.ctx.resolver.resolve(s.ctx.railWorks(), "Assets");
    if (!assetsFolder) {
        s.fail((s.ctx.railWorks() / "Assets").string() + ": the simulator root has no Assets folder");
        return std::nullopt;
    }
    return assetsFolder;
}

std::optional<assets::AssetListResult> build(Session& s, const Arguments& a, const assets::AssetListOptions& o) {
    const auto from = startFolder(s, a);
    if (!from)
        return std::nullopt;
    auto result = assets::buildAssetList(*from, o, &s.ui);
    for (const auto& m : result.messages)
        s.err << "velmora-cli: " << m << '\n';
    if (result.stopped) {
        s.fail("stopped");
        return std::nullopt;
    }
    return result;
}

int cmdAssetsList(Session& s) {
    const Arguments a = parseArguments(s.g.rest, kValueOptions, kFlags);
    if (!s.noWords(a))
        return Error;
    s.start();
    assets::AssetListOptions o;
    if (!readListOptions(s, a, o))
        return Error;
    const auto result = build(s, a, o);
    if (!result)
        return Error;
    if (auto out = a.value("--out")) {
        std::string error;
        if (iendsWith(*out, ".json")) {
            if (const WriteResult written = s.ctx.files().write(*out, rowsAsJson(result->rows)); !written)
                return s.fail(written.message);
        } else if (!assets::saveAssetList(s.ctx.files(), *out, assets::listFormOf(*out), result->rows, &error)) {
            return s.fail(error);
        }
        if (!s.g.quiet)
            s.out << result->rows.size() << " rows written to " << *out << '\n';
        if (!result->unreadable.empty())
            s.out << result->unreadable.size() << " files or folders could not be read (see "
                  << s.ctx.log().file().string() << ")\n";
        return Success;
    }
    if (a.has("--json"))
        s.out << rowsAsJson(result->rows);
    else
        s.out << rowsAsText(result->rows, a.has("--csv") ? ',' : '\t');
    return Success;
}

int cmdAssetsIndex(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--threads", "--from"}, {"--exclude-preload"});
    if (!s.noWords(a))
        return Error;
    s.start();
    assets::AssetListOptions o;
    if (!readListOptions(s, a, o))
        return Error;
    o.rollingStockOnly = true; // the index is the rolling-stock list
    const auto result = build(s, a, o);
    if (!result)
        return Error;
    std::string error;
    if (!assets::saveStockIndex(s.ctx.files(), s.ctx.reports(), result->rows, &error))
        return s.fail(error);
    if (!s.g.quiet)
        s.out << "Wrote " << result->rows.size() << " rows of rolling stock to "
              << (s.ctx.reports() / "Index.csv").string() << '\n';
    return Success;
}

// The blueprints named on the command line as grid rows; false after saying which is wrong.

std::string reportAsCsv(const assets::Report& r) {
    std::string out = "File,Missing\n";
    for (const auto& l : r.lines)
        if (!l.path.empty())
            out += csvField(l.path) + "," + (l.missing ? "yes" : "no") + "\n";
    return out;
}

std::string reportAsJson(const assets::Report& r) {
    std::string out = "[\n";
    bool first = true;
    for (const auto& l : r.lines) {
        if (l.path.empty())
            continue;
        out += std::string(first ? "" : ",\n") + "  {\"file\": " + jsonString(l.path) + ", \"missing\": " +
               (l.missing ? "true" : "false") + ", \"line\": " + jsonString(l.text) + "}";
        first = false;
    }
    return out + "\n]\n";
}

// The report's text with a mark on each missing file that the text gives as a bare path (the
// file lists); the reports that mark their missing lines themselves stay as they are.
std::string reportAsText(const assets::Report& r) {
    if (r.lines.empty())
        return r.text();
    std::string out;
    for (const auto& l : r.lines)
        out += (l.missing && l.text == l.path ? "MISSING: " : "") + shown(l.text) + "\r\n";
    return out;
}

// The closing line of a report read by a person: how many of the files it names are missing.
std::string missingSummary(const assets::Report& r) {
    const auto missing = std::count_if(r.lines.begin(), r.lines.end(), [](const auto& l) { return l.missing; });
    if (missing == 0)
        return "No missing files";
    return std::to_string(missing) + (missing == 1 ? " missing file" : " missing files");
}

// A document that could not be read leaves the report short: that ends the command with an
// error (the error log has already said which).
int printReport(Session& s, const Arguments& a, const assets::Report& r, const assets::AssetChecks& checks) {
    if (a.has("--json"))
        s.out << reportAsJson(r);
    else if (a.has("--csv"))
        s.out << reportAsCsv(r);
    else
        s.out << reportAsText(r) << missingSummary(r) << "\r\n";
    if (!checks.unreadable.empty())
        return Error;
    return r.anyMissing() ? ProblemsFound : Success;
}

// The blueprints a check command names, after the root is known; false after saying why.
bool checkedRows(Session& s, Arguments& a, std::vector<assets::AssetRow>& rows,
                 const std::vector<std::string>& valueOptions = {}) {
    a = parseArguments(s.g.rest, valueOptions, {"--json", "--csv"});
    if (!a.problem.empty() || a.plain.empty()) {
        s.fail(a.problem.empty() ? "needs the blueprint (.bin) to look at" : a.problem);
        return false;
    }
    s.start();
    return s.requireRoot() && rowsFromPaths(s, a.plain, rows);
}

// Check Loco for missing files: the report, then the textures the shapes miss.
int cmdCheckLoco(Session& s) {
    Arguments a;
    std::vector<assets::AssetRow> rows;
    if (!checkedRows(s, a, rows))
        return Error;
    assets::AssetChecks checks(s.ctx);
    checks.currentFile = s.ctx.currentFile;
    assets::Report report = checks.checkLoco(rows);
    report.lines.insert(report.lines.end(), checks.fileList.lines.begin(), checks.fileList.lines.end());
    return printReport(s, a, report, checks);
}

// The file list of blueprints: every file each one uses, missing ones marked; or one of the
// asset screen's Show Files Used reports.
int cmdFilesUsed(Session& s) {
    Arguments a;
    std::vector<assets::AssetRow> rows;
    if (!checkedRows(s, a, rows, {"--by"}))
        return Error;
    assets::AssetChecks checks(s.ctx);
    const std::string by = a.value("--by").value_or("");
    if (by.empty())
        return printReport(s, a, checks.getAssetBits(rows), checks);
    if (by == "locos")
        return printReport(s, a, checks.filesUsedByLocos(rows), checks);
    if (by == "wagons")
        return printReport(s, a, checks.filesUsedByWagons(rows), checks);
    if (by == "asset")
        return printReport(s, a, checks.filesUsedByAsset(rows), checks);
    if (by == "lofts")
        return printReport(s, a, checks.filesUsedByLofts(rows), checks);
    return s.fail("--by takes locos, wagons, asset or lofts, not '" + by + "'");
}

// Use in Scenarios: the blueprints become placeable in scenarios, each stored with a backup.
int cmdUseInScenarios(Session& s) {
    Arguments a;
    std::vector<assets::AssetRow> rows;
    if (!checkedRows(s, a, rows))
        return Error;
    assets::AssetChecks checks(s.ctx);
    const auto problems = checks.useInScenarios(rows);
    for (const auto& row : rows)
        s.out << shown(row.relativePath()) << '\t' << (row.inScene == "Yes" ? "stored" : "unchanged") << '\n';
    for (const auto& p : problems)
        s.err << "velmora-cli: " << p << '\n';
    return problems.empty() ? Success : Error;
}

// One blueprint's document, converted; false after saying why.
bool blueprintText(Session& s, const std::string& path, fs::path& file, std::string& xml) {
    std::vector<assets::AssetRow> rows;
    if (!rowsFromPaths(s, {path}, rows))
        return false;
    file = assets::rowFile(s.ctx, rows.front());
    s.ctx.currentFile = file.string();
    if (const ConvertResult r = binToXmlText(file, xml); !r) {
        s.fail(r.message);
        return false;
    }
    return true;
}

int cmdChildren(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty() || a.plain.size() != 1)
        return s.fail(a.problem.empty() ? "needs one blueprint (.bin)" : a.problem);
    s.start();
    fs::path file;
    std::string xml;
    if (!s.requireRoot() || !blueprintText(s, a.plain.front(), file, xml))
        return Error;
    for (const auto& name : assets::childEntries(xml))
        s.out << shown(name) << '\n';
    return Success;
}

// Remove Selected Child Entries: the vehicle without them, stored as a new item beside it.
int cmdRemoveChildren(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--as", "--name"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2 || !a.value("--as"))
        return s.fail("needs the blueprint, --as NEWNAME and the child entries to remove");
    s.start();
    fs::path file;
    std::string xml;
    if (!s.requireRoot() || !blueprintText(s, a.plain.front(), file, xml))
        return Error;
    const auto children = assets::childEntries(xml);
    const std::vector<std::string> names(a.plain.begin() + 1, a.plain.end());
    for (const auto& n : names)
        if (std::find(children.begin(), children.end(), n) == children.end())
            return s.fail(file.string() + ": has no child entry '" + n + "'");
    xml = assets::removeChildEntries(xml, names);
    if (auto display = a.value("--name"))
        assets::renameBlueprint(xml, *display);
    const auto stored = assets::storeBlueprint(s.ctx, file, xml, *a.value("--as"));
    if (!stored.ok)
        return s.fail(stored.message);
    s.out << "Wrote " << stored.written.string() << '\n';
    return Success;
}

// Correct Selected Smoke Stack: up to three child entries become the main smoke stack.
int cmdFixSmoke(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2 || a.plain.size() > 4)
        return s.fail("needs the blueprint and one to three child entries");
    s.start();
    fs::path file;
    std::string xml;
    if (!s.requireRoot() || !blueprintText(s, a.plain.front(), file, xml))
        return Error;
    const std::vector<std::string> names(a.plain.rbegin(), a.plain.rend() - 1); // the last one first
    const auto stored = assets::storeBlueprint(s.ctx, file, assets::correctSmokeStack(xml, names), file.stem().string());
    if (!stored.ok)
        return s.fail(stored.message);
    s.out << "Wrote " << stored.written.string() << '\n';
    return Success;
}

// Process Missing Assets File: the blueprints Reports/MissingAssets.csv names, and what they use.
int cmdProcessMissing(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--mask", "--category"}, {"--json", "--csv"});
    if (!s.startWithout(a))
        return Error;
    assets::AssetChecks checks(s.ctx);
    std::vector<assets::AssetRow> rows;
    const std::string problem = checks.missingAssetRows(rows, a.value("--mask").value_or("*.bin"),
                                                        a.value("--category").value_or(""));
    if (!problem.empty())
        return s.fail(problem);
    return printReport(s, a, checks.getAssetBits(rows), checks);
}

// Package Missing Assets: the files of Reports/MissingFiles.txt copied into NewPackage.
int cmdPackageMissing(Session& s) {
    if (!s.startWithout(parseArguments(s.g.rest, {}, {})))
        return Error;
    assets::AssetChecks checks(s.ctx);
    int copied = 0;
    const std::string problem = checks.packageMissingAssets(&copied);
    if (!problem.empty())
        return s.fail(problem);
    s.out << copied << " files have been copied to " << (s.ctx.appPath() / "NewPackage").string() << '\n';
    return Success;
}

// Where is it used? The scenarios whose stock names each blueprint.
int cmdWhereUsed(Session& s) {
    Arguments a;
    std::vector<assets::AssetRow> rows;
    if (!checkedRows(s, a, rows))
        return Error;
    const auto routesFound = routes::listRoutes(s.ctx);
    if (a.has("--csv"))
        s.out << "Asset,Route,Scenario,Route folder,Scenario folder\n";
    if (a.has("--json"))
        s.out << "[\n";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& row = rows[i];
        const auto uses = routes::whereUsed(s.ctx, routesFound, row.relativePath());
        if (a.has("--json")) {
            s.out << "  {\"asset\": " << jsonString(row.relativePath()) << ", \"usedIn\": [";
            for (std::size_t j = 0; j < uses.size(); ++j)
                s.out << (j ? ", " : "") << "{\"route\": " << jsonString(uses[j].route)
                      << ", \"scenario\": " << jsonString(uses[j].scenario) << "}";
            s.out << "]}" << (i + 1 < rows.size() ? "," : "") << '\n';
            continue;
        }
        if (a.has("--csv")) {
            for (const auto& u : uses)
                s.out << csvField(row.relativePath()) << ',' << csvField(u.route) << ',' << csvField(u.scenario) << ','
                      << u.routeFolder << ',' << u.scenarioFolder << '\n';
            continue;
        }
        s.out << shown(row.relativePath()) << '\n';
        if (uses.empty())
            s.out << "\tNot used in any scenario\n";
        for (const auto& u : uses)
            s.out << '\t' << shown(u.route) << '\t' << shown(u.scenario) << '\n';
    }
    if (a.has("--json"))
        s.out << "]\n";
    return Success;
}

} // namespace

bool rowsFromPaths(Session& s, const std::vector<std::string>& paths, std::vector<assets::AssetRow>& rows) {
    const fs::path assetsFolder = s.ctx.resolver.resolveForWrite(s.ctx.railWorks(), "Assets");
    for (const auto& p : paths) {
        assets::AssetRow row;
        if (!assets::rowForBlueprint(p, assetsFolder, row)) {
            s.fail(p + ": not a blueprint below " + assetsFolder.string());
            return false;
        }
        row.name = row.path;
        rows.push_back(row);
    }
    return true;
}

std::vector<Command> assetCommands() {
    return {
        {"assets list",
         "[--rolling-stock] [--category C] [--mask M] [--exclude-preload] [--default-folders] [--from DIR] "
         "[--threads N] [--json|--csv] [--out FILE]",
         "the asset list (to FILE as .csv, .txt, .xls or .json)", cmdAssetsList},
        {"assets index", "[--exclude-preload] [--threads N]", "the rolling-stock index Reports/Index.csv",
         cmdAssetsIndex},
        {"assets check-loco", "PATH... [--json|--csv]", "what a vehicle needs that is missing (exit 1 if anything)",
         cmdCheckLoco},
        {"assets files-used", "PATH... [--by locos|wagons|asset|lofts] [--json|--csv]",
         "every file blueprints use, missing ones marked", cmdFilesUsed},
        {"assets use-in-scenarios", "PATH...", "makes blueprints placeable in scenarios (stored with a backup)",
         cmdUseInScenarios},
        {"assets children", "PATH", "the child entries of a vehicle", cmdChildren},
        {"assets remove-children", "PATH CHILD... --as NEWNAME [--name DISPLAYNAME]",
         "the vehicle without those child entries, stored as a new item beside it", cmdRemoveChildren},
        {"assets fix-smoke", "PATH CHILD...", "one to three child entries become the main smoke stack", cmdFixSmoke},
        {"assets process-missing", "[--mask M] [--category C] [--json|--csv]",
         "the blueprints Reports/MissingAssets.csv names and the files they use", cmdProcessMissing},
        {"assets package-missing", "", "copies the files of Reports/MissingFiles.txt into NewPackage",
         cmdPackageMissing},
        {"assets where-used", "PATH... [--json|--csv]", "the routes and scenarios whose stock names each blueprint",
         cmdWhereUsed},
    };
}

} // namespace velmora::cli
