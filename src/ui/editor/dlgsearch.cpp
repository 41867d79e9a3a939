#include "dlgsearch.h"

#include "docsearch.h"
#include "../common/numberedview.h"
#include "velmora/core/textsearch.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTextCursor>

namespace velmora::ui {

dlgSearch::dlgSearch(NumberedView* view, UserInterface& ui, QWidget* parent)
    : QDialog(parent), m_view(view), m_ui(ui) {
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
    m_status->setWordWrap(true);
    m_hits = new HitListModel(this);
    m_hitList = new QListView;
    m_hitList->setObjectName("lstHits");
    m_hitList->setModel(m_hits);
    m_hitList->setUniformItemSizes(true); // a hundred thousand rows are not measured one by one
    connect(m_hitList, &QListView::activated, this, [this](const QModelIndex& i) { select(m_hits->position(i.row())); });
    connect(m_hitList, &QListView::clicked, this, [this](const QModelIndex& i) { select(m_hits->position(i.row())); });

    auto button = [this](const char* name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    QPushButton* find = button("Command4", tr("&Find"));
    QPushButton* next = button("Command2", tr("Find &Next"));
    QPushButton* all = button("cmdFindAll", tr("Find &All"));
    QPushButton* replace = button("Command5", tr("Replace"));
    QPushButton* replaceAll = button("Command6", tr("Replace All"));
    QPushButton* clear = button("Command1", tr("Clear All"));
    connect(find, &QPushButton::clicked, this, &dlgSearch::Command4_Click);
    connect(next, &QPushButton::clicked, this, &dlgSearch::Command2_Click);
    connect(all, &QPushButton::clicked, this, &dlgSearch::findAll);
    connect(replace, &QPushButton::clicked, this, &dlgSearch::Command5_Click);
    connect(replaceAll, &QPushButton::clicked, this, &dlgSearch::Command6_Click);
    connect(clear, &QPushButton::clicked, this, &dlgSearch::Command1_Click);
    // The list goes with the marks once the text changes.
    connect(m_view->document(), &QTextDocument::contentsChange, this, [this](int, int removed, int added) {
        if ((removed || added) && m_hits->rowCount() > 0)
            m_hits->setHits(nullptr, {});
    });

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Find what:")), 0, 0);
    grid->addWidget(m_what, 0, 1);
    grid->addWidget(find, 0, 2);
    grid->addWidget(new QLabel(tr("Replace with:")), 1, 0);
    grid->addWidget(m_with, 1, 1);
    grid->addWidget(next, 1, 2);
    grid->addWidget(m_whole, 2, 1);
    grid->addWidget(all, 2, 2);
    grid->addWidget(replace, 3, 2);
    grid->addWidget(clear, 4, 1);
    grid->addWidget(replaceAll, 4, 2);
    grid->addWidget(m_status, 5, 0, 1, 3);
    grid->addWidget(m_hitList, 6, 0, 1, 3);
    grid->setRowStretch(6, 1);
}

QString dlgSearch::status() const { return m_status->text(); }

void dlgSearch::say(const QString& text) { m_status->setText(text); }

void dlgSearch::select(int at) {
    if (at < 0)
        return;
    QTextCursor c(m_view->document());
    c.setPosition(at);
    c.setPosition(std::min(at + static_cast<int>(m_what->text().size()), m_view->document()->characterCount() - 1),
                  QTextCursor::KeepAnchor);
    m_view->setTextCursor(c);
    m_view->ensureCursorVisible();
}

bool dlgSearch::findFrom(qsizetype from) {
    const int at = findInDocument(*m_view->document(), {m_what->text(), m_whole->isChecked()}, static_cast<int>(from));
    if (at < 0) {
        say(tr("\"%1\" was not found%2.").arg(m_what->text(), from > 0 ? tr(" after the cursor") : QString()));
        return false;
    }
    say({});
    select(at);
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

bool dlgSearch::beginLongCommand() {
    if (m_busy)
        return false;
    m_busy = true;
    m_wasReadOnly = m_view->isReadOnly();
    m_view->setReadOnly(true);
    return true;
}

void dlgSearch::endLongCommand() {
    m_view->setReadOnly(m_wasReadOnly);
    m_busy = false;
}

qsizetype dlgSearch::Command6_Click() {
    if (m_what->text().isEmpty() || !beginLongCommand())
        return 0;
    const ReplaceAllResult r =
        replaceAllInDocument(*m_view->document(), {m_what->text(), m_whole->isChecked()}, m_with->text(), m_ui);
    endLongCommand();
    if (r.aborted)
        say(tr("Replace All was aborted: nothing was replaced, the text is as it was."));
    else if (r.count == 0)
        say(tr("\"%1\" was not found.").arg(m_what->text()));
    else
        say(tr("%n replaced.", nullptr, static_cast<int>(r.count)));
    return r.count;
}

qsizetype dlgSearch::findAll() {
    if (m_what->text().isEmpty() || !beginLongCommand())
        return 0;
    FindAllResult r = findAllInDocument(*m_view->document(), {m_what->text(), m_whole->isChecked()}, m_ui);
    endLongCommand();
    const auto count = static_cast<qsizetype>(r.hits.size());
    m_view->setMarks(r.hits, static_cast<int>(m_what->text().size()));
    m_hits->setHits(m_view->document(), std::move(r.hits));
    if (r.aborted)
        say(tr("Find All was aborted: %n found before it.", nullptr, static_cast<int>(count)));
    else if (count == 0)
        say(tr("\"%1\" was not found.").arg(m_what->text()));
    else
        say(tr("%n found.", nullptr, static_cast<int>(count)));
    if (count > 0)
        select(m_hits->position(0));
    return count;
}

void dlgSearch::Command1_Click() {
    m_what->clear();
    m_with->clear();
}

} // namespace velmora::ui
