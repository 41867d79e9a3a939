#include "frmostrand.h"

#include "batchswapui.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/palettecolours.h"
#include "../common/windowplace.h"
#include "../assets/frmindex.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/consistedit.h"
#include "velmora/routes/routes.h"
#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/indexstock.h"
#include "velmora/scenarios/namedconsist.h"
#include "velmora/scenarios/swap.h"

#include <algorithm>
#include <functional>

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QImage>
#include <QPixmap>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

using scenarios::ScenarioClass;

const char* const kServiceClasses[] = {"Special",          "Light Engine",     "Express Passenger", "Stopping Passenger",
                                       "High-Speed Freight", "Express Freight", "Stopping Freight",  "Low-Speed Freight",
                                       "Other Freight",      "Empty Stock",     "International"};

const char* const kSeasons[] = {"SEASON_SPRING", "SEASON_SUMMER", "SEASON_AUTUMN", "SEASON_WINTER"};

// Text1(0) to Text1(11), as the screen captions them.
const char* const kFieldCaptions[] = {"Display Name:",  "Description",     "Briefing",
                                      "Start Time (24 hour)", "Duration (mins)", "Day",
                                      "Month",          "Year",            "Season",
                                      "Weather Provider", "Weather Product", "Weather Blueprint"};

const ScenarioClass kClassOrder[] = {ScenarioClass::Standard, ScenarioClass::FreeRoam, ScenarioClass::Career,
                                     ScenarioClass::Tutorial, ScenarioClass::Timetable};

std::string fullId(const scenarios::Reference& r) {
    return r.empty() ? std::string() : r.provider + "\\" + r.product + "\\" + r.blueprintId;
}

} // namespace

QString frmOstrand::waitsFor(const QString&) { return tr("Waits for the consist editing tools"); }

