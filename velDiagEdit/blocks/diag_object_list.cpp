#include "velDiagEdit/blocks/diag_object_list.h"

#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/record_codec.h"

#include <QLoggingCategory>
#include <algorithm>

namespace vde {

namespace {
Q_LOGGING_CATEGORY(lcBlockList, "veldiagedit.blocks")
} // namespace

TDiagObjectList::TDiagObjectList(QWidget* AParent) : FParent(AParent) {}

TDiagObjectList::~TDiagObjectList() {
    Clear();
}

TDiagObject* TDiagObjectList::Items(int Index) const {
    if (Index < 0 || Index >= Count())
        return nullptr;
    return FItems[size_t(Index)].get();
}

int TDiagObjectList::IndexOf(const TDiagObject* Obj) const {
    if (!Obj)
        return -1;
    const auto it =
        std::find_if(FItems.begin(), FItems.end(),
                     [Obj](const std::unique_ptr<TDiagObject>& o) { return o.get() == Obj; });
    return it == FItems.end() ? -1 : int(it - FItems.begin());
}

std::vector<TDiagObject*> TDiagObjectList::All() const {
    std::vector<TDiagObject*> all;
    all.reserve(FItems.size());
    for (const auto& o : FItems)
        all.push_back(o.get());
    return all;
}

// --- keys

TObjKey TDiagObjectList::NewKey() {
    if (FKeysDirty)
        RebuildKeyIndex();
    while (FNextKey == 0 || FKeys.count(FNextKey) != 0)
        ++FNextKey;
    return FNextKey++;
}

void TDiagObjectList::IndexKey(TDiagObject* Obj) {
    // An earlier holder of the same key keeps the entry, as FindObjByKey answers the first.
    if (!FKeys.emplace(Obj->FObjKey, Obj).second)
        FKeysShared = true;
}

void TDiagObjectList::UnindexKey(TDiagObject* Obj, TObjKey Key) {
    const auto it = FKeys.find(Key);
    if (it == FKeys.end() || it->second != Obj)
        return;
    FKeys.erase(it);
    // Another block may hold the same key; only a rebuild finds the first of them.
    if (FKeysShared)
        FKeysDirty = true;
}

void TDiagObjectList::RebuildKeyIndex() const {
    FKeys.clear();
    FKeys.reserve(FItems.size());
    FKeysShared = false;
    for (const auto& o : FItems)
        if (!FKeys.emplace(o->FObjKey, o.get()).second)
            FKeysShared = true;
    FKeysDirty = false;
}

void TDiagObjectList::KeyChanged(TDiagObject* Obj, TObjKey OldKey) {
    if (FKeysDirty)
        return;
    UnindexKey(Obj, OldKey);
    if (FKeysDirty)
        return;
    const auto it = FKeys.find(Obj->FObjKey);
    if (it == FKeys.end()) {
        FKeys.emplace(Obj->FObjKey, Obj);
        return;
    }
    // Two blocks now share the key: the index must name the earlier one.
    FKeysShared = true;
    if (IndexOf(Obj) < IndexOf(it->second))
        it->second = Obj;
}

TDiagObject* TDiagObjectList::FindObjByKey(TObjKey Key) const {
    if (FKeysDirty)
        RebuildKeyIndex();
    auto it = FKeys.find(Key);
    if (it != FKeys.end() && it->second->FObjKey != Key) {
        // The key was written past SetObjKey: the index is stale.
        RebuildKeyIndex();
        it = FKeys.find(Key);
    }
    return it == FKeys.end() ? nullptr : it->second;
}

// --- ownership

void TDiagObjectList::Adopt(TDiagObject* Obj) {
    Obj->FOwner = this;
    if (FKeysDirty)
        RebuildKeyIndex();
    if (Obj->FObjKey == 0 || FKeys.count(Obj->FObjKey) != 0)
        Obj->FObjKey = NewKey();
    FItems.emplace_back(Obj);
    IndexKey(Obj);
}

void TDiagObjectList::Forget(TDiagObject* Obj) {
    const int i = IndexOf(Obj);
    if (i < 0)
        return;
    UnindexKey(Obj, Obj->FObjKey);
    FItems[size_t(i)].release(); // the block is being destroyed by someone else
    FItems.erase(FItems.begin() + i);
    Obj->FOwner = nullptr;
}

void TDiagObjectList::Add(std::unique_ptr<TDiagObject> Obj) {
    if (!Obj || Obj->FOwner)
        return;
    Adopt(Obj.release());
}

std::unique_ptr<TDiagObject> TDiagObjectList::Remove(TDiagObject* Obj) {
    const int i = IndexOf(Obj);
    if (i < 0)
        return nullptr;
    UnindexKey(Obj, Obj->FObjKey);
    std::unique_ptr<TDiagObject> out = std::move(FItems[size_t(i)]);
    FItems.erase(FItems.begin() + i);
    out->FOwner = nullptr;
    return out;
}

void TDiagObjectList::Move(int CurIndex, int NewIndex) {
    if (CurIndex < 0 || CurIndex >= Count() || NewIndex < 0 || NewIndex >= Count() ||
        CurIndex == NewIndex)
        return;
    std::unique_ptr<TDiagObject> o = std::move(FItems[size_t(CurIndex)]);
    FItems.erase(FItems.begin() + CurIndex);
    FItems.insert(FItems.begin() + NewIndex, std::move(o));
    // Among blocks sharing a key the first in list order is the one found: the order changed.
    if (FKeysShared)
        FKeysDirty = true;
}

TDiagObject* TDiagObjectList::CreateObjByDiagType(TDiagObjectType ObjType, const TRect& R) {
    // The size may come from a stream: wrap as 32-bit arithmetic does instead of overflowing.
    const int32_t w = WrapSub(R.Right, R.Left);
    const int32_t h = WrapSub(R.Bottom, R.Top);
    // Each constructor hands the new block to this list, which owns it from then on.
    switch (ObjType) {
    case doText:
        return new TDiagText(this, R.Left, R.Top, w, h, QStringLiteral("Text"), 0, 0, true);
    case doAndLogic:
        return new TDiagAndLogic(this, R.Left, R.Top, w, h, 0, 15, true);
    case doOrLogic:
        return new TDiagOrLogic(this, R.Left, R.Top, w, h, 0, 15, true);
    case doRSTrigger:
        return new TDiagRSTrigger(this, R.Left, R.Top, w, h, 0.65, 0.5, true,
                                  QStringLiteral("R|S|T"));
    default:
        return nullptr;
    }
}

void TDiagObjectList::DeselectAll(TDiagObject* SkipObj) {
    for (const auto& o : FItems)
        if (o.get() != SkipObj)
            o->SetSelected(false);
}

std::unique_ptr<TDiagObject> TDiagObjectList::DeleteObject(TDiagObject* Obj, bool DoFree) {
    if (IndexOf(Obj) < 0)
        return nullptr;
    if (FOnDeleteObject)
        FOnDeleteObject(Obj);
    std::unique_ptr<TDiagObject> out = Remove(Obj);
    if (DoFree)
        out.reset();
    return out;
}

void TDiagObjectList::AssignObjEvents(const TNotifyEvent& ObjEvent) {
    if (!ObjEvent)
        return;
    const auto items = All();
    for (TDiagObject* o : items)
        ObjEvent(o);
}

void TDiagObjectList::Refresh() {
    for (const auto& o : FItems)
        o->Invalidate();
}

void TDiagObjectList::Clear() {
    std::deque<std::unique_ptr<TDiagObject>> items;
    items.swap(FItems);
    FKeys.clear();
    FKeysDirty = false;
    FKeysShared = false;
    FNextKey = 1;
    for (auto& o : items) {
        o->FOwner = nullptr;
        o.reset();
    }
}

void TDiagObjectList::SwapContents(TDiagObjectList& Other) {
    if (&Other == this)
        return;
    FItems.swap(Other.FItems);
    FKeys.swap(Other.FKeys);
    std::swap(FKeysDirty, Other.FKeysDirty);
    std::swap(FKeysShared, Other.FKeysShared);
    std::swap(FNextKey, Other.FNextKey);
    FWarnings.swap(Other.FWarnings);
    for (const auto& o : FItems)
        o->FOwner = this;
    for (const auto& o : Other.FItems)
        o->FOwner = &Other;
}

void TDiagObjectList::SaveToStream(TStream& Stream) const {
    Stream.WriteInt32(Count());
    for (const auto& o : FItems)
        o->SaveToStream(Stream);
}

void TDiagObjectList::LoadFromStream(TStream& Stream, const TNotifyEvent& OnCreateObjEvent,
                                     int Count) {
    Clear();
    FWarnings.clear();
    if (Count == -1)
        Count = Stream.ReadCount("Block count", kBlockRecordMinSize);
    // A count the caller passes is not checked against the stream; room is made only for the
    // blocks that the remaining bytes could hold.
    const int64_t room = std::min<int64_t>(Count, Stream.Remaining() / kBlockRecordMinSize);
    if (room > 0)
        FKeys.reserve(size_t(room));
    int shared = 0;
    TObjKey firstKey = 0;
    int firstIndex = 0, firstHolder = 0;
    for (int i = 0; i < Count; ++i) {
        TDiagObject* o = TDiagObject::LoadFromStream(Stream, this);
        const TDiagObject* holder = FindObjByKey(o->GetObjKey());
        if (holder != o && shared++ == 0) {
            firstKey = o->GetObjKey();
            firstIndex = i;
            firstHolder = IndexOf(holder);
        }
        if (OnCreateObjEvent)
            OnCreateObjEvent(o);
    }
    if (shared > 0) {
        // One line per load, however many blocks share keys.
        FWarnings << QStringLiteral("%1 blocks hold a key that an earlier block holds (the "
                                    "first, block %2, shares key %3 with block %4); look-ups "
                                    "by key find the earlier block")
                         .arg(shared)
                         .arg(firstIndex)
                         .arg(firstKey)
                         .arg(firstHolder);
        qCWarning(lcBlockList).noquote() << FWarnings.front();
    }
}

} // namespace vde
