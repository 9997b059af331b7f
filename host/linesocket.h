// Lines of text over a connected stream socket: written, and read with a deadline, without an event loop.
#ifndef KORVEX2_HOST_LINESOCKET_H
#define KORVEX2_HOST_LINESOCKET_H

#include <chrono>

#include <QByteArray>
#include <QString>

namespace korvex2 {

/// Takes two calls of the operating system for a line there and a line back, which is what a plain program would need:
/// a command's time is the time of the way and of the backend's work.
class LineSocket {
 public:
  using Clock = std::chrono::steady_clock;

  /// A line without an end that has grown longer than this is none.
  static constexpr int longestLine = 256 * 1024;

  /// What became of an operation. Everything but `done` and `notYet` is the end of the connection.
  enum class Result {
    done,
    notYet,  ///< no whole line is there
    late,    ///< the deadline has passed
    closed,  ///< by the other side
    broken,  ///< see problem()
    endless  ///< a line longer than longestLine
  };

  /// Takes a connected stream socket over and closes it in the end.
  /// @param patience  how far ahead the deadlines given to readLine() usually are
  LineSocket(int descriptor, std::chrono::milliseconds patience);
  ~LineSocket();
  LineSocket(const LineSocket&) = delete;
  LineSocket& operator=(const LineSocket&) = delete;

  int descriptor() const { return descriptor_; }

  /// What was sent and has not arrived shall not arrive any more: a command that was given up must not be carried out
  /// after one that was sent later, over another connection. Takes effect when the socket is closed.
  void abort();

  /// Sends bytes; they are all on their way when the result is `done`.
  Result write(const QByteArray& bytes, Clock::time_point deadline);
  /// Takes the next line, without its end ("\n" or "\r\n"), and waits for it if need be.
  Result readLine(QByteArray& line, Clock::time_point deadline);
  /// Same, of what has arrived already.
  Result takeLine(QByteArray& line);
  /// True when bytes are left of what was read: the beginning of a line, or more.
  bool hasRest() const { return begin_ < buffer_.size(); }

  /// Why the operating system refused an operation.
  QString problem() const { return problem_; }

 private:
  bool takeBuffered(QByteArray& line);
  Result receive(int flags);
  Result awaitReadiness(short events, Clock::time_point deadline);

  const int descriptor_;
  const std::chrono::milliseconds patience_;
  QByteArray buffer_;
  int begin_ = 0;    // of what is left in the buffer
  int scanned_ = 0;  // where to go on looking for a line's end
  QString problem_;
};

}  // namespace korvex2

#endif
