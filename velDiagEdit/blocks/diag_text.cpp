#include "velDiagEdit/blocks/diag_text.h"

namespace vde {

TDiagText::TDiagText(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                     const QString& AText, int AHoriz, int AVert, bool AVisible)
    : TDiagText(Owner, ALeft, ATop, AWidth, AHeight, AText, AHoriz, AVert, AVisible, doText) {}

TDiagText::TDiagText(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                     const QString& AText, int AHoriz, int AVert, bool AVisible,
                     TDiagObjectType ObjType)
    : TDiagObject(Owner, ALeft, ATop, AWidth, AHeight, ObjType, AVisible) {
    FMainColor = 0xC0C0C0;
    FParentColor = clBtnFace;
    FBorderColor = 0x000000;
    FPenWidth = 2;
    AlignHoriz = AHoriz;
    AlignVert = AVert;
    // The base constructor laid out nothing of this kind yet; do it with the kind's pen.
    TDiagText::SetBounds(ALeft, ATop, AWidth, AHeight);
    if (!AText.isEmpty())
        AddAlignedLabel(AText);
}

void TDiagText::SetBounds(int ALeft, int ATop, int AWidth, int AHeight) {
    DisablePaint = true;
    TDiagObject::SetBounds(ALeft, ATop, AWidth, AHeight);
    if (!DisableRecalcMarkers && FResizeMode != 1) {
        SetInPosEx(-1, -1, 0, -1);
        SetOutPosEx(-1, -1, 0, -1);
    }
    if (!DisableMakeRegions)
        MakeRegions();
    DisablePaint = false;
    Invalidate();
}

void TDiagText::MainPaint() {
    TDiagObject::MainPaint();
    if (DisablePaint)
        return;
    FMainRect = ShapeToMainRect(FShapeRect);
    TCanvas* c = Canvas();
    {
        PaintCountGuard g(this);
        c->Pen.Width = FPenWidth;
        c->Pen.Color = FBorderColor;
        c->Brush.Color = FMainColor;
    }
    c->Rectangle(FMainRect);
}

void TDiagText::SetCount(TDotMarkers& Markers, int& Field, int N) {
    const int n = N < 0 ? 0 : N;
    Markers.resize(size_t(n));
    Field = n;
    SetMarkers(Markers, -1, -1, 0, -1);
    // A count change discards the markers' types.
    for (auto& m : Markers)
        m.IOType = itDirect;
    Invalidate();
}

void TDiagText::SetInCount(int N) {
    SetCount(FInputs, FInCount, N);
}

void TDiagText::SetOutCount(int N) {
    SetCount(FOutputs, FOutCount, N);
}

void TDiagText::SetInPosEx(int Y0, int Y1, int First, int Last) {
    SetMarkers(FInputs, Y0, Y1, First, Last);
}

void TDiagText::SetOutPosEx(int Y0, int Y1, int First, int Last) {
    SetMarkers(FOutputs, Y0, Y1, First, Last);
}

void TDiagText::SetTypes(TDotMarkers& Markers, TIOType IOType, int First, int Last) {
    const int n = int(Markers.size());
    if (Last < 0)
        Last = n - 1;
    for (int k = std::max(First, 0); k <= Last && k < n; ++k)
        Markers[size_t(k)].IOType = IOType;
}

void TDiagText::AllInputsType(TIOType IOType, int First, int Last) {
    SetTypes(FInputs, IOType, First, Last);
    Invalidate();
}

void TDiagText::AllOutputsType(TIOType IOType, int First, int Last) {
    SetTypes(FOutputs, IOType, First, Last);
    Invalidate();
}

void TDiagText::AddAlignedLabel(const QString& Text) {
    AddLabel({0, 0}, Text, FTextHeight, false);
    ChangeAlignment(FLabels.back());
}

void TDiagText::SetMarkers(TDotMarkers& Markers, int Y0, int Y1, int First, int Last) {
    FShapeRect = GetShapeRect();
    FMainRect = ShapeToMainRect(FShapeRect);
    const int n = int(Markers.size());
    if (Y0 < 0)
        Y0 = WrapSub(FMainRect.Top, FShapeRect.Top);
    if (Y1 < 0)
        Y1 = WrapSub(FMainRect.Height(), 1);
    if (Last < 0)
        Last = n - 1;
    if (!(n > 0 && First >= 0 && First < n && Last < n && Last >= First))
        return;
    const int count = Last - First + 1;
    // The bounds may come from a stream (and Y0, Y1 from a host): the arithmetic wraps.
    const int step = int(int64_t(WrapSub(Y1, Y0)) / (2 * int64_t(count)));
    const int x = &Markers == &FInputs ? 0 : WrapSub(FShapeRect.Width(), 1);
    for (int k = First; k <= Last; ++k) {
        TDotMarker& m = Markers[size_t(k)];
        m.P = {x, WrapAdd(Y0, WrapMul(2 * (k - First) + 1, step))};
        m.Size = FMarkerSize;
    }
}

void TDiagText::MarkersLoaded() {
    FInCount = int(FInputs.size());
    FOutCount = int(FOutputs.size());
}

TDiagLogic::TDiagLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                       int AHoriz, int AVert, bool AVisible, const QString& AText)
    : TDiagLogic(Owner, ALeft, ATop, AWidth, AHeight, AHoriz, AVert, AVisible, AText, doText) {}

TDiagLogic::TDiagLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                       int AHoriz, int AVert, bool AVisible, const QString& AText,
                       TDiagObjectType ObjType)
    : TDiagText(Owner, ALeft, ATop, AWidth, AHeight, AText, AHoriz, AVert, AVisible, ObjType) {
    FMarkerSize = 6;
    DisablePaint = true;
    SetInCount(2);
    SetOutCount(1);
    DisablePaint = false;
}

TDiagAndLogic::TDiagAndLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                             int AHoriz, int AVert, bool AVisible)
    : TDiagLogic(Owner, ALeft, ATop, AWidth, AHeight, AHoriz, AVert, AVisible, QStringLiteral("&"),
                 doAndLogic) {}

TDiagOrLogic::TDiagOrLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                           int AHoriz, int AVert, bool AVisible)
    : TDiagLogic(Owner, ALeft, ATop, AWidth, AHeight, AHoriz, AVert, AVisible, QStringLiteral("1"),
                 doOrLogic) {}

} // namespace vde
