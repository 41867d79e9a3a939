#pragma once
// Every screen opens where the user last left it, at its size, maximised if it was. The place is
// taken when the screen hides or closes and kept in the desktop state of the program's folder.

#include "velmora/core/appcontext.h"

#include <QSize>

class QWidget;

namespace velmora::ui {

// Puts `window` at its remembered place now (or at `firstSize`, when it has none or the place is
// on no screen any more) and remembers its place whenever it hides. `twips`, when given, is the
// settings field that also keeps the place, for the screens whose place the settings file holds.
void rememberPlace(AppContext& ctx, QWidget* window, const QString& screen, QSize firstSize,
                   WindowGeometry* twips = nullptr);

} // namespace velmora::ui
