// Packages of asset folders and of reskins.

#include "common.h"
#include "velmora/backup/treecopy.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/packaging/crc.h"

#include <algorithm>

namespace velmora::packaging {

using namespace detail;

namespace {

// The last part of a folder's path, a trailing separator ignored.
std::string lastPart(const fs::path& folder) {
    fs::path p = folder;
    if (!p.has_filename())
        p = p.parent_path();
    return p.filename().string();
}

// The folder below the simulator's root, or the problem.
std::optional<fs::path> relativeToRoot(AppContext& ctx, const fs::path& folder, std::string& problem) {
    const fs::path root = ctx.railWorks();
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) {
        problem = folder.string() + ": the folder is not there.";
        return std::nullopt;
    }
    if (root.empty() || !backup::isInside(folder, root)) {
        problem = folder.string() + ": the folder is not below the simulator's folder " + root.string() + ".";
        return std::nullopt;
    }
    const fs::path real = fs::weakly_canonical(fs::absolute(folder), ec);
    const fs::path realRoot = fs::weakly_canonical(fs::absolute(root), ec);
    return real.lexically_relative(realRoot);
}

struct WalkedFile {
    std::string name;
    fs::path sub; // the file's folder relative to the walked root
};

// Files of a folder first, then its sub-folders in name order, as the tables were filled.
void walkFilesFirst(const fs::path& root, const fs::path& sub, std::vector<WalkedFile>& out,
                    std::vector<std::string>& problems) {
    std::vector<std::string> files, folders;
    std::error_code ec;
    fs::directory_iterator it(root / sub, ec);
    if (ec) {
        problems.push_back((root / sub).string() + ": the folder cannot be read (" + ec.message() + ")");
        return;
    }
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        const fs::file_status s = it->symlink_status(ec);
        if (fs::is_directory(s))
            folders.push_back(it->path().filename().string());
        else if (fs::is_regular_file(s))
            files.push_back(it->path().filename().string());
    }
    std::sort(files.begin(), files.end());
    std::sort(folders.begin(), folders.end());
    for (const auto& f : files)
        out.push_back({f, sub});
    for (const auto& f : folders)
        walkFilesFirst(root, sub / f, out, problems);
}

std::string withSub(const std::string& base, const fs::path& sub, const std::string& name) {
    const std::string s = backslashed(sub);
    return base + (s.empty() ? "" : "\\" + s) + "\\" + name;
}

} // namespace

std::string AssetPackage::add(const fs::path& folder) {
    std::string problem;
    const auto relative = relativeToRoot(m_ctx, folder, problem);
    if (!relative)
        return problem;
    if (m_state.packageFolder.empty())
        m_state.packageFolder = lastPart(folder);
    m_lines.emplace_back(folder, fs::path("RailWorks") / *relative);
    m_list.push_back(folder);
    return {};
}

void AssetPackage::remove(std::vector<int> rows) {
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        if (*it >= 0 && *it < static_cast<int>(m_list.size()))
            m_list.erase(m_list.begin() + *it);
}

PackageReport AssetPackage::process(const PackageOptions& options, UserInterface* ui) {
    if (m_lines.empty()) {
        return refusedReport({}, "No folder has been added to the package.");
    }
    PackageBuilder builder(m_ctx, packageRoot(m_ctx, options, m_state.packageFolder));
    builder.freeSpace = options.freeSpace;
    for (const auto& [source, target] : m_lines)
        builder.copyFolder(source, target);
    addInstaller(m_ctx, builder, kAssetInstaller);
    // Assets\Provider\Product of the first folder: up to the second separator behind Assets.
    const std::vector<std::string> parts =
        splitDocumentPath(m_lines.front().second.lexically_relative("RailWorks").generic_string());
    std::string product;
    for (std::size_t i = 0; i < parts.size() && i < 3; ++i)
        product += (i ? "\\" : "") + parts[i];
    builder.writeText("AssetSetup.ggg", product + "\r\n");
    const fs::path marker = m_ctx.tempFiles() / "Scenario.zzz";
    if (FileExists(marker))
        builder.copyFile(marker, {});
    else
        builder.note(marker.string() + " is not there: the package goes without Scenario.zzz.");
    std::string list = m_state.packageFolder + "\r\n";
    for (const auto& [source, target] : m_lines)
        list += lastPart(source) + "\r\n";
    builder.writeText("Scenario.yyy", list);
    return builder.run("package assets " + m_state.packageFolder, ui);
}

