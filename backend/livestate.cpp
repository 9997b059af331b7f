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
  const BodyDatabase& database = interpreter.database();
  const BackendSettings& settings = database.settings();
  LiveState state;
  state.measuring = interpreter.isMeasuring();
  state.output6d = interpreter.isOutputActive("6d");
  state.output6dw = interpreter.isOutputActive("6dw");
  state.output6dw2 = interpreter.isOutputActive("6dw2");
  state.oldDeviceFormat = settings.deviceOutput6dw;
  state.withHead = settings.multiuserWithHeadAvailable && settings.multiuserWithHead;
  state.standard = liveBodies(database.bodies("standard"));
  state.devices = liveBodies(database.bodies("wandgrip"));
  return state;
}

}  // namespace korvex2
