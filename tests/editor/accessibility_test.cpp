// The surface as assistive technology sees it through QAccessible: a canvas whose children are
// its blocks in reading order and its wires, each with a role, a name and a place on screen; and
// in design mode, with the option on, Tab and Shift+Tab walk the selection through the blocks.

#include "editor_test_util.h"

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/diag_accessible.h"
#include "velDiagEdit/platform/translations.h"

#include <QAccessible>
#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class SurfaceAccessibility : public EditorFixture {
protected:
    TDiagObject* gate = nullptr;   // AND gate at (150, 40), 60 x 100
    TDiagText* source = nullptr;   // text block at (20, 150), no inputs, one output
    TDiagObject* orGate = nullptr; // OR gate at (150, 150)
    TDiagConnection* wire = nullptr;

    void SetUp() override {
        EditorFixture::SetUp();
        // Listed in another order than they are read: the OR gate first, the AND gate last.
        orGate = AndOr(doOrLogic, 150, 150);
        source =
            static_cast<TDiagText*>(dc->ObjList->CreateObjByDiagType(doText, {20, 150, 100, 190}));
        source->SetInCount(0);
        source->SetOutCount(1);
        gate = AndOr(doAndLogic, 150, 40);
        for (int i = 0; i < dc->ObjList->Count(); ++i)
            dc->AssignObjEvents(dc->ObjList->Items(i));
        wire = new TDiagObjConnection(dc->ConList.get(), source, 1, orGate, -1, TPoint{10, 10}, 0,
                                      0, 0);
        Show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    }

    TDiagObject* AndOr(TDiagObjectType kind, int x, int y) {
        return dc->ObjList->CreateObjByDiagType(kind, {x, y, x + 60, y + 100});
    }

    QAccessibleInterface* Surface() { return QAccessible::queryAccessibleInterface(&panel); }

    QString Name(int child) {
        QAccessibleInterface* c = Surface()->child(child);
        return c ? c->text(QAccessible::Name) : QStringLiteral("<no child %1>").arg(child);
    }

    // The blocks that show as selected.
    std::vector<TDiagObject*> Selected() const {
        std::vector<TDiagObject*> out;
        for (int i = 0; i < dc->ObjList->Count(); ++i)
            if (dc->ObjList->Items(i)->GetSelected())
                out.push_back(dc->ObjList->Items(i));
        return out;
    }

    void Key(Qt::Key k, Qt::KeyboardModifiers m = Qt::NoModifier) {
        panel.setFocus();
        QTest::keyClick(&panel, k, m);
    }
};

} // namespace

TEST_F(SurfaceAccessibility, TheSurfaceIsACanvasOfItsBlocksInReadingOrderThenItsWires) {
    QAccessibleInterface* s = Surface();
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->role(), QAccessible::Canvas);
    EXPECT_EQ(s->text(QAccessible::Name), QStringLiteral("Diagram"));
    ASSERT_EQ(s->childCount(), 4);
    // Read top to bottom, left to right: the AND gate (top 40), the text block (top 150, left
    // 20), the OR gate (top 150, left 150).
    EXPECT_EQ(Name(0), QStringLiteral("AND gate, 2 inputs, 1 output"));
    EXPECT_EQ(Name(1), QStringLiteral("Text block “Text”, 0 inputs, 1 output"));
    EXPECT_EQ(Name(2), QStringLiteral("OR gate, 2 inputs, 1 output"));
    EXPECT_EQ(Name(3),
              QStringLiteral("Wire from Text block “Text” (output 1) to OR gate (input 1)"));
    for (int i = 0; i < 4; ++i) {
        QAccessibleInterface* c = s->child(i);
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(c->role(), QAccessible::Graphic) << i;
        EXPECT_EQ(c->parent(), s) << i;
        EXPECT_EQ(s->indexOfChild(c), i);
    }
    EXPECT_EQ(s->child(0)->object(), gate);
    // Asked for by the block itself, the same interface.
    EXPECT_EQ(QAccessible::queryAccessibleInterface(gate), s->child(0));
}

