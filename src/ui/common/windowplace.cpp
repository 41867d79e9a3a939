#include "windowplace.h"

#include "desktopui.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace velmora::ui {

namespace {

// Whether enough of the rectangle is on some screen for the user to reach its title bar.
bool onAScreen(const QRect& r) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect shared = screen->availableGeometry().intersected(r);
        if (shared.width() >= 100 && shared.height() >= 50)
            return true;
    }
    return false;
}

class PlaceKeeper : public QObject {
public:
    PlaceKeeper(AppContext& ctx, QWidget* window, QString screen, WindowGeometry* twips)
        : QObject(window), m_ctx(ctx), m_window(window), m_screen(std::move(screen)), m_twips(twips) {
        window->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        // A screen shown inside another (a tab of a results window) has no place of its own.
        if (watched == m_window && event->type() == QEvent::Hide && m_window->isWindow())
            keep();
        return false;
    }

private:
    void keep() {
        const QRect r = m_window->normalGeometry();
        if (r.width() <= 0 || r.height() <= 0)
            return;
        m_ctx.desktop().setPlace(m_screen.toStdString(),
                                 {r.left(), r.top(), r.width(), r.height(), m_window->isMaximized()});
        if (m_twips)
            *m_twips = toTwips(r);
        if (const std::string why = m_ctx.desktop().save(m_ctx.files()); !why.empty())
            m_ctx.log().log(m_screen.toStdString(), "rememberPlace", 0, why);
    }

    AppContext& m_ctx;
    QWidget* m_window;
    QString m_screen;
    WindowGeometry* m_twips;
};

} // namespace

void rememberPlace(AppContext& ctx, QWidget* window, const QString& screen, QSize firstSize, WindowGeometry* twips) {
    std::optional<WindowPlace> place = ctx.desktop().place(screen.toStdString());
    // Where the settings file keeps the place, it is the one that counts; the desktop state
    // adds whether the screen was maximised.
    if (twips && twips->width > 0 && twips->height > 0) {
        const QRect r = fromTwips(*twips);
        place = WindowPlace{r.left(), r.top(), r.width(), r.height(), place && place->maximised};
    }
    const QRect wanted = place ? QRect(place->left, place->top, place->width, place->height) : QRect();
    if (place && onAScreen(wanted)) {
        window->setGeometry(wanted);
        if (place->maximised)
            window->setWindowState(window->windowState() | Qt::WindowMaximized);
    } else {
        window->resize(firstSize);
    }
    new PlaceKeeper(ctx, window, screen, twips);
}

} // namespace velmora::ui
