// The surface repaints only what meets the rectangle being painted, and the pixels are the same
// as when everything is drawn.

#include "editor_test_util.h"

#include "common/test_util.h"

#include <QPainter>

using namespace vde;
using namespace vde::test;

namespace {

class SurfacePaint : public EditorFixture {
protected:
    void SetUp() override {
        EditorFixture::SetUp();
        // A small diagram: four gates wired in a ring, a hand-drawn wire ending on another one
        // (junction dot), a selected segment, and wires crossing each other.
        TDiagObject* g[4];
        for (int i = 0; i < 4; ++i) {
            g[i] = AndGate(*dc->ObjList, 40 + (i % 2) * 200, 20 + (i / 2) * 150);
            dc->AssignObjEvents(g[i]);
        }
        for (int i = 0; i < 4; ++i)
            new TDiagObjConnection(dc->ConList.get(), g[i], 1, g[(i + 1) % 4], -1 - (i & 1),
                                   TPoint{10, 10}, i % 3 - 1, i % 3 - 1, 0);
        Wire(*dc->ConList, {{5, 5}, {395, 5}, {395, 295}})->FSelectedIndex = 1;
        TDiagConnection* j = Wire(*dc->ConList, {{150, 290}, {150, 100}});
        j->FDstCrossInfo = LR(1, 2);
    }
};

} // namespace

TEST_F(SurfacePaint, RepaintingAnyPartGivesThePixelsOfAFullPaint) {
    const QImage full = Render();
    const QRect parts[] = {QRect(0, 0, 60, 40),   QRect(140, 90, 30, 30), QRect(390, 0, 10, 300),
                           QRect(100, 120, 5, 5), QRect(0, 280, 400, 20), QRect(200, 0, 1, 300),
                           QRect(147, 96, 8, 8)};
    for (const QRect& part : parts) {
        QImage img(panel.size(), QImage::Format_ARGB32);
        img.fill(Qt::red);
        panel.render(&img, part.topLeft(), QRegion(part));
        for (int y = part.top(); y <= part.bottom(); ++y)
            for (int x = part.left(); x <= part.right(); ++x)
                ASSERT_EQ(PixelColor(img, x, y), PixelColor(full, x, y))
                    << "at " << x << "," << y << " painting " << part.x() << "," << part.y() << " "
                    << part.width() << "x" << part.height();
    }
}

TEST(WireCulling, AWireThatCannotReachThePaintedRectangleIsNotDrawnAtAll) {
    QImage img = WhiteImage(200, 100);
    TDiagConnectList list(&img);
    // Meets the rectangle (0, 0, 20, 20): drawn whole, also outside it (no clipping here).
    Wire(list, {{10, 10}, {150, 10}});
    // Ends 9 pixels right of the rectangle and cannot reach it: left out.
    Wire(list, {{29, 50}, {29, 90}, {180, 90}});
    {
        QPainter p(&img);
        const TRect rect{0, 0, 20, 20};
        TPaintScope scope(&img, &p, &rect);
        list.Paint();
    }
    EXPECT_EQ(PixelColor(img, 100, 10), 0x000000u);
    EXPECT_EQ(PixelColor(img, 29, 70), 0xFFFFFFu);
    EXPECT_EQ(PixelColor(img, 100, 90), 0xFFFFFFu);
}

TEST(WireCulling, AJunctionDotNearThePaintedRectangleStillCounts) {
    QImage img = WhiteImage(200, 100);
    TDiagConnectList list(&img);
    Wire(list, {{100, 10}, {100, 90}});
    // Ends at (24, 50): its dot reaches x = 20, the rectangle's right edge is 24 (exclusive).
    TDiagConnection* j = Wire(list, {{60, 50}, {24, 50}});
    j->FDstCrossInfo = LR(1, 1);
    QImage reference = WhiteImage(200, 100);
    {
        QPainter p(&reference);
        TPaintScope scope(&reference, &p);
        TDiagConnectList all(&reference);
        Wire(all, {{60, 50}, {24, 50}})->FDstCrossInfo = LR(1, 1);
        all.Paint();
    }
    {
        QPainter p(&img);
        const TRect rect{0, 0, 21, 100};
        TPaintScope scope(&img, &p, &rect);
        list.Paint();
    }
    EXPECT_EQ(PixelColor(img, 20, 50), PixelColor(reference, 20, 50));
    EXPECT_EQ(PixelColor(img, 40, 50), 0x000000u);
}

