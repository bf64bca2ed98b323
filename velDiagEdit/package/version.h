#pragma once
// The version of the library a host runs with, which may be newer than the headers it was built
// against (VELDIAGEDIT_VERSION_STR).

#include "velDiagEdit/velDiagEdit_export.h"
#include "velDiagEdit/velDiagEdit_version.h"

namespace vde {

// "major.minor.patch" of the loaded library.
VELDIAGEDIT_EXPORT const char* VelDiagEditVersion();

} // namespace vde
