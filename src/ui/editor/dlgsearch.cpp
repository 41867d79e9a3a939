#include "dlgsearch.h"

#include "velmora/core/textsearch.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QTextCursor>

namespace velmora::ui {

dlgSearch::dlgSearch(QPlainTextEdit* view, QWidget* parent) : QDialog(parent), m_view(view) {
    setObjectName("dlgSearch");
    setWindowTitle(tr("Find"));
    setModal(false);
    m_what = new QLineEdit;
    m_what->setObjectName("Text2");
    m_with = new QLineEdit;
    m_with->setObjectName("Text3");
    m_whole = new QCheckBox(tr("Whole Word only"));
    m_whole->setObjectName("Check1");
    m_status = new QLabel;
    m_status->setObjectName("lblStatus");

    auto button = [this](const char* name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    QPushButton* find = button("Command4", tr("&Find"));
    QPushButton* next = button("Command2", tr("Find &Next"));
    QPushButton* replace = button("Command5", tr("Replace"));
    QPushButton* replaceAll = button("Command6", tr("Replace All"));
    QPushButton* clear = button("Command1", tr("Clear All"));
    connect(find, &QPushButton::clicked, this, &dlgSearch::Command4_Click);
    connect(next, &QPushButton::clicked, this, &dlgSearch::Command2_Click);
    connect(replace, &QPushButton::clicked, this, &dlgSearch::Command5_Click);
    connect(replaceAll, &QPushButton::clicked, this, &dlgSearch::Command6_Click);
    connect(clear, &QPushButton::clicked, this, &dlgSearch::Command1_Click);

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Find what:")), 0, 0);
    grid->addWidget(m_what, 0, 1);
    grid->addWidget(find, 0, 2);
    grid->addWidget(new QLabel(tr("Replace with:")), 1, 0);
    grid->addWidget(m_with, 1, 1);
    grid->addWidget(next, 1, 2);
    grid->addWidget(m_whole, 2, 1);
    grid->addWidget(replace, 2, 2);
    grid->addWidget(clear, 3, 1);
    grid->addWidget(replaceAll, 3, 2);
    grid->addWidget(m_status, 4, 0, 1, 3);
}

QString dlgSearch::status() const { return m_status->text(); }

void dlgSearch::say(const QString& text) { m_status->setText(text); }

bool dlgSearch::findFrom(qsizetype from) {
    const QString text = m_view->toPlainText();
    const qsizetype at = findInText(text, {m_what->text(), m_whole->isChecked()}, from);
    if (at < 0) {
        say(tr("\"%1\" was not found%2.").arg(m_what->text(), from > 0 ? tr(" after the cursor") : QString()));
        return false;
    }
    say({});
    QTextCursor c(m_view->document());
    c.setPosition(static_cast<int>(at));
    c.setPosition(static_cast<int>(at + m_what->text().size()), QTextCursor::KeepAnchor);
    m_view->setTextCursor(c);
    m_view->ensureCursorVisible();
    return true;
}

bool dlgSearch::Command4_Click() { return findFrom(0); }

bool dlgSearch::Command2_Click() {
    const QTextCursor c = m_view->textCursor();
    return findFrom(c.selectionStart() + 1);
}

void dlgSearch::Command5_Click() {
    QTextCursor c = m_view->textCursor();
    if (c.hasSelection())
        c.insertText(m_with->text());
}

qsizetype dlgSearch::Command6_Click() {
    QString text = m_view->toPlainText();
    const qsizetype count = replaceAllInText(text, {m_what->text(), m_whole->isChecked()}, m_with->text());
    say(count == 0 ? tr("\"%1\" was not found.").arg(m_what->text())
                   : tr("%n replaced.", nullptr, static_cast<int>(count)));
    if (count > 0) {
        // One edit for the whole replacement, so that a single Undo takes it back.
        QTextCursor c(m_view->document());
        c.select(QTextCursor::Document);
        c.insertText(text);
    }
    return count;
}

void dlgSearch::Command1_Click() {
    m_what->clear();
    m_with->clear();
}

} // namespace velmora::ui
