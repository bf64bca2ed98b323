#pragma once
// Owns a diagram's blocks: creates them by kind, finds them by key, deletes them (telling its
// owner first) and reads and writes them as one stream record.

#include "velDiagEdit/blocks/diag_object.h"

#include <QPointer>
#include <vector>

namespace vde {

class TDiagObjectList {
public:
    explicit TDiagObjectList(QWidget* AParent);
    ~TDiagObjectList();
    TDiagObjectList(const TDiagObjectList&) = delete;
    TDiagObjectList& operator=(const TDiagObjectList&) = delete;

    QWidget* GetParent() const { return FParent; }
    // The parent's canvas, handed to new blocks as their ParentCanvas (may be null).
    TCanvas* GetParentCanvas() const { return FParentCanvas; }
    void SetParentCanvas(TCanvas* c) { FParentCanvas = c; }

    int Count() const { return int(FItems.size()); }
    TDiagObject* Items(int Index) const;
    TDiagObject* operator[](int Index) const { return Items(Index); }
    int IndexOf(const TDiagObject* Obj) const;
    const std::vector<TDiagObject*>& All() const { return FItems; }

    // Appends the block and gives it a key unique among the list's blocks (its address's low
    // 32 bits, or the next free value when that is taken).
    void Add(TDiagObject* Obj);
    // Takes the block out of the list without freeing it or raising any event.
    void Remove(TDiagObject* Obj);
    // Moves the block at CurIndex to NewIndex, the blocks between closing up; keys, events and
    // the blocks themselves are untouched. An index out of range does nothing.
    void Move(int CurIndex, int NewIndex);

    TDiagObject* CreateObjByDiagType(TDiagObjectType ObjType, const TRect& R);
    TDiagObject* FindObjByKey(TObjKey Key) const;
    void DeselectAll(TDiagObject* SkipObj);
    void DeleteObject(TDiagObject* Obj, bool DoFree);
    void AssignObjEvents(const TNotifyEvent& ObjEvent);
    void Refresh();
    void Clear();

    void SaveToStream(TStream& Stream) const;
    // Count -1 reads the count from the stream. Errors are typed (EReadError, EFormatError)
    // and name the byte offset; the blocks read before the error stay in the list.
    void LoadFromStream(TStream& Stream, const TNotifyEvent& OnCreateObjEvent, int Count = -1);

    TNotifyEvent GetOnDeleteObject() const { return FOnDeleteObject; }
    void SetOnDeleteObject(TNotifyEvent e) { FOnDeleteObject = std::move(e); }

    QPointer<QWidget> FParent;
    TNotifyEvent FOnDeleteObject;

private:
    TObjKey UniqueKey(TObjKey wanted) const;
    std::vector<TDiagObject*> FItems;
    TCanvas* FParentCanvas = nullptr;
};

// Smallest record of one block: kind, bounds, delta width, three counts and the key.
constexpr int kMinBlockRecordSize = 1 + 16 + 4 + 4 + 4 + 4 + 4;

} // namespace vde
