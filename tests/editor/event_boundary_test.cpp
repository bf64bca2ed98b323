// Errors raised inside handlers the library installs (mouse, paint, menu) stop at one boundary
// and reach the user as an error message; the program and the diagram carry on.

#include "common/mouse_util.h"
#include "editor_test_util.h"

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QCoreApplication>
#include <QTest>

using namespace vde;
using namespace vde::test;

TEST_F(EditorFixture, AMouseHandlerThatThrowsShowsTheErrorsTextAndTheEventGoesNoFurther) {
    Show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    QWidget target(&panel);
    target.setGeometry(10, 10, 50, 50);
    target.show();
    int calls = 0;
    TMouseHandlers h;
    h.OnMouseUp = [&](QObject*, TMouseButton, TShiftState, int, int) {
        ++calls;
        throw EConvertError(QStringLiteral("'x' is not a valid integer value"));
    };
    SetMouseHandlers(&target, h);
    dialogs.Expect(TDialogAnswer::Error());
    const int before = EventBoundaryErrorCount();
    vde::test::MouseClick(&target, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    EXPECT_EQ(calls, 1);
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Kind, dkErrorMessageDlg);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("'x' is not a valid integer value"));
    EXPECT_EQ(EventBoundaryErrorCount(), before + 1);
    // The next event is handled as usual.
    dialogs.Expect(TDialogAnswer::Error());
    vde::test::MouseClick(&target, Qt::LeftButton, Qt::NoModifier, QPoint(6, 6));
    EXPECT_EQ(calls, 2);
    SetMouseHandlers(&target, {});
}

TEST_F(EditorFixture, APaintHandlerThatThrowsIsReportedOnceThePaintIsOver) {
    QWidget host;
    host.resize(50, 50);
    SetPaintHandler(
        &host, [] { throw EInvalidOperation(QStringLiteral("Canvas does not allow drawing")); });
    QImage img(50, 50, QImage::Format_ARGB32);
    host.render(&img);
    // No dialog opens inside the paint.
    EXPECT_TRUE(dialogs.Asked().empty());
    dialogs.Expect(TDialogAnswer::Error());
    QCoreApplication::processEvents();
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("Canvas does not allow drawing"));
    SetPaintHandler(&host, {});
}

TEST_F(EditorFixture, AMenuItemWhoseHandlerThrowsShowsTheErrorAndTheMenuStillWorks) {
    auto* item = new TMenuItem(nullptr);
    item->SetName(QStringLiteral("mnuBroken"));
    int calls = 0;
    item->OnClick = [&](QObject*) {
        ++calls;
        throw EListError(QStringLiteral("List index out of bounds (7)"));
    };
    menuObjects.Add(item);
    menuObjects.Popup(10, 20);
    dialogs.Expect(TDialogAnswer::Error());
    ASSERT_TRUE(popups.Click(QStringLiteral("mnuBroken")));
    EXPECT_EQ(calls, 1);
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("List index out of bounds (7)"));
}

TEST_F(EditorFixture, AnErrorInTheContainersBlockHandlerLeavesTheDiagramWorking) {
    Show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    TDiagObject* gate = AndGate(*dc->ObjList, 100, 50);
    dc->SetDesignMode(true);
    // A block whose bounds callback fails on the first drag step.
    gate->SetOnModifyBounds(
        [](QObject*) { throw EInvalidOperation(QStringLiteral("Cannot move")); });
    input.Shift = ssShift;
    input.Pos = Screen({120, 60});
    vde::test::MousePress(gate, Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
    dialogs.Expect(TDialogAnswer::Error());
    input.Pos = {input.Pos.X + 5, input.Pos.Y};
    vde::test::MouseMove(gate, QPoint(25, 10));
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("Cannot move"));
    // The step moved the block before the callback failed; the release still ends the drag.
    EXPECT_EQ(gate->x(), 105);
    vde::test::MouseRelease(gate, Qt::LeftButton, Qt::NoModifier, QPoint(25, 10));
    EXPECT_EQ(dc->FResizeMode, kDragNone);
    EXPECT_EQ(input.Cursor, crDefault);
    gate->SetOnModifyBounds({});
    input.Shift = 0;
    vde::test::MouseClick(gate, Qt::LeftButton, Qt::NoModifier, QPoint(30, 50));
    EXPECT_TRUE(gate->GetSelected());
}

TEST(EventErrorText, NamesTheTypedErrorsMessageOrTheStandardErrorsWhat) {
    EXPECT_EQ(
        EventErrorText(std::make_exception_ptr(EReadError(QStringLiteral("Stream read error")))),
        QStringLiteral("Stream read error"));
    EXPECT_EQ(EventErrorText(std::make_exception_ptr(std::runtime_error("boom"))),
              QStringLiteral("boom"));
    EXPECT_EQ(EventErrorText(std::make_exception_ptr(42)), QStringLiteral("Unknown error"));
}

TEST(EventBoundary, AFailingDialogServiceDoesNotLetTheErrorOut) {
    // A scripted service with no answer fails the prompt itself: the boundary still holds.
    TScriptedDialogService empty;
    TScopedDialogService guard(&empty);
    EXPECT_NO_THROW(
        RunInEventBoundary("mouse", [] { throw EConvertError(QStringLiteral("bad")); }));
    ASSERT_EQ(empty.Asked().size(), 1u);
    EXPECT_EQ(empty.Asked()[0].Text, QStringLiteral("bad"));
    EXPECT_EQ(empty.Failures().size(), 1);
}
