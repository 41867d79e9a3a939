// The .ap listing: any file given as an archive is listed or refused.
#include "fuzzinput.h"
#include "velmora/core/archive.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = fuzz::scratchFile(fuzz::text(data, size), ".ap");
    std::vector<std::string> names;
    std::string error;
    if (!velmora::listArchive(file, names, &error) && error.empty())
        __builtin_trap(); // a refusal always says why
    return 0;
}
