// How the surface's interactive costs grow with the diagram: the same view, the same block and
// the same gestures at 1,000, 10,000 and 100,000 blocks (twice as many wires, at most one list's
// 65,535). The container sits on a panel in a shown 1920 x 1080 scroll area, design mode on, as a
// host uses it; mouse events go to the panel as a user's do.

#include "bench_cleanup.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/graphic_host.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/streams.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPalette>
#include <QScrollArea>
#include <QScrollBar>
#include <benchmark/benchmark.h>
#include <cmath>
#include <malloc.h>
#include <memory>

using namespace vde;

namespace {

constexpr int kCell = 80;
constexpr int kViewW = 1920, kViewH = 1080;
constexpr int kMaxWires = 65535;

// Heap bytes in use (what freed memory being reused would hide from the resident size).
int64_t HeapBytes() {
    return int64_t(mallinfo2().uordblks) + int64_t(mallinfo2().hblkhd);
}

struct ScaledSurface {
    int N;
    int Cols;
    QScrollArea area;
    QWidget* panel = new QWidget;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    std::vector<TDiagObject*> blocks;
    int64_t BlockBytes = 0; // heap the blocks took

    explicit ScaledSurface(int n, bool wires = true)
        : N(n), Cols(std::max(1, int(std::ceil(std::sqrt(double(n)))))) {
        const int rows = (n + Cols - 1) / Cols;
        panel->resize(Cols * kCell, rows * kCell);
        QPalette pal = panel->palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel->setPalette(pal);
        panel->setAutoFillBackground(true);
        area.setFrameShape(QFrame::NoFrame);
        area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area.setWidget(panel);
        area.resize(kViewW, kViewH);
        canvas.SetHandle(panel);
        dc = std::make_unique<TDiagContainer>(panel, &canvas, nullptr);
        static const TDiagObjectType kinds[] = {doAndLogic, doOrLogic, doText, doRSTrigger};
        const int64_t before = HeapBytes();
        for (int i = 0; i < n; ++i) {
            const int x = (i % Cols) * kCell + 10, y = (i / Cols) * kCell + 10;
            TDiagObject* b = dc->CreateObjByDiagType(kinds[i % 4], {x, y, x + 50, y + 60});
            if (auto* t = dynamic_cast<TDiagText*>(b); t && t->FInCount == 0) {
                t->SetInCount(2);
                t->SetOutCount(1);
            }
            dc->AssignObjEvents(b);
            blocks.push_back(b);
        }
        BlockBytes = HeapBytes() - before;
        // Each block feeds its right-hand neighbour's first input and the block below's second.
        for (int i = 0, made = 0; wires && i < n && made < kMaxWires; ++i) {
            TDiagObject* s = blocks[size_t(i)];
            new TDiagObjConnection(dc->ConList.get(), s, 1, blocks[size_t((i + 1) % n)], -1,
                                   TPoint{10, 10}, 0, 0, 0);
            if (++made < kMaxWires)
                new TDiagObjConnection(dc->ConList.get(), s, 1, blocks[size_t((i + Cols) % n)], -2,
                                       TPoint{10, 10}, 0, 0, 0);
            ++made;
        }
        dc->SetDesignMode(true);
    }

