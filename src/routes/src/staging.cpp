#include "staging.h"

#include "velmora/core/journal.h"

#include <algorithm>

namespace velmora::routes::detail {

namespace {

WriteOptions stagedOptions() {
    WriteOptions o;
    o.sync = kSyncStagedEachFile;
    return o;
}

} // namespace

bool Staging::stage(const fs::path& target, std::string_view bytes, std::string& error) {
    PreparedFile file;
    const WriteResult w = m_ctx.files().prepare(
        target, [bytes](const ByteSink& sink) { return sink(bytes.data(), bytes.size()); }, stagedOptions(), file);
    if (!w) {
        error = w.message;
        return false;
    }
    m_replaces = m_replaces || file.existed;
    m_files.push_back(std::move(file));
    return true;
}

bool Staging::stageCopy(const fs::path& source, const fs::path& target, std::string& error) {
    PreparedFile file;
    const WriteResult w = m_ctx.files().prepareCopy(source, target, stagedOptions(), file);
    if (!w) {
        error = w.message;
        return false;
    }
    m_replaces = m_replaces || file.existed;
    m_files.push_back(std::move(file));
    return true;
}

std::string Staging::commitAll(const std::string& command) {
    if (m_files.empty())
        return {};
    if (m_replaces)
        syncStaged(m_files.front().target);
    WriteService& service = m_ctx.files();
    JournalCommand entry(&m_ctx.journal(), command);
    std::vector<WriteResult> committed;
    for (std::size_t i = 0; i < m_files.size(); ++i) {
        WriteResult w = service.commit(m_files[i]);
        if (!w) {
            for (std::size_t rest = i + 1; rest < m_files.size(); ++rest)
                service.discard(m_files[rest]);
            m_files.clear();
            const std::string lost = service.putBack(committed);
            return w.message + " The edit was stopped" +
                   (lost.empty() ? "; what it had written was put back." : ". " + lost);
        }
        committed.push_back(std::move(w));
    }
    m_files.clear();
    return {};
}

void Staging::discardAll() {
    for (PreparedFile& f : m_files)
        m_ctx.files().discard(f);
    m_files.clear();
}

// The regular files below `folder`, with their relative paths; links, pipes and the like are
// named in `warnings` and left out (a link is never followed, so a loop cannot hold the walk).
bool listTree(const fs::path& folder, std::vector<fs::path>& files, std::vector<std::string>& warnings,
              std::string& error) {
    std::error_code ec;
    fs::recursive_directory_iterator it(folder, fs::directory_options::none, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        const fs::file_status s = it->symlink_status(ec);
        if (ec)
            break;
        if (fs::is_symlink(s))
            warnings.push_back(it->path().string() + ": is a link; links are not followed, it was left out.");
        else if (fs::is_regular_file(s))
            files.push_back(it->path());
        else if (!fs::is_directory(s))
            warnings.push_back(it->path().string() + ": is not a plain file (a pipe or device); it was left out.");
    }
    if (ec) {
        error = (it == end ? folder : it->path()).string() + ": cannot be read (" + ec.message() + "); nothing was changed.";
        return false;
    }
    std::sort(files.begin(), files.end());
    return true;
}

void removeEmptyFolders(const fs::path& top) {
    std::error_code ec;
    if (!fs::is_directory(fs::symlink_status(top, ec)))
        return;
    for (fs::directory_iterator it(top, ec), end; !ec && it != end; it.increment(ec))
        if (fs::is_directory(it->symlink_status(ec)))
            removeEmptyFolders(it->path());
    if (fs::is_empty(top, ec))
        fs::remove(top, ec);
}

} // namespace velmora::routes::detail
