#include "frmedcont.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "textureimage.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

namespace velmora::ui {

frmEdCont::frmEdCont(AppContext& ctx, QWidget* parent) : QMainWindow(parent), m_ctx(ctx) {
    setObjectName("frmEdCont");
    setWindowTitle(tr("Content Editor"));
    auto* central = new QWidget;
    setCentralWidget(central);
    m_name = new QLineEdit;
    m_name->setObjectName("Text1");
    m_name->setReadOnly(true);
    m_image = new QPushButton(caption(m_ctx, 65, "Display Image"));
    m_image->setObjectName("Command1");
    m_image->setVisible(false);
    connect(m_image, &QPushButton::clicked, this, &frmEdCont::Command1_Click);
    m_text = new QPlainTextEdit;
    m_text->setObjectName("RTB1");
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_picture = new QLabel;
    m_picture->setObjectName("Picture1");
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setVisible(false);
    m_status = new QLabel;
    statusBar()->addWidget(m_status, 1);

    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel(caption(m_ctx, 61, "File:")));
    top->addWidget(m_name, 1);
    top->addWidget(m_image);
    auto* layout = new QVBoxLayout(central);
    layout->addLayout(top);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_picture);

    QMenu* files = menuBar()->addMenu(tr("Files"));
    files->setObjectName("mnuFiles");
    QAction* save = files->addAction(tr("Save TS2017 Files"));
    save->setObjectName("mnuSave");
    connect(save, &QAction::triggered, this, &frmEdCont::mnuSave_Click);
    QAction* saveText = files->addAction(tr("Save .xml/.html/.txt files"));
    saveText->setObjectName("mnuTG");
    connect(saveText, &QAction::triggered, this, &frmEdCont::mnuSavexml_Click);
    files->addSeparator();
    QAction* exit = files->addAction(tr("Exit"));
    exit->setObjectName("mnuExit");
    connect(exit, &QAction::triggered, this, &QWidget::close);
    rememberPlace(m_ctx, this, objectName(), {1000, 760});
    clear();
}

QAction* frmEdCont::action(const QString& name) const {
    return findChild<QAction*>(name);
}

frmEdCont::Reading frmEdCont::readingOf(const std::filesystem::path& file) {
    std::string extension = file.extension().string();
    if (!extension.empty())
        extension.erase(0, 1);
    for (const char* e : {"bin", "XSec", "GeoPcDx", "proxybin"})
        if (iequals(extension, e))
            return Reading::Binary;
    if (iequals(extension, "TgPcDx"))
        return Reading::Texture;
    for (const char* e : {"xml", "txt", "lua", "lan"})
        if (iequals(extension, e))
            return Reading::Text;
    return Reading::None;
}

void frmEdCont::clear() {
    m_doc = {};
    m_reading = Reading::None;
    m_textureXml.clear();
    m_name->clear();
    m_text->clear();
    m_image->setVisible(false);
    m_picture->clear();
    m_picture->setVisible(false);
    for (const char* name : {"mnuSave", "mnuTG"})
        action(name)->setEnabled(false);
}

bool frmEdCont::openFile(const std::filesystem::path& file) {
    clear();
    const Reading reading = readingOf(file);
    if (reading == Reading::None) {
        m_ctx.ui().message(file.string() +
                               "\nThe Content Editor shows binary documents (.bin, .XSec, .GeoPcDx, "
                               ".proxybin), textures (.TgPcDx) and text files (.xml, .txt, .lua, .lan) only.",
                           Icon::Information, "Content Editor");
        return false;
    }
    std::string bytes;
    ConvertResult opened;
    if (reading == Reading::Text)
        opened = openXmlDocument(file, m_ctx.tempFiles(), m_doc, bytes);
    else // a texture goes to its own scratch folder, as the texture tools keep it
        opened = openBinaryDocument(
            file, reading == Reading::Texture ? m_ctx.appPath() / "TempDDS" : m_ctx.tempFiles(), m_doc,
            bytes);
    if (!opened) {
        clear();
        m_ctx.ui().message(opened.message, Icon::Warning, "Content Editor");
        return false;
    }
    m_reading = reading;
    m_name->setText(toQt(file.filename().string()));
    m_text->setPlainText(decodeDocument(bytes, m_form));
    m_text->document()->setModified(false);
    if (reading == Reading::Texture) {
        m_textureXml = std::move(bytes);
        m_image->setVisible(true);
    }
    action("mnuSave")->setEnabled(true);
    action("mnuTG")->setEnabled(reading == Reading::Text);
    m_status->setText(tr("File Opened: %1").arg(toQt(file.string())));
    return true;
}

void frmEdCont::Command1_Click() {
    std::string error;
    const QImage image = textureImage(textures::textureFromXml(m_textureXml, &error));
    if (image.isNull()) {
        m_ctx.ui().message(m_doc.path.string() + ": the picture cannot be shown. " + error, Icon::Warning,
                           "Content Editor");
        return;
    }
    m_picture->setPixmap(QPixmap::fromImage(image.scaled(512, 512, Qt::KeepAspectRatio)));
    m_picture->setVisible(true);
    m_status->setText(tr("%1 x %2").arg(image.width()).arg(image.height()));
}

bool frmEdCont::storeText() {
    JournalCommand command(&m_ctx.journal(), "Save " + m_doc.path.string());
    const WriteResult written = m_ctx.files().write(m_doc.path, documentBytes(m_text->document(), m_form));
    if (!written) {
        m_ctx.ui().message(written.message, Icon::Critical, "Content Editor");
        return false;
    }
    m_status->setText(tr("Saved %1").arg(toQt(m_doc.path.string())));
    return true;
}

void frmEdCont::mnuSave_Click() {
    if (m_reading == Reading::None)
        return;
    if (m_reading == Reading::Text) {
        emit saved(storeText());
        return;
    }
    JournalCommand command(&m_ctx.journal(), "Save " + m_doc.path.string());
    const SaveResult r =
        saveBinaryDocument(m_ctx.files(), m_doc, documentBytes(m_text->document(), m_form),
                           [this](const std::string& step) { m_status->setText(toQt(step)); });
    if (!r.ok)
        m_ctx.ui().message(r.message, Icon::Critical, "Content Editor");
    emit saved(r.ok);
}

void frmEdCont::mnuSavexml_Click() {
    // Written as it stands: only a text file, never a binary document shown as its XML.
    if (m_reading != Reading::Text)
        return;
    emit saved(storeText());
}

} // namespace velmora::ui
