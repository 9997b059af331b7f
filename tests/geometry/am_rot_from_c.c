/* See am_rot_from_c.h. */
#include "am_rot_from_c.h"

#include "am_rot.h"

double am_rot_round_trip_from_c(const double* angles, double* array, double* angles_again) {
  am_rot_equals_ang(array, angles);
  am_rot_orthonormalize(array);
  am_ang_equals_rot(angles_again, array);
  return am_rot_angle(array);
}
