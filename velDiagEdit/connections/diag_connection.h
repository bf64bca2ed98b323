#pragma once
// A wire: a chain of horizontal and vertical segments from a block marker to another block's
// marker or onto a segment of another wire (a junction). Automatic connections are routed by
// MakePath; hand-drawn ones are built segment by segment and only re-anchored.

#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/platform/record_codec.h"
#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QPointer>

namespace vde {

class TDiagConnectList;

class VELDIAGEDIT_EXPORT TDiagConnection {
public:
    // Appends the new connection to AOwner, which owns it from then on; an EListError when
    // AOwner already holds as many connections as a segment address can name.
    explicit TDiagConnection(TDiagConnectList* AOwner);
    // A connection deleted by anyone but its list takes itself out of the list first.
    virtual ~TDiagConnection();
    TDiagConnection(const TDiagConnection&) = delete;
    TDiagConnection& operator=(const TDiagConnection&) = delete;

    // --- routing and building
    void MakePath();
    int AddSegment(int Size, int Angle);
    TPoint NextPoint(int Size, int Angle) const;
    int GetLastDirection() const;
    void AdjustPath(bool Flag);
    void ReversePoints();

    // --- hit testing
    bool GetSegmentRect(int Index, TRect& R, int Tol) const;
    bool PointInSegmentRect(int Index, TPoint P, int Tol) const;
    int FindNearestSegment(TPoint P, double* Distance, bool UseLimit, int ContainType) const;
    // Whether P lies within Tol of the path's bounding box; no segment rectangle grown by Tol
    // can hold P otherwise.
    bool NearPath(TPoint P, int Tol) const;

    // --- painting
    TColor GetActiveColor(int Index) const;
    virtual void Paint();

    // --- editing
    void EndConnection(TDiagObject* DiagObj, bool UseLastPoint);
    void EndConnectionWithSegment(LongRec LR);
    int LookForBestSegment(LongRec& LR, bool DoCalc);
    bool FindCrossPoint(int Index, TPoint& P, int Dir) const;
    void AlignSegmentByDiagObject(int Index, TDiagObject* DiagObj);
    void EditSegment(int Index, int& Size, int& Angle, bool DoRead);
    int DeleteSegment(int Index);
    void ShiftByDelta(QObject* diag, TPoint Delta);
    void OnDeleteDiagObject(QObject* diag);

    // --- properties
    bool GetIsEditable() const { return FIsEditable; }
    int GetSelectedIndex() const { return FSelectedIndex; }
    void SetSelectedIndex(int Value);
    void SetSelFirstPoint(bool Value) { FSelFirstPoint = Value; }
    TObjKey GetSrcKey() const { return FSrcKey; }
    TObjKey GetDstKey() const { return FDstKey; }
    TDiagObject* GetSrcObject() const { return FSource; }
    void SetSrcObject(TDiagObject* Value);
    TDiagObject* GetDstObject() const { return FDest; }
    void SetDstObject(TDiagObject* Value);
    TDiagConnectList* Owner() const { return FOwner; }

    // --- records: 32 + 8 × point count bytes (eight 4-byte fields and the points)
    void SaveToStream(TStream& Stream) const;
    // Creates a plain connection in AOwner and reads one record into it. A point count larger
    // than the rest of the stream could hold, or than kMaxPathPoints, is an EFormatError naming
    // its offset; on any error the new connection is taken out of AOwner again and freed.
    static TDiagConnection* LoadFromStream(TStream& Stream, TDiagConnectList* AOwner);

    // The list, the editor and the tests reach the fields directly. The list keeps an index of
    // where each wire lies and which blocks it ends on, refreshed by every operation of the list
    // and of the connection; code that writes FPoints, FPenWidth, FSource or FDest itself
    // calls TDiagConnectList::PathChanged(this) before the list is asked again.
    TDiagConnectList* FOwner;
    TPoints FPoints;
    int32_t FPenWidth = 2;
    TColor FSelSegmentColor = 0xFF00FF;
    TColor FSelPointColor = 0;
    bool FIsEditable = true;
    int32_t FSelectedIndex = -1;
    LongRec FSrcCrossInfo;
    LongRec FDstCrossInfo;
    TObjKey FSrcKey = 0;
    TObjKey FDstKey = 0;
    bool FSelFirstPoint = false;
    bool FExactDistCalc = true;
    // Guarded: a block freed behind the list's back reads as none.
    QPointer<TDiagObject> FSource;
    int32_t FSrcConIdx = 0;
    QPointer<TDiagObject> FDest;
    int32_t FDstConIdx = 0;
    TPoint FTol;
    int32_t FAutoSrc = 0;
    int32_t FAutoDst = 0;
    TPoint P1;
    TPoint P2;

protected:
    // Tells the list that the path or the end blocks may have changed.
    void Touch();

private:
    friend class TDiagConnectList;
    friend class TTouchGuard;
    // Appends a point to the path; an EListError past kMaxPathPoints.
    void AppendPoint(TPoint P);

    // Where the list's index has this wire filed (grid cells, end blocks, place in the list).
    struct TIndexEntry {
        int32_t CellL = 0, CellT = 0, CellR = -1, CellB = -1;
        bool Large = false;
        bool Filed = false;
        bool Dirty = false;
        const QObject* Src = nullptr;
        const QObject* Dst = nullptr;
        int32_t Pos = -1;
        uint64_t Seen = 0;
    } FIndex;
};

// A connection that starts at a block marker.
class VELDIAGEDIT_EXPORT TDiagObjConnection : public TDiagConnection {
public:
    // Automatic between two markers (routed at once when Dest is given).
    TDiagObjConnection(TDiagConnectList* AOwner, TDiagObject* Source, int SrcConIdx,
                       TDiagObject* Dest, int DstConIdx, TPoint PTol, int AutoSrc, int AutoDst,
                       int8_t ConnectRadius);
    // Hand-drawn, started from a marker with a first outward stub of Size pixels.
    TDiagObjConnection(TDiagConnectList* AOwner, TDiagObject* Source, int SrcConIdx, int Size);
};

// A free line meant to end on another connection; it takes no part in routing and its
// constructor keeps nothing of its arguments.
class VELDIAGEDIT_EXPORT TDiagLineConnection : public TDiagConnection {
public:
    TDiagLineConnection(TDiagConnectList* AOwner, TDiagObject* Source, int SrcConIdx,
                        TDiagObjConnection* DstConnection, int DstConIdx, TPoint PTol,
                        double DstPlace, int8_t ConnectRadius);
};

// A segment is addressed by a LongRec of two 16-bit words (Hi = connection + 1, Lo = segment +
// 1): a list holds at most this many connections, a path at most this many points.
constexpr int32_t kMaxConnections = 0xFFFF;
constexpr int32_t kMaxPathPoints = 0xFFFF + 1;

} // namespace vde
