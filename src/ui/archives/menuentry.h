#pragma once
// A named entry of a screen's own menu bar, connected to its command.

#include <QAction>
#include <QMenu>

namespace velmora::ui {

template <typename Receiver, typename Slot>
QAction* addMenuEntry(QMenu* menu, const char* name, const QString& text, Receiver* receiver, Slot slot) {
    QAction* action = menu->addAction(text);
    action->setObjectName(name);
    QObject::connect(action, &QAction::triggered, receiver, slot);
    return action;
}

} // namespace velmora::ui
