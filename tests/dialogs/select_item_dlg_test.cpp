#include "modal_driver.h"
#include "velDiagEdit/dialogs/select_item_dlg.h"

#include <QGuiApplication>
#include <QRadioButton>
#include <QScreen>

using namespace vde;
using namespace vde::test;

namespace {

TfmSelectItem* Form(QWidget* dialog) {
    auto* f = qobject_cast<TfmSelectItem*>(dialog);
    EXPECT_NE(f, nullptr) << "the modal dialog is " << dialog->objectName().toStdString();
    return f;
}

const QStringList Three = {QStringLiteral("Direct"), QStringLiteral("Inversion"),
                           QStringLiteral("Arrow")};

// The item checked while the dialog is shown with Default, and the result of OK.
std::pair<int, int> CheckedAndResult(int Default) {
    int checked = -2;
    WhenModalShown([&](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        checked = f->RadioGroup1->ItemIndex();
        Click(f->bbOk);
    });
    const int result = SelectItemFromArray(QStringLiteral("Select marker type"), Three, Default);
    return {checked, result};
}

} // namespace

TEST(SelectItemForm, HasItsCaptionClientAreaAndControlsUntilSet) {
    TfmSelectItem form(nullptr);
    EXPECT_EQ(form.windowTitle(), QStringLiteral("fmSelectItem"));
    EXPECT_EQ(form.ClientWidth(), 209);
    EXPECT_EQ(form.ClientHeight(), 135);
    auto* group = Child<TRadioGroup>(&form, "RadioGroup1");
    auto* bbOk = Child<TDialogButton>(&form, "bbOk");
    auto* bbCancel = Child<TDialogButton>(&form, "bbCancel");
    ASSERT_TRUE(group && bbOk && bbCancel);
    EXPECT_EQ(group->geometry(), QRect(8, 1, 185, 97));
    EXPECT_EQ(group->Count(), 0);
    EXPECT_EQ(bbOk->geometry(), QRect(16, 104, 75, 25));
    EXPECT_EQ(bbOk->text(), QStringLiteral("OK"));
    EXPECT_TRUE(bbOk->isDefault());
    EXPECT_EQ(bbOk->ModalResult(), 1);
    EXPECT_EQ(bbCancel->geometry(), QRect(112, 104, 75, 25));
    EXPECT_EQ(bbCancel->text(), QStringLiteral("Отмена"));
    EXPECT_EQ(bbCancel->ModalResult(), 2);
}

TEST(SelectItemFromArray, ThreeItemsGiveAGroupOf99AndButtonsBelowIt) {
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Select marker type"));
        EXPECT_EQ(f->RadioGroup1->geometry(), QRect(8, 1, 185, 99));
        EXPECT_EQ(f->bbOk->geometry(), QRect(16, 106, 75, 25));
        EXPECT_EQ(f->bbCancel->geometry(), QRect(112, 106, 75, 25));
        EXPECT_EQ(f->ClientWidth(), 209);
        EXPECT_EQ(f->ClientHeight(), 138);
        EXPECT_EQ(f->RadioGroup1->Items(), Three);
        // The buttons stand in order, each inside the group.
        for (int i = 0; i < 3; ++i) {
            QRadioButton* b = f->RadioGroup1->Button(i);
            ASSERT_NE(b, nullptr);
            EXPECT_TRUE(f->RadioGroup1->rect().contains(b->geometry()));
            if (i > 0) {
                EXPECT_GT(b->y(), f->RadioGroup1->Button(i - 1)->y());
            }
        }
        Click(f->bbCancel);
    });
    SelectItemFromArray(QStringLiteral("Select marker type"), Three, 0);
}

struct LayoutCase {
    int Items;
    int GroupHeight;
    int ButtonTop;
    int ClientHeight;
};

class SelectItemLayout : public ::testing::TestWithParam<LayoutCase> {};

TEST_P(SelectItemLayout, Is33PixelsPerItemWithButtons6BelowAndClientHeightPlus39) {
    const LayoutCase c = GetParam();
    QStringList items;
    for (int i = 0; i < c.Items; ++i)
        items << QStringLiteral("Item %1").arg(i);
    WhenModalShown([&](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->RadioGroup1->height(), c.GroupHeight);
        EXPECT_EQ(f->bbOk->y(), c.ButtonTop);
        EXPECT_EQ(f->bbCancel->y(), c.ButtonTop);
        EXPECT_EQ(f->ClientHeight(), c.ClientHeight);
        EXPECT_EQ(f->RadioGroup1->Count(), c.Items);
        Click(f->bbCancel);
    });
    SelectItemFromArray(QStringLiteral("Pick"), items, 0);
}

