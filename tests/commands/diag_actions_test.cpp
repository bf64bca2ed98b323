// The command module: its menus, their commands, and storage by name and through the dialogs.

#include "actions_test_util.h"
#include "common/mouse_util.h"

#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/event_boundary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QPaintEvent>
#include <unistd.h>

using namespace vde;
using namespace vde::test;

namespace {

// One line per item, depth first: depth|name|caption|tag|click bound or not.
void Walk(const TMenuItem* item, int depth, QStringList& out) {
    for (int i = 0; i < item->Count(); ++i) {
        const TMenuItem* c = item->Items(i);
        out << QStringLiteral("%1|%2|%3|%4|%5")
                   .arg(depth)
                   .arg(c->GetName(), c->GetCaption())
                   .arg(qlonglong(c->Tag))
                   .arg(c->OnClick ? QStringLiteral("bound") : QStringLiteral("-"));
        Walk(c, depth + 1, out);
    }
}

QStringList Tree(const TPopupMenu* pm) {
    QStringList out;
    Walk(pm->Items(), 0, out);
    return out;
}

// The connections menu as the module defines it; `sub` is the state of the marker type items.
QStringList ConnectionsTable(const QString& sub) {
    return {
        QStringLiteral("0|mnuAddSegment|Add Segment ...|0|bound"),
        QStringLiteral("0|mnuEditSegment|Edit Segment ...|0|bound"),
        QStringLiteral("0|mnuGetSegmentIndex|Get Seg. Index|0|bound"),
        QStringLiteral("0|mnuGetSegmentRect|Get Seg. Rect|0|bound"),
        QStringLiteral("0|mnuDelSegment|Del. Segment|0|bound"),
        QStringLiteral("0|mnuAlignSegment|Align Segment|0|bound"),
        QStringLiteral("0|mnuEndConnections|End Connections|0|-"),
        QStringLiteral("1|mnuEndConnection|End Connection|0|bound"),
        QStringLiteral("1|mnuEndWithCross|End with Cross|0|bound"),
        QStringLiteral("1|mnuEndWithSegment|End with Segment|0|bound"),
        QStringLiteral("0|mnuConnection|Connection|0|-"),
        QStringLiteral("1|mnuChangeConType|Change Type ...|0|-"),
        QStringLiteral("2|mnuDirect|Direct|0|") + sub,
        QStringLiteral("2|mnuInversion|Inversion|1|") + sub,
        QStringLiteral("2|mnuArrow|Arrow|2|") + sub,
        QStringLiteral("1|mnuChangeConSize|Change Size ...|0|bound"),
        QStringLiteral("1|mnuChangeConPos|Change Pos ...|0|bound"),
    };
}

QStringList ObjectsTable(const QString& sub) {
    return {
        QStringLiteral("0|mnuCreate|Create|0|-"),
        QStringLiteral("1|mnuText|Text|1|") + sub,
        QStringLiteral("1|mnuAndLogic|AndLogic|2|") + sub,
        QStringLiteral("1|mnuOrLogic|OrLogic|3|") + sub,
        QStringLiteral("1|mnuRSTrigger|RSTrigger|4|") + sub,
        QStringLiteral("0|mnuDelete|Delete|0|bound"),
        QStringLiteral("0|mnuShiftBy|Shift By Delta ...|0|bound"),
        QStringLiteral("0|mnuRefresh|Refresh|0|bound"),
        QStringLiteral("0|mnuInputs|Inputs|0|-"),
        QStringLiteral("1|mnuSetInputCount|Set In Count ...|0|bound"),
        QStringLiteral("0|mnuOutputs|Outputs|0|-"),
        QStringLiteral("1|mnuSetOutputCount|Set Out Count ...|0|bound"),
        QStringLiteral("0|mnuMargins|Margins|0|-"),
        QStringLiteral("1|mnuHorizMargin|Horiz. Margin ...|0|bound"),
        QStringLiteral("0|mnuTextParams|Text Params|0|-"),
        QStringLiteral("1|mnuSetTitles|Set Title ...|0|bound"),
        QStringLiteral("1|mnuSetTextSize|Set Text Sizes ...|0|bound"),
        QStringLiteral("1|mnuSetTextPos|Set Text Pos ...|0|bound"),
        QStringLiteral("1|mnuAlignTitles|Align Titles|0|bound"),
        QStringLiteral("0|mnuFile|File|0|-"),
        QStringLiteral("1|mnuSaveToFile|Save To ...|0|bound"),
        QStringLiteral("1|mnuLoadFromFile|Load From ...|0|bound"),
    };
}

std::string Lines(const QStringList& l) {
    return l.join(QLatin1Char('\n')).toStdString();
}

// Counts the panel's paint events.
class PaintCount : public QObject {
public:
    explicit PaintCount(QWidget* w) { w->installEventFilter(this); }
    int Count = 0;

protected:
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::Paint)
            ++Count;
        return false;
    }
};

void Flush() {
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

} // namespace

// ---- construction and the menus ----------------------------------------------------------------

