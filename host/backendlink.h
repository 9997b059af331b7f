// The command channel to a backend over TCP: connected, watched, and connected again when it broke.
#ifndef KORVEX2_HOST_BACKENDLINK_H
#define KORVEX2_HOST_BACKENDLINK_H

#include <deque>
#include <functional>
#include <memory>

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QTimer>

#include "backendaddress.h"
#include "backendconnection.h"
#include "linesocket.h"
#include "networkconnection.h"

class QSocketNotifier;
class QTcpSocket;

namespace korvex2 {

/// What a link asks of its owner, and tells it. All of it happens on the link's thread.
class BackendLinkOwner {
 public:
  BackendLinkOwner() = default;
  BackendLinkOwner(const BackendLinkOwner&) = delete;
  BackendLinkOwner& operator=(const BackendLinkOwner&) = delete;
  virtual ~BackendLinkOwner() = default;

  /// Lines that a new connection begins with, one after the other.
  virtual QList<QByteArray> openingLines(const QHostAddress& own, const QHostAddress& backend) = 0;
  /// The answer to one of them.
  /// @return empty, or why this is no backend to talk to
  virtual QString takeOpeningAnswer(const QByteArray& line, const QByteArray& answer) = 0;
  /// The answer to a line that was posted at that time.
  /// @return false when it belongs to no such line
  virtual bool takePostedAnswer(const QByteArray& line, const QByteArray& answer,
                                std::chrono::steady_clock::time_point asked) = 0;
  /// The status of the link is another one.
  virtual void linkChanged() = 0;
};

/// States and their ends:
///
///   waiting      for the time of the next attempt
///   connecting   the host's name is looked up, the connection is made
///   opening      the opening lines are exchanged
///   connected    commands can be exchanged
///
/// From everywhere back to waiting when something fails. While connected, the link asks "korvex2 get status active"
/// after some silence; that answer, too, comes to takePostedAnswer().
class BackendLink : public QObject {
  Q_OBJECT

 public:
  /// The owner must outlive the link. Nothing happens before start().
  BackendLink(BackendLinkOwner& owner, const BackendAddress& address, const NetworkOptions& options);
  ~BackendLink() override;

  void start();
  /// Runs an event loop until the first attempt has succeeded or failed.
  void awaitFirstAttempt();
  void tryAgain();

  const LinkStatus& status() const { return status_; }
  bool isConnected() const { return stage_ == Stage::connected; }
  /// How often a connection was made.
  int connections() const { return connections_; }

  /// See BackendConnection::exchange() and exchangeTogether().
  bool exchange(const QByteArray& line, QByteArray& answer);
  QByteArrayList exchangeTogether(const QByteArrayList& lines);
  /// Sends a line whose answer is not waited for, see takePostedAnswer(). Nothing happens while not connected.
  void post(const QByteArray& line);

 signals:
  /// An attempt to connect has succeeded or failed.
  void attemptEnded();

 private:
  using Result = LineSocket::Result;
  using Clock = LineSocket::Clock;
  struct Posted {
    QByteArray line;
    Clock::time_point asked;
  };
  enum class Stage { waiting, connecting, opening, connected };

  void attempt();
  void attemptFailed();
  void takeOver();
  void sendOpeningLine();
  void opened();
  /// Takes what has arrived; afterwards nothing unasked for is left, or the connection is no more.
  void read();
  /// Sends lines and takes the answers that come first: to posted lines.
  bool beginExchange(const QByteArray& bytes, bool onlyQueries, Clock::time_point now, Clock::time_point deadline);
  bool takeAnswer(const QByteArray& line, QByteArray& answer, Clock::time_point deadline);
  void endExchange();
  /// @return false when the line was the connection's end
  bool accept(const QByteArray& line);
  /// @return false when the connection is no more, because of this result
  bool goesOn(Result result);
  void fail(const QString& reason);
  void giveUpSocket();
  /// @param lasts  see LinkStatus::lasts
  void setStatus(LinkState state, const QString& reason, bool lasts = false);
  /// The connection counts as a success from now on.
  void lasts();
  QString reasonOf(Result result) const;
  void beat();
  void postedTooLongAgo();

  BackendLinkOwner& owner_;
  const BackendAddress address_;
  const NetworkOptions options_;
  LinkStatus status_;
  Stage stage_ = Stage::waiting;
  std::unique_ptr<QTcpSocket> connector_;
  std::unique_ptr<LineSocket> socket_;
  std::unique_ptr<QSocketNotifier> notifier_;
  QList<QByteArray> opening_;  // what is still to be sent, the one under way first
  std::deque<Posted> posted_;  // whose answers are still to come

  QTimer retry_;      // next attempt
  QTimer limit_;      // end of the present attempt
  QTimer heartbeat_;  // next look at the time since lastTraffic_
  QTimer patience_;   // for the answers to posted lines
  QTimer lasting_;    // until the connection is a success
  QTimer lost_;       // until the connection counts as lost
  Clock::time_point lastTraffic_;
  Clock::time_point connectedSince_;
  std::size_t retries_ = 0;
  int connections_ = 0;
};

}  // namespace korvex2

#endif
