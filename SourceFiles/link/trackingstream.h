// Live tracking lines: parses them on the host's delivery thread and keeps the last pose of the chosen body.
#ifndef KORVEX2_TRACKINGSTREAM_H
#define KORVEX2_TRACKINGSTREAM_H

#include <QByteArray>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "bsMatrix.h"
#include "bsVector.h"

namespace korvex2 {

/// Last accepted record of a body: its coordinate system as seen in the room.
struct TrackedPose {
  int id = -1;                                        ///< the record's own id, counting from 0
  float quality = -1.0F;                              ///< 1 = tracked, -1 = not tracked or nothing seen yet
  bsVector position;                                  ///< origin of the body in room coordinates, millimetres
  bsMatrix rotation = bsMatrix::getIdentityMatrix();  ///< turns body axes into room axes; translation is zero
  int buttons = 0;                                    ///< hand-held devices only

  /// Whether the pose is one to show for the body with this list index: quality exactly 1 (0.99 is kept in the store,
  /// never shown), this body's id, and no number that is not finite.
  bool seenAs(int index) const;
};

/// Reads lines of the three kinds
///   6d   <records>          {[id quality]              [x y z] [r11 r21 r31 r12 ... r33]}...
///   6dw  <records>          {[id quality buttons]      [x y z] [r11 r21 r31 r12 ... r33]}...
///   6dw2 <number> <records> {[id quality buttons more] [x y z] [r11 r21 r31 r12 ... r33] [...]}...
/// A standard body is found by its id in "6d" lines (in multi-user mode "with head" by its id minus one), a hand-held
/// device by its id in "6dw" lines and by its place in "6dw2" lines.
///
/// Integers are read with base 0 (010 is eight, 0x10 sixteen) and held at the limits of int; reals as strtod reads
/// them, with the decimal point in every locale, and kept in single precision.
///
/// take() runs on the host's delivery thread and never waits: when the lock is held, the line is dropped. Everything
/// else runs on the GUI thread and holds the lock for a few copies only.
class TrackingStream {
 public:
  enum class Tracked { Unknown, Yes, No };

  /// One consistent copy of what the lines told so far.
  struct State {
    TrackedPose body;                    ///< from "6d" lines
    TrackedPose device;                  ///< from "6dw" and "6dw2" lines
    Tracked tracked = Tracked::Unknown;  ///< last marking of the chosen body; Unknown since it was chosen
    std::uint64_t markings = 0;          ///< how often a line marked the chosen body, so that no marking is overlooked
  };

  /// A line of this many characters is still read.
  static constexpr std::size_t longestLine = 9999;

  // --- GUI thread ------------------------------------------------------------------------------------------------

  /// @param type   type name of the chosen body; only "standard" and "wandgrip" exactly have lines
  /// @param index  list index of the body, its number minus one
  void setChosenBody(const QByteArray& type, int index);
  void setWithHead(bool on);
  /// Makes both stores "not seen"; the rest of them stays.
  void resetQualities();
  /// Calls look(state) with the lock held, so what it does costs lines. It must not call this object.
  template <class Look>
  auto look(Look&& look) const {
    const std::lock_guard<std::mutex> guard(lock_);
    return look(state_);
  }
  /// What the lines told so far, copied under the lock.
  State state() const {
    return look([](const State& state) { return state; });
  }

  // --- host's delivery thread ------------------------------------------------------------------------------------

  /// Takes a line, or leaves it alone when it is none of the chosen body's business.
  /// @param marked  when given: what this line marked the chosen body as, Unknown when it said nothing about it. The
  ///                lock is free again when take() returns, so the caller can pass the marking on.
  /// @return 0 always, as the host expects
  int take(const char* tag, const char* line, Tracked* marked = nullptr) noexcept;

  /// The same, but returns -1 for a malformed line. The records before the malformed place keep their effect.
  int parse(const char* tag, const char* line, Tracked* marked = nullptr) noexcept;

  // --- any thread ------------------------------------------------------------------------------------------------

  /// Lines dropped whole because they are longer than longestLine.
  std::uint64_t droppedTooLong() const { return droppedTooLong_; }
  /// Lines dropped because the lock was held.
  std::uint64_t droppedBusy() const { return droppedBusy_; }

 private:
  enum class BodyType { Other, Standard, Device };

  int parseBodies(const char* line, std::size_t length);
  int parseDevices(const char* line, std::size_t length, bool newFormat);
  void mark(Tracked tracked);

  mutable std::mutex lock_;  // guards everything up to lineMarking_
  BodyType chosenType_ = BodyType::Other;
  int chosenIndex_ = -1;
  bool withHead_ = false;
  State state_;
  Tracked lineMarking_ = Tracked::Unknown;
  std::atomic<std::uint64_t> droppedTooLong_{0};
  std::atomic<std::uint64_t> droppedBusy_{0};
};

}  // namespace korvex2

#endif
