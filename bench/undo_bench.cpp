// Undo and redo of one step in a diagram of 10,000 blocks and 20,000 connections on a real
// panel, and what the step keeps in memory.

#include "velDiagEdit/editor/diag_container.h"

#include <QCoreApplication>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <memory>

using namespace vde;

namespace {

constexpr int kBlocks = 10000;
constexpr int kWires = 20000;

// A panel with the large diagram on it, blocks hooked as a loaded diagram's are, wires routed.
struct LargeDiagram {
    QWidget panel;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;

    LargeDiagram() {
        panel.resize(1200, 800);
        canvas.SetHandle(&panel);
        dc = std::make_unique<TDiagContainer>(&panel, &canvas, nullptr);
        std::vector<TDiagObject*> all;
        for (int i = 0; i < kBlocks; ++i) {
            const int x = (i % 100) * 200, y = (i / 100) * 150;
            TDiagObject* b = dc->CreateObjByDiagType(doAndLogic, {x, y, x + 60, y + 100});
            dc->AssignObjEvents(b);
            all.push_back(b);
        }
        for (int i = 0; i < kWires; ++i) {
            TDiagObject* s = all[size_t(i % kBlocks)];
            TDiagObject* d = all[size_t((i * 7 + 1) % kBlocks)];
            new TDiagObjConnection(dc->ConList.get(), s, 1, d, -1 - (i & 1), {10, 10}, 0, 0, 0);
        }
        // Saved and loaded once, so the diagram is as one opened from a file is.
        dc->RestoreSnapshot(dc->SaveSnapshot());
        dc->UndoStack()->clear();
        QCoreApplication::sendPostedEvents();
    }

    // One user-level change: a block moved by 5 pixels, its wires rerouted.
    void MoveOneBlock(int i) {
        const TUndoStepScope step(dc->UndoStack(), QStringLiteral("Move"));
        TDiagObject* b = dc->ObjList->Items(i % kBlocks);
        b->SetBounds(b->x() + 5, b->y(), b->width(), b->height());
    }
};

LargeDiagram& Diagram() {
    static LargeDiagram d;
    return d;
}

void BM_UndoLargeDiagram(benchmark::State& state) {
    LargeDiagram& d = Diagram();
    d.MoveOneBlock(5050);
    TDiagUndoStack* stack = d.dc->UndoStack();
    for (auto _ : state) {
        stack->undo();
        state.PauseTiming();
        stack->redo();
        // Between two user actions the event loop has run.
        QCoreApplication::sendPostedEvents();
        state.ResumeTiming();
    }
    state.counters["step_bytes"] = double(stack->MemoryUsed());
    state.counters["stream_bytes"] = double(d.dc->SaveSnapshot().size());
    stack->clear();
}
BENCHMARK(BM_UndoLargeDiagram)->Unit(benchmark::kMillisecond);

void BM_RedoLargeDiagram(benchmark::State& state) {
    LargeDiagram& d = Diagram();
    d.MoveOneBlock(5050);
    TDiagUndoStack* stack = d.dc->UndoStack();
    for (auto _ : state) {
        state.PauseTiming();
        stack->undo();
        QCoreApplication::sendPostedEvents();
        state.ResumeTiming();
        stack->redo();
    }
    stack->clear();
}
BENCHMARK(BM_RedoLargeDiagram)->Unit(benchmark::kMillisecond);

// What recording a step costs the edit itself: the stream before and after, compared.
void BM_RecordStepLargeDiagram(benchmark::State& state) {
    LargeDiagram& d = Diagram();
    int i = 0;
    for (auto _ : state)
        d.MoveOneBlock(i++ * 37);
    state.counters["bytes_per_step"] =
        double(d.dc->UndoStack()->MemoryUsed()) / std::max(1, d.dc->UndoStack()->count());
    d.dc->UndoStack()->clear();
}
BENCHMARK(BM_RecordStepLargeDiagram)->Unit(benchmark::kMillisecond);

void BM_SnapshotLargeDiagram(benchmark::State& state) {
    LargeDiagram& d = Diagram();
    for (auto _ : state)
        benchmark::DoNotOptimize(d.dc->SaveSnapshot());
}
BENCHMARK(BM_SnapshotLargeDiagram)->Unit(benchmark::kMillisecond);

} // namespace
