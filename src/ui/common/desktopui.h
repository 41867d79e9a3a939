#pragma once
// The desktop front end of the logic's user-interface channel: message boxes, file dialogs
// and a progress dialog with an Abort button.

#include "velmora/core/appcontext.h"
#include "velmora/core/settings.h"
#include "velmora/core/userinterface.h"

#include <QColor>
#include <QPalette>
#include <QPointer>
#include <QRect>
#include <QUrl>

#include <functional>

class QProgressDialog;
class QWidget;

namespace velmora::ui {

class DesktopUi : public UserInterface {
public:
    explicit DesktopUi(QWidget* parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget* parent) { m_parent = parent; }

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
    void pumpEvents() override;
    // The file as a file URL, handed to the desktop (QDesktopServices::openUrl by default).
    bool openInViewer(const std::filesystem::path& file) override;
    // Tests put their own opener here so that no browser starts.
    void setUrlOpener(std::function<bool(const QUrl&)> opener) { m_openUrl = std::move(opener); }

    // The window a dialog opens over: the active screen, else the one given at construction.
    QWidget* owner() const;

private:
    QPointer<QWidget> m_parent;
    QPointer<QProgressDialog> m_progress;
    std::int64_t m_total = 0;
    bool m_cancelled = false;
    std::function<bool(const QUrl&)> m_openUrl;
};

// The text of language entry `entry`, or `design` when the table has no such entry: every screen
// takes its captions and messages through here, when it is opened.
QString caption(const AppContext& ctx, int entry, const char* design);

// The background of a line or row that names a missing file: warm, and light or dark to suit the
// palette so that its text stays readable. The word "missing" goes with it, never colour alone.
QColor missingTint(const QPalette& palette);

// Text of the program (bytes, Windows-1252 where not UTF-8) for Qt and back.
QString toQt(const std::string& text);
std::string fromQt(const QString& text);
// "Label (*.a)|*.a|Other (*.b)|*.b" as Qt's ";;" filter list.
QString qtFilter(const std::string& filter);

// Window places as the settings keep them, in twips (15 to a pixel), and back.
QRect fromTwips(const WindowGeometry& g);
WindowGeometry toTwips(const QRect& r);

} // namespace velmora::ui
