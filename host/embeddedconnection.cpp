// See embeddedconnection.h.
#include "embeddedconnection.h"

#include <QCoreApplication>
#include <QDir>

#include "bodydatabase.h"
#include "interpreter.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("EmbeddedConnection", text); }

}  // namespace

EmbeddedConnection::EmbeddedConnection(const QString& folder, const QStringList& problems)
    : database_(openDatabase(folder)),
      interpreter_(std::make_unique<Interpreter>(*database_)),
      problems_(problems + database_->problems()) {}

EmbeddedConnection::~EmbeddedConnection() = default;

bool EmbeddedConnection::exchange(const QByteArray& line, QByteArray& answer) {
  answer = interpreter_->answer(line);
  return true;
}

BackendVersionNumber EmbeddedConnection::version() const {
  const BackendVersion& version = database_->settings().version;
  return {version.majorNumber, version.minorNumber, version.revision};
}

QString EmbeddedConnection::description() const { return tr("Simulated backend in this program"); }

QStringList EmbeddedConnection::details() const {
  return {tr("Body database: %1").arg(QDir::toNativeSeparators(database_->folder()))};
}

QStringList EmbeddedConnection::problems() const { return problems_; }

}  // namespace korvex2
