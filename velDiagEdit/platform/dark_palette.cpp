#include "velDiagEdit/platform/dark_palette.h"

namespace vde {

QPalette DarkFusionPalette() {
    QPalette p;
    const QColor window(53, 53, 53), base(42, 42, 42), highlight(42, 130, 218);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, Qt::white);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::ToolTipBase, Qt::white);
    p.setColor(QPalette::ToolTipText, Qt::white);
    p.setColor(QPalette::Text, Qt::white);
    p.setColor(QPalette::Button, window);
    p.setColor(QPalette::ButtonText, Qt::white);
    p.setColor(QPalette::BrightText, Qt::red);
    p.setColor(QPalette::Link, highlight);
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, Qt::black);
    for (QPalette::ColorRole r : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, r, QColor(127, 127, 127));
    return p;
}

} // namespace vde
