/* Conversions between rotation matrices held as nine doubles and triples of rotation angles. C linkage. */
#ifndef KORVEX2_AM_ROT_H
#define KORVEX2_AM_ROT_H

/* A rotation array r holds the element in row i and column j at r[i + 3 j] (column by column, as bsMatrix stores its
 * upper-left block; read row by row it is the transpose). An angle triple a holds the turns about x, y and z in
 * RADIANS, counter-clockwise seen from the tip of each axis. The array of a triple is
 *
 *     R = Rx(a[0]) Ry(a[1]) Rz(a[2])
 *
 * so that on a column vector the turn about z acts first, then y, then x, each about the axes that stay put.
 *
 * Outputs come first, as in an assignment: the name reads "output equals input". Outputs and inputs of one call may not
 * overlap. Nothing is reported; arguments out of range give NaN.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the nine values of r from the three angles of a. */
void am_rot_equals_ang(double* r, const double* a);

/* Writes the three angles of a from the nine values of r: a[1] within [-pi/2, pi/2], the others within [-pi, pi].
 * From the product above, r[6] = sin a1, r[7] = -sin a0 cos a1, r[8] = cos a0 cos a1, r[3] = -cos a1 sin a2 and
 * r[0] = cos a1 cos a2. Where a1 is a quarter turn, cos a1 vanishes and a[0] and a[2] come from what rounding left
 * there. r[6] is not clamped: past +-1, a[1] is NaN. */
void am_ang_equals_rot(double* a, const double* r);

/* Returns the angle of the one turn that r is, in radians within [0, pi]. With trace = 1 + 2 cos(angle),
 * sqrt(1 + trace) / 2 is cos(angle / 2). Not clamped: a trace above 3 or below -1 gives NaN. */
double am_rot_angle(const double* r);

/* Draws the lengths of the rows and columns of r towards 1, in place: passes that divide each element by the geometric
 * mean of the lengths of its row and its column, until a pass began with all six lengths within 1e-6 of 1, at most a
 * hundred passes. It does not make rows or columns perpendicular. A zero row or column gives infinities or NaN. */
void am_rot_orthonormalize(double* r);

#ifdef __cplusplus
}
#endif

#endif
