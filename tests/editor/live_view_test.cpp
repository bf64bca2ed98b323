// The live view of a simulation on the surface: with a simulator set, every wire is painted in
// the colour of its net's value and the surface repaints after each step; without one (the
// default, or after it is switched off or the simulator goes) the painting is the one of a
// surface that never had it.

#include "editor_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/simulation/diag_simulator.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPainter>
#include <memory>

using namespace vde;
using namespace vde::test;

namespace {

// Counts the paint events a widget gets.
class PaintCounter : public QObject {
public:
    int Count = 0;
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::Paint)
            ++Count;
        return false;
    }
};

// Source "A" feeds input 1 of an OR gate whose output is inverted (input 2 left open, reading
// 0); the gate's output goes to probe "Y", and probe "Z" hangs on A's wire through a junction.
class LiveView : public EditorFixture {
protected:
    TDiagText* a = nullptr;
    TDiagObject* gate = nullptr;
    TDiagText* y = nullptr;
    TDiagText* z = nullptr;

    TDiagText* Text(int left, int top, const QString& title, int ins, int outs) {
        auto* t = qobject_cast<TDiagText*>(
            dc->ObjList->CreateObjByDiagType(doText, {left, top, left + 50, top + 30}));
        t->SetTextValues(title);
        t->SetInCount(ins);
        t->SetOutCount(outs);
        dc->AssignObjEvents(t);
        return t;
    }

    void SetUp() override {
        EditorFixture::SetUp();
        a = Text(20, 45, QStringLiteral("A"), 0, 1);
        auto* orGate = qobject_cast<TDiagText*>(
            dc->ObjList->CreateObjByDiagType(doOrLogic, {170, 20, 230, 120}));
        orGate->AllOutputsType(itInversion, 0, 0);
        gate = orGate;
        dc->AssignObjEvents(gate);
        y = Text(320, 55, QStringLiteral("Y"), 1, 0);
        z = Text(110, 200, QStringLiteral("Z"), 1, 0);
        // Straight wires drawn by hand from marker to marker.
        const TPoint aOut = MarkerAt(a, 1), gIn = MarkerAt(gate, -1);
        const TPoint gOut = MarkerAt(gate, 1), yIn = MarkerAt(y, -1);
        TDiagConnection* w0 = Wire(*dc->ConList, {aOut, {130, aOut.Y}, {130, gIn.Y}, gIn});
        w0->FSource = a;
        w0->FSrcConIdx = 1;
        w0->FDest = gate;
        w0->FDstConIdx = -1;
        TDiagConnection* w1 = Wire(*dc->ConList, {gOut, {280, gOut.Y}, {280, yIn.Y}, yIn});
        w1->FSource = gate;
        w1->FSrcConIdx = 1;
        w1->FDest = y;
        w1->FDstConIdx = -1;
        // Out of Z's input to the left, then up onto the first segment of A's wire.
        const TPoint zIn = MarkerAt(z, -1);
        TDiagConnection* w2 = Wire(*dc->ConList, {zIn, {95, zIn.Y}, {95, aOut.Y}});
        w2->FSource = z;
        w2->FSrcConIdx = -1;
        w2->FDstCrossInfo = LR(1, 1);
        dc->ConList->Reindex();
        // The places looked at below lie on the wires and in no block.
        for (const TPoint p : {OnA(), OnY(), OnZ()})
            for (int i = 0; i < dc->ObjList->Count(); ++i) {
                const TRect r = dc->ObjList->Items(i)->BoundsRect();
                ASSERT_FALSE(p.X >= r.Left && p.X < r.Right && p.Y >= r.Top && p.Y < r.Bottom);
            }
    }

    // Points on A's wire, on Y's, on the vertical run of Z's, and in the junction dot.
    TPoint OnA() const { return Mid(0); }
    TPoint OnY() const { return Mid(1); }
    TPoint OnZ() const {
        const TDiagConnection* w = dc->ConList->Items(2);
        return {w->FPoints[1].X, (w->FPoints[1].Y + w->FPoints[2].Y) / 2};
    }
    // Inside the dot, off the wire's own line.
    TPoint Dot() const {
        const TPoint p = dc->ConList->Items(2)->FPoints.back();
        return {p.X - 3, p.Y - 2};
    }
    TPoint Mid(int wire) const {
        const TDiagConnection* w = dc->ConList->Items(wire);
        return {(w->FPoints[0].X + w->FPoints[1].X) / 2, w->FPoints[0].Y};
    }
    TColor At(const QImage& img, TPoint p) const { return PixelColor(img, p.X, p.Y); }

    std::unique_ptr<TDiagSimulator> Simulator(const char* wave) {
        auto sim = std::make_unique<TDiagSimulator>(*dc->ObjList, *dc->ConList);
        sim->SetStimulus(QStringLiteral("A"), TSimWaveform::Parse(QString::fromLatin1(wave)));
        sim->Reset();
        return sim;
    }
};

} // namespace

