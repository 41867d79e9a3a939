// The tile reader of the route check: a tile document's references, line by line.
#include "fuzzinput.h"
#include "serz/serz.h"
#include "tiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view in = fuzz::text(data, size);
    std::string xml;
    if (!serz::decode(in, xml).ok)
        xml.assign(in); // the reader works on XML text either way
    std::string warning;
    for (const auto& t : velmora::routes::detail::tileReferences(xml, "(Scenery Item)", "Tile.bin", warning))
        if (t.id.empty())
            __builtin_trap(); // references without an id are left out
    return 0;
}
