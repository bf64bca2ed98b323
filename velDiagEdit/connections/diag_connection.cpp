#include "velDiagEdit/connections/diag_connection.h"

#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/geometry/geometry.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/record_codec.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace vde {

static_assert(sizeof(TPoint) == 8 && std::is_standard_layout_v<TPoint>);

// Marks the wire for the list's index on entry and again on exit, so that a question asked in
// the middle of a change cannot leave the index with the half-changed path.
class TTouchGuard {
public:
    explicit TTouchGuard(TDiagConnection* c) : FCon(c) { c->Touch(); }
    ~TTouchGuard() { FCon->Touch(); }
    TTouchGuard(const TTouchGuard&) = delete;
    TTouchGuard& operator=(const TTouchGuard&) = delete;

private:
    TDiagConnection* FCon;
};

TDiagConnection::TDiagConnection(TDiagConnectList* AOwner) : FOwner(nullptr) {
    if (AOwner)
        AOwner->Adopt(this);
}

TDiagConnection::~TDiagConnection() {
    // Deleted by someone other than its list: leave the list first.
    if (FOwner)
        FOwner->Forget(this);
}

void TDiagConnection::AppendPoint(TPoint P) {
    const TTouchGuard touch(this);
    if (FPoints.size() >= size_t(kMaxPathPoints))
        throw EListError(
            QStringLiteral("A connection holds at most %1 points").arg(kMaxPathPoints));
    FPoints.push_back(P);
}

// --- routing

void TDiagConnection::MakePath() {
    const TTouchGuard touch(this);
    if (FIsEditable) {
        AdjustPath(true);
        return;
    }
    FPoints.clear();
    if (!FSource || !FDest)
        return;
    if (!FSource->GetConPoint(FSrcConIdx, P1, false) || !FDest->GetConPoint(FDstConIdx, P2, false))
        return;
    int sSrc = FSrcConIdx, sDst = FDstConIdx;
    // One pixel back through each marker.
    P1.X = WrapSub(P1.X, Sign(sSrc));
    P2.X = WrapSub(P2.X, Sign(sDst));
    // Left to right; the block fields stay as they are, only the ends swap.
    if (P1.X > P2.X) {
        std::swap(P1, P2);
        std::swap(sSrc, sDst);
    }
    FPoints.reserve(8);
    FPoints.push_back(P1);
    int x1 = WrapAdd(WrapMul(Sign(sSrc), FTol.X), P1.X);
    const int x2 = WrapAdd(WrapMul(Sign(sDst), FTol.X), P2.X);
    if (Sign(sSrc) == Sign(sDst))
        x1 = sSrc < 0 ? std::min(x1, x2) : std::max(x1, x2);
    FPoints.push_back({x1, P1.Y});
    const int ys = WrapAdd(WrapMul(FTol.Y, FAutoSrc), P1.Y);
    const int yd = WrapAdd(WrapMul(FTol.Y, FAutoDst), P2.Y);
    int y;
    if (sSrc < 0 && sDst > 0) {
        // Both ends face outward: go round, above the source or below the destination.
        y = ys < yd ? WrapSub(FSource->BoundsRect().Top, FTol.Y)
                    : WrapAdd(FDest->BoundsRect().Bottom, FTol.Y);
        FPoints.push_back({x1, y});
        // The vertical clearance is what the right edge gets here, as routes always had it.
        x1 = std::max(WrapAdd(FSource->BoundsRect().Right, FTol.Y), x2);
    } else {
        y = P2.Y;
    }
    const int ym = FAutoDst < 0 ? std::min(ys, yd) : FAutoDst > 0 ? std::max(ys, yd) : yd;
    FPoints.push_back({x1, y});
    FPoints.push_back({x1, ym});
    FPoints.push_back({x2, ym});
    if (ym != P2.Y)
        FPoints.push_back({x2, P2.Y});
    FPoints.push_back(P2);
}

