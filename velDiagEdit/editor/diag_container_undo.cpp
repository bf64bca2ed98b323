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

#include <QAccessible>
#include <QEvent>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QtEndian>
#include <algorithm>
#include <cstring>
#include <unordered_map>

// The undo stack's category: what goes wrong while recording or replaying a step.
Q_LOGGING_CATEGORY(lcDragUndo, "veldiagedit.undo")

namespace vde {

namespace {

// The bytes a writer puts in a memory stream, and a stream over bytes.
template <class TWrite> QByteArray Written(TWrite&& Write) {
    TMemoryStream t;
    Write(t);
    const auto& b = t.Bytes();
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

TMemoryStream StreamOf(const QByteArray& Bytes) {
    return TMemoryStream(std::vector<uint8_t>(Bytes.begin(), Bytes.end()));
}

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
    return Written([this](TMemoryStream& t) { SaveToStream(t); });
}

void TDiagContainer::RestoreSnapshot(const QByteArray& Bytes) {
    // The blocks are about to be replaced: a drag under way has nothing left to act on.
    if (FResizeMode != kDragNone) {
        FResizeMode = kDragNone;
        InputState().SetScreenCursor(crDefault);
    }
    FDragBefore.reset();
    TMemoryStream s = StreamOf(Bytes);
    if (ObjList && ConList && RestoreChangedBlocks(s) && SaveSnapshot() == Bytes)
        return;
    // Loading the whole stream is always exact; it is only slower on a large diagram.
    ++FFullRestores;
    s.SetPosition(0);
    LoadFromStream(s);
    RestoreLooseEnds(s);
}

int TDiagContainer::FullRestoreCount() const {
    return FFullRestores;
}

namespace {

// The block's record as the block list writes it.
QByteArray BlockRecord(const TDiagObject* Obj) {
    return Written([Obj](TMemoryStream& t) { Obj->SaveToStream(t); });
}

bool BytesAt(const TMemoryStream& S, int64_t At, const QByteArray& Expected) {
    const auto& b = S.Bytes();
    return At >= 0 && At + Expected.size() <= int64_t(b.size()) &&
           std::memcmp(b.data() + At, Expected.constData(), size_t(Expected.size())) == 0;
}

} // namespace

bool TDiagContainer::RestoreChangedBlocks(TMemoryStream& S) {
    // A step usually changes one block or a few, or none at all; re-creating all the others
    // would cost far more than the change. The blocks whose records are unchanged at the head
    // and at the tail of the list stay; only those between are replaced by the stored ones.
    // The wires, the control bounds and the selection are read as a load reads them.
    S.SetPosition(0);
    if (S.Remaining() < 8 || S.ReadUInt32() != kContainerSignature)
        return false;
    const int32_t n = S.ReadInt32();
    const int cn = ObjList->Count();
    if (n < 0)
        return false;
    std::vector<QByteArray> current(static_cast<size_t>(cn));
    auto record = [&](int i) -> const QByteArray& {
        QByteArray& r = current[size_t(i)];
        if (r.isEmpty())
            r = BlockRecord(ObjList->Items(i));
        return r;
    };
    // Unchanged head.
    int p = 0;
    while (p < cn && p < n && BytesAt(S, S.Position(), record(p))) {
        S.Seek(record(p).size(), soCurrent);
        ++p;
    }
    // Read the stored blocks after the head one by one, until the current blocks left after the
    // old ones they replace match the rest of the stored blocks byte for byte. Reading all the
    // rest always ends it (nothing is left to match); after a few tries that is done at once.
    const int d = n - cn;
    // The stored blocks are read into a list of their own: their keys are those of the blocks
    // they replace, which are still in the diagram's list until the swap.
    TDiagObjectList scratch(ObjList->GetParent());
    scratch.SetParentCanvas(ObjList->GetParentCanvas());
    std::vector<TDiagObject*> fresh;
    auto dropFresh = [&] {
        for (TDiagObject* o : fresh)
            delete o;
        fresh.clear();
    };
    constexpr int kTries = 8;
    int64_t tailAt = 0;
    try {
        for (int k = std::max(0, d); p + k <= n; ++k) {
            while (int(fresh.size()) < k)
                fresh.push_back(TDiagObject::LoadFromStream(S, &scratch));
            if (k - d < 0 || p + k - d > cn)
                continue;
            if (k >= kTries && p + k < n)
                continue; // straight on to reading all the rest
            int64_t at = S.Position();
            bool same = true;
            for (int i = p + k - d; i < cn && same; ++i) {
                same = BytesAt(S, at, record(i));
                at += record(i).size();
            }
            if (same) {
                tailAt = at;
                break;
            }
            if (p + k == n)
                return dropFresh(), false;
        }
    } catch (...) {
        dropFresh();
        throw;
    }
    const int k = int(fresh.size());
    if (tailAt == 0)
        return dropFresh(), false;
    // Swap the old middle for the fresh blocks: appended to the list, then moved into place.
    for (int i = 0; i < k - d; ++i)
        delete ObjList->Items(p);
    for (int j = 0; j < k; ++j) {
        // The list gives a block whose key another block holds a new one; a restored block
        // keeps the key it was stored with, shared or not.
        const TObjKey key = fresh[size_t(j)]->GetObjKey();
        ObjList->Add(scratch.Remove(fresh[size_t(j)]));
        fresh[size_t(j)]->SetObjKey(key);
        ObjList->Move(ObjList->IndexOf(fresh[size_t(j)]), p + j);
        AssignObjEvents(fresh[size_t(j)]);
    }
    // A load gives blocks no selection of their own: only the stored selected block has one.
    for (TDiagObject* o : ObjList->All()) {
        o->SetSelected(false);
        if (o->GetSelMarkerIndex() != 0)
            o->SetSelMarkerIndex(0);
    }
    // Wires, attached to blocks by key as a load does. An end whose key names no block keeps
    // its marker number, as the stored bytes have it.
    S.SetPosition(tailAt);
    const int32_t m = S.ReadInt32();
    std::unordered_map<TObjKey, TDiagObject*> byKey;
    byKey.reserve(size_t(ObjList->Count()));
    for (TDiagObject* o : ObjList->All())
        byKey.emplace(o->GetObjKey(), o); // the first block with a key wins, as in a search
    auto find = [&](TObjKey key) -> TDiagObject* {
        const auto it = byKey.find(key);
        return it == byKey.end() ? nullptr : it->second;
    };
    ConList->LoadFromStream(
        S,
        [&](TDiagConnection* c) {
            if (TDiagObject* src = find(c->GetSrcKey()))
                c->SetSrcObject(src);
            if (TDiagObject* dst = find(c->GetDstKey()))
                c->SetDstObject(dst);
        },
        m);
    CntList->LoadFromStream(S);
    LoadInfoFromStream(S);
    AssignPaintEvent();
    if (FParent)
        FParent->update();
    return true;
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

namespace {

QByteArray WireRecord(const TDiagConnection* Con) {
    return Written([Con](TMemoryStream& t) { Con->SaveToStream(t); });
}

} // namespace

// A drag's step: the dragged block's record, its wires' records and the selection, before and
// after. Undo and redo give back the same bytes a whole-stream step would.
class TDragStep : public TDiagDeltaStep {
public:
    TDragStep(TDiagUndoStack* Stack, const QString& Text, TDiagContainer* Container,
              TDiagContainer::TDragState Before, TDiagContainer::TDragState After)
        : TDiagDeltaStep(Stack, Text), FContainer(Container), FBeforeState(std::move(Before)),
          FAfterState(std::move(After)) {}

    void Apply(bool After) override {
        FContainer->ApplyDragState(After ? FAfterState : FBeforeState);
    }
    void TakeAfter() override {
        std::vector<int> wires;
        for (const auto& w : FAfterState.Wires)
            wires.push_back(w.first);
        if (FContainer->FitsDragState(FAfterState.Block, wires))
            FAfterState = FContainer->ReadDragState(FAfterState.Block, wires);
    }
    int64_t Size() const override { return Bytes(FBeforeState) + Bytes(FAfterState); }
    TDiagDeltaStep* Clone() const override {
        return new TDragStep(FStack, text(), FContainer, FBeforeState, FAfterState);
    }

private:
    static int64_t Bytes(const TDiagContainer::TDragState& S) {
        int64_t n = S.Record.size() + S.Info.size();
        for (const auto& w : S.Wires)
            n += w.second.size();
        return n + int64_t(S.Selected.size() * sizeof(S.Selected[0]));
    }
    TDiagContainer* FContainer;
    TDiagContainer::TDragState FBeforeState;
    TDiagContainer::TDragState FAfterState;
};

QByteArray TDiagContainer::InfoBytes() {
    return Written([this](TMemoryStream& t) { SaveInfoToStream(t); });
}

bool TDiagContainer::FitsDragState(int Block, const std::vector<int>& Wires) const {
    if (!ObjList || !ConList || Block < 0 || Block >= ObjList->Count())
        return false;
    return std::all_of(Wires.begin(), Wires.end(),
                       [this](int w) { return w >= 0 && w < ConList->Count(); });
}

TDiagContainer::TDragState TDiagContainer::ReadDragState(int Block, const std::vector<int>& Wires) {
    TDragState s;
    s.Block = Block;
    s.Record = BlockRecord(ObjList->Items(Block));
    for (int w : Wires)
        s.Wires.emplace_back(w, WireRecord(ConList->Items(w)));
    s.Info = InfoBytes();
    s.Selected = ConList->SelectedSegments();
    return s;
}

void TDiagContainer::ApplyDragState(const TDragState& S) {
    if (!ObjList || !ConList)
        return;
    // The stack replays its steps in order, so the diagram is as the step left it; a host that
    // changed it behind the stack's back gets a warning and no change rather than a wrong one.
    std::vector<int> indexes;
    for (const auto& w : S.Wires)
        indexes.push_back(w.first);
    bool fits = FitsDragState(S.Block, indexes);
    TDiagObjectList scratch(ObjList->GetParent());
    scratch.SetParentCanvas(ObjList->GetParentCanvas());
    TDiagObject* stored = nullptr;
    if (fits) {
        TMemoryStream rs = StreamOf(S.Record);
        stored = TDiagObject::LoadFromStream(rs, &scratch);
        fits = stored->GetObjKey() == ObjList->Items(S.Block)->GetObjKey();
    }
    if (!fits) {
        qCWarning(lcDragUndo) << "The diagram was changed outside its undo stack; step skipped";
        return;
    }
    TDiagObject* b = ObjList->Items(S.Block);
    // Its bounds event reroutes its wires; their stored paths are put back just after.
    b->SetBounds(stored->x(), stored->y(), stored->width(), stored->height());
    // A resize scales the markers and moves the labels with rounding that scaling back does not
    // undo: they come from the record.
    if (b->FLabels != stored->FLabels || b->FInputs != stored->FInputs ||
        b->FOutputs != stored->FOutputs) {
        b->FLabels = stored->FLabels;
        b->FInputs = stored->FInputs;
        b->FOutputs = stored->FOutputs;
        b->update();
    }
    delete stored;
    if (InfoBytes() != S.Info) {
        // As a load leaves it: nothing selected but what the stored selection names.
        ObjList->DeselectAll(nullptr);
        ConList->DeselectAll(nullptr);
        TMemoryStream is = StreamOf(S.Info);
        LoadInfoFromStream(is);
    }
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    for (const auto& [i, rec] : S.Wires) {
        TMemoryStream ws = StreamOf(rec);
        const TDiagConnection* w = TDiagConnection::LoadFromStream(ws, &wires);
        TDiagConnection* c = ConList->Items(i);
        c->FSrcKey = w->FSrcKey;
        c->FDstKey = w->FDstKey;
        c->FSrcCrossInfo = w->FSrcCrossInfo;
        c->FDstCrossInfo = w->FDstCrossInfo;
        c->FPoints = w->FPoints;
        c->FSrcConIdx = w->FSrcConIdx;
        c->FDstConIdx = w->FDstConIdx;
        c->FSelectedIndex = w->FSelectedIndex;
        ConList->PathChanged(c);
    }
    // The selected segments last: restoring the selection above clears them all.
    for (int i = 0; i < ConList->Count(); ++i)
        ConList->Items(i)->FSelectedIndex = -1;
    for (const auto& [i, seg] : S.Selected)
        if (i < ConList->Count())
            ConList->Items(i)->FSelectedIndex = seg;
    if (BlockRecord(b) != S.Record) {
        // The record differs in more than bounds, labels and markers: the whole diagram with the
        // stored record in its place, which the restore makes exact.
        RestoreSnapshot(Written([&](TMemoryStream& out) {
            const uint32_t signature = qToLittleEndian(kContainerSignature);
            out.WriteBuffer(&signature, 4);
            out.WriteInt32(ObjList->Count());
            for (int k = 0; k < ObjList->Count(); ++k) {
                const QByteArray r = k == S.Block ? S.Record : BlockRecord(ObjList->Items(k));
                out.WriteBuffer(r.constData(), r.size());
            }
            ConList->SaveToStream(out);
            CntList->SaveToStream(out);
            out.WriteBuffer(S.Info.constData(), S.Info.size());
        }));
        return;
    }
    if (FParent)
        FParent->update();
}

void TDiagContainer::BeginDragStep(TDiagObject* Block) {
    FDragBefore.reset();
    FDragText = FResizeMode == kDragResize ? tr("Resize") : tr("Move");
    const int i = ObjList ? ObjList->IndexOf(Block) : -1;
    if (i < 0 || !ConList)
        return;
    std::vector<int> wires;
    for (TDiagConnection* c : ConList->ConnectionsAt(Block))
        wires.push_back(ConList->IndexOfLive(c));
    try {
        FDragBefore = std::make_unique<TDragState>(ReadDragState(i, wires));
    } catch (const std::exception& e) {
        qCWarning(lcDragUndo) << "No undo step for the drag:" << e.what();
    }
}

void TDiagContainer::EndDragStep() {
    if (!FDragBefore)
        return;
    const std::unique_ptr<TDragState> before = std::move(FDragBefore);
    std::vector<int> wires;
    for (const auto& w : before->Wires)
        wires.push_back(w.first);
    if (!FitsDragState(before->Block, wires))
        return;
    try {
        TDragState after = ReadDragState(before->Block, wires);
        if (after == *before)
            return;
        FUndoStack->PushDelta(
            new TDragStep(FUndoStack.get(), FDragText, this, *before, std::move(after)));
    } catch (const std::exception& e) {
        qCWarning(lcDragUndo) << "No undo step for the drag:" << e.what();
    }
}

TDiagObject* TDiagContainer::SelectedBlock() const {
    TDiagObject* b = SelObj.data();
    if (!b || !b->FSelected || !ObjList || ObjList->IndexOf(b) < 0)
        return nullptr;
    return b;
}

bool TDiagContainer::IsSurfaceKey(int Key, Qt::KeyboardModifiers Modifiers) const {
    if (IsDirectKey(Key, Modifiers))
        return true;
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
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return FTabSelectsBlocks && (mods == Qt::NoModifier || mods == Qt::ShiftModifier);
    default:
        return false;
    }
}

bool TDiagContainer::DiagKeyDown(int Key, Qt::KeyboardModifiers Modifiers) {
    if (!IsSurfaceKey(Key, Modifiers))
        return false;
    if (DirectKeyDown(Key, Modifiers)) {
        NoteSelection();
        return true;
    }
    if (FResizeMode != kDragNone)
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
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        SelectBlockInReadingOrder(Key == Qt::Key_Backtab || (mods & Qt::ShiftModifier) ? -1 : 1);
        return true;
    default:
        return false;
    }
}

std::vector<TDiagObject*> TDiagContainer::BlocksInReadingOrder() const {
    std::vector<std::pair<int, TDiagObject*>> listed;
    const int n = ObjList ? ObjList->Count() : 0;
    listed.reserve(size_t(n));
    for (int i = 0; i < n; ++i)
        listed.emplace_back(i, ObjList->Items(i));
    std::sort(listed.begin(), listed.end(), [](const auto& a, const auto& b) {
        const QRect ga = a.second->geometry(), gb = b.second->geometry();
        if (ga.top() != gb.top())
            return ga.top() < gb.top();
        if (ga.left() != gb.left())
            return ga.left() < gb.left();
        return a.first < b.first;
    });
    std::vector<TDiagObject*> out;
    out.reserve(listed.size());
    for (const auto& [i, b] : listed)
        out.push_back(b);
    return out;
}

// Like a click on the block: it alone is selected and is the block the commands act on. The
// selection is not a step of its own, as a click's is not.
void TDiagContainer::SelectBlockInReadingOrder(int Step) {
    const std::vector<TDiagObject*> order = BlocksInReadingOrder();
    if (order.empty())
        return;
    const int n = int(order.size());
    const auto at = std::find(order.begin(), order.end(), SelectedBlock());
    int next = at == order.end() ? (Step > 0 ? 0 : n - 1) : int(at - order.begin()) + Step;
    next = (next % n + n) % n;
    TDiagObject* block = order[size_t(next)];
    SelObj = block;
    block->SetSelected(true);
    ObjList->DeselectAll(block);
    if (FParent)
        FParent->update();
    if (QAccessible::isActive()) {
        QAccessibleEvent focus(static_cast<QObject*>(block), QAccessible::Focus);
        QAccessible::updateAccessibility(&focus);
        QAccessibleEvent selection(static_cast<QObject*>(block), QAccessible::Selection);
        QAccessible::updateAccessibility(&selection);
    }
}

void TDiagContainer::MoveSelectedBlockBy(int DX, int DY) {
    TDiagObject* b = SelectedBlock();
    if (!b)
        return;
    const QByteArray before = FUndoStack->Snapshot();
    // The block's bounds event has the connection list reroute its wires.
    b->SetBounds(WrapAdd(b->x(), DX), WrapAdd(b->y(), DY), b->width(), b->height());
    FUndoStack->PushStep(tr("Move"), before, kKeyMoveMergeId, b->FObjKey);
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
    NoteSelection();
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
