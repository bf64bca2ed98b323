// Fuzz target over the container stream. Any input must end in a loaded diagram or a typed
// error; after an error the open diagram saves to the same bytes as before; a loaded diagram
// saves to bytes that load back and save the same again, and its circuit simulates.
#include "fuzz_support.h"
#include "simulate.h"

#include "velDiagEdit/platform/errors.h"

using namespace vde;
using namespace vde::fuzz;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    InitQt(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Surface surface;
    const std::vector<uint8_t> before = surface.Save();
    TMemoryStream input(std::vector<uint8_t>(data, data + size));
    try {
        surface.dc->LoadFromStream(input);
    } catch (const Exception&) {
        Require(surface.Save() == before, "a failed load changed the open diagram");
        return 0;
    }
    if (surface.dc->ObjList && surface.dc->ConList)
        Simulate(*surface.dc->ObjList, *surface.dc->ConList);
    const std::vector<uint8_t> once = surface.Save();
    TMemoryStream again(once);
    surface.dc->LoadFromStream(again);
    Require(surface.Save() == once, "a saved diagram does not load back to the same bytes");
    return 0;
}
