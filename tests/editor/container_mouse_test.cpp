// Mouse work on the surface, driven by real mouse events on the real widgets; the scripted
// input state supplies the Shift key and the cursor's screen position, as the container reads
// both from the system rather than from the event.

#include "common/mouse_util.h"
#include "editor_test_util.h"

#include "common/test_util.h"

#include <QPushButton>
#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class MouseFixture : public EditorFixture {
protected:
    TDiagObject* gate = nullptr; // AND gate at (100, 50), 60 x 100

    void SetUp() override {
        EditorFixture::SetUp();
        Show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
        gate = AndGate(*dc->ObjList, 100, 50);
        dc->AssignContextMenus(&menuConnections, &menuObjects);
        dc->SetDesignMode(true);
    }

    // Bottom-right corner of a block on the screen.
    TPoint Corner(const TDiagObject* b) const {
        return Screen({b->x() + b->width(), b->y() + b->height()});
    }

    void Press(QObject* w, Qt::MouseButton button, QPoint local) {
        vde::test::MousePress(w, button, Qt::NoModifier, local);
    }
    void Move(QObject* w, QPoint local) { vde::test::MouseMove(w, local); }
    void Release(QObject* w, Qt::MouseButton button, QPoint local) {
        vde::test::MouseRelease(w, button, Qt::NoModifier, local);
    }
    void Click(QObject* w, Qt::MouseButton button, QPoint local) {
        Press(w, button, local);
        Release(w, button, local);
    }
    // Where a click (in block coordinates) lands next to marker idx: its connection point on the
    // body's edge (the marker's point moved inward by the lead length of 8) plus an offset.
    static QPoint NearMarker(const TDiagObject* b, int idx, int dx, int dy) {
        const TDotMarker& m =
            idx < 0 ? b->FInputs.at(size_t(-idx - 1)) : b->FOutputs.at(size_t(idx - 1));
        const int lead = idx < 0 ? 8 : -8;
        return QPoint(m.P.X + lead + dx, m.P.Y + dy);
    }
};

} // namespace

// ---- starting a drag --------------------------------------------------------------------------

TEST_F(MouseFixture, ShiftPress14PixelsFromTheBottomRightCornerStartsAResize) {
    input.Shift = ssShift;
    const TPoint c = Corner(gate);
    input.Pos = {c.X - 14, c.Y - 3};
    Press(gate, Qt::LeftButton, QPoint(46, 97));
    EXPECT_EQ(dc->FResizeMode, kDragResize);
    EXPECT_EQ(gate->FResizeMode, kDragResize);
    EXPECT_EQ(dc->FOldPos, input.Pos);
    Release(gate, Qt::LeftButton, QPoint(46, 97));
}

TEST_F(MouseFixture, ShiftPress15PixelsFromTheBottomRightCornerStartsAMove) {
    input.Shift = ssShift;
    const TPoint c = Corner(gate);
    input.Pos = {c.X - 2, c.Y - 15};
    Press(gate, Qt::LeftButton, QPoint(58, 85));
    EXPECT_EQ(dc->FResizeMode, kDragMove);
    EXPECT_EQ(gate->FResizeMode, kDragMove);
    Release(gate, Qt::LeftButton, QPoint(58, 85));
}

TEST_F(MouseFixture, TheCornerDistanceIsChebyshevOnTheScreenAndOutsideTheBlockToo) {
    input.Shift = ssShift;
    const TPoint c = Corner(gate);
    // 10 right and 14 below the corner: the larger of the two counts.
    input.Pos = {c.X + 10, c.Y + 14};
    Press(gate, Qt::LeftButton, QPoint(30, 30));
    EXPECT_EQ(dc->FResizeMode, kDragResize);
    Release(gate, Qt::LeftButton, QPoint(30, 30));
    input.Pos = {c.X + 15, c.Y + 14};
    Press(gate, Qt::LeftButton, QPoint(30, 30));
    EXPECT_EQ(dc->FResizeMode, kDragMove);
    Release(gate, Qt::LeftButton, QPoint(30, 30));
}

TEST_F(MouseFixture, ARightPressWithShiftStartsADragJustAsTheLeftButtonDoes) {
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::RightButton, QPoint(20, 10));
    EXPECT_EQ(dc->FResizeMode, kDragMove);
    Release(gate, Qt::RightButton, QPoint(20, 10));
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    // The release that ended the drag opened no menu.
    EXPECT_TRUE(popups.Records.empty());
}

