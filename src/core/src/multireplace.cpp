#include "velmora/core/multireplace.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/textsearch.h"
#include "velmora/core/userinterface.h"

#include <algorithm>

namespace velmora {

namespace fs = std::filesystem;

namespace {

// One document after the parallel half: its new bytes lie beside it under a temporary name.
struct Staged {
    FileReplace outcome;
    PreparedFile prepared;
    bool diskFailed = false; // the disk refused the data (full, or failing): the run stops
};

// Text typed by the user in the form of a document that is not UTF-8: one byte a character.
QString inByteForm(const QString& typed) {
    const QByteArray utf8 = typed.toUtf8();
    const std::string bytes = utf8ToCp1252(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

Staged replaceOne(WriteService& files, const fs::path& file, const QString& find, const QString& with,
                  const MultiReplaceOptions& options, const WriteOptions& write) {
    Staged s;
    s.outcome.file = file;
    std::string xml;
    if (const ConvertResult r = binToXmlText(file, xml); !r) {
        s.outcome.state = FileReplace::State::Unreadable;
        s.outcome.message = r.message.empty() ? file.string() + ": cannot be read" : r.message;
        return s;
    }
    s.outcome.count = replaceInDocumentText(xml, find, with, options.ignoreCase);
    if (s.outcome.count == 0)
        return s;
    std::string bin;
    if (const ConvertResult r = xmlTextToBin(xml, bin, file.string()); !r || bin.empty()) {
        s.outcome.state = FileReplace::State::NotEncoded;
        s.outcome.message = file.string() + ": " + kNotRecompressed + (r.message.empty() ? "" : " (" + r.message + ")");
        return s;
    }
    s.outcome.state = FileReplace::State::Changed;
    if (options.dryRun)
        return s;
    const WriteResult w = files.prepare(
        file, [&bin](const ByteSink& sink) { return sink(bin.data(), bin.size()); }, write, s.prepared);
    if (!w) {
        s.outcome.state = FileReplace::State::NotWritten;
        s.outcome.message = w.message;
        s.diskFailed = w.failedStep == WriteStep::Write || w.failedStep == WriteStep::Sync ||
                       w.error == std::errc::no_space_on_device || w.error == std::errc::io_error;
    }
    return s;
}

void discardAll(WriteService& files, std::vector<Staged>& staged) {
    for (Staged& s : staged)
        files.discard(s.prepared);
}

// After a failure that stopped the run: no document keeps a change.
void nothingChanged(MultiReplaceResult& result) {
    result.changed = 0;
    result.replacements = 0;
    for (FileReplace& f : result.files)
        if (f.state == FileReplace::State::Changed) {
            f.state = FileReplace::State::Unchanged;
            f.count = 0;
            f.backup.clear();
        }
}

} // namespace

bool MultiReplaceResult::anyFailed() const {
    return !error.empty() || std::any_of(files.begin(), files.end(), [](const FileReplace& f) {
               return f.state != FileReplace::State::Unchanged && f.state != FileReplace::State::Changed;
           });
}

std::size_t replaceInDocumentText(std::string& xml, const QString& find, const QString& replacement, bool ignoreCase) {
    if (find.isEmpty())
        return 0;
    // The document's bytes as characters, so that what is not replaced comes back byte for byte.
    const bool utf8 = validUtf8(xml);
    QString text = utf8 ? QString::fromUtf8(xml.data(), static_cast<qsizetype>(xml.size()))
                        : QString::fromLatin1(xml.data(), static_cast<qsizetype>(xml.size()));
    TextSearch search;
    search.what = utf8 ? find : inByteForm(find);
    search.matchCase = !ignoreCase;
    const qsizetype count = replaceAllInText(text, search, utf8 ? replacement : inByteForm(replacement));
    if (count == 0)
        return 0;
    const QByteArray bytes = utf8 ? text.toUtf8() : text.toLatin1();
    xml.assign(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return static_cast<std::size_t>(count);
}

MultiReplaceResult replaceInFiles(AppContext& ctx, const std::vector<fs::path>& files, const MultiReplaceOptions& options,
                                  UserInterface* ui) {
    MultiReplaceResult result;
    const QString find = QString::fromUtf8(options.find.data(), static_cast<qsizetype>(options.find.size()));
    const QString with = QString::fromUtf8(options.replacement.data(), static_cast<qsizetype>(options.replacement.size()));
    WriteOptions write;
    write.sync = kSyncStagedEachFile;
    WriteService& service = ctx.files();
    std::vector<Staged> staged = parallelMap<Staged>(files.size(), options.threads, ui, options.command, result.stopped,
                                                     [&](std::size_t i) {
                                                         return onePiece(
                                                             [&] { return replaceOne(service, files[i], find, with, options, write); },
                                                             [&](std::string why) {
                                                                 Staged s;
                                                                 s.outcome.file = files[i];
                                                                 s.outcome.state = FileReplace::State::Unreadable;
                                                                 s.outcome.message = files[i].string() + ": " + why;
                                                                 return s;
                                                             });
                                                     });
    if (result.stopped) {
        discardAll(service, staged); // Abort before anything took its name: nothing did
        return result;
    }
    for (Staged& s : staged) {
        result.files.push_back(s.outcome);
        result.replacements += s.outcome.state == FileReplace::State::Changed ? s.outcome.count : 0;
    }
    if (const auto full = std::find_if(staged.begin(), staged.end(), [](const Staged& s) { return s.diskFailed; });
        full != staged.end()) {
        discardAll(service, staged);
        result.error = full->outcome.message + " The run was stopped; nothing of it was written.";
        nothingChanged(result);
        return result;
    }
    if (options.dryRun) {
        result.changed = static_cast<std::size_t>(std::count_if(result.files.begin(), result.files.end(), [](const FileReplace& f) {
            return f.state == FileReplace::State::Changed;
        }));
        return result;
    }
    // The same document named twice is written once, from its first place in the list.
    std::vector<std::string> seen;
    bool replaces = false;
    for (std::size_t i = 0; i < staged.size(); ++i) {
        if (staged[i].prepared.temp.empty())
            continue;
        const std::string key = staged[i].prepared.target.lexically_normal().string();
        if (std::find(seen.begin(), seen.end(), key) != seen.end()) {
            service.discard(staged[i].prepared);
            result.files[i].state = FileReplace::State::Unchanged;
            result.replacements -= result.files[i].count;
            result.files[i].count = 0;
            continue;
        }
        seen.push_back(key);
        replaces = true;
    }
    if (replaces)
        syncStaged(staged.front().outcome.file);

    JournalCommand entry(&ctx.journal(), options.command);
    std::vector<WriteResult> committed;
    for (std::size_t i = 0; i < staged.size(); ++i) {
        if (staged[i].prepared.temp.empty())
            continue;
        WriteResult w = service.commit(staged[i].prepared, write);
        if (!w) {
            for (std::size_t rest = i + 1; rest < staged.size(); ++rest)
                service.discard(staged[rest].prepared);
            const std::string lost = service.putBack(committed);
            result.error = w.message + " The run was stopped" +
                           (lost.empty() ? "; what it had written was put back." : ". " + lost);
            nothingChanged(result);
            return result;
        }
        result.files[i].backup = w.backup;
        committed.push_back(std::move(w));
        ++result.changed;
    }
    return result;
}

std::vector<std::string> saveAsXml(const std::vector<fs::path>& files, const fs::path& folder, UserInterface* ui) {
    std::vector<std::string> problems;
    std::error_code ec;
    fs::remove_all(folder, ec);
    if (fs::create_directories(folder, ec); ec && !fs::is_directory(folder))
        return {folder.string() + ": the folder cannot be made: " + ec.message()};
    if (ui)
        ui->beginProgress("Save Selected as XML", static_cast<std::int64_t>(files.size()));
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (ui && ui->cancelled())
            break;
        std::string xml;
        if (const ConvertResult r = binToXmlText(files[i], xml); !r)
            problems.push_back(r.message.empty() ? files[i].string() + ": cannot be read" : r.message);
        else if (const WriteResult w = writeFileSafely(folder / (files[i].stem().string() + ".xml"), xml); !w)
            problems.push_back(w.message);
        if (ui)
            ui->progress(static_cast<std::int64_t>(i + 1));
    }
    if (ui)
        ui->endProgress();
    return problems;
}

std::string describe(const MultiReplaceResult& r, bool dryRun) {
    if (r.stopped)
        return "Stopped: nothing was written.\n";
    std::string text;
    for (const FileReplace& f : r.files)
        if (f.state == FileReplace::State::Changed)
            text += f.file.string() + ": " + std::to_string(f.count) + (f.count == 1 ? " replacement\n" : " replacements\n");
    text += std::to_string(r.changed) + (r.changed == 1 ? " document " : " documents ") +
            (dryRun ? "would change" : "changed") + ", " + std::to_string(r.replacements) +
            (r.replacements == 1 ? " replacement" : " replacements") +
            (dryRun || r.changed == 0 ? ".\n" : "; each old file kept as its backup.\n");
    for (const FileReplace& f : r.files)
        if (f.state != FileReplace::State::Unchanged && f.state != FileReplace::State::Changed)
            text += f.message + "\n";
    if (!r.error.empty())
        text += r.error + "\n";
    return text;
}

} // namespace velmora
