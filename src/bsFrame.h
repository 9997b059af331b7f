// Rigid frame: a position and an orientation, possibly relative to another frame.
#ifndef KORVEX2_BSFRAME_H
#define KORVEX2_BSFRAME_H

#include "bsMatrix.h"
#include "bsQuaternion.h"
#include "bsVector.h"

/// Where a coordinate system is and how it is turned, in the coordinates of its reference frame, or of the world where
/// there is none. Point p of the frame is orientation(p) + position there. Millimetres.
///
/// The reference frame is not owned: whoever owns the frames keeps it alive as long as it is pointed at. Setting it
/// does not look for loops; ask isCreatingLoop() before.
///
/// A copy passes through a matrix, on purpose: its position is exact, but its orientation is derived anew and may
/// differ by rounding or carry the opposite sign. An orientation that is not of length 1 changes by it.
class bsFrame {
 public:
  bsVector position;
  bsQuaternion orientation;

  bsFrame() = default;
  /// The fields as given.
  bsFrame(const bsVector& p, const bsQuaternion& q, bsFrame* ref) : position(p), orientation(q), reference_(ref) {}
  /// The rotation and the translation of m.
  bsFrame(const bsMatrix& m, bsFrame* ref) : position(m.getColumn(3)), reference_(ref) { orientation.fromMatrix(m); }
  bsFrame(const bsFrame& f) : bsFrame(f.toMatrix(), f.reference_) {}
  bsFrame& operator=(const bsFrame& f);
  ~bsFrame() = default;

  /// Orientation and position as one matrix, from coordinates of this frame to those of its reference frame.
  bsMatrix toMatrix() const;

  void setReferenceFrame(bsFrame* f) { reference_ = f; }
  bsFrame* getReferenceFrame() const { return reference_; }

  /// Whether f reaches this frame along its reference frames, so that making f this frame's reference would close a
  /// loop. f itself being this frame is not noticed unless this frame's own chain leads back to it. Never returns when
  /// f's chain runs in a loop that this frame is not part of.
  bool isCreatingLoop(const bsFrame* f) const;

 private:
  bsFrame* reference_ = nullptr;
};

#endif
