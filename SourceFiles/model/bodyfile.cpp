// See bodyfile.h.
#include "bodyfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <locale>
#include <memory>
#include <optional>
#include <sstream>

namespace korvex2 {

namespace {

/// A line of free text is read in pieces of at most this many bytes.
constexpr std::size_t maxPiece = 255;

bool atEnd(std::istream& in) { return in.eof() || in.bad() || in.peek() == std::istream::traits_type::eof(); }

/// Numbers are separated by white space: "1.2.3" is not two of them.
bool atSeparator(std::istream& in) {
  return atEnd(in) || std::isspace(static_cast<char>(in.peek()), std::locale::classic());
}

/// A count or an index. Extracted as a signed number, because extracting "-3" as an unsigned one gives 4294967293.
std::optional<unsigned int> readUnsigned(std::istream& in) {
  std::int64_t value = 0;
  if (!(in >> value) || value < 0 || value > std::numeric_limits<unsigned int>::max() || !atSeparator(in)) {
    return std::nullopt;
  }
  return static_cast<unsigned int>(value);
}

/// `last` is the last position of the file: text may follow it directly.
bool readPosition(std::istream& in, bool last, bsVector& position) {
  if (!(in >> position.x) || !atSeparator(in) || !(in >> position.y) || !atSeparator(in) || !(in >> position.z)) {
    return false;
  }
  return (last || atSeparator(in)) && std::isfinite(position.x) && std::isfinite(position.y) &&
         std::isfinite(position.z);
}

/// Reads a line, or as much of it as a piece may hold. A line of exactly that length is one piece, not two.
std::string readPiece(std::istream& in) {
  std::string piece;
  while (!atEnd(in)) {
    if (in.peek() == '\n') {
      in.get();
      break;
    }
    if (piece.size() == maxPiece) {
      break;
    }
    piece.push_back(static_cast<char>(in.get()));
  }
  return piece;
}

/// Without markers the text would begin with the newline that ends the count. The writer puts that one itself, so
/// keeping it would add an empty line with every load and save.
void skipEndOfCountLine(std::istream& in) {
  if (!atEnd(in) && in.peek() == '\r') {
    in.get();
  }
  if (!atEnd(in) && in.peek() == '\n') {
    in.get();
  }
}

bool isLinesHeader(const std::string& piece) { return piece == "# Lines" || piece == "# Lines\r"; }

/// Whether the text directly behind a number would be read as a part of it once the number is written in another form:
/// "1.0" and ".5" would become "1.5".
bool couldContinueNumber(std::istream& in) {
  return !atEnd(in) && (in.peek() == '.' || in.peek() == 'e' || in.peek() == 'E');
}

/// Reads the free text. Returns whether it ended with the header of the lines; a file may do without.
bool readText(std::istream& in, std::string& text) {
  while (!atEnd(in)) {
    const std::string piece = readPiece(in);
    text += piece;
    text += '\n';
    if (isLinesHeader(piece)) {
      return true;
    }
  }
  text += emptyBodyFileText;
  return false;
}

BodyFileResult readLines(std::istream& in, BodyFileData& content) {
  const std::optional<unsigned int> count = readUnsigned(in);
  if (!count) {
    return {BodyFileError::LineCount, 0};
  }
  for (unsigned int i = 0; i < *count; ++i) {
    const std::optional<unsigned int> first = readUnsigned(in);
    const std::optional<unsigned int> second = first ? readUnsigned(in) : std::nullopt;
    if (!second || *first >= content.positions.size() || *second >= content.positions.size()) {
      return {BodyFileError::Line, i + 1ul};
    }
    content.lines.emplace_back(*first, *second);
  }
  return {};
}

/// Collects text whose numbers have a stream's default form, six significant digits, and always the decimal point.
class Text {
 public:
  Text() { out_.imbue(std::locale::classic()); }
  template <class Value>
  Text& operator<<(const Value& value) {
    out_ << value;
    return *this;
  }
  std::string take() {
    std::string taken = out_.str();
    out_.str(std::string());
    return taken;
  }

