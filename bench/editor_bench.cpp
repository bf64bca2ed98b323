// The diagram surface at scale: 10,000 blocks and 20,000 routed wires on an 8000 x 8000 panel
// inside a scroll area whose view is 1920 x 1080.

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/input_state.h"

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QScrollArea>
#include <QScrollBar>
#include <benchmark/benchmark.h>
#include <memory>

using namespace vde;

namespace {

constexpr int kCols = 100, kRows = 100, kCell = 80;
constexpr int kViewW = 1920, kViewH = 1080;
constexpr int kScrollX = 3000, kScrollY = 3000;

struct Surface {
    QScrollArea area;
    QWidget* panel = new QWidget;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    std::vector<TDiagObject*> blocks;

    Surface() {
        panel->resize(kCols * kCell, kRows * kCell);
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
        for (int i = 0; i < kCols * kRows; ++i) {
            const int x = (i % kCols) * kCell + 10, y = (i / kCols) * kCell + 10;
            TDiagObject* b = dc->CreateObjByDiagType(kinds[i % 4], {x, y, x + 50, y + 60});
            // Text blocks get two inputs and an output like the gates, so every block can be wired.
            if (auto* t = dynamic_cast<TDiagText*>(b); t && t->FInCount == 0) {
                t->SetInCount(2);
                t->SetOutCount(1);
            }
            dc->AssignObjEvents(b);
            blocks.push_back(b);
        }
        // Each block feeds its right-hand neighbour's first input and the block below's second.
        for (int i = 0; i < kCols * kRows; ++i) {
            TDiagObject* s = blocks[size_t(i)];
            new TDiagObjConnection(dc->ConList.get(), s, 1,
                                   blocks[size_t((i + 1) % (kCols * kRows))], -1, TPoint{10, 10}, 0,
                                   0, 0);
            new TDiagObjConnection(dc->ConList.get(), s, 1,
                                   blocks[size_t((i + kCols) % (kCols * kRows))], -2,
                                   TPoint{10, 10}, 0, 0, 0);
        }
        dc->SetDesignMode(true);
    }

    void Show() {
        area.show();
        area.horizontalScrollBar()->setValue(kScrollX);
        area.verticalScrollBar()->setValue(kScrollY);
        QApplication::processEvents();
    }

    QRect View() const { return QRect(kScrollX, kScrollY, kViewW, kViewH); }
    // A block in the middle of the view.
    TDiagObject* Middle() const {
        return blocks[size_t((kScrollY / kCell + 6) * kCols + kScrollX / kCell + 12)];
    }
};

Surface& Shared() {
    static Surface* s = [] {
        auto* surface = new Surface;
        surface->Show();
        return surface;
    }();
    return *s;
}

void BM_EditorFirstPaintAfterShow(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto s = std::make_unique<Surface>();
        state.ResumeTiming();
        s->area.show();
        s->area.horizontalScrollBar()->setValue(kScrollX);
        s->area.verticalScrollBar()->setValue(kScrollY);
        s->area.repaint();
        state.PauseTiming();
        s.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_EditorFirstPaintAfterShow)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_EditorRepaintView(benchmark::State& state) {
    Surface& s = Shared();
    for (auto _ : state)
        s.panel->repaint(s.View());
}
BENCHMARK(BM_EditorRepaintView)->Unit(benchmark::kMillisecond);

// One step of a Shift-drag: the block moves by the cursor's travel and the area it left and the
// area it entered are repainted (what Qt repaints after a child moves).
void BM_EditorDragStep(benchmark::State& state) {
    Surface& s = Shared();
    TScriptedInputState input;
    TScopedInputState guard(&input);
    TDiagObject* b = s.Middle();
    input.Shift = ssShift;
    input.Pos = ClientToScreen(s.panel, {b->x() + 5, b->y() + 5});
    s.dc->DiagMouseDown(b, mbLeft, 0, 5, 5);
    int step = 0;
    for (auto _ : state) {
        const QRect before = b->geometry();
        input.Pos.X += (step++ & 1) ? -3 : 3;
        s.dc->MoveDiagObj(b);
        s.panel->repaint(QRegion(before) | b->geometry());
    }
    s.dc->DiagMouseUp(b, mbLeft, 0, 5, 5);
}
BENCHMARK(BM_EditorDragStep)->Unit(benchmark::kMicrosecond);

// The release at the end of a drag: the block's wires are routed anew and the view repainted.
void BM_EditorDragRelease(benchmark::State& state) {
    Surface& s = Shared();
    TScriptedInputState input;
    TScopedInputState guard(&input);
    TDiagObject* b = s.Middle();
    for (auto _ : state) {
        state.PauseTiming();
        s.dc->FResizeMode = kDragMove;
        b->FResizeMode = kDragMove;
        b->SetLocation({b->x() + 1, b->y()});
        state.ResumeTiming();
        s.dc->DiagMouseUp(b, mbLeft, 0, 5, 5);
        s.panel->repaint(s.View());
    }
}
BENCHMARK(BM_EditorDragRelease)->Unit(benchmark::kMillisecond);

void BM_EditorSelectBestSegment(benchmark::State& state) {
    Surface& s = Shared();
    TDiagObject* b = s.Middle();
    // Next to the output stub of the middle block, and on empty surface far from any wire.
    const TPoint near{b->x() + b->width() + 4, b->y() + 32};
    const TPoint far{b->x() + 25, b->y() - 7};
    int i = 0;
    for (auto _ : state) {
        s.dc->SelectBestSegment((i++ & 1) ? near : far);
        benchmark::DoNotOptimize(s.dc->SelInfo);
    }
}
BENCHMARK(BM_EditorSelectBestSegment)->Unit(benchmark::kMicrosecond);

void BM_EditorRenderWholeSurface(benchmark::State& state) {
    Surface& s = Shared();
    QImage img(s.panel->size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state)
        s.panel->render(&img);
}
BENCHMARK(BM_EditorRenderWholeSurface)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_EditorCreateBlocks(benchmark::State& state) {
    QWidget panel;
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i)
            dc.CreateObjByDiagType(i & 1 ? doAndLogic : doRSTrigger, {i, i, i + 60, i + 100});
        state.PauseTiming();
        dc.Clear(false);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_EditorCreateBlocks)->Unit(benchmark::kMillisecond);

} // namespace
