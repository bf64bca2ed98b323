// Kept pictures of blocks: at every zoom where they are used, the surface painted from them is
// bit for bit the surface painted directly; at 100% and at 2/3 they are not used at all; a block
// whose look changed is never shown from an old picture; a look that depends on what lies below
// is painted directly; and however many looks there are, the pixels kept stay within budget.

#include "direct_fixture.h"

#include "common/test_util.h"

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/dark_palette.h"
#include "velDiagEdit/platform/picture_cache.h"

#include <QPainter>
#include <QScreen>
#include <algorithm>
#include <cstring>

using namespace vde;
using namespace vde::test;

namespace {

// Gates a and b of the direct-editing surface, with a wire from a's output to b's first input,
// and beside them an OR gate, an RS flip-flop, a text block whose text fits and one whose text
// runs out of its box; an inverted input, an arrow output and a selected marker.
class PictureCache : public DirectFixture {
protected:
    TDiagObject* orGate = nullptr;
    TDiagObject* rs = nullptr;
    TDiagText* fits = nullptr;
    TDiagText* overflows = nullptr;

    void SetUp() override {
        DirectFixture::SetUp();
        ClearPictureCache();
        SetPictureCacheEnabled(true);
        orGate = Place(doOrLogic, 130, 190);
        rs = Place(doRSTrigger, 360, 20);
        fits = Place<TDiagText>(doText, 20, 330);
        overflows = Place<TDiagText>(doText, 200, 330);
        ASSERT_NE(fits, nullptr);
        ASSERT_NE(overflows, nullptr);
        overflows->SetInCount(1);
        overflows->SetTextValues(QStringLiteral("A label far wider than its box"));
        // An inverted input on a, an arrow on the OR gate's output.
        a->MarkerAt(-2)->IOType = itInversion;
        a->MarkerAt(-2)->Size = 4;
        orGate->MarkerAt(1)->IOType = itArrow;
        orGate->MarkerAt(1)->Size = 4;
        DragPanel(Aim(a, 1), Aim(b, -1), 4);
        DragPanel(Aim(orGate, 1), Aim(rs, -1), 4);
        ASSERT_EQ(dc->ConList->Count(), 2);
        SelectMarker(rs, 1);
        dc->SetZoom(1.0);
    }

    void TearDown() override {
        SetPictureCacheEnabled(true);
        ClearPictureCache();
        DirectFixture::TearDown();
    }

    // The surface rendered into an image of the kind pictures are kept for.
    QImage RenderSurface() {
        QImage img(panel.size(), QImage::Format_ARGB32_Premultiplied);
        img.fill(Qt::red);
        panel.render(&img);
        return img;
    }

    QImage RenderWithCache(bool on) {
        SetPictureCacheEnabled(on);
        const QImage img = RenderSurface();
        SetPictureCacheEnabled(true);
        return img;
    }
};

// Where two pictures first differ, or "" when they are the same bit for bit.
std::string FirstDifference(const QImage& x, const QImage& y) {
    if (x.size() != y.size() || x.format() != y.format())
        return "sizes or formats differ";
    for (int j = 0; j < x.height(); ++j)
        if (std::memcmp(x.constScanLine(j), y.constScanLine(j), size_t(x.width()) * 4) != 0)
            for (int i = 0; i < x.width(); ++i)
                if (x.pixel(i, j) != y.pixel(i, j))
                    return "at " + std::to_string(i) + "," + std::to_string(j);
    return {};
}

// How many pixels are neither white (the surface) nor red (not painted at all).
int Inked(const QImage& img) {
    int n = 0;
    for (int j = 0; j < img.height(); ++j)
        for (int i = 0; i < img.width(); ++i) {
            const QRgb c = img.pixel(i, j) & 0xFFFFFFu;
            n += c != 0xFFFFFFu && c != 0xFF0000u;
        }
    return n;
}

std::string Zoom(double z) {
    return "zoom " + std::to_string(z);
}

} // namespace

