#include "mnemonics.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace velmora::ui {

namespace {

// The letter after a lone '&', or a null character when the caption has none. An '&' before a
// space or a sign is the word "and" written short, not a mnemonic.
QChar existingMnemonic(const QString& caption) {
    for (qsizetype i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != QLatin1Char('&'))
            continue;
        if (caption[i + 1] == QLatin1Char('&')) {
            ++i; // "&&" is an ampersand shown as such
            continue;
        }
        if (caption[i + 1].isLetterOrNumber())
            return caption[i + 1].toLower();
    }
    return {};
}

// The caption with every '&' that is not a mnemonic written as "&&", so that Qt shows it.
QString escapedAmpersands(const QString& caption) {
    QString out;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        out += caption[i];
        if (caption[i] != QLatin1Char('&'))
            continue;
        if (i + 1 < caption.size() && caption[i + 1] == QLatin1Char('&'))
            out += caption[++i];
        else
            out += QLatin1Char('&');
    }
    return out;
}

void assignActions(const QList<QAction*>& actions) {
    QString taken;
    // Captions that bring their own mnemonic keep it; the others choose around them.
    for (const QAction* a : actions)
        if (const QChar c = existingMnemonic(a->text()); !c.isNull())
            taken += c;
    for (QAction* a : actions) {
        if (a->isSeparator() || a->text().isEmpty())
            continue;
        a->setText(withMnemonic(a->text(), taken));
        if (QMenu* sub = a->menu())
            assignMnemonics(sub);
    }
}

} // namespace

QString withMnemonic(const QString& caption, QString& taken) {
    if (!existingMnemonic(caption).isNull())
        return caption;
    const QString out = escapedAmpersands(caption);
    auto usable = [&](qsizetype i) {
        return out[i].isLetterOrNumber() && !taken.contains(out[i].toLower()) &&
               (i == 0 || out[i - 1] != QLatin1Char('&'));
    };
    qsizetype chosen = -1;
    // A word's first letter first, then any letter or digit.
    for (qsizetype i = 0; i < out.size() && chosen < 0; ++i)
        if ((i == 0 || !out[i - 1].isLetterOrNumber()) && usable(i))
            chosen = i;
    for (qsizetype i = 0; i < out.size() && chosen < 0; ++i)
        if (usable(i))
            chosen = i;
    if (chosen < 0)
        return out;
    taken += out[chosen].toLower();
    return out.left(chosen) + QLatin1Char('&') + out.mid(chosen);
}

void assignMnemonics(QMenuBar* bar) { assignActions(bar->actions()); }

void assignMnemonics(QMenu* menu) { assignActions(menu->actions()); }

} // namespace velmora::ui
