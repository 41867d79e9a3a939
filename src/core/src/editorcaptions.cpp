#include "velmora/core/editorcaptions.h"

namespace velmora {

namespace {
// Earlier assignments that a later one overrides come first, as the caption loader makes them.
constexpr CaptionAssignment kAssignments[] = {
    {"mnuBackup", 322},     {"mnuInc", 323},        {"mnuCSV2DCSV", 324},    {"mnuIdent", 325},
    {"mnuCSV", 284},        {"mnuExcel", 285},      {"mnuTxt", 286},         {"mnuRWB", 289},
    {"mnuPaths", 290},      {"mnuBuildCon", 317},   {"mnuRollingStock", 318}, {"mnuRollingStock", 327},
    {"Command7", 63},       {"Command7", 64},        {"Command7", 65},

    {"mnuFileS", 1},        {"mnuOpenRS", 2},       {"mnuSaveRS", 3},        {"mnuXML", 4},
    {"mnuSavexml", 5},      {"mnuSaveAs", 6},       {"mnuOpenTex", 7},       {"mnuPrint", 8},
    {"mnuExit", 9},         {"mnuSearch", 10},      {"mnuFind", 11},         {"mnuConv", 13},
    {"mnuDDS", 14},         {"mnuView", 15},        {"mnuEditDDS", 16},      {"mnuDDStoKrs", 17},
    {"mnuTgpcdx", 18},      {"mnuTime", 19},        {"mnuTools", 20},        {"mnuDelRoute", 21},
    {"mnuDRS", 27},         {"mnuRouteInfo", 28},   {"mnuMap", 126},         {"mnuMarkers", 30},
    {"mnuMultiMarker", 31}, {"mnuMkrDCSV", 32},     {"mnuDeveloper", 35},    {"mnuDevFolders", 36},
    {"mnuLists", 37},       {"mnuOstrand", 38},     {"mnuEB", 39},           {"mnuPackAss", 40},
    {"mnuReskin", 41},      {"mnuPack", 42},        {"mnuPackSce", 43},      {"mnuOpt", 47},
    {"mnuClear", 48},       {"mnuCTF", 49},         {"mnuReadWrite", 50},    {"mnuAcro", 51},
    {"mnuRWPath", 53},      {"mnuLang", 54},        {"mnuIRF", 55},          {"mnuViewer", 56},
    {"mnuHelp", 57},        {"mnuContents", 58},    {"mnuAbout", 59},        {"mnuWeb", 60},
    {"mnuBackup", 278},     {"mnuInc", 279},        {"mnuAddProv", 280},     {"mnuCSV2DCSV", 281},
    {"mnuIdent", 282},      {"mnuReports", 283},    {"mnuCSV", 328},         {"mnuExcel", 329},
    {"mnuTxt", 330},        {"mnuRWB", 331},        {"mnuPaths", 332},       {"mnuDont", 319},
    {"mnu2bin", 333},       {"mnuFindAllAP", 334},  {"mnuAP", 335},          {"mnuFile2", 336},
    {"mnuFindMult", 337},   {"mnuUUID", 367},       {"mnuEmpt", 368},        {"mnuAE", 369},
    {"mnuClearTemp", 386},  {"mnuBuildQD", 387},    {"mnuBuildCon", 388},    {"mnuRollingStock", 389},
    {"mnuSelRW", 402},      {"mnuQDPreload", 403},  {"mnuSP", 404},          {"mnuEdMax", 405},
    {"mnuWarn", 406},       {"mnuVer", 407},        {"mnuScen", 413},        {"mnuMkRW", 435},

    {"Label1", 61},         {"Label3", 61},         {"Command1", 62},        {"Command5", 320},
    {"Frame1", 65},         {"SSTab1", 66},         {"Command6", 414},
};
} // namespace

std::span<const CaptionAssignment> editorCaptionAssignments() { return kAssignments; }

int editorCaptionEntry(std::string_view control) {
    int entry = 0;
    for (const auto& a : kAssignments)
        if (a.control == control)
            entry = a.entry;
    return entry;
}

} // namespace velmora
