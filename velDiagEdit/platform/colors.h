#pragma once
// Colour values ($00BBGGRR, system colours as $FF0000xx) and their Qt equivalents.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QColor>

namespace vde {

constexpr TColor clBlack = 0x000000;
constexpr TColor clMaroon = 0x000080;
constexpr TColor clGreen = 0x008000;
constexpr TColor clOlive = 0x008080;
constexpr TColor clNavy = 0x800000;
constexpr TColor clPurple = 0x800080;
constexpr TColor clTeal = 0x808000;
constexpr TColor clGray = 0x808080;
constexpr TColor clSilver = 0xC0C0C0;
constexpr TColor clRed = 0x0000FF;
constexpr TColor clLime = 0x00FF00;
constexpr TColor clYellow = 0x00FFFF;
constexpr TColor clBlue = 0xFF0000;
constexpr TColor clFuchsia = 0xFF00FF;
constexpr TColor clAqua = 0xFFFF00;
constexpr TColor clWhite = 0xFFFFFF;
constexpr TColor clNone = 0x1FFFFFFF;
constexpr TColor clDefault = 0x20000000;

constexpr TColor clSystemColor = 0xFF000000;
constexpr TColor clWindow = clSystemColor | 5;
constexpr TColor clWindowText = clSystemColor | 8;
constexpr TColor clHighlight = clSystemColor | 13;
constexpr TColor clHighlightText = clSystemColor | 14;
constexpr TColor clBtnFace = clSystemColor | 15;
constexpr TColor clBtnShadow = clSystemColor | 16;
constexpr TColor clGrayText = clSystemColor | 17;
constexpr TColor clBtnText = clSystemColor | 18;
constexpr TColor clBtnHighlight = clSystemColor | 20;

inline bool IsSystemColor(TColor c) {
    return (c & 0xFF000000u) == clSystemColor;
}

// RGB value of a colour: system colours resolve through the application's palette
// (so blocks blend with the host's style), plain colours are taken as they are.
VELDIAGEDIT_EXPORT TColor ColorToRGB(TColor c);
VELDIAGEDIT_EXPORT QColor ToQColor(TColor c);
VELDIAGEDIT_EXPORT TColor FromQColor(const QColor& c);

} // namespace vde
