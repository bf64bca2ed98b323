#include "common/test_util.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vde;
using vde::test::Bytes;

TEST(MemoryStream, ReadMayBeShortReadBufferRaises) {
    TMemoryStream s(std::vector<uint8_t>{1, 2, 3});
    uint8_t buf[8] = {};
    EXPECT_EQ(s.Read(buf, 8), 3);
    s.SetPosition(1);
    EXPECT_THROW(s.ReadBuffer(buf, 3), EReadError);
}

TEST(MemoryStream, IntsAreLittleEndian) {
    TMemoryStream s;
    s.WriteInt32(0x01020304);
    s.WriteInt32(-2);
    EXPECT_EQ(s.Bytes(), (std::vector<uint8_t>{4, 3, 2, 1, 0xFE, 0xFF, 0xFF, 0xFF}));
    s.SetPosition(0);
    EXPECT_EQ(s.ReadInt32(), 0x01020304);
    EXPECT_EQ(s.ReadInt32(), -2);
}

TEST(MemoryStream, StrIsCountAndUtf16Units) {
    TMemoryStream s;
    s.WriteStr(QStringLiteral("Aж"));
    EXPECT_EQ(s.Bytes(), Bytes().i32(2).u16('A').u16(0x0436).data());
    s.SetPosition(0);
    EXPECT_EQ(s.ReadStr(), QStringLiteral("Aж"));
}

TEST(MemoryStream, NonPositiveStrCountIsEmpty) {
    TMemoryStream s(Bytes().i32(-5).i32(7).data());
    EXPECT_EQ(s.ReadStr(), QString());
    EXPECT_EQ(s.Position(), 4);
}

TEST(MemoryStream, HugeStrCountFailsAtOnceWithOffset) {
    TMemoryStream s(Bytes().u8(9).i32(-1 /*0xFFFFFFFF is negative*/).i32(0x7FFFFFFF).data());
    s.SetPosition(5);
    try {
        s.ReadStr();
        FAIL();
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), 5);
    }
}

TEST(MemoryStream, StrCountIsCheckedInBytesNotInUnits) {
    // Three UTF-16 units need 6 bytes; 4 remain. A check of the count against the bytes alone
    // (3 <= 4) would let it through to a short read.
    TMemoryStream s(Bytes().u8(0).i32(3).u16('a').u16('b').data());
    s.SetPosition(1);
    try {
        s.ReadStr();
        FAIL() << "a string longer than the bytes left was read";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), 1);
        EXPECT_TRUE(e.Message().contains(QStringLiteral("String length 3"))) << e.what();
    }
    // Nothing of the string was consumed beyond its count.
    EXPECT_EQ(s.Position(), 5);
}

TEST(MemoryStream, StrCountWhoseUnitsExactlyFillTheRestIsRead) {
    TMemoryStream s(Bytes().i32(2).u16('a').u16('b').data());
    EXPECT_EQ(s.ReadStr(), QStringLiteral("ab"));
    EXPECT_EQ(s.Position(), 8);
}

TEST(MemoryStream, StrCountOneUnitTooLongFailsAtOnce) {
    // 2 units need 4 bytes; 3 remain (one byte past an odd end).
    TMemoryStream s(Bytes().i32(2).u16('a').u8('b').data());
    EXPECT_THROW(s.ReadStr(), EFormatError);
}

TEST(MemoryStream, ReadCountChecksRemainingBytes) {
    TMemoryStream s(Bytes().i32(3).i32(0).i32(0).data());
    EXPECT_THROW(s.ReadCount("points", 8), EFormatError);
    s.SetPosition(0);
    EXPECT_EQ(s.ReadCount("points", 2), 3);
}

TEST(MemoryStream, CopyFromWholeSource) {
    TMemoryStream a(std::vector<uint8_t>{5, 6, 7});
    a.SetPosition(2);
    TMemoryStream b;
    EXPECT_EQ(b.CopyFrom(a, 0), 3);
    EXPECT_EQ(b.Bytes(), (std::vector<uint8_t>{5, 6, 7}));
}

TEST(FileStream, WritesAndReadsBack) {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("x.bin"));
    {
        TFileStream f(name, fmCreate);
        f.WriteInt32(77);
    }
    TFileStream f(name, fmOpenRead);
    EXPECT_EQ(f.Size(), 4);
    EXPECT_EQ(f.ReadInt32(), 77);
    EXPECT_THROW(f.ReadInt32(), EReadError);
}

TEST(FileStream, MissingFileIsOpenError) {
    EXPECT_THROW(TFileStream(QStringLiteral("/nonexistent/dir/x.dgm"), fmOpenRead), EFOpenError);
    EXPECT_THROW(TFileStream(QStringLiteral("/nonexistent/dir/x.dgm"), fmCreate), EFCreateError);
}
