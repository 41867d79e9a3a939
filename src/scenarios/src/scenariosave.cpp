// "Save Changes to Scenario": the fields into ScenarioProperties.xml, the start times into
// Scenario.bin, both written with their numbered backups as one journal entry.

#include "velmora/scenarios/scenariosave.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"
#include "velmora/routes/providers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace velmora::scenarios {

const char* const kTimeFormat = "The time must be in 24hour format, e.g. 0530";
const char* const kSaved = "Your Scenario.bin and ScenarioProperties.xml files have been updated.";
const char* const kClassChangeWarning = "If you wish to change a Career,Timetable or Tutorial scenario to\n"
                                        "Standard or FreeRoam, make a Clone of the Scenario first.\n"
                                        "You can't change from Career to Standard and back except\n"
                                        "by renaming ScenarioProperties.bak to ScenarioProperties.xml";

namespace {

const ScanSettings kExact{Match::Binary};

// The picture "00000.0000", with a point whatever the locale.
std::string picture(double seconds) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "%010.4f", seconds);
    std::string s = buf;
    for (char& ch : s)
        if (ch == ',')
            ch = '.';
    return s;
}

// Replaces the value of the next `tag` element from `pos` (1-based) and moves `pos` past it in
// the changed text. Returns false when the element is not there.
bool putForward(std::string& text, std::size_t& pos, std::string_view tag, const std::string& value) {
    std::size_t at = pos;
    std::string old;
    GetDetail(text, at, tag, old, kExact);
    if (!at)
        return false;
    PutDetail(text, pos, tag, value, kExact);
    if (!pos)
        return false;
    pos = pos + value.size() - old.size();
    return true;
}

// Skips the next `tag` element from `pos` without changing it.
bool skipForward(const std::string& text, std::size_t& pos, std::string_view tag) {
    std::string old;
    GetDetail(text, pos, tag, old, kExact);
    return pos != 0;
}

// Text typed into a field as the properties file holds it: the simulator's UTF-8 forms and
// entities.
std::string forDocument(std::string text) {
    ReplaceApos2(text);
    return text;
}

// Markup in a field would cut the document open; the reading side has no way back from "&lt;".
std::string markupIn(const Fields& f) {
    const std::pair<const char*, const std::string*> texts[] = {
        {"Display Name", &f.displayName}, {"Description", &f.description},     {"Briefing", &f.briefing},
        {"Author", &f.author},            {"Start Location", &f.startLocation}, {"Weather Provider", &f.weather.provider},
        {"Weather Product", &f.weather.product}, {"Weather Blueprint", &f.weather.blueprintId}};
    for (const auto& [label, text] : texts)
        if (text->find_first_of("<>") != std::string::npos)
            return std::string(label) + " may not hold the characters < or >; nothing was written.";
    return {};
}

std::string readTemplate(AppContext& ctx, const std::string& name, std::string& error) {
    const fs::path file = ctx.dataPath() / "Templates" / name;
    std::string text = ReadTextFile(file);
    if (text.empty())
        error = file.string() + ": the template is missing or empty; nothing was written.";
    return text;
}

// The required assets as RBlueprintSetPreLoad entries, each from Templates\ProvHeader.txt.
std::string preloadEntries(AppContext& ctx, const std::vector<std::string>& pairs, std::string& error) {
    const std::string header = readTemplate(ctx, "ProvHeader.txt", error);
    if (!error.empty())
        return {};
    return routes::preloadEntries(header, pairs);
}

} // namespace

std::string withRequiredAssets(AppContext& ctx, std::string properties, const std::vector<std::string>& pairs,
                               std::string& error) {
    if (pairs.empty())
        return properties;
    const std::string merged = preloadEntries(ctx, pairs, error);
    if (!error.empty())
        return {};
    if (const std::size_t close = InStr(1, properties, "</RBlueprintSetPreLoad>", Match::Binary);
        close && InStr(1, properties, "<RBlueprintSetPreLoad>", Match::Binary)) {
        properties.insert(close - 1, merged);
    } else if (const std::size_t empty = InStr(1, properties, "<RBlueprintSetPreLoad/>", Match::Binary); empty) {
        properties.replace(empty - 1, 23, "<RBlueprintSetPreLoad>" + merged + "\r\n</RBlueprintSetPreLoad>");
    }
    // Otherwise the table is dropped without a word.
    return properties;
}

Fields fieldsOf(const ScenarioDocument& doc) {
    const Properties& p = doc.properties;
    Fields f;
    f.displayName = p.displayName;
    f.description = p.description;
    f.briefing = p.briefing;
    f.startTime = p.startTime;
    f.durationMins = p.durationMins;
    f.startDD = p.startDD;
    f.startMM = p.startMM;
    f.startYYYY = p.startYYYY;
    f.season = p.season;
    f.weather = p.weather;
    f.cls = doc.cls();
    f.author = p.author;
    f.startLocation = p.startLocation;
    return f;
}

