#include "common/test_util.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/painter_backend.h"
#include "velDiagEdit/platform/recording_backend.h"

#include <QPainter>
#include <QWidget>
#include <gtest/gtest.h>

using namespace vde;
using vde::test::PixelColor;
using vde::test::WhiteImage;

namespace {

// Draws through a canvas on a fresh white image and returns it.
template <class F> QImage Draw(int w, int h, F&& f) {
    QImage img = WhiteImage(w, h);
    {
        TCanvas c;
        c.SetHandle(&img);
        f(c);
    }
    return img;
}

} // namespace

TEST(RecordingCanvas, LogsOperationsWithPenAndBrush) {
    TRecordingBackend rec;
    TCanvas c;
    c.SetBackend(&rec);
    c.Pen.Width = 2;
    c.Pen.Color = 0x0000FF;
    c.Brush.Color = 0xC0C0C0;
    c.MoveTo(1, 2);
    c.LineTo(5, 2);
    c.Rectangle(0, 0, 10, 10);
    c.Ellipse(1, 1, 9, 9);
    EXPECT_EQ(rec.Strings(), QStringList({"MoveTo 1,2", "Line 1,2 5,2 w2 c$0000FF",
                                          "Rect 0,0,10,10 w2 c$0000FF b$C0C0C0",
                                          "Ellipse 1,1,9,9 w2 c$0000FF b$C0C0C0"}));
    EXPECT_EQ(c.PenPos, (TPoint{5, 2}));
}

TEST(RasterCanvas, LineToLeavesOutItsEndPixel) {
    QImage img = Draw(20, 5, [](TCanvas& c) {
        c.Pen.Color = clBlack;
        c.MoveTo(2, 2);
        c.LineTo(10, 2);
    });
    EXPECT_EQ(PixelColor(img, 2, 2), clBlack);
    EXPECT_EQ(PixelColor(img, 9, 2), clBlack);
    EXPECT_EQ(PixelColor(img, 10, 2), clWhite);
    EXPECT_EQ(PixelColor(img, 1, 2), clWhite);
    EXPECT_EQ(PixelColor(img, 5, 1), clWhite);
    EXPECT_EQ(PixelColor(img, 5, 3), clWhite);
}

TEST(RasterCanvas, DiagonalThinLineLeavesOutItsEndPixel) {
    QImage img = Draw(10, 10, [](TCanvas& c) {
        c.MoveTo(0, 0);
        c.LineTo(4, 4);
    });
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(PixelColor(img, i, i), clBlack) << i;
    EXPECT_EQ(PixelColor(img, 4, 4), clWhite);
}

TEST(RasterCanvas, WidePenIsCentredOnTheLine) {
    QImage img = Draw(20, 10, [](TCanvas& c) {
        c.Pen.Width = 2;
        c.MoveTo(2, 5);
        c.LineTo(10, 5);
    });
    // width 2: rows 4 and 5, columns 1..10
    EXPECT_EQ(PixelColor(img, 5, 4), clBlack);
    EXPECT_EQ(PixelColor(img, 5, 5), clBlack);
    EXPECT_EQ(PixelColor(img, 5, 3), clWhite);
    EXPECT_EQ(PixelColor(img, 5, 6), clWhite);
    EXPECT_EQ(PixelColor(img, 1, 5), clBlack);
    EXPECT_EQ(PixelColor(img, 10, 5), clBlack);
    EXPECT_EQ(PixelColor(img, 11, 5), clWhite);
    QImage img3 = Draw(20, 10, [](TCanvas& c) {
        c.Pen.Width = 3;
        c.MoveTo(5, 1);
        c.LineTo(5, 8);
    });
    EXPECT_EQ(PixelColor(img3, 4, 4), clBlack);
    EXPECT_EQ(PixelColor(img3, 6, 4), clBlack);
    EXPECT_EQ(PixelColor(img3, 3, 4), clWhite);
    EXPECT_EQ(PixelColor(img3, 7, 4), clWhite);
}

TEST(RasterCanvas, RectangleCoversLeftToRightMinusOne) {
    QImage img = Draw(20, 20, [](TCanvas& c) {
        c.Pen.Color = 0x0000FF;
        c.Brush.Color = 0x00FF00;
        c.Rectangle(2, 3, 12, 8);
    });
    EXPECT_EQ(PixelColor(img, 2, 3), 0x0000FFu);
    EXPECT_EQ(PixelColor(img, 11, 7), 0x0000FFu);
    EXPECT_EQ(PixelColor(img, 12, 7), clWhite);
    EXPECT_EQ(PixelColor(img, 11, 8), clWhite);
    EXPECT_EQ(PixelColor(img, 5, 5), 0x00FF00u);
}

TEST(RasterCanvas, FillRectHasNoFrame) {
    QImage img = Draw(10, 10, [](TCanvas& c) {
        c.Brush.Color = 0xFF0000;
        c.FillRect({1, 1, 4, 4});
    });
    EXPECT_EQ(PixelColor(img, 1, 1), 0xFF0000u);
    EXPECT_EQ(PixelColor(img, 3, 3), 0xFF0000u);
    EXPECT_EQ(PixelColor(img, 4, 4), clWhite);
}

