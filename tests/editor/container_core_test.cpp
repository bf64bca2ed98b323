// The container's life cycle: construction with and without canvas and move/resize module,
// clearing, refreshing, the paint and event bindings and the small callbacks.

#include "editor_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QPushButton>

using namespace vde;
using namespace vde::test;

namespace {

// An automatic wire from output 1 of `a` to input 1 of `b`, routed at once.
TDiagConnection* Route(TDiagConnectList& cl, TDiagObject* a, TDiagObject* b) {
    return new TDiagObjConnection(&cl, a, 1, b, -1, TPoint{10, 10}, 0, 0, 0);
}

} // namespace

TEST_F(EditorFixture, ContainerWithCanvasOwnsBothListsAndPaintsOnTheParent) {
    ASSERT_NE(dc->ObjList, nullptr);
    ASSERT_NE(dc->ConList, nullptr);
    ASSERT_NE(dc->CntList, nullptr);
    EXPECT_EQ(dc->ConList->GetCanvas(), &canvas);
    EXPECT_EQ(dc->ObjList->GetParent(), &panel);
    EXPECT_TRUE(HasPaintHandler(&panel));
    EXPECT_FALSE(dc->GetDesignMode());
    EXPECT_EQ(dc->pmConnections, nullptr);
    EXPECT_EQ(dc->pmObjects, nullptr);
    EXPECT_EQ(dc->SelObj, nullptr);
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    EXPECT_EQ(dc->GetParent(), &panel);
    EXPECT_EQ(dc->GetCanvas(), &canvas);
}

TEST(ContainerWithoutCanvas, HasNoListsAndItsOperationsTouchOnlyTheControlList) {
    QWidget panel;
    panel.resize(200, 100);
    SetPaintHandler(&panel, [] {});
    ASSERT_TRUE(HasPaintHandler(&panel));
    TDiagContainer dc(&panel, nullptr, nullptr);
    EXPECT_EQ(dc.ObjList, nullptr);
    EXPECT_EQ(dc.ConList, nullptr);
    // The paint handler someone had put on the parent is gone.
    EXPECT_FALSE(HasPaintHandler(&panel));
    dc.Refresh();
    dc.PaintEvent(&panel);
    QWidget child(&panel);
    dc.CntList->Add(&child);
    dc.SelInfo = LR(1, 1);
    dc.Clear(false);
    EXPECT_EQ(dc.CntList->Count(), 0);
    EXPECT_EQ(dc.SelInfo.Value(), 0u);
    EXPECT_EQ(dc.ObjList, nullptr);
    EXPECT_EQ(dc.ConList, nullptr);
    EXPECT_EQ(dc.CreateObjByDiagType(doText, {0, 0, 150, 50}), nullptr);
}

TEST(ContainerWithoutMoveResize, HooksNoChildControlAndHasNoNodeControl) {
    QWidget panel;
    QPushButton button(QStringLiteral("B"), &panel);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    EXPECT_EQ(dc.CntList->Count(), 0);
    EXPECT_FALSE(HasMouseHook(&button));
    EXPECT_EQ(dc.GetCurrentNodeControl(), nullptr);
    dc.AssignControlEventsForChildren(false);
    dc.AssignControlEventsForChildren(true);
    EXPECT_FALSE(HasMouseHook(&button));
}

TEST(ContainerWithMoveResize, TakesTheParentsWindowedChildrenButNotItsBlocks) {
    QWidget panel;
    QPushButton button(QStringLiteral("B"), &panel);
    button.setObjectName(QStringLiteral("Button1"));
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TdmMoveResize mr;
    TDiagContainer dc(&panel, &canvas, &mr);
    // The eight handles were made on the panel; they are not taken under control themselves.
    ASSERT_EQ(mr.Nodes()->Count(), 8);
    EXPECT_EQ(mr.Nodes()->Items(0)->parentWidget(), &panel);
    ASSERT_EQ(dc.CntList->Count(), 1);
    EXPECT_EQ(dc.CntList->Items(0), &button);
    EXPECT_TRUE(HasMouseHook(&button));
    EXPECT_EQ(dc.GetCurrentNodeControl(), nullptr);
    mr.PositionNodes(&button);
    EXPECT_EQ(dc.GetCurrentNodeControl(), &button);
    // A second pass works from the list: unhooking leaves the list as it is.
    dc.AssignControlEventsForChildren(true);
    EXPECT_FALSE(HasMouseHook(&button));
    EXPECT_EQ(dc.CntList->Count(), 1);
    dc.AssignControlEventsForChildren(false);
    EXPECT_TRUE(HasMouseHook(&button));
}

