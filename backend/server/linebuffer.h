// Bytes that came from a client, until they are whole command lines.
#ifndef KORVEX2_BACKEND_LINEBUFFER_H
#define KORVEX2_BACKEND_LINEBUFFER_H

#include <QByteArray>

#include <cstddef>
#include <optional>
#include <string>

#include "interpreter.h"

namespace korvex2 {

/// A line without its end, and the byte that ended it.
struct ReceivedLine {
  QByteArray text;
  char end = '\n';
};

/// A line ends with '\n' or a zero byte; one '\r' before that belongs to the end. Never holds more than `capacity`
/// bytes: the caller brings no more than room() and takes lines out in between.
class LineBuffer {
 public:
  static constexpr std::size_t longestLine = Interpreter::longestLine;
  static constexpr std::size_t capacity = longestLine + 2;

  std::size_t room() const { return capacity - (bytes_.size() - begin_); }
  /// `size` must be within room().
  void append(const char* bytes, std::size_t size);

  /// Whether take() will give a line.
  bool hasLine();
  /// The next line that is complete, empty ones too.
  std::optional<ReceivedLine> take();
  /// Whether the next line is longer than a line may be, whether or not its end is there. It cannot be taken.
  bool isTooLong();

 private:
  void findEnd();
  std::size_t contentEnd() const;

  std::string bytes_;
  std::size_t begin_ = 0;    // of the next line
  std::size_t scanned_ = 0;  // no end before this
  bool complete_ = false;    // an end is at scanned_
};

}  // namespace korvex2

#endif
