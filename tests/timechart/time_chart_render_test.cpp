// The timing chart on real devices: an image, a widget during its paint, PNG and SVG files.
#include "common/test_util.h"
#include "velDiagEdit/timechart/time_chart.h"
#include "velDiagEdit/timechart/time_chart_export.h"
#include "velDiagEdit/timechart/time_chart_sample.h"

#include <QFile>
#include <QPainter>
#include <QSvgGenerator>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QWidget>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

using namespace vde;
using vde::test::PixelColor;
using vde::test::WhiteImage;

namespace {

constexpr TColor kBar1 = 0x3366CC;
constexpr TColor kBar2 = 0x22AA44;
constexpr TColor kArrow = 0xAA0000;
constexpr TColor kBoundLine = 0x808080;

// Chart (40, 20) - (340, 170), D = 10: P0 (50, 20), P1 (50, 160), P2 (340, 160).
void PaintWholeChart(TTimeChart& chart, TLabel* label) {
    chart.PrepareRectArea(14, 10, 40, 20, 300, 150, label, QStringLiteral("t"), clWhite, true);
    chart.Canvas().Pen.Color = kBoundLine;
    // Bar 1: x 100..159, rows 85..158; arrow at row 50 from x 100 to 160.
    chart.ShowRectWithArrow(20, 40, 50, 80, kBar1, kArrow, QStringLiteral("t1"), false, 1, psSolid);
    // Bar 2: x 220..279, rows 130..158, bound lines at x 220 and 280.
    chart.ShowRectWithArrow(60, 80, 20, 40, kBar2, clNone, QString(), true, 1, psSolid);
}

void ExpectWholeChartPixels(const QImage& img) {
    // Vertical axis, pen 2 centred on x 50: columns 49 and 50.
    EXPECT_EQ(PixelColor(img, 49, 100), clBlack);
    EXPECT_EQ(PixelColor(img, 50, 100), clBlack);
    EXPECT_EQ(PixelColor(img, 48, 100), clWhite);
    EXPECT_EQ(PixelColor(img, 51, 100), clWhite);
    // Horizontal axis on rows 159 and 160.
    EXPECT_EQ(PixelColor(img, 200, 159), clBlack);
    EXPECT_EQ(PixelColor(img, 200, 160), clBlack);
    EXPECT_EQ(PixelColor(img, 200, 161), clWhite);
    // Vertical arrowhead: a barb from (45, 30) up to the tip (50, 20).
    EXPECT_EQ(PixelColor(img, 45, 30), clBlack);
    // Horizontal arrowhead: a barb from (330, 155) to the tip (340, 160).
    EXPECT_EQ(PixelColor(img, 330, 155), clBlack);
    // Bars, standing one pixel above the axis line.
    EXPECT_EQ(PixelColor(img, 130, 120), kBar1);
    EXPECT_EQ(PixelColor(img, 130, 85), kBar1);
    EXPECT_EQ(PixelColor(img, 130, 158), kBar1);
    EXPECT_EQ(PixelColor(img, 130, 84), clWhite);
    EXPECT_EQ(PixelColor(img, 250, 140), kBar2);
    EXPECT_EQ(PixelColor(img, 250, 129), clWhite);
    // Bound lines of bar 2 only, over the whole chart height.
    EXPECT_EQ(PixelColor(img, 220, 40), kBoundLine);
    EXPECT_EQ(PixelColor(img, 280, 40), kBoundLine);
    EXPECT_EQ(PixelColor(img, 100, 40), clWhite);
    // Dimension arrow of bar 1 on row 50, and its left arrowhead's tip one row above.
    EXPECT_EQ(PixelColor(img, 130, 50), kArrow);
    EXPECT_EQ(PixelColor(img, 100, 49), kArrow);
    EXPECT_EQ(PixelColor(img, 130, 51), clWhite);
}

class ChartWidget : public QWidget {
public:
    TLabel* Label = new TLabel(QStringLiteral("Caption"), this);
    int Paints = 0;
    ChartWidget() {
        setAutoFillBackground(true);
        QPalette pal = palette();
        pal.setColor(QPalette::Window, Qt::white);
        setPalette(pal);
        resize(400, 200);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        ++Paints;
        TTimeChart chart(this);
        PaintWholeChart(chart, Label);
    }
};

// A host that paints with its own painter and lends it to the library for the chart.
class LendingChartWidget : public ChartWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        ++Paints;
        QPainter painter(this);
        painter.fillRect(QRect(0, 0, 4, 4), Qt::green);
        {
            TPaintScope scope(this, &painter);
            TTimeChart chart(this);
            PaintWholeChart(chart, Label);
        }
        // The host goes on with its painter after the chart is gone.
        painter.fillRect(QRect(396, 0, 4, 4), Qt::green);
    }
};

QStringList SvgElementNamesAndTexts(const QString& fileName, QString* root) {
    QFile f(fileName);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QXmlStreamReader xml(&f);
    QStringList out;
    bool first = true;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            if (first && root)
                *root = xml.name().toString();
            first = false;
            out << xml.name().toString();
        } else if (xml.isCharacters() && !xml.isWhitespace()) {
            out << QStringLiteral("#") + xml.text().toString().trimmed();
        }
    }
    if (xml.hasError())
        return {QStringLiteral("error: ") + xml.errorString()};
    return out;
}

} // namespace

TEST(TimeChartImage, WholeChartPixels) {
    QImage img = WhiteImage(400, 200);
    {
        TTimeChart chart(&img);
        PaintWholeChart(chart, nullptr);
    }
    ExpectWholeChartPixels(img);
}

TEST(TimeChartImage, EqualPositionsFillNoPixel) {
    QImage img = WhiteImage(400, 200);
    {
        TTimeChart chart(&img);
        chart.PrepareRectArea(14, 10, 40, 20, 300, 150, nullptr, QString(), clWhite, true);
        chart.FillBetweenLines(20, 20, 50, clRed);
    }
    int red = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            red += PixelColor(img, x, y) == clRed;
    EXPECT_EQ(red, 0);
    // The same call with a width does fill, so the image does show fills.
    {
        TTimeChart chart(&img);
        chart.PrepareRectArea(14, 10, 40, 20, 300, 150, nullptr, QString(), clWhite, true);
        chart.FillBetweenLines(20, 21, 50, clRed);
    }
    EXPECT_EQ(PixelColor(img, 100, 120), clRed);
}

TEST(TimeChartWidget, PaintsThroughTheWidgetDuringItsPaint) {
    ChartWidget w;
    const QImage img = w.grab().toImage();
    ASSERT_GE(w.Paints, 1);
    ExpectWholeChartPixels(img);
    // The caption label stands in the column left of the chart.
    EXPECT_EQ(w.Label->geometry(), QRect(0, 20, 40, 150));
}

QStringList g_warnings;

TEST(TimeChartWidget, DrawsWithThePainterTheHostLends) {
    LendingChartWidget w;
    g_warnings.clear();
    const QtMessageHandler old = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& m) { g_warnings << m; });
    const QImage img = w.grab().toImage();
    qInstallMessageHandler(old);
    // No second painter is opened on the widget while the host's is active.
    EXPECT_TRUE(g_warnings.isEmpty()) << g_warnings.join(QLatin1Char('\n')).toStdString();
    ASSERT_GE(w.Paints, 1);
    ExpectWholeChartPixels(img);
    EXPECT_EQ(PixelColor(img, 1, 1), 0x00FF00u); // the host's own drawing stays
    EXPECT_EQ(PixelColor(img, 398, 1), 0x00FF00u);
}

TEST(TimeChartWidget, OutsideItsPaintDrawingAsksForARepaint) {
    ChartWidget w;
    TTimeChart chart(&w);
    int asked = 0;
    chart.Canvas().OnRequestPaint = [&] { ++asked; };
    chart.PrepareRectArea(14, 10, 40, 20, 300, 150, nullptr, QString(), clWhite, true);
    EXPECT_GT(asked, 0);
}

TEST(TimeChartExport, PngShowsTheSampleWithItsCaptionLabel) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QWidget host;
    auto* label = new TLabel(TimeChartSampleCaption(), &host);
    const QString file = dir.filePath(QStringLiteral("chart.png"));
    ASSERT_TRUE(SaveTimeChartPng(file, TimeChartSampleSize(), clWhite,
                                 [label](TTimeChart& c) { PaintTimeChartSample(c, label); }));
    QImage img(file);
    ASSERT_FALSE(img.isNull());
    EXPECT_EQ(img.size(), TimeChartSampleSize());
    // Sample chart (150, 16) - (750, 336), D 16: bars at x 210..329 and 480..629.
    EXPECT_EQ(PixelColor(img, 270, 200), 0xF0C080u);
    EXPECT_EQ(PixelColor(img, 555, 250), 0x80C0F0u);
    EXPECT_EQ(PixelColor(img, 166, 200), clBlack); // vertical axis
    // The label's text shows in its column.
    int ink = 0;
    for (int y = 16; y < 336; ++y)
        for (int x = 0; x < 150; ++x)
            ink += qGray(img.pixel(x, y)) < 128;
    EXPECT_GT(ink, 50);
}

TEST(TimeChartExport, SvgIsValidAndHoldsDrawingElements) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QWidget host;
    auto* label = new TLabel(TimeChartSampleCaption(), &host);
    const QString file = dir.filePath(QStringLiteral("chart.svg"));
    ASSERT_TRUE(SaveTimeChartSvg(file, TimeChartSampleSize(), clWhite,
                                 QStringLiteral("Timing chart"),
                                 [label](TTimeChart& c) { PaintTimeChartSample(c, label); }));
    ASSERT_TRUE(QFile::exists(file));
    QSvgRenderer renderer(file);
    EXPECT_TRUE(renderer.isValid());
    QString root;
    const QStringList items = SvgElementNamesAndTexts(file, &root);
    EXPECT_EQ(root, QStringLiteral("svg"));
    EXPECT_GE(items.count(QStringLiteral("polyline")) + items.count(QStringLiteral("path")), 10)
        << items.join(' ').toStdString();
    EXPECT_GE(items.count(QStringLiteral("rect")), 2);
    EXPECT_TRUE(items.contains(QStringLiteral("#t1 = 20 ms")));
    EXPECT_TRUE(items.contains(QStringLiteral("#Time, ms")));
}

TEST(TimeChartExport, FreeingTheChartFinishesAnSvgFile) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString file = dir.filePath(QStringLiteral("own.svg"));
    QSvgGenerator gen;
    gen.setFileName(file);
    gen.setSize(QSize(400, 200));
    gen.setViewBox(QRect(0, 0, 400, 200));
    {
        auto chart = std::make_unique<TTimeChart>(&gen);
        PaintWholeChart(*chart, nullptr);
        QFile partial(file);
        const bool finished = partial.open(QIODevice::ReadOnly) &&
                              partial.readAll().contains(QByteArrayLiteral("</svg>"));
        EXPECT_FALSE(finished);
        chart.reset();
    }
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_TRUE(f.readAll().trimmed().endsWith(QByteArrayLiteral("</svg>")));
    QSvgRenderer renderer(file);
    EXPECT_TRUE(renderer.isValid());
}
