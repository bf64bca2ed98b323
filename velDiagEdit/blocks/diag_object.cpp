#include "velDiagEdit/blocks/diag_object.h"

#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/convert.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/record_codec.h"

#include <QStringList>
#include <cfloat>

namespace vde {

namespace {

// Applies Setter to the first min(pieces, labels) labels with their "|"-separated piece.
template <class F> void ForEachLabelPiece(TDiagLabels& Labels, const QString& Value, F Setter) {
    const QStringList pieces = Value.split(QLatin1Char('|'));
    const size_t n = std::min<size_t>(size_t(pieces.size()), Labels.size());
    for (size_t i = 0; i < n; ++i)
        Setter(Labels[i], pieces[qsizetype(i)]);
}

} // namespace

TDiagObjectString CutDiagObjectString(const QString& s) {
    if (s.size() <= kDiagObjectStringMax)
        return s;
    int n = kDiagObjectStringMax;
    if (s[n - 1].isHighSurrogate())
        --n;
    return s.left(n);
}

TDiagObject::TDiagObject(TDiagObjectList* Owner, TDiagObjectType ObjType)
    : TGraphicControl(Owner ? Owner->GetParent() : nullptr) {
    Init(Owner, ObjType);
}

TDiagObject::TDiagObject(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                         TDiagObjectType ObjType, bool AVisible)
    : TGraphicControl(Owner ? Owner->GetParent() : nullptr) {
    Init(Owner, ObjType);
    // A block without a parent would otherwise become a top-level window.
    if (parentWidget())
        setVisible(AVisible);
    TDiagObject::SetBounds(ALeft, ATop, AWidth, AHeight);
}

void TDiagObject::Init(TDiagObjectList* Owner, TDiagObjectType ObjType) {
    FOwner = Owner;
    FObjType = ObjType;
    // The owner gives the block its key as it takes it over.
    FObjKey = 0;
    if (Owner) {
        ParentCanvas = Owner->GetParentCanvas();
        Owner->Adopt(this);
    }
}

TDiagObject::~TDiagObject() {
    // Deleted by someone other than its list (its Qt parent, say): leave the list first.
    if (FOwner)
        FOwner->Forget(this);
}

void TDiagObject::SetObjKey(TObjKey Value) {
    const TObjKey old = FObjKey;
    FObjKey = Value;
    if (FOwner && old != Value)
        FOwner->KeyChanged(this, old);
}

// --- markers

PDotMarkers TDiagObject::GetMarkersPtr(int Index) {
    if (Index == 0)
        return nullptr;
    TDotMarkers* m = Index < 0 ? &FInputs : &FOutputs;
    const int64_t k = Index < 0 ? -int64_t(Index) : int64_t(Index);
    return int64_t(m->size()) < k ? nullptr : m;
}

TDotMarker* TDiagObject::MarkerAt(int Index) {
    PDotMarkers m = GetMarkersPtr(Index);
    if (!m)
        return nullptr;
    const int64_t k = Index < 0 ? -int64_t(Index) : int64_t(Index);
    return &(*m)[size_t(k - 1)];
}

const TDotMarker* TDiagObject::GetMarker(int Index) const {
    return const_cast<TDiagObject*>(this)->MarkerAt(Index);
}

bool TDiagObject::GetConPoint(int Index, TPoint& P, bool UseMainRect) const {
    const TDotMarker* m = GetMarker(Index);
    if (!m)
        return false;
    P.X = WrapAdd(x(), m->P.X);
    P.Y = WrapAdd(y(), m->P.Y);
    if (UseMainRect)
        P.X = WrapAdd(P.X, WrapMul(-Sign(Index), FDeltaWidth));
    return true;
}

int TDiagObject::NearestMarkerIndex(TPoint From, double MinDist) const {
    double best = DBL_MAX;
    int result = 0;
    const int lo = -int(FInputs.size()), hi = int(FOutputs.size());
    for (int i = lo; i <= hi; ++i) {
        if (i == 0)
            continue;
        TPoint p;
        if (!GetConPoint(i, p, true))
            continue;
        const double d = Distance(p, From);
        if (d < best && d <= MinDist) {
            best = d;
            result = i;
        }
    }
    return result;
}

int TDiagObject::SelectNearestMarker(TPoint From, bool DoUpdate, double /*MinDist*/) {
    if (From.X != -1 && From.Y != -1) {
        const int r = NearestMarkerIndex(From, 10.0);
        if (r != 0)
            SetSelMarkerIndex(r);
        return r;
    }
    if (DoUpdate)
        SetSelMarkerIndex(0);
    return 0;
}

void TDiagObject::SetSelMarkerIndex(int Value) {
    FSelMarkerIndex = Value;
    Invalidate();
}

int TDiagObject::GetSelMarkerSize() const {
    const TDotMarker* m = GetMarker(FSelMarkerIndex);
    return m ? m->Size : 0;
}

void TDiagObject::SetSelMarkerSize(int Value) {
    TDotMarker* m = MarkerAt(FSelMarkerIndex);
    if (!m)
        return;
    m->Size = static_cast<uint8_t>(Value);
    Invalidate();
}

int TDiagObject::GetSelMarkerPos() const {
    const TDotMarker* m = GetMarker(FSelMarkerIndex);
    return m ? m->P.Y : 0;
}

void TDiagObject::SetSelMarkerPos(int Value) {
    TDotMarker* m = MarkerAt(FSelMarkerIndex);
    if (!m)
        return;
    m->P.Y = Value;
    if (FOnModifyMarkers)
        FOnModifyMarkers(this);
    Invalidate();
}

// --- bounds

void TDiagObject::SetBounds(int ALeft, int ATop, int AWidth, int AHeight) {
    vde::SetBounds(this, ALeft, ATop, AWidth, AHeight);
    FInitRect = {ALeft, ATop, WrapSub(AWidth, 1), WrapSub(AHeight, 1)};
    if (FOnModifyBounds)
        FOnModifyBounds(this);
}

void TDiagObject::SetLocation(TPoint P) {
    SetBounds(P.X, P.Y, width(), height());
}

void TDiagObject::SetSize(TPoint P) {
    SetBounds(x(), y(), P.X, P.Y);
}

void TDiagObject::ShiftByDelta(TPoint Delta) {
    SetBounds(WrapAdd(x(), Delta.X), WrapAdd(y(), Delta.Y), width(), height());
}

TRect TDiagObject::BoundsRect() const {
    return vde::BoundsRect(this);
}

QString TDiagObject::SaveBoundsToStr() const {
    const TRect r = BoundsRect();
    const int32_t a[4] = {r.Left, r.Top, r.Right, r.Bottom};
    return IntArrayToString(a, 4);
}

void TDiagObject::LoadBoundsFromStr(const QString& S) {
    const TRect r0 = BoundsRect();
    int32_t a[4] = {r0.Left, r0.Top, r0.Right, r0.Bottom};
    StringToIntArray(S, a, 4);
    SetBounds(a[0], a[1], WrapSub(a[2], a[0]), WrapSub(a[3], a[1]));
}

void TDiagObject::SetDeltaWidth(int Value) {
    FDeltaWidth = Value;
    Invalidate();
}

// --- rectangles

TRect TDiagObject::GetShapeRect() const {
    const int w = FPenWidth;
    const int half = w / 2;
    TRect r{half, half, WrapAdd(WrapSub(WrapAdd(half, width()), w), 1),
            WrapAdd(WrapSub(WrapAdd(half, height()), w), 1)};
    if (w == 0) {
        r.Right = WrapSub(r.Right, 1);
        r.Bottom = WrapSub(r.Bottom, 1);
    }
    return r;
}

TRect TDiagObject::ShapeToMainRect(const TRect& R) const {
    // The delta width may come from a stream.
    return {WrapAdd(R.Left, FDeltaWidth), WrapAdd(R.Top, FDeltaShift),
            WrapSub(R.Right, FDeltaWidth), WrapSub(R.Bottom, FDeltaShift)};
}

bool TDiagObject::SetMainRect() {
    FMainRect = GetMainRect();
    return FMainRect.Width() > 0 && FMainRect.Height() > 0;
}

// --- labels

void TDiagObject::AddLabel(TPoint Pos, const QString& Text, uint8_t Height, bool DoUpdate) {
    FLabels.push_back({Pos, CutDiagObjectString(Text), Height});
    if (DoUpdate)
        Invalidate();
}

uint8_t TDiagObject::GetLabelHeight(const TDiagLabel& Label) const {
    return Label.Height != 0 ? Label.Height : FTextHeight;
}

void TDiagObject::SetTextHeight(uint8_t Value) {
    FTextHeight = Value;
    if (FLabels.size() == 1)
        FLabels[0].Height = Value;
    Invalidate();
}

QString TDiagObject::GetTextValues() const {
    QStringList parts;
    for (const auto& l : FLabels)
        parts << l.Text;
    return parts.join(QLatin1Char('|'));
}

void TDiagObject::SetTextValues(const QString& Value) {
    ForEachLabelPiece(FLabels, Value, [](TDiagLabel& l, const QString& piece) {
        l.Text = CutDiagObjectString(piece);
    });
    UpdateAlignments();
    Invalidate();
}

QString TDiagObject::GetTextHeights() const {
    QStringList parts;
    for (const auto& l : FLabels)
        parts << QString::number(l.Height);
    return parts.join(QLatin1Char('|'));
}

void TDiagObject::SetTextHeights(const QString& Value) {
    ForEachLabelPiece(FLabels, Value, [](TDiagLabel& l, const QString& piece) {
        l.Height = static_cast<uint8_t>(StrToInt(piece));
    });
    UpdateAlignments();
    Invalidate();
}

QString TDiagObject::GetTextPosValues() const {
    QStringList parts;
    for (const auto& l : FLabels)
        parts << PointToStr(l.Start);
    return parts.join(QLatin1Char('|'));
}

void TDiagObject::SetTextPosValues(const QString& Value) {
    ForEachLabelPiece(FLabels, Value,
                      [](TDiagLabel& l, const QString& piece) { l.Start = StrToPoint(piece); });
    Invalidate();
}

void TDiagObject::AlignLabelInRect(const TRect& R, TDiagLabel& Label) {
    TCanvas* c = Canvas();
    c->Font.Height = GetLabelHeight(Label);
    const int tw = c->TextWidth(Label.Text);
    const int th = c->TextHeight(Label.Text);
    const int w = R.Width(), h = R.Height();
    int dx = 0, dy = 0;
    // The rectangle follows a delta width that may come from a stream: the sums wrap.
    if (AlignHoriz > 0)
        dx = AlignHoriz;
    else if (AlignHoriz < 0)
        dx = WrapSub(WrapAdd(w, AlignHoriz), tw);
    else if (w > tw)
        dx = WrapSub(w, tw) / 2;
    if (AlignVert > 0)
        dy = AlignVert;
    else if (AlignVert < 0)
        dy = WrapSub(WrapAdd(h, AlignVert), th);
    else if (h > tw) // compared with the text width, as the layout has always done
        dy = WrapSub(h, th) / 2;
    Label.Start = {WrapAdd(R.Left, dx), WrapAdd(R.Top, dy)};
}

void TDiagObject::AlignLabelInRectFloat(const TRect& R, TDiagLabel& Label, double QHoriz,
                                        double QVert) {
    TCanvas* c = Canvas();
    c->Font.Height = GetLabelHeight(Label);
    const int tw = c->TextWidth(Label.Text);
    const int th = c->TextHeight(Label.Text);
    const int dx = RoundHalfEven(double(WrapSub(R.Width(), tw)) * QHoriz);
    const int dy = RoundHalfEven(double(WrapSub(R.Height(), th)) * QVert);
    Label.Start = {WrapAdd(R.Left, dx), WrapAdd(R.Top, dy)};
}

void TDiagObject::ChangeAlignment(TDiagLabel& Label) {
    if (SetMainRect())
        AlignLabelInRect(FMainRect, Label);
}

void TDiagObject::UpdateAlignments() {
    if (FLabels.empty() || !SetMainRect())
        return;
    for (size_t i = 0; i < FLabels.size(); ++i) {
        if (i < FRegions.size())
            AlignLabelInRectFloat(FRegions[i].R, FLabels[i], FRegions[i].QHoriz, FRegions[i].QVert);
        else
            AlignLabelInRect(FMainRect, FLabels[i]);
    }
}

// --- selection

void TDiagObject::SetSelected(bool Value) {
    if (!Value && FSelMarkerIndex != 0) {
        FSelMarkerIndex = 0;
        Invalidate();
    }
    FSelected = Value;
    SetVisibleBorder(Value);
}

void TDiagObject::SetVisibleBorder(bool Value) {
    if (Value == FVisibleBorder)
        return;
    FVisibleBorder = Value;
    Invalidate();
}

// --- painting

void TDiagObject::Paint() {
    if (FPaintCount >= 1)
        return;
    MainPaint();
    if (DisablePaint)
        return;
    PaintSegments();
    PaintLabels();
    PaintMarkers(FInputs);
    PaintMarkers(FOutputs);
}

void TDiagObject::MainPaint() {
    FShapeRect = GetShapeRect();
    if (!FVisibleBorder)
        return;
    TCanvas* c = Canvas();
    {
        PaintCountGuard g(this);
        c->Pen.Width = 1;
        c->Pen.Color = 0x0000FF;
        c->Brush.Color = FParentColor;
    }
    c->Rectangle(FShapeRect);
}

void TDiagObject::PaintSegments() {
    TCanvas* c = Canvas();
    for (const auto& s : FSegments) {
        c->MoveTo(s.P1.X, s.P1.Y);
        c->LineTo(s.P2.X, s.P2.Y);
    }
}

void TDiagObject::PaintRegions() {
    TCanvas* c = Canvas();
    for (const auto& r : FRegions)
        c->Rectangle(r.R);
}

void TDiagObject::PaintLabels() {
    TCanvas* c = Canvas();
    c->Font.Color = FTextColor;
    for (const auto& l : FLabels) {
        c->Font.Height = GetLabelHeight(l);
        c->TextOut(l.Start.X, l.Start.Y, l.Text);
    }
}

void TDiagObject::PaintMarkers(const TDotMarkers& Markers) {
    const bool isInput = &Markers == &FInputs;
    const int sign = isInput ? -1 : 1;
    for (size_t i = 0; i < Markers.size(); ++i) {
        const bool selected = int64_t(i + 1) * sign == FSelMarkerIndex;
        if (selected)
            PaintMarker(Markers[i], isInput, FMarkerColor, 6);
        else
            PaintMarker(Markers[i], isInput, 0x000000, 2);
    }
}

void TDiagObject::PaintMarker(const TDotMarker& Marker, bool IsInput, TColor Color, int Width) {
    TCanvas* c = Canvas();
    const int edgeX = IsInput ? FMainRect.Left : FMainRect.Right;
    const TPoint p = Marker.P;
    c->Pen.Color = Color;
    c->Pen.Width = Width;
    c->MoveTo(p.X, p.Y);
    c->LineTo(edgeX, p.Y);
    c->Pen.Width = 2;
    if (Marker.IOType == itInversion) {
        const TColor old = c->Brush.Color;
        c->Brush.Color = 0xFFFFFF;
        const int r = Marker.Size;
        // Centred on the edge pixel: the circle spans edgeX - r .. edgeX + r.
        c->Ellipse(WrapSub(edgeX, r), WrapSub(p.Y, r), WrapAdd(edgeX, r + 1), WrapAdd(p.Y, r + 1));
        c->Brush.Color = old;
    } else if (Marker.IOType == itArrow) {
        const int L = 2 * Marker.Size;
        const int h = RoundHalfEven(L * 0.4);
        // The marker's point may come from a stream.
        const int wingX = IsInput ? WrapSub(edgeX, L) : WrapAdd(edgeX, L);
        c->MoveTo(edgeX, WrapSub(p.Y, 1));
        c->LineTo(wingX, WrapSub(p.Y, h));
        c->MoveTo(edgeX, WrapSub(p.Y, 1));
        c->LineTo(wingX, WrapAdd(p.Y, h));
    }
}

// --- records

void TDiagObject::SaveToStream(TStream& Stream) const {
    TRecordWriter w(size_t(kBlockRecordMinSize) +
                    size_t(kMarkerEntrySize) * (FInputs.size() + FOutputs.size()));
    w.Byte(FObjType).Rect(BoundsRect()).Int(FDeltaWidth);
    w.Int(int32_t(FLabels.size()));
    for (const auto& l : FLabels)
        w.Point(l.Start).Byte(l.Height).Str(l.Text);
    for (const TDotMarkers* ms : {&FInputs, &FOutputs}) {
        w.Int(int32_t(ms->size()));
        for (const auto& m : *ms)
            w.Point(m.P).Byte(m.IOType).Byte(m.Size).Zeros(2);
    }
    w.UInt(FObjKey);
    w.Flush(Stream);
}

namespace {

void ReadMarkers(TStream& Stream, TDotMarkers& Markers, const char* what) {
    const int32_t n = Stream.ReadCount(what, kMarkerEntrySize);
    TRecordReader r(Stream, int64_t(n) * kMarkerEntrySize);
    Markers.assign(size_t(n), TDotMarker{});
    for (auto& m : Markers) {
        m.P = r.Point();
        const int64_t at = r.Offset();
        const uint8_t type = r.Byte();
        if (type > itArrow)
            throw EFormatError(QStringLiteral("Unknown marker type %1").arg(type), at);
        m.IOType = static_cast<TIOType>(type);
        m.Size = r.Byte();
        r.Skip(2);
    }
}

} // namespace

TDiagObject* TDiagObject::LoadFromStream(TStream& Stream, TDiagObjectList* Owner) {
    TRecordReader head(Stream, kByteSize + kRectSize + kIntSize);
    const uint8_t type = head.Byte();
    if (type == doNone || type > doRSTrigger)
        throw EFormatError(QStringLiteral("Unknown block kind %1").arg(type), head.Start());
    const TRect bounds = head.Rect();
    const int32_t deltaWidth = head.Int();
    TDiagObject* obj = Owner->CreateObjByDiagType(static_cast<TDiagObjectType>(type), bounds);
    try {
        obj->SetDeltaWidth(deltaWidth);
        const int32_t labels = Stream.ReadCount("Label count", kLabelEntryMinSize);
        obj->FLabels.assign(size_t(labels), TDiagLabel{});
        for (auto& l : obj->FLabels) {
            TRecordReader entry(Stream, kPointSize + kByteSize);
            l.Start = entry.Point();
            l.Height = entry.Byte();
            l.Text = CutDiagObjectString(Stream.ReadStr());
        }
        ReadMarkers(Stream, obj->FInputs, "Input count");
        ReadMarkers(Stream, obj->FOutputs, "Output count");
        // Two blocks may share a key (a file saved after a new block took a loaded block's key):
        // the block loads, and a look-up by the key finds the earlier one.
        const TObjKey key = Stream.ReadUInt32();
        obj->SetObjKey(key);
        obj->MarkersLoaded();
    } catch (...) {
        // A half-read block must not stay in the list.
        delete obj;
        throw;
    }
    return obj;
}

} // namespace vde
