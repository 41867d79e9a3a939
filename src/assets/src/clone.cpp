#include "velmora/assets/clone.h"

#include "clonework.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <fstream>
#include <set>

namespace velmora::assets {

namespace fs = std::filesystem;
using namespace clonework;

namespace clonework {

std::vector<std::string> pathElements(std::string_view path) {
    std::vector<std::string> parts;
    std::string part;
    for (char c : path) {
        if (c == '\\' || c == '/') {
            if (!part.empty())
                parts.push_back(std::move(part));
            part.clear();
        } else {
            part += c;
        }
    }
    if (!part.empty())
        parts.push_back(std::move(part));
    return parts;
}

std::string joined(const std::vector<std::string>& parts, std::size_t from, std::size_t to) {
    std::string out;
    for (std::size_t i = from; i < to && i < parts.size(); ++i)
        out += (out.empty() ? "" : "\\") + parts[i];
    return out;
}

bool readBlueprint(Job& job, const fs::path& file, std::string& xml) {
    if (const ConvertResult r = binToXmlText(file, xml); !r) {
        job.result.message = r.message.empty() ? file.string() + ": the blueprint cannot be read" : r.message;
        return false;
    }
    return true;
}

bool encodeBlueprint(Job& job, const std::string& xml, const std::string& fileName, std::string& bin) {
    const ConvertResult r = xmlTextToBin(xml, bin, fileName + ".xml");
    if (!r || bin.empty()) {
        job.result.message = "Serz.exe could not convert file " + fileName + ".bin" +
                             (r.message.empty() ? std::string() : ": " + r.message) +
                             ". Nothing was written.";
        return false;
    }
    return true;
}

bool mayWriteInto(Job& job, const fs::path& blueprint) {
    std::error_code ec;
    const bool holdsFiles = fs::is_directory(job.targetDir, ec) && !fs::is_empty(job.targetDir, ec);
    const bool blueprintThere = fs::exists(blueprint, ec);
    if (!holdsFiles && !blueprintThere)
        return true;
    const std::string question =
        (blueprintThere ? blueprint.string() + " exists already."
                        : job.targetDir.string() + " holds files already.") +
        "\nFiles of the same name are replaced, each kept as a numbered backup. Clone into it?";
    if (job.ui && job.ui->ask(question, Buttons::YesNo, Icon::Question, "Clone") == Answer::Yes)
        return true;
    job.result.message =
        "Nothing was written: " + (blueprintThere ? blueprint.string() : job.targetDir.string()) +
        " is there already.";
    return false;
}

bool recorded(Job& job, const WriteResult& w) {
    if (!w) {
        job.result.message = w.message;
        return false;
    }
    job.result.written.push_back(w.target);
    job.done.push_back(w);
    return true;
}

bool writeFile(Job& job, const fs::path& target, std::string_view bytes) {
    return recorded(job, job.ctx.files().write(target, bytes));
}

bool copyFile(Job& job, const fs::path& from, const fs::path& to) {
    return recorded(job, job.ctx.files().copy(from, to));
}

bool canOpen(const fs::path& file) {
    return static_cast<bool>(std::ifstream(file, std::ios::binary));
}

void passOverUnreadable(Job& job, const fs::path& file) {
    job.result.skipped.push_back(file.string() + ": cannot be read, not copied");
}

bool readable(Job& job, const fs::path& file) {
    if (canOpen(file))
        return true;
    passOverUnreadable(job, file);
    return false;
}

void takeBack(Job& job) {
    const std::string lost = job.ctx.files().putBack(job.done);
    job.result.message += lost.empty() ? " What the clone had written was taken back." : " " + lost;
    if (lost.empty())
        job.result.written.clear();
    job.done.clear();
}

} // namespace clonework

namespace {

// The files below a folder, as paths relative to it, without following links; what is not a
// plain file or folder, and folders that cannot be read, are named in `skipped`.
void listFiles(const fs::path& root, const fs::path& folder, std::vector<fs::path>& files,
               std::vector<std::string>& skipped) {
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        skipped.push_back(folder.string() + ": the folder cannot be read (" + ec.message() + ")");
        return;
    }
    std::vector<fs::directory_entry> entries;
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec)
            break;
        entries.push_back(*it);
    }
    std::sort(entries.begin(), entries.end());
    for (const auto& entry : entries) {
        const fs::file_status st = entry.symlink_status(ec);
        if (fs::is_symlink(st))
            skipped.push_back(entry.path().string() + ": a link, not followed");
        else if (fs::is_directory(st))
            listFiles(root, entry.path(), files, skipped);
        else if (fs::is_regular_file(st))
            files.push_back(entry.path().lexically_relative(root));
        else
            skipped.push_back(entry.path().string() +
                              ": not a plain file (a FIFO, socket or device), not opened");
    }
}

