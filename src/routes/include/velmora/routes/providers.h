#pragma once
// The Provider/Product list a route preloads (RBlueprintSetPreLoad in its RouteProperties.xml),
// against the product folders below Assets, and its replacement.

#include "velmora/routes/routeedits.h"

#include <string>
#include <utility>
#include <vector>

namespace velmora::routes {

using ProductPair = std::pair<std::string, std::string>; // provider, product

// Every product folder below Assets (Assets\<provider>\<product>), sorted without regard to case.
std::vector<ProductPair> assetProducts(AppContext& ctx);

// The pairs of the route's list whose folder is not below Assets, as "provider\product".
std::vector<std::string> missingProductFolders(AppContext& ctx, const RouteEntry& route);

// RBlueprintSetPreLoad entries of "provider|product" pairs: sorted without regard to case, each
// pair once, one copy of the template (Templates\ProvHeader.txt) each with a random id, the
// provider and the product repaired for the document.
std::string preloadEntries(const std::string& header, std::vector<std::string> pairs);

// The route's list replaced by `pairs`; RouteProperties.xml kept as its numbered backup.
EditReport updateProviders(AppContext& ctx, const RouteEntry& route, const std::vector<ProductPair>& pairs,
                           bool dryRun);

} // namespace velmora::routes
