#include "velDiagEdit/handles/move_resize.h"

#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/input_state.h"

#include <algorithm>
#include <array>

namespace vde {

namespace {

constexpr int kNodeCount = 8;
constexpr int kNodeSize = 5;

// Clockwise from the top-left corner.
constexpr std::array<TCursor, kNodeCount> kNodeCursors = {
    crSizeNWSE, crSizeNS, crSizeNESW, crSizeWE, crSizeNWSE, crSizeNS, crSizeNESW, crSizeWE};

enum TEdge : uint8_t { edLeft = 1, edTop = 2, edRight = 4, edBottom = 8 };
constexpr std::array<uint8_t, kNodeCount> kNodeEdges = {
    edLeft | edTop,     edTop,    edRight | edTop,   edRight,
    edRight | edBottom, edBottom, edLeft | edBottom, edLeft};

QString NodeName(int index) {
    return QStringLiteral("_Node_%1").arg(index);
}

// A widget without a parent widget is a window: its bounds are already in screen coordinates.
TPoint ParentClientToScreen(const QWidget* w, TPoint p) {
    const QWidget* parent = w->parentWidget();
    return parent ? ClientToScreen(parent, p) : p;
}

TPoint ScreenToParentClient(const QWidget* w, TPoint p) {
    const QWidget* parent = w->parentWidget();
    return parent ? ScreenToClient(parent, p) : p;
}

void SetLeft(QWidget* w, int32_t left) {
    const QRect g = w->geometry();
    SetBounds(w, left, g.y(), g.width(), g.height());
}

void SetTop(QWidget* w, int32_t top) {
    const QRect g = w->geometry();
    SetBounds(w, g.x(), top, g.width(), g.height());
}

} // namespace

// ---- TNodeList ----

TNodeList::~TNodeList() {
    Clear();
}

TPanel* TNodeList::Items(int index) const {
    return index >= 0 && index < Count() ? FItems[size_t(index)] : nullptr;
}

int TNodeList::IndexOf(const QObject* item) const {
    if (!item)
        return -1;
    for (size_t i = 0; i < FItems.size(); ++i)
        if (static_cast<const QObject*>(FItems[i]) == item)
            return int(i);
    return -1;
}

void TNodeList::Add(TPanel* item) {
    if (!item)
        return;
    FItems.push_back(item);
    connect(item, &QObject::destroyed, this, [this](QObject* gone) { Remove(gone); });
}

void TNodeList::Clear() {
    // Taken out first, so that the destroyed notifications find nothing left to remove.
    std::vector<TPanel*> items;
    items.swap(FItems);
    for (TPanel* item : items) {
        disconnect(item, &QObject::destroyed, this, nullptr);
        delete item;
    }
}

void TNodeList::Remove(const QObject* item) {
    std::erase_if(FItems, [item](TPanel* p) { return static_cast<const QObject*>(p) == item; });
}

// ---- TdmMoveResize ----

TdmMoveResize::TdmMoveResize(QObject* AOwner) : QObject(AOwner) {
    DataModuleCreate(this);
}

TdmMoveResize::~TdmMoveResize() {
    DataModuleDestroy(this);
}

void TdmMoveResize::DataModuleCreate(QObject*) {
    FEnableMoveResize = true;
    FNodes = std::make_unique<TNodeList>();
}

void TdmMoveResize::DataModuleDestroy(QObject*) {
    if (FNodes)
        FNodes->Clear();
    FNodes.reset();
}

TMouseHandlers TdmMoveResize::ControlHandlers() {
    // The hooks may outlive this module on a host's widget; then they do nothing.
    QPointer<TdmMoveResize> self(this);
    TMouseHandlers h;
    h.OnMouseDown = [self](QObject* s, TMouseButton b, TShiftState sh, int x, int y) {
        if (self)
            self->ControlMouseDown(s, b, sh, x, y);
    };
    h.OnMouseMove = [self](QObject* s, TShiftState sh, int x, int y) {
        if (self)
            self->ControlMouseMove(s, sh, x, y);
    };
    h.OnMouseUp = [self](QObject* s, TMouseButton b, TShiftState sh, int x, int y) {
        if (self)
            self->ControlMouseUp(s, b, sh, x, y);
    };
    return h;
}

TMouseHandlers TdmMoveResize::NodeHandlers() {
    QPointer<TdmMoveResize> self(this);
    TMouseHandlers h;
    h.OnMouseDown = [self](QObject* s, TMouseButton b, TShiftState sh, int x, int y) {
        if (self)
            self->NodeMouseDown(s, b, sh, x, y);
    };
    h.OnMouseMove = [self](QObject* s, TShiftState sh, int x, int y) {
        if (self)
            self->NodeMouseMove(s, sh, x, y);
    };
    h.OnMouseUp = [self](QObject* s, TMouseButton b, TShiftState sh, int x, int y) {
        if (self)
            self->NodeMouseUp(s, b, sh, x, y);
    };
    return h;
}

void TdmMoveResize::CreateNodes(QObject* AOwner, QWidget* AParent) {
    if (!FNodes)
        return;
    for (int i = 0; i < kNodeCount; ++i) {
        const QString name = NodeName(i);
        if (QObject* found = FindComponent(AOwner, name)) {
            auto* panel = qobject_cast<TPanel*>(found);
            if (!panel)
                throw EInvalidCast(
                    QStringLiteral("Invalid class typecast: component \"%1\" is a %2, not a "
                                   "TPanel, so it cannot serve as a move/resize handle")
                        .arg(name, QString::fromLatin1(found->metaObject()->className())));
            // Taken over as it is: its events, size and parent stay.
            if (FNodes->IndexOf(panel) < 0)
                FNodes->Add(panel);
            continue;
        }
        auto* panel = new TPanel(AOwner);
        FNodes->Add(panel);
        panel->SetBevelOuter(bvNone);
        panel->SetColor(clBlack);
        panel->setObjectName(name);
        panel->resize(kNodeSize, panel->height());
        panel->resize(kNodeSize, kNodeSize);
        panel->SetParent(AParent);
        panel->setVisible(false);
        panel->SetCursor(kNodeCursors[size_t(i)]);
        SetMouseHandlers(panel, NodeHandlers());
    }
}

bool TdmMoveResize::AssignControlEvents(QObject* Control, bool SetEmpty) {
    if (!Control || (FNodes && FNodes->IndexOf(Control) >= 0))
        return false;
    if (SetEmpty) {
        SetMouseHandlers(Control, {});
        return false;
    }
    SetMouseHandlers(Control, ControlHandlers());
    return true;
}

void TdmMoveResize::SetNodesVisible(bool Visible) {
    if (FNodes)
        for (int i = 0; i < FNodes->Count(); ++i)
            FNodes->Items(i)->setVisible(Visible);
    if (!Visible)
        FCurrentNodeControl = nullptr;
}

void TdmMoveResize::PositionNodes(QWidget* C) {
    if (!C || !FNodes)
        return;
    FCurrentNodeControl = nullptr;
    const QRect g = C->geometry();
    const int32_t L = g.x(), T = g.y(), W = g.width(), H = g.height();
    // C++ division truncates toward zero, as the placement requires.
    const int32_t xl = L - 2, xc = L + W / 2 - 2, xr = L + W - 2;
    const int32_t yt = T - 2, yc = T + H / 2 - 2, yb = T + H - 2;
    const std::array<TPoint, kNodeCount> points = {TPoint{xl, yt}, TPoint{xc, yt}, TPoint{xr, yt},
                                                   TPoint{xr, yc}, TPoint{xr, yb}, TPoint{xc, yb},
                                                   TPoint{xl, yb}, TPoint{xl, yc}};
    const int count = std::min(FNodes->Count(), kNodeCount);
    for (int i = 0; i < count; ++i) {
        TPanel* node = FNodes->Items(i);
        const TPoint screen = ParentClientToScreen(C, points[size_t(i)]);
        const TPoint p = ScreenToParentClient(node, screen);
        SetTop(node, p.Y);
        SetLeft(node, p.X);
    }
    FCurrentNodeControl = C;
    SetNodesVisible(true);
}

void TdmMoveResize::ControlMouseDown(QObject* Sender, TMouseButton, TShiftState, int, int) {
    if (!FEnableMoveResize || !IsWindowedControl(Sender))
        return;
    auto* control = static_cast<QWidget*>(Sender);
    inReposition = true;
    InputState().SetCapture(control);
    oldPos = InputState().CursorPos();
    PositionNodes(control);
    FCurrentNodeControl = control;
}

void TdmMoveResize::ControlMouseMove(QObject* Sender, TShiftState, int, int) {
    if (!inReposition)
        return;
    const TPoint P = InputState().CursorPos();
    InputState().SetScreenCursor(crSizeAll);
    QWidget* control = Sender && Sender->isWidgetType() ? static_cast<QWidget*>(Sender) : nullptr;
    if (control) {
        SetLeft(control, control->geometry().x() - oldPos.X + P.X);
        SetTop(control, control->geometry().y() - oldPos.Y + P.Y);
    }
    oldPos = P;
    PositionNodes(control);
}

void TdmMoveResize::ControlMouseUp(QObject*, TMouseButton, TShiftState, int, int) {
    if (!inReposition)
        return;
    InputState().SetScreenCursor(crDefault);
    InputState().ReleaseCapture();
    inReposition = false;
}

void TdmMoveResize::NodeMouseDown(QObject* Sender, TMouseButton, TShiftState, int, int) {
    if (!FEnableMoveResize || !IsWindowedControl(Sender))
        return;
    FNodePositioning = true;
    InputState().SetCapture(static_cast<QWidget*>(Sender));
    oldPos = InputState().CursorPos();
}

void TdmMoveResize::NodeMouseMove(QObject* Sender, TShiftState, int, int) {
    if (!FNodePositioning)
        return;
    const TPoint S = InputState().CursorPos();
    // With no control under the handles (hidden and shown again by hand) there is nothing to
    // resize; the handle alone follows the cursor.
    QWidget* C = FCurrentNodeControl.data();
    if (C) {
        const TPoint P = ScreenToParentClient(C, InputState().CursorPos());
        TRect R = BoundsRect(C);
        const int k = FNodes ? FNodes->IndexOf(Sender) : -1;
        const uint8_t edges = k >= 0 && k < kNodeCount ? kNodeEdges[size_t(k)] : 0;
        if (edges & edLeft)
            R.Left = P.X;
        if (edges & edRight)
            R.Right = P.X;
        if (edges & edTop)
            R.Top = P.Y;
        if (edges & edBottom)
            R.Bottom = P.Y;
        SetControlBounds(C, R.Left, R.Top, R.Right - R.Left, R.Bottom - R.Top);
    }
    if (Sender && Sender->isWidgetType()) {
        auto* node = static_cast<QWidget*>(Sender);
        SetLeft(node, node->geometry().x() - oldPos.X + S.X);
        SetTop(node, node->geometry().y() - oldPos.Y + S.Y);
    }
    oldPos = S;
    if (C)
        PositionNodes(C);
}

void TdmMoveResize::NodeMouseUp(QObject*, TMouseButton, TShiftState, int, int) {
    if (!FNodePositioning)
        return;
    InputState().SetScreenCursor(crDefault);
    InputState().ReleaseCapture();
    FNodePositioning = false;
}

void TdmMoveResize::SetControlBounds(QWidget* Control, int32_t Left, int32_t Top, int32_t Width,
                                     int32_t Height) {
    SetBounds(Control, Left, Top, Width, Height);
}

} // namespace vde
