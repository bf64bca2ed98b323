// Zoom and autoscroll of the surface in direct editing: real mouse, wheel and key events on the
// surface, checked on the model, the stream and rendered pictures; with direct editing off and
// at 100% the surface stays exactly what it was.

#include "direct_fixture.h"

#include "common/test_util.h"

#include "velDiagEdit/platform/graphic_host.h"

#include <QAccessible>
#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <cmath>

using namespace vde;
using namespace vde::test;

namespace {

class ZoomFixture : public DirectFixture {
protected:
    void Wheel(QPoint at, int delta, Qt::KeyboardModifiers mods = Qt::ControlModifier) {
        QWheelEvent e(QPointF(at), QPointF(panel.mapToGlobal(at)), QPoint(), QPoint(0, delta),
                      Qt::NoButton, mods, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&panel, &e);
    }
};

// The surface's pixels of a picture, compared over the common area.
bool SamePicture(const QImage& x, const QImage& y) {
    if (x.size() != y.size())
        return false;
    for (int j = 0; j < x.height(); ++j)
        for (int i = 0; i < x.width(); ++i)
            if (x.pixel(i, j) != y.pixel(i, j))
                return false;
    return true;
}

} // namespace

// ---- the zoom's value ------------------------------------------------------------------------

TEST_F(ZoomFixture, TheZoomStartsAt100AndIsHeldBetween25And400) {
    QSignalSpy changed(dc.get(), &TDiagContainer::zoomChanged);
    EXPECT_EQ(dc->Zoom(), 1.0);
    dc->SetZoom(0.1);
    EXPECT_EQ(dc->Zoom(), 0.25);
    dc->SetZoom(12);
    EXPECT_EQ(dc->Zoom(), 4.0);
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed[0][0].toDouble(), 0.25);
    EXPECT_EQ(changed[1][0].toDouble(), 4.0);
    // Already at the top: a step in changes nothing and says nothing.
    Key(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(dc->Zoom(), 4.0);
    EXPECT_EQ(changed.count(), 2);
    dc->SetZoom(0.25);
    Key(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(dc->Zoom(), 0.25);
    Wheel(QPoint(100, 100), -120);
    EXPECT_EQ(dc->Zoom(), 0.25);
}

TEST_F(ZoomFixture, KeysStepThroughTheZoomsAndCtrl0GoesBackTo100) {
    const double expectIn[] = {1.25, 1.5, 2.0, 3.0, 4.0};
    for (double z : expectIn) {
        Key(Qt::Key_Plus, Qt::ControlModifier);
        EXPECT_DOUBLE_EQ(dc->Zoom(), z);
    }
    Key(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(dc->Zoom(), 1.0);
    const double expectOut[] = {0.75, 2.0 / 3, 0.5, 1.0 / 3, 0.25};
    for (double z : expectOut) {
        Key(Qt::Key_Minus, Qt::ControlModifier);
        EXPECT_DOUBLE_EQ(dc->Zoom(), z);
    }
    // Ctrl+= is the unshifted plus key; a step from between two steps goes to the next one.
    dc->SetZoom(1.1);
    Key(Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(dc->Zoom(), 1.25);
    Wheel(QPoint(100, 100), 120);
    EXPECT_DOUBLE_EQ(dc->Zoom(), 1.5);
    // A wheel without Ctrl is not a zoom.
    Wheel(QPoint(100, 100), 120, Qt::NoModifier);
    EXPECT_DOUBLE_EQ(dc->Zoom(), 1.5);
}

TEST_F(ZoomFixture, WithDirectEditingOffTheZoomKeysAndTheWheelDoNothing) {
    dc->SetDirectEditing(false);
    Key(Qt::Key_Plus, Qt::ControlModifier);
    Wheel(QPoint(100, 100), 120);
    EXPECT_EQ(dc->Zoom(), 1.0);
}

TEST_F(ZoomFixture, TheStreamKeepsUnscaledPixelsWhateverTheZoom) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    const auto before = Stream();
    const QRect extent = dc->DiagramRect();
    Key(Qt::Key_Plus, Qt::ControlModifier);
    Key(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    Key(Qt::Key_Minus, Qt::ControlModifier);
    Key(Qt::Key_Minus, Qt::ControlModifier);
    Key(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(dc->DiagramRect(), extent);
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 110, 160}));
    // Zooming is no step of the undo stack.
    EXPECT_EQ(stack->count(), 1);
}

// ---- pictures --------------------------------------------------------------------------------

TEST_F(ZoomFixture, At100ThePictureIsThatOfASurfaceThatNeverZoomed) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    Click(QPoint(70, 120));
    const QImage never = Render();
    dc->SetZoom(2.0);
    dc->SetZoom(0.5);
    dc->SetZoom(1.0);
    // The surface grew for 200%; a picture of the same area is compared.
    const QImage back = Render().copy(QRect(QPoint(0, 0), never.size()));
    EXPECT_TRUE(SamePicture(back, never));
}

