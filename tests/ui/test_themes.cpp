// Colours on light and dark themes: what the program wants drawn is made readable on the
// background it is drawn on, keeping its hue, and left alone where it already is.

#include "common/palettecolours.h"
#include "editor/xmlhighlighter.h"

#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextLayout>
#include <QtTest>

using namespace velmora;

namespace {

const QColor kWhite(255, 255, 255);

// The lightness one step nearer the wanted colour no longer reaches the ratio: the change is
// the least there is.
bool isNearest(const QColor& wanted, const QColor& got, const QColor& background) {
    const double step = got.lightnessF() < wanted.lightnessF() ? 0.01 : -0.01;
    const QColor nearer = QColor::fromHslF(got.hslHueF(), got.hslSaturationF(), got.lightnessF() + static_cast<float>(step));
    return ui::contrastRatio(nearer, background) < ui::kReadableContrast;
}

} // namespace

class TestThemes : public QObject {
    Q_OBJECT

private slots:
    void contrastFollowsTheWcagFormula() {
        QCOMPARE(ui::contrastRatio(Qt::black, kWhite), 21.0);
        QCOMPARE(ui::contrastRatio(kWhite, kWhite), 1.0);
        // WCAG's own example pair: #767676 on white is just above 4.5:1.
        const double grey = ui::contrastRatio(QColor(0x76, 0x76, 0x76), kWhite);
        QVERIFY(grey > 4.5 && grey < 4.6);
    }

    void lightColoursOnWhiteAreDarkenedKeepingTheirHue() {
        for (const QColor& wanted : {QColor(0, 255, 255), QColor(0, 255, 0), QColor(255, 255, 0), QColor(255, 0, 0)}) {
            const QColor got = ui::readableOn(wanted, kWhite);
            QVERIFY2(ui::contrastRatio(got, kWhite) >= ui::kReadableContrast, qPrintable(wanted.name()));
            QCOMPARE(got.hslHue(), wanted.hslHue());
            QVERIFY(got.lightness() < wanted.lightness());
            QVERIFY2(isNearest(wanted, got, kWhite), qPrintable(got.name()));
        }
    }

    void darkColoursOnADarkPaletteAreLightened() {
        const QPalette dark = ui::darkPalette();
        const QColor base = dark.color(QPalette::Base);
        for (const QColor& wanted : {QColor(0, 0, 139), QColor(0, 0, 255), QColor(192, 0, 0), QColor(0, 0, 0)}) {
            const QColor got = ui::readableOn(wanted, dark);
            QVERIFY2(ui::contrastRatio(got, base) >= ui::kReadableContrast, qPrintable(wanted.name()));
            QCOMPARE(got.hslHue(), wanted.hslHue());
            QVERIFY(got.lightness() > wanted.lightness());
        }
    }

    void aColourThatAlreadyContrastsIsKept() {
        for (const QColor& c : {QColor(0, 0, 139), QColor(128, 0, 0), QColor(0, 0, 0)})
            QCOMPARE(ui::readableOn(c, kWhite), c);
        const QPalette dark = ui::darkPalette();
        for (const QColor& c : {QColor(0, 255, 255), QColor(0, 255, 0), QColor(255, 255, 255)})
            QCOMPARE(ui::readableOn(c, dark), c);
    }

    void everyColourIsReadableOnEveryBackground() {
        // Mid greys are the hard case: neither black nor white stands far from them.
        for (int b = 0; b <= 255; b += 17)
            for (int hue = 0; hue < 360; hue += 30)
                for (int l : {0, 64, 128, 192, 255}) {
                    const QColor bg(b, b, b);
                    const QColor got = ui::readableOn(QColor::fromHsl(hue, 255, l), bg);
                    QVERIFY2(ui::contrastRatio(got, bg) >= ui::kReadableContrast,
                             qPrintable(QString("hue %1 lightness %2 on grey %3").arg(hue).arg(l).arg(b)));
                }
    }

    void rowColoursTakeBlackAsTheTextColour() {
        const QPalette dark = ui::darkPalette();
        QCOMPARE(ui::rowColour(0x000000, dark), dark.color(QPalette::Text));
        QCOMPARE(ui::rowColour(0xFF8000, dark), QColor(255, 128, 0)); // orange reads on the dark base already
        QCOMPARE(ui::rowColour(0x0000FF, dark).hslHue(), 240);
    }

    void theXmlColoursAreReadableOnBothThemes() {
        for (const QPalette& palette : {QPalette(kWhite), ui::darkPalette()}) {
            QPlainTextEdit view;
            view.setPalette(palette);
            view.setPlainText("<cRouteProperties d:id=\"3\">\n<!-- a note -->\n<Name>Demo</Name>\n</cRouteProperties>");
            ui::XmlHighlighter highlighter(view.document(), view.palette());
            const QColor base = view.palette().color(QPalette::Base);
            QCOMPARE(highlighter.colours()[0], view.palette().color(QPalette::Text));
            for (const QColor& c : highlighter.colours())
                QVERIFY2(ui::contrastRatio(c, base) >= ui::kReadableContrast, qPrintable(c.name()));
            // The tag on the first line is drawn in the tag colour.
            const auto formats = view.document()->firstBlock().layout()->formats();
            QVERIFY(!formats.isEmpty());
            QCOMPARE(formats.front().format.foreground().color(), highlighter.colours()[1]);
        }
    }
};

#include "test_themes.moc"

int runTestThemes(int argc, char** argv) {
    TestThemes t;
    return QTest::qExec(&t, argc, argv);
}
