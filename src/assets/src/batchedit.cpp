#include "velmora/assets/batchedit.h"

#include "velmora/assets/listcommands.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/parallel.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"

#include <algorithm>
#include <set>
#include <utility>


namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

// One file of a row, ready to be stored.
struct Output {
    fs::path target;
    std::string bytes;
    PreparedFile prepared;
    bool variant = false; // a changed item beside its source under a new name
};

// What the parallel half made of one row.
struct Prepared {
    std::vector<Output> outputs;
    std::string passedOver;
    std::vector<std::string> notes;
    bool diskFailed = false; // the disk refused the data (full, or failing): the batch stops
};

std::string lowerPath(const fs::path& p) {
    std::string s = p.lexically_normal().string();
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

// The simulator's converter gave an empty file for documents it could not encode; the message
// users know is kept, with the codec's own reason behind it.
std::string notConverted(const fs::path& target, const std::string& reason) {
    std::string text = "Serz.exe could not convert file " + target.filename().string();
    if (!reason.empty())
        text += ": " + reason;
    return text;
}

bool encode(const fs::path& target, const std::string& xml, std::vector<Output>& outputs, std::string& why) {
    std::string bin;
    const ConvertResult r = xmlTextToBin(xml, bin, target.string());
    if (!r || bin.empty()) {
        why = notConverted(target, r.message);
        return false;
    }
    outputs.push_back({target, std::move(bin), {}});
    return true;
}

Prepared editOne(std::size_t index, const AssetRow& row, const fs::path& file, const fs::path& assets, const VariantName* name,
                 bool read, const RowEditor& edit) {
    Prepared out;
    RowInput input;
    input.row = &row;
    input.index = index;
    input.file = file;
    input.assets = assets;
    if (const ConvertResult r = read ? binToXmlText(file, input.xml) : ConvertResult{true, {}}; !r) {
        out.passedOver = r.message.empty() ? file.string() + ": cannot be read" : r.message;
        return out;
    }
    if (name) {
        input.newFileName = name->fileName;
        input.newDisplayName = name->displayName;
    }
    RowEdit e = edit(input);
    if (!e.passedOver.empty()) {
        out.passedOver = std::move(e.passedOver);
        return out;
    }
    out.notes = std::move(e.notes);
    std::string why;
    if (e.changed) {
        const fs::path target = name ? file.parent_path() / (name->fileName + ".bin") : file;
        if (!encode(target, e.xml, out.outputs, why)) {
            out.passedOver = why;
            return out;
        }
        out.outputs.back().variant = name && lowerPath(target) != lowerPath(file);
    }
    for (auto& d : e.documents)
        if (!encode(d.target, d.xml, out.outputs, why)) {
            out.passedOver = why;
            out.outputs.clear();
            return out;
        }
    for (auto& f : e.files)
        out.outputs.push_back({f.target, std::move(f.bytes), {}});
    if (out.outputs.empty())
        out.passedOver = "nothing in it needed changing";
    return out;
}

// A variant's file name as typed must be a plain name that stays beside its source.
std::string badVariantName(const VariantName& name) {
    if (name.fileName.empty())
        return "no file name was given for the changed item";
    if (fileNameFromText(name.fileName) != name.fileName || name.fileName.find("..") != std::string::npos)
        return "\"" + name.fileName + "\" is not a file name: give the name only, without folders";
    return {};
}

// Each output of a row written beside its place under a temporary name, on the worker's thread:
// the write service's prepare touches nothing shared. A row whose outputs cannot all be staged
// keeps none of them and is passed over with the reason.
void stage(WriteService& files, Prepared& p, const WriteOptions& write) {
    if (!p.passedOver.empty())
        return;
    for (Output& o : p.outputs) {
        const std::string& bytes = o.bytes;
        const WriteResult w = files.prepare(
            o.target, [&bytes](const ByteSink& sink) { return sink(bytes.data(), bytes.size()); }, write, o.prepared);
        if (!w) {
            for (Output& done : p.outputs)
                files.discard(done.prepared);
            p.passedOver = w.message;
            p.diskFailed = w.failedStep == WriteStep::Write || w.failedStep == WriteStep::Sync ||
                           w.error == std::errc::no_space_on_device || w.error == std::errc::io_error;
            return;
        }
        std::string().swap(o.bytes); // on the disk now; the memory goes back
    }
}

void discardAll(WriteService& files, std::vector<Prepared>& rows) {
    for (Prepared& p : rows)
        for (Output& o : p.outputs)
            files.discard(o.prepared);
}

} // namespace

