#include "velmora/assets/listcommands.h"

#include "velmora/assets/assetlist.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/scanpath.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <QRegularExpression>
#include <QString>

#include <algorithm>

namespace velmora::assets {

namespace {

const ScanSettings kText{Match::Text};

std::optional<QRegularExpression> findPattern(const std::string& text, std::string* error) {
    QString typed = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    // An empty box is three empty alternatives, which every cell matches: Show All then keeps
    // every row.
    if (typed.isEmpty())
        return QRegularExpression(QString());
    QString upper = typed, lower = typed;
    upper[0] = upper[0].toUpper();
    lower[0] = lower[0].toLower();
    QRegularExpression re("(" + typed + ")|(" + upper + ")|(" + lower + ")");
    if (!re.isValid()) {
        if (error)
            *error = "'" + text + "' cannot be searched for: " + re.errorString().toStdString();
        return std::nullopt;
    }
    return re;
}

// The value of an element from the first occurrence of its tag: between ">" and "<".
std::string valueAfter(const std::string& xml, std::string_view tag) {
    const std::size_t at = InStr(1, xml, tag, Match::Text);
    if (at == 0)
        return {};
    const std::size_t gt = xml.find('>', at - 1);
    const std::size_t lt = gt == std::string::npos ? gt : xml.find('<', gt + 1);
    if (lt == std::string::npos)
        return {};
    return xml.substr(gt + 1, lt - gt - 1);
}

} // namespace

fs::path rowFile(AppContext& ctx, const AssetRow& row) {
    return ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets\\" + row.relativePath());
}

std::optional<std::size_t> findCellRow(const CellRows& rows, int column, const std::string& text,
                                       std::size_t from, std::string* error) {
    const auto re = findPattern(text, error);
    if (!re)
        return std::nullopt;
    for (std::size_t i = from; i < rows.size(); ++i) {
        const auto& cells = rows[i];
        const std::string value = column >= 0 && static_cast<std::size_t>(column) < cells.size()
                                      ? cells[static_cast<std::size_t>(column)]
                                      : std::string();
        if (re->match(QString::fromLatin1(value.data(), static_cast<qsizetype>(value.size()))).hasMatch())
            return i;
    }
    return std::nullopt;
}

std::vector<std::size_t> matchingCellRows(const CellRows& rows, int column, const std::string& text) {
    std::vector<std::size_t> hits;
    for (auto at = findCellRow(rows, column, text, 0); at; at = findCellRow(rows, column, text, *at + 1))
        hits.push_back(*at);
    return hits;
}

std::optional<std::size_t> findRow(const std::vector<AssetRow>& rows, int column, const std::string& text,
                                   std::size_t from, std::string* error) {
    return findCellRow(cellsOf(rows), column, text, from, error);
}

std::vector<std::size_t> matchingRows(const std::vector<AssetRow>& rows, int column,
                                      const std::string& text) {
    return matchingCellRows(cellsOf(rows), column, text);
}

std::string deleteWarning() {
    return "This will DELETE all selected files - You have been warned!!!\n"
           "If you do not have a back-up of the folder you are about to alter, I suggest\n"
           "you make one before carrying out this procedure!";
}

DeleteResult deleteFiles(AppContext& ctx, const std::vector<fs::path>& files) {
    DeleteResult result;
    JournalCommand command(&ctx.journal(), "Delete Selected");
    for (const fs::path& file : files) {
        std::error_code ec;
        if (!fs::is_regular_file(file, ec))
            continue;
        if (const WriteResult removed = ctx.files().remove(file); removed)
            ++result.deleted;
        else
            result.errors.push_back(removed.message);
    }
    ctx.resolver.invalidate();
    return result;
}

DeleteResult deleteRowFiles(AppContext& ctx, const std::vector<AssetRow>& rows) {
    std::vector<fs::path> files;
    for (const AssetRow& row : rows) {
        std::string relative = row.relativePath();
        while (!relative.empty() && relative.back() == '\\')
            relative.pop_back();
        if (relative.empty() || relative == "\\\\")
            continue;
        files.push_back(rowFile(ctx, row));
    }
    return deleteFiles(ctx, files);
}

RowPicture rowPicture(AppContext& ctx, const AssetRow& row) {
    std::string name = row.name;
    name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return c == '\'' || c == ';' || c == ':'; }),
               name.end());
    const fs::path thumbnail = ctx.appPath() / "Thumbnails" / (fileNameFromText(name) + ".jpg");
    if (!name.empty() && FileExists(thumbnail))
        return {RowPicture::Source::Thumbnail, thumbnail};
    const fs::path blueprint = rowFile(ctx, row);
    if (auto info = ctx.resolver.resolve(blueprint.parent_path(), "LocoInformation\\image.png"))
        return {RowPicture::Source::LocoInformation, *info};

    std::string xml;
    if (binToXmlText(blueprint, xml)) {
        const std::string geometry = withoutBracket(valueAfter(xml, "<GeometryID"));
        const auto shape = geometry.empty() ? std::nullopt
                                            : ctx.resolver.resolve(ctx.railWorks(), "Assets\\" + geometry + ".GeoPcDx");
        std::string shapeXml;
        if (shape && binToXmlText(*shape, shapeXml)) {
            const std::size_t list = InStr(1, shapeXml, "<TextureByName", Match::Text);
            const std::size_t e = list ? InStr(list, shapeXml, "<e", Match::Text) : 0;
            if (e) {
                // The texture named as the shape's texture lists name it, below Assets.
                const fs::path assetsFolder = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
                const std::string shapeRelative = geometry + ".GeoPcDx";
                const std::string value = texturePath(valueAfter(shapeXml.substr(e - 1), "<e"), shapeRelative);
                if (auto texture = ctx.resolver.resolve(assetsFolder, value))
                    return {RowPicture::Source::Texture, *texture};
            }
        }
    }
    return {RowPicture::Source::NoPicture, ctx.appPath() / "NoPicture.jpg"};
}

