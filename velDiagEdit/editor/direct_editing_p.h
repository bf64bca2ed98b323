#pragma once
// State of a direct-editing gesture of the diagram surface, from the press to the release, and
// what the mouse hovers over. Private to the container.

#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/types.h"

#include <QPointer>
#include <QRect>
#include <QSet>
#include <QString>
#include <vector>

namespace vde {

class TDiagContainer;

struct TDirectEditing {
    enum TKind {
        gkNone,
        gkBlockPress,  // pressed on a block's body: a click, or a move once the mouse travels
        gkMarkerPress, // pressed on a marker: a click, or a wire once the mouse travels
        gkEmptyPress,  // pressed on empty surface: a click, or a rubber band
        gkResizePress, // pressed on the corner handle of the selected block
        gkMove,
        gkResize,
        gkWire,
        gkBand
    };
    TKind Kind = gkNone;
    TPoint Start;
    TPoint Last;
    bool Ctrl = false;
    QPointer<TDiagObject> Block;
    int Marker = 0;
    bool WasSelected = false;
    // A move: the pressed block's place at the press, the delta applied so far, the selected
    // blocks, the wires with both ends among them (they shift whole) and the wires with one end
    // there (they are routed again).
    TPoint Origin;
    TPoint Applied;
    std::vector<QPointer<TDiagObject>> Moving;
    std::vector<TDiagConnection*> Inner;
    std::vector<TDiagConnection*> Outer;
    // Wires that end on one of those (or on such a wire, and so on), each after the wire it
    // ends on: their ends follow the segment they sit on.
    std::vector<TDiagConnection*> Landed;
    // A resize: the block's bounds at the press.
    TRect ResizeFrom;
    // A wire: the route shown, and the target under the cursor.
    TPoints Preview;
    QPointer<TDiagObject> HotBlock;
    int HotMarker = 0;
    LongRec HotSegment;
    // A rubber band: its rectangle, the blocks and wires it holds now, and the selection that
    // was there before (kept with Ctrl).
    QRect Band;
    QSet<TDiagObject*> BandBlocks;
    QSet<TDiagObject*> BaseBlocks;
    QSet<const TDiagConnection*> BaseWires;
    // Wires selected by a rubber band (checked against the list before any use).
    QSet<const TDiagConnection*> Wires;
    // What the overlay painted last, to repaint it away.
    QRect Painted;
    // The tooltip hover last gave the surface; the host's comes back only over our own.
    QString OwnTip;
    bool OwnsTip = false;

    // The steps of the gestures (diag_container_direct.cpp); they reach the container's
    // internals, hence members of the befriended state.
    static void Hover(TDiagContainer& C, TPoint P);
    static void WireStep(TDiagContainer& C, TPoint P);
    static void DropWire(TDiagContainer& C, TPoint P);
    static void BeginMove(TDiagContainer& C);
    static void MoveStep(TDiagContainer& C, TPoint P);
    static void MoveBlocks(TDiagContainer& C, int DX, int DY);
    static void ResizeStep(TDiagContainer& C, TPoint P);
    static void BandStep(TDiagContainer& C, TPoint P);
    static void Cancel(TDiagContainer& C);
    static void DeleteSelected(TDiagContainer& C);
    static void SelectOnly(TDiagContainer& C, TDiagObject* Block);
    static void Repaint(TDiagContainer& C, const QRect& Now);
};

} // namespace vde
