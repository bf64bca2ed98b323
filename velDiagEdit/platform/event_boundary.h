#pragma once
// The one place where errors stop on their way out of an event handler. Every handler the
// library installs on Qt (mouse, paint, menu) runs through RunInEventBoundary: an exception
// raised inside is caught there and its text shown to the user as an error message through the
// dialog service, the way a desktop toolkit reports an unhandled error in an event handler. The
// application keeps running; nothing thrown reaches Qt's event loop.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <exception>
#include <functional>

namespace vde {

// Runs `handler`; an exception is reported and swallowed. `where` names the kind of handler for
// the log ("mouse", "paint", "menu"). While painting the message is shown after the paint has
// finished, as a dialog cannot open inside a paint.
VELDIAGEDIT_EXPORT void RunInEventBoundary(const char* where, const std::function<void()>& handler);

// The text an error shows: a library error's own message, the what() of any other standard
// exception, or a fixed text for anything else.
VELDIAGEDIT_EXPORT QString EventErrorText(std::exception_ptr error);

// Shows an error that reached the boundary (also for callers that caught it themselves).
VELDIAGEDIT_EXPORT void ReportEventError(const char* where, const QString& text);

// How many errors the boundary has caught since the program started; for tests and hosts.
VELDIAGEDIT_EXPORT int EventBoundaryErrorCount();

} // namespace vde
