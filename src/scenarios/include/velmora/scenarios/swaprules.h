#pragma once
// A rule file for swapping stock over a whole route: which vehicle blueprints are to become
// which stock. One rule a line, four comma-separated cells (quoted as CSV where a cell holds a
// comma or a quote):
//
//   provider,product,blueprint,stock
//
// `blueprint` is the vehicle's blueprint path below its product (".bin" or ".xml", '\' or '/'),
// or "*" for every blueprint of the product; `stock` is what the swap commands take: a
// blueprint path below Assets or a full path. Blank lines and lines that start with '#' are
// passed over, and so is a first line of headings. The file is UTF-8.

#include "velmora/scenarios/swap.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora::scenarios {

struct SwapRule {
    int line = 0;                  // in the file, 1 for the first
    std::string provider, product; // as the documents write them (Windows-1252)
    std::string blueprint;         // '\' separated, without its ending; "*" for the whole product
    std::string stockText;         // the stock as written in the file
    ChosenStock stock;
};

struct SwapRules {
    fs::path file;
    std::vector<SwapRule> rules;
};

// Reads a rule file and checks every line: four cells, a provider and a product, and stock that
// exists below Assets and is a rail vehicle. Nothing is returned when any line is at fault;
// `errors` then names the file and the number of each faulty line.
std::optional<SwapRules> readSwapRules(const AppContext& ctx, const fs::path& file,
                                       std::vector<std::string>& errors);

// The first rule that covers the vehicle's blueprint or its reskin's, compared without regard to
// case, separators or the ending; nothing when no rule does.
const SwapRule* ruleFor(const SwapRules& rules, const Vehicle& vehicle);

} // namespace velmora::scenarios
