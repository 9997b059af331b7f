// Numbers as protocol and file text, by the conversions of the C++ library that know no locale.
#include "numbertext.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace korvex2 {

namespace {

// from_chars takes no plus sign; a sign behind it would make "+-1" a number.
bool skipPlus(const char*& begin, const char* end) {
  if (begin == end || *begin != '+') {
    return true;
  }
  ++begin;
  return begin != end && *begin != '-' && *begin != '+';
}

template <typename Number>
std::optional<Number> take(const char*& begin, const char* end) {
  const char* start = begin;
  Number value{};
  if (!skipPlus(start, end)) {
    return std::nullopt;
  }
  const std::from_chars_result result = std::from_chars(start, end, value);
  if (result.ec != std::errc()) {
    return std::nullopt;
  }
  begin = result.ptr;
  return value;
}

template <typename Number>
std::optional<Number> whole(const QByteArray& text, std::optional<Number> (*takeNumber)(const char*&, const char*)) {
  const char* begin = text.constData();
  const char* const end = begin + text.size();
  const std::optional<Number> value = takeNumber(begin, end);
  return begin == end ? value : std::nullopt;
}

}  // namespace

QByteArray numberText(double value) {
  char buffer[32];  // the longest shortest form has 24 characters
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value + 0.0);
  return QByteArray(buffer, static_cast<int>(result.ptr - buffer));
}

std::optional<double> takeReal(const char*& begin, const char* end) {
  const char* position = begin;
  const std::optional<double> value = take<double>(position, end);
  if (!value || !std::isfinite(*value)) {
    return std::nullopt;
  }
  begin = position;
  return value;
}

std::optional<int> takeInteger(const char*& begin, const char* end) { return take<int>(begin, end); }

std::optional<double> realFromText(const QByteArray& text) { return whole<double>(text, &takeReal); }

std::optional<int> integerFromText(const QByteArray& text) { return whole<int>(text, &takeInteger); }

}  // namespace korvex2
