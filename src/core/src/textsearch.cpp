#include "velmora/core/textsearch.h"

#include <optional>

namespace velmora {

namespace {

bool isWordChar(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); }

// The first hit at or after `from`. For a hit at `joint` the character before it is `joined`
// (the end of text already rewritten) rather than the one in `text`.
qsizetype findHit(const QString& text, const TextSearch& search, qsizetype from, qsizetype joint,
                  std::optional<QChar> joined) {
    if (search.what.isEmpty() || from < 0)
        return -1;
    const Qt::CaseSensitivity cs = search.matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (qsizetype at = text.indexOf(search.what, from, cs); at >= 0; at = text.indexOf(search.what, at + 1, cs)) {
        if (!search.wholeWord)
            return at;
        const qsizetype end = at + search.what.size();
        const bool before = at == joint ? (joined && isWordChar(*joined)) : (at > 0 && isWordChar(text[at - 1]));
        const bool after = end < text.size() && isWordChar(text[end]);
        if (!before && !after)
            return at;
    }
    return -1;
}

} // namespace

qsizetype findInText(const QString& text, const TextSearch& search, qsizetype from) {
    return findHit(text, search, from, -1, std::nullopt);
}

qsizetype replaceAllInText(QString& text, const TextSearch& search, const QString& replacement) {
    // Built in one pass: `out` is the rewritten text up to `rest` in the original. The next
    // search starts one character past the hit in the rewritten text; a start inside the
    // replacement is moved to its end.
    QString out;
    qsizetype rest = 0;
    qsizetype count = 0;
    for (qsizetype at = findInText(text, search, 0); at >= 0;) {
        out.append(QStringView(text).mid(rest, at - rest));
        out.append(replacement);
        rest = at + search.what.size();
        ++count;
        const qsizetype from = replacement.isEmpty() ? rest + 1 : rest;
        at = findHit(text, search, from, rest, out.isEmpty() ? std::nullopt : std::optional<QChar>(out.back()));
    }
    if (count == 0)
        return 0;
    out.append(QStringView(text).mid(rest));
    text = std::move(out);
    return count;
}

} // namespace velmora
