// Reads live lines strictly by their grammar, with nothing of the code that writes them.
#ifndef KORVEX2_TESTS_LIVELINEREADER_H
#define KORVEX2_TESTS_LIVELINEREADER_H

#include <QByteArray>

#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace korvex2_test {

struct LineRecord {
  int id = 0;
  double quality = 0.0;
  std::vector<int> numbers;  // behind the quality
  std::array<double, 3> position{};
  std::array<double, 9> rotation{};  // column by column
  std::vector<int> last;             // of the fourth block

  /// Where a point of the body is in the room: R p + t.
  std::array<double, 3> place(const std::array<double, 3>& p) const {
    std::array<double, 3> result{};
    for (std::size_t row = 0; row < 3; ++row) {
      result[row] = rotation[row] * p[0] + rotation[3 + row] * p[1] + rotation[6 + row] * p[2] + position[row];
    }
    return result;
  }
};

struct TrackingLine {
  std::string tag;
  int devices = -1;  // first number of "6dw2"
  std::vector<LineRecord> records;

  const LineRecord* find(int id) const {
    for (const LineRecord& record : records) {
      if (record.id == id) {
        return &record;
      }
    }
    return nullptr;
  }
  /// Throws, and so fails the case, when there is no such record.
  const LineRecord& at(int id) const {
    const LineRecord* const record = find(id);
    return record != nullptr ? *record : throw std::out_of_range(tag + " has no record " + std::to_string(id));
  }
};

/// Takes a line apart; every blank, bracket and digit must be in its place.
class LineReader {
 public:
  explicit LineReader(const QByteArray& line) : at_(line.constData()), end_(at_ + line.size()) {}

  /// A line of the kind "6d", "6dw" or "6dw2"; nothing for anything else.
  static std::optional<TrackingLine> read(const QByteArray& line) {
    LineReader reader(line);
    TrackingLine result;
    while (reader.at_ != reader.end_ && *reader.at_ != ' ') {
      result.tag += *reader.at_++;
    }
    if (result.tag != "6d" && result.tag != "6dw" && result.tag != "6dw2") {
      return std::nullopt;
    }
    if (result.tag == "6dw2") {
      result.devices = (reader.expect(' '), reader.integer());
    }
    const int count = (reader.expect(' '), reader.integer());
    for (int i = 0; i < count && reader.good_; ++i) {
      result.records.push_back(reader.record(result.tag));
    }
    if (!reader.good_ || reader.at_ != reader.end_ || count < 0) {
      return std::nullopt;
    }
    return result;
  }

  /// The number of "TAG number" with at least this many decimals (0: an integer).
  static std::optional<double> single(const QByteArray& line, const std::string& tag, int decimals) {
    LineReader reader(line);
    for (const char c : tag + ' ') {
      reader.expect(c);
    }
    const double value = decimals == 0 ? reader.integer() : reader.real(decimals);
    return reader.good_ && reader.at_ == reader.end_ ? std::optional<double>(value) : std::nullopt;
  }

 private:
  LineRecord record(const std::string& tag) {
    LineRecord record;
    expect(' ');
    expect('[');
    record.id = integer();
    expect(' ');
    record.quality = real(0);
    for (std::size_t i = 0; i < (tag == "6d" ? 0U : tag == "6dw" ? 1U : 2U); ++i) {
      expect(' ');
      record.numbers.push_back(integer());
    }
    expect(']');
    block(record.position, 3);
    block(record.rotation, 6);
    if (tag == "6dw2") {
      expect(' ');
      expect('[');
      record.last.push_back(integer());
      expect(' ');
      record.last.push_back(integer());
      expect(']');
    }
    return record;
  }

  template <typename Values>
  void block(Values& values, int decimals) {
    expect(' ');
    char before = '[';
    for (double& value : values) {
      expect(before);
      value = real(decimals);
      before = ' ';
    }
    expect(']');
  }

  void expect(char c) {
    good_ = good_ && at_ != end_ && *at_ == c;
    at_ += good_ ? 1 : 0;
  }

  int integer() {
    int value = 0;
    const auto [next, error] = std::from_chars(at_, end_, value);
    good_ = good_ && error == std::errc();
    at_ = good_ ? next : at_;
    return value;
  }

  /// Digits, a point and decimals; no exponent. "-0.000" is refused: nobody wants to read it.
  double real(int leastDecimals) {
    const char* const begin = at_;
    double value = 0.0;
    const auto [next, error] = std::from_chars(at_, end_, value, std::chars_format::fixed);
    good_ = good_ && error == std::errc();
    at_ = good_ ? next : at_;
    const std::string text(begin, at_);
    const std::size_t point = text.find('.');
    const std::size_t decimals = point == std::string::npos ? 0 : text.size() - point - 1;
    good_ = good_ && decimals >= static_cast<std::size_t>(leastDecimals) && !(value == 0.0 && text[0] == '-');
    return value;
  }

  const char* at_;
  const char* end_;
  bool good_ = true;
};

}  // namespace korvex2_test

#endif
