// The demonstration's part with live tracking: follows a moving body, aligns bodies with the room, edits emissions.
#ifndef KORVEX2_HOST_DEMO_LIVECHECKS_H
#define KORVEX2_HOST_DEMO_LIVECHECKS_H

#include <QString>

#include <array>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "demo/plainframe.h"
#include "requester.h"

namespace korvex2 {

class DemoOperator;
class HostChannel;

/// A tracked body in the room: room = rotation * body + position.
struct RoomPose {
  std::array<Point, 3> columns{};  // of the rotation
  Point position{};

  Point turned(const Point& point) const;
  Point inRoom(const Point& point) const;
  /// Angle between these axes and the room's, degrees.
  double angleToRoom() const;
};

/// Listens to the live lines of standard bodies beside the module, and reads them by itself.
class PoseListener : public Requester {
 public:
  explicit PoseListener(HostChannel& channel);
  ~PoseListener();

  int set_ascii_data(const char* tag, const char* line) override;
  void set_mea_started() override {}
  void set_mea_stopped() override {}

  /// Pose of the body with this number in the last line; nothing while it is not tracked.
  std::optional<RoomPose> pose(int number) const;
  /// Forgets what came so far.
  void forget();

 private:
  HostChannel& channel_;
  mutable std::mutex lock_;
  std::string line_;  // guarded by lock_
};

/// What was compared, and how far it was off.
struct DemoCheck {
  QString what;
  double off = 0.0;
  double allowed = 0.0;
  QString unit;
  bool good() const { return off <= allowed; }
};

/// Follows the cup for three seconds: in each picture its markers must be where the live lines say.
/// @param markers  the cup's markers in the backend's present coordinates
std::vector<DemoCheck> followMovingBody(DemoOperator& hands, PoseListener& listener, const QString& entry, int number,
                                        const std::vector<Point>& markers);

/// Lays the axes of a body at rest parallel to the room, then its origin into the centre of gravity, and looks at the
/// next live poses.
std::vector<DemoCheck> alignWithRoom(DemoOperator& hands, PoseListener& listener, const QString& entry, int number,
                                     const std::vector<Point>& markers);

/// Types an emission direction and an opening angle, applies, and asks the backend for them.
std::vector<DemoCheck> editEmissions(DemoOperator& hands, HostChannel& channel, const QString& entry, int number);

}  // namespace korvex2

#endif
