// velmora: the desktop program. Arguments: [--railworks DIR] [--home DIR] [--dark] [DOCUMENT]

#include "common/desktopui.h"
#include "common/palettecolours.h"
#include "editor/frmeditor.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/paths.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Velmora");
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    parser.setApplicationDescription("Velmora: tools for Train Simulator 2019 add-on makers");
    parser.addHelpOption();
    QCommandLineOption railworks("railworks", "The simulator's root folder.", "DIR");
    QCommandLineOption home("home", "The program's own folder (settings, TempFiles, Reports).", "DIR");
    parser.addOption(railworks);
    parser.addOption(home);
    // The desktop's own theme is followed by default; -style and QT_STYLE_OVERRIDE pick a style.
    QCommandLineOption dark("dark", "A dark theme (the Fusion style with a dark palette).");
    parser.addOption(dark);
    parser.addPositionalArgument("document", "A simulator document to open.", "[document]");
    parser.process(app);
    if (parser.isSet(dark)) {
        QApplication::setStyle("Fusion");
        QApplication::setPalette(velmora::ui::darkPalette());
    }

    velmora::ui::DesktopUi ui;
    namespace fs = std::filesystem;
    fs::path appPath = parser.isSet(home) ? fs::path(parser.value(home).toStdString()) : velmora::defaultHomeFolder();
    velmora::AppContext ctx(appPath, velmora::findDataFolder(velmora::executablePath()), ui);

    velmora::StartupOptions options;
    if (parser.isSet(railworks))
        options.railWorks = fs::path(parser.value(railworks).toStdString());
    if (const char* h = std::getenv("HOME"))
        options.userHome = h;
    // The document path may have been split at blanks by a shell that did not quote it.
    options.commandLinePath = parser.positionalArguments().join(' ').toStdString();

    velmora::ui::frmEditor editor(ctx, options);
    ui.setParent(&editor);
    editor.show();
    return QApplication::exec();
}
