/* See am_rot.h. */
#include "am_rot.h"

#include <math.h>

void am_rot_equals_ang(double* r, const double* a) {
  const double s0 = sin(a[0]);
  const double c0 = cos(a[0]);
  const double s1 = sin(a[1]);
  const double c1 = cos(a[1]);
  const double s2 = sin(a[2]);
  const double c2 = cos(a[2]);
  r[0] = c1 * c2;
  r[1] = c0 * s2 + s0 * s1 * c2;
  r[2] = s0 * s2 - c0 * s1 * c2;
  r[3] = -c1 * s2;
  r[4] = c0 * c2 - s0 * s1 * s2;
  r[5] = s0 * c2 + c0 * s1 * s2;
  r[6] = s1;
  r[7] = -s0 * c1;
  r[8] = c0 * c1;
}

void am_ang_equals_rot(double* a, const double* r) {
  a[0] = -atan2(r[7], r[8]);
  a[1] = asin(r[6]);
  a[2] = -atan2(r[3], r[0]);
}

double am_rot_angle(const double* r) { return 2.0 * acos(0.5 * sqrt(1.0 + r[0] + r[4] + r[8])); }

static double length(double x, double y, double z) { return sqrt(x * x + y * y + z * z); }

/* One pass; returns how far the furthest of the six lengths was from 1 when it began. */
static double balance_lengths(double* r) {
  double row_root[3];
  double column_root[3];
  double furthest = 0.0;
  int i;
  int k;
  for (k = 0; k < 3; ++k) {
    const double row = length(r[k], r[k + 3], r[k + 6]);
    const double column = length(r[3 * k], r[3 * k + 1], r[3 * k + 2]);
    row_root[k] = sqrt(row);
    column_root[k] = sqrt(column);
    furthest = fmax(furthest, fmax(fabs(1.0 - row), fabs(1.0 - column)));
  }
  for (k = 0; k < 3; ++k) {
    for (i = 0; i < 3; ++i) {
      r[k + 3 * i] /= row_root[k] * column_root[i];
    }
  }
  return furthest;
}

void am_rot_orthonormalize(double* r) {
  const double close_enough = 1e-6;
  const int most_passes = 100;
  int pass;
  for (pass = 0; pass < most_passes; ++pass) {
    if (balance_lengths(r) <= close_enough) {
      return;
    }
  }
}