std::string secondsText(std::string_view hhmm) {
    if (hhmm.size() != 4 || hhmm.find_first_not_of("0123456789") != std::string_view::npos)
        return {};
    const int value = std::atoi(std::string(hhmm).c_str());
    if (value > 2400)
        return {};
    return picture((value / 100) * 3600.0 + (value % 100) * 60.0);
}

void PutName(std::string& text, std::size_t pos, const std::string& value, const std::string& language) {
    if (pos == 0 || pos > text.size())
        return;
    // The block ends at its own closing tag: "<DisplayName>" closes with "</DisplayName>".
    const std::size_t open = pos - 1;
    const std::size_t nameEnd = text.find_first_of(" >/", open + 1);
    const std::string close = "</" + text.substr(open + 1, nameEnd - open - 1) + ">";
    std::size_t blockEnd = text.find(close, open);
    if (blockEnd == std::string::npos)
        return;
    std::vector<std::string> order{language.empty() ? std::string("English") : language, "English"};
    if (text.find("<French", open) < blockEnd)
        for (const char* l : {"French", "Italian", "German", "Spanish"})
            order.emplace_back(l);
    std::vector<std::string> done;
    for (const auto& lang : order) {
        if (std::find(done.begin(), done.end(), lang) != done.end())
            continue;
        done.push_back(lang);
        const std::size_t at = text.find("<" + lang, open);
        if (at == std::string::npos || at >= blockEnd)
            continue;
        const std::size_t end = text.find("</" + lang, at);
        if (end == std::string::npos || end >= blockEnd)
            continue;
        const std::size_t gt = text.rfind('>', end);
        const std::size_t oldSize = end - gt - 1;
        text.replace(gt + 1, oldSize, value);
        blockEnd = blockEnd + value.size() - oldSize;
    }
}

void ChangeTimes(std::string& text, double delta) {
    std::size_t pos = 1;
    while (pos) {
        std::size_t at = pos;
        std::string old;
        GetDetail(text, at, "StartTime", old, kExact);
        if (!at)
            break;
        double value = std::atof(old.c_str()) + delta;
        if (value > 86400)
            value -= 86400;
        if (!putForward(text, pos, "StartTime", picture(value)))
            break;
    }
}

