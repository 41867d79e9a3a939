// The text scanning every tool does on a document's XML: details read and written, names
// repaired, blueprint references and element values taken out.
#include "fuzzinput.h"
#include "velmora/core/xmltext.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view in = fuzz::text(data, size);
    for (const auto match : {velmora::Match::Text, velmora::Match::Binary}) {
        for (std::size_t pos = 1; pos > 0 && pos <= in.size();) {
            std::string value;
            const std::size_t before = pos;
            velmora::GetDetail(in, pos, "Provider", value, {match});
            if (pos != 0 && pos <= before)
                __builtin_trap(); // a reading that does not move on would never end
        }
        (void)velmora::GetBlueprintRef(in, 1, {match});
        std::string provider, product;
        velmora::GetProvider(in.size(), provider, product, in, {match});
    }
    std::string edited(in);
    std::size_t pos = 1;
    velmora::PutDetail(edited, pos, "Name", "x", {velmora::Match::Text});
    std::string repaired(in);
    velmora::DecodeChars(repaired);
    (void)velmora::DecodedChars(in);
    (void)velmora::ElementValues(in, "Texture");
    return 0;
}
