#include "frmconsistdupe.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "../routes/frmdelroute.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/scenariolist.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextEdit>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

struct Button {
    const char* name;
    const char* caption;
    void (frmConsistDupe::*slot)();
};

const Button kButtons[] = {
    {"Command1", "List Scenarios in Selected Route", &frmConsistDupe::Command1_Click},
    {"Command5", "List Consists in Selected #1", &frmConsistDupe::Command5_Click},
    {"Command2", "List Consists in Selected #2", &frmConsistDupe::Command2_Click},
    {"Command7", "Transfer Selected Consist", &frmConsistDupe::Command7_Click},
    {"Command3", "Delete Empty Consists from Selected Scenario", &frmConsistDupe::Command3_Click},
    {"Command4", "Clear List #1", &frmConsistDupe::Command4_Click},
    {"Command6", "Clear List #2", &frmConsistDupe::Command6_Click},
    {"Command8", "Clear Both", &frmConsistDupe::Command8_Click},
};

QTextEdit* consistView(const char* name) {
    auto* view = new QTextEdit;
    view->setObjectName(name);
    view->setReadOnly(true);
    view->setLineWrapMode(QTextEdit::NoWrap);
    // Read-only, but the cursor stays visible and moves with the keys, so a line can be chosen.
    view->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return view;
}

std::string languageOf(const AppContext& ctx) {
    return ctx.settings.language.empty() ? std::string("English") : ctx.settings.language;
}

} // namespace

