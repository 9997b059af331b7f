// One marker of a body: its record, and how it and its emission are drawn.
#ifndef KORVEX2_ABCMARKER_H
#define KORVEX2_ABCMARKER_H

#include "abcObject.h"
#include "abcmarkerdata.h"
#include "bsVector.h"

/// A marker at the position at which it was loaded (millimetres, loaded coordinates). The position never changes while
/// the body's coordinate system is edited: the body keeps that as a transformation.
///
/// A marker whose position is not finite is not drawn: OpenGL gets no NaN.
class abcMarker : public abcObject {
 public:
  abcMarker(unsigned int id, bsVector position);
  ~abcMarker() override = default;

  unsigned int getId() const { return data_.id; }
  const bsVector& getPosition() const { return data_.position; }
  const AbcMarkerData& getData() const { return data_; }

  /// Stores direction (body coordinates) and opening angle (degrees) as given, neither normalised nor checked.
  void setMarkerEmission(double x, double y, double z, double angle);

  /// A lit sphere, in the marker's colour when `colored`, else white.
  void draw(bool small, bool colored) override;
  /// A wire cage somewhat larger than the sphere, in the caller's colour. Lighting is on afterwards.
  void drawSelected(bool small) override;
  void drawForPicking(bool small) override;
  /// An arrow along the emission direction and a cone that shows the opening angle, both white and lit. Nothing when
  /// the direction is exactly (0, 0, 0).
  void drawEmission(bool small);

 private:
  /// A sphere of `scale` times the radius in force, around the marker's position.
  void drawSphere(bool small, double scale, int slices, int stacks) const;

  AbcMarkerData data_;
};

#endif
