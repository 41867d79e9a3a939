// Steam's libraryfolders.vdf: the library paths it names, whatever else it holds.
#include "fuzzinput.h"
#include "velmora/core/paths.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const auto& folder : velmora::parseLibraryFolders(fuzz::text(data, size)))
        if (folder.empty())
            __builtin_trap();
    return 0;
}