INSTANTIATE_TEST_SUITE_P(ItemCounts, SelectItemLayout,
                         ::testing::Values(LayoutCase{1, 33, 40, 72}, LayoutCase{5, 165, 172, 204},
                                           LayoutCase{0, 0, 7, 39}),
                         [](const ::testing::TestParamInfo<LayoutCase>& param) {
                             return "Items" + std::to_string(param.param.Items);
                         });

TEST(SelectItemFromArray, DefaultBeyondTheItemsPreselectsTheFirst) {
    EXPECT_EQ(CheckedAndResult(5), std::make_pair(0, 0));
}

TEST(SelectItemFromArray, DefaultTwoPreselectsTheThirdItem) {
    EXPECT_EQ(CheckedAndResult(2), std::make_pair(2, 2));
}

TEST(SelectItemFromArray, NegativeDefaultPreselectsTheFirst) {
    EXPECT_EQ(CheckedAndResult(-1), std::make_pair(0, 0));
}

TEST(SelectItemFromArray, DefaultThreeOfThreeItemsPreselectsTheFirst) {
    EXPECT_EQ(CheckedAndResult(3), std::make_pair(0, 0));
}

TEST(SelectItemFromArray, OkReturnsTheItemClicked) {
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->RadioGroup1->Button(1));
        EXPECT_EQ(f->RadioGroup1->ItemIndex(), 1);
        Click(f->bbOk);
    });
    EXPECT_EQ(SelectItemFromArray(QStringLiteral("Pick"), Three, 0), 1);
}

TEST(SelectItemFromArray, CancelReturnsMinusOne) {
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->RadioGroup1->Button(2));
        Click(f->bbCancel);
    });
    EXPECT_EQ(SelectItemFromArray(QStringLiteral("Pick"), Three, 0), -1);
}

TEST(SelectItemFromArray, ClosingTheWindowReturnsMinusOne) {
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        Click(f->RadioGroup1->Button(2));
        dialog->close();
    });
    EXPECT_EQ(SelectItemFromArray(QStringLiteral("Pick"), Three, 0), -1);
}

TEST(SelectItemFromArray, EscapeReturnsMinusOne) {
    WhenModalShown([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    EXPECT_EQ(SelectItemFromArray(QStringLiteral("Pick"), Three, 1), -1);
}

TEST(SelectItemFromArray, TheCheckedItemHoldsTheFocusAndArrowKeysMoveTheChoice) {
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        QRadioButton* second = f->RadioGroup1->Button(1);
        EXPECT_EQ(dialog->focusWidget(), second);
        QTest::keyClick(second, Qt::Key_Down);
        EXPECT_EQ(f->RadioGroup1->ItemIndex(), 2);
        EXPECT_EQ(dialog->focusWidget(), f->RadioGroup1->Button(2));
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    });
    EXPECT_EQ(SelectItemFromArray(QStringLiteral("Pick"), Three, 1), 2);
}

TEST(SelectItemFromArray, WithNoItemsTheFocusMovesOnToOkAndOkReturnsMinusOne) {
    WhenModalShown([](QWidget* dialog) {
        auto* f = Form(dialog);
        ASSERT_TRUE(f);
        EXPECT_EQ(dialog->focusWidget(), f->bbOk);
        Click(f->bbOk);
    });
    EXPECT_EQ(SelectItemFromArray(QStringLiteral("Pick"), QStringList(), 0), -1);
}

TEST(SelectItemFromArray, IsCentredOnTheScreenNotOnTheOwnerWindow) {
    OwnerWindow owner(100, 80, 600, 400);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QPoint at;
    WhenModalShown([&](QWidget* dialog) {
        at = dialog->frameGeometry().topLeft();
        dialog->close();
    });
    SelectItemFromArray(QStringLiteral("Pick"), Three, 0);
    EXPECT_EQ(at, QPoint((screen.width() - 209) / 2, (screen.height() - 138) / 2));
    EXPECT_NE(at, QPoint((600 - 209) / 2 + 100, (400 - 138) / 2 + 80));
}
