// How the body is drawn: its coordinate system and grids, markers, emissions and lines, and all of it for picking.
#include <GL/gl.h>

#include "abcBody.h"
#include "glUtils.h"

namespace {

void setColor(const QColor& color) {
  glColor3ub(static_cast<GLubyte>(color.red()), static_cast<GLubyte>(color.green()),
             static_cast<GLubyte>(color.blue()));
}

template <class Object>
void drawNamed(abcObjectType type, const std::vector<Object*>& objects, bool small) {
  glPushName(static_cast<GLuint>(type));
  GLuint index = 0;
  for (Object* object : objects) {
    glPushName(index++);
    object->drawForPicking(small);
    glPopName();
  }
  glPopName();
}

}  // namespace

void abcBody::draw() {
  if (!loaded_) {
    return;
  }
  drawCoordinateSystem();
  for (abcMarker* marker : markers_) {
    marker->draw(smallMarkers_, coloredMarkers_);
  }
  if (showEmissions_) {
    for (abcMarker* marker : markers_) {
      marker->drawEmission(smallMarkers_);
    }
  }
  for (abcLine* line : lines_) {
    line->draw(smallMarkers_, true);
  }
}

void abcBody::drawCoordinateSystem() const {
  const double origin[3] = {0.0, 0.0, 0.0};
  glPushMatrix();
  glMultMatrixd(transformation_);
  glMultMatrixd(immediateMatrix());
  drawAxes(origin, 25.0, 3.0, longAxes_, longAxesFactor_, 1.0);
  if (xyGrid_) {
    setColor(xyGridColor_);
    drawGrid(gridExtent_, gridExtent_, gridStep_, gridStep_);
  }
  if (yzGrid_) {
    glPushMatrix();
    setColor(yzGridColor_);
    glRotated(90.0, 0.0, 1.0, 0.0);
    drawGrid(gridExtent_, gridExtent_, gridStep_, gridStep_);
    glPopMatrix();
  }
  if (xzGrid_) {
    glPushMatrix();
    setColor(xzGridColor_);
    glRotated(90.0, 1.0, 0.0, 0.0);
    drawGrid(gridExtent_, gridExtent_, gridStep_, gridStep_);
    glPopMatrix();
  }
  glPopMatrix();
}

// Plain calls, no display lists: some drivers crash when a list is called in selection mode.
void abcBody::drawForPicking() {
  drawNamed(ABC_MARKER, markers_, smallMarkers_);
  drawNamed(ABC_LINE, lines_, smallMarkers_);
}
