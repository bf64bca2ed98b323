// Exact drawing of the timing chart, checked through the recording canvas.
#include "velDiagEdit/platform/recording_backend.h"
#include "velDiagEdit/timechart/time_chart.h"

#include <QFontMetrics>
#include <QImage>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace vde;

namespace {

// A chart that draws into a recorder.
struct RecordedChart {
    TRecordingBackend rec;
    TTimeChart chart{nullptr};
    RecordedChart() { chart.Canvas().SetBackend(&rec); }
    // Chart rectangle (40, 20) - (240, 120): 200 wide, 100 high; D = 10.
    void Prepare(int deltaWidth = 10, int width = 200, int height = 100) {
        chart.PrepareRectArea(14, deltaWidth, 40, 20, width, height, nullptr, QStringLiteral("t"),
                              clWhite, true);
        rec.Clear();
    }
    QStringList Lines() const {
        QStringList out;
        for (const auto& op : rec.Ops)
            if (op.Kind == opLine)
                out << op.ToString();
        return out;
    }
};

class ThrowingFillBackend : public TRecordingBackend {
public:
    void FillRect(const TRect&, const TBrush&) override { throw std::runtime_error("device lost"); }
};

TFont FontOfHeight(int h) {
    TFont f;
    f.Height = h;
    return f;
}

} // namespace

TEST(TimeChartCreate, LeavesArrowYOffAndEverythingElseZero) {
    QImage img(10, 10, QImage::Format_ARGB32);
    TTimeChart chart(&img);
    EXPECT_FALSE(chart.GetArrowY());
    EXPECT_EQ(chart.GetTextHeight(), 0);
    EXPECT_EQ(chart.GetDeltaWidth(), 0);
    EXPECT_EQ(chart.GetCaptionLabel(), nullptr);
    EXPECT_EQ(chart.GetRect(), (TRect{0, 0, 0, 0}));
    EXPECT_TRUE(chart.GetHorizCaption().isEmpty());
    EXPECT_EQ(chart.GetParentColor(), 0u);
    EXPECT_EQ(chart.GetTextXOfset(), 0);
    EXPECT_EQ(chart.Canvas().Handle(), &img);
}

TEST(TimeChartProperties, SettersStoreWithoutDrawing) {
    RecordedChart r;
    r.chart.SetTextHeight(17);
    r.chart.SetDeltaWidth(-3);
    r.chart.SetHorizCaption(QStringLiteral("ms"));
    r.chart.SetParentColor(0x123456);
    r.chart.SetArrowY(true);
    r.chart.SetTextXOfset(55);
    EXPECT_EQ(r.chart.GetTextHeight(), 17);
    EXPECT_EQ(r.chart.GetDeltaWidth(), -3);
    EXPECT_EQ(r.chart.GetHorizCaption(), QStringLiteral("ms"));
    EXPECT_EQ(r.chart.GetParentColor(), 0x123456u);
    EXPECT_TRUE(r.chart.GetArrowY());
    EXPECT_EQ(r.chart.GetTextXOfset(), 55);
    EXPECT_TRUE(r.rec.Ops.empty());
}

TEST(TimeChartPrepare, StoresTheLayoutAndCutsTextHeightToEightBits) {
    RecordedChart r;
    r.chart.PrepareRectArea(300, 12, 40, 25, 200, 90, nullptr, QStringLiteral("Time"), 0x00FFEE,
                            true);
    EXPECT_EQ(r.chart.GetTextHeight(), 44); // 300 mod 256
    EXPECT_EQ(r.chart.GetDeltaWidth(), 12);
    EXPECT_EQ(r.chart.GetRect(), (TRect{40, 25, 240, 115}));
    EXPECT_EQ(r.chart.GetHorizCaption(), QStringLiteral("Time"));
    EXPECT_EQ(r.chart.GetParentColor(), 0x00FFEEu);
    EXPECT_TRUE(r.chart.GetArrowY());
    EXPECT_EQ(r.chart.GetTextXOfset(), 40);
    EXPECT_FALSE(r.rec.Ops.empty()); // it paints at once
}

