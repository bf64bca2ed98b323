#include "velDiagEdit/blocks/diag_object_list.h"

#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"

#include <algorithm>

namespace vde {

TDiagObjectList::TDiagObjectList(QWidget* AParent) : FParent(AParent) {}

TDiagObjectList::~TDiagObjectList() {
    Clear();
}

TDiagObject* TDiagObjectList::Items(int Index) const {
    if (Index < 0 || Index >= Count())
        return nullptr;
    return FItems[size_t(Index)];
}

int TDiagObjectList::IndexOf(const TDiagObject* Obj) const {
    const auto it = std::find(FItems.begin(), FItems.end(), Obj);
    return it == FItems.end() ? -1 : int(it - FItems.begin());
}

TObjKey TDiagObjectList::UniqueKey(TObjKey wanted) const {
    auto taken = [&](TObjKey k) {
        return k == 0 || std::any_of(FItems.begin(), FItems.end(),
                                     [k](const TDiagObject* o) { return o && o->FObjKey == k; });
    };
    while (taken(wanted))
        ++wanted;
    return wanted;
}

void TDiagObjectList::Add(TDiagObject* Obj) {
    Obj->FObjKey = UniqueKey(Obj->FObjKey);
    FItems.push_back(Obj);
}

void TDiagObjectList::Remove(TDiagObject* Obj) {
    const auto it = std::find(FItems.begin(), FItems.end(), Obj);
    if (it != FItems.end())
        FItems.erase(it);
}

void TDiagObjectList::Move(int CurIndex, int NewIndex) {
    if (CurIndex < 0 || CurIndex >= Count() || NewIndex < 0 || NewIndex >= Count() ||
        CurIndex == NewIndex)
        return;
    TDiagObject* o = FItems[size_t(CurIndex)];
    FItems.erase(FItems.begin() + CurIndex);
    FItems.insert(FItems.begin() + NewIndex, o);
}

TDiagObject* TDiagObjectList::CreateObjByDiagType(TDiagObjectType ObjType, const TRect& R) {
    // The size may come from a stream: wrap as 32-bit arithmetic does instead of overflowing.
    const int32_t w = WrapSub(R.Right, R.Left);
    const int32_t h = WrapSub(R.Bottom, R.Top);
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

TDiagObject* TDiagObjectList::FindObjByKey(TObjKey Key) const {
    for (TDiagObject* o : FItems)
        if (o && o->FObjKey == Key)
            return o;
    return nullptr;
}

void TDiagObjectList::DeselectAll(TDiagObject* SkipObj) {
    for (TDiagObject* o : FItems)
        if (o && o != SkipObj)
            o->SetSelected(false);
}

void TDiagObjectList::DeleteObject(TDiagObject* Obj, bool DoFree) {
    if (IndexOf(Obj) < 0)
        return;
    if (FOnDeleteObject)
        FOnDeleteObject(Obj);
    Remove(Obj);
    if (DoFree) {
        Obj->FOwner = nullptr;
        delete Obj;
    } else {
        Obj->FOwner = nullptr;
    }
}

void TDiagObjectList::AssignObjEvents(const TNotifyEvent& ObjEvent) {
    if (!ObjEvent)
        return;
    const auto items = FItems;
    for (TDiagObject* o : items)
        ObjEvent(o);
}

void TDiagObjectList::Refresh() {
    for (TDiagObject* o : FItems)
        if (o)
            o->Invalidate();
}

void TDiagObjectList::Clear() {
    std::vector<TDiagObject*> items;
    items.swap(FItems);
    for (TDiagObject* o : items) {
        if (!o)
            continue;
        o->FOwner = nullptr;
        delete o;
    }
}

void TDiagObjectList::SaveToStream(TStream& Stream) const {
    Stream.WriteInt32(Count());
    for (const TDiagObject* o : FItems)
        o->SaveToStream(Stream);
}

void TDiagObjectList::LoadFromStream(TStream& Stream, const TNotifyEvent& OnCreateObjEvent,
                                     int Count) {
    Clear();
    if (Count == -1)
        Count = Stream.ReadCount("Block count", kMinBlockRecordSize);
    for (int i = 0; i < Count; ++i) {
        TDiagObject* o = TDiagObject::LoadFromStream(Stream, this);
        if (OnCreateObjEvent)
            OnCreateObjEvent(o);
    }
}

} // namespace vde
