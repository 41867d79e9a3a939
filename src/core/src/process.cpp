#include "velmora/core/process.h"

#include "velmora/core/userinterface.h"

#include <QProcess>
#include <QStringList>

namespace velmora {

namespace {
QStringList toQt(const std::vector<std::string>& args) {
    QStringList out;
    for (const auto& a : args)
        out << QString::fromStdString(a);
    return out;
}
} // namespace

ExecResult ExecCmd(const std::string& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& workingFolder, UserInterface* ui, WindowStyle style) {
    (void)style; // hidden or not is a matter for the desktop; our children have no console to hide
    ExecResult result;
    QProcess process;
    if (!workingFolder.empty())
        process.setWorkingDirectory(QString::fromStdString(workingFolder.string()));
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QString::fromStdString(program), toQt(arguments));
    if (!process.waitForStarted(10000))
        return result;
    result.started = true;
    result.processId = process.processId();
    // Poll every 50 ms, let the front end breathe, and stop the child when the user aborts.
    while (!process.waitForFinished(50)) {
        if (process.state() == QProcess::NotRunning)
            break;
        if (ui) {
            ui->pumpEvents();
            if (ui->cancelled()) {
                process.kill();
                process.waitForFinished(2000);
                result.cancelled = true;
                return result;
            }
        }
    }
    result.exitCode = process.exitCode();
    return result;
}

bool startDetached(const std::string& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& workingFolder) {
    return QProcess::startDetached(QString::fromStdString(program), toQt(arguments),
                                   QString::fromStdString(workingFolder.string()));
}

} // namespace velmora
