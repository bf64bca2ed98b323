#pragma once
// Component ownership on Qt. A component has an owner that frees it and a Qt parent that shows it,
// and the two need not be the same object (a handle panel shown on one window may belong to
// another object). The owner keeps a list of what it owns; when the owner goes it frees every
// component on the list that still exists, and a component freed earlier by anyone else simply
// drops off the list. A component that is also a Qt child of its owner is freed only once.

#include "velDiagEdit/velDiagEdit_export.h"
#include <QObject>
#include <QString>

namespace vde {

// Lists `component` as owned by `owner` (nothing happens for a null owner or component).
VELDIAGEDIT_EXPORT void InsertComponent(QObject* owner, QObject* component);

// The component called `name` (compared without regard to case, as component names are):
// first among the owner's direct Qt children, then among the components it owns; nullptr when
// there is none or `owner` is null. The owner's own name does not count.
VELDIAGEDIT_EXPORT QObject* FindComponent(const QObject* owner, const QString& name);

// The owner `component` was listed with by InsertComponent; nullptr when it has none or the owner
// is gone.
VELDIAGEDIT_EXPORT QObject* ComponentOwner(const QObject* component);

// A valid component name: a letter or underscore, then letters, digits and underscores (ASCII).
VELDIAGEDIT_EXPORT bool IsValidIdent(const QString& name);

// Names `component`, a component of `owner` (which may be null). The name must be empty or a
// valid identifier, and no other component of the owner may carry it (ignoring case); otherwise
// EComponentError is raised and the component keeps its name.
VELDIAGEDIT_EXPORT void SetComponentName(QObject* owner, QObject* component, const QString& name);

} // namespace vde
