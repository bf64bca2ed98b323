// The block list: creation by kind, keys, lookup, deletion, selection and events.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/graphic_host.h"

#include <QPointer>
#include <gtest/gtest.h>
#include <memory>
#include <set>

using namespace vde;
using namespace vde::test;

namespace {

class DiagObjectListTest : public BlockListTest {};

// --- creation by kind

TEST_F(DiagObjectListTest, CreatesATextBlock) {
    TDiagObject* o = List.CreateObjByDiagType(doText, {10, 20, 130, 80});
    ASSERT_NE(o, nullptr);
    EXPECT_NE(qobject_cast<TDiagText*>(o), nullptr);
    EXPECT_EQ(qobject_cast<TDiagLogic*>(o), nullptr);
    EXPECT_EQ(o->GetDiagObjType(), doText);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("Text"));
    EXPECT_EQ(o->AlignHoriz, 0);
    EXPECT_EQ(o->AlignVert, 0);
    EXPECT_EQ(o->FInputs.size(), 0u);
    EXPECT_EQ(o->FOutputs.size(), 0u);
    EXPECT_EQ(o->BoundsRect(), (TRect{10, 20, 130, 80}));
    EXPECT_TRUE(o->isVisibleTo(&Parent));
    EXPECT_EQ(o->parentWidget(), &Parent);
    EXPECT_EQ(o->FOwner, &List);
    EXPECT_EQ(List.Count(), 1);
    EXPECT_EQ(List[0], o);
}

TEST_F(DiagObjectListTest, CreatesAnAndGate) {
    TDiagObject* o = List.CreateObjByDiagType(doAndLogic, {40, 16, 100, 116});
    ASSERT_NE(o, nullptr);
    auto* g = qobject_cast<TDiagAndLogic*>(o);
    ASSERT_NE(g, nullptr);
    EXPECT_EQ(o->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("&"));
    EXPECT_EQ(o->AlignHoriz, 0);
    EXPECT_EQ(o->AlignVert, 15);
    ASSERT_EQ(o->FInputs.size(), 2u);
    ASSERT_EQ(o->FOutputs.size(), 1u);
    EXPECT_EQ(g->FMarkerSize, 6);
    for (const auto& m : o->FInputs)
        EXPECT_EQ(m.Size, 6);
    EXPECT_EQ(o->FOutputs[0].Size, 6);
    EXPECT_EQ(o->BoundsRect(), (TRect{40, 16, 100, 116}));
}

TEST_F(DiagObjectListTest, CreatesAnOrGate) {
    TDiagObject* o = List.CreateObjByDiagType(doOrLogic, {0, 0, 60, 100});
    ASSERT_NE(o, nullptr);
    EXPECT_NE(qobject_cast<TDiagOrLogic*>(o), nullptr);
    EXPECT_EQ(o->GetDiagObjType(), doOrLogic);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("1"));
    EXPECT_EQ(o->AlignVert, 15);
    EXPECT_EQ(o->FInputs.size(), 2u);
    EXPECT_EQ(o->FOutputs.size(), 1u);
    EXPECT_EQ(o->FInputs[0].Size, 6);
}

TEST_F(DiagObjectListTest, CreatesAnRSTrigger) {
    TDiagObject* o = List.CreateObjByDiagType(doRSTrigger, {5, 5, 105, 205});
    ASSERT_NE(o, nullptr);
    auto* r = qobject_cast<TDiagRSTrigger*>(o);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(o->GetDiagObjType(), doRSTrigger);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("R|S|T"));
    EXPECT_EQ(r->HorizRatio, 0.65);
    EXPECT_EQ(r->VertRatio, 0.5);
    EXPECT_EQ(o->FInputs.size(), 2u);
    EXPECT_EQ(o->FOutputs.size(), 1u);
    EXPECT_EQ(o->FInputs[0].Size, 6);
    EXPECT_EQ(o->FRegions.size(), 3u);
    EXPECT_EQ(o->GetSize(), (TPoint{100, 200}));
}

TEST_F(DiagObjectListTest, NoBlockForKindNoneOrOutOfRange) {
    EXPECT_EQ(List.CreateObjByDiagType(doNone, {0, 0, 50, 50}), nullptr);
    EXPECT_EQ(List.CreateObjByDiagType(static_cast<TDiagObjectType>(5), {0, 0, 50, 50}), nullptr);
    EXPECT_EQ(List.CreateObjByDiagType(static_cast<TDiagObjectType>(255), {0, 0, 50, 50}), nullptr);
    EXPECT_EQ(List.Count(), 0);
    EXPECT_TRUE(TGraphicHost::ControlsOf(&Parent).empty());
}

