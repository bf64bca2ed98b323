// The little-endian record codec: field order and byte layout, offsets, short records, and the
// count reader shared by every record reader.

#include "common/test_util.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/record_codec.h"
#include "velDiagEdit/platform/streams.h"

#include <gtest/gtest.h>

using namespace vde;
using vde::test::Bytes;

TEST(RecordCodec, WriterLaysFieldsOutLittleEndianInOrder) {
    TMemoryStream s;
    TRecordWriter w;
    w.Byte(0xAB).Word(0x1234).Int(-2).UInt(0x89ABCDEFu).Point({1, -1});
    w.Long(LongRec{0x0102, 0x0304}).Zeros(2).Str(QStringLiteral("h\u00e9"));
    w.Flush(s);
    const std::vector<uint8_t> want{0xAB, 0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF, 0xEF, 0xCD,
                                    0xAB, 0x89, 0x01, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF,
                                    0xFF, 0x02, 0x01, 0x04, 0x03, 0x00, 0x00, 0x02, 0x00,
                                    0x00, 0x00, 0x68, 0x00, 0xE9, 0x00};
    EXPECT_EQ(s.Bytes(), want);
    EXPECT_TRUE(w.Bytes().empty()) << "flushed";
}

TEST(RecordCodec, ReaderTakesTheFieldsBackAndKnowsItsOffsets) {
    TMemoryStream s(Bytes().u8(9).i32(-5).i32(7).i32(8).u16(3).u16(4).i32(100).data());
    s.SetPosition(1);
    TRecordReader r(s, 16);
    EXPECT_EQ(r.Start(), 1);
    EXPECT_EQ(r.Int(), -5);
    EXPECT_EQ(r.Offset(), 5);
    EXPECT_EQ(r.Point(), (TPoint{7, 8}));
    EXPECT_EQ(r.Long(), (LongRec{3, 4}));
    EXPECT_EQ(s.Position(), 17);
    EXPECT_THROW(r.Byte(), EReadError) << "past the 16 bytes read";
}

TEST(RecordCodec, ShortRecordIsAReadErrorNamingItsOffset) {
    TMemoryStream s(Bytes().i32(1).i32(2).data());
    s.SetPosition(4);
    try {
        TRecordReader r(s, 8);
        FAIL() << "no error";
    } catch (const EReadError& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("offset 4"))) << e.Message().toStdString();
    }
}

TEST(RecordCodec, RecordLargerThanTheInlineBufferIsReadWhole) {
    Bytes b;
    for (int i = 0; i < 40; ++i)
        b.i32(i * 1000);
    TMemoryStream s(b.data());
    TRecordReader r(s, 160);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(r.Int(), i * 1000);
}

TEST(RecordCodec, RecordSizesAreThoseOfTheStoredFormats) {
    EXPECT_EQ(kMarkerEntrySize, 12);
    EXPECT_EQ(kLabelEntryMinSize, 13);
    EXPECT_EQ(kBlockRecordMinSize, 37);
    // Eight 4-byte fields: keys, cross infos, point count, marker indexes, selection.
    EXPECT_EQ(kConnectionRecordBase, 32);
}

TEST(ReadCount, CountAboveTheLimitIsAFormatErrorAtItsOffset) {
    TMemoryStream s(Bytes().i32(0).i32(65536).data());
    s.SetPosition(4);
    try {
        s.ReadCount("Connection count", 0, true, 65535);
        FAIL() << "no error";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), 4);
    }
}

TEST(ReadCount, ElementSizeZeroDoesNotHoldTheCountAgainstTheStream) {
    TMemoryStream s(Bytes().i32(65535).data());
    EXPECT_EQ(s.ReadCount("Connection count", 0, true, 65535), 65535);
}

TEST(ReadCount, NegativeCountIsEmptyOnlyWhenTheFormatSaysSo) {
    TMemoryStream a(Bytes().i32(-3).data());
    EXPECT_EQ(a.ReadCount("Point count", 8, true), 0);
    TMemoryStream b(Bytes().i32(-3).data());
    EXPECT_THROW(b.ReadCount("Label count", 13), EFormatError);
}

TEST(StreamCopy, NegativeCountIsAReadErrorAndCopiesNothing) {
    TMemoryStream src(Bytes().i32(1).i32(2).data());
    TMemoryStream dst;
    EXPECT_THROW(dst.CopyFrom(src, -5), EReadError);
    EXPECT_TRUE(dst.Bytes().empty());
    EXPECT_EQ(src.Position(), 0);
}

TEST(StreamCopy, CountBeyondTheSourceIsAReadErrorBeforeAnythingIsCopied) {
    TMemoryStream src(Bytes().i32(1).i32(2).data());
    TMemoryStream dst;
    EXPECT_THROW(dst.CopyFrom(src, 9), EReadError);
    EXPECT_TRUE(dst.Bytes().empty());
    EXPECT_EQ(dst.CopyFrom(src, 8), 8);
    EXPECT_EQ(dst.Bytes(), src.Bytes());
}
