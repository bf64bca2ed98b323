// Block and block-list records: hand-written golden bytes both ways, and bad input.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/graphic_host.h"

#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class BlockRecordsTest : public BlockListTest {
protected:
    const TNotifyEvent NoEvent = [](QObject*) {};

    int BlockWidgets() const { return int(TGraphicHost::ControlsOf(&Parent).size()); }
};

// --- golden records

// An AND gate at (40, 16), 60 x 100, as made by the list, with key $12345678.
std::vector<uint8_t> AndGateRecord(int labelX) {
    Bytes b;
    b.u8(2).i32(40).i32(16).i32(100).i32(116); // kind, bounds
    b.i32(8);                                  // delta width
    b.i32(1);
    Label(b, labelX, 18, 26, QStringLiteral("&"));
    b.i32(2);
    Marker(b, 0, 25, itDirect, 6);
    Marker(b, 0, 71, itDirect, 6);
    b.i32(1);
    Marker(b, 58, 48, itDirect, 6);
    b.i32(0x12345678);
    return b.data();
}

TEST_F(BlockRecordsTest, AndGateRecordBytes) {
    TDiagObject* g = List.CreateObjByDiagType(doAndLogic, {40, 16, 100, 116});
    g->SetObjKey(0x12345678);
    const int tw = TextW(QStringLiteral("&"), 26);
    const int labelX = 9 + (43 > tw ? (43 - tw) / 2 : 0);
    const std::vector<uint8_t> want = AndGateRecord(labelX);
    EXPECT_EQ(want.size(), 88u);
    EXPECT_EQ(HexDump(Saved(g)), HexDump(want));
    // The first bytes spelled out: kind 2, then Left 40 and Top 16 little-endian.
    const std::vector<uint8_t> head(want.begin(), want.begin() + 9);
    EXPECT_EQ(head, (std::vector<uint8_t>{0x02, 0x28, 0, 0, 0, 0x10, 0, 0, 0}));
}

std::vector<uint8_t> TextBlockRecord() {
    Bytes b;
    b.u8(1).i32(10).i32(20).i32(130).i32(80).i32(5);
    b.i32(1);
    // U+00C4 and U+20AC go out as UTF-16 units.
    b.i32(7).i32(9).u8(26).i32(2).raw({0xC4, 0x00, 0xAC, 0x20});
    b.i32(1);
    Marker(b, 0, 28, itInversion, 4);
    b.i32(0);
    b.raw({0xBE, 0xBA, 0xFE, 0xCA});
    return b.data();
}

TEST_F(BlockRecordsTest, TextBlockRecordBytes) {
    TDiagObject* t = List.CreateObjByDiagType(doText, {10, 20, 130, 80});
    t->SetDeltaWidth(5);
    t->SetTextValues(QString::fromUtf8("\xC3\x84\xE2\x82\xAC"));
    t->SetTextPosValues(QStringLiteral("7,9"));
    t->FInputs = {{{0, 28}, itInversion, 4}};
    t->SetObjKey(0xCAFEBABEu);
    EXPECT_EQ(HexDump(Saved(t)), HexDump(TextBlockRecord()));
}

std::vector<uint8_t> OrGateRecord() {
    Bytes b;
    b.u8(3).i32(0).i32(0).i32(60).i32(100).i32(8);
    b.i32(1);
    Label(b, 20, 18, 26, QStringLiteral("1"));
    b.i32(2);
    Marker(b, 0, 25, itDirect, 6);
    Marker(b, 0, 71, itArrow, 6);
    b.i32(1);
    Marker(b, 58, 48, itInversion, 6);
    b.i32(1);
    return b.data();
}

TEST_F(BlockRecordsTest, OrGateRecordBytes) {
    auto* g = static_cast<TDiagText*>(List.CreateObjByDiagType(doOrLogic, {0, 0, 60, 100}));
    g->SetTextPosValues(QStringLiteral("20,18"));
    g->AllInputsType(itArrow, 1, 1);
    g->AllOutputsType(itInversion, 0, -1);
    g->SetObjKey(1);
    EXPECT_EQ(HexDump(Saved(g)), HexDump(OrGateRecord()));
}

