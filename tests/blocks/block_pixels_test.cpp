// The blocks as they appear: each kind rendered with its parent widget into an image.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/colors.h"

#include <QGuiApplication>
#include <QPalette>
#include <QTest>
#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

constexpr TPoint kAt{20, 10};
constexpr TColor kBody = 0xC0C0C0;
constexpr TColor kWhite = 0xFFFFFF;

class BlockPixelsTest : public BlockListTest, public ::testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        Parent.resize(200, 240);
        QPalette pal = Parent.palette();
        pal.setColor(QPalette::Window, Qt::white);
        Parent.setPalette(pal);
        Parent.setAutoFillBackground(true);
    }

    // The block of the kind under test with two inputs and one output of size 6.
    TDiagText* MakeBlock() {
        const auto kind = TDiagObjectType(GetParam());
        const int w = kind == doText ? 120 : kind == doRSTrigger ? 100 : 60;
        const int h = kind == doRSTrigger ? 200 : 100;
        auto* o = static_cast<TDiagText*>(
            List.CreateObjByDiagType(kind, {kAt.X, kAt.Y, kAt.X + w, kAt.Y + h}));
        if (kind == doText) {
            o->FMarkerSize = 6;
            o->SetInCount(2);
            o->SetOutCount(1);
        }
        return o;
    }

    QImage Render() {
        Parent.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&Parent));
        QImage img = WhiteImage(Parent.width(), Parent.height());
        Parent.render(&img);
        return img;
    }

    // Pixel in block coordinates.
    static TColor Px(const QImage& img, int x, int y) {
        return PixelColor(img, kAt.X + x, kAt.Y + y);
    }

    static TRect LabelCell(const TDiagObject* o, const TDiagLabel& l) {
        const int h = o->GetLabelHeight(l);
        return {l.Start.X, l.Start.Y, l.Start.X + TextW(l.Text, h), l.Start.Y + TextH(h)};
    }

    static bool InAnyLabelCell(const TDiagObject* o, TPoint p) {
        for (const auto& l : o->FLabels) {
            const TRect c = LabelCell(o, l);
            if (p.X >= c.Left && p.X < c.Right && p.Y >= c.Top && p.Y < c.Bottom)
                return true;
        }
        return false;
    }
};

std::string KindName(const ::testing::TestParamInfo<int>& info) {
    const char* names[] = {"None", "Text", "AndLogic", "OrLogic", "RSTrigger"};
    return names[info.param];
}

INSTANTIATE_TEST_SUITE_P(Kinds, BlockPixelsTest,
                         ::testing::Values(int(doText), int(doAndLogic), int(doOrLogic),
                                           int(doRSTrigger)),
                         KindName);

TEST_P(BlockPixelsTest, BodyIsFilledAndFramedInBlack) {
    TDiagText* o = MakeBlock();
    const QImage img = Render();
    const TRect m = o->FMainRect;
    const TPoint inside{m.Left + 3, m.Bottom - 4};
    ASSERT_FALSE(InAnyLabelCell(o, inside));
    EXPECT_EQ(Px(img, inside.X, inside.Y), kBody);
    EXPECT_EQ(Px(img, m.Right - 4, m.Top + 3), kBody);
    // The pen of width 2 lies on the body's edge and one pixel outside it.
    const int y = m.Top + 6, x = (m.Left + m.Right) / 2;
    EXPECT_EQ(Px(img, m.Left, y), clBlack);
    EXPECT_EQ(Px(img, m.Left - 1, y), clBlack);
    EXPECT_EQ(Px(img, m.Right - 1, y), clBlack);
    EXPECT_EQ(Px(img, x, m.Top), clBlack);
    EXPECT_EQ(Px(img, x, m.Bottom - 1), clBlack);
    EXPECT_EQ(Px(img, m.Left + 1, y), kBody);
    // Outside the body, off the leads, the parent shows through: no red frame.
    EXPECT_EQ(Px(img, 4, y), kWhite);
    EXPECT_EQ(Px(img, x, 1), kWhite);
}

TEST_P(BlockPixelsTest, MarkerLeadsAreBlack) {
    TDiagText* o = MakeBlock();
    const QImage img = Render();
    for (const auto& mk : o->FInputs) {
        EXPECT_EQ(Px(img, 4, mk.P.Y), clBlack);
        EXPECT_EQ(Px(img, 4, mk.P.Y - 1), clBlack);
        EXPECT_EQ(Px(img, 4, mk.P.Y + 3), kWhite);
    }
    const TDotMarker& out = o->FOutputs[0];
    EXPECT_EQ(Px(img, out.P.X - 3, out.P.Y), clBlack);
    EXPECT_EQ(Px(img, out.P.X - 3, out.P.Y + 3), kWhite);
}