TEST_F(LiveView, IsOffByDefaultAndTheWiresAreBlack) {
    EXPECT_EQ(dc->LiveSimulator(), nullptr);
    EXPECT_FALSE(dc->ConList->HasWireColors());
    const QImage img = Render();
    EXPECT_EQ(At(img, OnA()), 0x000000u);
    EXPECT_EQ(At(img, OnY()), 0x000000u);
    EXPECT_EQ(At(img, OnZ()), 0x000000u);
    EXPECT_EQ(At(img, Dot()), 0x000000u);
}

TEST_F(LiveView, EachWireShowsTheValueOfItsNet) {
    auto sim = Simulator("10");
    dc->SetLiveSimulator(sim.get());
    EXPECT_EQ(dc->LiveSimulator(), sim.get());
    // Before any step every net is 0.
    QImage img = Render();
    EXPECT_EQ(At(img, OnA()), kLiveZeroColor);
    EXPECT_EQ(At(img, OnY()), kLiveZeroColor);
    // Step 0: A is 1 at once, and so is Z's wire on A's net; the gate's answer (1, inverted to
    // 0) leaves Y's net at 0.
    sim->Step();
    img = Render();
    EXPECT_EQ(At(img, OnA()), kLiveOneColor);
    EXPECT_EQ(At(img, OnZ()), kLiveOneColor);
    EXPECT_EQ(At(img, Dot()), kLiveOneColor);
    EXPECT_EQ(At(img, OnY()), kLiveZeroColor);
    // Step 1: A falls; the gate sees 0 and gives 1 through its inverted output one step later.
    sim->Step();
    img = Render();
    EXPECT_EQ(At(img, OnA()), kLiveZeroColor);
    EXPECT_EQ(At(img, OnZ()), kLiveZeroColor);
    EXPECT_EQ(At(img, OnY()), kLiveZeroColor);
    sim->Step();
    img = Render();
    EXPECT_EQ(At(img, OnA()), kLiveZeroColor);
    EXPECT_EQ(At(img, OnY()), kLiveOneColor);
    // Back to the start: all 0 again.
    sim->Reset();
    img = Render();
    EXPECT_EQ(At(img, OnY()), kLiveZeroColor);
}

TEST_F(LiveView, TheHostChoosesTheColours) {
    auto sim = Simulator("1");
    dc->SetLiveSimulator(sim.get());
    dc->SetLiveColors(0x00C000, 0x808080);
    sim->Run(2);
    const QImage img = Render();
    EXPECT_EQ(At(img, OnA()), 0x00C000u);
    EXPECT_EQ(At(img, OnY()), 0x808080u);
}

TEST_F(LiveView, ASelectedSegmentKeepsTheSelectionColour) {
    auto sim = Simulator("1");
    dc->SetLiveSimulator(sim.get());
    sim->Step();
    dc->ConList->Items(0)->FSelectedIndex = 0;
    const QImage img = Render();
    EXPECT_EQ(At(img, OnA()), dc->ConList->Items(0)->FSelSegmentColor);
    EXPECT_EQ(At(img, OnZ()), kLiveOneColor);
}

TEST_F(LiveView, SwitchedOffOrWithoutItsSimulatorThePaintingIsTheOldOne) {
    const QImage before = Render();
    auto sim = Simulator("1");
    dc->SetLiveSimulator(sim.get());
    sim->Run(3);
    ASSERT_NE(Render(), before);
    dc->SetLiveSimulator(nullptr);
    EXPECT_EQ(dc->LiveSimulator(), nullptr);
    EXPECT_FALSE(dc->ConList->HasWireColors());
    EXPECT_EQ(Render(), before);

    dc->SetLiveSimulator(sim.get());
    ASSERT_NE(Render(), before);
    sim.reset();
    EXPECT_EQ(dc->LiveSimulator(), nullptr);
    EXPECT_EQ(Render(), before);
}

TEST_F(LiveView, TheSurfaceRepaintsAfterEachStepAndReset) {
    Show();
    PaintCounter counter;
    panel.installEventFilter(&counter);
    auto sim = Simulator("1");
    dc->SetLiveSimulator(sim.get());
    QCoreApplication::processEvents();
    counter.Count = 0;
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.Count, 0);
    sim->Step();
    QCoreApplication::processEvents();
    EXPECT_GT(counter.Count, 0);
    counter.Count = 0;
    sim->Reset();
    QCoreApplication::processEvents();
    EXPECT_GT(counter.Count, 0);
    // Without the view a step asks for no repaint.
    dc->SetLiveSimulator(nullptr);
    QCoreApplication::processEvents();
    counter.Count = 0;
    sim->Step();
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.Count, 0);
    panel.removeEventFilter(&counter);
}

TEST_F(LiveView, AContainerGoneBeforeItsSimulatorIsNotCalled) {
    auto sim = Simulator("1");
    dc->SetLiveSimulator(sim.get());
    dc.reset();
    sim->Run(2); // would reach the freed container if it were still connected
    EXPECT_EQ(sim->Time(), 2);
}