frmOstrand::frmOstrand(AppContext& ctx, scenarios::ScenarioDocument doc, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_doc(std::move(doc)), m_cls(m_doc.cls()), m_missingReport(m_doc.missingReport) {
    setObjectName("frmOstrand");
    setWindowTitle(toQt(m_doc.properties.displayName) + " - " + QString::fromStdString(m_doc.folder.string()));

    m_consists = new QListWidget;
    m_consists->setObjectName("List1");
    connect(m_consists, &QListWidget::currentRowChanged, this, [this] { List1_Click(); });
    m_driven = new QLineEdit;
    m_driven->setObjectName("Text2");
    m_driven->setReadOnly(true);
    m_items = new QTableWidget(0, 7);
    m_items->setObjectName("VSG2");
    m_items->setHorizontalHeaderLabels({tr("Status"), tr("Name"), tr("Number"), tr("Blueprint"), tr("Reskin"),
                                        tr("Orientation"), tr("Loaded")});
    m_items->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_items->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_items->setTextElideMode(Qt::ElideLeft);
    m_items->horizontalHeader()->setStretchLastSection(true);
    m_items->verticalHeader()->setVisible(false);
    connect(m_items, &QTableWidget::currentCellChanged, this, [this](int row) { showItem(row); });
    m_itemCount = new QLabel;
    m_itemCount->setObjectName("Label9");
    m_engineIndex = new QLabel;
    m_engineIndex->setObjectName("Label7");

    // dlgTips: the details of the vehicle under the pointer.
    auto* tipsBox = new QGroupBox(tr("Item details"));
    tipsBox->setObjectName("dlgTips");
    m_tips = new QLabel;
    m_tips->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_tips->setWordWrap(true);
    m_tipTime = new QLineEdit;
    m_tipTime->setObjectName("Text1");
    m_tipNumber = new QLineEdit;
    m_tipNumber->setObjectName("Text2");
    m_tipClass = new QComboBox;
    m_tipClass->setObjectName("Combo1");
    for (const char* c : kServiceClasses)
        m_tipClass->addItem(tr(c));
    m_quiet = new QCheckBox(tr("Suppress messages re saving changes"));
    m_quiet->setObjectName("chkMsg");
    m_keepNumbers = new QCheckBox(toQt(scenarios::kKeepNumbers));
    m_keepNumbers->setObjectName("Check2");
    m_trigger = new QLineEdit;
    m_trigger->setObjectName("Text4");
    m_trigger->setPlaceholderText(tr("metres"));
    auto* tipsLayout = new QFormLayout(tipsBox);
    tipsLayout->addRow(m_tips);
    tipsLayout->addRow(tr("Start time"), m_tipTime);
    tipsLayout->addRow(tr("Number"), m_tipNumber);
    tipsLayout->addRow(tr("Service class"), m_tipClass);

    auto* consistCommands = new QGridLayout;
    int i = 0;
    struct Live {
        const char* name;
        const char* caption;
        void (frmOstrand::*slot)();
    };
    for (const Live& b : {Live{"Command17", "Change Start Time", &frmOstrand::Command17_Click},
                          Live{"Command13", "Change start speed of Driven consist", &frmOstrand::Command13_Click},
                          Live{"Command16", "Change start speed of AI consist", &frmOstrand::Command16_Click},
                          Live{"Command27", "Change Trigger Distance", &frmOstrand::Command27_Click},
                          Live{"Command14", "Change Number", &frmOstrand::Command14_Click},
                          Live{"Command11", "Duplicate Item", &frmOstrand::Command11_Click},
                          Live{"Command9", "Delete Item", &frmOstrand::Command9_Click},
                          Live{"Command21", "Flip Selected", &frmOstrand::Command21_Click},
                          Live{"Command23", "Rename Consist", &frmOstrand::Command23_Click},
                          Live{"Command18", "Delete Consist", &frmOstrand::Command18_Click},
                          Live{"Command19", "Change Service Class", &frmOstrand::Command19_Click},
                          Live{"Command4", "Drive It", &frmOstrand::Command4_Click},
                          Live{"Command28", "Save Selected Loose Consist", &frmOstrand::Command28_Click},
                          Live{"Command10", "Swap Selected Item", &frmOstrand::Command10_Click},
                          Live{"Command7", "Swap All Identical Stock", &frmOstrand::Command7_Click},
                          Live{"Command22", "Swap in EVERY consist", &frmOstrand::Command22_Click},
                          Live{"Command20", "Swap in ALL Scenarios for this route", &frmOstrand::Command20_Click},
                          Live{"Command29", "Add Previously Saved Loose Consist", &frmOstrand::Command29_Click},
                          Live{"cmdConsist", "Save as Named Consist", &frmOstrand::cmdConsist_Click}}) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        consistCommands->addWidget(button, i / 4, i % 4);
        ++i;
    }
    for (int load = 0; load < 2; ++load) {
        auto* button = new QPushButton(load == 0 ? tr("Load Selected  Wagon(s)") : tr("Unload Selected Wagon(s)"));
        button->setObjectName(QString("Command15_%1").arg(load));
        connect(button, &QPushButton::clicked, this, [this, load] { Command15_Click(load); });
        consistCommands->addWidget(button, i / 4, i % 4);
        ++i;
    }
    consistCommands->addWidget(m_quiet, i / 4, i % 4);
    ++i;
    consistCommands->addWidget(m_keepNumbers, i / 4, i % 4);
    ++i;
    auto* triggerRow = new QHBoxLayout;
    triggerRow->addWidget(new QLabel(tr("New trigger distance")));
    triggerRow->addWidget(m_trigger);
    consistCommands->addLayout(triggerRow, i / 4, i % 4);
    ++i;

    auto* left = new QWidget;
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->addWidget(new QLabel(tr("Current Driven Consist:-")));
    leftLayout->addWidget(m_driven);
    leftLayout->addWidget(m_consists, 1);
    auto* note = new QLabel(tr("Consists shown in red in Free Roam Scenarios are AI traffic. In Standard or Career "
                               "scenarios they are AI or Driven"));
    note->setWordWrap(true);
    leftLayout->addWidget(note);
    auto* middle = new QWidget;
    auto* middleLayout = new QVBoxLayout(middle);
    auto* counts = new QHBoxLayout;
    counts->addWidget(m_itemCount);
    counts->addWidget(m_engineIndex);
    counts->addStretch(1);
    middleLayout->addLayout(counts);
    middleLayout->addWidget(m_items, 1);
    middleLayout->addWidget(tipsBox);
    auto* side = new QWidget;
    buildFields(side);

    auto* split = new QSplitter;
    split->addWidget(left);
    split->addWidget(middle);
    split->addWidget(side);
    split->addWidget(buildStock());
    split->setStretchFactor(1, 3);

    m_save = new QPushButton(tr("Save Changes to Scenario"));
    m_save->setObjectName("Command1");
    m_exit = new QPushButton(tr("Exit without saving"));
    m_exit->setObjectName("Command2");
    auto* report = new QPushButton(tr("Show Missing File report"));
    report->setObjectName("mnuMFR");
    connect(m_save, &QPushButton::clicked, this, &frmOstrand::Command1_Click);
    connect(m_exit, &QPushButton::clicked, this, &frmOstrand::Command2_Click);
    connect(report, &QPushButton::clicked, this, &frmOstrand::mnuMFR_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_save);
    buttons->addWidget(report);
    buttons->addStretch(1);
    buttons->addWidget(m_exit);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(split, 1);
    layout->addLayout(consistCommands);
    layout->addLayout(buttons);
    rememberPlace(m_ctx, this, objectName(), {1400, 850}, &m_ctx.settings.scenarioEditor);

    fillConsists();
    fillFields();
}

void frmOstrand::fillConsists() {
    // The consists, red where the consist has a real destination.
    m_consists->clear();
    for (std::size_t c = 0; c < m_doc.consists.size(); ++c) {
        const auto& consist = m_doc.consists[c];
        auto* item = new QListWidgetItem(toQt(consist.serviceName));
        item->setForeground(rowColour(consist.colour(), m_consists->palette()));
        m_consists->addItem(item);
        if (static_cast<int>(c) == m_doc.drivenConsist)
            m_driven->setText(toQt(consist.serviceName));
    }
    if (m_consists->count() > 0)
        m_consists->setCurrentRow(0);
}

