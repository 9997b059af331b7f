// The backend as a server: many clients on one database, commands over TCP and live lines over UDP.
#ifndef KORVEX2_BACKEND_BACKENDSERVER_H
#define KORVEX2_BACKEND_BACKENDSERVER_H

#include <QString>

#include <poll.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "clientconnection.h"
#include "datagramsender.h"
#include "filedescriptor.h"
#include "interpreter.h"
#include "listenaddress.h"
#include "livesource.h"
#include "serverlimits.h"

namespace korvex2 {

/// One thread, that of run(), takes commands of all clients and carries them out one at a time, in the order in which
/// they come; a client that sends many has a bounded number of them answered before the others have their turn. When a
/// change is answered it is on disk, and the live lines follow it. A second thread sends the frames.
///
/// It uses the system's sockets as they are, because the time of a small query is the time of its round trip: one
/// poll(), one recv(), one send().
class BackendServer {
 public:
  /// `database` must outlive the server and be used by nobody else while run() runs.
  BackendServer(BodyDatabase& database, LiveLines lines, int rate, const ServerLimits& limits = {});
  ~BackendServer();
  BackendServer(const BackendServer&) = delete;
  BackendServer& operator=(const BackendServer&) = delete;

  /// Clients can come from now on. Returns an empty text, or why the address cannot be listened on.
  QString listen(const ListenAddress& address);
  /// Where it listens, with the port that was given when none was asked for.
  const ListenAddress& address() const { return address_; }

  /// Serves until stop(), then closes all connections. To be called once, after listen().
  void run();
  /// Ends run(): the command that is being carried out is completed and answered. Any thread, any number of times.
  void stop();
  /// A byte written to this descriptor does the same; so a signal handler can stop the server.
  int stopDescriptor() const { return stopWriter_.get(); }

 private:
  using Clock = ClientConnection::Clock;

  int waitForEvents();
  int timeoutOf(Clock::time_point now);
  void acceptClients(Clock::time_point now);
  void welcome(FileDescriptor socket);
  void serve(ClientConnection& client, short events, Clock::time_point now);
  void removeGone();
  void publishOutputs();
  void publish();

  Interpreter interpreter_;
  const ServerLimits limits_;
  ListenAddress address_;
  FileDescriptor listener_;
  FileDescriptor stopReader_;
  FileDescriptor stopWriter_;
  std::vector<std::unique_ptr<ClientConnection>> clients_;
  std::vector<pollfd> polled_;                        // stop, listener, then the clients in their order
  std::size_t firstTurn_ = 0;                         // who is served first, in turn
  bool full_ = false;                                 // told that there are too many clients
  std::optional<Clock::time_point> acceptNotBefore_;  // while the system has no descriptor left
  LineKinds wantedKinds_ = 0;                         // by any client
  bool publishedMeasuring_ = false;

  DatagramSender sender_;
  LiveSource live_;  // ends before sender_
};

}  // namespace korvex2

#endif
