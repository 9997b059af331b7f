// One datagram of live lines, taken apart.
#ifndef KORVEX2_HOST_LIVEDATAGRAM_H
#define KORVEX2_HOST_LIVEDATAGRAM_H

#include <cstdint>
#include <optional>
#include <vector>

#include <QByteArray>

#include "livelines.h"

namespace korvex2 {

/// Longest live line that modules are given, without its end: their buffers hold no more.
constexpr int longestLiveLine = LiveLines::longestLine;

/// The lines of one frame: "fr NUMBER" first, each ended by a line feed.
struct LiveDatagram {
  std::optional<std::uint64_t> frame;  ///< nothing when the first line is no frame number
  std::vector<QByteArray> lines;       ///< good ones, "fr NUMBER" included, without their ends
  int dropped = 0;                     ///< cut off, too long, or not printable ASCII
};

LiveDatagram parseLiveDatagram(const char* bytes, int size);

}  // namespace korvex2

#endif