BatchResult runBatch(AppContext& ctx, const std::vector<AssetRow>& rows, const BatchOptions& options,
                     const RowEditor& edit, UserInterface* ui) {
    BatchResult result;
    const fs::path assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    std::vector<fs::path> files(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        files[i] = rowFile(ctx, rows[i]);
    const bool variants = options.store == Store::NewName;

    WriteOptions write;
    write.sync = kSyncStagedEachFile;
    std::vector<Prepared> edited = parallelMap<Prepared>(
        rows.size(), options.threads, ui, options.command, result.stopped, [&](std::size_t i) {
            Prepared p = onePiece(
                [&] {
                    if (variants) {
                        if (i >= options.names.size())
                            return Prepared{{}, "no name was given for the changed item", {}};
                        if (std::string bad = badVariantName(options.names[i]); !bad.empty())
                            return Prepared{{}, bad, {}};
                    }
                    return editOne(i, rows[i], files[i], assets, variants ? &options.names[i] : nullptr,
                                   options.readRows, edit);
                },
                [&](std::string why) { return Prepared{{}, files[i].string() + ": " + why, {}}; });
            stage(ctx.files(), p, write);
            return p;
        });
    if (result.stopped) {
        discardAll(ctx.files(), edited); // Abort before anything took its name: nothing did
        return result;
    }
    // A disk that cannot take the data fails every row after it: the batch stops whole.
    if (const auto full = std::find_if(edited.begin(), edited.end(), [](const Prepared& p) { return p.diskFailed; });
        full != edited.end()) {
        discardAll(ctx.files(), edited);
        result.error = full->passedOver + " The batch was stopped; nothing of it was written.";
        return result;
    }

    // Every file of every row lies ready beside its place. Two rows that would write one file:
    // the later one is passed over.
    std::set<std::string> taken;
    std::vector<std::size_t> staged;
    bool replaces = false;
    for (std::size_t i = 0; i < edited.size(); ++i) {
        Prepared& p = edited[i];
        if (p.passedOver.empty())
            for (const Output& o : p.outputs)
                if (taken.count(lowerPath(o.target))) {
                    p.passedOver = o.target.string() + " is written by an earlier row of this batch";
                    for (Output& mine : p.outputs)
                        ctx.files().discard(mine.prepared);
                    break;
                }
        if (!p.passedOver.empty()) {
            result.passedOver.push_back({rows[i].relativePath(), p.passedOver});
            continue;
        }
        for (const Output& o : p.outputs) {
            taken.insert(lowerPath(o.target));
            replaces = replaces || o.prepared.existed;
        }
        staged.push_back(i);
    }
    // A variant whose name is taken replaces that file only when the user says so.
    std::vector<std::size_t> existing;
    std::string names;
    for (std::size_t i : staged)
        for (const Output& o : edited[i].outputs)
            if (o.variant && o.prepared.existed) {
                existing.push_back(i);
                if (existing.size() <= 10)
                    names += "  " + o.target.string() + "\n";
            }
    if (!existing.empty()) {
        if (existing.size() > 10)
            names += "  and " + std::to_string(existing.size() - 10) + " more\n";
        const bool replace = ui && ui->ask("These items exist already:\n" + names +
                                               "Replace them? Each old file is kept as its backup.",
                                           Buttons::YesNo, Icon::Question, options.command) == Answer::Yes;
        if (!replace) {
            for (std::size_t i : existing) {
                for (Output& o : edited[i].outputs)
                    ctx.files().discard(o.prepared);
                result.passedOver.push_back({rows[i].relativePath(), "a file of the new name exists already; it was not replaced"});
            }
            std::erase_if(staged, [&](std::size_t i) { return std::find(existing.begin(), existing.end(), i) != existing.end(); });
        }
    }
    if (replaces)
        syncStaged(assets);

    // Then each takes its name, all in one journal entry.
    JournalCommand entry(&ctx.journal(), options.command);
    std::vector<WriteResult> committed;
    std::set<std::pair<std::string, std::string>> products;
    for (std::size_t n = 0; n < staged.size(); ++n) {
        const std::size_t i = staged[n];
        for (Output& o : edited[i].outputs) {
            WriteResult w = ctx.files().commit(o.prepared, write);
            if (!w) {
                for (std::size_t rest = n; rest < staged.size(); ++rest)
                    for (Output& left : edited[staged[rest]].outputs)
                        ctx.files().discard(left.prepared);
                const std::string lost = ctx.files().putBack(committed);
                result.error = w.message + " The batch was stopped" +
                               (lost.empty() ? "; what it had written was put back." : ". " + lost);
                result.written.clear();
                result.rowsWritten = 0;
                ctx.resolver.invalidate();
                return result;
            }
            result.written.push_back(o.target);
            committed.push_back(std::move(w));
        }
        for (const auto& note : edited[i].notes)
            result.notes.push_back(rows[i].relativePath() + ": " + note);
        products.insert({rows[i].provider, rows[i].product});
        ++result.rowsWritten;
    }
    // The simulator builds its cache of a product's blueprints again once it is gone.
    if (options.removesCache)
        for (const auto& [provider, product] : products)
            removeBlueprintCache(ctx, provider, product);
    ctx.resolver.invalidate();
    return result;
}

std::string describe(const BatchResult& r) {
    std::string text;
    if (!r.error.empty())
        return r.error + "\n";
    if (r.stopped)
        return "Stopped: nothing was written.\n";
    text += std::to_string(r.rowsWritten) + (r.rowsWritten == 1 ? " item" : " items") + " changed, " +
            std::to_string(r.written.size()) + (r.written.size() == 1 ? " file" : " files") + " written";
    text += r.written.empty() ? ".\n" : " (each old file kept as its backup):\n";
    for (const auto& f : r.written)
        text += "  " + f.string() + "\n";
    for (const auto& n : r.notes)
        text += "  note: " + n + "\n";
    if (!r.passedOver.empty()) {
        text += std::to_string(r.passedOver.size()) + (r.passedOver.size() == 1 ? " item was" : " items were") +
                " passed over:\n";
        for (const auto& p : r.passedOver)
            text += "  " + p.row + ": " + p.reason + "\n";
    }
    return text;
}

} // namespace velmora::assets
