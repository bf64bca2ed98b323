// The paths a user takes most, end to end: real mouse clicks on the surface and on the blocks,
// the context menus the container pops up, their items bound to the editing commands, the
// scripted dialogs, and the picture the parent shows at the end.

#include "commands_test_util.h"
#include "common/mouse_util.h"

#include "common/test_util.h"
#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/event_boundary.h"

using namespace vde;
using namespace vde::test;

namespace {

// A menu item bound to a command of the container.
TMenuItem* Item(TMenuItem* parent, const char* name, const char* caption,
                std::function<void()> command = {}, intptr_t tag = 0) {
    auto* i = new TMenuItem(nullptr);
    i->SetName(QString::fromLatin1(name));
    i->SetCaption(QString::fromLatin1(caption));
    i->Tag = tag;
    if (command)
        i->OnClick = [command](QObject*) { command(); };
    parent->Add(i);
    return i;
}

// The two context menus with the items of the command module, each calling its command.
void BuildMenus(TDiagContainer& dc, TPopupMenu& con, TPopupMenu& obj) {
    TMenuItem* c = con.Items();
    Item(c, "mnuAddSegment", "Add Segment ...", [&dc] { dc.AddSegmentToConnection(); });
    Item(c, "mnuEditSegment", "Edit Segment ...", [&dc] { dc.EditSegmentOfConnection(); });
    Item(c, "mnuGetSegmentIndex", "Get Seg. Index", [&dc] { dc.ShowSegmentIndex(); });
    Item(c, "mnuGetSegmentRect", "Get Seg. Rect", [&dc] { dc.ShowSegmentRect(); });
    Item(c, "mnuDelSegment", "Del. Segment", [&dc] { dc.DeleteCurSegment(); });
    Item(c, "mnuAlignSegment", "Align Segment", [&dc] { dc.AlignCurSegment(); });
    TMenuItem* ends = Item(c, "mnuEndConnections", "End Connections");
    Item(ends, "mnuEndConnection", "End Connection", [&dc] { dc.EndDiagConnection(); });
    Item(ends, "mnuEndWithCross", "End with Cross", [&dc] { dc.EndConnectionWithCross(); });
    Item(ends, "mnuEndWithSegment", "End with Segment", [&dc] { dc.EndConnectionWithSegment(); });
    TMenuItem* connection = Item(c, "mnuConnection", "Connection");
    TMenuItem* types = Item(connection, "mnuChangeConType", "Change Type ...");
    for (int t = 0; t < GoodMarkerTypeCount(); ++t) {
        auto* i = new TMenuItem(nullptr);
        i->SetName(QStringLiteral("mnu") + GoodMarkerTypeName(t));
        i->SetCaption(GoodMarkerTypeName(t));
        i->Tag = t;
        i->OnClick = [&dc](QObject* sender) { dc.ChangeMarkerType(sender); };
        types->Add(i);
    }
    Item(connection, "mnuChangeConSize", "Change Size ...", [&dc] { dc.ChangeMarkerSize(); });
    Item(connection, "mnuChangeConPos", "Change Pos ...", [&dc] { dc.ChangeMarkerPos(); });

    TMenuItem* o = obj.Items();
    TMenuItem* create = Item(o, "mnuCreate", "Create");
    for (int t = 1; t <= 4; ++t) {
        auto* i = new TMenuItem(nullptr);
        i->SetName(QStringLiteral("mnu") + GoodDiagObjTypeName(t));
        i->SetCaption(GoodDiagObjTypeName(t));
        i->Tag = t;
        i->OnClick = [&dc](QObject* sender) { dc.CreateDiagObEvent(sender); };
        create->Add(i);
    }
    Item(o, "mnuDelete", "Delete", [&dc] { dc.DelSelectedObject(); });
    Item(o, "mnuShiftBy", "Shift By Delta ...", [&dc] { dc.ShiftByDelta(); });
    Item(o, "mnuRefresh", "Refresh", [&dc] { dc.Refresh(); });
    Item(Item(o, "mnuInputs", "Inputs"), "mnuSetInputCount", "Set In Count ...",
         [&dc] { dc.SetInputCount(); });
    Item(Item(o, "mnuOutputs", "Outputs"), "mnuSetOutputCount", "Set Out Count ...",
         [&dc] { dc.SetOutputCount(); });
    Item(Item(o, "mnuMargins", "Margins"), "mnuHorizMargin", "Horiz. Margin ...",
         [&dc] { dc.SetHorizMargin(); });
    TMenuItem* text = Item(o, "mnuTextParams", "Text Params");
    Item(text, "mnuSetTitles", "Set Title ...", [&dc] { dc.SetTextValues(); });
    Item(text, "mnuSetTextSize", "Set Text Sizes ...", [&dc] { dc.SetTextHeights(); });
    Item(text, "mnuSetTextPos", "Set Text Pos ...", [&dc] { dc.SetTextPosValues(); });
    Item(text, "mnuAlignTitles", "Align Titles", [&dc] { dc.AlignTitles(); });
}

class MenuPaths : public CommandsFixture {
protected:
    void SetUp() override {
        CommandsFixture::SetUp();
        // The parent repaints as it would for a user: wires drawn outside its paint ask for one.
        canvas.OnRequestPaint = nullptr;
        BuildMenus(*dc, menuConnections, menuObjects);
        dc->AssignContextMenus(&menuConnections, &menuObjects);
        dc->SetDesignMode(true);
    }

