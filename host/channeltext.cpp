// See channeltext.h.
#include "channeltext.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include <locale.h>

namespace korvex2 {

namespace {

/// Makes the calling thread format and parse as in the "C" locale while it lives.
class ClassicLocaleScope {
 public:
  ClassicLocaleScope() {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    previous_ = uselocale(classic);
  }
  ~ClassicLocaleScope() { uselocale(previous_); }
  ClassicLocaleScope(const ClassicLocaleScope&) = delete;
  ClassicLocaleScope& operator=(const ClassicLocaleScope&) = delete;

 private:
  locale_t previous_;
};

/// Reads one number off the front of [first, last); nothing when there is none or it does not fit.
template <typename Number>
std::optional<Number> takeNumber(const char*& first, const char* last) {
  Number value{};
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc()) {
    return std::nullopt;
  }
  first = end;
  return value;
}

}  // namespace

std::optional<QByteArray> formatCommand(const char* format, va_list values) {
  if (format == nullptr) {
    return std::nullopt;
  }
  std::array<char, longestCommand + 1> buffer{};
  const ClassicLocaleScope classic;
  const int length = std::vsnprintf(buffer.data(), buffer.size(), format, values);
  if (length <= 0 || length > longestCommand) {
    return std::nullopt;
  }
  QByteArray text(buffer.data(), length);
  if (!isPrintableAscii(text)) {
    return std::nullopt;
  }
  return text;
}

bool isPrintableAscii(const QByteArray& text) {
  return std::all_of(text.cbegin(), text.cend(), [](char c) { return c >= ' ' && c <= '~'; });
}

QByteArray withoutLineEnd(const QByteArray& answer) {
  int length = answer.size();
  while (length > 0 && (answer.at(length - 1) == '\n' || answer.at(length - 1) == '\r')) {
    --length;
  }
  return answer.left(length);
}

std::optional<QByteArray> valueAfter(const QByteArray& prefix, const QByteArray& answer) {
  if (!answer.startsWith(prefix)) {
    return std::nullopt;
  }
  if (answer.size() == prefix.size()) {
    return QByteArray();
  }
  if (answer.at(prefix.size()) != ' ') {
    return std::nullopt;
  }
  return answer.mid(prefix.size() + 1);
}

std::optional<int> parseInteger(const QByteArray& text) {
  const char* first = text.constData();
  const char* const last = first + text.size();
  const std::optional<int> value = takeNumber<int>(first, last);
  return first == last ? value : std::nullopt;
}

std::optional<std::vector<double>> parseReals(const QByteArray& text, int count) {
  std::vector<double> values;
  const char* first = text.constData();
  const char* const last = first + text.size();
  while (first != last) {
    if (*first == ' ') {
      ++first;
      continue;
    }
    const std::optional<double> value = takeNumber<double>(first, last);
    const bool ended = first == last || *first == ' ';
    if (!value || !ended || !std::isfinite(*value) || static_cast<int>(values.size()) == count) {
      return std::nullopt;
    }
    values.push_back(*value);
  }
  if (static_cast<int>(values.size()) != count) {
    return std::nullopt;
  }
  return values;
}

bool isRefusal(const QByteArray& answer) { return valueAfter("korvex2 err", answer).has_value(); }

}  // namespace korvex2
