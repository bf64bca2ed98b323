#include "velDiagEdit/timechart/time_chart_export.h"

#include <QPainter>
#include <QSvgGenerator>

namespace vde {

namespace {

// The chart draws through the painter that is already open on the device, so the label can
// be laid over the same picture before the painter ends.
void PaintOn(QPainter& painter, QPaintDevice* device, QSize size, TColor background,
             const TTimeChartSequence& sequence) {
    painter.fillRect(QRect(QPoint(0, 0), size), ToQColor(background));
    TLabel* label = nullptr;
    {
        TTimeChart chart(device);
        if (sequence)
            sequence(chart);
        label = chart.GetCaptionLabel();
    }
    if (label)
        label->render(&painter, label->pos(), QRegion(), QWidget::DrawChildren);
}

} // namespace

QImage RenderTimeChart(QSize Size, TColor Background, const TTimeChartSequence& Sequence) {
    QImage img(Size, QImage::Format_ARGB32);
    img.fill(Qt::white);
    QPainter painter(&img);
    PaintOn(painter, &img, Size, Background, Sequence);
    painter.end();
    return img;
}

bool SaveTimeChartPng(const QString& FileName, QSize Size, TColor Background,
                      const TTimeChartSequence& Sequence) {
    return RenderTimeChart(Size, Background, Sequence).save(FileName, "PNG");
}

bool SaveTimeChartSvg(const QString& FileName, QSize Size, TColor Background, const QString& Title,
                      const TTimeChartSequence& Sequence) {
    QSvgGenerator gen;
    gen.setFileName(FileName);
    gen.setSize(Size);
    gen.setViewBox(QRect(QPoint(0, 0), Size));
    gen.setTitle(Title);
    QPainter painter;
    if (!painter.begin(&gen))
        return false;
    PaintOn(painter, &gen, Size, Background, Sequence);
    return painter.end();
}

} // namespace vde