std::vector<uint8_t> RSTriggerRecord() {
    Bytes b;
    b.u8(4).i32(-5).i32(5).i32(95).i32(205).i32(8);
    b.i32(3);
    Label(b, 10, 20, 20, QStringLiteral("R"));
    Label(b, 10, 110, 0, QStringLiteral("S"));
    Label(b, 70, 20, 255, QStringLiteral("T"));
    b.i32(2);
    Marker(b, 0, 50, itDirect, 6);
    Marker(b, 0, 146, itDirect, 6);
    b.i32(1);
    Marker(b, 98, 98, itDirect, 6);
    b.raw({0x00, 0x00, 0x00, 0x80});
    return b.data();
}

TEST_F(BlockRecordsTest, RSTriggerRecordBytes) {
    TDiagObject* r = List.CreateObjByDiagType(doRSTrigger, {-5, 5, 95, 205});
    r->SetTextHeights(QStringLiteral("20|0|255"));
    r->SetTextPosValues(QStringLiteral("10,20|10,110|70,20"));
    r->SetObjKey(0x80000000u);
    EXPECT_EQ(HexDump(Saved(r)), HexDump(RSTriggerRecord()));
}

TEST_F(BlockRecordsTest, ListRecordIsACountThenTheRecordsInOrder) {
    TDiagObject* g = List.CreateObjByDiagType(doAndLogic, {40, 16, 100, 116});
    g->SetObjKey(0x12345678);
    TDiagObject* t = List.CreateObjByDiagType(doText, {10, 20, 130, 80});
    t->SetDeltaWidth(5);
    t->SetTextValues(QString::fromUtf8("\xC3\x84\xE2\x82\xAC"));
    t->SetTextPosValues(QStringLiteral("7,9"));
    t->FInputs = {{{0, 28}, itInversion, 4}};
    t->SetObjKey(0xCAFEBABEu);
    const int tw = TextW(QStringLiteral("&"), 26);
    Bytes want;
    want.raw({0x02, 0x00, 0x00, 0x00});
    Append(want, AndGateRecord(9 + (43 > tw ? (43 - tw) / 2 : 0)));
    Append(want, TextBlockRecord());
    EXPECT_EQ(HexDump(Saved(List)), HexDump(want.data()));
}

// --- reading

TEST_F(BlockRecordsTest, ReadingARecordTakesEveryFieldAsStored) {
    Bytes b;
    b.u8(2).i32(30).i32(40).i32(110).i32(190).i32(5);
    b.i32(2);
    Label(b, 3, 4, 12, QStringLiteral("ab"));
    Label(b, -5, 60, 0, QStringLiteral("second"));
    // Three inputs where the gate's constructor made two, at places no layout gives.
    b.i32(3);
    Marker(b, 1, 7, itArrow, 3);
    Marker(b, 2, 8, itInversion, 9);
    Marker(b, 0, 150, itDirect, 0);
    b.i32(0);
    b.i32(-2);
    TMemoryStream s(b.data());
    TDiagObject* o = TDiagObject::LoadFromStream(s, &List);
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(s.Position(), int64_t(b.size()));
    EXPECT_NE(qobject_cast<TDiagAndLogic*>(o), nullptr);
    EXPECT_EQ(List.Count(), 1);
    EXPECT_EQ(List[0], o);
    EXPECT_EQ(o->BoundsRect(), (TRect{30, 40, 110, 190}));
    EXPECT_EQ(o->GetDeltaWidth(), 5);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("ab|second"));
    EXPECT_EQ(o->GetTextHeights(), QStringLiteral("12|0"));
    EXPECT_EQ(o->GetTextPosValues(), QStringLiteral("3,4|-5,60"));
    EXPECT_EQ(
        o->FInputs,
        (TDotMarkers{{{1, 7}, itArrow, 3}, {{2, 8}, itInversion, 9}, {{0, 150}, itDirect, 0}}));
    EXPECT_TRUE(o->FOutputs.empty());
    EXPECT_EQ(o->GetObjKey(), 0xFFFFFFFEu);
    // Written back, the record is the same bytes.
    EXPECT_EQ(HexDump(Saved(o)), HexDump(b.data()));
}

