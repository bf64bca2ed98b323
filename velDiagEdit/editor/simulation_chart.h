#pragma once
// The timing chart of a simulation record, drawn with the library's timing-chart painter: one
// row per source and probe in diagram order with its name as caption, a time axis with a tick
// per step (numbered where there is room), and the spans in which a flip-flop got the
// forbidden input or a loop oscillated marked as coloured bands under the rows.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/simulation/diag_simulator.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QImage>
#include <QSize>
#include <QString>

class QPainter;
class QPaintDevice;

namespace vde {

struct TSimChartOptions {
    // Pixels per step; 0 picks one from the number of steps (16 for short runs down to 2).
    int StepWidth = 0;
    int RowHeight = 28;
    int TextHeight = 13;
    TColor Background = 0xFFFFFF;
    TColor HighFill = 0xFFDCC8;        // under a signal at 1 (light blue)
    TColor ForbiddenFill = 0x78C8FF;   // R = S = 1 (orange)
    TColor OscillationFill = 0xAAAAFF; // a loop that does not settle (light red)
};

// The longest run a chart draws (its width grows with the steps); a longer one is an
// EInvalidOperation, and a value-change dump is the way to look at it.
constexpr int64_t kMaxSimChartSteps = 15000;

// Where things stand in the chart, for hosts that point into it (a cursor, a tooltip).
struct TSimChartGeometry {
    QSize Size;
    int X0 = 0; // step 0 starts here (the vertical axis)
    int StepWidth = 1;
    int RowsTop = 0; // row i spans RowsTop + i * RowHeight .. + RowHeight
    int RowHeight = 0;
    int AxisY = 0; // the horizontal axis
    int LevelInset =
        5; // the line at 1 runs this far below a row's top, at 0 this far above its bottom
    int StepX(int64_t Step) const { return X0 + int(Step) * StepWidth; }
    int HighY(int Row) const { return RowsTop + Row * RowHeight + LevelInset; }
    int LowY(int Row) const { return RowsTop + (Row + 1) * RowHeight - LevelInset; }
};

VELDIAGEDIT_EXPORT TSimChartGeometry SimChartGeometry(const TSimRecord& Record,
                                                      const TSimChartOptions& Options = {});
VELDIAGEDIT_EXPORT QSize SimChartSize(const TSimRecord& Record,
                                      const TSimChartOptions& Options = {});
// Draws the chart at (0, 0) of a device that Painter is open on.
VELDIAGEDIT_EXPORT void PaintSimChart(QPainter& Painter, QPaintDevice* Device,
                                      const TSimRecord& Record,
                                      const TSimChartOptions& Options = {});
VELDIAGEDIT_EXPORT QImage RenderSimChart(const TSimRecord& Record,
                                         const TSimChartOptions& Options = {});
// Writes a PNG, SVG or PDF file (Format "png", "svg" or "pdf"; empty: by the file's extension),
// replacing it only when complete. Errors: EInvalidOperation for an unknown format or a run too
// long to draw, EFCreateError when the file cannot be written.
VELDIAGEDIT_EXPORT void SaveSimChart(const QString& FileName, const TSimRecord& Record,
                                     const TSimChartOptions& Options = {},
                                     const QString& Format = {});

} // namespace vde
