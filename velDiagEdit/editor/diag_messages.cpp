#include "velDiagEdit/editor/diag_messages.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QCoreApplication>

namespace vde {

namespace {
QString RectPrompt() {
    return QCoreApplication::translate("vde::TDiagContainer", "Left, Top, Right, Bottom");
}

QString RectText(const TRect& R) {
    const int32_t a[4] = {R.Left, R.Top, R.Right, R.Bottom};
    return IntArrayToString(a, 4);
}
} // namespace

void ShowRectParams(const TRect& R, const QString& Caption) {
    DialogService().InputBox(Caption, RectPrompt(), RectText(R));
}

bool SetRectParams(TRect& R, const QString& Caption) {
    QString text = RectText(R);
    if (!DialogService().InputQuery(Caption, RectPrompt(), text))
        return false;
    // Parsed into a copy: a bad number part-way must not leave R half-written. Fewer numbers
    // than four leave the remaining fields as they were.
    int32_t a[4] = {R.Left, R.Top, R.Right, R.Bottom};
    StringToIntArray(text, a, 4);
    R = TRect{a[0], a[1], a[2], a[3]};
    return true;
}

int ErrorMessageDlg(const QString& Msg) {
    return DialogService().ErrorMessageDlg(Msg);
}

bool QueryMessageDlg(const QString& Msg, const QString& Caption) {
    return DialogService().QueryMessageDlg(Msg, Caption);
}

} // namespace vde
