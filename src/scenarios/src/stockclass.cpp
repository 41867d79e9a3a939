#include "velmora/scenarios/stock.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <functional>
#include <random>

namespace velmora::scenarios {

namespace {

std::string detail(const std::string& xml, std::string_view tag, std::size_t from = 1) {
    std::size_t pos = from;
    std::string value;
    GetDetail(xml, pos, tag, value, {Match::Text});
    return value;
}

std::string languageOf(const AppContext& ctx) {
    return ctx.settings.language.empty() ? std::string("English") : ctx.settings.language;
}

// Converts a blueprint; on failure the test says why, naming the file.
bool convert(const fs::path& bin, std::string& xml, StockTest& test) {
    if (const ConvertResult r = binToXmlText(bin, xml); !r) {
        test.error = r.message.empty() ? bin.string() + ": cannot be converted" : r.message;
        return false;
    }
    test.read = true;
    return true;
}

// A reskin's engine type is its base asset's: the reference after <ReskinAssetBpId>.
std::string baseEngineType(const AppContext& ctx, const std::string& xml) {
    const std::size_t at = InStr(1, xml, "<ReskinAssetBpId>", Match::Text);
    if (at == 0)
        return {};
    const BlueprintRef ref = GetBlueprintRef(xml, at, {Match::Text});
    if (ref.blueprintId.size() < 3)
        return {};
    const std::string id = ref.blueprintId.substr(0, ref.blueprintId.size() - 3) + "bin";
    const auto base = ctx.resolver.resolve(ctx.railWorks(), "Assets\\" + ref.provider + "\\" + ref.product + "\\" + id);
    std::string baseXml;
    if (!base || !binToXmlText(*base, baseXml))
        return {};
    return detail(baseXml, "EngineType");
}

// Case-blind searches for ASCII markers in one lower-cased copy of the text. The text searches
// fold Windows-1252 letters too, but none of those folds to an ASCII letter, so the answers
// are the same; each search then skips ahead by the marker's length instead of stopping at
// every "<" or ">".
class FoldedText {
public:
    explicit FoldedText(std::string_view text) : m_text(text) {
        for (char& c : m_text)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c + 32);
    }
    bool has(std::string_view lowerMarker) const {
        const std::boyer_moore_horspool_searcher searcher(lowerMarker.begin(), lowerMarker.end());
        return std::search(m_text.begin(), m_text.end(), searcher) != m_text.end();
    }

private:
    std::string m_text;
};

} // namespace

std::string stockName(const std::string& xml, const std::string& languageTag) {
    std::string name = detail(xml, languageTag.empty() ? std::string_view("English") : std::string_view(languageTag));
    if (name.empty())
        name = detail(xml, "English");
    if (name.empty())
        name = detail(xml, "Name");
    if (name.empty())
        name = "Unnamed";
    DecodeChars(name);
    return name;
}

StockClasses classifyStock(const AppContext& ctx, const std::string& xml) {
    const FoldedText folded(xml);
    StockClasses c;
    c.loco.read = c.wagon.read = c.tender.read = true;
    if (folded.has("<cenginecomponentblueprint")) {
        c.loco.is = true;
    } else if (folded.has(">elocomotoves<")) {
        c.loco.is = true;
        c.loco.reskin = true;
    }
    c.wagon.is = folded.has("<cwagonblueprint");
    c.tender.is = folded.has("<ctenderblueprint");
    for (StockTest* t : {&c.loco, &c.wagon, &c.tender})
        if (t->is)
            t->name = stockName(xml, languageOf(ctx));
    if (c.loco.is)
        c.loco.engineType = c.loco.reskin ? baseEngineType(ctx, xml) : detail(xml, "EngineType");
    return c;
}

StockTest locoFromXml(const AppContext& ctx, const std::string& xml) { return classifyStock(ctx, xml).loco; }
StockTest wagonFromXml(const AppContext& ctx, const std::string& xml) { return classifyStock(ctx, xml).wagon; }
StockTest tenderFromXml(const AppContext& ctx, const std::string& xml) { return classifyStock(ctx, xml).tender; }

StockTest IsItALoco(const AppContext& ctx, const fs::path& bin) {
    StockTest failed;
    std::string xml;
    return convert(bin, xml, failed) ? locoFromXml(ctx, xml) : failed;
}

StockTest IsItAWagon(const AppContext& ctx, const fs::path& bin) {
    StockTest failed;
    std::string xml;
    return convert(bin, xml, failed) ? wagonFromXml(ctx, xml) : failed;
}

StockTest IsItATender(const AppContext& ctx, const fs::path& bin) {
    StockTest failed;
    std::string xml;
    return convert(bin, xml, failed) ? tenderFromXml(ctx, xml) : failed;
}

std::string pickNumber(const std::string& list, double fraction) {
    const std::size_t firstName = InStr(1, list, "<Name", Match::Text);
    if (firstName == 0)
        return {};
    const std::size_t firstItem = InStr(1, list, "<cCSVItem", Match::Text);
    const long long d = static_cast<long long>(firstName) - static_cast<long long>(firstItem);
    int count = 0;
    for (std::size_t at = firstName; at != 0 && count < 21; at = InStr(at + 1, list, "<Name", Match::Text))
        ++count;
    long long k = static_cast<long long>((count - 2) * fraction + 1);
    if (k <= 0)
        k = 1;
    // A rough estimate of where the k-th entry stands; never before the text's start.
    std::size_t pos = d * k > 0 ? static_cast<std::size_t>(d * k) : 1;
    std::string value;
    GetDetail(list, pos, "Name", value, {Match::Text});
    return value;
}

StockDetails GetStockDetails(const AppContext& ctx, const fs::path& bin, const std::function<double()>& randomFraction) {
    StockDetails d;
    std::string xml;
    if (const ConvertResult r = binToXmlText(bin, xml); !r) {
        d.error = r.message.empty() ? bin.string() + ": cannot be converted" : r.message;
        return d;
    }
    d.read = true;
    std::size_t from = InStr(1, xml, "<RailVehicleComponent", Match::Text);
    if (from == 0)
        from = 1;
    const std::string csvFile = detail(xml, "CsvFile", from);
    d.mass = detail(xml, "Mass", from);

    if (const std::size_t coal = InStr(1, xml, "CoalFuel", Match::Text)) {
        const std::size_t water = InStr(1, xml, "WaterFuel", Match::Text);
        d.fuelKind = water > coal ? 1 : 2;
    }

    if (csvFile.empty())
        return d;
    // The list is named by its source (.csv, or the stem alone); the simulator keeps it as .dcsv.
    std::string listName = csvFile;
    const std::size_t dot = listName.rfind('.');
    const std::size_t slash = listName.find_last_of("\\/");
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
        listName.erase(dot);
    listName += ".dcsv";
    const auto list = ctx.resolver.resolve(ctx.railWorks(), "Assets\\" + listName);
    if (!list || !FileExists(*list))
        return d;
    std::string listXml;
    if (!binToXmlText(*list, listXml))
        listXml = ReadTextFile(*list); // a list kept as plain XML text
    double fraction = 0;
    if (randomFraction) {
        fraction = randomFraction();
    } else {
        static thread_local std::mt19937 generator{std::random_device{}()};
        fraction = std::uniform_real_distribution<double>(0.0, 1.0)(generator);
    }
    d.number = pickNumber(listXml, fraction);
    return d;
}

} // namespace velmora::scenarios
