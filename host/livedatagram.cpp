// See livedatagram.h.
#include "livedatagram.h"

#include <algorithm>
#include <charconv>

namespace korvex2 {

namespace {

std::optional<std::uint64_t> frameNumber(const QByteArray& line) {
  static const QByteArray tag = QByteArrayLiteral("fr ");
  if (!line.startsWith(tag)) {
    return std::nullopt;
  }
  std::uint64_t number = 0;
  const char* const last = line.constEnd();
  const auto [end, error] = std::from_chars(line.constBegin() + tag.size(), last, number);
  return error == std::errc() && end == last ? std::optional<std::uint64_t>(number) : std::nullopt;
}

bool isPrintable(const char* first, const char* last) {
  return std::all_of(first, last, [](char c) { return c >= ' ' && c <= '~'; });
}

}  // namespace

LiveDatagram parseLiveDatagram(const char* bytes, int size) {
  LiveDatagram datagram;
  const char* const last = bytes + size;
  const char* begin = bytes;
  bool first = true;
  while (begin != last) {
    const char* const end = std::find(begin, last, '\n');
    const bool whole = end != last;  // what has no end may lack more than that
    if (whole && end != begin && end - begin <= longestLiveLine && isPrintable(begin, end)) {
      QByteArray line(begin, static_cast<int>(end - begin));
      if (first) {
        datagram.frame = frameNumber(line);
      }
      datagram.lines.push_back(std::move(line));
    } else {
      ++datagram.dropped;
    }
    first = false;
    begin = whole ? end + 1 : last;
  }
  return datagram;
}

}  // namespace korvex2
