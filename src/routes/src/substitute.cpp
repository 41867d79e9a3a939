// The names and the text edit of a substitution: which references of a tile's XML a change
// names, and what the tile's text becomes.

#include "velmora/routes/substitute.h"

#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace velmora::routes {

namespace {

struct KindInfo {
    ItemKind kind;
    const char* label;
    const char* word;
};
constexpr KindInfo kKinds[] = {
    {ItemKind::Scenery, "(Scenery Item)", "scenery"},
    {ItemKind::Loft, "(Loft Item)", "loft"},
    {ItemKind::Road, "(Road Item)", "road"},
    {ItemKind::Track, "(Track Item)", "track"},
};

const KindInfo& info(ItemKind kind) { return kKinds[static_cast<int>(kind) - 1]; }

std::string trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r' || s.back() == '\n'))
        s.remove_suffix(1);
    return std::string(s);
}

// A path below its product as the documents write it: backslashes, the .xml ending.
std::string documentPath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    while (!path.empty() && path.front() == '\\')
        path.erase(0, 1);
    if (iendsWith(path, ".bin"))
        path.replace(path.size() - 3, 3, "xml");
    return path;
}

// What two names are compared by: escapes undone, letters repaired, case folded; for paths the
// separators and the .xml or .bin ending too.
std::string nameKey(std::string_view documentValue) { return foldName(shownName(documentValue)); }
std::string pathKey(std::string_view documentValue) {
    std::string p = shownName(documentValue);
    std::replace(p.begin(), p.end(), '/', '\\');
    if (iendsWith(p, ".xml") || iendsWith(p, ".bin"))
        p.resize(p.size() - 4);
    return foldName(p);
}

struct Rule {
    std::string provider, product, path; // keys
    const Substitution* change;
};

// A value of the text: between the '>' of the element at `open` and its closing tag.
struct Value {
    std::size_t begin = 0, end = 0; // the value's bytes [begin, end)
    bool ok = false;
};
Value valueAt(std::string_view xml, std::size_t open, std::string_view closing) {
    Value v;
    const std::size_t gt = xml.find('>', open);
    if (gt == std::string_view::npos || xml[gt - 1] == '/')
        return v; // <Provider/> holds nothing
    const std::size_t close = xml.find(closing, gt + 1);
    if (close == std::string_view::npos)
        return v;
    v.begin = gt + 1;
    v.end = close;
    v.ok = true;
    return v;
}

std::string_view view(std::string_view xml, const Value& v) { return xml.substr(v.begin, v.end - v.begin); }

// The enclosing cDynamicEntity block of the byte at `at`, from the start of its opening line to
// the end of its closing line; false when there is none.
bool entityBlock(std::string_view xml, std::size_t at, std::size_t& begin, std::size_t& end) {
    static constexpr std::string_view open = "<cDynamicEntity", close = "</cDynamicEntity>";
    std::size_t depth = 0, pos = at;
    for (;;) {
        const std::size_t o = pos ? xml.rfind(open, pos - 1) : std::string_view::npos;
        const std::size_t c = pos ? xml.rfind(close, pos - 1) : std::string_view::npos;
        if (o == std::string_view::npos)
            return false;
        if (c != std::string_view::npos && c > o) {
            ++depth; // a block closed before the hit: skip back over it
            pos = c;
            continue;
        }
        if (depth) {
            --depth;
            pos = o;
            continue;
        }
        begin = o;
        break;
    }
    // Forward from the opening tag to its own closing one.
    std::size_t d = 0, p = begin + 1;
    for (;;) {
        const std::size_t o = xml.find(open, p), c = xml.find(close, p);
        if (c == std::string_view::npos)
            return false;
        if (o != std::string_view::npos && o < c) {
            ++d;
            p = o + 1;
            continue;
        }
        if (d) {
            --d;
            p = c + 1;
            continue;
        }
        end = c + close.size();
        break;
    }
    while (begin > 0 && (xml[begin - 1] == '\t' || xml[begin - 1] == ' '))
        --begin;
    if (end < xml.size() && xml[end] == '\r')
        ++end;
    if (end < xml.size() && xml[end] == '\n')
        ++end;
    return true;
}

} // namespace