    void Click(QObject* w, Qt::MouseButton button, QPoint local) {
        vde::test::MouseClick(w, button, Qt::NoModifier, local);
    }
    // A right click that must open the named menu, then the item chosen from it.
    void Choose(QObject* w, QPoint local, const char* menu, const char* item) {
        const size_t shown = popups.Records.size();
        Click(w, Qt::RightButton, local);
        ASSERT_EQ(popups.Records.size(), shown + 1)
            << "no menu at " << local.x() << "," << local.y();
        ASSERT_EQ(popups.Last()->MenuName, QString::fromLatin1(menu));
        ASSERT_TRUE(popups.Click(QString::fromLatin1(item))) << item;
        Flush();
    }
    // Creates a block from the objects menu of the empty surface.
    TDiagObject* Create(QPoint at, const char* item) {
        const int n = dc->ObjList->Count();
        Choose(&panel, at, "pmObjects", item);
        return dc->ObjList->Count() == n + 1 ? dc->ObjList->Items(n) : nullptr;
    }
    // Where a click (block coordinates) hits marker idx: its point on the body's edge.
    static QPoint OnMarker(const TDiagObject* b, int idx) {
        const TDotMarker& m =
            idx < 0 ? b->FInputs.at(size_t(-idx - 1)) : b->FOutputs.at(size_t(idx - 1));
        return QPoint(m.P.X + (idx < 0 ? 8 : -8), m.P.Y);
    }
};

} // namespace

// Each path below takes the steps of the ones before it, then its own, and checks the picture.
namespace {

class UserPaths : public MenuPaths {
protected:
    TDiagObject* a = nullptr;
    TDiagObject* b = nullptr;
    TDiagConnection* w = nullptr;
    int errors = 0;

    void SetUp() override {
        MenuPaths::SetUp();
        errors = EventBoundaryErrorCount();
    }
    void TearDown() override {
        EXPECT_EQ(EventBoundaryErrorCount(), errors);
        MenuPaths::TearDown();
    }

