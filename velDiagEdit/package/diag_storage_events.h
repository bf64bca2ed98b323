#pragma once
// What the package's storage tells a host about diagrams that several users keep in one place.
// One object for the whole package (DiagStorageEvents()), living as long as the program; connect
// to its signals on the GUI thread.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QObject>
#include <QString>

namespace vde {

class VELDIAGEDIT_EXPORT TDiagStorageEvents : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    // A save of the diagram Name found it changed by someone else and the user answered
    // Choice (a TConflictChoice: Overwrite, Reload or Save as copy); CopyName is where the copy
    // went, empty for the other answers.
    void ConflictResolved(const QString& Name, int Choice, const QString& CopyName);
};

VELDIAGEDIT_EXPORT TDiagStorageEvents* DiagStorageEvents();

} // namespace vde
