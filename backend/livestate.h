// What the live lines depend on, copied out of the backend at one moment.
#ifndef KORVEX2_BACKEND_LIVESTATE_H
#define KORVEX2_BACKEND_LIVESTATE_H

#include <set>
#include <vector>

#include <QByteArray>

#include "body.h"

namespace korvex2 {

class Interpreter;

/// A body as the live lines need it.
struct LiveBody {
  BodyKey key;
  /// Present body coordinates to measured ones: the inverse of Body::transform.
  RigidTransform toMeasured;
  bool calibrated = false;

  friend bool operator==(const LiveBody& a, const LiveBody& b) {
    return a.key == b.key && a.toMeasured == b.toMeasured && a.calibrated == b.calibrated;
  }
};

/// One consistent state of the backend. It refers to nothing, so it can be handed to another thread.
struct LiveState {
  bool measuring = false;
  bool output6d = false;  ///< kinds that somebody wants
  bool output6dw = false;
  bool output6dw2 = false;
  bool oldDeviceFormat = false;  ///< devices report as "6dw", else as "6dw2"
  bool withHead = false;         ///< multi-user mode with head: ids of standard bodies are one higher
  std::vector<LiveBody> standard;
  std::vector<LiveBody> devices;
};

/// The state as it is now, with the kinds that the interpreter's only client has switched on for "chmon". To be called
/// on the interpreter's thread.
LiveState liveStateOf(const Interpreter& interpreter);
/// The same with these kinds.
LiveState liveStateOf(const Interpreter& interpreter, const std::set<QByteArray>& kinds);

}  // namespace korvex2

#endif
