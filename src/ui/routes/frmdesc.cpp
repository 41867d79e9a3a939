#include "frmdesc.h"

#include "pictureimage.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

QHBoxLayout* browseRow(QLineEdit* edit, QPushButton* button) {
    auto* row = new QHBoxLayout;
    row->addWidget(edit, 1);
    row->addWidget(button);
    return row;
}

} // namespace

frmDesc::frmDesc(AppContext& ctx, const routes::RouteEntry& route, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_route(route) {
    setObjectName("frmDesc");
    setWindowTitle(tr("Route Description") + " - " + toQt(route.name));
    rememberPlace(ctx, this, objectName(), {700, 560});
    m_title = new QLineEdit;
    m_title->setObjectName("Text1");
    m_subTitle = new QLineEdit;
    m_subTitle->setObjectName("Text2");
    auto* form = new QFormLayout;
    form->addRow(tr("Title"), m_title);
    form->addRow(tr("Sub-Title"), m_subTitle);
    for (int i = 0; i < 3; ++i) {
        auto* para = new QPlainTextEdit;
        para->setObjectName(QString("Text%1").arg(i + 3));
        m_paras[static_cast<std::size_t>(i)] = para;
        form->addRow(tr("Para%1").arg(i + 1), para);
    }
    auto* save = new QPushButton(tr("Save Description"));
    save->setObjectName("Command1");
    connect(save, &QPushButton::clicked, this, &frmDesc::Command1_Click);
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("(Empty boxes will be ignored)")));
    row->addStretch(1);
    row->addWidget(save);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(row);
}

void frmDesc::Command1_Click() {
    const std::array<std::string, 5> texts{fromQt(m_title->text()), fromQt(m_subTitle->text()),
                                           fromQt(m_paras[0]->toPlainText()), fromQt(m_paras[1]->toPlainText()),
                                           fromQt(m_paras[2]->toPlainText())};
    const routes::RouteJob job = routes::writeDescription(m_ctx, m_route, texts);
    m_ctx.ui().message(job.message, job.ok ? Icon::Information : Icon::Warning);
}

frmThumbnail::frmThumbnail(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmThumbnail");
    setWindowTitle(tr("Route Loading Picture"));
    rememberPlace(ctx, this, objectName(), {760, 420});
    m_text1 = new QLineEdit;
    m_text1->setObjectName("Text1");
    m_text2 = new QLineEdit;
    m_text2->setObjectName("Text2");
    m_text = new QLineEdit(toQt(ctx.settings.preloadFolder));
    m_text->setObjectName("Text");
    auto* pickPicture = new QPushButton(tr("Browse..."));
    pickPicture->setObjectName("cmdPicture");
    connect(pickPicture, &QPushButton::clicked, this, [this] {
        if (const auto file = m_ctx.ui().chooseFile(
                {"Select your DDS picture", {}, "DDS picture (*.dds)|*.dds|Other pictures (*.png;*.jpg;*.jpeg;*.bmp)|*.png;*.jpg;*.jpeg;*.bmp"}))
            m_text1->setText(toQt(file->string()));
    });
    auto* pickFolder = new QPushButton(tr("Browse..."));
    pickFolder->setObjectName("cmdPreLoad");
    connect(pickFolder, &QPushButton::clicked, this, [this] {
        if (const auto folder = m_ctx.ui().chooseFolder("Select your PreLoad folder", fromQt(m_text->text())))
            m_text->setText(toQt(folder->string()));
    });
    auto* form = new QFormLayout;
    form->addRow(tr("DDS picture (256 x 128, DXT1, 6 mipmaps), or any other picture to be scaled"),
                 browseRow(m_text1, pickPicture));
    form->addRow(tr("PreLoad folder"), browseRow(m_text, pickFolder));
    form->addRow(tr("MetaData file name (no spaces or suffix)          e.g. BordersMetadata"), m_text2);
    m_flags = new BrowseFlagsBox(false, this);
    auto* process = new QPushButton(tr("Process"));
    process->setObjectName("Command1");
    connect(process, &QPushButton::clicked, this, &frmThumbnail::Command1_Click);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(process);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_flags);
    layout->addLayout(row);
}

void frmThumbnail::Command1_Click() {
    routes::ThumbnailRequest r;
    r.dds = fromQt(m_text1->text().trimmed());
    textures::Image picture;
    if (!r.dds.empty() && !iequals(r.dds.extension().string(), ".dds")) {
        std::string error;
        picture = textures::readPictureFile(r.dds, error);
        if (!picture.valid()) {
            m_ctx.ui().message(error, Icon::Warning);
            return;
        }
        r.picture = &picture;
    }
    r.preload = fromQt(m_text->text().trimmed());
    r.metadata = fromQt(m_text2->text().trimmed());
    r.flags = m_flags->flags();
    const routes::RouteJob job = routes::makeThumbnail(m_ctx, r);
    m_ctx.ui().message(job.message, job.ok ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
