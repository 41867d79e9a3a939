#pragma once
// Find and replace in the editor's text views, ignoring letter case as the views always have.

#include <QString>

namespace velmora {

struct TextSearch {
    QString what;
    bool wholeWord = false; // a hit must not have a letter, digit or "_" on either side
    bool matchCase = false; // the views ignore case; a script may ask for it to count
};

// The first hit at or after `from` (zero-based), -1 when none.
qsizetype findInText(const QString& text, const TextSearch& search, qsizetype from);

// Replace All: from the start, each hit is replaced and the search goes on one character past
// it. A hit that would start inside the text just put in is passed over, so a replacement that
// holds the search text cannot make the loop run for ever. Returns the number of replacements.
qsizetype replaceAllInText(QString& text, const TextSearch& search, const QString& replacement);

} // namespace velmora