int TDiagConnection::AddSegment(int Size, int Angle) {
    const TTouchGuard touch(this);
    TPoint P;
    if (FPoints.empty() && FSource && FSource->GetConPoint(FSrcConIdx, P, false)) {
        P.X = WrapSub(P.X, Sign(FSrcConIdx));
        FPoints.push_back(P);
    }
    if (FPoints.empty())
        return -2;
    TPoint Q;
    if (FPoints.size() == 1) {
        // The first stub always leaves the marker horizontally, outward.
        Q = {WrapAdd(FPoints[0].X, WrapMul(Size, Sign(FSrcConIdx))), FPoints[0].Y};
    } else {
        Q = NextPoint(Size, Angle);
    }
    if (Angle == 0 && FPoints.size() >= 2)
        FPoints.back() = Q;
    else
        AppendPoint(Q);
    return int(FPoints.size()) - 2;
}

TPoint TDiagConnection::NextPoint(int Size, int Angle) const {
    if (FPoints.size() < 2)
        return FPoints.empty() ? TPoint{} : FPoints.back();
    const TPoint last = FPoints.back();
    const TPoint prev = FPoints[FPoints.size() - 2];
    int ux = Sign(int64_t(last.X) - prev.X), uy = Sign(int64_t(last.Y) - prev.Y);
    if (Angle == 2 || Angle == -2) {
        std::swap(ux, uy);
        if (Angle < 1)
            uy = -uy;
        else
            ux = -ux;
    }
    return {WrapAdd(last.X, WrapMul(Size, ux)), WrapAdd(last.Y, WrapMul(Size, uy))};
}

int TDiagConnection::GetLastDirection() const {
    if (FPoints.size() < 2)
        return 0;
    const TPoint last = FPoints.back();
    const TPoint prev = FPoints[FPoints.size() - 2];
    if (last.X == prev.X)
        return 1;
    if (last.Y == prev.Y)
        return 2;
    return 0;
}

void TDiagConnection::AdjustPath(bool /*Flag*/) {
    const TTouchGuard touch(this);
    if (FPoints.size() < 2)
        return;
    const int n = int(FPoints.size());
    TPoint P;
    if (FSource && FSource->GetConPoint(FSrcConIdx, P, false)) {
        FPoints[0] = P;
        AlignSegmentByDiagObject(0, nullptr);
    }
    if (FDest && FDest->GetConPoint(FDstConIdx, P, false)) {
        FPoints.back() = P;
        if (FPoints.size() > 3)
            AlignSegmentByDiagObject(n - 2, nullptr);
    }
}

void TDiagConnection::ReversePoints() {
    const TTouchGuard touch(this);
    const TPoints copy = FPoints;
    std::reverse_copy(copy.begin(), copy.end(), FPoints.begin());
}

// --- hit testing

bool TDiagConnection::GetSegmentRect(int Index, TRect& R, int Tol) const {
    if (Index < 0 || Index >= int(FPoints.size()) - 1)
        return false;
    R = NormalizedRect(FPoints[size_t(Index)], FPoints[size_t(Index) + 1]);
    InflateRect(R, Tol, Tol);
    return true;
}

bool TDiagConnection::PointInSegmentRect(int Index, TPoint P, int Tol) const {
    TRect R;
    // Edges count as inside, so the limit is the same on every side of a segment.
    return GetSegmentRect(Index, R, Tol) && PointInRectInclusive(R, P);
}

bool TDiagConnection::NearPath(TPoint P, int Tol) const {
    if (FPoints.empty())
        return false;
    int l = FPoints[0].X, r = l, t = FPoints[0].Y, b = t;
    for (const TPoint& p : FPoints) {
        l = std::min(l, p.X);
        r = std::max(r, p.X);
        t = std::min(t, p.Y);
        b = std::max(b, p.Y);
    }
    return int64_t(P.X) >= int64_t(l) - Tol && int64_t(P.X) <= int64_t(r) + Tol &&
           int64_t(P.Y) >= int64_t(t) - Tol && int64_t(P.Y) <= int64_t(b) + Tol;
}

