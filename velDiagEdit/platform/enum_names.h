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

// The ordinal of the value whose name equals Name ignoring case, or -1 when none does.
template <class E> int GetEnumValue(const QString& Name) {
    const auto& names = TEnumInfo<E>::Names;
    for (size_t i = 0; i < names.size(); ++i)
        if (Name.compare(QLatin1String(names[i]), Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

} // namespace vde
