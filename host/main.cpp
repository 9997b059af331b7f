// The program korvex2-frontend.
#include <chrono>
#include <clocale>
#include <cstdio>
#include <memory>

#include <QApplication>
#include <QDir>

#include "connectionactions.h"
#include "connectionsettings.h"
#include "databasefolder.h"
#include "demo/demonstration.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "modulesearch.h"
#include "networkconnection.h"
#include "programoptions.h"

namespace {

using namespace korvex2;

/// Must run before the application object is made. Returns whether a window could be seen.
bool choosePlatform(int argc, char** argv) {
  if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    return true;
  }
  const bool display = !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
  // Modules may need an application with widgets even where only text is printed.
  if (!display || printsOnly(argc, argv)) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  return display;
}

int listModules(const ProgramOptions& options) {
  const std::vector<ModuleFolder> folders = moduleFolders(ModuleSearch::ofThisProgram(options.pluginDir));
  ModuleSet modules(nullptr);
  modules.load(folders);
  std::fputs(qPrintable(moduleListing(modules.records(), folders)), stdout);
  return 0;
}

/// The demonstration starts from the bodies as shipped, and leaves the user's own alone.
QString freshDemonstrationDatabase(const QString& demonstrationDir) {
  QDir folder(QDir(demonstrationDir).filePath(QStringLiteral("database")));
  folder.removeRecursively();
  return folder.path();
}

LiveOptions liveOptions(const ProgramOptions& options, const QString& shipped) {
  LiveOptions live;
  live.rate = options.rate;
  live.trajectory = options.trajectory.isEmpty() ? shippedTrajectory(shipped) : options.trajectory;
  return live;
}

std::unique_ptr<BackendConnection> simulatedBackend(const ProgramOptions& options) {
  const QString shipped = shippedDataFolder(QCoreApplication::applicationDirPath());
  const LiveOptions live = liveOptions(options, shipped);
  if (!options.databaseDir.isEmpty()) {
    return std::make_unique<EmbeddedConnection>(options.databaseDir, QStringList(), live);
  }
  const QString folder =
      options.demonstrationDir.isEmpty() ? userDatabaseFolder() : freshDemonstrationDatabase(options.demonstrationDir);
  const QString problem = prepareDatabaseFolder(folder, shipped);
  return std::make_unique<EmbeddedConnection>(folder, problem.isEmpty() ? QStringList() : QStringList(problem), live);
}

std::unique_ptr<BackendConnection> connectBackend(const ProgramOptions& options) {
  if (!options.backend) {
    return simulatedBackend(options);
  }
  const std::chrono::milliseconds timeout(options.timeout > 0 ? options.timeout : ConnectionSettings::timeout());
  return std::make_unique<NetworkConnection>(*options.backend, NetworkOptions::answeredWithin(timeout));
}

}  // namespace

int main(int argc, char** argv) {
  const bool display = choosePlatform(argc, argv);
  QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
  QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");  // the application object took the user's; numbers in texts have a decimal point
  QApplication::setOrganizationName(QStringLiteral("korvex2"));
  QApplication::setApplicationName(QStringLiteral("frontend"));
  QApplication::setApplicationDisplayName(QStringLiteral("Korvex2 front end"));
  QApplication::setApplicationVersion(QStringLiteral(KORVEX2_VERSION));

  const ProgramOptions options = parseProgramOptions(QApplication::arguments());
  if (options.listModules) {
    return listModules(options);
  }
  if (!display && options.demonstrationDir.isEmpty()) {
    std::fputs("korvex2-frontend: there is no display to open the window on\n", stderr);
    return 1;
  }
  Frontend frontend(connectBackend(options));
  frontend.connections().offerSimulated([&options] { return simulatedBackend(options); });
  frontend.connections().setTimeout(options.timeout);
  frontend.loadModules(moduleFolders(ModuleSearch::ofThisProgram(options.pluginDir)));
  int result = 0;
  if (options.demonstrationDir.isEmpty()) {
    frontend.window().restoreLayout();
    frontend.window().show();
    result = QApplication::exec();
  } else if (frontend.connection().linkStatus().state != LinkState::connected) {
    const QStringList problems = frontend.connection().problems();
    std::fprintf(stderr, "korvex2-frontend: %s\n", qPrintable(problems.join(QLatin1Char(' '))));
    result = 1;
  } else {
    result = runDemonstration(
        frontend.window(), options.demonstrationDir,
        QDir(shippedDataFolder(QCoreApplication::applicationDirPath())).filePath(QStringLiteral("bodies")));
  }
  frontend.shutdown();
  return result;
}
