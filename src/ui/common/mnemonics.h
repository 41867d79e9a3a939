#pragma once
// Menu mnemonics for captions that come without them: the language tables give plain words, and
// keyboard users still want Alt+F, O to open a file. Each caption gets the first letter not yet
// taken among its siblings, a word's first letter before any other.

class QMenuBar;
class QMenu;
class QString;

namespace velmora::ui {

// The caption with '&' before the letter chosen; `taken` holds the letters (lower case) its
// siblings already use and gets the new one. A caption that has a mnemonic keeps it.
QString withMnemonic(const QString& caption, QString& taken);

// Every menu of the bar and every entry of each, submenus included.
void assignMnemonics(QMenuBar* bar);
void assignMnemonics(QMenu* menu);

} // namespace velmora::ui
