// See backendchannel.h.
#include "backendchannel.h"

#include <array>
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "abcmarkerdata.h"
#include "bsFrame.h"
#include "bsMatrix.h"
#include "bsVector.h"

namespace korvex2 {

namespace {

constexpr const char* moduleName = "BodyAdjustmentModule";

/// Buffer for one answer of the backend. The host writes up to 200 characters; the rest, zeros, ends an answer that
/// comes without a terminator.
class Answer {
 public:
  char* buffer() { return buffer_.data(); }
  const char* text() {
    buffer_.back() = '\0';
    return buffer_.data();
  }
  bool is(const char* expected) { return std::strcmp(text(), expected) == 0; }

 private:
  std::array<char, 256> buffer_{};
};

/// Whether the numbers make sense in a command: written out with "%.3f" a huge double alone is longer than the buffers
/// that texts are made in.
bool areSendable(std::initializer_list<double> values) {
  constexpr double largest = 1e9;
  for (const double value : values) {
    if (!(std::fabs(value) <= largest)) {  // NaN too
      return false;
    }
  }
  return true;
}

/// The same for the rotation and translation of a matrix.
bool isSendable(const bsMatrix& m) {
  return areSendable(
      {m(0, 0), m(1, 0), m(2, 0), m(0, 1), m(1, 1), m(2, 1), m(0, 2), m(1, 2), m(2, 2), m(0, 3), m(1, 3), m(2, 3)});
}

}  // namespace

bool BackendChannel::passesGate(int major, int minor) const {
  if (versions_ == nullptr) {
    return false;
  }
  if (versions_->backend_major != major) {
    return versions_->backend_major > major;
  }
  if (versions_->backend_minor != minor) {
    return versions_->backend_minor > minor;
  }
  return versions_->backend_revision >= -1;  // -1: unknown
}

void BackendChannel::report(const char* text) {
  if (io_ != nullptr) {
    io_->send_message("standard", "Korvex2", 1, text);
  }
}

void BackendChannel::reportMeasurementFailure() { report("Error: Unable to check mea status"); }
void BackendChannel::reportWrongBodyId() { report("Error: Wrong body ID. Cannot discard changes"); }
void BackendChannel::reportTypeCountFailure() { report("Error: Unable to get number of types for body"); }
void BackendChannel::reportBodyCountFailure() { report("Error: Unable to check number of bodies for body"); }
void BackendChannel::reportMarkerInfoFailure() { report("Error: Unable to check body marker info"); }

void BackendChannel::sendReopen(const QByteArray& module) {
  if (io_ != nullptr) {
    io_->send_message(module.constData(), moduleName, 1, "reopen");
  }
}

void BackendChannel::registerReceiver(MessageReceiver* receiver) {
  if (io_ != nullptr) {
    io_->register_message_receiver(moduleName, receiver);
  }
}

void BackendChannel::unregisterReceiver(MessageReceiver* receiver) {
  if (io_ != nullptr) {
    io_->unregister_message_receiver(moduleName, receiver);
  }
}

bool BackendChannel::isConfigLocked() {
  if (io_ == nullptr || !passesGate(1, 9)) {
    return false;
  }
  Answer answer;
  return io_->get_string(answer.buffer(), "config is_changeable") == 0 && answer.is("no");
}

bool BackendChannel::isTrackingAvailable() {
  // An old backend always tracks, and one that cannot be asked gets the benefit of the doubt.
  if (io_ == nullptr || !passesGate(0, 17)) {
    return true;
  }
  Answer answer;
  return io_->get_string(answer.buffer(), "tracking available") != 0 || !answer.is("no");
}

bool BackendChannel::hasOldDeviceFormat() {
  if (io_ == nullptr || !passesGate(0, 6)) {
    return false;
  }
  Answer answer;
  // Only the answer counts, kept on purpose: the call's own result says nothing here.
  io_->send_raw_command(answer.buffer(), "korvex2 get wandgrip output_6dw");
  return answer.is("korvex2 set wandgrip output_6dw yes");
}

BackendChannel::Measurement BackendChannel::measurement() {
  Answer answer;
  if (io_ == nullptr || io_->get_string(answer.buffer(), "status active") != 0) {
    return Measurement::Unknown;
  }
  return answer.is("mea") ? Measurement::Running : Measurement::Stopped;
}

void BackendChannel::startTracking() {
  if (io_ != nullptr) {
    Answer answer;
    io_->send_raw_command(answer.buffer(), "korvex2 tracking start");
  }
}

void BackendChannel::stopTracking() {
  if (io_ != nullptr) {
    Answer answer;
    io_->send_raw_command(answer.buffer(), "korvex2 tracking stop");
  }
}

void BackendChannel::activateOutput(const char* kind) {
  if (io_ != nullptr) {
    io_->set_value("output active %s %s yes", "chmon", kind);
  }
}

void BackendChannel::subscribe(const char* kind, Requester* requester) {
  if (io_ != nullptr) {
    io_->register_requester(kind, requester);
  }
}

void BackendChannel::unsubscribe(const char* kind, Requester* requester) {
  if (io_ != nullptr) {
    io_->unregister_requester(kind, requester);
  }
}

bool BackendChannel::numberOfBodies(const char* type, int& count) {
  return io_ != nullptr && io_->get_int(&count, "body number_of_bodies %s", type) == 0;
}

bool BackendChannel::numberOfTypes(int& count) {
  if (io_ != nullptr && io_->get_int(&count, "body number_of_types") == 0) {
    return true;
  }
  reportTypeCountFailure();
  return false;
}

bool BackendChannel::typeName(int type, QByteArray& name) {
  Answer answer;
  if (io_ != nullptr && io_->get_string(answer.buffer(), "body type t%2.2d", type) == 0) {
    name = answer.text();
    return true;
  }
  report("Error: Unable to check body type");
  return false;
}

bool BackendChannel::numberOfListedBodies(const QByteArray& type, int& count) {
  if (numberOfBodies(type.constData(), count)) {
    return true;
  }
  reportBodyCountFailure();
  return false;
}

bool BackendChannel::typeDescription(const QByteArray& type, QByteArray& description) {
  Answer answer;
  if (io_ != nullptr && io_->get_string(answer.buffer(), "body type_desc %s", type.constData()) == 0) {
    description = answer.text();
    return true;
  }
  report("Error: Unable to check body type description");
  return false;
}

bool BackendChannel::targetType(const QByteArray& type, int number, QByteArray& targetType) {
  Answer answer;
  if (io_ != nullptr && io_->get_string(answer.buffer(), "body target_type %s b%02d", type.constData(), number) == 0) {
    targetType = answer.text();
    return true;
  }
  report("Error: Unable to check body target_type");
  return false;
}

bool BackendChannel::bodyDescription(const QByteArray& type, int number, QByteArray& description) {
  Answer answer;
  if (io_ != nullptr && io_->get_string(answer.buffer(), "body desc %s b%2.2d", type.constData(), number) == 0) {
    description = answer.text();
    return true;
  }
  report("Error: Unable to check body description");
  return false;
}

bool BackendChannel::isBodyCalibrated(const QByteArray& type, int number) {
  Answer answer;
  if (io_ != nullptr && io_->get_string(answer.buffer(), "body calibrated %s b%2.2d", type.constData(), number) == 0) {
    return answer.is("yes");
  }
  report("Error: Unable to check body cali info");
  return false;
}

bool BackendChannel::numberOfMarkers(const QByteArray& type, int number, int& count) {
  if (io_ != nullptr && io_->get_int(&count, "body number_of_marker %s b%2.2d", type.constData(), number) == 0) {
    return true;
  }
  reportMarkerInfoFailure();
  return false;
}

bool BackendChannel::markerPosition(const QByteArray& type, int number, int marker, bsVector& position) {
  std::array<double, 3> values{};
  if (io_ != nullptr &&
      io_->get_reals(values.data(), 3, "body marker %s b%2.2d m%2.2d", type.constData(), number, marker) == 0) {
    position = bsVector(values[0], values[1], values[2]);
    return true;
  }
  reportMarkerInfoFailure();
  return false;
}

bool BackendChannel::markerEmission(const QByteArray& type, int number, int marker, Emission& emission) {
  std::array<double, 4> values{};
  if (io_ != nullptr && io_->get_reals(values.data(), 4, "body marker_emission %s b%2.2d m%2.2d", type.constData(),
                                       number, marker) == 0) {
    emission = Emission{values[0], values[1], values[2], values[3]};
    return true;
  }
  report("Error: Unable to check body marker emission info");
  return false;
}

bool BackendChannel::setNumberOfMarkers(const QByteArray& type, int number, int count) {
  if (io_ != nullptr && io_->set_value("body number_of_marker %s b%2.2d %d", type.constData(), number, count) == 0) {
    return true;
  }
  report("Error: Unable to set body target_type");  // the text of another setting, kept on purpose
  return false;
}

bool BackendChannel::setMarkerPosition(const QByteArray& type, int number, int marker, const bsVector& position) {
  if (io_ != nullptr && areSendable({position.x, position.y, position.z}) &&
      io_->set_value("body marker %s b%2.2d m%2.2d %.3f %.3f %.3f", type.constData(), number, marker, position.x,
                     position.y, position.z) == 0) {
    return true;
  }
  report("Error: Unable to set body marker values");
  return false;
}

bool BackendChannel::setMarkerEmission(const QByteArray& type, int number, int marker, const Emission& emission) {
  // NaN is an emission value like others and goes back to the backend that gave it; the rest must have a sane length.
  const auto unlessNan = [](double value) { return std::isnan(value) ? 0.0 : value; };
  if (io_ != nullptr &&
      areSendable({unlessNan(emission.x), unlessNan(emission.y), unlessNan(emission.z), unlessNan(emission.angle)}) &&
      io_->set_value("body marker_emission %s b%2.2d m%2.2d %.3f %.3f %.3f %.3f", type.constData(), number, marker,
                     emission.x, emission.y, emission.z, emission.angle) == 0) {
    return true;
  }
  report("Error: Unable to set body marker emission");
  return false;
}

BackendChannel::CommandResult BackendChannel::sendBodyTransform(const QByteArray& type, int number,
                                                                const bsMatrix& transform) {
  const bsFrame frame(transform, nullptr);
  const bsVector t = frame.position;
  const bsMatrix r = frame.orientation.toMatrix();
  const bool sendable = isSendable(transform) && isSendable(r) && areSendable({t.x, t.y, t.z});
  CommandResult result = CommandResult::Failed;
  Answer answer;
  if (io_ != nullptr && sendable &&
      io_->send_raw_command(answer.buffer(),
                            "korvex2 body transform %s b%02d %.3f %.3f %.3f %.8f %.8f %.8f %.8f %.8f %.8f %.8f %.8f "
                            "%.8f",
                            type.constData(), number, t.x, t.y, t.z, r(0, 0), r(1, 0), r(2, 0), r(0, 1), r(1, 1),
                            r(2, 1), r(0, 2), r(1, 2), r(2, 2)) == 0) {
    result = answer.is("korvex2 ok") ? CommandResult::Done : CommandResult::Refused;
  }
  if (result != CommandResult::Done) {
    report("Error: Unable to set body transformation");
  }
  return result;
}

bool BackendChannel::deleteMarker(const QByteArray& type, int number, int marker) {
  constexpr const char* failure = "Error: Unable to delete marker of body";
  Answer answer;
  const bool delivered =
      io_ != nullptr && io_->send_raw_command(answer.buffer(), "korvex2 body delete_marker %s b%02d m%02d",
                                              type.constData(), number, marker) == 0;
  // Two tests that do not know of each other, kept on purpose: a failed call is usually reported twice.
  if (!delivered) {
    report(failure);
  }
  const bool confirmed = answer.is("korvex2 ok");
  if (!confirmed) {
    report(failure);
  }
  return delivered && confirmed;
}

bool BackendChannel::isMultiUserAvailable() {
  Answer answer;
  return io_ != nullptr && io_->get_string(answer.buffer(), "wandgrip multiuser_available") == 0 && answer.is("yes");
}

bool BackendChannel::isMultiUserOn() {
  Answer answer;
  return io_ != nullptr && io_->get_string(answer.buffer(), "wandgrip multiuser") == 0 && answer.is("yes");
}

bool BackendChannel::isMultiUserWithHeadAvailable() {
  Answer answer;
  return io_ != nullptr && io_->get_string(answer.buffer(), "wandgrip multiuser_with_head_available") == 0 &&
         answer.is("yes");
}

bool BackendChannel::isMultiUserWithHeadOn() {
  Answer answer;
  return io_ != nullptr && io_->get_string(answer.buffer(), "wandgrip multiuser_with_head") == 0 && answer.is("yes");
}

bool BackendChannel::setMultiUser(bool on) {
  if (io_ != nullptr && io_->set_value("wandgrip multiuser %s", on ? "yes" : "no") == 0) {
    return true;
  }
  report(on ? "Error: Unable to activate multi user Wandgrip" : "Error: Unable to deactivate multi user Wandgrip");
  return false;
}

bool BackendChannel::setMultiUserWithHead(bool on) {
  if (io_ != nullptr && io_->set_value("wandgrip multiuser_with_head %s", on ? "yes" : "no") == 0) {
    return true;
  }
  report(on ? "Error: Unable to activate multi user Wandgrip with head"
            : "Error: Unable to deactivate multi user Wandgrip with head");
  return false;
}

int BackendChannel::numberOfDevices() {
  int count = 0;
  if (io_ != nullptr && io_->get_int(&count, "wandgrip number_of_devices") == 0) {
    return count;
  }
  report("Error: Unable to get number of wandgrips");
  return 0;
}

}  // namespace korvex2