TEST_F(PictureCache, AtEveryZoomStepThatUsesPicturesTheSurfaceIsThatPaintedDirectly) {
    for (const double z : {0.25, 0.5, 0.75, 1.25, 1.5, 2.0, 3.0, 4.0}) {
        dc->SetZoom(z);
        ASSERT_EQ(dc->Zoom(), z);
        ClearPictureCache();
        const TPictureCacheStats cleared = PictureCacheStats();
        const QImage direct = RenderWithCache(false);
        const TPictureCacheStats s0 = PictureCacheStats();
        const QImage first = RenderWithCache(true);
        const TPictureCacheStats s1 = PictureCacheStats();
        const QImage second = RenderWithCache(true);
        const TPictureCacheStats s2 = PictureCacheStats();
        EXPECT_EQ(FirstDifference(direct, first), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, second), "") << Zoom(z);
        // Off, nothing was made or kept; the first paint made pictures, the second used them.
        EXPECT_EQ(s0.Made, cleared.Made) << Zoom(z);
        EXPECT_EQ(s0.Hits, cleared.Hits) << Zoom(z);
        EXPECT_EQ(s0.Pictures, 0u) << Zoom(z);
        EXPECT_GT(s1.Made, s0.Made) << Zoom(z);
        EXPECT_GT(s2.Hits, s1.Hits) << Zoom(z);
        EXPECT_EQ(s2.Made, s1.Made) << Zoom(z);
        EXPECT_LE(s2.Bytes, kPictureCacheBudget);
    }
}

TEST_F(PictureCache, At100And2Over3NoPictureIsMadeOrUsed) {
    for (const double z : {1.0, 2.0 / 3}) {
        dc->SetZoom(z);
        const QImage direct = RenderWithCache(false);
        EXPECT_GT(Inked(direct), 5000) << Zoom(z);
        const TPictureCacheStats s0 = PictureCacheStats();
        const QImage on = RenderWithCache(true);
        const QImage again = RenderWithCache(true);
        const TPictureCacheStats s1 = PictureCacheStats();
        EXPECT_EQ(s1.Hits, s0.Hits) << Zoom(z);
        EXPECT_EQ(s1.Made, s0.Made) << Zoom(z);
        EXPECT_EQ(s1.Refused, s0.Refused) << Zoom(z);
        EXPECT_EQ(s1.Pictures, 0u) << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, on), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, again), "") << Zoom(z);
    }
}

TEST_F(PictureCache, OnAnImageOfAnotherFormatOrRatioNoPictureIsUsed) {
    dc->SetZoom(0.5);
    const TPictureCacheStats s0 = PictureCacheStats();
    QImage straight(panel.size(), QImage::Format_ARGB32);
    straight.fill(Qt::white);
    panel.render(&straight);
    QImage sharp(panel.size() * 2, QImage::Format_ARGB32_Premultiplied);
    sharp.setDevicePixelRatio(2);
    sharp.fill(Qt::white);
    panel.render(&sharp);
    const TPictureCacheStats s1 = PictureCacheStats();
    EXPECT_EQ(s1.Made, s0.Made);
    EXPECT_EQ(s1.Hits, s0.Hits);
    EXPECT_EQ(s1.Refused, s0.Refused);
    EXPECT_GT(Inked(straight), 5000);
    // The same paint on a premultiplied image of ratio 1 does make pictures.
    RenderSurface();
    EXPECT_GT(PictureCacheStats().Made, s1.Made);
}

TEST_F(PictureCache, ABlockMovedByLessThanADevicePixelIsNotShownFromItsOldPicture) {
    // At 75% a move by 1 diagram pixel is 3/4 of a device pixel; at 50% and 150% half of one.
    for (const double z : {0.75, 0.5, 1.5, 0.25}) {
        dc->SetZoom(z);
        ClearPictureCache();
        RenderWithCache(true);
        QImage before = RenderWithCache(true);
        for (TDiagObject* blk : std::initializer_list<TDiagObject*>{a, fits, rs}) {
            const TRect r = blk->BoundsRect();
            blk->SetBounds(r.Left + 1, r.Top + 1, r.Right - r.Left, r.Bottom - r.Top);
            const QImage on = RenderWithCache(true);
            EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
            EXPECT_NE(FirstDifference(before, on), "") << Zoom(z);
            before = on;
        }
        // Back where they were, the old pictures serve again and are still right.
        const TPictureCacheStats s0 = PictureCacheStats();
        for (TDiagObject* blk : std::initializer_list<TDiagObject*>{a, fits, rs}) {
            const TRect r = blk->BoundsRect();
            blk->SetBounds(r.Left - 1, r.Top - 1, r.Right - r.Left, r.Bottom - r.Top);
        }
        const QImage on = RenderWithCache(true);
        EXPECT_GT(PictureCacheStats().Hits, s0.Hits) << Zoom(z);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
    }
}

