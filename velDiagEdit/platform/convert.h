#pragma once
// Text-to-integer conversion with the platform's rules: leading blanks are accepted,
// trailing ones are not; anything else that is not a 32-bit decimal integer is an EConvertError.

#include "velDiagEdit/velDiagEdit_export.h"
#include <QString>
#include <cstdint>

namespace vde {

VELDIAGEDIT_EXPORT int32_t StrToInt(const QString& s);
VELDIAGEDIT_EXPORT QString IntToStr(int64_t v);

} // namespace vde
