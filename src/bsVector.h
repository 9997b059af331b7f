// Vector of three doubles with arithmetic, tolerant equality and a few geometric operations.
#ifndef KORVEX2_BSVECTOR_H
#define KORVEX2_BSVECTOR_H

#include <cmath>
#include <iosfwd>
#include <type_traits>

#include "bsAssert.h"

/// Three components x, y, z, stored one after the other in that order and nothing else, so that a pointer to x serves
/// wherever three consecutive doubles are expected (glVertex3dv, glNormal3dv). A plain value: copied freely, no heap.
///
/// Units: millimetres where a vector is a position or a translation, none where it is a direction. Angles are radians
/// unless the name says degrees (getAngleD).
///
/// Equality compares each component with the absolute tolerance 1e-7 and so is not transitive. The orderings hold only
/// if they hold for all three components: they are partial ("a < b" may be false together with "a >= b") and no sort
/// keys. Both are members that work on constant vectors too, so that two vectors never compare as pointers.
///
/// Degenerate cases follow floating point: dividing by zero gives infinities or NaN, the angle with a zero vector is
/// NaN. Two exceptions: normalize() leaves a vector shorter than the tolerance alone, and a component index outside
/// 0..2 aborts the program.
///
/// Numbers stand on the right of a vector and only multiply or divide it: neither 2 * v nor v + 2 compiles (the latter
/// would step along the pointer that a vector converts to).
class bsVector {
 public:
  /// Absolute tolerance of equality, normalize(), isOrthogonal() and getSnappedToAxis(), in units of the components.
  static constexpr double tolerance = 1e-7;

  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr bsVector() = default;
  constexpr bsVector(double v) : x(v), y(v), z(v) {}
  constexpr bsVector(double xValue, double yValue, double zValue) : x(xValue), y(yValue), z(zValue) {}
  bsVector(const double* p) : x(p[0]), y(p[1]), z(p[2]) {}
  bsVector(const float* p) : x(static_cast<double>(p[0])), y(static_cast<double>(p[1])), z(static_cast<double>(p[2])) {}
  /// A whole number means its value: without this, bsVector(0) could as well be a null pointer.
  template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
  constexpr bsVector(Integer v) : bsVector(static_cast<double>(v)) {}
  bsVector(const bsVector&) = default;
  bsVector& operator=(const bsVector&) = default;
  ~bsVector() = default;

  void setValues(double v) { *this = bsVector(v); }
  void setValues(double xValue, double yValue, double zValue) { *this = bsVector(xValue, yValue, zValue); }
  void setValues(const double* p) { *this = bsVector(p); }
  void setValues(const float* p) { *this = bsVector(p); }
  template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
  void setValues(Integer v) {
    *this = bsVector(v);
  }

  /// Sets the vector of length r (millimetres) at elevation a out of the x-z plane towards +y and azimuth b about y,
  /// measured from +z towards +x, both in radians. Elevation leaves r cos a in the x-z plane and r sin a along y; the
  /// azimuth splits the former into sin b along x and cos b along z. (0, 0, r) is the vector (0, 0, r).
  void setValuesFromSpherical(double a, double b, double r) {
    setValues(r * std::cos(a) * std::sin(b), r * std::sin(a), r * std::cos(a) * std::cos(b));
  }

  operator double*() { return &x; }
  operator const double*() const { return &x; }

  double& operator[](int i) { return component(*this, i); }
  const double& operator[](int i) const { return component(*this, i); }
  /// Other integer types index too. Without these, the subscript of the pointer that a vector converts to would be an
  /// equally good match, and unchecked.
  template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
  double& operator[](Integer i) {
    return component(*this, i);
  }
  template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
  const double& operator[](Integer i) const {
    return component(*this, i);
  }

  bsVector operator+(const bsVector& b) const { return {x + b.x, y + b.y, z + b.z}; }
  bsVector operator-(const bsVector& b) const { return {x - b.x, y - b.y, z - b.z}; }
  bsVector operator-() const { return {-x, -y, -z}; }
  /// Component by component; the inner product is dotProduct().
  bsVector operator*(const bsVector& b) const { return {x * b.x, y * b.y, z * b.z}; }
  bsVector operator*(double s) const { return {x * s, y * s, z * s}; }
  bsVector operator/(const bsVector& b) const { return {x / b.x, y / b.y, z / b.z}; }
  bsVector operator/(double s) const { return {x / s, y / s, z / s}; }
  /// Cross product, right-handed: x ^ y = z. Mind the precedence of ^, lower than that of comparisons.
  bsVector operator^(const bsVector& b) const { return {y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x}; }

  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  bsVector operator+(Number) const = delete;
  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  bsVector operator-(Number) const = delete;

