// See bsVector.h.
#include "bsVector.h"

#include <istream>
#include <ostream>

#include "bsPrompt.h"

static_assert(std::is_trivially_copyable_v<bsVector> && sizeof(bsVector) == 3 * sizeof(double),
              "a vector is handed out as three consecutive doubles");

bsVector bsVector::getSnappedToAxis() const {
  const auto sign = [](double value) { return value > 0.0 ? 1.0 : -1.0; };
  const auto beats = [](double a, double b) { return a > b && a - b >= tolerance; };
  const double ax = std::fabs(x);
  const double ay = std::fabs(y);
  const double az = std::fabs(z);
  if (beats(ax, ay) && beats(ax, az)) {
    return {sign(x), 0.0, 0.0};
  }
  if (beats(ay, az)) {
    return {0.0, sign(y), 0.0};
  }
  return {0.0, 0.0, sign(z)};
}

std::ostream& operator<<(std::ostream& out, const bsVector& v) {
  return out << '{' << v.x << ',' << v.y << ',' << v.z << '}';
}

std::istream& operator>>(std::istream& in, bsVector& v) {
  korvex2::askForNumber(in, "x : ", v.x);
  korvex2::askForNumber(in, "\ny : ", v.y);
  korvex2::askForNumber(in, "\nz : ", v.z);
  return in;
}