TEST_F(MouseFixture, APressWithoutShiftStartsNoDrag) {
    input.Shift = 0;
    input.Pos = Corner(gate);
    Press(gate, Qt::LeftButton, QPoint(59, 99));
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    EXPECT_EQ(gate->FResizeMode, kDragNone);
    Release(gate, Qt::LeftButton, QPoint(59, 99));
}

TEST_F(MouseFixture, AShiftFlagOnTheEventAloneDoesNotCount) {
    // The keyboard state says no Shift, whatever the event carries.
    input.Shift = 0;
    input.Pos = Screen({120, 60});
    vde::test::MousePress(gate, Qt::LeftButton, Qt::ShiftModifier, QPoint(20, 10));
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    vde::test::MouseRelease(gate, Qt::LeftButton, Qt::ShiftModifier, QPoint(20, 10));
}

TEST_F(MouseFixture, APressClearsTheBlocksPartialPaintFlag) {
    gate->DisablePaint = true;
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::LeftButton, QPoint(20, 10));
    EXPECT_FALSE(gate->DisablePaint);
    Release(gate, Qt::LeftButton, QPoint(20, 10));
}

// ---- dragging ---------------------------------------------------------------------------------

TEST_F(MouseFixture, EachMoveStepMovesTheBlockByExactlyTheCursorsTravel) {
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::LeftButton, QPoint(20, 10));
    input.Pos = {input.Pos.X + 7, input.Pos.Y - 3};
    Move(gate, QPoint(27, 7));
    EXPECT_EQ(gate->BoundsRect(), (TRect{107, 47, 167, 147}));
    EXPECT_EQ(input.Cursor, crSizeAll);
    input.Pos = {input.Pos.X - 2, input.Pos.Y + 5};
    Move(gate, QPoint(25, 12));
    EXPECT_EQ(gate->BoundsRect(), (TRect{105, 52, 165, 152}));
    EXPECT_EQ(dc->FOldPos, input.Pos);
    Release(gate, Qt::LeftButton, QPoint(25, 12));
    EXPECT_EQ(input.Cursor, crDefault);
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    EXPECT_EQ(gate->FResizeMode, kDragNone);
}

TEST_F(MouseFixture, EachResizeStepGrowsTheBlockByExactlyTheCursorsTravel) {
    input.Shift = ssShift;
    const TPoint c = Corner(gate);
    input.Pos = {c.X - 3, c.Y - 3};
    Press(gate, Qt::LeftButton, QPoint(57, 97));
    input.Pos = {input.Pos.X + 11, input.Pos.Y + 4};
    Move(gate, QPoint(68, 101));
    EXPECT_EQ(gate->BoundsRect(), (TRect{100, 50, 171, 154}));
    EXPECT_EQ(input.Cursor, crSizeNWSE);
    input.Pos = {input.Pos.X - 6, input.Pos.Y - 9};
    Move(gate, QPoint(62, 92));
    EXPECT_EQ(gate->BoundsRect(), (TRect{100, 50, 165, 145}));
    Release(gate, Qt::LeftButton, QPoint(62, 92));
}

TEST_F(MouseFixture, Resizing60By60ByMinus30HoldsTheSizeAt50) {
    gate->SetBounds(100, 50, 60, 60);
    input.Shift = ssShift;
    const TPoint c = Corner(gate);
    input.Pos = {c.X - 1, c.Y - 1};
    Press(gate, Qt::LeftButton, QPoint(58, 58));
    input.Pos = {input.Pos.X - 30, input.Pos.Y - 30};
    Move(gate, QPoint(28, 28));
    EXPECT_EQ(gate->width(), 50);
    EXPECT_EQ(gate->height(), 50);
    EXPECT_EQ(gate->GetLocation(), (TPoint{100, 50}));
    // The old position follows the cursor even though the size was held.
    EXPECT_EQ(dc->FOldPos, input.Pos);
    // Growing again counts from the cursor, not from where the corner would have been.
    input.Pos = {input.Pos.X + 5, input.Pos.Y + 2};
    Move(gate, QPoint(33, 30));
    EXPECT_EQ(gate->BoundsRect(), (TRect{100, 50, 155, 102}));
    Release(gate, Qt::LeftButton, QPoint(33, 30));
}

