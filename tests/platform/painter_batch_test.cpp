// Fills held in a batch go out together, and the picture is the one painting them one by one
// gives: on images at 100%, translated, scaled, at device pixel ratio 2, on a widget rendered at
// an offset, and on a vector device. Zoomed out, a 1-pixel line keeps exactly one device pixel.

#include "common/test_util.h"
#include "velDiagEdit/platform/canvas.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPicture>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <optional>

using namespace vde;
using vde::test::PixelColor;

namespace {

// Fills, frames, overlapping lines of widths 1 and 2, a text with and without its cell filled,
// an ellipse, a polygon, and fills after the text that overlap it.
void Scene(TCanvas& c) {
    c.Brush = {0xE0F0FF, bsSolid};
    c.FillRect({3, 2, 117, 85});
    c.Pen = {1, 0x0000FF, psSolid};
    c.Brush = {0xC0C0C0, bsSolid};
    c.Rectangle(10, 10, 50, 40);
    c.Pen = {2, 0x008000, psSolid};
    c.Brush = {0xFFFF00, bsSolid};
    c.Rectangle(30, 25, 71, 55);
    c.Pen = {1, 0x000000, psSolid};
    c.Brush = {0xFFFFFF, bsClear};
    c.Rectangle(60, 5, 90, 21);
    // Lines: horizontal and vertical ones crossing each other in three colours, a diagonal one,
    // a dashed one.
    for (int i = 0; i < 6; ++i) {
        c.Pen = {1 + i % 2,
                 i % 3 == 0   ? TColor(0xFF0000)
                 : i % 3 == 1 ? 0x00A000
                              : 0x0000FF,
                 psSolid};
        c.MoveTo(5, 12 + 7 * i);
        c.LineTo(110, 12 + 7 * i);
        c.MoveTo(14 + 15 * i, 4);
        c.LineTo(14 + 15 * i, 80);
    }
    c.Pen = {1, 0x800080, psSolid};
    c.MoveTo(2, 3);
    c.LineTo(100, 77);
    c.Pen = {2, 0x008080, psDash};
    c.MoveTo(4, 70);
    c.LineTo(115, 70);
    c.Font.Color = 0x000080;
    c.Font.Height = -11;
    c.Brush = {0xFFE0E0, bsSolid};
    c.TextOut(20, 30, QStringLiteral("AND & 1"));
    c.Brush.Style = bsClear;
    c.TextOut(60, 58, QStringLiteral("Qx"));
    c.Pen = {2, 0x400000, psSolid};
    c.Brush = {0x00FFFF, bsSolid};
    c.Ellipse(80, 30, 104, 52);
    const TPoint tri[] = {{90, 60}, {112, 82}, {70, 82}};
    c.Brush = {0xFF00FF, bsSolid};
    c.Polygon(tri);
    // After the text, over it.
    c.Brush = {0x808000, bsSolid};
    c.FillRect({25, 33, 40, 37});
    c.Pen = {1, 0xFF0000, psSolid};
    c.MoveTo(18, 36);
    c.LineTo(60, 36);
    c.Brush = {0x000000, bsSolid};
    c.FillRect({100, 0, 101, 90});
}

// Draws `draw` through a canvas on the device, with the painter first set up by `setup`,
// inside a batch or not.
void PaintOn(QPaintDevice* device, const std::function<void(QPainter&)>& setup,
             const std::function<void(TCanvas&)>& draw, bool batched) {
    QPainter p(device);
    setup(p);
    const TPaintScope scope(device, &p);
    TCanvas c;
    c.SetHandle(device);
    std::optional<TCanvasBatch> batch;
    if (batched)
        batch.emplace(&c);
    draw(c);
    batch.reset();
    c.ReleaseHandlePainter();
}

QImage Blank(int w, int h, qreal ratio = 1) {
    QImage img(int(w * ratio), int(h * ratio), QImage::Format_ARGB32_Premultiplied);
    img.setDevicePixelRatio(ratio);
    img.fill(Qt::white);
    return img;
}

QImage Painted(int w, int h, qreal ratio, const std::function<void(QPainter&)>& setup, bool batched,
               const std::function<void(TCanvas&)>& draw = Scene) {
    QImage img = Blank(w, h, ratio);
    PaintOn(&img, setup, draw, batched);
    return img;
}

// The first pixel where two pictures differ, or "" when none does.
std::string FirstDifference(const QImage& x, const QImage& y) {
    if (x.size() != y.size() || x.format() != y.format())
        return "sizes or formats differ";
    for (int j = 0; j < x.height(); ++j)
        for (int i = 0; i < x.width(); ++i)
            if (x.pixel(i, j) != y.pixel(i, j))
                return "at " + std::to_string(i) + "," + std::to_string(j);
    return {};
}

// How many pixels are not white: the scene must really have been drawn.
int Inked(const QImage& img) {
    int n = 0;
    for (int j = 0; j < img.height(); ++j)
        for (int i = 0; i < img.width(); ++i)
            n += PixelColor(img, i, j) != clWhite;
    return n;
}

// `scale` is the painter's own, by which the scene's some 9,000 inked pixels shrink or grow.
void ExpectBatchIsPlain(qreal ratio, const std::function<void(QPainter&)>& setup,
                        double scale = 1) {
    const QImage plain = Painted(130, 100, ratio, setup, false);
    const QImage batched = Painted(130, 100, ratio, setup, true);
    EXPECT_GT(Inked(plain), int(std::min(1000.0, 4000 * scale * scale)));
    EXPECT_EQ(FirstDifference(plain, batched), "");
}

// A widget whose paint draws the scene through a canvas on itself.
class SceneWidget : public QWidget {
public:
    bool Batched = false;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        const TPaintScope scope(this, &p);
        TCanvas c;
        c.SetHandle(this);
        std::optional<TCanvasBatch> batch;
        if (Batched)
            batch.emplace(&c);
        Scene(c);
        batch.reset();
        c.ReleaseHandlePainter();
    }
};