TEST_F(ActionsFixture, ANewModuleHasItsMenusAndDialogsButNoContainer) {
    EXPECT_EQ(dm->DiagContr, nullptr);
    ASSERT_NE(dm->FMoveResize, nullptr);
    EXPECT_EQ(dm->pmConnections->GetName(), QStringLiteral("pmConnections"));
    EXPECT_EQ(dm->pmObjects->GetName(), QStringLiteral("pmObjects"));
    EXPECT_EQ(dm->mnuCreate->Count(), 0);
    EXPECT_EQ(dm->mnuChangeConType->Count(), 0);
    for (const TFileDialog* d : {static_cast<const TFileDialog*>(&dm->dlgOpen),
                                 static_cast<const TFileDialog*>(&dm->dlgSave)}) {
        EXPECT_EQ(d->DefaultExt, QStringLiteral("dgm"));
        EXPECT_EQ(d->Filter, QStringLiteral("Diagram files (*.dgm)|*.dgm"));
        EXPECT_TRUE(d->FileName.isEmpty());
    }
    EXPECT_FALSE(dm->FNeedSave);
    EXPECT_FALSE(dm->FUseDefaultSaveLoadProc);
    EXPECT_EQ(dm->GetCurrentNodeControl(), nullptr);
    EXPECT_FALSE(dm->GetDesignMode());
    // The menus and their items are components of the module, found by name.
    EXPECT_EQ(FindComponent(dm, QStringLiteral("mnuShiftBy")), dm->mnuShiftBy);
    EXPECT_EQ(FindComponent(dm, QStringLiteral("pmObjects")), dm->pmObjects);
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("main")), dm.data());
}

TEST_F(ActionsFixture, BothMenuTreesMatchTheTablesAfterTheFirstLinkEvents) {
    Surface();
    EXPECT_EQ(Tree(dm->pmConnections), ConnectionsTable(QStringLiteral("bound")))
        << Lines(Tree(dm->pmConnections));
    EXPECT_EQ(Tree(dm->pmObjects), ObjectsTable(QStringLiteral("bound")))
        << Lines(Tree(dm->pmObjects));
    // The Qt menus show the same entries in the same order.
    QStringList shown;
    for (QAction* a : dm->pmObjects->Menu()->actions())
        shown << a->text();
    EXPECT_EQ(shown, (QStringList{"Create", "Delete", "Shift By Delta ...", "Refresh", "Inputs",
                                  "Outputs", "Margins", "Text Params", "File"}));
    QStringList types;
    for (QAction* a : dm->mnuChangeConType->menu()->actions())
        types << a->text();
    EXPECT_EQ(types, (QStringList{"Direct", "Inversion", "Arrow"}));
    // The container was handed both menus.
    EXPECT_EQ(dc().pmConnections, dm->pmConnections);
    EXPECT_EQ(dc().pmObjects, dm->pmObjects);
}

TEST_F(ActionsFixture, BothMenuTreesMatchTheTablesAfterASecondLinkEvents) {
    Surface();
    dm->LinkEvents();
    EXPECT_EQ(Tree(dm->pmConnections), ConnectionsTable(QStringLiteral("-")))
        << Lines(Tree(dm->pmConnections));
    EXPECT_EQ(Tree(dm->pmObjects), ObjectsTable(QStringLiteral("-"))) << Lines(Tree(dm->pmObjects));
}

TEST_F(ActionsFixture, TheCreateSubmenuHoldsFourItemsTaggedOneToFourNamedAfterTheBlockKinds) {
    Surface();
    ASSERT_EQ(dm->mnuCreate->Count(), 4);
    const QStringList names{"mnuText", "mnuAndLogic", "mnuOrLogic", "mnuRSTrigger"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(dm->mnuCreate->Items(i)->GetName(), names[i]);
        EXPECT_EQ(dm->mnuCreate->Items(i)->Tag, i + 1);
    }
}

TEST_F(ActionsFixture, TheTypeSubmenuHoldsThreeItemsTaggedZeroToTwo) {
    Surface();
    ASSERT_EQ(dm->mnuChangeConType->Count(), 3);
    const QStringList names{"mnuDirect", "mnuInversion", "mnuArrow"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(dm->mnuChangeConType->Items(i)->GetName(), names[i]);
        EXPECT_EQ(dm->mnuChangeConType->Items(i)->Tag, i);
    }
}

TEST_F(ActionsFixture, ASecondLinkEventsLeavesBothSubmenusItemsWithNoClickCommand) {
    Surface();
    dm->LinkEvents();
    for (TMenuItem* sub : {dm->mnuCreate, dm->mnuChangeConType}) {
        ASSERT_GT(sub->Count(), 0);
        for (int i = 0; i < sub->Count(); ++i)
            EXPECT_FALSE(sub->Items(i)->OnClick) << sub->Items(i)->GetName().toStdString();
    }
    // Nothing is added twice.
    EXPECT_EQ(dm->mnuCreate->Count(), 4);
    EXPECT_EQ(dm->mnuChangeConType->Count(), 3);
    // An unbound create item does nothing when chosen.
    dm->SetDesignMode(true);
    dm->mnuCreate->Items(1)->trigger();
    EXPECT_EQ(dc().ObjList->Count(), 0);
}

TEST_F(ActionsFixture, UnlinkEventsTakesTheMenusFromTheContainerAndUnbindsTheSubmenus) {
    Surface();
    dm->UnlinkEvents();
    EXPECT_EQ(dc().pmConnections, nullptr);
    EXPECT_EQ(dc().pmObjects, nullptr);
    EXPECT_FALSE(dm->mnuCreate->Items(0)->OnClick);
    EXPECT_FALSE(dm->mnuChangeConType->Items(0)->OnClick);
    // The fixed items keep their commands.
    EXPECT_TRUE(dm->mnuDelete->OnClick);
}

