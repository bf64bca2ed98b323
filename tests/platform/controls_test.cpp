#include "common/mouse_util.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/input_state.h"

#include <QPaintEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace vde;

TEST(GraphicControl, MouseEventsGoToHandlers) {
    QWidget parent;
    parent.resize(100, 100);
    TGraphicControl g(&parent);
    g.setGeometry(10, 10, 50, 50);
    parent.show();
    std::vector<QString> log;
    g.MouseHandlers.OnMouseDown = [&](QObject* s, TMouseButton b, TShiftState sh, int x, int y) {
        EXPECT_EQ(s, &g);
        log.push_back(QStringLiteral("down %1 %2 %3,%4").arg(int(b)).arg(int(sh)).arg(x).arg(y));
    };
    g.MouseHandlers.OnMouseUp = [&](QObject*, TMouseButton b, TShiftState, int x, int y) {
        log.push_back(QStringLiteral("up %1 %2,%3").arg(int(b)).arg(x).arg(y));
    };
    vde::test::MousePress(&g, Qt::RightButton, Qt::ShiftModifier, QPoint(5, 6));
    vde::test::MouseRelease(&g, Qt::RightButton, Qt::NoModifier, QPoint(7, 8));
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0], QStringLiteral("down 1 %1 5,6").arg(int(ssShift | ssRight)));
    EXPECT_EQ(log[1], QStringLiteral("up 1 7,8"));
}

TEST(GraphicControl, IsNotAWindowedControl) {
    QWidget parent;
    TGraphicControl g(&parent);
    EXPECT_FALSE(IsWindowedControl(&g));
    EXPECT_TRUE(IsWindowedControl(&parent));
    QObject plain;
    EXPECT_FALSE(IsWindowedControl(&plain));
}

namespace {

// A panel that keeps the region of each paint it receives.
class RegionLog : public QWidget {
public:
    std::vector<QRegion> Painted;

protected:
    void paintEvent(QPaintEvent* e) override { Painted.push_back(e->region()); }
};

} // namespace

TEST(GraphicControl, AFewChangesRepaintTheirRectanglesAndManyTheWholeParentOnce) {
    RegionLog parent;
    parent.resize(400, 300);
    TGraphicControl g(&parent);
    g.setGeometry(10, 10, 50, 50);
    parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&parent));
    QCoreApplication::processEvents();
    parent.Painted.clear();
    // One move: where it was and where it went, nothing else.
    g.move(100, 20);
    QCoreApplication::processEvents();
    ASSERT_EQ(parent.Painted.size(), 1u);
    EXPECT_EQ(parent.Painted[0], QRegion(10, 10, 50, 50) | QRegion(100, 20, 50, 50));
    parent.Painted.clear();
    // Two hundred new controls before the next paint: one paint of the whole panel.
    std::vector<std::unique_ptr<TGraphicControl>> many;
    for (int i = 0; i < 200; ++i) {
        many.push_back(std::make_unique<TGraphicControl>(&parent));
        many.back()->setGeometry((i % 20) * 20, (i / 20) * 20, 15, 15);
    }
    QCoreApplication::processEvents();
    ASSERT_EQ(parent.Painted.size(), 1u);
    EXPECT_EQ(parent.Painted[0], QRegion(parent.rect()));
    // And after that paint, single rectangles again.
    parent.Painted.clear();
    many[0]->move(300, 250);
    QCoreApplication::processEvents();
    ASSERT_EQ(parent.Painted.size(), 1u);
    EXPECT_EQ(parent.Painted[0], QRegion(0, 0, 15, 15) | QRegion(300, 250, 15, 15));
}

TEST(ForeignControl, HookReplacesAndReleasesItsMouseHandling) {
    QWidget parent;
    parent.resize(200, 100);
    auto* button = new QPushButton(QStringLiteral("Go"), &parent);
    button->setGeometry(10, 10, 80, 30);
    parent.show();
    QSignalSpy clicked(button, &QPushButton::clicked);
    int downs = 0;
    TMouseHandlers h;
    h.OnMouseDown = [&](QObject* s, TMouseButton, TShiftState, int, int) {
        EXPECT_EQ(s, button);
        ++downs;
    };
    SetMouseHandlers(button, h);
    EXPECT_TRUE(HasMouseHook(button));
    vde::test::MouseClick(button, Qt::LeftButton);
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(clicked.count(), 0);
    SetMouseHandlers(button, {});
    EXPECT_FALSE(HasMouseHook(button));
    vde::test::MouseClick(button, Qt::LeftButton);
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(clicked.count(), 1);
}

TEST(Bounds, BoundsRectAndScreenMapping) {
    QWidget parent;
    parent.move(100, 50);
    auto* child = new QWidget(&parent);
    SetBounds(child, 10, 20, 30, 40);
    EXPECT_EQ(BoundsRect(child), (TRect{10, 20, 40, 60}));
    parent.show();
    const TPoint s = ClientToScreen(&parent, {10, 20});
    EXPECT_EQ(ScreenToClient(&parent, s), (TPoint{10, 20}));
}

TEST(InputState, ScriptedStateIsInstalledAndLogs) {
    TScriptedInputState s;
    s.Pos = {3, 4};
    {
        TScopedInputState guard(&s);
        EXPECT_EQ(InputState().CursorPos(), (TPoint{3, 4}));
        InputState().SetScreenCursor(crSizeAll);
        InputState().ReleaseCapture();
    }
    EXPECT_EQ(s.Log, QStringList({"Cursor -22", "Release"}));
    EXPECT_NE(&InputState(), &s);
}

TEST(InputState, CursorConstantsMapToQtShapes) {
    EXPECT_EQ(CursorShape(crSizeNWSE), Qt::SizeFDiagCursor);
    EXPECT_EQ(CursorShape(crSizeNESW), Qt::SizeBDiagCursor);
    EXPECT_EQ(CursorShape(crSizeNS), Qt::SizeVerCursor);
    EXPECT_EQ(CursorShape(crSizeWE), Qt::SizeHorCursor);
    EXPECT_EQ(CursorShape(crSizeAll), Qt::SizeAllCursor);
    EXPECT_EQ(CursorShape(crDefault), Qt::ArrowCursor);
}
