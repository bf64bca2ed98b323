// Connection records and the list's stream block: golden bytes, round trips and bad input.

#include "connection_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

#include <random>
#include <typeinfo>

using namespace vde;
using namespace vde::test;

namespace {

using Path = std::vector<TPoint>;

std::string Hex(const std::vector<uint8_t>& bytes) {
    return HexDump(bytes).toStdString();
}

std::vector<uint8_t> Saved(const TDiagConnectList& cl) {
    TMemoryStream ms;
    cl.SaveToStream(ms);
    return ms.Bytes();
}

std::vector<uint8_t> Saved(const TDiagConnection& c) {
    TMemoryStream ms;
    c.SaveToStream(ms);
    return ms.Bytes();
}

// Loads the whole bytes as a list block; counts the create events.
struct Loaded {
    RecordingCanvas rc;
    TDiagConnectList cl{&rc.canvas};
    std::vector<TDiagConnection*> events;
    TMemoryStream ms;
    explicit Loaded(std::vector<uint8_t> bytes) : ms(std::move(bytes)) {}
    void Load(int n = -1) {
        cl.LoadFromStream(
            ms, [this](TDiagConnection* c) { events.push_back(c); }, n);
    }
};

// One connection with every stored field set to something recognisable.
void FillFirst(TDiagConnection* c) {
    c->FSrcKey = 0x11223344u;
    c->FDstKey = 0x55667788u;
    c->FSrcCrossInfo = LR(3, 2);
    c->FDstCrossInfo = LR(0x0A0B, 0x0105);
    c->FPoints = {{1, 2}, {-3, 400000}};
    c->FSrcConIdx = -2;
    c->FDstConIdx = 1;
    c->FSelectedIndex = 0;
}

Bytes FirstRecord() {
    Bytes b;
    b.raw({0x44, 0x33, 0x22, 0x11})    // source key
        .raw({0x88, 0x77, 0x66, 0x55}) // destination key
        .raw({0x02, 0x00, 0x03, 0x00}) // source cross info: Lo 2, Hi 3
        .u16(0x0105)
        .u16(0x0A0B) // destination cross info, Lo then Hi
        .i32(2)      // point count
        .i32(1)
        .i32(2)
        .raw({0xFD, 0xFF, 0xFF, 0xFF}) // -3
        .raw({0x80, 0x1A, 0x06, 0x00}) // 400000
        .i32(-2)                       // source marker
        .i32(1)                        // destination marker
        .i32(0);                       // selected segment
    return b;
}

} // namespace

TEST(ConnectionRecord, OneRecordMatchesTheGoldenBytes) {
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    auto* c = new TDiagConnection(&cl);
    FillFirst(c);
    const Bytes golden = FirstRecord();
    EXPECT_EQ(golden.size(), 48u);
    EXPECT_EQ(Hex(Saved(*c)), Hex(golden.data()));
}

TEST(ConnectionRecord, GoldenBytesLoadIntoAPlainEditableConnection) {
    TMemoryStream ms(FirstRecord().data());
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    TDiagConnection* c = TDiagConnection::LoadFromStream(ms, &cl);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(typeid(*c), typeid(TDiagConnection));
    EXPECT_EQ(cl.Count(), 1);
    EXPECT_EQ(cl.Items(0), c);
    EXPECT_EQ(ms.Position(), 48);
    EXPECT_EQ(c->FSrcKey, 0x11223344u);
    EXPECT_EQ(c->FDstKey, 0x55667788u);
    EXPECT_EQ(c->FSrcCrossInfo, LR(3, 2));
    EXPECT_EQ(c->FDstCrossInfo, LR(0x0A0B, 0x0105));
    EXPECT_EQ(c->FPoints, (Path{{1, 2}, {-3, 400000}}));
    EXPECT_EQ(c->FSrcConIdx, -2);
    EXPECT_EQ(c->FDstConIdx, 1);
    EXPECT_EQ(c->FSelectedIndex, 0);
    EXPECT_TRUE(c->GetIsEditable());
    EXPECT_EQ(c->FSource.data(), nullptr);
    EXPECT_EQ(c->FDest.data(), nullptr);
    EXPECT_EQ(c->FTol, (TPoint{0, 0}));
    EXPECT_EQ(c->FPenWidth, 2);
}

