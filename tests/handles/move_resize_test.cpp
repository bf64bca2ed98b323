#include "common/test_util.h"
#include "velDiagEdit/handles/move_resize.h"
#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/graphic_host.h"
#include "velDiagEdit/platform/input_state.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <array>
#include <gtest/gtest.h>

using namespace vde;

namespace {

using TBounds = std::array<int32_t, 4>; // left, top, width, height

// Records what a resize hands to the platform before the platform applies it.
class TRecordingMoveResize : public TdmMoveResize {
public:
    std::vector<TBounds> Bounds;

protected:
    void SetControlBounds(QWidget* Control, int32_t Left, int32_t Top, int32_t Width,
                          int32_t Height) override {
        Bounds.push_back({Left, Top, Width, Height});
        TdmMoveResize::SetControlBounds(Control, Left, Top, Width, Height);
    }
};

TBounds Geometry(const QWidget* w) {
    const QRect g = w->geometry();
    return {g.x(), g.y(), g.width(), g.height()};
}

QPoint NodePos(const TdmMoveResize& mr, int i) {
    return mr.Nodes()->Items(i)->pos();
}

// Where handle i belongs around bounds b (same window): corners and middles, less 2.
QPoint HandlePlace(const TBounds& b, int i) {
    const int xs[3] = {b[0] - 2, b[0] + b[2] / 2 - 2, b[0] + b[2] - 2};
    const int ys[3] = {b[1] - 2, b[1] + b[3] / 2 - 2, b[1] + b[3] - 2};
    const int col[8] = {0, 1, 2, 2, 2, 1, 0, 0};
    const int row[8] = {0, 0, 0, 1, 2, 2, 2, 1};
    return {xs[col[i]], ys[row[i]]};
}

// A host window at a known place on the screen with a line edit at (50, 40), 60 x 30, under
// move/resize control; the handles live on the same window.
class MoveResize : public ::testing::Test {
protected:
    void SetUp() override {
        host.setObjectName(QStringLiteral("host"));
        host.setGeometry(100, 50, 400, 300);
        edit = new QLineEdit(&host);
        edit->setObjectName(QStringLiteral("edit"));
        edit->setGeometry(50, 40, 60, 30);
        host.show();
        ASSERT_EQ(host.mapToGlobal(QPoint(0, 0)), QPoint(100, 50));
        mr.CreateNodes(&host, &host);
        ASSERT_TRUE(mr.AssignControlEvents(edit, false));
    }

    // Real Qt mouse events on the widget; the scripted cursor is put where the event happens,
    // because the handlers read the global cursor, not the event's coordinates.
    void Press(QWidget* w, QPoint local, Qt::MouseButton b = Qt::LeftButton,
               Qt::KeyboardModifiers m = Qt::NoModifier) {
        SetCursor(w->mapToGlobal(local));
        QTest::mousePress(w, b, m, local);
    }
    void MoveTo(QWidget* w, QPoint screen) {
        SetCursor(screen);
        QTest::mouseMove(w, w->mapFromGlobal(screen));
    }
    void ReleaseAt(QWidget* w, QPoint screen, Qt::MouseButton b = Qt::LeftButton) {
        SetCursor(screen);
        QTest::mouseRelease(w, b, Qt::NoModifier, w->mapFromGlobal(screen));
    }
    void SetCursor(QPoint screen) { input.Pos = {screen.x(), screen.y()}; }
    // A point in the host's client coordinates, on the screen.
    QPoint Screen(int x, int y) const { return host.mapToGlobal(QPoint(x, y)); }
    TPanel* Node(int i) const { return mr.Nodes()->Items(i); }

    TScriptedInputState input;
    TScopedInputState guard{&input};
    QWidget host;
    QLineEdit* edit = nullptr;
    TRecordingMoveResize mr; // goes before the host, as an owner of handles would
};

} // namespace

// ---- the data module ----

TEST(MoveResizeModule, CreatedEnabledWithNoHandlesAndNoControl) {
    TdmMoveResize mr;
    EXPECT_TRUE(mr.GetEnableMoveResize());
    ASSERT_NE(mr.Nodes(), nullptr);
    EXPECT_EQ(mr.Nodes()->Count(), 0);
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
    EXPECT_FALSE(mr.GetInResizeMode());
    EXPECT_FALSE(mr.NodePositioning());
}

TEST(MoveResizeModule, EnableMoveResizeIsReadAndWritten) {
    TdmMoveResize mr;
    mr.SetEnableMoveResize(false);
    EXPECT_FALSE(mr.GetEnableMoveResize());
    mr.SetEnableMoveResize(true);
    EXPECT_TRUE(mr.GetEnableMoveResize());
}

TEST(MoveResizeModule, OwnerFreesTheModule) {
    QPointer<TdmMoveResize> mr;
    {
        QObject owner;
        mr = new TdmMoveResize(&owner);
    }
    EXPECT_TRUE(mr.isNull());
}

