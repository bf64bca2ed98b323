// Connections painted for real: on a host panel through its paint hook, under the blocks that
// stand on the panel, and on an image.

#include "connection_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QCoreApplication>
#include <QImage>
#include <QPalette>
#include <QTest>
#include <QWidget>

using namespace vde;
using namespace vde::test;

namespace {

constexpr TColor kWhite = 0xFFFFFF;
constexpr TColor kBlack = 0x000000;
constexpr TColor kFuchsia = 0xFF00FF;
constexpr TColor kBody = 0xC0C0C0;

// A white panel with one AND gate at (100, 50), 60 x 100, and three wires:
//  0: (20, 130) to (250, 130), under the gate's body;
//  1: (30, 40) up to (30, 20), then right to (90, 20), the second segment selected;
//  2: (60, 60) down onto wire 0, ended there (junction dot at (60, 130)), last segment selected.
class PanelPaint : public ::testing::Test {
protected:
    QWidget panel;
    TDiagObjectList list{&panel};
    TCanvas canvas;
    std::unique_ptr<TDiagConnectList> cl;
    TDiagObject* gate = nullptr;
    TDiagConnection* junction = nullptr;

    void SetUp() override {
        panel.resize(300, 200);
        QPalette pal = panel.palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel.setPalette(pal);
        panel.setAutoFillBackground(true);
        gate = AndGate(list, 100, 50);
        canvas.SetHandle(&panel);
        cl = std::make_unique<TDiagConnectList>(&canvas);
        SetPaintHandler(&panel, [this] { cl->Paint(); });
        Wire(*cl, {{20, 130}, {250, 130}});
        Wire(*cl, {{30, 40}, {30, 20}, {90, 20}})->FSelectedIndex = 1;
        junction = Wire(*cl, {{60, 60}, {60, 125}});
        junction->EndConnection(nullptr, false);
        junction->FSelectedIndex = 1;
    }

    void TearDown() override { SetPaintHandler(&panel, {}); }

    QImage Render() {
        QImage img(300, 200, QImage::Format_ARGB32);
        img.fill(Qt::red);
        panel.render(&img);
        return img;
    }
};

} // namespace

TEST_F(PanelPaint, TheJunctionWireEndsOnTheFirstWire) {
    ASSERT_EQ(junction->FPoints, (std::vector<TPoint>{{60, 60}, {60, 125}, {60, 130}}));
    ASSERT_EQ(junction->FDstCrossInfo, LR(1, 1));
}

TEST_F(PanelPaint, WideHorizontalLineCoversTwoRowsFromOneLeftOfItsStartToItsEnd) {
    const QImage img = Render();
    EXPECT_EQ(PixelColor(img, 40, 129), kBlack);
    EXPECT_EQ(PixelColor(img, 40, 130), kBlack);
    EXPECT_EQ(PixelColor(img, 40, 128), kWhite);
    EXPECT_EQ(PixelColor(img, 40, 131), kWhite);
    EXPECT_EQ(PixelColor(img, 19, 130), kBlack);
    EXPECT_EQ(PixelColor(img, 18, 130), kWhite);
    EXPECT_EQ(PixelColor(img, 250, 130), kBlack);
    EXPECT_EQ(PixelColor(img, 251, 130), kWhite);
}

TEST_F(PanelPaint, SelectedSegmentIsFuchsiaAndTheOthersBlack) {
    const QImage img = Render();
    for (int x : {29, 30, 60, 90}) {
        EXPECT_EQ(PixelColor(img, x, 19), kFuchsia) << x;
        EXPECT_EQ(PixelColor(img, x, 20), kFuchsia) << x;
    }
    EXPECT_EQ(PixelColor(img, 28, 20), kWhite);
    EXPECT_EQ(PixelColor(img, 91, 20), kWhite);
    EXPECT_EQ(PixelColor(img, 60, 18), kWhite);
    EXPECT_EQ(PixelColor(img, 60, 21), kWhite);
    // The first segment, vertical at X 30, drawn in black before the selected one.
    EXPECT_EQ(PixelColor(img, 29, 30), kBlack);
    EXPECT_EQ(PixelColor(img, 30, 30), kBlack);
    EXPECT_EQ(PixelColor(img, 28, 30), kWhite);
    EXPECT_EQ(PixelColor(img, 31, 30), kWhite);
    EXPECT_EQ(PixelColor(img, 30, 40), kBlack);
    EXPECT_EQ(PixelColor(img, 30, 41), kWhite);
    EXPECT_EQ(PixelColor(img, 30, 21), kBlack);
}