TEST_F(BlockRecordsTest, EachKindReadsBackFromItsGoldenRecord) {
    const std::vector<uint8_t> records[] = {TextBlockRecord(), OrGateRecord(), RSTriggerRecord()};
    const TDiagObjectType kinds[] = {doText, doOrLogic, doRSTrigger};
    for (int i = 0; i < 3; ++i) {
        TMemoryStream s(records[i]);
        TDiagObject* o = TDiagObject::LoadFromStream(s, &List);
        ASSERT_NE(o, nullptr);
        EXPECT_EQ(o->GetDiagObjType(), kinds[i]);
        EXPECT_EQ(HexDump(Saved(o)), HexDump(records[i])) << "kind " << int(kinds[i]);
    }
    EXPECT_NE(qobject_cast<TDiagRSTrigger*>(List[2]), nullptr);
    EXPECT_EQ(List[0]->GetTextValues(), QString::fromUtf8("\xC3\x84\xE2\x82\xAC"));
    EXPECT_EQ(List[2]->GetTextHeights(), QStringLiteral("20|0|255"));
}

TEST_F(BlockRecordsTest, ReservedMarkerBytesAreIgnoredOnReading) {
    Bytes b;
    b.u8(1).i32(0).i32(0).i32(80).i32(40).i32(8).i32(0);
    b.i32(1);
    Marker(b, 0, 20, itArrow, 7, 0xAB, 0xCD);
    b.i32(0).i32(9);
    TMemoryStream s(b.data());
    TDiagObject* o = TDiagObject::LoadFromStream(s, &List);
    EXPECT_EQ(o->FInputs, (TDotMarkers{{{0, 20}, itArrow, 7}}));
    EXPECT_EQ(o->GetObjKey(), 9u);
    // Written back with zeros.
    const std::vector<uint8_t> out = Saved(o);
    const size_t at = 1 + 16 + 4 + 4 + 4 + 10;
    EXPECT_EQ(out[at], 0);
    EXPECT_EQ(out[at + 1], 0);
}

TEST_F(BlockRecordsTest, FortyCharacterLabelComesBackAsItsFirst32) {
    const QString forty = QStringLiteral("abcdefghijklmnopqrstuvwxyz0123456789ABCD");
    Bytes b;
    b.u8(1).i32(0).i32(0).i32(80).i32(40).i32(8);
    b.i32(1);
    Label(b, 1, 2, 0, forty);
    b.i32(0).i32(0).i32(5);
    TMemoryStream s(b.data());
    TDiagObject* o = TDiagObject::LoadFromStream(s, &List);
    EXPECT_EQ(o->FLabels[0].Text, forty.left(32));
    EXPECT_EQ(o->GetObjKey(), 5u);
    EXPECT_EQ(s.Position(), int64_t(b.size()));
}

TEST_F(BlockRecordsTest, StringLengthOfZeroOrLessReadsAsEmptyText) {
    Bytes b;
    b.u8(1).i32(0).i32(0).i32(80).i32(40).i32(8);
    b.i32(2);
    b.i32(1).i32(2).u8(0).i32(0);
    b.i32(3).i32(4).u8(0).i32(-7);
    b.i32(0).i32(0).i32(5);
    TMemoryStream s(b.data());
    TDiagObject* o = TDiagObject::LoadFromStream(s, &List);
    EXPECT_EQ(o->GetTextValues(), QStringLiteral("|"));
    EXPECT_EQ(o->GetTextPosValues(), QStringLiteral("1,2|3,4"));
    EXPECT_EQ(o->GetObjKey(), 5u);
}

