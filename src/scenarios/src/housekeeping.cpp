// Revert to Default and Make Standard over the selected scenarios.

#include "velmora/scenarios/housekeeping.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

namespace velmora::scenarios {

namespace {

fs::path fileIn(AppContext& ctx, const fs::path& folder, const char* name) {
    return ctx.resolver.resolve(folder, name).value_or(folder / name);
}

bool isFile(const fs::path& p) {
    std::error_code ec;
    return fs::is_regular_file(p, ec);
}

} // namespace

CommandResult revertToDefault(AppContext& ctx, const std::vector<fs::path>& scenarioFolders) {
    CommandResult r;
    JournalCommand entry(&ctx.journal(), "Revert to Default");
    int reverted = 0, left = 0;
    for (const fs::path& folder : scenarioFolders) {
        const fs::path bin = fileIn(ctx, folder, "Scenario.bin");
        const fs::path bak = fileIn(ctx, folder, "Scenario.bak");
        if (!isFile(bin) || !isFile(bak)) {
            ++left;
            continue;
        }
        const std::string bytes = ReadTextFile(bak);
        if (bytes.empty()) {
            r.message = bak.string() + ": is empty or cannot be read; " + std::to_string(reverted) +
                        " reverted before it, nothing more.";
            return r;
        }
        WriteOptions options;
        options.backupStem = "Scenario";
        const WriteResult w = ctx.files().write(bin, bytes, options);
        if (!w) {
            r.message = w.message;
            return r;
        }
        ctx.resolver.invalidate(folder);
        r.written.push_back(bin);
        ++reverted;
    }
    r.ok = true;
    r.message =
        std::to_string(reverted) +
        (reverted == 1 ? " scenario was put back to its" : " scenarios were put back to their") +
        " first saved state" +
        (left ? "; " + std::to_string(left) + " had no Scenario.bak and were left as they are." : ".");
    return r;
}

CommandResult makeStandard(AppContext& ctx, const std::vector<fs::path>& scenarioFolders,
                           MakeStandardFrom from) {
    CommandResult r;
    const char* const other =
        from == MakeStandardFrom::Career ? "eTimetableScenarioClass" : "eCareerScenarioClass";
    JournalCommand entry(&ctx.journal(), from == MakeStandardFrom::Career
                                             ? "Make Selected Career Scenarios 'Standard'"
                                             : "Make Selected Timetable Scenarios 'Standard'");
    int changed = 0;
    for (const fs::path& folder : scenarioFolders) {
        const fs::path file = fileIn(ctx, folder, "ScenarioProperties.xml");
        std::string text = isFile(file) ? ReadTextFile(file) : std::string();
        if (text.empty()) {
            r.message =
                file.string() + ": cannot be read; " + std::to_string(changed) + " changed before it.";
            return r;
        }
        for (const char* kept :
             {"eStandardScenarioClass", "eTemplateScenarioClass", "eFreeRoamScenarioClass", other})
            if (text.find(kept) != std::string::npos) {
                r.ok = true;
                r.message = file.string() + " holds " + kept + ": stopped there, " + std::to_string(changed) +
                            (changed == 1 ? " scenario" : " scenarios") + " made Standard before it.";
                return r;
            }
        std::size_t pos = 1;
        PutDetail(text, pos, "ScenarioClass", "eStandardScenarioClass", ScanSettings{Match::Binary});
        if (!pos) {
            r.message = file.string() + ": there is no ScenarioClass to change; " + std::to_string(changed) +
                        " changed before it.";
            return r;
        }
        WriteOptions options;
        options.backupStem = "ScenarioProperties";
        const WriteResult w = ctx.files().write(file, text, options);
        if (!w) {
            r.message = w.message;
            return r;
        }
        ctx.resolver.invalidate(folder);
        r.written.push_back(file);
        ++changed;
    }
    r.ok = true;
    r.message =
        std::to_string(changed) + (changed == 1 ? " scenario was" : " scenarios were") + " made Standard.";
    return r;
}

} // namespace velmora::scenarios
