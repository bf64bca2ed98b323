#pragma once
// Value types shared by every subsystem: points, rectangles, word pairs, colours.

#include <cmath>
#include <cstdint>
#include <vector>

namespace vde {

// The one set of wrapping helpers: arithmetic on coordinates that may come from a stream, a
// dialog or a host wraps as 32-bit two's complement integers do, instead of overflowing.
inline int32_t WrapAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t WrapSub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int32_t WrapMul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
inline int32_t WrapNeg(int32_t a) {
    return static_cast<int32_t>(0u - static_cast<uint32_t>(a));
}

struct TPoint {
    int32_t X = 0;
    int32_t Y = 0;
    friend bool operator==(const TPoint&, const TPoint&) = default;
};

struct TRect {
    int32_t Left = 0;
    int32_t Top = 0;
    int32_t Right = 0;
    int32_t Bottom = 0;
    int32_t Width() const { return WrapSub(Right, Left); }
    int32_t Height() const { return WrapSub(Bottom, Top); }
    friend bool operator==(const TRect&, const TRect&) = default;
};

// Two 16-bit words; as a segment address Hi = connection + 1, Lo = segment + 1.
struct LongRec {
    uint16_t Lo = 0;
    uint16_t Hi = 0;
    friend bool operator==(const LongRec&, const LongRec&) = default;
    uint32_t Value() const { return uint32_t(Lo) | (uint32_t(Hi) << 16); }
    bool IsZero() const { return Lo == 0 && Hi == 0; }
    static LongRec FromValue(uint32_t v) { return {uint16_t(v & 0xFFFFu), uint16_t(v >> 16)}; }
};

// $00BBGGRR; $FF0000xx is system colour xx.
using TColor = uint32_t;

using TPoints = std::vector<TPoint>;

inline TPoint Point(int32_t x, int32_t y) {
    return {x, y};
}
inline TRect Rect(int32_t l, int32_t t, int32_t r, int32_t b) {
    return {l, t, r, b};
}

inline int Sign(int v) {
    return (v > 0) - (v < 0);
}
inline int Sign(int64_t v) {
    return (v > 0) - (v < 0);
}
inline int Sign(double v) {
    return (v > 0.0) - (v < 0.0);
}

// Banker's rounding, as every rounding in the system uses (ties go to the even integer).
inline double RoundHalfEvenF(double v) {
    double r = std::round(v);
    if (std::fabs(v - std::trunc(v)) == 0.5)
        r = 2.0 * std::round(v / 2.0);
    return r;
}

// Clamps to the 32-bit range so that no out-of-range conversion is ever undefined.
inline int32_t RoundHalfEven(double v) {
    if (!(v == v))
        return 0;
    double r = RoundHalfEvenF(v);
    if (r >= 2147483647.0)
        return INT32_MAX;
    if (r <= -2147483648.0)
        return INT32_MIN;
    return static_cast<int32_t>(r);
}

inline TRect NormalizedRect(TPoint a, TPoint b) {
    TRect r;
    r.Left = a.X < b.X ? a.X : b.X;
    r.Right = a.X < b.X ? b.X : a.X;
    r.Top = a.Y < b.Y ? a.Y : b.Y;
    r.Bottom = a.Y < b.Y ? b.Y : a.Y;
    return r;
}

inline void InflateRect(TRect& r, int32_t dx, int32_t dy) {
    r.Left = WrapSub(r.Left, dx);
    r.Top = WrapSub(r.Top, dy);
    r.Right = WrapAdd(r.Right, dx);
    r.Bottom = WrapAdd(r.Bottom, dy);
}

// Bounds inclusive, as the segment hit tests want.
inline bool PointInRectInclusive(const TRect& r, TPoint p) {
    return p.X >= r.Left && p.X <= r.Right && p.Y >= r.Top && p.Y <= r.Bottom;
}

inline double Distance(TPoint a, TPoint b) {
    return std::hypot(double(a.X) - double(b.X), double(a.Y) - double(b.Y));
}

} // namespace vde
