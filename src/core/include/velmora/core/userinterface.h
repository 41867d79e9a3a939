#pragma once
// The one channel through which logic talks to the person using the program:
// messages, questions, choices and progress with cancellation. The desktop program
// shows dialogs, the command line prints and answers from flags, tests script it.

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

enum class Icon { None, Information, Warning, Critical, Question };

// OkContinue: OK ends, Continue (answered as Cancel) goes on, as in a search that stops at a hit.
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel, OkContinue };

enum class Answer { Ok, Cancel, Yes, No };

// A file dialog's request; `filter` is in the "Label (*.ext)|*.ext" form.
struct FileRequest {
    std::string title;
    std::filesystem::path startFolder;
    std::string filter;
    bool save = false;
};

class UserInterface {
public:
    virtual ~UserInterface() = default;

    virtual void message(const std::string& text, Icon icon = Icon::Information,
                         const std::string& title = {}) = 0;
    // Returns Cancel or No when nobody can answer (e.g. an unattended command line).
    virtual Answer ask(const std::string& text, Buttons buttons, Icon icon = Icon::Question,
                       const std::string& title = {}) = 0;
    virtual std::optional<std::string> inputText(const std::string& prompt, const std::string& title,
                                                 const std::string& initial = {}) = 0;
    virtual std::optional<std::filesystem::path> chooseFile(const FileRequest& request) = 0;
    virtual std::optional<std::filesystem::path> chooseFolder(const std::string& title,
                                                              const std::filesystem::path& start) = 0;

    // Progress of long work: begin with a label and a step count, report steps, end.
    // `cancelled()` is polled by the work between steps (the Abort button).
    virtual void beginProgress(const std::string& label, std::int64_t total) = 0;
    virtual void progress(std::int64_t done, const std::string& label = {}) = 0;
    virtual void endProgress() = 0;
    virtual bool cancelled() const = 0;

    // Lets a front end keep its window alive while logic waits on something.
    virtual void pumpEvents() {}

    // Shows a file (the user guide) in the desktop's own viewer for its type; false when
    // nothing could show it. A front end without a desktop shows nothing.
    virtual bool openInViewer(const std::filesystem::path& /*file*/) { return false; }
};

// Passes everything on to another interface, and counts as cancelled also when a screen's own
// Abort button has been pressed (`abort()`), so that long work stops by either.
class AbortableUi : public UserInterface {
public:
    explicit AbortableUi(UserInterface& inner) : m_inner(inner) {}
    void abort() { m_aborted = true; }
    void reset() { m_aborted = false; }

    void message(const std::string& text, Icon icon, const std::string& title) override {
        m_inner.message(text, icon, title);
    }
    Answer ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) override {
        return m_inner.ask(text, buttons, icon, title);
    }
    std::optional<std::string> inputText(const std::string& prompt, const std::string& title,
                                         const std::string& initial) override {
        return m_inner.inputText(prompt, title, initial);
    }
    std::optional<std::filesystem::path> chooseFile(const FileRequest& request) override {
        return m_inner.chooseFile(request);
    }
    std::optional<std::filesystem::path> chooseFolder(const std::string& title,
                                                      const std::filesystem::path& start) override {
        return m_inner.chooseFolder(title, start);
    }
    void beginProgress(const std::string& label, std::int64_t total) override { m_inner.beginProgress(label, total); }
    void progress(std::int64_t done, const std::string& label) override { m_inner.progress(done, label); }
    void endProgress() override { m_inner.endProgress(); }
    bool cancelled() const override { return m_aborted || m_inner.cancelled(); }
    void pumpEvents() override { m_inner.pumpEvents(); }
    bool openInViewer(const std::filesystem::path& file) override { return m_inner.openInViewer(file); }

private:
    UserInterface& m_inner;
    bool m_aborted = false;
};

// Records every prompt and answers from a script; the test double for the interface.
class ScriptedUi : public UserInterface {
public:
    struct Prompt {
        enum class Kind { Message, Question, Text, File, Folder } kind;
        std::string text;
        std::string title;
        Icon icon = Icon::None;
    };

    // Answers are consumed in order; a question with no scripted answer gets Cancel/No.
    void pushAnswer(Answer a) { m_answers.push_back(a); }
    void pushText(std::string t) { m_texts.push_back(std::move(t)); }
    void pushPath(std::filesystem::path p) { m_paths.push_back(std::move(p)); }
    void cancelAfter(std::int64_t steps) { m_cancelAfter = steps; }
    // Called whenever a prompt is recorded, before it is answered (lets a test look at disk state).
    std::vector<Prompt> prompts;
    std::vector<std::string> progressLabels;
    std::function<void(const Prompt&)> onPrompt;

    void message(const std::string& text, Icon icon, const std::string& title) override;
    Answer ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) override;
    std::optional<std::string> inputText(const std::string& prompt, const std::string& title,
                                         const std::string& initial) override;
    std::optional<std::filesystem::path> chooseFile(const FileRequest& request) override;
    std::optional<std::filesystem::path> chooseFolder(const std::string& title,
                                                      const std::filesystem::path& start) override;
    void beginProgress(const std::string& label, std::int64_t total) override;
    void progress(std::int64_t done, const std::string& label) override;
    void endProgress() override {}
    bool cancelled() const override { return m_cancelled; }
    // Records the file instead of opening it; `viewerWorks` says what the desktop answers.
    bool openInViewer(const std::filesystem::path& file) override {
        opened.push_back(file);
        return viewerWorks;
    }
    std::vector<std::filesystem::path> opened;
    bool viewerWorks = true;

    std::int64_t lastProgress = 0;
    std::int64_t progressTotal = 0;

private:
    void record(Prompt p);
    std::vector<Answer> m_answers;
    std::vector<std::string> m_texts;
    std::vector<std::filesystem::path> m_paths;
    std::size_t m_nextAnswer = 0, m_nextText = 0, m_nextPath = 0;
    std::int64_t m_cancelAfter = -1;
    bool m_cancelled = false;
};

// Command-line front end: messages to the terminal, answers from --yes and --answer.
class ConsoleUi : public UserInterface {
public:
    ConsoleUi(bool yesToAll, std::vector<std::string> answers, std::ostream& out, std::ostream& err,
              bool quiet = false);

    void message(const std::string& text, Icon icon, const std::string& title) override;
    Answer ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) override;
    std::optional<std::string> inputText(const std::string& prompt, const std::string& title,
                                         const std::string& initial) override;
    std::optional<std::filesystem::path> chooseFile(const FileRequest& request) override;
    std::optional<std::filesystem::path> chooseFolder(const std::string& title,
                                                      const std::filesystem::path& start) override;
    void beginProgress(const std::string& label, std::int64_t total) override;
    void progress(std::int64_t done, const std::string& label) override;
    void endProgress() override;
    bool cancelled() const override;

    // True when some question found no answer and was taken as Cancel/No.
    bool unanswered() const { return !m_unanswered.empty(); }
    const std::vector<std::string>& unansweredQuestions() const { return m_unanswered; }

private:
    std::optional<std::string> nextAnswer();
    bool m_yes;
    std::vector<std::string> m_answers;
    std::ostream& m_out;
    std::ostream& m_err;
    std::size_t m_next = 0;
    bool m_quiet;
    std::vector<std::string> m_unanswered;
    std::string m_progressLabel;
    std::int64_t m_progressTotal = 0;
    std::int64_t m_lastShown = -1;
    double m_lastTime = 0;
};

} // namespace velmora
