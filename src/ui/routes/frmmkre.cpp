#include "frmmkre.h"

#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/windowplace.h"
#include "velmora/core/userinterface.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

QLineEdit* box(const char* name) {
    auto* e = new QLineEdit;
    e->setObjectName(name);
    return e;
}

template <typename Screen>
QPushButton* button(Screen* screen, const char* name, const QString& caption, void (Screen::*slot)()) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    QObject::connect(b, &QPushButton::clicked, screen, slot);
    return b;
}

} // namespace

frmMKRE::frmMKRE(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmMKRE");
    setWindowTitle(tr("Set Markers from WorldEditor"));
    rememberPlace(ctx, this, objectName(), {760, 520});
    m_list1 = new QListWidget;
    m_list1->setObjectName("List1");
    m_list3 = new QListWidget;
    m_list3->setObjectName("List3");
    m_text1 = box("Text1");
    m_text2 = box("Text2");
    m_text3 = box("Text3");
    m_text = box("Text");
    m_check1 = new QCheckBox(
        tr("Remove the Blueprints.pak files below Assets, so that the simulator rebuilds them"));
    m_check1->setObjectName("Check1");
    m_label = new QLabel;
    m_label->setObjectName("Label1");
    m_entries = routes::listRoutes(ctx);
    for (const auto& r : m_entries)
        m_list1->addItem(toQt(r.folder + "\t" + r.name));

    auto* form = new QFormLayout;
    form->addRow(tr("Longitude"), m_text1);
    form->addRow(tr("Latitude"), m_text2);
    form->addRow(tr("Name"), m_text3);
    form->addRow(tr("File name"), m_text);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(button(this, "Command1", tr("Copy Route to RailWorks"), &frmMKRE::Command1_Click));
    buttons->addWidget(button(this, "Command3", tr("Add to List"), &frmMKRE::Command3_Click));
    buttons->addWidget(button(this, "Command4", tr("Save Markers"), &frmMKRE::Command4_Click));
    auto* lists = new QHBoxLayout;
    lists->addWidget(m_list1, 1);
    lists->addWidget(m_list3, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addLayout(form);
    layout->addWidget(m_check1);
    layout->addWidget(m_label);
    layout->addLayout(buttons);
}

const routes::RouteEntry* frmMKRE::selectedRoute() {
    const int row = m_list1->currentRow();
    if (row < 0 || row >= static_cast<int>(m_entries.size())) {
        m_ctx.ui().message("Select a route in the list first.");
        return nullptr;
    }
    return &m_entries[static_cast<std::size_t>(row)];
}

void frmMKRE::Command3_Click() {
    const std::string lon = fromQt(m_text1->text().trimmed()), lat = fromQt(m_text2->text().trimmed()),
                      name = fromQt(m_text3->text().trimmed());
    if (const std::string wrong = routes::checkTypedMarker(lon, lat, name); !wrong.empty()) {
        m_ctx.ui().message(wrong, Icon::Warning);
        return;
    }
    m_list3->addItem(toQt(lon + "," + lat + "," + name));
}

void frmMKRE::Command1_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    // A label takes "&" as its mnemonic mark; doubled, it shows.
    m_label->setText(tr("Adding Markers to ") + toQt(route->name).replace("&", "&&"));
    std::string error;
    const auto folder = routes::routeMarkerFolder(m_ctx, *route, error);
    if (folder.empty())
        m_ctx.ui().message(error, Icon::Warning);
    else
        m_label->setText(m_label->text() + "\n" + toQt(folder.string()));
}

void frmMKRE::Command4_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    routes::RouteMarkerOptions options;
    options.baseName = fromQt(m_text->text().trimmed());
    if (options.baseName.empty()) {
        m_ctx.ui().message("You have not given a name for the marker file", Icon::Warning);
        return;
    }
    for (int r = 0; r < m_list3->count(); ++r) {
        const std::string row = fromQt(m_list3->item(r)->text());
        const std::size_t a = row.find(','), b = a == std::string::npos ? a : row.find(',', a + 1);
        if (b != std::string::npos)
            options.points.push_back({row.substr(0, a), row.substr(a + 1, b - a - 1), row.substr(b + 1)});
    }
    options.clearBlueprintCaches =
        m_check1->isChecked() &&
        m_ctx.ui().ask(
            "Every Blueprints.pak file below Assets will be taken away, so that the simulator rebuilds its "
            "cache of blueprints. An undo brings them back.\nDo you wish to continue?",
            Buttons::YesNo) == Answer::Yes;
    m_last = routes::saveRouteMarkers(m_ctx, *route, options);
    if (!m_last.problems.empty()) {
        std::string text;
        for (const auto& p : m_last.problems)
            text += p + "\r\n";
        frmReport::show(m_ctx, tr("Save Markers"), text, this);
    }
    m_ctx.ui().message(m_last.message, m_last.ok ? Icon::Information : Icon::Warning);
    if (m_last.ok)
        m_list3->clear();
}

frmBlue::frmBlue(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmBlue");
    setWindowTitle(tr("Make Blueprint"));
    rememberPlace(ctx, this, objectName(), {560, 260});
    m_mode = new QComboBox;
    m_mode->setObjectName("Combo1");
    m_mode->addItems({tr("Named markers"), tr("Marker series"), tr("Route: named markers and series")});
    m_text[0] = box("Text1");
    m_text[1] = box("Text2");
    m_text[2] = box("Text3");
    m_folder = box("Text4");
    auto* form = new QFormLayout;
    form->addRow(tr("Kind"), m_mode);
    form->addRow(tr("Blueprint name"), m_text[0]);
    form->addRow(tr(".csv file"), m_text[1]);
    form->addRow(tr("Series .csv file"), m_text[2]);
    auto* where = new QHBoxLayout;
    where->addWidget(m_folder, 1);
    where->addWidget(button(this, "Command2", tr("Browse..."), &frmBlue::Command2_Click));
    form->addRow(tr("Folder"), where);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(button(this, "Command1", tr("Make Blueprint"), &frmBlue::Command1_Click));
    connect(m_mode, &QComboBox::currentIndexChanged, this, [this](int i) { m_text[2]->setEnabled(i == 2); });
    m_text[2]->setEnabled(false);
}

void frmBlue::Command2_Click() {
    if (const auto folder =
            m_ctx.ui().chooseFolder("Select the folder for your blueprint", fromQt(m_folder->text())))
        m_folder->setText(toQt(folder->string()));
}

void frmBlue::Command1_Click() {
    const auto kind = static_cast<routes::BlueKind>(m_mode->currentIndex() + 1);
    std::vector<std::string> csvs{fromQt(m_text[1]->text().trimmed())};
    if (kind == routes::BlueKind::Route)
        csvs.push_back(fromQt(m_text[2]->text().trimmed()));
    if (m_folder->text().trimmed().isEmpty()) {
        m_ctx.ui().message("Select the folder for your blueprint first.", Icon::Warning);
        return;
    }
    const auto r = routes::makeMarkerBlueprint(m_ctx, kind, fromQt(m_text[0]->text().trimmed()), csvs,
                                               fromQt(m_folder->text().trimmed()));
    m_ctx.ui().message(r.message, r.ok ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