// ---- CreateNodes ----

TEST(CreateNodes, MakesEightHiddenBlackBevelFreeFivePixelPanelsWithTheirCursors) {
    QWidget host;
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    ASSERT_EQ(mr.Nodes()->Count(), 8);
    const std::array<TCursor, 8> cursors = {crSizeNWSE, crSizeNS, crSizeNESW, crSizeWE,
                                            crSizeNWSE, crSizeNS, crSizeNESW, crSizeWE};
    for (int i = 0; i < 8; ++i) {
        TPanel* n = mr.Nodes()->Items(i);
        SCOPED_TRACE(i);
        EXPECT_EQ(n->objectName(), QStringLiteral("_Node_%1").arg(i));
        EXPECT_EQ(n->size(), QSize(5, 5));
        EXPECT_EQ(n->GetBevelOuter(), bvNone);
        EXPECT_EQ(n->GetColor(), clBlack);
        EXPECT_EQ(n->parentWidget(), &host);
        EXPECT_EQ(n->Owner(), &host);
        EXPECT_TRUE(n->isHidden());
        EXPECT_EQ(n->GetCursor(), cursors[size_t(i)]);
        EXPECT_EQ(n->cursor().shape(), CursorShape(cursors[size_t(i)]));
        EXPECT_FALSE(GetMouseHandlers(n).Empty());
        EXPECT_EQ(FindComponent(&host, n->objectName()), n);
    }
    EXPECT_EQ(mr.Nodes()->Items(0)->cursor().shape(), Qt::SizeFDiagCursor);
    EXPECT_EQ(mr.Nodes()->Items(2)->cursor().shape(), Qt::SizeBDiagCursor);
}

TEST(CreateNodes, CalledAgainWithTheSameOwnerKeepsEightHandles) {
    QWidget host;
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    std::vector<TPanel*> first;
    for (int i = 0; i < 8; ++i)
        first.push_back(mr.Nodes()->Items(i));
    mr.CreateNodes(&host, &host);
    ASSERT_EQ(mr.Nodes()->Count(), 8);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(mr.Nodes()->Items(i), first[size_t(i)]);
    EXPECT_EQ(host.findChildren<TPanel*>().size(), 8);
}

TEST(CreateNodes, SecondModuleTakesOverTheOwnersPanelsUnchanged) {
    QWidget host;
    auto* own = new TPanel(&host);
    own->setObjectName(QStringLiteral("_Node_2"));
    own->SetParent(&host);
    own->resize(30, 20);
    own->SetColor(clRed);
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    ASSERT_EQ(mr.Nodes()->Count(), 8);
    EXPECT_EQ(mr.Nodes()->Items(2), own);
    EXPECT_EQ(own->size(), QSize(30, 20));
    EXPECT_EQ(own->GetColor(), clRed);
    EXPECT_FALSE(HasMouseHook(own));
    EXPECT_EQ(host.findChildren<TPanel*>().size(), 8);
}

TEST(CreateNodes, NonPanelWithAHandleNameRaisesInvalidCast) {
    QWidget host;
    auto* label = new QLabel(&host);
    label->setObjectName(QStringLiteral("_Node_3"));
    TdmMoveResize mr;
    try {
        mr.CreateNodes(&host, &host);
        FAIL() << "no EInvalidCast";
    } catch (const EInvalidCast& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("\"_Node_3\""))) << e.what();
        EXPECT_TRUE(e.Message().contains(QStringLiteral("QLabel"))) << e.what();
        EXPECT_TRUE(e.Message().contains(QStringLiteral("TPanel"))) << e.what();
    }
    // The handles before it were made; the label is left alone.
    EXPECT_EQ(mr.Nodes()->Count(), 3);
    EXPECT_EQ(label->parentWidget(), &host);
}

TEST(CreateNodes, OwnerOtherThanTheParentFindsItsHandlesAgain) {
    QObject owner;
    QWidget window;
    TdmMoveResize mr;
    mr.CreateNodes(&owner, &window);
    mr.CreateNodes(&owner, &window);
    ASSERT_EQ(mr.Nodes()->Count(), 8);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(mr.Nodes()->Items(i)->parentWidget(), &window);
        EXPECT_EQ(mr.Nodes()->Items(i)->Owner(), &owner);
    }
    EXPECT_EQ(window.findChildren<TPanel*>().size(), 8);
}

// ---- ownership of the handles ----

TEST(HandleOwnership, ModuleFreesItsHandlesAndLeavesTheParent) {
    QWidget host;
    std::vector<QPointer<TPanel>> nodes;
    {
        TdmMoveResize mr;
        mr.CreateNodes(&host, &host);
        for (int i = 0; i < 8; ++i)
            nodes.emplace_back(mr.Nodes()->Items(i));
    }
    for (auto& n : nodes)
        EXPECT_TRUE(n.isNull());
    EXPECT_TRUE(host.findChildren<TPanel*>().isEmpty());
    EXPECT_EQ(FindComponent(&host, QStringLiteral("_Node_0")), nullptr);
}

