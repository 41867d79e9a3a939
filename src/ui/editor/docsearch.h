#pragma once
// Find, Find All and Replace All over the text view's document, line by line: no copy of the
// whole text is made, and long runs report progress and stop on Abort through the user-interface
// channel, keeping the window alive between slices.

#include "velmora/core/textsearch.h"
#include "velmora/core/userinterface.h"

#include <QAbstractListModel>
#include <QPointer>

#include <vector>

class QTextDocument;

namespace velmora::ui {

// The first hit at or after `from` (a position in the document), -1 when none. Hits never span
// a line: the search text is one line.
int findInDocument(const QTextDocument& doc, const TextSearch& search, int from);

struct FindAllResult {
    std::vector<int> hits; // positions, in document order
    bool aborted = false;  // stopped by Abort: `hits` are those found before it
};

// Every hit, with progress (lines done of all) when the document is large.
FindAllResult findAllInDocument(const QTextDocument& doc, const TextSearch& search, UserInterface& ui);

struct ReplaceAllResult {
    qsizetype count = 0;  // replacements made and kept
    bool aborted = false; // stopped by Abort: the document is as it was before, count is 0
};

// Replace All as one undo step of the document: each line is rewritten by the rule of
// replaceAllInText. An Abort takes back what was already replaced, so the document is left as
// it was.
ReplaceAllResult replaceAllInDocument(QTextDocument& doc, const TextSearch& search, const QString& replacement,
                                      UserInterface& ui);

// The hits of Find All as a list: "Line n: <the line>", the line read from the document when
// shown, so a hundred thousand hits cost one number each.
class HitListModel : public QAbstractListModel {
    Q_OBJECT
public:
    explicit HitListModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}
    void setHits(const QTextDocument* doc, std::vector<int> hits);
    int position(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    QPointer<const QTextDocument> m_doc;
    std::vector<int> m_hits;
};

} // namespace velmora::ui