void frmOstrand::buildFields(QWidget* side) {
    auto* form = new QFormLayout;
    for (std::size_t i = 0; i < m_text1.size(); ++i) {
        m_text1[i] = new QLineEdit;
        m_text1[i]->setObjectName(QString("Text1_%1").arg(i));
        connect(m_text1[i], &QLineEdit::textChanged, this, [this] {
            if (!m_filling)
                m_changed = true;
        });
        form->addRow(tr(kFieldCaptions[i]), m_text1[i]);
    }
    m_season = new QComboBox;
    m_season->setObjectName("Combo1");
    for (const char* s : kSeasons)
        m_season->addItem(s);
    connect(m_season, &QComboBox::textActivated, this, [this](const QString& s) { m_text1[8]->setText(s); });
    form->insertRow(9, QString(), m_season);
    auto* weather = new QPushButton(tr("Set Weather"));
    weather->setObjectName("Command3");
    connect(weather, &QPushButton::clicked, this, &frmOstrand::Command3_Click);
    form->addRow(QString(), weather);
    m_author = new QLineEdit;
    m_author->setObjectName("Text3_1");
    m_location = new QLineEdit;
    m_location->setObjectName("Text3_2");
    for (QLineEdit* e : {m_author, m_location})
        connect(e, &QLineEdit::textChanged, this, [this] {
            if (!m_filling)
                m_changed = true;
        });
    m_authorLabel = new QLabel(tr("Author"));
    m_locationLabel = new QLabel(tr("Start Location(Freeroam)"));
    form->addRow(m_authorLabel, m_author);
    form->addRow(m_locationLabel, m_location);
    m_allConsists = new QCheckBox(tr("Change for all consists"));
    m_allConsists->setObjectName("Check1");
    form->addRow(QString(), m_allConsists);

    auto* classes = new QGroupBox(tr("Scenario class"));
    classes->setObjectName("Option2");
    auto* classLayout = new QVBoxLayout(classes);
    m_class = new QButtonGroup(this);
    for (int i = 0; i < 5; ++i) {
        auto* option = new QRadioButton(toQt(scenarios::classCaption(kClassOrder[i])));
        m_class->addButton(option, i);
        classLayout->addWidget(option);
    }
    connect(m_class, &QButtonGroup::idClicked, this, [this](int id) {
        if (!setClass(kClassOrder[id]))
            showClassFields();
    });
    auto* layout = new QVBoxLayout(side);
    layout->addLayout(form);
    layout->addWidget(classes);
    layout->addStretch(1);
}

QWidget* frmOstrand::buildStock() {
    auto* box = new QGroupBox(tr("Available Stock"));
    m_stockFolder = new QLineEdit(QString::fromStdString((m_ctx.railWorks() / "Assets").string()));
    m_stockFolder->setObjectName("Text5");
    m_stockCategory = new QComboBox;
    m_stockCategory->setObjectName("Option1");
    for (scenarios::StockCategory c : scenarios::allStockCategories())
        m_stockCategory->addItem(scenarios::categoryCaption(c));
    auto* find = new QPushButton(tr("Find Available Rolling-Stock"));
    find->setObjectName("Command6");
    connect(find, &QPushButton::clicked, this, &frmOstrand::Command6_Click);
    m_stock = new QListWidget;
    m_stock->setObjectName("List3");
    m_stock->setSelectionMode(QAbstractItemView::ExtendedSelection);
    connect(m_stock, &QListWidget::currentRowChanged, this, &frmOstrand::List3_Click);
    m_stockPicture = new QLabel;
    m_stockPicture->setObjectName("Picture1");
    m_stockPicture->setAlignment(Qt::AlignCenter);
    m_stockPicture->setMinimumSize(160, 120);
    m_stockLabel = new QLabel;
    m_stockLabel->setObjectName("Label5");
    m_stockLabel->setWordWrap(true);
    m_stockLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(m_stockFolder);
    layout->addWidget(m_stockCategory);
    layout->addWidget(find);
    layout->addWidget(m_stock, 1);
    auto* pins = new QHBoxLayout;
    struct PinButton {
        const char* name;
        const char* caption;
        std::function<void()> slot;
    };
    for (const PinButton& b : {PinButton{"Command24", "Pin Selected", [this] { Command24_Click(); }},
                               PinButton{"Command25", "Unpin all items", [this] { Command25_Click(); }},
                               PinButton{"Command26", "Select All", [this] { m_stock->selectAll(); }},
                               PinButton{"Command8", "Use Index File", [this] { Command8_Click(); }}}) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        pins->addWidget(button);
    }
    layout->addLayout(pins);
    layout->addWidget(m_stockPicture);
    layout->addWidget(m_stockLabel);
    return box;
}

void frmOstrand::Command6_Click() {
    const auto category = scenarios::categoryFromCaption(fromQt(m_stockCategory->currentText()));
    const std::filesystem::path folder = m_stockFolder->text().toStdString();
    if (!category || !FolderExists(folder)) {
        m_ctx.ui().message(folder.string() + ": no such folder to look for stock in", Icon::Warning);
        return;
    }
    m_useIndexFile = false; // a listing: the stock comes from Available Stock again
    // A large Assets tree takes a while: the walk runs on its own thread, the screen stays alive.
    scenarios::StockListing listing;
    const bool finished = runInBackground(m_ctx, "Finding available rolling stock", [&](UserInterface& ui) {
        listing = scenarios::Command6_Click(m_ctx, m_stockTables, folder, *category, 0, &ui);
    });
    m_stock->clear();
    for (const std::string& name : m_stockTables.StockNames)
        m_stock->addItem(toQt(name));
    if (!listing.unreadable.empty()) {
        std::string text = "These could not be read, so their stock is not listed:\r\n";
        for (const auto& u : listing.unreadable)
            text += u + "\r\n";
        frmReport::show(m_ctx, tr("Stock not read"), text, this);
    }
    if (!finished || listing.stopped)
        m_ctx.ui().message("The search was stopped: the list holds what was found so far.");
}

