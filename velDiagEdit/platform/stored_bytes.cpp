#include "velDiagEdit/platform/stored_bytes.h"

#include "velDiagEdit/platform/errors.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>
#include <openssl/evp.h>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#else
#include <QLockFile>
#include <memory>
#endif

namespace vde {

namespace {

constexpr int kLockWaitMs = 10000;

// Holds the folder of a file against the other conditional writers for its lifetime. On Unix an
// advisory lock on the folder itself: it goes with the process however the process ends, and
// leaves nothing beside the file.
class TFolderLock {
public:
    explicit TFolderLock(const QString& FileName) {
        const QString folder = QFileInfo(FileName).absolutePath();
#ifdef Q_OS_UNIX
        FFd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (FFd < 0)
            Fail(FileName, QString::fromLocal8Bit(strerror(errno)));
        const QDeadlineTimer deadline(kLockWaitMs);
        while (::flock(FFd, LOCK_EX | LOCK_NB) != 0) {
            if ((errno != EWOULDBLOCK && errno != EINTR) || deadline.hasExpired()) {
                const QString why = errno == EWOULDBLOCK
                                        ? QStringLiteral("another save holds its folder")
                                        : QString::fromLocal8Bit(strerror(errno));
                ::close(FFd);
                Fail(FileName, why);
            }
            QThread::usleep(200);
        }
#else
        FLock = std::make_unique<QLockFile>(FileName + QStringLiteral(".lock"));
        if (!FLock->tryLock(kLockWaitMs))
            Fail(FileName, QStringLiteral("another save holds its lock file"));
#endif
    }
    ~TFolderLock() {
#ifdef Q_OS_UNIX
        ::close(FFd);
#endif
    }
    TFolderLock(const TFolderLock&) = delete;
    TFolderLock& operator=(const TFolderLock&) = delete;

private:
    [[noreturn]] static void Fail(const QString& FileName, const QString& Why) {
        throw EFCreateError(QStringLiteral("Cannot write file \"%1\": cannot lock its folder: %2")
                                .arg(FileName, Why));
    }
#ifdef Q_OS_UNIX
    int FFd = -1;
#else
    std::unique_ptr<QLockFile> FLock;
#endif
};

} // namespace

QString ContentFingerprint(const void* Data, int64_t Size) {
    if (Size <= 0)
        return QString();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(Data, size_t(Size), digest, &length, EVP_sha256(), nullptr) != 1)
        throw EInvalidOperation(QStringLiteral("The SHA-256 digest could not be computed"));
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(digest), int(length)).toHex());
}

QString ContentFingerprint(const QByteArray& Bytes) {
    return ContentFingerprint(Bytes.constData(), Bytes.size());
}

QString FileFingerprint(const QString& FileName) {
    QFile f(FileName);
    if (!f.exists())
        return QString();
    if (!f.open(QIODevice::ReadOnly))
        throw EFOpenError(
            QStringLiteral("Cannot open file \"%1\": %2").arg(FileName, f.errorString()));
    return ContentFingerprint(f.readAll());
}

QString ShortFingerprint(const QString& Fingerprint) {
    return Fingerprint.isEmpty() ? QStringLiteral("nothing stored") : Fingerprint.left(12);
}

TConditionalWrite WriteFileIfUnchanged(const QString& FileName, const QByteArray& Bytes,
                                       const QString& Expected) {
    // The bytes go to the temporary file first, so that the lock is held only for the compare
    // and the rename.
    QSaveFile file(FileName);
    if (!file.open(QIODevice::WriteOnly))
        throw EFCreateError(
            QStringLiteral("Cannot create file \"%1\": %2").arg(FileName, file.errorString()));
    if (file.write(Bytes) != Bytes.size())
        throw EFCreateError(
            QStringLiteral("Cannot write file \"%1\": %2").arg(FileName, file.errorString()));
    const TFolderLock lock(FileName);
    TConditionalWrite result;
    result.Found = FileFingerprint(FileName);
    if (result.Found != Expected) {
        file.cancelWriting();
        return result;
    }
    if (!file.commit())
        throw EFCreateError(
            QStringLiteral("Cannot write file \"%1\": %2").arg(FileName, file.errorString()));
    result.Written = true;
    return result;
}

} // namespace vde