std::string applyFields(AppContext& ctx, const ScenarioDocument& doc, const Fields& f, double& delta,
                        std::string& error) {
    const Properties& was = doc.properties;
    const std::string language = ctx.settings.language.empty() ? std::string("English") : ctx.settings.language;
    std::string copy = doc.propertiesText;
    delta = 0;
    if (error = markupIn(f); !error.empty())
        return {};
    auto missing = [&](const std::string& tag) {
        error = doc.propertiesFile.string() + ": the tag " + tag + " was not found; nothing was written.";
        return std::string();
    };
    // Class change: one word in the properties file.
    if (f.cls != doc.cls()) {
        std::size_t pos = InStr(1, copy, "<ScenarioClass", Match::Binary);
        if (!pos || (PutDetail(copy, pos, "ScenarioClass", classValue(f.cls), kExact), !pos))
            return missing("ScenarioClass");
    }
    const std::string seconds = secondsText(f.startTime);
    if (seconds.empty()) {
        error = kTimeFormat;
        return {};
    }
    // Day and month are taken as typed: the program has never refused one.
    struct Block {
        const char* tag;
        const std::string& now;
        const std::string& then;
    };
    for (const Block& b : {Block{"<DisplayName>", f.displayName, was.displayName},
                           Block{"<Description>", f.description, was.description},
                           Block{"<Briefing>", f.briefing, was.briefing}}) {
        if (b.now == b.then)
            continue; // an unchanged field stays byte for byte
        const std::size_t at = InStr(1, copy, b.tag, Match::Binary);
        if (!at)
            return missing(b.tag);
        PutName(copy, at, forDocument(b.now), language);
    }
    if (f.startTime != was.startTime && f.changeAllConsists)
        delta = std::atof(seconds.c_str()) - std::atof(was.startTimeRaw.c_str());
    std::size_t pos = InStr(1, copy, "<ScenarioClass", Match::Binary);
    struct Value {
        const char* tag;
        std::string now;
        const std::string& then;
        bool changed;
    };
    const Value values[] = {
        {"StartTime", seconds, was.startTimeRaw, f.startTime != was.startTime},
        {"DurationMins", f.durationMins, was.durationMins, f.durationMins != was.durationMins},
        {"StartDD", f.startDD, was.startDD, f.startDD != was.startDD},
        {"StartMM", f.startMM, was.startMM, f.startMM != was.startMM},
        {"StartYYYY", f.startYYYY, was.startYYYY, f.startYYYY != was.startYYYY},
        {"Season", f.season, was.season, f.season != was.season},
        {"Provider", forDocument(f.weather.provider), was.weather.provider, f.weather.provider != was.weather.provider},
        {"Product", forDocument(f.weather.product), was.weather.product, f.weather.product != was.weather.product},
        {"BlueprintID", forDocument(f.weather.blueprintId), was.weather.blueprintId,
         !f.weather.blueprintId.empty() && f.weather.blueprintId != was.weather.blueprintId},
    };
    for (const Value& v : values) {
        if (!pos || !(v.changed ? putForward(copy, pos, v.tag, v.now) : skipForward(copy, pos, v.tag)))
            return missing(v.tag);
    }
    if (showsAuthor(f.cls) && f.author != was.author) {
        const std::string author = forDocument(f.author);
        if (std::size_t at = InStr(1, copy, "<Author d", Match::Binary); at) {
            PutDetail(copy, at, "Author", author, kExact);
        } else {
            const std::string element = "<Author d:type=\"cDeltaString\">" + author + "</Author>";
            const std::size_t authored = InStr(1, copy, "<AuthoredLanguage", Match::Binary);
            const std::size_t blueprint = authored ? InStr(authored, copy, "<RBlueprint", Match::Binary) : 0;
            if (blueprint) {
                copy.insert(blueprint - 1, element + "\r\n");
            } else {
                const std::size_t end = InStr(1, copy, "</SimulationTime>", Match::Binary);
                copy.insert(end ? end - 1 + 17 : 16, "\r\n" + element);
            }
        }
    }
    if (showsStartLocation(f.cls) && f.startLocation != was.startLocation) {
        const std::string location = forDocument(f.startLocation);
        if (std::size_t at = InStr(1, copy, "<StartLocation>", Match::Binary); at) {
            PutDetail(copy, at, "English", location, kExact);
            if (!at)
                return missing("English");
        } else {
            std::string block = readTemplate(ctx, "StartLocation.txt", error);
            if (!error.empty())
                return {};
            const std::size_t briefing = InStr(1, copy, "</Briefing>", Match::Binary);
            if (!briefing)
                return missing("</Briefing>");
            auto replace = [&](const std::string& token, const std::string& by) {
                for (std::size_t p = block.find(token); p != std::string::npos; p = block.find(token, p + by.size()))
                    block.replace(p, token.size(), by);
            };
            replace("aaaaaa", location);
            replace("bbbbbb", makeGuidForms().uuid1);
            copy.insert(briefing - 1 + 11, "\r\n" + block);
        }
    }
    if (!doc.requiredAssets.empty()) {
        copy = withRequiredAssets(ctx, copy, doc.requiredAssets, error);
        if (!error.empty())
            return {};
    }
    return copy;
}

SaveResult saveScenario(AppContext& ctx, const ScenarioDocument& doc, const Fields& fields) {
    SaveResult r;
    if (!doc.ok()) {
        r.message = doc.error;
        return r;
    }
    if (doc.refused) {
        r.message = kQuickDriveRefusal;
        return r;
    }
    double delta = 0;
    std::string error;
    std::string properties = applyFields(ctx, doc, fields, delta, error);
    if (!error.empty()) {
        r.message = error;
        return r;
    }
    // The write adds a final line break, once.
    if (properties.empty() || properties.back() != '\n')
        properties += "\r\n";
    std::string scenario = doc.scenarioText;
    if (delta != 0)
        ChangeTimes(scenario, delta);
    // The whole new Scenario.bin exists before anything is written, so a conversion that fails
    // leaves both documents untouched.
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(scenario, bin, doc.scenarioFile.string()); !c) {
        r.message = c.message + " Nothing was written.";
        return r;
    }
    JournalCommand entry(&ctx.journal(), "Save Changes to Scenario");
    WriteOptions propertiesBackup;
    propertiesBackup.backupStem = "ScenarioProperties";
    const WriteResult p = ctx.files().write(doc.propertiesFile, properties, propertiesBackup);
    if (!p) {
        r.message = p.message;
        return r;
    }
    WriteOptions scenarioBackup;
    scenarioBackup.backupStem = "Scenario";
    const WriteResult s = ctx.files().write(doc.scenarioFile, bin, scenarioBackup);
    if (!s) {
        // Both documents go back to what they were: the properties file gets its old text again.
        WriteOptions plain;
        plain.backup = Backup::None;
        const WriteResult back = ctx.files().write(doc.propertiesFile, doc.propertiesText, plain);
        r.message = s.message + (back ? std::string(" ScenarioProperties.xml was put back as it was.")
                                      : " " + back.message + " The old ScenarioProperties.xml is kept as " +
                                            p.backup.string() + ".");
        return r;
    }
    ctx.resolver.invalidate(doc.folder);
    for (const WriteResult* w : {&p, &s})
        if (!w->backup.empty())
            r.backups.push_back(w->backup);
    r.ok = true;
    r.message = kSaved;
    return r;
}

} // namespace velmora::scenarios
