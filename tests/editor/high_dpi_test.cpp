// On a screen of device pixel ratio 2 the surface stays sharp: everything is drawn at twice the
// resolution, not scaled up from a picture at ratio 1. A wire's pen is 2 pixels wide (its
// centre row and the row above it), so at ratio 2 it covers exactly 4 rows of device pixels.

#include "editor_test_util.h"

#include "common/test_util.h"

#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class HighDpi : public EditorFixture {
protected:
    void SetUp() override {
        EditorFixture::SetUp();
        // A horizontal wire along row 50 from x = 20 to x = 180, and a vertical one along
        // column 300 from y = 40 to y = 200.
        Wire(*dc->ConList, {{20, 50}, {180, 50}});
        Wire(*dc->ConList, {{300, 40}, {300, 200}});
        Show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    }

    QImage RenderAt(qreal ratio) {
        QImage img(panel.size() * ratio, QImage::Format_ARGB32);
        img.setDevicePixelRatio(ratio);
        img.fill(Qt::white);
        panel.render(&img);
        return img;
    }

    // The black device pixels of a column (or of a row), as the list of their positions.
    static std::vector<int> BlackInColumn(const QImage& img, int x) {
        std::vector<int> out;
        for (int y = 0; y < img.height(); ++y)
            if (PixelColor(img, x, y) == 0x000000u)
                out.push_back(y);
        return out;
    }
    static std::vector<int> BlackInRow(const QImage& img, int y) {
        std::vector<int> out;
        for (int x = 0; x < img.width(); ++x)
            if (PixelColor(img, x, y) == 0x000000u)
                out.push_back(x);
        return out;
    }
};

} // namespace

TEST_F(HighDpi, AtRatioOneAWireIsTwoPixelsWide) {
    const QImage img = RenderAt(1);
    // The pen of width 2 stamps a 2 x 2 square from (x - 1, y - 1): rows 49 and 50.
    EXPECT_EQ(BlackInColumn(img, 100), (std::vector<int>{49, 50}));
    EXPECT_EQ(BlackInRow(img, 120), (std::vector<int>{299, 300}));
}

TEST_F(HighDpi, AtRatioTwoAWireIsFourDevicePixelsWideAndSharp) {
    const QImage img = RenderAt(2);
    ASSERT_EQ(img.width(), 800);
    // Rows 49 and 50 of the surface are device rows 98 to 101; nothing in between is grey.
    EXPECT_EQ(BlackInColumn(img, 200), (std::vector<int>{98, 99, 100, 101}));
    EXPECT_EQ(BlackInRow(img, 240), (std::vector<int>{598, 599, 600, 601}));
    for (int y = 94; y < 106; ++y) {
        const TColor c = PixelColor(img, 200, y);
        EXPECT_TRUE(c == 0x000000u || c == 0xFFFFFFu) << "row " << y << ": " << std::hex << c;
    }
}

TEST_F(HighDpi, AtRatioTwoABlocksFrameIsTwiceAsManyDevicePixelsWide) {
    TDiagObject* g = AndGate(*dc->ObjList, 60, 100);
    dc->AssignObjEvents(g);
    const QImage one = RenderAt(1);
    const QImage two = RenderAt(2);
    // The frame's pen is 2 pixels wide at ratio 1 and 4 device pixels wide at ratio 2, on the
    // same place of the surface.
    auto blackRunAt = [](const QImage& img, int y, int from, int to) {
        int n = 0;
        for (int x = from; x < to; ++x)
            n += PixelColor(img, x, y) == 0x000000u;
        return n;
    };
    const int mid = g->y() + g->height() / 2;
    const int left = g->x();
    const int atOne = blackRunAt(one, mid, left - 2, left + 20);
    EXPECT_GE(atOne, 2);
    EXPECT_EQ(blackRunAt(two, 2 * mid, 2 * (left - 2), 2 * (left + 20)), 2 * atOne);
}
