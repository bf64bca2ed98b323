// Fuzz target over the block-list and connection-list readers. The first byte picks the reader,
// the stream follows, and the bytes after what the reader took drive the operations run on the
// loaded list (see exercise.h). Any input must end in success or a typed error, never in a
// crash, an out-of-bounds read or undefined behaviour.
#include "fuzz/exercise.h"

#include <QApplication>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vde;
    if (size < 1)
        return 0;
    QWidget parent;
    parent.resize(64, 48);
    TDiagObjectList blocks(&parent);
    TCanvas canvas;
    TDiagConnectList wires(&canvas);
    TMemoryStream stream(std::vector<uint8_t>(data + 1, data + size));
    try {
        if (data[0] & 1)
            wires.LoadFromStream(stream, [](TDiagConnection*) {});
        else
            blocks.LoadFromStream(stream, [](QObject*) {});
    } catch (const vde::Exception&) {
        // What loaded before the error stays and is exercised like the rest.
    }
    const size_t used = size_t(stream.Position());
    fuzz::TOps ops(data + 1 + used, size - 1 - used);
    fuzz::Exercise(parent, blocks, wires, ops);
    return 0;
}
