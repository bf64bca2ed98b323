#include "velDiagEdit/platform/colors.h"

#include <QGuiApplication>
#include <QPalette>
#include <cmath>
#include <vector>

namespace vde {

namespace {

struct SystemEntry {
    QPalette::ColorGroup group;
    QPalette::ColorRole role;
    TColor fallback; // classic value when no GUI application exists yet
};

// Indexes follow the classic system colour numbering.
const SystemEntry kSystem[] = {
    {QPalette::Active, QPalette::Button, 0xC8C8C8},            // 0 scroll bar
    {QPalette::Active, QPalette::Window, 0x000000},            // 1 desktop
    {QPalette::Active, QPalette::Highlight, 0xD1B499},         // 2 active caption
    {QPalette::Inactive, QPalette::Highlight, 0xDBCDBF},       // 3 inactive caption
    {QPalette::Active, QPalette::Window, 0xF0F0F0},            // 4 menu
    {QPalette::Active, QPalette::Base, 0xFFFFFF},              // 5 window
    {QPalette::Active, QPalette::Shadow, 0x646464},            // 6 window frame
    {QPalette::Active, QPalette::WindowText, 0x000000},        // 7 menu text
    {QPalette::Active, QPalette::Text, 0x000000},              // 8 window text
    {QPalette::Active, QPalette::HighlightedText, 0x000000},   // 9 caption text
    {QPalette::Active, QPalette::Mid, 0xB4B4B4},               // 10 active border
    {QPalette::Inactive, QPalette::Mid, 0xFCF7F4},             // 11 inactive border
    {QPalette::Active, QPalette::Dark, 0xABABAB},              // 12 app workspace
    {QPalette::Active, QPalette::Highlight, 0xFF9933},         // 13 highlight
    {QPalette::Active, QPalette::HighlightedText, 0xFFFFFF},   // 14 highlight text
    {QPalette::Active, QPalette::Button, 0xF0F0F0},            // 15 button face
    {QPalette::Active, QPalette::Dark, 0xA0A0A0},              // 16 button shadow
    {QPalette::Disabled, QPalette::Text, 0x6D6D6D},            // 17 gray text
    {QPalette::Active, QPalette::ButtonText, 0x000000},        // 18 button text
    {QPalette::Inactive, QPalette::HighlightedText, 0x000000}, // 19 inactive caption text
    {QPalette::Active, QPalette::Light, 0xFFFFFF},             // 20 button highlight
    {QPalette::Active, QPalette::Shadow, 0x696969},            // 21 3D dark shadow
    {QPalette::Active, QPalette::Midlight, 0xE3E3E3},          // 22 3D light
    {QPalette::Active, QPalette::ToolTipText, 0x000000},       // 23 info text
    {QPalette::Active, QPalette::ToolTipBase, 0xE1FFFF},       // 24 info background
};

TColor SystemColorOf(const QPalette& palette, TColor c) {
    const unsigned index = c & 0xFFu;
    if (index >= std::size(kSystem))
        return 0;
    return FromQColor(palette.color(kSystem[index].group, kSystem[index].role));
}

// Relative luminance and contrast ratio as the web's accessibility guidelines define them.
double Luminance(TColor c) {
    auto channel = [](unsigned v) {
        const double s = v / 255.0;
        return s <= 0.03928 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(c & 0xFF) + 0.7152 * channel((c >> 8) & 0xFF) +
           0.0722 * channel((c >> 16) & 0xFF);
}

double Contrast(TColor a, TColor b) {
    const double la = Luminance(a), lb = Luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

constexpr double kReadable = 4.5;

// fg, or fg moved towards black or white (whichever stands further from bg) in sixteenths
// until it reads at kReadable against bg; pure black or white always get there.
TColor Readable(TColor fg, TColor bg) {
    if (Contrast(fg, bg) >= kReadable)
        return fg;
    const TColor target = Contrast(0x000000, bg) >= Contrast(0xFFFFFF, bg) ? 0x000000 : 0xFFFFFF;
    TColor c = fg;
    for (int k = 1; k <= 16; ++k) {
        auto mix = [&](int shift) {
            const int a = int((fg >> shift) & 0xFF), b = int((target >> shift) & 0xFF);
            return TColor(a + (b - a) * k / 16) << shift;
        };
        c = mix(0) | mix(8) | mix(16);
        if (Contrast(c, bg) >= kReadable)
            break;
    }
    return c;
}

struct TLentPalette {
    const QPainter* Painter;
    QPalette Palette;
};

std::vector<TLentPalette>& LentPalettes() {
    static std::vector<TLentPalette> lent;
    return lent;
}

} // namespace

TColor PaletteColor(const QPalette& palette, TColor c, TColorUse use) {
    if (IsSystemColor(c))
        return SystemColorOf(palette, c);
    const auto role = [&](QPalette::ColorRole r) { return FromQColor(palette.color(r)); };
    const TColor window = role(QPalette::Window);
    switch (c & 0x00FFFFFFu) {
    case 0x000000:
        if (use == cuText)
            return Readable(role(QPalette::Text), role(QPalette::Base));
        return Readable(role(QPalette::WindowText), window);
    case 0x0000FF: // the frame of a block's shape
    case 0xFF00FF: // a selected segment, a selected marker
        return Readable(role(QPalette::Highlight), window);
    case 0xC0C0C0:
        // Base, not Button: the Fusion palettes give Button the window's own colour, and a
        // body should stand out from the surface it lies on.
        return use == cuBrush ? role(QPalette::Base) : c;
    case 0xFFFFFF:
        return use == cuBrush ? role(QPalette::Base) : c;
    default:
        return c;
    }
}

TPaletteScope::TPaletteScope(const QPainter* painter, const QPalette& palette) {
    LentPalettes().push_back({painter, palette});
}

TPaletteScope::~TPaletteScope() {
    LentPalettes().pop_back();
}

const QPalette* TPaletteScope::PaletteFor(const QPainter* painter) {
    const auto& lent = LentPalettes();
    for (auto it = lent.rbegin(); it != lent.rend(); ++it)
        if (it->Painter == painter)
            return &it->Palette;
    return nullptr;
}

TColor ColorToRGB(TColor c) {
    if (!IsSystemColor(c))
        return c & 0x00FFFFFFu;
    const unsigned index = c & 0xFFu;
    if (index >= std::size(kSystem))
        return 0;
    const SystemEntry& e = kSystem[index];
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr)
        return e.fallback;
    return FromQColor(QGuiApplication::palette().color(e.group, e.role));
}

QColor ToQColor(TColor c) {
    const TColor rgb = ColorToRGB(c);
    return QColor(int(rgb & 0xFF), int((rgb >> 8) & 0xFF), int((rgb >> 16) & 0xFF));
}

TColor FromQColor(const QColor& c) {
    return TColor(c.red()) | (TColor(c.green()) << 8) | (TColor(c.blue()) << 16);
}

} // namespace vde
