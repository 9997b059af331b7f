// Plain records of a marker's data: what the tables show of a marker, and its emission as the backend gives it.
#ifndef KORVEX2_ABCMARKERDATA_H
#define KORVEX2_ABCMARKERDATA_H

#include "bsVector.h"

/// Emission of an active marker. The direction is in body coordinates and need not have length 1; (0, 0, 0) exactly
/// means that no emission is known. The opening angle is in degrees, measured from the direction to the cone's side.
struct Emission {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double angle = 0.0;
};

/// Everything known of one marker. The coordinate system of `position` is the giver's: a marker keeps loaded
/// coordinates, the records that a body hands out carry the redefined body coordinates.
struct AbcMarkerData {
  static constexpr unsigned int noMarker = 0xFFFFFFFFu;
  static constexpr double defaultRadius = 10.0;
  static constexpr double defaultSmallRadius = 3.0;

  AbcMarkerData() = default;
  AbcMarkerData(unsigned int id_, const bsVector& position_, double radius_, double small_radius_, double emission_x_,
                double emission_y_, double emission_z_, double opening_angle_)
      : id(id_),
        position(position_),
        radius(radius_),
        small_radius(small_radius_),
        emission_x(emission_x_),
        emission_y(emission_y_),
        emission_z(emission_z_),
        opening_angle(opening_angle_) {}

  /// Index of the marker within its body, counted from 0; `noMarker` for none.
  unsigned int id = noMarker;
  /// Millimetres.
  bsVector position;
  /// Radius in millimetres of the sphere that shows the marker.
  double radius = defaultRadius;
  /// The same while the view shows small markers.
  double small_radius = defaultSmallRadius;
  /// Emission direction and opening angle (degrees), as in Emission.
  double emission_x = 0.0;
  double emission_y = 0.0;
  double emission_z = 0.0;
  double opening_angle = 0.0;
};

#endif
