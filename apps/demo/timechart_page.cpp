// The timing chart page: a host widget that paints the sample chart through a TTimeChart made
// over itself on every paint, with a caption label standing beside the chart.
#include "demo_pages.h"

#include "velDiagEdit/timechart/time_chart.h"
#include "velDiagEdit/timechart/time_chart_sample.h"

#include <QLabel>
#include <QWidget>

namespace {

class TimeChartPage : public QWidget {
public:
    TimeChartPage() : FLabel(new QLabel(vde::TimeChartSampleCaption(), this)) {
        setAutoFillBackground(true);
        QPalette pal = palette();
        pal.setColor(QPalette::Window, Qt::white);
        setPalette(pal);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        // The chart is made over the widget's device context for this paint only, as a host
        // makes one for each repaint; the background is the widget's own (auto-filled).
        vde::TTimeChart chart(this);
        vde::PaintTimeChartSample(chart, FLabel);
    }

private:
    QLabel* FLabel;
};

const bool registered =
    RegisterDemoPage(80, QStringLiteral("Timing chart"), [] { return new TimeChartPage(); });

} // namespace
