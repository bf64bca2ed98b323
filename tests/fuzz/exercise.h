#pragma once
// What the fuzz targets do with a diagram once it has loaded: everything the editor will do with
// a hostile one. Paint it into a small image, route every connection, shift blocks and wires,
// add and edit segments, select segments by LongRec, delete, then save, reload and save again.
// Any input must end in success or a typed error; a reload of our own save must succeed and
// give the same bytes.

#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/platform/errors.h"

#include <QImage>
#include <QWidget>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace vde::fuzz {

// Hands out the bytes after the streams as operation arguments; zeros once they run out.
class TOps {
public:
    TOps(const uint8_t* data, size_t size) : FData(data), FSize(size) {}
    bool More() const { return FPos < FSize; }
    uint8_t Byte() { return FPos < FSize ? FData[FPos++] : 0; }
    int32_t Int() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i)
            v |= uint32_t(Byte()) << (8 * i);
        return static_cast<int32_t>(v);
    }
    // Mostly small values, sometimes any 32-bit value.
    int32_t Coord() {
        const uint8_t k = Byte();
        if (k & 0x80)
            return Int();
        return int32_t(k) - 64;
    }
    LongRec Long() {
        LongRec r;
        r.Lo = uint16_t(Byte());
        r.Hi = uint16_t(Byte());
        return r;
    }

private:
    const uint8_t* FData;
    size_t FSize;
    size_t FPos = 0;
};

[[noreturn]] inline void Fail(const char* what) {
    std::fprintf(stderr, "fuzz invariant broken: %s\n", what);
    std::abort();
}

inline std::vector<uint8_t> SaveConnections(const TDiagConnectList& cl) {
    TMemoryStream s;
    cl.SaveToStream(s);
    return s.Bytes();
}

inline std::vector<uint8_t> SaveBlocks(const TDiagObjectList& bl) {
    TMemoryStream s;
    bl.SaveToStream(s);
    return s.Bytes();
}

// Re-attaches loaded connections to their blocks by key, as the container does.
inline void Attach(TDiagObjectList& blocks, TDiagConnection* c) {
    if (TDiagObject* b = blocks.FindObjByKey(c->GetSrcKey()))
        c->SetSrcObject(b);
    if (TDiagObject* b = blocks.FindObjByKey(c->GetDstKey()))
        c->SetDstObject(b);
}

inline void Paint(QWidget& parent, TDiagConnectList& wires) {
    QImage img(64, 48, QImage::Format_ARGB32);
    img.fill(Qt::white);
    parent.render(&img);
    TCanvas* c = wires.GetCanvas();
    c->SetHandle(&img);
    wires.Paint();
    c->SetHandle(nullptr);
}

