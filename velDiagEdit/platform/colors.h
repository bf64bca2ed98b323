#pragma once
// Colour values ($00BBGGRR, system colours as $FF0000xx) and their Qt equivalents.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QColor>

class QPainter;
class QPalette;

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

// ---- colours that follow a surface's palette

// What a colour is drawn as: a pen (lines, frames), a brush (fills) or text.
enum TColorUse : uint8_t { cuPen, cuBrush, cuText };

// The colour drawn for c on a surface that follows `palette`. The library's own default colours
// become palette roles: black lines, frames and markers the window text, the blocks' light-grey
// body and white fills the base colour, black label text the text colour, the red and magenta
// of a selection the highlight. A line or text colour that would read at less
// than 4.5:1 against what it is drawn on (the window, or the body for text) is moved towards
// black or white until it reads at 4.5:1. System colours resolve through `palette` instead of
// the application's; every other colour is drawn as it is.
VELDIAGEDIT_EXPORT TColor PaletteColor(const QPalette& palette, TColor c, TColorUse use);

// While alive, what is drawn through `painter` by the canvas takes its colours from
// PaletteColor with `palette`: how a surface that follows its palette lends it to the blocks
// and wires it paints.
class VELDIAGEDIT_EXPORT TPaletteScope {
public:
    TPaletteScope(const QPainter* painter, const QPalette& palette);
    ~TPaletteScope();
    TPaletteScope(const TPaletteScope&) = delete;
    TPaletteScope& operator=(const TPaletteScope&) = delete;
    // The palette lent to the painter, or none.
    static const QPalette* PaletteFor(const QPainter* painter);
};

} // namespace vde