TEST_F(MouseFixture, MovingKeepsTheMarkersWhileResizingLaysThemOutAgain) {
    const TDotMarkers before = gate->FInputs;
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::LeftButton, QPoint(20, 10));
    input.Pos = {input.Pos.X + 10, input.Pos.Y + 10};
    Move(gate, QPoint(30, 20));
    EXPECT_EQ(gate->FInputs, before);
    Release(gate, Qt::LeftButton, QPoint(30, 20));
    const TPoint c = Corner(gate);
    input.Pos = {c.X - 1, c.Y - 1};
    Press(gate, Qt::LeftButton, QPoint(58, 98));
    input.Pos = {input.Pos.X, input.Pos.Y + 100};
    Move(gate, QPoint(58, 198));
    Release(gate, Qt::LeftButton, QPoint(58, 198));
    // Height 200: body rows 3..197, two inputs in cells of (194 - 2) div 4 = 48.
    ASSERT_EQ(gate->FInputs.size(), 2u);
    EXPECT_EQ(gate->FInputs[0].P, (TPoint{0, 50}));
    EXPECT_EQ(gate->FInputs[1].P, (TPoint{0, 146}));
}

// ---- hover cursors ----------------------------------------------------------------------------

TEST_F(MouseFixture, HoverShowsTheResizeCursorOnlyWithShiftInsideTheZone) {
    const TPoint c = Corner(gate);
    input.Pos = {c.X - 5, c.Y - 5};
    input.Shift = ssShift;
    Move(gate, QPoint(55, 95));
    EXPECT_EQ(input.Cursor, crSizeNWSE);
    input.Shift = 0;
    Move(gate, QPoint(54, 95));
    EXPECT_EQ(input.Cursor, crDefault);
    input.Shift = ssShift;
    Move(gate, QPoint(55, 95));
    ASSERT_EQ(input.Cursor, crSizeNWSE);
    input.Pos = {c.X - 15, c.Y - 5};
    Move(gate, QPoint(45, 95));
    EXPECT_EQ(input.Cursor, crDefault);
    EXPECT_EQ(dc->FResizeMode, kDragNone);
}

// ---- wires during and after a drag --------------------------------------------------------------

namespace {

// Panel pixels that are black and lie outside every block: wire pixels.
int WirePixels(const QImage& img, const TDiagObjectList& blocks) {
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            bool inBlock = false;
            for (TDiagObject* b : blocks.All())
                if (b->geometry().contains(x, y))
                    inBlock = true;
            if (!inBlock && PixelColor(img, x, y) == 0x000000)
                ++n;
        }
    return n;
}

} // namespace

TEST_F(MouseFixture, DuringADragTheParentShowsNoWireAndAfterTheReleaseTheWireIsBackRerouted) {
    TDiagObject* other = AndGate(*dc->ObjList, 250, 150);
    dc->AssignObjEvents(other);
    auto* c =
        new TDiagObjConnection(dc->ConList.get(), gate, 1, other, -1, TPoint{10, 10}, 0, 0, 0);
    const QImage before = Render();
    ASSERT_GT(WirePixels(before, *dc->ObjList), 100);
    // The routed path's middle: the output stub, at the output's height, is drawn in black.
    const TPoint out1 = MarkerAt(gate, 1);
    EXPECT_EQ(PixelColor(before, out1.X + 3, out1.Y), 0x000000u);

    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::LeftButton, QPoint(20, 10));
    input.Pos = {input.Pos.X - 40, input.Pos.Y + 30};
    Move(gate, QPoint(-20, 40));
    ASSERT_EQ(gate->GetLocation(), (TPoint{60, 80}));
    const QImage during = Render();
    EXPECT_EQ(WirePixels(during, *dc->ObjList), 0);
    // Not rerouted yet: the path still starts where the gate was.
    EXPECT_EQ(c->FPoints.front(), (TPoint{out1.X - 1, out1.Y}));

    Release(gate, Qt::LeftButton, QPoint(-20, 40));
    const TPoint moved = MarkerAt(gate, 1);
    EXPECT_EQ(moved, (TPoint{out1.X - 40, out1.Y + 30}));
    const TPoint in1 = MarkerAt(other, -1);
    // Routed anew: from one pixel inside the output to one pixel inside the input, stubs of 10.
    const TPoints expected{{moved.X - 1, moved.Y}, {moved.X + 9, moved.Y}, {moved.X + 9, in1.Y},
                           {moved.X + 9, in1.Y},   {in1.X - 9, in1.Y},     {in1.X + 1, in1.Y}};
    EXPECT_EQ(c->FPoints, expected);
    const QImage after = Render();
    EXPECT_GT(WirePixels(after, *dc->ObjList), 100);
    EXPECT_EQ(PixelColor(after, moved.X + 5, moved.Y), 0x000000u);
    EXPECT_EQ(PixelColor(after, moved.X + 9, (moved.Y + in1.Y) / 2), 0x000000u);
    // Nothing is left where the wire ran before.
    EXPECT_EQ(PixelColor(after, out1.X + 3, out1.Y), 0xFFFFFFu);
}