QImage RenderWidget(bool batched, qreal ratio, QPoint at) {
    SceneWidget w;
    w.Batched = batched;
    w.resize(120, 90);
    QImage img = Blank(150, 120, ratio);
    w.render(&img, at, QRegion(), QWidget::DrawChildren);
    return img;
}

} // namespace

TEST(PainterBatch, AtOneToOneTheBatchedPictureIsThePlainOne) {
    ExpectBatchIsPlain(1, [](QPainter&) {});
}

TEST(PainterBatch, WithATranslatedPainterTheBatchedPictureIsThePlainOne) {
    ExpectBatchIsPlain(1, [](QPainter& p) { p.translate(7, 5); });
}

TEST(PainterBatch, ScaledByHalfTheBatchedPictureIsThePlainOne) {
    ExpectBatchIsPlain(
        1, [](QPainter& p) { p.scale(0.5, 0.5); }, 0.5);
    ExpectBatchIsPlain(
        1,
        [](QPainter& p) {
            p.translate(7, 5);
            p.scale(0.5, 0.5);
        },
        0.5);
}

TEST(PainterBatch, ScaledByOtherZoomsTheBatchedPictureIsThePlainOne) {
    for (const double s : {0.25, 2.0 / 3, 0.75, 1.25, 1.5, 2.0, 3.0})
        ExpectBatchIsPlain(
            1, [s](QPainter& p) { p.scale(s, s); }, s);
}

TEST(PainterBatch, AtDevicePixelRatioTwoTheBatchedPictureIsThePlainOne) {
    ExpectBatchIsPlain(2, [](QPainter&) {});
    ExpectBatchIsPlain(2, [](QPainter& p) { p.translate(3, 4); });
}

