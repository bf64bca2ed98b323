// Undo and redo of the current diagram for a host.

#include "velDiagEdit/package/diag_package.h"

#include "velDiagEdit/editor/diag_container.h"

namespace vde {

namespace {

// The undo stack of the current diagram, when there is a list, a current diagram and a surface.
TDiagUndoStack* CurrentUndoStack() {
    if (!GetDiagActionsList())
        return nullptr;
    TdmDiagActions* m = GetCurrentDiagActions();
    return m && m->DiagContr ? m->DiagContr->UndoStack() : nullptr;
}

} // namespace

void UndoDiagram() {
    if (TDiagUndoStack* s = CurrentUndoStack())
        s->undo();
}

void RedoDiagram() {
    if (TDiagUndoStack* s = CurrentUndoStack())
        s->redo();
}

bool CanUndoDiagram() {
    TDiagUndoStack* s = CurrentUndoStack();
    return s && s->canUndo();
}

bool CanRedoDiagram() {
    TDiagUndoStack* s = CurrentUndoStack();
    return s && s->canRedo();
}

} // namespace vde
