// velmora-serz: a drop-in for the simulator's converter command line.
//
//   velmora-serz IN /xml:OUT    binary to XML      velmora-serz IN /bin:OUT   XML to binary
//   velmora-serz IN xml:OUT     (the same without the slash)
//   velmora-serz IN             beside the input, the other kind by the extension
// Options: --lf / --crlf (line ends of the XML), --exp2 / --exp3 (exponent digits),
//          --compatible (floats from the text only, as the converter reads them).

#include "velmora/core/convert.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

bool iequals(const std::string& a, const std::string& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// Without a switch: .bin <-> .xml, .proxybin <-> .proxyxml; other binary kinds become .xml.
bool besideInput(const fs::path& in, fs::path& out, bool& toXml) {
    const std::string ext = in.extension().string();
    out = in;
    if (iequals(ext, ".xml")) {
        out.replace_extension(".bin");
        toXml = false;
    } else if (iequals(ext, ".proxyxml")) {
        out.replace_extension(".proxybin");
        toXml = false;
    } else if (iequals(ext, ".proxybin")) {
        out.replace_extension(".proxyxml");
        toXml = true;
    } else {
        out.replace_extension(".xml");
        toXml = true;
    }
    return true;
}

int usage() {
    std::printf("Usage: velmora-serz IN [/xml:OUT | /bin:OUT] [--lf|--crlf] [--exp2|--exp3] [--compatible]\n");
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    serz::WriteOptions write;
    serz::ReadOptions read;
    std::string in, target;
    for (const std::string& a : args) {
        if (a == "--lf") write.lineEnd = serz::LineEnd::Lf;
        else if (a == "--crlf") write.lineEnd = serz::LineEnd::CrLf;
        else if (a == "--exp2") write.exponentDigits = 2;
        else if (a == "--exp3") write.exponentDigits = 3;
        else if (a == "--compatible") read.floats = serz::FloatImport::Compatible;
        else if (a == "--help" || a == "-h") return usage(), 0;
        else if (in.empty()) in = a;
        else if (target.empty()) target = a;
        else return usage();
    }
    if (in.empty())
        return usage();
    fs::path out;
    bool toXml = true;
    if (target.empty()) {
        besideInput(in, out, toXml);
    } else {
        std::string t = target;
        if (!t.empty() && t[0] == '/')
            t.erase(0, 1);
        const auto colon = t.find(':');
        const std::string kind = colon == std::string::npos ? std::string() : t.substr(0, colon);
        if (iequals(kind, "xml"))
            toXml = true;
        else if (iequals(kind, "bin"))
            toXml = false;
        else
            return usage();
        out = t.substr(colon + 1);
    }
    std::printf("Converting %s to %s...\n", in.c_str(), out.string().c_str());
    const velmora::ConvertResult r = toXml ? velmora::decodeFileTo(in, out, write) : velmora::encodeFileTo(in, out, read);
    if (!r.ok) {
        // Every message names the file, and the byte or the line where the codec stopped.
        std::printf("%s\n", r.message.c_str());
        return 1;
    }
    std::printf("Conversion complete\n");
    return 0;
}
