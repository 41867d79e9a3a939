#pragma once
// A row of a screen's command buttons, each named as the screen names it and connected to its
// slot, with the last one (Exit) set apart at the right.

#include <QHBoxLayout>
#include <QObject>
#include <QPushButton>

#include <initializer_list>

namespace velmora::ui {

template <typename Screen> struct CommandButton {
    const char* name;
    const char* caption;
    void (Screen::*slot)();
};

template <typename Screen>
QHBoxLayout* commandRow(Screen* screen, std::initializer_list<CommandButton<Screen>> buttons) {
    auto* row = new QHBoxLayout;
    int i = 0;
    for (const CommandButton<Screen>& b : buttons) {
        if (++i == static_cast<int>(buttons.size()))
            row->addStretch(1);
        auto* button = new QPushButton(Screen::tr(b.caption));
        button->setObjectName(b.name);
        QObject::connect(button, &QPushButton::clicked, screen, b.slot);
        row->addWidget(button);
    }
    return row;
}

} // namespace velmora::ui
