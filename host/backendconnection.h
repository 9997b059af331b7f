// What the host needs of a connection to a tracking backend, however the backend is reached.
#ifndef KORVEX2_HOST_BACKENDCONNECTION_H
#define KORVEX2_HOST_BACKENDCONNECTION_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

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
  /// The backend's software version; zeros when it is not known.
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
  /// Ends that: when it returns, no subscriber is being called and none will be.
  virtual void stopLiveLines() {}
  virtual LiveStatus liveStatus() const { return {}; }

  /// Body files in and out of the backend's database; null when the database is out of reach. Stays the connection's.
  virtual BodyFileStore* bodyFiles() { return nullptr; }
};

}  // namespace korvex2

#endif