bool startsWithFolder(const std::string& lowered, const std::string& folderLowered) {
    return lowered.size() > folderLowered.size() &&
           lowered.compare(0, folderLowered.size(), folderLowered) == 0;
}

// One element of a line "<Tag ...>value</Tag>": where its value stands, and its tag.
struct Leaf {
    std::string_view tag;
    std::size_t begin = 0, end = 0; // of the value in the whole text
};

bool leafOf(const std::string& xml, std::size_t lineBegin, std::size_t lineEnd, Leaf& leaf) {
    std::size_t at = lineBegin;
    while (at < lineEnd && (xml[at] == '\t' || xml[at] == ' '))
        ++at;
    if (at + 1 >= lineEnd || xml[at] != '<' || xml[at + 1] == '/')
        return false;
    const std::size_t nameEnd = xml.find_first_of(" >", at);
    const std::size_t gt = xml.find('>', at);
    if (nameEnd == std::string::npos || gt == std::string::npos || gt >= lineEnd || xml[gt - 1] == '/')
        return false;
    const std::string_view tag(xml.data() + at + 1, nameEnd - at - 1);
    const std::string close = "</" + std::string(tag) + ">";
    const std::size_t closeAt = xml.rfind(close, lineEnd);
    if (closeAt == std::string::npos || closeAt < gt || closeAt + close.size() > lineEnd + 1)
        return false;
    leaf = {tag, gt + 1, closeAt};
    return true;
}

struct Edit {
    std::size_t begin, end;
    std::string text;
};

// The default target of a kind: the folder above the one that is copied.
std::vector<std::string> sourceElements(const AssetRow& row) {
    std::vector<std::string> parts = pathElements(row.path);
    if (!parts.empty())
        parts.pop_back(); // the blueprint's file name
    return parts;
}

std::string englishName(AppContext& ctx, const AssetRow& row) {
    std::string xml;
    if (!binToXmlText(rowFile(ctx, row), xml))
        return {};
    std::size_t pos = 1;
    std::string name;
    GetDetail(xml, pos, "English", name, {Match::Text});
    return pos == 0 ? std::string() : name;
}

