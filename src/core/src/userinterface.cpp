#include "velmora/core/userinterface.h"

#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>

namespace velmora {

// ---- ScriptedUi -------------------------------------------------------------------------

void ScriptedUi::record(Prompt p) {
    if (onPrompt)
        onPrompt(p);
    prompts.push_back(std::move(p));
}

void ScriptedUi::message(const std::string& text, Icon icon, const std::string& title) {
    record({Prompt::Kind::Message, text, title, icon});
}

Answer ScriptedUi::ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) {
    record({Prompt::Kind::Question, text, title, icon});
    if (m_nextAnswer < m_answers.size())
        return m_answers[m_nextAnswer++];
    return (buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel) ? Answer::No : Answer::Cancel;
}

std::optional<std::string> ScriptedUi::inputText(const std::string& prompt, const std::string& title,
                                                 const std::string&) {
    record({Prompt::Kind::Text, prompt, title, Icon::None});
    if (m_nextText < m_texts.size())
        return m_texts[m_nextText++];
    return std::nullopt;
}

std::optional<std::filesystem::path> ScriptedUi::chooseFile(const FileRequest& request) {
    record({Prompt::Kind::File, request.title, request.filter, Icon::None});
    if (m_nextPath < m_paths.size())
        return m_paths[m_nextPath++];
    return std::nullopt;
}

std::optional<std::filesystem::path> ScriptedUi::chooseFolder(const std::string& title,
                                                              const std::filesystem::path&) {
    record({Prompt::Kind::Folder, title, {}, Icon::None});
    if (m_nextPath < m_paths.size())
        return m_paths[m_nextPath++];
    return std::nullopt;
}

void ScriptedUi::beginProgress(const std::string& label, std::int64_t total) {
    progressLabels.push_back(label);
    progressTotal = total;
    lastProgress = 0;
}

void ScriptedUi::progress(std::int64_t done, const std::string&) {
    lastProgress = done;
    if (m_cancelAfter >= 0 && done >= m_cancelAfter)
        m_cancelled = true;
}

// ---- ConsoleUi --------------------------------------------------------------------------

namespace {
std::atomic<bool> g_interrupted{false};
extern "C" void onInterrupt(int) { g_interrupted = true; }

double nowSeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}
} // namespace

ConsoleUi::ConsoleUi(bool yesToAll, std::vector<std::string> answers, std::ostream& out, std::ostream& err,
                     bool quiet)
    : m_yes(yesToAll), m_answers(std::move(answers)), m_out(out), m_err(err), m_quiet(quiet) {
    // Ctrl+C is the command line's Abort button: long work stops between steps.
    std::signal(SIGINT, onInterrupt);
}

std::optional<std::string> ConsoleUi::nextAnswer() {
    if (m_next < m_answers.size())
        return m_answers[m_next++];
    return std::nullopt;
}

void ConsoleUi::message(const std::string& text, Icon icon, const std::string& title) {
    std::ostream& out = (icon == Icon::Warning || icon == Icon::Critical) ? m_err : m_out;
    if (m_quiet && &out == &m_out)
        return;
    // Messages carry names from the documents, in Windows-1252 when repaired: the console is UTF-8.
    if (!title.empty())
        out << utf8FromDocument(title) << ": ";
    out << utf8FromDocument(text) << '\n';
}

Answer ConsoleUi::ask(const std::string& text, Buttons buttons, Icon, const std::string&) {
    const bool yesNo = buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel;
    std::optional<std::string> a = nextAnswer();
    if (!a && m_yes)
        a = yesNo ? "yes" : "ok";
    if (a) {
        std::string v = toLowerAscii(*a);
        if (!m_quiet)
            m_out << utf8FromDocument(text) << " -> " << v << '\n';
        if (v == "yes" || v == "y")
            return yesNo ? Answer::Yes : Answer::Ok;
        if (v == "ok")
            return yesNo ? Answer::Yes : Answer::Ok;
        if (v == "no" || v == "n")
            return Answer::No;
        if (v == "cancel")
            return Answer::Cancel;
    }
    // Nobody to ask: never guess, take the answer that changes nothing.
    m_unanswered.push_back(text);
    return yesNo ? Answer::No : Answer::Cancel;
}

std::optional<std::string> ConsoleUi::inputText(const std::string& prompt, const std::string&,
                                                const std::string&) {
    if (auto a = nextAnswer())
        return a;
    m_unanswered.push_back(prompt);
    return std::nullopt;
}

std::optional<std::filesystem::path> ConsoleUi::chooseFile(const FileRequest& request) {
    if (auto a = nextAnswer())
        return std::filesystem::path(*a);
    m_unanswered.push_back(request.title);
    return std::nullopt;
}

std::optional<std::filesystem::path> ConsoleUi::chooseFolder(const std::string& title,
                                                             const std::filesystem::path&) {
    if (auto a = nextAnswer())
        return std::filesystem::path(*a);
    m_unanswered.push_back(title);
    return std::nullopt;
}

void ConsoleUi::beginProgress(const std::string& label, std::int64_t total) {
    m_progressLabel = label;
    m_progressTotal = total;
    m_lastShown = -1;
    m_lastTime = 0;
}

void ConsoleUi::progress(std::int64_t done, const std::string& label) {
    if (m_quiet)
        return;
    // A few lines a second at most.
    double t = nowSeconds();
    if (t - m_lastTime < 0.5 && done != m_progressTotal)
        return;
    m_lastTime = t;
    m_lastShown = done;
    m_err << utf8FromDocument(label.empty() ? m_progressLabel : label) << ": " << done;
    if (m_progressTotal > 0)
        m_err << '/' << m_progressTotal;
    m_err << '\n';
}

void ConsoleUi::endProgress() { m_progressTotal = 0; }

bool ConsoleUi::cancelled() const { return g_interrupted.load(); }

} // namespace velmora
