#include "velDiagEdit/blocks/diag_rs_trigger.h"

#include <QStringList>

namespace vde {

TDiagRSTrigger::TDiagRSTrigger(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                               double QHoriz, double QVert, bool AVisible, const QString& AText)
    : TDiagLogic(Owner, ALeft, ATop, AWidth, AHeight, 0, 15, AVisible, QString(), doRSTrigger) {
    if (!AText.isEmpty())
        for (const QString& piece : AText.split(QLatin1Char('|')))
            AddLabel({0, 0}, piece, FTextHeight, false);
    HorizRatio = QHoriz;
    VertRatio = QVert;
    MakeRegions();
    UpdateAlignments();
}

void TDiagRSTrigger::MakeRegions() {
    if (!SetMainRect())
        return;
    const TRect M = FMainRect;
    const int W = M.Width(), H = M.Height();
    FMidHoriz = RoundHalfEven(W * HorizRatio);
    FMidVert = RoundHalfEven(H * VertRatio);
    if (FRegions.size() < 3)
        FRegions.resize(3);
    // The body's left edge follows a delta width that may come from a stream.
    const int midX = WrapAdd(M.Left, FMidHoriz);
    const int midY = WrapAdd(M.Top, FMidVert), bottom = WrapSub(WrapAdd(M.Top, H), 1);
    FRegions[0].R = {M.Left, M.Top, midX, midY};
    FRegions[1].R = {M.Left, midY, midX, bottom};
    // The right part ends at the body width less one, not offset by the body's left.
    FRegions[2].R = {midX, M.Top, WrapSub(W, 1), bottom};
    for (auto& r : FRegions) {
        r.QHoriz = 0.5;
        r.QVert = 0.2;
    }
    UpdateAlignments();
}

void TDiagRSTrigger::Paint() {
    if (FPaintCount >= 1)
        return;
    TDiagLogic::Paint();
    if (!DisablePaint)
        PaintMidLines();
}

void TDiagRSTrigger::PaintMidLines() {
    // The split offsets are used as block coordinates here, so the lines sit left of and above
    // the region borders by the body's offset, as the symbol has always been drawn.
    TCanvas* c = Canvas();
    const TPoint horiz[] = {{FMainRect.Left, FMidVert}, {FMidHoriz, FMidVert}};
    const TPoint vert[] = {{FMidHoriz, FMainRect.Top}, {FMidHoriz, WrapSub(FMainRect.Bottom, 1)}};
    c->Polyline(horiz);
    c->Polyline(vert);
}

} // namespace vde