TEST_F(EditorFixture, ClearTrueKeepsBlocksConnectionsAndTheSelectedBlock) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    TDiagObject* b = AndGate(*dc->ObjList, 200, 100);
    Route(*dc->ConList, a, b);
    QWidget child(&panel);
    dc->CntList->Add(&child);
    dc->SelObj = a;
    dc->SelInfo = LR(1, 2);
    dc->Clear(true);
    EXPECT_EQ(dc->ObjList->Count(), 2);
    EXPECT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(dc->CntList->Count(), 0);
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    EXPECT_EQ(dc->SelObj, a);
}

TEST_F(EditorFixture, ClearFalseFreesBlocksAndConnectionsAndTheSelectedBlockReadsAsNone) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    TDiagObject* b = AndGate(*dc->ObjList, 200, 100);
    Route(*dc->ConList, a, b);
    dc->SelObj = a;
    dc->SelInfo = LR(1, 2);
    dc->Clear(false);
    EXPECT_EQ(dc->ObjList->Count(), 0);
    EXPECT_EQ(dc->ConList->Count(), 0);
    EXPECT_EQ(dc->SelInfo.Value(), 0u);
    EXPECT_EQ(dc->SelObj, nullptr);
}

TEST_F(EditorFixture, RefreshRecomputesPathsOfAllConnections) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    TDiagObject* b = AndGate(*dc->ObjList, 200, 100);
    TDiagConnection* c = Route(*dc->ConList, a, b);
    const TPoints routed = c->FPoints;
    c->FPoints = {{0, 0}, {1, 0}};
    dc->Refresh();
    EXPECT_EQ(c->FPoints, routed);
}

TEST_F(EditorFixture, PaintEventDrawsTheConnectionsOnlyWhenThereAreSomeAndNoDragIsOn) {
    RecordingCanvas rc;
    TDiagContainer rdc(&panel, &rc.canvas, nullptr);
    TDiagObject* a = AndGate(*rdc.ObjList, 20, 20);
    TDiagObject* b = AndGate(*rdc.ObjList, 200, 100);
    rdc.PaintEvent(&panel);
    EXPECT_TRUE(rc.rec.Ops.empty());
    Route(*rdc.ConList, a, b);
    rdc.FResizeMode = kDragMove;
    rdc.PaintEvent(&panel);
    EXPECT_TRUE(rc.rec.Ops.empty());
    rdc.FResizeMode = kDragNone;
    rdc.PaintEvent(&panel);
    EXPECT_FALSE(rc.rec.Ops.empty());
}

TEST_F(EditorFixture, CreateDiagObEventWithTagNoneCreatesAndHooksNothing) {
    TMenuItem item(nullptr);
    item.Tag = doNone;
    dc->CreateDiagObEvent(&item);
    EXPECT_EQ(dc->ObjList->Count(), 0);
    EXPECT_FALSE(bool(dc->ObjList->GetOnDeleteObject()));
}

TEST_F(EditorFixture, CreateDiagObEventMakesTheKindAtTheClickPointAndHooksItOutsideDesignMode) {
    dc->FClickPoint = {30, 40};
    TMenuItem item(nullptr);
    item.Tag = doOrLogic;
    dc->CreateDiagObEvent(&item);
    ASSERT_EQ(dc->ObjList->Count(), 1);
    TDiagObject* o = dc->ObjList->Items(0);
    EXPECT_EQ(o->GetDiagObjType(), doOrLogic);
    EXPECT_EQ(o->BoundsRect(), (TRect{30, 40, 90, 140}));
    EXPECT_TRUE(bool(o->GetOnModifyBounds()));
    EXPECT_TRUE(bool(o->GetOnModifyMarkers()));
    EXPECT_FALSE(o->MouseHandlers.Empty());
    EXPECT_TRUE(bool(dc->ObjList->GetOnDeleteObject()));
}

TEST_F(EditorFixture, CreateDiagObEventIgnoresASenderThatIsNoMenuItem) {
    QObject notAnItem;
    dc->CreateDiagObEvent(&notAnItem);
    dc->CreateDiagObEvent(nullptr);
    EXPECT_EQ(dc->ObjList->Count(), 0);
}

TEST_F(EditorFixture, CreateObjByDiagTypeNoneReturnsNoneAndAddsNothing) {
    EXPECT_EQ(dc->CreateObjByDiagType(doNone, {10, 10, 100, 100}), nullptr);
    EXPECT_EQ(dc->CreateObjByDiagType(TDiagObjectType(5), {10, 10, 100, 100}), nullptr);
    EXPECT_EQ(dc->ObjList->Count(), 0);
}