TEST_F(ActionsFixture, RelinkingTheTypeSubmenuBindsBlockCreationNotTheMarkerType) {
    Surface();
    dm->SetDesignMode(true);
    TDiagText* b = Text(40, 40);
    Select(b, 1);
    dm->FillMarkerMenu(1);
    dc().FClickPoint = {200, 120};
    // "Arrow" carries 2, which as a block kind is an AND gate.
    dm->mnuChangeConType->Find(QStringLiteral("mnuArrow"))->trigger();
    ASSERT_EQ(dc().ObjList->Count(), 2);
    TDiagObject* made = dc().ObjList->Items(1);
    EXPECT_EQ(made->FObjType, doAndLogic);
    EXPECT_EQ(made->pos(), QPoint(200, 120));
    EXPECT_EQ(b->GetMarker(1)->IOType, itDirect);
}

TEST_F(ActionsFixture, RelinkingTheCreateSubmenuWithANonZeroLinkBindsItsItemsAgain) {
    Surface();
    dm->LinkEvents();
    dm->FillCreateMenu(1);
    dc().FClickPoint = {30, 50};
    dm->mnuCreate->Find(QStringLiteral("mnuRSTrigger"))->trigger();
    ASSERT_EQ(dc().ObjList->Count(), 1);
    EXPECT_EQ(dc().ObjList->Items(0)->FObjType, doRSTrigger);
    EXPECT_EQ(dc().ObjList->Items(0)->pos(), QPoint(30, 50));
}

TEST_F(ActionsFixture, AContainerWithoutCanvasGetsNoMenusAndTheSubmenusStayEmpty) {
    dm->CreateContainer(&host.panel, nullptr);
    ASSERT_NE(dm->DiagContr, nullptr);
    EXPECT_EQ(dc().pmObjects, nullptr);
    EXPECT_EQ(dm->mnuCreate->Count(), 0);
    EXPECT_EQ(dm->mnuChangeConType->Count(), 0);
}

TEST_F(ActionsFixture, FreeContainerLeavesTheModuleWithoutSurface) {
    Surface();
    Text(10, 10);
    dm->FreeContainer();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(dm->DiagContr, nullptr);
    EXPECT_EQ(dm->GetCurrentNodeControl(), nullptr);
    EXPECT_FALSE(dm->GetDesignMode());
    // No block is left on the panel.
    for (QObject* child : host.panel.children())
        EXPECT_EQ(dynamic_cast<TDiagObject*>(child), nullptr);
    // Operations that need the surface say so to the caller.
    EXPECT_THROW(dm->SaveDiagram(QString()), EInvalidOperation);
}

TEST_F(ActionsFixture, CreateMenuItemInsertsAtAValidPositionAndAppendsOtherwise) {
    Surface();
    TMenuItem* a =
        TdmDiagActions::CreateMenuItem(dm->mnuFile, QStringLiteral("mnuA"), QStringLiteral("A"), 0);
    TMenuItem* b =
        TdmDiagActions::CreateMenuItem(dm->mnuFile, QStringLiteral("mnuB"), QStringLiteral("B"), 3);
    TMenuItem* c =
        TdmDiagActions::CreateMenuItem(dm->mnuFile, QStringLiteral("mnuC"), QStringLiteral("C"), 9);
    ASSERT_TRUE(a && b && c);
    EXPECT_EQ(dm->mnuFile->IndexOf(a), 0);
    EXPECT_EQ(dm->mnuFile->IndexOf(b), 3);
    EXPECT_EQ(dm->mnuFile->IndexOf(c), 4);
    EXPECT_EQ(ComponentOwner(a), dm.data());
    EXPECT_EQ(c->GetCaption(), QStringLiteral("C"));
}

TEST_F(ActionsFixture, CreateMenuItemMakesNothingUnderAnItemWithoutOwner) {
    TMenuItem orphan(nullptr);
    EXPECT_EQ(
        TdmDiagActions::CreateMenuItem(&orphan, QStringLiteral("mnuX"), QStringLiteral("X"), -1),
        nullptr);
    EXPECT_EQ(orphan.Count(), 0);
}

TEST_F(ActionsFixture, CreateMenuItemRefusesANameTheOwnerAlreadyHas) {
    EXPECT_THROW(TdmDiagActions::CreateMenuItem(dm->mnuFile, QStringLiteral("mnuDelete"),
                                                QStringLiteral("X"), -1),
                 EComponentError);
    EXPECT_EQ(dm->mnuFile->Count(), 2);
}

// ---- the module's name ------------------------------------------------------------------------

TEST_F(ActionsFixture, AModuleNameMustBeAValidIdentifier) {
    for (const char* bad : {"1abc", "a b", "a-b", "Ünter", "a.b"}) {
        EXPECT_THROW(dm->SetName(QString::fromUtf8(bad)), EComponentError) << bad;
        EXPECT_EQ(dm->GetName(), QStringLiteral("Main"));
    }
    dm->SetName(QStringLiteral("_Second_2"));
    EXPECT_EQ(dm->GetName(), QStringLiteral("_Second_2"));
}

