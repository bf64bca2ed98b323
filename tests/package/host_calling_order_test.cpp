// A host's whole calling order, end to end: a list, two diagrams on two panels, edits with the
// mouse and the menus, everything saved, the list freed, and a new list loading both back.

#include "commands/actions_test_util.h"
#include "common/mouse_util.h"

#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/package/diag_package.h"

#include <QDir>

using namespace vde;
using namespace vde::test;

namespace {

class HostCallingOrder : public ::testing::Test {
protected:
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("plant.exe"))};
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    // The host's form: it owns the modules as components.
    QObject form;

    void TearDown() override {
        FreeDiagActionsList();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    // A menu popped up by a right click at `at` on `w`; then the item `item` chosen from it.
    void RightClickAndChoose(QObject* w, QPoint at, const char* menu, const char* item) {
        const size_t shown = popups.Records.size();
        vde::test::MouseClick(w, Qt::RightButton, Qt::NoModifier, at);
        ASSERT_EQ(popups.Records.size(), shown + 1) << item;
        ASSERT_EQ(popups.Last()->MenuName, QString::fromLatin1(menu)) << item;
        ASSERT_TRUE(popups.Click(QString::fromLatin1(item))) << item;
    }

    static QPoint Center(const TGraphicControl* w) {
        return QPoint(w->width() / 2, w->height() / 2);
    }
    static QPoint MarkerAt(const TDiagObject* b, int index) {
        const TDotMarker* m = b->GetMarker(index);
        return m ? QPoint(m->P.X, m->P.Y) : QPoint(-1, -1);
    }
};

} // namespace

TEST_F(HostCallingOrder, TwoDiagramsEditedSavedFreedAndLoadedBackByteIdentical) {
    std::vector<uint8_t> savedLeft, savedRight;
    {
        HostPanel left, right;
        left.Show();
        right.Show();
        CreateDiagActionsList(&form);
        TdmDiagActions* l =
            CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
        TdmDiagActions* r =
            CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
        ASSERT_TRUE(l && r);
        EXPECT_FALSE(l->GetDesignMode());
        EXPECT_TRUE(r->GetDesignMode());
        EXPECT_TRUE(IsDesignModeEnabled());

        // On the right panel: an AND gate and an OR gate from the objects menu, then a wire
        // from the AND gate's output with a second segment going down.
        TDiagContainer& rc = *r->DiagContr;
        RightClickAndChoose(&right.panel, QPoint(40, 40), "pmObjects", "mnuAndLogic");
        RightClickAndChoose(&right.panel, QPoint(250, 120), "pmObjects", "mnuOrLogic");
        ASSERT_EQ(rc.ObjList->Count(), 2);
        TDiagObject* andGate = rc.ObjList->Items(0);
        EXPECT_EQ(andGate->FObjType, doAndLogic);
        EXPECT_EQ(rc.ObjList->Items(1)->FObjType, doOrLogic);
        vde::test::MouseClick(andGate, Qt::LeftButton, Qt::NoModifier, Center(andGate));
        EXPECT_TRUE(andGate->FSelected);
        vde::test::MouseClick(andGate, Qt::LeftButton, Qt::NoModifier, MarkerAt(andGate, 1));
        EXPECT_EQ(andGate->FSelMarkerIndex, 1);
        dialogs.Expect(TDialogAnswer::Segment(80, 0));
        RightClickAndChoose(andGate, MarkerAt(andGate, 1), "pmConnections", "mnuAddSegment");
        ASSERT_EQ(rc.ConList->Count(), 1);
        TPoint out;
        ASSERT_TRUE(andGate->GetConPoint(1, out, false));
        // A right click on the wire's first segment selects it; its menu adds 40 pixels down.
        dialogs.Expect(TDialogAnswer::Segment(40, 90));
        RightClickAndChoose(&right.panel, QPoint(out.X + 40, out.Y + 1), "pmConnections",
                            "mnuAddSegment");
        const TPoints& path = rc.ConList->Items(0)->FPoints;
        ASSERT_GE(path.size(), 3u);
        EXPECT_EQ(path.back().X, path[path.size() - 2].X);
        EXPECT_EQ(path.back().Y, path[path.size() - 2].Y + 40);

        // Back to the left diagram: it becomes current and the only one in design mode.
        EXPECT_EQ(CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true),
                  l);
        EXPECT_TRUE(l->GetDesignMode());
        EXPECT_FALSE(r->GetDesignMode());
        TDiagContainer& lc = *l->DiagContr;
        RightClickAndChoose(&left.panel, QPoint(60, 50), "pmObjects", "mnuText");
        ASSERT_EQ(lc.ObjList->Count(), 1);
        TDiagObject* text = lc.ObjList->Items(0);
        vde::test::MouseClick(text, Qt::LeftButton, Qt::NoModifier, Center(text));
        EXPECT_TRUE(text->FSelected);
        dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")));
        RightClickAndChoose(text, Center(text), "pmObjects", "mnuShiftBy");
        EXPECT_EQ(text->pos(), QPoint(65, 47));
        dialogs.Expect(TDialogAnswer::Query(QStringLiteral("Pump")));
        RightClickAndChoose(text, Center(text), "pmObjects", "mnuSetTitles");
        EXPECT_EQ(text->GetTextValues(), QStringLiteral("Pump"));

        savedLeft = DiagramBytes(lc);
        savedRight = DiagramBytes(rc);
        SaveDiagActionsDiagrams(QString());
        EXPECT_EQ(FileBytes(dir.filePath(QStringLiteral("Left.dgm"))), savedLeft);
        EXPECT_EQ(FileBytes(dir.filePath(QStringLiteral("Right.dgm"))), savedRight);
        EXPECT_EQ(QDir(dir.path()).entryList({QStringLiteral("*.dgm")}).size(), 2);

        QPointer<TdmDiagActions> gone = l;
        FreeDiagActionsList();
        EXPECT_TRUE(gone.isNull());
    }

    // A new start of the host: new panels, a new list, both diagrams loaded back.
    HostPanel left, right;
    left.Show();
    right.Show();
    CreateDiagActionsList(&form);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(DiagramBytes(*r->DiagContr), savedRight);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(DiagramBytes(*l->DiagContr), savedLeft);
    EXPECT_EQ(DiagramBytes(*r->DiagContr), savedRight);
    ASSERT_EQ(l->DiagContr->ObjList->Count(), 1);
    EXPECT_EQ(l->DiagContr->ObjList->Items(0)->pos(), QPoint(65, 47));
    ASSERT_EQ(r->DiagContr->ConList->Count(), 1);
    EXPECT_EQ(r->DiagContr->ConList->Items(0)->GetSrcObject(), r->DiagContr->ObjList->Items(0));
    FreeDiagActionsList();
}