// ---- clicks on blocks ---------------------------------------------------------------------------

TEST_F(MouseFixture, ALeftClickSelectsAnUnselectedBlockAndDeselectsAllOthers) {
    TDiagObject* other = AndGate(*dc->ObjList, 250, 150);
    dc->AssignObjEvents(other);
    other->SetSelected(true);
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    EXPECT_TRUE(gate->GetSelected());
    EXPECT_FALSE(other->GetSelected());
    EXPECT_EQ(dc->SelObj, gate);
}

TEST_F(MouseFixture, ASecondLeftClickAwayFromTheMarkersDeselectsTheBlockWhileSelObjStillNamesIt) {
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    ASSERT_TRUE(gate->GetSelected());
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    EXPECT_FALSE(gate->GetSelected());
    EXPECT_EQ(dc->SelObj, gate);
}

TEST_F(MouseFixture, ALeftClickNearAMarkerOfASelectedBlockSelectsTheMarkerAndKeepsTheBlock) {
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    ASSERT_TRUE(gate->GetSelected());
    // 5 right and 6 below input 2's point on the body edge: 7.8 pixels away.
    Click(gate, Qt::LeftButton, NearMarker(gate, -2, 5, 6));
    EXPECT_TRUE(gate->GetSelected());
    EXPECT_EQ(gate->GetSelMarkerIndex(), -2);
    Click(gate, Qt::LeftButton, NearMarker(gate, 1, -3, 2));
    EXPECT_TRUE(gate->GetSelected());
    EXPECT_EQ(gate->GetSelMarkerIndex(), 1);
}

TEST_F(MouseFixture, AMiddleClickOnlyMakesTheBlockTheSelectedOne) {
    Click(gate, Qt::MiddleButton, QPoint(30, 50));
    EXPECT_EQ(dc->SelObj, gate);
    EXPECT_FALSE(gate->GetSelected());
    EXPECT_TRUE(popups.Records.empty());
}

TEST_F(MouseFixture, ARightClickOnASelectedBlocksMarkerOpensTheConnectionsMenuAtTheClickPoint) {
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    const QPoint at = NearMarker(gate, -1, 2, 1);
    Click(gate, Qt::RightButton, at);
    ASSERT_EQ(popups.Records.size(), 1u);
    EXPECT_EQ(popups.Records[0].MenuName, QStringLiteral("pmConnections"));
    EXPECT_EQ(popups.Records[0].ScreenPos, Screen({100 + at.x(), 50 + at.y()}));
    EXPECT_TRUE(gate->GetSelected());
}

TEST_F(MouseFixture, ARightClickElsewhereOnABlockOpensTheObjectsMenuAndKeepsTheSelection) {
    Click(gate, Qt::RightButton, QPoint(30, 50));
    ASSERT_EQ(popups.Records.size(), 1u);
    EXPECT_EQ(popups.Records[0].MenuName, QStringLiteral("pmObjects"));
    EXPECT_EQ(popups.Records[0].ScreenPos, Screen({130, 100}));
    EXPECT_FALSE(gate->GetSelected());
    EXPECT_EQ(dc->SelObj, gate);
    // Near a marker of a block that is not selected: still the objects menu.
    Click(gate, Qt::RightButton, NearMarker(gate, -1, 1, 1));
    ASSERT_EQ(popups.Records.size(), 2u);
    EXPECT_EQ(popups.Records[1].MenuName, QStringLiteral("pmObjects"));
}