const char* kindLabel(ItemKind kind) { return info(kind).label; }
const char* kindWord(ItemKind kind) { return info(kind).word; }

std::optional<ItemKind> kindFromLabel(std::string_view label) {
    for (const auto& k : kKinds)
        if (label.find(k.label) != std::string_view::npos)
            return k.kind;
    return std::nullopt;
}

std::optional<ItemKind> kindFromWord(std::string_view word) {
    for (const auto& k : kKinds)
        if (iequals(word, k.word))
            return k.kind;
    return std::nullopt;
}

std::vector<std::string> tileFoldersOf(ItemKind kind) {
    switch (kind) {
    case ItemKind::Scenery: return {"Scenery"};
    case ItemKind::Loft: return {"Networks\\Loft Tiles"};
    case ItemKind::Road: return {"Networks\\Road Tiles"};
    case ItemKind::Track: return {"Networks\\Track Tiles", "Networks"};
    }
    return {};
}

std::string AssetName::binPath() const {
    std::string p = path;
    if (iendsWith(p, ".xml"))
        p.replace(p.size() - 3, 3, "bin");
    return provider + "\\" + product + "\\" + p;
}

std::string AssetName::text() const { return empty() ? std::string() : provider + "/" + product + "/" + path; }

std::optional<AssetName> parseAssetName(std::string_view text, std::string* error) {
    const std::string t = trimmed(text);
    auto fail = [&](const std::string& why) -> std::optional<AssetName> {
        if (error)
            *error = "'" + t + "' " + why;
        return std::nullopt;
    };
    const std::size_t a = t.find_first_of("/\\");
    const std::size_t b = a == std::string::npos ? a : t.find_first_of("/\\", a + 1);
    if (b == std::string::npos)
        return fail("is not PROVIDER/PRODUCT/PATH");
    AssetName n{t.substr(0, a), t.substr(a + 1, b - a - 1), documentPath(t.substr(b + 1))};
    if (!n.complete())
        return fail("has an empty provider, product or path");
    if (!iendsWith(n.path, ".xml"))
        return fail("does not name a blueprint (.xml or .bin)");
    for (const std::string& part : splitDocumentPath(n.path))
        if (part == "..")
            return fail("leads out of its product");
    return n;
}

std::optional<AssetName> assetNameFromMissing(std::string_view shown) {
    std::string p(shown);
    std::replace(p.begin(), p.end(), '/', '\\');
    const std::size_t at = toLowerAscii(p).find("\\assets\\");
    std::string rest = at == std::string::npos ? p : p.substr(at + 8);
    return parseAssetName(rest);
}

