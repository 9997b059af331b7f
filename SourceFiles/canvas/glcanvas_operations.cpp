// Operations of the canvas that redefine the body's coordinate system, pending or as one undoable step each.
#include "glcanvas.h"

#include <cmath>

#include "bsAssert.h"
#include "bsQuaternion.h"
#include "frameconstruction.h"

namespace {

bool isFinite(const bsVector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

/// Of length 1 even where the matrix is a rotation up to rounding only: what is committed has to stay rigid.
bsQuaternion quaternionOf(const bsMatrix& m) {
  bsQuaternion q;
  q.fromMatrix(m);
  q.normalize();
  return q;
}

const bsVector& positionOf(const abcObject* marker) { return static_cast<const abcMarker*>(marker)->getPosition(); }

}  // namespace

// --- Pending changes ---

void GLCanvas::translateBody(double x, double y, double z) {
  body_.setImmediatePosition(bsVector(x, y, z));
  updateGL();
  emit body_change(true);
}

void GLCanvas::rotateBody(double x, double y, double z) {
  body_.setImmediateOrientation(bsQuaternion(x, bsVector(1.0, 0.0, 0.0)) * bsQuaternion(y, bsVector(0.0, 1.0, 0.0)) *
                                bsQuaternion(z, bsVector(0.0, 0.0, 1.0)));
  updateGL();
  emit body_change(true);
}

void GLCanvas::rotateBody(const bsMatrix& orientation) {
  body_.setImmediateOrientation(quaternionOf(orientation));
  updateGL();
}

void GLCanvas::setBodyPosition(const bsVector& position) {
  body_.setImmediatePosition(give_body_transformation() * position);
  updateGL();
}

void GLCanvas::setBodyOrientation(const bsMatrix& orientation) {
  // The new axes are T * M in loaded coordinates, so M = inverse(T) * orientation.
  body_.setImmediateOrientation(quaternionOf(give_body_transformation()) * quaternionOf(orientation));
  updateGL();
}

// --- Commit and history ---

void GLCanvas::saveCurrentBody() {
  if (body_.store()) {
    emitHistorySignals();
  }
  updateGL();
}

void GLCanvas::emitHistorySignals() {
  emit canUndo(body_.canUndo());
  emit canRedo(body_.canRedo());
}

void GLCanvas::undoBody() {
  body_.undo();
  emitHistorySignals();
  updateGL();
}

void GLCanvas::redoBody() {
  body_.redo();
  emitHistorySignals();
  updateGL();
}

void GLCanvas::undo() {
  if (modificationMode_ == ABC_MODIFY_BODY) {
    undoBody();
  } else {
    updateGL();
  }
  emit body_change(body_.canUndo());
}

void GLCanvas::redo() {
  if (modificationMode_ == ABC_MODIFY_BODY) {
    redoBody();
  } else {
    updateGL();
  }
  emit body_change(true);
}

// --- Which operations are possible ---

bool GLCanvas::checkSetOriginToMarker() const {
  return isBodyLoaded() && !selection_.empty() && isMarker(selection_[0]);
}

bool GLCanvas::checkSetAxisToMarkers() const { return isBodyLoaded() && selectedAreTwoMarkers(); }

bool GLCanvas::checkSetParallelAxes() const {
  return modificationMode_ == ABC_MODIFY_BODY && isBodyLoaded() && online_;
}

// --- Operations of one undoable step each ---

void GLCanvas::setOriginToMarker() {
  if (!checkSetOriginToMarker()) {
    return;
  }
  setBodyPosition(positionOf(selection_[0]));
  emit storeBodyRequest();
}

void GLCanvas::set_origin_to_cog() {
  if (!isBodyLoaded() || !isFinite(body_.getCenterOfGravity())) {
    return;
  }
  setBodyPosition(body_.getCenterOfGravity());
  emit storeBodyRequest();
}

void GLCanvas::setAxisToMarkers(abcAxis axisToSet, abcAxis axisToKeep) {
  korvex2::require(axisToSet != axisToKeep, "axisToSet != axisToPreserve");
  if (!checkSetAxisToMarkers()) {
    return;
  }
  bsVector direction = positionOf(selection_[1]) - positionOf(selection_[0]);
  bsVector kept = body_.getTransformation().getColumn(axisToKeep);
  if (!korvex2::spanPlane(direction, kept)) {
    return;
  }
  bsVector third;
  setBodyOrientation(computeFrame(direction, kept, third, axisToSet, axisToKeep));
  emit storeBodyRequest();
}

void GLCanvas::setParallelAxes() {
  if (!checkSetParallelAxes()) {
    return;
  }
  setBodyOrientation(roomAxesInLoaded());
  emit storeBodyRequest();
}

/// Orientation of the room's axes in loaded coordinates: the tracked orientation leads from loaded to room coordinates.
bsMatrix GLCanvas::roomAxesInLoaded() const {
  bsMatrix inverse;
  return roomOrientation_.fastInvert(inverse);
}

void GLCanvas::set_due_to_room_cog() {
  if (!isBodyLoaded() || !isFinite(body_.getCenterOfGravity())) {
    return;
  }
  setBodyOrientation(roomAxesInLoaded());
  setBodyPosition(body_.getCenterOfGravity());
  emit storeBodyRequest();
}

void GLCanvas::set_due_to_room_marker() {
  bsVector p1;
  bsVector p2;
  bsVector p3;
  if (!chooseMarkers(p1, p2, p3)) {
    return;
  }
  setBodyOrientation(roomAxesInLoaded());
  setBodyPosition(p1);
  emit storeBodyRequest();
}

void GLCanvas::set_due_to_body() {
  bsVector p1;
  bsVector p2;
  bsVector p3;
  if (!chooseMarkers(p1, p2, p3) || !korvex2::spanPlane(p2 - p1, p3 - p1)) {
    return;
  }
  setBodyOrientation(compute_orientation(p1, p2, p3));
  setBodyPosition(p1);
  emit storeBodyRequest();
}

/// Positions of markers 1, 2, 3, or false for a body that has none. An equilateral body prefers no marker to another;
/// its first three serve.
bool GLCanvas::chooseMarkers(bsVector& p1, bsVector& p2, bsVector& p3) const {
  const std::vector<bsVector> positions = body_.give_old_data();
  if (!isBodyLoaded() || positions.size() < 3 || positions.size() > korvex2::maxMarkersToChooseFrom) {
    return false;
  }
  int m1 = 0;
  int m2 = 1;
  int m3 = 2;
  korvex2::compute_marker_1_2_3(positions, m1, m2, m3);
  p1 = positions[static_cast<std::size_t>(m1)];
  p2 = positions[static_cast<std::size_t>(m2)];
  p3 = positions[static_cast<std::size_t>(m3)];
  return isFinite(p1);
}

bsMatrix GLCanvas::computeFrame(bsVector& set, bsVector& keep, bsVector& third, abcAxis axisToSet,
                                abcAxis axisToPreserve) const {
  return korvex2::computeFrame(set, keep, third, axisToSet, axisToPreserve);
}

bsMatrix GLCanvas::compute_orientation(const bsVector& p1, const bsVector& p2, const bsVector& p3) const {
  return korvex2::compute_orientation(p1, p2, p3);
}

bool GLCanvas::compute_marker_1_2_3(int& m1, int& m2, int& m3) const {
  return korvex2::compute_marker_1_2_3(body_.give_old_data(), m1, m2, m3);
}
