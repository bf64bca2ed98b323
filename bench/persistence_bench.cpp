// Loading a large diagram from its container stream: 10,000 blocks and 20,000 wires.
#include "common/large_diagram.h"
#include "velDiagEdit/editor/diag_container.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QWidget>
#include <benchmark/benchmark.h>

using namespace vde;

namespace {

// The large diagram saved as a container stream.
std::vector<uint8_t> LargeDiagramStream() {
    QWidget panel;
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    test::FillLargeDiagram(dc);
    TMemoryStream s;
    dc.SaveToStream(s);
    return s.Bytes();
}

const std::vector<uint8_t>& Stream() {
    static const std::vector<uint8_t> bytes = LargeDiagramStream();
    return bytes;
}

// Bytes in memory to a loaded diagram: both passes, the blocks made, the wires attached.
void BM_LoadContainerStream(benchmark::State& state) {
    const std::vector<uint8_t>& bytes = Stream();
    QWidget panel;
    panel.resize(1600, 1200);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    for (auto _ : state) {
        TMemoryStream s(bytes);
        dc.LoadFromStream(s);
        benchmark::DoNotOptimize(dc.ObjList->Count());
        // What the event loop would do before the next load: deliver the events that making
        // 10,000 widgets posted (a widget freed with events still queued costs a scan of the
        // whole queue).
        state.PauseTiming();
        QCoreApplication::sendPostedEvents();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.counters["bytes"] = double(bytes.size());
}
BENCHMARK(BM_LoadContainerStream)->Unit(benchmark::kMillisecond)->Iterations(5);

// The same, then the parent's first frame: the panel (1600 x 1200) with its blocks and the
// wires painted into an image.
void BM_BytesToFirstFrame(benchmark::State& state) {
    const std::vector<uint8_t>& bytes = Stream();
    QWidget panel;
    panel.resize(1600, 1200);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    QImage frame(panel.size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        TMemoryStream s(bytes);
        dc.LoadFromStream(s);
        panel.render(&frame);
        benchmark::DoNotOptimize(frame.constBits());
        state.PauseTiming();
        QCoreApplication::sendPostedEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_BytesToFirstFrame)->Unit(benchmark::kMillisecond)->Iterations(5);

// The wires alone: the connection list's records decoded from the same stream.
void BM_DecodeConnectionsOfContainerStream(benchmark::State& state) {
    const std::vector<uint8_t>& bytes = Stream();
    // Find where the connection count starts: save the blocks alone and skip them.
    QWidget panel;
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    TMemoryStream whole(bytes);
    dc.LoadFromStream(whole);
    TMemoryStream blocks;
    dc.ObjList->SaveToStream(blocks);
    const int64_t at = 4 + blocks.Size();
    TMemoryStream wires;
    dc.ConList->SaveToStream(wires);
    TDiagConnectList list(static_cast<TCanvas*>(nullptr));
    for (auto _ : state) {
        TMemoryStream s(bytes);
        s.SetPosition(at);
        list.LoadFromStream(s, {});
        benchmark::DoNotOptimize(list.Count());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * wires.Size());
}
BENCHMARK(BM_DecodeConnectionsOfContainerStream)->Unit(benchmark::kMillisecond);

} // namespace
