// The body's markers and lines, what it hands out of them, and its coordinate system with undo and redo.
#include "abcBody.h"

#include <algorithm>
#include <cmath>

namespace {

bool isFinite(const bsVector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool isFinite(const bsQuaternion& q) {
  return std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
}

template <class Object>
void deleteAll(std::vector<Object*>& objects) {
  for (Object* object : objects) {
    delete object;
  }
  objects.clear();
}

std::vector<bsVector> transformed(const bsMatrix& transformation, const std::vector<abcMarker*>& markers) {
  std::vector<bsVector> positions;
  positions.reserve(markers.size());
  for (const abcMarker* marker : markers) {
    positions.push_back(transformation * marker->getPosition());
  }
  return positions;
}

}  // namespace

abcBody::abcBody(QGLWidget* parent)
    : QObject(parent), palette_{QColor(255, 0, 0),   QColor(0, 255, 0),   QColor(0, 0, 255),    QColor(255, 255, 0),
                                QColor(255, 0, 255), QColor(0, 255, 255), QColor(255, 255, 255)} {
  initialize();
}

abcBody::~abcBody() { deleteObjects(); }

void abcBody::initialize() {
  setLoaded(false);
  setModified(false);
  resetImmediateFrame();
  transformation_.setIdentity();
  committed_.setIdentity();
  undoList_.clear();
  redoList_.clear();
  deleteObjects();
}

void abcBody::deleteObjects() {
  deleteAll(lines_);
  deleteAll(droppedLines_);
  deleteAll(markers_);
  centerOfGravity_.setValues(0.0);
  secondText_.clear();
}

void abcBody::setLoaded(bool loaded) {
  loaded_ = loaded;
  if (!loaded) {
    fileName_.clear();
  }
  emit bodyLoaded(loaded);
}

void abcBody::setModified(bool modified) {
  modified_ = modified;
  emit bodyModified(modified);
}

void abcBody::loadEmissions(const std::vector<Emission>* emissions) {
  if (emissions == nullptr) {
    return;
  }
  const std::size_t count = std::min(markers_.size(), emissions->size());
  for (std::size_t i = 0; i < count; ++i) {
    const Emission& emission = (*emissions)[i];
    markers_[i]->setMarkerEmission(emission.x, emission.y, emission.z, emission.angle);
  }
}

void abcBody::setMarkerEmission(double x, double y, double z, double angle) {
  for (abcMarker* marker : markers_) {
    marker->setMarkerEmission(x, y, z, angle);
  }
}

// --- markers and lines ---

bool abcBody::lineExists(const abcMarker* a, const abcMarker* b) const {
  return std::any_of(lines_.begin(), lines_.end(), [a, b](const abcLine* line) { return line->equal(a, b); });
}

void abcBody::addLine(abcLine* line) {
  if (line == nullptr || std::find(lines_.begin(), lines_.end(), line) != lines_.end()) {
    return;
  }
  droppedLines_.erase(std::remove(droppedLines_.begin(), droppedLines_.end(), line), droppedLines_.end());
  lines_.push_back(line);
}

void abcBody::removeLine(abcLine* line) {
  const auto found = std::find(lines_.begin(), lines_.end(), line);
  if (found == lines_.end()) {
    return;
  }
  lines_.erase(found);
  droppedLines_.push_back(line);
}

// --- what the body hands out ---

std::vector<bsVector> abcBody::give_old_data() const {
  std::vector<bsVector> positions;
  positions.reserve(markers_.size());
  for (const abcMarker* marker : markers_) {
    positions.push_back(marker->getPosition());
  }
  return positions;
}

std::vector<bsVector> abcBody::give_new_data() const { return transformed(inverseTransformation(), markers_); }

std::vector<bsVector> abcBody::give_immediate_new_data() const {
  bsMatrix toImmediate;
  immediateMatrix().fastInvert(toImmediate);
  return transformed(toImmediate * inverseTransformation(), markers_);
}

QList<AbcMarkerData> abcBody::give_data_with_emissions() const {
  const bsMatrix toNew = inverseTransformation();
  QList<AbcMarkerData> records;
  for (const abcMarker* marker : markers_) {
    AbcMarkerData record = marker->getData();
    record.position = toNew * record.position;
    record.small_radius = AbcMarkerData::defaultSmallRadius;
    records.append(record);
  }
  return records;
}

// --- the coordinate system and its history ---

void abcBody::resetImmediateFrame() {
  immediateFrame_.orientation.fromMatrix(bsMatrix::getIdentityMatrix());
  immediateFrame_.position.setValues(0.0, 0.0, 0.0);
}

bsMatrix abcBody::immediateMatrix() const { return immediateFrame_.toMatrix(); }

bsMatrix abcBody::inverseTransformation() const {
  bsMatrix inverse;
  return transformation_.fastInvert(inverse);
}

void abcBody::setImmediatePosition(const bsVector& position) {
  if (isFinite(position)) {
    immediateFrame_.position = position;
  }
}

void abcBody::setImmediateOrientation(const bsQuaternion& orientation) {
  if (isFinite(orientation)) {
    immediateFrame_.orientation = orientation;
  }
}

bool abcBody::store() {
  const bsMatrix change = immediateMatrix();
  if (!(change != bsMatrix::getIdentityMatrix()) && !(transformation_ != committed_)) {
    return false;
  }
  if (undoLimit_ != 0 && undoList_.size() == undoLimit_) {
    undoList_.pop_front();
  }
  undoList_.push_back(committed_);
  transformation_ *= change;
  committed_ = transformation_;
  redoList_.clear();
  resetImmediateFrame();
  setModified(true);
  return true;
}

void abcBody::undo() { step(undoList_, redoList_); }

void abcBody::redo() { step(redoList_, undoList_); }

void abcBody::step(std::deque<bsMatrix>& from, std::deque<bsMatrix>& to) {
  if (from.empty()) {
    return;
  }
  to.push_back(committed_);
  transformation_ = from.back();
  committed_ = transformation_;
  from.pop_back();
  setModified(true);
}

void abcBody::setUndoLimit(unsigned int limit) {
  undoLimit_ = limit;
  while (limit != 0 && undoList_.size() > limit) {
    undoList_.pop_front();
  }
}