TEST(TimeChartPaint, DrawsAxesArrowheadsAndRightAlignedCaption) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QStringLiteral("Time"), 0xE0E0E0,
                            true);
    const int tw = FontTextWidth(FontOfHeight(15), QStringLiteral("Time"));
    // L 40, T 20, R 240, B 120, D 10: P0 (50,20), P1 (50,110), P2 (240,110).
    EXPECT_EQ(r.rec.Strings(),
              QStringList(
                  {"MoveTo 45,30", "Line 45,30 50,20 w2 c$000000", "Line 50,20 55,30 w2 c$000000",
                   "MoveTo 50,20", "Line 50,20 50,110 w2 c$000000",
                   "Line 50,110 240,110 w2 c$000000", "MoveTo 230,105",
                   "Line 230,105 240,110 w2 c$000000", "Line 240,110 230,115 w2 c$000000",
                   QStringLiteral("Text %1,120 \"Time\" h15 c$FF000008 b$E0E0E0").arg(240 - tw)}));
}

TEST(TimeChartPaint, WithoutArrowYStartsAtTheTopOfTheVerticalAxis) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QString(), clWhite, false);
    const QStringList s = r.rec.Strings();
    ASSERT_GE(s.size(), 2);
    EXPECT_EQ(s[0], "MoveTo 50,20");
    EXPECT_EQ(s[1], "Line 50,20 50,110 w2 c$000000");
    EXPECT_EQ(r.Lines().size(), 4); // two axes, two barbs of the horizontal arrowhead
}

TEST(TimeChartPaint, LeavesPenWidthOneAndBlackAndSetsFontAndBrush) {
    RecordedChart r;
    r.chart.Canvas().Pen.Width = 5;
    r.chart.Canvas().Pen.Color = clRed;
    r.chart.PrepareRectArea(21, 10, 40, 20, 200, 100, nullptr, QStringLiteral("x"), 0x00C0FF, true);
    EXPECT_EQ(r.chart.Canvas().Pen.Width, 1);
    EXPECT_EQ(r.chart.Canvas().Pen.Color, clBlack);
    EXPECT_EQ(r.chart.Canvas().Font.Height, 21);
    EXPECT_EQ(r.chart.Canvas().Brush.Color, 0x00C0FFu);
}

TEST(TimeChartPaint, OddDeltaWidthGivesArrowheadHalfWidthsTruncated) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 9, 40, 20, 200, 100, nullptr, QString(), clWhite, true);
    // P0 (49,20), P2 (240,111); D/2 = 4.
    const QStringList s = r.rec.Strings();
    ASSERT_GE(s.size(), 9);
    EXPECT_EQ(s[0], "MoveTo 45,29");
    EXPECT_EQ(s[1], "Line 45,29 49,20 w2 c$000000");
    EXPECT_EQ(s[2], "Line 49,20 53,29 w2 c$000000");
    EXPECT_EQ(s[6], "MoveTo 231,107");
    EXPECT_EQ(s[7], "Line 231,107 240,111 w2 c$000000");
    EXPECT_EQ(s[8], "Line 240,111 231,115 w2 c$000000");
}

TEST(TimeChartShift, MovesRightKeepsSizeAndCaptionAndDropsVerticalArrowhead) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QStringLiteral("Time"), clWhite,
                            true);
    r.rec.Clear();
    r.chart.ShiftRectArea(10, 0, 0, 0, nullptr, QString(), false);
    EXPECT_EQ(r.chart.GetRect(), (TRect{50, 20, 250, 120}));
    EXPECT_EQ(r.chart.GetHorizCaption(), QStringLiteral("Time"));
    EXPECT_FALSE(r.chart.GetArrowY());
    EXPECT_EQ(r.chart.GetTextXOfset(), 40);
    const int tw = FontTextWidth(FontOfHeight(15), QStringLiteral("Time"));
    EXPECT_EQ(r.rec.Strings(),
              QStringList(
                  {"MoveTo 60,20", "Line 60,20 60,110 w2 c$000000",
                   "Line 60,110 250,110 w2 c$000000", "MoveTo 240,105",
                   "Line 240,105 250,110 w2 c$000000", "Line 250,110 240,115 w2 c$000000",
                   QStringLiteral("Text %1,120 \"Time\" h15 c$FF000008 b$FFFFFF").arg(250 - tw)}));
}

