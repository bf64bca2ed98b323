#include "velDiagEdit/platform/convert.h"

#include "velDiagEdit/platform/errors.h"

namespace vde {

int32_t StrToInt(const QString& s) {
    auto fail = [&]() -> int32_t {
        throw EConvertError(QStringLiteral("'%1' is not a valid integer value").arg(s));
    };
    qsizetype i = 0;
    const qsizetype n = s.size();
    while (i < n && s[i].unicode() <= 0x20 && s[i].unicode() != 0)
        ++i;
    bool negative = false;
    if (i < n && (s[i] == u'-' || s[i] == u'+')) {
        negative = s[i] == u'-';
        ++i;
    }
    if (i >= n)
        return fail();
    int64_t value = 0;
    for (; i < n; ++i) {
        const char16_t c = s[i].unicode();
        if (c < u'0' || c > u'9')
            return fail();
        value = value * 10 + (c - u'0');
        if (value > int64_t(INT32_MAX) + 1)
            return fail();
    }
    if (negative)
        value = -value;
    if (value > INT32_MAX || value < INT32_MIN)
        return fail();
    return static_cast<int32_t>(value);
}

QString IntToStr(int64_t v) {
    return QString::number(v);
}

} // namespace vde