TEST(ConnectionRecord, RoutedConnectionStoresItsPathAndMarkersButNoKeys) {
    TDiagObjectList list(nullptr);
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    Bytes golden;
    golden.i32(0).i32(0).i32(0).i32(0).i32(6);
    for (TPoint p : Path{{77, 88}, {87, 88}, {87, 85}, {87, 85}, {191, 85}, {201, 85}})
        golden.i32(p.X).i32(p.Y);
    golden.i32(1).i32(-1).i32(-1);
    EXPECT_EQ(Hex(Saved(*c)), Hex(golden.data()));
}

TEST(ConnectionRecord, RecordWithoutPointsIsThirtyTwoBytesAndLoadsEmpty) {
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    auto* c = new TDiagConnection(&cl);
    c->FSrcKey = 5;
    const Bytes golden = Bytes().i32(5).i32(0).i32(0).i32(0).i32(0).i32(0).i32(0).i32(-1);
    EXPECT_EQ(Saved(*c), golden.data());
    EXPECT_EQ(Saved(*c).size(), 32u);
    TMemoryStream ms(golden.data());
    TDiagConnection* l = TDiagConnection::LoadFromStream(ms, &cl);
    EXPECT_TRUE(l->FPoints.empty());
    EXPECT_EQ(l->FSrcKey, 5u);
    EXPECT_EQ(l->FSelectedIndex, -1);
    EXPECT_EQ(ms.Position(), 32);
}

TEST(ConnectionList, EmptyListSavesAsFourZeroBytesAndLoadsBackEmpty) {
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    EXPECT_EQ(Saved(cl), (std::vector<uint8_t>{0, 0, 0, 0}));
    Loaded l(Saved(cl));
    Wire(l.cl, {{1, 1}, {2, 1}});
    l.Load();
    EXPECT_EQ(l.cl.Count(), 0);
    EXPECT_TRUE(l.events.empty());
    EXPECT_EQ(l.ms.Position(), 4);
}

TEST(ConnectionList, ListOfTwoMatchesTheGoldenBytes) {
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    FillFirst(new TDiagConnection(&cl));
    auto* second = new TDiagConnection(&cl);
    second->FDstKey = 0xCAFE;
    second->FDstCrossInfo = LR(1, 1);
    second->FPoints = {{7, 8}};
    second->FSelectedIndex = -1;
    const Bytes first = FirstRecord();
    Bytes golden;
    golden.i32(2);
    for (uint8_t byte : first.data())
        golden.u8(byte);
    golden.i32(0).i32(0xCAFE).i32(0).u16(1).u16(1).i32(1).i32(7).i32(8).i32(0).i32(0).i32(-1);
    EXPECT_EQ(golden.size(), 4u + 48u + 40u);
    EXPECT_EQ(Hex(Saved(cl)), Hex(golden.data()));

    Loaded l(golden.data());
    l.Load();
    ASSERT_EQ(l.cl.Count(), 2);
    EXPECT_EQ(l.events, (std::vector<TDiagConnection*>{l.cl.Items(0), l.cl.Items(1)}));
    EXPECT_EQ(l.cl.Items(0)->FPoints, (Path{{1, 2}, {-3, 400000}}));
    EXPECT_EQ(l.cl.Items(1)->FDstKey, 0xCAFEu);
    EXPECT_EQ(l.cl.Items(1)->FDstCrossInfo, LR(1, 1));
    EXPECT_EQ(l.cl.Items(1)->FPoints, (Path{{7, 8}}));
    EXPECT_EQ(l.ms.Position(), int64_t(golden.size()));
    EXPECT_EQ(Saved(l.cl), golden.data());
}

TEST(ConnectionList, LoadWithCountZeroClearsAndReadsNothing) {
    Loaded l(Bytes().i32(1).data());
    Wire(l.cl, {{1, 1}, {2, 1}});
    l.Load(0);
    EXPECT_EQ(l.cl.Count(), 0);
    EXPECT_EQ(l.ms.Position(), 0);
    EXPECT_TRUE(l.events.empty());
}

TEST(ConnectionList, LoadWithAGivenCountReadsThatManyRecords) {
    const Bytes first = FirstRecord();
    Bytes b;
    for (uint8_t byte : first.data())
        b.u8(byte);
    for (uint8_t byte : first.data())
        b.u8(byte);
    Loaded l(b.data());
    l.Load(1);
    EXPECT_EQ(l.cl.Count(), 1);
    EXPECT_EQ(l.ms.Position(), 48);
    EXPECT_EQ(l.events.size(), 1u);
}

