// The program korvex2-backend.
#include <QCoreApplication>
#include <QDir>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>

#include <unistd.h>
#include <clocale>

#include "backendserver.h"
#include "bodydatabase.h"
#include "databasefolder.h"
#include "motion.h"
#include "serveroptions.h"

namespace {

using namespace korvex2;

volatile std::sig_atomic_t stopDescriptor = -1;

extern "C" void stopServer(int) {
  const int interrupted = errno;  // of whatever runs just now
  const int descriptor = stopDescriptor;
  const char byte = 0;
  if (descriptor >= 0) {
    static_cast<void>(::write(descriptor, &byte, 1) == 1);
  }
  errno = interrupted;
}

/// SIGTERM and SIGINT end the program in good order.
void handleSignals(const BackendServer& server) {
  stopDescriptor = server.stopDescriptor();
  std::signal(SIGTERM, &stopServer);
  std::signal(SIGINT, &stopServer);
}

/// Neither a client that is gone nor a file that may not grow is a reason to end: both are noticed where they happen.
void ignoreSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void tell(const QString& problem) { std::fprintf(stderr, "korvex2-backend: %s\n", qPrintable(problem)); }

/// The toolkit would send messages to the system's journal where no terminal is.
void messagesToStandardError(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

/// Nothing when the database cannot be served.
std::unique_ptr<BodyDatabase> openServedDatabase(const ServerOptions& options, const QString& shipped) {
  const QString folder = options.databaseDir.isEmpty() ? userDatabaseFolder() : options.databaseDir;
  const QString problem = prepareDatabaseFolder(folder, shipped);
  if (!problem.isEmpty()) {
    tell(problem);
    return nullptr;  // there is no database, and none could be made
  }
  std::unique_ptr<BodyDatabase> database = openDatabase(folder);
  if (database->isHeldByAnother()) {
    tell(QCoreApplication::translate("Backend", "the body database in %1 is in use by another program")
             .arg(QDir::toNativeSeparators(folder)));
    return nullptr;
  }
  for (const QString& told : database->problems()) {
    tell(told);
  }
  return database;
}

int serve(const ServerOptions& options) {
  const QString shipped = shippedDataFolder(QCoreApplication::applicationDirPath());
  const QString trajectory = options.trajectory.isEmpty() ? shippedTrajectory(shipped) : options.trajectory;
  QStringList problems;
  Motion motion = motionWith(trajectory, problems);
  for (const QString& problem : problems) {
    tell(problem);
  }
  if (!problems.isEmpty() && !options.trajectory.isEmpty()) {
    return 1;  // it was asked for
  }
  const std::unique_ptr<BodyDatabase> database = openServedDatabase(options, shipped);
  if (database == nullptr) {
    return 1;
  }
  BackendServer server(*database, LiveLines(std::move(motion)), options.rate);
  const QString problem = server.listen(options.listen);
  if (!problem.isEmpty()) {
    tell(QCoreApplication::translate("Backend", "cannot listen on %1: %2")
             .arg(QString::fromLatin1(options.listen.text()), problem));
    return 1;
  }
  handleSignals(server);
  std::printf("korvex2-backend: listening on %s\n", server.address().text().constData());
  std::fflush(stdout);
  server.run();
  stopDescriptor = -1;  // the server, and with it the descriptor, goes; the number may become another file's
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  ignoreSignals();
  QCoreApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");  // the application object took the user's; numbers in texts have a decimal point
  qInstallMessageHandler(&messagesToStandardError);
  QCoreApplication::setOrganizationName(QStringLiteral("korvex2"));
  QCoreApplication::setApplicationName(QStringLiteral("backend"));
  QCoreApplication::setApplicationVersion(QStringLiteral(KORVEX2_VERSION));
  return serve(parseServerOptions(QCoreApplication::arguments()));
}
