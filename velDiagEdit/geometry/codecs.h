#pragma once
// Text forms of points ("x,y"), segment addresses ("Hi,Lo") and integer arrays ("1,2,3"), and
// the display names and default sizes of the block kinds.

#include "velDiagEdit/geometry/diag_types.h"
#include "velDiagEdit/platform/translations.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>

namespace vde {

// Pieces are not trimmed; fewer than two pieces or a bad number raise EConvertError.
VELDIAGEDIT_EXPORT TPoint StrToPoint(const QString& S);
VELDIAGEDIT_EXPORT QString PointToStr(const TPoint& P);
// "Hi,Lo", each cut to its low 16 bits.
VELDIAGEDIT_EXPORT LongRec StrToLongRec(const QString& S);
VELDIAGEDIT_EXPORT QString LongRecToStr(const LongRec& R);
VELDIAGEDIT_EXPORT QString IntArrayToString(const int32_t* A, int Count);
// Fills at most Count elements from the trimmed pieces; the rest of A is left alone.
VELDIAGEDIT_EXPORT void StringToIntArray(const QString& S, int32_t* A, int Count);
VELDIAGEDIT_EXPORT QString GoodDiagObjTypeName(int Value);
VELDIAGEDIT_EXPORT int GoodMarkerTypeCount();
VELDIAGEDIT_EXPORT QString GoodMarkerTypeName(int Value);
// The two names above as menus and lists show them: translated in the contexts
// "vde::TDiagObjectType" and "vde::TIOType", and the names themselves with no translation.
VELDIAGEDIT_EXPORT TTrText DiagObjTypeCaption(int Value);
VELDIAGEDIT_EXPORT TTrText MarkerTypeCaption(int Value);
// Width in X, height in Y; doNone leaves Size as it was.
VELDIAGEDIT_EXPORT void DefaultObjectSize(TDiagObjectType ObjType, TPoint& Size);
VELDIAGEDIT_EXPORT TPoint DefaultObjectSize(TDiagObjectType ObjType);

} // namespace vde
