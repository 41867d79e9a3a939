// Reading a rule file for the route's swap by rules, and matching vehicles to its rules.

#include "velmora/scenarios/swaprules.h"

#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <fstream>

namespace velmora::scenarios {

namespace {

// A blueprint path as rules compare it: '\' separated, no leading separator, no ending.
std::string comparable(std::string_view path) {
    std::string s;
    s.reserve(path.size());
    for (const char c : path)
        s += c == '/' ? '\\' : c;
    while (!s.empty() && s.front() == '\\')
        s.erase(0, 1);
    if (iendsWith(s, ".bin") || iendsWith(s, ".xml"))
        s.resize(s.size() - 4);
    return s;
}

std::string trimmed(std::string_view s) {
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(" \t");
    return std::string(s.substr(first, last - first + 1));
}

bool covers(const SwapRule& rule, const Reference& r) {
    if (r.empty() || !iequals(DecodedChars(r.provider), rule.provider) ||
        !iequals(DecodedChars(r.product), rule.product))
        return false;
    return rule.blueprint == "*" || iequals(comparable(DecodedChars(r.blueprintId)), rule.blueprint);
}

} // namespace

std::optional<SwapRules> readSwapRules(const AppContext& ctx, const fs::path& file,
                                       std::vector<std::string>& errors) {
    const std::string where = file.string();
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) {
        errors.push_back(where + ": there is no such rule file.");
        return std::nullopt;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        errors.push_back(where + ": the rule file cannot be read.");
        return std::nullopt;
    }
    SwapRules rules;
    rules.file = file;
    std::string line;
    int number = 0;
    bool seenRule = false;
    while (std::getline(in, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (number == 1 && line.rfind("\xEF\xBB\xBF", 0) == 0)
            line.erase(0, 3);
        const std::string text = trimmed(line);
        if (text.empty() || text.front() == '#')
            continue;
        const auto at = [&](const std::string& why) {
            errors.push_back(where + ", line " + std::to_string(number) + ": " + why);
        };
        std::vector<std::string> cells = csvCells(text);
        for (auto& c : cells)
            c = trimmed(c);
        if (!seenRule && cells.size() == 4 && iequals(cells[0], "provider") && iequals(cells[3], "stock")) {
            seenRule = true; // the headings
            continue;
        }
        seenRule = true;
        if (cells.size() != 4) {
            at("a rule has four cells (provider,product,blueprint,stock); this line has " +
               std::to_string(cells.size()) + ".");
            continue;
        }
        if (cells[0].empty() || cells[1].empty() || cells[2].empty() || cells[3].empty()) {
            at("a cell is empty; every rule names a provider, a product, a blueprint (or *) and the stock.");
            continue;
        }
        SwapRule rule;
        rule.line = number;
        rule.provider = documentFromUtf8(cells[0]);
        rule.product = documentFromUtf8(cells[1]);
        rule.blueprint = cells[2] == "*" ? std::string("*") : comparable(documentFromUtf8(cells[2]));
        rule.stockText = cells[3];
        std::string problem;
        const auto stock = chooseStock(ctx, cells[3], problem);
        if (!stock) {
            at(problem);
            continue;
        }
        rule.stock = *stock;
        rules.rules.push_back(std::move(rule));
    }
    if (in.bad())
        errors.push_back(where + ": the rule file cannot be read to its end.");
    if (errors.empty() && rules.rules.empty())
        errors.push_back(where + ": the rule file holds no rule.");
    if (!errors.empty())
        return std::nullopt;
    return rules;
}

const SwapRule* ruleFor(const SwapRules& rules, const Vehicle& vehicle) {
    for (const SwapRule& rule : rules.rules)
        if (covers(rule, vehicle.blueprint) || covers(rule, vehicle.reskin))
            return &rule;
    return nullptr;
}

} // namespace velmora::scenarios
