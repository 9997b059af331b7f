// The backend's live output: one frame of tracking lines as text.
#ifndef KORVEX2_BACKEND_LIVELINES_H
#define KORVEX2_BACKEND_LIVELINES_H

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

#include "livestate.h"
#include "motion.h"

namespace korvex2 {

/// Writes frames of ASCII lines, without line ends:
///
///   fr N                   number of the frame
///   ts T                   its time in seconds
///   6d n {record}...       standard bodies: [id quality] [x y z] [r11 r21 r31 r12 ... r33]
///   6dw n {record}...      hand-held devices, old format: [id quality buttons] [x y z] [...]
///   6dw2 a n {record}...   hand-held devices, new format, a of them in all: [id quality buttons 0] [x y z] [...]
///                          [buttons 0]
///
/// Blanks separate everything. Ids count from 0 (body number minus one); those of standard bodies are one higher in
/// multi-user mode with head, where id 0 is the head's. Positions are in millimetres, rotations column by column.
/// Quality is 1 for a tracked body and -1 for one that is not, whose pose is all zero and identity.
///
/// The reported pose takes a body's present coordinates to the room: pose = P(t) * inverse(transform), with P(t) the
/// pose of the measured coordinates. A transform command changes markers to transform * p, so pose * marker stays
/// where the marker is in the room.
///
/// Untracked are bodies that are not calibrated, those a recording lost sight of, and everybody once in a while:
/// see sight(). Devices in the new format keep their places in the line, because clients find them by it.
///
/// An object may be used by several threads at once: nothing in it changes.
class LiveLines {
 public:
  /// No line is longer: clients read this much. Records that find no room are left out, from the highest id on.
  static constexpr int longestLine = 9999;

  enum class Sight { Seen, Lost, Missing };

  explicit LiveLines(Motion motion = Motion());

  /// Lines of frame `number` at a time in seconds; none while nothing is measured. Kinds that are switched off are
  /// left out.
  std::vector<QByteArray> frame(const LiveState& state, std::int64_t number, double seconds) const;

  /// Whether the cameras see the body with this id in a frame. Real ones lose a body now and then, and a client must
  /// get along with both ways of telling it: for 10 frames of 900 its record has the quality -1, and for 5 others there
  /// is no record. Bodies are lost at different times, and none in its first 600 frames.
  static Sight sight(int id, std::int64_t frame);

 private:
  QByteArray standardLine(const LiveState& state, std::int64_t number, double seconds) const;
  QByteArray deviceLine(const LiveState& state, std::int64_t number, double seconds) const;
  std::optional<RigidTransform> reportedPose(const LiveBody& body, bool inSight, double seconds) const;

  Motion motion_;
};

}  // namespace korvex2

#endif