TEST_F(ActionsFixture, AModuleNameMustBeUniqueAmongTheOwnersComponentsIgnoringCase) {
    TdmDiagActions* other = new TdmDiagActions(&owner);
    try {
        other->SetName(QStringLiteral("MAIN"));
        ADD_FAILURE() << "a second MAIN was accepted";
    } catch (const EComponentError& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("MAIN"))) << e.what();
    }
    EXPECT_TRUE(other->GetName().isEmpty());
    // Renaming a module to its own name is no clash.
    dm->SetName(QStringLiteral("main"));
    EXPECT_EQ(dm->GetName(), QStringLiteral("main"));
    delete other;
}

TEST_F(ActionsFixture, TheOwnerFreesItsModules) {
    auto* o = new QObject;
    QPointer<TdmDiagActions> m = new TdmDiagActions(o);
    delete o;
    EXPECT_TRUE(m.isNull());
}

// ---- design mode and the handles --------------------------------------------------------------

TEST_F(ActionsFixture, EnteringDesignModeMarksTheDiagramToBeSavedAndLeavingItKeepsTheMark) {
    Surface();
    EXPECT_FALSE(dm->FNeedSave);
    dm->SetDesignMode(false);
    EXPECT_FALSE(dm->FNeedSave);
    dm->SetDesignMode(true);
    EXPECT_TRUE(dm->GetDesignMode());
    EXPECT_TRUE(dc().GetDesignMode());
    EXPECT_TRUE(dm->FNeedSave);
    dm->SetDesignMode(false);
    EXPECT_FALSE(dc().GetDesignMode());
    EXPECT_TRUE(dm->FNeedSave);
}

TEST_F(ActionsFixture, TheCurrentNodeControlIsTheHostWidgetLastPressedInDesignMode) {
    auto* edit = new QWidget(&host.panel);
    edit->setObjectName(QStringLiteral("edHost"));
    edit->setGeometry(250, 200, 80, 30);
    Surface();
    dm->SetDesignMode(true);
    EXPECT_EQ(dm->GetCurrentNodeControl(), nullptr);
    input.Pos = ClientToScreen(&host.panel, {260, 210});
    vde::test::MousePress(edit, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    vde::test::MouseRelease(edit, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(dm->GetCurrentNodeControl(), edit);
}

TEST_F(ActionsFixture, CreateDiagObEventOfTheModuleCreatesTheTaggedKindAtTheClickPoint) {
    Surface();
    TMenuItem item(nullptr);
    item.Tag = doOrLogic;
    dc().FClickPoint = {70, 80};
    dm->CreateDiagObEvent(&item);
    ASSERT_EQ(dc().ObjList->Count(), 1);
    EXPECT_EQ(dc().ObjList->Items(0)->FObjType, doOrLogic);
    EXPECT_EQ(dc().ObjList->Items(0)->pos(), QPoint(70, 80));
    item.Tag = doNone;
    dm->CreateDiagObEvent(&item);
    EXPECT_EQ(dc().ObjList->Count(), 1);
}

TEST_F(ActionsFixture, ParentMouseUpOfTheModuleSelectsTheNearestSegmentAndPopsNothingUp) {
    Surface();
    dm->SetDesignMode(true);
    TDiagText* b = Text(40, 40);
    Select(b, 1);
    ASSERT_TRUE(dc().AddDiagConnection(80, true));
    dc().SelInfo = {};
    TPoint p;
    ASSERT_TRUE(b->GetConPoint(1, p, false));
    dm->ParentMouseUp(&host.panel, mbRight, 0, p.X + 30, p.Y + 2);
    EXPECT_EQ(dc().SelInfo, (LongRec{1, 1}));
    EXPECT_TRUE(popups.Records.empty());
}

// ---- every item reaches its command ---------------------------------------------------------

class MenuCommandTest : public ActionsFixture {
protected:
    TDiagText* a = nullptr;
    TDiagText* b = nullptr;

    // Two text blocks with two inputs and two outputs each; a wire from the first block's
    // output 1, two segments long, its first segment selected; the first block selected with
    // its output 2.
    void SetUp() override {
        ActionsFixture::SetUp();
        Surface();
        dm->SetDesignMode(true);
        a = Text(40, 40);
        b = Text(260, 160);
        Select(a, 1);
        ASSERT_TRUE(dc().AddDiagConnection(60, true));
        dc().ConList->AddSegmentToConnection(0, 50, 2);
        dc().SelInfo = {1, 1};
        a->SetSelMarkerIndex(2);
    }

    void Choose(const char* name) {
        TMenuItem* item = nullptr;
        for (TPopupMenu* pm : {dm->pmConnections, dm->pmObjects})
            if (!item)
                item = pm->Find(QString::fromLatin1(name));
        ASSERT_NE(item, nullptr) << name;
        item->trigger();
    }

    TDiagConnection* Wire() { return dc().ConList->Items(0); }
};

TEST_F(MenuCommandTest, EachPromptingItemAsksWhatItsCommandAsks) {
    struct Row {
        const char* item;
        TDialogKind kind;
        const char* caption;
    };
    const Row rows[] = {
        {"mnuAddSegment", dkEditSegmentParams, ""},
        {"mnuEditSegment", dkEditSegmentParams, ""},
        {"mnuGetSegmentIndex", dkInputBox, "Segment Index"},
        {"mnuGetSegmentRect", dkInputBox, "Segment Rect"},
        {"mnuChangeConSize", dkEditSizeValue, "Output #2 Size"},
        {"mnuChangeConPos", dkEditSizeValue, "Output #2 Pos"},
        {"mnuShiftBy", dkInputQuery, "Shift x,y Values"},
        {"mnuSetInputCount", dkEditSizeValue, "Input Count"},
        {"mnuSetOutputCount", dkEditSizeValue, "Output Count"},
        {"mnuHorizMargin", dkEditSizeValue, "Horiz Margin"},
        {"mnuSetTitles", dkInputQuery, "Text Titles"},
        {"mnuSetTextSize", dkInputQuery, "Text Heights"},
        {"mnuSetTextPos", dkInputQuery, "Text Pos Values"},
        {"mnuSaveToFile", dkSaveDialog, ""},
        {"mnuLoadFromFile", dkOpenDialog, ""},
    };
    const std::vector<uint8_t> before = DiagramBytes(dc());
    for (const Row& r : rows) {
        const size_t asked = dialogs.Asked().size();
        dialogs.Expect(TDialogAnswer::Cancel(r.kind));
        Choose(r.item);
        ASSERT_EQ(dialogs.Asked().size(), asked + 1) << r.item;
        EXPECT_EQ(dialogs.Asked().back().Kind, r.kind) << r.item;
        EXPECT_EQ(dialogs.Asked().back().Caption, QString::fromLatin1(r.caption)) << r.item;
    }
    // Every prompt was cancelled: the diagram is as it was.
    EXPECT_EQ(DiagramBytes(dc()), before);
}

TEST_F(MenuCommandTest, EndWithSegmentWithoutASelectedSegmentSaysSo) {
    dc().SelInfo = {};
    dialogs.Expect(TDialogAnswer::Message());
    Choose("mnuEndWithSegment");
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Kind, dkShowMessage);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("No any segment selected"));
}

