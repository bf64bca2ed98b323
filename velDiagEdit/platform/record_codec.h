#pragma once
// The one little-endian codec of the stored records. A record is written field by field into a
// buffer that goes out in one write, and read in one read of its fixed part, then taken apart
// field by field; the widths of the fields are stated once, here, and so are the record sizes
// that the readers check counts against.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vde {

class TStream;

// --- primitives, whatever the host's byte order

inline void PutLE16(uint8_t* p, uint16_t v) {
    p[0] = uint8_t(v & 0xFFu);
    p[1] = uint8_t(v >> 8);
}
inline void PutLE32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = uint8_t((v >> (8 * i)) & 0xFFu);
}
inline uint16_t GetLE16(const uint8_t* p) {
    return uint16_t(uint32_t(p[0]) | (uint32_t(p[1]) << 8));
}
inline uint32_t GetLE32(const uint8_t* p) {
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}

// --- field widths and record sizes, in bytes

constexpr int64_t kIntSize = 4; // Int: signed 32-bit
constexpr int64_t kByteSize = 1;
constexpr int64_t kPointSize = 2 * kIntSize;
constexpr int64_t kRectSize = 4 * kIntSize;
constexpr int64_t kLongRecSize = 4; // Lo word, then Hi word
// Str: an Int count of UTF-16 units, then the units.
constexpr int64_t kStrMinSize = kIntSize;
// Marker entry: P.X, P.Y, IOType, Size, two reserved bytes.
constexpr int64_t kMarkerEntrySize = kPointSize + 2 * kByteSize + 2;
// Label entry: Start, Height, Str text.
constexpr int64_t kLabelEntryMinSize = kPointSize + kByteSize + kStrMinSize;
// Block record without labels and markers: kind, bounds, delta width, three counts, key.
constexpr int64_t kBlockRecordMinSize = kByteSize + kRectSize + kIntSize + 3 * kIntSize + kIntSize;
// Connection record: keys, cross infos, point count (the head), the points, then the two
// marker indexes and the selected segment (the tail).
constexpr int64_t kConnectionHeadSize = 2 * kIntSize + 2 * kLongRecSize + kIntSize;
constexpr int64_t kConnectionTailSize = 3 * kIntSize;
constexpr int64_t kConnectionRecordBase = kConnectionHeadSize + kConnectionTailSize;
// Control entry: Str name, then the bounds (read only for a name that is found).
constexpr int64_t kControlEntryMinSize = kStrMinSize;

// Builds one record in memory; Flush writes it with one WriteBuffer.
class VELDIAGEDIT_EXPORT TRecordWriter {
public:
    explicit TRecordWriter(size_t reserve = 0) { FBuf.reserve(reserve); }
    TRecordWriter& Byte(uint8_t v);
    TRecordWriter& Word(uint16_t v);
    TRecordWriter& Int(int32_t v);
    TRecordWriter& UInt(uint32_t v);
    TRecordWriter& Point(TPoint p);
    TRecordWriter& Rect(const TRect& r);
    TRecordWriter& Long(LongRec r);
    TRecordWriter& Zeros(size_t n);
    // Str: Int count of UTF-16 units, then the units.
    TRecordWriter& Str(const QString& s);
    const std::vector<uint8_t>& Bytes() const { return FBuf; }
    void Flush(TStream& Stream);

private:
    std::vector<uint8_t> FBuf;
};

// Reads a fixed part of a record with one ReadBuffer (an EReadError naming the offset when the
// stream holds fewer bytes) and hands out its fields in order.
class VELDIAGEDIT_EXPORT TRecordReader {
public:
    TRecordReader(TStream& Stream, int64_t Size);
    TRecordReader(const TRecordReader&) = delete;
    TRecordReader& operator=(const TRecordReader&) = delete;
    uint8_t Byte();
    uint16_t Word();
    int32_t Int();
    uint32_t UInt();
    TPoint Point();
    TRect Rect();
    LongRec Long();
    void Skip(size_t n);
    // Stream offset of the record's first byte and of the next field to be read.
    int64_t Start() const { return FStart; }
    int64_t Offset() const { return FStart + int64_t(FPos); }

private:
    const uint8_t* Take(size_t n);
    // Small records (the common case) are read into the object itself.
    uint8_t FSmall[64];
    std::vector<uint8_t> FLarge;
    const uint8_t* FData = nullptr;
    size_t FSize = 0;
    size_t FPos = 0;
    int64_t FStart = 0;
};

} // namespace vde