TEST_F(DiagObjectListTest, NewBlocksGetTheParentCanvas) {
    TCanvas parentCanvas;
    List.SetParentCanvas(&parentCanvas);
    TDiagObject* o = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    EXPECT_EQ(o->ParentCanvas, &parentCanvas);
}

// --- keys

TEST_F(DiagObjectListTest, NewBlocksAreKeyedOneTwoThreeInTheOrderTheyAreMade) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
    TDiagObject* c = List.CreateObjByDiagType(doOrLogic, {0, 0, 60, 100});
    EXPECT_EQ(a->GetObjKey(), 1u);
    EXPECT_EQ(b->GetObjKey(), 2u);
    EXPECT_EQ(c->GetObjKey(), 3u);
}

TEST_F(DiagObjectListTest, NewBlocksHaveDistinctKeys) {
    std::set<TObjKey> keys;
    for (int i = 0; i < 20; ++i)
        keys.insert(
            List.CreateObjByDiagType(TDiagObjectType(1 + i % 4), {0, 0, 60, 100})->GetObjKey());
    EXPECT_EQ(keys.size(), 20u);
}

TEST_F(DiagObjectListTest, TheSameDiagramBuiltTwiceSavesToTheSameBytes) {
    auto build = [](TDiagObjectList& l) {
        l.CreateObjByDiagType(doText, {10, 10, 160, 60});
        TDiagObject* g = l.CreateObjByDiagType(doAndLogic, {200, 10, 260, 110});
        l.CreateObjByDiagType(doRSTrigger, {300, 10, 400, 210});
        l.DeleteObject(g, true);
        l.CreateObjByDiagType(doOrLogic, {200, 150, 260, 250});
    };
    QWidget otherParent;
    TDiagObjectList other(&otherParent);
    build(List);
    build(other);
    EXPECT_EQ(Saved(List), Saved(other));
}

// A list record of text blocks with the given keys; each record is 37 bytes.
std::vector<uint8_t> TextBlocksWithKeys(const std::vector<TObjKey>& keys) {
    Bytes b;
    b.i32(int32_t(keys.size()));
    for (TObjKey k : keys) {
        b.u8(doText).i32(0).i32(0).i32(80).i32(40).i32(8);
        b.i32(0).i32(0).i32(0); // no labels, inputs or outputs
        b.i32(int32_t(k));
    }
    return b.data();
}

TEST_F(DiagObjectListTest, LoadedBlockKeepsTheStoredKey) {
    TMemoryStream s(TextBlocksWithKeys({0x12345678u, 0xFEDCBA98u}));
    List.LoadFromStream(s, [](QObject*) {});
    ASSERT_EQ(List.Count(), 2);
    EXPECT_EQ(List[0]->GetObjKey(), 0x12345678u);
    EXPECT_EQ(List[1]->GetObjKey(), 0xFEDCBA98u);
    EXPECT_EQ(List.FindObjByKey(0xFEDCBA98u), List[1]);
    EXPECT_EQ(List.FindObjByKey(0x12345678u), List[0]);
}

TEST_F(DiagObjectListTest, NewBlockKeySkipsTheKeysLoadedFromAStream) {
    // Loading made (and re-keyed) two blocks; new keys go on past those in use.
    TMemoryStream s(TextBlocksWithKeys({2, 3}));
    List.LoadFromStream(s, [](QObject*) {});
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    EXPECT_NE(a->GetObjKey(), 2u);
    EXPECT_NE(a->GetObjKey(), 3u);
    EXPECT_NE(b->GetObjKey(), 2u);
    EXPECT_NE(b->GetObjKey(), 3u);
    EXPECT_NE(a->GetObjKey(), b->GetObjKey());
    EXPECT_NE(a->GetObjKey(), 0u);
    EXPECT_EQ(List.FindObjByKey(a->GetObjKey()), a);
    EXPECT_EQ(List.FindObjByKey(b->GetObjKey()), b);
    EXPECT_EQ(List.FindObjByKey(2), List[0]);
}