frmConsistDupe::frmConsistDupe(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmConsistDupe");
    setWindowTitle(tr("Compare Consists"));
    m_routes = new QListWidget;
    m_routes->setObjectName("List1");
    m_scenarios = makeScenarioTable();
    m_scenarios->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_routes, &QListWidget::itemClicked, this, &frmConsistDupe::Command1_Click);
    m_rtb1 = consistView("RTB1");
    m_rtb2 = consistView("RTB2");
    m_caption1 = new QLabel(tr("#1"));
    m_caption2 = new QLabel(tr("#2"));
    for (QLabel* l : {m_caption1, m_caption2})
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* buttons = new QGridLayout;
    int i = 0;
    for (const Button& b : kButtons) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        buttons->addWidget(button, i / 3, i % 3);
        ++i;
    }
    auto* exit = new QPushButton(tr("Exit"));
    exit->setObjectName("Command9");
    connect(exit, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(exit, i / 3, i % 3);

    auto* top = new QHBoxLayout;
    top->addWidget(m_routes, 2);
    top->addWidget(m_scenarios, 3);
    auto* one = new QVBoxLayout;
    one->addWidget(m_caption1);
    one->addWidget(m_rtb1, 1);
    auto* two = new QVBoxLayout;
    two->addWidget(m_caption2);
    two->addWidget(m_rtb2, 1);
    auto* lists = new QHBoxLayout;
    lists->addLayout(one, 1);
    lists->addLayout(two, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addWidget(scenarioLegend(m_scenarios));
    layout->addLayout(lists, 2);
    layout->addLayout(buttons);
    rememberPlace(m_ctx, this, objectName(), {1100, 800});

    m_routeEntries = fillRouteNames(m_ctx, m_routes);
}

QPushButton* frmConsistDupe::button(const char* name) const { return findChild<QPushButton*>(name); }

const routes::RouteEntry* frmConsistDupe::selectedRoute() { return currentRoute(m_routes, m_routeEntries); }

void frmConsistDupe::Command1_Click() {
    m_scenarioEntries.clear();
    m_scenarios->setRowCount(0);
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    bool noFolder = false;
    m_scenarioEntries = routes::listScenarios(m_ctx, *route, &noFolder);
    fillScenarioRows(m_scenarios, m_scenarioEntries, noFolder);
    m_scenarios->resizeColumnsToContents();
}

std::optional<std::filesystem::path> frmConsistDupe::selectedScenarioFolder() {
    // With "No Scenarios folder found" as the first row, the entries start one row down.
    const int offset = m_scenarios->rowCount() - static_cast<int>(m_scenarioEntries.size());
    return scenarioFolderAt(m_ctx, selectedRoute(), m_scenarioEntries, m_scenarios->currentRow() - offset);
}

void frmConsistDupe::showConsists(const scenarios::ListedScenario& side, QTextEdit* view) {
    QLabel* caption = view == m_rtb1 ? m_caption1 : m_caption2;
    const QString number = view == m_rtb1 ? tr("#1") : tr("#2");
    if (side.folder.empty()) {
        view->clear();
        caption->setText(number);
        return;
    }
    caption->setText(number + "  " + QString::fromStdString(side.folder.filename().string()));
    QStringList lines;
    for (const auto& line : scenarios::consistLines(side.text, languageOf(m_ctx)))
        lines << toQt(line);
    view->setPlainText(lines.join('\n'));
}

void frmConsistDupe::listInto(scenarios::ListedScenario& side, QTextEdit* view) {
    const auto folder = selectedScenarioFolder();
    if (!folder)
        return;
    // A scenario of thousands of vehicles takes a moment to convert: the window stays alive.
    scenarios::ListedScenario read;
    runInBackground(m_ctx, "Listing the consists", [&](UserInterface&) { read = scenarios::readScenarioText(m_ctx, *folder); });
    if (!read.ok()) {
        m_ctx.ui().message(read.error, Icon::Warning);
        return;
    }
    side = std::move(read);
    showConsists(side, view);
}

void frmConsistDupe::Command5_Click() { listInto(m_first, m_rtb1); }
void frmConsistDupe::Command2_Click() { listInto(m_second, m_rtb2); }

std::optional<int> frmConsistDupe::selectedOccurrence(const QTextEdit* view) {
    const QTextCursor cursor = view->textCursor();
    const QString text = cursor.hasSelection() ? cursor.selectedText() : cursor.block().text();
    return scenarios::occurrenceIn(fromQt(text));
}

void frmConsistDupe::selectLine(QTextEdit* list, int line) {
    QTextCursor cursor(list->document()->findBlockByNumber(line));
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    list->setTextCursor(cursor);
}

void frmConsistDupe::Command7_Click() {
    // The lines are taken as they stand; one without a number in brackets does nothing.
    const auto from = selectedOccurrence(m_rtb1);
    if (!from)
        return;
    const auto after = selectedOccurrence(m_rtb2);
    if (!after)
        return;
    const bool same = m_first.folder == m_second.folder;
    const scenarios::CommandResult r = scenarios::transferConsist(m_ctx, m_first, *from, m_second, *after);
    if (!r) {
        m_ctx.ui().message(r.message, Icon::Warning);
        return;
    }
    // Both lists show what the files now hold.
    if (same)
        m_first.text = m_second.text;
    showConsists(m_first, m_rtb1);
    showConsists(m_second, m_rtb2);
    m_ctx.ui().message(r.message);
}

void frmConsistDupe::Command3_Click() {
    const auto folder = selectedScenarioFolder();
    if (!folder)
        return;
    const scenarios::CommandResult r = scenarios::removeEmptyConsists(m_ctx, *folder);
    // A list of that scenario is read again: its numbers have changed.
    for (auto [side, view] : {std::pair{&m_first, m_rtb1}, std::pair{&m_second, m_rtb2}})
        if (r && !side->folder.empty() && side->folder == *folder) {
            *side = scenarios::readScenarioText(m_ctx, *folder);
            showConsists(*side, view);
        }
    m_ctx.ui().message(r.message, r ? Icon::Information : Icon::Warning);
}

void frmConsistDupe::Command4_Click() {
    m_first = {};
    showConsists(m_first, m_rtb1);
}

void frmConsistDupe::Command6_Click() {
    m_second = {};
    showConsists(m_second, m_rtb2);
}

void frmConsistDupe::Command8_Click() {
    Command4_Click();
    Command6_Click();
}

} // namespace velmora::ui