void frmOstrand::List3_Click(int row) {
    if (row < 0 && m_useIndexFile)
        return; // Label5 keeps the stock chosen from the index
    m_stockPicture->clear();
    m_stockLabel->clear();
    if (row < 0)
        return;
    // A row of Available Stock chosen: Label5 shows it, and the swaps use it.
    m_useIndexFile = false;
    const auto preview = scenarios::stockPreview(m_ctx, m_stockTables, static_cast<std::size_t>(row));
    if (!preview)
        return;
    m_stockLabel->setText(toQt(preview->label) + "\n" + toQt(preview->category));
    const QImage picture(QString::fromStdString(preview->picture.string()));
    if (picture.isNull())
        m_stockPicture->setText(tr("No picture"));
    else
        m_stockPicture->setPixmap(QPixmap::fromImage(picture.scaled(160, 120, Qt::KeepAspectRatio)));
}

QString frmOstrand::stockPreviewText() const { return m_stockLabel->text(); }

void frmOstrand::Command24_Click() {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : m_stock->selectionModel()->selectedRows())
        rows.push_back(static_cast<std::size_t>(index.row()));
    std::sort(rows.begin(), rows.end());
    if (!m_stockTables.pin(rows)) {
        m_ctx.ui().message("You have not selected any rolling-stock?");
        Command25_Click();
        return;
    }
    m_stock->clear();
    for (const std::string& name : m_stockTables.StockNames)
        m_stock->addItem(toQt(name));
}

void frmOstrand::Command25_Click() {
    m_stockTables.unpin();
    m_stock->clearSelection();
}

std::vector<int> frmOstrand::selectedVehicles() const {
    std::vector<int> out;
    for (const QModelIndex& index : m_items->selectionModel()->selectedRows())
        if (index.row() < static_cast<int>(m_rowVehicle.size()))
            out.push_back(m_rowVehicle[static_cast<std::size_t>(index.row())]);
    std::sort(out.begin(), out.end());
    return out;
}

void frmOstrand::edited(const std::string& refused, const char* note) {
    if (!refused.empty()) {
        m_ctx.ui().message(refused, Icon::Warning);
        return;
    }
    consistChanged();
    if (!m_quiet->isChecked())
        m_ctx.ui().message(note);
}

void frmOstrand::Command14_Click() {
    edited(scenarios::changeNumbers(m_doc, m_consists->currentRow(), selectedVehicles(), fromQt(m_tipNumber->text())),
           scenarios::kEditNote);
}

void frmOstrand::Command11_Click() {
    const auto vehicles = selectedVehicles();
    edited(vehicles.empty() ? std::string("You have not selected an item to duplicate?")
                            : scenarios::duplicateVehicle(m_doc, m_consists->currentRow(), vehicles.front()),
           scenarios::kEditNote);
}

void frmOstrand::Command9_Click() {
    const auto vehicles = selectedVehicles();
    edited(vehicles.empty() ? std::string("You have not selected an item to delete?")
                            : scenarios::deleteVehicle(m_doc, m_consists->currentRow(), vehicles.front()),
           scenarios::kEditNote);
}

void frmOstrand::Command21_Click() {
    edited(scenarios::flipVehicles(m_doc, m_consists->currentRow(), selectedVehicles()), scenarios::kEditNote);
}

void frmOstrand::Command15_Click(int index) {
    const std::string refused = scenarios::loadVehicles(m_doc, m_consists->currentRow(), selectedVehicles(), index == 0);
    // The wagons before one that cannot carry a load stay changed.
    if (!refused.empty())
        consistChanged();
    edited(refused, scenarios::kEditNote);
}

void frmOstrand::Command23_Click() {
    const int row = m_consists->currentRow();
    if (row < 0 || row >= static_cast<int>(m_doc.consists.size()))
        return;
    const std::string old = m_doc.consists[static_cast<std::size_t>(row)].serviceName;
    const auto name = m_ctx.ui().inputText("Type New Name for consist " + old, "Rename Consist");
    if (!name || name->empty())
        return;
    edited(scenarios::renameConsist(m_doc, row, *name), scenarios::kEditNote);
    if (m_consists->item(row))
        m_consists->item(row)->setText(toQt(m_doc.consists[static_cast<std::size_t>(row)].serviceName));
}

