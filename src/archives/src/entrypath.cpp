#include "velmora/archives/entrypath.h"

namespace velmora::archives {

namespace {

// The longest name one folder entry may have on the file systems the simulator lives on, and a
// bound on the whole path that stays clear of every system's limit.
constexpr std::size_t kLongestPart = 255;
constexpr std::size_t kLongestPath = 1024;

} // namespace

std::string EntryPlace::relative() const {
    std::string s;
    for (const auto& p : parts)
        s += (s.empty() ? "" : "/") + p;
    return s;
}

EntryPlace placeOf(const ZipEntry& entry) {
    EntryPlace place;
    const std::string& name = entry.name;
    auto refuse = [&](std::string why) {
        place.parts.clear();
        place.refusal = std::move(why);
        return place;
    };
    if (entry.link)
        return refuse("is a link, which is never unpacked");
    if (name.empty())
        return refuse("has no name");
    if (name.size() > kLongestPath)
        return refuse("has a name of " + std::to_string(name.size()) + " characters, longer than any folder allows");
    if (name.front() == '/' || name.front() == '\\')
        return refuse("names a place from the root of the disk, outside the folder it is unpacked into");
    if (name.size() >= 2 && name[1] == ':')
        return refuse("names a drive, outside the folder it is unpacked into");
    std::string part;
    auto finishPart = [&]() -> bool {
        if (part.empty() || part == ".") {
            part.clear();
            return true;
        }
        if (part == "..")
            return false;
        place.parts.push_back(std::move(part));
        part.clear();
        return true;
    };
    for (const char c : name) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '/' || c == '\\') {
            if (!finishPart())
                return refuse("leads out of the folder it is unpacked into (\"..\")");
            continue;
        }
        if (u < 0x20 || u == 0x7f)
            return refuse("has a control character in its name");
        if (c == ':')
            return refuse("has a ':' in its name, which names a drive or a stream on Windows");
        part += c;
        if (part.size() > kLongestPart)
            return refuse("has a folder or file name longer than " + std::to_string(kLongestPart) + " characters");
    }
    if (!finishPart())
        return refuse("leads out of the folder it is unpacked into (\"..\")");
    if (place.parts.empty())
        return refuse("names no file");
    return place;
}

} // namespace velmora::archives
