// The readers of GPS marker files on any input: every point they give is a pair of numbers in
// range, the point .csv written of it reads back the same, and the .dcsv made of it is a
// document the codec takes, whatever the names hold.
#include "fuzzinput.h"
#include "velmora/core/convert.h"
#include "velmora/routes/markers.h"

namespace {

const char* const kHeader =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cCSVArray "
    "xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n\t<CSVItem>\r\n";
const char* const kBody =
    "\t\t<cCSVItem d:id=\"ccccc\">\r\n\t\t\t<X d:type=\"sFloat64\">aaaa</X>\r\n"
    "\t\t\t<Y d:type=\"sFloat64\">bbbb</Y>\r\n\t\t\t<Name d:type=\"cDeltaString\">ddddd</Name>\r\n"
    "\t\t</cCSVItem>\r\n";

void check(const velmora::routes::GpsRead& read) {
    using namespace velmora::routes;
    for (const MarkerSet& set : read.sets) {
        if (set.points.empty())
            __builtin_trap();
        const std::string csv = pointCsvText(set);
        const GpsRead back = readPointCsv(csv, "back.csv");
        if (back.sets.size() != 1 || pointCsvText(back.sets[0]) != csv || !back.problems.empty())
            __builtin_trap();
        std::string bin;
        if (!velmora::xmlTextToBin(dcsvText(kHeader, kBody, set, "fuzz"), bin))
            __builtin_trap();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view in = fuzz::text(data, size);
    using namespace velmora::routes;
    check(readKml(in, "f.kml", false));
    check(readKml(in, "f.kml", true));
    check(readGpx(in, "f.gpx"));
    check(readWpt(in, "f.wpt"));
    check(readMkr(in, "f.mkr"));
    check(readPointCsv(in, "f.csv"));
    return 0;
}
