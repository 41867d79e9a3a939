#pragma once
// What the clone commands share: one row's clone in progress, and the steps every kind of clone
// takes (read the source, check the target, write through the write service).

#include "velmora/assets/clone.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/templates.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::assets::clonework {

namespace fs = std::filesystem;

struct Job {
    AppContext& ctx;
    const AssetRow& row;
    const CloneNames& names;
    UserInterface* ui;
    std::string targetRel; // Provider\Product\... below Assets, no trailing backslash
    fs::path targetDir;    // on disk
    fs::path source;       // the row's blueprint on disk
    CloneResult result;
    std::vector<WriteResult> done; // what the row wrote, for a take-back
};

// A path's elements, split at either slash, empty elements dropped.
std::vector<std::string> pathElements(std::string_view path);
std::string joined(const std::vector<std::string>& parts, std::size_t from, std::size_t to);

// The source blueprint as XML; false with the message set.
bool readBlueprint(Job& job, const fs::path& file, std::string& xml);
// XML to the binary form; false with the message naming the file.
bool encodeBlueprint(Job& job, const std::string& xml, const std::string& fileName, std::string& bin);

// When the target folder holds files already, or `blueprint` exists, asks whether to go on.
// False (and the message set) without a yes.
bool mayWriteInto(Job& job, const fs::path& blueprint);

// Takes a write's result into the row's: what was written, or the failure's message.
bool recorded(Job& job, const WriteResult& w);
// Writes or copies one file of the clone; on failure the message is set and false returned.
bool writeFile(Job& job, const fs::path& target, std::string_view bytes);
bool copyFile(Job& job, const fs::path& from, const fs::path& to);
// Puts back what the row wrote after a later step failed; the message says so.
void takeBack(Job& job);

// Whether a file can be opened for reading; otherwise it is named in `skipped`.
bool canOpen(const fs::path& file);
void passOverUnreadable(Job& job, const fs::path& file);
bool readable(Job& job, const fs::path& file);

// The two clones that carry textures (reskinclone.cpp).
void cloneReskinBlueprint(Job& job);
void cloneSceneryReskin(Job& job);

} // namespace velmora::assets::clonework
