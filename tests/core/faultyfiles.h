#pragma once
// The file system calls of the write service with one of them made to fail: the n-th call of a
// chosen step gets the chosen error. The other calls go through to the system.

#include "velmora/core/filewrite.h"

#include <functional>
#include <map>
#include <optional>

namespace velmora::test {

class FaultyFiles : public FileOps {
public:
    FaultyFiles() = default;
    FaultyFiles(WriteStep step, std::errc why = std::errc::io_error, int succeeding = 0)
        : failAt(step), error(std::make_error_code(why)), skip(succeeding) {}

    std::optional<WriteStep> failAt;
    std::error_code error = std::make_error_code(std::errc::io_error);
    int skip = 0; // calls of that step that still succeed before the failing one
    std::map<WriteStep, int> calls;
    // Runs before each create, with the name about to be created (lets a test put a link there).
    std::function<void(const fs::path&)> beforeCreate;

    std::error_code create(const fs::path& path, int& handle) override {
        if (beforeCreate)
            beforeCreate(path);
        if (auto e = fault(WriteStep::Create))
            return e;
        return FileOps::create(path, handle);
    }
    std::error_code write(int handle, const char* data, std::size_t size) override {
        if (auto e = fault(WriteStep::Write)) {
            // Half of it reaches the disk first, as when the disk fills up.
            FileOps::write(handle, data, size / 2);
            return e;
        }
        return FileOps::write(handle, data, size);
    }
    std::error_code sync(int handle) override {
        if (auto e = fault(WriteStep::Sync))
            return e;
        return FileOps::sync(handle);
    }
    std::error_code link(const fs::path& from, const fs::path& to) override {
        if (auto e = fault(WriteStep::Backup))
            return e;
        return FileOps::link(from, to);
    }
    std::error_code rename(const fs::path& from, const fs::path& to) override {
        if (auto e = fault(WriteStep::Replace))
            return e;
        return FileOps::rename(from, to);
    }

private:
    std::error_code fault(WriteStep step) {
        const int n = calls[step]++;
        return failAt == step && n == skip ? error : std::error_code();
    }
};

} // namespace velmora::test
