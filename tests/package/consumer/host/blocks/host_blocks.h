#pragma once
// A header in a folder of the host's own that shares its name with a library folder.

namespace host {
inline const char* Name() {
    return "host blocks";
}
} // namespace host