TEST_F(BlockRecordsTest, RecordWithNoLabelsDropsTheDefaultLabels) {
    Bytes b;
    b.u8(4).i32(0).i32(0).i32(100).i32(200).i32(8).i32(0).i32(0).i32(0).i32(5);
    TMemoryStream s(b.data());
    TDiagObject* o = TDiagObject::LoadFromStream(s, &List);
    EXPECT_TRUE(o->FLabels.empty());
    EXPECT_TRUE(o->FInputs.empty());
    EXPECT_TRUE(o->FOutputs.empty());
}

TEST_F(BlockRecordsTest, ListRoundTripKeepsEveryBlock) {
    for (int k = 1; k <= 4; ++k)
        List.CreateObjByDiagType(TDiagObjectType(k), {10 * k, 5 * k, 10 * k + 100, 5 * k + 200});
    const std::vector<uint8_t> first = Saved(List);
    TMemoryStream s(first);
    List.LoadFromStream(s, NoEvent);
    ASSERT_EQ(List.Count(), 4);
    for (int k = 1; k <= 4; ++k)
        EXPECT_EQ(List[k - 1]->GetDiagObjType(), TDiagObjectType(k));
    EXPECT_EQ(HexDump(Saved(List)), HexDump(first));
}

// --- bad input

// A list of four blocks of every kind with labels and markers, built by hand, with the
// offsets of its fields.
struct MultiBlock {
    std::vector<uint8_t> Data;
    std::vector<std::pair<size_t, const char*>> Counts; // every count field
    std::vector<size_t> Strs;                           // every Str length field
    std::vector<size_t> Kinds;                          // every kind byte
    std::vector<size_t> Ends;                           // where each record ends
};

MultiBlock BuildMultiBlock() {
    MultiBlock m;
    Bytes b;
    auto count = [&](int32_t n, const char* what) {
        m.Counts.push_back({b.size(), what});
        b.i32(n);
    };
    auto label = [&](int32_t x, int32_t y, uint8_t h, const QString& t) {
        b.i32(x).i32(y).u8(h);
        m.Strs.push_back(b.size());
        b.str(t);
    };
    auto head = [&](uint8_t kind, int32_t l, int32_t t, int32_t r, int32_t bt) {
        m.Kinds.push_back(b.size());
        b.u8(kind).i32(l).i32(t).i32(r).i32(bt).i32(8);
    };
    count(4, "block count");

    head(doText, 10, 10, 130, 70);
    count(2, "label count");
    label(9, 5, 26, QStringLiteral("Text"));
    label(9, 30, 0, QStringLiteral("second"));
    count(2, "input count");
    Marker(b, 0, 17, itInversion, 4);
    Marker(b, 0, 41, itArrow, 4);
    count(1, "output count");
    Marker(b, 118, 28, itDirect, 0);
    b.i32(1001);
    m.Ends.push_back(b.size());

    head(doAndLogic, 150, 10, 210, 110);
    count(1, "label count");
    label(22, 18, 26, QStringLiteral("&"));
    count(2, "input count");
    Marker(b, 0, 25, itDirect, 6);
    Marker(b, 0, 71, itInversion, 6);
    count(1, "output count");
    Marker(b, 58, 48, itArrow, 6);
    b.i32(1002);
    m.Ends.push_back(b.size());

    head(doRSTrigger, 10, 120, 110, 320);
    count(3, "label count");
    label(29, 17, 26, QStringLiteral("R"));
    label(29, 115, 26, QStringLiteral("S"));
    label(64, 40, 26, QStringLiteral("T"));
    count(2, "input count");
    Marker(b, 0, 50, itDirect, 6);
    Marker(b, 0, 146, itDirect, 6);
    count(1, "output count");
    Marker(b, 98, 98, itDirect, 6);
    b.i32(1003);
    m.Ends.push_back(b.size());

    head(doOrLogic, 230, 10, 290, 110);
    count(1, "label count");
    label(24, 18, 26, QStringLiteral("1"));
    count(2, "input count");
    Marker(b, 0, 25, itArrow, 6);
    Marker(b, 0, 71, itDirect, 6);
    count(1, "output count");
    Marker(b, 58, 48, itInversion, 6);
    b.i32(1004);
    m.Ends.push_back(b.size());

    m.Data = b.data();
    return m;
}