TEST_F(PictureCache, ABlockWhoseTextOrSelectedMarkerChangedIsNotShownFromItsOldPicture) {
    for (const double z : {0.5, 2.0}) {
        dc->SetZoom(z);
        ClearPictureCache();
        const QImage before = RenderWithCache(true);
        RenderWithCache(true);
        fits->SetTextValues(QStringLiteral("Tx"));
        QImage on = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
        EXPECT_NE(FirstDifference(before, on), "") << Zoom(z);
        SelectMarker(a, -1);
        on = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
        SelectMarker(a, 1);
        on = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
        // The marker's type changed in place.
        b->MarkerAt(-2)->IOType = itInversion;
        b->MarkerAt(-2)->Size = 5;
        on = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
        fits->SetTextValues(QStringLiteral("Text"));
        SelectMarker(rs, 1);
        b->MarkerAt(-2)->IOType = itDirect;
        b->MarkerAt(-2)->Size = 0;
    }
}

TEST_F(PictureCache, ATextRunningOutOfItsBoxPaintsAsDirectlyAtEveryZoom) {
    // Its cell is filled to the block's edge, where the text is cut.
    for (const double z : {0.25, 0.5, 0.75, 1.25, 1.5, 2.0, 3.0, 4.0}) {
        dc->SetZoom(z);
        ClearPictureCache();
        const QImage on = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(RenderWithCache(true), on), "") << Zoom(z);
    }
}

TEST_F(PictureCache, PixelsThatBlendWithWhatLiesBelowArePaintedForEachGround) {
    // Every block at each of the four quarter positions within a diagram pixel, at every zoom
    // that uses pictures: some smoothed glyph edges stand outside the filled cells, so their
    // pixels depend on what lies below. Such a look is still kept, those pixels painted over
    // the ground each place shows; nothing is refused.
    const uint64_t refusedBefore = PictureCacheStats().Refused;
    for (int shift = 0; shift < 4; ++shift) {
        for (const double z : {0.25, 0.5, 0.75, 1.25, 1.5, 2.0, 3.0, 4.0}) {
            dc->SetZoom(z);
            ClearPictureCache();
            const QImage on = RenderWithCache(true);
            const TPictureCacheStats s1 = PictureCacheStats();
            const QImage again = RenderWithCache(true);
            const TPictureCacheStats s2 = PictureCacheStats();
            const std::string where = Zoom(z) + " shift " + std::to_string(shift);
            EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << where;
            EXPECT_EQ(FirstDifference(on, again), "") << where;
            EXPECT_EQ(s2.Made, s1.Made) << where;
            EXPECT_GT(s2.Hits, s1.Hits) << where;
        }
        dc->SetZoom(1.0);
        for (TDiagObject* blk :
             std::initializer_list<TDiagObject*>{a, b, orGate, rs, fits, overflows})
            blk->ShiftByDelta({1, 1});
    }
    // Another ground under the same looks: the kept pictures serve it exactly too.
    QPalette yellow = panel.palette();
    yellow.setColor(QPalette::Window, QColor(255, 250, 190));
    panel.setPalette(yellow);
    panel.setAutoFillBackground(true);
    for (const double z : {0.25, 0.5, 2.0}) {
        dc->SetZoom(z);
        const QImage direct = RenderWithCache(false);
        EXPECT_EQ(FirstDifference(direct, RenderWithCache(true)), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, RenderWithCache(true)), "") << Zoom(z);
    }
    EXPECT_EQ(PictureCacheStats().Refused, refusedBefore);
}

TEST_F(PictureCache, RenderedAtAnOffsetTheSurfaceIsThatPaintedDirectly) {
    for (const double z : {0.5, 0.75, 2.0}) {
        dc->SetZoom(z);
        const auto render = [&](bool on) {
            SetPictureCacheEnabled(on);
            QImage img(panel.size() + QSize(20, 20), QImage::Format_RGB32);
            img.fill(Qt::red);
            panel.render(&img, QPoint(13, 7));
            SetPictureCacheEnabled(true);
            return img;
        };
        ClearPictureCache();
        const QImage direct = render(false);
        EXPECT_GT(Inked(direct), 5000) << Zoom(z);
        const QImage first = render(true);
        const uint64_t hits = PictureCacheStats().Hits;
        const QImage second = render(true);
        EXPECT_GT(PictureCacheStats().Hits, hits) << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, first), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, second), "") << Zoom(z);
    }
}

