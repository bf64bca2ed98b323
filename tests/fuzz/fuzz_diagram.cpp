// Fuzz target over a whole diagram: a block list followed by a connection list, the
// connections re-attached to their blocks by key as the container does; the bytes after the
// two lists drive the operations run on it (see exercise.h). The circuit is simulated as
// loaded and again after the operations.
#include "fuzz/exercise.h"

#include "fuzz/simulate.h"

#include <QApplication>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vde;
    QWidget parent;
    parent.resize(64, 48);
    TDiagObjectList blocks(&parent);
    TCanvas canvas;
    TDiagConnectList wires(&canvas);
    TMemoryStream stream(std::vector<uint8_t>(data, data + size));
    try {
        blocks.LoadFromStream(stream, [](QObject*) {});
        wires.LoadFromStream(stream, [&blocks](TDiagConnection* c) { fuzz::Attach(blocks, c); });
    } catch (const vde::Exception&) {
    }
    const size_t used = size_t(stream.Position());
    fuzz::Simulate(blocks, wires);
    fuzz::TOps ops(data + used, size - used);
    fuzz::Exercise(parent, blocks, wires, ops);
    fuzz::Simulate(blocks, wires);
    return 0;
}
