// PicView driven offscreen on a demo install's textures: the caption, zoom, mip levels, flip,
// turn and grey, Save As through the write service, print, the texture converted to a .dds and
// shown, and the refusals for files that are no texture or are cut short.

#include "demoscreens.h"
#include "core/faultyfiles.h"

#include "editor/frmeditor.h"
#include "textures/frmgfx2.h"
#include "textures/pictureview.h"
#include "velmora/textures/dds.h"
#include "velmora/textures/picture.h"

#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPrinter>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

#include <algorithm>
#include <fstream>

using namespace velmora;
namespace fs = std::filesystem;

namespace {

QPushButton* commandButton(QWidget* screen, const char* name) { return screen->findChild<QPushButton*>(name); }

// The picture a level of a texture file is, as the textures library decodes it.
textures::Image decoded(const fs::path& file, int mip = 0) {
    textures::TextureLevels levels;
    std::string error;
    if (!textures::readTextureFile(file, levels, error))
        return {};
    return textures::levelImage(levels, mip);
}

bool everyPixelGrey(const textures::Image& img) {
    for (std::size_t i = 0; i + 3 < img.rgba.size(); i += 4)
        if (img.rgba[i] != img.rgba[i + 1] || img.rgba[i + 1] != img.rgba[i + 2])
            return false;
    return true;
}

std::string readAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

class TestFrmGFX2 : public QObject {
    Q_OBJECT

    test::DemoScreens m_demo;
    fs::path m_texture; // a copy of a demo texture under a hostile name

private slots:
    void initTestCase() {
        QVERIFY(m_demo.generate("gfx2"));
        fs::path first;
        for (const auto& e : fs::recursive_directory_iterator(m_demo.dir / "rw/Assets"))
            if (e.path().extension() == ".TgPcDx") {
                first = e.path();
                break;
            }
        QVERIFY(!first.empty());
        fs::create_directories(m_demo.dir / "pics");
        m_texture = m_demo.dir / "pics/Wagen, \"grün\" 'alt'.TgPcDx";
        fs::copy_file(first, m_texture);
    }
    void cleanupTestCase() { m_demo.remove(); }
    void init() { m_demo.start(); }

    void aTextureShowsWithItsCaptionAndEveryMip() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        QCOMPARE(screen.windowTitle(), QString::fromUtf8("PicView - Wagen, \"grün\" 'alt'.TgPcDx (64x64)"));
        QVERIFY(screen.document().isTexture());
        QCOMPARE(screen.document().picture().rgba, decoded(m_texture).rgba);
        // 64, 32, 16, 8 and 4 pixels wide.
        QCOMPARE(screen.mipBox()->maximum(), 4);
        screen.mipBox()->setValue(1);
        QCOMPARE(screen.document().picture().width, 32);
        QCOMPARE(screen.document().picture().height, 32);
        QCOMPARE(screen.document().picture().rgba, decoded(m_texture, 1).rgba);
        QVERIFY(screen.windowTitle().endsWith("(32x32)"));
        QCOMPARE(screen.pictureControl()->picture().width(), 32);
        // The folder lists show where the file is, by the pattern.
        QCOMPARE(screen.folder(), m_texture.parent_path());
        QCOMPARE(screen.fileList()->count(), 1);
        screen.patternBox()->setText("*.png");
        QCOMPARE(screen.fileList()->count(), 0);
        QVERIFY(screen.events()->count() >= 2);
    }

