/* Calls of the rotation angle conversions made from C, for the tests to compare with their own. */
#ifndef KORVEX2_TESTS_AM_ROT_FROM_C_H
#define KORVEX2_TESTS_AM_ROT_FROM_C_H

#ifdef __cplusplus
extern "C" {
#endif

/* Goes from angles to array, orthonormalises it, and back to angles; returns the angle of the turn. */
double am_rot_round_trip_from_c(const double* angles, double* array, double* angles_again);

#ifdef __cplusplus
}
#endif

#endif
