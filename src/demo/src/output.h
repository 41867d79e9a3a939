#pragma once
// Where the generator's files go: plain files, documents encoded through the codec, and .ap
// archives whose entries are collected and written as one zip. Counts what it writes and keeps
// the first error; after an error every write is refused so the generator can unwind quickly.

#include "velmora/core/filewrite.h"
#include "velmora/demo/demoinstall.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora::demo {

class Output {
public:
    Output(std::filesystem::path root, Encoder encoder, DemoResult& result);

    // `rel` is relative to the root with '/' separators. Inside an open archive whose folder
    // contains `rel`, the file becomes an archive entry instead.
    bool raw(const std::string& rel, std::string_view bytes);
    // Encodes the XML as the simulator's binary form and writes that.
    bool document(const std::string& rel, const std::string& xml, std::string* binary = nullptr);
    // A blueprint document: counted apart, since the counts are what benchmarks scale by.
    bool blueprint(const std::string& rel, const std::string& xml);
    bool readOnly(const std::string& rel);

    // Everything written below `folder` until endArchive() goes into `folder/<name>`. A file for
    // which `alsoOnDisk` says yes is written beside the archive as well, as if unpacked.
    void beginArchive(const std::string& folder, const std::string& name,
                      std::function<bool(const std::string& rel)> alsoOnDisk = {});
    // An entry of the open archive under a name taken as it stands (which may even leave the
    // archive's folder: "../x", "/x").
    bool entry(const std::string& name, std::string_view bytes);
    // `damage`, when given, spoils the finished archive's bytes before they are written.
    bool endArchive(const std::function<void(std::string& bytes)>& damage = {});
    bool inArchive() const { return !m_archiveFolder.empty(); }

    // The archive endArchive() wrote last: its root-relative path, its entries in order, and the
    // files that went only into it while others were also written beside it.
    struct Archive {
        std::string path;
        std::vector<std::string> entries, onlyInArchive;
    };
    const Archive& lastArchive() const { return m_last; }

    bool fail(const std::string& what);
    bool ok() const { return m_result.error.empty(); }
    const std::filesystem::path& root() const { return m_root; }

private:
    bool writeFile(const std::filesystem::path& path, std::string_view bytes);
    std::filesystem::path m_root;
    WriteService m_files;
    Encoder m_encoder;
    DemoResult& m_result;
    std::string m_archiveFolder, m_archiveName;
    std::function<bool(const std::string&)> m_alsoOnDisk;
    std::vector<std::pair<std::string, std::string>> m_entries;
    std::vector<std::string> m_onlyInArchive;
    Archive m_last;
};

// Root-relative '/' path to a native path below `root`.
std::filesystem::path nativePath(const std::filesystem::path& root, const std::string& rel);

} // namespace velmora::demo