TEST(ConnectionListProperty, SaveLoadSaveGivesTheSameBytes) {
    std::mt19937 rng(4242u);
    auto rnd = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    auto any32 = [&rng] { return int32_t(rng()); };
    for (int iter = 0; iter < 300; ++iter) {
        RecordingCanvas rc;
        TDiagConnectList cl(&rc.canvas);
        const int n = rnd(0, 5);
        for (int i = 0; i < n; ++i) {
            auto* c = new TDiagConnection(&cl);
            c->FSrcKey = uint32_t(any32());
            c->FDstKey = uint32_t(any32());
            c->FSrcCrossInfo = LongRec::FromValue(uint32_t(any32()));
            c->FDstCrossInfo = LongRec::FromValue(uint32_t(any32()));
            for (int k = rnd(0, 12); k > 0; --k)
                c->FPoints.push_back({any32(), any32()});
            c->FSrcConIdx = any32();
            c->FDstConIdx = any32();
            c->FSelectedIndex = any32();
        }
        const std::vector<uint8_t> first = Saved(cl);
        Loaded l(first);
        l.Load();
        ASSERT_EQ(l.cl.Count(), n) << "case " << iter;
        for (int i = 0; i < n; ++i) {
            const TDiagConnection* a = cl.Items(i);
            const TDiagConnection* b = l.cl.Items(i);
            EXPECT_EQ(a->FPoints, b->FPoints);
            EXPECT_EQ(a->FSrcKey, b->FSrcKey);
            EXPECT_EQ(a->FDstCrossInfo, b->FDstCrossInfo);
            EXPECT_EQ(a->FSelectedIndex, b->FSelectedIndex);
        }
        EXPECT_EQ(Saved(l.cl), first) << "case " << iter;
    }
}

// --- bad input

namespace {

// count 3; records of 2, 0 and 3 points: 4 + 48 + 32 + 56 bytes.
struct ThreeRecords {
    std::vector<uint8_t> bytes;
    std::vector<size_t> recordEnds{52, 84, 140};
    ThreeRecords() {
        Bytes b;
        b.i32(3);
        b.i32(1).i32(2).i32(0).i32(0).i32(2).i32(10).i32(20).i32(30).i32(20).i32(1).i32(-1).i32(0);
        b.i32(3).i32(4).i32(0).i32(0).i32(0).i32(0).i32(0).i32(-1);
        b.i32(5).i32(6).u16(1).u16(1).i32(0).i32(3);
        b.i32(0).i32(0).i32(5).i32(0).i32(5).i32(9).i32(-1).i32(0).i32(2);
        bytes = b.data();
    }
};

} // namespace

TEST(ConnectionListBadInput, EveryTruncationIsATypedErrorAndKeepsOnlyWholeRecords) {
    const ThreeRecords s;
    ASSERT_EQ(s.bytes.size(), 140u);
    {
        Loaded whole(s.bytes);
        whole.Load();
        ASSERT_EQ(whole.cl.Count(), 3);
    }
    for (size_t len = 0; len < s.bytes.size(); ++len) {
        SCOPED_TRACE(::testing::Message() << "prefix of " << len << " bytes");
        Loaded l({s.bytes.begin(), s.bytes.begin() + ptrdiff_t(len)});
        bool threw = false;
        int64_t formatOffset = -1;
        try {
            l.Load();
        } catch (const EFormatError& e) {
            threw = true;
            formatOffset = e.Offset();
        } catch (const EReadError&) {
            threw = true;
        }
        ASSERT_TRUE(threw);
        // The count is not held against the stream: every whole record read before the
        // stream ran out stays, and its event was called.
        size_t whole = 0;
        for (size_t end : s.recordEnds)
            whole += end <= len ? 1 : 0;
        EXPECT_EQ(l.cl.Count(), int(whole));
        EXPECT_EQ(l.events.size(), whole);
        // A point count is checked before its points are allocated: the first record's (2
        // points, at byte 20) and the third record's (3 points, at byte 100).
        if (len >= 24 && len < 24 + 16)
            EXPECT_EQ(formatOffset, 20);
        else if (len >= 104 && len < 104 + 24)
            EXPECT_EQ(formatOffset, 100);
        else
            EXPECT_EQ(formatOffset, -1) << "a plain read error";
    }
}

namespace {

// count 2; a record of 2 points (ends at 52) and one of 1 point (ends at 92).
std::vector<uint8_t> TwoRecords() {
    Bytes b;
    b.i32(2);
    b.i32(0x0A).i32(0x0B).u16(1).u16(1).i32(0).i32(2).i32(10).i32(20).i32(30).i32(40);
    b.i32(1).i32(-1).i32(0);
    b.i32(0x0C).i32(0x0D).i32(0).i32(0).i32(1).i32(5).i32(6).i32(2).i32(-2).i32(-1);
    return b.data();
}

void Put(std::vector<uint8_t>& bytes, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        bytes[at + size_t(i)] = uint8_t(v >> (8 * i));
}

} // namespace

