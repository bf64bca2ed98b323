// Writes the seed corpus: valid block-list and connection-list streams, each prefixed with the
// byte that picks its reader (tests/fuzz/corpus), and whole diagrams, a block list then a
// connection list then operation bytes (tests/fuzz/corpus/diagram). Run once; the files are
// kept in the repository.
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"

#include <QApplication>
#include <QDir>
#include <QFile>

using namespace vde;

static void Save(const QString& dir, const QString& name, uint8_t selector,
                 const TMemoryStream& s) {
    QFile f(dir + QLatin1Char('/') + name);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
    f.putChar(char(selector));
    f.write(reinterpret_cast<const char*>(s.Memory()), qint64(s.Bytes().size()));
}

static void SaveDiagram(const QString& dir, const QString& name, const TDiagObjectList& blocks,
                        const TDiagConnectList& wires, const QByteArray& ops) {
    QDir().mkpath(dir + QStringLiteral("/diagram"));
    QFile f(dir + QStringLiteral("/diagram/") + name);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
    TMemoryStream s;
    blocks.SaveToStream(s);
    wires.SaveToStream(s);
    f.write(reinterpret_cast<const char*>(s.Memory()), qint64(s.Bytes().size()));
    f.write(ops);
}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    TDiagObjectList blocks(nullptr);
    {
        TMemoryStream s;
        blocks.SaveToStream(s);
        Save(dir, QStringLiteral("blocks-empty.bin"), 0, s);
    }
    auto* text = blocks.CreateObjByDiagType(doText, {10, 10, 160, 60});
    static_cast<TDiagText*>(text)->SetInCount(2);
    static_cast<TDiagText*>(text)->SetOutCount(1);
    static_cast<TDiagText*>(text)->AllInputsType(itInversion, 0, 0);
    auto* gate = blocks.CreateObjByDiagType(doAndLogic, {200, 10, 260, 110});
    blocks.CreateObjByDiagType(doOrLogic, {200, 150, 260, 250});
    blocks.CreateObjByDiagType(doRSTrigger, {300, 10, 400, 210});
    {
        TMemoryStream s;
        blocks.SaveToStream(s);
        Save(dir, QStringLiteral("blocks-four-kinds.bin"), 0, s);
    }
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    new TDiagObjConnection(&wires, text, 1, gate, -1, {10, 10}, 0, 0, 0);
    new TDiagObjConnection(&wires, gate, -2, text, 1, {10, 20}, 1, -1, 0);
    const int hand = wires.AddConnection(gate, 1, 20);
    wires.AddSegmentToConnection(hand, 30, 2);
    wires.Items(hand)->FDstCrossInfo = {2, 1};
    {
        TMemoryStream s;
        wires.SaveToStream(s);
        Save(dir, QStringLiteral("wires-three.bin"), 1, s);
    }
    // Every operation once on the three wires, then a few again.
    QByteArray ops;
    for (char op = 0; op < 12; ++op)
        ops.append(op).append(char(op % 4)).append(char(1)).append(char(2)).append(char(70));
    ops.append(QByteArray::fromHex("0200ff7f7f7f7f0600010501010a0202"));
    SaveDiagram(dir, QStringLiteral("diagram-three-wires.bin"), blocks, wires, ops);
    TDiagConnectList none(static_cast<TCanvas*>(nullptr));
    {
        TMemoryStream s;
        none.SaveToStream(s);
        Save(dir, QStringLiteral("wires-empty.bin"), 1, s);
    }
    return 0;
}