TEST_F(MenuCommandTest, DeleteFreesTheSelectedBlock) {
    dc().SelObj = b;
    Choose("mnuDelete");
    EXPECT_EQ(dc().ObjList->Count(), 1);
    EXPECT_EQ(dc().ObjList->Items(0), a);
    EXPECT_EQ(dc().SelObj, nullptr);
}

TEST_F(MenuCommandTest, DelSegmentTakesTheSelectedSegmentOff) {
    const size_t points = Wire()->FPoints.size();
    dc().SelInfo = {2, 1};
    Choose("mnuDelSegment");
    EXPECT_EQ(Wire()->FPoints.size(), points - 1);
}

TEST_F(MenuCommandTest, AlignSegmentBringsTheSegmentEndToTheSelectedMarkersHeight) {
    TPoint m2;
    ASSERT_TRUE(a->GetConPoint(2, m2, false));
    ASSERT_NE(Wire()->FPoints[1].Y, m2.Y);
    Choose("mnuAlignSegment");
    EXPECT_EQ(Wire()->FPoints[1].Y, m2.Y);
}

TEST_F(MenuCommandTest, EndConnectionEndsTheWireAtTheSelectedMarkerOfTheSelectedBlock) {
    dc().SelInfo = {2, 1};
    Select(b, -1);
    Choose("mnuEndConnection");
    EXPECT_EQ(Wire()->GetDstObject(), b);
    TPoint in1;
    ASSERT_TRUE(b->GetConPoint(-1, in1, false));
    EXPECT_EQ(Wire()->FPoints.back(), in1);
}

TEST_F(MenuCommandTest, EndWithCrossEndsTheWireOnAnotherWire) {
    // The first wire ends with a vertical segment from v down to w.
    const TPoints& first = Wire()->FPoints;
    const size_t n = first.size();
    const TPoint v = first[n - 2], w = first[n - 1];
    ASSERT_EQ(v.X, w.X);
    // A second wire from b, laid by hand to run level towards that segment and stop 5 pixels
    // short of it.
    Select(b, 1);
    ASSERT_TRUE(dc().AddDiagConnection(40, true));
    const int second = dc().SelInfo.Hi - 1;
    const int32_t y = (v.Y + w.Y) / 2;
    dc().ConList->Items(second)->FPoints = {TPoint{v.X - 60, y}, TPoint{v.X - 5, y}};
    dc().SelInfo = LongRec{1, uint16_t(second + 1)};
    Choose("mnuEndWithCross");
    const TDiagConnection* c = dc().ConList->Items(second);
    EXPECT_EQ(c->FDstCrossInfo, (LongRec{uint16_t(n - 1), 1}));
    EXPECT_EQ(c->FPoints.back(), (TPoint{v.X, y}));
}

TEST_F(MenuCommandTest, RefreshRepaintsTheParent) {
    Flush();
    PaintCount paints(&host.panel);
    Choose("mnuRefresh");
    Flush();
    EXPECT_GT(paints.Count, 0);
}

