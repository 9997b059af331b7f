// See abcMarker.h.
#include "abcMarker.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "glquadric.h"

namespace {

constexpr double degreesPerRadian = 180.0 / 3.14159265358979323846;

bool isFinite(const bsVector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

/// Arcsine in degrees. A component beyond +-1, which a direction that is not normalised may have, counts as +-1.
double arcsineDegrees(double sine) { return std::asin(std::clamp(sine, -1.0, 1.0)) * degreesPerRadian; }

/// Goes to the marker and turns the z axis towards its emission direction.
void applyEmissionPose(const AbcMarkerData& marker) {
  const double elevation = arcsineDegrees(marker.emission_y);
  glTranslated(marker.position.x, marker.position.y, marker.position.z);
  glRotated(marker.emission_z >= 0.0 ? -elevation : elevation - 180.0, 1.0, 0.0, 0.0);
  glRotated(arcsineDegrees(marker.emission_x), 0.0, 1.0, 0.0);
}

void drawEmissionArrow(bool small) {
  const double shaft = small ? 19.5 : 30.3;
  korvex2::drawCylinder(0.3125, 0.3125, shaft, 14, 1);
  glTranslated(0.0, 0.0, shaft);
  korvex2::drawCylinder(2.5, 0.0, 5.0, 14, 1);
}

/// The cone whose side of fixed length makes the angle `opening` with the direction. Height and rim radius are the
/// side's parts along and across the direction: side * |cos opening| and side * sin opening, written with the angle
/// from 90 degrees, beyond which the cone opens backwards.
void drawOpeningCone(double opening, bool small) {
  const double side = small ? 15.0 : 25.8;
  const double fromRightAngle = std::fabs(opening - 90.0) / degreesPerRadian;
  const double height = side * std::sin(fromRightAngle);
  const double radius = side * std::cos(fromRightAngle);
  if (opening > 90.0) {
    glTranslated(0.0, 0.0, -height);
    korvex2::drawCylinder(radius, 0.0, height, 20, 20);
  } else {
    korvex2::drawCylinder(0.0, radius, height, 20, 20);
  }
}

}  // namespace

abcMarker::abcMarker(unsigned int id, bsVector position) : abcObject(ABC_MARKER) {
  data_.id = id;
  data_.position = position;
}

void abcMarker::setMarkerEmission(double x, double y, double z, double angle) {
  data_.emission_x = x;
  data_.emission_y = y;
  data_.emission_z = z;
  data_.opening_angle = angle;
}

void abcMarker::drawSphere(bool small, double scale, int slices, int stacks) const {
  if (!isFinite(data_.position)) {
    return;
  }
  glPushMatrix();
  glTranslated(data_.position.x, data_.position.y, data_.position.z);
  glRotated(90.0, 1.0, 0.0, 0.0);
  korvex2::drawSphere(scale * (small ? data_.small_radius : data_.radius), slices, stacks);
  glPopMatrix();
}

void abcMarker::draw(bool small, bool colored) {
  glEnable(GL_LIGHTING);
  if (colored) {
    glColor3ub(static_cast<GLubyte>(getColor().red()), static_cast<GLubyte>(getColor().green()),
               static_cast<GLubyte>(getColor().blue()));
  } else {
    glColor3ub(255, 255, 255);
  }
  drawSphere(small, 1.0, 16, 16);
}

void abcMarker::drawSelected(bool small) {
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glDisable(GL_LIGHTING);
  glLineWidth(1.0f);
  drawSphere(small, 1.2, 8, 8);
  glEnable(GL_LIGHTING);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void abcMarker::drawForPicking(bool small) { drawSphere(small, 1.0, 16, 16); }

void abcMarker::drawEmission(bool small) {
  const bsVector direction(data_.emission_x, data_.emission_y, data_.emission_z);
  const bool unknown = direction.x == 0.0 && direction.y == 0.0 && direction.z == 0.0;
  if (unknown || !isFinite(direction) || !isFinite(data_.position)) {
    return;
  }
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glEnable(GL_LIGHTING);
  glColor3d(1.0, 1.0, 1.0);
  glPushMatrix();
  applyEmissionPose(data_);
  drawEmissionArrow(small);
  glPopMatrix();
  if (!std::isfinite(data_.opening_angle)) {
    return;
  }
  glPushMatrix();
  applyEmissionPose(data_);
  drawOpeningCone(data_.opening_angle, small);
  glPopMatrix();
}