    // An AND gate at (40, 60) and an OR gate at (260, 120), each from the objects menu of the
    // empty surface where it was right-clicked.
    void CreateBlocks() {
        a = Create({40, 60}, "mnuAndLogic");
        ASSERT_NE(a, nullptr);
        ASSERT_EQ(a->BoundsRect(), (TRect{40, 60, 100, 160}));
        b = Create({260, 120}, "mnuOrLogic");
        ASSERT_NE(b, nullptr);
        ASSERT_EQ(b->BoundsRect(), (TRect{260, 120, 320, 220}));
    }
    // a selected, then its output; "Add Segment ..." from the marker's menu, 40 pixels.
    void StartWire() {
        CreateBlocks();
        Click(a, Qt::LeftButton, QPoint(30, 80));
        ASSERT_TRUE(a->GetSelected());
        Click(a, Qt::LeftButton, OnMarker(a, 1));
        ASSERT_EQ(a->GetSelMarkerIndex(), 1);
        dialogs.Expect(TDialogAnswer::Segment(40, 0));
        Choose(a, OnMarker(a, 1), "pmConnections", "mnuAddSegment");
        ASSERT_EQ(dc->ConList->Count(), 1);
        w = dc->ConList->Items(0);
    }
    // Two segments, each from a right click beside the wire: down 83, then right 100.
    void AddTwoSegments() {
        StartWire();
        dialogs.Expect(TDialogAnswer::Segment(83, 90));
        Choose(&panel, {120, 110}, "pmConnections", "mnuAddSegment");
        dialogs.Expect(TDialogAnswer::Segment(100, -90));
        Choose(&panel, {139, 150}, "pmConnections", "mnuAddSegment");
    }
    // b selected, then its second input; "End Connection" from the menu of the wire's end.
    void EndOnB() {
        AddTwoSegments();
        Click(b, Qt::LeftButton, QPoint(30, 50));
        ASSERT_TRUE(b->GetSelected());
        Click(b, Qt::LeftButton, OnMarker(b, -2));
        ASSERT_EQ(b->GetSelMarkerIndex(), -2);
        Choose(&panel, {200, 193}, "pmConnections", "mnuEndConnection");
    }
    // The vertical segment turned to 45 degrees at its size.
    void EditAngle() {
        EndOnB();
        dialogs.Expect(TDialogAnswer::Segment(83, 45));
        Choose(&panel, {135, 150}, "pmConnections", "mnuEditSegment");
    }
    // The segment after the turned one deleted.
    void DeleteSegment() {
        EditAngle();
        Choose(&panel, {216, 179}, "pmConnections", "mnuDelSegment");
    }
};

} // namespace

TEST_F(UserPaths, CreateABlockFromTheSurfaceMenuWhereItWasClicked) {
    CreateBlocks();
    EXPECT_EQ(a->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(b->GetDiagObjType(), doOrLogic);
    EXPECT_EQ(LastAsked(), QString());
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 70, 140), TColor(0xC0C0C0));  // a's body below its title
    EXPECT_EQ(PixelColor(img, 290, 200), TColor(0xC0C0C0)); // b's body
    EXPECT_EQ(PixelColor(img, 200, 100), TColor(0xFFFFFF)); // the surface between them
}

TEST_F(UserPaths, AddAConnectionFromAMarkerStartsAStubAtIt) {
    StartWire();
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=1 Pos=-1,-1"));
    // The output's outer end is at (98, 108): the wire starts one pixel inside.
    ASSERT_EQ(MarkerAt(a, 1), (TPoint{98, 108}));
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
    const QImage img = Render();
    // The new segment is the selected one.
    EXPECT_EQ(PixelColor(img, 120, 108), TColor(0xFF00FF));
    EXPECT_EQ(PixelColor(img, 145, 108), TColor(0xFFFFFF));
}

TEST_F(UserPaths, AddTwoSegmentsDownThenRight) {
    AddTwoSegments();
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=0 Pos=-1,-1"));
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {137, 191}, {237, 191}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 3));
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 120, 108), TColor(0x000000));
    EXPECT_EQ(PixelColor(img, 137, 150), TColor(0x000000));
    EXPECT_EQ(PixelColor(img, 200, 191), TColor(0xFF00FF));
}

TEST_F(UserPaths, EndTheConnectionOnAnotherBlocksMarker) {
    EndOnB();
    EXPECT_FALSE(a->GetSelected());
    ASSERT_EQ(MarkerAt(b, -2), (TPoint{260, 191}));
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {137, 191}, {237, 191}, {260, 191}}));
    EXPECT_EQ(w->GetDstObject(), b);
    EXPECT_EQ(w->FDstConIdx, -2);
    const QImage img = Render();
    // The piece that joins the wire to the marker, up to b's edge.
    EXPECT_EQ(PixelColor(img, 250, 191), TColor(0x000000));
}

TEST_F(UserPaths, EditASegmentsAngle) {
    EditAngle();
    // Shown as 90 degrees (down); 45 typed is one step, at the same size.
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=83 Angle=90 OnlySize=0 Pos=-1,-1"));
    // 83 pixels at 45 degrees: 58.7 across and down, rounded to 59.
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {196, 167}, {237, 191}, {260, 191}}));
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 166, 137), TColor(0xFF00FF)); // on the turned segment
    EXPECT_EQ(PixelColor(img, 137, 180), TColor(0xFFFFFF)); // where it ran before
}

