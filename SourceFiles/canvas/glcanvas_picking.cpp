// Picking and selection of the canvas, and the lines that the operator draws between selected markers.
#include "glcanvas.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <algorithm>
#include <cstddef>

namespace {

/// Side of the pick region around the mouse, in widget pixels.
constexpr double pickRegion = 5.0;
constexpr std::size_t usualBuffer = 512;
/// A hit record of a body: name count, two depths, two names.
constexpr std::size_t recordSize = 5;

}  // namespace

abcObject* GLCanvas::doPicking(unsigned int x, unsigned int y) {
  if (width_ == 0 || !makeContextCurrent()) {
    return nullptr;
  }
  std::vector<unsigned int> records(usualBuffer);
  int hits = drawForPicking(records, x, y);
  if (hits < 0) {
    // More hits than the buffer holds: there cannot be more than one for each object.
    records.assign(recordSize * (body_.getMarkers().size() + body_.getLines().size()) + usualBuffer, 0);
    hits = drawForPicking(records, x, y);
  }
  return nearestPicked(records, hits);
}

/// Draws the body with names around a point in widget pixels; returns the number of hit records, or a negative number
/// when they did not fit.
int GLCanvas::drawForPicking(std::vector<unsigned int>& records, double x, double y) {
  // The mouse counts in widget pixels, the viewport in device pixels.
  const double ratio = devicePixelRatioF();
  GLint viewport[4];
  glGetIntegerv(GL_VIEWPORT, viewport);
  glSelectBuffer(static_cast<GLsizei>(records.size()), records.data());
  glRenderMode(GL_SELECT);

  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  gluPickMatrix(x * ratio, viewport[3] - y * ratio, pickRegion * ratio, pickRegion * ratio, viewport);
  applyProjection();
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  applyView();
  applyBodyPlacement();
  glInitNames();
  body_.drawForPicking();
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  return glRenderMode(GL_RENDER);
}

abcObject* GLCanvas::nearestPicked(const std::vector<unsigned int>& records, int hits) const {
  unsigned int nearest = 0xFFFFFFFFu;
  unsigned int kind = 0;
  std::size_t index = 0;
  std::size_t at = 0;
  for (int hit = 0; hit < hits && at + recordSize <= records.size(); ++hit) {
    const unsigned int names = records[at];
    const unsigned int depth = records[at + 1];
    if (names >= 2 && depth < nearest) {
      nearest = depth;
      kind = records[at + 3];
      index = records[at + 4];
    }
    at += 3 + std::size_t{names};
  }
  if (kind == ABC_MARKER && index < body_.getMarkers().size()) {
    return body_.getMarkers()[index];
  }
  if (kind == ABC_LINE && index < body_.getLines().size()) {
    return body_.getLines()[index];
  }
  return nullptr;
}

void GLCanvas::checkSelection(abcObject* clicked) {
  if (clicked == nullptr) {
    selection_.clear();
  } else if (selection_.size() == 1 && isMarker(selection_[0]) && isMarker(clicked) && clicked != selection_[0]) {
    selection_.push_back(clicked);
  } else if (selection_.size() == 2 && (clicked == selection_[0] || clicked == selection_[1])) {
    std::swap(selection_[0], selection_[1]);
  } else {
    selection_.assign(1, clicked);
  }
  emitSelectionSignals();
}

void GLCanvas::emitSelectionSignals() {
  emit canSetOriginToMarker(checkSetOriginToMarker());
  emit canSetAxisToMarkers(checkSetAxisToMarkers());
  emit canIntroduceLine(checkIntroduceLine());
  emit canDeleteLine(checkDeleteLine());
  emit canDeleteMarker();
}

bool GLCanvas::isMarker(const abcObject* object) { return object != nullptr && object->getType() == ABC_MARKER; }

bool GLCanvas::selectedAreTwoMarkers() const {
  return selection_.size() == 2 && isMarker(selection_[0]) && isMarker(selection_[1]);
}

int GLCanvas::getSelectedMarker() const {
  if (selection_.size() > 1) {
    return -2;
  }
  return selection_.empty() || !isMarker(selection_[0])
             ? -1
             : static_cast<int>(static_cast<const abcMarker*>(selection_[0])->getId());
}

bool GLCanvas::checkIntroduceLine() const {
  return isBodyLoaded() && selectedAreTwoMarkers() &&
         !body_.lineExists(static_cast<const abcMarker*>(selection_[0]), static_cast<const abcMarker*>(selection_[1]));
}

void GLCanvas::introduceLine() {
  if (!checkIntroduceLine()) {
    return;
  }
  body_.addLine(new abcLine(static_cast<abcMarker*>(selection_[0]), static_cast<abcMarker*>(selection_[1])));
  emit canIntroduceLine(false);
  updateGL();
}

bool GLCanvas::checkDeleteLine() const {
  return isBodyLoaded() && selection_.size() == 1 && selection_[0] != nullptr && selection_[0]->getType() == ABC_LINE;
}

void GLCanvas::deleteLine() {
  if (!checkDeleteLine()) {
    return;
  }
  body_.removeLine(static_cast<abcLine*>(selection_[0]));
  selection_.clear();
  emit canDeleteLine(false);
  updateGL();
}
