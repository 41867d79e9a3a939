// The .ap reader: any file given as an archive is listed or refused with a reason; every entry's
// place is judged and its data read up to a limit without a crash.
#include "fuzzinput.h"
#include "velmora/archives/entrypath.h"
#include "velmora/archives/zipreader.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = fuzz::scratchFile(fuzz::text(data, size), ".ap");
    velmora::archives::ZipReader zip;
    if (!zip.open(file)) {
        if (zip.error().empty())
            __builtin_trap(); // a refusal always says why
        return 0;
    }
    for (const auto& entry : zip.entries()) {
        const auto place = velmora::archives::placeOf(entry);
        for (const auto& part : place.parts)
            if (part.empty() || part == "." || part == "..")
                __builtin_trap(); // a place never leads out
        std::string bytes;
        zip.readAll(entry.index, bytes, 1 << 20);
    }
    return 0;
}
