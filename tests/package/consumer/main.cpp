// A host that uses the installed library the way the README shows: one include, blocks and a
// wire on a panel, the glue a host wires by hand (wires follow blocks, loaded wires find their
// blocks again by key), and a save/load round trip. Exits 0 when everything holds.
#include <velDiagEdit/velDiagEdit.h>

// The host's own folder of the same name as one of the library's: no clash.
#include "blocks/host_blocks.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
int failures = 0;
void Check(bool ok, const char* what) {
    if (!ok) {
        std::printf("consumer: FAILED %s\n", what);
        ++failures;
    }
}

// Until a container does it: wires are re-routed when a block moves or its markers change, and
// dealt with before a block is deleted.
void WireUp(vde::TDiagObjectList& blocks, vde::TDiagConnectList& wires) {
    for (vde::TDiagObject* block : blocks.All()) {
        block->SetOnModifyBounds([&wires](QObject* o) { wires.UpdatePath(o); });
        block->SetOnModifyMarkers([&wires](QObject* o) { wires.UpdatePath(o); });
    }
    blocks.SetOnDeleteObject([&wires](QObject* o) { wires.UpdateBeforeDelete(o); });
}

// A loaded wire carries only its blocks' keys; this finds the blocks again.
auto Reattach(const vde::TDiagObjectList& blocks) {
    return [&blocks](vde::TDiagConnection* wire) {
        wire->SetSrcObject(blocks.FindObjByKey(wire->GetSrcKey()));
        wire->SetDstObject(blocks.FindObjByKey(wire->GetDstKey()));
    };
}
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    Check(std::strcmp(vde::VelDiagEditVersion(), VELDIAGEDIT_VERSION_STR) == 0,
          "library and headers are the same version");
    Check(VELDIAGEDIT_VERSION >= VELDIAGEDIT_VERSION_CHECK(0, 1, 0), "version macros");
    Check(std::strcmp(host::Name(), "host blocks") == 0, "the host's own blocks/ header");

    QWidget panel;
    panel.resize(400, 200);
    vde::TCanvas canvas;
    canvas.SetHandle(&panel);
    vde::TDiagObjectList blocks(&panel);
    vde::TDiagConnectList wires(&canvas);
    vde::TDiagObject* a = blocks.CreateObjByDiagType(vde::doAndLogic, {10, 10, 70, 110});
    vde::TDiagObject* b = blocks.CreateObjByDiagType(vde::doOrLogic, {200, 10, 260, 110});
    WireUp(blocks, wires);

    // A wire drawn as a user draws it: a stub out of output 1 of a, a segment up or down to the
    // height of input 1 of b, then ended on that input.
    vde::TPoint from, to;
    a->GetConPoint(1, from, false);
    b->GetConPoint(-1, to, false);
    const int k = wires.AddConnection(a, 1, 20);
    wires.AddSegmentToConnection(k, std::abs(to.Y - from.Y), to.Y < from.Y ? -2 : 2);
    b->SetSelMarkerIndex(-1);
    wires.EndConnectionByLongRec(vde::LongRec{1, uint16_t(k + 1)}, b, nullptr);
    Check(wires.Count() == 1 && wires.Items(0)->GetDstObject() == b, "the wire ends on b");
    const vde::TPoints& path = wires.Items(0)->FPoints;
    Check(path.size() == 4 && path.front().Y == from.Y && path.back().X == to.X &&
              path.back().Y == to.Y,
          "the wire runs from a's output to b's input");
    for (size_t i = 1; i < path.size(); ++i)
        Check(path[i].X == path[i - 1].X || path[i].Y == path[i - 1].Y,
              "every segment is horizontal or vertical");

    vde::TMemoryStream s1;
    blocks.SaveToStream(s1);
    wires.SaveToStream(s1);
    s1.SetPosition(0);

    vde::TDiagObjectList blocks2(&panel);
    vde::TDiagConnectList wires2(&canvas);
    blocks2.LoadFromStream(s1, {});
    wires2.LoadFromStream(s1, Reattach(blocks2));
    WireUp(blocks2, wires2);
    vde::TMemoryStream s2;
    blocks2.SaveToStream(s2);
    wires2.SaveToStream(s2);
    const bool same = s1.Bytes() == s2.Bytes();
    Check(blocks2.Count() == 2 && wires2.Count() == 1, "two blocks and a wire loaded");
    vde::TDiagConnection* wire = wires2.Items(0);
    vde::TDiagObject* a2 = blocks2.Items(0);
    vde::TDiagObject* b2 = blocks2.Items(1);
    Check(wire->GetSrcObject() == a2 && wire->GetDstObject() == b2,
          "the loaded wire found its blocks");

    // Moving b2 down by 30 pixels takes the wire's end along.
    const vde::TPoint end = wire->FPoints.back();
    b2->SetBounds(b2->x(), b2->y() + 30, b2->width(), b2->height());
    Check(wire->FPoints.back().X == end.X && wire->FPoints.back().Y == end.Y + 30,
          "the wire's end follows its block");

    // Deleting the source block turns the wire round first: both its ends then name b2, neither
    // the deleted block.
    blocks2.DeleteObject(a2, true);
    Check(blocks2.Count() == 1 && wires2.Count() == 1, "the block is gone, the wire stays");
    Check(wire->GetSrcObject() == b2 && wire->GetDstObject() == b2,
          "the wire no longer points at the deleted block");

    std::printf("consumer: %d blocks, %d wires, round trip %s, %d failures\n", blocks2.Count(),
                wires2.Count(), same ? "equal" : "DIFFERENT", failures);
    return same && failures == 0 ? 0 : 1;
}
