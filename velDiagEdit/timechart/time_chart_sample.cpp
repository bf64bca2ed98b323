#include "velDiagEdit/timechart/time_chart_sample.h"

namespace vde {

QSize TimeChartSampleSize() {
    return {780, 372};
}

QString TimeChartSampleCaption() {
    return QStringLiteral("Valve V1: opening and holding current");
}

void PaintTimeChartSample(TTimeChart& Chart, TLabel* Label) {
    Chart.PrepareRectArea(16, 16, 150, 16, 600, 320, Label, QStringLiteral("Time, ms"), clWhite,
                          true);
    Chart.Canvas().Pen.Color = clGray;
    Chart.PaintLines({10, 30, 55, 80, 95}, 1, psDot);
    Chart.ShowRectWithArrow(10, 30, 70, 82, 0xF0C080, clNavy, QStringLiteral("t1 = 20 ms"), true, 1,
                            psDash);
    Chart.ShowRectWithArrow(55, 80, 40, 52, 0x80C0F0, clMaroon, QStringLiteral("t2 = 25 ms"), true,
                            1, psDash);
}

} // namespace vde
