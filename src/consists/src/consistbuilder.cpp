// The consist builder's grid and its commands, and the save of the whole grid.

#include "velmora/consists/consistbuilder.h"

#include "velmora/assets/indexrow.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <algorithm>
#include <cmath>

namespace velmora::consists {

const char* const kNoSavedConsists = "You currently don't have any saved consists.\nDo you wish to create some?";
const char* const kNoIndexAtStart = "You do not appear to have an index file named Index.csv.\n"
                                    "Generate one from the Edit Assets screen (Rolling Stock only, Add to List, "
                                    "Save Stock Index), or select one from the 'Files menu'.";
const char* const kMissingTitle = "Missing rolling-stock";
const char* const kMissingStock = "The following rolling-stock listed in the consist is missing";
const char* const kNoStockSelected = "You do not appear to have selected any rolling stock";
const char* const kNoPlaceSelected = "You do not appear to have selected somewhere to place rolling stock";
const char* const kConsistNameTitle = "Consist Name";
const char* const kConsistNamePrompt = "Name of new consist";
const char* const kNewConsistHint = "Now select the vehicles in the top box and add them in order, front first.\n"
                                    "Click Save when the consist is complete.";
const char* const kMultiTitle = "Install multiple times";
const char* const kMultiPrompt = "How many instances do you wish to install?";
const char* const kPoolTitle = "Load Wagon Pool from File";
const char* const kPoolFilter = "Comma Separated (*.csv)|*.csv|Excel file (*.xls)|*.xls|Tabbed text file (*.txt)|*.txt";
const char* const kUnsavedExit = "You have not saved the changes to your consists.\nDo you really wish to exit?";
const char* const kNothingToSave = "There are no consists in the grid, so ConsistTemplates.bin was not written.";
const char* const kSaveConsistsCommand = "Save Consists";

std::vector<std::string> GridRow::cells() const {
    return {name, key, id, provider, product, blueprintId, flipped, entryId};
}

std::optional<Stock> stockFromIndexRow(const assets::AssetRow& row, std::string& error) {
    const auto read = assets::readIndexRow(row.cells(), error);
    if (!read)
        return std::nullopt;
    std::string path = read->path;
    if (iendsWith(path, "bin"))
        path.replace(path.size() - 3, 3, "xml");
    // The index holds the names as the file system does; the document holds them escaped.
    return Stock{consists::documentText(read->provider), consists::documentText(read->product),
                 consists::documentText(path)};
}

bool loadPool(const fs::path& file, std::vector<assets::AssetRow>& rows, std::string& error) {
    const assets::ListForm form = assets::listFormOf(file);
    std::vector<assets::ListLine> lines;
    if (!assets::loadListLines(file, form, lines, &error))
        return false;
    const std::size_t columns = assets::assetColumns().size();
    for (const assets::ListLine& line : lines)
        if (line.cells.size() < columns) {
            error = file.string() + ", line " + std::to_string(line.line) + ": " + std::to_string(line.cells.size()) +
                    (line.cells.size() == 1 ? " cell" : " cells") + " where the index has " + std::to_string(columns) +
                    " (Provider, Product, Path, Name, In Scene, Category, Blueprint, Index). The pool was not loaded.";
            return false;
        }
    std::vector<assets::AssetRow> read;
    for (const assets::ListLine& line : lines) {
        const auto c = line.cells;
        read.push_back({c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7]});
    }
    rows = std::move(read);
    return true;
}

ConsistBuilder::ConsistBuilder(IdSource ids) : m_ids(std::move(ids)) {}

OpenResult ConsistBuilder::open(AppContext& ctx) {
    *this = ConsistBuilder(std::move(m_ids));
    OpenResult r;
    const ReadResult read = readConsistTemplates(ctx);
    r.exists = read.exists;
    if (!read.ok()) {
        r.error = read.error;
        return r;
    }
    m_exists = read.exists;
    m_header = read.doc.header;
    for (const ConsistTemplate& c : read.doc.consists)
        for (const TemplateEntry& e : c.entries) {
            m_rows.push_back({c.name, c.key, c.id, e.provider, e.product, e.blueprintId,
                              e.flipped.empty() ? "0" : e.flipped, e.id});
            if (blueprintMissing(ctx, e)) {
                std::string path = e.provider + "\\" + e.product + "\\" + e.blueprintId;
                if (iendsWith(path, "xml"))
                    path.replace(path.size() - 3, 3, "bin");
                r.missing.push_back(utf8FromDocument(shownName((ctx.railWorks() / "Assets").string() + "\\" + path)));
            }
        }
    return r;
}

