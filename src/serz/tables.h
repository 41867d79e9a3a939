#pragma once
// Small open-addressing hash tables for the writer: texts (names, types, string values) looked
// up as they stand in the input without a copy, and the template ring's key -> slot map.

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace serz {

// A hash of a short text, eight bytes a step.
inline std::uint32_t hashText(std::string_view s) {
    std::uint64_t h = 0x9E3779B97F4A7C15ull ^ s.size();
    const char* p = s.data();
    std::size_t n = s.size();
    for (; n >= 8; p += 8, n -= 8) {
        std::uint64_t w;
        std::memcpy(&w, p, 8);
        h = (h ^ w) * 0xFF51AFD7ED558CCDull;
        h ^= h >> 32;
    }
    std::uint64_t tail = 0;
    if (n && s.size() >= 8) {
        // The last eight bytes, overlapping those already taken.
        std::memcpy(&tail, s.data() + s.size() - 8, 8);
    } else {
        for (std::size_t i = 0; i < n; ++i)
            tail |= std::uint64_t(static_cast<unsigned char>(p[i])) << (8 * i);
    }
    h = (h ^ tail) * 0xC4CEB9FE1A85EC53ull;
    h ^= h >> 29;
    return static_cast<std::uint32_t>(h ^ (h >> 32));
}

// Text -> number. The table holds views: the texts must outlive it and stay where they are.
class TextTable {
public:
    static constexpr std::uint32_t kAbsent = ~0u;

    TextTable() : m_slots(64) {}

    std::uint32_t find(std::string_view text, std::uint32_t hash) const {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
            const Slot& s = m_slots[i];
            if (!s.data)
                return kAbsent;
            if (s.hash == hash && s.size == text.size() && std::memcmp(s.data, text.data(), text.size()) == 0)
                return s.value;
        }
    }
    // The text must not be in the table yet.
    void insert(std::string_view text, std::uint32_t hash, std::uint32_t value) {
        if ((m_count + 1) * 2 > m_slots.size())
            grow();
        place(Slot{text.data() ? text.data() : "", static_cast<std::uint32_t>(text.size()), hash, value});
        ++m_count;
    }
    std::size_t size() const { return m_count; }

private:
    struct Slot {
        const char* data = nullptr; // null: empty
        std::uint32_t size = 0;
        std::uint32_t hash = 0;
        std::uint32_t value = 0;
    };
    void place(const Slot& slot) {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = slot.hash & mask;
        while (m_slots[i].data)
            i = (i + 1) & mask;
        m_slots[i] = slot;
    }
    void grow() {
        std::vector<Slot> old(m_slots.size() * 2);
        old.swap(m_slots);
        for (const Slot& s : old)
            if (s.data)
                place(s);
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

// Template key -> ring slot. At most 255 keys are ever held, so a fixed table of 1,024 places
// stays sparse; removal shifts the following entries back (no tombstones).
class TemplateSlots {
public:
    static constexpr std::uint64_t kEmpty = ~0ull;
    static constexpr int kAbsent = -1;

    TemplateSlots() { m_keys.fill(kEmpty); }

    int find(std::uint64_t key) const {
        for (std::size_t i = home(key);; i = (i + 1) & kMask) {
            if (m_keys[i] == key)
                return m_slots[i];
            if (m_keys[i] == kEmpty)
                return kAbsent;
        }
    }
    // The key must not be held yet.
    void insert(std::uint64_t key, std::uint8_t slot) {
        std::size_t i = home(key);
        while (m_keys[i] != kEmpty)
            i = (i + 1) & kMask;
        m_keys[i] = key;
        m_slots[i] = slot;
    }
    void erase(std::uint64_t key) {
        std::size_t i = home(key);
        while (m_keys[i] != key) {
            if (m_keys[i] == kEmpty)
                return;
            i = (i + 1) & kMask;
        }
        // Move back every later entry of the run whose home is not between the hole and it.
        for (std::size_t j = (i + 1) & kMask; m_keys[j] != kEmpty; j = (j + 1) & kMask) {
            const std::size_t h = home(m_keys[j]);
            const bool between = i <= j ? (i < h && h <= j) : (i < h || h <= j);
            if (!between) {
                m_keys[i] = m_keys[j];
                m_slots[i] = m_slots[j];
                i = j;
            }
        }
        m_keys[i] = kEmpty;
    }

private:
    static constexpr std::size_t kSize = 1024, kMask = kSize - 1;
    static std::size_t home(std::uint64_t key) { return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15ull) >> 54); }

    std::array<std::uint64_t, kSize> m_keys;
    std::array<std::uint8_t, kSize> m_slots{};
};

} // namespace serz
