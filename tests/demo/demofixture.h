#pragma once
// One generated install per test program, written with the documents left as XML (the codec
// may not be there) unless a test asks for the real encoding.

#include "tempdir.h"
#include "velmora/demo/demoinstall.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace velmora::test {

inline demo::Encoder keepXml() {
    return [](std::string_view xml, std::string& out, std::string&) {
        out.assign(xml);
        return true;
    };
}

inline std::string readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

inline std::filesystem::path under(const std::filesystem::path& root, const std::string& rel) {
    return root / std::filesystem::path(std::u8string(rel.begin(), rel.end()));
}

struct Install {
    TempDir dir;
    demo::DemoResult result;
    QJsonObject manifest;

    explicit Install(int scale = 1, std::uint64_t seed = 7, demo::Encoder encoder = keepXml()) {
        result = demo::generateDemoInstall(dir.path(), {scale, seed, std::move(encoder)});
        std::string json = readFile(dir.path() / "manifest.json");
        manifest = QJsonDocument::fromJson(QByteArray(json.data(), static_cast<qsizetype>(json.size()))).object();
    }
    std::filesystem::path path(const std::string& rel) const { return under(dir.path(), rel); }
    QJsonArray faults() const { return manifest["faults"].toArray(); }
};

// The install the tests of one program share (scale 1, seed 7), made at first use.
inline Install& sharedInstall() {
    static Install install;
    return install;
}

inline std::string str(const QJsonValue& v) { return v.toString().toStdString(); }

} // namespace velmora::test
