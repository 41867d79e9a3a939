// How long the main screen takes to open a large binary document: conversion on a worker
// thread, then the text put into the view in slices. Offscreen; sizes are of the XML text.

#include "editor/frmeditor.h"
#include "serz/serz.h"
#include "velmora/core/userinterface.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QSignalSpy>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
using namespace velmora;

namespace {

// A document of about `megabytes` of XML: entities with names, numbers and matrices.
fs::path makeDocument(const fs::path& dir, int megabytes) {
    const fs::path file = dir / ("large-" + std::to_string(megabytes) + ".bin");
    if (fs::exists(file))
        return file;
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                      "<cRecordSet xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n<Record>\r\n";
    for (int i = 0; xml.size() < static_cast<std::size_t>(megabytes) * 1000000; ++i)
        xml += "\t<cDynamicEntity d:id=\"" + std::to_string(100000 + i) + "\">\r\n\t\t<Name d:type=\"cDeltaString\">Item " +
               std::to_string(i % 500) + "</Name>\r\n\t\t<X d:type=\"sFloat32\" d:alt_encoding=\"0000000000405E40\" "
               "d:precision=\"string\">121</X>\r\n\t\t<M d:numElements=\"4\" d:elementType=\"sFloat32\" "
               "d:precision=\"string\">1.0000000 0.0000000 -0.5000000 0.2500000</M>\r\n\t</cDynamicEntity>\r\n";
    xml += "</Record>\r\n</cRecordSet>\r\n";
    std::string bin;
    serz::encode(xml, bin);
    std::ofstream(file, std::ios::binary) << bin;
    return file;
}

void OpenLargeDocument(benchmark::State& state) {
    const fs::path dir = fs::temp_directory_path() / "velmora-bench-editor";
    fs::create_directories(dir / "rw/Content/Routes");
    std::ofstream(dir / "rw/RailWorks.exe").close();
    fs::create_directories(dir / "rw/Assets");
    const fs::path doc = makeDocument(dir, static_cast<int>(state.range(0)));
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
