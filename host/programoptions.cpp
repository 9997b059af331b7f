// See programoptions.h.
#include "programoptions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <QCoreApplication>

#include "connectionsettings.h"
#include "livesource.h"

namespace korvex2 {

namespace {

const char* const programName = "korvex2-frontend";

QString tr(const char* text) { return QCoreApplication::translate("ProgramOptions", text); }

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

QString folderValue(const QCommandLineParser& parser, const QCommandLineOption& option) {
  return pathValue(parser, option, tr("a folder"));
}

int numberValue(const QCommandLineParser& parser, const QCommandLineOption& option, int lowest, int highest,
                int usual) {
  if (!parser.isSet(option)) {
    return usual;
  }
  const QString value = parser.value(option);
  bool ok = false;
  const int number = value.toInt(&ok);
  if (!ok || number < lowest || number > highest) {
    fail(tr("the option --%1 needs a whole number from %2 to %3, not \"%4\"")
             .arg(option.names().constFirst())
             .arg(lowest)
             .arg(highest)
             .arg(value));
  }
  return number;
}

std::optional<BackendAddress> addressValue(const QCommandLineParser& parser, const QCommandLineOption& option,
                                           const QList<QCommandLineOption>& simulation) {
  if (!parser.isSet(option)) {
    return std::nullopt;
  }
  QString problem;
  const std::optional<BackendAddress> address = BackendAddress::parse(parser.value(option), &problem);
  if (!address) {
    fail(tr("the option --%1 needs HOST or HOST:PORT, not \"%2\": %3")
             .arg(option.names().constFirst(), parser.value(option), problem));
  }
  for (const QCommandLineOption& other : simulation) {
    if (parser.isSet(other)) {
      fail(tr("the option --%1 is for the simulated backend in this program and does not go together with --%2")
               .arg(other.names().constFirst(), option.names().constFirst()));
    }
  }
  return address;
}

}  // namespace

ProgramOptions parseProgramOptions(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      tr("Front end of an optical tracking system: loads modules and connects them with a tracking backend."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const QCommandLineOption pluginDir(QStringLiteral("plugin-dir"),
                                     tr("Load modules from this folder only. Without it they are looked for in the "
                                        "folders of the variable KORVEX2_MODULE_PATH, where the program was built, in "
                                        "the user's data folder and where the program is installed."),
                                     QStringLiteral("folder"));
  const QCommandLineOption database(QStringLiteral("database"),
                                    tr("Folder of the body database; without it the user's own."),
                                    QStringLiteral("folder"));
  const QCommandLineOption list(QStringLiteral("list-modules"), tr("Print the modules that were found, and end."));
  const QCommandLineOption demonstration(QStringLiteral("demo"),
                                         tr("Show what the program does, write pictures into this folder, and end."),
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
  const QCommandLineOption backend(
      QStringLiteral("backend"),
      tr("Connect to a backend on the network (port %1 unless told otherwise); without it the simulated backend in "
         "this program is used.")
          .arg(defaultBackendPort),
      QStringLiteral("host:port"));
  const QCommandLineOption timeout(
      QStringLiteral("timeout"),
      tr("Time within which a backend on the network has to answer a command, %1 to %2; without it the one last chosen "
         "in the program, %3 at first.")
          .arg(ConnectionSettings::shortestTimeout)
          .arg(ConnectionSettings::longestTimeout)
          .arg(ConnectionSettings::usualTimeout),
      QStringLiteral("milliseconds"));
  parser.addOptions({pluginDir, database, trajectory, rate, backend, timeout, list, demonstration});

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
  ProgramOptions options;
  options.pluginDir = folderValue(parser, pluginDir);
  options.databaseDir = folderValue(parser, database);
  options.demonstrationDir = folderValue(parser, demonstration);
  options.trajectory = pathValue(parser, trajectory, tr("a file"));
  options.rate = numberValue(parser, rate, LiveSource::lowestRate, LiveSource::highestRate, LiveSource::defaultRate);
  options.timeout =
      numberValue(parser, timeout, ConnectionSettings::shortestTimeout, ConnectionSettings::longestTimeout, 0);
  options.backend = addressValue(parser, backend, {database, trajectory, rate});
  options.listModules = parser.isSet(list);
  return options;
}

bool printsOnly(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    for (const char* option : {"--list-modules", "--help", "--help-all", "-h", "--version", "-v"}) {
      if (std::strcmp(argv[i], option) == 0) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace korvex2