TEST_F(EditorFixture, CreateObjByDiagTypeGivesEachKindItsStandardArguments) {
    auto* t = dynamic_cast<TDiagText*>(dc->CreateObjByDiagType(doText, {10, 20, 160, 70}));
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->BoundsRect(), (TRect{10, 20, 160, 70}));
    EXPECT_EQ(t->GetTextValues(), QStringLiteral("Text"));
    EXPECT_EQ(t->AlignHoriz, 0);
    EXPECT_EQ(t->AlignVert, 0);
    EXPECT_TRUE(t->isVisibleTo(&panel));
    auto* a = dynamic_cast<TDiagAndLogic*>(dc->CreateObjByDiagType(doAndLogic, {0, 0, 60, 100}));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->GetTextValues(), QStringLiteral("&"));
    EXPECT_EQ(a->AlignVert, 15);
    auto* o = dynamic_cast<TDiagOrLogic*>(dc->CreateObjByDiagType(doOrLogic, {0, 0, 60, 100}));
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("1"));
    auto* rs = dc->CreateObjByDiagType(doRSTrigger, {0, 0, 100, 200});
    ASSERT_NE(rs, nullptr);
    EXPECT_EQ(rs->GetDiagObjType(), doRSTrigger);
    EXPECT_EQ(rs->GetTextValues(), QStringLiteral("R|S|T"));
    EXPECT_EQ(dc->ObjList->Count(), 4);
    // No events are bound by this operation.
    EXPECT_FALSE(bool(t->GetOnModifyBounds()));
    EXPECT_TRUE(t->MouseHandlers.Empty());
}

TEST_F(EditorFixture, CreateObjectAtMousePosUsesTheKindsDefaultSizeAtTheClickPoint) {
    dc->FClickPoint = {15, 25};
    TDiagObject* t = dc->CreateObjectAtMousePos(doText);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->BoundsRect(), (TRect{15, 25, 165, 75}));
    TDiagObject* rs = dc->CreateObjectAtMousePos(doRSTrigger);
    ASSERT_NE(rs, nullptr);
    EXPECT_EQ(rs->BoundsRect(), (TRect{15, 25, 115, 225}));
    EXPECT_EQ(dc->CreateObjectAtMousePos(doNone), nullptr);
}

TEST_F(EditorFixture, OnModifyBoundsReroutesTheBlocksConnectionsUnlessADragIsOn) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    TDiagObject* b = AndGate(*dc->ObjList, 200, 100);
    TDiagConnection* c = Route(*dc->ConList, a, b);
    dc->AssignObjEvents(a);
    dc->AssignObjEvents(b);
    const TPoint before = c->FPoints.back();
    dc->FResizeMode = kDragMove;
    b->SetBounds(200, 150, 60, 100);
    EXPECT_EQ(c->FPoints.back(), before);
    dc->FResizeMode = kDragNone;
    b->SetBounds(200, 160, 60, 100);
    // The wire ends one pixel inside input 1 of b at its new place.
    const TPoint in1 = MarkerAt(b, -1);
    EXPECT_EQ(c->FPoints.back(), (TPoint{in1.X + 1, in1.Y}));
    EXPECT_EQ(in1.Y, before.Y + 60);
}

TEST_F(EditorFixture, AssignObjEventsExWithClearUnbindsTheFiveBlockEventsAndTheDeleteNotice) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    dc->AssignObjEventsEx(a, false);
    ASSERT_FALSE(a->MouseHandlers.Empty());
    dc->AssignObjEventsEx(a, true);
    EXPECT_TRUE(a->MouseHandlers.Empty());
    EXPECT_FALSE(bool(a->GetOnModifyBounds()));
    EXPECT_FALSE(bool(a->GetOnModifyMarkers()));
    EXPECT_FALSE(bool(dc->ObjList->GetOnDeleteObject()));
}

TEST_F(EditorFixture, TheDeleteNoticeLetsTheConnectionsLetGoOfADeletedBlock) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    TDiagObject* b = AndGate(*dc->ObjList, 200, 100);
    TDiagConnection* c = Route(*dc->ConList, a, b);
    dc->AssignObjEvents(a);
    dc->ObjList->DeleteObject(b, true);
    // A routed wire loses its end block and survives.
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(c->GetDstObject(), nullptr);
}

