#include "velmora/core/templates.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace velmora {

namespace fs = std::filesystem;

std::string readTemplate(AppContext& ctx, std::string_view name, std::string& error) {
    const std::string relative = "Templates/" + std::string(name);
    const auto file = ctx.resolver.resolve(ctx.dataPath(), relative);
    std::string text = file ? ReadTextFile(*file) : std::string();
    if (text.empty() && error.empty())
        error = (ctx.dataPath() / relative).string() + ": the template is missing or empty.";
    return text;
}

std::string fillTemplate(std::string text, const std::vector<std::pair<std::string, std::string>>& tokens) {
    // One pass, so that a value holding a token's letters (a consist called "yyyyy") stays as typed.
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        bool matched = false;
        for (const auto& [token, value] : tokens)
            if (!token.empty() && text.compare(i, token.size(), token) == 0) {
                out += value;
                i += token.size();
                matched = true;
                break;
            }
        if (!matched)
            out += text[i++];
    }
    return out;
}

std::string shownName(std::string_view text) {
    // The escapes undone in one pass, as the tokens of a template are filled.
    const std::string out = fillTemplate(std::string(text), {{"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"},
                                                             {"&quot;", "\""}, {"&apos;", "'"}});
    // Only the letter forms are left to repair.
    return out.find_first_of("\xC3\xEF") == std::string::npos ? out : DecodedChars(out);
}

std::string documentText(std::string_view typed) {
    return fillTemplate(utf8FromDocument(typed),
                        {{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"'", "&apos;"}, {"\"", "&quot;"}});
}

IdSource systemIds() {
    IdSource ids;
    ids.fraction = [] {
        static thread_local std::mt19937_64 rng{std::random_device{}()};
        return std::uniform_real_distribution<double>(0.0, 1.0)(rng);
    };
    ids.guid = [] { return makeGuidForms().cGuid; };
    return ids;
}

std::string randomId(const IdSource& ids) {
    const double f = std::clamp(ids.fraction(), 0.0, 1.0);
    auto n = 100000000L + static_cast<long>(std::floor(f * 900000000.0));
    if (n > 999999999L)
        n = 999999999L;
    char buf[24];
    std::snprintf(buf, sizeof buf, "%09ld", n);
    return buf;
}

} // namespace velmora
