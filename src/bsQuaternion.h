// Orientation as a unit quaternion.
#ifndef KORVEX2_BSQUATERNION_H
#define KORVEX2_BSQUATERNION_H

#include <cmath>
#include <iosfwd>

#include "bsMatrix.h"
#include "bsVector.h"

/// Four values in the order x, y, z, w: vector part first, scalar part last. The default (0, 0, 0, 1) is no turn.
///
/// (x, y, z, w) of length 1 is the counter-clockwise turn by 2 acos(w) about the axis (x, y, z), the sense of
/// bsMatrix::rotationX, rotationY and rotationZ (and not that of bsMatrix::rotation). Angles are degrees. q and -q are
/// the same orientation, and neither is preferred.
///
/// In q1 * q2, q2 acts first. Products are normalised; toMatrix(), fromMatrix() and slerp() take and give the values as
/// they are. Normalising a quaternion shorter than 1e-7 gives the identity (a vector would stay as it is).
class bsQuaternion {
 public:
  static constexpr double tolerance = 1e-7;

  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double w = 1.0;

  constexpr bsQuaternion() = default;
  constexpr bsQuaternion(double xValue, double yValue, double zValue, double wValue)
      : x(xValue), y(yValue), z(zValue), w(wValue) {}
  /// The turn by `angle` degrees about `axis`, as fromAxis().
  bsQuaternion(double angle, const bsVector& axis) { fromAxis(angle, axis); }

  /// Sets the values as given, without normalising.
  void setValues(double xValue, double yValue, double zValue, double wValue) {
    *this = bsQuaternion(xValue, yValue, zValue, wValue);
  }

  /// Sets the turn by `angle` degrees about `axis` (of any length): the axis times sin, and cos, of half the angle. A
  /// zero axis leaves only the scalar part, which normalising makes 1 or -1: no turn.
  bsQuaternion& fromAxis(double angle, bsVector axis);

  /// The rotation matrix of the quaternion taken as it is. It is q p q^-1 written out for a unit quaternion.
  bsMatrix& toMatrix(bsMatrix& m) const;
  bsMatrix toMatrix() const {
    bsMatrix m;
    toMatrix(m);
    return m;
  }

  /// Sets the quaternion of the rotation in the upper-left 3x3 block of m; the rest of m is not read. The result is not
  /// normalised. Its w is positive, but for a half turn (w within 1.6e-4 of 0), where it may have either sign.
  ///
  /// Derivation: the diagonal of the matrix gives 4 w^2 = 1 + M00 + M11 + M22, 4 x^2 = 1 + M00 - M11 - M22 and so on;
  /// sums and differences of mirrored elements give 4 xy, 4 wz and so on. So one value comes from a root and the others
  /// from dividing by it. For a matrix that is no rotation that value is w, as long as 4 w^2 is above the tolerance;
  /// for a rotation, and in a half turn, it is a large one: w up to a quarter turn, the largest of x, y and z beyond.
  bsQuaternion& fromMatrix(const bsMatrix& m);

  /// Scales to length 1; shorter than the tolerance, it becomes the identity.
  bsQuaternion& normalize();

  /// Replaces the quaternion by itself times q (q acts first), normalised.
  bsQuaternion& operator*=(const bsQuaternion& q);

  /// Sets the interpolation from q1 (t = 0) to q2 (t = 1) along the great circle through both: each is weighted by the
  /// sine of its opposite part of the angle between them, over the sine of the whole. It does not take the shorter of
  /// the two ways and does not normalise. Opposite quaternions, between which no way is given, have a branch of their
  /// own. Either argument may be this quaternion.
  bsQuaternion& slerp(const bsQuaternion& q1, const bsQuaternion& q2, double t);
};

/// Hamilton product, normalised: q2 acts first, then q1.
bsQuaternion operator*(const bsQuaternion& q1, const bsQuaternion& q2);

/// Writes {x, y, z, w} with the stream's own number format.
std::ostream& operator<<(std::ostream& out, const bsQuaternion& q);
/// Asks for x, y, z and w on standard output, whatever stream is read, and reads one number after each question. A
/// number that cannot be read leaves its value as it was and the stream failed.
std::istream& operator>>(std::istream& in, bsQuaternion& q);

#endif
