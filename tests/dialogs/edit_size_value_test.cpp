#include "modal_driver.h"
#include "velDiagEdit/dialogs/edit_size_value.h"

#include <QLabel>
#include <QToolButton>

using namespace vde;
using namespace vde::test;

namespace {

TfmEditSizeValue* Form(QWidget* dialog) {
    auto* f = qobject_cast<TfmEditSizeValue*>(dialog);
    EXPECT_NE(f, nullptr) << "the modal dialog is " << dialog->objectName().toStdString();
    return f;
}

} // namespace

TEST(EditSizeValueForm, HasItsCaptionClientAreaAndControls) {
    TfmEditSizeValue form(nullptr);
    EXPECT_EQ(form.windowTitle(), QStringLiteral("Edit Size"));
    EXPECT_EQ(form.ClientWidth(), 325);
    EXPECT_EQ(form.ClientHeight(), 74);

    auto* lbeSize = Child<TLabeledEdit>(&form, "lbeSize");
    auto* udSize = Child<TUpDown>(&form, "udSize");
    auto* btnOk = Child<TDialogButton>(&form, "btnOk");
    auto* btnCancel = Child<TDialogButton>(&form, "btnCancel");
    ASSERT_TRUE(lbeSize && udSize && btnOk && btnCancel);

    EXPECT_EQ(lbeSize->geometry(), QRect(32, 32, 75, 21));
    EXPECT_EQ(lbeSize->EditLabel()->text(), QStringLiteral("Value"));
    EXPECT_EQ(lbeSize->EditLabel()->x(), 32);
    EXPECT_EQ(lbeSize->EditLabel()->y() + lbeSize->EditLabel()->height() + 3, 32);
    EXPECT_EQ(lbeSize->text(), QStringLiteral("10"));
    EXPECT_EQ(udSize->geometry(), QRect(107, 32, 16, 21));
    EXPECT_EQ(udSize->Associate(), lbeSize);
    EXPECT_EQ(udSize->Min(), 0);
    EXPECT_EQ(udSize->Max(), 500);
    EXPECT_EQ(udSize->Increment(), 10);
    EXPECT_EQ(udSize->Position(), 10);
    EXPECT_EQ(btnOk->geometry(), QRect(136, 30, 75, 25));
    EXPECT_EQ(btnOk->text(), QStringLiteral("Ok"));
    EXPECT_TRUE(btnOk->isDefault());
    EXPECT_EQ(btnOk->ModalResult(), 1);
    EXPECT_EQ(btnCancel->geometry(), QRect(224, 30, 75, 25));
    EXPECT_EQ(btnCancel->text(), QStringLiteral("Cancel"));
    EXPECT_EQ(btnCancel->ModalResult(), 2);
}

TEST(EditSizeValueForm, AcceptParamsSetsRangeIncrementAndPosition) {
    TfmEditSizeValue form(nullptr);
    form.AcceptParams({12, 4, 30, 1}, QString(), Point(-1, -1));
    EXPECT_EQ(form.udSize->Min(), 4);
    EXPECT_EQ(form.udSize->Max(), 30);
    EXPECT_EQ(form.udSize->Increment(), 1);
    EXPECT_EQ(form.udSize->Position(), 12);
    EXPECT_EQ(form.lbeSize->text(), QStringLiteral("12"));
    TSizeParamRec rec{0, 1, 2, 3};
    form.SaveParams(rec);
    EXPECT_EQ(rec.Size, 12);
    EXPECT_EQ(rec.AMin, 1); // only the size is written back
    EXPECT_EQ(rec.AMax, 2);
    EXPECT_EQ(rec.AInc, 3);
}

TEST(EditSizeValue, SizeAboveTheRangeShowsTheMaximumAndReturnsIt) {
    TSizeParamRec rec{700, 0, 500, 10};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("500"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 500);
}

TEST(EditSizeValue, IntegerFormWithSizeAboveTheRangeReturnsTheMaximum) {
    int32_t size = 700;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("500"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 0, 500, 10, QString()));
    EXPECT_EQ(size, 500);
}

TEST(EditSizeValue, SizeBelowTheRangeShowsTheMinimum) {
    TSizeParamRec rec{2, 4, 30, 1};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("4"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 4);
}

TEST(EditSizeValue, ArrowAndKeyStepByTheIncrement) {
    int32_t size = 10;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->udSize->UpButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("11"));
        QTest::keyClick(f->lbeSize, Qt::Key_Up);
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("12"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 4, 30, 1, QStringLiteral("Input Count")));
    EXPECT_EQ(size, 12);
}

TEST(EditSizeValue, SteppingTakesInTheTypedValueFirst) {
    int32_t size = 10;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("37"));
        Click(f->udSize->DownButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("27"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 0, 500, 10, QString()));
    EXPECT_EQ(size, 27);
}

TEST(EditSizeValue, SteppingStopsAtTheMaximum) {
    int32_t size = 29;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->udSize->UpButton());
        Click(f->udSize->UpButton());
        EXPECT_EQ(f->lbeSize->text(), QStringLiteral("30"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 4, 30, 1, QString()));
    EXPECT_EQ(size, 30);
}

