#pragma once
// Puts a timing chart into a picture the way a host window shows it: the background, the
// chart's drawing, and the chart's caption label (a widget of its own) over it at its place.

#include "velDiagEdit/timechart/time_chart.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QImage>
#include <QSize>
#include <QString>
#include <functional>

namespace vde {

// The host's drawing sequence, called once on a chart made over the picture.
using TTimeChartSequence = std::function<void(TTimeChart& Chart)>;

VELDIAGEDIT_EXPORT QImage RenderTimeChart(QSize Size, TColor Background,
                                          const TTimeChartSequence& Sequence);
VELDIAGEDIT_EXPORT bool SaveTimeChartPng(const QString& FileName, QSize Size, TColor Background,
                                         const TTimeChartSequence& Sequence);
// Vector output: lines, fills and texts stay primitives of the SVG file.
VELDIAGEDIT_EXPORT bool SaveTimeChartSvg(const QString& FileName, QSize Size, TColor Background,
                                         const QString& Title, const TTimeChartSequence& Sequence);

} // namespace vde
