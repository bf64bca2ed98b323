#pragma once
// Drives a modal dialog as a user would: the code under test opens it and blocks in its event
// loop; the driver runs from inside that loop once the dialog is shown. A dialog the driver
// leaves open fails the test and is closed, so that no test hangs.

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <gtest/gtest.h>

namespace vde::test {

inline void WhenModalShown(std::function<void(QWidget*)> drive, int waitedMs = 0) {
    QTimer::singleShot(10, [drive = std::move(drive), waitedMs]() mutable {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog || !dialog->isVisible()) {
            if (waitedMs > 5000) {
                ADD_FAILURE() << "no modal dialog was shown";
                return;
            }
            WhenModalShown(std::move(drive), waitedMs + 10);
            return;
        }
        QPointer<QWidget> guard(dialog);
        // Focus and keyboard behave as for a user only once the window is active.
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog)) << "the dialog never became active";
        if (!guard)
            return;
        drive(dialog);
        QTimer::singleShot(3000, [guard] {
            if (!guard || !guard->isVisible())
                return;
            ADD_FAILURE() << "the dialog " << guard->objectName().toStdString() << " was left open";
            if (auto* d = qobject_cast<QDialog*>(guard.data()))
                d->reject();
            else
                guard->close();
        });
    });
}

// A named child of the dialog; a missing one fails the test.
template <class T> T* Child(QWidget* parent, const char* name) {
    T* w = parent->findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << "no " << name << " in " << parent->objectName().toStdString();
    return w;
}

// Replaces the text of an edit by typing, as a user who first selects everything.
inline void TypeInto(QLineEdit* edit, const QString& text) {
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, text);
}

// A click in the middle of a button; a radio button is clicked on its circle, at its left.
inline void Click(QAbstractButton* button) {
    const bool radio = button->inherits("QRadioButton");
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier,
                      radio ? QPoint(6, button->height() / 2) : button->rect().center());
}

// A visible, active window that the dialogs are centred on.
class OwnerWindow {
public:
    OwnerWindow(int left, int top, int width, int height) {
        FWindow.setObjectName(QStringLiteral("Owner"));
        FWindow.setGeometry(left, top, width, height);
        FWindow.show();
        FWindow.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&FWindow));
    }
    QWidget* Widget() { return &FWindow; }
    QRect Frame() const { return FWindow.frameGeometry(); }

private:
    QWidget FWindow;
};

} // namespace vde::test
