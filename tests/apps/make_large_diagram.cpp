// Writes the large diagram the tool's render timing uses: a sheet of 100 x 100 gates
// (alternately OR and AND, 60 x 70 pixels, 200 pixels apart across and 150 down), each wired
// from its output to the next gate's first input and to the gate a row further on's second
// input: 10,000 blocks and 20,000 routed wires on a sheet of about 19,860 x 14,920 pixels.
#include <velDiagEdit/velDiagEdit.h>

#include <QApplication>
#include <cstdio>
#include <vector>

using namespace vde;

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: vde_make_large_diagram <file.dgm>\n");
        return 2;
    }
    QWidget panel;
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    std::vector<TDiagObject*> all;
    for (int i = 0; i < 10000; ++i) {
        const int x = (i % 100) * 200, y = (i / 100) * 150;
        TDiagObject* b = dc.CreateObjByDiagType(TDiagObjectType(2 + i % 2), {x, y, x + 60, y + 70});
        b->SetObjKey(TObjKey(i + 1));
        all.push_back(b);
    }
    for (int i = 0; i < 20000; ++i) {
        TDiagObject* s = all[size_t(i % 10000)];
        TDiagObject* d = all[size_t((i % 10000 + 1 + (i / 10000) * 100) % 10000)];
        auto* c =
            new TDiagObjConnection(dc.ConList.get(), s, 1, d, -1 - (i / 10000), {15, 12}, 0, 0, 0);
        c->FSrcKey = s->GetObjKey();
        c->FDstKey = d->GetObjKey();
    }
    dc.SaveDiagramToFile(QString::fromLocal8Bit(argv[1]));
    std::printf("%d blocks, %d wires\n", dc.ObjList->Count(), dc.ConList->Count());
    return 0;
}