int TDiagConnection::FindNearestSegment(TPoint P, double* Distance, bool UseLimit,
                                        int ContainType) const {
    if (FPoints.empty())
        return -1;
    double dist = 0;
    const int high = int(FPoints.size()) - 1;
    const int index = FExactDistCalc
                          ? IndexOfMinDistance(FPoints.data(), high, P, &dist, ContainType)
                          : IndexOfMinDistanceQuick(FPoints.data(), high, P, &dist);
    if (index < 0)
        return index;
    if (UseLimit && (dist > double(10.0f) || !PointInSegmentRect(index, P, 10)))
        return -1;
    if (Distance)
        *Distance = dist;
    return index;
}

// --- painting

TColor TDiagConnection::GetActiveColor(int Index) const {
    if (Index - 1 == FSelectedIndex)
        return FSelSegmentColor;
    TColor live = 0;
    if (FOwner && FOwner->WireColor(this, live))
        return live;
    return 0;
}

void TDiagConnection::Paint() {
    if (FPoints.size() < 2 || !FOwner)
        return;
    TCanvas* c = FOwner->GetCanvas();
    if (!c)
        return;
    c->Pen.Width = FPenWidth;
    c->MoveTo(FPoints[0].X, FPoints[0].Y);
    const int high = int(FPoints.size()) - 1;
    for (int i = 1; i <= high; ++i) {
        c->Pen.Color = GetActiveColor(i);
        c->LineTo(FPoints[size_t(i)].X, FPoints[size_t(i)].Y);
    }
    if (!FDstCrossInfo.IsZero()) {
        // The junction dot where the wire lands on another one.
        const TPoint p = FPoints.back();
        const TColor old = c->Brush.Color;
        c->Brush.Color = GetActiveColor(high);
        c->Ellipse(WrapSub(p.X, 4), WrapSub(p.Y, 4), WrapAdd(p.X, 4), WrapAdd(p.Y, 4));
        c->Brush.Color = old;
    }
}

void TDiagConnection::SetSelectedIndex(int Value) {
    FSelectedIndex = Value;
    Paint();
}

void TDiagConnection::SetSrcObject(TDiagObject* Value) {
    const TTouchGuard touch(this);
    FSource = Value;
    if (!Value)
        FSrcConIdx = 0;
}

void TDiagConnection::SetDstObject(TDiagObject* Value) {
    const TTouchGuard touch(this);
    FDest = Value;
    if (!Value)
        FDstConIdx = 0;
}

// --- editing

bool TDiagConnection::FindCrossPoint(int Index, TPoint& P, int Dir) const {
    if (FPoints.empty())
        return false;
    if (Index < 0 || Index + 1 >= int(FPoints.size()))
        return false;
    P = QuickCrossCalc({FPoints[size_t(Index)], FPoints[size_t(Index) + 1]}, P, Dir);
    return P.X >= 0 && P.Y >= 0;
}

int TDiagConnection::LookForBestSegment(LongRec& LR, bool DoCalc) {
    LR = {};
    const int d = GetLastDirection();
    if (d != 0 && DoCalc && FOwner)
        LR = FOwner->FindBestSegment(FPoints.back(), this, true, 0);
    return d;
}

void TDiagConnection::EndConnection(TDiagObject* DiagObj, bool UseLastPoint) {
    const TTouchGuard touch(this);
    if (FPoints.size() < 2)
        return;
    TPoint P{};
    LongRec LR{};
    bool found = false;
    if (DiagObj) {
        found = DiagObj->GetConPoint(DiagObj->FSelMarkerIndex, P, false);
    } else {
        const int d = LookForBestSegment(LR, true);
        if (!LR.IsZero() && d != 0) {
            P = FPoints.back();
            found = FOwner->Items(LR.Hi - 1)->FindCrossPoint(LR.Lo - 1, P, d);
        }
    }
    if (!found)
        return;
    if (!UseLastPoint && (!DiagObj || DiagObj != FDest)) {
        AppendPoint(P);
        if (DiagObj) {
            FDest = DiagObj;
            FDstConIdx = DiagObj->FSelMarkerIndex;
            FDstKey = DiagObj->FObjKey;
        } else {
            FDstCrossInfo = LR;
        }
    } else {
        FPoints.back() = P;
        if (!DiagObj)
            FDstCrossInfo = LR;
    }
    Paint();
}

