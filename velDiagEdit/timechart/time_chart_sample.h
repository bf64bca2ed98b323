#pragma once
// The sample timing chart that the demo host shows and the documentation pictures are made
// from: a valve's opening and holding phases with their durations.

#include "velDiagEdit/timechart/time_chart.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QSize>
#include <QString>

namespace vde {

// The picture size the sample fits in.
VELDIAGEDIT_EXPORT QSize TimeChartSampleSize();
VELDIAGEDIT_EXPORT QString TimeChartSampleCaption();
// Draws the sample; Label (may be null) becomes the chart's caption label.
VELDIAGEDIT_EXPORT void PaintTimeChartSample(TTimeChart& Chart, TLabel* Label);

} // namespace vde
