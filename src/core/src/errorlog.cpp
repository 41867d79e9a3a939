#include "velmora/core/errorlog.h"

#include "velmora/core/filewrite.h"

#include "velmora/core/userinterface.h"
#include "velmora/core/version.h"

#include <cstdio>
#include <ctime>
#include <fstream>

namespace velmora {

std::string errorTitle() {
    char rev[16];
    std::snprintf(rev, sizeof rev, "%04d", Version::revision);
    return "Unexpected Error in Velmora V" + std::to_string(Version::major) + "." +
           std::to_string(Version::minor) + "." + rev;
}

std::string formatErrorDate(const std::tm& when) {
    static const char* const months[] = {"January", "February", "March",     "April",   "May",      "June",
                                         "July",    "August",   "September", "October", "November", "December"};
    int hour12 = when.tm_hour % 12;
    if (hour12 == 0)
        hour12 = 12;
    char buf[96];
    std::snprintf(buf, sizeof buf, "%s %02d, %04d  at %02d:%02d:%02d %s", months[(when.tm_mon % 12 + 12) % 12],
                  when.tm_mday, when.tm_year + 1900, hour12, when.tm_min, when.tm_sec,
                  when.tm_hour < 12 ? "AM" : "PM");
    return buf;
}

std::string wrapDescription(const std::string& description, std::size_t width) {
    std::string text = description;
    for (char& c : text)
        if (c == '\r' || c == '\n')
            c = ' ';
    std::size_t b = text.find_first_not_of(' ');
    std::size_t e = text.find_last_not_of(' ');
    text = b == std::string::npos ? std::string() : text.substr(b, e - b + 1);

    std::string out;
    std::string_view rest = text;
    while (rest.size() > width) {
        // The last blank that keeps the line within the width; a word longer than the
        // width is cut at the width.
        std::size_t cut = rest.substr(0, width + 1).rfind(' ');
        if (cut == std::string_view::npos || cut == 0) {
            out += rest.substr(0, width);
            rest.remove_prefix(width);
        } else {
            out += rest.substr(0, cut);
            rest.remove_prefix(cut + 1);
        }
        out += "\r\n";
        while (!rest.empty() && rest.front() == ' ')
            rest.remove_prefix(1);
    }
    out += rest;
    return out;
}

std::string formatErrorRecord(const std::tm& when, const std::string& title, long number,
                              const std::string& description, const std::string& procedure,
                              const std::string& module) {
    const std::string eol = "\r\n";
    std::string r;
    r += formatErrorDate(when) + " | " + title + eol;
    r += "Error:" + eol;
    r += std::to_string(number) + eol + eol;
    r += "Description:" + eol;
    r += wrapDescription(description) + eol + eol;
    r += "Procedure:" + eol;
    r += procedure + eol + eol;
    r += "Module:" + eol;
    r += module + eol;
    r += std::string(80, '=') + eol;
    r += eol;
    return r;
}

ErrorLog::ErrorLog(std::filesystem::path appPath, UserInterface* ui)
    : m_file(std::move(appPath) / "Errors.txt"), m_ui(ui) {}

void ErrorLog::log(const std::string& module, const std::string& procedure, long number,
                   const std::string& description) {
    const std::string title = errorTitle();
    {
        std::lock_guard lock(m_mutex);
        ++m_count;
        std::time_t now = std::time(nullptr);
        std::tm local{};
#ifdef _WIN32
        localtime_s(&local, &now);
#else
        localtime_r(&now, &local);
#endif
        // The record goes out in one write with the file closed after it; a failure here is
        // not logged again.
        try {
            WriteService().append(m_file, formatErrorRecord(local, title, number, description, procedure, module));
        } catch (...) {
        }
    }
    if (m_ui)
        m_ui->message("Error: #" + std::to_string(number) + " " + description + "\n\nModule: " + module +
                          "\nProcedure: " + procedure + "\n",
                      Icon::Critical, title);
}

} // namespace velmora
