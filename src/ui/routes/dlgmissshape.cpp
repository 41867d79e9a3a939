#include "dlgmissshape.h"

#include "../common/desktopui.h"

#include "velmora/core/services.h"

#include <algorithm>

#include <QButtonGroup>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace velmora::ui {

dlgMissShape::dlgMissShape(AppContext& ctx, const MissShape& prefill, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("dlgMissShape");
    setWindowTitle(tr("Substitute for a missing Asset."));
    const std::string values[6] = {prefill.missing.provider,     prefill.missing.product,     prefill.missing.path,
                                   prefill.replacement.provider, prefill.replacement.product, prefill.replacement.path};
    for (int i = 0; i < 6; ++i) {
        m_text[static_cast<std::size_t>(i)] = new QLineEdit(toQt(values[i]));
        m_text[static_cast<std::size_t>(i)]->setObjectName(QString("Text%1").arg(i + 1));
        m_text[static_cast<std::size_t>(i)]->setMinimumWidth(380);
    }
    for (int i = 0; i < 3; ++i)
        m_text[static_cast<std::size_t>(i)]->setReadOnly(true);
    auto* missing = new QGroupBox(tr("Missing Asset"));
    auto* missingForm = new QFormLayout(missing);
    auto* replacement = new QGroupBox(tr("Replace with"));
    auto* replacementForm = new QFormLayout(replacement);
    const char* labels[3] = {"Provider", "Product", "Path"};
    for (int i = 0; i < 3; ++i) {
        missingForm->addRow(tr(labels[i]), m_text[static_cast<std::size_t>(i)]);
        replacementForm->addRow(tr(labels[i]), m_text[static_cast<std::size_t>(i + 3)]);
    }
    auto button = [this](const char* name, const QString& text) {
        auto* b = new QPushButton(text);
        b->setObjectName(name);
        return b;
    };
    QPushButton* browseNew = button("Command1", tr("Browse..."));
    QPushButton* browseMissing = button("Command2", tr("Browse..."));
    missingForm->addRow(QString(), browseMissing);
    replacementForm->addRow(QString(), browseNew);
    connect(browseNew, &QPushButton::clicked, this, &dlgMissShape::Command1_Click);
    connect(browseMissing, &QPushButton::clicked, this, &dlgMissShape::Command2_Click);

    auto* kinds = new QGroupBox(tr("This Asset is :-"));
    auto* kindRow = new QHBoxLayout(kinds);
    auto* group = new QButtonGroup(this);
    const char* captions[4] = {"Scenery Item", "Loft Item", "Road Item", "Track Item"};
    for (int i = 0; i < 4; ++i) {
        auto* option = new QRadioButton(tr(captions[i]));
        option->setObjectName(QString("Option1_%1").arg(i));
        group->addButton(option, i);
        kindRow->addWidget(option);
        m_option[static_cast<std::size_t>(i)] = option;
    }
    m_option[static_cast<std::size_t>(static_cast<int>(prefill.kind) - 1)]->setChecked(true);

    QPushButton* ok = button("OKButton", tr("OK"));
    ok->setDefault(true);
    QPushButton* cancel = button("Command3", tr("Cancel"));
    connect(ok, &QPushButton::clicked, this, &dlgMissShape::OKButton_Click);
    connect(cancel, &QPushButton::clicked, this, &dlgMissShape::Command3_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(missing);
    layout->addWidget(replacement);
    layout->addWidget(kinds);
    layout->addLayout(buttons);
}

std::optional<routes::AssetName> dlgMissShape::browse() {
    const FileRequest request{"Select .bin file", m_ctx.railWorks() / "Assets", ".bin Files (*.bin)|*.bin", false};
    const auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return std::nullopt;
    const auto name = routes::assetNameFromMissing(chosen->string());
    if (!name)
        m_ctx.ui().message(chosen->string() + " is not a blueprint below the Assets folder.", Icon::Warning);
    return name;
}

void dlgMissShape::Command1_Click() {
    if (const auto n = browse()) {
        m_text[3]->setText(toQt(n->provider));
        m_text[4]->setText(toQt(n->product));
        m_text[5]->setText(toQt(n->path));
    }
}

void dlgMissShape::Command2_Click() {
    if (const auto n = browse()) {
        m_text[0]->setText(toQt(n->provider));
        m_text[1]->setText(toQt(n->product));
        m_text[2]->setText(toQt(n->path));
    }
}

void dlgMissShape::Command3_Click() {
    m_result.reset();
    reject();
}

void dlgMissShape::OKButton_Click() {
    MissShape s;
    auto text = [this](std::size_t i) { return fromQt(m_text[i]->text().trimmed()); };
    s.missing = {text(0), text(1), text(2)};
    s.replacement = {text(3), text(4), text(5)};
    std::replace(s.replacement.path.begin(), s.replacement.path.end(), '/', '\\');
    if (s.replacement.path.size() > 4 && iendsWith(s.replacement.path, ".bin"))
        s.replacement.path.replace(s.replacement.path.size() - 3, 3, "xml");
    for (std::size_t i = 0; i < m_option.size(); ++i)
        if (m_option[i]->isChecked())
            s.kind = static_cast<routes::ItemKind>(i + 1);
    m_result = s;
    accept();
}

} // namespace velmora::ui
