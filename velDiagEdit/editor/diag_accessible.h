#pragma once
// What assistive technology learns of a diagram surface, through Qt's accessibility: the surface
// (the container's parent widget) is a canvas whose children are its blocks, in reading order,
// then its wires, then the host's own widgets on it. A block tells its kind, its counts of inputs
// and outputs and whether it is selected ("AND gate, 2 inputs, 1 output, selected"), and where
// it is; a wire tells from which block and marker it runs to which ("Wire from AND gate
// (output 1) to Text block “S” (input 1)").
//
// The texts are readable English by default and follow the library's translations (context
// "vde::TDiagAccessible"). The interfaces are made on demand through a factory that the first
// container installs; nothing changes on screen.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>

class QWidget;

namespace vde {

class TDiagContainer;
class TDiagConnection;
class TDiagObject;

// The container a widget is the surface of, or none.
VELDIAGEDIT_EXPORT TDiagContainer* DiagSurfaceContainer(const QWidget* Surface);
// Called by the container for its parent: from then on the widget's accessible interface is a
// diagram surface's (the factory is installed on the first call). Unregistering a container that
// is not the widget's registered one does nothing.
void RegisterDiagSurface(QWidget* Surface, TDiagContainer* Container);
void UnregisterDiagSurface(QWidget* Surface, TDiagContainer* Container);

// The accessible names.
VELDIAGEDIT_EXPORT QString AccessibleBlockName(const TDiagObject* Block);
VELDIAGEDIT_EXPORT QString AccessibleWireName(const TDiagConnection* Wire);

} // namespace vde
