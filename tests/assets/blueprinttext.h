#pragma once
// What the tests of the blueprint edits read in a blueprint's text: how often a piece occurs,
// the value of a tag, and whether an edited text still goes through the codec both ways.

#include "serz/serz.h"
#include "velmora/core/convert.h"
#include "velmora/core/xmltext.h"

#include <gtest/gtest.h>

#include <string>

namespace velmora::test {

inline std::size_t count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1))
        ++n;
    return n;
}

// The value of the first <tag ...> at or after `from`.
inline std::string valueOf(const std::string& xml, const std::string& tag, std::size_t from = 0) {
    std::size_t pos = from + 1;
    std::string value;
    GetDetail(xml, pos, tag, value);
    return value;
}

// The edited text goes through the codec both ways.
inline ::testing::AssertionResult roundTrips(const std::string& xml) {
    std::string bin, back;
    if (const ConvertResult r = xmlTextToBin(xml, bin); !r)
        return ::testing::AssertionFailure() << "does not encode: " << r.message;
    if (const serz::Status s = serz::decode(bin, back); !s)
        return ::testing::AssertionFailure() << "does not decode: " << s.message;
    return ::testing::AssertionSuccess();
}

} // namespace velmora::test
