#pragma once
// Shared set-up of the block tests: a parent widget with its block list, text metrics as the
// block canvas measures them, and byte builders for block records.

#include "common/test_util.h"
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/platform/canvas.h"

#include <QWidget>
#include <gtest/gtest.h>

namespace vde::test {

// Width and height of a text in the default block font at the given height.
inline int TextW(const QString& text, int height) {
    TFont f;
    f.Height = height;
    return FontTextWidth(f, text);
}
inline int TextH(int height) {
    TFont f;
    f.Height = height;
    return FontTextHeight(f);
}

// One 12-byte marker entry: P.X, P.Y, IOType, Size, two reserved bytes.
inline Bytes& Marker(Bytes& b, int32_t x, int32_t y, uint8_t ioType, uint8_t size,
                     uint8_t reserved0 = 0, uint8_t reserved1 = 0) {
    return b.i32(x).i32(y).u8(ioType).u8(size).u8(reserved0).u8(reserved1);
}

// One label entry: Start.X, Start.Y, Height, Str text.
inline Bytes& Label(Bytes& b, int32_t x, int32_t y, uint8_t height, const QString& text) {
    return b.i32(x).i32(y).u8(height).str(text);
}

inline Bytes& Append(Bytes& b, const std::vector<uint8_t>& more) {
    for (uint8_t v : more)
        b.u8(v);
    return b;
}

inline std::vector<uint8_t> Saved(const TDiagObject* o) {
    TMemoryStream s;
    o->SaveToStream(s);
    return s.Bytes();
}

inline std::vector<uint8_t> Saved(const TDiagObjectList& l) {
    TMemoryStream s;
    l.SaveToStream(s);
    return s.Bytes();
}

// A parent widget and the list of blocks on it; the list goes first, then the parent.
class BlockListTest : public ::testing::Test {
protected:
    QWidget Parent;
    TDiagObjectList List{&Parent};

    // A plain block (no kind of its own) with pen width 1.
    TDiagObject* NewBase(int l, int t, int w, int h) {
        return new TDiagObject(&List, l, t, w, h, doNone, true);
    }
};

} // namespace vde::test
