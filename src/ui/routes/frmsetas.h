#pragma once
// frmSetAS: Set Up Developer Folders. The Source and Assets trees of a new provider and product.

#include "velmora/core/appcontext.h"

#include <QDialog>

class QLineEdit;

namespace velmora::ui {

class frmSetAS : public QDialog {
    Q_OBJECT
public:
    explicit frmSetAS(AppContext& ctx, QWidget* parent = nullptr);
    QLineEdit* provider() const { return m_text1; } // Text1
    QLineEdit* product() const { return m_text2; }  // Text2

public slots:
    void Command1_Click(); // Process

private:
    AppContext& m_ctx;
    QLineEdit* m_text1;
    QLineEdit* m_text2;
};

// Set Up Sub- Folders: the developer folders inside a folder the user chooses.
void mnuDevFolders_Click(AppContext& ctx);

} // namespace velmora::ui
