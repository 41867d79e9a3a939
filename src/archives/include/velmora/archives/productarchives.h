#pragma once
// Reading the simulator's .ap archives (zip files). A product may ship some of its files packed
// in an .ap beside them (Assets/<Provider>/<Product>/*.ap); the simulator reads both.

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class PathResolver;
}

namespace velmora::archives {

namespace fs = std::filesystem;

// Answers "is this file packed in an .ap of its product?" for paths below Assets. Each product
// folder is listed and each archive read once; letter case and '\' or '/' do not matter.
// Thread-safe. Archives that cannot be read are passed over.
class ProductArchives {
public:
    ProductArchives(fs::path assets, const PathResolver& resolver);
    ~ProductArchives();

    // The archive holding `relative` (Provider\Product\..., below Assets), or nullopt.
    std::optional<fs::path> find(std::string_view relative) const;

private:
    struct Product;
    const Product& product(const std::string& provider, const std::string& product) const;

    fs::path m_assets;
    const PathResolver& m_resolver;
    mutable std::mutex m_mutex;
    mutable std::map<std::string, std::unique_ptr<Product>> m_products; // by folded "provider\product"
};

} // namespace velmora::archives