TEST(EditSizeValue, TypedValueAboveTheRangeIsClamped) {
    int32_t size = 150; // a marker position: the range is 150 +- 100
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("400"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 50, 250, 1, QString()));
    EXPECT_EQ(size, 250);
}

TEST(EditSizeValue, TypedValueBelowTheRangeIsClamped) {
    int32_t size = 150;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("10"));
        QTest::keyClick(f->lbeSize, Qt::Key_Return);
    });
    EXPECT_TRUE(EditSizeValue(size, 50, 250, 1, QString()));
    EXPECT_EQ(size, 50);
}

TEST(EditSizeValue, HugeTypedNumberIsClampedToTheMaximum) {
    int32_t size = 5;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("99999999999999999999999"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 0, 30, 1, QString()));
    EXPECT_EQ(size, 30);
}

TEST(EditSizeValue, TextThatIsNotANumberKeepsTheLastValue) {
    int32_t size = 17;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("abc"));
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 0, 30, 1, QString()));
    EXPECT_EQ(size, 17);
}

TEST(EditSizeValue, CancelLeavesTheRecordUntouched) {
    TSizeParamRec rec{700, 0, 500, 10};
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        TypeInto(f->lbeSize, QStringLiteral("20"));
        Click(f->btnCancel);
    });
    EXPECT_FALSE(EditSizeValue(rec, QString(), Point(-1, -1)));
    EXPECT_EQ(rec.Size, 700);
    EXPECT_EQ(rec.AMin, 0);
    EXPECT_EQ(rec.AMax, 500);
    EXPECT_EQ(rec.AInc, 10);
}

TEST(EditSizeValue, IntegerFormCancelLeavesTheSizeUntouched) {
    int32_t size = 7;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->udSize->UpButton());
        Click(f->btnCancel);
    });
    EXPECT_FALSE(EditSizeValue(size, 4, 30, 1, QString()));
    EXPECT_EQ(size, 7);
}

TEST(EditSizeValue, ClosingTheWindowLeavesTheSizeUntouched) {
    int32_t size = 7;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->udSize->UpButton());
        dialog->close();
    });
    EXPECT_FALSE(EditSizeValue(size, 4, 30, 1, QString()));
    EXPECT_EQ(size, 7);
}

TEST(EditSizeValue, GivenCaptionReplacesEditSize) {
    int32_t size = 7;
    QString shown;
    WhenModalShown([&](QWidget* dialog) {
        shown = dialog->windowTitle();
        dialog->close();
    });
    EditSizeValue(size, 4, 30, 1, QStringLiteral("Horiz Margin"));
    EXPECT_EQ(shown, QStringLiteral("Horiz Margin"));
}

TEST(EditSizeValue, EmptyCaptionKeepsEditSize) {
    int32_t size = 7;
    QString shown;
    WhenModalShown([&](QWidget* dialog) {
        shown = dialog->windowTitle();
        dialog->close();
    });
    EditSizeValue(size, 4, 30, 1, QString());
    EXPECT_EQ(shown, QStringLiteral("Edit Size"));
}

namespace {
// Owner at (100, 80, 600, 400): (600 - 325) / 2 + 100 and (400 - 74) / 2 + 80.
constexpr int CentredLeft = 237, CentredTop = 243;

QPoint ShownAt(const std::function<void()>& open) {
    OwnerWindow owner(100, 80, 600, 400);
    QPoint at(-9999, -9999);
    WhenModalShown([&](QWidget* dialog) {
        at = dialog->frameGeometry().topLeft();
        dialog->close();
    });
    open();
    return at;
}
} // namespace

TEST(EditSizeValue, PosYAloneSetsTheTopAndKeepsHorizontalCentring) {
    TSizeParamRec rec{10, 0, 500, 10};
    EXPECT_EQ(ShownAt([&] { EditSizeValue(rec, QString(), Point(-1, 200)); }),
              QPoint(CentredLeft, 200));
}

TEST(EditSizeValue, PosXAloneSetsTheLeftAndKeepsVerticalCentring) {
    TSizeParamRec rec{10, 0, 500, 10};
    EXPECT_EQ(ShownAt([&] { EditSizeValue(rec, QString(), Point(50, -1)); }),
              QPoint(50, CentredTop));
}

TEST(EditSizeValue, IntegerFormIsCentredOnTheOwnerWindow) {
    int32_t size = 10;
    EXPECT_EQ(ShownAt([&] { EditSizeValue(size, 0, 30, 1, QString()); }),
              QPoint(CentredLeft, CentredTop));
}

TEST(EditSizeValue, EventIsAcceptedButNotCalled) {
    int calls = 0;
    int32_t size = 10;
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->btnOk);
    });
    EXPECT_TRUE(EditSizeValue(size, 0, 30, 1, QString(), [&](QObject*) { ++calls; }));
    EXPECT_EQ(calls, 0);
}
