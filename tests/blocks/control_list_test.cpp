// The list of the parent's foreign controls: lookup by name and its record.

#include "common/test_util.h"
#include "velDiagEdit/blocks/control_list.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/errors.h"

#include <QLineEdit>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class ControlListTest : public ::testing::Test {
protected:
    QWidget Parent;
    TControlList List{&Parent};

    QWidget* Named(QWidget* w, const QString& name, int l, int t, int wd, int h) {
        w->setObjectName(name);
        w->setGeometry(l, t, wd, h);
        List.Add(w);
        return w;
    }
};

TEST_F(ControlListTest, FindControlIgnoresLetterCase) {
    QWidget* ok = Named(new QPushButton(&Parent), QStringLiteral("btnOk"), 0, 0, 10, 10);
    QWidget* edit = Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 0, 0, 10, 10);
    EXPECT_EQ(List.FindControl(QStringLiteral("BTNOK")), ok);
    EXPECT_EQ(List.FindControl(QStringLiteral("btnok")), ok);
    EXPECT_EQ(List.FindControl(QStringLiteral("edit1")), edit);
    EXPECT_EQ(List.FindControl(QStringLiteral("btnOk2")), nullptr);
    EXPECT_EQ(List.FindControl(QString()), nullptr);
}

TEST_F(ControlListTest, FindControlReturnsTheFirstOfEqualNames) {
    QWidget* a = Named(new QWidget(&Parent), QStringLiteral("Pane"), 0, 0, 10, 10);
    Named(new QWidget(&Parent), QStringLiteral("PANE"), 0, 0, 10, 10);
    EXPECT_EQ(List.FindControl(QStringLiteral("pane")), a);
}

TEST_F(ControlListTest, TheListDoesNotOwnItsControls) {
    auto* w = new QWidget(&Parent);
    {
        TControlList list(&Parent);
        list.Add(w);
        list.Clear();
    }
    EXPECT_EQ(Parent.findChildren<QWidget*>().size(), 1);
    EXPECT_EQ(Parent.findChildren<QWidget*>()[0], w);
}

TEST_F(ControlListTest, RecordCountsEveryItemButWritesOnlyWindowedControls) {
    Named(new QPushButton(&Parent), QStringLiteral("btnOk"), 10, 20, 80, 30);
    auto* g = new TGraphicControl(&Parent);
    g->setObjectName(QStringLiteral("shape1"));
    g->setGeometry(1, 2, 3, 4);
    List.Add(g);
    TMemoryStream s;
    List.SaveToStream(s);
    Bytes want;
    want.i32(2);
    want.str(QStringLiteral("btnOk")).i32(10).i32(20).i32(90).i32(50);
    EXPECT_EQ(HexDump(s.Bytes()), HexDump(want.data()));
    // Spelled out: count 2, name length 5, 'b' as a UTF-16 unit.
    const std::vector<uint8_t> head(s.Bytes().begin(), s.Bytes().begin() + 10);
    EXPECT_EQ(head, (std::vector<uint8_t>{2, 0, 0, 0, 5, 0, 0, 0, 'b', 0}));
}

TEST_F(ControlListTest, RecordKeepsListOrderAndNegativeBounds) {
    Named(new QWidget(&Parent), QStringLiteral("Second"), -5, 7, 20, 10);
    Named(new QLineEdit(&Parent), QString::fromUtf8("\xC3\x84rea"), 100, 200, 50, 25);
    TMemoryStream s;
    List.SaveToStream(s);
    Bytes want;
    want.i32(2);
    want.str(QStringLiteral("Second")).i32(-5).i32(7).i32(15).i32(17);
    want.i32(4).raw({0xC4, 0x00, 'r', 0, 'e', 0, 'a', 0}).i32(100).i32(200).i32(150).i32(225);
    EXPECT_EQ(HexDump(s.Bytes()), HexDump(want.data()));
}

TEST_F(ControlListTest, EmptyListSavesAsACountOfZero) {
    TMemoryStream s;
    List.SaveToStream(s);
    EXPECT_EQ(s.Bytes(), (std::vector<uint8_t>{0, 0, 0, 0}));
}

TEST_F(ControlListTest, LoadingPutsNamedControlsBack) {
    QWidget* ok = Named(new QPushButton(&Parent), QStringLiteral("btnOk"), 0, 0, 10, 10);
    QWidget* edit = Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 0, 0, 10, 10);
    Bytes b;
    b.i32(2);
    b.str(QStringLiteral("EDIT1")).i32(5).i32(6).i32(105).i32(56);
    b.str(QStringLiteral("btnok")).i32(-10).i32(20).i32(70).i32(50);
    TMemoryStream s(b.data());
    List.LoadFromStream(s);
    EXPECT_EQ(edit->geometry(), QRect(5, 6, 100, 50));
    EXPECT_EQ(ok->geometry(), QRect(-10, 20, 80, 30));
    EXPECT_EQ(s.Position(), int64_t(b.size()));
    EXPECT_TRUE(List.Warnings().isEmpty());
}

