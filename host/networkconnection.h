// Connection to a backend in another program: commands over TCP, live lines over UDP.
#ifndef KORVEX2_HOST_NETWORKCONNECTION_H
#define KORVEX2_HOST_NETWORKCONNECTION_H

#include <chrono>
#include <memory>
#include <vector>

#include "backendaddress.h"
#include "backendconnection.h"

namespace korvex2 {

/// Times of a network connection.
struct NetworkOptions {
  using Milliseconds = std::chrono::milliseconds;

  Milliseconds commandTimeout{2000};  ///< within which a command's answer has to be there, sending included
  Milliseconds connectTimeout{2000};  ///< within which one attempt has to succeed, the first exchanges included
  Milliseconds heartbeat{1000};       ///< of silence, after which the backend is asked whether it is still there
  /// Waiting times before the attempts to connect again; the last one goes on and on.
  std::vector<Milliseconds> retryDelays{Milliseconds(0),    Milliseconds(250),  Milliseconds(500), Milliseconds(1000),
                                        Milliseconds(2000), Milliseconds(4000), Milliseconds(5000)};
  Milliseconds lostAfter{30000};  ///< without success, the connection counts as lost
  Milliseconds lostDelay{10000};  ///< between attempts from then on
  /// A connection that ends sooner was no success: neither the waiting times nor the time until the connection counts
  /// as lost begin anew.
  Milliseconds stableAfter{2000};
  bool waitAtFirst = true;  ///< whether the constructor waits for the first attempt

  /// The usual times, with another one for commands. The first exchanges of a connection have as much time: a backend
  /// that is slow to answer could not be connected to otherwise.
  static NetworkOptions answeredWithin(Milliseconds timeout);
};

/// One command at a time: exchange() waits for its answer without running an event loop. An answer that is not there
/// in time costs the connection, so that it can never be taken for the answer to another command when it does come;
/// so does a line nobody waits for, an answer to a query that belongs to another query, and one longer than 256 KiB.
///
/// A connection that broke is made anew from the event loop, that of a modal dialog included. Before it counts as
/// connected, the backend has told its version, and knows again where live lines go and which of them modules had
/// switched on.
class NetworkConnection : public BackendConnection {
 public:
  /// Tries to connect, and waits for that no longer than a connect time-out, so that the version is known when modules
  /// are loaded. If it fails the attempts go on from the event loop.
  explicit NetworkConnection(const BackendAddress& address, const NetworkOptions& options = {});
  ~NetworkConnection() override;

  const BackendAddress& address() const;
  const NetworkOptions& options() const;

  bool exchange(const QByteArray& line, QByteArray& answer) override;
  QByteArrayList exchangeTogether(const QByteArrayList& lines) override;
  LinkStatus linkStatus() const override;
  void setLinkListener(std::function<void()> listener) override;
  void tryAgain() override;
  bool sharesBackend() const override { return true; }
  BackendVersionNumber version() const override;
  QString description() const override;
  QStringList details() const override;
  QStringList problems() const override;
  void startLiveLines(LiveDistributor& distributor) override;
  void stopLiveLines() override;
  LiveStatus liveStatus() const override;
  BodyFileStore* bodyFiles() override;

 private:
  class Link;
  std::unique_ptr<Link> link_;
};

}  // namespace korvex2

#endif