std::vector<uint8_t> Patched(std::vector<uint8_t> d, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        d[at + size_t(i)] = uint8_t((v >> (8 * i)) & 0xFF);
    return d;
}

TEST_F(BlockRecordsTest, HandBuiltMultiBlockStreamIsValid) {
    const MultiBlock m = BuildMultiBlock();
    TMemoryStream s(m.Data);
    List.LoadFromStream(s, NoEvent);
    ASSERT_EQ(List.Count(), 4);
    EXPECT_EQ(HexDump(Saved(List)), HexDump(m.Data));
}

// The blocks in the list are exactly the first records of the stream, and no other block
// widget is left on the parent.
void ExpectOnlyWholeBlocks(const TDiagObjectList& list, const QWidget& parent, const MultiBlock& m,
                           int atMost) {
    EXPECT_LE(list.Count(), atMost);
    EXPECT_EQ(int(TGraphicHost::ControlsOf(&parent).size()), list.Count());
    size_t start = 4;
    for (int i = 0; i < list.Count(); ++i) {
        const std::vector<uint8_t> rec(m.Data.begin() + long(start),
                                       m.Data.begin() + long(m.Ends[size_t(i)]));
        EXPECT_EQ(HexDump(Saved(list[i])), HexDump(rec)) << "block " << i;
        start = m.Ends[size_t(i)];
    }
}

TEST_F(BlockRecordsTest, EveryTruncationIsAReadErrorAndKeepsOnlyWholeBlocks) {
    const MultiBlock m = BuildMultiBlock();
    for (size_t n = 0; n < m.Data.size(); ++n) {
        SCOPED_TRACE(testing::Message() << "prefix of " << n << " bytes");
        TMemoryStream s(std::vector<uint8_t>(m.Data.begin(), m.Data.begin() + long(n)));
        bool typed = false;
        try {
            List.LoadFromStream(s, NoEvent);
        } catch (const EReadError&) {
            typed = true;
        } catch (...) {
        }
        EXPECT_TRUE(typed);
        int whole = 0;
        while (whole < 4 && m.Ends[size_t(whole)] <= n)
            ++whole;
        ExpectOnlyWholeBlocks(List, Parent, m, whole);
    }
}

TEST_F(BlockRecordsTest, CountOfAllOnesInAnyCountFieldIsAFormatError) {
    const MultiBlock m = BuildMultiBlock();
    ASSERT_EQ(m.Counts.size(), 13u);
    for (const auto& [at, what] : m.Counts) {
        SCOPED_TRACE(testing::Message() << what << " at " << at);
        TMemoryStream s(Patched(m.Data, at, 0xFFFFFFFFu));
        try {
            List.LoadFromStream(s, NoEvent);
            ADD_FAILURE() << "loaded";
        } catch (const EFormatError& e) {
            EXPECT_EQ(e.Offset(), int64_t(at));
        } catch (...) {
            ADD_FAILURE() << "untyped error";
        }
        int whole = 0;
        while (whole < 4 && m.Ends[size_t(whole)] <= at)
            ++whole;
        ExpectOnlyWholeBlocks(List, Parent, m, whole);
    }
}

