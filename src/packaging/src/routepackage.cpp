// The route's package and the package of the assets the route uses, and what every package
// shares: where it goes, the installer, the check of its blueprints and the zip.

#include "common.h"
#include "velmora/archives/zipwriter.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <set>

namespace velmora::packaging {

namespace detail {

std::string trimmed(std::string s) {
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(" \t\r\n") - first + 1);
}

std::string backslashed(const fs::path& p) {
    std::string s = p.generic_string();
    for (char& c : s)
        if (c == '/')
            c = '\\';
    return s;
}

void addInstaller(AppContext& ctx, PackageBuilder& builder, const char* as) {
    const fs::path installer = ctx.appPath() / kInstaller;
    std::error_code ec;
    if (!fs::is_regular_file(installer, ec)) {
        builder.note(std::string(kInstaller) + " is not in " + ctx.appPath().string() +
                     ": put the installer in the package as " + as + " yourself.");
        return;
    }
    builder.copyFileAs(installer, as);
}

std::string unslashed(std::string s) {
    std::replace(s.begin(), s.end(), '\\', '/');
    return s;
}

PackageReport refusedReport(const fs::path& folder, const std::string& why) {
    PackageReport r;
    r.folder = folder;
    r.refused = why;
    return r;
}

std::optional<fs::path> belowRoot(AppContext& ctx, const std::string& relative) {
    return ctx.resolver.resolve(ctx.railWorks(), relative);
}

} // namespace detail

using namespace detail;

fs::path packageRoot(AppContext& ctx, const PackageOptions& options, const std::string& packageFolder) {
    return (options.base.empty() ? ctx.appPath() : options.base) / packageFolder;
}

namespace {

std::string routePackageName(const routes::RouteEntry& route) {
    std::string name = trimmed(route.name);
    while (!name.empty() && name.back() == '.')
        name.pop_back();
    return fileNameFromText(name);
}

// The route's own part of its package.
void planRoute(AppContext& ctx, const routes::RouteEntry& route, PackageBuilder& builder) {
    addInstaller(ctx, builder, kInstaller);
    const fs::path target = fs::path("RailWorks") / "Content" / "Routes" / route.folder;
    builder.copyFolder(route.path, target);
    // The simulator's cache of the route's scenarios is made again where the route is installed.
    for (const auto& c : std::vector<PlannedCopy>(builder.planned()))
        if (c.target.parent_path() == target && iequals(c.target.filename().string(), "Scenarios.bin"))
            builder.drop(c.target);

    const std::string text = ReadTextFile(route.path / "RouteProperties.xml");
    const std::size_t at = InStr(1, text, "<BlueprintID>", Match::Binary);
    if (at == 0) {
        builder.missing((route.path / "RouteProperties.xml").string() + ": names no route template");
    } else {
        const BlueprintRef ref = GetBlueprintRef(text, at);
        const std::string product = "Assets\\" + ref.provider + "\\" + ref.product;
        const fs::path into = fs::path("RailWorks") / "Assets" / ref.provider / ref.product;
        if (const auto templates = belowRoot(ctx, product + "\\Templateroutes"))
            builder.copyFolder(*templates, into / "TemplateRoutes");
        else
            builder.missing(
                (ctx.railWorks() / "Assets" / ref.provider / ref.product / "TemplateRoutes").string());
        if (const auto markers = belowRoot(ctx, product + "\\RouteMarkers"))
            builder.copyFolder(*markers, into / "RouteMarkers");
    }
}

bool planRouteAssets(AppContext& ctx, const routes::RouteEntry& route, PackageBuilder& builder,
                     std::vector<std::string>& blueprints, std::string& refused);

} // namespace

