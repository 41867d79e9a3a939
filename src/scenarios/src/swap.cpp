// Swap Selected Item, Swap All Identical Stock and Swap in EVERY consist on the scenario text.

#include "velmora/scenarios/swap.h"

#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/stock.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cstdlib>

namespace velmora::scenarios {

const char* const kLocosForWagons = "Sorry, but you can not swap Locos for Wagons.";
const char* const kWagonsForLocos = "Sorry, but you can not swap Wagons for Locos.";
const char* const kNoStockChosen = "You have not selected any rolling-stock from the Available Stock list?";
const char* const kConsistSwapped = "Your Consist's Rolling-Stock information will be updated once you save changes.";
const char* const kAllSwapped = "All Consists' Rolling-Stock information will be updated once you save changes.";
const char* const kKeepNumbers = "Don't Change numbers when swapping stock.";

namespace {

const ScanSettings kExact{};

bool containsIgnoringCase(const std::string& text, std::string_view what) {
    return InStr(1, text, what, Match::Text) != 0;
}

// Every `from` replaced by `to` in `text`, ignoring letter case.
void replaceIgnoringCase(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty())
        return;
    std::string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        if (i + from.size() <= text.size() && iequals(std::string_view(text).substr(i, from.size()), from)) {
            out += to;
            i += from.size();
        } else {
            out += text[i++];
        }
    }
    text = std::move(out);
}

std::string withBackslashes(std::string s) {
    for (char& c : s)
        if (c == '/')
            c = '\\';
    return s;
}

// The value of the first `tag` element at or after `pos` (1-based); empty when absent.
std::string valueAfter(const std::string& text, std::size_t pos, std::string_view tag) {
    std::string value;
    GetDetail(text, pos, tag, value, kExact);
    return pos ? value : std::string();
}

// Replaces the next `tag` element at or after `pos` (1-based) and moves `pos` to its closing
// tag in the changed text, so that the next call lands in the next element of that name.
void putNext(std::string& text, std::size_t& pos, std::string_view tag, const std::string& value) {
    const std::size_t at = InStr(pos ? pos : 1, text, "<" + std::string(tag), Match::Binary);
    if (!at)
        return; // pos stays: the next tag is looked for from the same place
    std::size_t put = at;
    PutDetail(text, put, tag, value, kExact);
    if (!put)
        return;
    const std::size_t close = InStr(at, text, "</" + std::string(tag), Match::Binary);
    pos = close ? close : pos;
}

std::string forDocument(std::string text) {
    ReplaceApos(text);
    return text;
}

// "Assets\Provider\Product\path" of a reference, asking for the .bin, as a file name (UTF-8).
std::string binPathOf(const Reference& r) {
    std::string relative = withBackslashes("Assets\\" + r.provider + "\\" + r.product + "\\" + r.blueprintId);
    if (iendsWith(relative, "xml"))
        relative.replace(relative.size() - 3, 3, "bin");
    return utf8FromDocument(DecodedChars(relative));
}

// What settles the handling of the ReskinBlueprintID block: the single swap writes a reskin's
// own reference there; Swap All Identical keeps a non-reskin swap's block in step; Swap in EVERY
// consist leaves it alone.
enum class Kind { Single, Identical, Every };

struct NumberPair {
    std::string before, after;
};

