#pragma once
// frmEdQD: a Quick Drive consist edited in place — its display and locomotive names, era,
// drivable flag, consist type, and the routes on which it may run as AI traffic.

#include "velmora/core/appcontext.h"

#include <QDialog>

#include <filesystem>
#include <string>
#include <vector>

class QComboBox;
class QLineEdit;
class QListWidget;

namespace velmora::ui {

class frmEdQD : public QDialog {
    Q_OBJECT
public:
    frmEdQD(AppContext& ctx, const std::filesystem::path& file, QWidget* parent = nullptr);
    // False (after saying why) when the document could not be read as a consist.
    bool loaded() const { return m_loaded; }

    void Command3_Click(); // Add Selected Route(s)
    void Command2_Click(); // Remove Selected Route(s)
    void Command4_Click(); // Save

    QLineEdit* field(int index) const; // Text1 to Text5
    QComboBox* consistType() const { return m_type; }
    QListWidget* routes() const { return m_routes; }
    QListWidget* installedRoutes() const { return m_installed; }
    QListWidget* contents() const { return m_contents; }

private:
    void addRoute(const std::string& folder);

    AppContext& m_ctx;
    std::filesystem::path m_file;
    QLineEdit* m_text[5];
    QComboBox* m_type;
    QListWidget* m_contents;
    QListWidget* m_routes;
    QListWidget* m_installed;
    bool m_loaded = false;
};

} // namespace velmora::ui
