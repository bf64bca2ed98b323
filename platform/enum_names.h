#pragma once
// Names of enumeration values, as run-time type information would give them.

#include <QString>
#include <array>

namespace vde {

// Specialise with a `static constexpr std::array<const char*, N> Names`.
template <class E> struct TEnumInfo;

template <class E> int EnumCount() {
    return int(TEnumInfo<E>::Names.size());
}

// The value's name, or its number when it is outside the enumeration.
template <class E> QString GetEnumName(int value) {
    const auto& names = TEnumInfo<E>::Names;
    if (value < 0 || value >= int(names.size()))
        return QString::number(value);
    return QString::fromLatin1(names[size_t(value)]);
}

} // namespace vde