TEST(TimeChartShift, SetsOnlyPositiveSizesAndOnlyANonEmptyCaption) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QStringLiteral("Time"), clWhite,
                            false);
    r.chart.ShiftRectArea(-5, 7, 150, -1, nullptr, QStringLiteral("ms"), true);
    EXPECT_EQ(r.chart.GetRect(), (TRect{35, 27, 185, 127}));
    EXPECT_EQ(r.chart.GetHorizCaption(), QStringLiteral("ms"));
    EXPECT_TRUE(r.chart.GetArrowY());
    r.chart.ShiftRectArea(0, 0, 0, 60, nullptr, QString(), true);
    EXPECT_EQ(r.chart.GetRect(), (TRect{35, 27, 185, 87}));
    EXPECT_EQ(r.chart.GetHorizCaption(), QStringLiteral("ms"));
}

TEST(TimeChartLines, PercentPositionsOnA200WideChartReachTheRightEdge) {
    RecordedChart r;
    r.Prepare();
    r.chart.Canvas().Pen.Color = clGray;
    r.chart.PaintLines({0, 50, 100}, 1, psSolid);
    EXPECT_EQ(r.rec.Strings(), QStringList({"MoveTo 40,20", "Line 40,20 40,120 w1 c$808080",
                                            "MoveTo 140,20", "Line 140,20 140,120 w1 c$808080",
                                            "MoveTo 240,20", "Line 240,20 240,120 w1 c$808080"}));
}

TEST(TimeChartLines, SetsPenWidthAndStyleAndLeavesThem) {
    RecordedChart r;
    r.Prepare();
    r.chart.PaintLines({25}, 3, psDot);
    EXPECT_EQ(r.rec.Strings(), QStringList({"MoveTo 90,20", "Line 90,20 90,120 w3 c$000000 s2"}));
    EXPECT_EQ(r.chart.Canvas().Pen.Width, 3);
    EXPECT_EQ(r.chart.Canvas().Pen.Style, psDot);
}

TEST(TimeChartLines, HalfwayPositionsRoundToEven) {
    RecordedChart r;
    r.Prepare(10, 201); // 50 % of 201 = 100.5 -> 100
    r.chart.PaintLines({50}, 1, psSolid);
    ASSERT_GE(r.rec.Ops.size(), 1u);
    ASSERT_FALSE(r.rec.Ops[0].Points.empty());
    EXPECT_EQ(r.rec.Ops[0].Points[0].X, 140);
    r.Prepare(10, 203); // 50 % of 203 = 101.5 -> 102
    r.chart.PaintLines({50}, 1, psSolid);
    ASSERT_GE(r.rec.Ops.size(), 1u);
    ASSERT_FALSE(r.rec.Ops[0].Points.empty());
    EXPECT_EQ(r.rec.Ops[0].Points[0].X, 142);
    r.Prepare(10, 205); // 10 % of 205 = 20.5 -> 20; 30 % = 61.5 -> 62
    r.chart.PaintLines({10, 30}, 1, psSolid);
    ASSERT_GE(r.rec.Ops.size(), 3u);
    ASSERT_FALSE(r.rec.Ops[0].Points.empty());
    ASSERT_FALSE(r.rec.Ops[2].Points.empty());
    EXPECT_EQ(r.rec.Ops[0].Points[0].X, 60);
    EXPECT_EQ(r.rec.Ops[2].Points[0].X, 102);
}

TEST(TimeChartFill, BarStandsOnePixelAboveTheAxis) {
    RecordedChart r;
    r.Prepare();
    r.chart.Canvas().Brush.Color = 0x112233;
    r.chart.FillBetweenLines(10, 60, 50, 0x00AA00);
    // x1 20, x2 120, h 50: top-left (60, 120 - 10 - 50), width 100, height 49.
    EXPECT_EQ(r.rec.Strings(), QStringList({"Fill 60,60,160,109 b$00AA00"}));
    EXPECT_EQ(r.chart.Canvas().Brush.Color, 0x112233u);
}

