#include "velDiagEdit/platform/streams.h"

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/record_codec.h"

#include <QBuffer>
#include <QFile>
#include <QIODevice>
#include <algorithm>
#include <cstring>

namespace vde {

int64_t TStream::Size() {
    const int64_t pos = Seek(0, soCurrent);
    const int64_t size = Seek(0, soEnd);
    Seek(pos, soBeginning);
    return size;
}

void TStream::ReadBuffer(void* buffer, int64_t count) {
    if (count <= 0)
        return;
    const int64_t at = Position();
    if (Read(buffer, count) != count)
        throw EReadError(
            QStringLiteral("Stream read error: %1 bytes wanted at byte offset %2, fewer remain")
                .arg(count)
                .arg(at));
}

void TStream::WriteBuffer(const void* buffer, int64_t count) {
    if (count <= 0)
        return;
    if (Write(buffer, count) != count)
        throw EWriteError(QStringLiteral("Stream write error: %1 bytes").arg(count));
}

int64_t TStream::CopyFrom(TStream& source, int64_t count) {
    if (count < 0)
        throw EReadError(QStringLiteral("Cannot copy a negative number of bytes (%1)").arg(count));
    if (count == 0) {
        source.SetPosition(0);
        count = source.Size();
    } else if (count > source.Remaining()) {
        throw EReadError(
            QStringLiteral("Stream read error: %1 bytes wanted at byte offset %2, fewer remain")
                .arg(count)
                .arg(source.Position()));
    }
    const int64_t total = count;
    std::vector<uint8_t> buf(size_t(std::min<int64_t>(count, 1 << 16)));
    while (count > 0) {
        const int64_t n = std::min<int64_t>(count, int64_t(buf.size()));
        source.ReadBuffer(buf.data(), n);
        WriteBuffer(buf.data(), n);
        count -= n;
    }
    return total;
}

uint8_t TStream::ReadByte() {
    uint8_t v;
    ReadBuffer(&v, 1);
    return v;
}

int32_t TStream::ReadInt32() {
    return static_cast<int32_t>(ReadUInt32());
}

uint32_t TStream::ReadUInt32() {
    uint8_t b[4];
    ReadBuffer(b, 4);
    return GetLE32(b);
}

void TStream::WriteByte(uint8_t v) {
    WriteBuffer(&v, 1);
}

void TStream::WriteInt32(int32_t v) {
    WriteUInt32(static_cast<uint32_t>(v));
}

void TStream::WriteUInt32(uint32_t v) {
    uint8_t b[4];
    PutLE32(b, v);
    WriteBuffer(b, 4);
}

QString TStream::ReadStr() {
    const int64_t at = Position();
    const int32_t n = ReadInt32();
    if (n <= 0)
        return {};
    if (int64_t(n) * 2 > Remaining())
        throw EFormatError(
            QStringLiteral("String length %1 is larger than the %2 bytes that remain")
                .arg(n)
                .arg(Remaining()),
            at);
    std::vector<uint8_t> raw(size_t(n) * 2);
    ReadBuffer(raw.data(), int64_t(raw.size()));
    QString s(n, Qt::Uninitialized);
    for (int32_t i = 0; i < n; ++i)
        s[i] = QChar(GetLE16(raw.data() + 2 * i));
    return s;
}

void TStream::WriteStr(const QString& s) {
    WriteInt32(int32_t(s.size()));
    std::vector<uint8_t> raw(size_t(s.size()) * 2);
    for (qsizetype i = 0; i < s.size(); ++i)
        PutLE16(raw.data() + 2 * i, s[i].unicode());
    WriteBuffer(raw.data(), int64_t(raw.size()));
}

int32_t TStream::ReadCount(const char* what, int64_t elementSize, bool negativeIsEmpty,
                           int32_t maxCount) {
    const int64_t at = Position();
    const int32_t n = ReadInt32();
    if (n < 0 && negativeIsEmpty)
        return 0;
    if (n < 0)
        throw EFormatError(
            QStringLiteral("%1 %2 is negative").arg(QString::fromLatin1(what)).arg(n), at);
    if (n > maxCount)
        throw EFormatError(QStringLiteral("%1 %2 is more than the %3 that can be addressed")
                               .arg(QString::fromLatin1(what))
                               .arg(n)
                               .arg(maxCount),
                           at);
    if (elementSize > 0 && int64_t(n) * elementSize > Remaining())
        throw EFormatError(
            QStringLiteral("%1 %2 is larger than the %3 bytes that remain could hold")
                .arg(QString::fromLatin1(what))
                .arg(n)
                .arg(Remaining()),
            at);
    return n;
}

// --- TMemoryStream

int64_t TMemoryStream::Read(void* buffer, int64_t count) {
    const int64_t avail = int64_t(FData.size()) - FPos;
    const int64_t n = std::clamp<int64_t>(count, 0, std::max<int64_t>(avail, 0));
    if (n > 0) {
        std::memcpy(buffer, FData.data() + FPos, size_t(n));
        FPos += n;
    }
    return n;
}

int64_t TMemoryStream::Write(const void* buffer, int64_t count) {
    if (count <= 0)
        return 0;
    const int64_t end = FPos + count;
    if (end > int64_t(FData.size()))
        FData.resize(size_t(end));
    std::memcpy(FData.data() + FPos, buffer, size_t(count));
    FPos = end;
    return count;
}

int64_t TMemoryStream::Seek(int64_t offset, TSeekOrigin origin) {
    int64_t base = 0;
    if (origin == soCurrent)
        base = FPos;
    else if (origin == soEnd)
        base = int64_t(FData.size());
    FPos = std::max<int64_t>(0, base + offset);
    return FPos;
}

void TMemoryStream::SetSize(int64_t newSize) {
    FData.resize(size_t(std::max<int64_t>(newSize, 0)));
    FPos = std::min<int64_t>(FPos, int64_t(FData.size()));
}

// --- TDeviceStream

int64_t TDeviceStream::Read(void* buffer, int64_t count) {
    if (count <= 0)
        return 0;
    const qint64 n = FDevice->read(static_cast<char*>(buffer), count);
    return n < 0 ? 0 : n;
}

int64_t TDeviceStream::Write(const void* buffer, int64_t count) {
    if (count <= 0)
        return 0;
    const qint64 n = FDevice->write(static_cast<const char*>(buffer), count);
    return n < 0 ? 0 : n;
}

int64_t TDeviceStream::Seek(int64_t offset, TSeekOrigin origin) {
    int64_t base = 0;
    if (origin == soCurrent)
        base = FDevice->pos();
    else if (origin == soEnd)
        base = FDevice->size();
    const int64_t target = std::max<int64_t>(0, base + offset);
    if (target != FDevice->pos())
        FDevice->seek(target);
    return FDevice->pos();
}

void TDeviceStream::SetSize(int64_t newSize) {
    if (auto* f = qobject_cast<QFileDevice*>(FDevice))
        f->resize(newSize);
}

TFileStream::TFileStream(const QString& fileName, TFileMode mode)
    : TDeviceStream(nullptr), FFile(std::make_unique<QFile>(fileName)) {
    QIODevice::OpenMode m;
    switch (mode) {
    case fmCreate:
        m = QIODevice::ReadWrite | QIODevice::Truncate;
        break;
    case fmOpenRead:
        m = QIODevice::ReadOnly;
        break;
    case fmOpenWrite:
        m = QIODevice::WriteOnly | QIODevice::ExistingOnly;
        break;
    case fmOpenReadWrite:
        m = QIODevice::ReadWrite | QIODevice::ExistingOnly;
        break;
    }
    if (!FFile->open(m)) {
        const QString why = FFile->errorString();
        if (mode == fmCreate)
            throw EFCreateError(QStringLiteral("Cannot create file \"%1\": %2").arg(fileName, why));
        throw EFOpenError(QStringLiteral("Cannot open file \"%1\": %2").arg(fileName, why));
    }
    if (mode == fmOpenRead) {
        // Read at once into memory: the readers ask for the size and the position at every
        // record, and on an open file each of those is a system call (a 2.5 MB diagram made
        // hundreds of thousands of them and loaded three times slower than the same bytes
        // from memory).
        auto* file = static_cast<QFile*>(FFile.get());
        auto bytes = std::make_unique<QBuffer>();
        bytes->setData(file->readAll());
        if (file->error() != QFileDevice::NoError)
            throw EFOpenError(
                QStringLiteral("Cannot read file \"%1\": %2").arg(fileName, file->errorString()));
        bytes->open(QIODevice::ReadOnly);
        FFile = std::move(bytes);
    }
    FDevice = FFile.get();
}

TFileStream::~TFileStream() = default;

} // namespace vde