TEST_F(MouseFixture, ARightClickOnABlockWithoutMenusShowsNothing) {
    dc->pmObjects = nullptr;
    dc->pmConnections = nullptr;
    Click(gate, Qt::RightButton, QPoint(30, 50));
    EXPECT_TRUE(popups.Records.empty());
    EXPECT_EQ(dc->SelObj, gate);
}

TEST_F(MouseFixture, AReleaseOnABlockThatIsNotInTheListIsIgnored) {
    TDiagObjectList foreign(&panel);
    TDiagObject* stranger = AndGate(foreign, 10, 180);
    dc->AssignObjEvents(stranger);
    Click(stranger, Qt::LeftButton, QPoint(30, 50));
    EXPECT_FALSE(stranger->GetSelected());
    EXPECT_EQ(dc->SelObj, nullptr);
}

// ---- clicks on the surface ----------------------------------------------------------------------

TEST_F(MouseFixture, ARightClickOnEmptySurfaceNearASegmentSelectsItAndOpensTheConnectionsMenu) {
    TDiagConnection* w = Wire(*dc->ConList, {{20, 250}, {300, 250}});
    Click(&panel, Qt::RightButton, QPoint(150, 244));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
    EXPECT_EQ(w->GetSelectedIndex(), 0);
    ASSERT_EQ(popups.Records.size(), 1u);
    EXPECT_EQ(popups.Records[0].MenuName, QStringLiteral("pmConnections"));
    EXPECT_EQ(popups.Records[0].ScreenPos, Screen({150, 244}));
    EXPECT_EQ(dc->FClickPoint, (TPoint{150, 244}));
}

TEST_F(MouseFixture, ARightClickOnEmptySurfaceFarFromAnySegmentOpensTheObjectsMenu) {
    Wire(*dc->ConList, {{20, 250}, {300, 250}});
    Click(&panel, Qt::RightButton, QPoint(30, 20));
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    ASSERT_EQ(popups.Records.size(), 1u);
    EXPECT_EQ(popups.Records[0].MenuName, QStringLiteral("pmObjects"));
    EXPECT_EQ(popups.Records[0].ScreenPos, Screen({30, 20}));
}

TEST_F(MouseFixture, EveryReleaseOnTheSurfaceMovesTheInsertionPointForNewBlocks) {
    Click(&panel, Qt::LeftButton, QPoint(33, 44));
    EXPECT_EQ(dc->FClickPoint, (TPoint{33, 44}));
    EXPECT_TRUE(popups.Records.empty());
    Click(&panel, Qt::MiddleButton, QPoint(12, 210));
    EXPECT_EQ(dc->FClickPoint, (TPoint{12, 210}));
    TDiagObject* t = dc->CreateObjectAtMousePos(doText);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->GetLocation(), (TPoint{12, 210}));
}

TEST_F(MouseFixture, ChoosingACreateItemOfTheObjectsMenuMakesTheBlockWhereTheSurfaceWasClicked) {
    auto* create = new TMenuItem(nullptr);
    create->SetName(QStringLiteral("mnuAndLogic"));
    create->Tag = doAndLogic;
    create->OnClick = [this](QObject* Sender) { dc->CreateDiagObEvent(Sender); };
    menuObjects.Add(create);
    Click(&panel, Qt::RightButton, QPoint(200, 20));
    ASSERT_TRUE(popups.Click(QStringLiteral("mnuAndLogic")));
    ASSERT_EQ(dc->ObjList->Count(), 2);
    TDiagObject* made = dc->ObjList->Items(1);
    EXPECT_EQ(made->BoundsRect(), (TRect{200, 20, 260, 120}));
    // It answers the mouse at once.
    Click(made, Qt::LeftButton, QPoint(30, 50));
    EXPECT_TRUE(made->GetSelected());
}

TEST_F(MouseFixture, ASelectedSegmentStaysHighlightedWhenAClickFindsNothingNear) {
    TDiagConnection* w = Wire(*dc->ConList, {{20, 250}, {300, 250}});
    Click(&panel, Qt::LeftButton, QPoint(150, 252));
    ASSERT_EQ(dc->SelInfo, LR(1, 1));
    Click(&panel, Qt::LeftButton, QPoint(30, 20));
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    EXPECT_EQ(w->GetSelectedIndex(), 0);
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 150, 250), 0xFF00FFu);
}