TEST(TimeChartFill, HalfwayHeightsAndPositionsRoundToEven) {
    RecordedChart r;
    r.Prepare(10, 205, 50); // height 50
    // 5 % of 50 = 2.5 -> 2; 10 % of 205 = 20.5 -> 20; 30 % = 61.5 -> 62
    r.chart.FillBetweenLines(10, 30, 5, clRed);
    // top = 70 - 10 - 2 = 58, height 1
    EXPECT_EQ(r.rec.Strings(), QStringList({"Fill 60,58,102,59 b$0000FF"}));
    r.rec.Clear();
    // 15 % of 50 = 7.5 -> 8
    r.chart.FillBetweenLines(10, 30, 15, clRed);
    EXPECT_EQ(r.rec.Strings(), QStringList({"Fill 60,52,102,59 b$0000FF"}));
}

TEST(TimeChartFill, EqualPositionsGiveAZeroWidthRect) {
    RecordedChart r;
    r.Prepare();
    r.chart.FillBetweenLines(20, 20, 50, clRed);
    ASSERT_EQ(r.rec.Ops.size(), 1u);
    EXPECT_EQ(r.rec.Ops[0].R, (TRect{80, 60, 80, 109}));
    EXPECT_EQ(r.rec.Ops[0].R.Width(), 0);
}

TEST(TimeChartFill, BrushIsRestoredWhenFillingFails) {
    ThrowingFillBackend failing;
    TTimeChart chart(nullptr);
    chart.Canvas().SetBackend(&failing);
    chart.PrepareRectArea(14, 10, 40, 20, 200, 100, nullptr, QString(), 0x445566, false);
    EXPECT_THROW(chart.FillBetweenLines(10, 60, 50, clRed), std::runtime_error);
    EXPECT_EQ(chart.Canvas().Brush.Color, 0x445566u);
}

TEST(TimeChartArrow, PointingLeftHasBarbsToTheRightAndTipOneAbove) {
    RecordedChart r;
    r.chart.PaintArrow(100, 50, true, 10); // s = Round(4.0) = 4
    EXPECT_EQ(r.rec.Strings(), QStringList({"MoveTo 100,49", "Line 100,49 110,46 w1 c$000000",
                                            "MoveTo 100,49", "Line 100,49 110,54 w1 c$000000"}));
}

TEST(TimeChartArrow, PointingRightHasBarbsToTheLeft) {
    RecordedChart r;
    r.chart.PaintArrow(100, 50, false, 9); // s = Round(3.6) = 4
    EXPECT_EQ(r.rec.Strings(), QStringList({"MoveTo 100,49", "Line 100,49 91,46 w1 c$000000",
                                            "MoveTo 100,49", "Line 100,49 91,54 w1 c$000000"}));
}

TEST(TimeChartArrow, BarbSpreadIsFourTenthsOfTheSizeRounded) {
    RecordedChart r;
    r.chart.PaintArrow(0, 0, true, 7);  // 2.8 -> 3
    r.chart.PaintArrow(0, 0, true, 1);  // 0.4 -> 0
    r.chart.PaintArrow(0, 0, true, 16); // 6.4 -> 6
    const auto lines = r.rec.OfKind(opLine);
    ASSERT_EQ(lines.size(), 6u);
    for (const auto& line : lines)
        ASSERT_EQ(line.Points.size(), 2u);
    EXPECT_EQ(lines[0].Points[1], (TPoint{7, -3}));
    EXPECT_EQ(lines[1].Points[1], (TPoint{7, 3}));
    EXPECT_EQ(lines[2].Points[1], (TPoint{1, 0}));
    EXPECT_EQ(lines[3].Points[1], (TPoint{1, 0}));
    EXPECT_EQ(lines[4].Points[1], (TPoint{16, -6}));
    EXPECT_EQ(lines[5].Points[1], (TPoint{16, 6}));
}

TEST(TimeChartDimension, ArrowHeightIsMeasuredFromTheBottomEdge) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QString(), clWhite, false);
    r.rec.Clear();
    r.chart.TextBetweenLines(10, 60, 30, QStringLiteral("ab"), 0x0000AA);
    const TFont f = FontOfHeight(15);
    ASSERT_EQ(FontTextHeight(f), 15);
    const int tw = FontTextWidth(f, QStringLiteral("ab"));
    // A (60, 120 - 30) = (60, 90), Bp (160, 90); D = 10, barbs 4 up and down.
    // Text Y = 90 - Round(22.5) = 90 - 22.
    EXPECT_EQ(
        r.rec.Strings(),
        QStringList(
            {"MoveTo 60,89", "Line 60,89 70,86 w1 c$0000AA", "MoveTo 60,89",
             "Line 60,89 70,94 w1 c$0000AA", "MoveTo 60,90", "Line 60,90 160,90 w1 c$0000AA",
             "MoveTo 160,89", "Line 160,89 150,86 w1 c$0000AA", "MoveTo 160,89",
             "Line 160,89 150,94 w1 c$0000AA",
             QStringLiteral("Text %1,68 \"ab\" h15 c$0000AA b$FFFFFF").arg(60 + (100 - tw) / 2)}));
}