  bsVector& operator+=(const bsVector& b) { return *this = *this + b; }
  bsVector& operator-=(const bsVector& b) { return *this = *this - b; }
  bsVector& operator*=(const bsVector& b) { return *this = *this * b; }
  bsVector& operator*=(double s) { return *this = *this * s; }
  bsVector& operator/=(const bsVector& b) { return *this = *this / b; }
  bsVector& operator/=(double s) { return *this = *this / s; }
  bsVector& operator^=(const bsVector& b) { return *this = *this ^ b; }

  static double dotProduct(const bsVector& a, const bsVector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

  bool operator==(const bsVector& b) const {
    return std::fabs(x - b.x) < tolerance && std::fabs(y - b.y) < tolerance && std::fabs(z - b.z) < tolerance;
  }
  bool operator!=(const bsVector& b) const { return !(*this == b); }
  bool operator<(const bsVector& b) const { return x < b.x && y < b.y && z < b.z; }
  bool operator<=(const bsVector& b) const { return x <= b.x && y <= b.y && z <= b.z; }
  bool operator>(const bsVector& b) const { return x > b.x && y > b.y && z > b.z; }
  bool operator>=(const bsVector& b) const { return x >= b.x && y >= b.y && z >= b.z; }

  double getLength() const { return std::sqrt(dotProduct(*this, *this)); }

  /// Scales to length 1; a vector shorter than the tolerance has no direction worth keeping and stays as it is.
  bsVector& normalize() {
    const double length = getLength();
    return length < tolerance ? *this : *this /= length;
  }

  /// Lowers each component that is larger than v's: the lower corner of the box around both points.
  bsVector& minimize(const bsVector& v) {
    x = v.x < x ? v.x : x;
    y = v.y < y ? v.y : y;
    z = v.z < z ? v.z : z;
    return *this;
  }
  /// Raises each component that is smaller than v's: the upper corner of the box around both points.
  bsVector& maximize(const bsVector& v) {
    x = v.x > x ? v.x : x;
    y = v.y > y ? v.y : y;
    z = v.z > z ? v.z : z;
    return *this;
  }

  /// The signed unit axis along the component of largest magnitude. Magnitudes within the tolerance of each other tie,
  /// and of tied axes the later one wins; a component of exactly 0 counts as negative. The zero vector gives (0, 0,
  /// -1).
  bsVector getSnappedToAxis() const;

  /// Tests the inner product with the absolute tolerance: long vectors have to be closer to perpendicular.
  static bool isOrthogonal(const bsVector& a, const bsVector& b) { return std::fabs(dotProduct(a, b)) < tolerance; }

  /// Angle between a and b, in radians. a . b = |a| |b| cos(angle), solved for the angle. The cosine is not clamped on
  /// purpose: rounding past +-1 gives NaN, as does a zero vector. Clamp before where that matters.
  static double getAngleR(const bsVector& a, const bsVector& b) {
    return std::acos(dotProduct(a, b) / a.getLength() / b.getLength());
  }
  /// The same in degrees.
  static double getAngleD(const bsVector& a, const bsVector& b) { return getAngleR(a, b) * 180.0 / 3.141592653589793; }

 private:
  template <class Vector, class Integer>
  static std::conditional_t<std::is_const_v<Vector>, const double, double>& component(Vector& v, Integer i) {
    korvex2::require(i == Integer(0) || i == Integer(1) || i == Integer(2), "false");
    return i == Integer(0) ? v.x : i == Integer(1) ? v.y : v.z;
  }
};

template <class Number>
std::enable_if_t<std::is_arithmetic_v<Number>, bsVector> operator+(Number, const bsVector&) = delete;

/// Writes {x,y,z} with the stream's own number format.
std::ostream& operator<<(std::ostream& out, const bsVector& v);
/// Asks for x, y and z on standard output, whatever stream is read, and reads one number after each question. A number
/// that cannot be read leaves its component as it was and the stream failed.
std::istream& operator>>(std::istream& in, bsVector& v);

#endif
