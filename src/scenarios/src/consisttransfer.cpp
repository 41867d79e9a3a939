// Copying a consist from one scenario's text into another's, and writing the target.

#include "velmora/scenarios/consisttransfer.h"

#include "velmora/scenarios/scenario.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

namespace velmora::scenarios {

const char* const kConsistTransferred = "The consist has been copied; the scenario's Scenario.bin has been updated.";

namespace {

constexpr std::string_view kOpen = "<cConsist ";
constexpr std::string_view kClose = "</cConsist>";

std::string noConsist(const std::string& name, std::string_view text, int occurrence) {
    const int count = consistCount(text);
    return name + " holds " + std::to_string(count) + (count == 1 ? " consist" : " consists") +
           "; there is no consist [" + std::to_string(occurrence) + "].";
}

} // namespace

ListedScenario readScenarioText(AppContext& ctx, const fs::path& folder) {
    ListedScenario s;
    s.folder = folder;
    const fs::path file = ctx.resolver.resolve(folder, "Scenario.bin").value_or(folder / "Scenario.bin");
    if (!FileExists(file)) {
        s.error = file.string() + ": there is no such file.";
        return s;
    }
    if (const ConvertResult c = binToXmlText(file, s.text); !c) {
        s.error = c.message.find(file.string()) == std::string::npos ? file.string() + ": " + c.message : c.message;
        s.text.clear();
    }
    return s;
}

int consistCount(std::string_view text) {
    int n = 0;
    for (std::size_t at = text.find(kOpen); at != std::string_view::npos; at = text.find(kOpen, at + 1))
        ++n;
    return n;
}

std::optional<std::pair<std::size_t, std::size_t>> consistOccurrence(std::string_view text, int occurrence) {
    if (occurrence < 1)
        return std::nullopt;
    std::size_t at = text.find(kOpen);
    for (int n = 1; n < occurrence && at != std::string_view::npos; ++n)
        at = text.find(kOpen, at + 1);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::size_t close = text.find(kClose, at);
    if (close == std::string_view::npos)
        return std::nullopt;
    // A consist that is not closed before the next one opens is no consist to copy.
    const std::size_t next = text.find(kOpen, at + 1);
    if (next != std::string_view::npos && next < close)
        return std::nullopt;
    return std::make_pair(at, close + kClose.size());
}

std::string ConsistSummary::line() const {
    std::string out = "[" + std::to_string(occurrence) + "] ";
    if (!readable)
        return out + "(a consist that cannot be read)";
    out += service + ", " + std::to_string(vehicles) + (vehicles == 1 ? " vehicle" : " vehicles");
    return first.empty() ? out : out + ", first: " + first;
}

std::vector<ConsistSummary> consistSummaries(std::string_view text, const std::string& language) {
    std::vector<ConsistSummary> out;
    const int count = consistCount(text);
    for (int n = 1; n <= count; ++n) {
        ConsistSummary c;
        c.occurrence = n;
        if (const auto span = consistOccurrence(text, n)) {
            // The consist alone, read as the editor reads a scenario: its name and its vehicles.
            std::string error;
            const auto read = readConsists(std::string(text.substr(span->first, span->second - span->first)), {}, error,
                                           nullptr, language);
            if (!read.empty()) {
                c.readable = true;
                c.service = read.front().serviceName;
                c.vehicles = read.front().vehicles.size();
                if (c.vehicles)
                    c.first = read.front().vehicles.front().name;
            }
        }
        out.push_back(std::move(c));
    }
    return out;
}

std::vector<std::string> consistLines(std::string_view text, const std::string& language) {
    std::vector<std::string> lines;
    for (const auto& c : consistSummaries(text, language))
        lines.push_back(c.line());
    return lines;
}

std::optional<int> occurrenceIn(std::string_view line) {
    const std::size_t open = line.find('[');
    if (open == std::string_view::npos)
        return std::nullopt;
    const std::size_t close = line.find(']', open);
    if (close == std::string_view::npos)
        return std::nullopt;
    std::string_view digits = line.substr(open + 1, close - open - 1);
    while (!digits.empty() && digits.front() == ' ')
        digits.remove_prefix(1);
    while (!digits.empty() && digits.back() == ' ')
        digits.remove_suffix(1);
    if (digits.empty() || digits.size() > 6 || digits.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    return std::stoi(std::string(digits));
}

std::string withConsistCopied(std::string_view source, int from, std::string_view target, int after,
                              const std::string& sourceName, const std::string& targetName, std::string& error) {
    const auto cut = consistOccurrence(source, from);
    if (!cut) {
        error = noConsist(sourceName, source, from);
        return {};
    }
    const auto behind = consistOccurrence(target, after);
    if (!behind) {
        error = noConsist(targetName, target, after);
        return {};
    }
    std::string out;
    out.reserve(target.size() + cut->second - cut->first + 2);
    out.append(target.substr(0, behind->second));
    // The copy stands on a line of its own, indented as the consist it follows.
    const std::size_t lineStart = target.rfind('\n', behind->first);
    const std::size_t indentFrom = lineStart == std::string_view::npos ? 0 : lineStart + 1;
    std::string_view indent = target.substr(indentFrom, behind->first - indentFrom);
    if (indent.find_first_not_of(" \t") != std::string_view::npos)
        indent = {};
    out.append(target.find("\r\n") != std::string_view::npos ? "\r\n" : "\n");
    out.append(indent);
    out.append(source.substr(cut->first, cut->second - cut->first));
    out.append(target.substr(behind->second));
    return out;
}

CommandResult transferConsist(AppContext& ctx, const ListedScenario& source, int from, ListedScenario& target, int after) {
    CommandResult r;
    const fs::path file = ctx.resolver.resolve(target.folder, "Scenario.bin").value_or(target.scenarioFile());
    if (!source.ok() || !target.ok()) {
        r.message = !source.ok() ? source.error : target.error;
        return r;
    }
    std::string error;
    const std::string changed = withConsistCopied(source.text, from, target.text, after, source.scenarioFile().string(),
                                                  file.string(), error);
    if (!error.empty()) {
        r.message = error + " Nothing was written.";
        return r;
    }
    // The file must still be the one listed: a consist number read from an older list could
    // name another consist, and a change made since would be lost.
    const ListedScenario now = readScenarioText(ctx, target.folder);
    if (!now.ok() || now.text != target.text) {
        r.message = now.ok() ? file.string() + " has changed since it was listed; list its consists again. Nothing was written."
                             : now.error + " Nothing was written.";
        return r;
    }
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(changed, bin, file.string()); !c) {
        r.message = c.message + " Nothing was written.";
        return r;
    }
    JournalCommand entry(&ctx.journal(), "Transfer Selected Consist");
    WriteOptions backup;
    backup.backupStem = "Scenario";
    const WriteResult w = ctx.files().write(file, bin, backup);
    if (!w) {
        r.message = w.message;
        return r;
    }
    ctx.resolver.invalidate(target.folder);
    target.text = changed;
    r.ok = true;
    r.written.push_back(w.target);
    r.message = std::string(kConsistTransferred) +
                (w.backup.empty() ? std::string() : " The old file is kept as " + w.backup.filename().string() + ".");
    return r;
}

} // namespace velmora::scenarios
