#pragma once
// Colours that stay readable whatever the theme: a colour the program wants (a class colour,
// a mark, a highlight) is checked against the background it is drawn on, and made darker on a
// light background or lighter on a dark one, keeping its hue, until the two contrast enough.

#include <QColor>
#include <QPalette>

namespace velmora::ui {

// The contrast text needs against its background (WCAG's 4.5:1 for normal text).
constexpr double kReadableContrast = 4.5;

// WCAG relative luminance (0 black .. 1 white) and the contrast ratio of two colours (1 .. 21).
double relativeLuminance(const QColor& colour);
double contrastRatio(const QColor& a, const QColor& b);

// `wanted` itself when it contrasts enough with `background`; otherwise the colour of the same
// hue and saturation whose lightness is nearest to `wanted`'s and still reaches `ratio`.
QColor readableOn(const QColor& wanted, const QColor& background, double ratio = kReadableContrast);
// Against the palette's Base, the background of text views, lists and grids.
QColor readableOn(const QColor& wanted, const QPalette& palette);
// A 0xRRGGBB colour from the logic for a row of a list or grid; black there means the ordinary
// text colour, so it becomes the palette's Text.
QColor rowColour(unsigned rgb, const QPalette& palette);

// The dark Fusion palette the desktop program takes with --dark.
QPalette darkPalette();

} // namespace velmora::ui
