// See trackingstream.h.
#include "trackingstream.h"

#include <locale.h>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace korvex2 {

namespace {

static_assert(std::numeric_limits<float>::is_iec559, "reals beyond the range of float must become infinite");

constexpr std::size_t rotationValues = 9;

/// The "C" locale, whatever the program's is. Made once, kept for the life of the process.
locale_t classicLocale() {
  static const locale_t classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return classic;
}

/// Reads an integer at `at` and moves on behind it. What an int cannot hold becomes its nearest limit.
bool readInteger(const char*& at, int& value) {
  char* end = nullptr;
  const long read = strtol_l(at, &end, 0, classicLocale());
  if (end == at) {
    return false;
  }
  if (read > std::numeric_limits<int>::max()) {
    value = std::numeric_limits<int>::max();
  } else if (read < std::numeric_limits<int>::min()) {
    value = std::numeric_limits<int>::min();
  } else {
    value = static_cast<int>(read);
  }
  at = end;
  return true;
}

bool readReal(const char*& at, float& value) {
  char* end = nullptr;
  const double read = strtod_l(at, &end, classicLocale());
  if (end == at) {
    return false;
  }
  value = static_cast<float>(read);
  at = end;
  return true;
}

/// Reads the next "[...]" of the text: one integer for each 'i' of the format, one real for each 'f'. An empty format
/// skips the block. No notation of a number has a "]" in it, so none is read across the block's end.
/// @return behind the "]", or null when there is no block, a number is missing or the format has another letter
const char* readBlock(const char* text, const char* format, int* integers, float* reals) {
  const char* const open = std::strchr(text, '[');
  const char* const close = open != nullptr ? std::strchr(open + 1, ']') : nullptr;
  if (close == nullptr) {
    return nullptr;
  }
  const char* at = open + 1;
  for (; *format != '\0'; ++format) {
    bool read = false;
    if (*format == 'i') {
      read = readInteger(at, *integers++);
    } else if (*format == 'f') {
      read = readReal(at, *reals++);
    }
    if (!read) {
      return nullptr;
    }
  }
  return close + 1;
}

/// The numbers of one record, in the order of the line.
struct Record {
  std::array<int, 3> integers{};  // id, then buttons and one more of devices
  float quality = 0.0F;
  std::array<float, 3> position{};
  std::array<float, rotationValues> rotation{};
};

/// Reads the three blocks that every record begins with; null when one is malformed.
const char* readRecord(const char* text, const char* headFormat, Record& record) {
  const char* at = readBlock(text, headFormat, record.integers.data(), &record.quality);
  if (at != nullptr) {
    at = readBlock(at, "fff", nullptr, record.position.data());
  }
  if (at != nullptr) {
    at = readBlock(at, "fffffffff", nullptr, record.rotation.data());
  }
  return at;
}

void store(const Record& record, TrackedPose& pose) {
  pose.id = record.integers[0];
  pose.quality = record.quality;
  pose.position = bsVector(record.position.data());
  pose.rotation.setIdentity();
  for (std::size_t i = 0; i < rotationValues; ++i) {  // column by column
    pose.rotation.data(static_cast<int>(i % 3), static_cast<int>(i / 3)) = static_cast<double>(record.rotation[i]);
  }
}

bool isLost(const Record& record) { return record.quality == -1.0F; }

}  // namespace

bool TrackedPose::seenAs(int index) const {
  if (quality != 1.0F || id != index) {
    return false;
  }
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      if (!std::isfinite(rotation.data(row, column))) {
        return false;
      }
    }
  }
  return std::isfinite(position.x) && std::isfinite(position.y) && std::isfinite(position.z);
}

void TrackingStream::setChosenBody(const QByteArray& type, int index) {
  const std::lock_guard<std::mutex> guard(lock_);
  chosenType_ = type == "standard" ? BodyType::Standard : type == "wandgrip" ? BodyType::Device : BodyType::Other;
  chosenIndex_ = index;
  state_.tracked = Tracked::Unknown;
}