TEST(HandleOwnership, ParentGoingFirstTakesTheHandlesOutOfTheList) {
    TdmMoveResize mr;
    {
        QWidget host;
        mr.CreateNodes(&host, &host);
        ASSERT_EQ(mr.Nodes()->Count(), 8);
    }
    EXPECT_EQ(mr.Nodes()->Count(), 0);
    // A new parent gets a fresh set; the module's destructor then frees only these.
    QWidget other;
    mr.CreateNodes(&other, &other);
    EXPECT_EQ(mr.Nodes()->Count(), 8);
}

TEST(HandleOwnership, OwnerGoingFirstTakesTheHandlesOutOfTheList) {
    QWidget window;
    TdmMoveResize mr;
    {
        QObject owner;
        mr.CreateNodes(&owner, &window);
    }
    EXPECT_EQ(mr.Nodes()->Count(), 0);
    EXPECT_TRUE(window.findChildren<TPanel*>().isEmpty());
}

TEST(HandleOwnership, DataModuleDestroyFreesTheHandles) {
    QWidget host;
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    mr.DataModuleDestroy(&mr);
    EXPECT_EQ(mr.Nodes(), nullptr);
    EXPECT_TRUE(host.findChildren<TPanel*>().isEmpty());
}

// ---- PositionNodes ----

TEST(PositionNodes, OddWidthAndHeightTruncateTheMiddles) {
    QWidget host;
    host.resize(100, 100);
    auto* c = new QWidget(&host);
    c->setGeometry(10, 20, 7, 9);
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    mr.PositionNodes(c);
    // x: 10 - 2 = 8, 10 + 7 div 2 - 2 = 11, 10 + 7 - 2 = 15; y: 18, 20 + 4 - 2 = 22, 27.
    const std::array<QPoint, 8> expected = {QPoint(8, 18),  QPoint(11, 18), QPoint(15, 18),
                                            QPoint(15, 22), QPoint(15, 27), QPoint(11, 27),
                                            QPoint(8, 27),  QPoint(8, 22)};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(NodePos(mr, i), expected[size_t(i)]) << i;
        EXPECT_EQ(mr.Nodes()->Items(i)->size(), QSize(5, 5)) << i;
        EXPECT_FALSE(mr.Nodes()->Items(i)->isHidden()) << i;
    }
    EXPECT_EQ(mr.GetCurrentNodeControl(), c);
}

TEST(PositionNodes, HandlesOnAnotherWindowGoThroughScreenCoordinates) {
    QWidget a;
    a.setGeometry(100, 50, 300, 200);
    auto* c = new QWidget(&a);
    c->setGeometry(10, 20, 40, 30);
    QWidget b;
    b.setGeometry(300, 200, 300, 200);
    a.show();
    b.show();
    ASSERT_EQ(a.mapToGlobal(QPoint(0, 0)), QPoint(100, 50));
    ASSERT_EQ(b.mapToGlobal(QPoint(0, 0)), QPoint(300, 200));
    TdmMoveResize mr;
    mr.CreateNodes(&b, &b);
    mr.PositionNodes(c);
    // Handle 0 at (8, 18) on a = screen (108, 68) = (-192, -132) on b.
    EXPECT_EQ(NodePos(mr, 0), QPoint(-192, -132));
    EXPECT_EQ(NodePos(mr, 4), QPoint(10 + 40 - 2 + 100 - 300, 20 + 30 - 2 + 50 - 200));
    EXPECT_EQ(NodePos(mr, 3), QPoint(48 - 200, 33 - 150));
}

TEST(PositionNodes, ControlInsideANestedParentUsesThatParentsCoordinates) {
    QWidget host;
    host.setGeometry(100, 50, 300, 200);
    auto* inner = new QWidget(&host);
    inner->setGeometry(30, 40, 200, 100);
    auto* c = new QWidget(inner);
    c->setGeometry(10, 10, 20, 20);
    host.show();
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    mr.PositionNodes(c);
    EXPECT_EQ(NodePos(mr, 0), QPoint(38, 48));
    EXPECT_EQ(NodePos(mr, 4), QPoint(58, 68));
}

TEST(SetNodesVisible, HidingForgetsTheControlShowingDoesNotSetOne) {
    QWidget host;
    auto* c = new QWidget(&host);
    c->setGeometry(10, 10, 20, 20);
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    mr.PositionNodes(c);
    ASSERT_EQ(mr.GetCurrentNodeControl(), c);
    mr.SetNodesVisible(false);
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(mr.Nodes()->Items(i)->isHidden()) << i;
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
    mr.SetNodesVisible(true);
    for (int i = 0; i < 8; ++i)
        EXPECT_FALSE(mr.Nodes()->Items(i)->isHidden()) << i;
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
}