    void zoomGoesByStepsAndSizesThePicture() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        QCOMPARE(screen.zoomBox()->text(), QString("100%"));
        commandButton(&screen, "cmdIn")->click();
        QCOMPARE(screen.zoomBox()->text(), QString("150%"));
        QCOMPARE(screen.pictureControl()->size(), QSize(96, 96));
        commandButton(&screen, "cmdOut")->click();
        commandButton(&screen, "cmdOut")->click();
        QCOMPARE(screen.zoomBox()->text(), QString("75%"));
        QCOMPARE(screen.pictureControl()->size(), QSize(48, 48));
        // At the end of the scale a step more changes nothing.
        for (int i = 0; i < 20; ++i)
            commandButton(&screen, "cmdOut")->click();
        QCOMPARE(screen.zoomBox()->text(), QString("10%"));
        for (int i = 0; i < 20; ++i)
            commandButton(&screen, "cmdIn")->click();
        QCOMPARE(screen.zoomBox()->text(), QString("800%"));
        // A large zoom paints only what is in sight, without trouble.
        screen.resize(400, 300);
        screen.show();
        QVERIFY(QTest::qWaitForWindowExposed(&screen));
        QCOMPARE(screen.pictureControl()->size(), QSize(512, 512));
    }

    void flipTurnAndGreyAndTheyStayForOtherMips() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        const textures::Image original = screen.document().picture();
        screen.action("flip")->trigger();
        QVERIFY(screen.document().picture().rgba != original.rgba);
        screen.action("flip")->trigger();
        QCOMPARE(screen.document().picture().rgba, original.rgba);
        for (int i = 0; i < 4; ++i) {
            screen.action("rot")->trigger();
            if (i < 3)
                QVERIFY(screen.document().picture().rgba != original.rgba);
        }
        QCOMPARE(screen.document().picture().rgba, original.rgba);
        screen.action("grey")->trigger();
        QVERIFY(everyPixelGrey(screen.document().picture()));
        QVERIFY(!everyPixelGrey(original));
        screen.mipBox()->setValue(2);
        QCOMPARE(screen.document().picture().width, 16);
        QVERIFY(everyPixelGrey(screen.document().picture()));
        // The picture control shows what the document holds.
        QCOMPARE(screen.pictureControl()->picture().convertToFormat(QImage::Format_RGBA8888),
                 screen.document().image());
    }

    void aPictureThatIsWiderThanHighTurns() {
        const fs::path png = m_demo.dir / "pics/Bild ä, 3x2.png";
        QImage picture(3, 2, QImage::Format_RGBA8888);
        picture.fill(Qt::red);
        picture.setPixelColor(0, 0, Qt::blue);
        QVERIFY(picture.save(QString::fromStdString(png.string())));
        ui::frmGFX2 screen(*m_demo.ctx, png);
        QCOMPARE(screen.windowTitle(), QString::fromUtf8("PicView - Bild ä, 3x2.png (3x2)"));
        QCOMPARE(screen.mipBox()->maximum(), 0);
        screen.action("rot")->trigger();
        QCOMPARE(screen.windowTitle(), QString::fromUtf8("PicView - Bild ä, 3x2.png (2x3)"));
        QCOMPARE(screen.document().image().pixelColor(1, 0), QColor(Qt::blue)); // top-left went top-right
        fs::remove(png);
    }

    void saveAsWritesThePixelsWithABackupAndAFailedWriteKeepsTheOld() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        const fs::path out = m_demo.dir / "pics/Gespeichert, \"neu\".png";
        m_demo.ui->pushPath(out);
        screen.action("mnuSA")->trigger();
        QVERIFY(fs::exists(out));
        const QImage saved(QString::fromStdString(out.string()));
        QCOMPARE(saved.size(), QSize(64, 64));
        QCOMPARE(ui::fromQImage(saved).rgba, decoded(m_texture).rgba);

        // Again after a flip: the first one is kept as the backup.
        screen.action("flip")->trigger();
        m_demo.ui->pushPath(out);
        screen.action("mnuSA")->trigger();
        QVERIFY(fs::exists(out.string() + ".bak"));
        QCOMPARE(ui::fromQImage(QImage(QString::fromStdString(out.string()))).rgba, screen.document().picture().rgba);

        // A write that fails at the last step leaves the file as it was, and says so.
        const std::string before = readAll(out);
        test::FaultyFiles failing(WriteStep::Replace);
        m_demo.ctx->files().setFileOps(&failing);
        screen.action("flip")->trigger();
        m_demo.ui->pushPath(out);
        screen.action("mnuSA")->trigger();
        m_demo.ctx->files().setFileOps(nullptr);
        QCOMPARE(readAll(out), before);
        QVERIFY(m_demo.prompted(out.filename().string()));

        // JPEG and BMP by the name's ending; other endings are refused, naming the file.
        m_demo.ui->pushPath(m_demo.dir / "pics/b.bmp");
        screen.action("mnuSA")->trigger();
        QCOMPARE(QImage(QString::fromStdString((m_demo.dir / "pics/b.bmp").string())).size(), QSize(64, 64));
        m_demo.ui->pushPath(m_demo.dir / "pics/j.jpeg");
        screen.action("mnuSA")->trigger();
        QVERIFY(fs::file_size(m_demo.dir / "pics/j.jpeg") > 0);
        m_demo.ui->pushPath(m_demo.dir / "pics/g.gif");
        screen.action("mnuSA")->trigger();
        QVERIFY(!fs::exists(m_demo.dir / "pics/g.gif"));
        QVERIFY(m_demo.prompted("g.gif: pictures are saved as .png, .jpg or .bmp"));
        for (const char* f : {"b.bmp", "j.jpeg"})
            fs::remove(m_demo.dir / "pics" / f);
        fs::remove(out);
        fs::remove(out.string() + ".bak");
    }

    void theTextureAsADdsIsThePictureTheViewerShows() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        const textures::Image viewed = screen.document().picture();
        commandButton(&screen, "Command3")->click();
        const fs::path dds = m_demo.ctx->appPath() / "TempDDS" / (m_texture.stem().string() + ".dds");
        QVERIFY(fs::exists(dds));
        QVERIFY(fs::exists(textures::headerFileFor(dds)));
        QCOMPARE(screen.document().file(), dds);
        QVERIFY(screen.windowTitle().endsWith(".dds (64x64)"));
        QCOMPARE(screen.document().picture().rgba, viewed.rgba);
        QCOMPARE(screen.mipBox()->maximum(), 4);
        // The same .dds written by the library directly, read on its own.
        const fs::path direct = m_demo.dir / "direct.dds";
        QVERIFY(textures::textureToDds(m_demo.ctx->files(), m_texture, direct).ok);
        ui::PictureDocument doc;
        std::string error;
        QVERIFY2(doc.load(direct, error), error.c_str());
        QCOMPARE(doc.picture().rgba, viewed.rgba);
        QVERIFY(doc.showMip(3, error));
        QCOMPARE(doc.picture().rgba, decoded(m_texture, 3).rgba);
    }

    void command3RefusesWhatIsNoTexture() {
        const fs::path png = m_demo.dir / "pics/plain.png";
        QImage(4, 4, QImage::Format_RGB32).save(QString::fromStdString(png.string()));
        ui::frmGFX2 screen(*m_demo.ctx, png);
        commandButton(&screen, "Command3")->click();
        QCOMPARE(m_demo.ui->prompts.back().text, std::string("This does not appear to be a .TgPcDx texture file?"));
        QVERIFY(!fs::exists(m_demo.ctx->appPath() / "TempDDS/plain.dds"));
        fs::remove(png);
    }

    void aDamagedFileIsNamedAndNothingBreaks() {
        const std::string whole = readAll(m_texture);
        const fs::path cut = m_demo.dir / "pics/Halb, 'kaputt'.TgPcDx";
        std::ofstream(cut, std::ios::binary) << whole.substr(0, whole.size() / 2);
        ui::frmGFX2 screen(*m_demo.ctx, cut);
        QVERIFY(screen.document().empty());
        QCOMPARE(screen.windowTitle(), QString("PicView"));
        QVERIFY(m_demo.prompted(cut.string()));
        QVERIFY(screen.events()->item(screen.events()->count() - 1)->text().contains("kaputt"));
        // The conversion refuses it too, naming it, and writes nothing.
        commandButton(&screen, "Command3")->click();
        QVERIFY(m_demo.ui->prompts.back().text.find(cut.string()) == 0);
        QVERIFY(!fs::exists(m_demo.ctx->appPath() / "TempDDS/Halb, 'kaputt'.dds"));

        // A picture that is no picture, and a file that is not there.
        const fs::path junk = m_demo.dir / "pics/junk.png";
        std::ofstream(junk, std::ios::binary) << "not a picture";
        QVERIFY(!screen.openPicture(junk));
        QVERIFY(m_demo.ui->prompts.back().text.find(junk.string() + ": the picture cannot be read") == 0);
        QVERIFY(!screen.openPicture(m_demo.dir / "pics/missing.TgPcDx"));
        QVERIFY(m_demo.ui->prompts.back().text.find("missing.TgPcDx") != std::string::npos);
        // A good one after them shows as usual.
        QVERIFY(screen.openPicture(m_texture));
        QVERIFY(screen.windowTitle().endsWith("(64x64)"));
        fs::remove(cut);
        fs::remove(junk);
    }

    void aFileChosenInTheListOrByOpenIsShown() {
        ui::frmGFX2 screen(*m_demo.ctx);
        screen.setFolder(m_texture.parent_path());
        screen.patternBox()->setText("*.tgpcdx"); // patterns ignore case
        QCOMPARE(screen.fileList()->count(), 1);
        screen.fileList()->setCurrentRow(0);
        screen.File1_Click();
        QCOMPARE(screen.document().file(), m_texture);
        screen.findChild<QPushButton*>("Command1")->click();
        QVERIFY(screen.document().empty());
        QCOMPARE(screen.windowTitle(), QString("PicView"));
        m_demo.ui->pushPath(m_texture);
        screen.action("mnuFileOpen")->trigger();
        QCOMPARE(screen.document().file(), m_texture);
    }

    void printingPutsThePictureOnAPage() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        const fs::path pdf = m_demo.dir / "printed.pdf";
        QPrinter printer;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(QString::fromStdString(pdf.string()));
        screen.print(printer);
        QVERIFY(fs::exists(pdf));
        QVERIFY(readAll(pdf).rfind("%PDF", 0) == 0);
        QVERIFY(screen.events()->item(screen.events()->count() - 1)->text().startsWith("Printed"));
    }

    void panningModeMovesThePictureByDragging() {
        ui::frmGFX2 screen(*m_demo.ctx, m_texture);
        for (int i = 0; i < 6; ++i)
            commandButton(&screen, "cmdIn")->click();
        screen.resize(500, 400);
        screen.show();
        QVERIFY(QTest::qWaitForWindowExposed(&screen));
        auto* area = screen.findChild<QScrollArea*>("pictureArea");
        QScrollBar* bar = area->verticalScrollBar();
        QVERIFY(bar->maximum() > 0);
        bar->setValue(bar->maximum() / 2);
        const int start = bar->value();
        auto drag = [&](QEvent::Type type, QPoint at, Qt::MouseButtons buttons) {
            QWidget* view = screen.pictureControl();
            QMouseEvent e(type, QPointF(at), view->mapToGlobal(QPointF(at)), Qt::LeftButton, buttons, Qt::NoModifier);
            QApplication::sendEvent(view, &e);
        };
        // Without panning mode a drag does nothing.
        drag(QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton);
        drag(QEvent::MouseMove, {100, 60}, Qt::LeftButton);
        drag(QEvent::MouseButtonRelease, {100, 60}, Qt::NoButton);
        QCOMPARE(bar->value(), start);
        screen.panMode()->setChecked(true);
        drag(QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton);
        drag(QEvent::MouseMove, {100, 60}, Qt::LeftButton);
        drag(QEvent::MouseButtonRelease, {100, 60}, Qt::NoButton);
        QCOMPARE(bar->value(), start + 40);
    }

    void aLargeTextureIsWorkedOffTheGuiThread() {
        // A 2048 DXT1 .dds with two levels, its blocks all different.
        textures::TextureLevels t{textures::PixelFormat::Dxt1, 2048, 2048, {}};
        for (int side : {2048, 1024}) {
            std::string level(textures::levelSize(textures::PixelFormat::Dxt1, side, side), '\0');
            for (std::size_t i = 0; i < level.size(); ++i)
                level[i] = static_cast<char>((i * 2654435761u) >> 11);
            t.levels.push_back(std::move(level));
        }
        const fs::path dds = m_demo.dir / "pics/Groß.dds";
        std::ofstream(dds, std::ios::binary) << textures::ddsBytes(t);
        ui::frmGFX2 screen(*m_demo.ctx, dds);
        QCOMPARE(screen.windowTitle(), QString::fromUtf8("PicView - Groß.dds (2048x2048)"));
        const textures::Image top = screen.document().picture();
        auto worked = [&](const std::string& label) {
            const auto& labels = m_demo.ui->progressLabels;
            return std::find(labels.begin(), labels.end(), label) != labels.end();
        };
        QVERIFY(worked("Reading Groß.dds"));
        screen.action("flip")->trigger();
        QVERIFY(worked("Flipped"));
        screen.mipBox()->setValue(1);
        QVERIFY(!worked("Decoding mip level 1")); // a 1024 level is quick enough as it is
        QCOMPARE(screen.document().picture().rgba, textures::flipped(textures::levelImage(t, 1)).rgba);
        screen.mipBox()->setValue(0);
        QVERIFY(worked("Decoding mip level 0"));
        screen.action("flip")->trigger();
        QCOMPARE(screen.document().picture().rgba, top.rgba);
        fs::remove(dds);
    }

    void theMainScreenOpensItFromTheMenuAndFromShowImage() {
        StartupOptions o;
        o.railWorks = m_demo.dir / "rw";
        o.askForRoot = false;
        ui::frmEditor editor(*m_demo.ctx, o);
        QVERIFY(editor.action("mnuTgpcdx")->isEnabled());
        editor.action("mnuTgpcdx")->trigger();
        auto* viewer = editor.findChild<ui::frmGFX2*>();
        QVERIFY(viewer);
        QVERIFY(viewer->document().empty());
        viewer->close();

        QSignalSpy loaded(&editor, &ui::frmEditor::documentLoaded);
        m_demo.ui->pushPath(m_texture);
        editor.action("mnuOpenTex")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(loaded.count() > 0, 20000);
        auto* showImage = editor.findChild<QPushButton*>("Command7");
        QVERIFY(showImage->isVisibleTo(&editor));
        showImage->click();
        QCOMPARE(editor.findChildren<ui::frmGFX2*>().size(), 1);
        QCOMPARE(viewer->document().file(), m_texture);
        QVERIFY(viewer->isVisible());
        QVERIFY(viewer->windowTitle().endsWith("(64x64)"));
    }
};

#include "test_frmgfx2.moc"

int runTestFrmGFX2(int argc, char** argv) {
    TestFrmGFX2 t;
    return QTest::qExec(&t, argc, argv);
}
