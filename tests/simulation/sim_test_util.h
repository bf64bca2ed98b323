#pragma once
// Circuits for the simulator tests, drawn as a user draws them: blocks made by kind through the
// block list, inputs, outputs, marker types and titles set on the block, and every wire made by
// the connection list's own commands (a stub out of a marker, segments, an end on a marker or
// on another wire's segment).

#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/recording_backend.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace vde::test {

struct Circuit {
    TDiagObjectList Blocks{nullptr};
    TCanvas Canvas;
    TRecordingBackend Rec;
    TDiagConnectList Wires{&Canvas};
    Circuit() { Canvas.SetBackend(&Rec); }

    TDiagText* Text(int left, int top, const QString& title, int ins, int outs) {
        auto* t = qobject_cast<TDiagText*>(
            Blocks.CreateObjByDiagType(doText, {left, top, left + 80, top + 60}));
        t->SetTextValues(title);
        t->SetInCount(ins);
        t->SetOutCount(outs);
        return t;
    }
    TDiagText* Source(int left, int top, const QString& name) {
        return Text(left, top, name, 0, 1);
    }
    TDiagText* Probe(int left, int top, const QString& name) { return Text(left, top, name, 1, 0); }
    TDiagText* Gate(TDiagObjectType kind, int left, int top, int ins = 2) {
        auto* g = qobject_cast<TDiagText*>(
            Blocks.CreateObjByDiagType(kind, {left, top, left + 60, top + 100}));
        if (ins != g->GetInCount())
            g->SetInCount(ins);
        return g;
    }

    // A wire from output `from` of a to input `to` of b: a 20-pixel
    // stub out of the marker, then straight to the input's height when the input lies ahead,
    // or round below both blocks when it lies behind; ended on the input. Returns its index.
    int Connect(TDiagObject* a, int from, TDiagObject* b, int to) {
        TPoint dst;
        EXPECT_TRUE(b->GetConPoint(to, dst, false));
        const int before = Wires.Count();
        const int k = Wires.AddConnection(a, from, 20);
        EXPECT_EQ(Wires.Count(), before + 1);
        const TPoint last = Wires.Items(k)->FPoints.back();
        EXPECT_GT(from, 0);
        if (dst.X - 10 > last.X) {
            if (dst.Y != last.Y)
                Wires.AddSegmentToConnection(k, std::abs(dst.Y - last.Y), dst.Y < last.Y ? -2 : 2);
        } else {
            // Right turns (clockwise) from east: south, west, north.
            const int lane = std::max(a->BoundsRect().Bottom, b->BoundsRect().Bottom) + 20;
            Wires.AddSegmentToConnection(k, lane - last.Y, 2);
            Wires.AddSegmentToConnection(k, last.X - (dst.X - 20), 2);
            Wires.AddSegmentToConnection(k, lane - dst.Y, 2);
        }
        b->SetSelMarkerIndex(to);
        LongRec lr;
        lr.Hi = uint16_t(k + 1);
        lr.Lo = 1;
        Wires.EndConnectionByLongRec(lr, b, nullptr);
        b->SetSelMarkerIndex(0);
        const TDiagConnection* w = Wires.Items(k);
        EXPECT_EQ(w->GetDstObject(), b);
        EXPECT_EQ(w->FDstConIdx, to);
        return k;
    }

    // A wire from marker `from` of a that runs out 20 pixels, then up or down until it meets
    // the horizontal segment of wire `onto` that lies at height y, and ends there (a junction).
    int Junction(TDiagObject* a, int from, int onto, int y) {
        const int k = Wires.AddConnection(a, from, 20);
        const TPoint last = Wires.Items(k)->FPoints.back();
        // Short of the target by 5 pixels; the end on the segment stretches it the rest.
        Wires.AddSegmentToConnection(k, std::abs(y - last.Y) - 5,
                                     y < last.Y ? (from < 0 ? 2 : -2) : (from < 0 ? -2 : 2));
        const TDiagConnection* target = Wires.Items(onto);
        int seg = -1;
        for (size_t i = 0; i + 1 < target->FPoints.size(); ++i) {
            const TPoint p = target->FPoints[i], q = target->FPoints[i + 1];
            if (p.Y == y && q.Y == y && std::min(p.X, q.X) <= last.X &&
                last.X <= std::max(p.X, q.X))
                seg = int(i);
        }
        EXPECT_GE(seg, 0) << "wire " << onto << " has no horizontal segment at " << y;
        LongRec lr, dest;
        lr.Hi = uint16_t(k + 1);
        lr.Lo = 1;
        dest.Hi = uint16_t(onto + 1);
        dest.Lo = uint16_t(seg + 1);
        Wires.EndConnectionByLongRec(lr, nullptr, &dest);
        EXPECT_EQ(Wires.Items(k)->FDstCrossInfo, dest);
        EXPECT_EQ(Wires.Items(k)->FPoints.back().Y, y);
        return k;
    }
};

} // namespace vde::test