TEST(TimeChartDimension, TextOffsetOfOneAndAHalfHeightsRoundsToEven) {
    RecordedChart r;
    r.chart.PrepareRectArea(11, 10, 40, 20, 200, 100, nullptr, QString(), clWhite, false);
    ASSERT_EQ(FontTextHeight(FontOfHeight(11)), 11);
    r.rec.Clear();
    r.chart.TextBetweenLines(0, 100, 50, QStringLiteral("x"), clRed);
    const auto texts = r.rec.OfKind(opTextOut);
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0].Points[0].Y, 70 - 16); // 16.5 -> 16
}

TEST(TimeChartDimension, TextWiderThanTheArrowIsCentredWithHalvingTowardZero) {
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QString(), clWhite, false);
    const TFont f = FontOfHeight(15);
    QString text;
    for (const char* candidate : {"x", "ab", "t1", "wide", "W", "mm", "abc"}) {
        if (FontTextWidth(f, QString::fromLatin1(candidate)) % 2 == 1) {
            text = QString::fromLatin1(candidate);
            break;
        }
    }
    ASSERT_FALSE(text.isEmpty()) << "no text of odd width";
    const int tw = FontTextWidth(f, text);
    r.rec.Clear();
    r.chart.TextBetweenLines(50, 50, 30, text, clRed);
    const auto texts = r.rec.OfKind(opTextOut);
    ASSERT_EQ(texts.size(), 1u);
    // (0 - tw) / 2 toward zero is -(tw - 1) / 2, one pixel right of flooring.
    EXPECT_EQ(texts[0].Points[0].X, 140 - (tw - 1) / 2);
}

TEST(TimeChartDimension, RestoresPenAndFontColourButNotWidthAndStyle) {
    RecordedChart r;
    r.Prepare();
    TCanvas& c = r.chart.Canvas();
    c.Pen.Color = clGreen;
    c.Pen.Width = 3;
    c.Pen.Style = psDash;
    c.Font.Color = clPurple;
    r.chart.TextBetweenLines(10, 60, 30, QStringLiteral("t"), clRed);
    EXPECT_EQ(c.Pen.Color, clGreen);
    EXPECT_EQ(c.Font.Color, clPurple);
    EXPECT_EQ(c.Pen.Width, 1);
    EXPECT_EQ(c.Pen.Style, psSolid);
    // The arrow itself was drawn solid and thin in the given colour.
    for (const auto& op : r.rec.OfKind(opLine))
        EXPECT_EQ(op.Pen, (TPen{1, clRed, psSolid}));
    EXPECT_EQ(r.rec.OfKind(opTextOut).at(0).Font.Color, clRed);
}

TEST(TimeChartBarWithArrow, NoColourDrawsOnlyTheBar) {
    RecordedChart r;
    r.Prepare();
    r.chart.ShowRectWithArrow(10, 60, 50, 80, 0x00AA00, clNone, QStringLiteral("t"), false, 2,
                              psDash);
    EXPECT_EQ(r.rec.Strings(), QStringList({"Fill 60,60,160,109 b$00AA00"}));
}

TEST(TimeChartBarWithArrow, NoColourDrawsTheBarAndBoundLinesWhenAsked) {
    RecordedChart r;
    r.Prepare();
    r.chart.ShowRectWithArrow(10, 60, 50, 80, 0x00AA00, clNone, QStringLiteral("t"), true, 2,
                              psDash);
    EXPECT_EQ(r.rec.Strings(), QStringList({"Fill 60,60,160,109 b$00AA00", "MoveTo 60,20",
                                            "Line 60,20 60,120 w2 c$000000 s1", "MoveTo 160,20",
                                            "Line 160,20 160,120 w2 c$000000 s1"}));
}

