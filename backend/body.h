// One rigid body as the backend knows it: markers, drawn lines, description, calibration, target type.
#ifndef KORVEX2_BACKEND_BODY_H
#define KORVEX2_BACKEND_BODY_H

#include <QByteArray>
#include <QString>

#include <vector>

#include "rigidtransform.h"

namespace korvex2 {

/// Names a body in the protocol: `standard b03` is {"standard", 3}. Numbers count from 1 within the type.
struct BodyKey {
  QByteArray type;
  int number = 0;

  friend bool operator==(const BodyKey& a, const BodyKey& b) { return a.number == b.number && a.type == b.type; }
};

/// Direction in body coordinates (not normalised) and opening angle in degrees. All zero: no emission known.
struct MarkerEmission {
  Vector3 direction{{0.0, 0.0, 0.0}};
  double openingAngle = 0.0;

  friend bool operator==(const MarkerEmission& a, const MarkerEmission& b) {
    return a.direction == b.direction && a.openingAngle == b.openingAngle;
  }
};

/// Position in millimetres, in the body's current coordinates.
struct BodyMarker {
  Vector3 position{{0.0, 0.0, 0.0}};
  MarkerEmission emission;

  friend bool operator==(const BodyMarker& a, const BodyMarker& b) {
    return a.position == b.position && a.emission == b.emission;
  }
};

/// Drawn link between two markers; indices count from 0.
struct BodyLine {
  int from = 0;
  int to = 0;

  friend bool operator==(const BodyLine& a, const BodyLine& b) { return a.from == b.from && a.to == b.to; }
};

/// What a body file holds.
struct BodyGeometry {
  std::vector<Vector3> positions;
  std::vector<BodyLine> lines;
  /// Bytes between the last marker and the number of lines. Begins with white space, ends with the line "# Lines".
  QByteArray text = QByteArrayLiteral("\n# Lines\n");
  /// Bytes behind the last line record.
  QByteArray rest = QByteArrayLiteral("\n");
};

/// A body of the database. `transform` is everything that transform commands did to the body since its markers were
/// measured: p_now = transform(p_measured). Markers stay where they are in the room, so a pose that was recorded for
/// the measured coordinates is reported as pose * inverse(transform).
struct Body {
  BodyKey key;
  QString description;
  QByteArray targetType = QByteArrayLiteral("tt_std");
  bool calibrated = false;
  std::vector<BodyMarker> markers;
  std::vector<BodyLine> lines;
  RigidTransform transform;
  /// Free text of the body file, kept (see BodyGeometry).
  QByteArray text = BodyGeometry().text;
  QByteArray rest = BodyGeometry().rest;
  /// File in the folder "bodies", without a path; empty when the body has none.
  QString file;
  /// Empty, or why the body cannot be used (its file is broken, it is missing in the catalogue). Such a body keeps its
  /// number, is not calibrated, has no markers and refuses changes.
  QString problem;
};

}  // namespace korvex2

#endif
