// See serveroptions.h.
#include "serveroptions.h"

#include <QCoreApplication>

#include <optional>

#include "programarguments.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ServerOptions", text); }

ListenAddress listenValue(const ProgramArguments& given, const QCommandLineOption& option) {
  if (!given.isSet(option)) {
    return {};
  }
  const QString value = given.value(option);
  const std::optional<ListenAddress> address = listenAddressFromText(value);
  if (!address) {
    given.fail(tr("the option --%1 needs an address and a port such as 127.0.0.1:%2 or [::1]:%2, not \"%3\"")
                   .arg(option.names().constFirst())
                   .arg(defaultBackendPort)
                   .arg(value));
  }
  return *address;
}

}  // namespace

ServerOptions parseServerOptions(const QStringList& arguments) {
  const QCommandLineOption listen(QStringLiteral("listen"),
                                  tr("Numeric address and TCP port to listen on, for example 127.0.0.1:%1 or [::1]:%1; "
                                     "port 0 takes one that is free. Without it 127.0.0.1:%1, which only programs on "
                                     "this machine can reach. There are no passwords: whoever reaches the port can "
                                     "change the bodies.")
                                      .arg(defaultBackendPort),
                                  QStringLiteral("address:port"));
  const QCommandLineOption database(QStringLiteral("database"),
                                    tr("Folder of the body database; without it the user's own. A folder without a "
                                       "database gets the bodies that come with the program."),
                                    QStringLiteral("folder"));
  const QCommandLineOption trajectory = ProgramArguments::trajectoryOption();
  const QCommandLineOption rate = ProgramArguments::rateOption();
  ProgramArguments given("korvex2-backend",
                         tr("Simulated backend of an optical tracking system, for front ends on a network."),
                         {listen, database, rate, trajectory});
  given.parse(arguments);
  ServerOptions options;
  options.listen = listenValue(given, listen);
  options.databaseDir = given.folder(database);
  options.trajectory = given.file(trajectory);
  options.rate = given.rate(rate);
  return options;
}

}  // namespace korvex2
