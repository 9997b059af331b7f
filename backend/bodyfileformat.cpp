// Reader and writer of the body file.
#include "bodyfileformat.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "bodydatabase.h"
#include "numbertext.h"

namespace korvex2 {

namespace {

// Whether a line of free text, without its line end, announces the drawn lines.
bool isLinesHeader(const char* begin, const char* end) {
  const auto line = QByteArray::fromRawData(begin, static_cast<int>(end - begin));
  return line == "# Lines" || line == "# Lines\r";
}

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Reads a body file from front to back; `problem` stops it.
class Reader {
 public:
  Reader(const QByteArray& bytes, int fewestMarkers)
      : begin_(bytes.constData()), position_(begin_), end_(begin_ + bytes.size()), fewestMarkers_(fewestMarkers) {}

  BodyFileContent read() {
    if (readMarkers()) {
      readText();
    }
    return content_;
  }

 private:
  bool fail(const QString& problem) {
    content_.problem = problem;
    content_.line = 1 + static_cast<int>(std::count(begin_, position_, '\n'));
    return false;
  }

  void skipSpace() { position_ = std::find_if_not(position_, end_, isSpace); }

  std::optional<int> integer() {
    skipSpace();
    return takeInteger(position_, end_);
  }

  // What stands where a number was expected, for the message.
  QString here() const {
    if (position_ == end_) {
      return QStringLiteral("the file ends here");
    }
    return QStringLiteral("found '%1'")
        .arg(QString::fromLatin1(position_, static_cast<int>(std::min<std::ptrdiff_t>(
                                                std::find_if(position_, end_, isSpace) - position_, 20))));
  }

  bool readMarkers() {
    const std::optional<int> count = integer();
    if (!count) {
      return fail(QStringLiteral("the number of markers is expected, %1").arg(here()));
    }
    if (*count > BodyDatabase::mostMarkers) {
      return fail(QStringLiteral("%1 is no possible number of markers, a body has at most %2")
                      .arg(*count)
                      .arg(BodyDatabase::mostMarkers));
    }
    if (*count >= 0 && *count < fewestMarkers_) {
      return fail(QStringLiteral("%1 is too small a number of markers, a body has at least %2")
                      .arg(*count)
                      .arg(fewestMarkers_));
    }
    if (*count < 0 || *count == 1) {
      return fail(QStringLiteral("%1 is no possible number of markers").arg(*count));
    }
    for (int marker = 1; marker <= *count; ++marker) {
      Vector3 point{};
      for (double& coordinate : point) {
        skipSpace();
        const std::optional<double> value = takeReal(position_, end_);
        if (!value) {
          return fail(QStringLiteral("a coordinate of marker %1 is expected, %2").arg(marker).arg(here()));
        }
        if (std::fabs(*value) > BodyDatabase::largestCoordinate) {
          return fail(QStringLiteral("a coordinate of marker %1 is out of range").arg(marker));
        }
        coordinate = *value;
      }
      content_.geometry.positions.push_back(point);
    }
    return true;
  }

  void readText() {
    QByteArray& text = content_.geometry.text;
    text.clear();
    if (position_ != end_ && !isSpace(*position_)) {
      text = "\n";  // else a coordinate written anew could grow together with the text
    }
    const char* const start = position_;
    while (position_ != end_) {
      const char* const lineEnd = std::find(position_, end_, '\n');
      const bool isHeader = isLinesHeader(position_, lineEnd);
      position_ = lineEnd == end_ ? end_ : lineEnd + 1;
      if (isHeader) {
        text.append(start, static_cast<int>(position_ - start));
        readLines();
        return;
      }
    }
    text.append(start, static_cast<int>(end_ - start));
    text.append(text.endsWith('\n') ? "# Lines\n" : "\n# Lines\n");
  }

  void readLines() {
    const std::optional<int> count = integer();
    if (!count) {
      fail(QStringLiteral("the number of lines is expected, %1").arg(here()));
      return;
    }
    if (*count < 0) {
      fail(QStringLiteral("%1 is no possible number of lines").arg(*count));
      return;
    }
    const int markers = static_cast<int>(content_.geometry.positions.size());
    for (int number = 1; number <= *count; ++number) {
      const std::optional<int> from = integer();
      const std::optional<int> to = from ? integer() : std::nullopt;
      if (!from || !to) {
        fail(QStringLiteral("a marker index of line %1 is expected, %2").arg(number).arg(here()));
        return;
      }
      if (*from < 0 || *from >= markers || *to < 0 || *to >= markers || *from == *to) {
        fail(QStringLiteral("line %1 does not join two markers of the body").arg(number));
        return;
      }
      content_.geometry.lines.push_back({*from, *to});
    }
    content_.geometry.rest = QByteArray(position_, static_cast<int>(end_ - position_));
  }

  const char* begin_;
  const char* position_;
  const char* end_;
  const int fewestMarkers_;
  BodyFileContent content_;
};

}  // namespace

BodyFileContent parseBodyFile(const QByteArray& bytes, int fewestMarkers) {
  return Reader(bytes, fewestMarkers).read();
}

BodyGeometry geometryOf(const Body& body) {
  BodyGeometry geometry;
  for (const BodyMarker& marker : body.markers) {
    geometry.positions.push_back(marker.position);
  }
  geometry.lines = body.lines;
  geometry.text = body.text;
  geometry.rest = body.rest;
  return geometry;
}

QByteArray bodyFileBytes(const BodyGeometry& geometry) {
  QByteArray bytes = QByteArray::number(static_cast<int>(geometry.positions.size()));
  // The free text brings the line end behind the last number along, also behind a count of 0.
  for (const Vector3& point : geometry.positions) {
    bytes += '\n' + numberText(point[0]) + ' ' + numberText(point[1]) + ' ' + numberText(point[2]);
  }
  bytes += geometry.text + QByteArray::number(static_cast<int>(geometry.lines.size()));
  for (const BodyLine& line : geometry.lines) {
    bytes += '\n' + QByteArray::number(line.from) + ' ' + QByteArray::number(line.to);
  }
  return bytes + geometry.rest;
}

}  // namespace korvex2