// Rewrites one vehicle's text by the swap's rules. Returns the number pair when it changed.
std::optional<NumberPair> rewrite(const AppContext& ctx, std::string& v, const ChosenStock& stock,
                                  const SwapOptions& options, Kind kind) {
    std::size_t pos = 1;
    const bool reskinBlockFollows = v.find("<ReskinBlueprintID") != std::string::npos;
    if (!stock.reskin) {
        putNext(v, pos, "Provider", forDocument(stock.provider));
        putNext(v, pos, "Product", forDocument(stock.product));
        putNext(v, pos, "BlueprintID", forDocument(stock.path));
        if (kind == Kind::Identical && reskinBlockFollows) {
            putNext(v, pos, "Provider", forDocument(stock.provider));
            putNext(v, pos, "Product", forDocument(stock.product));
            putNext(v, pos, "BlueprintID", forDocument(stock.path));
        }
    } else {
        putNext(v, pos, "Provider", forDocument(stock.base.provider));
        putNext(v, pos, "Product", forDocument(stock.base.product));
        putNext(v, pos, "BlueprintID", forDocument(stock.base.blueprintId));
        if (kind == Kind::Single) {
            putNext(v, pos, "Provider", forDocument(stock.provider));
            putNext(v, pos, "Product", forDocument(stock.product));
            putNext(v, pos, "BlueprintID", forDocument(stock.path));
        }
    }
    putNext(v, pos, "Name", forDocument(stock.reskin ? stock.reskinName : stock.name));

    // The details come from the base asset for a reskin; the file asked for is the .bin.
    const Reference& from = stock.reskin ? stock.base : Reference{stock.provider, stock.product, stock.path};
    StockDetails details;
    if (const auto file = ctx.resolver.resolve(ctx.railWorks(), binPathOf(from)))
        details = GetStockDetails(ctx, *file, options.randomFraction);

    std::optional<NumberPair> pair;
    if (!details.number.empty() && !options.keepNumbers) {
        std::size_t at = 1;
        std::string old;
        GetDetail(v, at, "UniqueNumber", old, kExact);
        if (at) {
            std::size_t put = at > 100 ? at - 100 : 1;
            PutDetail(v, put, "UniqueNumber", details.number, kExact);
            if (put && !old.empty() && old != details.number)
                pair = NumberPair{old, details.number};
        }
    }
    std::size_t massAt = 1;
    PutDetail(v, massAt, "TotalMass", details.mass, kExact);

    if (details.fuelKind != 0 && v.find("<InitialLevel>") != std::string::npos) {
        std::size_t at = InStr(1, v, "<InitialLevel", Match::Binary);
        std::string first, second;
        GetDetail(v, at, "e", first, kExact);
        if (at)
            GetDetail(v, at, "e", second, kExact);
        if (at) {
            const double a = std::atof(first.c_str()), b = std::atof(second.c_str());
            if ((details.fuelKind == 1 && b < a) || (details.fuelKind == 2 && b > a))
                SwapCoal(v);
        }
    }
    return pair;
}

// Where the consist's slice ends: the next consist's start, else the text's end.
std::size_t consistEnd(const ScenarioDocument& doc, int consist) {
    const auto i = static_cast<std::size_t>(consist);
    return i + 1 < doc.consists.size() ? doc.consists[i + 1].start : doc.scenarioText.size();
}

// The vehicle slice [a, b) of the n-th (0-based) <cOwnedEntity from `from`, within `end`.
std::optional<std::pair<std::size_t, std::size_t>> vehicleSlice(const std::string& text, std::size_t from,
                                                                  std::size_t end, int n) {
    std::size_t a = from;
    for (int i = 0; i <= n; ++i) {
        a = text.find("<cOwnedEntity", i == 0 ? a : a + 1);
        if (a == std::string::npos || a >= end)
            return std::nullopt;
    }
    const std::size_t b = text.find("</cOwnedEntity>", a);
    if (b == std::string::npos)
        return std::nullopt;
    return std::pair{a, b + 15};
}

std::string outOfRange(const ScenarioDocument& doc, int consist, int vehicle) {
    if (consist < 0 || consist >= static_cast<int>(doc.consists.size()))
        return "The scenario has " + std::to_string(doc.consists.size()) + " consists; there is no consist " +
               std::to_string(consist) + ".";
    const auto& c = doc.consists[static_cast<std::size_t>(consist)];
    if (vehicle < 0 || vehicle >= static_cast<int>(c.vehicles.size()))
        return "Consist " + std::to_string(consist) + " has " + std::to_string(c.vehicles.size()) +
               " vehicles; there is no vehicle " + std::to_string(vehicle) + ".";
    return {};
}

void applyPairs(std::string& text, const std::vector<NumberPair>& pairs) {
    for (const NumberPair& p : pairs)
        replaceIgnoringCase(text, ">" + p.before + "<", ">" + p.after + "<");
}

