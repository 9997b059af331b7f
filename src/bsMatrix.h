// 4x4 matrix of doubles, stored as OpenGL expects it, that carries the poses of the system.
#ifndef KORVEX2_BSMATRIX_H
#define KORVEX2_BSMATRIX_H

#include <cmath>
#include <iosfwd>
#include <type_traits>

#include "bsVector.h"

/// Sixteen values in column-major order: the element in row i and column j is value 4 j + i, so that the pointer a
/// matrix converts to goes to glMultMatrixd as it is.
///
/// A matrix acts on column vectors, M (p, 1). In a rigid transform the upper-left 3x3 block is the rotation, column 3
/// the translation in millimetres and row 3 is (0, 0, 0, 1). In A * B, B acts first. The default is the null matrix,
/// not the identity.
///
/// Angles are degrees. rotationX, rotationY and rotationZ turn counter-clockwise seen from the tip of the axis.
/// rotation(a, u) turns the OTHER way, clockwise seen from the tip of u: rotation(a, z) = rotationZ(-a). The two senses
/// are meant, and callers rely on both.
///
/// Nothing reports numeric failure: dividing by zero and inverting a singular matrix give infinities or NaN. A wrong
/// index to the row and column functions aborts the program, and so does assigning a matrix to itself; data() and
/// operator() are not checked.
///
/// Equality compares element by element with the absolute tolerance 1e-7.
class bsMatrix {
 public:
  /// Absolute tolerance of equality and of gaussInvert().
  static constexpr double tolerance = 1e-7;
  static constexpr double radiansPerDegree = 0.017453292519943295;

  bsMatrix() = default;
  /// All sixteen elements v.
  bsMatrix(double v) {
    for (double& value : values_) {
      value = v;
    }
  }
  /// A whole number means its value: without this, bsMatrix(0) could as well be a null pointer.
  template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
  bsMatrix(Integer v) : bsMatrix(static_cast<double>(v)) {}
  /// Copies sixteen values in storage order.
  bsMatrix(const double* p) {
    for (double& value : values_) {
      value = *p++;
    }
  }
  /// A vector converts to a pointer to three values only.
  explicit bsMatrix(const bsVector&) = delete;
  bsMatrix(const bsMatrix&) = default;
  bsMatrix& operator=(const bsMatrix& m) {
    korvex2::require(&m != this, "&m != this");
    for (int i = 0; i < 16; ++i) {
      values_[i] = m.values_[i];
    }
    return *this;
  }
  ~bsMatrix() = default;

  /// Element in row i and column j, unchecked.
  double& data(int i, int j) { return values_[4 * j + i]; }
  double data(int i, int j) const { return values_[4 * j + i]; }
  double& operator()(unsigned i, unsigned j) { return values_[4 * j + i]; }
  double operator()(unsigned i, unsigned j) const { return values_[4 * j + i]; }
  operator const double*() const { return values_; }

  /// The first three values of row n, or of column n; the fourth is dropped.
  bsVector getRow(int n) const {
    requireIndex(n);
    return {data(n, 0), data(n, 1), data(n, 2)};
  }
  bsVector getColumn(int n) const {
    requireIndex(n);
    return {data(0, n), data(1, n), data(2, n)};
  }
  void setRow(int n, const bsVector& v, double w) {
    requireIndex(n);
    data(n, 0) = v.x;
    data(n, 1) = v.y;
    data(n, 2) = v.z;
    data(n, 3) = w;
  }
  void setColumn(int n, const bsVector& v, double w) {
    requireIndex(n);
    data(0, n) = v.x;
    data(1, n) = v.y;
    data(2, n) = v.z;
    data(3, n) = w;
  }

  bsMatrix& setNull() {
    for (double& value : values_) {
      value = 0.0;
    }
    return *this;
  }
  bsMatrix& setIdentity() {
    setNull();
    values_[0] = values_[5] = values_[10] = values_[15] = 1.0;
    return *this;
  }
  static const bsMatrix& getIdentityMatrix();
  static const bsMatrix& getNullMatrix();

  // Builders: each overwrites the whole matrix and returns it.
  bsMatrix& translation(double x, double y, double z) { return translation(bsVector(x, y, z)); }
  bsMatrix& translation(const bsVector& t) {
    setIdentity();
    setColumn(3, t, 1.0);
    return *this;
  }
  bsMatrix& scaling(double x, double y, double z) { return scaling(bsVector(x, y, z)); }
  bsMatrix& scaling(const bsVector& s) {
    setIdentity();
    values_[0] = s.x;
    values_[5] = s.y;
    values_[10] = s.z;
    return *this;
  }
  /// Counter-clockwise by a degrees about +x, +y and +z.
  bsMatrix& rotationX(double a);
  bsMatrix& rotationY(double a);
  bsMatrix& rotationZ(double a);
  /// CLOCKWISE by a degrees about u, which is used as it is: pass a unit vector. The transpose of the common axis-angle
  /// matrix, kept on purpose.
  bsMatrix& rotation(double a, const bsVector& u);

