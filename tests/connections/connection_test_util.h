#pragma once
// Shared helpers of the connection tests: blocks to connect, a recording canvas, wires with
// hand-set paths, and readable gtest output for the value types.

#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/recording_backend.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <ostream>

namespace vde {

inline void PrintTo(const TPoint& p, std::ostream* os) {
    *os << "(" << p.X << "," << p.Y << ")";
}
inline void PrintTo(const TRect& r, std::ostream* os) {
    *os << "(" << r.Left << "," << r.Top << "," << r.Right << "," << r.Bottom << ")";
}
inline void PrintTo(const LongRec& r, std::ostream* os) {
    *os << "{Lo " << r.Lo << ", Hi " << r.Hi << "}";
}

namespace test {

// An AND gate (two inputs, one output) of the given size at (left, top).
inline TDiagObject* AndGate(TDiagObjectList& list, int left, int top, int w = 60, int h = 100) {
    return list.CreateObjByDiagType(doAndLogic, {left, top, left + w, top + h});
}

// Where marker idx of the block stands on the parent, read from the block's own marker arrays
// (block position + the marker's point), independently of the connection code.
inline TPoint MarkerAt(const TDiagObject* b, int idx) {
    const TDotMarker& m =
        idx < 0 ? b->FInputs.at(size_t(-idx - 1)) : b->FOutputs.at(size_t(idx - 1));
    return {b->x() + m.P.X, b->y() + m.P.Y};
}

// A plain connection in the list with the given path.
inline TDiagConnection* Wire(TDiagConnectList& cl, std::initializer_list<TPoint> pts) {
    auto* c = new TDiagConnection(&cl);
    c->FPoints = pts;
    return c;
}

inline LongRec LR(uint16_t hi, uint16_t lo) {
    LongRec r;
    r.Hi = hi;
    r.Lo = lo;
    return r;
}

// A canvas whose every operation is recorded.
struct RecordingCanvas {
    TCanvas canvas;
    TRecordingBackend rec;
    RecordingCanvas() { canvas.SetBackend(&rec); }
};

} // namespace test
} // namespace vde