TEST(TimeChartBarWithArrow, ArrowStandsAtTextPosAndCarriesTheText) {
    RecordedChart r;
    r.Prepare();
    r.chart.ShowRectWithArrow(10, 60, 50, 80, 0x00AA00, clBlue, QStringLiteral("t1"), true, 1,
                              psDot);
    const QStringList s = r.rec.Strings();
    ASSERT_EQ(s.size(), 16);
    EXPECT_EQ(s[0], "Fill 60,60,160,109 b$00AA00");
    EXPECT_EQ(s[2], "Line 60,20 60,120 w1 c$000000 s2");
    EXPECT_EQ(s[4], "Line 160,20 160,120 w1 c$000000 s2");
    // Arrow at 80 % above the bottom edge: Y = 120 - 80 = 40.
    EXPECT_EQ(s[10], "Line 60,40 160,40 w1 c$FF0000");
    const auto text = r.rec.OfKind(opTextOut).at(0);
    EXPECT_EQ(text.Text, QStringLiteral("t1"));
    EXPECT_EQ(text.Font.Color, clBlue);
}

TEST(TimeChartLabel, SetCaptionLabelSetsTheLabelUpAsACaptionColumn) {
    QWidget host;
    auto* label = new TLabel(QStringLiteral("Signal"), &host);
    label->hide();
    label->setAlignment(Qt::AlignRight | Qt::AlignTop);
    label->setWordWrap(false);
    TTimeChart chart(nullptr);
    chart.SetCaptionLabel(label);
    EXPECT_EQ(chart.GetCaptionLabel(), label);
    EXPECT_FALSE(label->isHidden());
    EXPECT_EQ(label->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    EXPECT_TRUE(label->wordWrap());
}

TEST(TimeChartLabel, PaintPlacesTheLabelLeftOfTheChartWithTheTextHeight) {
    QWidget host;
    auto* label = new TLabel(QStringLiteral("Signal"), &host);
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, label, QString(), clWhite, false);
    EXPECT_EQ(label->geometry(), QRect(0, 20, 40, 100));
    // The label's text is as high as the chart's own texts.
    EXPECT_EQ(QFontMetrics(label->font()).height(), FontTextHeight(FontOfHeight(15)));
    r.chart.ShiftRectArea(10, 5, 0, 50, label, QString(), false);
    EXPECT_EQ(label->geometry(), QRect(10, 25, 40, 50));
    r.chart.SetTextXOfset(30);
    r.chart.Paint();
    EXPECT_EQ(label->geometry(), QRect(20, 25, 30, 50));
}

TEST(TimeChartLabel, ANullLabelLeavesTheChartWithoutOne) {
    QWidget host;
    auto* label = new TLabel(&host);
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, label, QString(), clWhite, false);
    r.chart.ShiftRectArea(10, 0, 0, 0, nullptr, QString(), false);
    EXPECT_EQ(r.chart.GetCaptionLabel(), nullptr);
    EXPECT_EQ(label->geometry(), QRect(0, 20, 40, 100)); // no longer moved
}

TEST(TimeChartLabel, ALabelDeletedByTheHostDropsOut) {
    QWidget host;
    auto* label = new TLabel(&host);
    RecordedChart r;
    r.chart.PrepareRectArea(15, 10, 40, 20, 200, 100, label, QString(), clWhite, false);
    delete label;
    EXPECT_EQ(r.chart.GetCaptionLabel(), nullptr);
    r.chart.Paint(); // must not touch the deleted label
    EXPECT_FALSE(r.rec.Ops.empty());
}

namespace {
class CountingChart : public TTimeChart {
public:
    using TTimeChart::TTimeChart;
    int Paints = 0;
    void Paint() override { ++Paints; }
};
} // namespace

TEST(TimeChartPaint, PrepareAndShiftCallTheOverriddenPaint) {
    TRecordingBackend rec;
    CountingChart chart(nullptr);
    chart.Canvas().SetBackend(&rec);
    chart.PrepareRectArea(15, 10, 40, 20, 200, 100, nullptr, QString(), clWhite, true);
    EXPECT_EQ(chart.Paints, 1);
    chart.ShiftRectArea(1, 1, 0, 0, nullptr, QString(), true);
    EXPECT_EQ(chart.Paints, 2);
    EXPECT_TRUE(rec.Ops.empty()); // the override drew nothing, so neither did the base
}
