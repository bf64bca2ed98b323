#include "velDiagEdit/platform/host_program.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <algorithm>

namespace vde {

namespace {

QString gHostProgramPath;

// Both separators count, so a path written on either system splits the same way.
qsizetype LastSeparator(const QString& FileName) {
    return std::max(FileName.lastIndexOf(QLatin1Char('/')),
                    FileName.lastIndexOf(QLatin1Char('\\')));
}

} // namespace

QString HostProgramPath() {
    if (!gHostProgramPath.isEmpty())
        return gHostProgramPath;
    return QCoreApplication::instance() ? QCoreApplication::applicationFilePath() : QString();
}

void SetHostProgramPath(const QString& Path) {
    gHostProgramPath = Path;
}

TScopedHostProgramPath::TScopedHostProgramPath(const QString& Path) : FPrevious(gHostProgramPath) {
    SetHostProgramPath(Path);
}

TScopedHostProgramPath::~TScopedHostProgramPath() {
    SetHostProgramPath(FPrevious);
}

QString ExtractFilePath(const QString& FileName) {
    return FileName.left(LastSeparator(FileName) + 1);
}

QString ExtractFileName(const QString& FileName) {
    return FileName.mid(LastSeparator(FileName) + 1);
}

QString ChangeFileExt(const QString& FileName, const QString& Extension) {
    const qsizetype sep = LastSeparator(FileName);
    const qsizetype dot = FileName.lastIndexOf(QLatin1Char('.'));
    const QString stem = dot > sep ? FileName.left(dot) : FileName;
    return stem + Extension;
}

bool FileExists(const QString& FileName) {
    if (FileName.isEmpty())
        return false;
    const QFileInfo info(FileName);
    return info.exists() && !info.isDir();
}

} // namespace vde