TEST_F(ZoomFixture, WithDirectEditingOffTheSurfacePaintsAt100WhateverTheZoom) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    dc->SetDirectEditing(false);
    const QImage plain = Render();
    dc->SetZoom(2.0);
    EXPECT_EQ(dc->Zoom(), 2.0);
    EXPECT_EQ(panel.size(), plain.size());
    EXPECT_TRUE(SamePicture(Render(), plain));
    // The block is hit where it is drawn, at 100%.
    Click(QPoint(70, 120));
    EXPECT_TRUE(a->GetSelected());
    // Direct editing back on: the zoom comes back with it.
    dc->SetDirectEditing(true);
    Click(QPoint(140, 240));
    EXPECT_TRUE(a->GetSelected());
    EXPECT_EQ(panel.width(), 2 * (dc->DiagramRect().right() + 1 + TDiagContainer::kSurfaceMargin));
}

TEST_F(ZoomFixture, At200EachDiagramPixelBecomesTwoByTwoAndTextIsDrawnAnew) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    const QImage one = Render();
    dc->SetZoom(2.0);
    const QImage two = Render();
    // The diagram reaches 309, 219; the surface at 200% holds it and the margin twice over.
    ASSERT_EQ(two.size(), QSize(2 * 350, 2 * 260));
    // Where the 100% picture is one colour all around (no edge, no text), the four pixels that
    // show that diagram pixel at 200% have that colour.
    int checked = 0, differ = 0;
    for (int y = 2; y < 258; ++y)
        for (int x = 2; x < 348; ++x) {
            const QRgb c = one.pixel(x, y);
            bool flat = true;
            for (int j = -2; j <= 2 && flat; ++j)
                for (int i = -2; i <= 2 && flat; ++i)
                    flat = one.pixel(x + i, y + j) == c;
            if (!flat)
                continue;
            ++checked;
            for (int j = 0; j < 2; ++j)
                for (int i = 0; i < 2; ++i)
                    differ += two.pixel(2 * x + i, 2 * y + j) != c;
        }
    EXPECT_GT(checked, 50000);
    EXPECT_EQ(differ, 0);
    // A bitmap blown up would repeat each pixel twice; the gate's "&" drawn at twice the size
    // does not: somewhere in the gate's body the 200% picture is not the 100% one doubled.
    int notDoubled = 0;
    for (int y = 61; y < 159; ++y)
        for (int x = 51; x < 109; ++x)
            for (int j = 0; j < 2; ++j)
                for (int i = 0; i < 2; ++i)
                    notDoubled += two.pixel(2 * x + i, 2 * y + j) != one.pixel(x, y);
    EXPECT_GT(notDoubled, 0);
}

// ---- gestures at other zooms -----------------------------------------------------------------

TEST_F(ZoomFixture, AClickAt200And50HitsTheSameBlockAsAt100) {
    // At 100% the point (70, 120) is inside gate a, (280, 160) inside gate b.
    dc->SetZoom(2.0);
    Click(QPoint(140, 240));
    EXPECT_EQ(dc->SelectedBlocks(), std::vector<TDiagObject*>{a});
    Click(QPoint(560, 320));
    EXPECT_EQ(dc->SelectedBlocks(), std::vector<TDiagObject*>{b});
    // (140, 240) at 200% is (70, 120) of the diagram; at 100% it would have been empty surface.
    dc->SetZoom(0.5);
    Click(QPoint(35, 60));
    EXPECT_EQ(dc->SelectedBlocks(), std::vector<TDiagObject*>{a});
    Click(QPoint(140, 80));
    EXPECT_EQ(dc->SelectedBlocks(), std::vector<TDiagObject*>{b});
    // Empty diagram surface at 50%: nothing.
    Click(QPoint(90, 20));
    EXPECT_TRUE(dc->SelectedBlocks().empty());
}

