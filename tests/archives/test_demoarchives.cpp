// The demo install's archives: every one that reads is listed and unpacked exactly as the 7-Zip
// program lists and unpacks it, byte for byte; the damaged ones are named. Where 7zz is not
// installed the comparison is skipped and said so.

#include "common/demofixture.h"
#include "velmora/archives/apcommands.h"
#include "velmora/archives/aptable.h"
#include "velmora/archives/unpack.h"
#include "velmora/core/services.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>

using namespace velmora;
using namespace velmora::archives;

namespace {

struct DemoArchives : test::DemoInstallTest<DemoArchives> {
    static constexpr const char* kName = "demoarchives";
};

bool have7zz() { return std::system("7zz > /dev/null 2>&1") == 0; }

std::string run(const std::string& command) {
    std::string out;
    if (FILE* p = ::popen(command.c_str(), "r")) {
        char buf[4096];
        for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;)
            out.append(buf, n);
        ::pclose(p);
    }
    return out;
}

std::string quoted(const fs::path& p) { return "'" + p.string() + "'"; }

// name -> size, from 7zz's technical listing.
std::map<std::string, std::uint64_t> sevenZipEntries(const fs::path& ap) {
    std::map<std::string, std::uint64_t> out;
    std::string path;
    for (const auto& line : SplitLines(run("7zz l -slt -ba " + quoted(ap)))) {
        if (line.rfind("Path = ", 0) == 0)
            path = line.substr(7);
        else if (line.rfind("Size = ", 0) == 0 && !path.empty())
            out[path] = std::stoull(line.substr(7));
    }
    return out;
}

std::map<std::string, std::string> treeOf(const fs::path& root) {
    std::map<std::string, std::string> out;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file())
            out[fs::relative(e.path(), root).generic_string()] = ReadTextFile(e.path());
    return out;
}

TEST_F(DemoArchives, ListedAndUnpackedAsSevenZipDoesIt) {
    if (!have7zz())
        GTEST_SKIP() << "7zz is not installed here";
    ApFindOptions o;
    o.details = false;
    const ApTable table = findApFiles(s_dir / "rw", o, nullptr);
    ASSERT_FALSE(table.files.empty());
    int compared = 0;
    for (const auto& f : table.files) {
        ZipReader zip;
        if (!zip.open(f.path))
            continue; // the damaged ones: see below
        std::map<std::string, std::uint64_t> ours;
        bool unsafe = false;
        for (const auto& e : zip.entries()) {
            ours[e.name] = e.size;
            unsafe = unsafe || e.name.find("..") != std::string::npos || e.name.front() == '/';
        }
        EXPECT_EQ(ours, sevenZipEntries(f.path)) << f.path;
        if (unsafe)
            continue; // 7-Zip's own handling of those names is not the reference
        const fs::path mine = s_dir / ("mine-" + std::to_string(compared));
        const fs::path theirs = s_dir / ("theirs-" + std::to_string(compared));
        UnpackOptions u;
        u.destination = mine;
        u.keepBackups = false;
        const UnpackResult r = unpackArchive(m_ctx->files(), f.path, u, nullptr);
        ASSERT_TRUE(r.ok) << r.error;
        run("7zz x -y -bso0 -bsp0 -o" + quoted(theirs) + " " + quoted(f.path));
        EXPECT_EQ(treeOf(mine), treeOf(theirs)) << f.path;
        ++compared;
    }
    EXPECT_GT(compared, 0);
}

TEST_F(DemoArchives, EveryArchiveIsReadOrNamed) {
    ApFindOptions o;
    o.details = false;
    const ApTable table = findApFiles(s_dir / "rw", o, nullptr);
    for (const auto& f : table.files) {
        ZipReader zip;
        if (!zip.open(f.path)) {
            EXPECT_NE(zip.error().find(f.path.filename().string()), std::string::npos) << zip.error();
        }
    }
}

} // namespace
