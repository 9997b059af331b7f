// Ways to construct the frame of a body from the positions of its markers.
#ifndef KORVEX2_FRAMECONSTRUCTION_H
#define KORVEX2_FRAMECONSTRUCTION_H

#include <vector>

#include "abcaxis.h"
#include "bsMatrix.h"
#include "bsVector.h"

/// Pure geometry: positions in millimetres, all in one coordinate system; directions without unit. The frames returned
/// are rotations (column = axis, fourth column and row those of the identity) that map frame coordinates to the
/// coordinates of the arguments.
namespace korvex2 {

/// A body with more markers than this has no markers 1, 2, 3.
constexpr int maxMarkersToChooseFrom = 30;

/// True when the directions differ enough to span a plane: neither is shorter than 1e-7, and the sine of the angle
/// between them is at least 1e-6 (their cross product then has a direction that rounding cannot turn).
bool spanPlane(const bsVector& a, const bsVector& b);

/// Right-handed frame whose axis `axisToSet` points along `set` and whose axis `axisToPreserve` is `keep` made
/// perpendicular to it. The three vectors are working space: on return they are the unit axes of the frame, `third`
/// being the remaining axis; its value at the call does not matter.
///
/// Derivation: for the cyclic pairs (X,Y), (Y,Z), (Z,X) the remaining axis is set x keep, for the reversed pairs
/// keep x set; crossing back gives the kept axis: third x set, or set x third.
///
/// Equal axes abort with "axisToSet != axisToPreserve". Directions that span no plane give a singular matrix.
bsMatrix computeFrame(bsVector& set, bsVector& keep, bsVector& third, abcAxis axisToSet, abcAxis axisToPreserve);

/// Right-handed frame of three points: X from p1 towards p2, Z along (p2 - p1) x (p3 - p1), Y = Z x X. Points on one
/// line give a singular matrix.
bsMatrix compute_orientation(const bsVector& p1, const bsVector& p2, const bsVector& p3);

/// Chooses the markers that define a body's own frame, as indices into `positions`. (m1, m2) is the longest distance
/// between two markers; m1 is that end of it which also carries the shortest distance to a third marker, m3. Of equally
/// long (or equally short) distances the first pair in ascending order counts.
///
/// Returns false and leaves the outputs alone when no distance from either end is shorter than the longest one (an
/// equilateral body), and for fewer than three or more than maxMarkersToChooseFrom markers.
bool compute_marker_1_2_3(const std::vector<bsVector>& positions, int& m1, int& m2, int& m3);

}  // namespace korvex2

#endif
