#include "frmedqd.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"

#include "velmora/consists/qdcheck.h"
#include "velmora/consists/qdbuild.h"
#include "velmora/consists/qdedit.h"
#include "velmora/core/convert.h"
#include "velmora/core/textboundary.h"
#include "velmora/routes/routes.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

const char* const kNoRoutesToAdd = "You have not selected any routes?";
const char* const kNoRoutesToRemove = "You have not selected any consists?";

QListWidget* list(const char* name) {
    auto* l = new QListWidget;
    l->setObjectName(name);
    l->setSelectionMode(QAbstractItemView::ExtendedSelection);
    return l;
}

} // namespace

frmEdQD::frmEdQD(AppContext& ctx, const std::filesystem::path& file, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_file(file) {
    setObjectName("frmEdQD");
    setWindowTitle(tr("Edit QD consist - %1").arg(toQt(file.filename().string())));
    rememberPlace(ctx, this, objectName(), {900, 600});

    const char* captions[5] = {"Display Name", "Era - Start year", "Era - End Year", "Loco Name", "Drivable Consist"};
    auto* form = new QFormLayout;
    for (int i = 0; i < 5; ++i) {
        m_text[i] = new QLineEdit;
        m_text[i]->setObjectName(QString("Text%1").arg(i + 1));
        form->addRow(tr(captions[i]), m_text[i]);
    }
    m_type = new QComboBox;
    m_type->setObjectName("Combo1");
    m_type->setEditable(true);
    for (const auto& t : consists::consistTypes())
        m_type->addItem(toQt(t));
    form->addRow(tr("Consist Type"), m_type);

    m_contents = list("List3");
    m_routes = list("List1");
    m_installed = list("List2");
    m_installed->setSortingEnabled(true);
    auto button = [this](const char* name, const QString& caption, void (frmEdQD::*slot)()) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("Contents of QD Consist:-")), 0, 0);
    grid->addWidget(m_contents, 1, 0);
    grid->addWidget(new QLabel(tr("Routes Available to this QD Consist as an AI consist")), 0, 1);
    grid->addWidget(m_routes, 1, 1);
    grid->addWidget(new QLabel(tr("Installed Routes")), 0, 2);
    grid->addWidget(m_installed, 1, 2);
    auto* commands = new QHBoxLayout;
    commands->addWidget(button("Command3", tr("Add Selected Route(s)"), &frmEdQD::Command3_Click));
    commands->addWidget(button("Command2", tr("Remove Selected Route(s)"), &frmEdQD::Command2_Click));
    commands->addStretch();
    commands->addWidget(button("Command4", tr("Save"), &frmEdQD::Command4_Click));
    auto* exit = new QPushButton(tr("Exit"));
    exit->setObjectName("Command1");
    connect(exit, &QPushButton::clicked, this, &QDialog::close);
    commands->addWidget(exit);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(grid, 1);
    layout->addLayout(commands);

    for (const auto& r : routes::listRoutes(ctx)) {
        auto* item = new QListWidgetItem(toQt(utf8FromDocument(r.name) + "  (" + r.folder + ")"));
        item->setData(Qt::UserRole, toQt(r.folder));
        m_installed->addItem(item);
    }

    std::string xml;
    consists::QdDocument doc;
    if (const ConvertResult c = binToXmlText(file, xml); !c) {
        ctx.ui().message(c.message, Icon::Warning);
        return;
    }
    if (!consists::parseQuickDrive(xml, doc) || doc.kind != consists::QdKind::Consist) {
        ctx.ui().message(file.string() + ": " + consists::kQdNotAConsist, Icon::Warning);
        return;
    }
    m_text[0]->setText(toQt(utf8FromDocument(doc.name)));
    m_text[1]->setText(QString::number(doc.eraStart));
    m_text[2]->setText(QString::number(doc.eraEnd));
    m_text[3]->setText(toQt(utf8FromDocument(doc.locoName)));
    m_text[4]->setText(doc.drivable ? "eTrue" : "eFalse");
    m_type->setCurrentText(toQt(consists::consistTypeCaption(doc.consistType)));
    for (const auto& e : doc.entries)
        m_contents->addItem(toQt(utf8FromDocument(e.provider + "\\" + e.product + "\\" + e.blueprint)));
    for (const auto& r : doc.routes)
        addRoute(r);
    m_loaded = true;
}

QLineEdit* frmEdQD::field(int index) const { return index >= 1 && index <= 5 ? m_text[index - 1] : nullptr; }

void frmEdQD::addRoute(const std::string& folder) {
    for (int i = 0; i < m_routes->count(); ++i)
        if (m_routes->item(i)->data(Qt::UserRole).toString() == toQt(folder))
            return;
    QString shown = toQt(folder);
    for (int i = 0; i < m_installed->count(); ++i)
        if (m_installed->item(i)->data(Qt::UserRole).toString() == shown)
            shown = m_installed->item(i)->text();
    auto* item = new QListWidgetItem(shown);
    item->setData(Qt::UserRole, toQt(folder));
    m_routes->addItem(item);
}

void frmEdQD::Command3_Click() {
    const auto selected = m_installed->selectedItems();
    if (selected.isEmpty()) {
        m_ctx.ui().message(kNoRoutesToAdd);
        return;
    }
    for (const auto* item : selected)
        addRoute(fromQt(item->data(Qt::UserRole).toString()));
}

void frmEdQD::Command2_Click() {
    const auto selected = m_routes->selectedItems();
    if (selected.isEmpty()) {
        m_ctx.ui().message(kNoRoutesToRemove);
        return;
    }
    for (auto* item : selected)
        delete item;
}

void frmEdQD::Command4_Click() {
    consists::QdChanges c;
    if (!consists::drivableValue(fromQt(m_text[4]->text()))) {
        m_ctx.ui().message(consists::kQdDrivableBad, Icon::Warning);
        return;
    }
    bool startOk = false, endOk = false;
    const long start = m_text[1]->text().trimmed().toLong(&startOk);
    const long end = m_text[2]->text().trimmed().toLong(&endOk);
    if (!startOk || !endOk || start < 0 || end < 0) {
        m_ctx.ui().message("The era must be two years", Icon::Warning);
        return;
    }
    c.displayName = fromQt(m_text[0]->text());
    c.locoName = fromQt(m_text[3]->text());
    c.eraStart = start;
    c.eraEnd = end;
    c.drivable = fromQt(m_text[4]->text());
    c.consistType = fromQt(m_type->currentText());
    std::vector<std::string> routes;
    for (int i = 0; i < m_routes->count(); ++i)
        routes.push_back(fromQt(m_routes->item(i)->data(Qt::UserRole).toString()));
    c.routes = std::move(routes);
    const auto r = consists::editQuickDrive(m_ctx, m_file, c);
    m_ctx.ui().message(r.message, r ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
