#pragma once
// Owns a diagram's connections and the canvas they are drawn on; addresses a connection by its
// index and a segment by a LongRec (Hi = connection + 1, Lo = segment + 1), fans block events
// out to the connections and reads and writes them all as one stream block.

#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <memory>
#include <vector>

class QPaintDevice;

namespace vde {

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
    int Count() const { return int(FItems.size()); }
    // Raises EListError for an index out of range.
    TDiagConnection* Items(int Index) const;
    int IndexOf(const TDiagConnection* Con) const;
    void Add(TDiagConnection* Con);
    void Remove(TDiagConnection* Con);
    virtual void Clear();

    void Paint();
    void Refresh();

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
    // n -1 reads the count; a count <= 0 reads nothing. A count larger than the remaining
    // bytes could hold is an EFormatError at once; other errors leave the connections read so
    // far in the list.
    void LoadFromStream(TStream& Stream,
                        const std::function<void(TDiagConnection*)>& OnCreateConEvent, int n = -1);

    bool FreeCanvas = false;
    TCanvas* FCanvas = nullptr;

private:
    // The connection LR names, after the range checks every segment command makes
    // (a zero Hi with a non-zero Lo fails as a bad list index).
    TDiagConnection* Addressed(LongRec LR) const;
    std::vector<TDiagConnection*> FItems;
};

} // namespace vde