// The loop of Swap All Identical and Swap in EVERY consist over [from, end) of `text`: every
// vehicle whose Name equals `name` (ignoring case) is rewritten. Returns the count.
int swapByName(const AppContext& ctx, std::string& text, std::size_t from, std::size_t end, const std::string& name,
               const ChosenStock& stock, const SwapOptions& options, Kind kind, std::vector<NumberPair>& pairs) {
    int count = 0;
    std::size_t at = from;
    while (true) {
        const std::size_t a = text.find("<cOwnedEntity", at);
        if (a == std::string::npos || a >= end)
            break;
        const std::size_t close = text.find("</cOwnedEntity>", a);
        if (close == std::string::npos)
            break;
        const std::size_t b = close + 15;
        std::string vehicle = text.substr(a, b - a);
        std::string own = valueAfter(vehicle, 1, "Name");
        DecodeChars(own);
        if (!own.empty() && iequals(own, name)) {
            if (auto pair = rewrite(ctx, vehicle, stock, options, kind))
                pairs.push_back(*pair);
            const std::size_t grown = vehicle.size();
            text.replace(a, b - a, vehicle);
            end = end + grown - (b - a);
            at = a + grown;
            ++count;
        } else {
            at = b;
        }
    }
    return count;
}

// Steps every swap takes first: a stock must be chosen, and its provider and product join the
// required assets (they stay there even when the swap is then refused).
// A vehicle's place, when given, must be in the document.
SwapResult begin(ScenarioDocument& doc, const ChosenStock& stock, int consist = 0, int vehicle = -1) {
    SwapResult r;
    if (stock.name.empty() && stock.path.empty())
        r.error = kNoStockChosen;
    else
        doc.requiredAssets.push_back(stock.provider + "|" + stock.product);
    if (r.ok() && vehicle >= 0)
        r.error = outOfRange(doc, consist, vehicle);
    return r;
}

} // namespace

std::optional<ChosenStock> chooseStock(const AppContext& ctx, const std::string& typed, std::string& error) {
    std::string path = withBackslashes(typed);
    // A full path: what follows its Assets folder.
    for (std::size_t i = 0; i + 8 <= path.size(); ++i)
        if (iequals(std::string_view(path).substr(i, 8), "\\assets\\")) {
            path = path.substr(i + 8);
            break;
        }
    while (!path.empty() && path.front() == '\\')
        path.erase(0, 1);
    const std::size_t p1 = path.find('\\');
    const std::size_t p2 = p1 == std::string::npos ? p1 : path.find('\\', p1 + 1);
    if (p2 == std::string::npos || path.size() < 4) {
        error = "'" + typed + "' is not a blueprint path below Assets (Provider\\Product\\...\\file.bin).";
        return std::nullopt;
    }
    for (const std::string& part : splitDocumentPath(path))
        if (part == ".." || part == ".") {
            error = "'" + typed + "' leads out of its folder; stock is only looked for below Assets.";
            return std::nullopt;
        }
    // The names go into documents, which are Windows-1252; the file is found by its UTF-8 name.
    ChosenStock s;
    s.provider = documentFromUtf8(path.substr(0, p1));
    s.product = documentFromUtf8(path.substr(p1 + 1, p2 - p1 - 1));
    s.path = documentFromUtf8(path.substr(p2 + 1));
    // A path that ends in "bin" is changed to end in "xml".
    if (iendsWith(s.path, "bin"))
        s.path.replace(s.path.size() - 3, 3, "xml");
    std::string binPath = path;
    binPath.replace(binPath.size() - 3, 3, "bin");
    const auto file = ctx.resolver.resolve(ctx.railWorks(), "Assets\\" + binPath);
    if (!file || !FileExists(*file)) {
        error = "The stock " + typed + " does not exist below " + (ctx.railWorks() / "Assets").string() + ".";
        return std::nullopt;
    }
    s.file = *file;
    std::string xml;
    if (const ConvertResult r = binToXmlText(*file, xml); !r) {
        error = r.message.empty() ? file->string() + ": cannot be converted" : r.message;
        return std::nullopt;
    }
    const bool reskin = xml.find("<cReskinBlueprint>") != std::string::npos;
    if (reskin) {
        s.reskin = true;
        std::size_t at = InStr(1, xml, "<DisplayName", Match::Binary);
        s.reskinName = at ? valueAfter(xml, at, "English") : std::string();
        DecodeChars(s.reskinName);
        at = InStr(1, xml, "ReskinAssetBpId", Match::Binary);
        if (at) {
            const BlueprintRef base = GetBlueprintRef(xml, at, kExact);
            s.base = {base.provider, base.product, base.blueprintId};
        }
    }
    StockClasses c = classifyStock(ctx, xml);
    // A reskin is of the kind its base asset is.
    if (reskin && !c.loco.is && !c.wagon.is && !c.tender.is) {
        std::string baseXml;
        const auto baseFile = ctx.resolver.resolve(ctx.railWorks(), binPathOf(s.base));
        if (baseFile && binToXmlText(*baseFile, baseXml))
            c = classifyStock(ctx, baseXml);
        if (c.loco.is || c.wagon.is || c.tender.is)
            c.loco.name = c.wagon.name = c.tender.name = s.reskinName;
    }
    // The category the Available Stock list would show it under: a multiple unit by its engine
    // type or its folder (it may then replace a locomotive or a wagon), else by its class.
    auto inFolder = [&](const char* folder) { return containsIgnoringCase(s.path, folder); };
    if (c.loco.is || c.wagon.is) {
        const std::string& t = c.loco.engineType;
        if (iequals(t, "DMU") || inFolder("\\DMU\\"))
            s.category = "DMU";
        else if (iequals(t, "EMU") || inFolder("\\EMU\\"))
            s.category = "EMU";
    }
    if (c.loco.is) {
        s.name = c.loco.name;
        const std::string& t = c.loco.engineType;
        if (s.category.empty())
            s.category = iequals(t, "Steam") ? "Steam" : iequals(t, "Electric") ? "Electric" : "Diesel";
    } else if (c.tender.is) {
        s.name = c.tender.name;
        s.category = "Tender";
    } else if (c.wagon.is) {
        s.name = c.wagon.name;
        if (s.category.empty())
            s.category = inFolder("\\Passenger\\") ? "Passenger" : "Freight";
    } else {
        error = file->string() + ": not a locomotive, wagon or tender.";
        return std::nullopt;
    }
    return s;
}

