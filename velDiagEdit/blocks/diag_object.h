#pragma once
// The diagram block: a graphic control on the host's parent widget that carries markers
// (connection points) on its left (inputs) and right (outputs) side, text labels, the lines and
// rectangles of its symbol, selection state and a key by which connections find it.

#include "velDiagEdit/geometry/diag_types.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <vector>

namespace vde {

class TDiagObjectList;

// Connections and stored diagrams refer to a block by this key.
using TObjKey = uint32_t;

// Text of a label: at most this many UTF-16 units; a cut never splits a surrogate pair.
constexpr int kDiagObjectStringMax = 32;
using TDiagObjectString = QString;
VELDIAGEDIT_EXPORT TDiagObjectString CutDiagObjectString(const QString& s);

struct TDotMarker {
    TPoint P; // outer end, block coordinates
    TIOType IOType = itDirect;
    uint8_t Size = 0; // inversion circle radius or arrow size
    friend bool operator==(const TDotMarker&, const TDotMarker&) = default;
};

struct TDiagLabel {
    TPoint Start; // top-left of the text, block coordinates
    TDiagObjectString Text;
    uint8_t Height = 0; // 0: the block's TextHeight
    friend bool operator==(const TDiagLabel&, const TDiagLabel&) = default;
};

struct TSegment {
    TPoint P1, P2;
};

struct TRegion {
    TRect R;
    double QHoriz = 0;
    double QVert = 0;
};

using TDotMarkers = std::vector<TDotMarker>;
using TDiagLabels = std::vector<TDiagLabel>;
using TSegments = std::vector<TSegment>;
using TRegions = std::vector<TRegion>;
using PDotMarkers = TDotMarkers*;

class VELDIAGEDIT_EXPORT TDiagObject : public TGraphicControl {
    Q_OBJECT
public:
    TDiagObject(TDiagObjectList* Owner, TDiagObjectType ObjType);
    TDiagObject(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                TDiagObjectType ObjType, bool AVisible);
    ~TDiagObject() override;

    // --- marker addressing: -k input k, +k output k, 0 none
    PDotMarkers GetMarkersPtr(int Index);
    const TDotMarker* GetMarker(int Index) const;
    TDotMarker* MarkerAt(int Index);
    bool GetConPoint(int Index, TPoint& P, bool UseMainRect) const;
    int NearestMarkerIndex(TPoint From, double MinDist) const;
    // Looks within 10 pixels whatever MinDist says.
    int SelectNearestMarker(TPoint From, bool DoUpdate, double MinDist);
    int GetSelMarkerIndex() const { return FSelMarkerIndex; }
    void SetSelMarkerIndex(int Value);
    int GetSelMarkerSize() const;
    void SetSelMarkerSize(int Value);
    int GetSelMarkerPos() const;
    void SetSelMarkerPos(int Value);

    // --- bounds
    virtual void SetBounds(int ALeft, int ATop, int AWidth, int AHeight);
    TPoint GetLocation() const { return {x(), y()}; }
    void SetLocation(TPoint P);
    TPoint GetSize() const { return {width(), height()}; }
    void SetSize(TPoint P);
    void ShiftByDelta(TPoint Delta);
    TRect BoundsRect() const;
    QString SaveBoundsToStr() const;
    void LoadBoundsFromStr(const QString& S);
    int GetDeltaWidth() const { return FDeltaWidth; }
    void SetDeltaWidth(int Value);

    // --- rectangles, block coordinates
    TRect GetShapeRect() const;
    TRect ShapeToMainRect(const TRect& R) const;
    TRect GetMainRect() const { return ShapeToMainRect(GetShapeRect()); }
    bool SetMainRect();

    // --- labels
    void AddLabel(TPoint Pos, const QString& Text, uint8_t Height, bool DoUpdate);
    uint8_t GetLabelHeight(const TDiagLabel& Label) const;
    uint8_t GetTextHeight() const { return FTextHeight; }
    void SetTextHeight(uint8_t Value);
    QString GetTextValues() const;
    void SetTextValues(const QString& Value);
    QString GetTextHeights() const;
    void SetTextHeights(const QString& Value);
    QString GetTextPosValues() const;
    void SetTextPosValues(const QString& Value);
    void AlignLabelInRect(const TRect& R, TDiagLabel& Label);
    void AlignLabelInRectFloat(const TRect& R, TDiagLabel& Label, double QHoriz, double QVert);
    void ChangeAlignment(TDiagLabel& Label);
    void UpdateAlignments();

