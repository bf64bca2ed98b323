#pragma once
// The running host program's path and the few file-name helpers built on it. Diagrams are kept
// beside the host program, so the path is asked for in one place, and it can be replaced: tests
// and hosts that keep their diagrams elsewhere point it at another file name.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>

namespace vde {

// Full path of the host program: the replacement when one is set, else the application's own
// executable file.
VELDIAGEDIT_EXPORT QString HostProgramPath();
// Replaces the path HostProgramPath gives; an empty path goes back to the executable's.
VELDIAGEDIT_EXPORT void SetHostProgramPath(const QString& Path);

// Sets a replacement for the lifetime of the guard and then puts back the one before it.
class VELDIAGEDIT_EXPORT TScopedHostProgramPath {
public:
    explicit TScopedHostProgramPath(const QString& Path);
    ~TScopedHostProgramPath();
    TScopedHostProgramPath(const TScopedHostProgramPath&) = delete;
    TScopedHostProgramPath& operator=(const TScopedHostProgramPath&) = delete;

private:
    QString FPrevious;
};

// The directory part of FileName with its trailing separator ("" when there is none).
VELDIAGEDIT_EXPORT QString ExtractFilePath(const QString& FileName);
// The part after the last separator.
VELDIAGEDIT_EXPORT QString ExtractFileName(const QString& FileName);
// FileName with the extension of its last part replaced by Extension (which carries its dot);
// a name without an extension gets it appended.
VELDIAGEDIT_EXPORT QString ChangeFileExt(const QString& FileName, const QString& Extension);
// True for an existing file (links are followed); false for a folder.
VELDIAGEDIT_EXPORT bool FileExists(const QString& FileName);

} // namespace vde
