// What the main screen holds in memory for a large document: resident memory once a ~60 MB
// (of XML) scenario is open, the peak while opening it, and what is left once a small document
// has been opened after it. A program of its own, so that the peak is this measurement's alone.
// Offscreen, the window shown as a user would have it. Figures in MB (10^6 bytes).
//
// Measured on a machine with 2 cores (shared with other builds), 24 GB, RelWithDebInfo, offscreen;
// 60 MB of XML, 1.1 million lines. MB resident: before opening / after open / peak / after the
// small document.
//   2026-11-24, before: text view only         38 / 409-485 / 531-607 / 140-148
//                       text view and tree tab 38 / 932     / 1114    / 677
//   2026-11-24, after:  text view only         38 / 337     / 406     / 55
//                       text view and tree tab 38 / 561     / 621     / 62
// What made the difference: no undo record per line while loading; the text kept in its bytes
// and decoded slice by slice; the tree's repeated names and values shared and its keys computed;
// the tree's reader fed through a device; the heap trimmed once a document is gone.

#include "editor/frmeditor.h"
#include "largedocument.h"
#include "velmora/core/userinterface.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTabWidget>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

// A field of /proc/self/status in kB ("VmRSS", "VmHWM"), as MB.
double statusMegabytes(const std::string& field) {
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);)
        if (line.rfind(field + ":", 0) == 0)
            return std::stod(line.substr(field.size() + 1)) * 1024 / 1e6;
    return 0;
}

// From here on VmHWM counts from the present resident size.
void resetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

void openAndWait(ui::frmEditor& editor, ScriptedUi& ui, const fs::path& doc) {
    QSignalSpy loaded(&editor, &ui::frmEditor::documentLoaded);
    ui.pushPath(doc);
    editor.mnuOpenRS_Click();
    if (loaded.count() == 0)
        loaded.wait(600000);
    // Let the view lay out and paint what it shows.
    for (int i = 0; i < 10; ++i)
        QApplication::processEvents();
}

// Arguments: the size in MB of XML, and 1 to visit the tree tab once the document is open.
void OpenLargeThenSmall(benchmark::State& state) {
    const fs::path dir = fs::temp_directory_path() / "velmora-bench-editor";
    bench::makeScratchInstall(dir);
    const fs::path large = bench::makeLargeDocument(dir, static_cast<int>(state.range(0)));
    const fs::path small = bench::makeLargeDocument(dir, 1);
    ScriptedUi ui;
    AppContext ctx(dir / "home", dir / "data", ui);
    StartupOptions options;
    options.railWorks = dir / "rw";
    ui::frmEditor editor(ctx, options);
    editor.resize(1200, 800);
    editor.show();
    QApplication::processEvents();
    auto* tabs = editor.findChild<QTabWidget*>("SSTab1");
    double before = 0, afterOpen = 0, peak = 0, afterSmall = 0, characters = 0;
    for (auto _ : state) {
        before = statusMegabytes("VmRSS");
        resetPeak();
        openAndWait(editor, ui, large);
        if (state.range(1) == 1) {
            tabs->setCurrentIndex(1);
            QApplication::processEvents();
            tabs->setCurrentIndex(0);
        }
        afterOpen = statusMegabytes("VmRSS");
        peak = statusMegabytes("VmHWM");
        characters = static_cast<double>(editor.textView()->document()->characterCount());
        openAndWait(editor, ui, small);
        afterSmall = statusMegabytes("VmRSS");
    }
    state.counters["MB of XML"] = characters / 1e6;
    state.counters["RSS before MB"] = before;
    state.counters["RSS after open MB"] = afterOpen;
    state.counters["peak MB"] = peak;
    state.counters["RSS after small MB"] = afterSmall;
}

} // namespace

BENCHMARK(OpenLargeThenSmall)->Args({60, 0})->Args({60, 1})->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