std::string swapRefusal(const std::string& category, const std::string& vehicleText) {
    const bool w = vehicleText.find("<cWagon") != std::string::npos;
    const bool e = vehicleText.find("<cEngine") != std::string::npos;
    if ((category == "Diesel" || category == "Steam" || category == "Electric") && w && !e)
        return kLocosForWagons;
    if ((category == "Freight" || category == "Passenger" || category == "Tender") && e && !w)
        return kWagonsForLocos;
    return {};
}

void SwapCoal(std::string& v) {
    const std::size_t level = v.find("<InitialLevel");
    if (level == std::string::npos)
        return;
    const std::size_t s1 = v.find("<e", level);
    const std::size_t c1 = s1 == std::string::npos ? s1 : v.find("</e>", s1);
    const std::size_t s2 = c1 == std::string::npos ? c1 : v.find("<e", c1 + 4);
    const std::size_t c2 = s2 == std::string::npos ? s2 : v.find("</e>", s2);
    if (c2 == std::string::npos)
        return;
    const std::string first = v.substr(s1, c1 + 4 - s1);
    const std::string between = v.substr(c1 + 4, s2 - c1 - 4);
    const std::string second = v.substr(s2, c2 + 4 - s2);
    v = v.substr(0, s1) + second + between + first + v.substr(c2 + 4);
}

SwapResult swapVehicle(const AppContext& ctx, ScenarioDocument& doc, int consist, int vehicle,
                       const ChosenStock& stock, const SwapOptions& options) {
    SwapResult r = begin(doc, stock, consist, vehicle);
    if (!r.ok())
        return r;
    const auto slice = vehicleSlice(doc.scenarioText, doc.consists[static_cast<std::size_t>(consist)].start,
                                    consistEnd(doc, consist), vehicle);
    if (!slice) {
        r.error = doc.scenarioFile.string() + ": vehicle " + std::to_string(vehicle) + " was not found in its consist.";
        return r;
    }
    const auto [a, b] = *slice;
    std::string v = doc.scenarioText.substr(a, b - a);
    if (r.error = swapRefusal(stock.category, v); !r.error.empty())
        return r;
    const auto pair = rewrite(ctx, v, stock, options, Kind::Single);
    doc.scenarioText = doc.scenarioText.substr(0, a) + v + doc.scenarioText.substr(b);
    if (pair)
        applyPairs(doc.scenarioText, {*pair});
    rereadTables(doc);
    r.swapped = 1;
    return r;
}