// One operation chosen by the next byte; typed errors are the library's answer and end only
// that operation.
inline void Step(TOps& ops, TDiagObjectList& blocks, TDiagConnectList& wires) {
    const uint8_t op = ops.Byte();
    TDiagObject* block = blocks.Count() ? blocks.Items(ops.Byte() % blocks.Count()) : nullptr;
    try {
        switch (op % 12) {
        case 0: // route every connection
            wires.Refresh();
            break;
        case 1: { // a routed connection between two markers
            TDiagObject* other =
                blocks.Count() ? blocks.Items(ops.Byte() % blocks.Count()) : nullptr;
            const int si = int8_t(ops.Byte()), di = int8_t(ops.Byte());
            const TPoint tol{ops.Coord(), ops.Coord()};
            const int as = ops.Coord(), ad = ops.Coord();
            if (block && other)
                new TDiagObjConnection(&wires, block, si, other, di, tol, as, ad, 0);
            break;
        }
        case 2: { // shift a block and the wires at it
            const TPoint d{ops.Coord(), ops.Coord()};
            if (block) {
                wires.ShiftByDelta(block, d);
                block->ShiftByDelta(d);
                wires.UpdatePath(block);
            }
            break;
        }
        case 3: { // a hand-drawn connection and a few segments
            const int marker = int8_t(ops.Byte()), size = ops.Coord();
            const int before = wires.Count();
            const int i = wires.AddConnection(block, marker, size);
            if (wires.Count() > before)
                wires.AddSegmentToConnection(i, ops.Coord(), int8_t(ops.Byte()) % 3 * 2 - 2);
            break;
        }
        case 4: { // add a segment to any connection
            const int i = wires.Count() ? ops.Byte() % wires.Count() : 0;
            wires.AddSegmentToConnection(i, ops.Coord(), (ops.Byte() % 3) * 2 - 2);
            break;
        }
        case 5: { // read, then write, a segment's size and angle
            const LongRec lr = ops.Long();
            int size = 0, angle = 0;
            wires.EditSegmentOfConnection(lr, size, angle, true);
            size = ops.Coord();
            angle = int8_t(ops.Byte());
            wires.EditSegmentOfConnection(lr, size, angle, false);
            break;
        }
        case 6: // select by LongRec
            wires.SelectSegmentByLongRec(ops.Long());
            break;
        case 7: { // select what a click would find
            const TPoint p{ops.Coord(), ops.Coord()};
            const LongRec lr = wires.FindBestSegment(p, nullptr, ops.Byte() & 1, ops.Byte() % 4);
            if (!lr.IsZero() && (lr.Hi > wires.Count() || lr.Hi == 0))
                Fail("FindBestSegment named a connection that does not exist");
            wires.SelectSegmentByLongRec(lr);
            TRect r{0, 0, 0, 0};
            wires.GetSegmentRect(lr, r);
            break;
        }
        case 8: { // end a connection on a block or on a segment
            const LongRec lr = ops.Long();
            const LongRec dest = ops.Long();
            wires.EndConnectionByLongRec(lr, (ops.Byte() & 1) ? block : nullptr,
                                         (ops.Byte() & 1) ? &dest : nullptr);
            break;
        }
        case 9: { // align or delete a segment
            LongRec lr = ops.Long();
            if (ops.Byte() & 1)
                wires.AlignSegmentWithDiagObject(lr, block);
            else
                wires.DeleteSegmentByLongRec(lr);
            break;
        }
        case 10: // delete a block, dropping or detaching its wires first
            if (block) {
                blocks.SetOnDeleteObject([&wires](QObject* o) { wires.UpdateBeforeDelete(o); });
                blocks.DeleteObject(block, true);
                blocks.SetOnDeleteObject({});
            }
            break;
        case 11: { // re-attach wires that end on wires
            const int i = wires.Count() ? ops.Byte() % wires.Count() : 0;
            if (wires.Count())
                wires.AdjustEndConnections(i);
            break;
        }
        }
    } catch (const vde::Exception&) {
    }
}

// Save both lists, reload them into fresh ones and save again: the bytes must not change.
inline void SaveAndReload(QWidget& parent, const TDiagObjectList& blocks,
                          const TDiagConnectList& wires) {
    const std::vector<uint8_t> b1 = SaveBlocks(blocks);
    const std::vector<uint8_t> w1 = SaveConnections(wires);
    TDiagObjectList blocks2(&parent);
    TCanvas canvas2;
    TDiagConnectList wires2(&canvas2);
    try {
        TMemoryStream bs(b1);
        blocks2.LoadFromStream(bs, [](QObject*) {});
        TMemoryStream ws(w1);
        wires2.LoadFromStream(ws, [&blocks2](TDiagConnection* c) { Attach(blocks2, c); });
    } catch (const vde::Exception& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.Message()));
        Fail("a saved diagram does not load again");
    }
    if (SaveConnections(wires2) != w1)
        Fail("connections saved, reloaded and saved again differ");
    if (SaveBlocks(blocks2) != b1)
        Fail("blocks saved, reloaded and saved again differ");
}

// Runs the operations of `ops` on a loaded diagram, painting first and last.
inline void Exercise(QWidget& parent, TDiagObjectList& blocks, TDiagConnectList& wires, TOps& ops) {
    Paint(parent, wires);
    for (int n = 0; n < 64 && ops.More(); ++n)
        Step(ops, blocks, wires);
    Paint(parent, wires);
    SaveAndReload(parent, blocks, wires);
}

} // namespace vde::fuzz
