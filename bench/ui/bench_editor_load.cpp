// How long the main screen takes to open a large binary document: conversion on a worker
// thread, then the text put into the view in slices. Offscreen; sizes are of the XML text.

#include "editor/frmeditor.h"
#include "largedocument.h"
#include "velmora/core/userinterface.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QSignalSpy>

#include <benchmark/benchmark.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

void OpenLargeDocument(benchmark::State& state) {
    const fs::path dir = fs::temp_directory_path() / "velmora-bench-editor";
    bench::makeScratchInstall(dir);
    const fs::path doc = bench::makeLargeDocument(dir, static_cast<int>(state.range(0)));
    ScriptedUi ui;
    AppContext ctx(dir / "home", dir / "data", ui);
    StartupOptions options;
    options.railWorks = dir / "rw";
    ui::frmEditor editor(ctx, options);
    qsizetype characters = 0;
    for (auto _ : state) {
        QSignalSpy loaded(&editor, &ui::frmEditor::documentLoaded);
        ui.pushPath(doc);
        editor.mnuOpenRS_Click();
        if (loaded.count() == 0)
            loaded.wait(600000);
        characters = editor.textView()->document()->characterCount();
    }
    state.counters["MB of XML"] = static_cast<double>(characters) / 1e6;
}

} // namespace

BENCHMARK(OpenLargeDocument)->Arg(10)->Arg(50)->Arg(100)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
