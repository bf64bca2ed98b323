// Fuzz target over the container stream. Any input must end in a loaded diagram or a typed
// error; after an error the open diagram saves to the same bytes as before; a loaded diagram
// saves to bytes that load back and save the same again, and its circuit simulates. The same
// input pasted as clipboard data must be pasted or refused with a typed error that changed
// nothing; a diagram it was pasted into saves to bytes that load back the same.
#include "fuzz_support.h"
#include "simulate.h"

#include "velDiagEdit/platform/errors.h"

using namespace vde;
using namespace vde::fuzz;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    InitQt(argc, argv);
    return 0;
}

namespace {

void Paste(const uint8_t* data, size_t size) {
    Surface surface;
    const std::vector<uint8_t> before = surface.Save();
    try {
        surface.dc->PasteBytes(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    } catch (const Exception&) {
        Require(surface.Save() == before, "a refused paste changed the open diagram");
        Require(surface.dc->UndoStack()->count() == 0, "a refused paste left an undo step");
        return;
    }
    const std::vector<uint8_t> once = surface.Save();
    TMemoryStream again(once);
    surface.dc->LoadFromStream(again);
    Require(surface.Save() == once, "a pasted diagram does not load back to the same bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Paste(data, size);
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
