#pragma once
// The small prompts and messages the editing commands use, all through the dialog service.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>

namespace vde {

// Shows "Left, Top, Right, Bottom" of R in an input box; the answer is not used.
VELDIAGEDIT_EXPORT void ShowRectParams(const TRect& R, const QString& Caption);
// Asks for "Left, Top, Right, Bottom"; on OK R takes the four values typed and the result is
// true; on cancel R is unchanged and the result false.
VELDIAGEDIT_EXPORT bool SetRectParams(TRect& R, const QString& Caption);
// An error message with the single button OK; the dialog's result.
VELDIAGEDIT_EXPORT int ErrorMessageDlg(const QString& Msg);
// A Yes/No question without an icon, No the default; true exactly when Yes was pressed.
VELDIAGEDIT_EXPORT bool QueryMessageDlg(const QString& Msg, const QString& Caption);

} // namespace vde