// A copy of the blueprint's folder, or of the vehicle's folder above it.
void cloneFolder(Job& job, bool vehicle) {
    const std::vector<std::string> below = sourceElements(job.row); // folders below the product
    const std::size_t kept = vehicle ? 2 : 1;                       // the folders not copied as a whole
    // The folder copied must be an item's own, not a whole kind of the product: a blueprint
    // that lies in RailVehicles\Engine\ would otherwise take every vehicle of RailVehicles along.
    if (below.size() < kept + 1) {
        job.result.message = job.source.string() + ": the blueprint lies too high in its product to clone " +
                             (vehicle ? "its vehicle folder" : "its folder");
        return;
    }
    const std::vector<std::string> copiedFolder(below.begin(),
                                                below.end() - static_cast<std::ptrdiff_t>(kept - 1));
    const std::string sourceRel =
        job.row.provider + "\\" + job.row.product + "\\" + joined(copiedFolder, 0, copiedFolder.size());
    const fs::path sourceDir = vehicle ? job.source.parent_path().parent_path() : job.source.parent_path();

    // The clone must not land inside what it copies.
    std::error_code ec;
    const fs::path inside =
        fs::weakly_canonical(job.targetDir, ec).lexically_relative(fs::weakly_canonical(sourceDir, ec));
    if (!inside.empty() && *inside.begin() != "..") {
        job.result.message = "Nothing was written: " + job.targetDir.string() + " lies inside " +
                             sourceDir.string() + ", the folder that is cloned.";
        return;
    }

    std::string xml;
    if (!readBlueprint(job, job.source, xml))
        return;
    renameBlueprint(xml, job.names.displayName);
    xml = repointPaths(xml, sourceRel, job.targetRel);
    std::string bin;
    if (!encodeBlueprint(job, xml, job.names.fileName, bin))
        return;

    const fs::path oldBlueprint = job.source.lexically_relative(sourceDir);
    const fs::path newBlueprint = (vehicle ? job.targetDir / oldBlueprint.parent_path() : job.targetDir) /
                                  (job.names.fileName + ".bin");
    if (!mayWriteInto(job, newBlueprint))
        return;

    std::vector<fs::path> files;
    listFiles(sourceDir, sourceDir, files, job.result.skipped);
    // The source blueprint is not copied under its old name: the renamed one takes its place.
    files.erase(std::remove_if(files.begin(), files.end(),
                               [&](const fs::path& rel) {
                                   return rel == oldBlueprint || job.targetDir / rel == newBlueprint;
                               }),
                files.end());
    // The folders first, so that the copies that run side by side never make the same one.
    std::set<fs::path> folders;
    for (const fs::path& rel : files)
        folders.insert((job.targetDir / rel).parent_path());
    for (const fs::path& folder : folders)
        MakePath(folder);
    // Every file staged beside its place on all cores; then, with the data on the disk where a
    // file is replaced, each takes its name. A failure or Abort leaves nothing of the clone.
    struct Copied {
        PreparedFile prepared;
        WriteResult staged;
        bool unreadable = false;
    };
    WriteOptions write;
    write.sync = kSyncStagedEachFile;
    bool stopped = false;
    std::vector<Copied> copied = parallelMap<Copied>(
        files.size(), 0, job.ui, "Cloning " + sourceDir.filename().string(), stopped, [&](std::size_t i) {
            Copied c;
            const fs::path from = sourceDir / files[i];
            if (!canOpen(from))
                c.unreadable = true;
            else
                c.staged = job.ctx.files().prepareCopy(from, job.targetDir / files[i], write, c.prepared);
            return c;
        });
    bool ok = !stopped;
    if (stopped)
        job.result.message = "Stopped: the clone was not finished.";
    for (std::size_t i = 0; i < copied.size() && ok; ++i)
        if (!copied[i].unreadable && !copied[i].staged.ok && !copied[i].staged.message.empty()) {
            job.result.message = copied[i].staged.message;
            ok = false;
        }
    if (ok && std::any_of(copied.begin(), copied.end(), [](const Copied& c) { return c.prepared.existed; }))
        syncStaged(job.targetDir);
    for (std::size_t i = 0; i < copied.size(); ++i) {
        if (copied[i].unreadable) {
            passOverUnreadable(job, sourceDir / files[i]);
            continue;
        }
        if (!ok) {
            job.ctx.files().discard(copied[i].prepared);
            continue;
        }
        if (!copied[i].prepared.temp.empty() && !recorded(job, job.ctx.files().commit(copied[i].prepared, write)))
            ok = false;
    }
    if (!ok || !writeFile(job, newBlueprint, bin)) {
        takeBack(job);
        return;
    }
    job.result.ok = true;
}

} // namespace

const std::vector<std::string>& cloneCategories() {
    static const std::vector<std::string> kCategories = {"Animals",
                                                         "Bridges and viaducts",
                                                         "Clutter",
                                                         "Commercial industrial buildings",
                                                         "Domestic buildings",
                                                         "Foliage",
                                                         "Locomotoves",
                                                         "Misc",
                                                         "People",
                                                         "Rolling stock",
                                                         "Signals",
                                                         "Stations",
                                                         "Vehicles"};
    return kCategories;
}

std::string categoryValue(const std::string& category) {
    // The browse categories the simulator knows: both rolling-stock entries of the box (the
    // second kept in the box's spelling) are rail vehicles; every other entry is "e" and its
    // words, each capitalised, run together ("Bridges and viaducts" -> eBridgesAndViaducts).
    static const std::pair<const char*, const char*> kSpecial[] = {
        {"Rolling stock", "eRailVehicles"},
        {"Locomotoves", "eRailVehicles"},
    };
    for (const auto& [entry, value] : kSpecial)
        if (iequals(category, entry))
            return value;
    std::string out = "e";
    bool upper = true;
    for (char c : category) {
        if (c == ' ') {
            upper = true;
            continue;
        }
        if (!std::isalnum(static_cast<unsigned char>(c)))
            continue;
        out += upper ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        upper = false;
    }
    return out == "e" ? "eMisc" : out;
}

