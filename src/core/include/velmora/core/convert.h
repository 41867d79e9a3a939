#pragma once
// The conversion round trip of simulator documents, through the codec in this process.
// Contract kept from the simulator's converter: on failure the output file is absent or empty.

#include "serz/serz.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace velmora {

namespace fs = std::filesystem;

struct ConvertResult {
    bool ok = false;
    std::string message; // names the file and the byte offset or line on failure

    explicit operator bool() const { return ok; }
};

ConvertResult SerzToXml(const fs::path& source, const fs::path& xmlOut);
ConvertResult SerzToBin(const fs::path& xmlIn, const fs::path& binOut);
// The same with the codec's options (velmora-serz): the output goes through the write service,
// with no backup, and no output is left on failure.
ConvertResult decodeFileTo(const fs::path& source, const fs::path& xmlOut, const serz::WriteOptions& options = {});
ConvertResult encodeFileTo(const fs::path& xmlIn, const fs::path& binOut, const serz::ReadOptions& options = {});

// In-memory forms for the batch tools: no scratch files.
ConvertResult binToXmlText(const fs::path& source, std::string& xml);
ConvertResult xmlTextToBin(std::string_view xml, std::string& bin, const std::string& sourceName = {});

// A converted file that exists and is not empty counts as a success.
bool conversionSucceeded(const fs::path& output);

} // namespace velmora
