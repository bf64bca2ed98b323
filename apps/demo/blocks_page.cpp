// The first page: a host panel turned into a diagram surface with one block of each kind and
// the wires between them.
#include "demo_pages.h"

#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <memory>

using namespace vde;

namespace {

class BlocksPage : public QWidget {
public:
    BlocksPage() {
        setAutoFillBackground(true);
        QPalette pal = palette();
        pal.setColor(QPalette::Window, Qt::white);
        setPalette(pal);
        FCanvas.SetHandle(this);
        FBlocks = std::make_unique<TDiagObjectList>(this);
        FWires = std::make_unique<TDiagConnectList>(&FCanvas);
        Build();
        SetPaintHandler(this, [this] { FWires->Paint(); });
    }
    ~BlocksPage() override {
        // Wires refer to blocks, blocks are children of this widget: free them in that order.
        SetPaintHandler(this, {});
        FWires.reset();
        FBlocks.reset();
    }

private:
    void Build() {
        auto* text =
            new TDiagText(FBlocks.get(), 30, 40, 150, 90, QStringLiteral("Sensor"), 0, 0, true);
        text->SetInCount(3);
        text->SetOutCount(2);
        text->AllInputsType(itInversion, 1, 1);
        auto* gateAnd = new TDiagAndLogic(FBlocks.get(), 290, 30, 60, 100, 0, 15, true);
        gateAnd->AllInputsType(itInversion, 0, 0);
        auto* gateOr = new TDiagOrLogic(FBlocks.get(), 290, 250, 60, 100, 0, 15, true);
        gateOr->AllInputsType(itArrow, 1, 1);
        auto* trigger = new TDiagRSTrigger(FBlocks.get(), 500, 60, 100, 200, 0.65, 0.5, true,
                                           QStringLiteral("R|S|T"));
        auto* out =
            new TDiagText(FBlocks.get(), 700, 420, 150, 50, QStringLiteral("Lamp"), 0, 0, true);
        out->SetInCount(1);
        out->AllInputsType(itArrow, 0, 0);

        for (TDiagObject* b : {static_cast<TDiagObject*>(text), static_cast<TDiagObject*>(gateAnd),
                               static_cast<TDiagObject*>(gateOr),
                               static_cast<TDiagObject*>(trigger), static_cast<TDiagObject*>(out)})
            for (TDotMarker& m : b->FInputs)
                if (m.IOType != itDirect && m.Size == 0)
                    m.Size = 6;

        const TPoint tol{12, 12};
        // Output to input, facing each other.
        new TDiagObjConnection(FWires.get(), text, 1, gateAnd, -1, tol, 0, 0, 0);
        new TDiagObjConnection(FWires.get(), gateAnd, 1, trigger, -1, tol, 0, 0, 0);
        auto* selected = new TDiagObjConnection(FWires.get(), gateOr, 1, trigger, -2, tol, 0, 0, 0);
        // Back from the trigger's output to an input on its left: the route goes round.
        new TDiagObjConnection(FWires.get(), gateOr, -2, trigger, 1, {12, 20}, -10, 0, 0);
        // A wire built by hand, segment by segment.
        const int hand = FWires->AddConnection(text, 2, 40);
        TPoint from, to;
        text->GetConPoint(2, from, false);
        gateOr->GetConPoint(-1, to, false);
        FWires->AddSegmentToConnection(hand, to.Y - from.Y, 2);
        FWires->AddSegmentToConnection(hand, 70, -2);
        gateOr->SetSelMarkerIndex(-1);
        FWires->Items(hand)->EndConnection(gateOr, false);
        gateOr->SetSelMarkerIndex(0);
        // A wire that ends on another wire, with its junction dot.
        auto* lampWire =
            new TDiagObjConnection(FWires.get(), trigger, 1, out, -1, {30, 12}, 0, 0, 0);
        auto* probe =
            new TDiagText(FBlocks.get(), 470, 330, 110, 44, QStringLiteral("Probe"), 0, 0, true);
        probe->SetOutCount(1);
        TPoint probeOut;
        probe->GetConPoint(1, probeOut, false);
        // Right up to just short of the lamp wire's vertical run, then land on it.
        const int runX = lampWire->FPoints.size() > 1 ? lampWire->FPoints[1].X : probeOut.X + 40;
        const int tap = FWires->AddConnection(probe, 1, runX - 5 - probeOut.X);
        FWires->Items(tap)->EndConnection(nullptr, false);

        selected->SetSelectedIndex(1);
        gateOr->SetSelected(true);
        trigger->SetSelMarkerIndex(-1);
    }

    TCanvas FCanvas;
    std::unique_ptr<TDiagObjectList> FBlocks;
    std::unique_ptr<TDiagConnectList> FWires;
};

const bool registered =
    RegisterDemoPage(10, QStringLiteral("Blocks and wires"), [] { return new BlocksPage; });

} // namespace