TEST_F(ControlListTest, SavedRecordLoadsBackOntoTheSameControls) {
    QWidget* ok = Named(new QPushButton(&Parent), QStringLiteral("btnOk"), 10, 20, 80, 30);
    QWidget* edit = Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 30, 40, 60, 20);
    TMemoryStream s;
    List.SaveToStream(s);
    ok->setGeometry(0, 0, 5, 5);
    edit->setGeometry(0, 0, 5, 5);
    s.SetPosition(0);
    List.LoadFromStream(s);
    EXPECT_EQ(ok->geometry(), QRect(10, 20, 80, 30));
    EXPECT_EQ(edit->geometry(), QRect(30, 40, 60, 20));
}

TEST_F(ControlListTest, UnknownNameMakesTheReaderTakeTheNextNameFromTheBoundsBytes) {
    QWidget* edit = Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 0, 0, 10, 10);
    QWidget* ok = Named(new QPushButton(&Parent), QStringLiteral("btnOk"), 0, 0, 10, 10);
    // Entry 1 names no control, so its bounds are not read: the reader takes entry 2's name
    // from the place of those bounds. The bytes are laid out so that this succeeds: after
    // "ghost" comes the name "Edit1" with its own bounds.
    Bytes b;
    b.i32(2);
    b.str(QStringLiteral("ghost"));
    b.str(QStringLiteral("Edit1")).i32(5).i32(6).i32(105).i32(56);
    TMemoryStream s(b.data());
    List.LoadFromStream(s);
    EXPECT_EQ(edit->geometry(), QRect(5, 6, 100, 50));
    EXPECT_EQ(ok->geometry(), QRect(0, 0, 10, 10));
    EXPECT_EQ(s.Position(), int64_t(b.size()));
    ASSERT_EQ(List.Warnings().size(), 1);
    EXPECT_TRUE(List.Warnings()[0].contains(QStringLiteral("ghost")));
}

TEST_F(ControlListTest, UnknownNameWithWrittenBoundsShiftsTheRestOfTheRecord) {
    QWidget* e1 = Named(new QLineEdit(&Parent), QStringLiteral("E1"), 0, 0, 10, 10);
    // "ghost" followed by the bounds a writer gave it, (2, $00310045, 7, 8), then more Ints.
    // The reader skips no bounds for the unknown name: Left (2) becomes the next name's
    // length, Top its two units 'E' and '1', and Right and Bottom become Left and Top of "E1".
    Bytes b;
    b.i32(2);
    b.str(QStringLiteral("ghost")).i32(2).i32(0x00310045).i32(7).i32(8);
    b.i32(40).i32(28);
    TMemoryStream s(b.data());
    List.LoadFromStream(s);
    EXPECT_EQ(e1->geometry(), QRect(7, 8, 33, 20));
    EXPECT_EQ(s.Position(), int64_t(b.size()));
    ASSERT_EQ(List.Warnings().size(), 1);
    EXPECT_TRUE(List.Warnings()[0].contains(QStringLiteral("ghost")));
}

TEST_F(ControlListTest, WarningsAreForTheLastLoadOnly) {
    Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 0, 0, 10, 10);
    Bytes bad;
    bad.i32(1).str(QStringLiteral("ghost"));
    TMemoryStream s1(bad.data());
    List.LoadFromStream(s1);
    EXPECT_EQ(List.Warnings().size(), 1);
    Bytes good;
    good.i32(1).str(QStringLiteral("Edit1")).i32(1).i32(2).i32(3).i32(4);
    TMemoryStream s2(good.data());
    List.LoadFromStream(s2);
    EXPECT_TRUE(List.Warnings().isEmpty());
}

// --- bad input

TEST_F(ControlListTest, CountOfAllOnesIsAFormatError) {
    TMemoryStream s(Bytes().i32(-1).data());
    try {
        List.LoadFromStream(s);
        ADD_FAILURE() << "loaded";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), 0);
    }
}

TEST_F(ControlListTest, HugeCountFailsAtTheCountField) {
    Bytes b;
    b.i32(0x7FFFFFFF).str(QStringLiteral("Edit1")).i32(1).i32(2).i32(3).i32(4);
    TMemoryStream s(b.data());
    try {
        List.LoadFromStream(s);
        ADD_FAILURE() << "loaded";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), 0);
    }
}

TEST_F(ControlListTest, HugeNameLengthFailsAtThatField) {
    Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 0, 0, 10, 10);
    Bytes b;
    b.i32(2).str(QStringLiteral("Edit1")).i32(1).i32(2).i32(3).i32(4);
    const size_t at = b.size();
    b.i32(0x7FFFFFFF).u16('x');
    TMemoryStream s(b.data());
    try {
        List.LoadFromStream(s);
        ADD_FAILURE() << "loaded";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), int64_t(at));
    }
}

TEST_F(ControlListTest, EveryTruncationIsAReadError) {
    Named(new QPushButton(&Parent), QStringLiteral("btnOk"), 10, 20, 80, 30);
    Named(new QLineEdit(&Parent), QStringLiteral("Edit1"), 30, 40, 60, 20);
    TMemoryStream full;
    List.SaveToStream(full);
    const std::vector<uint8_t> d = full.Bytes();
    for (size_t n = 0; n < d.size(); ++n) {
        TMemoryStream s(std::vector<uint8_t>(d.begin(), d.begin() + long(n)));
        EXPECT_THROW(List.LoadFromStream(s), EReadError) << "prefix of " << n << " bytes";
    }
}

} // namespace
