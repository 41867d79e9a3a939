#pragma once
// The scaled demo install the benchmarks run on: generated once into the build folder (scale
// from VELMORA_BENCH_SCALE, 100 by default) and reused by later runs.

#include "velmora/demo/demoinstall.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace velmora::bench {

inline std::filesystem::path demoInstall() {
    const char* scaleText = std::getenv("VELMORA_BENCH_SCALE");
    const int scale = scaleText ? std::atoi(scaleText) : 100;
    const std::filesystem::path root = std::filesystem::path(VELMORA_BENCH_DIR) / ("scale-" + std::to_string(scale));
    if (!std::filesystem::exists(root / "manifest.json")) {
        std::cerr << "Generating the scale-" << scale << " demo install in " << root << " ...\n";
        demo::DemoOptions options;
        options.scale = scale;
        const auto r = demo::generateDemoInstall(root, options);
        if (!r.ok) {
            std::cerr << "cannot generate the demo install: " << r.error << '\n';
            std::exit(2);
        }
    }
    return root;
}

} // namespace velmora::bench
