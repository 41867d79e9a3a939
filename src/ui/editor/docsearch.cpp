#include "docsearch.h"

#include <QWidget> // before desktopui.h, which keeps a QPointer to one

#include "../common/desktopui.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace velmora::ui {

namespace {

// Lines handled between two looks at the Abort button: a few milliseconds of work.
constexpr int kSliceLines = 16384;

// Walks the lines from `block` on, calling `line` for each until it returns false, and
// `sliceDone` after every slice. With a channel, a walk of more than one slice shows progress
// under `label` and stops on Abort. Returns false on Abort.
template <typename Line, typename SliceDone>
bool walkLines(QTextBlock block, UserInterface* ui, const std::string& label, Line&& line, SliceDone&& sliceDone) {
    const int total = block.document()->blockCount();
    const bool large = ui && total - block.blockNumber() > kSliceLines;
    if (large)
        ui->beginProgress(label, total);
    bool stopped = false;
    for (int n = 0; block.isValid(); block = block.next()) {
        if (!line(block))
            break;
        if (++n % kSliceLines != 0)
            continue;
        sliceDone();
        if (!large)
            continue;
        ui->progress(block.blockNumber() + 1);
        if (ui->cancelled()) {
            stopped = true;
            break;
        }
    }
    sliceDone();
    if (large)
        ui->endProgress();
    return !stopped;
}

} // namespace

int findInDocument(const QTextDocument& doc, const TextSearch& search, int from) {
    if (search.what.isEmpty())
        return -1;
    int found = -1;
    // One pass at most, with no edits: quick enough to need no Abort.
    walkLines(
        doc.findBlock(std::max(0, from)), nullptr, {},
        [&](const QTextBlock& b) {
            const int start = std::max(0, from - b.position());
            const qsizetype at = findInText(b.text(), search, start);
            if (at >= 0)
                found = b.position() + static_cast<int>(at);
            return found < 0;
        },
        [] {});
    return found;
}

FindAllResult findAllInDocument(const QTextDocument& doc, const TextSearch& search, UserInterface& ui) {
    FindAllResult r;
    if (search.what.isEmpty())
        return r;
    const bool complete = walkLines(
        doc.begin(), &ui, "Find All: " + fromQt(search.what),
        [&](const QTextBlock& b) {
            const QString text = b.text();
            for (qsizetype at = findInText(text, search, 0); at >= 0; at = findInText(text, search, at + 1))
                r.hits.push_back(b.position() + static_cast<int>(at));
            return true;
        },
        [] {});
    r.aborted = !complete;
    return r;
}

ReplaceAllResult replaceAllInDocument(QTextDocument& doc, const TextSearch& search, const QString& replacement,
                                      UserInterface& ui) {
    ReplaceAllResult r;
    if (search.what.isEmpty())
        return r;
    QTextCursor cursor(&doc);
    // The edit block is closed after each slice so that the view can be repainted, and the next
    // slice joins it again: the whole run stays one undo step. It is first opened by the first
    // slice that changes something, never joined to an edit made before.
    bool open = false, joined = false;
    const bool complete = walkLines(
        doc.begin(), &ui, "Replace All: " + fromQt(search.what),
        [&](const QTextBlock& b) {
            QString text = b.text();
            const qsizetype n = replaceAllInText(text, search, replacement);
            if (n == 0)
                return true;
            if (!open) {
                if (joined)
                    cursor.joinPreviousEditBlock();
                else
                    cursor.beginEditBlock();
                open = joined = true;
            }
            cursor.setPosition(b.position());
            cursor.setPosition(b.position() + b.length() - 1, QTextCursor::KeepAnchor);
            cursor.insertText(text);
            r.count += n;
            return true;
        },
        [&] {
            if (open)
                cursor.endEditBlock();
            open = false;
        });
    if (!complete) {
        r.aborted = true;
        if (joined)
            doc.undo();
        r.count = 0;
    }
    return r;
}

void HitListModel::setHits(const QTextDocument* doc, std::vector<int> hits) {
    beginResetModel();
    m_doc = doc;
    m_hits = std::move(hits);
    endResetModel();
}

int HitListModel::position(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < m_hits.size() ? m_hits[static_cast<std::size_t>(row)] : -1;
}

int HitListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_hits.size());
}

QVariant HitListModel::data(const QModelIndex& index, int role) const {
    const int at = position(index.row());
    if (role != Qt::DisplayRole || at < 0 || !m_doc)
        return {};
    const QTextBlock block = m_doc->findBlock(at);
    return tr("Line %1: %2").arg(block.blockNumber() + 1).arg(block.text().trimmed());
}

} // namespace velmora::ui
