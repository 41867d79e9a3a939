// velmora-serz: a drop-in for the simulator's converter command line.
//
//   velmora-serz IN /xml:OUT    binary to XML      velmora-serz IN /bin:OUT   XML to binary
//   velmora-serz IN xml:OUT     (the same without the slash)
//   velmora-serz IN             beside the input, the other kind by the extension
// As with the simulator's converter, the input decides the direction (a binary document becomes
// XML, XML becomes a binary document); the switch names the output.
// Options: --lf / --crlf (line ends of the XML), --exp2 / --exp3 (exponent digits),
//          --compatible (floats from the text only, as the converter reads them).

#include "velmora/core/convert.h"
#include "velmora/core/textboundary.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

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

// Which way the input goes: a binary document (it starts with the header) becomes XML, text
// that starts with markup becomes a binary document; anything else goes by the extension, so
// that a damaged file gets the error of the kind its name promises.
bool inputIsBinary(const fs::path& in) {
    std::error_code ec;
    if (fs::is_regular_file(in, ec)) {
        char head[8] = {};
        std::ifstream file(in, std::ios::binary);
        file.read(head, sizeof head);
        const std::string start(head, static_cast<std::size_t>(file.gcount()));
        if (start == std::string("SERZ\0\0\1\0", 8))
            return true;
        const auto text = start.find_first_not_of(" \t\r\n");
        if (start.rfind("\xEF\xBB\xBF", 0) == 0 || (text != std::string::npos && start[text] == '<'))
            return false;
    }
    const std::string ext = in.extension().string();
    return !iequals(ext, ".xml") && !iequals(ext, ".proxyxml");
}

// Without a switch: .bin <-> .xml, .proxybin <-> .proxyxml; other binary kinds become .xml.
// A document whose name promises the other kind (XML named .proxyxml that is binary) must not be
// written over itself: it gets the plain extension instead.
fs::path besideInput(const fs::path& in, bool toXml) {
    const bool proxy = iequals(in.extension().string(), ".proxybin") || iequals(in.extension().string(), ".proxyxml");
    fs::path out = in;
    out.replace_extension(toXml ? (proxy ? ".proxyxml" : ".xml") : (proxy ? ".proxybin" : ".bin"));
    if (out == in)
        out.replace_extension(toXml ? ".xml" : ".bin");
    return out;
}

// What is printed may hold names from the documents: on a terminal their control characters are
// shown, not obeyed.
void say(const std::string& text) {
    const std::string line = ::isatty(STDOUT_FILENO) ? velmora::forTerminal(text) : text;
    std::fwrite(line.data(), 1, line.size(), stdout);
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
    const bool toXml = inputIsBinary(in);
    if (target.empty()) {
        out = besideInput(in, toXml);
    } else {
        std::string t = target;
        if (!t.empty() && t[0] == '/')
            t.erase(0, 1);
        const auto colon = t.find(':');
        const std::string kind = colon == std::string::npos ? std::string() : t.substr(0, colon);
        if (!iequals(kind, "xml") && !iequals(kind, "bin"))
            return usage();
        out = t.substr(colon + 1);
    }
    std::error_code same;
    if (fs::equivalent(in, out, same)) {
        say(in + ": the output would overwrite the input\n");
        return 1;
    }
    say("Converting " + in + " to " + out.string() + "...\n");
    const velmora::ConvertResult r = toXml ? velmora::decodeFileTo(in, out, write) : velmora::encodeFileTo(in, out, read);
    if (!r.ok) {
        // Every message names the file, and the byte or the line where the codec stopped.
        say(r.message + "\n");
        return 1;
    }
    say("Conversion complete\n");
    return 0;
}