 private:
  std::ostringstream out_;
};

bool flush(QIODevice& out) {
  auto* file = qobject_cast<QFileDevice*>(&out);
  return file == nullptr || (file->flush() && file->error() == QFileDevice::NoError);
}

/// Writes, and empties the device's buffer, so that a full disk is noticed here and not at some later part.
bool put(QIODevice& out, const std::string& bytes) {
  qint64 written = 0;
  const auto size = static_cast<qint64>(bytes.size());
  while (written < size) {
    const qint64 now = out.write(bytes.data() + written, size - written);
    if (now <= 0) {
      return false;
    }
    written += now;
  }
  return flush(out);
}

}  // namespace

const char* const emptyBodyFileText = "\n# Lines\n";

BodyFileResult readBody(std::istream& in, BodyFileData& content) {
  content = BodyFileData();
  in.imbue(std::locale::classic());
  const std::optional<unsigned int> count = readUnsigned(in);
  if (!count) {
    return {BodyFileError::MarkerCount, 0};
  }
  if (*count == 1) {
    return {BodyFileError::SingleMarker, 0};
  }
  if (*count == 0) {
    skipEndOfCountLine(in);
  }
  for (unsigned int i = 0; i < *count; ++i) {
    bsVector position;
    if (!readPosition(in, i + 1 == *count, position)) {
      return {BodyFileError::Position, i + 1ul};
    }
    content.positions.push_back(position);
  }
  if (*count > 0 && couldContinueNumber(in)) {
    content.text = "\n";
  }
  const bool hasLines = readText(in, content.text);
  if (in.bad()) {
    return {BodyFileError::LineCount, 0};
  }
  return hasLines ? readLines(in, content) : BodyFileResult();
}

BodyFileResult readBodyFile(const QString& path, BodyFileData& content) {
  // Where a directory opens like a file, reading it fails in a way that names the wrong reason.
  std::ifstream in;
  if (!QFileInfo(path).isDir()) {
    in.open(QFile::encodeName(path).constData(), std::ios::in | std::ios::binary);
  }
  if (!in.is_open()) {
    content = BodyFileData();
    return {BodyFileError::Open, 0};
  }
  return readBody(in, content);
}

BodyFileResult writeBody(QIODevice& out, const BodyFileData& content) {
  Text text;
  text << content.positions.size() << "\n";
  if (!put(out, text.take())) {
    return {BodyFileError::MarkerCount, 0};
  }
  unsigned long number = 0;
  for (const bsVector& p : content.positions) {
    text << (number == 0 ? "" : "\n") << p.x << " " << p.y << " " << p.z;
    ++number;
    const bool finite = std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
    if (!finite || !put(out, text.take())) {
      return {BodyFileError::Position, number};
    }
  }
  text << content.lines.size() << "\n";
  if (!put(out, content.text) || !put(out, text.take())) {
    return {BodyFileError::End, 0};
  }
  number = 0;
  for (const auto& [first, second] : content.lines) {
    ++number;
    text << first << " " << second << "\n";
    if (!put(out, text.take())) {
      return {BodyFileError::Line, number};
    }
  }
  return {};
}

BodyFileResult writeBodyFile(const QString& path, const BodyFileData& content) {
  const QFileInfo target(path);
  if (target.exists() && !target.isFile()) {
    // A device is written to, not replaced by a file; a directory does not open.
    QFile device(path);
    if (!device.open(QIODevice::WriteOnly)) {
      return {BodyFileError::Open, 0};
    }
    return writeBody(device, content);
  }
  QSaveFile file(path);
  file.setDirectWriteFallback(true);  // a writable file in a folder that takes no new ones
  if (!file.open(QIODevice::WriteOnly)) {
    return {BodyFileError::Open, 0};
  }
  const BodyFileResult result = writeBody(file, content);
  if (!result) {
    return result;  // what is not committed is thrown away
  }
  return file.commit() ? result : BodyFileResult{BodyFileError::End, 0};
}

}  // namespace korvex2
