#include "velmora/core/desktopstate.h"

#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"

#include <algorithm>
#include <charconv>

namespace velmora {

namespace {

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    for (;;) {
        const auto tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos)
            return fields;
        line.remove_prefix(tab + 1);
    }
}

bool toInt(std::string_view s, int& out) {
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    return ec == std::errc() && end == s.data() + s.size();
}

bool keepable(std::string_view text) {
    return !text.empty() && text.find_first_of("\t\r\n") == std::string_view::npos;
}

} // namespace

void DesktopState::load() { read(ReadTextFile(m_file)); }

void DesktopState::read(std::string_view text) {
    m_places.clear();
    m_recent.clear();
    for (const std::string& line : SplitLines(text)) {
        const auto f = fieldsOf(line);
        if (f[0] == "place" && f.size() == 7 && keepable(f[1])) {
            WindowPlace p;
            int maximised = 0;
            if (toInt(f[2], p.left) && toInt(f[3], p.top) && toInt(f[4], p.width) && toInt(f[5], p.height) &&
                toInt(f[6], maximised) && p.width > 0 && p.height > 0) {
                p.maximised = maximised != 0;
                m_places[std::string(f[1])] = p;
            }
        } else if (f[0] == "recent" && f.size() == 2 && keepable(f[1]) && m_recent.size() < kRecentCount &&
                   std::find(m_recent.begin(), m_recent.end(), f[1]) == m_recent.end()) {
            m_recent.emplace_back(f[1]);
        }
    }
}

std::string DesktopState::text() const {
    std::string out;
    for (const auto& [screen, p] : m_places)
        out += "place\t" + screen + "\t" + std::to_string(p.left) + "\t" + std::to_string(p.top) + "\t" +
               std::to_string(p.width) + "\t" + std::to_string(p.height) + "\t" + (p.maximised ? "1" : "0") + "\r\n";
    for (const auto& path : m_recent)
        out += "recent\t" + path + "\r\n";
    return out;
}

std::string DesktopState::save(WriteService& files) const {
    WriteOptions own;
    own.backup = Backup::None;
    own.journal = false;
    own.sync = false; // losing it in a crash costs window places, nothing more
    const WriteResult written = files.write(m_file, text(), own);
    return written ? std::string() : written.message;
}

std::optional<WindowPlace> DesktopState::place(const std::string& screen) const {
    const auto found = m_places.find(screen);
    if (found == m_places.end())
        return std::nullopt;
    return found->second;
}

void DesktopState::setPlace(const std::string& screen, const WindowPlace& place) {
    if (keepable(screen) && place.width > 0 && place.height > 0)
        m_places[screen] = place;
}

void DesktopState::addRecentFile(const std::string& path) {
    if (!keepable(path))
        return;
    removeRecentFile(path);
    m_recent.insert(m_recent.begin(), path);
    if (m_recent.size() > kRecentCount)
        m_recent.resize(kRecentCount);
}

void DesktopState::removeRecentFile(const std::string& path) { std::erase(m_recent, path); }

} // namespace velmora
