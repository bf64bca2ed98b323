#pragma once
// Text forms of points ("x,y"), segment addresses ("Hi,Lo") and integer arrays ("1,2,3"), and
// the display names and default sizes of the block kinds.

#include "velDiagEdit/geometry/diag_types.h"
#include "velDiagEdit/platform/types.h"

#include <QString>

namespace vde {

// Pieces are not trimmed; fewer than two pieces or a bad number raise EConvertError.
TPoint StrToPoint(const QString& S);
QString PointToStr(const TPoint& P);
// "Hi,Lo", each cut to its low 16 bits.
LongRec StrToLongRec(const QString& S);
QString LongRecToStr(const LongRec& R);
QString IntArrayToString(const int32_t* A, int Count);
// Fills at most Count elements from the trimmed pieces; the rest of A is left alone.
void StringToIntArray(const QString& S, int32_t* A, int Count);
QString GoodDiagObjTypeName(int Value);
int GoodMarkerTypeCount();
QString GoodMarkerTypeName(int Value);
// Width in X, height in Y; doNone leaves Size as it was.
void DefaultObjectSize(TDiagObjectType ObjType, TPoint& Size);
TPoint DefaultObjectSize(TDiagObjectType ObjType);

} // namespace vde
