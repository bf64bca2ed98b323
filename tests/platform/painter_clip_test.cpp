// Painting far outside the device: lines, rectangles, ellipses and text whose coordinates reach
// the ends of the 32-bit range are cut to the device first, with the same pixels on the device
// as the whole shape would have, and with no overflow.

#include "common/test_util.h"
#include "velDiagEdit/platform/canvas.h"

#include <QImage>
#include <gtest/gtest.h>
#include <set>
#include <utility>

using namespace vde;
using vde::test::PixelColor;
using vde::test::WhiteImage;

namespace {

template <class F> QImage Draw(int w, int h, F&& f) {
    QImage img = WhiteImage(w, h);
    {
        TCanvas c;
        c.SetHandle(&img);
        c.Pen.Color = clBlack;
        f(c);
    }
    return img;
}

std::set<std::pair<int, int>> BlackPixels(const QImage& img) {
    std::set<std::pair<int, int>> s;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            if (PixelColor(img, x, y) == clBlack)
                s.insert({x, y});
    return s;
}

// The pixels of a 1-pixel line as the step-by-step error-term walk lays them, from the line's
// own start, without its end pixel; only those inside w x h are kept.
std::set<std::pair<int, int>> WalkedPixels(int64_t x0, int64_t y0, int64_t x1, int64_t y1, int w,
                                           int h) {
    std::set<std::pair<int, int>> s;
    const int64_t dx = std::abs(x1 - x0), sx = x0 < x1 ? 1 : -1;
    const int64_t dy = -std::abs(y1 - y0), sy = y0 < y1 ? 1 : -1;
    int64_t err = dx + dy, x = x0, y = y0;
    while (!(x == x1 && y == y1)) {
        if (x >= 0 && x < w && y >= 0 && y < h)
            s.insert({int(x), int(y)});
        const int64_t e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y += sy;
        }
    }
    return s;
}

} // namespace

TEST(PainterClip, LineAcrossTheWholeIntRangeDrawsItsDiagonalOnTheImage) {
    // 2000000000 - (-2000000000) does not fit in 32 bits; the line is y = x.
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.MoveTo(-2000000000, -2000000000);
        c.LineTo(2000000000, 2000000000);
    });
    for (int i = 0; i < 48; ++i) {
        EXPECT_EQ(PixelColor(img, i, i), clBlack) << i;
        EXPECT_EQ(PixelColor(img, i + 1, i), clWhite) << i;
    }
    EXPECT_EQ(BlackPixels(img).size(), 48u);
}

TEST(PainterClip, HorizontalLineFromEndToEndOfTheIntRangeFillsItsRow) {
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.MoveTo(INT32_MIN, 7);
        c.LineTo(INT32_MAX, 7);
    });
    for (int x = 0; x < 64; ++x)
        EXPECT_EQ(PixelColor(img, x, 7), clBlack) << x;
    EXPECT_EQ(BlackPixels(img).size(), 64u);
}

TEST(PainterClip, WideVerticalLineThroughTheImageCoversTwoColumns) {
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Pen.Width = 2;
        c.MoveTo(20, INT32_MAX);
        c.LineTo(20, INT32_MIN);
    });
    // A 2-pixel pen is centred with offsets -1..0.
    for (int y = 0; y < 48; ++y) {
        EXPECT_EQ(PixelColor(img, 19, y), clBlack) << y;
        EXPECT_EQ(PixelColor(img, 20, y), clBlack) << y;
    }
    EXPECT_EQ(BlackPixels(img).size(), 96u);
}

TEST(PainterClip, CutLinesKeepThePixelsOfTheWholeLine) {
    struct L {
        int64_t x0, y0, x1, y1;
    };
    for (const L l : {L{-1000, -503, 1000, 500}, L{-700, 300, 700, -300}, L{5, -3000, 40, 3000},
                      L{-2000000000, -1, 2000000000, 47}, L{63, -1000000007, -1, 1000000000},
                      L{-100, 20, 100, 21}, L{30, 100000, 31, -100000}}) {
        SCOPED_TRACE(::testing::Message() << l.x0 << "," << l.y0 << " " << l.x1 << "," << l.y1);
        const QImage img = Draw(64, 48, [&](TCanvas& c) {
            c.MoveTo(int32_t(l.x0), int32_t(l.y0));
            c.LineTo(int32_t(l.x1), int32_t(l.y1));
        });
        EXPECT_EQ(BlackPixels(img), WalkedPixels(l.x0, l.y0, l.x1, l.y1, 64, 48));
    }
}

