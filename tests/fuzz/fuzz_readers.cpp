// Fuzz target over the block-list and connection-list readers. The first byte picks the reader,
// the rest is the stream. Any input must end in success or a typed error, never in a crash or
// an out-of-bounds read.
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/platform/errors.h"

#include <QApplication>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    vde::TMemoryStream stream(std::vector<uint8_t>(data + 1, data + size));
    try {
        if (data[0] & 1) {
            vde::TDiagConnectList list(static_cast<vde::TCanvas*>(nullptr));
            list.LoadFromStream(stream, {});
            vde::TMemoryStream again;
            list.SaveToStream(again);
        } else {
            vde::TDiagObjectList list(nullptr);
            list.LoadFromStream(stream, {});
            vde::TMemoryStream again;
            list.SaveToStream(again);
        }
    } catch (const vde::Exception&) {
    }
    return 0;
}
