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
    // With live reload on (SetLiveReload): someone else saved the diagram Name while it has
    // unsaved changes here; nothing was loaded. Sent once per stored version; the host answers
    // with ReloadChangedDiagram(Name) or KeepMyDiagram(Name).
    void ChangedElsewhere(const QString& Name);
    // With live reload on: the diagram Name, unchanged here, was saved by someone else and has
    // been loaded again (view and selection kept, undo steps gone).
    void Reloaded(const QString& Name);
};

VELDIAGEDIT_EXPORT TDiagStorageEvents* DiagStorageEvents();

} // namespace vde
