#include "desktopui.h"

#include <algorithm>

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QProgressDialog>

namespace velmora::ui {

QString caption(const AppContext& ctx, int entry, const char* design) {
    return ctx.lang.has(entry) ? toQt(ctx.lang.text(entry)) : QString::fromUtf8(design);
}

QString toQt(const std::string& text) {
    // Names in documents are UTF-8 or single-byte; take UTF-8 when it is valid.
    QString s = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    if (!s.contains(QChar::ReplacementCharacter))
        return s;
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

std::string fromQt(const QString& text) { return text.toStdString(); }

QString qtFilter(const std::string& filter) {
    QStringList parts = toQt(filter).split('|');
    QStringList out;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        out << parts[i];
    return out.join(";;");
}

namespace {
QMessageBox::Icon qtIcon(Icon icon) {
    switch (icon) {
    case Icon::Information: return QMessageBox::Information;
    case Icon::Warning: return QMessageBox::Warning;
    case Icon::Critical: return QMessageBox::Critical;
    case Icon::Question: return QMessageBox::Question;
    case Icon::None: break;
    }
    return QMessageBox::NoIcon;
}
} // namespace

QWidget* DesktopUi::owner() const {
    // The screen the user is working in: a dialog opens over it, and the main screen is not
    // raised above a tool screen because a question came from there.
    if (QWidget* active = QApplication::activeWindow(); active && active->isVisible() &&
                                                        !qobject_cast<QProgressDialog*>(active))
        return active;
    return m_parent;
}

void DesktopUi::message(const std::string& text, Icon icon, const std::string& title) {
    QMessageBox box(qtIcon(icon), title.empty() ? QStringLiteral("Velmora") : toQt(title), toQt(text),
                    QMessageBox::Ok, owner());
    box.setObjectName("velmoraMessage");
    box.exec();
}

Answer DesktopUi::ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) {
    QMessageBox::StandardButtons b;
    switch (buttons) {
    case Buttons::Ok: b = QMessageBox::Ok; break;
    case Buttons::OkCancel: b = QMessageBox::Ok | QMessageBox::Cancel; break;
    case Buttons::YesNo: b = QMessageBox::Yes | QMessageBox::No; break;
    case Buttons::YesNoCancel: b = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel; break;
    case Buttons::OkContinue: b = QMessageBox::Ok; break;
    }
    QMessageBox box(qtIcon(icon), title.empty() ? QStringLiteral("Velmora") : toQt(title), toQt(text), b, owner());
    box.setObjectName("velmoraQuestion");
    if (buttons == Buttons::OkContinue)
        box.addButton(QObject::tr("&Continue"), QMessageBox::RejectRole);
    switch (box.exec()) {
    case QMessageBox::Ok: return Answer::Ok;
    case QMessageBox::Yes: return Answer::Yes;
    case QMessageBox::No: return Answer::No;
    default: return Answer::Cancel;
    }
}

std::optional<std::string> DesktopUi::inputText(const std::string& prompt, const std::string& title,
                                                const std::string& initial) {
    bool ok = false;
    QString s = QInputDialog::getText(owner(), toQt(title), toQt(prompt), QLineEdit::Normal, toQt(initial), &ok);
    if (!ok)
        return std::nullopt;
    return fromQt(s);
}

std::optional<std::filesystem::path> DesktopUi::chooseFile(const FileRequest& request) {
    QString start = QString::fromStdString(request.startFolder.string());
    QString name = request.save
                       ? QFileDialog::getSaveFileName(owner(), toQt(request.title), start, qtFilter(request.filter))
                       : QFileDialog::getOpenFileName(owner(), toQt(request.title), start, qtFilter(request.filter));
    if (name.isEmpty())
        return std::nullopt;
    return std::filesystem::path(name.toStdString());
}

std::optional<std::filesystem::path> DesktopUi::chooseFolder(const std::string& title,
                                                             const std::filesystem::path& start) {
    QString name = QFileDialog::getExistingDirectory(owner(), toQt(title), QString::fromStdString(start.string()));
    if (name.isEmpty())
        return std::nullopt;
    return std::filesystem::path(name.toStdString());
}

void DesktopUi::beginProgress(const std::string& label, std::int64_t total) {
    m_cancelled = false;
    m_total = total;
    if (!m_progress) {
        m_progress = new QProgressDialog(owner());
        m_progress->setObjectName("velmoraProgress");
        m_progress->setCancelButtonText(QObject::tr("Abort"));
        m_progress->setMinimumDuration(300);
        m_progress->setAutoReset(false);
        m_progress->setAutoClose(false);
        m_progress->setWindowModality(Qt::WindowModal);
    }
    m_progress->setLabelText(toQt(label));
    // Large counts are scaled so that the dialog's int range is never exceeded.
    m_progress->setRange(0, total > 0 ? 1000 : 0);
    m_progress->setValue(0);
}

void DesktopUi::progress(std::int64_t done, const std::string& label) {
    if (!m_progress)
        return;
    if (!label.empty())
        m_progress->setLabelText(toQt(label));
    if (m_total > 0)
        m_progress->setValue(static_cast<int>(std::min<std::int64_t>(1000, done * 1000 / m_total)));
    QApplication::processEvents();
    if (m_progress->wasCanceled())
        m_cancelled = true;
}

void DesktopUi::endProgress() {
    if (m_progress) {
        // reset() stops the timer that shows the box once its delay has passed: a job shorter
        // than the delay must not leave a box that appears later over the next question. The box
        // goes at once, not at the next turn of the event loop, which a question's own loop
        // would put off.
        m_progress->reset();
        m_progress->hide();
        delete m_progress.data();
    }
}

bool DesktopUi::cancelled() const { return m_cancelled || (m_progress && m_progress->wasCanceled()); }

void DesktopUi::pumpEvents() { QApplication::processEvents(); }

bool DesktopUi::openInViewer(const std::filesystem::path& file) {
    const QUrl url = QUrl::fromLocalFile(QString::fromStdString(std::filesystem::absolute(file).string()));
    return m_openUrl ? m_openUrl(url) : QDesktopServices::openUrl(url);
}

namespace {
constexpr int kTwipsPerPixel = 15;
std::int16_t twips(int pixels) {
    const long t = static_cast<long>(pixels) * kTwipsPerPixel;
    return static_cast<std::int16_t>(std::clamp<long>(t, -32768, 32767));
}
} // namespace

QRect fromTwips(const WindowGeometry& g) {
    return {g.left / kTwipsPerPixel, g.top / kTwipsPerPixel, g.width / kTwipsPerPixel, g.height / kTwipsPerPixel};
}

WindowGeometry toTwips(const QRect& r) { return {twips(r.width()), twips(r.height()), twips(r.top()), twips(r.left())}; }

QColor missingTint(const QPalette& palette) {
    return palette.color(QPalette::Base).lightness() > 128 ? QColor(255, 210, 200) : QColor(110, 40, 30);
}

} // namespace velmora::ui
