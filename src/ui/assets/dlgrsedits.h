#pragma once
// The dialogs of the rolling-stock edits: dlgHead (a head-lamp template and a train type),
// dlgTail (a tail-lamp template) and dlgMass (the mass and capacity given to every selected
// wagon).

#include "velmora/assets/rsedits.h"

#include <QDialog>

#include <optional>
#include <utility>

class QLabel;
class QLineEdit;
class QListWidget;
class QTableWidget;

namespace velmora::ui {

class dlgHead : public QDialog {
    Q_OBJECT
public:
    explicit dlgHead(const assets::LampTable& table, QWidget* parent = nullptr);
    QListWidget* templates() const { return m_list1; }  // List1
    QListWidget* trainTypes() const { return m_list2; } // List2
    // The head-lamp template (index into the table's heads) and train type (index into
    // trainTypes()) chosen with OK; nothing after Cancel.
    const std::optional<std::pair<std::size_t, std::size_t>>& choice() const { return m_choice; }
    static std::optional<std::pair<std::size_t, std::size_t>> ask(const assets::LampTable& table, QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

private:
    QListWidget* m_list1 = nullptr;
    QListWidget* m_list2 = nullptr;
    std::optional<std::pair<std::size_t, std::size_t>> m_choice;
};

class dlgTail : public QDialog {
    Q_OBJECT
public:
    explicit dlgTail(const assets::LampTable& table, QWidget* parent = nullptr);
    QTableWidget* templates() const { return m_list1; } // List1: a row a template, its number hidden
    // The tail-lamp template (index into the table's tails) chosen with OK.
    const std::optional<std::size_t>& choice() const { return m_choice; }
    static std::optional<std::size_t> ask(const assets::LampTable& table, QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

private:
    QTableWidget* m_list1 = nullptr;
    std::optional<std::size_t> m_choice;
};

class dlgMass : public QDialog {
    Q_OBJECT
public:
    explicit dlgMass(QWidget* parent = nullptr);
    QLineEdit* massBox() const { return m_mass; }         // Text1(0)
    QLineEdit* capacityBox() const { return m_capacity; } // Text1(1)
    // New Mass and New Capacity as typed, once both read as numbers.
    const std::optional<std::pair<std::string, std::string>>& values() const { return m_values; }
    static std::optional<std::pair<std::string, std::string>> ask(QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

private:
    QLineEdit* m_mass = nullptr;
    QLineEdit* m_capacity = nullptr;
    QLabel* m_problem = nullptr;
    std::optional<std::pair<std::string, std::string>> m_values;
};

} // namespace velmora::ui
