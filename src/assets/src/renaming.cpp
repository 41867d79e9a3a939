#include "velmora/assets/renaming.h"

#include "velmora/core/templates.h"
#include "velmora/core/textsearch.h"
#include "velmora/core/xmltext.h"

#include <strings.h>

namespace velmora::assets {

namespace {
const ScanSettings kText{Match::Text};
}

const std::vector<CoachOption>& coachOptions() {
    static const std::vector<CoachOption> options = {
        {"Empty", "_MT"},       {"Driver Only (EMU/DMU)", "_DO"}, {"Passengers Only (EMU/DMU)", "_PO"},
        {"No Driver", "_ND"},   {"Driver Front", "_DF"},          {"Driver Rear", "_DR"},
        {"Dead", "_DEAD"},      {"Spare", ""},
    };
    return options;
}

std::size_t coachOptionOf(const std::string& suffix) {
    const auto& options = coachOptions();
    for (std::size_t i = 0; i < options.size(); ++i)
        if (strcasecmp(options[i].suffix, suffix.c_str()) == 0)
            return i;
    return options.size() - 1;
}

VariantName withSuffix(const std::string& fileName, const std::string& displayName, const std::string& suffix) {
    return {fileName + suffix, displayName + suffix};
}

std::string blueprintStem(const AssetRow& row) {
    std::string name = row.path.substr(row.path.find_last_of("\\/") == std::string::npos ? 0
                                                                                    : row.path.find_last_of("\\/") + 1);
    if (const auto dot = name.rfind('.'); dot != std::string::npos && dot > 0)
        name.erase(dot);
    return name;
}

std::string numberedName(std::string typed, std::size_t index, std::size_t count) {
    if (count > 1 && (typed.empty() || typed.back() != '#'))
        typed += " #";
    if (!typed.empty() && typed.back() == '#')
        typed.replace(typed.size() - 1, 1, std::to_string(index + 1));
    return typed;
}

void putDisplayName(std::string& xml, const std::string& name) {
    if (std::size_t pos = InStr(1, xml, "<Name", Match::Text); pos) {
        pos = pos > 2 ? pos - 2 : 1;
        PutDetail(xml, pos, "Name", name, kText);
    }
    for (const char* language : {"English", "French", "Italian", "German", "Spanish"}) {
        std::size_t pos = 1;
        PutDetail(xml, pos, language, name, kText);
    }
    for (const char* language : {"Dutch", "Polish", "Russian"})
        if (InStr(1, xml, language, Match::Binary)) {
            std::size_t pos = 1;
            PutDetail(xml, pos, language, name, kText);
        }
}

std::vector<std::string> changedNames(const std::string& typed, std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i)
        names.push_back(numberedName(typed, i, count));
    return names;
}

RowEditor changeNameEditor(const std::string& typed, std::size_t count) {
    return [typed, count](const RowInput& in) {
        RowEdit e;
        e.xml = in.xml;
        putDisplayName(e.xml, documentText(numberedName(typed, in.index, count)));
        e.changed = e.xml != in.xml;
        if (!e.changed)
            e.passedOver = "it has that name already";
        return e;
    };
}

} // namespace velmora::assets
