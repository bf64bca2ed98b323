// Direct editing at 10,000 blocks and 20,000 wires: one step of a wire being dragged (the route
// to the marker under the cursor, the preview repainted) and one step of a rubber band (the
// blocks and wires inside it selected, the band repainted). The container sits on a panel in a
// shown 1920 x 1080 scroll area in design mode with direct editing on; mouse events go to the
// panel as a user's do, and each step ends with the paint it asked for.

#include "bench_cleanup.h"
#include "velDiagEdit/editor/diag_container.h"

#include <QApplication>
#include <QMouseEvent>
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

struct DirectSurface {
    int N;
    int Cols;
    QScrollArea area;
    QWidget* panel = new QWidget;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    std::vector<TDiagObject*> blocks;

    explicit DirectSurface(int n) : N(n), Cols(int(std::ceil(std::sqrt(double(n))))) {
        const int rows = (n + Cols - 1) / Cols;
        panel->resize(Cols * kCell, rows * kCell);
        QPalette pal = panel->palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel->setPalette(pal);
        panel->setAutoFillBackground(true);
        area.setFrameShape(QFrame::NoFrame);
        area.setWidget(panel);
        area.resize(kViewW, kViewH);
        canvas.SetHandle(panel);
        dc = std::make_unique<TDiagContainer>(panel, &canvas, nullptr);
        for (int i = 0; i < n; ++i) {
            const int x = (i % Cols) * kCell + 10, y = (i / Cols) * kCell + 10;
            TDiagObject* b =
                dc->CreateObjByDiagType(i % 2 ? doOrLogic : doAndLogic, {x, y, x + 50, y + 60});
            dc->AssignObjEvents(b);
            blocks.push_back(b);
        }
        // Each block feeds its right-hand neighbour's first input and the block below's second.
        for (int i = 0; i < n && dc->ConList->Count() + 2 <= 65535; ++i) {
            TDiagObject* s = blocks[size_t(i)];
            new TDiagObjConnection(dc->ConList.get(), s, 1, blocks[size_t((i + 1) % n)], -1,
                                   TPoint{10, 10}, 0, 0, 0);
            new TDiagObjConnection(dc->ConList.get(), s, 1, blocks[size_t((i + Cols) % n)], -2,
                                   TPoint{10, 10}, 0, 0, 0);
        }
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
        area.show();
        area.horizontalScrollBar()->setValue(Scroll().x());
        area.verticalScrollBar()->setValue(Scroll().y());
        QApplication::processEvents();
    }
    QPoint Scroll() const {
        const int cx = (N / 2 % Cols) * kCell, cy = (N / 2 / Cols) * kCell;
        return {std::max(0, cx - kViewW / 2), std::max(0, cy - kViewH / 2)};
    }
    TDiagObject* Middle() const { return blocks[size_t(N / 2)]; }
    void Mouse(QEvent::Type type, QPoint at, Qt::MouseButtons buttons) {
        QMouseEvent e(type, QPointF(at), panel->mapToGlobal(QPointF(at)),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::NoModifier);
        QApplication::sendEvent(panel, &e);
    }
};

DirectSurface& Shared() {
    static std::unique_ptr<DirectSurface> s;
    static const bool cleanup = [] {
        BenchCleanups().push_back([] { s.reset(); });
        return true;
    }();
    (void)cleanup;
    if (!s)
        s = std::make_unique<DirectSurface>(10000);
    return *s;
}

// A wire drawn from an output toward the next block's input: each step moves the cursor 3
// pixels on and back next to that input, so the route to it is made each time.
void BM_DirectWirePreviewStep(benchmark::State& state) {
    DirectSurface& s = Shared();
    TDiagObject* from = s.Middle();
    TDiagObject* to = s.blocks[size_t(s.N / 2 + 1)];
    TPoint p{}, q{};
    from->GetConPoint(1, p, true);
    to->GetConPoint(-1, q, true);
    s.Mouse(QEvent::MouseButtonPress, QPoint(p.X - 2, p.Y), Qt::LeftButton);
    s.Mouse(QEvent::MouseMove, QPoint(p.X + 10, p.Y), Qt::LeftButton);
    int step = 0;
    for (auto _ : state) {
        const int dy = (step++ & 1) ? 3 : 0;
        s.Mouse(QEvent::MouseMove, QPoint(q.X + 2, q.Y + dy), Qt::LeftButton);
        QApplication::processEvents();
    }
    s.dc->SetDirectEditing(false); // cancels the wire
    s.Mouse(QEvent::MouseButtonRelease, QPoint(q.X + 2, q.Y), Qt::NoButton);
    s.dc->SetDirectEditing(true);
    QApplication::processEvents();
}
BENCHMARK(BM_DirectWirePreviewStep)->Unit(benchmark::kMicrosecond);

// A rubber band of about 8 x 5 cells (40 blocks, 80 wires) growing and shrinking by 3 pixels.
void BM_DirectRubberBandStep(benchmark::State& state) {
    DirectSurface& s = Shared();
    const QPoint start = s.Middle()->geometry().topLeft() - QPoint(6, 6);
    const QPoint end = start + QPoint(8 * kCell, 5 * kCell);
    s.Mouse(QEvent::MouseButtonPress, start, Qt::LeftButton);
    s.Mouse(QEvent::MouseMove, end, Qt::LeftButton);
    int step = 0;
    for (auto _ : state) {
        const int d = (step++ & 1) ? 3 : 0;
        s.Mouse(QEvent::MouseMove, end + QPoint(d, d), Qt::LeftButton);
        QApplication::processEvents();
    }
    state.counters["selected"] = double(s.dc->SelectedBlocks().size());
    s.Mouse(QEvent::MouseButtonRelease, end, Qt::NoButton);
    QApplication::processEvents();
}
BENCHMARK(BM_DirectRubberBandStep)->Unit(benchmark::kMicrosecond);

} // namespace