TEST(ConnectionListBadInput, AllOnesListCountReadsNoRecords) {
    auto bytes = TwoRecords();
    Put(bytes, 0, 0xFFFFFFFFu);
    Loaded l(bytes);
    EXPECT_NO_THROW(l.Load());
    EXPECT_EQ(l.cl.Count(), 0);
    EXPECT_EQ(l.ms.Position(), 4);
}

TEST(ConnectionListBadInput, AllOnesPointCountInTheLastRecordLoadsAnEmptyPath) {
    auto bytes = TwoRecords();
    Put(bytes, 68, 0xFFFFFFFFu);
    Loaded l(bytes);
    EXPECT_NO_THROW(l.Load());
    ASSERT_EQ(l.cl.Count(), 2);
    EXPECT_EQ(l.cl.Items(0)->FPoints, (Path{{10, 20}, {30, 40}}));
    const TDiagConnection* c = l.cl.Items(1);
    EXPECT_TRUE(c->FPoints.empty());
    EXPECT_EQ(c->FSrcKey, 0x0Cu);
    // The three integers after the count are read from where the point was.
    EXPECT_EQ(c->FSrcConIdx, 5);
    EXPECT_EQ(c->FDstConIdx, 6);
    EXPECT_EQ(c->FSelectedIndex, 2);
    EXPECT_EQ(l.ms.Position(), 84);
}

TEST(ConnectionListBadInput, AllOnesPointCountInTheFirstRecordMisreadsTheRestIntoAnError) {
    auto bytes = TwoRecords();
    Put(bytes, 20, 0xFFFFFFFFu);
    Loaded l(bytes);
    try {
        l.Load();
        FAIL() << "no error";
    } catch (const EFormatError& e) {
        // The second read starts inside the first record's points; its "point count" is the
        // second record's source key, 12, which 36 remaining bytes cannot hold.
        EXPECT_EQ(e.Offset(), 52);
    }
    ASSERT_EQ(l.cl.Count(), 1);
    const TDiagConnection* c = l.cl.Items(0);
    EXPECT_TRUE(c->FPoints.empty());
    EXPECT_EQ(c->FSrcKey, 0x0Au);
    EXPECT_EQ(c->FDstKey, 0x0Bu);
    EXPECT_EQ(c->FSrcCrossInfo, LR(1, 1));
    EXPECT_EQ(c->FSrcConIdx, 10);
    EXPECT_EQ(c->FDstConIdx, 20);
    EXPECT_EQ(c->FSelectedIndex, 30);
    EXPECT_EQ(l.events.size(), 1u);
}

TEST(ConnectionListBadInput, HugeCountsAreFormatErrorsAtTheirOffsets) {
    struct Case {
        size_t at;
        int kept;
    };
    for (const Case k : {Case{0, 0}, Case{20, 0}, Case{68, 1}}) {
        SCOPED_TRACE(::testing::Message() << "count at " << k.at);
        auto bytes = TwoRecords();
        Put(bytes, k.at, 0x7FFFFFFFu);
        Loaded l(bytes);
        Wire(l.cl, {{0, 0}, {1, 0}});
        try {
            l.Load();
            ADD_FAILURE() << "no error";
        } catch (const EFormatError& e) {
            EXPECT_EQ(e.Offset(), int64_t(k.at));
            EXPECT_FALSE(e.Message().isEmpty());
        }
        ASSERT_EQ(l.cl.Count(), k.kept);
        if (k.kept == 1) {
            EXPECT_EQ(l.cl.Items(0)->FPoints, (Path{{10, 20}, {30, 40}}));
            EXPECT_EQ(l.cl.Items(0)->FSelectedIndex, 0);
        }
    }
}

TEST(ConnectionListBadInput, HugePointCountOfASingleRecordLeavesNoConnection) {
    Bytes b = Bytes().i32(1).i32(2).i32(0).i32(0).i32(0x40000000).i32(0).i32(0).i32(0);
    TMemoryStream ms(b.data());
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    EXPECT_THROW(TDiagConnection::LoadFromStream(ms, &cl), EFormatError);
    EXPECT_EQ(cl.Count(), 0);
}