TEST(PositionNodes, HandlesAreDrawnBlackAroundTheControl) {
    QWidget host;
    host.resize(120, 80);
    host.setAutoFillBackground(true);
    QPalette pal = host.palette();
    pal.setColor(QPalette::Window, Qt::white);
    host.setPalette(pal);
    auto* c = new QWidget(&host);
    c->setGeometry(30, 20, 41, 21);
    TdmMoveResize mr;
    mr.CreateNodes(&host, &host);
    mr.PositionNodes(c);
    host.show();
    QImage img = test::WhiteImage(120, 80);
    host.render(&img);
    // Each handle covers its 5 x 5 square, centred on a corner or a middle of the control.
    for (int i = 0; i < 8; ++i) {
        const QPoint p = NodePos(mr, i);
        EXPECT_EQ(test::PixelColor(img, p.x(), p.y()), clBlack) << i;
        EXPECT_EQ(test::PixelColor(img, p.x() + 4, p.y() + 4), clBlack) << i;
        EXPECT_EQ(test::PixelColor(img, p.x() + 2, p.y() + 2), clBlack) << i;
    }
    EXPECT_EQ(NodePos(mr, 0), QPoint(28, 18));
    EXPECT_EQ(test::PixelColor(img, 27, 18), clWhite);
    EXPECT_EQ(test::PixelColor(img, 28, 17), clWhite);
    EXPECT_EQ(NodePos(mr, 4), QPoint(69, 39));
    EXPECT_EQ(test::PixelColor(img, 74, 43), clWhite);
    EXPECT_EQ(test::PixelColor(img, 73, 44), clWhite);
}

// ---- AssignControlEvents ----

TEST_F(MoveResize, AssignControlEventsOnAHandleDoesNothingAndGivesFalse) {
    TPanel* n = Node(3);
    ASSERT_TRUE(HasMouseHook(n));
    EXPECT_FALSE(mr.AssignControlEvents(n, false));
    EXPECT_FALSE(mr.AssignControlEvents(n, true));
    // Still the handle's own handlers: pressing it starts a resize.
    ASSERT_TRUE(HasMouseHook(n));
    mr.PositionNodes(edit);
    Press(n, QPoint(2, 2));
    EXPECT_TRUE(mr.NodePositioning());
    EXPECT_FALSE(mr.GetInResizeMode());
    ReleaseAt(n, n->mapToGlobal(QPoint(2, 2)));
}

TEST_F(MoveResize, AssignControlEventsGivesTrueOnlyWhenHooking) {
    auto* other = new QWidget(&host);
    EXPECT_TRUE(mr.AssignControlEvents(other, false));
    EXPECT_TRUE(HasMouseHook(other));
    EXPECT_FALSE(mr.AssignControlEvents(other, true));
    EXPECT_FALSE(HasMouseHook(other));
    EXPECT_FALSE(mr.AssignControlEvents(nullptr, false));
}

TEST_F(MoveResize, HookedButtonDoesNotClickAndClicksAgainWhenReleased) {
    auto* button = new QPushButton(QStringLiteral("Go"), &host);
    button->setGeometry(200, 100, 80, 30);
    button->show();
    QSignalSpy clicked(button, &QPushButton::clicked);
    ASSERT_TRUE(mr.AssignControlEvents(button, false));
    Press(button, QPoint(10, 10));
    ReleaseAt(button, button->mapToGlobal(QPoint(10, 10)));
    EXPECT_EQ(clicked.count(), 0);
    EXPECT_EQ(mr.GetCurrentNodeControl(), button);
    EXPECT_FALSE(mr.AssignControlEvents(button, true));
    Press(button, QPoint(10, 10));
    ReleaseAt(button, button->mapToGlobal(QPoint(10, 10)));
    EXPECT_EQ(clicked.count(), 1);
}

TEST_F(MoveResize, AssignControlEventsOverwritesHandlersAlreadyThere) {
    auto* other = new QWidget(&host);
    other->setGeometry(200, 100, 50, 50);
    int ownDowns = 0;
    TMouseHandlers own;
    own.OnMouseDown = [&](QObject*, TMouseButton, TShiftState, int, int) { ++ownDowns; };
    SetMouseHandlers(other, own);
    ASSERT_TRUE(mr.AssignControlEvents(other, false));
    Press(other, QPoint(5, 5));
    EXPECT_EQ(ownDowns, 0);
    EXPECT_TRUE(mr.GetInResizeMode());
    ReleaseAt(other, other->mapToGlobal(QPoint(5, 5)));
}

// ---- moving a control ----