void frmOstrand::cmdConsist_Click() {
    const int row = m_consists->currentRow();
    if (row < 0 || row >= static_cast<int>(m_doc.consists.size()))
        return;
    const std::string old = m_doc.consists[static_cast<std::size_t>(row)].serviceName;
    const auto name = m_ctx.ui().inputText(scenarios::kConsistNamePrompt, "Save as Named Consist", old);
    if (!name || name->empty())
        return;
    const consists::SaveResult r = scenarios::saveAsNamedConsist(m_ctx, m_doc, static_cast<std::size_t>(row), *name);
    m_ctx.ui().message(r.detail.empty() ? r.message : r.message + "\n\n" + r.detail,
                       r.ok ? Icon::Information : Icon::Warning);
}

void frmOstrand::Command18_Click() {
    const std::size_t before = m_doc.consists.size();
    edited(scenarios::deleteConsist(m_doc, m_consists->currentRow(), m_consistDeleted), scenarios::kEditNote);
    // The list follows the text at once, so that no row names the consist that took its place.
    if (m_doc.consists.size() < before)
        fillConsists();
}

void frmOstrand::Command19_Click() {
    edited(scenarios::changeServiceClass(m_doc, m_consists->currentRow(), m_tipClass->currentIndex()),
           scenarios::kEditNote);
}

void frmOstrand::Command4_Click() {
    const int row = m_consists->currentRow();
    if (row < 0 || selectedVehicles().empty()) {
        m_ctx.ui().message("You have not selected a locomotive to drive?");
        return;
    }
    edited(scenarios::driveConsist(m_doc, row), scenarios::kDriverNote);
    if (m_doc.drivenConsist == row)
        m_driven->setText(toQt(m_doc.consists[static_cast<std::size_t>(row)].serviceName));
}

void frmOstrand::consistChanged() {
    m_changed = true;
    const int row = m_items->currentRow();
    List1_Click();
    if (row >= 0 && row < m_items->rowCount())
        m_items->setCurrentCell(row, 1);
}

void frmOstrand::Command17_Click() {
    const std::string refused = scenarios::setConsistStartTime(m_doc, m_consists->currentRow(), fromQt(m_tipTime->text()));
    if (!refused.empty()) {
        m_ctx.ui().message(refused, Icon::Warning);
        return;
    }
    consistChanged();
}

namespace {
// The speed as the user types it back, in mph; nothing when the answer is empty or no number.
std::optional<double> askMph(AppContext& ctx, double metresPerSecond, const char* prompt) {
    const auto answer = ctx.ui().inputText("Current speed " + QString::number(metresPerSecond * scenarios::kMphPerMetreSecond).toStdString() +
                                               prompt,
                                           "Start speed");
    bool ok = false;
    const double mph = answer ? QString::fromStdString(*answer).trimmed().toDouble(&ok) : 0;
    if (!ok)
        return std::nullopt;
    return mph;
}
} // namespace