TEST_F(MenuCommandTest, AlignTitlesPutsMovedTitlesBackInPlace) {
    dc().SelObj = a;
    const QString aligned = a->GetTextPosValues();
    a->SetTextPosValues(QStringLiteral("1,1"));
    ASSERT_NE(a->GetTextPosValues(), aligned);
    Choose("mnuAlignTitles");
    EXPECT_EQ(a->GetTextPosValues(), aligned);
}

TEST_F(MenuCommandTest, ATypeItemChangesTheSelectedMarkersType) {
    Choose("mnuInversion");
    EXPECT_EQ(a->GetMarker(2)->IOType, itInversion);
    EXPECT_EQ(a->GetMarker(1)->IOType, itDirect);
    Choose("mnuArrow");
    EXPECT_EQ(a->GetMarker(2)->IOType, itArrow);
}

TEST_F(MenuCommandTest, ACreateItemMakesItsKindAtTheClickPoint) {
    dc().FClickPoint = {150, 20};
    Choose("mnuOrLogic");
    ASSERT_EQ(dc().ObjList->Count(), 3);
    EXPECT_EQ(dc().ObjList->Items(2)->FObjType, doOrLogic);
    EXPECT_EQ(dc().ObjList->Items(2)->pos(), QPoint(150, 20));
}

TEST_F(MenuCommandTest, AConversionErrorOfTypedTextIsShownOnceAndChangesNothing) {
    const std::vector<uint8_t> before = DiagramBytes(dc());
    dc().SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5;x")));
    dialogs.Expect(TDialogAnswer::Error());
    Choose("mnuShiftBy");
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkErrorMessageDlg);
    EXPECT_EQ(DiagramBytes(dc()), before);
}

TEST_F(MenuCommandTest, TheMenusPoppedUpByRealClicksReachTheirCommands) {
    // A right click on empty surface far from the wire: the objects menu, and "AndLogic" makes
    // an AND gate where the click was.
    vde::test::MouseClick(&host.panel, Qt::RightButton, Qt::NoModifier, QPoint(330, 40));
    ASSERT_NE(popups.Last(), nullptr);
    EXPECT_EQ(popups.Last()->MenuName, QStringLiteral("pmObjects"));
    ASSERT_TRUE(popups.Click(QStringLiteral("mnuAndLogic")));
    ASSERT_EQ(dc().ObjList->Count(), 3);
    EXPECT_EQ(dc().ObjList->Items(2)->FObjType, doAndLogic);
    EXPECT_EQ(dc().ObjList->Items(2)->pos(), QPoint(330, 40));

    // A right click on a marker of the selected block: the connections menu, and the marker hit
    // becomes the selected one.
    const TDotMarker* out1 = a->GetMarker(1);
    ASSERT_NE(out1, nullptr);
    vde::test::MouseClick(a, Qt::RightButton, Qt::NoModifier, QPoint(out1->P.X, out1->P.Y));
    EXPECT_EQ(popups.Last()->MenuName, QStringLiteral("pmConnections"));
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    ASSERT_TRUE(popups.Click(QStringLiteral("mnuChangeConSize")));
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Caption, QStringLiteral("Output #1 Size"));
}

