// What the host needs of a connection to a tracking backend, however the backend is reached.
#ifndef KORVEX2_HOST_BACKENDCONNECTION_H
#define KORVEX2_HOST_BACKENDCONNECTION_H

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace korvex2 {

class BodyFileStore;
class LiveDistributor;

/// Software version of a backend. A revision of -1 means that the backend does not tell it.
struct BackendVersionNumber {
  int major = 0;
  int minor = 0;
  int revision = 0;
};

/// What the host tells the operator of the live lines.
struct LiveStatus {
  bool offered = false;     ///< whether the connection brings live lines at all
  bool measuring = false;   ///< whether a measurement runs
  std::uint64_t lines = 0;  ///< handed to subscribers so far

  // What came over a network and was of no use:
  std::uint64_t droppedDatagrams = 0;  ///< foreign, repeated, out of order, or without a frame number
  std::uint64_t droppedLines = 0;      ///< cut off, too long, or not plain text
};

/// Whether the backend can be asked just now.
enum class LinkState {
  connected,
  reconnecting,  ///< not connected, and tried again every few seconds
  lost           ///< not connected for so long that somebody should look after it; still tried again now and then
};

/// How a connection stands, for the operator.
struct LinkStatus {
  LinkState state = LinkState::connected;
  QString place;   ///< "127.0.0.1:27410"; empty for a backend inside this program
  QString reason;  ///< while not connected: why, as part of a sentence ("the backend closed the connection")
  /// While connected: whether the connection has lasted for a while. One that is made and breaks at once, again and
  /// again, is nothing to tell anybody each time.
  bool lasts = true;
};

/// A way to a backend: one line of text goes there, one line comes back.
/// All operations are called on the GUI thread.
class BackendConnection {
 public:
  BackendConnection() = default;
  BackendConnection(const BackendConnection&) = delete;
  BackendConnection& operator=(const BackendConnection&) = delete;
  virtual ~BackendConnection() = default;

  /// Sends one protocol line and waits for its answer; neither carries a line end. The implementation bounds the wait.
  /// @return false when the line was not delivered or not answered; `answer` is meaningless then
  virtual bool exchange(const QByteArray& line, QByteArray& answer) = 0;
  /// Same for some lines that follow each other, 64 KiB together at most. Over a network they travel together, and wait
  /// for their answers together as long as one line would.
  /// @return the answers in the order of the lines; they end before the first line that was not answered
  virtual QByteArrayList exchangeTogether(const QByteArrayList& lines);
  /// While the backend is not connected, exchange() returns false at once.
  virtual LinkStatus linkStatus() const { return {}; }
  /// Has `listener` called whenever linkStatus() or version() has changed; an empty one ends that. It may be called
  /// from within exchange(), and must neither call exchange() nor destroy the connection.
  virtual void setLinkListener(std::function<void()> listener) { static_cast<void>(listener); }
  /// Tries at once to connect again instead of waiting for the next attempt's time; nothing happens while connected.
  virtual void tryAgain() {}
  /// Whether other programs can change what the backend knows, so that what was read may be out of date.
  virtual bool sharesBackend() const { return false; }

  /// The backend's software version; zeros when it is not known. Another backend may answer after a reconnection.
  virtual BackendVersionNumber version() const = 0;
  /// What the operator reads as the place of the backend, for example "Simulated backend in this program".
  virtual QString description() const = 0;
  /// Further facts about the connection for the operator, one a line, for example the folder of the database.
  virtual QStringList details() const { return {}; }
  /// What went wrong while the connection was made, for the operator; empty when all is well.
  virtual QStringList problems() const { return {}; }

  /// Begins to hand the backend's live lines to `distributor`, on a thread of the connection's own, and tells it when
  /// measurements start and stop. `distributor` must live until stopLiveLines().
  virtual void startLiveLines(LiveDistributor& distributor) { static_cast<void>(distributor); }
  /// Ends that, and with it, for subscribers, the measurement that they were told of, if any: when it returns, no
  /// subscriber is being called and none will be.
  virtual void stopLiveLines() {}
  virtual LiveStatus liveStatus() const { return {}; }

  /// Body files in and out of the backend's database; null when the database is out of reach. Stays the connection's.
  virtual BodyFileStore* bodyFiles() { return nullptr; }
};

}  // namespace korvex2

#endif
