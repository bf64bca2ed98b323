// Blocks from hostile streams: unknown marker types, floods of unknown control names, many
// blocks; and who owns a block.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/control_list.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/errors.h"

#include <QLoggingCategory>
#include <QPointer>
#include <gtest/gtest.h>
#include <memory>

using namespace vde;
using namespace vde::test;

namespace {

class HostileBlocks : public BlockListTest {};

// A list record of one text block with one input marker of the given type.
std::vector<uint8_t> OneBlockWithInputType(uint8_t ioType) {
    Bytes b;
    b.i32(1);
    b.u8(doText).i32(0).i32(0).i32(80).i32(40).i32(8);
    b.i32(0); // labels
    b.i32(1);
    Marker(b, 0, 20, ioType, 3);
    b.i32(0); // outputs
    b.i32(42);
    return b.data();
}

} // namespace

TEST_F(HostileBlocks, MarkerTypeAboveArrowIsAFormatErrorAtItsByte) {
    TMemoryStream s(OneBlockWithInputType(7));
    try {
        List.LoadFromStream(s, [](QObject*) {});
        FAIL() << "no error";
    } catch (const EFormatError& e) {
        // Count 4, then kind 1, bounds 16, delta width 4, label and input counts 8, P 8.
        EXPECT_EQ(e.Offset(), 4 + 1 + 16 + 4 + 8 + 8);
        EXPECT_TRUE(e.Message().contains(QStringLiteral("7"))) << e.Message().toStdString();
    }
    EXPECT_EQ(List.Count(), 0) << "no half-read block is left behind";
}

TEST_F(HostileBlocks, MarkerTypesDirectInversionAndArrowLoad) {
    for (uint8_t t : {uint8_t(itDirect), uint8_t(itInversion), uint8_t(itArrow)}) {
        TMemoryStream s(OneBlockWithInputType(t));
        List.LoadFromStream(s, [](QObject*) {});
        ASSERT_EQ(List.Count(), 1);
        EXPECT_EQ(List[0]->FInputs.at(0).IOType, t);
    }
}

TEST(HostileControlList, TwoMillionUnknownNamesGiveOneWarningWithTheirCount) {
    // 8 MB of empty names: each entry is only its zero count, and no control is named "".
    QWidget parent;
    TControlList list(&parent);
    auto* named = new QWidget(&parent);
    named->setObjectName(QStringLiteral("Edit1"));
    list.Add(named);
    Bytes b;
    b.i32(2000000);
    std::vector<uint8_t> bytes = b.data();
    bytes.resize(4 + 4 * 2000000, 0);
    TMemoryStream s(std::move(bytes));

    static int logged = 0;
    logged = 0;
    const QtMessageHandler old =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& ctx, const QString&) {
            if (type == QtWarningMsg && QByteArray(ctx.category) == "veldiagedit.blocks")
                ++logged;
        });
    list.LoadFromStream(s);
    qInstallMessageHandler(old);

    EXPECT_EQ(list.UnknownNameCount(), 2000000);
    ASSERT_EQ(list.Warnings().size(), 1);
    EXPECT_TRUE(list.Warnings()[0].contains(QStringLiteral("2000000")))
        << list.Warnings()[0].toStdString();
    EXPECT_EQ(logged, 1);
}

TEST(HostileControlList, AFullyMatchedLoadWarnsNothing) {
    QWidget parent;
    TControlList list(&parent);
    auto* named = new QWidget(&parent);
    named->setObjectName(QStringLiteral("Edit1"));
    list.Add(named);
    TMemoryStream s(
        Bytes().i32(1).str(QStringLiteral("edit1")).i32(1).i32(2).i32(11).i32(12).data());
    list.LoadFromStream(s);
    EXPECT_EQ(list.UnknownNameCount(), 0);
    EXPECT_TRUE(list.Warnings().isEmpty());
    EXPECT_EQ(named->geometry(), QRect(1, 2, 10, 10));
}