void TDiagConnection::EndConnectionWithSegment(LongRec LR) {
    const TTouchGuard touch(this);
    if (FPoints.size() < 2 || !FDstCrossInfo.IsZero())
        return;
    const int d = GetLastDirection();
    if (LR.IsZero() || d == 0)
        return;
    TPoint P = FPoints.back();
    if (FOwner->Items(LR.Hi - 1)->FindCrossPoint(LR.Lo - 1, P, d)) {
        FPoints.back() = P;
        FDstCrossInfo = LR;
        Paint();
    }
}

void TDiagConnection::AlignSegmentByDiagObject(int Index, TDiagObject* DiagObj) {
    const TTouchGuard touch(this);
    const int high = int(FPoints.size()) - 1;
    if (Index < 0 || Index >= high)
        return;
    TPoint R;
    bool have = DiagObj && DiagObj->GetConPoint(DiagObj->FSelMarkerIndex, R, false);
    if (!have) {
        if (Index == 0) {
            R = FPoints[0];
            have = true;
        } else if (Index == high - 1) {
            R = FPoints.back();
            have = true;
        }
    }
    if (!have)
        return;
    int k = Index + 1;
    // The end that sits on a destination marker stays put.
    if (FDest && k == high)
        k = Index;
    FPoints[size_t(k)].Y = R.Y;
    Paint();
}

void TDiagConnection::EditSegment(int Index, int& Size, int& Angle, bool DoRead) {
    const TTouchGuard touch(this);
    const int high = int(FPoints.size()) - 1;
    if (Index < 0 || Index >= high)
        return;
    TPoint& A = FPoints[size_t(Index)];
    TPoint& B = FPoints[size_t(Index) + 1];
    if (DoRead) {
        const double dx = double(B.X) - A.X, dy = double(B.Y) - A.Y;
        Size = RoundHalfEven(std::hypot(dx, dy));
        // The angle has always been computed in single precision.
        const float deg = std::atan2(float(dy), float(dx)) * (180.0f / std::numbers::pi_v<float>);
        Angle = RoundHalfEven(double(deg)) / 45;
        return;
    }
    const double rad = double(Angle) * 45.0 * std::numbers::pi / 180.0;
    const TPoint d{RoundHalfEven(Size * std::cos(rad)), RoundHalfEven(Size * std::sin(rad))};
    const bool fixedEnd = Index == high - 1 && (FDest || !FDstCrossInfo.IsZero());
    if (fixedEnd)
        A = {WrapSub(B.X, d.X), WrapSub(B.Y, d.Y)};
    else
        B = {WrapAdd(A.X, d.X), WrapAdd(A.Y, d.Y)};
    Paint();
}

int TDiagConnection::DeleteSegment(int Index) {
    const TTouchGuard touch(this);
    const int high = int(FPoints.size()) - 1;
    if (Index < 0 || Index >= high)
        return -1;
    if (Index == high - 1) {
        FDest = nullptr;
        FDstConIdx = 0;
        FDstCrossInfo = {};
    }
    FPoints.erase(FPoints.begin() + Index + 1);
    const int result = Index - 1 < 0 ? Index : Index - 1;
    if (FPoints.size() == 1) {
        FPoints.clear();
        FSource = nullptr;
        FSrcConIdx = 0;
        FSrcCrossInfo = {};
        FDest = nullptr;
        FDstConIdx = 0;
        FDstCrossInfo = {};
    }
    Paint();
    return result;
}

void TDiagConnection::ShiftByDelta(QObject* diag, TPoint Delta) {
    const TTouchGuard touch(this);
    const int h = int(FPoints.size()) - 1;
    if (h < 1)
        return;
    auto move = [&](int i) {
        FPoints[size_t(i)].X = WrapAdd(FPoints[size_t(i)].X, Delta.X);
        FPoints[size_t(i)].Y = WrapAdd(FPoints[size_t(i)].Y, Delta.Y);
    };
    if (FSource && diag == FSource.data()) {
        move(0);
        move(1);
    }
    if (FDest && diag == FDest.data()) {
        move(h);
        move(h - 1);
    }
}

