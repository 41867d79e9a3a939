#pragma once
// Where the generator's files go: plain files, documents encoded through the codec, and .ap
// archives whose entries are collected and written as one zip. Counts what it writes and keeps
// the first error; after an error every write is refused so the generator can unwind quickly.

#include "velmora/core/filewrite.h"
#include "velmora/demo/demoinstall.h"

#include <filesystem>
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

    // Everything written below `folder` until endArchive() goes into `folder/<name>`.
    void beginArchive(const std::string& folder, const std::string& name);
    bool endArchive();
    bool inArchive() const { return !m_archiveFolder.empty(); }

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
    std::vector<std::pair<std::string, std::string>> m_entries;
};

// Root-relative '/' path to a native path below `root`.
std::filesystem::path nativePath(const std::filesystem::path& root, const std::string& rel);

} // namespace velmora::demo
