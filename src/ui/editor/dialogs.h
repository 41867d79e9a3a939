#pragma once
// Small dialogs of the main screen's Options and Tools menus.

#include "velmora/core/appcontext.h"

#include <QDialog>

class QListWidget;
class QLineEdit;
class QPlainTextEdit;

namespace velmora::ui {

// Lists Lang_*.txt; OK hands back the chosen file name.
class dlgLang : public QDialog {
    Q_OBJECT
public:
    dlgLang(const AppContext& ctx, QWidget* parent = nullptr);
    QString chosenFile() const;

private:
    QListWidget* m_list;
};

// The read-only list of the language and the paths in use.
class dlgOptions : public QDialog {
    Q_OBJECT
public:
    dlgOptions(const AppContext& ctx, QWidget* parent = nullptr);
};

// New identifiers in the forms the documents use.
class dlgGUID : public QDialog {
    Q_OBJECT
public:
    explicit dlgGUID(QWidget* parent = nullptr);
    QString text() const;

private:
    QPlainTextEdit* m_text;
};

// A simulator time in seconds as hours and minutes.
class dlgTime : public QDialog {
    Q_OBJECT
public:
    explicit dlgTime(QWidget* parent = nullptr);

private:
    QLineEdit* m_seconds;
    QLineEdit* m_result;
};

} // namespace velmora::ui
