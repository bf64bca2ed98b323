// Fuzz target over the diagram text form. Any input must end in blocks added or a typed
// error; after an error the open diagram saves to the same bytes as before; the text written
// after a load reads back to the same text.
#include "fuzz_support.h"

#include "velDiagEdit/platform/errors.h"

#include <QFile>
#include <QTemporaryDir>

using namespace vde;
using namespace vde::fuzz;

namespace {

QString TempFile(const char* name) {
    static QTemporaryDir dir;
    return dir.filePath(QString::fromLatin1(name));
}

QByteArray ReadAll(const QString& name) {
    QFile f(name);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    InitQt(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString in = TempFile("in.txt"), out = TempFile("out.txt"), out2 = TempFile("out2.txt");
    {
        QFile f(in);
        Require(f.open(QIODevice::WriteOnly | QIODevice::Truncate), "cannot write the input");
        f.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    Surface surface;
    const std::vector<uint8_t> before = surface.Save();
    try {
        surface.dc->LoadDiagramFromText(in);
    } catch (const Exception&) {
        Require(surface.Save() == before, "a failed text load changed the open diagram");
        return 0;
    }
    surface.dc->SaveDiagramToText(out);
    Surface fresh;
    fresh.dc->Clear(false);
    fresh.dc->LoadDiagramFromText(out);
    fresh.dc->SaveDiagramToText(out2);
    Require(ReadAll(out) == ReadAll(out2), "written text does not read back to the same text");
    return 0;
}
