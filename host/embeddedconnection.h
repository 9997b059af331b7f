// Connection to the simulated backend inside this program.
#ifndef KORVEX2_HOST_EMBEDDEDCONNECTION_H
#define KORVEX2_HOST_EMBEDDEDCONNECTION_H

#include <cstdint>
#include <memory>

#include <QStringList>

#include "backendconnection.h"
#include "bodyfilestore.h"

namespace korvex2 {

class BodyDatabase;
class Interpreter;
class LiveDelivery;
class LiveSource;

/// How the simulated bodies move.
struct LiveOptions {
  int rate = 60;       ///< frames a second, 1 to 1,000
  QString trajectory;  ///< file of a recorded motion for `standard b01`; empty: a built-in motion
};

/// Answers come at once, from the body database in a folder. Live lines follow the state that the last answered line
/// left behind.
class EmbeddedConnection : public BackendConnection, private BodyFileStore {
 public:
  /// @param folder    the body database; what is missing or broken there is told by problems()
  /// @param problems  troubles met before, put in front of those of the database
  /// @param live      a recorded motion that cannot be used is told by problems(), and the built-in one serves
  EmbeddedConnection(const QString& folder, const QStringList& problems, const LiveOptions& live = {});
  ~EmbeddedConnection() override;

  bool exchange(const QByteArray& line, QByteArray& answer) override;
  BackendVersionNumber version() const override;
  QString description() const override;
  QStringList details() const override;
  QStringList problems() const override;
  void startLiveLines(LiveDistributor& distributor) override;
  void stopLiveLines() override;
  LiveStatus liveStatus() const override;
  BodyFileStore* bodyFiles() override { return this; }

 private:
  QString importObstacle() const override;
  BodyFileSummary summaryOf(const QString& path) const override;
  ImportOutcome importBody(const BodyId& body, const QString& path) override;
  QString exportBody(const BodyId& body, const QString& path) const override;

  std::unique_ptr<BodyDatabase> database_;
  std::unique_ptr<Interpreter> interpreter_;
  QStringList problems_;
  std::uint64_t deliveredBefore_ = 0;       // by deliveries that were stopped
  std::unique_ptr<LiveDelivery> delivery_;  // while live lines are delivered
  std::unique_ptr<LiveSource> live_;        // knows copies of the backend's state only; ends before delivery_
};

}  // namespace korvex2

#endif
