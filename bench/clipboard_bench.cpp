// Pasting 1,000 blocks with the wires among them (about 1,900) into a diagram of 10,000 blocks and
// 20,000 wires on a shown panel in design mode with direct editing on: the stream checked and read
// aside, the blocks and wires moved in with new keys, the selection changed, the undo step taken
// (two snapshots of the whole diagram), and the paint it asks for. Each paste is undone outside
// the timing, so every one meets the same diagram.

#include "bench_cleanup.h"
#include "common/large_diagram.h"

#include <QApplication>
#include <QScrollArea>
#include <benchmark/benchmark.h>
#include <memory>

using namespace vde;

namespace {

struct PasteSurface {
    QScrollArea area;
    QWidget* panel = new QWidget;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    QByteArray payload;

    PasteSurface() {
        panel->resize(20000, 15000);
        area.setWidget(panel);
        area.resize(1920, 1080);
        canvas.SetHandle(panel);
        dc = std::make_unique<TDiagContainer>(panel, &canvas, nullptr);
        vde::test::FillLargeDiagram(*dc);
        for (int i = 0; i < dc->ObjList->Count(); ++i)
            dc->AssignObjEvents(dc->ObjList->Items(i));
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
        // The first ten rows of the sheet: 1,000 blocks.
        for (int i = 0; i < 1000; ++i)
            dc->ObjList->Items(i)->SetSelected(true);
        payload = dc->SelectionBytes();
        dc->ObjList->DeselectAll(nullptr);
        area.show();
        QApplication::processEvents();
    }
};

PasteSurface& Shared() {
    static std::unique_ptr<PasteSurface> s;
    static const bool cleanup = [] {
        BenchCleanups().push_back([] { s.reset(); });
        return true;
    }();
    (void)cleanup;
    if (!s)
        s = std::make_unique<PasteSurface>();
    return *s;
}

void BM_PasteThousandBlocks(benchmark::State& state) {
    PasteSurface& s = Shared();
    for (auto _ : state) {
        s.dc->PasteBytes(s.payload);
        QApplication::processEvents();
        state.PauseTiming();
        s.dc->UndoStack()->undo();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["blocks"] = double(s.dc->ObjList->Count());
    state.counters["wires"] = double(s.dc->ConList->Count());
    state.counters["payload_kb"] = double(s.payload.size()) / 1024.0;
}
BENCHMARK(BM_PasteThousandBlocks)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace
