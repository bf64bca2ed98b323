#include "common/test_util.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QApplication>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <gtest/gtest.h>

using namespace vde;
using vde::test::PixelColor;

namespace {
// A host widget that fills itself, so the test can tell its own paint from ours.
class FilledPanel : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.fillRect(rect(), QColor(0, 0, 255));
    }
};
} // namespace

TEST(PaintHook, WidgetPaintsFirstThenTheHandlerDrawsOnTop) {
    FilledPanel panel;
    panel.resize(40, 40);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    int calls = 0;
    SetPaintHandler(&panel, [&] {
        ++calls;
        canvas.Brush.Color = 0x00FF00;
        canvas.FillRect({10, 10, 20, 20});
    });
    EXPECT_TRUE(HasPaintHandler(&panel));
    QImage img(40, 40, QImage::Format_ARGB32);
    panel.render(&img);
    EXPECT_GE(calls, 1);
    EXPECT_EQ(PixelColor(img, 15, 15), 0x00FF00u);
    EXPECT_EQ(PixelColor(img, 5, 5), 0xFF0000u); // blue in $00BBGGRR
    SetPaintHandler(&panel, {});
    EXPECT_FALSE(HasPaintHandler(&panel));
    QImage img2(40, 40, QImage::Format_ARGB32);
    panel.render(&img2);
    EXPECT_EQ(PixelColor(img2, 15, 15), 0xFF0000u);
}

TEST(PaintHook, CanvasOutsideThePaintAsksTheWidgetToRepaint) {
    FilledPanel panel;
    panel.resize(20, 20);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    int asked = 0;
    canvas.OnRequestPaint = [&] { ++asked; };
    canvas.FillRect({0, 0, 5, 5});
    EXPECT_EQ(asked, 1);
}

TEST(CustomDrawnControl, PanelsAreSurfacesInputWidgetsAreNot) {
    QWidget plain;
    QFrame frame;
    QGroupBox group;
    FilledPanel hostPanel;
    QPushButton button;
    QLineEdit edit;
    QLabel label;
    EXPECT_TRUE(IsCustomDrawnControl(&plain));
    EXPECT_TRUE(IsCustomDrawnControl(&frame));
    EXPECT_TRUE(IsCustomDrawnControl(&group));
    EXPECT_TRUE(IsCustomDrawnControl(&hostPanel));
    EXPECT_FALSE(IsCustomDrawnControl(&button));
    EXPECT_FALSE(IsCustomDrawnControl(&edit));
    EXPECT_FALSE(IsCustomDrawnControl(&label));
    EXPECT_FALSE(IsCustomDrawnControl(nullptr));
}

TEST(CustomDrawnControl, HostCanOverride) {
    QPushButton button;
    button.setProperty("vdeCustomDrawn", true);
    EXPECT_TRUE(IsCustomDrawnControl(&button));
    QWidget plain;
    plain.setProperty("vdeCustomDrawn", false);
    EXPECT_FALSE(IsCustomDrawnControl(&plain));
}

TEST(PublishesOnPaint, ScrollAreasDoNotTheirViewportsDo) {
    QWidget plain;
    QScrollArea area;
    EXPECT_TRUE(PublishesOnPaint(&plain));
    EXPECT_FALSE(PublishesOnPaint(&area));
    EXPECT_TRUE(PublishesOnPaint(area.viewport()));
    plain.setProperty("vdePublishesOnPaint", false);
    EXPECT_FALSE(PublishesOnPaint(&plain));
}
