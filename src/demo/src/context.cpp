#include "context.h"

#include "velmora/core/userinterface.h"

namespace velmora::demo {

std::string slashes(std::string path) {
    for (char& c : path)
        if (c == '\\')
            c = '/';
    return path;
}

std::string backslashes(std::string path) {
    for (char& c : path)
        if (c == '/')
            c = '\\';
    return path;
}

std::string assetFile(const std::string& provider, const std::string& product, const std::string& pathBelowProduct,
                      const std::string& ext) {
    std::string path = slashes(pathBelowProduct);
    auto dot = path.rfind('.');
    if (dot != std::string::npos && path.find('/', dot) == std::string::npos)
        path.resize(dot);
    return "Assets/" + provider + "/" + product + "/" + path + ext;
}

std::string assetFile(const Ref& ref, const std::string& ext) {
    return assetFile(ref.provider, ref.product, ref.id, ext);
}

std::string assetsRelative(const Ref& ref) {
    std::string id = ref.id;
    auto dot = id.rfind('.');
    if (dot != std::string::npos && id.find('\\', dot) == std::string::npos)
        id.resize(dot);
    return ref.provider + "\\" + ref.product + "\\" + id;
}

bool Context::cancelled() const { return ui && ui->cancelled(); }

void Context::progress(const std::string& label) {
    ++step;
    if (ui)
        ui->progress(step, label);
}

void matrix(XmlBuilder& x, std::string_view name, double tx, double ty, double tz) {
    x.open(name).open("cHcRMatrix4x4").open("Element");
    const double m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, tx, ty, tz, 1};
    for (double v : m)
        x.float32("e", v);
    x.close().close().close();
}

void blueprintRef(XmlBuilder& x, std::string_view name, const Ref& ref) {
    x.blueprintRef(name, ref.provider, ref.product, ref.id);
}

void farPosition(XmlBuilder& x, int tileX, int tileZ, double offsetX, double offsetZ) {
    x.open("RFarPosition").open("cFarVector2");
    for (int axis = 0; axis < 2; ++axis) {
        x.open(axis == 0 ? "X" : "Z").open("cFarCoordinate");
        x.open("RouteCoordinate").open("cRouteCoordinate").integer("Distance", "sInt32", axis == 0 ? tileX : tileZ);
        x.close().close();
        x.open("TileCoordinate").open("cTileCoordinate").float32("Distance", axis == 0 ? offsetX : offsetZ);
        x.close().close();
        x.close().close();
    }
    x.close().close();
}

void guidElement(XmlBuilder& x, std::string_view name, const Guid& guid) { x.guid(name, guid.a, guid.b, guid.text); }

void localisedName(XmlBuilder& x, std::string_view name, const std::string& english, const std::string& key,
                   const std::string& german, const std::string& french) {
    x.open(name).open("Localisation::cUserLocalisedString").str("English", english);
    x.str("French", french).str("Italian", "").str("German", german);
    for (const char* lang : {"Spanish", "Dutch", "Polish", "Russian"})
        x.str(lang, "");
    x.empty("Other").str("Key", key).close().close();
}

} // namespace velmora::demo