void TrackingStream::setWithHead(bool on) {
  const std::lock_guard<std::mutex> guard(lock_);
  withHead_ = on;
}

void TrackingStream::resetQualities() {
  const std::lock_guard<std::mutex> guard(lock_);
  state_.body.quality = -1.0F;
  state_.device.quality = -1.0F;
}

int TrackingStream::take(const char* tag, const char* line, Tracked* marked) noexcept {
  parse(tag, line, marked);
  return 0;
}

int TrackingStream::parse(const char* tag, const char* line, Tracked* marked) noexcept {
  if (marked != nullptr) {
    *marked = Tracked::Unknown;
  }
  if (tag == nullptr || line == nullptr) {
    return 0;
  }
  const bool bodies = std::strcmp(tag, "6d") == 0;
  const bool oldDevices = std::strcmp(tag, "6dw") == 0;
  const bool newDevices = std::strcmp(tag, "6dw2") == 0;
  if (!bodies && !oldDevices && !newDevices) {
    return 0;
  }
  const std::unique_lock<std::mutex> guard(lock_, std::try_to_lock);
  if (!guard.owns_lock()) {
    droppedBusy_.fetch_add(1, std::memory_order_relaxed);
    return 0;
  }
  if (chosenType_ != (bodies ? BodyType::Standard : BodyType::Device)) {
    return 0;
  }
  const std::size_t length = strnlen(line, longestLine + 1);
  if (length > longestLine) {  // dropped whole: a cut line could end within a number and be read as another pose
    droppedTooLong_.fetch_add(1, std::memory_order_relaxed);
    return 0;
  }
  lineMarking_ = Tracked::Unknown;
  const int result = bodies ? parseBodies(line, length) : parseDevices(line, length, newDevices);
  if (marked != nullptr) {
    *marked = lineMarking_;
  }
  return result;
}

int TrackingStream::parseBodies(const char* line, std::size_t length) {
  constexpr std::size_t skipped = 3;  // "6d "
  if (length < skipped) {
    return -1;
  }
  const char* at = line + skipped;
  int records = 0;
  if (!readInteger(at, records)) {
    return -1;
  }
  bool matched = false;
  for (int place = 0; place < records; ++place) {
    Record record;
    at = readRecord(at, "if", record);
    if (at == nullptr) {
      return -1;
    }
    // In multi-user mode "with head" every body's id comes one later.
    const long long index = static_cast<long long>(record.integers[0]) - (withHead_ ? 1 : 0);
    if (index != chosenIndex_) {
      continue;
    }
    matched = true;
    if (isLost(record)) {
      state_.body.rotation.setIdentity();  // nothing else changes and nothing is marked, kept on purpose
    } else {
      store(record, state_.body);
      mark(Tracked::Yes);
    }
  }
  if (!matched) {
    mark(Tracked::No);
  }
  return 0;
}

int TrackingStream::parseDevices(const char* line, std::size_t length, bool newFormat) {
  const std::size_t skipped = newFormat ? 5 : 4;  // "6dw2 " or "6dw "
  if (length < skipped) {
    return -1;
  }
  const char* at = line + skipped;
  int records = 0;
  if (!readInteger(at, records) || (newFormat && !readInteger(at, records))) {
    return -1;
  }
  for (int place = 0; place < records; ++place) {
    Record record;
    at = readRecord(at, newFormat ? "ifii" : "ifi", record);
    if (at != nullptr && newFormat) {
      at = readBlock(at, "", nullptr, nullptr);
    }
    if (at == nullptr) {
      return -1;
    }
    // New lines find a device by its place, but store its own id, kept on purpose.
    if ((newFormat ? place : record.integers[0]) != chosenIndex_) {
      continue;
    }
    if (isLost(record)) {
      mark(Tracked::No);
    } else {
      store(record, state_.device);
      state_.device.buttons = record.integers[1];
      mark(Tracked::Yes);
    }
  }
  return 0;
}

void TrackingStream::mark(Tracked tracked) {
  state_.tracked = tracked;
  ++state_.markings;
  lineMarking_ = tracked;
}

}  // namespace korvex2