TEST_F(PictureCache, PartlyOutsideTheImageOrThePaintedRegionTheSurfaceIsThatPaintedDirectly) {
    // Blocks cut by the image's left and top edge (the surface rendered at a negative offset),
    // and by a paint region that covers half a block.
    const QRegion half(QRect(0, 0, 70, 400));
    for (const double z : {0.25, 0.5, 0.75, 1.25, 1.5, 2.0, 3.0, 4.0})
        for (const QPoint at : {QPoint(-37, -41), QPoint(-5, -3), QPoint(-1, 0)}) {
            dc->SetZoom(z);
            const auto render = [&](bool on, const QRegion& region) {
                SetPictureCacheEnabled(on);
                QImage img(panel.size(), QImage::Format_ARGB32_Premultiplied);
                img.fill(Qt::red);
                panel.render(&img, at, region);
                SetPictureCacheEnabled(true);
                return img;
            };
            const std::string where = Zoom(z) + " at " + std::to_string(at.x());
            ClearPictureCache();
            const QImage direct = render(false, QRegion());
            EXPECT_GT(Inked(direct), 1000) << where;
            EXPECT_EQ(FirstDifference(direct, render(true, QRegion())), "") << where;
            EXPECT_EQ(FirstDifference(direct, render(true, QRegion())), "") << where;
            const QImage cut = render(false, half);
            EXPECT_EQ(FirstDifference(cut, render(true, half)), "") << where;
        }
}

TEST_F(PictureCache, ABlockSelectedOrLetGoIsNotShownFromItsOldPicture) {
    for (const double z : {0.5, 1.5}) {
        dc->SetZoom(z);
        ClearPictureCache();
        RenderWithCache(true);
        for (const bool selected : {true, false, true}) {
            a->SetSelected(selected);
            orGate->SetSelected(!selected);
            const QImage on = RenderWithCache(true);
            EXPECT_EQ(FirstDifference(RenderWithCache(false), on), "") << Zoom(z);
        }
    }
}

TEST_F(PictureCache, ASurfaceFollowingItsPaletteIsNotShownFromPicturesOfTheOtherPalette) {
    const QPalette light = panel.palette();
    dc->SetFollowPalette(true);
    for (const double z : {0.5, 2.0}) {
        dc->SetZoom(z);
        ClearPictureCache();
        const QImage lit = RenderWithCache(true);
        RenderWithCache(true);
        panel.setPalette(DarkFusionPalette());
        const QImage dark = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), dark), "") << Zoom(z);
        EXPECT_NE(FirstDifference(lit, dark), "") << Zoom(z);
        panel.setPalette(light);
        const QImage back = RenderWithCache(true);
        EXPECT_EQ(FirstDifference(RenderWithCache(false), back), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(lit, back), "") << Zoom(z);
    }
}

TEST_F(PictureCache, OnTheScreenTheSurfaceIsThatPaintedDirectly) {
    // The panel's own paint events into its window's backing store, read back from the screen.
    const auto onScreen = [&](bool on) {
        SetPictureCacheEnabled(on);
        panel.repaint();
        QCoreApplication::processEvents();
        SetPictureCacheEnabled(true);
        return panel.screen()->grabWindow(panel.winId()).toImage();
    };
    for (const double z : {0.5, 0.75, 2.0}) {
        dc->SetZoom(z);
        ClearPictureCache();
        const QImage direct = onScreen(false);
        ASSERT_FALSE(direct.isNull());
        const uint64_t made = PictureCacheStats().Made;
        const QImage first = onScreen(true);
        const uint64_t hits = PictureCacheStats().Hits;
        const QImage second = onScreen(true);
        EXPECT_GT(PictureCacheStats().Hits, hits) << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, first), "") << Zoom(z);
        EXPECT_EQ(FirstDifference(direct, second), "") << Zoom(z);
        EXPECT_GT(Inked(direct), 5000) << Zoom(z);
        // The paint events made pictures of the blocks and used them.
        EXPECT_GT(PictureCacheStats().Made, made) << Zoom(z);
    }
}

