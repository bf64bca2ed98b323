#include "modal_driver.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QToolButton>

using namespace vde;
using namespace vde::test;

namespace {

TfmEditSegmentParams* Form(QWidget* dialog) {
    auto* f = qobject_cast<TfmEditSegmentParams*>(dialog);
    EXPECT_NE(f, nullptr) << "the modal dialog is " << dialog->objectName().toStdString();
    return f;
}

// The label sits above its edit: same left edge, 3 pixels between them.
void ExpectLabelAbove(const TLabeledEdit* edit, const QString& caption) {
    const QLabel* label = edit->EditLabel();
    EXPECT_EQ(label->text(), caption);
    EXPECT_EQ(label->x(), edit->x());
    EXPECT_EQ(label->y() + label->height() + 3, edit->y());
    EXPECT_TRUE(label->isVisibleTo(edit->window()));
}

} // namespace

TEST(EditSegmentParamsForm, HasItsCaptionClientAreaAndControls) {
    TfmEditSegmentParams form(nullptr);
    EXPECT_EQ(form.windowTitle(), QStringLiteral("Edit Params"));
    EXPECT_EQ(form.ClientWidth(), 275);
    EXPECT_EQ(form.ClientHeight(), 120);

    auto* lbeSize = Child<TLabeledEdit>(&form, "lbeSize");
    auto* udSize = Child<TUpDown>(&form, "udSize");
    auto* lbeAngle = Child<TLabeledEdit>(&form, "lbeAngle");
    auto* udAngle = Child<TUpDown>(&form, "udAngle");
    auto* btnOk = Child<TDialogButton>(&form, "btnOk");
    auto* btnCancel = Child<TDialogButton>(&form, "btnCancel");
    ASSERT_TRUE(lbeSize && udSize && lbeAngle && udAngle && btnOk && btnCancel);

    EXPECT_EQ(lbeSize->geometry(), QRect(32, 32, 73, 21));
    ExpectLabelAbove(lbeSize, QStringLiteral("Size, pixels"));
    EXPECT_EQ(lbeSize->text(), QStringLiteral("10"));
    EXPECT_EQ(udSize->geometry(), QRect(105, 32, 16, 21));
    EXPECT_EQ(udSize->Associate(), lbeSize);
    EXPECT_EQ(udSize->Min(), 0);
    EXPECT_EQ(udSize->Max(), 500);
    EXPECT_EQ(udSize->Increment(), 10);
    EXPECT_EQ(udSize->Position(), 10);

    EXPECT_EQ(lbeAngle->geometry(), QRect(152, 32, 73, 21));
    ExpectLabelAbove(lbeAngle, QStringLiteral("Angle, degrees"));
    EXPECT_EQ(lbeAngle->text(), QStringLiteral("0"));
    EXPECT_EQ(udAngle->geometry(), QRect(225, 32, 16, 21));
    EXPECT_EQ(udAngle->Associate(), lbeAngle);
    EXPECT_EQ(udAngle->Min(), -180);
    EXPECT_EQ(udAngle->Max(), 180);
    EXPECT_EQ(udAngle->Increment(), 90);
    EXPECT_EQ(udAngle->Position(), 0);

    EXPECT_EQ(btnOk->geometry(), QRect(40, 72, 75, 25));
    EXPECT_EQ(btnOk->text(), QStringLiteral("Ok"));
    EXPECT_TRUE(btnOk->isDefault());
    EXPECT_EQ(btnOk->ModalResult(), 1);
    EXPECT_EQ(btnCancel->geometry(), QRect(152, 72, 75, 25));
    EXPECT_EQ(btnCancel->text(), QStringLiteral("Cancel"));
    EXPECT_FALSE(btnCancel->isDefault());
    EXPECT_EQ(btnCancel->ModalResult(), 2);
}

TEST(DialogFont, IsTahomaWhereInstalledOtherwiseDejaVuSansAt11Pixels) {
    const bool hasTahoma =
        QFontDatabase::families().contains(QStringLiteral("Tahoma"), Qt::CaseInsensitive);
    TfmEditSegmentParams form(nullptr);
    EXPECT_EQ(form.font().family(),
              hasTahoma ? QStringLiteral("Tahoma") : QStringLiteral("DejaVu Sans"));
    EXPECT_EQ(form.font().pixelSize(), 11);
    EXPECT_EQ(form.lbeSize->font().pixelSize(), 11);
    EXPECT_EQ(form.btnOk->font().family(), form.font().family());
}

