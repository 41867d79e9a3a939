#pragma once
// Long work off the GUI thread. The job runs on a worker thread and talks through a
// UserInterface of its own: its progress reaches the screen's progress box, its messages and
// questions are asked on the GUI thread (the worker waits for the answer), and Abort in the box
// cancels it. The screen stays alive all the while; the call returns when the job has ended.

#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"

#include <atomic>
#include <functional>
#include <mutex>

namespace velmora::ui {

// The interface a background job is given. Called from the GUI thread it passes straight on.
class WorkerUi : public UserInterface {
public:
    explicit WorkerUi(UserInterface& gui) : m_gui(gui) {}

    void message(const std::string& text, Icon icon, const std::string& title) override;
    Answer ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) override;
    std::optional<std::string> inputText(const std::string& prompt, const std::string& title,
                                         const std::string& initial) override;
    std::optional<std::filesystem::path> chooseFile(const FileRequest& request) override;
    std::optional<std::filesystem::path> chooseFolder(const std::string& title,
                                                      const std::filesystem::path& start) override;
    bool openInViewer(const std::filesystem::path& file) override;
    void beginProgress(const std::string& label, std::int64_t total) override;
    void progress(std::int64_t done, const std::string& label) override;
    void endProgress() override {}
    bool cancelled() const override { return m_cancelled; }

    void cancel() { m_cancelled = true; }
    // What the job last said of its progress, for the GUI thread to show.
    struct Report {
        std::string label;
        std::int64_t done = 0, total = 0;
        int serial = 0; // counts beginProgress calls, so a new stage resets the box
    };
    Report report() const;

private:
    template <typename F> auto onGui(F&& f);
    UserInterface& m_gui;
    std::atomic<bool> m_cancelled{false};
    mutable std::mutex m_mutex;
    Report m_report;
};

// Runs `job` on a worker thread with a progress box labelled `label`. While it runs, the
// context's interface is the worker's, so logic that reports through ctx.ui() reaches the box.
// Returns false when the user aborted.
bool runInBackground(AppContext& ctx, const std::string& label, const std::function<void(UserInterface&)>& job);

} // namespace velmora::ui
