#include "velmora/core/convert.h"

#include "serz/serz.h"
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

ConvertResult SerzToXml(const fs::path& source, const fs::path& xmlOut) {
    auto result = fromStatus(serz::decodeFile(source, xmlOut), source);
    if (!result.ok)
        dropOutput(xmlOut);
    return result;
}

ConvertResult SerzToBin(const fs::path& xmlIn, const fs::path& binOut) {
    auto result = fromStatus(serz::encodeFile(xmlIn, binOut), xmlIn);
    if (!result.ok)
        dropOutput(binOut);
    return result;
}

ConvertResult binToXmlText(const fs::path& source, std::string& xml) {
    std::string bin = ReadTextFile(source);
    if (bin.empty() && !FileExists(source)) {
        xml.clear();
        return {false, source.string() + ": the file cannot be read"};
    }
    return fromStatus(serz::decode(bin, xml), source);
}

ConvertResult xmlTextToBin(std::string_view xml, std::string& bin, const std::string& sourceName) {
    return fromStatus(serz::encode(xml, bin), sourceName);
}

} // namespace velmora
