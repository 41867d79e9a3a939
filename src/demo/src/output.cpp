#include "output.h"

#include "serz/serz.h"
#include "velmora/core/filewrite.h"

#include <zip.h>

#include <system_error>

namespace velmora::demo {

namespace fs = std::filesystem;

fs::path nativePath(const fs::path& root, const std::string& rel) {
    fs::path p = root;
    std::size_t start = 0;
    while (start <= rel.size()) {
        std::size_t slash = rel.find('/', start);
        if (slash == std::string::npos)
            slash = rel.size();
        if (slash > start)
            p /= fs::path(std::u8string(rel.begin() + static_cast<std::ptrdiff_t>(start),
                                        rel.begin() + static_cast<std::ptrdiff_t>(slash)));
        start = slash + 1;
    }
    return p;
}

Output::Output(fs::path root, Encoder encoder, DemoResult& result)
    : m_root(std::move(root)), m_encoder(std::move(encoder)), m_result(result) {
    if (!m_encoder) {
        m_encoder = [](std::string_view xml, std::string& binary, std::string& error) {
            serz::Status status = serz::encode(xml, binary);
            if (!status.ok)
                error = status.message + (status.line ? " (line " + std::to_string(status.line) + ")" : "");
            return status.ok;
        };
    }
}

bool Output::fail(const std::string& what) {
    if (m_result.error.empty())
        m_result.error = what;
    return false;
}

bool Output::writeFile(const fs::path& path, std::string_view bytes) {
    // A tree made from nothing: replaced whole (a read-only file of an earlier run too), not
    // synced file by file, not journalled.
    WriteOptions generated;
    generated.backup = Backup::None;
    generated.journal = false;
    generated.refuseReadOnly = false;
    generated.sync = false;
    if (const WriteResult written = m_files.write(path, bytes, generated); !written)
        return fail(written.message);
    ++m_result.files;
    return true;
}

bool Output::raw(const std::string& rel, std::string_view bytes) {
    if (!ok())
        return false;
    if (inArchive() && rel.compare(0, m_archiveFolder.size() + 1, m_archiveFolder + "/") == 0) {
        if (!entry(rel.substr(m_archiveFolder.size() + 1), bytes))
            return false;
        if (!m_alsoOnDisk)
            return true;
        if (!m_alsoOnDisk(rel)) {
            m_onlyInArchive.push_back(rel);
            return true;
        }
    }
    return writeFile(nativePath(m_root, rel), bytes);
}

bool Output::document(const std::string& rel, const std::string& xml, std::string* encoded) {
    if (!ok())
        return false;
    std::string binary, error;
    if (!m_encoder(xml, binary, error))
        return fail(rel + ": " + (error.empty() ? "the codec refused the document" : error));
    ++m_result.documents;
    bool written = raw(rel, binary);
    if (encoded)
        *encoded = std::move(binary);
    return written;
}

bool Output::blueprint(const std::string& rel, const std::string& xml) {
    ++m_result.blueprints;
    return document(rel, xml);
}

bool Output::readOnly(const std::string& rel) {
    std::error_code ec;
    fs::permissions(nativePath(m_root, rel),
                    fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read,
                    fs::perm_options::replace, ec);
    return ec ? fail("cannot make " + rel + " read-only: " + ec.message()) : true;
}

void Output::beginArchive(const std::string& folder, const std::string& name,
                          std::function<bool(const std::string&)> alsoOnDisk) {
    m_archiveFolder = folder;
    m_archiveName = name;
    m_alsoOnDisk = std::move(alsoOnDisk);
    m_entries.clear();
    m_onlyInArchive.clear();
}

bool Output::entry(const std::string& name, std::string_view bytes) {
    if (!ok())
        return false;
    if (!inArchive())
        return fail("no archive is open for the entry " + name);
    m_entries.emplace_back(name, std::string(bytes));
    ++m_result.archiveEntries;
    return true;
}

bool Output::endArchive(const std::function<void(std::string&)>& damage) {
    const std::string rel = m_archiveFolder + "/" + m_archiveName;
    m_archiveFolder.clear();
    m_alsoOnDisk = {};
    m_last = {rel, {}, std::move(m_onlyInArchive)};
    m_onlyInArchive.clear();
    for (const auto& e : m_entries)
        m_last.entries.push_back(e.first);
    if (!ok())
        return false;
    const fs::path path = nativePath(m_root, rel);
    // The archive is made in memory and written as one file.
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* memory = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t* zip = memory ? zip_open_from_source(memory, ZIP_TRUNCATE, &error) : nullptr;
    if (!zip) {
        if (memory)
            zip_source_free(memory);
        zip_error_fini(&error);
        return fail("cannot create " + path.string());
    }
    zip_source_keep(memory);
    // A fixed time stamp on every entry keeps the archive the same byte for byte.
    constexpr time_t kStamp = 1546300800; // 2019-01-01
    for (const auto& [name, bytes] : m_entries) {
        zip_source_t* src = zip_source_buffer(zip, bytes.data(), bytes.size(), 0);
        zip_int64_t index = src ? zip_file_add(zip, name.c_str(), src, ZIP_FL_ENC_UTF_8) : -1;
        if (index < 0) {
            if (src)
                zip_source_free(src);
            zip_discard(zip);
            return fail("cannot add " + name + " to " + path.string());
        }
        zip_file_set_mtime(zip, static_cast<zip_uint64_t>(index), kStamp, 0);
    }
    if (zip_close(zip) != 0) {
        std::string why = zip_strerror(zip);
        zip_discard(zip);
        zip_source_free(memory);
        return fail("cannot write " + path.string() + ": " + why);
    }
    std::string bytes;
    zip_stat_t stat;
    if (zip_source_stat(memory, &stat) == 0 && (stat.valid & ZIP_STAT_SIZE) && zip_source_open(memory) == 0) {
        bytes.resize(static_cast<std::size_t>(stat.size));
        const zip_int64_t got = zip_source_read(memory, bytes.data(), stat.size);
        zip_source_close(memory);
        if (got != static_cast<zip_int64_t>(stat.size))
            bytes.clear();
    }
    zip_source_free(memory);
    m_entries.clear();
    if (bytes.empty())
        return fail("cannot write " + path.string() + ": the archive could not be read back from memory");
    if (damage)
        damage(bytes);
    ++m_result.archives;
    return writeFile(path, bytes);
}

} // namespace velmora::demo
