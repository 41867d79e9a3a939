#include "velmora/archives/zipwriter.h"

#include "velmora/assets/scanpath.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/paths.h"
#include "velmora/core/process.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <zip.h>

#include <algorithm>
#include <random>

namespace velmora::archives {

namespace {

bool wanted(const std::string& name, const std::string& wildcards) {
    std::size_t start = 0;
    bool any = false;
    while (start <= wildcards.size()) {
        const std::size_t end = std::min(wildcards.find(';', start), wildcards.size());
        std::string pattern = wildcards.substr(start, end - start);
        pattern.erase(0, pattern.find_first_not_of(' '));
        pattern.erase(pattern.find_last_not_of(' ') + 1);
        if (!pattern.empty()) {
            any = true;
            // "*.*" takes names without a dot too, as it always has on Windows.
            if (pattern == "*.*" || pattern == "*" || assets::cScanPath::like(name, pattern))
                return true;
        }
        start = end + 1;
    }
    return !any;
}

std::string entryNameOf(const fs::path& file) {
    std::string s = file.relative_path().generic_string();
    return s;
}

std::string tempTag() {
    static thread_local std::mt19937_64 rng{std::random_device{}()};
    return std::to_string(rng() % 1000000000);
}

} // namespace

std::string sevenZipMissing(const std::string& program) {
    return "Multi-part archives are made by the 7-Zip program (" + program +
           "), which could not be run. Install it (on Debian and Ubuntu: apt install 7zip) and try again.";
}

std::vector<std::pair<fs::path, std::string>> zipInputs(const std::vector<fs::path>& inputs,
                                                        const ZipCreateOptions& options,
                                                        std::vector<std::string>* skipped) {
    std::vector<std::pair<fs::path, std::string>> out;
    for (const auto& input : inputs) {
        std::error_code ec;
        const fs::file_status s = fs::status(input, ec);
        if (fs::is_regular_file(s)) {
            if (wanted(input.filename().string(), options.wildcards))
                out.emplace_back(input, options.fullPath ? entryNameOf(input) : input.filename().generic_string());
            continue;
        }
        if (!fs::is_directory(s)) {
            if (skipped)
                skipped->push_back(input.string() + ": " + (ec ? ec.message() : "is not a plain file or a folder"));
            continue;
        }
        assets::cScanPath scan;
        scan.Hidden = true;
        scan.setFilter("*");
        const fs::path base = input.has_filename() ? input.parent_path() : input.parent_path().parent_path();
        scan.FileMatch = [&](const std::string& path, const std::string& name) {
            if (!wanted(name, options.wildcards))
                return;
            const fs::path file = fs::path(path) / name;
            std::error_code rel;
            out.emplace_back(file, options.fullPath ? entryNameOf(file) : fs::relative(file, base, rel).generic_string());
        };
        scan.StartScan(input, options.subFolders, true, true);
        if (skipped)
            for (const auto& u : scan.UnreadableFolders())
                skipped->push_back(u);
    }
    return out;
}

ZipCreateResult createZip(WriteService& files, const fs::path& outRequested, const std::vector<fs::path>& inputs,
                          const ZipCreateOptions& options, UserInterface* ui) {
    ZipCreateResult r;
    fs::path out = outRequested;
    if (!iendsWith(out.filename().string(), ".zip") && !iendsWith(out.filename().string(), ".ap"))
        out += ".zip";
    const auto items = zipInputs(inputs, options, &r.skipped);
    if (items.empty()) {
        r.message = "Nothing to put in " + out.string() + ": no file matches " + options.wildcards + ".";
        return r;
    }
    std::error_code ec;
    fs::create_directories(out.parent_path(), ec);
    const fs::path folder = out.parent_path().empty() ? fs::path(".") : out.parent_path();
    const int level = std::clamp(options.level, 0, 9);

    if (options.volumeBytes > 0) {
        // Parts: 7-Zip writes them into a scratch folder beside the target, then each takes its
        // name through the write service.
        const fs::path scratch = folder / (".velmora-parts-" + tempTag());
        fs::create_directories(scratch, ec);
        const fs::path listFile = scratch / "files.txt";
        std::string list;
        for (const auto& [path, name] : items)
            list += fs::absolute(path).string() + "\n";
        writeFileSafely(listFile, list);
        const fs::path staged = scratch / out.filename();
        const ExecResult run = ExecCmd(options.sevenZip,
                                       {"a", "-tzip", "-mx=" + std::to_string(level),
                                        "-v" + std::to_string(std::max<std::uint64_t>(1, options.volumeBytes >> 10)) + "k",
                                        staged.string(), "@" + listFile.string()},
                                       folder, ui);
        std::vector<fs::path> made;
        for (fs::directory_iterator it(scratch, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
            if (it->path() != listFile)
                made.push_back(it->path());
        std::sort(made.begin(), made.end());
        if (!run.started || run.cancelled || made.empty()) {
            fs::remove_all(scratch, ec);
            r.cancelled = run.cancelled;
            r.message = !run.started ? sevenZipMissing(options.sevenZip)
                                     : run.cancelled ? "Stopped: no archive was made."
                                                     : "An Error Occurred: 7-Zip made no archive of " + out.string() + ".";
            return r;
        }
        JournalCommand entry(files.journal(), "zip create " + out.string());
        for (const auto& part : made) {
            const fs::path target = folder / part.filename();
            const fs::path beside = folder / ("." + part.filename().string() + "." + tempTag() + ".velmora-tmp");
            fs::rename(part, beside, ec);
            PreparedFile prepared;
            WriteResult w = ec ? WriteResult{} : files.adopt(beside, target, {}, prepared);
            if (w)
                w = files.commit(prepared);
            if (!w) {
                r.message = ec ? target.string() + ": " + ec.message() : w.message;
                break;
            }
            r.parts.push_back(target);
        }
        fs::remove_all(scratch, ec);
        r.ok = r.message.empty();
        r.files = items.size();
        return r;
    }

    const fs::path staged = folder / ("." + out.filename().string() + "." + tempTag() + ".velmora-tmp");
    int code = 0;
    zip_t* zip = zip_open(staged.string().c_str(), ZIP_CREATE | ZIP_EXCL, &code);
    if (!zip) {
        zip_error_t e;
        zip_error_init_with_code(&e, code);
        r.message = out.string() + ": the archive cannot be made (" + zip_error_strerror(&e) + ").";
        zip_error_fini(&e);
        return r;
    }
    for (const auto& [path, name] : items) {
        zip_source_t* source = zip_source_file(zip, path.string().c_str(), 0, -1);
        const zip_int64_t index = source ? zip_file_add(zip, name.c_str(), source, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE) : -1;
        if (index < 0) {
            if (source)
                zip_source_free(source);
            r.skipped.push_back(path.string() + ": " + zip_strerror(zip));
            continue;
        }
        zip_set_file_compression(zip, static_cast<zip_uint64_t>(index), level == 0 ? ZIP_CM_STORE : ZIP_CM_DEFLATE,
                                 static_cast<zip_uint32_t>(level));
        r.bytes += fs::file_size(path, ec);
        ++r.files;
    }
    if (ui) {
        ui->beginProgress("Making " + out.filename().string(), 1000);
        zip_register_progress_callback_with_state(
            zip, 0.01, [](zip_t*, double done, void* state) { static_cast<UserInterface*>(state)->progress(static_cast<std::int64_t>(done * 1000)); },
            nullptr, ui);
        zip_register_cancel_callback_with_state(
            zip, [](zip_t*, void* state) { return static_cast<UserInterface*>(state)->cancelled() ? 1 : 0; }, nullptr, ui);
    }
    const bool closed = zip_close(zip) == 0;
    if (ui)
        ui->endProgress();
    if (!closed) {
        const bool stopped = ui && ui->cancelled();
        r.cancelled = stopped;
        r.message = stopped ? "Stopped: " + out.string() + " was not made."
                            : "An Error Occurred: " + out.string() + " could not be made (" + zip_strerror(zip) + ").";
        zip_discard(zip);
        fs::remove(staged, ec);
        return r;
    }
    JournalCommand entry(files.journal(), "zip create " + out.string());
    PreparedFile prepared;
    WriteResult w = files.adopt(staged, out, {}, prepared);
    if (w)
        w = files.commit(prepared);
    if (!w) {
        r.message = w.message;
        return r;
    }
    r.parts.push_back(out);
    r.ok = true;
    return r;
}

} // namespace velmora::archives
