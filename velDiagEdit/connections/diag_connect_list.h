#pragma once
// Owns a diagram's connections and the canvas they are drawn on; addresses a connection by its
// index and a segment by a LongRec (Hi = connection + 1, Lo = segment + 1), fans block events
// out to the connections and reads and writes them all as one stream block.

#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QPaintDevice;

namespace vde {

// Ownership: the list owns its connections (each one a unique_ptr in the list); a connection's
// constructor hands it to the list, and a connection deleted by anyone else takes itself out of
// the list first. Remove hands a connection (and its ownership) to the caller. Plain pointers
// returned by Items are references to connections the list still owns. The canvas is owned
// only when the list made it (the device constructor); a canvas passed in belongs to the caller
// and must outlive the list.
class VELDIAGEDIT_EXPORT TDiagConnectList {
public:
    // Draws on ACanvas (not owned).
    explicit TDiagConnectList(TCanvas* ACanvas);
    // Draws on a canvas of its own over the device (a widget, which is then drawn on during
    // its paint and asked to repaint otherwise; an image; an SVG generator; a printer).
    explicit TDiagConnectList(QPaintDevice* DC);
    virtual ~TDiagConnectList();
    TDiagConnectList(const TDiagConnectList&) = delete;
    TDiagConnectList& operator=(const TDiagConnectList&) = delete;

    TCanvas* GetCanvas() const { return FCanvas; }
    // Whether the list made its canvas and frees it.
    bool GetFreeCanvas() const { return FOwnCanvas != nullptr; }
    int Count() const { return int(FItems.size()); }
    // Raises EListError for an index out of range.
    TDiagConnection* Items(int Index) const;
    int IndexOf(const TDiagConnection* Con) const;
    // The same in constant time, for a connection known to be alive (in this list or another).
    int IndexOfLive(const TDiagConnection* Con) const;
    // Takes ownership of a connection that has no list and appends it (an EListError past
    // kMaxConnections, and the connection is freed).
    void Add(std::unique_ptr<TDiagConnection> Con);
    // Takes the connection out of the list and hands it to the caller; null when it is not in
    // the list.
    [[nodiscard]] std::unique_ptr<TDiagConnection> Remove(TDiagConnection* Con);
    virtual void Clear();

    void Paint();
    void Refresh();

    // Colours of wires by something outside the list (a live view of a simulation): given the
    // wire's index, the function says its colour, or false for the wire's own. Segments that
    // are not selected are drawn in it, and the junction dot. None by default.
    using TWireColorFunc = std::function<bool(int Index, TColor& Color)>;
    void SetWireColors(TWireColorFunc Func);
    bool HasWireColors() const { return bool(FWireColors); }
    bool WireColor(const TDiagConnection* Con, TColor& Color) const;

    // Tells the index that a connection's path, pen or end blocks were written directly.
    void PathChanged(TDiagConnection* Con);
    // The same for every connection.
    void Reindex();
    // The connections whose path, grown by Margin pixels, may meet R (a superset of those that
    // do), in list order.
    std::vector<TDiagConnection*> ConnectionsNear(const TRect& R, int Margin) const;
    // Every connection with a selected segment: (list index, segment), in list order.
    std::vector<std::pair<int, int32_t>> SelectedSegments() const;
    // The connections that start or end at the block, in list order.
    std::vector<TDiagConnection*> ConnectionsAt(const QObject* Block) const;

    void UpdatePath(QObject* diag);
    void ShiftByDelta(QObject* diag, TPoint Delta);
    void UpdateBeforeDelete(QObject* diag);

    int AddConnection(TDiagObject* DiagObj, int MarkerIndex, int Size);
    int ConnectIndex(TDiagObject* DiagObj, int MarkerIndex) const;
    LongRec FindBestSegment(TPoint P, const TDiagConnection* SkipCon, bool UseLimit,
                            int ContainType) const;
    int LookForBestSegment(int Index, LongRec& LR);
    // Leaves Result alone for LR 0 or out of range; all -1 when the connection rejects the
    // segment index.
    void GetSegmentRect(LongRec LR, TRect& Result) const;

    void SelectSegmentByLongRec(LongRec LR);
    void DeselectAll(const TDiagConnection* SkipCon);
    void DeleteSegmentByLongRec(LongRec& LR);
    void AlignSegmentWithDiagObject(LongRec LR, TDiagObject* DiagObj);
    void EditSegmentOfConnection(LongRec LR, int& Size, int& Angle, bool DoRead);
    int AddSegmentToConnection(int ConIndex, int Size, int Angle);
    void EndConnectionByLongRec(LongRec LR, TDiagObject* DiagObj, const LongRec* PDest);

    void UpdateEndConnections(LongRec LR);
    void AdjustEndConnections(int Index);

    void SaveToStream(TStream& Stream) const;
    // n -1 reads the count; a count <= 0 reads nothing. A count above kMaxConnections is an
    // EFormatError at once. A count larger than the rest of the stream is not an error by
    // itself (nothing is allocated from it): when the stream runs out, the read error leaves
    // the connections read so far in the list.
    void LoadFromStream(TStream& Stream,
                        const std::function<void(TDiagConnection*)>& OnCreateConEvent, int n = -1);

private:
    friend class TDiagConnection;
    struct TIndex;
    void MarkDirty(TDiagConnection* Con);
    // Files the connections marked since the last query; positions after a removal.
    void Flush() const;
    void Unfile(TDiagConnection* Con) const;
    void Drop(TDiagConnection* Con);
    // Every connection filed where the inclusive box L..R, T..B may reach, in list order.
    std::vector<TDiagConnection*> NearBox(int64_t L, int64_t T, int64_t R, int64_t B) const;
    void File(TDiagConnection* Con) const;
    // A new connection's constructor hands itself over; its destructor takes itself out.
    void Adopt(TDiagConnection* Con);
    void Forget(TDiagConnection* Con);

    std::unique_ptr<TCanvas> FOwnCanvas;
    TCanvas* FCanvas = nullptr; // FOwnCanvas, or the caller's
    // The connection LR names, after the range checks every segment command makes
    // (a zero Hi with a non-zero Lo fails as a bad list index).
    TDiagConnection* Addressed(LongRec LR) const;
    std::vector<std::unique_ptr<TDiagConnection>> FItems;
    std::unique_ptr<TIndex> FIndex;
    TWireColorFunc FWireColors;
};

} // namespace vde
