#include "velDiagEdit/platform/stored_bytes.h"

#include "velDiagEdit/platform/errors.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QThread>
#include <openssl/evp.h>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QLockFile>
#endif
#include <memory>

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

const QString kSaveMark = QStringLiteral(".vde-save-");

[[noreturn]] void CannotCreate(const QString& FileName, const QString& Why) {
    throw EFCreateError(QStringLiteral("Cannot create file \"%1\": %2").arg(FileName, Why));
}

[[noreturn]] void CannotWrite(const QString& FileName, const QString& Why) {
    throw EFCreateError(QStringLiteral("Cannot write file \"%1\": %2").arg(FileName, Why));
}

#ifdef Q_OS_UNIX
QString SystemError() {
    return QString::fromLocal8Bit(strerror(errno));
}

QByteArray TempName(const QString& FileName) {
    static const char chars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray name = QFile::encodeName(QFileInfo(FileName).fileName() + kSaveMark);
    for (int i = 0; i < 6; ++i)
        name += chars[QRandomGenerator::global()->bounded(int(sizeof chars - 1))];
    return name;
}

// The new bytes of a file on their way in: written to a file of the same folder that has no name
// yet (or, where the system cannot make one, a named temporary file), locked for as long as this
// object lives so that RemoveStaleSaves leaves it alone, and put in place by Commit. Dropped
// without a trace when not committed.
class TPendingFile {
public:
    explicit TPendingFile(const QString& FileName) : FFile(FileName) {
        const QFileInfo info(FileName);
        FTarget = QFile::encodeName(info.fileName());
        FDirFd = ::open(QFile::encodeName(info.absolutePath()).constData(),
                        O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (FDirFd < 0)
            CannotCreate(FFile, SystemError());
#ifdef O_TMPFILE
        if (::access("/proc/self/fd", X_OK) == 0)
            FFd = ::openat(FDirFd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
#endif
        if (FFd < 0) {
            for (int attempt = 0; FFd < 0 && attempt < 16; ++attempt) {
                FTemp = TempName(FileName);
                FFd = ::openat(FDirFd, FTemp.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC,
                               0666);
                if (FFd < 0 && errno != EEXIST)
                    break;
            }
            if (FFd < 0) {
                const QString why = SystemError();
                ::close(FDirFd);
                CannotCreate(FFile, why);
            }
            FNamed = true;
        }
        ::flock(FFd, LOCK_EX);
    }
    ~TPendingFile() {
        if (FNamed && !FCommitted)
            ::unlinkat(FDirFd, FTemp.constData(), 0);
        ::close(FFd);
        ::close(FDirFd);
    }
    TPendingFile(const TPendingFile&) = delete;
    TPendingFile& operator=(const TPendingFile&) = delete;

    void Write(const QByteArray& Bytes) {
        const char* p = Bytes.constData();
        qsizetype left = Bytes.size();
        while (left > 0) {
            const ssize_t n = ::write(FFd, p, size_t(left));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                CannotWrite(FFile, SystemError());
            p += n;
            left -= n;
        }
        if (::fsync(FFd) != 0)
            CannotWrite(FFile, SystemError());
    }

    void Commit() {
        // The file keeps the permissions it had.
        struct stat st;
        if (::fstatat(FDirFd, FTarget.constData(), &st, 0) == 0)
            ::fchmod(FFd, st.st_mode & 07777);
        if (!FNamed) {
            const QByteArray self = "/proc/self/fd/" + QByteArray::number(FFd);
            for (int attempt = 0;; ++attempt) {
                FTemp = TempName(FFile);
                if (::linkat(AT_FDCWD, self.constData(), FDirFd, FTemp.constData(),
                             AT_SYMLINK_FOLLOW) == 0)
                    break;
                if (errno != EEXIST || attempt == 15)
                    CannotWrite(FFile, SystemError());
            }
            FNamed = true;
        }
        if (::renameat(FDirFd, FTemp.constData(), FDirFd, FTarget.constData()) != 0)
            CannotWrite(FFile, SystemError());
        FCommitted = true;
    }

private:
    QString FFile;
    QByteArray FTarget, FTemp;
    int FDirFd = -1, FFd = -1;
    bool FNamed = false, FCommitted = false;
};
#else
// Elsewhere Qt's own save file does the same.
class TPendingFile {
public:
    explicit TPendingFile(const QString& FileName) : FFile(FileName) {
        if (!FFile.open(QIODevice::WriteOnly))
            CannotCreate(FileName, FFile.errorString());
    }
    void Write(const QByteArray& Bytes) {
        if (FFile.write(Bytes) != Bytes.size())
            CannotWrite(FFile.fileName(), FFile.errorString());
    }
    void Commit() {
        if (!FFile.commit())
            CannotWrite(FFile.fileName(), FFile.errorString());
    }

private:
    QSaveFile FFile;
};
#endif

} // namespace

int RemoveStaleSaves(const QString& FileName) {
    const QFileInfo info(FileName);
    const QDir folder = info.absoluteDir();
    int removed = 0;
    const QStringList found = folder.entryList({info.fileName() + kSaveMark + QLatin1Char('*')},
                                               QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : found) {
#ifdef Q_OS_UNIX
        const QByteArray path = QFile::encodeName(folder.filePath(name));
        const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            continue;
        // A writer that is still at work holds the lock.
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0 && ::unlink(path.constData()) == 0)
            ++removed;
        ::close(fd);
#else
        if (QFile::remove(folder.filePath(name)))
            ++removed;
#endif
    }
    return removed;
}

void ReplaceFileBytes(const QString& FileName, const QByteArray& Bytes) {
    RemoveStaleSaves(FileName);
    TPendingFile file(FileName);
    file.Write(Bytes);
    file.Commit();
}

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
    RemoveStaleSaves(FileName);
    // The bytes are written first, so that the lock is held only for the compare and the rename.
    TPendingFile file(FileName);
    file.Write(Bytes);
    const TFolderLock lock(FileName);
    TConditionalWrite result;
    result.Found = FileFingerprint(FileName);
    if (result.Found != Expected)
        return result;
    file.Commit();
    result.Written = true;
    return result;
}

} // namespace vde
