#include "frmscenario.h"

#include "../common/backgroundjob.h"
#include "commandrow.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/instructions.h"
#include "velmora/scenarios/scenariosave.h"
#include "velmora/scenarios/workorder.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QTableWidget>
#include <QTextDocument>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

using scenarios::ScenarioClass;

// Text1(0) to Text1(7), as the screen captions them.
const char* const kFieldCaptions[] = {"Display Name:",        "Description",     "Briefing",
                                      "Start Time (24 hour)", "Duration (mins)", "Date (dd/mm/yyyy)",
                                      "Season",               "Weather Blueprint"};

// This screen offers only these two classes.
const ScenarioClass kClasses[] = {ScenarioClass::Standard, ScenarioClass::Timetable};

} // namespace

frmScenario::frmScenario(AppContext& ctx, scenarios::ScenarioRef ref, scenarios::ScenarioDocument doc, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_ref(std::move(ref)), m_doc(std::move(doc)) {
    setObjectName("frmScenario");
    setWindowTitle(tr("Display Details of Selected Scenario") + " - " + toQt(m_doc.properties.displayName));

    auto* form = new QFormLayout;
    for (std::size_t i = 0; i < m_text1.size(); ++i) {
        m_text1[i] = new QLineEdit;
        m_text1[i]->setObjectName(QString("Text1_%1").arg(i));
        m_text1[i]->setReadOnly(true);
        form->addRow(tr(kFieldCaptions[i]), m_text1[i]);
    }
    m_driven = new QLineEdit;
    m_driven->setObjectName("Text2");
    m_driven->setReadOnly(true);
    m_consists = new QListWidget;
    m_consists->setObjectName("List1");
    auto* classes = new QGroupBox(tr("Scenario class"));
    classes->setObjectName("Option2");
    auto* classLayout = new QVBoxLayout(classes);
    m_class = new QButtonGroup(this);
    for (int i = 0; i < 2; ++i) {
        auto* option = new QRadioButton(toQt(scenarios::classCaption(kClasses[i])));
        m_class->addButton(option, i);
        classLayout->addWidget(option);
    }
    connect(m_class, &QButtonGroup::idClicked, this, [this](int id) {
        if (!setClass(kClasses[id]))
            showClass();
    });
    auto* side = new QWidget;
    auto* sideLayout = new QVBoxLayout(side);
    sideLayout->addLayout(form);
    sideLayout->addWidget(classes);
    sideLayout->addWidget(new QLabel(tr("Players Consist:-")));
    sideLayout->addWidget(m_driven);
    sideLayout->addWidget(m_consists, 1);

    m_grid = new QTableWidget;
    m_grid->setObjectName("VSFG1");
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setWordWrap(false);
    m_grid->horizontalHeader()->setVisible(false);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        const QModelIndex index = m_grid->indexAt(at);
        if (index.isValid())
            VSFG1_MouseDown(index.row(), index.column());
    });
    m_scroll = new QPlainTextEdit;
    m_scroll->setObjectName("txtScroll");
    m_scroll->setReadOnly(true);
    m_scroll->setMaximumHeight(90);
    auto* middle = new QWidget;
    auto* middleLayout = new QVBoxLayout(middle);
    middleLayout->addWidget(m_grid, 1);
    middleLayout->addWidget(new QLabel(tr("Right click on any cell to see its contents in") + tr(" the box below")));
    middleLayout->addWidget(m_scroll);

    auto* split = new QSplitter;
    split->addWidget(side);
    split->addWidget(middle);
    split->setStretchFactor(1, 3);

    QHBoxLayout* buttons = commandRow<frmScenario>(this, {{"Command2", "Save to Excel", &frmScenario::Command2_Click},
                                                          {"Command3", "&Print", &frmScenario::Command3_Click},
                                                          {"Command1", "&Exit", &frmScenario::Command1_Click}});

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(split, 1);
    layout->addLayout(buttons);
    rememberPlace(m_ctx, this, objectName(), {1300, 800});

    fillFields();
    fillGrid();
}

void frmScenario::fillFields() {
    const scenarios::Properties& p = m_doc.properties;
    const std::string date = p.startDD + "/" + p.startMM + "/" + p.startYYYY;
    const std::string values[] = {p.displayName, p.description, p.briefing, p.startTime,
                                  p.durationMins, date,         p.season,   p.weather.blueprintId};
    for (std::size_t i = 0; i < m_text1.size(); ++i)
        m_text1[i]->setText(toQt(values[i]));
    m_consists->clear();
    m_driven->clear();
    for (std::size_t c = 0; c < m_doc.consists.size(); ++c) {
        m_consists->addItem(toQt(m_doc.consists[c].serviceName));
        if (static_cast<int>(c) == m_doc.drivenConsist)
            m_driven->setText(toQt(m_doc.consists[c].serviceName));
    }
    showClass();
}

void frmScenario::showClass() {
    // A class this screen does not offer leaves both options clear.
    m_class->setExclusive(false);
    for (int i = 0; i < 2; ++i)
        m_class->button(i)->setChecked(m_doc.cls() == kClasses[i]);
    m_class->setExclusive(true);
}

