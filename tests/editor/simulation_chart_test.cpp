// The timing chart of a simulation record, checked on the pixels of a rendered picture, and
// written as PNG, SVG and PDF.

#include "simulation/sim_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/editor/simulation_chart.h"
#include "velDiagEdit/platform/errors.h"

#include <QFile>
#include <QTemporaryDir>

using namespace vde;
using namespace vde::test;

namespace {

// A: 0 1 1 0 1 1 1 1 through a buffer to Y (one step later), 8 steps; and a forbidden span
// over steps 3 and 4 added by hand.
TSimRecord SmallRecord() {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* buf = c.Text(200, 0, "BUF", 1, 1);
    TDiagText* y = c.Probe(400, 0, "Y");
    c.Connect(a, 1, buf, -1);
    c.Connect(buf, 1, y, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("A", TSimWaveform::Parse("0110 1"));
    sim.Reset();
    sim.Run(8);
    TSimRecord rec = sim.Record();
    rec.Forbidden.push_back({3, 5, {1}});
    return rec;
}

bool Dark(const QImage& img, int x, int y) {
    return qGray(img.pixel(x, y)) < 80;
}

} // namespace

TEST(SimChart, RowsShowTheSignalsAtTheirLevelsWithFillsAndBands) {
    const TSimRecord rec = SmallRecord();
    TSimChartOptions o;
    o.StepWidth = 16;
    const TSimChartGeometry g = SimChartGeometry(rec, o);
    const QImage img = RenderSimChart(rec, o);
    ASSERT_EQ(img.size(), g.Size);
    EXPECT_EQ(g.StepX(1) - g.StepX(0), 16);
    EXPECT_EQ(g.LowY(0) - g.HighY(0), 28 - 2 * 5);

    const std::string a = "01101111", y = "00110111"; // Y is A one step later
    const std::string rows[2] = {a, y};
    for (int row = 0; row < 2; ++row) {
        for (int k = 0; k < 8; ++k) {
            const int x = g.StepX(k) + 8;
            const bool one = rows[row][size_t(k)] == '1';
            EXPECT_EQ(Dark(img, x, g.HighY(row)), one) << "row " << row << " step " << k;
            EXPECT_EQ(Dark(img, x, g.LowY(row)), !one) << "row " << row << " step " << k;
            const int mid = (g.HighY(row) + g.LowY(row)) / 2;
            const bool band = k == 3 || k == 4;
            const TColor expected = one ? o.HighFill : band ? o.ForbiddenFill : o.Background;
            EXPECT_EQ(PixelColor(img, x, mid), expected) << "row " << row << " step " << k;
        }
    }
    // The rise of A at step 1 is a vertical line at the step's left edge.
    EXPECT_TRUE(Dark(img, g.StepX(1), (g.HighY(0) + g.LowY(0)) / 2));
    EXPECT_FALSE(Dark(img, g.StepX(2), (g.HighY(0) + g.LowY(0)) / 2)) << "no change at 2";
    // The axes meet at step 0 on the axis line.
    EXPECT_TRUE(Dark(img, g.X0, g.AxisY - 1));
    EXPECT_TRUE(Dark(img, g.StepX(8), g.AxisY - 1));
    // The captions stand left of the axis in their rows.
    for (int row = 0; row < 2; ++row) {
        int dark = 0;
        for (int x = 0; x < g.X0 - 12; ++x)
            for (int yy = g.RowsTop + row * g.RowHeight; yy < g.RowsTop + (row + 1) * g.RowHeight;
                 ++yy)
                dark += Dark(img, x, yy) ? 1 : 0;
        EXPECT_GT(dark, 5) << "caption of row " << row;
    }
}

TEST(SimChart, OscillatingSpansHaveTheirOwnColourAndNoSpansNoLegend) {
    TSimRecord rec;
    rec.Steps = 4;
    TSimTrace t;
    t.Name = "P";
    rec.Traces.push_back(t);
    TSimChartOptions o;
    o.StepWidth = 10;
    const TSimChartGeometry plain = SimChartGeometry(rec, o);
    rec.Oscillating.push_back({1, 3, {0}});
    const TSimChartGeometry g = SimChartGeometry(rec, o);
    EXPECT_GT(g.RowsTop, plain.RowsTop) << "a legend line above the rows";
    const QImage img = RenderSimChart(rec, o);
    const int mid = (g.HighY(0) + g.LowY(0)) / 2;
    EXPECT_EQ(PixelColor(img, g.StepX(0) + 5, mid), o.Background);
    EXPECT_EQ(PixelColor(img, g.StepX(1) + 5, mid), o.OscillationFill);
    EXPECT_EQ(PixelColor(img, g.StepX(2) + 5, mid), o.OscillationFill);
    EXPECT_EQ(PixelColor(img, g.StepX(3) + 5, mid), o.Background);
}

TEST(SimChart, SavedAsPngSvgAndPdf) {
    const TSimRecord rec = SmallRecord();
    QTemporaryDir dir;
    SaveSimChart(dir.filePath("c.png"), rec);
    SaveSimChart(dir.filePath("c.svg"), rec);
    SaveSimChart(dir.filePath("c.pdf"), rec);
    QImage png(dir.filePath("c.png"));
    EXPECT_EQ(png.size(), SimChartSize(rec));
    QFile svg(dir.filePath("c.svg"));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    const QByteArray s = svg.readAll();
    EXPECT_TRUE(s.contains("<svg"));
    EXPECT_TRUE(s.contains(">A<") || s.contains(">A </")) << "names stay text";
    QFile pdf(dir.filePath("c.pdf"));
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    EXPECT_TRUE(pdf.readAll().startsWith("%PDF"));
    EXPECT_THROW(SaveSimChart(dir.filePath("c.bmp"), rec), EInvalidOperation);
    EXPECT_FALSE(QFile::exists(dir.filePath("c.bmp")));
    EXPECT_THROW(SaveSimChart(dir.filePath("none/c.png"), rec), EFCreateError);
    TSimRecord longRun;
    longRun.Steps = kMaxSimChartSteps + 1;
    EXPECT_THROW(SimChartSize(longRun), EInvalidOperation);
}
