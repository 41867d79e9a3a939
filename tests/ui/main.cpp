// One program for the screens' tests; each class runs in turn, offscreen.

#include <QApplication>

int runTestFrmEditor(int argc, char** argv);
int runTestEditorDocument(int argc, char** argv);
int runTestEditorSearch(int argc, char** argv);
int runTestFrmAssets(int argc, char** argv);
int runTestFrmContent(int argc, char** argv);
int runTestFrmDelRoute(int argc, char** argv);
int runTestTextViews(int argc, char** argv);
int runTestDesktopUi(int argc, char** argv);
int runTestScenarios(int argc, char** argv);
int runTestConsistTransfer(int argc, char** argv);
int runTestThemes(int argc, char** argv);
int runTestBatchSwap(int argc, char** argv);
int runTestScenarioDetails(int argc, char** argv);
int runTestNamedConsist(int argc, char** argv);
int runTestQDBuild(int argc, char** argv);
int runTestConsistBuilder(int argc, char** argv);
int runTestQdCheck(int argc, char** argv);
int runTestApArchives(int argc, char** argv);
int runTestFrmAssetsAP(int argc, char** argv);
int runTestFrmAssetsBatch(int argc, char** argv);
int runTestFrmAssetsEdits(int argc, char** argv);
int runTestFrmFolder5(int argc, char** argv);
int runTestTextureMenus(int argc, char** argv);
int runTestFrmGFX2(int argc, char** argv);
int runTestPhysics(int argc, char** argv);
int runTestSubstitution(int argc, char** argv);
int runTestFrmDelRouteEdits(int argc, char** argv);
int runTestFrmMarkers(int argc, char** argv);
int runTestFrmRoute(int argc, char** argv);
int runTestPackaging(int argc, char** argv);

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    int failed = 0;
    for (auto run : {runTestFrmEditor, runTestEditorDocument, runTestEditorSearch, runTestFrmAssets,
                     runTestFrmContent, runTestFrmDelRoute, runTestTextViews, runTestDesktopUi, runTestThemes, runTestScenarios,
                     runTestConsistTransfer, runTestBatchSwap, runTestScenarioDetails, runTestNamedConsist,
                     runTestQDBuild, runTestConsistBuilder, runTestQdCheck, runTestApArchives, runTestFrmAssetsAP, runTestFrmAssetsBatch,
                     runTestFrmAssetsEdits, runTestFrmFolder5, runTestTextureMenus,
                     runTestFrmGFX2, runTestPhysics, runTestSubstitution, runTestFrmDelRouteEdits,
                     runTestFrmRoute, runTestFrmMarkers, runTestPackaging})
        failed += run(argc, argv);
    return failed == 0 ? 0 : 1;
}
