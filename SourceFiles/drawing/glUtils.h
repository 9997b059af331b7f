// Drawing helpers of the body view: coordinate axes, reference grid, bar between two points, rotation guide.
#ifndef KORVEX2_GLUTILS_H
#define KORVEX2_GLUTILS_H

#include "bsQuaternion.h"
#include "bsVector.h"

// All four draw with fixed-function OpenGL in the current context, in the current model-view coordinates (millimetres).

/// Three lit arrows along x (red), y (green) and z (blue), of `intensity` in [0, 1]: shafts of length `length` with a
/// cone at the tip. `origin` (three doubles) shifts the cones alone and `size` is not used: both kept on purpose.
/// With `longAxes` also a stippled line along each axis, from -length * longAxesFactor to +length * longAxesFactor;
/// lighting stays disabled after those.
void drawAxes(const double* origin, double length, double size, bool longAxes, double longAxesFactor, double intensity);

/// Grid of lines in the plane z = 0, in the current colour, unlit: lines parallel to y every `stepX` over -X .. X, and
/// parallel to x every `stepY` over -Y .. Y, X and Y being the integer parts of the extents. Lighting stays disabled.
/// No lines for values that make no grid: not finite, a step not above 0, or more than 100,000 lines a direction.
void drawGrid(double extentX, double extentY, double stepX, double stepY);

/// Bar of square cross-section `width` x `width` from `from` to `to`, in the current colour. A bar along the y axis
/// has no cross-section and stays invisible: kept on purpose.
void drawRectangle(const bsVector& from, const bsVector& to, double width);

/// Stippled guide of a rotation: the x axis (red) as it is, the y axis (green) turned by `q`, each over +-500 mm. The
/// turn stays multiplied onto the current matrix; lighting stays disabled.
void drawRotationAxes(const bsQuaternion& q);

#endif
