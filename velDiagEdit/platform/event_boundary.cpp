#include "velDiagEdit/platform/event_boundary.h"

#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/errors.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <cstring>

Q_LOGGING_CATEGORY(lcEvents, "veldiagedit.events")

namespace vde {

namespace {

int gErrorCount = 0;
// Set while the boundary's message is on screen: an error raised by a handler that runs under
// that modal dialog is logged, not stacked as a second dialog.
bool gShowing = false;

void Show(const QString& text) {
    if (gShowing) {
        qCWarning(lcEvents) << "error while another is shown:" << text;
        return;
    }
    gShowing = true;
    try {
        DialogService().ErrorMessageDlg(text);
    } catch (...) {
        // The dialog service itself failed; the text has been logged, and it stops here.
        qCWarning(lcEvents) << "could not show error:" << text;
    }
    gShowing = false;
}

} // namespace

QString EventErrorText(std::exception_ptr error) {
    try {
        std::rethrow_exception(error);
    } catch (const Exception& e) {
        return e.Message();
    } catch (const std::exception& e) {
        return QString::fromLocal8Bit(e.what());
    } catch (...) {
        return QCoreApplication::translate("vde::EventBoundary", "Unknown error");
    }
}

void ReportEventError(const char* where, const QString& text) {
    ++gErrorCount;
    qCWarning(lcEvents) << where << "handler:" << text;
    if (where && std::strcmp(where, "paint") == 0 && QCoreApplication::instance()) {
        // No dialog inside a paint: show it once control is back in the event loop.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [text] { Show(text); }, Qt::QueuedConnection);
        return;
    }
    Show(text);
}

void RunInEventBoundary(const char* where, const std::function<void()>& handler) {
    try {
        handler();
    } catch (...) {
        ReportEventError(where, EventErrorText(std::current_exception()));
    }
}

int EventBoundaryErrorCount() {
    return gErrorCount;
}

} // namespace vde
