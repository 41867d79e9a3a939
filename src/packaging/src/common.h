#pragma once
// What the kinds of package share inside the library.

#include "velmora/packaging/packaging.h"

#include <optional>
#include <string>

namespace velmora::packaging::detail {

std::string trimmed(std::string s);
// A relative path with backslashes, as the installer's files write them.
std::string backslashed(const fs::path& p);
// The same with forward slashes.
std::string unslashed(std::string s);
// The installer beside the program, copied into the package under the name `as`; a note when
// it is not there.
void addInstaller(AppContext& ctx, PackageBuilder& builder, const char* as);
// A report of a package refused before anything was copied.
PackageReport refusedReport(const fs::path& folder, const std::string& why);
// A path below the simulator's root, found without regard to letter case.
std::optional<fs::path> belowRoot(AppContext& ctx, const std::string& relative);

} // namespace velmora::packaging::detail