void frmScenario::fillGrid() {
    m_details = scenarios::detailsGrid(m_doc, m_index ? &*m_index : nullptr, scenarios::documentLanguage(m_ctx));
    m_grid->clear();
    m_grid->setRowCount(static_cast<int>(m_details.rows.size()));
    m_grid->setColumnCount(static_cast<int>(m_details.columns()));
    for (std::size_t r = 0; r < m_details.rows.size(); ++r)
        for (std::size_t c = 0; c < m_details.rows[r].size(); ++c) {
            auto* item = new QTableWidgetItem(toQt(m_details.rows[r][c]));
            if (c == 0) {
                QFont bold = item->font();
                bold.setBold(true);
                item->setFont(bold);
            }
            m_grid->setItem(static_cast<int>(r), static_cast<int>(c), item);
        }
    m_grid->resizeColumnsToContents();
    for (int c = 0; c < m_grid->columnCount(); ++c)
        m_grid->setColumnWidth(c, std::min(m_grid->columnWidth(c), 320));
}

void frmScenario::loadLocations() {
    const std::filesystem::path file = scenarios::trackIndexFile(m_ctx, m_ref.route.folder);
    if (auto index = scenarios::readTrackIndex(file)) {
        m_index = std::move(index);
        fillGrid();
        return;
    }
    if (m_ctx.ui().ask("About to index this route's tracks.bin file.\nThis may take some time.", Buttons::OkCancel,
                       Icon::Information) != Answer::Ok)
        return;
    scenarios::IndexResult built;
    const bool finished = runInBackground(m_ctx, "Indexing the route's tracks", [&](UserInterface& ui) {
        ui.beginProgress("Indexing the route's tracks", 1000);
        built = scenarios::buildTrackIndex(m_ctx, m_ref.route.path, file, [&](std::int64_t done, std::int64_t total) {
            ui.progress(total ? done * 1000 / total : 0, {});
            return !ui.cancelled();
        });
    });
    if (!finished || built.stopped) {
        m_ctx.ui().message("The indexing was stopped: the grid shows no locations.");
        return;
    }
    if (!built) {
        m_ctx.ui().message(built.message, Icon::Warning);
        return;
    }
    m_index = std::move(built.index);
    fillGrid();
}

void frmScenario::VSFG1_MouseDown(int row, int column) {
    const QTableWidgetItem* item = m_grid->item(row, column);
    m_scroll->setPlainText(item ? item->text() : QString());
}

void frmScenario::Command2_Click() {
    MakePath(m_ctx.reports());
    const auto chosen = m_ctx.ui().chooseFile({"Save Grid as File", m_ctx.reports(), scenarios::kGridFilter, true});
    if (!chosen)
        return;
    std::filesystem::path file = *chosen;
    // The dialog may leave the ending off: comma-separated then.
    if (assets::listFormOf(file) == assets::ListForm::Unknown)
        file += ".csv";
    JournalCommand command(&m_ctx.journal(), "Save Grid as File " + file.filename().string());
    std::string error;
    if (!scenarios::saveDetailsGrid(m_ctx.files(), file, m_details, &error))
        m_ctx.ui().message(error, Icon::Warning);
}

void frmScenario::printTo(QPrinter& printer) const {
    // The grid as a table, the labels in bold.
    std::string html = "<h3>" + scenarios::htmlText(m_doc.properties.displayName) +
                       "</h3><table border=\"1\" cellspacing=\"0\" cellpadding=\"2\">";
    for (const auto& row : m_details.rows) {
        html += "<tr>";
        for (std::size_t c = 0; c < row.size(); ++c)
            html += (c == 0 ? "<td><b>" : "<td>") + scenarios::htmlText(row[c]) + (c == 0 ? "</b></td>" : "</td>");
        html += "</tr>";
    }
    html += "</table>";
    QTextDocument document;
    document.setHtml(QString::fromStdString(html));
    document.print(&printer);
}

void frmScenario::Command3_Click() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        printTo(printer);
}

void frmScenario::Command1_Click() { close(); }

bool frmScenario::setClass(ScenarioClass cls) {
    if (cls == m_doc.cls())
        return false;
    if (m_ctx.ui().ask(scenarios::kClassChangeWarning, Buttons::OkCancel, Icon::Warning) != Answer::Ok)
        return false;
    scenarios::Fields fields = scenarios::fieldsOf(m_doc);
    fields.cls = cls;
    const scenarios::SaveResult saved = scenarios::saveScenario(m_ctx, m_doc, fields);
    m_ctx.ui().message(saved.message, saved ? Icon::Information : Icon::Warning);
    if (!saved)
        return false;
    // The screen goes on with the scenario as it now stands on disk.
    scenarios::ScenarioDocument reopened = scenarios::openScenario(m_ctx, m_ref.folder);
    if (reopened.ok())
        m_doc = std::move(reopened);
    fillFields();
    fillGrid();
    return true;
}

} // namespace velmora::ui
