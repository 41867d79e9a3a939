#pragma once

namespace velmora {

// Program version, shown in the main caption and in every error record.
struct Version {
    static constexpr int major = 0;
    static constexpr int minor = 1;
    static constexpr int revision = 0;
};

} // namespace velmora
