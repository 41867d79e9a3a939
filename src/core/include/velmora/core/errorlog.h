#pragma once
// The error log `Errors.txt`: one record per unexpected error, appended in one write,
// then shown to the user.

#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>

namespace velmora {

class UserInterface;

// "Unexpected Error in Velmora V0.1.0000"
std::string errorTitle();

// The description wrapped to 80 columns: line breaks become blanks, the text is trimmed,
// and each line breaks at the last blank that keeps it within 80 characters.
std::string wrapDescription(const std::string& description, std::size_t width = 80);

// One whole record, lines ended by CR LF, for the given local time.
std::string formatErrorRecord(const std::tm& when, const std::string& title, long number,
                              const std::string& description, const std::string& procedure,
                              const std::string& module);

// "MMMM DD, YYYY  at hh:mm:ss AMPM", e.g. "November 02, 2026  at 01:05:09 PM".
std::string formatErrorDate(const std::tm& when);

class ErrorLog {
public:
    // `ui` may be null: records are then only written.
    ErrorLog(std::filesystem::path appPath, UserInterface* ui);

    void setUserInterface(UserInterface* ui) { m_ui = ui; }
    const std::filesystem::path& file() const { return m_file; }

    // Appends a record to Errors.txt and shows "Error: #n description ...". Never throws.
    void log(const std::string& module, const std::string& procedure, long number,
             const std::string& description);

    int count() const { return m_count; }

private:
    std::filesystem::path m_file;
    UserInterface* m_ui;
    std::mutex m_mutex;
    int m_count = 0;
};

// Error numbers used where the program reports a failure the way the log expects one.
namespace err {
constexpr long SubscriptOutOfRange = 9;
constexpr long Overflow = 6;
constexpr long TypeMismatch = 13;
constexpr long FileNotFound = 53;
constexpr long InputPastEnd = 62;
constexpr long PathNotFound = 76;
constexpr long PermissionDenied = 70;
constexpr long Conversion = 1001;
} // namespace err

} // namespace velmora