TEST_F(DiagObjectListTest, ClearStartsNewKeysAgainFromOne) {
    List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    List.Clear();
    EXPECT_EQ(List.CreateObjByDiagType(doText, {0, 0, 50, 50})->GetObjKey(), 1u);
}

int gBlockWarnings = 0;

void CountBlockWarnings(QtMsgType type, const QMessageLogContext& ctx, const QString&) {
    if (type == QtWarningMsg && QByteArray(ctx.category) == "veldiagedit.blocks")
        ++gBlockWarnings;
}

TEST_F(DiagObjectListTest, BlocksSharingAKeyAllLoadAndTheKeyFindsTheEarliest) {
    for (TObjKey key : {TObjKey(5), TObjKey(0)}) {
        SCOPED_TRACE(key);
        // Blocks 2 and 4 share key with block 0, block 3 with block 1.
        TMemoryStream s(TextBlocksWithKeys({key, 9, key, 9, key}));
        int events = 0;
        gBlockWarnings = 0;
        const QtMessageHandler old = qInstallMessageHandler(CountBlockWarnings);
        List.LoadFromStream(s, [&events](QObject*) { ++events; });
        qInstallMessageHandler(old);
        ASSERT_EQ(List.Count(), 5);
        EXPECT_EQ(events, 5);
        for (int i : {0, 2, 4})
            EXPECT_EQ(List[i]->GetObjKey(), key);
        EXPECT_EQ(List.FindObjByKey(key), List[0]);
        EXPECT_EQ(List.FindObjByKey(9), List[1]);
        // One summary line for three blocks whose key an earlier block holds.
        EXPECT_EQ(gBlockWarnings, 1);
        ASSERT_EQ(List.Warnings().size(), 1);
        EXPECT_TRUE(List.Warnings()[0].startsWith(QStringLiteral("3 blocks")))
            << List.Warnings()[0].toStdString();
        EXPECT_TRUE(List.Warnings()[0].contains(QStringLiteral("block 2")));
    }
}

TEST_F(DiagObjectListTest, TheEarliestHolderOfASharedKeyGoneTheNextOneIsFound) {
    TMemoryStream s(TextBlocksWithKeys({7, 8, 7}));
    List.LoadFromStream(s, [](QObject*) {});
    TDiagObject* third = List[2];
    List.DeleteObject(List[0], true);
    EXPECT_EQ(List.FindObjByKey(7), third);
}

TEST_F(DiagObjectListTest, NewBlocksAfterALoadWithSharedKeysTakeKeysOfTheirOwn) {
    TMemoryStream s(TextBlocksWithKeys({1, 2, 1, 3}));
    List.LoadFromStream(s, [](QObject*) {});
    std::set<TObjKey> made;
    for (int i = 0; i < 3; ++i) {
        const TObjKey k = List.CreateObjByDiagType(doText, {0, 0, 50, 50})->GetObjKey();
        EXPECT_TRUE(k != 1 && k != 2 && k != 3 && k != 0) << k;
        made.insert(k);
    }
    EXPECT_EQ(made.size(), 3u);
}

TEST_F(DiagObjectListTest, ALoadWithoutSharedKeysWarnsNothing) {
    TMemoryStream s(TextBlocksWithKeys({1, 2, 3}));
    gBlockWarnings = 0;
    const QtMessageHandler old = qInstallMessageHandler(CountBlockWarnings);
    List.LoadFromStream(s, [](QObject*) {});
    qInstallMessageHandler(old);
    EXPECT_EQ(gBlockWarnings, 0);
    EXPECT_TRUE(List.Warnings().isEmpty());
}

TEST_F(DiagObjectListTest, FindObjByKeyFollowsSetObjKey) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    b->SetObjKey(500);
    EXPECT_EQ(List.FindObjByKey(500), b);
    EXPECT_EQ(List.FindObjByKey(2), nullptr);
    a->SetObjKey(2);
    EXPECT_EQ(List.FindObjByKey(2), a);
    EXPECT_EQ(List.FindObjByKey(1), nullptr);
}

TEST_F(DiagObjectListTest, FindObjByKeyFindsTheSecondHolderOnceTheFirstIsGone) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* c = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    c->SetObjKey(40);
    a->SetObjKey(40); // the earlier block now holds it too
    EXPECT_EQ(List.FindObjByKey(40), a);
    List.DeleteObject(a, true);
    EXPECT_EQ(List.FindObjByKey(40), c);
    EXPECT_EQ(List.FindObjByKey(b->GetObjKey()), b);
}

