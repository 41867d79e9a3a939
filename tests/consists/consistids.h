#pragma once
// Ids and keys that come out the same on every run.

#include "velmora/consists/consisttemplates.h"

#include <memory>
#include <string>

namespace velmora::test {

inline consists::IdSource countingIds() {
    auto n = std::make_shared<int>(0);
    consists::IdSource ids;
    ids.fraction = [n] { return ((*n)++ % 97) / 97.0; };
    ids.guid = [n] { return "0000000" + std::to_string((*n)++ % 10) + "-1111-4222-8333-444444444444"; };
    return ids;
}

} // namespace velmora::test
