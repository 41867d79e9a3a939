#include "backgroundjob.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaObject>
#include <QThread>
#include <QTimer>

namespace velmora::ui {

// Runs `f` on the GUI thread and hands back its result; the worker waits meanwhile.
template <typename F> auto WorkerUi::onGui(F&& f) {
    using Result = decltype(f());
    if (QThread::currentThread() == QCoreApplication::instance()->thread())
        return f();
    if constexpr (std::is_void_v<Result>) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), std::forward<F>(f), Qt::BlockingQueuedConnection);
    } else {
        Result result{};
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [&] { result = f(); }, Qt::BlockingQueuedConnection);
        return result;
    }
}

void WorkerUi::message(const std::string& text, Icon icon, const std::string& title) {
    onGui([&] { m_gui.message(text, icon, title); });
}

Answer WorkerUi::ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) {
    return onGui([&] { return m_gui.ask(text, buttons, icon, title); });
}

std::optional<std::string> WorkerUi::inputText(const std::string& prompt, const std::string& title,
                                               const std::string& initial) {
    return onGui([&] { return m_gui.inputText(prompt, title, initial); });
}

std::optional<std::filesystem::path> WorkerUi::chooseFile(const FileRequest& request) {
    return onGui([&] { return m_gui.chooseFile(request); });
}

std::optional<std::filesystem::path> WorkerUi::chooseFolder(const std::string& title, const std::filesystem::path& start) {
    return onGui([&] { return m_gui.chooseFolder(title, start); });
}

bool WorkerUi::openInViewer(const std::filesystem::path& file) {
    return onGui([&] { return m_gui.openInViewer(file); });
}

void WorkerUi::beginProgress(const std::string& label, std::int64_t total) {
    std::lock_guard lock(m_mutex);
    m_report.label = label;
    m_report.done = 0;
    m_report.total = total;
    ++m_report.serial;
}

void WorkerUi::progress(std::int64_t done, const std::string& label) {
    std::lock_guard lock(m_mutex);
    m_report.done = done;
    if (!label.empty())
        m_report.label = label;
}

WorkerUi::Report WorkerUi::report() const {
    std::lock_guard lock(m_mutex);
    return m_report;
}

bool runInBackground(AppContext& ctx, const std::string& label, const std::function<void(UserInterface&)>& job) {
    UserInterface& gui = ctx.ui();
    WorkerUi worker(gui);
    ctx.setUserInterface(worker);
    gui.beginProgress(label, 0);

    QEventLoop loop;
    QThread* thread = QThread::create([&] { job(worker); });
    QObject::connect(thread, &QThread::finished, &loop, &QEventLoop::quit);
    // The box shows what the job last said, a few times a second; Abort reaches the job.
    QTimer poll;
    int serial = 0;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        const WorkerUi::Report r = worker.report();
        if (r.serial != serial) {
            serial = r.serial;
            gui.beginProgress(r.label.empty() ? label : r.label, r.total);
        }
        gui.progress(r.done, r.label);
        if (gui.cancelled())
            worker.cancel();
    });
    poll.start(50);
    thread->start();
    if (!thread->isFinished())
        loop.exec();
    poll.stop();
    thread->wait();
    delete thread;
    gui.endProgress();
    ctx.setUserInterface(gui);
    return !worker.cancelled();
}

} // namespace velmora::ui
