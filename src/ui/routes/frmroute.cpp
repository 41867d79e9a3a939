#include "frmroute.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/core/userinterface.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

frmRoute::frmRoute(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmRoute");
    setWindowTitle(tr("Direct Route Setup"));
    rememberPlace(ctx, this, objectName(), {900, 560});
    auto* top = new QGridLayout;
    const char* labels[3] = {"Route Template name", "Provider", "Product"};
    for (int i = 0; i < 3; ++i) {
        m_text1[static_cast<std::size_t>(i)] = new QLineEdit;
        m_text1[static_cast<std::size_t>(i)]->setObjectName(QString("Text1_%1").arg(i));
        top->addWidget(new QLabel(tr(labels[i])), 0, i);
        top->addWidget(m_text1[static_cast<std::size_t>(i)], 1, i);
    }
    auto* items = new QGridLayout;
    items->addWidget(new QLabel(tr("Provider")), 0, 1);
    items->addWidget(new QLabel(tr("Product")), 0, 2);
    items->addWidget(new QLabel(tr("Path")), 0, 3);
    const auto defaults = routes::defaultTemplateItems();
    for (int i = 0; i < routes::kTemplateSlots; ++i) {
        const auto k = static_cast<std::size_t>(i);
        auto* pick = new QPushButton(tr(routes::slotName(i)));
        pick->setObjectName(QString("Command3_%1").arg(i));
        connect(pick, &QPushButton::clicked, this, [this, i] { Command3_Click(i); });
        items->addWidget(pick, i + 1, 0);
        std::array<QLineEdit*, routes::kTemplateSlots>* columns[3] = {&m_text2, &m_text3, &m_text4};
        const std::string values[3] = {defaults[k].provider, defaults[k].product, defaults[k].path};
        for (int c = 0; c < 3; ++c) {
            auto* edit = new QLineEdit(toQt(values[c]));
            edit->setObjectName(QString("Text%1_%2").arg(c + 2).arg(i));
            (*columns[c])[k] = edit;
            items->addWidget(edit, i + 1, c + 1);
        }
    }
    items->setColumnStretch(3, 2);
    m_flags = new BrowseFlagsBox(true, this);
    auto* build = new QPushButton(tr("Build Template"));
    build->setObjectName("Command4");
    connect(build, &QPushButton::clicked, this, &frmRoute::Command4_Click);
    auto* abandon = new QPushButton(tr("Abandon"));
    abandon->setObjectName("Command2");
    connect(abandon, &QPushButton::clicked, this, &frmRoute::Command2_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(build);
    buttons->addWidget(abandon);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(items);
    layout->addWidget(m_flags);
    layout->addLayout(buttons);
}

routes::TemplateRequest frmRoute::request() const {
    routes::TemplateRequest r;
    r.name = fromQt(m_text1[0]->text().trimmed());
    r.provider = fromQt(m_text1[1]->text().trimmed());
    r.product = fromQt(m_text1[2]->text().trimmed());
    for (std::size_t i = 0; i < r.items.size(); ++i)
        r.items[i] = {fromQt(m_text2[i]->text().trimmed()), fromQt(m_text3[i]->text().trimmed()),
                      fromQt(m_text4[i]->text().trimmed())};
    r.flags = m_flags->flags();
    return r;
}

void frmRoute::Command3_Click(int item) {
    const std::string name = routes::slotName(item);
    FileRequest request{"Select " + name, routes::pickerFolder(m_ctx, item), name + " (*.bin)|*.bin"};
    const auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen)
        return;
    const auto picked = routes::itemFromPath(chosen->string());
    if (!picked) {
        m_ctx.ui().message(chosen->string() + ": the file does not lie in a product folder below Assets", Icon::Warning);
        return;
    }
    const auto k = static_cast<std::size_t>(item);
    m_text2[k]->setText(toQt(picked->provider));
    m_text3[k]->setText(toQt(picked->product));
    m_text4[k]->setText(toQt(picked->path));
}

void frmRoute::Command4_Click() {
    const routes::RouteJob job = routes::buildRouteTemplate(m_ctx, request());
    m_ctx.ui().message(job.message, job.ok ? Icon::Information : Icon::Warning);
}

void frmRoute::Command2_Click() { close(); }

} // namespace velmora::ui
