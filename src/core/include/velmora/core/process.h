#pragma once
// Running external programs: start, wait, keep the front end alive, stop on Abort.

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {

class UserInterface;

enum class WindowStyle { Hidden = 0, Normal = 1 };

struct ExecResult {
    bool started = false;
    bool cancelled = false;
    long long processId = 0;
    int exitCode = -1; // for diagnostics only: callers judge success by the files produced
};

// Starts `program` with `arguments` in `workingFolder` and waits for it, polling every 50 ms.
// With `ui`, events are pumped while waiting and the process is stopped when the user aborts.
// A program that cannot be started ends quietly with started == false.
ExecResult ExecCmd(const std::string& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& workingFolder, UserInterface* ui,
                   WindowStyle style = WindowStyle::Hidden);

// Starts a program without waiting (viewers, editors, the simulator).
bool startDetached(const std::string& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& workingFolder = {});

} // namespace velmora