std::vector<std::string> childEntries(const std::string& xml) {
    std::vector<std::string> names;
    const std::size_t container = InStr(1, xml, "<ContainerComponent>", Match::Text);
    if (container == 0)
        return names;
    std::size_t pos = container;
    std::string value;
    for (;;) {
        GetDetail(xml, pos, "ChildName", value, kText);
        if (pos == 0)
            break;
        names.push_back(value);
    }
    return names;
}

std::string removeChildEntries(std::string xml, const std::vector<std::string>& names) {
    constexpr std::size_t kMostEntries = 21;
    const std::string open = "<cEntityContainerBlueprint-sChild";
    const std::string close = "</cEntityContainerBlueprint-sChild>";
    for (std::size_t i = 0; i < names.size() && i < kMostEntries; ++i) {
        const std::size_t children = InStr(1, xml, "<Children>", Match::Text);
        if (children == 0)
            break;
        const std::size_t hit = InStr(children + 5, xml, ">" + names[i] + "<", Match::Text);
        if (hit == 0)
            continue;
        const std::size_t start = InStrRev(xml, open, hit, Match::Text);
        const std::size_t end = InStr(hit, xml, close, Match::Text);
        if (start == 0 || end == 0)
            continue;
        std::size_t cutEnd = end - 1 + close.size();
        // Take the line break after the element too, so no empty line is left behind.
        if (xml.compare(cutEnd, 2, "\r\n") == 0)
            cutEnd += 2;
        else if (cutEnd < xml.size() && xml[cutEnd] == '\n')
            ++cutEnd;
        std::size_t cutStart = start - 1;
        while (cutStart > 0 && (xml[cutStart - 1] == '\t' || xml[cutStart - 1] == ' '))
            --cutStart;
        xml.erase(cutStart, cutEnd - cutStart);
    }
    return xml;
}

void renameBlueprint(std::string& xml, const std::string& displayName) {
    // Typed text: an "&" or "<" in it must not break the document.
    const std::string name = documentText(displayName);
    std::size_t pos = InStr(1, xml, "<Name ", Match::Text);
    if (pos)
        PutDetail(xml, pos, "Name", name, kText);
    for (const char* language : {"English", "French", "Italian", "German", "Spanish"}) {
        pos = 1;
        PutDetail(xml, pos, language, name, kText);
    }
}

std::string correctSmokeStack(std::string xml, const std::vector<std::string>& names) {
    constexpr std::size_t kMostEntries = 3;
    for (std::size_t i = 0; i < names.size() && i < kMostEntries; ++i) {
        const std::string from = ">" + names[i] + "<";
        for (std::size_t at = InStr(1, xml, from, Match::Text); at; at = InStr(at + 18, xml, from, Match::Text))
            xml.replace(at - 1, from.size(), ">Main Smoke Stack<");
    }
    return xml;
}

