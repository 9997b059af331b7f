// A relay between a host and a backend on this machine that does to lines and datagrams what networks do to them.
#ifndef KORVEX2_TESTS_FAULTPROXY_H
#define KORVEX2_TESTS_FAULTPROXY_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <QByteArray>

namespace korvex2_test {

/// A command or an answer on its way, without the byte that ends it.
struct PassingLine {
  bool toBackend = true;  ///< a command; otherwise an answer
  QByteArray text;
  QByteArray command;  ///< of an answer: the command that it answers, empty when nobody asked
  int connection = 0;  ///< which connection of the host it belongs to, from 0

  bool isCommand(const char* beginning) const { return toBackend && text.startsWith(beginning); }
  bool isAnswerTo(const char* beginning) const { return !toBackend && command.startsWith(beginning); }
};

/// What becomes of a line. Lines of one direction never overtake each other: what is held or delayed holds up all
/// behind it.
struct Fate {
  bool dropped = false;
  bool held = false;                     ///< until release()
  std::chrono::milliseconds delay{0};    ///< from its arrival
  int segment = 0;                       ///< bytes a segment; 0: the line in one
  bool withNext = false;                 ///< kept, and written in one segment with the next line
  bool cut = false;                      ///< afterwards the connection is cut
  bool onlyHalf = false;                 ///< only the first half of its bytes is passed on
  bool withoutEnd = false;               ///< all but the byte that ends it is passed on
  std::function<void()> then = nullptr;  ///< called on the relay's thread once it was passed on (or dropped)

  static Fate pass() { return {}; }
  static Fate drop();
  static Fate hold();
  static Fate late(std::chrono::milliseconds delay);
  static Fate inPieces(int bytes);
  static Fate joinNext();
  /// The connection is cut: before the line, behind the line, in its middle, or when all but its end was passed on.
  static Fate cutBefore();
  static Fate cutAfter();
  static Fate cutInside();
  static Fate cutBeforeEnd();
  /// The same fate, followed by a call on the relay's thread.
  Fate andThen(std::function<void()> call) const;
};

/// Listens on a loopback port of its own, connects to the backend once for every connection of a host, and passes lines
/// on, ended as they came. "korvex2 set output net CHANNEL udp PORT" is rewritten, so that datagrams pass here, too.
///
/// When the host's side ends, by a cut or by itself, what has arrived for the backend is still delivered, and then the
/// backend sees the end; an answer for a host that is gone is lost. When the backend's side ends, what it had answered
/// is delivered first.
///
/// Rules are called on the relay's thread, one at a time; when onLine() or onDatagram() returns, the rule before is not
/// running any more. All operations may be called on any thread, also by rules.
class FaultProxy {
 public:
  using LineRule = std::function<Fate(const PassingLine&)>;
  /// What is sent in a datagram's place; `number` counts them from 0.
  using DatagramRule = std::function<std::vector<QByteArray>(const QByteArray& datagram, int number)>;

  explicit FaultProxy(quint16 backendPort);
  ~FaultProxy();
  FaultProxy(const FaultProxy&) = delete;
  FaultProxy& operator=(const FaultProxy&) = delete;

  /// Where hosts connect, on 127.0.0.1; 0 when no port could be had.
  quint16 port() const { return port_; }
  /// Where the backend is from the next connection on.
  void setBackendPort(quint16 port);
  /// While it does not listen, connections to the port are refused.
  void setListening(bool listening);

  void onLine(LineRule rule);
  void onDatagram(DatagramRule rule);
  void passEverything();

  /// Waits until the relay has taken a line that is held, and says whether it has.
  bool waitForHeld(std::chrono::milliseconds limit) const;
  /// Lets everything go that is held now.
  void release();
  /// Cuts all connections.
  void cut();
  /// Writes bytes to the hosts as if the backend had.
  void sendToHosts(const QByteArray& bytes);
  /// Sends a datagram to every port that a host named.
  void sendDatagram(const QByteArray& datagram);

  /// Lines that were passed on, in order: "> COMMAND", "< ANSWER".
  std::vector<std::string> passed() const;
  /// How many commands were passed on that begin so.
  int commands(const std::string& beginning) const;
  void forgetPassed();
  /// Connections made by hosts so far, and how many of them are open.
  int connections() const { return connections_; }
  int openConnections() const { return open_; }
  /// Datagrams that came from the backend so far, and that were sent to hosts.
  int datagramsIn() const { return datagramsIn_; }
  int datagramsOut() const { return datagramsOut_; }
  /// Waits until the relay has passed on a command that begins so, and says whether it has.
  bool waitForCommand(const std::string& beginning, std::chrono::milliseconds limit) const;

 private:
  class Relay;

  void inRelay(std::function<void(Relay&)> work);
  void wake();
  void run();
  void waitForEvent();
  void noteHeld();
  void note(bool toBackend, const QByteArray& text);

  quint16 port_ = 0;
  std::atomic<int> connections_{0};
  std::atomic<int> open_{0};
  std::atomic<int> datagramsIn_{0};
  std::atomic<int> datagramsOut_{0};

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<std::function<void(Relay&)>> work_;  // guarded by mutex_, as are the next five
  std::uint64_t workGiven_ = 0;
  std::uint64_t workDone_ = 0;
  bool stopping_ = false;
  int held_ = 0;
  std::vector<std::string> passed_;

  std::recursive_mutex ruleMutex_;  // held while a rule runs
  LineRule lineRule_;               // guarded by ruleMutex_, as is the next
  DatagramRule datagramRule_;

  int wake_[2] = {-1, -1};
  std::unique_ptr<Relay> relay_;
  std::thread thread_;
};

}  // namespace korvex2_test

#endif
