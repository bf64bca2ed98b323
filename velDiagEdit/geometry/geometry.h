#pragma once
// Integer geometry: the segment of a polyline nearest to a point, and where a vertical or
// horizontal line crosses a sloped one.

#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <array>

namespace vde {

using TInt2 = std::array<int32_t, 2>;
using TIntSegment = std::array<TPoint, 2>;
using TIntTriangle = std::array<TPoint, 3>;
using TIntArray2 = std::array<std::array<int32_t, 2>, 2>;
// Side i is the length of the side opposite vertex i.
using TSides = std::array<double, 3>;
using PIntSegment = TIntSegment*;
using PIntTriangle = TIntTriangle*;
using PIntArray2 = TIntArray2*;

// The point on the line through Segment that shares one coordinate with P: Mode 1 keeps P.X,
// Mode 2 keeps P.Y, Mode >= 3 returns P, Mode < 1 returns (-1, -1). A coordinate that cannot be
// found (a line parallel to the kept axis) is -1.
VELDIAGEDIT_EXPORT TPoint QuickCrossCalc(const TIntSegment& Segment, const TPoint& P, int Mode);

// Nearest axis-parallel segment of the polyline Points[0..High] by the cheap rule: only
// segments that P lies alongside count; on equal distances the lower index wins.
VELDIAGEDIT_EXPORT int IndexOfMinDistanceQuick(const TPoint* Points, int High, const TPoint& P,
                                               double* Dist);

// Nearest segment by the perpendicular distance to its line (Heron), optionally filtered by
// Mode (1: P.X within the segment's X range, 2: P.Y within its Y range, 3: both); on equal
// distances the higher index wins.
VELDIAGEDIT_EXPORT int IndexOfMinDistance(const TPoint* Points, int High, const TPoint& P,
                                          double* Dist, int Mode);

// The sides of a triangle, side i opposite vertex i.
VELDIAGEDIT_EXPORT TSides TriangleSides(const TIntTriangle& T);

} // namespace vde
