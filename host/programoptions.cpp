// See programoptions.h.
#include "programoptions.h"

#include <cstring>
#include <optional>

#include <QCoreApplication>

#include "connectionsettings.h"
#include "programarguments.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ProgramOptions", text); }

std::optional<BackendAddress> addressValue(const ProgramArguments& given, const QCommandLineOption& option,
                                           const QList<QCommandLineOption>& simulation) {
  if (!given.isSet(option)) {
    return std::nullopt;
  }
  QString problem;
  const std::optional<BackendAddress> address = BackendAddress::parse(given.value(option), &problem);
  if (!address) {
    given.fail(tr("the option --%1 needs HOST or HOST:PORT, not \"%2\": %3")
                   .arg(option.names().constFirst(), given.value(option), problem));
  }
  for (const QCommandLineOption& other : simulation) {
    if (given.isSet(other)) {
      given.fail(tr("the option --%1 is for the simulated backend in this program and does not go together with --%2")
                     .arg(other.names().constFirst(), option.names().constFirst()));
    }
  }
  return address;
}

}  // namespace

ProgramOptions parseProgramOptions(const QStringList& arguments) {
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
  const QCommandLineOption trajectory = ProgramArguments::trajectoryOption();
  const QCommandLineOption rate = ProgramArguments::rateOption();
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
  ProgramArguments given(
      "korvex2-frontend",
      tr("Front end of an optical tracking system: loads modules and connects them with a tracking backend."),
      {pluginDir, database, trajectory, rate, backend, timeout, list, demonstration});
  given.parse(arguments);
  ProgramOptions options;
  options.pluginDir = given.folder(pluginDir);
  options.databaseDir = given.folder(database);
  options.demonstrationDir = given.folder(demonstration);
  options.trajectory = given.file(trajectory);
  options.rate = given.rate(rate);
  options.timeout = given.number(timeout, ConnectionSettings::shortestTimeout, ConnectionSettings::longestTimeout, 0);
  options.backend = addressValue(given, backend, {database, trajectory, rate});
  options.listModules = given.isSet(list);
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