TEST_F(MoveResize, PressCapturesShowsTheHandlesAndMakesTheControlCurrent) {
    Press(edit, QPoint(10, 10));
    EXPECT_TRUE(mr.GetInResizeMode());
    EXPECT_EQ(input.Captured, edit);
    EXPECT_EQ(input.Log, QStringList({"Capture edit"}));
    EXPECT_EQ(mr.GetCurrentNodeControl(), edit);
    EXPECT_EQ(mr.OldPos(), (TPoint{100 + 60, 50 + 50}));
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(Node(i)->isVisible()) << i;
    EXPECT_EQ(Node(0)->pos(), QPoint(48, 38));
    EXPECT_EQ(Node(4)->pos(), QPoint(108, 68));
    ReleaseAt(edit, Screen(60, 50));
}

TEST_F(MoveResize, AnyButtonAndShiftStateStartsAMove) {
    Press(edit, QPoint(10, 10), Qt::RightButton, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_TRUE(mr.GetInResizeMode());
    ReleaseAt(edit, Screen(60, 50), Qt::RightButton);
    EXPECT_FALSE(mr.GetInResizeMode());
}

TEST_F(MoveResize, ControlMovesByTheCursorDeltaAndHandlesFollow) {
    Press(edit, QPoint(10, 10)); // screen (160, 100)
    MoveTo(edit, Screen(60 + 15, 50 - 7));
    EXPECT_EQ(edit->pos(), QPoint(65, 33));
    EXPECT_EQ(edit->size(), QSize(60, 30));
    EXPECT_EQ(Node(0)->pos(), QPoint(63, 31));
    EXPECT_EQ(Node(5)->pos(), QPoint(65 + 30 - 2, 33 + 30 - 2));
    EXPECT_EQ(input.Cursor, crSizeAll);
    MoveTo(edit, Screen(60 + 15 - 40, 50 - 7 + 100));
    EXPECT_EQ(edit->pos(), QPoint(25, 133));
    EXPECT_EQ(mr.OldPos(), (TPoint{100 + 35, 50 + 143}));
    EXPECT_TRUE(mr.GetInResizeMode());
    ReleaseAt(edit, Screen(35, 143));
    EXPECT_FALSE(mr.GetInResizeMode());
    EXPECT_EQ(input.Cursor, crDefault);
    EXPECT_EQ(input.Captured, nullptr);
    EXPECT_EQ(input.Log,
              QStringList({"Capture edit", "Cursor -22", "Cursor -22", "Cursor 0", "Release"}));
    EXPECT_EQ(mr.GetCurrentNodeControl(), edit);
    EXPECT_TRUE(Node(0)->isVisible());
}

TEST_F(MoveResize, FirstOnePixelMoveAlreadyMovesTheControl) {
    Press(edit, QPoint(10, 10));
    MoveTo(edit, Screen(61, 50));
    EXPECT_EQ(edit->pos(), QPoint(51, 40));
    ReleaseAt(edit, Screen(61, 50));
}

TEST_F(MoveResize, ControlMayBeDraggedOutsideItsParent) {
    Press(edit, QPoint(10, 10));
    MoveTo(edit, Screen(-200, -100));
    EXPECT_EQ(edit->pos(), QPoint(50 - 260, 40 - 150));
    EXPECT_EQ(Node(0)->pos(), QPoint(-212, -112));
    MoveTo(edit, Screen(900, 700));
    EXPECT_EQ(edit->pos(), QPoint(890, 690));
    ReleaseAt(edit, Screen(900, 700));
}

TEST_F(MoveResize, MouseMoveWithoutAPressDoesNothing) {
    mr.ControlMouseMove(edit, 0, 0, 0);
    SetCursor(Screen(300, 300));
    mr.ControlMouseMove(edit, 0, 0, 0);
    mr.ControlMouseUp(edit, mbLeft, 0, 0, 0);
    EXPECT_EQ(edit->pos(), QPoint(50, 40));
    EXPECT_TRUE(input.Log.isEmpty());
    EXPECT_TRUE(Node(0)->isHidden());
}

TEST_F(MoveResize, DisabledPressNeitherCapturesNorShowsHandles) {
    mr.SetEnableMoveResize(false);
    Press(edit, QPoint(10, 10));
    EXPECT_FALSE(mr.GetInResizeMode());
    EXPECT_EQ(input.Captured, nullptr);
    MoveTo(edit, Screen(200, 200));
    ReleaseAt(edit, Screen(200, 200));
    EXPECT_TRUE(input.Log.isEmpty());
    EXPECT_EQ(edit->pos(), QPoint(50, 40));
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(Node(i)->isHidden()) << i;
}

TEST_F(MoveResize, DisablingDuringAMoveLetsItRunToItsMouseUp) {
    Press(edit, QPoint(10, 10));
    mr.SetEnableMoveResize(false);
    MoveTo(edit, Screen(70, 60));
    EXPECT_EQ(edit->pos(), QPoint(60, 50));
    ReleaseAt(edit, Screen(70, 60));
    EXPECT_FALSE(mr.GetInResizeMode());
    EXPECT_EQ(input.Log.last(), QStringLiteral("Release"));
}

TEST_F(MoveResize, PressOnAGraphicControlIsIgnored) {
    auto* g = new TGraphicControl(&host);
    g->setGeometry(200, 100, 40, 40);
    g->show();
    EXPECT_TRUE(mr.AssignControlEvents(g, false));
    EXPECT_FALSE(g->MouseHandlers.Empty());
    // The press reaches the control through its parent, as a user's mouse does.
    ASSERT_EQ(TGraphicHost::Find(&host)->ControlAt(g->mapToParent(QPoint(5, 5))), g);
    Press(&host, g->mapToParent(QPoint(5, 5)));
    EXPECT_FALSE(mr.GetInResizeMode());
    EXPECT_TRUE(input.Log.isEmpty());
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
    ReleaseAt(&host, g->mapToGlobal(QPoint(5, 5)));
}

// ---- resizing through a handle ----

namespace {
struct HandleDrag {
    int Index;
    TBounds Expected; // the control was (50, 40) 60 x 30: edges 50, 40, 110, 70
};
} // namespace

TEST_F(MoveResize, EachHandleMovesItsOwnEdgesOnly) {
    // Each handle is dragged 4 right and 3 down from its centre.
    const std::array<HandleDrag, 8> drags = {{
        {0, {54, 43, 56, 27}}, // left and top
        {1, {50, 43, 60, 27}}, // top
        {2, {50, 43, 64, 27}}, // right and top
        {3, {50, 40, 64, 30}}, // right
        {4, {50, 40, 64, 33}}, // right and bottom
        {5, {50, 40, 60, 33}}, // bottom
        {6, {54, 40, 56, 33}}, // left and bottom
        {7, {54, 40, 56, 30}}, // left
    }};
    for (const HandleDrag& d : drags) {
        SCOPED_TRACE(d.Index);
        edit->setGeometry(50, 40, 60, 30);
        mr.Bounds.clear();
        input.Log.clear();
        mr.PositionNodes(edit);
        TPanel* n = Node(d.Index);
        Press(n, QPoint(2, 2));
        EXPECT_TRUE(mr.NodePositioning());
        EXPECT_FALSE(mr.GetInResizeMode());
        MoveTo(n, n->mapToGlobal(QPoint(2 + 4, 2 + 3)));
        ASSERT_EQ(mr.Bounds.size(), 1u);
        EXPECT_EQ(mr.Bounds[0], d.Expected);
        EXPECT_EQ(Geometry(edit), d.Expected);
        // All handles are placed again around the new bounds, the dragged one included.
        EXPECT_EQ(Node(0)->pos(), QPoint(d.Expected[0] - 2, d.Expected[1] - 2));
        EXPECT_EQ(Node(4)->pos(),
                  QPoint(d.Expected[0] + d.Expected[2] - 2, d.Expected[1] + d.Expected[3] - 2));
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(Node(i)->pos(), HandlePlace(d.Expected, i)) << i;
        ReleaseAt(n, QPoint(input.Pos.X, input.Pos.Y));
        EXPECT_FALSE(mr.NodePositioning());
        EXPECT_EQ(input.Log, QStringList({QStringLiteral("Capture _Node_%1").arg(d.Index),
                                          "Cursor 0", "Release"}));
    }
}

TEST_F(MoveResize, DraggingTheTopHandleChangesOnlyTopAndHeight) {
    mr.PositionNodes(edit);
    TPanel* n = Node(1);
    Press(n, QPoint(2, 2));
    MoveTo(n, Screen(123, 25)); // far to the right: the left and right edges must not follow
    ASSERT_EQ(mr.Bounds.size(), 1u);
    EXPECT_EQ(mr.Bounds[0], (TBounds{50, 25, 60, 45}));
    EXPECT_EQ(Geometry(edit), (TBounds{50, 25, 60, 45}));
    ReleaseAt(n, Screen(123, 25));
}

TEST_F(MoveResize, DraggingTopLeftPastTheOppositeCornerPassesNegativeSizesOn) {
    mr.PositionNodes(edit);
    TPanel* n = Node(0);
    Press(n, QPoint(2, 2));
    MoveTo(n, Screen(130, 95)); // right of and below the bottom-right corner (110, 70)
    ASSERT_EQ(mr.Bounds.size(), 1u);
    EXPECT_EQ(mr.Bounds[0], (TBounds{130, 95, -20, -25}));
    // What a negative size means is the platform's affair: plain Qt keeps the place and clamps
    // the size to nothing.
    EXPECT_EQ(Geometry(edit), (TBounds{130, 95, 0, 0}));
    ReleaseAt(n, Screen(130, 95));
}

TEST_F(MoveResize, DraggingAnEdgeOntoTheOppositeOneGivesZeroWidth) {
    mr.PositionNodes(edit);
    TPanel* n = Node(7);
    Press(n, QPoint(2, 2));
    MoveTo(n, Screen(110, 55));
    ASSERT_EQ(mr.Bounds.size(), 1u);
    EXPECT_EQ(mr.Bounds[0], (TBounds{110, 40, 0, 30}));
    ReleaseAt(n, Screen(110, 55));
}

TEST_F(MoveResize, EdgeFollowsTheCursorAbsolutelyNotByDelta) {
    mr.PositionNodes(edit);
    TPanel* n = Node(3);
    // Grabbed off-centre: the edge still goes to the cursor itself, not by the cursor's travel.
    Press(n, QPoint(0, 4)); // screen of client (108, 57)
    MoveTo(n, Screen(150, 57));
    MoveTo(n, Screen(140, 300));
    ASSERT_EQ(mr.Bounds.size(), 2u);
    EXPECT_EQ(mr.Bounds[0], (TBounds{50, 40, 100, 30}));
    EXPECT_EQ(mr.Bounds[1], (TBounds{50, 40, 90, 30}));
    EXPECT_EQ(mr.OldPos(), (TPoint{100 + 140, 50 + 300}));
    ReleaseAt(n, Screen(140, 300));
}

TEST_F(MoveResize, ResizingLogsCaptureAndReleaseAndNeverShowsTheMoveCursor) {
    mr.PositionNodes(edit);
    TPanel* n = Node(4);
    Press(n, QPoint(2, 2));
    EXPECT_EQ(input.Captured, n);
    MoveTo(n, Screen(130, 90));
    EXPECT_FALSE(mr.GetInResizeMode());
    EXPECT_TRUE(mr.NodePositioning());
    ReleaseAt(n, Screen(130, 90));
    EXPECT_EQ(input.Log, QStringList({"Capture _Node_4", "Cursor 0", "Release"}));
    EXPECT_EQ(input.Captured, nullptr);
    EXPECT_FALSE(mr.NodePositioning());
    EXPECT_EQ(Geometry(edit), (TBounds{50, 40, 80, 50}));
}

TEST_F(MoveResize, DisabledHandlePressStartsNoResize) {
    mr.PositionNodes(edit);
    mr.SetEnableMoveResize(false);
    TPanel* n = Node(4);
    Press(n, QPoint(2, 2));
    EXPECT_FALSE(mr.NodePositioning());
    MoveTo(n, Screen(130, 90));
    ReleaseAt(n, Screen(130, 90));
    EXPECT_TRUE(input.Log.isEmpty());
    EXPECT_TRUE(mr.Bounds.empty());
    EXPECT_EQ(Geometry(edit), (TBounds{50, 40, 60, 30}));
}

TEST_F(MoveResize, DisablingDuringAResizeLetsItRunToItsMouseUp) {
    mr.PositionNodes(edit);
    TPanel* n = Node(5);
    Press(n, QPoint(2, 2));
    mr.SetEnableMoveResize(false);
    MoveTo(n, Screen(80, 100));
    EXPECT_EQ(Geometry(edit), (TBounds{50, 40, 60, 60}));
    ReleaseAt(n, Screen(80, 100));
    EXPECT_FALSE(mr.NodePositioning());
}

TEST_F(MoveResize, MoveThenResizeThenMoveAgain) {
    Press(edit, QPoint(10, 10));
    MoveTo(edit, Screen(80, 70)); // by (20, 20)
    ReleaseAt(edit, Screen(80, 70));
    EXPECT_EQ(Geometry(edit), (TBounds{70, 60, 60, 30}));
    TPanel* n = Node(4);
    EXPECT_EQ(n->pos(), QPoint(128, 88));
    Press(n, QPoint(2, 2));
    MoveTo(n, Screen(150, 100));
    ReleaseAt(n, Screen(150, 100));
    EXPECT_EQ(Geometry(edit), (TBounds{70, 60, 80, 40}));
    Press(edit, QPoint(1, 1));
    MoveTo(edit, Screen(70, 60));
    ReleaseAt(edit, Screen(70, 60));
    EXPECT_EQ(Geometry(edit), (TBounds{69, 59, 80, 40}));
    EXPECT_EQ(Node(0)->pos(), QPoint(67, 57));
}

TEST_F(MoveResize, HandlePressedWithNoControlOnlyFollowsTheCursor) {
    mr.SetNodesVisible(true); // shown by hand: no control under the handles
    TPanel* n = Node(2);
    n->move(20, 30);
    Press(n, QPoint(2, 2)); // screen (122, 82)
    MoveTo(n, Screen(30, 35));
    EXPECT_TRUE(mr.Bounds.empty());
    EXPECT_EQ(n->pos(), QPoint(20 + 30 - 22, 30 + 35 - 32));
    EXPECT_EQ(Geometry(edit), (TBounds{50, 40, 60, 30}));
    ReleaseAt(n, Screen(30, 35));
}

TEST_F(MoveResize, NodeMoveFromSomethingNotAHandleMovesNoEdge) {
    mr.PositionNodes(edit);
    auto* stray = new QWidget(&host);
    stray->setGeometry(300, 200, 10, 10);
    SetCursor(Screen(305, 205));
    mr.NodeMouseDown(stray, mbLeft, 0, 5, 5);
    ASSERT_TRUE(mr.NodePositioning());
    SetCursor(Screen(310, 215));
    mr.NodeMouseMove(stray, 0, 0, 0);
    ASSERT_EQ(mr.Bounds.size(), 1u);
    EXPECT_EQ(mr.Bounds[0], (TBounds{50, 40, 60, 30}));
    // The sender itself still follows the cursor.
    EXPECT_EQ(stray->pos(), QPoint(305, 210));
    mr.NodeMouseUp(stray, mbLeft, 0, 0, 0);
    EXPECT_FALSE(mr.NodePositioning());
}

TEST_F(MoveResize, ControlDeletedWhileCarryingTheHandlesReadsAsNone) {
    Press(edit, QPoint(10, 10));
    ReleaseAt(edit, Screen(60, 50));
    ASSERT_EQ(mr.GetCurrentNodeControl(), edit);
    delete edit;
    edit = nullptr;
    EXPECT_EQ(mr.GetCurrentNodeControl(), nullptr);
    TPanel* n = Node(4);
    Press(n, QPoint(2, 2));
    MoveTo(n, Screen(200, 200));
    ReleaseAt(n, Screen(200, 200));
    EXPECT_TRUE(mr.Bounds.empty());
}

TEST(MoveResizeLifetime, HookedControlOutlivingTheModuleIsHarmless) {
    TScriptedInputState input;
    TScopedInputState guard(&input);
    QWidget host;
    host.setGeometry(100, 50, 200, 100);
    auto* c = new QWidget(&host);
    c->setGeometry(10, 10, 30, 30);
    host.show();
    {
        TdmMoveResize mr;
        mr.CreateNodes(&host, &host);
        ASSERT_TRUE(mr.AssignControlEvents(c, false));
    }
    input.Pos = {115, 65};
    QTest::mousePress(c, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    QTest::mouseMove(c, QPoint(25, 25));
    QTest::mouseRelease(c, Qt::LeftButton, Qt::NoModifier, QPoint(25, 25));
    EXPECT_TRUE(input.Log.isEmpty());
    EXPECT_EQ(c->pos(), QPoint(10, 10));
}

// ---- control and handles on different windows ----

TEST(MoveResizeTwoWindows, ResizeConvertsTheCursorIntoTheControlsParent) {
    TScriptedInputState input;
    TScopedInputState guard(&input);
    QWidget a;
    a.setGeometry(100, 50, 300, 200);
    auto* c = new QWidget(&a);
    c->setObjectName(QStringLiteral("c"));
    c->setGeometry(10, 20, 40, 30);
    QWidget b;
    b.setGeometry(300, 200, 300, 200);
    a.show();
    b.show();
    ASSERT_EQ(a.mapToGlobal(QPoint(0, 0)), QPoint(100, 50));
    ASSERT_EQ(b.mapToGlobal(QPoint(0, 0)), QPoint(300, 200));
    TRecordingMoveResize mr;
    mr.CreateNodes(&b, &b);
    ASSERT_TRUE(mr.AssignControlEvents(c, false));

    // Press the control on window a: handles appear on window b, around it in screen terms.
    input.Pos = {115, 75};
    QTest::mousePress(c, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    input.Pos = {125, 80};
    QTest::mouseMove(c, QPoint(15, 10));
    QTest::mouseRelease(c, Qt::LeftButton, Qt::NoModifier, QPoint(15, 10));
    EXPECT_EQ(c->pos(), QPoint(20, 25));
    TPanel* n4 = mr.Nodes()->Items(4);
    EXPECT_EQ(n4->parentWidget(), &b);
    // Bottom-right (60, 55) on a = screen (160, 105) = (-140, -95) on b, less 2.
    EXPECT_EQ(n4->pos(), QPoint(-142, -97));

    // Drag handle 4 (on b) to screen (190, 130) = (90, 80) on a.
    input.Pos = {158, 103};
    QTest::mousePress(n4, Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
    input.Pos = {190, 130};
    QTest::mouseMove(n4, n4->mapFromGlobal(QPoint(190, 130)));
    ASSERT_EQ(mr.Bounds.size(), 1u);
    EXPECT_EQ(mr.Bounds[0], (TBounds{20, 25, 70, 55}));
    EXPECT_EQ(n4->pos(), QPoint(90 + 100 - 300 - 2, 80 + 50 - 200 - 2));
    QTest::mouseRelease(n4, Qt::LeftButton, Qt::NoModifier, n4->mapFromGlobal(QPoint(190, 130)));
    EXPECT_EQ(input.Log, QStringList({"Capture c", "Cursor -22", "Cursor 0", "Release",
                                      "Capture _Node_4", "Cursor 0", "Release"}));
}
