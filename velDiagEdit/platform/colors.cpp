#include "velDiagEdit/platform/colors.h"

#include <QGuiApplication>
#include <QPalette>

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

} // namespace

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
