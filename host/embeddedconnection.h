// Connection to the simulated backend inside this program.
#ifndef KORVEX2_HOST_EMBEDDEDCONNECTION_H
#define KORVEX2_HOST_EMBEDDEDCONNECTION_H

#include <memory>

#include <QStringList>

#include "backendconnection.h"

namespace korvex2 {

class BodyDatabase;
class Interpreter;

/// Answers come at once, from the body database in a folder.
class EmbeddedConnection : public BackendConnection {
 public:
  /// @param folder    the body database; what is missing or broken there is told by problems()
  /// @param problems  troubles met before, put in front of those of the database
  EmbeddedConnection(const QString& folder, const QStringList& problems);
  ~EmbeddedConnection() override;

  bool exchange(const QByteArray& line, QByteArray& answer) override;
  BackendVersionNumber version() const override;
  QString description() const override;
  QStringList details() const override;
  QStringList problems() const override;

  BodyDatabase& database() { return *database_; }
  Interpreter& interpreter() { return *interpreter_; }

 private:
  std::unique_ptr<BodyDatabase> database_;
  std::unique_ptr<Interpreter> interpreter_;
  QStringList problems_;
};

}  // namespace korvex2

#endif
