// Repaint of a zoomed view: 10,000 blocks on an 80-pixel grid with 20,000 wires (each block
// feeds its right-hand neighbour's first input and the block below's second), the container on
// a panel in a shown 1920 x 1080 scroll area, design mode and direct editing on, as a host uses
// it. The view is scrolled to the middle of the diagram; at 50% it shows four times the
// diagram area that 100% does.

#include "bench_cleanup.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/picture_cache.h"

#include <QApplication>
#include <QPalette>
#include <QScrollArea>
#include <QScrollBar>
#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

using namespace vde;

namespace {

constexpr int kCell = 80;
constexpr int kViewW = 1920, kViewH = 1080;
constexpr int kBlocks = 10000;

struct ZoomedSurface {
    int Cols = 100;
    QScrollArea area;
    QWidget* panel = new QWidget;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    std::vector<TDiagObject*> blocks;

    ZoomedSurface() {
        const int rows = (kBlocks + Cols - 1) / Cols;
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
        for (int i = 0; i < kBlocks; ++i) {
            const int x = (i % Cols) * kCell + 10, y = (i / Cols) * kCell + 10;
            TDiagObject* b = dc->CreateObjByDiagType(kinds[i % 4], {x, y, x + 50, y + 60});
            if (auto* t = dynamic_cast<TDiagText*>(b); t && t->FInCount == 0) {
                t->SetInCount(2);
                t->SetOutCount(1);
            }
            dc->AssignObjEvents(b);
            blocks.push_back(b);
        }
        for (int i = 0; i < kBlocks; ++i) {
            TDiagObject* s = blocks[size_t(i)];
            new TDiagObjConnection(dc->ConList.get(), s, 1, blocks[size_t((i + 1) % kBlocks)], -1,
                                   TPoint{10, 10}, 0, 0, 0);
            new TDiagObjConnection(dc->ConList.get(), s, 1, blocks[size_t((i + Cols) % kBlocks)],
                                   -2, TPoint{10, 10}, 0, 0, 0);
        }
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
        area.show();
        QApplication::processEvents();
    }

    // The view's rectangle on the panel at zoom z, around the diagram's middle.
    QRect ViewAt(double z) {
        dc->SetZoom(z);
        QApplication::processEvents();
        const int mid = Cols * kCell / 2;
        const QPoint at(std::max(0, int(mid * z) - kViewW / 2),
                        std::max(0, int(mid * z) - kViewH / 2));
        area.horizontalScrollBar()->setValue(at.x());
        area.verticalScrollBar()->setValue(at.y());
        QApplication::processEvents();
        return QRect(panel->mapFrom(area.viewport(), QPoint(0, 0)), QSize(kViewW, kViewH));
    }
};

ZoomedSurface& Shared() {
    static std::unique_ptr<ZoomedSurface> s;
    static const bool cleanup = [] {
        BenchCleanups().push_back([] { s.reset(); });
        return true;
    }();
    (void)cleanup;
    if (!s)
        s = std::make_unique<ZoomedSurface>();
    return *s;
}

// Argument: the zoom in percent.
void BM_ZoomRepaintView(benchmark::State& state) {
    ZoomedSurface& s = Shared();
    const QRect view = s.ViewAt(double(state.range(0)) / 100.0);
    s.panel->repaint(view);
    const TPictureCacheStats before = PictureCacheStats();
    for (auto _ : state)
        s.panel->repaint(view);
    // Per repaint: blocks painted from a kept picture, and looks painted directly.
    const TPictureCacheStats after = PictureCacheStats();
    const double n = double(state.iterations());
    state.counters["kept_hits"] = double(after.Hits - before.Hits) / n;
    state.counters["refused"] = double(after.Refused - before.Refused) / n;
}
BENCHMARK(BM_ZoomRepaintView)->Arg(100)->Arg(50)->Arg(25)->Arg(200)->Unit(benchmark::kMillisecond);

// The same with no block picture kept: the first repaint at a zoom, or after the looks changed.
void BM_ZoomRepaintViewCold(benchmark::State& state) {
    ZoomedSurface& s = Shared();
    const QRect view = s.ViewAt(double(state.range(0)) / 100.0);
    for (auto _ : state) {
        ClearPictureCache();
        s.panel->repaint(view);
    }
}
BENCHMARK(BM_ZoomRepaintViewCold)->Arg(50)->Arg(25)->Unit(benchmark::kMillisecond);

// With the kept pictures switched off: every block painted directly.
void BM_ZoomRepaintViewDirect(benchmark::State& state) {
    ZoomedSurface& s = Shared();
    const QRect view = s.ViewAt(double(state.range(0)) / 100.0);
    SetPictureCacheEnabled(false);
    for (auto _ : state)
        s.panel->repaint(view);
    SetPictureCacheEnabled(true);
}
BENCHMARK(BM_ZoomRepaintViewDirect)->Arg(50)->Arg(25)->Unit(benchmark::kMillisecond);

// The worst case for kept pictures: no two blocks look alike (each block's text is its own
// number), at 50%. Arguments: 0 the first repaint (nothing kept yet), 1 a repaint after it.
void BM_ZoomRepaintUniqueLooks(benchmark::State& state) {
    ZoomedSurface& s = Shared();
    std::vector<QString> texts;
    for (TDiagObject* b : s.blocks) {
        texts.push_back(b->GetTextValues());
        b->SetTextValues(QString::number(texts.size()));
    }
    const QRect view = s.ViewAt(0.5);
    const bool warm = state.range(0) != 0;
    for (auto _ : state) {
        if (!warm) {
            state.PauseTiming();
            ClearPictureCache();
            state.ResumeTiming();
        }
        s.panel->repaint(view);
    }
    for (size_t i = 0; i < texts.size(); ++i)
        s.blocks[i]->SetTextValues(texts[i]);
}
BENCHMARK(BM_ZoomRepaintUniqueLooks)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
