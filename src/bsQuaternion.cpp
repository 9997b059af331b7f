// See bsQuaternion.h.
#include "bsQuaternion.h"

#include <istream>
#include <ostream>
#include <type_traits>

#include "bsPrompt.h"

static_assert(std::is_trivially_copyable_v<bsQuaternion> && sizeof(bsQuaternion) == 4 * sizeof(double),
              "a quaternion is four doubles");

namespace {

/// Fixed answers for diagonals of half turns, compared exactly; the shortened root of the fourth is kept on purpose.
bsQuaternion fromDiagonal(double m00, double m11, double m22) {
  const auto is = [=](double a, double b, double c) { return m00 == a && m11 == b && m22 == c; };
  if (is(1.0, -1.0, -1.0)) {
    return {1.0, 0.0, 0.0, 0.0};
  }
  if (is(-1.0, 1.0, -1.0)) {
    return {0.0, 1.0, 0.0, 0.0};
  }
  if (is(-1.0, -1.0, 1.0)) {
    return {0.0, 0.0, 1.0, 0.0};
  }
  if (is(0.0, 0.0, -1.0)) {
    return {0.7071, 0.7071, 0.0, 0.0};
  }
  return {};
}

}  // namespace

bsQuaternion& bsQuaternion::fromAxis(double angle, bsVector axis) {
  axis.normalize();
  const double half = angle * bsMatrix::radiansPerDegree * 0.5;
  axis *= std::sin(half);
  setValues(axis.x, axis.y, axis.z, std::cos(half));
  return normalize();
}

bsMatrix& bsQuaternion::toMatrix(bsMatrix& m) const {
  m.setRow(0, {1.0 - 2.0 * y * y - 2.0 * z * z, 2.0 * (x * y - w * z), 2.0 * (x * z + w * y)}, 0.0);
  m.setRow(1, {2.0 * (x * y + w * z), 1.0 - 2.0 * x * x - 2.0 * z * z, 2.0 * (y * z - w * x)}, 0.0);
  m.setRow(2, {2.0 * (x * z - w * y), 2.0 * (y * z + w * x), 1.0 - 2.0 * x * x - 2.0 * y * y}, 0.0);
  m.setRow(3, {0.0, 0.0, 0.0}, 1.0);
  return m;
}

bsQuaternion& bsQuaternion::fromMatrix(const bsMatrix& m) {
  const double m00 = m.data(0, 0);
  const double m11 = m.data(1, 1);
  const double m22 = m.data(2, 2);
  const double trace = m00 + m11 + m22 + 1.0;  // 4 w^2
  // Compared with the tolerance rather than with 0: rounding leaves a half turn a trace of some 1e-16 of either sign,
  // and w taken from that would make the turn vanish.
  const bool hasScalar = trace > tolerance;
  // With w^2 < 1/2, dividing by w enlarges what the matrix lacks of a rotation by tan^2 of half the angle, at each of
  // the many ways through a matrix that copies of a frame take. A rotation has the same answer without that.
  const bool isScalarSmall = trace < 2.0 && m.isOrthonormal();
  if (hasScalar && !isScalarSmall) {
    const double s = 0.5 / std::sqrt(trace);
    setValues((m.data(2, 1) - m.data(1, 2)) * s, (m.data(0, 2) - m.data(2, 0)) * s, (m.data(1, 0) - m.data(0, 1)) * s,
              0.25 / s);
    return *this;
  }
  if (m00 > m11 && m00 > m22) {
    const double s = 0.5 / std::sqrt(1.0 + m00 - m11 - m22);
    setValues(0.25 / s, (m.data(1, 0) + m.data(0, 1)) * s, (m.data(2, 0) + m.data(0, 2)) * s,
              (m.data(2, 1) - m.data(1, 2)) * s);
  } else if (m11 > m22) {
    const double s = 0.5 / std::sqrt(1.0 - m00 + m11 - m22);
    setValues((m.data(1, 0) + m.data(0, 1)) * s, 0.25 / s, (m.data(2, 1) + m.data(1, 2)) * s,
              (m.data(0, 2) - m.data(2, 0)) * s);
  } else if (const double z4 = 1.0 - m00 - m11 + m22; trace == 0.0 && z4 == 0.0) {
    // Both zero ask for M22 = -1 and M00 = -M11, which the cases above have answered; kept as the last resort.
    *this = fromDiagonal(m00, m11, m22);
  } else {
    const double s = 0.5 / std::sqrt(z4);
    setValues((m.data(2, 0) + m.data(0, 2)) * s, (m.data(2, 1) + m.data(1, 2)) * s, 0.25 / s,
              (m.data(1, 0) - m.data(0, 1)) * s);
  }
  if (hasScalar && w < 0.0) {
    setValues(-x, -y, -z, -w);  // the sign that dividing by w gives
  }
  return *this;
}

bsQuaternion& bsQuaternion::normalize() {
  const double length = std::sqrt(x * x + y * y + z * z + w * w);
  if (length < tolerance) {
    setValues(0.0, 0.0, 0.0, 1.0);
  } else {
    const double s = 1.0 / length;
    setValues(x * s, y * s, z * s, w * s);
  }
  return *this;
}

bsQuaternion operator*(const bsQuaternion& q1, const bsQuaternion& q2) {
  bsQuaternion product(
      q1.w * q2.x + q1.x * q2.w + q1.y * q2.z - q1.z * q2.y, q1.w * q2.y - q1.x * q2.z + q1.y * q2.w + q1.z * q2.x,
      q1.w * q2.z + q1.x * q2.y - q1.y * q2.x + q1.z * q2.w, q1.w * q2.w - q1.x * q2.x - q1.y * q2.y - q1.z * q2.z);
  return product.normalize();
}

bsQuaternion& bsQuaternion::operator*=(const bsQuaternion& q) { return *this = *this * q; }

bsQuaternion& bsQuaternion::slerp(const bsQuaternion& q1, const bsQuaternion& q2, double t) {
  const double d = q1.x * q2.x + q1.y * q2.y + q1.z * q2.z + q1.w * q2.w;
  if (1.0 + d > 0.0) {
    double a = 1.0 - t;
    double b = t;
    if (1.0 - d > 0.0) {
      const double theta = std::acos(d);
      a = std::sin((1.0 - t) * theta) / std::sin(theta);
      b = std::sin(t * theta) / std::sin(theta);
    }
    setValues(a * q1.x + b * q2.x, a * q1.y + b * q2.y, a * q1.z + b * q2.z, a * q1.w + b * q2.w);
  } else {
    // Kept on purpose: one weight for both quaternions, and the scalar part taken from q1's z.
    const double s = std::sin((1.0 - t) * 3.141592653589793 * 0.5);
    setValues(s * (q1.x + q2.x), s * (q1.y + q2.y), s * (q1.z + q2.z), q1.z);
  }
  return *this;
}

std::ostream& operator<<(std::ostream& out, const bsQuaternion& q) {
  return out << '{' << q.x << ", " << q.y << ", " << q.z << ", " << q.w << '}';
}

std::istream& operator>>(std::istream& in, bsQuaternion& q) {
  korvex2::askForNumber(in, "x : ", q.x);
  korvex2::askForNumber(in, "\ny : ", q.y);
  korvex2::askForNumber(in, "\nz : ", q.z);
  korvex2::askForNumber(in, "\nw : ", q.w);
  return in;
}