TEST_F(PictureCache, ManyLooksAt400KeepThePixelsWithinTheBudget) {
    // One text block, 2,000 texts: each is a look of its own, 200 x 80 pixels at 400%, some
    // 64 KB a picture; together four times what the budget holds.
    fits->SetBounds(0, 0, 50, 20);
    QImage img(240, 120, QImage::Format_RGB32);
    const auto paint = [&](bool on) {
        SetPictureCacheEnabled(on);
        // Each a paint of its own, as the host's paint events are.
        NotePicturePaint();
        img.fill(Qt::white);
        QPainter p(&img);
        p.setTransform(QTransform(4, 0, 0, 4, 8, 8));
        fits->PaintWith(p);
        p.end();
        SetPictureCacheEnabled(true);
        return img.copy();
    };
    ClearPictureCache();
    const TPictureCacheStats s0 = PictureCacheStats();
    size_t mostBytes = 0;
    for (int i = 0; i < 2000; ++i) {
        fits->SetTextValues(QStringLiteral("T%1").arg(i));
        paint(true);
        mostBytes = std::max(mostBytes, PictureCacheStats().Bytes);
    }
    const TPictureCacheStats s1 = PictureCacheStats();
    EXPECT_EQ(s1.Made + s1.Refused - s0.Made - s0.Refused, 2000u);
    EXPECT_GT(s1.Made - s0.Made, 1000u);
    EXPECT_LE(mostBytes, kPictureCacheBudget);
    EXPECT_GT(mostBytes, kPictureCacheBudget / 2);
    EXPECT_LT(s1.Pictures, 2000u);
    // The first look was let go: it is made anew, and is right.
    fits->SetTextValues(QStringLiteral("T0"));
    const QImage again = paint(true);
    EXPECT_EQ(PictureCacheStats().Hits, s1.Hits);
    EXPECT_EQ(FirstDifference(paint(false), again), "");
    // The last one is still kept, and is right.
    fits->SetTextValues(QStringLiteral("T1999"));
    const QImage kept = paint(true);
    EXPECT_EQ(PictureCacheStats().Hits, s1.Hits + 1);
    EXPECT_EQ(FirstDifference(paint(false), kept), "");
}

TEST_F(PictureCache, OnePaintMakesAtMostItsShareOfNewPicturesAndPaintsTheRestDirectly) {
    // 100 text blocks more, each with a text of its own: 100 new looks and more in one paint.
    std::vector<TDiagText*> texts;
    for (int i = 0; i < 100; ++i) {
        auto* t = Place<TDiagText>(doText, 20 + (i % 10) * 60, 420 + (i / 10) * 70);
        ASSERT_NE(t, nullptr);
        t->SetTextValues(QStringLiteral("N%1").arg(i));
        texts.push_back(t);
    }
    dc->SetZoom(0.5);
    ClearPictureCache();
    const QImage direct = RenderWithCache(false);
    const TPictureCacheStats s0 = PictureCacheStats();
    const QImage first = RenderWithCache(true);
    const TPictureCacheStats s1 = PictureCacheStats();
    EXPECT_EQ(s1.Made + s1.Refused - s0.Made - s0.Refused, uint64_t(kPicturesMadePerPaint));
    EXPECT_EQ(FirstDifference(direct, first), "");
    // The next paints make the rest, and then everything comes from pictures.
    const QImage second = RenderWithCache(true);
    const QImage third = RenderWithCache(true);
    const TPictureCacheStats s3 = PictureCacheStats();
    EXPECT_GT(s3.Made + s3.Refused, s1.Made + s1.Refused);
    EXPECT_EQ(FirstDifference(direct, second), "");
    EXPECT_EQ(FirstDifference(direct, third), "");
    const QImage fourth = RenderWithCache(true);
    EXPECT_EQ(PictureCacheStats().Made, s3.Made);
    EXPECT_EQ(FirstDifference(direct, fourth), "");
}

namespace {
using SurfaceRenders = PictureCache;
} // namespace

// Fails today: the wires' canvas keeps its painter backend from paint to paint when the next
// paint's painter has the same address, and TPainterBackend::DeviceArea keeps the device's area
// for as long as the transform stays; the small image's area then cuts the wires of the whole
// picture (at 100%, nothing to the right of x = 204). Disabled until the backend forgets the
// device's area when a paint ends or the target device changes.
TEST_F(SurfaceRenders, AfterARenderIntoASmallImageTheWholeSurfaceStillShowsItsWires) {
    // All renders from the same place, so that the surface's paint gets its painter where it
    // got it before; between the whole pictures, one into a small image at the same zoom.
    const auto render = [&](QSize size) {
        QImage img(size, QImage::Format_ARGB32_Premultiplied);
        img.fill(Qt::red);
        panel.render(&img);
        return img;
    };
    for (const double z : {1.0, 0.5, 2.0}) {
        dc->SetZoom(z);
        const QImage whole = render(panel.size());
        EXPECT_GT(Inked(whole), 5000);
        dc->SetZoom(z == 1.0 ? 0.75 : 1.0);
        render(panel.size());
        dc->SetZoom(z);
        render(QSize(200, 150));
        EXPECT_EQ(FirstDifference(whole, render(panel.size())), "") << Zoom(z);
    }
}
