// The module's one way to the backend: every backend text, version gate and error report.
#ifndef KORVEX2_BACKENDCHANNEL_H
#define KORVEX2_BACKENDCHANNEL_H

#include <QByteArray>

#include "backendversions.h"
#include "iomanager.h"

class MessageReceiver;
class Requester;
class bsMatrix;
class bsVector;
struct Emission;

namespace korvex2 {

/// Wraps the host's channel. No other file of the module contains a backend text.
///
/// Body types are sent as they are given ("standard", "wandgrip"). Body, marker and type numbers count from 1.
/// Lengths are millimetres in the body's own coordinate system, opening angles degrees.
///
/// Nothing throws. An operation that fails reports its fixed text to the host (where it has one) and returns its
/// neutral value. Without a channel every call fails quietly, without versions every gate fails.
///
/// Lives on the GUI thread. Owns neither the channel nor the versions; both must outlive it.
class BackendChannel {
 public:
  enum class Measurement { Unknown, Running, Stopped };  ///< Unknown: the backend could not be asked
  enum class CommandResult { Failed, Refused, Done };    ///< Failed: not delivered; Refused: not answered "ok"

  BackendChannel(IOManager* io, const BackendVersions* versions) : io_(io), versions_(versions) {}

  // --- version gates ---------------------------------------------------------------------------------------------

  /// Whether the backend is at least major.minor. At exactly that version the revision must be -1 ("unknown") or not
  /// negative.
  bool passesGate(int major, int minor) const;
  bool canDeleteMarkers() const { return passesGate(1, 17); }
  bool hasTargetTypes() const { return passesGate(1, 12); }
  bool writesEmissions() const { return passesGate(1, 12); }

  // --- reports and messages to the host --------------------------------------------------------------------------

  /// Shows the text in the host's error report.
  void report(const char* text);
  void reportMeasurementFailure();
  void reportWrongBodyId();
  /// Tells a module that asked for the dialog that it may open again.
  void sendReopen(const QByteArray& module);
  void registerReceiver(MessageReceiver* receiver);
  void unregisterReceiver(MessageReceiver* receiver);

  // --- state of the backend --------------------------------------------------------------------------------------

  bool isConfigLocked();
  bool isTrackingAvailable();
  /// Whether hand-held devices report in the old "6dw" lines instead of "6dw2".
  bool hasOldDeviceFormat();
  /// Without a report: a failure matters only where tracking begins, see reportMeasurementFailure().
  Measurement measurement();
  void startTracking();
  void stopTracking();
  /// Switches the output of live lines of this kind ("6dw", "6dw2") on.
  void activateOutput(const char* kind);
  void subscribe(const char* kind, Requester* requester);
  void unsubscribe(const char* kind, Requester* requester);

  // --- body list -------------------------------------------------------------------------------------------------

  /// Number of bodies of a type, without a report. A failed query leaves in `count` what it left there.
  bool numberOfBodies(const char* type, int& count);
  bool numberOfTypes(int& count);
  bool typeName(int type, QByteArray& name);
  /// Number of bodies of a type, a failure is reported.
  bool numberOfListedBodies(const QByteArray& type, int& count);
  bool typeDescription(const QByteArray& type, QByteArray& description);
  bool targetType(const QByteArray& type, int number, QByteArray& targetType);
  bool bodyDescription(const QByteArray& type, int number, QByteArray& description);
  bool isBodyCalibrated(const QByteArray& type, int number);
  void reportTypeCountFailure();
  void reportBodyCountFailure();

  // --- body geometry ---------------------------------------------------------------------------------------------

  bool numberOfMarkers(const QByteArray& type, int number, int& count);
  bool markerPosition(const QByteArray& type, int number, int marker, bsVector& position);
  bool markerEmission(const QByteArray& type, int number, int marker, Emission& emission);
  bool setNumberOfMarkers(const QByteArray& type, int number, int count);
  bool setMarkerPosition(const QByteArray& type, int number, int marker, const bsVector& position);
  bool setMarkerEmission(const QByteArray& type, int number, int marker, const Emission& emission);
  void reportMarkerInfoFailure();

  /// Moves a body's coordinate system: its markers become p' = R p + t. R is rebuilt from the quaternion of
  /// `transform`, so what is sent is a rotation even after long editing. A transform with a number that is not finite
  /// or beyond 1e9 is not sent and counts as Failed. Anything but Done is reported, once.
  CommandResult sendBodyTransform(const QByteArray& type, int number, const bsMatrix& transform);
  /// Deletes a marker. A failed call is reported, and so is every answer but "ok": a failed call can report twice.
  bool deleteMarker(const QByteArray& type, int number, int marker);

  // --- multi-user mode of hand-held devices ----------------------------------------------------------------------

  bool isMultiUserAvailable();
  bool isMultiUserOn();
  bool isMultiUserWithHeadAvailable();
  bool isMultiUserWithHeadOn();
  bool setMultiUser(bool on);
  bool setMultiUserWithHead(bool on);
  /// 0 when it cannot be asked (reported).
  int numberOfDevices();

 private:
  IOManager* io_;
  const BackendVersions* versions_;
};

}  // namespace korvex2

#endif
