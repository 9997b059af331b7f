// Writes tracking lines, with the number conversions of the C++ library that know no locale.
#include "livelines.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <utility>

namespace korvex2 {

namespace {

constexpr int positionDecimals = 4;
constexpr int rotationDecimals = 7;  // as many as a client's single precision holds
constexpr int timeDecimals = 6;
/// Larger numbers, which only a spoilt database leads to, are not reported.
constexpr double largestNumber = 1e12;

template <typename Number>
void appendInteger(QByteArray& text, Number value) {
  char buffer[24];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  text.append(buffer, static_cast<int>(result.ptr - buffer));
}

/// `value` must be within largestNumber.
void appendFixed(QByteArray& text, double value, int decimals) {
  char buffer[32];
  const std::to_chars_result result =
      std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::fixed, decimals);
  const char* begin = buffer;
  if (*begin == '-') {
    const char* digit = begin + 1;
    while (digit != result.ptr && (*digit == '0' || *digit == '.')) {
      ++digit;
    }
    begin += digit == result.ptr ? 1 : 0;  // no "-0.0000"
  }
  text.append(begin, static_cast<int>(result.ptr - begin));
}

template <typename Values>
void appendBlock(QByteArray& text, const Values& values, int decimals) {
  char before = '[';
  for (const double value : values) {
    text += before;
    appendFixed(text, value, decimals);
    before = ' ';
  }
  text += ']';
}

bool isReportable(const RigidTransform& pose) {
  for (const double value : pose.position) {
    if (!(std::fabs(value) <= largestNumber)) {
      return false;
    }
  }
  for (const double value : pose.rotation) {
    if (!(std::fabs(value) <= largestNumber)) {
      return false;
    }
  }
  return true;
}

/// A line that grows by whole records, as long as they find room.
class RecordList {
 public:
  /// @param head  what stands before the number of records
  explicit RecordList(QByteArray head) : head_(std::move(head)) {}

  void append(const QByteArray& record) {
    constexpr int roomForCount = 8;
    full_ = full_ || head_.size() + roomForCount + records_.size() + 1 + record.size() > LiveLines::longestLine;
    if (!full_) {
      records_ += ' ';
      records_ += record;
      ++count_;
    }
  }

  QByteArray line() const {
    QByteArray line = head_;
    appendInteger(line, count_);
    return line + records_;
  }

 private:
  QByteArray head_;
  QByteArray records_;
  int count_ = 0;
  bool full_ = false;  // the first record that finds no room ends the line: places must not move
};

/// Completes a record that has its id: quality, further numbers of that block, position and rotation.
void appendQualityAndPose(QByteArray& record, const std::optional<RigidTransform>& pose, const QByteArray& further) {
  record += pose ? " 1" : " -1";
  record += further + "] ";
  const RigidTransform shown = pose.value_or(RigidTransform());
  appendBlock(record, shown.position, positionDecimals);
  record += ' ';
  appendBlock(record, shown.rotation, rotationDecimals);
}

/// The trigger of a hand-held device: pressed for half a second of every four.
int buttonsAt(int index, double seconds) { return std::fmod(seconds + 1.3 * index, 4.0) < 0.5 ? 1 : 0; }

}  // namespace

LiveLines::LiveLines(Motion motion) : motion_(std::move(motion)) {}

std::vector<QByteArray> LiveLines::frame(const LiveState& state, std::int64_t number, double seconds) const {
  std::vector<QByteArray> lines;
  if (!state.measuring) {
    return lines;
  }
  QByteArray line = "fr ";
  appendInteger(line, number);
  lines.push_back(line);
  line = "ts ";
  appendFixed(line, seconds, timeDecimals);
  lines.push_back(line);
  if (state.output6d) {
    lines.push_back(standardLine(state, number, seconds));
  }
  if (state.oldDeviceFormat ? state.output6dw : state.output6dw2) {
    lines.push_back(deviceLine(state, number, seconds));
  }
  return lines;
}

LiveLines::Sight LiveLines::sight(int id, std::int64_t frame) {
  constexpr std::int64_t period = 900;
  const std::int64_t phase = frame % period;
  const std::int64_t lost = 600 + id * 37 % 150;
  const std::int64_t missing = 760 + id * 37 % 130;
  if (phase >= lost && phase < lost + 10) {
    return Sight::Lost;
  }
  return phase >= missing && phase < missing + 5 ? Sight::Missing : Sight::Seen;
}

/// Pose to report; nothing for a body that is not tracked.
std::optional<RigidTransform> LiveLines::reportedPose(const LiveBody& body, bool inSight, double seconds) const {
  if (!inSight || !body.calibrated) {
    return std::nullopt;
  }
  const std::optional<RigidTransform> measured = motion_.pose(body.key, seconds);
  if (!measured) {
    return std::nullopt;
  }
  const RigidTransform pose = RigidTransform::compose(*measured, body.toMeasured);
  return isReportable(pose) ? std::optional<RigidTransform>(pose) : std::nullopt;
}

QByteArray LiveLines::standardLine(const LiveState& state, std::int64_t number, double seconds) const {
  RecordList list("6d ");
  for (std::size_t i = 0; i < state.standard.size(); ++i) {
    const int index = static_cast<int>(i);
    const Sight seen = sight(index, number);
    if (seen == Sight::Missing) {
      continue;
    }
    const std::optional<RigidTransform> pose = reportedPose(state.standard[i], seen == Sight::Seen, seconds);
    QByteArray record = "[";
    appendInteger(record, index + (state.withHead ? 1 : 0));
    appendQualityAndPose(record, pose, QByteArray());
    list.append(record);
  }
  return list.line();
}

QByteArray LiveLines::deviceLine(const LiveState& state, std::int64_t number, double seconds) const {
  QByteArray head = "6dw ";
  if (!state.oldDeviceFormat) {
    head = "6dw2 ";
    appendInteger(head, state.devices.size());
    head += ' ';
  }
  RecordList list(head);
  for (std::size_t i = 0; i < state.devices.size(); ++i) {
    const int index = static_cast<int>(i);
    const Sight seen = sight(index, number);
    if (seen == Sight::Missing && state.oldDeviceFormat) {
      continue;
    }
    const std::optional<RigidTransform> pose = reportedPose(state.devices[i], seen == Sight::Seen, seconds);
    const QByteArray buttons = QByteArray::number(pose ? buttonsAt(index, seconds) : 0);
    QByteArray record = "[";
    appendInteger(record, index);
    appendQualityAndPose(record, pose, ' ' + buttons + (state.oldDeviceFormat ? "" : " 0"));
    if (!state.oldDeviceFormat) {
      record += " [" + buttons + " 0]";
    }
    list.append(record);
  }
  return list.line();
}

}  // namespace korvex2