TEST_F(ZoomFixture, AMarkerDragAt200MakesTheSameWireAsAt100) {
    const auto empty = Stream();
    DragPanel(Aim(a, 1), Aim(b, -1), 6);
    ASSERT_EQ(dc->ConList->Count(), 1);
    const auto at100 = Stream();
    stack->undo();
    ASSERT_TRUE(SameBytes(Stream(), empty));
    dc->SetZoom(2.0);
    DragPanel(Aim(a, 1) * 2, Aim(b, -1) * 2, 6);
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_TRUE(SameBytes(Stream(), at100));
}

TEST_F(ZoomFixture, AMoveAt200FollowsTheMouseInDiagramPixelsAndSnaps) {
    dc->SetGridSize(8);
    dc->SetZoom(2.0);
    // 46 screen pixels right, 22 down at 200% are 23 and 11 of the diagram: 73 -> 72, 71 -> 72.
    DragPanel(QPoint(140, 240), QPoint(186, 262), 3);
    EXPECT_EQ(a->BoundsRect(), (TRect{72, 72, 132, 172}));
}

TEST_F(ZoomFixture, ARubberBandAt50SelectsTheBlocksAndWiresInsideIt) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    TDiagObject* c = Place(doAndLogic, 300, 10); // partly outside the band below
    dc->SetZoom(0.5);
    // (20, 40) to (340, 250) of the diagram.
    DragPanel(QPoint(10, 20), QPoint(170, 125), 6);
    EXPECT_TRUE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
    EXPECT_FALSE(c->GetSelected());
    ASSERT_EQ(dc->SelectedWires().size(), 1u);
    EXPECT_EQ(dc->SelectedWires()[0], dc->ConList->Items(0));
}

TEST_F(ZoomFixture, TheSurfaceIsTheExtentAndTheMarginTimesTheZoom) {
    const QRect r = dc->DiagramRect();
    dc->SetZoom(2.0);
    EXPECT_EQ(panel.width(), 2 * (r.right() + 1 + TDiagContainer::kSurfaceMargin));
    EXPECT_EQ(panel.height(), 2 * (r.bottom() + 1 + TDiagContainer::kSurfaceMargin));
    // Back at 100% the surface is what the host made it (400 x 300 holds the diagram).
    dc->SetZoom(1.0);
    EXPECT_EQ(panel.size(), QSize(400, 300));
    // A block dragged to the right at 200% grows the surface; back at 100% it is what the
    // diagram needs there.
    dc->SetZoom(2.0);
    DragPanel(QPoint(560, 320), QPoint(760, 320), 4); // gate b, 100 pixels of the diagram
    const QRect moved = dc->DiagramRect();
    EXPECT_EQ(moved.right(), r.right() + 100);
    EXPECT_EQ(panel.width(), 2 * (moved.right() + 1 + TDiagContainer::kSurfaceMargin));
    dc->SetZoom(1.0);
    EXPECT_EQ(panel.size(), QSize(moved.right() + 1 + TDiagContainer::kSurfaceMargin, 300));
    // Direct editing off at 200%: the surface goes back to its size at 100%.
    dc->SetZoom(2.0);
    dc->SetDirectEditing(false);
    EXPECT_EQ(panel.size(), QSize(moved.right() + 1 + TDiagContainer::kSurfaceMargin, 300));
}

