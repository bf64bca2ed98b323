#pragma once
// A diagram of two AND gates in design mode with direct editing on, and real mouse and key
// events on its surface.

#include "commands_test_util.h"
#include "undo_test_util.h"

#include <QTest>

namespace vde::test {

class DirectFixture : public CommandsFixture {
protected:
    TDiagObject* a = nullptr; // AND gate at (50, 60), 60 x 100
    TDiagObject* b = nullptr; // AND gate at (250, 120), 60 x 100
    TDiagUndoStack* stack = nullptr;

    void SetUp() override {
        CommandsFixture::SetUp();
        a = Place(doAndLogic, 50, 60);
        b = Place(doAndLogic, 250, 120);
        dc->AssignContextMenus(&menuConnections, &menuObjects);
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
        stack = dc->UndoStack();
        stack->clear();
    }

    // The tip of a marker (parent coordinates), as the block reports it.
    static TPoint Tip(TDiagObject* blk, int marker) {
        TPoint p{};
        EXPECT_TRUE(blk->GetConPoint(marker, p, false));
        return p;
    }
    // Where a user aims to take a marker: its point on the body's edge, 2 pixels inside.
    static QPoint Aim(TDiagObject* blk, int marker) {
        TPoint p{};
        EXPECT_TRUE(blk->GetConPoint(marker, p, true));
        return QPoint(p.X + (marker < 0 ? 2 : -2), p.Y);
    }

    void Press(QPoint p, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::mousePress(&panel, Qt::LeftButton, mods, p);
    }
    void Release(QPoint p, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::mouseRelease(&panel, Qt::LeftButton, mods, p);
    }
    void MoveTo(QPoint p) { QTest::mouseMove(&panel, p); }
    // Press, `steps` moves on the straight line, release.
    void DragPanel(QPoint from, QPoint to, int steps = 5,
                   Qt::KeyboardModifiers mods = Qt::NoModifier) {
        Press(from, mods);
        for (int i = 1; i <= steps; ++i)
            MoveTo(from + (to - from) * i / steps);
        Release(to, mods);
    }
    void Click(QPoint p, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        Press(p, mods);
        Release(p, mods);
    }
    void Key(int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::keyClick(&panel, Qt::Key(key), mods);
    }

    std::vector<uint8_t> Stream() const {
        TMemoryStream s;
        dc->SaveToStream(s);
        return s.Bytes();
    }

    static bool Square(const TPoints& pts) {
        for (size_t i = 0; i + 1 < pts.size(); ++i)
            if (pts[i].X != pts[i + 1].X && pts[i].Y != pts[i + 1].Y)
                return false;
        return pts.size() >= 2;
    }

    TDiagConnection* Con(int i) const { return dc->ConList->Items(i); }
};

} // namespace vde::test