std::vector<std::size_t> ConsistBuilder::consistNumbers() const {
    std::vector<std::size_t> out;
    std::size_t n = 0;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (i && m_rows[i].id != m_rows[i - 1].id)
            ++n;
        out.push_back(n);
    }
    return out;
}

bool ConsistBuilder::rowMissing(AppContext& ctx, std::size_t row) const {
    if (row >= m_rows.size())
        return false;
    const GridRow& g = m_rows[row];
    return blueprintMissing(ctx, TemplateEntry{g.entryId, g.provider, g.product, g.blueprintId, g.flipped});
}

bool ConsistBuilder::startConsist(const std::string& typedName) {
    if (typedName.empty())
        return false;
    m_current = {};
    m_current.name = consists::documentText(typedName);
    m_current.id = newId();
    m_current.key = m_ids.guid();
    m_building = true;
    return true;
}

bool ConsistBuilder::addStock(const Stock& stock) {
    m_lastStock = stock;
    if (!m_building)
        return false;
    GridRow row = m_current;
    row.provider = stock.provider;
    row.product = stock.product;
    row.blueprintId = stock.blueprintId;
    row.flipped = "0";
    row.entryId = newId();
    m_rows.push_back(std::move(row));
    m_unsaved = true;
    return true;
}

std::string ConsistBuilder::insertAfter(std::vector<std::size_t> selected, int count) {
    std::erase_if(selected, [&](std::size_t r) { return r >= m_rows.size(); });
    if (selected.empty())
        return kNoPlaceSelected;
    if (!m_lastStock)
        return kNoStockSelected;
    // From the last to the first, so that the rows not yet walked keep their numbers.
    std::sort(selected.begin(), selected.end());
    selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
    for (auto it = selected.rbegin(); it != selected.rend(); ++it)
        for (int n = 0; n < count; ++n) {
            GridRow row = m_rows[*it];
            row.provider = m_lastStock->provider;
            row.product = m_lastStock->product;
            row.blueprintId = m_lastStock->blueprintId;
            row.flipped = "0";
            row.entryId = newId();
            m_rows.insert(m_rows.begin() + static_cast<std::ptrdiff_t>(*it) + 1, std::move(row));
            m_unsaved = true;
        }
    return {};
}

void ConsistBuilder::flip(const std::vector<std::size_t>& selected) {
    for (std::size_t r : selected)
        if (r < m_rows.size()) {
            m_rows[r].flipped = m_rows[r].flipped == "1" ? "0" : "1";
            m_unsaved = true;
        }
}

void ConsistBuilder::remove(std::vector<std::size_t> selected) {
    std::sort(selected.begin(), selected.end());
    selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
    for (auto it = selected.rbegin(); it != selected.rend(); ++it)
        if (*it < m_rows.size()) {
            m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(*it));
            m_unsaved = true;
        }
}

bool ConsistBuilder::rename(std::size_t row, const std::string& typedName) {
    if (typedName.empty() || row >= m_rows.size())
        return false;
    const std::string name = consists::documentText(typedName);
    // The group: the consecutive rows with the same id around the row.
    std::size_t first = row, last = row;
    while (first > 0 && m_rows[first - 1].id == m_rows[row].id)
        --first;
    while (last + 1 < m_rows.size() && m_rows[last + 1].id == m_rows[row].id)
        ++last;
    for (std::size_t i = first; i <= last; ++i)
        m_rows[i].name = name;
    if (m_building && m_current.id == m_rows[row].id)
        m_current.name = name;
    m_unsaved = true;
    return true;
}