TEST_P(BlockPixelsTest, SelectionShowsRedFrameMagentaMarkerAndInversionCircle) {
    TDiagText* o = MakeBlock();
    o->AllInputsType(itInversion, 0, 0);
    o->SetSelected(true);
    o->SetSelMarkerIndex(-2);
    const QImage img = Render();
    const TRect s = o->FShapeRect;
    const TRect m = o->FMainRect;
    const int y = m.Top + 6, x = (m.Left + m.Right) / 2;
    // Red frame of pen width 1 on the shape rectangle, filled with the button face colour.
    EXPECT_EQ(Px(img, x, s.Top), clRed);
    EXPECT_EQ(Px(img, s.Left, y), clRed);
    EXPECT_EQ(Px(img, s.Right - 1, y), clRed);
    EXPECT_EQ(Px(img, x, s.Bottom - 1), clRed);
    EXPECT_EQ(Px(img, 4, y), ColorToRGB(clBtnFace));
    // The selected input's lead is six pixels wide and magenta.
    const int sy = o->FInputs[1].P.Y;
    for (int dy = -3; dy <= 2; ++dy)
        EXPECT_EQ(Px(img, 4, sy + dy), clFuchsia) << dy;
    // The inversion circle sits on the body's left edge, white inside, black outline.
    const int cy = o->FInputs[0].P.Y;
    EXPECT_EQ(Px(img, m.Left, cy), kWhite);
    EXPECT_EQ(Px(img, m.Left, cy - 3), kWhite);
    EXPECT_EQ(Px(img, m.Left + 3, cy), kWhite);
    int outline = 0;
    for (int yy = cy - 8; yy <= cy - 4; ++yy)
        outline += Px(img, m.Left, yy) == clBlack;
    EXPECT_GT(outline, 0);
    // The unselected output stays black.
    EXPECT_EQ(Px(img, o->FOutputs[0].P.X - 3, o->FOutputs[0].P.Y), clBlack);
}

TEST_P(BlockPixelsTest, LabelTextDrawsGlyphsOnTheBodyColour) {
    TDiagText* o = MakeBlock();
    const QImage img = Render();
    ASSERT_FALSE(o->FLabels.empty());
    for (const auto& l : o->FLabels) {
        const TRect c = LabelCell(o, l);
        int body = 0, dark = 0;
        for (int yy = c.Top; yy < c.Bottom; ++yy)
            for (int xx = c.Left; xx < c.Right; ++xx) {
                const TColor p = Px(img, xx, yy);
                if (p == kBody)
                    ++body;
                else if ((p & 0xFF) < 0x60 && ((p >> 8) & 0xFF) < 0x60 && (p >> 16) < 0x60)
                    ++dark;
            }
        EXPECT_GT(dark, 0) << l.Text.toStdString();
        EXPECT_GT(body, dark) << l.Text.toStdString();
    }
}

TEST_P(BlockPixelsTest, LabelTextStaysDarkOnTheBodyUnderADarkPalette) {
    // A dark desktop: window text is near white. The body keeps its fixed light grey, so text
    // in the palette's colour would vanish on it.
    const QPalette before = QGuiApplication::palette();
    QPalette night = before;
    for (QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText})
        night.setColor(role, QColor(0xF0, 0xF0, 0xF0));
    QGuiApplication::setPalette(night);
    ASSERT_EQ(ColorToRGB(clWindowText), 0xF0F0F0u);
    TDiagText* o = MakeBlock();
    const QImage img = Render();
    QGuiApplication::setPalette(before);
    ASSERT_FALSE(o->FLabels.empty());
    for (const auto& l : o->FLabels) {
        const TRect c = LabelCell(o, l);
        int dark = 0, light = 0;
        for (int yy = c.Top; yy < c.Bottom; ++yy)
            for (int xx = c.Left; xx < c.Right; ++xx) {
                const TColor p = Px(img, xx, yy);
                if ((p & 0xFF) < 0x60 && ((p >> 8) & 0xFF) < 0x60 && (p >> 16) < 0x60)
                    ++dark;
                else if ((p & 0xFF) > 0xE0 && ((p >> 8) & 0xFF) > 0xE0 && (p >> 16) > 0xE0)
                    ++light;
            }
        EXPECT_GT(dark, 0) << l.Text.toStdString();
        EXPECT_EQ(light, 0) << l.Text.toStdString();
    }
}

TEST(BlockPixelsRS, MidLinesLieLeftOfAndAboveTheRegionBorders) {
    QWidget parent;
    parent.resize(200, 240);
    QPalette pal = parent.palette();
    pal.setColor(QPalette::Window, Qt::white);
    parent.setPalette(pal);
    parent.setAutoFillBackground(true);
    TDiagObjectList list(&parent);
    TDiagObject* r = list.CreateObjByDiagType(doRSTrigger, {20, 10, 120, 210});
    parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&parent));
    QImage img = WhiteImage(200, 240);
    parent.render(&img);
    auto px = [&](int x, int y) { return PixelColor(img, 20 + x, 10 + y); };
    // Horizontal line at y 98 (pen 2: rows 97, 98), vertical at x 54 (columns 53, 54).
    EXPECT_EQ(px(14, 98), clBlack);
    EXPECT_EQ(px(14, 97), clBlack);
    EXPECT_EQ(px(14, 100), kBody);
    EXPECT_EQ(px(54, 150), clBlack);
    EXPECT_EQ(px(53, 150), clBlack);
    EXPECT_EQ(px(56, 150), kBody);
    // The region borders (x 63, y 101) carry no line.
    EXPECT_EQ(px(63, 150), kBody);
    EXPECT_EQ(px(14, 101), kBody);
    EXPECT_EQ(r->FRegions[2].R.Left, 63);
}

} // namespace
