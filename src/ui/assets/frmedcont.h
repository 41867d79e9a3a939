#pragma once
// frmEdCont, "Content Editor": one file of the content list, read or changed. Binary documents
// are shown as their XML and stored back through the conversion; text files are shown and
// stored as they are. Every store keeps the old file as its numbered backup and is one journal
// entry, so one undo takes it back.

#include "../common/doctext.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/document.h"

#include <QMainWindow>
#include <filesystem>

class QAction;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace velmora::ui {

class frmEdCont : public QMainWindow {
    Q_OBJECT
public:
    explicit frmEdCont(AppContext& ctx, QWidget* parent = nullptr);

    // How a file is opened, by its extension (letter case aside).
    enum class Reading { Binary, Texture, Text, None };
    static Reading readingOf(const std::filesystem::path& file);

    // Opens the file; false (after saying why) when it cannot be shown.
    bool openFile(const std::filesystem::path& file);
    const std::filesystem::path& file() const { return m_doc.path; }
    QPlainTextEdit* text() const { return m_text; }
    QAction* action(const QString& name) const;

public slots:
    void mnuSave_Click();    // Save TS2017 Files
    void mnuSavexml_Click(); // Save .xml/.html/.txt files
    void Command1_Click();   // Display Image

signals:
    // A store finished; `ok` says whether the file on disk now holds the text.
    void saved(bool ok);

private:
    bool storeText();
    void clear();

    AppContext& m_ctx;
    EditorDocument m_doc;
    Reading m_reading = Reading::None;
    TextForm m_form;
    std::string m_textureXml;         // the texture's document, for Display Image
    QLineEdit* m_name = nullptr;      // Text1
    QPlainTextEdit* m_text = nullptr; // RTB1
    QPushButton* m_image = nullptr;   // Command1
    QLabel* m_picture = nullptr;
    QLabel* m_status = nullptr;
};

} // namespace velmora::ui