TEST(PainterBatch, WithAClipAFractionalOffsetOrARotationTheBatchedPictureIsThePlainOne) {
    // The clip leaves some 3,000 pixels of the scene.
    ExpectBatchIsPlain(
        1, [](QPainter& p) { p.setClipRect(QRect(17, 9, 60, 50)); }, 0.4);
    ExpectBatchIsPlain(
        1,
        [](QPainter& p) {
            p.scale(0.5, 0.5);
            p.setClipRect(QRect(17, 9, 60, 50));
        },
        0.2);
    ExpectBatchIsPlain(1, [](QPainter& p) { p.translate(7.5, 5.25); });
    ExpectBatchIsPlain(
        1,
        [](QPainter& p) {
            p.translate(0.3, 0.7);
            p.scale(0.75, 0.75);
        },
        0.75);
    ExpectBatchIsPlain(
        1, [](QPainter& p) { p.translate(-9, -4); }, 0.8);
    ExpectBatchIsPlain(1, [](QPainter& p) {
        p.translate(60, 0);
        p.rotate(30);
    });
}

TEST(PainterBatch, WithOpacityOrAnotherCompositionModeTheBatchedPictureIsThePlainOne) {
    ExpectBatchIsPlain(
        1, [](QPainter& p) { p.setOpacity(0.5); }, 0.5);
    ExpectBatchIsPlain(
        1, [](QPainter& p) { p.setCompositionMode(QPainter::CompositionMode_Multiply); });
}

TEST(PainterBatch, AWidgetRenderedAtAnOffsetPaintsTheSameBatchedOrNot) {
    for (const QPoint at : {QPoint(0, 0), QPoint(13, 9), QPoint(-4, 17)}) {
        const QImage plain = RenderWidget(false, 1, at);
        EXPECT_GT(Inked(plain), 1000);
        EXPECT_EQ(FirstDifference(plain, RenderWidget(true, 1, at)), "") << at.x() << "," << at.y();
    }
    // At ratio 2 the redirection is a scale and an offset together.
    const QImage plain = RenderWidget(false, 2, QPoint(11, 6));
    EXPECT_GT(Inked(plain), 1000);
    EXPECT_EQ(FirstDifference(plain, RenderWidget(true, 2, QPoint(11, 6))), "");
}

TEST(PainterBatch, OverlappingFillsOfTwoColoursKeepTheirOrder) {
    // Red 0..20 x 0..20, blue 10..30 x 10..30, red again 15..25 x 15..25, blue 18..22 x 0..40.
    const auto draw = [](TCanvas& c) {
        c.Brush = {0x0000FF, bsSolid}; // red
        c.FillRect({0, 0, 20, 20});
        c.Brush = {0xFF0000, bsSolid}; // blue
        c.FillRect({10, 10, 30, 30});
        c.Brush = {0x0000FF, bsSolid};
        c.FillRect({15, 15, 25, 25});
        c.Brush = {0xFF0000, bsSolid};
        c.FillRect({18, 0, 22, 40});
    };
    const TColor red = 0x0000FF, blue = 0xFF0000;
    for (const bool batched : {false, true}) {
        const QImage img = Painted(
            40, 40, 1, [](QPainter&) {}, batched, draw);
        EXPECT_EQ(PixelColor(img, 5, 5), red) << batched;    // the first red only
        EXPECT_EQ(PixelColor(img, 12, 12), blue) << batched; // blue over red
        EXPECT_EQ(PixelColor(img, 27, 27), blue) << batched; // blue only
        EXPECT_EQ(PixelColor(img, 16, 16), red) << batched;  // red over blue over red
        EXPECT_EQ(PixelColor(img, 24, 24), red) << batched;
        EXPECT_EQ(PixelColor(img, 19, 16), blue) << batched; // the last blue over all
        EXPECT_EQ(PixelColor(img, 20, 35), blue) << batched;
        EXPECT_EQ(PixelColor(img, 35, 5), clWhite) << batched;
    }
    // The same at 50%: logical 16 is device 8 (floor(8.5)), 12 is 6, 24 is 12, 19 is 9.
    for (const bool batched : {false, true}) {
        const QImage img = Painted(
            40, 40, 1, [](QPainter& p) { p.scale(0.5, 0.5); }, batched, draw);
        EXPECT_EQ(PixelColor(img, 2, 2), red) << batched;
        EXPECT_EQ(PixelColor(img, 6, 6), blue) << batched;
        EXPECT_EQ(PixelColor(img, 8, 8), red) << batched;
        EXPECT_EQ(PixelColor(img, 9, 2), blue) << batched;
        EXPECT_EQ(PixelColor(img, 14, 14), blue) << batched;
        EXPECT_EQ(PixelColor(img, 17, 3), clWhite) << batched;
    }
}

