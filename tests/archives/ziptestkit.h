#pragma once
// Small archives made the way a careless or hostile packer would make them: any entry name, a
// link entry, a chosen compression.

#include <zip.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace velmora::test {

struct TestEntry {
    std::string name;
    std::string bytes;
    bool link = false;
};

// Writes the archive; false when libzip refuses (the test then fails on its own check).
inline bool makeZip(const std::filesystem::path& file, const std::vector<TestEntry>& entries) {
    int code = 0;
    zip_t* zip = zip_open(file.string().c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!zip)
        return false;
    std::vector<std::string> keep(entries.size()); // the sources read the bytes at close
    for (std::size_t i = 0; i < entries.size(); ++i) {
        keep[i] = entries[i].bytes;
        zip_source_t* src = zip_source_buffer(zip, keep[i].data(), keep[i].size(), 0);
        const zip_int64_t index = zip_file_add(zip, entries[i].name.c_str(), src, ZIP_FL_ENC_UTF_8);
        if (index < 0) {
            zip_source_free(src);
            zip_discard(zip);
            return false;
        }
        if (entries[i].link)
            zip_file_set_external_attributes(zip, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX,
                                             static_cast<zip_uint32_t>(S_IFLNK | 0777) << 16);
    }
    return zip_close(zip) == 0;
}

} // namespace velmora::test
