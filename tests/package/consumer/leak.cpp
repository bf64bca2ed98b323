// Must not compile against the library alone: its headers are reachable only under the
// velDiagEdit/ prefix, never as <blocks/...> on a host's include path.
#include <blocks/diag_object_list.h>

int main() {
    return 0;
}
