#pragma once
// A row of the rolling-stock index (Reports\Index.csv) read as the stock it names. Every screen
// that takes stock from the index (the scenario editor's "Use Index File", the consist builder,
// its wagon pool) reads its rows through here.

#include <optional>
#include <string>
#include <vector>

namespace velmora::assets {

// The five values of an index row (Provider, Product, Path, Name, In Scene, Category, ...):
// columns 0, 1, 3, 5 and 2, trimmed. `path` is below the product as the index holds it.
struct IndexStock {
    std::string provider, product, name, category, path;
};

// Empty with `error` set when the row has too few cells, a cell it needs is empty, or the
// provider, product or path would lead anywhere but a file below Assets.
std::optional<IndexStock> readIndexRow(const std::vector<std::string>& cells, std::string& error);

} // namespace velmora::assets