TEST(PainterClip, DashesOfACutLineKeepTheirPlace) {
    // The dashed line started 1000 pixels left of the image draws on it what the same line
    // drawn from x = 0 draws at 1000..1063 of a wide image.
    const QImage cut = Draw(64, 4, [](TCanvas& c) {
        c.Pen.Style = psDash;
        c.MoveTo(-1000, 1);
        c.LineTo(200, 1);
    });
    const QImage whole = Draw(1200, 4, [](TCanvas& c) {
        c.Pen.Style = psDash;
        c.MoveTo(0, 1);
        c.LineTo(1200, 1);
    });
    int black = 0;
    for (int x = 0; x < 64; ++x) {
        EXPECT_EQ(PixelColor(cut, x, 1), PixelColor(whole, 1000 + x, 1)) << x;
        black += PixelColor(cut, x, 1) == clBlack;
    }
    // Dashes of 18 on, 6 off: some of each on the image.
    EXPECT_GT(black, 0);
    EXPECT_LT(black, 64);
}

TEST(PainterClip, HugeRectangleFillsTheImageAndItsFarFrameDrawsNothing) {
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Brush.Color = 0x00FF00;
        c.Rectangle(-2000000000, -2000000000, 2000000000, 2000000000);
    });
    for (int y = 0; y < 48; y += 7)
        for (int x = 0; x < 64; x += 9)
            EXPECT_EQ(PixelColor(img, x, y), TColor(0x00FF00)) << x << "," << y;
}

TEST(PainterClip, RectangleFromEndToEndOfTheIntRangeFillsTheImage) {
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Brush.Color = 0x00FF00;
        c.FillRect({INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX});
    });
    EXPECT_EQ(PixelColor(img, 0, 0), TColor(0x00FF00));
    EXPECT_EQ(PixelColor(img, 63, 47), TColor(0x00FF00));
}

TEST(PainterClip, RectangleFrameEdgeCrossingTheImageIsDrawn) {
    // The left edge of a rectangle reaching far up, down and right runs through x = 10.
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Brush.Style = bsClear;
        c.Rectangle(10, INT32_MIN, INT32_MAX, INT32_MAX);
    });
    for (int y = 0; y < 48; ++y)
        EXPECT_EQ(PixelColor(img, 10, y), clBlack) << y;
    EXPECT_EQ(PixelColor(img, 11, 20), clWhite);
    EXPECT_EQ(BlackPixels(img).size(), 48u);
}

TEST(PainterClip, EllipseAndTextFarOutsideDrawNothing) {
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Brush.Color = clBlack;
        c.Ellipse(INT32_MAX - 8, INT32_MAX - 8, INT32_MAX, INT32_MAX);
        c.Ellipse(INT32_MIN, 0, INT32_MIN + 8, 8);
        c.TextOut(INT32_MAX - 2, INT32_MAX - 2, QStringLiteral("far"));
        c.TextOut(INT32_MIN, INT32_MIN, QStringLiteral("far"));
    });
    EXPECT_TRUE(BlackPixels(img).empty());
}

TEST(PainterClip, TextOutAtTheLargestXLeavesThePenPositionWrapped) {
    TCanvas c;
    const int w = c.TextWidth(QStringLiteral("ab"));
    ASSERT_GT(w, 0);
    c.TextOut(INT32_MAX, 0, QStringLiteral("ab"));
    // INT32_MAX + w wraps to INT32_MIN + w - 1.
    EXPECT_EQ(c.PenPos.X, INT32_MIN + (w - 1));
}

TEST(PainterClip, WidePenStampsAtTheEdgeOfTheIntRangeDrawNothingAndDoNotOverflow) {
    // A steep line whose x lies at the largest ints: every pen square of it is stepped (its y is
    // on the image), and each square's far edge (x - 1 + 4) lies past the 32-bit range.
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Pen.Width = 4;
        c.MoveTo(INT32_MAX, 0);
        c.LineTo(INT32_MAX - 20, 47);
        c.MoveTo(INT32_MIN, 0);
        c.LineTo(INT32_MIN + 20, 47);
    });
    EXPECT_TRUE(BlackPixels(img).empty());
}

TEST(PainterClip, SteepWideLineAcrossTheIntRangeStampsItsMiddleColumnsOnTheImage) {
    // From (30, -2147483000) to (32, 2147483000): two minor steps, a quarter and three quarters
    // of the way along, so every row of the image (the middle of the line) has x = 31, and the
    // 2-pixel pen square at offsets -1..0 covers columns 30 and 31.
    const QImage img = Draw(64, 48, [](TCanvas& c) {
        c.Pen.Width = 2;
        c.MoveTo(30, -2147483000);
        c.LineTo(32, 2147483000);
    });
    for (int y = 0; y < 48; ++y) {
        EXPECT_EQ(PixelColor(img, 30, y), clBlack) << y;
        EXPECT_EQ(PixelColor(img, 31, y), clBlack) << y;
    }
    EXPECT_EQ(BlackPixels(img).size(), 96u);
}