std::vector<ElementChange> substituteInText(std::string& xml, const std::vector<Substitution>& changes, ItemKind kind) {
    std::vector<ElementChange> out;
    std::vector<Rule> rules;
    for (const auto& c : changes)
        rules.push_back({nameKey(documentText(c.missing.provider)), nameKey(documentText(c.missing.product)),
                         pathKey(documentText(c.missing.path)), &c});
    // The pieces of the new text: spans of the old one and new values between them.
    struct Edit {
        std::size_t begin, end;
        std::string with;
    };
    std::vector<Edit> edits;
    const std::string_view text = xml;
    static constexpr std::string_view providerTag = "<Provider", productTag = "<Product", idTag = "<BlueprintID";
    std::size_t cutTo = 0; // the end of the last block cut out
    for (std::size_t at = text.find(providerTag); at != std::string_view::npos; at = text.find(providerTag, at + 1)) {
        const char next = at + providerTag.size() < text.size() ? text[at + providerTag.size()] : '\0';
        if (next != ' ' && next != '>' && next != '/')
            continue;
        if (at < cutTo)
            continue;
        const Value provider = valueAt(text, at, "</Provider>");
        if (!provider.ok)
            continue;
        const std::size_t productAt = text.find(productTag, provider.end);
        const Value product = productAt == std::string_view::npos ? Value{} : valueAt(text, productAt, "</Product>");
        if (!product.ok)
            continue;
        // The id stands after the set's closing tags; the next reference's Provider must not come first.
        std::size_t idAt = text.find(idTag, product.end);
        const std::size_t nextProvider = text.find(providerTag, product.end);
        while (idAt != std::string_view::npos && text.compare(idAt + idTag.size(), 1, " ") != 0 &&
               text.compare(idAt + idTag.size(), 1, ">") != 0)
            idAt = text.find(idTag, idAt + 1);
        if (idAt == std::string_view::npos || (nextProvider != std::string_view::npos && nextProvider < idAt))
            continue;
        const Value id = valueAt(text, idAt, "</BlueprintID>");
        if (!id.ok || id.begin == id.end)
            continue;
        const std::string pk = pathKey(view(text, id));
        const Rule* hit = nullptr;
        for (const Rule& r : rules)
            if (r.path == pk && r.provider == nameKey(view(text, provider)) && r.product == nameKey(view(text, product))) {
                hit = &r;
                break;
            }
        if (!hit)
            continue;
        ElementChange change;
        change.before = shownName(view(text, provider)) + "/" + shownName(view(text, product)) + "/" +
                        shownName(view(text, id));
        const Substitution& s = *hit->change;
        if (s.removes() && kind == ItemKind::Scenery) {
            std::size_t begin = 0, end = 0;
            if (!entityBlock(text, at, begin, end) || begin < cutTo)
                continue;
            // Values of this block already changed go with the block.
            std::erase_if(edits, [&](const Edit& e) { return e.begin >= begin; });
            edits.push_back({begin, end, {}});
            cutTo = end;
            change.after = "(removed)";
        } else {
            edits.push_back({provider.begin, provider.end, documentText(s.replacement.provider)});
            edits.push_back({product.begin, product.end, documentText(s.replacement.product)});
            edits.push_back({id.begin, id.end, documentText(s.replacement.path)});
            change.after = s.removes() ? "(blanked)" : s.replacement.text();
        }
        out.push_back(std::move(change));
        at = id.end;
    }
    if (edits.empty())
        return out;
    std::string result;
    result.reserve(xml.size());
    std::size_t from = 0;
    for (const Edit& e : edits) {
        result.append(xml, from, e.begin - from);
        result += e.with;
        from = e.end;
    }
    result.append(xml, from, std::string::npos);
    xml.swap(result);
    return out;
}

std::vector<Substitution> parseRules(const std::string& text, std::vector<std::string>& errors) {
    std::vector<Substitution> out;
    std::size_t number = 0;
    for (const std::string& raw : SplitLines(text)) {
        ++number;
        std::string line = trimmed(raw);
        if (number == 1 && line.rfind("\xEF\xBB\xBF", 0) == 0)
            line.erase(0, 3);
        if (line.empty() || line.front() == '#')
            continue;
        const std::vector<std::string> cells = csvCells(line);
        const std::string where = "line " + std::to_string(number) + ": ";
        if (cells.size() != 2) {
            errors.push_back(where + "'" + line + "' is not one missing,replacement pair");
            continue;
        }
        std::string why;
        Substitution s;
        if (auto m = parseAssetName(cells[0], &why))
            s.missing = *m;
        else {
            errors.push_back(where + why);
            continue;
        }
        if (!trimmed(cells[1]).empty()) {
            if (auto r = parseAssetName(cells[1], &why))
                s.replacement = *r;
            else {
                errors.push_back(where + why);
                continue;
            }
        }
        out.push_back(std::move(s));
    }
    return out;
}

std::vector<std::string> providerPairs(const std::vector<std::string>& paths) {
    std::vector<std::string> pairs;
    for (const std::string& shown : paths) {
        std::string p = "\\" + shown;
        std::replace(p.begin(), p.end(), '/', '\\');
        const std::size_t at = toLowerAscii(p).find("\\assets\\");
        if (at == std::string::npos)
            continue;
        const std::string rest = p.substr(at + 8);
        const std::size_t a = rest.find('\\');
        const std::size_t b = a == std::string::npos ? a : rest.find('\\', a + 1);
        if (b == std::string::npos || a == 0 || b == a + 1)
            continue;
        pairs.push_back(rest.substr(0, b));
    }
    // The simulator finds a product whatever the letter case: one entry each, spelt as first met.
    std::set<std::string> seen;
    std::erase_if(pairs, [&](const std::string& pair) { return !seen.insert(foldName(pair)).second; });
    SortStrings(pairs, 0, static_cast<std::ptrdiff_t>(pairs.size()) - 1);
    return pairs;
}

} // namespace velmora::routes