TEST_F(HostileBlocks, TwentyThousandLoadedBlocksAreEachFoundByTheirKey) {
    constexpr int n = 20000;
    Bytes b;
    b.i32(n);
    for (int i = 0; i < n; ++i) {
        b.u8(doAndLogic).i32(0).i32(0).i32(60).i32(100).i32(8);
        b.i32(0).i32(0).i32(0);
        b.i32(int32_t(0x9E3779B9u * uint32_t(i + 1))); // distinct, in no order
    }
    TMemoryStream s(b.data());
    List.LoadFromStream(s, [](QObject*) {});
    ASSERT_EQ(List.Count(), n);
    for (int i = 0; i < n; i += 997)
        EXPECT_EQ(List.FindObjByKey(0x9E3779B9u * uint32_t(i + 1)), List[i]) << i;
    EXPECT_EQ(List.FindObjByKey(12345), nullptr);
}

// --- ownership

TEST(BlockOwnership, BlocksDeletedWithTheirParentLeaveTheList) {
    auto parent = std::make_unique<QWidget>();
    TDiagObjectList list(parent.get());
    list.CreateObjByDiagType(doText, {0, 0, 50, 50});
    list.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
    ASSERT_EQ(list.Count(), 2);
    parent.reset();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.FindObjByKey(1), nullptr);
}

TEST_F(HostileBlocks, RemoveHandsTheBlockOverAndAddTakesItBack) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    std::unique_ptr<TDiagObject> mine = List.Remove(a);
    ASSERT_EQ(mine.get(), a);
    EXPECT_EQ(a->Owner(), nullptr);
    EXPECT_EQ(List.FindObjByKey(1), nullptr);
    EXPECT_EQ(List.Remove(a), nullptr);
    // Its key 1 is free again, so it keeps it.
    List.Add(std::move(mine));
    ASSERT_EQ(List.Count(), 2);
    EXPECT_EQ(List[1], a);
    EXPECT_EQ(a->Owner(), &List);
    EXPECT_EQ(List.FindObjByKey(1), a);
    EXPECT_EQ(List.FindObjByKey(2), b);
}

TEST_F(HostileBlocks, AddGivesABlockWhoseKeyIsTakenANewOne) {
    QWidget otherParent;
    TDiagObjectList other(&otherParent);
    TDiagObject* first = List.CreateObjByDiagType(doText, {0, 0, 50, 50});     // key 1
    TDiagObject* stranger = other.CreateObjByDiagType(doText, {0, 0, 50, 50}); // key 1 too
    List.Add(other.Remove(stranger));
    EXPECT_EQ(first->GetObjKey(), 1u);
    EXPECT_NE(stranger->GetObjKey(), 1u);
    EXPECT_EQ(List.FindObjByKey(stranger->GetObjKey()), stranger);
    EXPECT_EQ(List.FindObjByKey(1), first);
}

TEST_F(HostileBlocks, LabelPlacedPastTheLargestIntWrapsAround) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    TDiagLabel l{{0, 0}, QString(), 12};
    // The empty text measures 0 wide: a fixed offset of 100 from INT32_MAX - 10 ends 89 past
    // the lowest int.
    b->AlignHoriz = 100;
    b->AlignVert = 5;
    b->AlignLabelInRect({INT32_MAX - 10, INT32_MAX - 2, INT32_MAX, INT32_MAX}, l);
    EXPECT_EQ(l.Start.X, INT32_MIN + 89);
    EXPECT_EQ(l.Start.Y, INT32_MIN + 2);
}

TEST_F(HostileBlocks, RegionLabelPlacedPastTheLargestIntWrapsAround) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    TDiagLabel l{{0, 0}, QString(), 12};
    // Width 10 and text width 0: a fraction of 3 puts the text 30 right of INT32_MAX - 10.
    b->AlignLabelInRectFloat({INT32_MAX - 10, 0, INT32_MAX, 40}, l, 3.0, 0.0);
    EXPECT_EQ(l.Start.X, INT32_MIN + 19);
    EXPECT_EQ(l.Start.Y, 0);
}

TEST_F(HostileBlocks, RSFlipFlopWithTheLargestDeltaWidthShiftsWithDefinedRegions) {
    TDiagObject* r = List.CreateObjByDiagType(doRSTrigger, {0, 0, 100, 200});
    r->SetDeltaWidth(INT32_MAX);
    r->ShiftByDelta({5, 7});
    EXPECT_EQ(r->x(), 5);
    // Pen 2: the frame's left is 1, so the body's left is 1 + INT32_MAX, the lowest int.
    ASSERT_GE(r->FRegions.size(), 3u);
    EXPECT_EQ(r->FRegions[0].R.Left, INT32_MIN);
    EXPECT_EQ(r->FRegions[1].R.Left, INT32_MIN);
}
