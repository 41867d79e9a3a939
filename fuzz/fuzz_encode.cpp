// Any text into the XML reader, both import modes: a status, never a crash or a hang.
#include "serz/serz.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view xml(reinterpret_cast<const char*>(data), size);
    for (auto mode : {serz::FloatImport::Lossless, serz::FloatImport::Compatible}) {
        std::string bin;
        const serz::Status s = serz::encode(xml, bin, {mode});
        if (!s.ok && !bin.empty())
            __builtin_trap();
        if (s.ok) {
            std::string back;
            if (!serz::decode(bin, back).ok)
                __builtin_trap(); // what the writer makes, the reader must read
        }
    }
    return 0;
}