TEST(PainterBatch, OnAVectorDeviceTheBatchRecordsWhatPlainPaintingDoes) {
    const auto record = [](bool batched) {
        QPicture pic;
        PaintOn(
            &pic, [](QPainter& p) { p.translate(2, 3); }, Scene, batched);
        return pic;
    };
    const QPicture plain = record(false), batched = record(true);
    ASSERT_GT(plain.size(), 0u);
    EXPECT_EQ(QByteArray(plain.data(), int(plain.size())),
              QByteArray(batched.data(), int(batched.size())));
    // And played back, the two are the same picture.
    const auto play = [](const QPicture& pic) {
        QImage img = Blank(130, 100);
        QPainter p(&img);
        p.drawPicture(0, 0, pic);
        return img;
    };
    const QImage a = play(plain);
    EXPECT_GT(Inked(a), 1000);
    EXPECT_EQ(FirstDifference(a, play(batched)), "");
}

// ---- thin lines zoomed out -------------------------------------------------------------------

namespace {

// The device rows (columns, when `columns`) that hold a black pixel anywhere.
std::vector<int> BlackLines(const QImage& img, bool columns) {
    std::vector<int> out;
    const int n = columns ? img.width() : img.height(), m = columns ? img.height() : img.width();
    for (int a = 0; a < n; ++a)
        for (int b = 0; b < m; ++b)
            if (PixelColor(img, columns ? a : b, columns ? b : a) == clBlack) {
                out.push_back(a);
                break;
            }
    return out;
}

// Whether every pixel of device row (column) `at` between from and to (exclusive) is black.
bool SolidRun(const QImage& img, bool column, int at, int from, int to) {
    for (int i = from; i < to; ++i)
        if (PixelColor(img, column ? at : i, column ? i : at) != clBlack)
            return false;
    return true;
}

// A horizontal (or vertical) line of the given width along logical row (column) k, from 2 to 40
// along the other axis, drawn at scale s.
QImage LineAt(double s, int k, bool vertical, int width, bool batched) {
    return Painted(
        100, 100, 1, [s](QPainter& p) { p.scale(s, s); }, batched,
        [=](TCanvas& c) {
            c.Pen = {width, clBlack, psSolid};
            if (vertical) {
                c.MoveTo(k, 2);
                c.LineTo(k, 40);
            } else {
                c.MoveTo(2, k);
                c.LineTo(40, k);
            }
        });
}

struct Expected {
    double Scale;
    int Offset;
    int Device; // the device row or column worked out by hand
};

} // namespace

TEST(ZoomedLines, AThinLineIsExactlyOneDevicePixelWideAtEveryOffset) {
    for (const bool batched : {false, true})
        for (const double s : {0.5, 0.25, 2.0 / 3})
            for (const bool vertical : {false, true})
                for (int k = 0; k <= 11; ++k) {
                    const QImage img = LineAt(s, k, vertical, 1, batched);
                    const std::vector<int> lines = BlackLines(img, vertical);
                    ASSERT_EQ(lines.size(), 1u)
                        << "scale " << s << " offset " << k
                        << (vertical ? " vertical" : " horizontal") << (batched ? " batched" : "");
                    // Along its length, logical 4..36 lies well inside 2..40 at any of these
                    // scales: those device pixels are all black.
                    EXPECT_TRUE(SolidRun(img, vertical, lines[0], int(std::ceil(4 * s)),
                                         int(std::floor(36 * s))))
                        << "scale " << s << " offset " << k;
                }
}