TEST_F(BlockRecordsTest, HugeCountInAnyCountFieldFailsAtThatField) {
    const MultiBlock m = BuildMultiBlock();
    for (const auto& [at, what] : m.Counts) {
        SCOPED_TRACE(testing::Message() << what << " at " << at);
        TMemoryStream s(Patched(m.Data, at, 0x7FFFFFFFu));
        try {
            List.LoadFromStream(s, NoEvent);
            ADD_FAILURE() << "loaded";
        } catch (const EFormatError& e) {
            EXPECT_EQ(e.Offset(), int64_t(at)) << e.what();
        } catch (...) {
            ADD_FAILURE() << "untyped error";
        }
        int whole = 0;
        while (whole < 4 && m.Ends[size_t(whole)] <= at)
            ++whole;
        ExpectOnlyWholeBlocks(List, Parent, m, whole);
    }
}

TEST_F(BlockRecordsTest, HugeStringLengthFailsAtThatField) {
    const MultiBlock m = BuildMultiBlock();
    ASSERT_EQ(m.Strs.size(), 7u);
    for (size_t at : m.Strs) {
        SCOPED_TRACE(testing::Message() << "Str length at " << at);
        TMemoryStream s(Patched(m.Data, at, 0x7FFFFFFFu));
        try {
            List.LoadFromStream(s, NoEvent);
            ADD_FAILURE() << "loaded";
        } catch (const EFormatError& e) {
            EXPECT_EQ(e.Offset(), int64_t(at)) << e.what();
        } catch (...) {
            ADD_FAILURE() << "untyped error";
        }
        int whole = 0;
        while (whole < 4 && m.Ends[size_t(whole)] <= at)
            ++whole;
        ExpectOnlyWholeBlocks(List, Parent, m, whole);
    }
}

TEST_F(BlockRecordsTest, UnknownKindFailsAtTheKindByteAndLeavesNoHalfBlock) {
    const MultiBlock m = BuildMultiBlock();
    ASSERT_EQ(m.Kinds.size(), 4u);
    for (uint8_t kind : {uint8_t(0), uint8_t(5), uint8_t(255)}) {
        for (size_t k = 0; k < m.Kinds.size(); ++k) {
            SCOPED_TRACE(testing::Message() << "kind " << int(kind) << " in record " << k);
            std::vector<uint8_t> d = m.Data;
            d[m.Kinds[k]] = kind;
            TMemoryStream s(d);
            try {
                List.LoadFromStream(s, NoEvent);
                ADD_FAILURE() << "loaded";
            } catch (const EFormatError& e) {
                EXPECT_EQ(e.Offset(), int64_t(m.Kinds[k])) << e.what();
            } catch (...) {
                ADD_FAILURE() << "untyped error";
            }
            EXPECT_EQ(List.Count(), int(k));
            ExpectOnlyWholeBlocks(List, Parent, m, int(k));
        }
    }
}

TEST_F(BlockRecordsTest, UnknownKindCreatesNoBlockInTheOwner) {
    for (uint8_t kind : {uint8_t(0), uint8_t(5)}) {
        Bytes b;
        b.u8(0xAA).u8(kind).i32(0).i32(0).i32(80).i32(40).i32(8).i32(0).i32(0).i32(0).i32(1);
        TMemoryStream s(b.data());
        s.SetPosition(1);
        try {
            TDiagObject::LoadFromStream(s, &List);
            ADD_FAILURE() << "loaded";
        } catch (const EFormatError& e) {
            EXPECT_EQ(e.Offset(), 1);
        }
        EXPECT_EQ(List.Count(), 0);
        EXPECT_EQ(BlockWidgets(), 0);
    }
}

TEST_F(BlockRecordsTest, TruncatedSingleRecordLeavesNoBlock) {
    const std::vector<uint8_t> rec = RSTriggerRecord();
    for (size_t n = 0; n < rec.size(); ++n) {
        TMemoryStream s(std::vector<uint8_t>(rec.begin(), rec.begin() + long(n)));
        EXPECT_THROW(TDiagObject::LoadFromStream(s, &List), EReadError) << n;
        EXPECT_EQ(List.Count(), 0);
        EXPECT_EQ(BlockWidgets(), 0);
    }
}

} // namespace
