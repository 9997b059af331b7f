// See bodystate.h.
#include "bodystate.h"

#include <QCryptographicHash>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace korvex2 {

namespace {

void append(QByteArray& bytes, std::uint64_t value) {
  for (int shift = 0; shift < 64; shift += 8) {
    bytes.append(static_cast<char>(value >> shift & 0xff));
  }
}

void append(QByteArray& bytes, double value) {
  const double plain = value + 0.0;  // -0 becomes 0
  std::uint64_t pattern = 0;
  static_assert(sizeof(pattern) == sizeof(plain));
  std::memcpy(&pattern, &plain, sizeof(pattern));
  append(bytes, pattern);
}

}  // namespace

QByteArray bodyState(const Body& body) {
  QByteArray bytes;
  bytes.reserve(static_cast<int>(8 + body.markers.size() * 56));
  append(bytes, static_cast<std::uint64_t>(body.markers.size()));
  for (const BodyMarker& marker : body.markers) {
    for (const double value : marker.position) {
      append(bytes, value);
    }
    for (const double value : marker.emission.direction) {
      append(bytes, value);
    }
    append(bytes, marker.emission.openingAngle);
  }
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).left(bodyStateLength / 2).toHex();
}

bool isBodyState(const QByteArray& text) {
  return text.size() == bodyStateLength &&
         std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

}  // namespace korvex2
