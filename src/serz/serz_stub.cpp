// Placeholder until the codec lands; keeps the contract (no output on failure).
#include "serz/serz.h"

#include <system_error>

namespace serz {
namespace {
Status notYet() { return Status{false, "codec not available", 0, 0}; }
} // namespace
Status decode(std::string_view, std::string& xml, const WriteOptions&) {
    xml.clear();
    return notYet();
}
Status encode(std::string_view, std::string& binary, const ReadOptions&) {
    binary.clear();
    return notYet();
}
Status decodeFile(const std::filesystem::path&, const std::filesystem::path& out, const WriteOptions&) {
    std::error_code ec;
    std::filesystem::remove(out, ec);
    return notYet();
}
Status encodeFile(const std::filesystem::path&, const std::filesystem::path& out, const ReadOptions&) {
    std::error_code ec;
    std::filesystem::remove(out, ec);
    return notYet();
}
} // namespace serz