std::vector<std::string> targetElements(const std::string& targetFolder, std::string& problem) {
    problem.clear();
    const std::string shown = "\"" + targetFolder + "\"";
    if (targetFolder.empty()) {
        problem = "No target folder was given.";
        return {};
    }
    if (targetFolder.front() == '/' || targetFolder.front() == '\\' ||
        targetFolder.find(':') != std::string::npos) {
        problem = shown +
                  " is not a folder below Assets: give Provider\\Product\\Folder, without a drive or a "
                  "leading slash.";
        return {};
    }
    for (unsigned char c : targetFolder)
        if (c < 0x20 || c == 0x7f ||
            std::string_view("*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos) {
            problem = shown + " holds a character a folder name cannot have.";
            return {};
        }
    std::vector<std::string> parts = pathElements(targetFolder);
    for (const auto& p : parts)
        if (p == ".." || p == ".") {
            problem = shown + " climbs out of its folder (\"..\"): give a folder below Assets.";
            return {};
        }
    if (parts.size() < 3) {
        problem = shown + " is not below a product: give Provider\\Product\\Folder.";
        return {};
    }
    return parts;
}

std::string repointPaths(const std::string& xml, const std::string& sourceFolder,
                         const std::string& targetFolder) {
    const std::vector<std::string> source = pathElements(sourceFolder);
    const std::vector<std::string> target = pathElements(targetFolder);
    if (source.size() < 3 || target.size() < 3)
        return xml;
    const std::string fromLower = toLowerAscii(documentText(joined(source, 0, source.size()))) + "\\";
    const std::string fromRestLower = toLowerAscii(documentText(joined(source, 2, source.size()))) + "\\";
    const std::string to = documentText(joined(target, 0, target.size())) + "\\";
    const std::string toRest = documentText(joined(target, 2, target.size())) + "\\";
    const std::string providerLower = toLowerAscii(documentText(source[0]));
    const std::string productLower = toLowerAscii(documentText(source[1]));

    std::vector<Edit> edits;
    Leaf provider, product;
    bool haveProvider = false, haveProduct = false;
    auto valueOf = [&](const Leaf& l) { return std::string_view(xml).substr(l.begin, l.end - l.begin); };
    for (std::size_t lineBegin = 0; lineBegin < xml.size();) {
        std::size_t lineEnd = xml.find('\n', lineBegin);
        if (lineEnd == std::string::npos)
            lineEnd = xml.size();
        Leaf leaf;
        if (leafOf(xml, lineBegin, lineEnd, leaf)) {
            if (leaf.tag == "Provider") {
                provider = leaf;
                haveProvider = true;
                haveProduct = false;
            } else if (leaf.tag == "Product" && haveProvider) {
                product = leaf;
                haveProduct = true;
            } else if (leaf.tag == "BlueprintID" && haveProduct) {
                // A blueprint reference: its product and the path below it.
                std::string id(valueOf(leaf));
                std::replace(id.begin(), id.end(), '/', '\\');
                if (toLowerAscii(valueOf(provider)) == providerLower &&
                    toLowerAscii(valueOf(product)) == productLower &&
                    startsWithFolder(toLowerAscii(id), fromRestLower)) {
                    edits.push_back({provider.begin, provider.end, documentText(target[0])});
                    edits.push_back({product.begin, product.end, documentText(target[1])});
                    edits.push_back({leaf.begin, leaf.end, toRest + id.substr(fromRestLower.size())});
                }
                haveProvider = haveProduct = false;
            } else if (std::string_view value = valueOf(leaf); value.find('\\') != std::string_view::npos ||
                                                               value.find('/') != std::string_view::npos) {
                // A path below Assets, perhaps behind a "[xx]" code, perhaps with doubled or
                // forward slashes.
                std::string code;
                if (value.size() > 2 && value.front() == '[')
                    if (const auto close = value.find(']'); close != std::string_view::npos && close < 8) {
                        code = std::string(value.substr(0, close + 1));
                        value.remove_prefix(close + 1);
                    }
                std::string path;
                for (char c : value) {
                    const char d = c == '/' ? '\\' : c;
                    if (!(d == '\\' && !path.empty() && path.back() == '\\'))
                        path += d;
                }
                if (startsWithFolder(toLowerAscii(path), fromLower))
                    edits.push_back({leaf.begin, leaf.end, code + to + path.substr(fromLower.size())});
            }
        }
        lineBegin = lineEnd + 1;
    }
    std::string out;
    out.reserve(xml.size() + edits.size() * 16);
    std::size_t at = 0;
    for (const Edit& e : edits) {
        out.append(xml, at, e.begin - at);
        out += e.text;
        at = e.end;
    }
    out.append(xml, at, std::string::npos);
    return out;
}

CloneNames clonePrefill(AppContext& ctx, const AssetRow& row, CloneKind kind) {
    CloneNames n;
    const std::vector<std::string> below = sourceElements(row);
    const std::vector<std::string> parts = pathElements(row.path);
    const std::string file = parts.empty() ? std::string() : fs::path(parts.back()).stem().string();
    n.fileName = file + "_";
    std::string display = row.name;
    if (display.empty() || display == row.path)
        display = englishName(ctx, row);
    n.displayName = (display.empty() ? file : display) + "_";
    // The folder above the one the clone copies.
    const std::size_t up = kind == CloneKind::Vehicle ? 2 : 1;
    const std::size_t keep = below.size() > up ? below.size() - up : 0;
    n.targetFolder = row.provider + "\\" + row.product + "\\" + joined(below, 0, keep);
    if (n.targetFolder.back() != '\\')
        n.targetFolder += "\\";
    n.category =
        iequals(below.empty() ? std::string() : below.front(), "RailVehicles") ? "Rolling stock" : "Misc";
    return n;
}

CloneResult cloneRow(AppContext& ctx, const AssetRow& row, CloneKind kind, const CloneNames& names,
                     UserInterface* ui) {
    CloneResult r;
    CloneNames plain = names;
    while (!plain.fileName.empty() && plain.fileName.back() == '.')
        plain.fileName.pop_back();
    const std::string& fileName = plain.fileName;
    if (fileName.empty() || fileName.find_first_of("/\\:*?\"<>|") != std::string::npos ||
        std::any_of(fileName.begin(), fileName.end(),
                    [](unsigned char c) { return c < 0x20 || c == 0x7f; })) {
        r.message = "\"" + names.fileName + "\" is not a file name: give the name only, without folders.";
        return r;
    }
    std::string problem;
    const std::vector<std::string> target = targetElements(names.targetFolder, problem);
    if (target.empty()) {
        r.message = problem;
        return r;
    }
    if ((kind == CloneKind::ReskinBlueprint || kind == CloneKind::SceneryReskin) &&
        InStr(1, row.path, "Procedural", Match::Text) > 0) {
        r.message = ctx.lang.text(527);
        return r;
    }
    Job job{ctx, row, plain, ui, joined(target, 0, target.size()), {}, rowFile(ctx, row), {}, {}};
    const fs::path assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    job.targetDir = ctx.resolver.resolveForWrite(assets, job.targetRel);
    if (!fs::is_regular_file(job.source)) {
        r.message = job.source.string() + ": no such blueprint";
        return r;
    }

    JournalCommand command(&ctx.journal(),
                           "Clone " + row.relativePath() + " as " + job.targetRel + "\\" + fileName);
    switch (kind) {
    case CloneKind::Asset:
        cloneFolder(job, false);
        break;
    case CloneKind::Vehicle:
        cloneFolder(job, true);
        break;
    case CloneKind::ReskinBlueprint:
        cloneReskinBlueprint(job);
        break;
    case CloneKind::SceneryReskin:
        cloneSceneryReskin(job);
        break;
    }
    if (!job.result.written.empty()) {
        removeBlueprintCache(ctx, row.provider, row.product);
        removeBlueprintCache(ctx, target[0], target[1]);
    }
    ctx.resolver.invalidate();
    if (job.result.ok)
        job.result.message = ctx.lang.text(525);
    else
        job.result.message += (job.result.message.empty() ? "" : "\n") + ctx.lang.text(526);
    return job.result;
}

} // namespace velmora::assets
