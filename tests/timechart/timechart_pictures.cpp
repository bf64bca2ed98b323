// Writes the sample timing chart as PNG and SVG, the pictures the documentation shows.
#include "velDiagEdit/timechart/time_chart_export.h"
#include "velDiagEdit/timechart/time_chart_sample.h"

#include <QApplication>
#include <QLabel>
#include <QWidget>
#include <cstdio>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: vde_timechart_pictures <out.png> <out.svg>\n");
        return 2;
    }
    // The label stands on a window that is never shown, like a label on a host form.
    QWidget host;
    auto* label = new QLabel(vde::TimeChartSampleCaption(), &host);
    const auto sequence = [label](vde::TTimeChart& chart) {
        vde::PaintTimeChartSample(chart, label);
    };
    const QSize size = vde::TimeChartSampleSize();
    if (!vde::SaveTimeChartPng(QString::fromLocal8Bit(argv[1]), size, vde::clWhite, sequence)) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    if (!vde::SaveTimeChartSvg(QString::fromLocal8Bit(argv[2]), size, vde::clWhite,
                               QStringLiteral("Timing chart"), sequence)) {
        std::fprintf(stderr, "cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
