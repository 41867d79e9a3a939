#pragma once
// Where an archive entry may be unpacked. An entry's name is the archive maker's text: it may
// try to leave the folder it is unpacked into ("..", "/etc/...", "C:\..."), be a link, or carry
// characters no folder should get. Every unpack asks here first.

#include "velmora/archives/zipreader.h"

#include <string>
#include <vector>

namespace velmora::archives {

struct EntryPlace {
    std::vector<std::string> parts; // the folders and the file name below the destination
    std::string refusal;            // why the entry may not be unpacked; empty when it may
    bool ok() const { return refusal.empty(); }
    // The parts joined by '/' (the form unpacked paths are compared in).
    std::string relative() const;
};

EntryPlace placeOf(const ZipEntry& entry);

} // namespace velmora::archives
