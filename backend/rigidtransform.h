// Change of a body's coordinate system: a position and a rotation, and the little arithmetic that the backend needs.
#ifndef KORVEX2_BACKEND_RIGIDTRANSFORM_H
#define KORVEX2_BACKEND_RIGIDTRANSFORM_H

#include <array>
#include <cmath>
#include <cstddef>

namespace korvex2 {

/// x, y, z; millimetres for positions, no unit for directions.
using Vector3 = std::array<double, 3>;

/// p' = R p + t, on column vectors.
///
/// `position` is t in millimetres. `rotation` holds R column by column, as the transform command carries it:
/// R(row r, column c) = rotation[3 c + r], all indices from 0. The default is the identity.
///
/// Composition: compose(after, before) applies `before` first.
struct RigidTransform {
  Vector3 position{{0.0, 0.0, 0.0}};
  std::array<double, 9> rotation{{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}};

  double element(std::size_t row, std::size_t column) const { return rotation[3 * column + row]; }

  /// R v: what happens to a direction.
  Vector3 rotate(const Vector3& v) const {
    Vector3 result{};
    for (std::size_t row = 0; row < 3; ++row) {
      result[row] = element(row, 0) * v[0] + element(row, 1) * v[1] + element(row, 2) * v[2];
    }
    return result;
  }

  /// R p + t: what happens to a point.
  Vector3 apply(const Vector3& p) const {
    const Vector3 turned = rotate(p);
    return {{turned[0] + position[0], turned[1] + position[1], turned[2] + position[2]}};
  }

  /// R1 R2 and R1 t2 + t1: first `before`, then `after`.
  static RigidTransform compose(const RigidTransform& after, const RigidTransform& before) {
    RigidTransform result;
    for (std::size_t column = 0; column < 3; ++column) {
      const Vector3 image = after.rotate(
          {{before.rotation[3 * column], before.rotation[3 * column + 1], before.rotation[3 * column + 2]}});
      for (std::size_t row = 0; row < 3; ++row) {
        result.rotation[3 * column + row] = image[row];
      }
    }
    result.position = after.apply(before.position);
    return result;
  }

  double determinant() const {
    return element(0, 0) * (element(1, 1) * element(2, 2) - element(1, 2) * element(2, 1)) -
           element(0, 1) * (element(1, 0) * element(2, 2) - element(1, 2) * element(2, 0)) +
           element(0, 2) * (element(1, 0) * element(2, 1) - element(1, 1) * element(2, 0));
  }

  /// p = R^-1 (p' - t). The inverse is the true one (adjugate over determinant), not the transpose: R arrives rounded
  /// to eight decimals, and a marker must be found exactly where it was in the room when a pose is composed with it.
  RigidTransform inverse() const {
    const double scale = 1.0 / determinant();
    RigidTransform result;
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        // Cofactor (column, row); the cyclic indices carry its sign.
        const std::size_t r1 = (column + 1) % 3;
        const std::size_t r2 = (column + 2) % 3;
        const std::size_t c1 = (row + 1) % 3;
        const std::size_t c2 = (row + 2) % 3;
        result.rotation[3 * column + row] =
            scale * (element(r1, c1) * element(r2, c2) - element(r1, c2) * element(r2, c1));
      }
    }
    const Vector3 back = result.rotate(position);
    result.position = {{-back[0], -back[1], -back[2]}};
    return result;
  }

  bool isFinite() const {
    for (const double value : position) {
      if (!std::isfinite(value)) {
        return false;
      }
    }
    for (const double value : rotation) {
      if (!std::isfinite(value)) {
        return false;
      }
    }
    return true;
  }

  /// Whether every element of R^T R differs from the identity's by at most `tolerance` and R keeps the hand
  /// (determinant above 0). False for anything that is not finite.
  bool isRotation(double tolerance) const {
    if (!isFinite()) {
      return false;
    }
    for (std::size_t a = 0; a < 3; ++a) {
      for (std::size_t b = a; b < 3; ++b) {
        double product = 0.0;
        for (std::size_t row = 0; row < 3; ++row) {
          product += element(row, a) * element(row, b);
        }
        // Negated so that a product that overflowed to NaN is refused as well.
        if (!(std::fabs(product - (a == b ? 1.0 : 0.0)) <= tolerance)) {
          return false;
        }
      }
    }
    return determinant() > 0.0;
  }

  friend bool operator==(const RigidTransform& a, const RigidTransform& b) {
    return a.position == b.position && a.rotation == b.rotation;
  }
  friend bool operator!=(const RigidTransform& a, const RigidTransform& b) { return !(a == b); }
};

}  // namespace korvex2

#endif
