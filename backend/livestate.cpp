// Copies the state that live lines depend on.
#include "livestate.h"

#include "interpreter.h"

namespace korvex2 {

namespace {

std::vector<LiveBody> liveBodies(const std::vector<Body>& bodies) {
  std::vector<LiveBody> result;
  result.reserve(bodies.size());
  for (const Body& body : bodies) {
    result.push_back({body.key, body.transform.inverse(), body.calibrated});
  }
  return result;
}

}  // namespace

LiveState liveStateOf(const Interpreter& interpreter) {
  std::set<QByteArray> kinds;
  for (const char* kind : {"6d", "6dw", "6dw2"}) {
    if (interpreter.isOutputActive(kind)) {
      kinds.insert(kind);
    }
  }
  return liveStateOf(interpreter, kinds);
}

LiveState liveStateOf(const Interpreter& interpreter, const std::set<QByteArray>& kinds) {
  const BodyDatabase& database = interpreter.database();
  const BackendSettings& settings = database.settings();
  LiveState state;
  state.measuring = interpreter.isMeasuring();
  state.output6d = kinds.count("6d") != 0;
  state.output6dw = kinds.count("6dw") != 0;
  state.output6dw2 = kinds.count("6dw2") != 0;
  state.oldDeviceFormat = settings.deviceOutput6dw;
  state.withHead = settings.multiuserWithHeadAvailable && settings.multiuserWithHead;
  state.standard = liveBodies(database.bodies("standard"));
  state.devices = liveBodies(database.bodies("wandgrip"));
  return state;
}

}  // namespace korvex2
