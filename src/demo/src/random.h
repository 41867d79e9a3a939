#pragma once
// The demo's own random numbers: the same seed gives the same install on every platform and
// standard library, so nothing here may come from <random>.

#include <cstdint>
#include <cstdio>
#include <string>

namespace velmora::demo {

class SplitMix {
public:
    explicit SplitMix(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // 0 <= value < bound (bound > 0). The slight modulo bias does not matter here.
    std::uint64_t below(std::uint64_t bound) { return next() % bound; }
    // A value in [lo, hi) on a grid of 1/1000, so that floats print in short forms.
    double range(double lo, double hi) {
        auto steps = static_cast<std::uint64_t>((hi - lo) * 1000.0);
        return lo + static_cast<double>(below(steps ? steps : 1)) / 1000.0;
    }
    // A positive element id as the simulator's documents carry them.
    std::int32_t id() { return static_cast<std::int32_t>(100000000 + below(900000000)); }
    // A stream of its own for one part of the install, so parts do not shift each other.
    SplitMix fork(std::uint64_t salt) { return SplitMix(next() ^ (salt * 0xD1B54A32D192ED03ull)); }

private:
    std::uint64_t m_state;
};

// A GUID as two numbers (the document's UUID values) and its text form.
struct Guid {
    std::uint64_t a = 0, b = 0;
    std::string text;
};

inline Guid makeGuid(SplitMix& rng) {
    Guid g;
    g.a = rng.next();
    g.b = rng.next();
    // The documents store the 16 bytes in Windows memory order as two little-endian numbers.
    unsigned char bytes[16];
    for (int i = 0; i < 8; ++i) {
        bytes[i] = static_cast<unsigned char>(g.a >> (8 * i));
        bytes[8 + i] = static_cast<unsigned char>(g.b >> (8 * i));
    }
    auto d1 = static_cast<unsigned>(bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<unsigned>(bytes[3]) << 24);
    auto d2 = static_cast<unsigned>(bytes[4] | bytes[5] << 8);
    auto d3 = static_cast<unsigned>(bytes[6] | bytes[7] << 8);
    char buf[40];
    std::snprintf(buf, sizeof buf, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", d1, d2, d3, bytes[8], bytes[9],
                  bytes[10], bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
    g.text = buf;
    return g;
}

} // namespace velmora::demo
