#pragma once
// A dark palette for the Fusion style, the one Qt applications commonly set (Qt 6.4 brings no
// dark scheme of its own): a host that offers a dark look can hand it to QApplication and to the
// diagram panels, whose surfaces follow it (TDiagContainer::SetFollowPalette).

#include "velDiagEdit/velDiagEdit_export.h"

#include <QPalette>

namespace vde {

// Window and buttons (53, 53, 53), base (42, 42, 42), white text, highlight and links
// (42, 130, 218) with black highlighted text, red bright text, and grey (127, 127, 127) text
// on disabled controls.
VELDIAGEDIT_EXPORT QPalette DarkFusionPalette();

} // namespace vde