TEST_F(PanelPaint, JunctionDotIsFilledInTheSegmentsColour) {
    QImage img = Render();
    EXPECT_EQ(PixelColor(img, 60, 100), kBlack);
    EXPECT_EQ(PixelColor(img, 61, 100), kWhite);
    EXPECT_EQ(PixelColor(img, 60, 127), kFuchsia);
    // Centre pixels of the dot below the wire's end, on neither wire.
    EXPECT_EQ(PixelColor(img, 59, 131), kFuchsia);
    EXPECT_EQ(PixelColor(img, 60, 131), kFuchsia);
    EXPECT_EQ(PixelColor(img, 61, 131), kFuchsia);

    junction->FSelectedIndex = -1;
    img = Render();
    EXPECT_EQ(PixelColor(img, 60, 127), kBlack);
    EXPECT_EQ(PixelColor(img, 60, 131), kBlack);

    junction->FDstCrossInfo = {};
    img = Render();
    EXPECT_EQ(PixelColor(img, 59, 131), kWhite);
    EXPECT_EQ(PixelColor(img, 60, 131), kWhite);
}

TEST_F(PanelPaint, BlocksPaintOverTheWires) {
    const QImage img = Render();
    // Wire 0 runs under the gate's body, whose colour wins.
    EXPECT_EQ(PixelColor(img, 130, 129), kBody);
    EXPECT_EQ(PixelColor(img, 130, 130), kBody);
    // Just outside the gate the wire shows.
    EXPECT_EQ(PixelColor(img, 99, 130), kBlack);
    EXPECT_EQ(PixelColor(img, 160, 130), kBlack);
    // Inside the gate's bounds but beside its body the gate draws nothing.
    EXPECT_EQ(PixelColor(img, 101, 130), kBlack);
}

TEST_F(PanelPaint, PaintOutsideThePanelsPaintAsksForARepaintAndDrawsNothing) {
    int asked = 0;
    canvas.OnRequestPaint = [&asked] { ++asked; };
    static QStringList warnings;
    warnings.clear();
    const QtMessageHandler old =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& msg) {
            if (type != QtDebugMsg)
                warnings << msg;
        });
    junction->Paint();
    qInstallMessageHandler(old);
    EXPECT_EQ(asked, 3) << "two lines and the dot found nowhere to draw";
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join(QLatin1Char('\n')).toStdString();
    EXPECT_FALSE(panel.paintingActive());
}

TEST_F(PanelPaint, PaintOutsideThePanelsPaintUpdatesTheShownPanel) {
    struct PaintCounter : QObject {
        int paints = 0;
        bool eventFilter(QObject*, QEvent* e) override {
            if (e->type() == QEvent::Paint)
                ++paints;
            return false;
        }
    } counter;
    panel.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    QCoreApplication::processEvents();
    panel.installEventFilter(&counter);
    counter.paints = 0;
    junction->SetSelectedIndex(0);
    QTRY_VERIFY_WITH_TIMEOUT(counter.paints > 0, 2000);
    panel.removeEventFilter(&counter);
}

TEST(ImagePaint, ListOverAnImageDrawsWithACanvasOfItsOwn) {
    QImage img = WhiteImage(100, 60);
    {
        TDiagConnectList cl(&img);
        EXPECT_TRUE(cl.GetFreeCanvas());
        ASSERT_NE(cl.GetCanvas(), nullptr);
        EXPECT_EQ(cl.GetCanvas()->Handle(), &img);
        EXPECT_EQ(cl.GetCanvas()->Pen.Width, 2);
        EXPECT_EQ(cl.GetCanvas()->Pen.Color, 0u);
        auto* w = Wire(cl, {{10, 10}, {50, 10}, {50, 40}});
        w->FSelectedIndex = 0;
        cl.Paint();
    }
    EXPECT_EQ(PixelColor(img, 9, 9), kFuchsia);
    EXPECT_EQ(PixelColor(img, 48, 10), kFuchsia);
    EXPECT_EQ(PixelColor(img, 8, 10), kWhite);
    EXPECT_EQ(PixelColor(img, 49, 30), kBlack);
    EXPECT_EQ(PixelColor(img, 50, 40), kBlack);
    EXPECT_EQ(PixelColor(img, 50, 41), kWhite);
    EXPECT_EQ(PixelColor(img, 51, 30), kWhite);
}