TEST_F(ZoomFixture, ABlockIsWhereItShowsForAssistiveTechnologyAtAnyZoom) {
    Show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    QAccessibleInterface* i = QAccessible::queryAccessibleInterface(a);
    ASSERT_NE(i, nullptr);
    // Gate a: (50, 60), 60 x 100 of the diagram.
    EXPECT_EQ(i->rect(), QRect(panel.mapToGlobal(QPoint(50, 60)), QSize(60, 100)));
    dc->SetZoom(2.0);
    EXPECT_EQ(i->rect(), QRect(panel.mapToGlobal(QPoint(100, 120)), QSize(120, 200)));
    dc->SetZoom(0.5);
    EXPECT_EQ(i->rect(), QRect(panel.mapToGlobal(QPoint(25, 30)), QSize(30, 50)));
    // The surface's own child at a screen point is the block drawn there.
    QAccessibleInterface* s = QAccessible::queryAccessibleInterface(&panel);
    const QPoint g = panel.mapToGlobal(QPoint(40, 50));
    EXPECT_EQ(s->childAt(g.x(), g.y()), i);
}

TEST_F(ZoomFixture, AMenuAt200OpensWhereTheMouseIs) {
    dc->SetZoom(2.0);
    // On gate a's body, and on empty surface.
    for (const QPoint at : {QPoint(140, 240), QPoint(400, 60)}) {
        QTest::mouseClick(&panel, Qt::RightButton, Qt::NoModifier, at);
        ASSERT_NE(popups.Last(), nullptr);
        const QPoint g = panel.mapToGlobal(at);
        EXPECT_EQ(popups.Last()->ScreenPos, (TPoint{g.x(), g.y()}));
    }
    EXPECT_EQ(popups.Records.size(), 2u);
    EXPECT_EQ(popups.Records[0].MenuName, QStringLiteral("pmObjects"));
}

// ---- the corner handle -----------------------------------------------------------------------

TEST_F(ZoomFixture, TheCornerHandleStandsOutsideTheBlockAndIsTheSameSizeOnScreenAtAnyZoom) {
    Click(QPoint(70, 120));
    // Gate a ends at 109, 159: the handle is the square 110..118 outlined, white inside.
    const QImage one = Render();
    const TColor white = 0xFFFFFF;
    EXPECT_EQ(PixelColor(one, 114, 164), white);
    EXPECT_NE(PixelColor(one, 110, 164), white); // its left edge
    EXPECT_NE(PixelColor(one, 118, 164), white); // its right edge
    EXPECT_NE(PixelColor(one, 114, 168), white); // its bottom edge
    EXPECT_EQ(PixelColor(one, 119, 164), white); // past it
    // A press on the middle of the handle, outside the block, resizes.
    DragPanel(QPoint(114, 164), QPoint(134, 184), 4);
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 130, 180}));
    // At 200% the corner (130, 180) is at (260, 360) and the handle is still 8 pixels.
    dc->SetZoom(2.0);
    const QImage two = Render();
    EXPECT_NE(PixelColor(two, 260, 364), white);
    EXPECT_EQ(PixelColor(two, 264, 364), white);
    EXPECT_NE(PixelColor(two, 268, 364), white);
    EXPECT_EQ(PixelColor(two, 271, 364), white);
}

// ---- scrolling -------------------------------------------------------------------------------

namespace {

// The fixture's surface inside a 200 x 150 scroll area.
class ScrolledZoom : public ZoomFixture {
protected:
    QScrollArea area;
    void SetUp() override {
        ZoomFixture::SetUp();
        area.setFrameShape(QFrame::NoFrame);
        area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        area.resize(200 + area.verticalScrollBar()->sizeHint().width(),
                    150 + area.horizontalScrollBar()->sizeHint().height());
        area.setWidget(&panel);
        panel.resize(800, 600);
        area.show();
        QCoreApplication::processEvents();
    }
    void TearDown() override {
        dc.reset();
        area.takeWidget();
        ZoomFixture::TearDown();
    }
    QScrollBar* H() { return area.horizontalScrollBar(); }
    QScrollBar* V() { return area.verticalScrollBar(); }
    // The surface point under a point of the view.
    QPoint OnSurface(QPoint view) { return panel.mapFrom(area.viewport(), view); }
};

} // namespace