SwapResult swapIdentical(const AppContext& ctx, ScenarioDocument& doc, int consist, int vehicle,
                         const ChosenStock& stock, const SwapOptions& options) {
    SwapResult r = begin(doc, stock, consist, vehicle);
    if (!r.ok())
        return r;
    const std::size_t from = doc.consists[static_cast<std::size_t>(consist)].start;
    const std::size_t end = consistEnd(doc, consist);
    // The test looks at the consist's first vehicle, not at the one that will change.
    const auto first = vehicleSlice(doc.scenarioText, from, end, 0);
    if (first) {
        if (r.error = swapRefusal(stock.category, doc.scenarioText.substr(first->first, first->second - first->first));
            !r.error.empty())
            return r;
    }
    const std::string name = doc.consists[static_cast<std::size_t>(consist)].vehicles[static_cast<std::size_t>(vehicle)].name;
    std::vector<NumberPair> pairs;
    r.swapped = swapByName(ctx, doc.scenarioText, from, end, name, stock, options, Kind::Identical, pairs);
    applyPairs(doc.scenarioText, pairs);
    rereadTables(doc);
    return r;
}

SwapResult swapEveryConsist(const AppContext& ctx, ScenarioDocument& doc, const std::string& name,
                            const ChosenStock& stock, const SwapOptions& options) {
    SwapResult r = begin(doc, stock);
    if (!r.ok())
        return r;
    std::string copy = doc.scenarioText;
    // The test looks at the document's first vehicle.
    if (const auto first = vehicleSlice(copy, 0, copy.size(), 0)) {
        if (r.error = swapRefusal(stock.category, copy.substr(first->first, first->second - first->first));
            !r.error.empty())
            return r;
    }
    std::vector<NumberPair> pairs;
    r.swapped = swapByName(ctx, copy, 0, copy.size(), name, stock, options, Kind::Every, pairs);
    applyPairs(copy, pairs);
    doc.scenarioText = std::move(copy);
    rereadTables(doc);
    return r;
}

SwapResult swapEach(const AppContext& ctx, ScenarioDocument& doc, const StockPicker& pick,
                    std::vector<Refusal>* refusals, const SwapOptions& options) {
    SwapResult r;
    std::vector<NumberPair> pairs;
    // From the last vehicle to the first, so that the places of those still to come stay true.
    for (int c = static_cast<int>(doc.consists.size()) - 1; c >= 0; --c) {
        const Consist& consist = doc.consists[static_cast<std::size_t>(c)];
        for (int v = static_cast<int>(consist.vehicles.size()) - 1; v >= 0; --v) {
            const Vehicle& vehicle = consist.vehicles[static_cast<std::size_t>(v)];
            const ChosenStock* stock = pick(c, v, vehicle);
            if (!stock)
                continue;
            const auto slice = vehicleSlice(doc.scenarioText, consist.start, consistEnd(doc, c), v);
            if (!slice)
                continue;
            const auto [a, b] = *slice;
            std::string text = doc.scenarioText.substr(a, b - a);
            if (std::string why = swapRefusal(stock->category, text); !why.empty()) {
                if (refusals)
                    refusals->push_back({c, v, vehicle.name, std::move(why)});
                continue;
            }
            const std::string required = stock->provider + "|" + stock->product;
            if (std::find(doc.requiredAssets.begin(), doc.requiredAssets.end(), required) == doc.requiredAssets.end())
                doc.requiredAssets.push_back(required);
            if (auto pair = rewrite(ctx, text, *stock, options, Kind::Single))
                pairs.push_back(*pair);
            doc.scenarioText.replace(a, b - a, text);
            ++r.swapped;
        }
    }
    if (r.swapped) {
        applyPairs(doc.scenarioText, pairs);
        rereadTables(doc);
    }
    if (refusals)
        std::reverse(refusals->begin(), refusals->end()); // in the document's order
    return r;
}

} // namespace velmora::scenarios