void TDiagConnection::OnDeleteDiagObject(QObject* diag) {
    const TTouchGuard touch(this);
    if (!diag)
        return;
    if (diag == FSource.data()) {
        FSource = nullptr;
        FSrcConIdx = 0;
        if (FDest) {
            // Both ends then name the same block; the list keeps wires with an end block.
            ReversePoints();
            FSource = FDest;
            FSrcConIdx = FDstConIdx;
        } else {
            FPoints.clear();
        }
    } else if (diag == FDest.data()) {
        FDest = nullptr;
        FDstConIdx = 0;
    }
}

// --- records

void TDiagConnection::SaveToStream(TStream& Stream) const {
    TRecordWriter w(size_t(kConnectionRecordBase) + size_t(kPointSize) * FPoints.size());
    w.UInt(FSrcKey).UInt(FDstKey).Long(FSrcCrossInfo).Long(FDstCrossInfo);
    w.Int(int32_t(FPoints.size()));
    for (const TPoint& pt : FPoints)
        w.Point(pt);
    w.Int(FSrcConIdx).Int(FDstConIdx).Int(FSelectedIndex);
    w.Flush(Stream);
}

TDiagConnection* TDiagConnection::LoadFromStream(TStream& Stream, TDiagConnectList* AOwner) {
    TRecordReader head(Stream, kConnectionHeadSize - kIntSize);
    // A count <= 0 leaves the path empty; more points than the rest of the stream could hold,
    // or than a segment address can name, are refused before anything is allocated.
    const int32_t n = Stream.ReadCount("Point count", kPointSize, true, kMaxPathPoints);
    auto* c = new TDiagConnection(AOwner);
    try {
        c->FSrcKey = head.UInt();
        c->FDstKey = head.UInt();
        c->FSrcCrossInfo = head.Long();
        c->FDstCrossInfo = head.Long();
        if (n > 0) {
            TRecordReader points(Stream, int64_t(n) * kPointSize);
            c->FPoints.resize(size_t(n));
            for (TPoint& pt : c->FPoints)
                pt = points.Point();
            c->Touch();
        }
        TRecordReader tail(Stream, kConnectionTailSize);
        c->FSrcConIdx = tail.Int();
        c->FDstConIdx = tail.Int();
        c->FSelectedIndex = tail.Int();
    } catch (...) {
        delete c; // takes itself out of AOwner
        throw;
    }
    return c;
}

// --- kinds

TDiagObjConnection::TDiagObjConnection(TDiagConnectList* AOwner, TDiagObject* Source, int SrcConIdx,
                                       TDiagObject* Dest, int DstConIdx, TPoint PTol, int AutoSrc,
                                       int AutoDst, int8_t /*ConnectRadius*/)
    : TDiagConnection(AOwner) {
    FSource = Source;
    FSrcConIdx = SrcConIdx;
    FDest = Dest;
    FDstConIdx = DstConIdx;
    FTol = PTol;
    FAutoSrc = AutoSrc;
    FAutoDst = AutoDst;
    FIsEditable = Dest == nullptr;
    if (!FIsEditable)
        MakePath();
    Touch();
}

TDiagObjConnection::TDiagObjConnection(TDiagConnectList* AOwner, TDiagObject* Source, int SrcConIdx,
                                       int Size)
    : TDiagConnection(AOwner) {
    FSource = Source;
    FSrcKey = Source ? Source->FObjKey : 0;
    FSrcConIdx = SrcConIdx;
    FIsEditable = true;
    AddSegment(Size, 0);
    Touch();
}

TDiagLineConnection::TDiagLineConnection(TDiagConnectList* AOwner, TDiagObject*, int,
                                         TDiagObjConnection*, int, TPoint, double, int8_t)
    : TDiagConnection(AOwner) {}

} // namespace vde
