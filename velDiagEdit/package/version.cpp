#include "velDiagEdit/package/version.h"

namespace vde {

const char* VelDiagEditVersion() {
    return VELDIAGEDIT_VERSION_STR;
}

} // namespace vde
