#pragma once
// Byte streams. Read/Write may transfer less than asked and say how much; ReadBuffer/WriteBuffer
// raise on a short transfer. Numbers are little-endian whatever the host. The record helpers
// check every count against the bytes that remain before anything is allocated.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

class QIODevice;

namespace vde {

enum TSeekOrigin { soBeginning, soCurrent, soEnd };

class VELDIAGEDIT_EXPORT TStream {
public:
    virtual ~TStream() = default;
    virtual int64_t Read(void* buffer, int64_t count) = 0;
    virtual int64_t Write(const void* buffer, int64_t count) = 0;
    virtual int64_t Seek(int64_t offset, TSeekOrigin origin) = 0;
    virtual void SetSize(int64_t newSize) = 0;

    int64_t Position() { return Seek(0, soCurrent); }
    void SetPosition(int64_t pos) { Seek(pos, soBeginning); }
    int64_t Size();
    int64_t Remaining() { return Size() - Position(); }

    void ReadBuffer(void* buffer, int64_t count);
    void WriteBuffer(const void* buffer, int64_t count);
    // Copies Count bytes from Source's position; Count 0 copies all of Source from its start.
    // A negative Count, or one larger than what Source has left, is an EReadError before
    // anything is copied.
    int64_t CopyFrom(TStream& source, int64_t count);

    uint8_t ReadByte();
    int32_t ReadInt32();
    uint32_t ReadUInt32();
    void WriteByte(uint8_t v);
    void WriteInt32(int32_t v);
    void WriteUInt32(uint32_t v);
    // Str: Int count of UTF-16 units, then the units; a count <= 0 reads as the empty string.
    QString ReadStr();
    void WriteStr(const QString& s);
    // The one reader of a count of records of elementSize bytes each. An EFormatError naming
    // `what` and the offset when the count is negative (unless negativeIsEmpty, for formats
    // where a count <= 0 means no records: 0 is returned), when it is above maxCount, or when
    // it announces more records than the remaining bytes could hold (elementSize 0 skips that
    // test, for a reader that keeps what it read before the stream runs out).
    int32_t ReadCount(const char* what, int64_t elementSize, bool negativeIsEmpty = false,
                      int32_t maxCount = INT32_MAX);
};

class VELDIAGEDIT_EXPORT TMemoryStream : public TStream {
public:
    TMemoryStream() = default;
    explicit TMemoryStream(std::vector<uint8_t> bytes) : FData(std::move(bytes)) {}
    int64_t Read(void* buffer, int64_t count) override;
    int64_t Write(const void* buffer, int64_t count) override;
    int64_t Seek(int64_t offset, TSeekOrigin origin) override;
    void SetSize(int64_t newSize) override;
    void Clear() { FData.clear(), FPos = 0; }

    const std::vector<uint8_t>& Bytes() const { return FData; }
    const uint8_t* Memory() const { return FData.data(); }
    void Reserve(int64_t n) { FData.reserve(size_t(n)); }

private:
    std::vector<uint8_t> FData;
    int64_t FPos = 0;
};

// Over any open QIODevice (a QFile, a QSaveFile, a QBuffer); the device is not owned.
class VELDIAGEDIT_EXPORT TDeviceStream : public TStream {
public:
    explicit TDeviceStream(QIODevice* device) : FDevice(device) {}
    int64_t Read(void* buffer, int64_t count) override;
    int64_t Write(const void* buffer, int64_t count) override;
    int64_t Seek(int64_t offset, TSeekOrigin origin) override;
    void SetSize(int64_t newSize) override;

protected:
    QIODevice* FDevice;
};

enum TFileMode { fmCreate, fmOpenRead, fmOpenWrite, fmOpenReadWrite };

class VELDIAGEDIT_EXPORT TFileStream : public TDeviceStream {
public:
    // Raises EFCreateError / EFOpenError with the file name and the system's reason. A file
    // opened for reading is read into memory at once and read from there.
    TFileStream(const QString& fileName, TFileMode mode);
    ~TFileStream() override;

private:
    std::unique_ptr<QIODevice> FFile;
};

} // namespace vde