TEST(RasterCanvas, EllipseStaysInsideItsBounds) {
    QImage img = Draw(20, 20, [](TCanvas& c) {
        c.Brush.Color = 0x00FF00;
        c.Ellipse(2, 2, 12, 12);
    });
    EXPECT_EQ(PixelColor(img, 7, 7), 0x00FF00u);
    EXPECT_EQ(PixelColor(img, 7, 2), clBlack);  // top of the outline
    EXPECT_EQ(PixelColor(img, 7, 11), clBlack); // bottom row R-1
    EXPECT_EQ(PixelColor(img, 7, 12), clWhite);
    EXPECT_EQ(PixelColor(img, 12, 7), clWhite);
    EXPECT_EQ(PixelColor(img, 2, 2), clWhite); // corner outside the ellipse
}

TEST(RasterCanvas, TextIsMeasuredAsDrawn) {
    TCanvas probe;
    probe.Font.Height = 26;
    const QString text = QStringLiteral("R|S&1");
    const int tw = probe.TextWidth(text);
    const int th = probe.TextHeight(text);
    EXPECT_LE(th, 26);
    EXPECT_GE(th, 22);
    QImage img = Draw(200, 60, [&](TCanvas& c) {
        c.Font.Height = 26;
        c.Font.Color = clBlack;
        c.Brush.Color = 0xC0C0C0;
        c.TextOut(10, 10, text);
    });
    // The cell is filled with the brush exactly: tw x th from (10, 10).
    EXPECT_EQ(PixelColor(img, 9, 12), clWhite);
    EXPECT_EQ(PixelColor(img, 10 + tw, 12), clWhite);
    EXPECT_EQ(PixelColor(img, 10, 10 + th), clWhite);
    int ink = 0;
    for (int y = 10; y < 10 + th; ++y)
        for (int x = 10; x < 10 + tw; ++x)
            ink += PixelColor(img, x, y) != 0xC0C0C0u;
    EXPECT_GT(ink, 20);
}

TEST(RasterCanvas, ClearBrushTextLeavesBackground) {
    QImage img = Draw(100, 40, [](TCanvas& c) {
        c.Brush.Style = bsClear;
        c.TextOut(5, 5, QStringLiteral("  "));
    });
    EXPECT_EQ(PixelColor(img, 6, 8), clWhite);
}

TEST(DeviceCanvas, UsesThePainterThatIsActiveOnTheDevice) {
    QImage img = WhiteImage(10, 10);
    QPainter host(&img);
    TCanvas c;
    c.SetHandle(&img);
    c.Brush.Color = 0xFF0000;
    c.FillRect({0, 0, 2, 2});
    host.end();
    EXPECT_EQ(PixelColor(img, 1, 1), 0xFF0000u);
}

TEST(WidgetCanvas, DrawingOutsidePaintAsksForRepaint) {
    QWidget w;
    w.resize(20, 20);
    TCanvas c;
    c.SetHandle(&w);
    int asked = 0;
    c.OnRequestPaint = [&] { ++asked; };
    c.MoveTo(0, 0);
    c.LineTo(5, 5);
    c.Rectangle(0, 0, 3, 3);
    EXPECT_EQ(asked, 2);
}

TEST(PaintScope, TheInnermostScopeOfADeviceLendsItsPainterAndTheOuterOneComesBack) {
    QWidget w; // the device the canvas draws on; it is not painting itself
    w.resize(10, 10);
    QImage outerImage = WhiteImage(10, 10), innerImage = WhiteImage(10, 10);
    QPainter outerPainter(&outerImage), innerPainter(&innerImage);
    TCanvas c;
    c.SetHandle(&w);
    int asked = 0;
    c.OnRequestPaint = [&] { ++asked; };
    c.Brush.Color = 0x0000FF;
    {
        TPaintScope outer(&w, &outerPainter);
        EXPECT_EQ(TPaintScope::PainterFor(&w), &outerPainter);
        {
            TPaintScope inner(&w, &innerPainter);
            EXPECT_EQ(TPaintScope::PainterFor(&w), &innerPainter);
            c.FillRect({0, 0, 2, 2});
        }
        EXPECT_EQ(TPaintScope::PainterFor(&w), &outerPainter);
        c.FillRect({5, 5, 7, 7});
    }
    EXPECT_EQ(TPaintScope::PainterFor(&w), nullptr);
    outerPainter.end();
    innerPainter.end();
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(PixelColor(innerImage, 1, 1), 0x0000FFu);
    EXPECT_EQ(PixelColor(innerImage, 6, 6), clWhite);
    EXPECT_EQ(PixelColor(outerImage, 6, 6), 0x0000FFu);
    EXPECT_EQ(PixelColor(outerImage, 1, 1), clWhite);
}

TEST(PaintScope, AnInnerScopeOfAnotherDeviceLeavesTheOuterDeviceItsPainter) {
    QWidget w1, w2;
    QImage i1 = WhiteImage(4, 4), i2 = WhiteImage(4, 4);
    QPainter p1(&i1), p2(&i2);
    TPaintScope outer(&w1, &p1);
    TPaintScope inner(&w2, &p2);
    EXPECT_EQ(TPaintScope::PainterFor(&w1), &p1);
    EXPECT_EQ(TPaintScope::PainterFor(&w2), &p2);
}
