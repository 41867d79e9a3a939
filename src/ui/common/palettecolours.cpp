#include "palettecolours.h"

#include <algorithm>
#include <cmath>

namespace velmora::ui {

namespace {
double linear(double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}
} // namespace

double relativeLuminance(const QColor& colour) {
    const QColor c = colour.toRgb();
    return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
}

double contrastRatio(const QColor& a, const QColor& b) {
    const double la = relativeLuminance(a), lb = relativeLuminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor readableOn(const QColor& wanted, const QColor& background, double ratio) {
    if (contrastRatio(wanted, background) >= ratio)
        return wanted;
    // Whichever of black and white stands out more says which way to go; one of them always
    // reaches 4.5:1, whatever the background.
    const bool darken = contrastRatio(Qt::black, background) >= contrastRatio(Qt::white, background);
    float hue = 0, saturation = 0, lightness = 0, alpha = 1;
    wanted.toHsl().getHslF(&hue, &saturation, &lightness, &alpha);
    auto at = [&](double l) { return QColor::fromHslF(hue, saturation, static_cast<float>(l), alpha).toRgb(); };
    // Luminance grows with lightness at a fixed hue and saturation, so halve the interval between
    // the wanted lightness (too little contrast) and the far end (enough, or the best there is).
    double near = lightness, far = darken ? 0.0 : 1.0;
    QColor best = at(far);
    for (int i = 0; i < 24; ++i) {
        const double mid = (near + far) / 2;
        const QColor c = at(mid);
        if (contrastRatio(c, background) >= ratio) {
            best = c;
            far = mid;
        } else {
            near = mid;
        }
    }
    return best;
}

QColor readableOn(const QColor& wanted, const QPalette& palette) {
    return readableOn(wanted, palette.color(QPalette::Base));
}

QColor rowColour(unsigned rgb, const QPalette& palette) {
    if ((rgb & 0xFFFFFF) == 0)
        return palette.color(QPalette::Text);
    return readableOn(QColor::fromRgb((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF), palette);
}

QPalette darkPalette() {
    const QColor window(53, 53, 53), base(35, 35, 35), text(230, 230, 230), disabled(128, 128, 128);
    QPalette p;
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::ToolTipBase, window);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, disabled);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, window);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, QColor(255, 90, 90));
    p.setColor(QPalette::Link, readableOn(QColor(42, 130, 218), base));
    p.setColor(QPalette::Highlight, QColor(42, 130, 218));
    p.setColor(QPalette::HighlightedText, Qt::black);
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        p.setColor(QPalette::Disabled, role, disabled);
    p.setColor(QPalette::Disabled, QPalette::Light, window.darker(150));
    return p;
}

} // namespace velmora::ui