    // --- selection and look
    bool GetSelected() const { return FSelected; }
    void SetSelected(bool Value);
    bool GetVisibleBorder() const { return FVisibleBorder; }
    void SetVisibleBorder(bool Value);
    bool GetDisableFullPaint() const { return DisablePaint; }
    void SetDisableFullPaint(bool Value) { DisablePaint = Value; }
    TPen& GetPen() { return Canvas()->Pen; }
    TBrush& GetBrush() { return Canvas()->Brush; }
    TDiagObjectType GetDiagObjType() const { return FObjType; }
    TObjKey GetObjKey() const { return FObjKey; }
    // Tells the owning list, whose key index must follow.
    void SetObjKey(TObjKey Value);
    int GetResizeMode() const { return FResizeMode; }
    void SetResizeMode(int Value) { FResizeMode = Value; }
    TDiagObjectList* Owner() const { return FOwner; }

    TNotifyEvent GetOnModifyBounds() const { return FOnModifyBounds; }
    void SetOnModifyBounds(TNotifyEvent e) { FOnModifyBounds = std::move(e); }
    TNotifyEvent GetOnModifyMarkers() const { return FOnModifyMarkers; }
    void SetOnModifyMarkers(TNotifyEvent e) { FOnModifyMarkers = std::move(e); }

    // --- painting
    void Paint() override;
    bool DrawsOnlyOnCanvas() const override { return true; }
    virtual void MainPaint();
    void PaintSegments();
    void PaintRegions();
    void PaintLabels();
    void PaintMarkers(const TDotMarkers& Markers);
    void PaintMarker(const TDotMarker& Marker, bool IsInput, TColor Color, int Width);

    // --- records
    void SaveToStream(TStream& Stream) const;
    // Reads one block record and creates the block in Owner, which owns it. An unknown kind, a
    // marker type outside 0..2 or a count larger than the rest of the stream could hold is an
    // EFormatError naming the byte offset, and then no block is left behind. A key that another
    // block of Owner holds is kept: FindObjByKey goes on finding the earlier block.
    static TDiagObject* LoadFromStream(TStream& Stream, TDiagObjectList* Owner);

    // Fields are public as the list, connections and editor reach them directly.
    TDiagObjectList* FOwner = nullptr;
    TRect FInitRect;
    TRect FShapeRect;
    TRect FMainRect;
    TColor FParentColor = clBtnFace;
    TColor FMainColor = 0xC0C0C0;
    TColor FBorderColor = 0x0000FF;
    TColor FMarkerColor = 0xFF00FF;
    // The labels' text colour: a fixed colour of the block like its body, so that the text
    // stays readable on the body whatever palette the host runs under.
    TColor FTextColor = clBlack;
    int FSelMarkerIndex = 0;
    int FDeltaWidth = 8;
    int FDeltaShift = 2;
    int FPenWidth = 1;
    int FPaintCount = 0;
    TCanvas* ParentCanvas = nullptr;
    TDiagObjectType FObjType = doNone;
    uint8_t FTextHeight = 26;
    TDiagLabels FLabels;
    TSegments FSegments;
    TRegions FRegions;
    int AlignHoriz = 0;
    int AlignVert = 0;
    // Written through SetObjKey (or by the list), so the list's key index stays current.
    TObjKey FObjKey = 0;
    TDotMarkers FInputs;
    TDotMarkers FOutputs;
    bool DisablePaint = false;
    bool FVisibleBorder = false;
    bool DisableRecalcMarkers = false;
    bool DisableMakeRegions = false;
    bool FSelected = false;
    TNotifyEvent FOnModifyBounds;
    TNotifyEvent FOnModifyMarkers;
    int FResizeMode = 0;

protected:
    // Called after a stream record replaced the markers.
    virtual void MarkersLoaded() {}

    // Pen and brush changes made while painting must not ask for another paint.
    struct PaintCountGuard {
        TDiagObject* o;
        explicit PaintCountGuard(TDiagObject* obj) : o(obj) { ++o->FPaintCount; }
        ~PaintCountGuard() { --o->FPaintCount; }
    };

private:
    void Init(TDiagObjectList* Owner, TDiagObjectType ObjType);
};

} // namespace vde