namespace {

PackageReport makeRoutePackage(AppContext& ctx, const routes::RouteEntry& route, const std::string& folder,
                               const PackageOptions& options, UserInterface* ui, bool withRoute,
                               bool withAssets) {
    PackageBuilder builder(ctx, packageRoot(ctx, options, folder));
    builder.freeSpace = options.freeSpace;
    if (withRoute)
        planRoute(ctx, route, builder);
    std::vector<std::string> blueprints;
    std::string refused;
    if (withAssets && !planRouteAssets(ctx, route, builder, blueprints, refused))
        return refusedReport(builder.folder(), refused);
    PackageReport report =
        builder.run(std::string(withRoute ? "package route " : "package route-assets ") + route.folder, ui);
    if (withAssets && report.ok())
        report.check = checkBlueprints(ctx, report.folder, blueprints);
    return report;
}

} // namespace

PackageReport packageRoute(AppContext& ctx, const routes::RouteEntry& route, PackageState& state,
                           const PackageOptions& options, UserInterface* ui, bool withAssets) {
    state.packageFolder = routePackageName(route);
    return makeRoutePackage(ctx, route, state.packageFolder, options, ui, true, withAssets);
}

std::vector<RouteReport> routeReports(AppContext& ctx, const routes::RouteEntry& route) {
    const std::string stem = fileNameFromText(route.name);
    return {
        {ctx.reports() / (stem + "_Assets.csv"), "Missing your Assets list which should be:-", 0},
        {ctx.reports() / (stem + "_GeoShapes.csv"), "Missing your Geometry files list which should be:-", 1},
        {ctx.reports() / (stem + "_Textures.csv"), "Missing your Textures list which should be:-", 2},
        {ctx.reports() / (stem + "_Sounds.csv"), "Missing your Sounds list which should be:-", 3}};
}

std::optional<std::string> reportRowPath(const std::string& line, const fs::path& root) {
    if (line.empty() || line == "," || line == ",,,,")
        return std::nullopt;
    const std::vector<std::string> cells = csvCells(line);
    if (cells.empty() || trimmed(cells.front()).empty())
        return std::nullopt;
    std::string path = trimmed(cells.front());
    // A report made here names the file below the root it was made with; one made elsewhere has
    // some other root in front. Either way the path counts from its Assets on.
    const std::string rootText = root.generic_string();
    std::string unified = path;
    for (char& c : unified)
        if (c == '\\')
            c = '/';
    if (!rootText.empty() && unified.size() > rootText.size() &&
        unified.compare(0, rootText.size(), rootText) == 0 && unified[rootText.size()] == '/')
        unified = unified.substr(rootText.size() + 1);
    const std::vector<std::string> parts = splitDocumentPath(unified);
    for (std::size_t i = 0; i < parts.size(); ++i)
        if (iequals(parts[i], "Assets") && i + 1 < parts.size()) {
            std::string out;
            for (std::size_t j = i; j < parts.size(); ++j)
                out += (j > i ? "\\" : "") + parts[j];
            return out;
        }
    return std::nullopt;
}

namespace {

// The copy pattern of a report row's file: a wildcard in place of the ending that has kin.
std::string rowPattern(const std::string& file, int kind) {
    auto cut = [&](const char* ending) -> std::optional<std::string> {
        if (iendsWith(file, ending))
            return file.substr(0, file.size() - std::string_view(ending).size()) + "*";
        return std::nullopt;
    };
    std::optional<std::string> p;
    if (kind == 1 && !(p = cut(".GeoPcDx")))
        p = cut(".XSec");
    else if (kind == 2)
        p = cut(".TgPcDx");
    else if (kind == 3)
        p = cut(".Orv");
    return p.value_or(file);
}

} // namespace

