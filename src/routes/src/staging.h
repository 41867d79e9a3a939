#pragma once
// Many files made ready beside their targets and then all put in place as one journal entry,
// or none of them: what the route edits over many files share.

#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora::routes::detail {

// The regular files below `folder`, in name order; links, pipes and the like are named in
// `warnings` and left out (a link is never followed, so a loop cannot hold the walk). False, with
// `error` naming the folder, when it cannot be read to the end.
bool listTree(const fs::path& folder, std::vector<fs::path>& files, std::vector<std::string>& warnings,
              std::string& error);

// Takes away the folders below `top`, and `top`, that hold nothing (what a stopped clone made).
void removeEmptyFolders(const fs::path& top);

class Staging {
public:
    explicit Staging(AppContext& ctx) : m_ctx(ctx) {}
    ~Staging() { discardAll(); }
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    // The new content of `target`; false, with `error` naming the file, when it cannot be made.
    bool stage(const fs::path& target, std::string_view bytes, std::string& error);
    // A copy of `source` as the new `target`.
    bool stageCopy(const fs::path& source, const fs::path& target, std::string& error);
    // Puts every staged file in place under one journal entry; on a failure what was put in
    // place is put back and the message says so. Empty on success.
    std::string commitAll(const std::string& command);
    void discardAll();
    std::size_t size() const { return m_files.size(); }

private:
    AppContext& m_ctx;
    std::vector<PreparedFile> m_files;
    bool m_replaces = false;
};

} // namespace velmora::routes::detail