TEST(WireCulling, WithoutAKnownRectangleEveryWireIsDrawn) {
    RecordingCanvas rc;
    TDiagConnectList list(&rc.canvas);
    Wire(list, {{10, 10}, {150, 10}});
    Wire(list, {{-5000, -5000}, {-4000, -5000}});
    TRect r;
    EXPECT_FALSE(rc.canvas.ClipRect(r));
    list.Paint();
    EXPECT_EQ(rc.rec.OfKind(opLine).size(), 2u);
}

TEST(CanvasClipRect, OfAWidgetOutsideItsPaintIsUnknownNotTheWidgetsSize) {
    QWidget w; // a fresh widget is 640 x 480
    TCanvas c;
    c.SetHandle(&w);
    TRect r;
    EXPECT_FALSE(c.ClipRect(r));
}

TEST(CanvasClipRect, OfAPainterLentToAWidgetIsWhatThatPainterReaches) {
    // A 640 x 480 widget drawn into a larger picture, moved and halved: the canvas may draw
    // wherever the picture shows, far outside the widget's own size.
    QWidget w;
    TCanvas c;
    c.SetHandle(&w);
    QImage img(1000, 800, QImage::Format_ARGB32);
    QPainter p(&img);
    p.scale(0.5, 0.5);
    p.translate(300, -100);
    const TPaintScope scope(&w, &p);
    TRect r;
    ASSERT_TRUE(c.ClipRect(r));
    // Device pixels 0..1000 x 0..800 are diagram pixels -300..1700 x 100..1700.
    EXPECT_EQ(r, (TRect{-300, 100, 1700, 1700}));
    p.setClipRect(QRect(0, 200, 50, 50));
    ASSERT_TRUE(c.ClipRect(r));
    EXPECT_EQ(r, (TRect{0, 200, 50, 250}));
}

TEST(WireCulling, WiresFarOutsideTheWidgetAreDrawnIntoAPictureOfTheWholeDiagram) {
    QWidget w; // 640 x 480, never shown or resized
    TCanvas c;
    c.SetHandle(&w);
    TDiagConnectList list(&c);
    // One wire beyond every side of the widget, one inside.
    Wire(list, {{-400, 100}, {-200, 100}});
    Wire(list, {{100, -300}, {100, -100}});
    Wire(list, {{900, 100}, {1200, 100}});
    Wire(list, {{100, 700}, {100, 900}});
    Wire(list, {{10, 10}, {50, 10}});
    QImage img = WhiteImage(1700, 1300);
    {
        QPainter p(&img);
        p.translate(450, 350);
        const TPaintScope scope(&w, &p);
        list.Paint();
    }
    const TPoint mids[] = {{-300, 100}, {100, -200}, {1000, 100}, {100, 800}, {30, 10}};
    for (const TPoint m : mids)
        EXPECT_EQ(PixelColor(img, m.X + 450, m.Y + 350), 0x000000u)
            << "wire through " << m.X << "," << m.Y;
}

TEST(CanvasClipRect, IsThePaintRectangleDuringAPaintAndTheDeviceOtherwise) {
    QImage img(300, 200, QImage::Format_ARGB32);
    TCanvas c;
    c.SetHandle(&img);
    TRect r;
    ASSERT_TRUE(c.ClipRect(r));
    EXPECT_EQ(r, (TRect{0, 0, 300, 200}));
    QPainter p(&img);
    const TRect part{10, 20, 30, 40};
    {
        TPaintScope scope(&img, &p, &part);
        ASSERT_TRUE(c.ClipRect(r));
        EXPECT_EQ(r, part);
    }
    TCanvas none;
    EXPECT_FALSE(none.ClipRect(r));
}

TEST(ConnectionDeselect, DeselectAllLeavesWiresWithNothingSelectedUntouched) {
    RecordingCanvas rc;
    TDiagConnectList list(&rc.canvas);
    TDiagConnection* a = Wire(list, {{10, 10}, {150, 10}});
    TDiagConnection* b = Wire(list, {{10, 50}, {150, 50}});
    b->FSelectedIndex = 0;
    list.DeselectAll(nullptr);
    EXPECT_EQ(a->GetSelectedIndex(), -1);
    EXPECT_EQ(b->GetSelectedIndex(), -1);
    // Only the wire whose selection changed was drawn again.
    ASSERT_EQ(rc.rec.OfKind(opLine).size(), 1u);
    EXPECT_EQ(rc.rec.OfKind(opLine)[0].Points[0], (TPoint{10, 50}));
}
