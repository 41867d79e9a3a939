#pragma once
// frmDesc: the route's description page. frmThumbnail: its loading picture and the metadata
// the simulator's route list reads, into a PreLoad folder.

#include "browseflagsbox.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

#include <array>

class QLineEdit;
class QPlainTextEdit;

namespace velmora::ui {

class frmDesc : public QDialog {
    Q_OBJECT
public:
    frmDesc(AppContext& ctx, const routes::RouteEntry& route, QWidget* parent = nullptr);
    // Text1 to Text5: Title, Sub-Title, Para1, Para2, Para3.
    QLineEdit* title() const { return m_title; }
    QLineEdit* subTitle() const { return m_subTitle; }
    QPlainTextEdit* para(int i) const { return m_paras[static_cast<std::size_t>(i)]; }

public slots:
    void Command1_Click(); // writes Description.html

private:
    AppContext& m_ctx;
    routes::RouteEntry m_route;
    QLineEdit* m_title;
    QLineEdit* m_subTitle;
    std::array<QPlainTextEdit*, 3> m_paras{};
};

class frmThumbnail : public QDialog {
    Q_OBJECT
public:
    explicit frmThumbnail(AppContext& ctx, QWidget* parent = nullptr);
    QLineEdit* picture() const { return m_text1; }  // Text1: the .dds
    QLineEdit* metadata() const { return m_text2; } // Text2: the metadata's name
    QLineEdit* preload() const { return m_text; }   // Text: the PreLoad folder
    BrowseFlagsBox* filters() const { return m_flags; }

public slots:
    void Command1_Click(); // Process

private:
    AppContext& m_ctx;
    QLineEdit* m_text1;
    QLineEdit* m_text2;
    QLineEdit* m_text;
    BrowseFlagsBox* m_flags;
};

} // namespace velmora::ui