// --- lookup, deletion, selection

TEST_F(DiagObjectListTest, FindObjByKeyReturnsTheEarlierOfTwoEqualKeys) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
    TDiagObject* c = List.CreateObjByDiagType(doOrLogic, {0, 0, 60, 100});
    b->SetObjKey(77);
    c->SetObjKey(77);
    EXPECT_EQ(List.FindObjByKey(77), b);
    EXPECT_EQ(List.FindObjByKey(a->GetObjKey()), a);
    EXPECT_EQ(List.FindObjByKey(78), nullptr);
}

TEST_F(DiagObjectListTest, DeleteObjectOfABlockNotInTheListDoesNothing) {
    QWidget otherParent;
    TDiagObjectList other(&otherParent);
    TDiagObject* stranger = other.CreateObjByDiagType(doText, {0, 0, 50, 50});
    QPointer<TDiagObject> watch(stranger);
    TDiagObject* mine = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    int events = 0;
    List.SetOnDeleteObject([&](QObject*) { ++events; });
    List.DeleteObject(stranger, true);
    EXPECT_EQ(events, 0);
    EXPECT_FALSE(watch.isNull());
    EXPECT_EQ(other.IndexOf(stranger), 0);
    EXPECT_EQ(List.Count(), 1);
    EXPECT_EQ(List[0], mine);
    List.DeleteObject(nullptr, true);
    EXPECT_EQ(events, 0);
}

TEST_F(DiagObjectListTest, DeleteObjectTellsTheOwnerFirstThenRemovesAndFrees) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
    QPointer<TDiagObject> watch(b);
    std::vector<QObject*> senders;
    List.SetOnDeleteObject([&](QObject* s) {
        senders.push_back(s);
        // Still in the list and alive while the event runs.
        EXPECT_EQ(List.IndexOf(static_cast<TDiagObject*>(s)), 1);
        EXPECT_FALSE(watch.isNull());
    });
    List.DeleteObject(b, true);
    ASSERT_EQ(senders.size(), 1u);
    EXPECT_EQ(senders[0], b);
    EXPECT_TRUE(watch.isNull());
    EXPECT_EQ(List.Count(), 1);
    EXPECT_EQ(List[0], a);
}

TEST_F(DiagObjectListTest, DeleteObjectWithoutFreeHandsTheBlockToTheCaller) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    int events = 0;
    List.SetOnDeleteObject([&](QObject*) { ++events; });
    QPointer<TDiagObject> watch(a);
    std::unique_ptr<TDiagObject> mine = List.DeleteObject(a, false);
    EXPECT_EQ(events, 1);
    EXPECT_EQ(List.Count(), 0);
    EXPECT_EQ(mine.get(), a);
    EXPECT_FALSE(watch.isNull());
    EXPECT_EQ(a->FOwner, nullptr);
    mine.reset();
    EXPECT_TRUE(watch.isNull());
    EXPECT_EQ(List.Count(), 0);
}

TEST_F(DiagObjectListTest, DeleteObjectWithoutEventStillDeletes) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    QPointer<TDiagObject> watch(a);
    List.DeleteObject(a, true);
    EXPECT_TRUE(watch.isNull());
    EXPECT_EQ(List.Count(), 0);
}

TEST_F(DiagObjectListTest, DeselectAllWithNoneSkippedDeselectsEveryBlock) {
    std::vector<TDiagObject*> blocks;
    for (int k = 1; k <= 4; ++k) {
        blocks.push_back(List.CreateObjByDiagType(TDiagObjectType(k), {0, 0, 60, 100}));
        blocks.back()->SetSelected(true);
        blocks.back()->SetSelMarkerIndex(-1);
    }
    List.DeselectAll(nullptr);
    for (TDiagObject* o : blocks) {
        EXPECT_FALSE(o->GetSelected());
        EXPECT_FALSE(o->GetVisibleBorder());
        EXPECT_EQ(o->GetSelMarkerIndex(), 0);
    }
}

TEST_F(DiagObjectListTest, DeselectAllSkipsTheGivenBlock) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
    a->SetSelected(true);
    b->SetSelected(true);
    List.DeselectAll(b);
    EXPECT_FALSE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
}

