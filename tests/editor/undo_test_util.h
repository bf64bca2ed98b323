#pragma once
// Byte comparison for the undo tests that says where two container streams part.

#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace vde::test {

inline ::testing::AssertionResult SameBytes(const std::vector<uint8_t>& Actual,
                                            const std::vector<uint8_t>& Expected) {
    if (Actual == Expected)
        return ::testing::AssertionSuccess();
    size_t at = 0;
    while (at < Actual.size() && at < Expected.size() && Actual[at] == Expected[at])
        ++at;
    std::ostringstream os;
    os << "streams of " << Actual.size() << " and " << Expected.size()
       << " bytes part at byte offset " << at << ":";
    for (const auto* bytes : {&Actual, &Expected}) {
        os << "\n  ";
        for (size_t i = at; i < bytes->size() && i < at + 24; ++i)
            os << int((*bytes)[i]) << ' ';
    }
    return ::testing::AssertionFailure() << os.str();
}

} // namespace vde::test