TEST_F(MouseFixture, SelectBestSegmentMovesTheHighlightToTheNearestSegment) {
    TDiagConnection* a = Wire(*dc->ConList, {{20, 250}, {300, 250}});
    TDiagConnection* b = Wire(*dc->ConList, {{350, 20}, {350, 200}, {380, 200}});
    dc->SelectBestSegment({150, 255});
    ASSERT_EQ(dc->SelInfo, LR(1, 1));
    dc->SelectBestSegment({370, 203});
    EXPECT_EQ(dc->SelInfo, LR(2, 2));
    EXPECT_EQ(b->GetSelectedIndex(), 1);
    EXPECT_EQ(a->GetSelectedIndex(), -1);
}

TEST_F(MouseFixture, TheSurfaceIgnoresReleasesWhenTheContainerHasNoCanvas) {
    dc.reset();
    TDiagContainer bare(&panel, nullptr, nullptr);
    bare.ParentMouseUp(&panel, mbRight, 0, 40, 50);
    EXPECT_EQ(bare.FClickPoint, (TPoint{0, 0}));
    EXPECT_TRUE(popups.Records.empty());
}

// ---- design mode --------------------------------------------------------------------------------

TEST(DesignMode, OnAParentThatIsNotCustomDrawnOnlyTheFlagChanges) {
    QPushButton host(QStringLiteral("host"));
    TCanvas canvas;
    canvas.SetHandle(&host);
    TDiagContainer dc(&host, &canvas, nullptr);
    TPopupMenu a(nullptr), b(nullptr);
    dc.AssignContextMenus(&a, &b);
    TDiagObject* gate = AndGate(*dc.ObjList, 10, 10);
    dc.SetDesignMode(true);
    EXPECT_TRUE(dc.GetDesignMode());
    EXPECT_TRUE(gate->MouseHandlers.Empty());
    EXPECT_FALSE(bool(GetMouseHandlers(&host).OnMouseUp));
    gate->SetSelected(true);
    dc.SelInfo = LR(1, 1);
    dc.SetDesignMode(false);
    EXPECT_FALSE(dc.GetDesignMode());
    EXPECT_TRUE(gate->GetSelected());
    EXPECT_EQ(dc.SelInfo, LR(1, 1));
}

TEST_F(EditorFixture, EnteringDesignModeHooksTheBlocksAndTheParent) {
    dc->AssignContextMenus(&menuConnections, &menuObjects);
    TDiagObject* gate = AndGate(*dc->ObjList, 10, 10);
    dc->SetDesignMode(true);
    EXPECT_FALSE(gate->MouseHandlers.Empty());
    EXPECT_TRUE(bool(gate->GetOnModifyBounds()));
    EXPECT_TRUE(bool(dc->ObjList->GetOnDeleteObject()));
    EXPECT_TRUE(bool(GetMouseHandlers(&panel).OnMouseUp));
}

TEST_F(EditorFixture, EnteringDesignModeWithoutMenusLeavesTheParentsMouseUpUnhooked) {
    TDiagObject* gate = AndGate(*dc->ObjList, 10, 10);
    dc->SetDesignMode(true);
    EXPECT_FALSE(gate->MouseHandlers.Empty());
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
}

TEST_F(EditorFixture, LeavingDesignModeUnhooksDeselectsAndHidesTheHandles) {
    QPushButton button(QStringLiteral("B"), &panel);
    TdmMoveResize mr;
    dc = std::make_unique<TDiagContainer>(&panel, &canvas, &mr);
    dc->AssignContextMenus(&menuConnections, &menuObjects);
    TDiagObject* gate = AndGate(*dc->ObjList, 10, 10);
    TDiagObject* other = AndGate(*dc->ObjList, 200, 10);
    TDiagConnection* w = Wire(*dc->ConList, {{20, 250}, {300, 250}});
    dc->SetDesignMode(true);
    gate->SetSelected(true);
    other->SetSelected(true);
    dc->SelObj = gate;
    dc->SelectBestSegment({100, 250});
    ASSERT_EQ(w->GetSelectedIndex(), 0);
    mr.PositionNodes(&button);
    ASSERT_TRUE(mr.Nodes()->Items(0)->isVisibleTo(&panel));
    ASSERT_TRUE(HasMouseHook(&button));

    dc->SetDesignMode(false);
    EXPECT_FALSE(dc->GetDesignMode());
    EXPECT_EQ(dc->SelObj, nullptr);
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    EXPECT_FALSE(gate->GetSelected());
    EXPECT_FALSE(other->GetSelected());
    EXPECT_EQ(w->GetSelectedIndex(), -1);
    EXPECT_TRUE(gate->MouseHandlers.Empty());
    EXPECT_FALSE(bool(gate->GetOnModifyBounds()));
    EXPECT_FALSE(bool(dc->ObjList->GetOnDeleteObject()));
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
    for (int i = 0; i < mr.Nodes()->Count(); ++i)
        EXPECT_FALSE(mr.Nodes()->Items(i)->isVisibleTo(&panel)) << i;
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
    EXPECT_FALSE(HasMouseHook(&button));
}

