#pragma once
// velmora-cli: every batch job from the command line, on the logic libraries only.

#include <iosfwd>
#include <string>
#include <vector>

namespace velmora::cli {

enum ExitCode { Success = 0, ProblemsFound = 1, Error = 2 };

// Runs one command line (without the program name). Output and errors go to the streams.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace velmora::cli
