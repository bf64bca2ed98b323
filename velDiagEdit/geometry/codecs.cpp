#include "velDiagEdit/geometry/codecs.h"

#include "velDiagEdit/platform/convert.h"
#include "velDiagEdit/platform/errors.h"

#include <QCoreApplication>
#include <QStringList>

namespace vde {

namespace {

QStringList TwoPieces(const QString& S, const char* what) {
    QStringList pieces = S.split(QLatin1Char(','));
    if (pieces.size() < 2)
        throw EConvertError(
            QStringLiteral("'%1' is not a valid %2: two comma-separated numbers expected")
                .arg(S, QString::fromLatin1(what)));
    return pieces;
}

QString TrimBlanks(const QString& s) {
    qsizetype b = 0, e = s.size();
    while (b < e && s[b].unicode() <= 0x20)
        ++b;
    while (e > b && s[e - 1].unicode() <= 0x20)
        --e;
    return s.mid(b, e - b);
}

// Drops the two-letter prefix of an enumeration value's name.
QString WithoutPrefix(const QString& name) {
    return name.right(name.size() - 2);
}

} // namespace

TPoint StrToPoint(const QString& S) {
    const QStringList p = TwoPieces(S, "point");
    return {StrToInt(p[0]), StrToInt(p[1])};
}

QString PointToStr(const TPoint& P) {
    return QStringLiteral("%1,%2").arg(P.X).arg(P.Y);
}

LongRec StrToLongRec(const QString& S) {
    const QStringList p = TwoPieces(S, "segment address");
    LongRec r;
    r.Lo = static_cast<uint16_t>(static_cast<uint32_t>(StrToInt(p[1])) & 0xFFFFu);
    r.Hi = static_cast<uint16_t>(static_cast<uint32_t>(StrToInt(p[0])) & 0xFFFFu);
    return r;
}

QString LongRecToStr(const LongRec& R) {
    return QStringLiteral("%1,%2").arg(R.Hi).arg(R.Lo);
}

QString IntArrayToString(const int32_t* A, int Count) {
    QString s;
    for (int i = 0; i < Count; ++i)
        s += QString::number(A[i]) + QLatin1Char(',');
    if (Count > 0)
        s.chop(1);
    return s;
}

void StringToIntArray(const QString& S, int32_t* A, int Count) {
    if (S.isEmpty())
        return;
    const QStringList pieces = S.split(QLatin1Char(','));
    const int n = std::min<int>(Count, int(pieces.size()));
    for (int i = 0; i < n; ++i)
        A[i] = StrToInt(TrimBlanks(pieces[i]));
}

QString GoodDiagObjTypeName(int Value) {
    return WithoutPrefix(GetEnumName<TDiagObjectType>(Value));
}

int GoodMarkerTypeCount() {
    return EnumCount<TIOType>();
}

QString GoodMarkerTypeName(int Value) {
    return WithoutPrefix(GetEnumName<TIOType>(Value));
}

namespace {
// Only read by lupdate: the names as the menus show them, so that the translation files list
// them; DiagObjTypeCaption and MarkerTypeCaption take the names from the enumerations.
[[maybe_unused]] const char* const kShownNames[] = {
    QT_TRANSLATE_NOOP("vde::TDiagObjectType", "Text"),
    QT_TRANSLATE_NOOP("vde::TDiagObjectType", "AndLogic"),
    QT_TRANSLATE_NOOP("vde::TDiagObjectType", "OrLogic"),
    QT_TRANSLATE_NOOP("vde::TDiagObjectType", "RSTrigger"),
    QT_TRANSLATE_NOOP("vde::TIOType", "Direct"),
    QT_TRANSLATE_NOOP("vde::TIOType", "Inversion"),
    QT_TRANSLATE_NOOP("vde::TIOType", "Arrow"),
};
} // namespace

TTrText DiagObjTypeCaption(int Value) {
    return {QByteArrayLiteral("vde::TDiagObjectType"), GoodDiagObjTypeName(Value).toUtf8()};
}

TTrText MarkerTypeCaption(int Value) {
    return {QByteArrayLiteral("vde::TIOType"), GoodMarkerTypeName(Value).toUtf8()};
}

void DefaultObjectSize(TDiagObjectType ObjType, TPoint& Size) {
    switch (ObjType) {
    case doText:
        Size = {150, 50};
        break;
    case doAndLogic:
    case doOrLogic:
        Size = {60, 100};
        break;
    case doRSTrigger:
        Size = {100, 200};
        break;
    default:
        break;
    }
}

TPoint DefaultObjectSize(TDiagObjectType ObjType) {
    TPoint p{0, 0};
    DefaultObjectSize(ObjType, p);
    return p;
}

} // namespace vde