TEST_F(SurfaceAccessibility, EachBlockIsWhereItStandsOnTheScreen) {
    const QPoint origin = panel.mapToGlobal(QPoint(0, 0));
    EXPECT_EQ(Surface()->child(0)->rect(), QRect(origin + QPoint(150, 40), QSize(60, 100)));
    EXPECT_EQ(Surface()->child(1)->rect(), QRect(origin + QPoint(20, 150), QSize(80, 40)));
    // The wire's box holds every point of its path.
    const QRect w = Surface()->child(3)->rect();
    for (const TPoint& p : wire->FPoints)
        EXPECT_TRUE(w.contains(origin + QPoint(p.X, p.Y))) << p.X << "," << p.Y;
    // A screen point on the gate finds the gate.
    const QPoint onGate = origin + QPoint(170, 90);
    EXPECT_EQ(Surface()->childAt(onGate.x(), onGate.y()), Surface()->child(0));
}

TEST_F(SurfaceAccessibility, ASelectedBlockSaysSoInItsNameAndState) {
    EXPECT_FALSE(Surface()->child(2)->state().selected);
    orGate->SetSelected(true);
    EXPECT_EQ(Name(2), QStringLiteral("OR gate, 2 inputs, 1 output, selected"));
    EXPECT_TRUE(Surface()->child(2)->state().selected);
    EXPECT_TRUE(Surface()->child(2)->state().selectable);
}

TEST_F(SurfaceAccessibility, AWireEndingOnAnotherWireNamesThatWire) {
    TDiagConnection* j = Wire(*dc->ConList, {{300, 280}, {300, 200}});
    j->FDstCrossInfo = LR(1, 1);
    ASSERT_EQ(Surface()->childCount(), 5);
    EXPECT_EQ(Name(4), QStringLiteral("Wire from a loose end to wire 1"));
}

TEST_F(SurfaceAccessibility, ChildrenFollowTheDiagramAsItChanges) {
    ASSERT_EQ(Surface()->childCount(), 4);
    QAccessibleInterface* w = Surface()->child(3);
    ASSERT_TRUE(w->isValid());
    dc->ObjList->DeleteObject(gate, true);
    ASSERT_EQ(Surface()->childCount(), 3);
    EXPECT_EQ(Name(0), QStringLiteral("Text block “Text”, 0 inputs, 1 output"));
    delete wire;
    EXPECT_EQ(Surface()->childCount(), 2);
}

TEST_F(SurfaceAccessibility, NamesFollowTheLibrarysTranslation) {
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::Russian)));
    gate->SetSelected(true);
    const QString name = Name(0);
    RemoveTranslations();
    EXPECT_EQ(name, QStringLiteral("Элемент И, входов: 2, выходов: 1, выбран"));
}

TEST_F(SurfaceAccessibility, TabAndShiftTabWalkTheSelectionInReadingOrder) {
    dc->SetDesignMode(true);
    dc->SetTabSelectsBlocks(true);
    Key(Qt::Key_Tab);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{gate});
    EXPECT_EQ(dc->SelObj.data(), gate);
    Key(Qt::Key_Tab);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{source});
    Key(Qt::Key_Tab);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{orGate});
    // Past the last block it starts again at the first.
    Key(Qt::Key_Tab);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{gate});
    Key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{orGate});
    Key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{source});
    // The accessible surface tells which block has the focus, and the keys stayed with it.
    EXPECT_TRUE(panel.hasFocus());
    EXPECT_EQ(Surface()->focusChild(), Surface()->child(1));
    EXPECT_TRUE(Surface()->child(1)->state().focused);
    // Selecting is no step of its own.
    EXPECT_EQ(dc->UndoStack()->count(), 0);
}

TEST_F(SurfaceAccessibility, ShiftTabWithNothingSelectedStartsAtTheLastBlock) {
    dc->SetDesignMode(true);
    dc->SetTabSelectsBlocks(true);
    Key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), std::vector<TDiagObject*>{orGate});
}

TEST_F(SurfaceAccessibility, TabIsNotTheSurfacesKeyUnlessTheHostSaysSo) {
    dc->SetDesignMode(true);
    EXPECT_FALSE(dc->GetTabSelectsBlocks());
    EXPECT_FALSE(dc->IsSurfaceKey(Qt::Key_Tab, Qt::NoModifier));
    Key(Qt::Key_Tab);
    EXPECT_TRUE(Selected().empty());
    // Outside design mode not even with the option on.
    dc->SetTabSelectsBlocks(true);
    EXPECT_TRUE(dc->IsSurfaceKey(Qt::Key_Tab, Qt::NoModifier));
    dc->SetDesignMode(false);
    EXPECT_FALSE(dc->IsSurfaceKey(Qt::Key_Tab, Qt::NoModifier));
    Key(Qt::Key_Tab);
    EXPECT_TRUE(Selected().empty());
}
