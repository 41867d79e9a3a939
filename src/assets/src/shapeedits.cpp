// The edits of Edit Assets that work on an item's shape (.GeoPcDx): its level-of-detail
// distances and the emissive lighting of its materials, and how a row finds its shape.

#include "velmora/assets/assetedits.h"
#include "velmora/assets/checks.h"
#include "velmora/core/paths.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostDistances = 50;

// One distance of a <LOD> list: where its text stands and what it says.
struct Distance {
    std::size_t from = 0, to = 0; // the value's text, [from, to) as string indices
    double value = 0;
};

// The next "<e" element (not "<eX...") at or after the string index `from`.
std::size_t nextElement(const std::string& xml, std::size_t from, std::size_t end) {
    for (std::size_t p = xml.find("<e", from); p != std::string::npos && p < end; p = xml.find("<e", p + 2)) {
        const char after = p + 2 < xml.size() ? xml[p + 2] : '\0';
        if (after == ' ' || after == '>')
            return p;
    }
    return std::string::npos;
}

// Every distance of every <LOD> block in order, each block read until its first 0 (a value that
// is no number counts as 0), at most fifty in all.
std::vector<Distance> readDistances(const std::string& xml) {
    std::vector<Distance> out;
    for (std::size_t block = InStr(1, xml, "<LOD>", Match::Text); block && out.size() < kMostDistances;
         block = InStr(block + 5, xml, "<LOD>", Match::Text)) {
        const std::size_t close = InStr(block, xml, "</LOD>", Match::Text);
        if (!close)
            break;
        const std::size_t end = close - 1;
        for (std::size_t e = nextElement(xml, block - 1, end); e != std::string::npos && out.size() < kMostDistances;) {
            const std::size_t gt = xml.find('>', e);
            const std::size_t lt = gt == std::string::npos ? gt : xml.find('<', gt);
            if (lt == std::string::npos || lt > end || xml[gt - 1] == '/')
                break;
            const std::string text = xml.substr(gt + 1, lt - gt - 1);
            char* stop = nullptr;
            const double value = std::strtod(text.c_str(), &stop);
            if (text.empty() || !stop || *stop != '\0' || !std::isfinite(value) || value == 0)
                break;
            out.push_back({gt + 1, lt, value});
            e = nextElement(xml, lt, end);
        }
    }
    return out;
}

// A rescaled distance: its whole part only, kept within min..max.
std::string wholeDistance(double value, double min, double max) {
    std::string text = lodText(value);
    text = text.substr(0, text.find('.') + 1) + "0000";
    const double whole = std::strtod(text.c_str(), nullptr);
    if (whole > max)
        return lodText(max);
    if (whole < min)
        return lodText(min);
    return text;
}

// Four values that are all 0, in whatever form they are written ("0.0000000", "0", "-0").
bool allZero(const std::string& values) {
    std::size_t count = 0;
    for (const char* p = values.c_str(); *p;) {
        char* end = nullptr;
        const double v = std::strtod(p, &end);
        if (end == p)
            return false;
        if (v != 0)
            return false;
        ++count;
        p = end;
        while (*p == ' ' || *p == '\t')
            ++p;
    }
    return count == 4;
}

bool endsWith(const fs::path& file, std::string_view extension) {
    const std::string ext = file.extension().string();
    return ext.size() == extension.size() &&
           std::equal(ext.begin(), ext.end(), extension.begin(),
                      [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); });
}

} // namespace

std::string lodText(double distance) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.4f", distance);
    return buffer;
}

std::size_t rescaleLods(std::string& shapeXml, double min, double max) {
    const std::vector<Distance> distances = readDistances(shapeXml);
    if (distances.empty())
        return 0;
    // The first of the smallest and the first of the largest are the ones that are fixed.
    const auto less = [](const Distance& a, const Distance& b) { return a.value < b.value; };
    const auto low = std::min_element(distances.begin(), distances.end(), less);
    const auto high = std::max_element(distances.begin(), distances.end(), less);
    const double oldMin = low->value, oldMax = high->value;
    const std::size_t minAt = static_cast<std::size_t>(low - distances.begin());
    const std::size_t maxAt = static_cast<std::size_t>(high - distances.begin());
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < distances.size(); ++i) {
        if (oldMax == oldMin || i == minAt)
            texts.push_back(lodText(min));
        else if (i == maxAt)
            texts.push_back(lodText(max));
        else
            texts.push_back(wholeDistance(min + distances[i].value / (oldMax - oldMin) * (max - min), min, max));
    }
    // From the back, so that the places found stay where they are.
    for (std::size_t i = distances.size(); i-- > 0;)
        shapeXml.replace(distances[i].from, distances[i].to - distances[i].from, texts[i]);
    return distances.size();
}

std::size_t zeroEmissive(std::string& shapeXml) {
    static const std::string kZero = "0.0000 0.0000 0.0000 0.0000";
    const ScanSettings text{Match::Text};
    std::size_t changed = 0;
    for (std::size_t ambient = InStr(1, shapeXml, "<AmbientAsVec", Match::Text); ambient;) {
        std::size_t pos = InStr(ambient, shapeXml, "<EmissiveAsVec", Match::Text);
        if (!pos)
            break;
        std::string old;
        std::size_t read = pos;
        GetDetail(shapeXml, read, "EmissiveAsVec", old, text);
        if (read && !allZero(old)) {
            PutDetail(shapeXml, pos, "EmissiveAsVec", kZero, text);
            ++changed;
        }
        ambient = InStr(pos ? pos : ambient + 1, shapeXml, "<AmbientAsVec", Match::Text);
    }
    return changed;
}

std::string geometryOf(const std::string& blueprintXml) {
    std::size_t pos = InStr(1, blueprintXml, "<GeometryID", Match::Text);
    std::string value;
    if (pos)
        GetDetail(blueprintXml, pos, "GeometryID", value, {Match::Text});
    return withoutBracket(value);
}

bool isShapeFile(const fs::path& file) { return endsWith(file, ".GeoPcDx"); }

bool isTextureFile(const fs::path& file) { return endsWith(file, ".TgPcDx"); }

fs::path shapeOfRow(const RowInput& input, const PathResolver& resolver) {
    if (isShapeFile(input.file))
        return input.file;
    const std::string geometry = geometryOf(input.xml);
    if (geometry.empty())
        return {};
    const auto shape = resolver.resolve(input.assets, geometry + ".GeoPcDx");
    if (!shape || !fs::is_regular_file(*shape))
        return {};
    return *shape;
}

} // namespace velmora::assets
