#pragma once
// Owns a diagram's blocks: creates them by kind, finds them by key, deletes them (telling its
// owner first) and reads and writes them as one stream record.

#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QPointer>
#include <QStringList>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

namespace vde {

// Ownership: the list owns its blocks (each one a unique_ptr in the list). A block is also a
// child widget of the parent, for display only: if the parent widget is destroyed before the
// list, Qt deletes the blocks with it and each block takes itself out of the list as it goes, so
// the list is then empty and frees nothing twice. A block handed out by Remove or by
// DeleteObject(..., false) belongs to the caller; plain pointers returned by the other operations
// (Items, CreateObjByDiagType, FindObjByKey) are references to blocks the list still owns.
class VELDIAGEDIT_EXPORT TDiagObjectList {
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
    // The blocks in list order (references; the list keeps them).
    std::vector<TDiagObject*> All() const;

    // Takes ownership of a block that has no list and appends it; a key that another block of
    // the list holds (or 0) is replaced by a new one.
    void Add(std::unique_ptr<TDiagObject> Obj);
    // Takes the block out of the list without freeing it or raising any event, and hands it to
    // the caller; null when the block is not in the list.
    [[nodiscard]] std::unique_ptr<TDiagObject> Remove(TDiagObject* Obj);
    // Moves the block at CurIndex to NewIndex, the blocks between closing up; keys, events and
    // the blocks themselves are untouched. An index out of range does nothing.
    void Move(int CurIndex, int NewIndex);

    TDiagObject* CreateObjByDiagType(TDiagObjectType ObjType, const TRect& R);
    // From a hash of the keys: the first block in list order with the key.
    TDiagObject* FindObjByKey(TObjKey Key) const;
    void DeselectAll(TDiagObject* SkipObj);
    // DoFree true frees the block; false hands it to the caller through the result (null
    // otherwise, and when the block is not in the list).
    std::unique_ptr<TDiagObject> DeleteObject(TDiagObject* Obj, bool DoFree);
    void AssignObjEvents(const TNotifyEvent& ObjEvent);
    void Refresh();
    void Clear();
    // Exchanges the blocks (and their keys) of the two lists; each list keeps its own parent,
    // canvas and events. A whole-diagram load reads into a scratch list and swaps, so that a
    // host's pointer to this list stays valid.
    void SwapContents(TDiagObjectList& Other);

    void SaveToStream(TStream& Stream) const;
    // Count -1 reads the count from the stream. Errors are typed (EReadError, EFormatError)
    // and name the byte offset. The blocks read before the error stay in the list. Blocks that
    // share a key all load (FindObjByKey finds the earliest); a load that met any says so once,
    // in Warnings() and in the log category veldiagedit.blocks.
    void LoadFromStream(TStream& Stream, const TNotifyEvent& OnCreateObjEvent, int Count = -1);
    // What the last load found worth telling (empty when nothing).
    const QStringList& Warnings() const { return FWarnings; }

    TNotifyEvent GetOnDeleteObject() const { return FOnDeleteObject; }
    void SetOnDeleteObject(TNotifyEvent e) { FOnDeleteObject = std::move(e); }

    QPointer<QWidget> FParent;
    TNotifyEvent FOnDeleteObject;

private:
    friend class TDiagObject;
    // A new block's constructor hands itself over; its destructor takes itself out.
    void Adopt(TDiagObject* Obj);
    void Forget(TDiagObject* Obj);
    // SetObjKey tells the list, which keeps its key index current.
    void KeyChanged(TDiagObject* Obj, TObjKey OldKey);
    // New keys count up from 1, skipping keys in use: the same diagram built the same way
    // gets the same keys.
    TObjKey NewKey();
    void IndexKey(TDiagObject* Obj);
    void UnindexKey(TDiagObject* Obj, TObjKey Key);
    void RebuildKeyIndex() const;

    // A deque: when the parent widget goes first, Qt deletes the blocks from the front, and each
    // leaves the list in constant time.
    std::deque<std::unique_ptr<TDiagObject>> FItems;
    TCanvas* FParentCanvas = nullptr;
    // Key -> the first block in list order that holds it. Rebuilt when a key shared by two
    // blocks (possible only through SetObjKey) loses its first holder, or when a block's key
    // was written past SetObjKey.
    mutable std::unordered_map<TObjKey, TDiagObject*> FKeys;
    mutable bool FKeysDirty = false;
    mutable bool FKeysShared = false;
    TObjKey FNextKey = 1;
    QStringList FWarnings;
};

} // namespace vde