TEST(EditSegmentParams, OkReturnsTheTypedSizeAndTheSteppedAngle) {
    TSegmentParamRec rec{40, 90, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("40"));
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("90"));
        TypeInto(f->lbeSize, QStringLiteral("120"));
        Click(f->udAngle->UpButton());
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("180"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 120);
    EXPECT_EQ(rec.Angle, 180);
    EXPECT_FALSE(rec.OnlySize);
}

TEST(EditSegmentParams, OpensWithTheSizeSelectedSoTypingReplacesIt) {
    TSegmentParamRec rec{40, 0, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(dialog->focusWidget(), f->lbeSize);
        QTest::keyClicks(f->lbeSize, QStringLiteral("77"));
        QTest::keyClick(f->lbeSize, Qt::Key_Return);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 77);
}

TEST(EditSegmentParams, SizeArrowsStepByTen) {
    TSegmentParamRec rec{10, 0, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->udSize->UpButton());
        Click(f->udSize->UpButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("30"));
        Click(f->udSize->DownButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("20"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 20);
    EXPECT_EQ(rec.Angle, 0);
}

TEST(EditSegmentParams, UpAndDownKeysInAnEditStepItsValue) {
    TSegmentParamRec rec{100, 0, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        QTest::keyClick(f->lbeAngle, Qt::Key_Down);
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("-90"));
        QTest::keyClick(f->lbeSize, Qt::Key_Up);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("110"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 110);
    EXPECT_EQ(rec.Angle, -90);
}

TEST(EditSegmentParams, SteppingStopsAtTheEndsOfTheRange) {
    TSegmentParamRec rec{495, -180, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->udSize->UpButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("500"));
        Click(f->udSize->UpButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("500"));
        Click(f->udAngle->DownButton());
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("-180"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 500);
    EXPECT_EQ(rec.Angle, -180);
}

TEST(EditSegmentParams, TypedValuesOutsideTheRangesAreClamped) {
    TSegmentParamRec rec{40, 0, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("900"));
        TypeInto(f->lbeAngle, QStringLiteral("-400"));
        // Leaving the size edit for the angle edit already shows the clamped size.
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("500"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 500);
    EXPECT_EQ(rec.Angle, -180);
}

TEST(EditSegmentParams, TypedValueBelowTheSizeRangeIsClampedToZero) {
    TSegmentParamRec rec{40, 0, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("-50"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 0);
}

TEST(EditSegmentParams, ValuesOutsideTheRangesAreShownClamped) {
    TSegmentParamRec rec{700, 225, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("500"));
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("180"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 500);
    EXPECT_EQ(rec.Angle, 180);
}

TEST(EditSegmentParams, AngleIsEnabledWithRange180WhenBothAreEdited) {
    TSegmentParamRec rec{40, 90, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_TRUE(f->lbeAngle->isEnabled());
        EXPECT_TRUE(f->udAngle->isEnabled());
        EXPECT_EQ(f->udAngle->Min(), -180);
        EXPECT_EQ(f->udAngle->Max(), 180);
        Click(f->btnCancel);
    });
    EXPECT_FALSE(EditSegmentParams(rec, QString(), Point(-1, -1)));
}

TEST(EditSegmentParams, OnlySizeDisablesTheAngleWidensItsRangeAndWritesItBackUnchanged) {
    TSegmentParamRec rec{50, 270, true};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_FALSE(f->lbeAngle->isEnabled());
        EXPECT_FALSE(f->lbeAngle->EditLabel()->isEnabled());
        EXPECT_FALSE(f->udAngle->isEnabled());
        EXPECT_EQ(f->udAngle->Min(), -360);
        EXPECT_EQ(f->udAngle->Max(), 360);
        // 270 lies outside the normal range and is shown as it is.
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("270"));
        Click(f->udAngle->UpButton()); // disabled: nothing happens
        EXPECT_EQ(f->lbeAngle->text(), QStringLiteral("270"));
        EXPECT_TRUE(f->lbeSize->isEnabled());
        TypeInto(f->lbeSize, QStringLiteral("60"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 60);
    EXPECT_EQ(rec.Angle, 270);
    EXPECT_TRUE(rec.OnlySize);
}

TEST(EditSegmentParams, CancelLeavesTheRecordUntouched) {
    TSegmentParamRec rec{40, 90, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("300"));
        Click(f->udAngle->DownButton());
        Click(f->btnCancel);
    });
    EXPECT_FALSE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 40);
    EXPECT_EQ(rec.Angle, 90);
    EXPECT_FALSE(rec.OnlySize);
}

