// A client of the server's command channel, byte by byte in the test's hands.
#ifndef KORVEX2_TESTS_TCPCLIENT_H
#define KORVEX2_TESTS_TCPCLIENT_H

#include <chrono>
#include <cstdint>
#include <string>

#include "filedescriptor.h"

namespace korvex2_test {

/// Every wait ends after ten seconds, with what came until then; expectations on that fail.
class TcpClient {
 public:
  enum class Family { V4, V6 };

  TcpClient() = default;
  /// Connects to the loopback address; `buffers`, when it is not 0, is the size of the system's buffers at this end.
  explicit TcpClient(std::uint16_t port, Family family = Family::V4, int buffers = 0);

  bool isConnected() const { return static_cast<bool>(socket_); }
  /// Port of this end.
  std::uint16_t ownPort() const;

  /// Sends everything. Returns false when the connection is gone, or when the other end takes nothing for
  /// ten seconds.
  bool send(const std::string& bytes);
  /// Sends as much as goes without waiting; the number of bytes.
  std::size_t sendSome(const std::string& bytes);
  /// False when the connection is gone, as far as one can tell without reading.
  bool canSend() const;
  /// The next line without its end, which must be `end`; what there is, with "(...)" behind it, when none comes.
  std::string line(char end = '\n');
  /// Sends a line and reads its answer.
  std::string ask(const std::string& line) { return send(line + '\n') ? this->line() : "(gone)"; }
  /// What comes until the other end closes, with "(open)" behind it when it does not.
  std::string rest();
  /// Whether the connection has been closed by the other end, and nothing more came.
  bool endsNow() { return rest().empty(); }
  /// True when nothing comes for a moment.
  bool isSilent(std::chrono::milliseconds moment = std::chrono::milliseconds(30));
  /// Tells that nothing more will be sent.
  void finish();
  void close() { socket_ = korvex2::FileDescriptor(); }
  /// Ends the connection the hard way.
  void reset();

 private:
  enum class More { Came, Ended, TimedOut };

  More receive(std::chrono::milliseconds time);

  korvex2::FileDescriptor socket_;
  std::string received_;
};

}  // namespace korvex2_test

#endif