    // The view: around the middle of the diagram.
    // (At 100,000 blocks the wires run out a third of the way down: the view is the middle of
    // the wired part.)
    QPoint Scroll() const {
        const int mid = std::min(N, kMaxWires / 2) / 2;
        const int cx = (mid % Cols) * kCell, cy = (mid / Cols) * kCell;
        return {std::max(0, cx - kViewW / 2), std::max(0, cy - kViewH / 2)};
    }
    void Show() {
        area.show();
        area.horizontalScrollBar()->setValue(Scroll().x());
        area.verticalScrollBar()->setValue(Scroll().y());
        QApplication::processEvents();
    }
    QRect View() const { return QRect(Scroll(), QSize(kViewW, kViewH)); }
    TDiagObject* Middle() const {
        const QPoint c = View().center();
        return blocks[size_t((c.y() / kCell) * Cols + c.x() / kCell)];
    }
    void Mouse(QEvent::Type type, QPoint at, Qt::MouseButtons buttons) {
        QMouseEvent e(type, QPointF(at), panel->mapToGlobal(QPointF(at)),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::ShiftModifier);
        QApplication::sendEvent(panel, &e);
    }
};

// One surface at a time: the 100,000-block one alone takes a few hundred MB.
ScaledSurface& Shared(int n) {
    static std::unique_ptr<ScaledSurface> s;
    static const bool cleanup = [] {
        BenchCleanups().push_back([] { s.reset(); });
        return true;
    }();
    (void)cleanup;
    if (!s || s->N != n) {
        s.reset();
        s = std::make_unique<ScaledSurface>(n);
        s->Show();
    }
    return *s;
}

void Sizes(benchmark::internal::Benchmark* b) {
    b->Arg(1000)->Arg(10000)->Arg(100000);
}

void BM_ScaleRepaintView(benchmark::State& state) {
    ScaledSurface& s = Shared(int(state.range(0)));
    for (auto _ : state)
        s.panel->repaint(s.View());
}
BENCHMARK(BM_ScaleRepaintView)->Apply(Sizes)->Unit(benchmark::kMillisecond);

// One Shift-drag step, sent to the panel: the block follows and what it left and entered is
// repainted.
void BM_ScaleDragStep(benchmark::State& state) {
    ScaledSurface& s = Shared(int(state.range(0)));
    TScriptedInputState input;
    TScopedInputState guard(&input);
    TDiagObject* b = s.Middle();
    QPoint at = b->geometry().topLeft() + QPoint(5, 5);
    input.Shift = ssShift;
    input.Pos = ClientToScreen(s.panel, {at.x(), at.y()});
    s.Mouse(QEvent::MouseButtonPress, at, Qt::LeftButton);
    int step = 0;
    for (auto _ : state) {
        const QRect before = b->geometry();
        const int dx = (step++ & 1) ? -3 : 3;
        input.Pos.X += dx;
        at.rx() += dx;
        s.Mouse(QEvent::MouseMove, at, Qt::LeftButton);
        s.panel->repaint(QRegion(before) | b->geometry());
    }
    s.Mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
}
BENCHMARK(BM_ScaleDragStep)->Apply(Sizes)->Unit(benchmark::kMicrosecond);

// Press on a block and, after a move of 3 pixels, the release that routes its wires and records
// the undo step; one of the two timed, the rest of the gesture not.
void PressMoveRelease(benchmark::State& state, bool TimeRelease) {
    ScaledSurface& s = Shared(int(state.range(0)));
    TScriptedInputState input;
    TScopedInputState guard(&input);
    input.Shift = ssShift;
    TDiagObject* b = s.Middle();
    int step = 0;
    for (auto _ : state) {
        if (TimeRelease)
            state.PauseTiming();
        QPoint at = b->geometry().topLeft() + QPoint(5, 5);
        input.Pos = ClientToScreen(s.panel, {at.x(), at.y()});
        s.Mouse(QEvent::MouseButtonPress, at, Qt::LeftButton);
        if (!TimeRelease)
            state.PauseTiming();
        const int dx = (step++ & 1) ? -3 : 3;
        input.Pos.X += dx;
        at.rx() += dx;
        s.Mouse(QEvent::MouseMove, at, Qt::LeftButton);
        if (TimeRelease)
            state.ResumeTiming();
        s.Mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
        if (!TimeRelease)
            state.ResumeTiming();
    }
    s.dc->UndoStack()->clear();
}

void BM_ScalePress(benchmark::State& state) {
    PressMoveRelease(state, false);
}
BENCHMARK(BM_ScalePress)->Apply(Sizes)->Unit(benchmark::kMillisecond);

void BM_ScaleRelease(benchmark::State& state) {
    PressMoveRelease(state, true);
}
BENCHMARK(BM_ScaleRelease)->Apply(Sizes)->Unit(benchmark::kMillisecond);

// The wire under a point (next to a wire, and on empty surface) and the block under a point.
void BM_ScaleHitTestWire(benchmark::State& state) {
    ScaledSurface& s = Shared(int(state.range(0)));
    TDiagObject* b = s.Middle();
    const TPoint near{b->x() + b->width() + 4, b->y() + 32};
    const TPoint far{b->x() + 25, b->y() - 7};
    int i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            s.dc->ConList->FindBestSegment((i++ & 1) ? near : far, nullptr, true, 0));
}
BENCHMARK(BM_ScaleHitTestWire)->Apply(Sizes)->Unit(benchmark::kMicrosecond);

void BM_ScaleHitTestBlock(benchmark::State& state) {
    ScaledSurface& s = Shared(int(state.range(0)));
    TGraphicHost* host = TGraphicHost::Find(s.panel);
    const QPoint at = s.Middle()->geometry().center();
    for (auto _ : state)
        benchmark::DoNotOptimize(host->ControlAt(at));
}
BENCHMARK(BM_ScaleHitTestBlock)->Apply(Sizes)->Unit(benchmark::kMicrosecond);

// The diagram's bytes loaded into a container whose window is already shown, to the first frame.
void BM_ScaleLoadShown(benchmark::State& state) {
    const int n = int(state.range(0));
    TMemoryStream bytes;
    Shared(n).dc->SaveToStream(bytes);
    for (auto _ : state) {
        state.PauseTiming();
        auto fresh = std::make_unique<ScaledSurface>(0);
        fresh->panel->resize(Shared(n).panel->size());
        fresh->Show();
        bytes.SetPosition(0);
        state.ResumeTiming();
        fresh->dc->LoadFromStream(bytes);
        fresh->area.horizontalScrollBar()->setValue(Shared(n).Scroll().x());
        fresh->area.verticalScrollBar()->setValue(Shared(n).Scroll().y());
        fresh->panel->repaint(Shared(n).View());
        state.PauseTiming();
        state.counters["blocks"] = double(fresh->dc->ObjList->Count());
        fresh.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_ScaleLoadShown)->Apply(Sizes)->Unit(benchmark::kMillisecond)->Iterations(2);

// Heap per block (blocks alone, no wires), reported as a counter.
void BM_ScaleMemoryPerBlock(benchmark::State& state) {
    const int n = int(state.range(0));
    double perBlock = 0;
    for (auto _ : state) {
        ScaledSurface s(n, false);
        perBlock = double(s.BlockBytes) / n;
    }
    state.counters["bytes_per_block"] = perBlock;
}
BENCHMARK(BM_ScaleMemoryPerBlock)->Apply(Sizes)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
