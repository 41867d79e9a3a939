// Any bytes into the binary reader: it must return a status, never crash, hang or read past.
#include "serz/serz.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string xml;
    const serz::Status s = serz::decode(std::string_view(reinterpret_cast<const char*>(data), size), xml);
    if (s.ok) {
        // What was read can be written back (names holding blanks or markup may not survive,
        // as with the simulator's own tool), and what is written must read again.
        std::string bin, again;
        if (serz::encode(xml, bin).ok && !serz::decode(bin, again).ok)
            __builtin_trap();
    } else if (!xml.empty()) {
        __builtin_trap();
    }
    return 0;
}