TEST(EditSegmentParams, ClosingTheWindowLeavesTheRecordUntouched) {
    TSegmentParamRec rec{40, 90, true};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("300"));
        dialog->close();
    });
    EXPECT_FALSE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 40);
    EXPECT_EQ(rec.Angle, 90);
    EXPECT_TRUE(rec.OnlySize);
}

TEST(EditSegmentParams, EscapeCancels) {
    TSegmentParamRec rec{40, 90, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("300"));
        QTest::keyClick(f->lbeSize, Qt::Key_Escape);
    });
    EXPECT_FALSE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 40);
}

TEST(EditSegmentParams, EnterPressesTheDefaultOkButton) {
    TSegmentParamRec rec{40, 90, false};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeAngle, QStringLiteral("-90"));
        QTest::keyClick(f->lbeAngle, Qt::Key_Return);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 40);
    EXPECT_EQ(rec.Angle, -90);
}

TEST(EditSegmentParams, GivenCaptionReplacesEditParams) {
    TSegmentParamRec rec{40, 0, false};
    QString shown;
    WhenModalShown([&](QWidget* dialog) {
        shown = dialog->windowTitle();
        dialog->close();
    });
    EditSegmentParams(rec, QStringLiteral("Segment 2"), Point(-1, -1));
    EXPECT_EQ(shown, QStringLiteral("Segment 2"));
}

TEST(EditSegmentParams, EmptyCaptionKeepsEditParams) {
    TSegmentParamRec rec{40, 0, false};
    QString shown;
    WhenModalShown([&](QWidget* dialog) {
        shown = dialog->windowTitle();
        dialog->close();
    });
    EditSegmentParams(rec, QString(), Point(-1, -1));
    EXPECT_EQ(shown, QStringLiteral("Edit Params"));
}

TEST(EditSegmentParams, EventIsAcceptedButNotCalled) {
    TSegmentParamRec rec{40, 0, false};
    int calls = 0;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSegmentParams(rec, QString(), Point(-1, -1), [&](QObject*) { ++calls; }));
    EXPECT_EQ(calls, 0);
}

namespace {
// Where the dialog stood while it was shown for Pos, owned by a window at (100, 80, 600, 400).
QPoint ShownAt(TPoint pos) {
    OwnerWindow owner(100, 80, 600, 400);
    TSegmentParamRec rec{40, 0, false};
    QPoint at(-9999, -9999);
    WhenModalShown([&](QWidget* dialog) {
        EXPECT_EQ(dialog->parentWidget(), owner.Widget());
        at = dialog->frameGeometry().topLeft();
        dialog->close();
    });
    EditSegmentParams(rec, QString(), pos);
    return at;
}
// (600 - 275) / 2 + 100 and (400 - 120) / 2 + 80.
constexpr int CentredLeft = 262, CentredTop = 220;
} // namespace

TEST(EditSegmentParams, NegativePosCentresOnTheOwnerWindow) {
    EXPECT_EQ(ShownAt(Point(-1, -1)), QPoint(CentredLeft, CentredTop));
}

TEST(EditSegmentParams, PosYAloneSetsTheTopAndKeepsHorizontalCentring) {
    EXPECT_EQ(ShownAt(Point(-1, 200)), QPoint(CentredLeft, 200));
}

TEST(EditSegmentParams, PosXAloneSetsTheLeftAndKeepsVerticalCentring) {
    EXPECT_EQ(ShownAt(Point(30, -5)), QPoint(30, CentredTop));
}

TEST(EditSegmentParams, PosPlacesTheDialogExactly) {
    EXPECT_EQ(ShownAt(Point(0, 40)), QPoint(0, 40));
}

TEST(EditSegmentParams, WithoutAnOwnerWindowItIsCentredOnTheScreen) {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    TSegmentParamRec rec{40, 0, false};
    QPoint at;
    WhenModalShown([&](QWidget* dialog) {
        EXPECT_EQ(dialog->parentWidget(), nullptr);
        at = dialog->frameGeometry().topLeft();
        dialog->close();
    });
    EditSegmentParams(rec, QString(), Point(-1, -1));
    EXPECT_EQ(at, QPoint((screen.width() - 275) / 2, (screen.height() - 120) / 2));
}

TEST(DialogOwner, IsTheActiveWindowEvenWithAPopupUp) {
    OwnerWindow owner(100, 80, 600, 400);
    EXPECT_EQ(DialogOwner(), owner.Widget());
    QWidget popup(owner.Widget(), Qt::Popup);
    popup.setGeometry(150, 150, 80, 60);
    popup.show();
    QTest::qWait(20);
    EXPECT_EQ(DialogOwner(), owner.Widget());
}
