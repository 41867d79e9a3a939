// The saved consists of ConsistTemplates.bin as text: the consists and their vehicles read, a
// new consist added behind them, names shown and escaped.
#include "fuzzinput.h"
#include "velmora/consists/consisttemplates.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in(fuzz::text(data, size));
    velmora::consists::TemplatesDocument doc;
    if (velmora::consists::parseConsistTemplates(in, doc))
        for (const auto& c : doc.consists)
            (void)velmora::consists::shownName(c.name);
    velmora::consists::IdSource ids;
    ids.fraction = [] { return 0.5; };
    ids.guid = [] { return std::string("00000000-0000-4000-8000-000000000000"); };
    const std::string added = velmora::consists::newConsistText("zzzzz xxxxx yyyyy\r\n", "aaaaa bbbbb eeeee\r\n", in,
                                                                 {{"P", "Q", "R.xml", "1"}}, ids);
    std::string out;
    if (velmora::consists::mergedDocument(in, true, "", added, ids, out) &&
        (out.find(added) == std::string::npos || !out.ends_with(velmora::consists::kFooter)))
        __builtin_trap(); // the new consist stands in the document, the footer behind it
    if (velmora::consists::documentText(in).find_first_of("<>\"'") != std::string::npos)
        __builtin_trap(); // a typed name never opens markup in the document
    return 0;
}
