// The settings file and the language files: read field by field and entry by entry, whatever
// the text holds.
#include "fuzzinput.h"
#include "velmora/core/language.h"
#include "velmora/core/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view in = fuzz::text(data, size);
    velmora::Settings settings;
    const int fields = velmora::readSettingsText(in, settings, nullptr, "VLpreferences.txt");
    if (fields < 0 || fields > 31)
        __builtin_trap();
    velmora::LanguageTable table;
    table.loadText(in);
    for (int n = 1; n <= table.size(); ++n)
        (void)table.text(n);
    return 0;
}