  bsMatrix& operator*=(const bsMatrix& b);
  bsMatrix operator+(const bsMatrix& b) const { return bsMatrix(*this) += b; }
  bsMatrix operator-(const bsMatrix& b) const { return bsMatrix(*this) -= b; }
  bsMatrix& operator+=(const bsMatrix& b) {
    for (int i = 0; i < 16; ++i) {
      values_[i] += b.values_[i];
    }
    return *this;
  }
  bsMatrix& operator-=(const bsMatrix& b) {
    for (int i = 0; i < 16; ++i) {
      values_[i] -= b.values_[i];
    }
    return *this;
  }
  /// A number would step along the pointer that a matrix converts to.
  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  bsMatrix operator+(Number) const = delete;
  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  bsMatrix operator-(Number) const = delete;

  bsMatrix operator*(double s) const { return bsMatrix(*this) *= s; }
  bsMatrix operator/(double s) const { return bsMatrix(*this) /= s; }
  bsMatrix& operator*=(double s) {
    for (double& value : values_) {
      value *= s;
    }
    return *this;
  }
  bsMatrix& operator/=(double s) {
    for (double& value : values_) {
      value /= s;
    }
    return *this;
  }
  /// 0 - value for every element, so that a zero stays a positive zero.
  bsMatrix operator-() const { return bsMatrix() -= *this; }

  /// Transforms the point v (millimetres) homogeneously: with (p, w) = M (v, 1), p / w, or p itself where w is exactly
  /// 0. For a rigid transform w = 1 and the result is R v + t.
  bsVector operator*(const bsVector& v) const {
    const bsVector p(data(0, 0) * v.x + data(0, 1) * v.y + data(0, 2) * v.z + data(0, 3),
                     data(1, 0) * v.x + data(1, 1) * v.y + data(1, 2) * v.z + data(1, 3),
                     data(2, 0) * v.x + data(2, 1) * v.y + data(2, 2) * v.z + data(2, 3));
    const double w = data(3, 0) * v.x + data(3, 1) * v.y + data(3, 2) * v.z + data(3, 3);
    return w == 0.0 ? p : p / w;
  }

  /// Writes the transpose into out, which may be this matrix, and returns out.
  bsMatrix& getTranspose(bsMatrix& out) const;
  /// Transposes in place and returns this matrix.
  bsMatrix& transpose();

  /// Inverse of a rigid transform: p' = R p + t gives p = R^T p' - R^T t, because the inverse of a rotation is its
  /// transpose. Row 3 becomes (0, 0, 0, element (3,3) as it was). Nobody checks that the matrix is rigid. The first
  /// form works in place and returns this matrix, the second writes into out (which may be this matrix) and returns it.
  bsMatrix& fastInvert() { return fastInvert(*this); }
  bsMatrix& fastInvert(bsMatrix& out) const;

  /// Inverse by elimination, with an exchange rule that is wrong for most matrices (those with a negligible entry below
  /// the diagonal, the identity among them, come out as NaN) and kept on purpose; use fastInvert(). Where every entry
  /// met below the diagonal is 1e-7 or more, the result is the inverse. Forms as for fastInvert().
  bsMatrix& gaussInvert() { return gaussInvert(*this); }
  bsMatrix& gaussInvert(bsMatrix& out) const;

  /// Determinant of all sixteen elements: the 24 products of one element from each row and column, signed by the parity
  /// of the permutation.
  double getDeterminant() const;

  /// Sum of the squares of all elements but (0,0), left out on purpose, and its root.
  double getNormeSquared() const;
  double getNorm() const { return std::sqrt(getNormeSquared()); }

  /// Whether the squared length of each row and each column of the 3x3 block lies within [0.999, 1.001]. On purpose it
  /// looks neither at the angles between them nor at the fourth row and column.
  bool isOrthonormal() const {
    const auto isNearOne = [](const bsVector& v) {
      const double squared = bsVector::dotProduct(v, v);
      return squared >= 0.999 && squared <= 1.001;
    };
    for (int k = 0; k < 3; ++k) {
      if (!isNearOne(getColumn(k)) || !isNearOne(getRow(k))) {
        return false;
      }
    }
    return true;
  }

 private:
  static void requireIndex(int n) { korvex2::require(n >= 0 && n < 4, "n>=0 && n<4"); }

  double values_[16] = {};
};

/// Product: B acts first.
bsMatrix operator*(const bsMatrix& a, const bsMatrix& b);
/// A number stands on the right. Deleted, lest it convert to a matrix full of itself.
bsMatrix operator*(double s, const bsMatrix& m) = delete;
template <class Number>
std::enable_if_t<std::is_arithmetic_v<Number>, bsMatrix> operator+(Number, const bsMatrix&) = delete;

bool operator==(bsMatrix a, bsMatrix b);
bool operator!=(bsMatrix a, bsMatrix b);

/// Writes four lines, one a row: "[", each value followed by a tab, "]". Numbers in the stream's own format.
std::ostream& operator<<(std::ostream& out, const bsMatrix& m);
/// Asks for each row on standard output, whatever stream is read, and reads its four values. A value that cannot be
/// read leaves its element as it was and the stream failed.
std::istream& operator>>(std::istream& in, bsMatrix& m);

#endif
