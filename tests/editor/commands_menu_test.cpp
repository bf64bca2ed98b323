// The paths a user takes most, end to end: real mouse clicks on the surface and on the blocks,
// the context menus the container pops up, their items bound to the editing commands, the
// scripted dialogs, and the picture the parent shows at the end.

#include "commands_test_util.h"

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

    void Click(QWidget* w, Qt::MouseButton button, QPoint local) {
        QTest::mouseClick(w, button, Qt::NoModifier, local);
    }
    // A right click that must open the named menu, then the item chosen from it.
    void Choose(QWidget* w, QPoint local, const char* menu, const char* item) {
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

TEST_F(MenuPaths, CreateBlocksConnectThemEditAndDeleteASegmentAndDeleteABlock) {
    const int errors = EventBoundaryErrorCount();
    // Two blocks from the objects menu of the empty surface, each where it was clicked.
    TDiagObject* a = Create({40, 60}, "mnuAndLogic");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->BoundsRect(), (TRect{40, 60, 100, 160}));
    TDiagObject* b = Create({260, 120}, "mnuOrLogic");
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->BoundsRect(), (TRect{260, 120, 320, 220}));
    EXPECT_EQ(b->GetDiagObjType(), doOrLogic);

    // Select a, then its output; the connections menu of the marker starts a wire 40 long.
    Click(a, Qt::LeftButton, QPoint(30, 80));
    ASSERT_TRUE(a->GetSelected());
    Click(a, Qt::LeftButton, OnMarker(a, 1));
    ASSERT_EQ(a->GetSelMarkerIndex(), 1);
    dialogs.Expect(TDialogAnswer::Segment(40, 0));
    Choose(a, OnMarker(a, 1), "pmConnections", "mnuAddSegment");
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=1 Pos=-1,-1"));
    ASSERT_EQ(dc->ConList->Count(), 1);
    TDiagConnection* w = dc->ConList->Items(0);
    // The output's outer end is at (98, 108): the wire starts one pixel inside.
    ASSERT_EQ(MarkerAt(a, 1), (TPoint{98, 108}));
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));

    // Two segments, each from a right click on the wire: down 83, then right 100.
    dialogs.Expect(TDialogAnswer::Segment(83, 90));
    Choose(&panel, {120, 110}, "pmConnections", "mnuAddSegment");
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=0 Pos=-1,-1"));
    dialogs.Expect(TDialogAnswer::Segment(100, -90));
    Choose(&panel, {139, 150}, "pmConnections", "mnuAddSegment");
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {137, 191}, {237, 191}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 3));

    // End it on b's second input: select b and the marker, then the wire's menu.
    Click(b, Qt::LeftButton, QPoint(30, 50));
    ASSERT_TRUE(b->GetSelected());
    EXPECT_FALSE(a->GetSelected());
    Click(b, Qt::LeftButton, OnMarker(b, -2));
    ASSERT_EQ(b->GetSelMarkerIndex(), -2);
    ASSERT_EQ(MarkerAt(b, -2), (TPoint{260, 191}));
    Choose(&panel, {200, 193}, "pmConnections", "mnuEndConnection");
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {137, 191}, {237, 191}, {260, 191}}));
    EXPECT_EQ(w->GetDstObject(), b);
    EXPECT_EQ(w->FDstConIdx, -2);

    // The vertical segment's angle: shown as 90 degrees, set to 45 (one step) at the same size.
    dialogs.Expect(TDialogAnswer::Segment(83, 45));
    Choose(&panel, {135, 150}, "pmConnections", "mnuEditSegment");
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=83 Angle=90 OnlySize=0 Pos=-1,-1"));
    // 83 pixels at 45 degrees: 58.7 across and down, rounded to 59.
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {196, 167}, {237, 191}, {260, 191}}));

    // Delete the segment after it; the one before is selected.
    Choose(&panel, {216, 179}, "pmConnections", "mnuDelSegment");
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {196, 167}, {260, 191}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 2));
    EXPECT_EQ(w->GetSelectedIndex(), 1);

    // Delete b from its objects menu: the wire stays, without its end.
    Choose(b, QPoint(30, 50), "pmObjects", "mnuDelete");
    EXPECT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->SelObj, nullptr);
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(w->GetDstObject(), nullptr);
    EXPECT_EQ(w->FDstConIdx, 0);
    EXPECT_EQ(w->FPoints, (TPoints{{97, 108}, {137, 108}, {196, 167}, {260, 191}}));
    EXPECT_EQ(dc->SelInfo, LR(1, 2));
    EXPECT_EQ(EventBoundaryErrorCount(), errors);

    // The picture: a's body, the black stub, the selected diagonal in fuchsia, and no b.
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 70, 140), TColor(0xC0C0C0)); // a's body below its title
    EXPECT_EQ(PixelColor(img, 117, 108), TColor(0x000000));
    EXPECT_EQ(PixelColor(img, 166, 137), TColor(0xFF00FF));
    EXPECT_EQ(PixelColor(img, 290, 170), TColor(0xFFFFFF)); // where b was
    EXPECT_EQ(PixelColor(img, 228, 179), TColor(0x000000)); // the last segment, black
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
