#include "velDiagEdit/platform/record_codec.h"

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

namespace vde {

TRecordWriter& TRecordWriter::Byte(uint8_t v) {
    FBuf.push_back(v);
    return *this;
}

TRecordWriter& TRecordWriter::Word(uint16_t v) {
    const size_t at = FBuf.size();
    FBuf.resize(at + 2);
    PutLE16(FBuf.data() + at, v);
    return *this;
}

TRecordWriter& TRecordWriter::Int(int32_t v) {
    return UInt(static_cast<uint32_t>(v));
}

TRecordWriter& TRecordWriter::UInt(uint32_t v) {
    const size_t at = FBuf.size();
    FBuf.resize(at + 4);
    PutLE32(FBuf.data() + at, v);
    return *this;
}

TRecordWriter& TRecordWriter::Point(TPoint p) {
    return Int(p.X).Int(p.Y);
}

TRecordWriter& TRecordWriter::Rect(const TRect& r) {
    return Int(r.Left).Int(r.Top).Int(r.Right).Int(r.Bottom);
}

TRecordWriter& TRecordWriter::Long(LongRec r) {
    return Word(r.Lo).Word(r.Hi);
}

TRecordWriter& TRecordWriter::Zeros(size_t n) {
    FBuf.resize(FBuf.size() + n, 0);
    return *this;
}

TRecordWriter& TRecordWriter::Str(const QString& s) {
    Int(int32_t(s.size()));
    const size_t at = FBuf.size();
    FBuf.resize(at + 2 * size_t(s.size()));
    for (qsizetype i = 0; i < s.size(); ++i)
        PutLE16(FBuf.data() + at + 2 * size_t(i), s[i].unicode());
    return *this;
}

void TRecordWriter::Flush(TStream& Stream) {
    Stream.WriteBuffer(FBuf.data(), int64_t(FBuf.size()));
    FBuf.clear();
}

TRecordReader::TRecordReader(TStream& Stream, int64_t Size)
    : FSize(size_t(Size > 0 ? Size : 0)), FStart(Stream.Position()) {
    uint8_t* buf = FSmall;
    if (FSize > sizeof FSmall) {
        // Callers size records from counts already checked against the stream.
        FLarge.resize(FSize);
        buf = FLarge.data();
    }
    Stream.ReadBuffer(buf, int64_t(FSize));
    FData = buf;
}

const uint8_t* TRecordReader::Take(size_t n) {
    // A field past the fixed part is a mistake in the reader, not in the input.
    if (FPos + n > FSize)
        throw EReadError(QStringLiteral("Record field past the end of a %1-byte record at byte "
                                        "offset %2")
                             .arg(FSize)
                             .arg(FStart));
    const uint8_t* p = FData + FPos;
    FPos += n;
    return p;
}

uint8_t TRecordReader::Byte() {
    return *Take(1);
}

uint16_t TRecordReader::Word() {
    return GetLE16(Take(2));
}

int32_t TRecordReader::Int() {
    return static_cast<int32_t>(UInt());
}

uint32_t TRecordReader::UInt() {
    return GetLE32(Take(4));
}

TPoint TRecordReader::Point() {
    const int32_t x = Int();
    return {x, Int()};
}

TRect TRecordReader::Rect() {
    TRect r;
    r.Left = Int();
    r.Top = Int();
    r.Right = Int();
    r.Bottom = Int();
    return r;
}

LongRec TRecordReader::Long() {
    LongRec r;
    r.Lo = Word();
    r.Hi = Word();
    return r;
}

void TRecordReader::Skip(size_t n) {
    Take(n);
}

} // namespace vde