TEST_F(DiagObjectListTest, AssignObjEventsCallsOncePerBlockInOrder) {
    std::vector<TDiagObject*> blocks;
    for (int k = 1; k <= 4; ++k)
        blocks.push_back(List.CreateObjByDiagType(TDiagObjectType(k), {0, 0, 60, 100}));
    std::vector<QObject*> seen;
    List.AssignObjEvents([&](QObject* s) { seen.push_back(s); });
    EXPECT_EQ(seen, std::vector<QObject*>(blocks.begin(), blocks.end()));
    List.AssignObjEvents(TNotifyEvent());
    EXPECT_EQ(seen.size(), 4u);
}

TEST_F(DiagObjectListTest, ClearFreesEveryBlockWithoutTheDeleteEvent) {
    QPointer<TDiagObject> a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    QPointer<TDiagObject> b = List.CreateObjByDiagType(doRSTrigger, {0, 0, 100, 200});
    int events = 0;
    List.SetOnDeleteObject([&](QObject*) { ++events; });
    List.Clear();
    EXPECT_EQ(List.Count(), 0);
    EXPECT_TRUE(a.isNull());
    EXPECT_TRUE(b.isNull());
    EXPECT_EQ(events, 0);
}

TEST_F(DiagObjectListTest, ABlockFreedElsewhereLeavesTheList) {
    TDiagObject* a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TDiagObject* b = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    delete a;
    EXPECT_EQ(List.Count(), 1);
    EXPECT_EQ(List[0], b);
}

TEST_F(DiagObjectListTest, ListOutlivedByItsParentDoesNotFreeTwice) {
    auto* parent = new QWidget;
    TDiagObjectList list(parent);
    list.CreateObjByDiagType(doText, {0, 0, 50, 50});
    list.CreateObjByDiagType(doOrLogic, {0, 0, 60, 100});
    delete parent; // frees its child blocks
    EXPECT_EQ(list.Count(), 0);
}

// --- list records

TEST_F(DiagObjectListTest, EmptyListSavesAsFourZeroBytesAndLoadsBackEmpty) {
    EXPECT_EQ(Saved(List), (std::vector<uint8_t>{0, 0, 0, 0}));
    List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TMemoryStream s(std::vector<uint8_t>{0, 0, 0, 0});
    int created = 0;
    List.LoadFromStream(s, [&](QObject*) { ++created; });
    EXPECT_EQ(List.Count(), 0);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(s.Position(), 4);
}

TEST_F(DiagObjectListTest, LoadWithCountZeroClearsAndReadsNothing) {
    QPointer<TDiagObject> a = List.CreateObjByDiagType(doText, {0, 0, 50, 50});
    TMemoryStream s(TextBlocksWithKeys({1, 2}));
    List.LoadFromStream(
        s, [](QObject*) {}, 0);
    EXPECT_EQ(List.Count(), 0);
    EXPECT_TRUE(a.isNull());
    EXPECT_EQ(s.Position(), 0);
}

TEST_F(DiagObjectListTest, LoadWithAGivenCountReadsThatManyRecordsWithoutACount) {
    const std::vector<uint8_t> withCount = TextBlocksWithKeys({11, 12, 13});
    TMemoryStream s(std::vector<uint8_t>(withCount.begin() + 4, withCount.end()));
    std::vector<TObjKey> created;
    List.LoadFromStream(
        s, [&](QObject* o) { created.push_back(static_cast<TDiagObject*>(o)->GetObjKey()); }, 2);
    ASSERT_EQ(List.Count(), 2);
    EXPECT_EQ(created, (std::vector<TObjKey>{11, 12}));
    // Two records of 37 bytes were read, the third left.
    EXPECT_EQ(s.Position(), 74);
}

TEST_F(DiagObjectListTest, LoadCallsTheCreateEventForEachBlockInOrder) {
    TMemoryStream s(TextBlocksWithKeys({21, 22, 23}));
    std::vector<QObject*> seen;
    List.LoadFromStream(s, [&](QObject* o) {
        seen.push_back(o);
        // Each block is in the list when its event comes.
        EXPECT_GE(List.IndexOf(static_cast<TDiagObject*>(o)), 0);
    });
    ASSERT_EQ(List.Count(), 3);
    EXPECT_EQ(seen, (std::vector<QObject*>{List[0], List[1], List[2]}));
}

} // namespace
