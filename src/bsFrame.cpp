// See bsFrame.h.
#include "bsFrame.h"

bsMatrix bsFrame::toMatrix() const {
  bsMatrix m = orientation.toMatrix();
  m.setColumn(3, position, 1.0);
  return m;
}

// Through a matrix like the copy constructor, on purpose; the matrix is complete before anything is written, so that a
// frame may be assigned to itself.
bsFrame& bsFrame::operator=(const bsFrame& f) {  // NOLINT(bugprone-unhandled-self-assignment)
  const bsMatrix m = f.toMatrix();
  reference_ = f.reference_;
  orientation.fromMatrix(m);
  position = m.getColumn(3);
  return *this;
}

bool bsFrame::isCreatingLoop(const bsFrame* f) const {
  for (const bsFrame* g = f; g != nullptr; g = g->reference_) {
    if (g->reference_ == this) {
      return true;
    }
  }
  return false;
}