TEST_F(UserPaths, DeleteASegment) {
    DeleteSegment();
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {196, 167}, {260, 191}}));
    // The segment before the deleted one is selected.
    EXPECT_EQ(dc->SelInfo, LR(1, 2));
    EXPECT_EQ(w->GetSelectedIndex(), 1);
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 166, 137), TColor(0xFF00FF));
    EXPECT_EQ(PixelColor(img, 228, 179), TColor(0x000000)); // the merged last segment
    EXPECT_EQ(PixelColor(img, 236, 191), TColor(0xFFFFFF)); // the corner that went
}

TEST_F(UserPaths, DeleteABlockAndItsWireKeepsThePathWithoutAnEnd) {
    DeleteSegment();
    // b is still the selected block; a click away from its markers opens the objects menu.
    Choose(b, QPoint(30, 50), "pmObjects", "mnuDelete");
    EXPECT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->SelObj, nullptr);
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(w->GetDstObject(), nullptr);
    EXPECT_EQ(w->FDstConIdx, 0);
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {196, 167}, {260, 191}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 2));
    // The picture: a's body, the black stub, the selected diagonal in fuchsia, and no b.
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 70, 140), TColor(0xC0C0C0));
    EXPECT_EQ(PixelColor(img, 117, 108), TColor(0x000000));
    EXPECT_EQ(PixelColor(img, 166, 137), TColor(0xFF00FF));
    EXPECT_EQ(PixelColor(img, 228, 179), TColor(0x000000));
    EXPECT_EQ(PixelColor(img, 290, 170), TColor(0xFFFFFF)); // where b was
}

TEST_F(MenuPaths, TypedGarbageForAShiftShowsTheConversionErrorAndLeavesTheDiagram) {
    TDiagObject* a = Create({40, 60}, "mnuAndLogic");
    ASSERT_NE(a, nullptr);
    Click(a, Qt::RightButton, QPoint(30, 80));
    ASSERT_EQ(popups.Last()->MenuName, QStringLiteral("pmObjects"));
    ASSERT_EQ(dc->SelObj, a);
    const auto before = State();
    const int errors = EventBoundaryErrorCount();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("abc"))).Expect(TDialogAnswer::Error());
    ASSERT_TRUE(popups.Click(QStringLiteral("mnuShiftBy")));
    ASSERT_EQ(Log().size(), 2);
    EXPECT_EQ(Log()[0], QStringLiteral("InputQuery \"Shift x,y Values\" \"Values:\" \"0,0\""));
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkErrorMessageDlg);
    EXPECT_EQ(dialogs.Asked()[1].Text, PointErrorText(QStringLiteral("abc")));
    EXPECT_EQ(EventBoundaryErrorCount(), errors + 1);
    EXPECT_EQ(State(), before);
    EXPECT_EQ(a->BoundsRect(), (TRect{40, 60, 100, 160}));
}

TEST_F(MenuPaths, AMarkerTypeChosenFromTheConnectionsMenuChangesThatMarker) {
    TDiagObject* a = Create({40, 60}, "mnuAndLogic");
    ASSERT_NE(a, nullptr);
    Click(a, Qt::LeftButton, QPoint(30, 80));
    Click(a, Qt::LeftButton, OnMarker(a, -2));
    ASSERT_EQ(a->GetSelMarkerIndex(), -2);
    Choose(a, OnMarker(a, -2), "pmConnections", "mnuInversion");
    EXPECT_EQ(a->FInputs.at(1).IOType, itInversion);
    EXPECT_EQ(a->FInputs.at(0).IOType, itDirect);
    // The inversion circle is drawn at the body's edge: white inside.
    const QImage img = Render();
    // The circle's centre is on the body's left edge, 9 pixels into the block.
    const TPoint centre{a->x() + 9, MarkerAt(a, -2).Y};
    EXPECT_EQ(PixelColor(img, centre.X - 2, centre.Y), TColor(0xFFFFFF));
}
