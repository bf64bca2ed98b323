// Writes the large diagram the tool's render timing uses (tests/common/large_diagram.h).
#include "common/large_diagram.h"

#include <QApplication>
#include <cstdio>

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
    test::FillLargeDiagram(dc);
    dc.SaveDiagramToFile(QString::fromLocal8Bit(argv[1]));
    std::printf("%d blocks, %d wires\n", dc.ObjList->Count(), dc.ConList->Count());
    return 0;
}
