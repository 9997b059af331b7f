// The program's command line.
#ifndef KORVEX2_HOST_PROGRAMOPTIONS_H
#define KORVEX2_HOST_PROGRAMOPTIONS_H

#include <optional>

#include <QString>
#include <QStringList>

#include "backendaddress.h"

namespace korvex2 {

/// What the operator asked for.
struct ProgramOptions {
  QString pluginDir;         ///< empty: the usual folders
  QString databaseDir;       ///< empty: the user's own
  QString demonstrationDir;  ///< empty: no demonstration
  QString trajectory;        ///< empty: the recorded motion that comes with the program
  int rate = 60;             ///< frames of live lines a second
  /// Backend on the network; nothing: the simulated one in this program.
  std::optional<BackendAddress> backend;
  int timeout = 0;  ///< milliseconds within which a command has to be answered; 0: as remembered
  bool listModules = false;
};

/// Parses the arguments of the running application. Ends the program itself for --help and --version (exit code 0)
/// and for what it does not understand (message on standard error, exit code 1).
ProgramOptions parseProgramOptions(const QStringList& arguments);

/// True when the raw arguments ask for something that prints and ends, so that no display is needed.
bool printsOnly(int argc, const char* const* argv);

}  // namespace korvex2

#endif
