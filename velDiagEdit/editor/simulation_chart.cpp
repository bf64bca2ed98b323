#include "velDiagEdit/editor/simulation_chart.h"

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/timechart/time_chart.h"

#include <QFileInfo>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <algorithm>

namespace vde {

namespace {

constexpr int kMargin = 10;
constexpr int kDelta = 10; // the chart's axis band and arrowhead size
constexpr int kLevelInset = 5;
constexpr TColor kGridColor = 0xC8C8C8;

struct Layout {
    int64_t Steps = 0;
    int StepWidth = 1;
    int TextH = 13;
    int CaptionW = 0;
    int LegendH = 0;
    TRect Chart; // the TTimeChart's rectangle
    int RowsTop = 0;
    int RowH = 28;
    int AxisY = 0;
    int X0 = 0;
    QSize Size;
    int X(int64_t step) const { return X0 + int(step) * StepWidth; }
};

Layout MakeLayout(const TSimRecord& rec, const TSimChartOptions& o) {
    if (rec.Steps > kMaxSimChartSteps)
        throw EInvalidOperation(QStringLiteral("A chart shows at most %1 steps, not %2; write a "
                                               "value-change dump (.vcd) instead")
                                    .arg(kMaxSimChartSteps)
                                    .arg(rec.Steps));
    Layout l;
    l.Steps = std::max<int64_t>(rec.Steps, 0);
    l.TextH = std::clamp(o.TextHeight, 6, 72);
    l.RowH = std::clamp(o.RowHeight, 2 * kLevelInset + 4, 400);
    l.StepWidth = o.StepWidth > 0
                      ? std::min(o.StepWidth, 64)
                      : int(std::clamp<int64_t>(800 / std::max<int64_t>(l.Steps, 1), 2, 16));
    TFont font;
    font.Height = l.TextH;
    int w = 0;
    for (const TSimTrace& t : rec.Traces)
        w = std::max(w, FontTextWidth(font, t.Name));
    l.CaptionW = std::max(40, w + 16);
    l.LegendH = rec.Forbidden.empty() && rec.Oscillating.empty() ? 0 : l.TextH + 8;
    const int rows = int(rec.Traces.size());
    const int top = kMargin + l.LegendH;
    l.Chart.Left = kMargin + l.CaptionW - kDelta;
    l.Chart.Top = top;
    l.X0 = l.Chart.Left + kDelta;
    l.RowsTop = top + 4;
    l.AxisY = l.RowsTop + rows * l.RowH + 4; // a gap between the last row and the axis
    l.Chart.Right = l.X(l.Steps) + 2 * kDelta;
    l.Chart.Bottom = l.AxisY + kDelta;
    // Below the chart: the tick numbers, then the axis caption at the chart's bottom edge.
    l.Size = QSize(l.Chart.Right + kMargin, l.Chart.Bottom + l.TextH + 4 + kMargin);
    return l;
}

void Band(TCanvas& cv, const Layout& l, const TSimSpan& s, TColor c) {
    const int64_t a = std::clamp<int64_t>(s.First, 0, l.Steps);
    const int64_t b = std::clamp<int64_t>(s.End, 0, l.Steps);
    if (b <= a)
        return;
    cv.Brush.Color = c;
    cv.FillRect({l.X(a), l.RowsTop, l.X(b), l.AxisY});
}

} // namespace

TSimChartGeometry SimChartGeometry(const TSimRecord& Record, const TSimChartOptions& Options) {
    const Layout l = MakeLayout(Record, Options);
    TSimChartGeometry g;
    g.Size = l.Size;
    g.X0 = l.X0;
    g.StepWidth = l.StepWidth;
    g.RowsTop = l.RowsTop;
    g.RowHeight = l.RowH;
    g.AxisY = l.AxisY;
    g.LevelInset = kLevelInset;
    return g;
}

QSize SimChartSize(const TSimRecord& Record, const TSimChartOptions& Options) {
    return MakeLayout(Record, Options).Size;
}

void PaintSimChart(QPainter& Painter, QPaintDevice* Device, const TSimRecord& Record,
                   const TSimChartOptions& Options) {
    const Layout l = MakeLayout(Record, Options);
    Painter.fillRect(QRect(QPoint(0, 0), l.Size), ToQColor(Options.Background));
    const TPaintScope scope(Device, &Painter);
    TTimeChart chart(Device);
    TCanvas& cv = chart.Canvas();
    cv.Font.Height = l.TextH;

    // Legend and bands first, so that the signals stand over them.
    if (l.LegendH > 0) {
        int x = l.X0;
        const int y = kMargin;
        auto key = [&](TColor c, const QString& text) {
            cv.Brush.Color = c;
            cv.FillRect({x, y + 2, x + l.TextH, y + l.TextH});
            x += l.TextH + 4;
            cv.Brush.Color = Options.Background;
            cv.TextOut(x, y, text);
            x += cv.TextWidth(text) + 16;
        };
        if (!Record.Forbidden.empty())
            key(Options.ForbiddenFill, QStringLiteral("forbidden R = S = 1"));
        if (!Record.Oscillating.empty())
            key(Options.OscillationFill, QStringLiteral("oscillating"));
    }
    for (const TSimSpan& s : Record.Forbidden)
        Band(cv, l, s, Options.ForbiddenFill);
    for (const TSimSpan& s : Record.Oscillating)
        Band(cv, l, s, Options.OscillationFill);

    // The axes, with the caption under the horizontal one.
    chart.PrepareRectArea(l.TextH, kDelta, l.Chart.Left, l.Chart.Top, l.Chart.Right - l.Chart.Left,
                          l.Chart.Bottom - l.Chart.Top, nullptr, QStringLiteral("step"),
                          Options.Background, false);

    // Ticks at every step where they fit, numbers and grid lines where there is room.
    const int numberW = cv.TextWidth(QString::number(l.Steps)) + 8;
    int64_t every = 1;
    for (int64_t m : {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000})
        if ((every = m) * l.StepWidth >= numberW)
            break;
    const int captionLeft = l.Chart.Right - cv.TextWidth(QStringLiteral("step")) - 4;
    cv.Pen.Width = 1;
    cv.Pen.Color = clBlack;
    cv.Brush.Color = Options.Background;
    for (int64_t k = 0; k <= l.Steps; ++k) {
        const int x = l.X(k);
        if (l.StepWidth >= 4 || k % every == 0) {
            cv.MoveTo(x, l.AxisY + 1);
            cv.LineTo(x, l.AxisY + (k % every == 0 ? 6 : 4));
        }
        if (k % every != 0)
            continue;
        const QString n = QString::number(k);
        const int tx = x - cv.TextWidth(n) / 2;
        if (tx + cv.TextWidth(n) < captionLeft)
            cv.TextOut(tx, l.AxisY + 6, n);
        if (k > 0 && !Record.Traces.empty()) {
            cv.Pen.Color = kGridColor;
            cv.Pen.Style = psDot;
            cv.MoveTo(x, l.RowsTop);
            cv.LineTo(x, l.AxisY - 1);
            cv.Pen.Style = psSolid;
            cv.Pen.Color = clBlack;
        }
    }

    // The rows: caption, the area under 1, the signal line.
    for (size_t i = 0; i < Record.Traces.size(); ++i) {
        const TSimTrace& t = Record.Traces[i];
        const int top = l.RowsTop + int(i) * l.RowH;
        const int hi = top + kLevelInset;
        const int lo = top + l.RowH - kLevelInset;
        cv.Brush.Color = Options.Background;
        cv.TextOut(kMargin, top + (l.RowH - l.TextH) / 2, t.Name);
        // The values as runs: (first step, value) up to the end.
        std::vector<std::pair<int64_t, bool>> runs{{0, false}};
        for (const TSimChange& c : t.Changes) {
            if (c.Step >= l.Steps)
                break;
            if (c.Step <= 0)
                runs.front().second = c.Value;
            else
                runs.emplace_back(c.Step, c.Value);
        }
        for (size_t r = 0; r < runs.size(); ++r) {
            const int64_t end = r + 1 < runs.size() ? runs[r + 1].first : l.Steps;
            if (runs[r].second && end > runs[r].first) {
                cv.Brush.Color = Options.HighFill;
                cv.FillRect({l.X(runs[r].first), hi, l.X(end), lo});
            }
        }
        if (l.Steps == 0)
            continue;
        std::vector<TPoint> line;
        line.push_back({l.X(0), runs.front().second ? hi : lo});
        for (size_t r = 1; r < runs.size(); ++r) {
            const int x = l.X(runs[r].first);
            line.push_back({x, runs[r - 1].second ? hi : lo});
            line.push_back({x, runs[r].second ? hi : lo});
        }
        line.push_back({l.X(l.Steps), runs.back().second ? hi : lo});
        cv.Pen.Width = 2;
        cv.Pen.Color = clBlack;
        cv.Polyline(line);
    }
    cv.Pen.Width = 1;
}

QImage RenderSimChart(const TSimRecord& Record, const TSimChartOptions& Options) {
    const QSize size = SimChartSize(Record, Options);
    QImage img(size, QImage::Format_ARGB32);
    img.fill(ToQColor(Options.Background));
    QPainter p(&img);
    PaintSimChart(p, &img, Record, Options);
    p.end();
    return img;
}

void SaveSimChart(const QString& FileName, const TSimRecord& Record,
                  const TSimChartOptions& Options, const QString& Format) {
    const QString fmt = (Format.isEmpty() ? QFileInfo(FileName).suffix() : Format).toLower();
    if (fmt != QLatin1String("png") && fmt != QLatin1String("svg") && fmt != QLatin1String("pdf"))
        throw EInvalidOperation(
            QStringLiteral("Cannot tell the chart format of \"%1\": use .png, .svg or .pdf")
                .arg(FileName));
    const QSize size = SimChartSize(Record, Options);
    QSaveFile file(FileName);
    if (!file.open(QIODevice::WriteOnly))
        throw EFCreateError(
            QStringLiteral("Cannot create \"%1\": %2").arg(FileName, file.errorString()));
    bool drawn = false;
    if (fmt == QLatin1String("png")) {
        drawn = RenderSimChart(Record, Options).save(&file, "PNG");
    } else if (fmt == QLatin1String("svg")) {
        QSvgGenerator gen;
        gen.setOutputDevice(&file);
        gen.setSize(size);
        gen.setViewBox(QRect(QPoint(0, 0), size));
        gen.setTitle(QStringLiteral("Simulation"));
        QPainter p;
        if (p.begin(&gen)) {
            PaintSimChart(p, &gen, Record, Options);
            drawn = p.end();
        }
    } else {
        QPdfWriter pdf(&file);
        pdf.setResolution(72);
        pdf.setCreator(QStringLiteral("velDiagEdit"));
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        pdf.setPageSize(
            QPageSize(QSizeF(size), QPageSize::Point, QString(), QPageSize::ExactMatch));
        QPainter p;
        if (p.begin(&pdf)) {
            PaintSimChart(p, &pdf, Record, Options);
            drawn = p.end();
        }
    }
    if (!drawn || !file.commit())
        throw EFCreateError(
            QStringLiteral("Cannot write \"%1\": %2").arg(FileName, file.errorString()));
}

} // namespace vde