TEST_F(ScrolledZoom, ZoomingAroundTheMouseKeepsTheDiagramPointUnderIt) {
    ASSERT_EQ(area.viewport()->size(), QSize(200, 150));
    H()->setValue(60);
    V()->setValue(40);
    // The view's point (100, 80) shows the diagram's (160, 120).
    const QPoint view(100, 80);
    ASSERT_EQ(OnSurface(view), QPoint(160, 120));
    Wheel(OnSurface(view), 120);
    EXPECT_EQ(dc->Zoom(), 1.25);
    EXPECT_EQ(OnSurface(view), QPoint(200, 150)); // (160, 120) * 1.25
    // The keys zoom around where the mouse last was.
    MoveTo(OnSurface(view));
    Key(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(dc->Zoom(), 1.5);
    EXPECT_EQ(OnSurface(view), QPoint(240, 180));
    Key(Qt::Key_Minus, Qt::ControlModifier);
    Key(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(dc->Zoom(), 1.0);
    EXPECT_EQ(OnSurface(view), QPoint(160, 120));
}

TEST_F(ScrolledZoom, InAResizableAreaTheSurfaceFollowsTheZoomAndThePointStays) {
    area.setWidgetResizable(true);
    QCoreApplication::processEvents();
    const QRect r = dc->DiagramRect();
    const QPoint view(100, 80);
    Wheel(OnSurface(view), 120);
    Wheel(OnSurface(view), 120);
    Wheel(OnSurface(view), 120);
    EXPECT_EQ(dc->Zoom(), 2.0);
    EXPECT_EQ(panel.width(), 2 * (r.right() + 1 + TDiagContainer::kSurfaceMargin));
    EXPECT_EQ(panel.height(), 2 * (r.bottom() + 1 + TDiagContainer::kSurfaceMargin));
    // The view's (100, 80) showed the diagram's (100, 80); at 200% that is the surface's
    // (200, 160).
    EXPECT_EQ(OnSurface(view), QPoint(200, 160));
    // At 50% the whole diagram fits; the surface fills the view.
    dc->SetZoom(0.5);
    QCoreApplication::processEvents();
    EXPECT_EQ(panel.size(), area.viewport()->size());
    EXPECT_EQ(H()->maximum(), 0);
}

TEST_F(ScrolledZoom, DraggingABlockNearTheViewsEdgeScrollsAndTheBlockFollows) {
    ASSERT_EQ(H()->value(), 0);
    Press(QPoint(70, 120));
    MoveTo(QPoint(120, 120));
    MoveTo(QPoint(195, 120)); // 5 pixels from the view's right edge
    QTest::qWait(400);
    const int scrolled = H()->value();
    EXPECT_GT(scrolled, 0);
    EXPECT_EQ(V()->value(), 0);
    Release(OnSurface(QPoint(195, 120)));
    // The mouse stood at the view's x 195, which is now the surface's 195 + scrolled.
    EXPECT_EQ(a->BoundsRect().Left, 50 + 195 + scrolled - 70);
    EXPECT_EQ(a->BoundsRect().Top, 60);
    EXPECT_EQ(stack->count(), 1);
    // Released, nothing scrolls any more.
    QTest::qWait(150);
    EXPECT_EQ(H()->value(), scrolled);
}

TEST_F(ScrolledZoom, ARubberBandNearTheBottomScrollsDown) {
    Press(QPoint(20, 20));
    MoveTo(QPoint(60, 100));
    MoveTo(QPoint(60, 148));
    QTest::qWait(300);
    EXPECT_GT(V()->value(), 0);
    EXPECT_EQ(H()->value(), 0);
    Release(OnSurface(QPoint(60, 148)));
}

TEST_F(ScrolledZoom, AMouseHeldInTheMiddleOrWithDirectEditingOffScrollsNothing) {
    Press(QPoint(70, 120));
    MoveTo(QPoint(100, 100));
    QTest::qWait(200);
    Release(QPoint(100, 100));
    EXPECT_EQ(H()->value(), 0);
    EXPECT_EQ(V()->value(), 0);
    dc->SetDirectEditing(false);
    Press(QPoint(100, 100), Qt::ShiftModifier);
    MoveTo(QPoint(195, 145));
    QTest::qWait(200);
    Release(QPoint(195, 145), Qt::ShiftModifier);
    EXPECT_EQ(H()->value(), 0);
    EXPECT_EQ(V()->value(), 0);
}