namespace {

bool planRouteAssets(AppContext& ctx, const routes::RouteEntry& route, PackageBuilder& builder,
                     std::vector<std::string>& blueprints, std::string& refused) {
    const std::vector<RouteReport> reports = routeReports(ctx, route);
    for (const RouteReport& r : reports)
        if (!FileExists(r.file)) {
            refused = std::string(r.missingMessage) + "\n" + r.file.string();
            return false;
        }
    const fs::path root = ctx.railWorks();
    for (const RouteReport& r : reports) {
        for (const std::string& line : SplitLines(ReadTextFile(r.file))) {
            auto path = reportRowPath(line, root);
            if (!path)
                continue;
            // Rows name files as the documents do, entities and all.
            path = utf8FromDocument(DecodedChars(*path));
            const auto cut = path->rfind('\\');
            const std::string folder = path->substr(0, cut), file = path->substr(cut + 1);
            if (r.kind == 0)
                blueprints.push_back(path->substr(7)); // below Assets
            const auto source = ctx.resolver.resolve(root, folder);
            if (!source) {
                builder.missing((root / fs::path(unslashed(folder)) / file).string());
                continue;
            }
            builder.copyPattern(*source, rowPattern(file, r.kind),
                                fs::path("RailWorks") / source->lexically_relative(root));
        }
    }
    const std::string text = ReadTextFile(route.path / "RouteProperties.xml");
    if (const std::size_t at = InStr(1, text, "<TerrainBlueprint>", Match::Binary); at != 0) {
        const BlueprintRef ref = GetBlueprintRef(text, at);
        const std::string product = ref.provider + "\\" + ref.product;
        if (iequals(ref.provider, "Kuju")) {
            builder.leftOut(product + "\\Environment: the default environment, which every user has");
        } else if (const auto env = ctx.resolver.resolve(root, "Assets\\" + product + "\\Environment")) {
            builder.copyFolder(*env, fs::path("RailWorks") / env->lexically_relative(root));
        } else {
            builder.missing((root / "Assets" / ref.provider / ref.product / "Environment").string());
        }
        if (!ref.blueprintId.empty())
            blueprints.push_back(product + "\\" + ref.blueprintId);
    }
    return true;
}

} // namespace

PackageReport packageRouteAssets(AppContext& ctx, const routes::RouteEntry& route, PackageState& state,
                                 const PackageOptions& options, UserInterface* ui) {
    if (state.packageFolder.empty())
        state.packageFolder = routePackageName(route);
    return makeRoutePackage(ctx, route, state.packageFolder, options, ui, false, true);
}

PackageCheck checkBlueprints(AppContext& ctx, const fs::path& packageFolder,
                             const std::vector<std::string>& blueprints) {
    PackageCheck check;
    check.done = true;
    ctx.resolver.invalidate();
    std::set<std::string> seen, leftOut;
    const fs::path packed = packageFolder / "RailWorks" / "Assets";
    const fs::path source = ctx.railWorks() / "Assets";
    for (std::string path : blueprints) {
        if (iendsWith(path, ".xml"))
            path = path.substr(0, path.size() - 3) + "bin";
        if (!seen.insert(foldName(path)).second)
            continue;
        const std::vector<std::string> parts = splitDocumentPath(path);
        if (parts.size() < 3)
            continue;
        if (ctx.resolver.exists(packed, path)) {
            ++check.inPackage;
        } else if (iequals(parts[0], "Kuju")) {
            ++check.leftOutItems;
            if (leftOut.insert(parts[0] + "\\" + parts[1]).second)
                check.leftOut.push_back(parts[0] + "\\" + parts[1]);
        } else if (!ctx.resolver.exists(source, path)) {
            check.missingAtSource.push_back(path);
        } else {
            check.notInPackage.push_back(path);
        }
    }
    return check;
}

bool zipPackage(AppContext& ctx, PackageReport& report, UserInterface* ui) {
    const fs::path out = report.folder.parent_path() / (report.folder.filename().string() + ".zip");
    const archives::ZipCreateResult made = archives::createZip(ctx.files(), out, {report.folder}, {}, ui);
    if (!made.ok) {
        report.problems.push_back(made.message);
        return false;
    }
    report.zip = made.parts.empty() ? out : made.parts.front();
    return true;
}

} // namespace velmora::packaging
