#include "velDiagEdit/geometry/geometry.h"

#include <cfloat>
#include <cmath>

namespace vde {

namespace {

// The computations run in extended precision (80-bit long double on x86-64).
using Ext = long double;

int32_t RoundExt(Ext v) {
    const Ext r = std::nearbyintl(v); // default rounding mode: ties to even
    if (!(r == r))
        return 0;
    if (r >= Ext(INT32_MAX))
        return INT32_MAX;
    if (r <= Ext(INT32_MIN))
        return INT32_MIN;
    return static_cast<int32_t>(r);
}

Ext Len(TPoint a, TPoint b) {
    const Ext dx = Ext(a.X) - Ext(b.X), dy = Ext(a.Y) - Ext(b.Y);
    return std::sqrt(dx * dx + dy * dy);
}

int64_t QuickDistance(TPoint A, TPoint B, TPoint P) {
    const int64_t ax = int64_t(A.X) - P.X, ay = int64_t(A.Y) - P.Y;
    const int64_t bx = int64_t(B.X) - P.X, by = int64_t(B.Y) - P.Y;
    if (ax == bx && Sign(ay) != Sign(by))
        return ax < 0 ? -ax : ax;
    if (ay == by && Sign(ax) != Sign(bx))
        return ay < 0 ? -ay : ay;
    return 2147483647;
}

} // namespace

TPoint QuickCrossCalc(const TIntSegment& Segment, const TPoint& P, int Mode) {
    TPoint result{-1, -1};
    if (Mode < 1)
        return result;
    result = P;
    const Ext dx = Ext(Segment[1].X) - Segment[0].X, dy = Ext(Segment[1].Y) - Segment[0].Y;
    const Ext ex = Ext(P.X) - Segment[0].X, ey = Ext(P.Y) - Segment[0].Y;
    if (Mode == 1)
        result.Y = dx != 0 ? RoundExt(Segment[0].Y + dy * (ex / dx)) : -1;
    else if (Mode == 2)
        result.X = dy != 0 ? RoundExt(Segment[0].X + dx * (ey / dy)) : -1;
    return result;
}

int IndexOfMinDistanceQuick(const TPoint* Points, int High, const TPoint& P, double* Dist) {
    if (High + 1 < 2 || Points == nullptr)
        return -1;
    int64_t best = 2147483647;
    int index = -1;
    for (int i = 0; i < High; ++i) {
        const int64_t q = QuickDistance(Points[i], Points[i + 1], P);
        if (q < best) {
            best = q;
            index = i;
        }
    }
    if (Dist)
        *Dist = double(best);
    return index;
}

TSides TriangleSides(const TIntTriangle& T) {
    return {double(Len(T[1], T[2])), double(Len(T[0], T[2])), double(Len(T[0], T[1]))};
}

int IndexOfMinDistance(const TPoint* Points, int High, const TPoint& P, double* Dist, int Mode) {
    if (High + 1 <= 1 || Points == nullptr)
        return -1;
    Ext best = DBL_MAX;
    int index = -1;
    for (int i = High - 1; i >= 0; --i) {
        const TPoint A = Points[i], B = Points[i + 1];
        const TRect r = NormalizedRect(A, B);
        const bool inX = r.Left <= P.X && P.X <= r.Right;
        const bool inY = r.Top <= P.Y && P.Y <= r.Bottom;
        if ((Mode == 1 && !inX) || (Mode == 2 && !inY) || (Mode == 3 && !(inX && inY)))
            continue;
        const Ext s0 = Len(B, P), s1 = Len(A, P), s2 = Len(A, B);
        Ext d = DBL_MAX;
        if (s2 != 0) {
            const Ext s = (s0 + s1 + s2) * 0.5L;
            // Collinear points can make the product a hair below zero.
            Ext prod = s * (s - s0) * (s - s1) * (s - s2);
            if (prod < 0)
                prod = 0;
            d = 2.0L * std::sqrt(prod) / s2;
        }
        if (d < best) {
            best = d;
            index = i;
        }
    }
    if (Dist)
        *Dist = double(best);
    return index;
}

} // namespace vde
