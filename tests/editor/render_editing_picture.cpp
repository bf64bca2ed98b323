// Builds a small diagram through the editing commands of the surface, answering their prompts
// from a script, and writes what the host panel shows to the PNG file given as the first
// argument (editing.png without one): three gates, a text block, four wires ended on markers,
// marker types and a marker size changed, and a segment of the first wire selected.
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QWidget>
#include <cstdio>

using namespace vde;

namespace {

class Builder {
public:
    Builder(TDiagContainer& dc, TScriptedDialogService& dialogs) : FDc(dc), FDialogs(dialogs) {}

    TDiagObject* Place(TDiagObjectType type, int x, int y) {
        FDc.FClickPoint = {x, y};
        TMenuItem item(nullptr);
        item.Tag = type;
        const int n = FDc.ObjList->Count();
        FDc.CreateDiagObEvent(&item);
        return FDc.ObjList->Count() > n ? FDc.ObjList->Items(n) : nullptr;
    }

    // As two clicks on the block would: the block, then its marker.
    void SelectMarker(TDiagObject* b, int marker) {
        FDc.SelObj = b;
        b->SetSelected(true);
        FDc.ObjList->DeselectAll(b);
        b->SetSelMarkerIndex(marker);
    }

    // A wire from the marker: a stub, then turns (degrees, +90 right, -90 left), then the end
    // on the target block's marker.
    void Wire(TDiagObject* from, int fromMarker, int stub,
              std::initializer_list<std::pair<int, int>> turns, TDiagObject* to, int toMarker) {
        SelectMarker(from, fromMarker);
        FDialogs.Expect(TDialogAnswer::Segment(stub, 0));
        FDc.AddSegmentToConnection();
        for (const auto& [size, degrees] : turns) {
            FDialogs.Expect(TDialogAnswer::Segment(size, degrees));
            FDc.AddSegmentToConnection();
        }
        if (!to)
            return;
        SelectMarker(to, toMarker);
        FDc.EndDiagConnection();
    }

    void MarkerType(TDiagObject* b, int marker, TIOType type) {
        SelectMarker(b, marker);
        TMenuItem item(nullptr);
        item.Tag = type;
        FDc.ChangeMarkerType(&item);
    }

private:
    TDiagContainer& FDc;
    TScriptedDialogService& FDialogs;
};

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QString path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("editing.png");

    QWidget panel;
    panel.resize(520, 340);
    QPalette pal = panel.palette();
    pal.setColor(QPalette::Window, Qt::white);
    panel.setPalette(pal);
    panel.setAutoFillBackground(true);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TScriptedDialogService dialogs;
    TScopedDialogService guard(&dialogs);
    TDiagContainer dc(&panel, &canvas, nullptr);
    Builder build(dc, dialogs);

    TDiagObject* a = build.Place(doAndLogic, 40, 40);
    TDiagObject* b = build.Place(doOrLogic, 40, 180);
    TDiagObject* rs = build.Place(doRSTrigger, 300, 60);
    auto* out = dynamic_cast<TDiagText*>(build.Place(doText, 150, 280));
    if (!a || !b || !rs || !out) {
        std::fprintf(stderr, "blocks were not created\n");
        return 1;
    }

    // The text block gets one input drawn as an arrow, and its own title.
    dc.SelObj = out;
    dialogs.Expect(TDialogAnswer::SizeValue(1)).Expect(TDialogAnswer::Item(itArrow));
    dc.SetInputCount();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("Q out")));
    dc.SetTextValues();

    build.Wire(a, 1, 40, {{22, 90}, {140, -90}}, rs, -1);
    build.Wire(b, 1, 60, {{22, -90}, {120, 90}}, rs, -2);
    build.Wire(rs, 1, 30, {{110, 90}, {297, 90}, {35, -90}}, out, -1);
    build.Wire(a, -1, 30, {}, nullptr, 0);
    build.MarkerType(a, -2, itInversion);
    build.MarkerType(b, -1, itInversion);
    // A text block's markers are drawn without size: give the arrow one.
    build.SelectMarker(out, -1);
    dialogs.Expect(TDialogAnswer::SizeValue(6));
    dc.ChangeMarkerSize();

    // Nothing left selected on the blocks; the long run of the first wire selected, as a click
    // beside it selects it.
    dc.ObjList->DeselectAll(nullptr);
    dc.SelObj = nullptr;
    dc.SelectBestSegment({200, 112});

    if (!dialogs.Failures().isEmpty() || dialogs.Pending() != 0) {
        std::fprintf(stderr, "script: %s\n",
                     qPrintable(dialogs.Failures().join(QLatin1Char('\n'))));
        return 1;
    }

    panel.show();
    QApplication::processEvents();
    QImage img(panel.size(), QImage::Format_RGB32);
    img.fill(Qt::white);
    panel.render(&img);
    if (!img.save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return 1;
    }
    std::printf("%s\n", qPrintable(path));
    return 0;
}