TEST(ZoomedLines, TheDevicePixelOfAThinLineIsItsNearestEdge) {
    // Logical row k starts at device s * k; the pixel whose top edge is nearest to it holds
    // the line. 50%: k = 1 starts at 0.5, which rounds up to 1; k = 2 at 1.0; k = 3 at 1.5,
    // rounding to 2; k = 11 at 5.5 -> 6. 25%: k = 1 at 0.25 -> 0; k = 2 at 0.5 -> 1; k = 5 at
    // 1.25 -> 1; k = 6 at 1.5 -> 2; k = 11 at 2.75 -> 3. 2/3: k = 1 at 0.67 -> 1; k = 3 at
    // 2.0; k = 4 at 2.67 -> 3; k = 5 at 3.33 -> 3; k = 11 at 7.33 -> 7.
    const Expected cases[] = {{0.5, 0, 0},     {0.5, 1, 1},     {0.5, 2, 1},     {0.5, 3, 2},
                              {0.5, 11, 6},    {0.25, 1, 0},    {0.25, 2, 1},    {0.25, 5, 1},
                              {0.25, 6, 2},    {0.25, 11, 3},   {2.0 / 3, 1, 1}, {2.0 / 3, 3, 2},
                              {2.0 / 3, 4, 3}, {2.0 / 3, 5, 3}, {2.0 / 3, 11, 7}};
    for (const bool batched : {false, true})
        for (const Expected& e : cases)
            for (const bool vertical : {false, true}) {
                const QImage img = LineAt(e.Scale, e.Offset, vertical, 1, batched);
                EXPECT_EQ(BlackLines(img, vertical), std::vector<int>{e.Device})
                    << "scale " << e.Scale << " offset " << e.Offset;
            }
}

TEST(ZoomedLines, AWidthTwoLineAtHalfIsOneDevicePixel) {
    // Width 2 along row k covers logical rows k - 1 and k: device edges 0.5 * (k - 1) and
    // 0.5 * (k + 1) one device pixel apart. k = 1: 0 .. 1 -> row 0; k = 2: 0.5 .. 1.5, rounded
    // 1 .. 2 -> row 1; k = 7: 3 .. 4 -> row 3.
    for (const bool batched : {false, true})
        for (const bool vertical : {false, true}) {
            for (int k = 1; k <= 12; ++k)
                EXPECT_EQ(BlackLines(LineAt(0.5, k, vertical, 2, batched), vertical).size(), 1u)
                    << "offset " << k;
            EXPECT_EQ(BlackLines(LineAt(0.5, 1, vertical, 2, batched), vertical),
                      std::vector<int>{0});
            EXPECT_EQ(BlackLines(LineAt(0.5, 2, vertical, 2, batched), vertical),
                      std::vector<int>{1});
            EXPECT_EQ(BlackLines(LineAt(0.5, 7, vertical, 2, batched), vertical),
                      std::vector<int>{3});
        }
}

TEST(ZoomedLines, AtTwoAThinLineIsTwoDevicePixels) {
    for (const bool batched : {false, true})
        for (const bool vertical : {false, true})
            for (int k = 0; k <= 11; ++k) {
                const QImage img = LineAt(2, k, vertical, 1, batched);
                EXPECT_EQ(BlackLines(img, vertical), (std::vector<int>{2 * k, 2 * k + 1}))
                    << "offset " << k;
                // From logical 2 up to (not with) 40: device 4 .. 79.
                EXPECT_TRUE(SolidRun(img, vertical, 2 * k, 4, 80));
                EXPECT_TRUE(SolidRun(img, vertical, 2 * k + 1, 4, 80));
                EXPECT_FALSE(SolidRun(img, vertical, 2 * k, 80, 81));
            }
}

// ---- a canvas kept across paints -------------------------------------------------------------

namespace {

// A widget that keeps one canvas for all its paints, as a diagram surface keeps the canvas its
// wires draw on, and lends each paint's painter to it.
class KeptCanvasWidget : public QWidget {
public:
    TCanvas Canvas;
    KeptCanvasWidget() { Canvas.SetHandle(this); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        const TPaintScope scope(this, &p);
        Scene(Canvas);
    }
};

QImage RenderInto(QWidget& w, QSize size) {
    QImage img(size, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::white);
    w.render(&img, QPoint(), QRegion(), QWidget::DrawChildren);
    return img;
}

} // namespace

