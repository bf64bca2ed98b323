#pragma once
// Text-to-integer conversion with the platform's rules: leading blanks are accepted,
// trailing ones are not; anything else that is not a 32-bit decimal integer is an EConvertError.

#include <QString>
#include <cstdint>

namespace vde {

int32_t StrToInt(const QString& s);
QString IntToStr(int64_t v);

} // namespace vde
