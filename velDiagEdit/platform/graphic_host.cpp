#include "velDiagEdit/platform/graphic_host.h"

#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/picture_cache.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <optional>

namespace vde {

namespace {

// Hosts by widget: a look-up among the widget's children would cost what the widget holds.
QHash<const QWidget*, TGraphicHost*>& Hosts() {
    static QHash<const QWidget*, TGraphicHost*> hosts;
    return hosts;
}

// Scaled coordinates are held within this, so that a QRect of them cannot overflow.
constexpr double kReach = 1 << 30;

// A control spanning more cells than this is kept aside rather than filed in each.
constexpr int64_t kMaxFiledCells = 64;

int CellOf(int v) {
    // Floor division, so that cell -1 holds -128..-1.
    return v >= 0 ? v / TGraphicHost::kCell : -int((-int64_t(v) - 1) / TGraphicHost::kCell) - 1;
}

quint64 CellKey(int cx, int cy) {
    return (quint64(quint32(cx)) << 32) | quint32(cy);
}

// The cells a rectangle covers (right and bottom inclusive); empty for an empty rectangle.
QRect CellsOf(const QRect& r) {
    if (r.isEmpty())
        return {};
    const int64_t right = int64_t(r.x()) + r.width() - 1;
    const int64_t bottom = int64_t(r.y()) + r.height() - 1;
    return QRect(QPoint(CellOf(r.x()), CellOf(r.y())),
                 QPoint(CellOf(int(right)), CellOf(int(bottom))));
}

int64_t CellCount(const QRect& cells) {
    return cells.isEmpty() ? 0 : int64_t(cells.width()) * cells.height();
}

} // namespace

TGraphicHost* TGraphicHost::Find(const QWidget* w) {
    return w ? Hosts().value(w, nullptr) : nullptr;
}

TGraphicHost* TGraphicHost::For(QWidget* w) {
    if (TGraphicHost* h = Find(w))
        return h;
    return new TGraphicHost(w);
}

TGraphicHost::TGraphicHost(QWidget* w) : QObject(w), FWidget(w) {
    setObjectName(QStringLiteral("vde_graphic_host"));
    Hosts().insert(w, this);
    w->installEventFilter(this);
}

std::vector<TGraphicControl*> TGraphicHost::Controls() const {
    std::vector<TGraphicControl*> all(FLarge);
    for (auto it = FGrid.cbegin(); it != FGrid.cend(); ++it)
        all.insert(all.end(), it->begin(), it->end());
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    std::sort(all.begin(), all.end(),
              [](const TGraphicControl* a, const TGraphicControl* b) { return a->FZ < b->FZ; });
    return all;
}

std::vector<TGraphicControl*> TGraphicHost::ControlsOf(const QWidget* w) {
    const TGraphicHost* h = Find(w);
    return h ? h->Controls() : std::vector<TGraphicControl*>{};
}

TGraphicHost::~TGraphicHost() {
    Hosts().remove(FWidget);
    // The widget is going: its graphic controls go with it, as child widgets would.
    const std::vector<TGraphicControl*> all = Controls();
    for (TGraphicControl* c : all)
        c->FParent = nullptr;
    FGrid.clear();
    FLarge.clear();
    FCount = 0;
    for (TGraphicControl* c : all)
        delete c;
}

void TGraphicHost::SetPaintHandler(std::function<void()> handler) {
    FPaintHandler = std::move(handler);
    FWidget->update();
}

void TGraphicHost::TrackForControls() {
    if (FTrackingForControls)
        return;
    FWidgetTracks = FWidget->hasMouseTracking();
    FTrackingForControls = true;
    FWidget->setMouseTracking(true);
}

// ---- the index ------------------------------------------------------------------------------

void TGraphicHost::Add(TGraphicControl* c) {
    ++FCount;
    c->FZ = ++FTopZ;
    c->FCells = QRect();
    c->FLarge = false;
    Refile(c);
}

void TGraphicHost::Remove(TGraphicControl* c) {
    Unfile(c);
    --FCount;
    if (FCapture == c)
        FCapture = nullptr;
}

void TGraphicHost::Unfile(TGraphicControl* c) {
    const auto drop = [c](std::vector<TGraphicControl*>& v) {
        auto it = std::find(v.begin(), v.end(), c);
        if (it != v.end()) {
            *it = v.back();
            v.pop_back();
        }
    };
    if (c->FLarge) {
        drop(FLarge);
    } else if (!c->FCells.isEmpty()) {
        for (int cy = c->FCells.top(); cy <= c->FCells.bottom(); ++cy)
            for (int cx = c->FCells.left(); cx <= c->FCells.right(); ++cx) {
                auto it = FGrid.find(CellKey(cx, cy));
                if (it == FGrid.end())
                    continue;
                drop(*it);
                if (it->empty())
                    FGrid.erase(it);
            }
    }
    c->FCells = QRect();
    c->FLarge = false;
}

void TGraphicHost::Refile(TGraphicControl* c) {
    const QRect cells = CellsOf(c->FGeometry);
    if (!c->FLarge && cells == c->FCells && !cells.isEmpty())
        return;
    Unfile(c);
    // An empty control is kept (counted, freed with the host) in the aside list.
    if (cells.isEmpty() || CellCount(cells) > kMaxFiledCells) {
        FLarge.push_back(c);
        c->FLarge = true;
        return;
    }
    for (int cy = cells.top(); cy <= cells.bottom(); ++cy)
        for (int cx = cells.left(); cx <= cells.right(); ++cx)
            FGrid[CellKey(cx, cy)].push_back(c);
    c->FCells = cells;
}

void TGraphicHost::Raise(TGraphicControl* c) {
    c->FZ = ++FTopZ;
}

void TGraphicHost::Lower(TGraphicControl* c) {
    c->FZ = --FBottomZ;
}

template <class F> void TGraphicHost::ForEachIn(const QRect& r, F f) const {
    const uint64_t query = ++FQuery;
    const auto visit = [&](TGraphicControl* c) {
        if (c->FSeen == query)
            return;
        c->FSeen = query;
        if (c->FVisible && c->FGeometry.intersects(r))
            f(c);
    };
    for (TGraphicControl* c : FLarge)
        visit(c);
    const QRect cells = CellsOf(r);
    if (cells.isEmpty())
        return;
    // A rectangle wider than the filed area is walked cell by cell only where cells exist.
    if (CellCount(cells) > int64_t(FGrid.size())) {
        for (auto it = FGrid.cbegin(); it != FGrid.cend(); ++it) {
            const int cx = int(qint32(quint32(it.key() >> 32)));
            const int cy = int(qint32(quint32(it.key())));
            if (cells.contains(cx, cy))
                for (TGraphicControl* c : *it)
                    visit(c);
        }
        return;
    }
    for (int cy = cells.top(); cy <= cells.bottom(); ++cy)
        for (int cx = cells.left(); cx <= cells.right(); ++cx) {
            auto it = FGrid.constFind(CellKey(cx, cy));
            if (it != FGrid.cend())
                for (TGraphicControl* c : *it)
                    visit(c);
        }
}

TGraphicControl* TGraphicHost::ControlAt(const QPoint& p) const {
    TGraphicControl* top = nullptr;
    ForEachIn(QRect(p, QSize(1, 1)), [&](TGraphicControl* c) {
        if (!top || c->FZ > top->FZ)
            top = c;
    });
    return top;
}

std::vector<TGraphicControl*> TGraphicHost::ControlsIn(const QRect& r) const {
    std::vector<TGraphicControl*> found;
    ForEachIn(r, [&](TGraphicControl* c) { found.push_back(c); });
    std::sort(found.begin(), found.end(),
              [](const TGraphicControl* a, const TGraphicControl* b) { return a->FZ < b->FZ; });
    return found;
}

// ---- events ---------------------------------------------------------------------------------

bool TGraphicHost::eventFilter(QObject* watched, QEvent* event) {
    if (watched != FWidget)
        return false;
    switch (event->type()) {
    case QEvent::Paint:
        if (FPainting || (!FPaintHandler && FCount == 0))
            return false;
        Paint(static_cast<QPaintEvent*>(event));
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return DispatchMouse(static_cast<QMouseEvent*>(event));
    default:
        return false;
    }
}

void TGraphicHost::Invalidate(const QRect& r) {
    constexpr int kMaxPendingRects = 64;
    if (FWholePending)
        return;
    if (++FPendingRects > kMaxPendingRects) {
        FWholePending = true;
        FWidget->update();
        return;
    }
    FWidget->update(FScale == 1.0 ? r : ToDevice(r));
}

void TGraphicHost::SetScale(double Value) {
    if (!(Value > 0.0) || Value == FScale)
        return;
    FScale = Value;
    FWidget->update();
}

QPoint TGraphicHost::PointAt(const QPointF& p) const {
    if (FScale == 1.0)
        return p.toPoint();
    // The logical pixel the device pixel lies in, as the handlers' whole coordinates read it.
    const QPointF l = p / FScale;
    return QPoint(int(std::floor(l.x())), int(std::floor(l.y())));
}

double TGraphicHost::ScaleOf(const QWidget* w) {
    const TGraphicHost* h = Find(w);
    return h ? h->FScale : 1.0;
}

QRect TGraphicHost::ToDevice(const QRect& r) const {
    if (FScale == 1.0 || r.isEmpty())
        return r;
    // One pixel more on each side: a scaled pen or a rounded edge may reach it.
    const double l = std::floor(r.x() * FScale) - 1, t = std::floor(r.y() * FScale) - 1;
    const double rr = std::ceil((double(r.x()) + r.width()) * FScale) + 1;
    const double b = std::ceil((double(r.y()) + r.height()) * FScale) + 1;
    const auto c = [](double v) { return int(std::clamp(v, -kReach, kReach)); };
    return QRect(QPoint(c(l), c(t)), QPoint(c(rr) - 1, c(b) - 1));
}

QRect TGraphicHost::ToLogical(const QRect& r) const {
    if (FScale == 1.0 || r.isEmpty())
        return r;
    const double l = std::floor(r.x() / FScale) - 1, t = std::floor(r.y() / FScale) - 1;
    const double rr = std::ceil((double(r.x()) + r.width()) / FScale) + 1;
    const double b = std::ceil((double(r.y()) + r.height()) / FScale) + 1;
    const auto c = [](double v) { return int(std::clamp(v, -kReach, kReach)); };
    return QRect(QPoint(c(l), c(t)), QPoint(c(rr) - 1, c(b) - 1));
}

void TGraphicHost::SetFollowPalette(bool Value) {
    if (Value == FFollowPalette)
        return;
    FFollowPalette = Value;
    FWidget->update();
}

void TGraphicHost::Paint(QPaintEvent* e) {
    NotePicturePaint();
    FPendingRects = 0;
    FWholePending = false;
    // The widget paints itself first, with this filter standing aside.
    FPainting = true;
    QCoreApplication::sendEvent(FWidget, e);
    FPainting = false;
    QPainter p(FWidget);
    std::optional<TPaletteScope> colours;
    if (FFollowPalette)
        colours.emplace(&p, FWidget->palette());
    QRect pr = e->rect();
    if (FScale != 1.0) {
        p.scale(FScale, FScale);
        pr = ToLogical(pr);
    }
    if (FPaintHandler) {
        const TRect rect{pr.left(), pr.top(), pr.left() + pr.width(), pr.top() + pr.height()};
        const TPaintScope scope(FWidget, &p, &rect);
        const auto h = FPaintHandler;
        RunInEventBoundary("paint", h);
    }
    // Controls freed by a handler leave the host at once, so the list is taken afresh.
    for (TGraphicControl* c : ControlsIn(pr))
        c->PaintWith(p);
}

bool TGraphicHost::DispatchMouse(QMouseEvent* e) {
    const QEvent::Type t = e->type();
    TGraphicControl* target = nullptr;
    if (FCapturing) {
        target = FCapture.data();
    } else if (t == QEvent::MouseButtonPress || t == QEvent::MouseButtonDblClick) {
        target = ControlAt(PointAt(e->position()));
        if (!target)
            return false;
        FCapturing = true;
        FCapture = target;
    } else {
        // A gesture that began on the widget itself stays the widget's, as under a grab; only
        // a move with no button held (hover) goes to the control under the cursor.
        if (t != QEvent::MouseMove || e->buttons() != Qt::NoButton)
            return false;
        target = ControlAt(PointAt(e->position()));
        // Hover the widget tracks only for its controls is not the widget's to see.
        const bool widgetWantsHover = !FTrackingForControls || FWidgetTracks;
        if (!target)
            return !widgetWantsHover;
        if (!target->FTracking)
            return true;
    }
    if (t == QEvent::MouseButtonRelease && e->buttons() == Qt::NoButton) {
        FCapturing = false;
        FCapture = nullptr;
    }
    if (!target)
        return true; // the control pressed is gone: the rest of its gesture goes nowhere
    const QPointF local = ToLogical(e->position()) - QPointF(target->pos());
    QMouseEvent moved(t, local, e->scenePosition(), e->globalPosition(), e->button(), e->buttons(),
                      e->modifiers(), e->pointingDevice());
    DispatchMouseEvent(target, target->MouseHandlers, &moved);
    return true;
}

} // namespace vde
