#pragma once
// Making zip archives: files and folders chosen by wildcards, at a compression level from 0
// (stored) to 9, in one file or, through the 7-Zip program, in parts of a given size. The
// archive is made beside its name and takes it in one step through the write service.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
class WriteService;
} // namespace velmora

namespace velmora::archives {

namespace fs = std::filesystem;

struct ZipCreateOptions {
    int level = 6;                    // 0 "None" to 9 "Highest (but slow)"
    std::string wildcards = "*.*";    // file names to take, ';' between patterns
    bool subFolders = true;           // "Include Sub-Directories"
    bool fullPath = false;            // entries named by their whole path, not below the chosen folder
    std::uint64_t volumeBytes = 0;    // parts of about this size through 7-Zip; 0 for one file
    std::string sevenZip = "7zz";     // the 7-Zip program for parts
};

struct ZipCreateResult {
    bool ok = false;
    bool cancelled = false;
    std::string message; // on failure: what, naming the file
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;      // of the files taken in
    std::vector<fs::path> parts;  // the archive, or its parts in order
    std::vector<std::string> skipped; // inputs that were not plain files or could not be read
};

// The files that would go in: (path on disk, entry name), in name order.
std::vector<std::pair<fs::path, std::string>> zipInputs(const std::vector<fs::path>& inputs,
                                                        const ZipCreateOptions& options,
                                                        std::vector<std::string>* skipped = nullptr);

ZipCreateResult createZip(WriteService& files, const fs::path& out, const std::vector<fs::path>& inputs,
                          const ZipCreateOptions& options, UserInterface* ui);

// The message when 7-Zip is needed and cannot be run.
std::string sevenZipMissing(const std::string& program);

} // namespace velmora::archives