std::string reskinReadMe() {
    return "\r\nInstallation Instructions:-\r\n"
           "Unzip this package to a temporary folder, e.g. C:\\Temp and click on VL_AssetSetup.exe\r\n"
           "The installer will open and should display the path of your TrainSimulator 2019 folder\r\n"
           "If not click on the '....' button and navigate to your TrainSimulator 2019 folder in Steam\r\n"
           "Click the 'Install to TrainSimulator 2019' button and thats it\r\n";
}

PackageReport packageReskin(AppContext& ctx, const fs::path& reskin, const fs::path& original,
                            PackageState& state, const PackageOptions& options, UserInterface* ui) {
    PackageReport refused;
    if (reskin.empty()) {
        refused.refused = "You do not appear to have selected the folder of your ReSkinned object.";
        return refused;
    }
    if (original.empty()) {
        refused.refused = "You do not appear to have selected the folder of your Original object.";
        return refused;
    }
    std::string problem;
    const auto reskinRel = relativeToRoot(ctx, reskin, problem);
    const auto originalRel = reskinRel ? relativeToRoot(ctx, original, problem) : std::nullopt;
    if (!reskinRel || !originalRel) {
        refused.refused = problem;
        return refused;
    }
    if (state.packageFolder.empty())
        state.packageFolder = lastPart(reskin);
    PackageBuilder builder(ctx, packageRoot(ctx, options, state.packageFolder));
    builder.freeSpace = options.freeSpace;
    const fs::path target = fs::path("RailWorks") / *reskinRel;
    builder.copyFolder(reskin, target);

    std::vector<WalkedFile> reskinFiles, originalFiles;
    std::vector<std::string> problems;
    walkFilesFirst(reskin, {}, reskinFiles, problems);
    walkFilesFirst(original, {}, originalFiles, problems);
    // Paths as the install text names them: below Assets, where InstallMe.bat runs.
    const fs::path assets = "Assets";
    const std::string originalBase = backslashed(originalRel->lexically_relative(assets));
    const std::string reskinBase = backslashed(reskinRel->lexically_relative(assets));
    std::string install;
    for (const WalkedFile& file : originalFiles) {
        if (iequals(file.name, "Description.html") || iequals(file.name, "image.png"))
            continue; // a reskin keeps its own
        const auto match = std::find_if(reskinFiles.begin(), reskinFiles.end(),
                                        [&](const WalkedFile& r) { return iequals(r.name, file.name); });
        if (match == reskinFiles.end())
            continue;
        if (!iequals(GetCRC(original / file.sub / file.name), GetCRC(reskin / match->sub / match->name)))
            continue;
        install += "Copy \"" + withSub(originalBase, file.sub, file.name) + "\" \"" +
                   withSub(reskinBase, match->sub, match->name) + "\"\r\n";
        builder.drop(target / match->sub / match->name);
    }
    for (const auto& p : problems)
        builder.note(p);
    // The batch runs under Windows, whose console reads the ANSI code page.
    builder.writeText(fs::path("RailWorks") / "Assets" / "InstallMe.bat", utf8ToCp1252(install));
    builder.writeText("ReadMe.txt", reskinReadMe());
    addInstaller(ctx, builder, kAssetInstaller);
    return builder.run("package reskins " + state.packageFolder, ui);
}

} // namespace velmora::packaging