void ConsistBuilder::clear() {
    if (!m_rows.empty())
        m_unsaved = true;
    m_rows.clear();
    m_building = false;
}

std::vector<std::size_t> pickPoolRows(std::size_t poolRows, int wagons, int randomness,
                                      const std::function<double()>& fraction) {
    std::vector<std::size_t> out;
    if (poolRows == 0 || wagons <= 0 || randomness < 0 || randomness > 10)
        return out;
    // A row of [from, from + count), picked by the fraction.
    auto pick = [&](std::size_t from, std::size_t count) {
        const double f = std::clamp(fraction(), 0.0, 1.0);
        return from + std::min(count - 1, static_cast<std::size_t>(std::floor(f * static_cast<double>(count))));
    };
    if (randomness == 0) {
        out.assign(static_cast<std::size_t>(wagons), pick(0, poolRows));
    } else if (randomness == 10) {
        for (int i = 0; i < wagons; ++i)
            out.push_back(pick(0, poolRows));
    } else {
        // Half the wagons (the integer conversion rounds halves to even) from the first half.
        const auto firstWagons = static_cast<int>(std::nearbyint(wagons / 2.0));
        const std::size_t half = poolRows / 2;
        for (int i = 0; i < wagons; ++i) {
            const bool first = i < firstWagons;
            // A pool of one row has no first half: that half is the whole pool.
            if (first && half > 0)
                out.push_back(pick(0, half));
            else
                out.push_back(pick(half, poolRows - half));
        }
    }
    return out;
}

int ConsistBuilder::generate(const std::vector<assets::AssetRow>& pool, int wagons, int randomness,
                             const std::function<double()>& fraction, std::vector<std::string>* problems) {
    int added = 0;
    for (std::size_t r : pickPoolRows(pool.size(), wagons, randomness, fraction)) {
        std::string error;
        const auto stock = stockFromIndexRow(pool[r], error);
        if (!stock) {
            if (problems)
                problems->push_back("Pool row " + std::to_string(r + 1) + ": " + error);
            continue;
        }
        if (addStock(*stock))
            ++added;
    }
    return added;
}

std::string ConsistBuilder::document(AppContext& ctx, std::string& error) const {
    const std::string nameTemplate = readTemplate(ctx, "ConsistName.txt", error);
    const std::string entryTemplate = readTemplate(ctx, "ConsistTemplateentry.txt", error);
    std::string head = m_header;
    if (!m_exists || head.empty())
        head = fillTemplate(readTemplate(ctx, "ConsistHeader.txt", error), {{"qqqqq", newId()}});
    if (!error.empty())
        return {};
    if (!head.empty() && head.back() != '\n')
        head += "\r\n";
    std::string body;
    ConsistTemplate c;
    auto close = [&] {
        if (!c.entries.empty())
            body += consistText(nameTemplate, entryTemplate, c);
    };
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const GridRow& g = m_rows[i];
        if (i == 0 || g.id != m_rows[i - 1].id) {
            close();
            c = ConsistTemplate{g.id, g.name, g.key, {}};
        }
        c.entries.push_back({g.entryId, g.provider, g.product, g.blueprintId, g.flipped});
    }
    close();
    return head + body + kFooter;
}

SaveResult ConsistBuilder::save(AppContext& ctx, const std::string& command) {
    SaveResult r;
    r.file = consistTemplatesFile(ctx);
    if (m_rows.empty()) {
        r.message = kNothingToSave;
        return r;
    }
    std::string error;
    const std::string xml = document(ctx, error);
    if (!error.empty()) {
        r.message = kNotWritten;
        r.detail = error;
        return r;
    }
    r = writeConsistTemplates(ctx, xml, command);
    if (r) {
        m_exists = true;
        TemplatesDocument written;
        if (parseConsistTemplates(xml, written))
            m_header = written.header;
        m_unsaved = false;
    }
    return r;
}

std::vector<std::size_t> ConsistBuilder::rowsNamed(const std::string& typedName) const {
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        if (sameName(shownName(m_rows[i].name), typedName))
            out.push_back(i);
    return out;
}

} // namespace velmora::consists
