#pragma once
// Pictures of graphic controls, kept per look. Zoomed out, a view shows many blocks that look
// alike, and drawing each one anew (text shaping above all) is what a repaint costs. A control
// that draws only through its Canvas says what it draws; that list of operations, with the
// zoom, the position within a device pixel and the colours as painted, is the key of its
// picture, so a picture can never be stale: any change to what is drawn is a different key.
//
// A picture is used only where it is the same, pixel for pixel, as painting the control: the
// painter scales by a multiple of 1/256 (all of the zoom steps but 1/3 and 2/3) and nothing
// else, so device positions are exact; and the picture is painted twice, over black and over
// white, and kept only if every pixel is either the same in both (covered) or the background
// in both (untouched). Anything drawn with partial coverage over what lies below (smoothed text
// outside a filled box) is painted directly every time. Unscaled painting never uses it.

#include "velDiagEdit/velDiagEdit_export.h"

#include <cstddef>
#include <cstdint>

class QPainter;

namespace vde {

class TGraphicControl;

// Paints c (whose Paint draws only through its canvas) from its kept picture, making the
// picture first when needed; false when the caller must paint c itself.
bool PaintFromPictureCache(TGraphicControl* c, QPainter& p);

struct TPictureCacheStats {
    uint64_t Hits = 0;    // painted from a kept picture
    uint64_t Made = 0;    // pictures made and kept
    uint64_t Refused = 0; // looks found to depend on what lies below; painted directly
    size_t Pictures = 0;  // kept now
    size_t Bytes = 0;     // their pixels
};

VELDIAGEDIT_EXPORT TPictureCacheStats PictureCacheStats();
// A new paint of a surface begins: up to kPicturesMadePerPaint pictures are made in it, the
// other new looks painted directly, so a first paint of many looks never costs much more than
// painting them directly. The graphic host calls it.
VELDIAGEDIT_EXPORT void NotePicturePaint();
constexpr int kPicturesMadePerPaint = 64;
// On by default; off paints every control directly (for comparison and for tests).
VELDIAGEDIT_EXPORT void SetPictureCacheEnabled(bool enabled);
VELDIAGEDIT_EXPORT bool PictureCacheEnabled();
VELDIAGEDIT_EXPORT void ClearPictureCache();
// The most pixel bytes kept; the least recently used pictures go first.
constexpr size_t kPictureCacheBudget = size_t(32) << 20;

} // namespace vde