void frmOstrand::Command13_Click() {
    if (m_ctx.ui().ask("This option will alter the start speed of the Driven consist \nand may help in some instances. Continue?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    const scenarios::ConsistValue speed = scenarios::drivenStartSpeed(m_doc);
    if (!speed.ok() || !speed.value) {
        m_ctx.ui().message(speed.error, Icon::Warning);
        return;
    }
    if (const auto mph = askMph(m_ctx, *speed.value, " mph Replace with")) {
        if (const std::string refused = scenarios::setDrivenStartSpeed(m_doc, *mph / scenarios::kMphPerMetreSecond); !refused.empty())
            m_ctx.ui().message(refused, Icon::Warning);
        else
            consistChanged();
    }
}

void frmOstrand::Command16_Click() {
    if (m_ctx.ui().ask("This option will alter the start speed of a selected AI consist (not\nthe Driven consist) and may "
                       "help in some instances. Continue?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    const int row = m_consists->currentRow();
    const scenarios::ConsistValue speed = scenarios::aiStartSpeed(m_doc, row);
    if (!speed.ok() || !speed.value) {
        m_ctx.ui().message(speed.error, speed.error == scenarios::kDrivenSelected ? Icon::Critical : Icon::Warning);
        return;
    }
    if (const auto mph = askMph(m_ctx, *speed.value, "mph Replace with")) {
        if (const std::string refused = scenarios::setAiStartSpeed(m_doc, row, *mph / scenarios::kMphPerMetreSecond);
            !refused.empty())
            m_ctx.ui().message(refused, Icon::Warning);
        else
            consistChanged();
    }
}

void frmOstrand::Command27_Click() {
    if (m_ctx.ui().ask("This option will alter the trigger distance of a selected AI consist to\nstart when the Driven "
                       "consist is within that distance. Continue?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    const int row = m_consists->currentRow();
    if (row < 0)
        return;
    const scenarios::ConsistValue distance = scenarios::triggerDistance(m_doc, row);
    if (!distance.ok() || !distance.value) {
        m_ctx.ui().message(distance.error, distance.error == scenarios::kDrivenSelected ? Icon::Critical : Icon::Warning);
        return;
    }
    if (m_ctx.ui().ask("The Start Trigger Distance for this Consist is\ncurrently " + QString::number(*distance.value).toStdString() +
                           "  metres.Use new distance?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    bool ok = false;
    const double metres = m_trigger->text().trimmed().toDouble(&ok);
    if (!ok || metres < 0) {
        m_ctx.ui().message("Type the new distance in metres in the box beside Change Trigger Distance.", Icon::Warning);
        return;
    }
    if (const std::string refused = scenarios::setTriggerDistance(m_doc, row, metres); !refused.empty())
        m_ctx.ui().message(refused, Icon::Warning);
    else
        consistChanged();
}

void frmOstrand::fillFields() {
    m_filling = true;
    const scenarios::Fields f = scenarios::fieldsOf(m_doc);
    const std::string values[] = {f.displayName, f.description, f.briefing, f.startTime, f.durationMins, f.startDD,
                                  f.startMM,     f.startYYYY,   f.season,   f.weather.provider, f.weather.product,
                                  f.weather.blueprintId};
    for (std::size_t i = 0; i < m_text1.size(); ++i)
        m_text1[i]->setText(toQt(values[i]));
    m_season->setCurrentText(toQt(f.season));
    m_author->setText(toQt(f.author));
    m_location->setText(toQt(f.startLocation));
    showClassFields();
    m_filling = false;
}

void frmOstrand::showClassFields() {
    for (int i = 0; i < 5; ++i)
        if (kClassOrder[i] == m_cls)
            m_class->button(i)->setChecked(true);
    const bool author = scenarios::showsAuthor(m_cls), location = scenarios::showsStartLocation(m_cls);
    m_author->setVisible(author);
    m_authorLabel->setVisible(author);
    m_location->setVisible(location);
    m_locationLabel->setVisible(location);
}

bool frmOstrand::setClass(ScenarioClass cls) {
    if (cls == m_cls)
        return true;
    if (m_ctx.ui().ask(scenarios::kClassChangeWarning, Buttons::OkCancel, Icon::Warning) != Answer::Ok)
        return false;
    m_cls = cls;
    m_changed = true;
    showClassFields();
    return true;
}

scenarios::Fields frmOstrand::fields() const {
    scenarios::Fields f = scenarios::fieldsOf(m_doc);
    std::string* targets[] = {&f.displayName, &f.description, &f.briefing, &f.startTime, &f.durationMins,
                              &f.startDD,     &f.startMM,     &f.startYYYY, &f.season,   &f.weather.provider,
                              &f.weather.product, &f.weather.blueprintId};
    for (std::size_t i = 0; i < m_text1.size(); ++i)
        *targets[i] = fromQt(m_text1[i]->text());
    f.cls = m_cls;
    f.author = fromQt(m_author->text());
    f.startLocation = fromQt(m_location->text());
    f.changeAllConsists = m_allConsists->isChecked();
    return f;
}

void frmOstrand::List1_Click() {
    m_items->setRowCount(0);
    m_rowVehicle.clear();
    m_engineIndex->clear();
    const int row = m_consists->currentRow();
    if (row < 0 || row >= static_cast<int>(m_doc.consists.size()))
        return;
    const auto& consist = m_doc.consists[static_cast<std::size_t>(row)];
    const QColor tint = missingTint(m_items->palette());
    for (std::size_t index = 0; index < consist.vehicles.size(); ++index) {
        const auto& v = consist.vehicles[index];
        if (v.name.empty())
            continue;
        const int r = m_items->rowCount();
        m_items->insertRow(r);
        m_rowVehicle.push_back(static_cast<int>(index));
        const QString cells[] = {v.missing ? tr("missing") : QString(), toQt(v.name), toQt(v.number),
                                 toQt(fullId(v.blueprint)), toQt(fullId(v.reskin)),
                                 v.flipped == "1" ? tr("Reversed") : tr("Forward"),
                                 v.preloaded == "eTrue" ? tr("Loaded") : QString()};
        for (int c = 0; c < 7; ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            if (v.missing)
                item->setBackground(tint);
            m_items->setItem(r, c, item);
        }
    }
    if (m_items->rowCount() == 0) {
        m_items->insertRow(0);
        m_items->setItem(0, 1, new QTableWidgetItem(tr("Empty Consist")));
    }
    m_items->resizeColumnsToContents();
    m_itemCount->setText(tr("Items: %1").arg(consist.vehicles.size()));
    if (!consist.driverEngineIndex.empty() && consist.driverEngineIndex != "-1")
        m_engineIndex->setText(tr("Driven Loco Index ") + toQt(consist.driverEngineIndex));
}

void frmOstrand::showItem(int row) {
    m_tips->clear();
    m_tipTime->clear();
    m_tipNumber->clear();
    const int c = m_consists->currentRow();
    if (c < 0 || c >= static_cast<int>(m_doc.consists.size()) || row < 0)
        return;
    const auto& consist = m_doc.consists[static_cast<std::size_t>(c)];
    // The grid leaves nameless entries out: count named ones to the row.
    int named = -1;
    for (const auto& v : consist.vehicles) {
        if (v.name.empty() || ++named != row)
            continue;
        QStringList lines = {QString::fromStdString((m_ctx.railWorks() / "Assets").string()) + "\\" + toQt(v.path),
                             v.loadable ? "Loadable = True" : "Loadable = False",
                             v.preloaded == "eTrue" ? "Loaded = True" : "Loaded = False",
                             v.flipped == "1" ? "Orientation = Reversed" : "Orientation = Forward",
                             "Consist Dir. = " + toQt(consist.dir), toQt(v.destination), toQt(v.name)};
        if (v.missing)
            lines.prepend(tr("MISSING: no such blueprint below Assets"));
        m_tips->setText(lines.join('\n'));
        m_tipTime->setText(toQt(v.startTime));
        m_tipNumber->setText(toQt(v.number));
        bool ok = false;
        const int cls = toQt(consist.serviceClass).toInt(&ok);
        if (ok && cls >= 0 && cls < m_tipClass->count())
            m_tipClass->setCurrentIndex(cls);
        return;
    }
}

QStringList frmOstrand::details() const { return m_tips->text().split('\n', Qt::SkipEmptyParts); }

bool frmOstrand::Command1_Click() {
    const scenarios::SaveResult result = scenarios::saveScenario(m_ctx, m_doc, fields());
    if (!result) {
        m_ctx.ui().message(result.message, Icon::Warning);
        return false;
    }
    // Saved: the screen holds nothing more to save, only Exit is left.
    m_saved = true;
    m_save->setEnabled(false);
    m_exit->setText(tr("Exit"));
    for (QWidget* w : findChildren<QLineEdit*>())
        w->setEnabled(false);
    m_ctx.ui().message(result.message);
    return true;
}

void frmOstrand::Command2_Click() { close(); }

void frmOstrand::closeEvent(QCloseEvent* event) {
    if (m_changed && !m_saved &&
        m_ctx.ui().ask("You have made changes to this Scenario, but have not saved them.\nDo you really wish to exit?",
                       Buttons::YesNo) != Answer::Yes) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void frmOstrand::Command3_Click() {
    scenarios::Reference current{fromQt(m_text1[9]->text()), fromQt(m_text1[10]->text()), {}};
    const auto folder = scenarios::weatherFolder(m_ctx, current);
    FileRequest request{"Set Weather", folder ? *folder : m_ctx.railWorks() / "Assets", "All Files (*.*)|*.*", false};
    const auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen)
        return;
    // The levels behind the last "Assets" are the provider, the product and the blueprint.
    std::vector<std::string> parts;
    for (const auto& part : *chosen)
        parts.push_back(part.string());
    std::size_t assets = parts.size();
    for (std::size_t i = 0; i < parts.size(); ++i)
        if (iequals(parts[i], "Assets"))
            assets = i;
    if (assets + 3 >= parts.size()) {
        m_ctx.ui().message(chosen->string() + ": not a file below the simulator's Assets folder", Icon::Warning);
        return;
    }
    std::string blueprint;
    for (std::size_t i = assets + 3; i < parts.size(); ++i)
        blueprint += (blueprint.empty() ? "" : "\\") + parts[i];
    if (iendsWith(blueprint, "bin"))
        blueprint = blueprint.substr(0, blueprint.size() - 3) + "xml";
    m_text1[9]->setText(toQt(parts[assets + 1]));
    m_text1[10]->setText(toQt(parts[assets + 2]));
    m_text1[11]->setText(toQt(blueprint));
}

void frmOstrand::mnuMFR_Click() {
    frmReport* report = frmReport::show(m_ctx, tr("Missing files"), m_missingReport.empty() ? "No missing files" : m_missingReport, this);
    std::vector<int> lines;
    int line = 0;
    for (std::size_t at = 0; at < m_missingReport.size(); ++line) {
        const auto end = m_missingReport.find('\n', at);
        if (line > 0 && end != at)
            lines.push_back(line);
        if (end == std::string::npos)
            break;
        at = end + 1;
    }
    report->markMissing(lines, true);
    m_missingReport.clear();
}

void frmOstrand::Command28_Click() {
    std::string refused;
    const std::string text = scenarios::looseConsistText(m_doc, m_consists->currentRow(), refused);
    if (!refused.empty()) {
        m_ctx.ui().message(refused);
        return;
    }
    const std::filesystem::path folder = m_ctx.appPath() / "SavedFiles";
    MakePath(folder);
    const auto file = m_ctx.ui().chooseFile({"Save Loose Consist", folder, "txt Files (*.txt)|*.txt", true});
    if (!file || file->empty())
        return;
    JournalCommand command(&m_ctx.journal(), "Save Loose Consist " + file->string());
    const WriteResult written = m_ctx.files().write(*file, text);
    if (!written)
        m_ctx.ui().message(written.message, Icon::Warning);
}

void frmOstrand::Command29_Click() {
    if (m_ctx.ui().ask("Note: A saved Loose Consist can only be inserted into\nthe same location as it was originally "
                       "standing...\nDo you wish to do this?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    const std::filesystem::path folder = m_ctx.appPath() / "SavedFiles";
    if (!FolderExists(folder)) {
        m_ctx.ui().message("You have no Saved Files to insert?");
        return;
    }
    const auto file = m_ctx.ui().chooseFile({"Get Loose Consist", folder, "txt Files (*.txt)|*.txt", false});
    if (!file || file->empty())
        return;
    if (!FileExists(*file)) {
        m_ctx.ui().message(file->string() + ": the file does not exist or cannot be read", Icon::Warning);
        return;
    }
    if (const std::string refused = scenarios::insertLooseConsist(m_doc, ReadTextFile(*file)); !refused.empty()) {
        m_ctx.ui().message(file->string() + ": " + refused, Icon::Warning);
        return;
    }
    m_changed = true;
    fillConsists();
    m_ctx.ui().message(scenarios::kLooseInserted);
}

void frmOstrand::Command10_Click() { swapStock(Swap::One); }
void frmOstrand::Command7_Click() { swapStock(Swap::Identical); }
void frmOstrand::Command22_Click() { swapStock(Swap::Every); }

frmIndex* frmOstrand::indexScreen() const { return m_index; }

void frmOstrand::Command8_Click() {
    m_useIndexFile = true;
    if (!m_index) {
        auto* index = new frmIndex(m_ctx, this);
        index->setAttribute(Qt::WA_DeleteOnClose);
        if (!index->loaded()) { // it has said that there is no index
            delete index;
            m_useIndexFile = false;
            return;
        }
        index->setChooser([this](const std::vector<std::string>& cells) { chooseFromIndex(cells); });
        m_index = index;
    }
    m_index->show();
    m_index->raise();
}

void frmOstrand::chooseFromIndex(const std::vector<std::string>& cells) {
    if (!m_useIndexFile)
        return;
    std::string problem;
    auto stock = scenarios::chooseIndexStock(m_ctx, cells, problem);
    if (!stock) {
        m_ctx.ui().message(problem, Icon::Warning);
        return;
    }
    m_stockPicture->clear();
    m_stockLabel->setText(toQt(scenarios::chosenStockPath(m_ctx, *stock)));
    m_indexStock = std::move(stock);
}

std::optional<frmOstrand::SwapChoice> frmOstrand::swapChoice() {
    const int stockRow = m_stock->currentRow();
    const bool fromIndex = m_useIndexFile && m_indexStock;
    if (!fromIndex && (stockRow < 0 || static_cast<std::size_t>(stockRow) >= m_stockTables.size())) {
        m_ctx.ui().message("You have not selected any rolling-stock?");
        return std::nullopt;
    }
    const auto vehicles = selectedVehicles();
    const int consist = m_consists->currentRow();
    if (vehicles.empty() || consist < 0) {
        m_ctx.ui().message("You have not selected an item to swap?");
        return std::nullopt;
    }
    std::string problem;
    auto stock = fromIndex ? m_indexStock
                           : scenarios::chooseStock(m_ctx, m_stockTables.StockFiles[static_cast<std::size_t>(stockRow)], problem);
    if (!stock) {
        m_ctx.ui().message(problem, Icon::Warning);
        return std::nullopt;
    }
    // A copy: the swap reads the tables again, and a name held by reference would go with them.
    std::string name = m_doc.consists[static_cast<std::size_t>(consist)].vehicles[static_cast<std::size_t>(vehicles.front())].name;
    return SwapChoice{std::move(*stock), consist, vehicles.front(), std::move(name)};
}

void frmOstrand::swapStock(Swap kind) {
    const auto choice = swapChoice();
    if (!choice)
        return;
    const auto& [stock, consist, vehicle, name] = *choice;
    scenarios::SwapOptions options;
    options.keepNumbers = m_keepNumbers->isChecked();
    const scenarios::SwapResult r =
        kind == Swap::One         ? scenarios::swapVehicle(m_ctx, m_doc, consist, vehicle, stock, options)
        : kind == Swap::Identical ? scenarios::swapIdentical(m_ctx, m_doc, consist, vehicle, stock, options)
                                  : scenarios::swapEveryConsist(m_ctx, m_doc, name, stock, options);
    edited(r.error, kind == Swap::Every ? scenarios::kAllSwapped : scenarios::kConsistSwapped);
}

void frmOstrand::Command20_Click() {
    const auto choice = swapChoice();
    if (!choice)
        return;
    // The route of this scenario: <route>\Scenarios\<scenario>.
    const std::filesystem::path routeFolder = m_doc.folder.parent_path().parent_path();
    std::optional<routes::RouteEntry> route;
    for (const auto& r : routes::listRoutes(m_ctx))
        if (r.path == routeFolder)
            route = r;
    if (!route) {
        m_ctx.ui().message(routeFolder.string() + ": the scenario's route is not among the routes listed.", Icon::Warning);
        return;
    }
    // Every scenario is read from its file, this one too: what has not been saved here is not kept.
    if (m_changed && m_ctx.ui().ask("This scenario has changes that have not been saved; the swap in all scenarios "
                                    "works on the saved files and the changes will be lost.\nDo you wish to go on?",
                                    Buttons::YesNo) != Answer::Yes)
        return;
    scenarios::BatchOptions options;
    options.swap.keepNumbers = m_keepNumbers->isChecked();
    const scenarios::BatchResult result =
        runBatchSwap(m_ctx, "Swap in ALL Scenarios for this route", options, [&](const scenarios::BatchOptions& o) {
            return scenarios::swapInAllScenarios(m_ctx, *route, choice->name, choice->stock, o);
        });
    if (!result) {
        showBatchReport(m_ctx, result, tr("Swap in ALL Scenarios for this route"), parentWidget());
        m_ctx.ui().message(result.message, result.stopped ? Icon::Information : Icon::Warning);
        return;
    }
    m_ctx.ui().message(result.message);
    m_saved = true;
    m_changed = false;
    Command2_Click();
}

} // namespace velmora::ui