// Fails today: the canvas keeps its painter backend when the next paint's painter has the same
// address and device, and TPainterBackend::DeviceArea keeps the area of the first paint's
// target (30 x 20) while the transform stays the same; fills and lines beyond it are cut away.
// Disabled until the backend forgets the device's area when the target changes.
TEST(KeptCanvas, APaintIntoALargerImageDrawsAllOfItAfterOneIntoASmallImage) {
    KeptCanvasWidget fresh;
    fresh.resize(120, 90);
    const QImage whole = RenderInto(fresh, QSize(120, 90));
    EXPECT_GT(Inked(whole), 1000);
    // The same widget's canvas, first lent a painter on a small image.
    KeptCanvasWidget w;
    w.resize(120, 90);
    RenderInto(w, QSize(30, 20));
    EXPECT_EQ(FirstDifference(whole, RenderInto(w, QSize(120, 90))), "");
}

// A box drawn zoomed, as a block draws its frame: clipped to the box (a block's control) and
// held in a batch. Whatever the zoom and where the box lies within a device pixel, the frame
// closes it: along the middle row and column the outermost pixels of the box are the frame's,
// never the fill's, and the frame shows on all four sides.
TEST(ZoomedFrames, AFrameClosesItsBoxOnEverySideAtEveryZoom) {
    const QRgb frame = qRgb(0, 0, 255), fill = qRgb(192, 192, 192);
    // Room for the box at 300% and its largest shift.
    constexpr int kSide = 260;
    int checked = 0;
    for (const double z : {0.25, 1.0 / 3, 0.5, 2.0 / 3, 0.75, 1.25, 1.5, 3.0})
        for (const int pen : {1, 2})
            for (int shift = 0; shift < 6; ++shift) {
                QImage img(kSide, kSide, QImage::Format_RGB32);
                img.fill(Qt::white);
                QPainter p(&img);
                p.scale(z, z);
                p.translate(7 + shift, 5 + 2 * shift);
                p.setClipRect(QRect(0, 0, 60, 45), Qt::IntersectClip);
                {
                    TCanvas c;
                    c.SetHandle(&img);
                    const TPaintScope scope(&img, &p);
                    const TCanvasBatch batch(&c);
                    c.Pen = {pen, 0xFF0000, psSolid}; // TColor is BGR: blue
                    c.Brush = {0xC0C0C0, bsSolid};
                    c.Rectangle(0, 0, 60, 45);
                }
                p.end();
                const std::string where = "zoom " + std::to_string(z) + " pen " +
                                          std::to_string(pen) + " shift " + std::to_string(shift);
                // The box's pixels along a row and a column through its middle.
                const auto ends = [&](bool row, int at) {
                    int first = -1, last = -1;
                    for (int i = 0; i < kSide; ++i) {
                        const QRgb v = row ? img.pixel(i, at) : img.pixel(at, i);
                        if (v == frame || v == fill) {
                            if (first < 0)
                                first = i;
                            last = i;
                        }
                    }
                    return std::pair{first, last};
                };
                int midX = -1, midY = -1;
                for (int i = 0; i < kSide && (midX < 0 || midY < 0); ++i)
                    for (int j = 0; j < kSide; ++j)
                        if (img.pixel(i, j) == fill) {
                            midX = i + 2;
                            midY = j + 2;
                            break;
                        }
                ASSERT_GE(midX, 0) << where;
                const auto [l, r] = ends(true, midY);
                const auto [t, b] = ends(false, midX);
                ASSERT_GE(l, 0) << where;
                EXPECT_EQ(img.pixel(l, midY), frame) << where << " left";
                EXPECT_EQ(img.pixel(r, midY), frame) << where << " right";
                EXPECT_EQ(img.pixel(midX, t), frame) << where << " top";
                EXPECT_EQ(img.pixel(midX, b), frame) << where << " bottom";
                ++checked;
            }
    EXPECT_EQ(checked, 8 * 2 * 6);
}