TEST_F(EditorFixture, LeavingDesignModeWithoutAMoveResizeModuleIsSafe) {
    QPushButton button(QStringLiteral("B"), &panel);
    dc->SetDesignMode(true);
    dc->SetDesignMode(false);
    EXPECT_FALSE(dc->GetDesignMode());
    EXPECT_FALSE(HasMouseHook(&button));
}

TEST_F(MouseFixture, ADiagramLoadedWithDesignModeOffStillSelectsOnClickButStartsNoDrag) {
    dc->SetDesignMode(false);
    ASSERT_TRUE(gate->MouseHandlers.Empty());
    // Loading gives every block the container's events whatever the mode.
    dc->ObjList->AssignObjEvents([this](QObject* o) { dc->AssignObjEvents(o); });
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    EXPECT_TRUE(gate->GetSelected());
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::LeftButton, QPoint(20, 10));
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    input.Pos = {input.Pos.X + 20, input.Pos.Y + 20};
    Move(gate, QPoint(40, 30));
    Release(gate, Qt::LeftButton, QPoint(40, 30));
    EXPECT_EQ(gate->GetLocation(), (TPoint{100, 50}));
}

TEST_F(MouseFixture, BlocksStayInertOutsideDesignModeWhenTheyWereHookedByIt) {
    dc->SetDesignMode(false);
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    EXPECT_FALSE(gate->GetSelected());
    EXPECT_EQ(dc->SelObj, nullptr);
}

// ---- after the blocks were freed ----------------------------------------------------------------

TEST_F(MouseFixture, AfterClearFalseClicksOnTheSurfaceAndTheSelectionAreSafeNoOps) {
    Click(gate, Qt::LeftButton, QPoint(30, 50));
    ASSERT_EQ(dc->SelObj, gate);
    Wire(*dc->ConList, {{20, 250}, {300, 250}});
    dc->SelectBestSegment({100, 250});
    dc->Clear(false);
    EXPECT_EQ(dc->SelObj, nullptr);
    Click(&panel, Qt::LeftButton, QPoint(100, 250));
    Click(&panel, Qt::RightButton, QPoint(100, 250));
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    ASSERT_EQ(popups.Records.size(), 1u);
    EXPECT_EQ(popups.Records[0].MenuName, QStringLiteral("pmObjects"));
    dc->MoveDiagObj(nullptr);
    dc->DiagMouseUp(nullptr, mbLeft, 0, 1, 1);
    dc->DiagMouseDown(nullptr, mbLeft, 0, 1, 1);
    dc->DiagMouseMove(nullptr, 0, 1, 1);
    dc->Refresh();
    EXPECT_FALSE(Render().isNull());
    dc->SetDesignMode(false);
    dc->SetDesignMode(true);
}

TEST_F(MouseFixture, ABlockDeletedDuringItsDragLeavesNothingDangling) {
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    Press(gate, Qt::LeftButton, QPoint(20, 10));
    ASSERT_EQ(dc->FResizeMode, kDragMove);
    dc->SelObj = gate;
    dc->ObjList->DeleteObject(gate, true);
    gate = nullptr;
    EXPECT_EQ(dc->SelObj, nullptr);
    // The release reaches the surface now; the drag ends with the next release on a block.
    dc->DiagMouseUp(nullptr, mbLeft, 0, 0, 0);
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    EXPECT_EQ(input.Cursor, crDefault);
}