TEST_F(EditorFixture, AssignContextMenusHooksTheParentsMouseUpOnlyWithBothMenusInDesignMode) {
    dc->AssignContextMenus(&menuConnections, &menuObjects);
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
    dc->FDesignMode = true;
    dc->AssignContextMenus(&menuConnections, nullptr);
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
    EXPECT_EQ(dc->pmConnections, &menuConnections);
    EXPECT_EQ(dc->pmObjects, nullptr);
    dc->AssignContextMenus(&menuConnections, &menuObjects);
    EXPECT_TRUE(bool(GetMouseHandlers(&panel).OnMouseUp));
    dc->AssignContextMenus(nullptr, &menuObjects);
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
}

TEST_F(EditorFixture, ALoadedConnectionWhoseBlockKeyIsUnknownKeepsThatEndFree) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    auto* c = new TDiagConnection(dc->ConList.get());
    c->FSrcKey = a->GetObjKey();
    c->FDstKey = a->GetObjKey() + 12345u;
    c->FSrcConIdx = 1;
    c->FDstConIdx = -1;
    dc->ResolveObjLinks(c);
    EXPECT_EQ(c->GetSrcObject(), a);
    EXPECT_EQ(c->GetDstObject(), nullptr);
    EXPECT_EQ(c->FDstConIdx, 0);
    EXPECT_EQ(dc->ConList->Count(), 1);
}

TEST_F(EditorFixture, ResolveObjLinksFindsBothEndsByTheirKeys) {
    TDiagObject* a = AndGate(*dc->ObjList, 20, 20);
    TDiagObject* b = AndGate(*dc->ObjList, 200, 100);
    auto* c = new TDiagConnection(dc->ConList.get());
    c->FSrcKey = b->GetObjKey();
    c->FDstKey = a->GetObjKey();
    dc->ResolveObjLinks(c);
    EXPECT_EQ(c->GetSrcObject(), b);
    EXPECT_EQ(c->GetDstObject(), a);
}

TEST_F(EditorFixture, DestroyingTheContainerUnhooksTheParent) {
    dc->FDesignMode = true;
    dc->AssignContextMenus(&menuConnections, &menuObjects);
    ASSERT_TRUE(HasPaintHandler(&panel));
    dc.reset();
    EXPECT_FALSE(HasPaintHandler(&panel));
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
    // A repaint of the parent after the container went calls nothing of it.
    EXPECT_FALSE(Render().isNull());
}

TEST_F(EditorFixture, FreeingOneOfTwoContainersOnAPanelLeavesTheOthersHandlers) {
    dc->FDesignMode = true;
    dc->AssignContextMenus(&menuConnections, &menuObjects);
    // A second container on the same panel hooks the panel after the first.
    TCanvas canvas2;
    canvas2.SetHandle(&panel);
    auto second = std::make_unique<TDiagContainer>(&panel, &canvas2, nullptr);
    second->FDesignMode = true;
    second->AssignContextMenus(&menuConnections, &menuObjects);
    TDiagObject* a = second->CreateObjByDiagType(doAndLogic, {20, 20, 80, 120});
    TDiagObject* b = second->CreateObjByDiagType(doOrLogic, {200, 20, 260, 120});
    new TDiagObjConnection(second->ConList.get(), a, 1, b, -1, {15, 12}, 0, 0, 0);
    a->hide();
    b->hide();
    // Freeing the first container must not take the second's handlers off the panel.
    dc.reset();
    ASSERT_TRUE(HasPaintHandler(&panel));
    ASSERT_TRUE(bool(GetMouseHandlers(&panel).OnMouseUp));
    // The wire of the second container still reaches the panel's pixels: its paint handler is
    // the one that runs.
    const QImage img = Render();
    int black = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            black += (img.pixel(x, y) & 0xFFFFFF) == 0;
    EXPECT_GT(black, 0);
    // Freeing the second, the last one hooked, takes its handlers off.
    second.reset();
    EXPECT_FALSE(HasPaintHandler(&panel));
    EXPECT_FALSE(bool(GetMouseHandlers(&panel).OnMouseUp));
}

TEST_F(EditorFixture, FreeingTheContainerThatHookedLastLeavesNothingOfEitherBehind) {
    TCanvas canvas2;
    canvas2.SetHandle(&panel);
    auto second = std::make_unique<TDiagContainer>(&panel, &canvas2, nullptr);
    second.reset();
    // The first container's hook was replaced by the second's, which is gone with it.
    EXPECT_FALSE(HasPaintHandler(&panel));
    dc.reset();
    EXPECT_FALSE(HasPaintHandler(&panel));
    EXPECT_FALSE(Render().isNull());
}
