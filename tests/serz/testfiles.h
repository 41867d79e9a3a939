#pragma once
// The real documents shipped for the codec's tests.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace serztest {

inline std::filesystem::path testdata(const std::string& name) { return std::filesystem::path(VELMORA_TESTDATA) / name; }

inline std::string slurp(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::string toCrLf(const std::string& lf) {
    std::string out;
    out.reserve(lf.size() + lf.size() / 16);
    for (char c : lf) {
        if (c == '\n')
            out += '\r';
        out += c;
    }
    return out;
}

#define SKIP_WITHOUT_TESTDATA()                                                                                        \
    if (!std::filesystem::exists(serztest::testdata("routeproperties.bin")))                                           \
    GTEST_SKIP() << "the shared test documents are not beside this checkout"

} // namespace serztest
