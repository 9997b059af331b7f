// See serveroptions.h.
#include "serveroptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

#include "numbertext.h"

namespace korvex2 {

namespace {

const char* const programName = "korvex2-backend";

QString tr(const char* text) { return QCoreApplication::translate("ServerOptions", text); }

[[noreturn]] void fail(const QString& message) {
  std::fprintf(stderr, "%s: %s\n", programName, qPrintable(message));
  std::exit(EXIT_FAILURE);
}

/// A folder, or a file; `what` says which.
QString pathValue(const QCommandLineParser& parser, const QCommandLineOption& option, const QString& what) {
  if (!parser.isSet(option)) {
    return {};
  }
  const QString value = parser.value(option);
  if (value.isEmpty()) {
    fail(tr("the option --%1 needs %2").arg(option.names().constFirst(), what));
  }
  return value;
}

int rateValue(const QCommandLineParser& parser, const QCommandLineOption& option) {
  if (!parser.isSet(option)) {
    return LiveSource::defaultRate;
  }
  const QString value = parser.value(option);
  const std::optional<int> rate = integerFromText(value.toUtf8());
  if (!rate || *rate < LiveSource::lowestRate || *rate > LiveSource::highestRate) {
    fail(tr("the option --%1 needs a whole number from %2 to %3, not \"%4\"")
             .arg(option.names().constFirst())
             .arg(LiveSource::lowestRate)
             .arg(LiveSource::highestRate)
             .arg(value));
  }
  return *rate;
}

ListenAddress listenValue(const QCommandLineParser& parser, const QCommandLineOption& option) {
  if (!parser.isSet(option)) {
    return {};
  }
  const QString value = parser.value(option);
  const std::optional<ListenAddress> address = listenAddressFromText(value);
  if (!address) {
    fail(tr("the option --%1 needs an address and a port such as 127.0.0.1:%2 or [::1]:%2, not \"%3\"")
             .arg(option.names().constFirst())
             .arg(defaultBackendPort)
             .arg(value));
  }
  return *address;
}

}  // namespace

ServerOptions parseServerOptions(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(tr("Simulated backend of an optical tracking system, for front ends on a network."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
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
  const QCommandLineOption trajectory(QStringLiteral("trajectory"),
                                      tr("Recorded motion of the first standard body: one pose a line, \"seconds x y z "
                                         "qx qy qz qw\", in metres. Without it the one that comes with the program."),
                                      QStringLiteral("file"));
  const QCommandLineOption rate(QStringLiteral("rate"),
                                tr("Frames of live tracking lines a second, %1 to %2; without it %3.")
                                    .arg(LiveSource::lowestRate)
                                    .arg(LiveSource::highestRate)
                                    .arg(LiveSource::defaultRate),
                                QStringLiteral("hertz"));
  parser.addOptions({listen, database, rate, trajectory});

  if (!parser.parse(arguments)) {
    fail(parser.errorText());
  }
  if (parser.isSet(version)) {
    std::printf("%s %s\n", programName, qPrintable(QCoreApplication::applicationVersion()));
    std::exit(EXIT_SUCCESS);
  }
  if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all"))) {
    parser.showHelp(EXIT_SUCCESS);
  }
  if (!parser.positionalArguments().isEmpty()) {
    fail(tr("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst()));
  }
  ServerOptions options;
  options.listen = listenValue(parser, listen);
  options.databaseDir = pathValue(parser, database, tr("a folder"));
  options.trajectory = pathValue(parser, trajectory, tr("a file"));
  options.rate = rateValue(parser, rate);
  return options;
}

}  // namespace korvex2
