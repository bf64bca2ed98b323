// Undo and redo of the surface, and the keys it answers in design mode.
//
// Every step is a pair of container streams, before and after the change: what a user sees
// (blocks, connections, controls' bounds, the selection) comes back byte for byte. Loading
// a step's bytes re-creates the blocks and connections as a stream load does.

#include "velDiagEdit/editor/diag_container.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QEvent>
#include <QKeyEvent>

namespace vde {

namespace {

// Arrow-key moves of one block merge into one step while nothing else happens in between.
constexpr int kKeyMoveMergeId = 1;

// Hands the key presses that reach the surface to its container.
class TSurfaceKeyFilter : public QObject {
    Q_OBJECT
public:
    TSurfaceKeyFilter(TDiagContainer* Container, QObject* Parent)
        : QObject(Parent), FContainer(Container) {}

    bool eventFilter(QObject* Watched, QEvent* Event) override {
        const QEvent::Type t = Event->type();
        if ((t != QEvent::KeyPress && t != QEvent::ShortcutOverride) ||
            Watched != FContainer->GetParent())
            return false;
        auto* k = static_cast<QKeyEvent*>(Event);
        if (!FContainer->IsSurfaceKey(k->key(), k->modifiers()))
            return false;
        // Claiming the shortcut makes the key come to the surface as a press, before any
        // shortcut of the host's with the same keys.
        if (t == QEvent::ShortcutOverride) {
            k->accept();
            return true;
        }
        bool handled = false;
        RunInEventBoundary("key",
                           [&] { handled = FContainer->DiagKeyDown(k->key(), k->modifiers()); });
        return handled;
    }

private:
    TDiagContainer* FContainer;
};

} // namespace

void TDiagContainer::InitUndo() {
    FUndoStack = std::make_unique<TDiagUndoStack>(
        [this] { return SaveSnapshot(); }, [this](const QByteArray& b) { RestoreSnapshot(b); });
    if (FParent) {
        FKeyFilter = std::make_unique<TSurfaceKeyFilter>(this, nullptr);
        FParent->installEventFilter(FKeyFilter.get());
    }
}

TDiagUndoStack* TDiagContainer::UndoStack() const {
    return FUndoStack.get();
}

QByteArray TDiagContainer::SaveSnapshot() {
    TMemoryStream s;
    SaveToStream(s);
    const auto& bytes = s.Bytes();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
}

void TDiagContainer::RestoreSnapshot(const QByteArray& Bytes) {
    // The blocks are about to be replaced: a drag or a step under way has nothing left to act on.
    if (FResizeMode != kDragNone) {
        FResizeMode = kDragNone;
        InputState().SetScreenCursor(crDefault);
    }
    FDragBefore = QByteArray();
    TMemoryStream s(std::vector<uint8_t>(Bytes.begin(), Bytes.end()));
    LoadFromStream(s);
    RestoreLooseEnds(s);
}

void TDiagContainer::RestoreLooseEnds(TMemoryStream& Bytes) {
    // A wire keeps the marker number of an end whose block key names no block: after its
    // source block was deleted it runs from the other end's block under the old key. Loading
    // attaches it by key, finds no block and clears the number with the block; the step's bytes
    // still hold it, and so must the diagram.
    if (!ObjList || !ConList)
        return;
    bool loose = false;
    for (int i = 0; i < ConList->Count() && !loose; ++i)
        loose = !ConList->Items(i)->GetSrcObject() || !ConList->Items(i)->GetDstObject();
    if (!loose)
        return;
    // The wires' records follow the signature and the blocks, which load and save unchanged.
    TMemoryStream blocks;
    ObjList->SaveToStream(blocks);
    Bytes.SetPosition(4 + blocks.Size());
    TDiagConnectList stored(static_cast<TCanvas*>(nullptr));
    stored.LoadFromStream(Bytes, [](TDiagConnection*) {});
    for (int i = 0; i < ConList->Count() && i < stored.Count(); ++i) {
        TDiagConnection* c = ConList->Items(i);
        if (!c->GetSrcObject())
            c->FSrcConIdx = stored.Items(i)->FSrcConIdx;
        if (!c->GetDstObject())
            c->FDstConIdx = stored.Items(i)->FDstConIdx;
    }
}

void TDiagContainer::BeginDragStep() {
    FDragBefore = FUndoStack->Snapshot();
    FDragText = FResizeMode == kDragResize ? QStringLiteral("Resize") : QStringLiteral("Move");
}

void TDiagContainer::EndDragStep() {
    if (FDragBefore.isEmpty())
        return;
    const QByteArray before = std::exchange(FDragBefore, QByteArray());
    FUndoStack->PushStep(FDragText, before);
}

TDiagObject* TDiagContainer::SelectedBlock() const {
    TDiagObject* b = SelObj.data();
    if (!b || !b->FSelected || !ObjList || ObjList->IndexOf(b) < 0)
        return nullptr;
    return b;
}

bool TDiagContainer::IsSurfaceKey(int Key, Qt::KeyboardModifiers Modifiers) const {
    if (!FDesignMode || !IsCustomDrawnControl(FParent))
        return false;
    const Qt::KeyboardModifiers mods = Modifiers & ~Qt::KeypadModifier;
    if (mods == Qt::ControlModifier)
        return Key == Qt::Key_Z || Key == Qt::Key_Y;
    if (mods == (Qt::ControlModifier | Qt::ShiftModifier))
        return Key == Qt::Key_Z;
    switch (Key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        return mods == Qt::NoModifier || mods == Qt::ShiftModifier;
    case Qt::Key_Delete:
    case Qt::Key_Escape:
        return mods == Qt::NoModifier;
    default:
        return false;
    }
}

bool TDiagContainer::DiagKeyDown(int Key, Qt::KeyboardModifiers Modifiers) {
    if (!IsSurfaceKey(Key, Modifiers) || FResizeMode != kDragNone)
        return false;
    const Qt::KeyboardModifiers mods = Modifiers & ~Qt::KeypadModifier;
    if (mods & Qt::ControlModifier) {
        if (Key == Qt::Key_Z && !(mods & Qt::ShiftModifier))
            FUndoStack->undo();
        else
            FUndoStack->redo();
        return true;
    }
    const int step = (mods & Qt::ShiftModifier) ? 10 : 1;
    switch (Key) {
    case Qt::Key_Left:
        MoveSelectedBlockBy(-step, 0);
        return true;
    case Qt::Key_Right:
        MoveSelectedBlockBy(step, 0);
        return true;
    case Qt::Key_Up:
        MoveSelectedBlockBy(0, -step);
        return true;
    case Qt::Key_Down:
        MoveSelectedBlockBy(0, step);
        return true;
    case Qt::Key_Delete:
        DeleteSelection();
        return true;
    case Qt::Key_Escape:
        DeselectEverything();
        return true;
    default:
        return false;
    }
}

void TDiagContainer::MoveSelectedBlockBy(int DX, int DY) {
    TDiagObject* b = SelectedBlock();
    if (!b)
        return;
    const QByteArray before = FUndoStack->Snapshot();
    // The block's bounds event has the connection list reroute its wires.
    b->SetBounds(WrapAdd(b->x(), DX), WrapAdd(b->y(), DY), b->width(), b->height());
    FUndoStack->PushStep(QStringLiteral("Move"), before, kKeyMoveMergeId, b->FObjKey);
    if (FParent)
        FParent->update();
}

void TDiagContainer::DeleteSelection() {
    // A block that shows as selected goes first; a block clicked off again is not deleted.
    if (SelectedBlock())
        DelSelectedObject();
    else if (!SelInfo.IsZero())
        DeleteCurSegment();
}

void TDiagContainer::DeselectEverything() {
    SelObj = nullptr;
    SelInfo = LongRec{};
    if (ObjList)
        ObjList->DeselectAll(nullptr);
    if (ConList)
        ConList->DeselectAll(nullptr);
    if (FParent)
        FParent->update();
}

void TDiagContainer::UpdateSurfaceFocus() {
    if (!FParent)
        return;
    // The surface takes the keyboard focus when clicked in design mode, so that its keys
    // reach it; outside design mode the host's own focus policy is back.
    if (FDesignMode) {
        if (!FFocusPolicySaved) {
            FSavedFocusPolicy = FParent->focusPolicy();
            FFocusPolicySaved = true;
        }
        if (!(FParent->focusPolicy() & Qt::ClickFocus))
            FParent->setFocusPolicy(Qt::ClickFocus);
    } else if (FFocusPolicySaved) {
        FParent->setFocusPolicy(FSavedFocusPolicy);
        FFocusPolicySaved = false;
    }
}

} // namespace vde

#include "diag_container_undo.moc"
