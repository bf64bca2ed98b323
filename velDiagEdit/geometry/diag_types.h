#pragma once
// The one-byte enumerations shared by blocks, connections, commands and streams.

#include "velDiagEdit/platform/enum_names.h"

#include <cstdint>

namespace vde {

enum TDiagObjectType : uint8_t { doNone, doText, doAndLogic, doOrLogic, doRSTrigger };
enum TIOType : uint8_t { itDirect, itInversion, itArrow };

template <> struct TEnumInfo<TDiagObjectType> {
    static constexpr std::array<const char*, 5> Names = {"doNone", "doText", "doAndLogic",
                                                         "doOrLogic", "doRSTrigger"};
};
template <> struct TEnumInfo<TIOType> {
    static constexpr std::array<const char*, 3> Names = {"itDirect", "itInversion", "itArrow"};
};

} // namespace vde
