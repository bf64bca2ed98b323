// A wire that ends on another wire (a junction) while that wire is routed again: with direct
// editing its end follows the segment it sits on; with direct editing off the classic rules
// leave it where it was.

#include "direct_fixture.h"

#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class Junction : public DirectFixture {
protected:
    TDiagObject* c = nullptr;
    int vertical = -1; // the first wire's vertical segment

    // The wire a -> b, and gate c's output dragged onto the middle of its vertical segment.
    void SetUp() override {
        DirectFixture::SetUp();
        DragPanel(Aim(a, 1), Aim(b, -1), 6);
        ASSERT_EQ(dc->ConList->Count(), 1);
        c = Place(doAndLogic, 40, 200);
        vertical = VerticalOf(Con(0)->FPoints);
        ASSERT_GE(vertical, 0);
        const TPoints& p = Con(0)->FPoints;
        const int x = p[size_t(vertical)].X;
        const int y = (p[size_t(vertical)].Y + p[size_t(vertical) + 1].Y) / 2;
        DragPanel(Aim(c, 1), QPoint(x + 2, y), 5);
        ASSERT_EQ(dc->ConList->Count(), 2);
        ASSERT_EQ(Con(1)->FDstCrossInfo, (LongRec{uint16_t(vertical + 1), 1}));
        ASSERT_EQ(Con(1)->FPoints.back(), (TPoint{x, y}));
        stack->clear();
    }

    static int VerticalOf(const TPoints& p) {
        for (size_t i = 0; i + 1 < p.size(); ++i)
            if (p[i].X == p[i + 1].X && p[i].Y != p[i + 1].Y)
                return int(i);
        return -1;
    }

    // Whether P lies on segment k of the path (on its line, between its ends).
    static bool OnSegment(const TPoints& p, int k, TPoint P) {
        const TPoint s = p[size_t(k)], e = p[size_t(k) + 1];
        return P.X >= std::min(s.X, e.X) && P.X <= std::max(s.X, e.X) &&
               P.Y >= std::min(s.Y, e.Y) && P.Y <= std::max(s.Y, e.Y);
    }
};

} // namespace

TEST_F(Junction, MovingTheEndBlockOfTheWireBelowTakesTheJunctionAlong) {
    // Selected first: the selection is part of what the stream keeps.
    Click(QPoint(80, 110));
    stack->clear();
    const auto before = Stream();
    const TPoint end = Con(1)->FPoints.back();
    const int oldX = Con(0)->FPoints[size_t(vertical)].X;
    // Gate a 40 pixels to the right: the wire below gets its vertical segment further right.
    DragPanel(QPoint(80, 110), QPoint(120, 110), 5);
    ASSERT_EQ(a->x(), 90);
    const TPoints& below = Con(0)->FPoints;
    const int k = VerticalOf(below);
    ASSERT_GE(k, 0);
    ASSERT_NE(below[size_t(k)].X, oldX);
    const TDiagConnection* j = Con(1);
    // The junction's last segment is horizontal, so its end moves along its row onto the
    // vertical segment's new column.
    EXPECT_EQ(j->FPoints.back(), (TPoint{below[size_t(k)].X, end.Y}));
    EXPECT_TRUE(OnSegment(below, k, j->FPoints.back()));
    EXPECT_TRUE(Square(j->FPoints));
    EXPECT_EQ(j->FDstCrossInfo, (LongRec{uint16_t(k + 1), 1}));
    // One step, and its undo gives the diagram back byte for byte.
    ASSERT_EQ(stack->count(), 1);
    const auto after = Stream();
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), after));
}

TEST_F(Junction, EscapeDuringTheMovePutsTheJunctionBackWhereItWas) {
    Click(QPoint(80, 110));
    const auto before = Stream();
    const TPoint end = Con(1)->FPoints.back();
    Press(QPoint(80, 110));
    MoveTo(QPoint(100, 110));
    MoveTo(QPoint(120, 110));
    ASSERT_NE(Con(1)->FPoints.back(), end);
    Key(Qt::Key_Escape);
    Release(QPoint(120, 110));
    EXPECT_EQ(Con(1)->FPoints.back(), end);
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(Junction, ResizingTheEndBlockTakesTheJunctionAlongToo) {
    const int oldX = Con(0)->FPoints[size_t(vertical)].X;
    const TPoint end = Con(1)->FPoints.back();
    // Gate a selected, then its bottom-right corner handle dragged 40 pixels right: its output
    // moves right, and so does the middle of the wire below.
    Click(QPoint(80, 110));
    ASSERT_TRUE(a->GetSelected());
    const QPoint corner(a->x() + a->width() + 1, a->y() + a->height() + 1);
    DragPanel(corner, corner + QPoint(40, 0), 4);
    ASSERT_EQ(a->width(), 100);
    const TPoints& below = Con(0)->FPoints;
    const int k = VerticalOf(below);
    ASSERT_GE(k, 0);
    ASSERT_NE(below[size_t(k)].X, oldX);
    EXPECT_EQ(Con(1)->FPoints.back(), (TPoint{below[size_t(k)].X, end.Y}));
    EXPECT_TRUE(OnSegment(below, k, Con(1)->FPoints.back()));
}

TEST_F(Junction, WithDirectEditingOffAMovedBlockLeavesTheJunctionEndWhereItWas) {
    dc->SetDirectEditing(false);
    const TPoint end = Con(1)->FPoints.back();
    const LongRec cross = Con(1)->FDstCrossInfo;
    // A block moved as the classic editor moves it: the wires at it are re-anchored, and no
    // other wire changes.
    const TPoints junction = Con(1)->FPoints;
    a->SetBounds(a->x() + 40, a->y(), a->width(), a->height());
    EXPECT_EQ(Con(1)->FPoints, junction);
    EXPECT_EQ(Con(1)->FPoints.back(), end);
    EXPECT_EQ(Con(1)->FDstCrossInfo, cross);
}
