// The scripted backend makes its answers itself.
#include "scriptedbackend.h"

struct ScriptedBackend::Elsewhere {};

void ScriptedBackend::prepare() {}

FakeChannel::Answer ScriptedBackend::undisturbedAnswer(const std::string& operation, const std::string& text) {
  return scriptedAnswer(operation, text);
}