StoreResult storeBlueprint(AppContext& ctx, const fs::path& source, const std::string& xml, std::string fileName) {
    StoreResult r;
    while (!fileName.empty() && fileName.back() == '.')
        fileName.pop_back();
    if (fileName.empty()) {
        r.message = "No file name was given.";
        return r;
    }
    // A name, not a path: the new item stands beside the one it was made from.
    if (fileName.find_first_of("/\\:") != std::string::npos || fileName == "..") {
        r.message = "\"" + fileName + "\" is not a file name: give the name only, without folders.";
        return r;
    }
    std::string bin;
    const ConvertResult converted = xmlTextToBin(xml, bin, fileName + ".xml");
    if (!converted || bin.empty()) {
        r.message = "Serz.exe could not convert file " + fileName + ".bin\n"
                    "This is a limitation of Serz.exe and out of my control.";
        if (!converted.message.empty())
            r.message += "\n" + converted.message;
        return r;
    }
    // An existing file of the new name is kept as a numbered backup, never just overwritten.
    const fs::path target = source.parent_path() / (fileName + ".bin");
    if (const WriteResult stored = ctx.files().write(target, bin); !stored) {
        r.message = stored.message;
        return r;
    }
    removeBlueprintCacheOf(ctx, source);
    ctx.resolver.invalidate();
    r.ok = true;
    r.written = target;
    return r;
}

void removeBlueprintCache(AppContext& ctx, const std::string& provider, const std::string& product) {
    const fs::path assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    if (auto cache = ctx.resolver.resolve(assets, provider + "\\" + product + "\\BluePrints.pak")) {
        std::error_code ec;
        fs::remove(*cache, ec);
    }
}

void removeBlueprintCacheOf(AppContext& ctx, const fs::path& blueprint) {
    const fs::path assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    std::error_code ec;
    const fs::path relative = fs::relative(blueprint, assets, ec);
    auto part = relative.begin();
    if (ec || part == relative.end() || *part == "..")
        return;
    const std::string provider = part->string();
    if (++part != relative.end())
        removeBlueprintCache(ctx, provider, part->string());
}

std::string addLocoInformation(AppContext& ctx, const AssetRow& row,
                               const std::function<std::optional<std::string>(const fs::path& jpg)>& toPng) {
    const fs::path thumbnail = ctx.appPath() / "Thumbnails" / (fileNameFromText(row.name) + ".jpg");
    if (!FileExists(thumbnail))
        return "There does not appear to be a thumbnail for\nthis loco in your Velmora\\Thumbnails folder?";
    const fs::path folder = rowFile(ctx, row).parent_path() / "LocoInformation";
    const std::optional<std::string> png = toPng(thumbnail);
    if (!png || png->empty())
        return thumbnail.string() + ": the picture cannot be converted to .png";
    const WriteResult stored = ctx.files().write(folder / "image.png", *png);
    ctx.resolver.invalidate();
    return stored ? std::string() : stored.message;
}

std::vector<AssetDetail> searchAssetDetails(const fs::path& assetsFolder, std::string fileName,
                                            const std::function<void()>& tick, const bool& stop) {
    std::vector<AssetDetail> found;
    if (iendsWith(fileName, "xml"))
        fileName = fileName.substr(0, fileName.size() - 3) + "bin";
    cScanPath scan;
    scan.ReadOnly = false;
    scan.setFilter("*.bin");
    long seen = 0;
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        if (++seen % 64 == 0 && tick)
            tick();
        if (stop)
            scan.StopScan();
        if (!iequals(name, fileName))
            return; // the name test comes before any conversion
        std::string xml;
        if (!binToXmlText(fs::path(path) / name, xml))
            return;
        std::string full = path + name;
        std::replace(full.begin(), full.end(), '/', '\\');
        const fs::path relative = fs::relative(fs::path(path) / name, assetsFolder);
        auto part = relative.begin();
        AssetDetail d;
        if (part != relative.end())
            d.provider = (part++)->string();
        if (part != relative.end())
            d.product = (part++)->string();
        for (std::string sep; part != relative.end(); ++part, sep = "\\")
            d.path += sep + part->string();
        std::size_t pos = 1;
        GetDetail(xml, pos, "English", d.name, kText);
        DecodeChars(d.name);
        pos = 1;
        GetDetail(xml, pos, "Category", d.category, kText);
        if (!d.category.empty() && d.category[0] == 'e')
            d.category.erase(0, 1);
        found.push_back(std::move(d));
    };
    scan.StartScan(assetsFolder, true, false, true, false);
    return found;
}

} // namespace velmora::assets
