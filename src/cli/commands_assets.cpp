// The asset list and the rolling-stock index from the command line.

#include "session.h"

#include "velmora/assets/assetlist.h"
#include "velmora/assets/checks.h"
#include "velmora/core/services.h"
#include "velmora/routes/routes.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace velmora::cli {

namespace {

std::string rowsAsJson(const std::vector<assets::AssetRow>& rows) {
    const auto& columns = assets::assetColumns();
    std::string out = "[\n";
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const auto cells = rows[r].cells();
        out += "  {";
        for (std::size_t c = 0; c < cells.size(); ++c)
            out += (c ? ", " : "") + jsonString(columns[c]) + ": " + jsonString(cells[c]);
        out += r + 1 < rows.size() ? "},\n" : "}\n";
    }
    return out + "]\n";
}

std::string rowsAsText(const std::vector<assets::AssetRow>& rows, char separator) {
    std::string out;
    auto line = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            out += (i ? std::string(1, separator) : std::string()) + shown(cells[i]);
        out += '\n';
    };
    line(assets::assetColumns());
    for (const auto& r : rows)
        line(r.cells());
    return out;
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
    if (auto v = a.value("--threads")) {
        auto n = parseNumber(*v);
        if (!n || *n < 1 || *n > 256) {
            s.fail("--threads needs a number from 1 to 256, not '" + *v + "'");
            return false;
        }
        o.threads = static_cast<int>(*n);
    }
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
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (!a.plain.empty())
        return s.fail("unexpected argument '" + a.plain.front() + "'");
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
            if (!WriteTextFile(*out, rowsAsJson(result->rows)))
                return s.fail(*out + ": the list cannot be written");
        } else if (!assets::saveAssetList(*out, assets::listFormOf(*out), result->rows, &error)) {
            return s.fail(error);
        }
        if (!s.g.quiet)
            s.out << result->rows.size() << " rows written to " << *out << '\n';
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
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (!a.plain.empty())
        return s.fail("unexpected argument '" + a.plain.front() + "'");
    s.start();
    assets::AssetListOptions o;
    if (!readListOptions(s, a, o))
        return Error;
    o.rollingStockOnly = true; // the index is the rolling-stock list
    const auto result = build(s, a, o);
    if (!result)
        return Error;
    std::string error;
    if (!assets::saveStockIndex(s.ctx.reports(), result->rows, &error))
        return s.fail(error);
    if (!s.g.quiet)
        s.out << "Wrote " << result->rows.size() << " rows of rolling stock to "
              << (s.ctx.reports() / "Index.csv").string() << '\n';
    return Success;
}

// The blueprints named on the command line as grid rows; false after saying which is wrong.
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

int printReport(Session& s, const Arguments& a, const assets::Report& r) {
    if (a.has("--json"))
        s.out << reportAsJson(r);
    else if (a.has("--csv"))
        s.out << reportAsCsv(r);
    else
        s.out << r.text();
    return r.anyMissing() ? ProblemsFound : Success;
}

// The blueprints a check command names, after the root is known; false after saying why.
bool checkedRows(Session& s, Arguments& a, std::vector<assets::AssetRow>& rows) {
    a = parseArguments(s.g.rest, {}, {"--json", "--csv"});
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
    return printReport(s, a, report);
}

// The file list of blueprints: every file each one uses, missing ones marked.
int cmdFilesUsed(Session& s) {
    Arguments a;
    std::vector<assets::AssetRow> rows;
    if (!checkedRows(s, a, rows))
        return Error;
    assets::AssetChecks checks(s.ctx);
    return printReport(s, a, checks.getAssetBits(rows));
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
        {"assets files-used", "PATH... [--json|--csv]", "every file blueprints use, missing ones marked", cmdFilesUsed},
        {"assets where-used", "PATH... [--json|--csv]", "the routes and scenarios whose stock names each blueprint",
         cmdWhereUsed},
    };
}

} // namespace velmora::cli
