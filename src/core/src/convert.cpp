#include "velmora/core/convert.h"

#include "serz/serz.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"

#include <system_error>

namespace velmora {

namespace {
ConvertResult fromStatus(const serz::Status& status, const fs::path& file) {
    ConvertResult r;
    r.ok = status.ok;
    if (!status.ok)
        r.message = file.string() + ": " + status.message;
    return r;
}

void dropOutput(const fs::path& out) {
    std::error_code ec;
    fs::remove(out, ec);
}
} // namespace

bool conversionSucceeded(const fs::path& output) {
    std::error_code ec;
    auto size = fs::file_size(output, ec);
    return !ec && size > 0;
}

namespace {
// Reads the whole input, converts it in memory and writes the output through the write service,
// so a failed conversion leaves no output and never half of one.
template <typename Convert>
ConvertResult convertFile(const fs::path& in, const fs::path& out, Convert convert) {
    dropOutput(out);
    std::string input;
    if (const serz::Status read = serz::readDocument(in, input); !read.ok)
        return {false, read.message};
    std::string output;
    ConvertResult r = fromStatus(convert(input, output), in);
    if (!r.ok)
        return r;
    const WriteResult written = writeFileSafely(out, output, Backup::None);
    if (!written)
        return {false, written.message};
    return r;
}
} // namespace

ConvertResult decodeFileTo(const fs::path& source, const fs::path& xmlOut, const serz::WriteOptions& options) {
    return convertFile(source, xmlOut, [&](const std::string& i, std::string& o) { return serz::decode(i, o, options); });
}

ConvertResult encodeFileTo(const fs::path& xmlIn, const fs::path& binOut, const serz::ReadOptions& options) {
    return convertFile(xmlIn, binOut, [&](const std::string& i, std::string& o) { return serz::encode(i, o, options); });
}

ConvertResult SerzToXml(const fs::path& source, const fs::path& xmlOut) { return decodeFileTo(source, xmlOut); }

ConvertResult SerzToBin(const fs::path& xmlIn, const fs::path& binOut) { return encodeFileTo(xmlIn, binOut); }

ConvertResult binToXmlText(const fs::path& source, std::string& xml) {
    xml.clear();
    std::string bin;
    if (const serz::Status read = serz::readDocument(source, bin); !read.ok)
        return {false, read.message};
    return fromStatus(serz::decode(bin, xml), source);
}

ConvertResult xmlTextToBin(std::string_view xml, std::string& bin, const std::string& sourceName) {
    return fromStatus(serz::encode(xml, bin), sourceName);
}

} // namespace velmora
