// The texture reader: a document (binary, or the XML it converts to) as a picture. Any bytes
// must give a picture or an error, never a crash or a read past a level's data.
#include "fuzzinput.h"
#include "serz/serz.h"
#include "velmora/textures/texture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view in = fuzz::text(data, size);
    std::string xml, error;
    if (serz::decode(in, xml).ok)
        velmora::textures::textureFromXml(xml, &error);
    else
        velmora::textures::textureFromXml(in, &error);
    return 0;
}
