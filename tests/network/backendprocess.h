// The real backend program on a database of its own: started, killed, restarted, and its folder read afterwards.
#ifndef KORVEX2_TESTS_BACKENDPROCESS_H
#define KORVEX2_TESTS_BACKENDPROCESS_H

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvex2_test {

using Position = std::array<double, 3>;

/// What the files of a database say of one body, read without the program's help.
struct StoredBody {
  std::vector<Position> markers;
  std::vector<std::array<double, 4>> emissions;
  QString problem;  ///< of this body or of the database as a whole; empty when all could be read
};

/// The program runs as long as this lives, unless it is stopped before. Everything is on the calling thread but
/// killNow().
class BackendProcess {
 public:
  /// A fresh copy of the shipped bodies; nothing is started.
  BackendProcess();
  ~BackendProcess();
  BackendProcess(const BackendProcess&) = delete;
  BackendProcess& operator=(const BackendProcess&) = delete;

  /// Starts it and waits for the line with its port. Port 0 takes a free one.
  /// @return false, and a failure of the running case, when it did not come up
  bool start(quint16 port = 0);
  /// Starts it where it was before.
  bool startAgain() { return start(port_); }
  quint16 port() const { return port_; }
  bool isRunning() const { return program_ != nullptr && program_->state() != QProcess::NotRunning; }

  /// SIGKILL; returns when it is gone.
  void kill();
  /// SIGKILL, from any thread; does not wait.
  void killNow();
  /// SIGTERM; its exit status, -1 when it did not end in time or was killed.
  int terminate();
  /// What it wrote to standard error so far.
  QString errors();

  QString folder() const { return folder_.filePath(QStringLiteral("database")); }
  /// Further options for the next start.
  QStringList options;

  /// Edits the catalogue; only while the program is not running.
  void editCatalogue(const std::function<void(QJsonObject&)>& edit) const;
  /// The version that the program tells after its next start.
  void setVersion(int major, int minor, int revision) const;

  /// The body as the files have it now, whether or not the program runs.
  StoredBody stored(const QByteArray& type, int number) const;
  /// What is wrong with the folder: everything that a program that opens it would report; empty when all is well.
  QStringList problems() const;
  /// Answer of the running program to one line, over a connection of its own; empty when none came.
  QByteArray ask(const QByteArray& line) const;

 private:
  void stop();

  QTemporaryDir folder_;
  std::unique_ptr<QProcess> program_;
  std::atomic<qint64> pid_{0};
  quint16 port_ = 0;
  QString errors_;
};

}  // namespace korvex2_test

#endif