TEST_F(ActionsFixture, TheEmptyCommandIsBoundToNoItemAndDoesNothing) {
    Surface();
    const std::vector<uint8_t> before = DiagramBytes(dc());
    dm->mnuAddConnectionClick(nullptr);
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- saving and loading by name ---------------------------------------------------------------

TEST_F(ActionsFixture, SaveDiagramByNameWritesTheFileBesideTheHostProgram) {
    Surface();
    Text(30, 30);
    dm->SaveDiagram(QString());
    EXPECT_EQ(FileBytes(Dir() + QStringLiteral("Main.dgm")), DiagramBytes(dc()));
    dm->SaveDiagram(QStringLiteral("Other"));
    EXPECT_EQ(FileBytes(Dir() + QStringLiteral("Other.dgm")), DiagramBytes(dc()));
    EXPECT_EQ(dm->DiagramFileName(QString()), Dir() + QStringLiteral("Main.dgm"));
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(ActionsFixture, NamesThatWouldLeaveTheProgramsFolderAreRefusedAndNothingIsWritten) {
    // The program lives one folder down in the scratch folder, so that what lies above it is
    // this test's alone (the system's temporary folder changes under tests run beside it).
    const QString program = Dir() + QStringLiteral("program/");
    ASSERT_TRUE(QDir().mkpath(program));
    const TScopedHostProgramPath inner(program + QStringLiteral("host.exe"));
    Surface();
    Text(30, 30);
    const QString outside = dir.path(); // above the program's folder
    const QStringList before = QDir(outside).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    const QString bad[] = {QStringLiteral("../escape"),
                           QStringLiteral(".."),
                           QStringLiteral("."),
                           QStringLiteral("sub/name"),
                           QStringLiteral("..\\escape"),
                           QStringLiteral("nul") + QChar(0) + "x",
                           QStringLiteral("/tmp/absolute")};
    for (const QString& name : bad) {
        SCOPED_TRACE(name.toStdString());
        EXPECT_THROW(dm->SaveDiagram(name), EInvalidOperation);
        EXPECT_THROW(dm->LoadDiagram(name), EInvalidOperation);
    }
    EXPECT_EQ(QDir(outside).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    EXPECT_EQ(QDir(program).entryList(QDir::Files), QStringList());
    EXPECT_FALSE(QFile::exists(QStringLiteral("/tmp/absolute.dgm")));
    // Dots inside a name are not a folder: "a..b" stays beside the program.
    dm->SaveDiagram(QStringLiteral("a..b"));
    EXPECT_TRUE(QFile::exists(program + QStringLiteral("a..b.dgm")));
}

TEST_F(ActionsFixture, SaveDiagramByNameOverwritesAnOlderFile) {
    Surface();
    WriteFile(Dir() + QStringLiteral("Main.dgm"), std::vector<uint8_t>(100, 0xAB));
    dm->SaveDiagram(QString());
    EXPECT_EQ(FileBytes(Dir() + QStringLiteral("Main.dgm")), DiagramBytes(dc()));
}

TEST_F(ActionsFixture, LoadDiagramByNameReadsTheFileBesideTheHostProgram) {
    Surface();
    Text(30, 30);
    Text(200, 100);
    dm->SaveDiagram(QString());
    const std::vector<uint8_t> saved = DiagramBytes(dc());
    dc().Clear(false);
    ASSERT_EQ(dc().ObjList->Count(), 0);
    dm->LoadDiagram(QString());
    EXPECT_EQ(dc().ObjList->Count(), 2);
    EXPECT_EQ(DiagramBytes(dc()), saved);
    EXPECT_FALSE(dm->FNeedSave);
}

TEST_F(ActionsFixture, LoadDiagramWithNoFileForTheModulesNameChangesNothingAndShowsNothing) {
    Surface();
    Text(30, 30);
    // A file of another diagram is there; the module's own is not.
    dm->SaveDiagram(QStringLiteral("Other"));
    const std::vector<uint8_t> before = DiagramBytes(dc());
    dm->LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_FALSE(QFileInfo::exists(Dir() + QStringLiteral("Main.dgm")));
}

TEST_F(ActionsFixture, SaveDiagramIntoAFolderThatCannotBeWrittenRaisesToTheCaller) {
    Surface();
    SetHostProgramPath(Dir() + QStringLiteral("missing/host.exe"));
    EXPECT_THROW(dm->SaveDiagram(QString()), EStreamError);
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- the file dialogs --------------------------------------------------------------------------

TEST_F(ActionsFixture, SaveToFileFirstProposesTheHostProgramsNameWithDgmInItsFolder) {
    Surface();
    Text(30, 30);
    const QString target = Dir() + QStringLiteral("picked.dgm");
    dialogs.Expect(TDialogAnswer::Save(target));
    dm->SaveDiagramToFile();
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    const TDialogRequest& r = dialogs.Asked()[0];
    EXPECT_EQ(r.Kind, dkSaveDialog);
    EXPECT_EQ(r.Text, QStringLiteral("host.dgm"));
    EXPECT_EQ(r.InitialDir, Dir());
    EXPECT_EQ(r.DefaultExt, QStringLiteral("dgm"));
    EXPECT_EQ(r.Filter, QStringLiteral("Diagram files (*.dgm)|*.dgm"));
    EXPECT_EQ(FileBytes(target), DiagramBytes(dc()));
}

TEST_F(ActionsFixture, SaveToFileProposesTheFileLastOpenedWhenNothingWasSavedYet) {
    Surface();
    dm->dlgOpen.FileName = QStringLiteral("/data/diagrams/plant.dgm");
    dialogs.Expect(TDialogAnswer::Cancel(dkSaveDialog));
    dm->SaveDiagramToFile();
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("plant.dgm"));
    EXPECT_EQ(dialogs.Asked()[0].InitialDir, QStringLiteral("/data/diagrams/"));
}

TEST_F(ActionsFixture, LoadFromFileProposesTheHostProgramsNameAndNotTheSavedOne) {
    Surface();
    dm->dlgSave.FileName = QStringLiteral("/data/diagrams/plant.dgm");
    dialogs.Expect(TDialogAnswer::Cancel(dkOpenDialog));
    dm->LoadDiagramFromFile();
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    const TDialogRequest& r = dialogs.Asked()[0];
    EXPECT_EQ(r.Kind, dkOpenDialog);
    EXPECT_EQ(r.Text, QStringLiteral("host.dgm"));
    EXPECT_EQ(r.InitialDir, Dir());
    EXPECT_EQ(r.Filter, QStringLiteral("Diagram files (*.dgm)|*.dgm"));
    // Cancelled: nothing loaded, nothing marked.
    EXPECT_FALSE(dm->FNeedSave);
}

TEST_F(ActionsFixture, AConfirmedLoadFromFileLoadsAndMarksTheDiagram) {
    Surface();
    Text(30, 30);
    const QString file = Dir() + QStringLiteral("one.dgm");
    dc().SaveDiagramToFile(file);
    const std::vector<uint8_t> saved = DiagramBytes(dc());
    dc().Clear(false);
    dialogs.Expect(TDialogAnswer::Open(file));
    dm->LoadDiagramFromFile();
    EXPECT_TRUE(dm->FNeedSave);
    EXPECT_EQ(DiagramBytes(dc()), saved);
    // The next save proposes the file just opened.
    dialogs.Expect(TDialogAnswer::Cancel(dkSaveDialog));
    dm->SaveDiagramToFile();
    EXPECT_EQ(dialogs.Asked().back().Text, QStringLiteral("one.dgm"));
    EXPECT_EQ(dialogs.Asked().back().InitialDir, Dir());
}

TEST_F(ActionsFixture, TheDefaultFileIsTheHostProgramsNameWithDgm) {
    Surface();
    Text(30, 30);
    dm->SaveDefaultDiagramFile();
    const QString file = Dir() + QStringLiteral("host.dgm");
    EXPECT_EQ(FileBytes(file), DiagramBytes(dc()));
    const std::vector<uint8_t> saved = DiagramBytes(dc());
    dc().Clear(false);
    dm->LoadDefaultDiagramFile();
    EXPECT_EQ(DiagramBytes(dc()), saved);
}

// ---- errors of the file commands reach the user once -----------------------------------------

TEST_F(ActionsFixture, LoadFromOfAFileWithAnotherSignatureShowsOneErrorAndKeepsTheDiagram) {
    Surface();
    Text(30, 30);
    const std::vector<uint8_t> before = DiagramBytes(dc());
    const QString file = Dir() + QStringLiteral("bad.dgm");
    WriteFile(file, {1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0});
    dialogs.Expect(TDialogAnswer::Open(file));
    dialogs.Expect(TDialogAnswer::Error());
    dm->mnuLoadFromFile->trigger();
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkErrorMessageDlg);
    EXPECT_EQ(dialogs.Asked()[1].Text, QStringLiteral("Invalid file format"));
    EXPECT_EQ(DiagramBytes(dc()), before);
}

TEST_F(ActionsFixture, LoadFromOfATruncatedDiagramShowsOneErrorWithTheFileAndKeepsTheDiagram) {
    Surface();
    Text(30, 30);
    Text(150, 60);
    const std::vector<uint8_t> before = DiagramBytes(dc());
    // The same diagram cut off in the middle of its second block.
    std::vector<uint8_t> cut = before;
    cut.resize(cut.size() / 2);
    const QString file = Dir() + QStringLiteral("cut.dgm");
    WriteFile(file, cut);
    dc().Clear(false);
    Text(300, 200);
    const std::vector<uint8_t> open = DiagramBytes(dc());
    const int errors = EventBoundaryErrorCount();
    dialogs.Expect(TDialogAnswer::Open(file));
    dialogs.Expect(TDialogAnswer::Error());
    dm->mnuLoadFromFile->trigger();
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    const TDialogRequest& shown = dialogs.Asked()[1];
    EXPECT_EQ(shown.Kind, dkErrorMessageDlg);
    EXPECT_TRUE(shown.Text.contains(file)) << shown.Text.toStdString();
    EXPECT_TRUE(shown.Text.startsWith(QStringLiteral("Cannot load the diagram from")))
        << shown.Text.toStdString();
    EXPECT_EQ(EventBoundaryErrorCount(), errors + 1);
    EXPECT_EQ(DiagramBytes(dc()), open);
}

TEST_F(ActionsFixture, LoadFromOfAFileThatIsGoneShowsOneErrorWithTheFile) {
    Surface();
    const QString file = Dir() + QStringLiteral("gone.dgm");
    dialogs.Expect(TDialogAnswer::Open(file));
    dialogs.Expect(TDialogAnswer::Error());
    dm->mnuLoadFromFile->trigger();
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkErrorMessageDlg);
    EXPECT_TRUE(dialogs.Asked()[1].Text.contains(file)) << dialogs.Asked()[1].Text.toStdString();
}

TEST_F(ActionsFixture, SaveToIntoAFolderThatCannotBeWrittenShowsOneErrorWithTheFile) {
    Surface();
    Text(30, 30);
    // A folder that cannot take a file whoever runs the test: its path runs through a file.
    WriteFile(Dir() + QStringLiteral("plain"), {1});
    const QString target = Dir() + QStringLiteral("plain/diagram.dgm");
    dialogs.Expect(TDialogAnswer::Save(target));
    dialogs.Expect(TDialogAnswer::Error());
    dm->mnuSaveToFile->trigger();
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkErrorMessageDlg);
    EXPECT_TRUE(dialogs.Asked()[1].Text.contains(target)) << dialogs.Asked()[1].Text.toStdString();
    EXPECT_FALSE(QFileInfo::exists(target));
}

TEST_F(ActionsFixture, SaveToIntoAReadOnlyFolderShowsOneError) {
    Surface();
    // The superuser writes into a folder without write permission; nobody creates files in
    // /proc, so that is the read-only folder when the tests run as root.
    const bool root = geteuid() == 0;
    if (!root) {
        QDir(dir.path()).mkdir(QStringLiteral("ro"));
        QFile::setPermissions(Dir() + QStringLiteral("ro"), QFile::ReadOwner | QFile::ExeOwner);
    }
    const QString target =
        root ? QStringLiteral("/proc/vde_diagram.dgm") : Dir() + QStringLiteral("ro/diagram.dgm");
    dialogs.Expect(TDialogAnswer::Save(target));
    dialogs.Expect(TDialogAnswer::Error());
    dm->mnuSaveToFile->trigger();
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkErrorMessageDlg);
    EXPECT_TRUE(dialogs.Asked()[1].Text.contains(target));
    EXPECT_FALSE(QFile::exists(target));
    if (!root)
        QFile::setPermissions(Dir() + QStringLiteral("ro"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
