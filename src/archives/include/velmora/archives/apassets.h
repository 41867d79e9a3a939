#pragma once
// Assets packed in one .ap archive, listed without unpacking it: the entries that pass the
// screen's filter, and the asset grid's rows of the chosen ones. A blueprint is read from the
// archive into memory and given to the same row building as the loose files of the asset list.

#include "velmora/archives/zipreader.h"
#include "velmora/assets/assetlist.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::archives {

namespace fs = std::filesystem;

// The extension a mask asks for: the mask from its third character on, so "*.bin" asks for
// "bin" and ".TgPcDx" for "gPcDx" (which still matches the tail of every .TgPcDx name).
std::string maskTail(std::string_view mask);

struct ApEntryFilter {
    std::string mask = "*.bin";    // Text1
    bool rollingStockOnly = false; // Check1
};

// Whether an entry (its path with '\' or '/') is listed: its tail is the mask's, letter case
// aside, and, with rolling stock only, it lies below RailVehicles in an Engine, Tender, Freight
// or Passenger folder. Anything below an Interactive folder passes the rolling-stock test.
bool entryPasses(std::string_view entryPath, const ApEntryFilter& filter);

struct ApListedEntry {
    std::uint64_t index = 0; // the entry's number in the archive, from 0
    std::string path;        // with backslashes
};
// The entries of an open archive that pass, in archive order. Folders are never listed.
std::vector<ApListedEntry> listApEntries(const ZipReader& zip, const ApEntryFilter& filter);

// The archive's Provider and Product: the first two folders behind the last "Assets" folder of
// its path; both empty when the path has no such folder.
struct ProviderProduct {
    std::string provider, product;
};
ProviderProduct providerProductOf(const fs::path& apFile);

struct ApRowsResult {
    std::vector<assets::AssetRow> rows;
    std::vector<std::string> unreadable; // entries that could not be read or converted, named
};

// The blueprints are read whole into memory up to this size; no blueprint comes near it.
inline constexpr std::uint64_t kBlueprintLimit = 256ull << 20;

// The asset grid's rows of the chosen entries (by number) of the open archive, in the order
// chosen. A .bin entry is converted and its row built as for a loose blueprint (the rolling-stock
// test and the "No Name" skip included), with the entry's path as its Path; any other entry
// gives a plain row of Provider, Product and Path. The Index of a row is the entry's number, so
// that the row leads back to its entry.
ApRowsResult apAssetRows(const ZipReader& zip, const std::vector<std::uint64_t>& chosen,
                         const assets::AssetListOptions& options);

// The closing message of Save .ap index.
inline constexpr const char* kApIndexSaved = "Your AP-Index.csv file is in your Data folder";

// Writes Data\AP-Index.csv below the program's folder, "<folder>,<file name>" a line, through the
// write service as one journal entry. False, with the reason naming the file, when it cannot be
// written; the old index is then left whole.
bool writeApIndex(AppContext& ctx, const std::vector<fs::path>& apFiles, std::string* error = nullptr);

} // namespace velmora::archives
