// See abcLine.h.
#include "abcLine.h"

#include <GL/gl.h>

#include "abcMarker.h"
#include "glUtils.h"

abcLine::abcLine(abcMarker* first, abcMarker* second) : abcObject(ABC_LINE), first_(first), second_(second) {
  setColor(QColor(100, 100, 100, 255));
}

bool abcLine::equal(const abcMarker* a, const abcMarker* b) const {
  return (first_ == a && second_ == b) || (first_ == b && second_ == a);
}

bool abcLine::equal(const abcLine& other) const { return equal(other.first_, other.second_); }

void abcLine::drawBar(bool small, double scale) const {
  if (first_ == nullptr || second_ == nullptr) {
    return;
  }
  glPushMatrix();
  glMultMatrixd(frame_.toMatrix());
  drawRectangle(first_->getPosition(), second_->getPosition(), scale * (small ? thinWidth_ : wideWidth_));
  glPopMatrix();
}

void abcLine::draw(bool small, bool /*colored*/) {
  // Always the own colour: kept on purpose.
  glColor3ub(static_cast<GLubyte>(getColor().red()), static_cast<GLubyte>(getColor().green()),
             static_cast<GLubyte>(getColor().blue()));
  drawBar(small, 1.0);
}

void abcLine::drawSelected(bool small) {
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glDisable(GL_LIGHTING);
  glLineWidth(1.0f);
  drawBar(small, 1.4);
  glEnable(GL_LIGHTING);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void abcLine::drawForPicking(bool small) { drawBar(small, 1.0); }
