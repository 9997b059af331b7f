// The command line of the program korvex2-backend.
#ifndef KORVEX2_BACKEND_SERVEROPTIONS_H
#define KORVEX2_BACKEND_SERVEROPTIONS_H

#include <QString>
#include <QStringList>

#include "listenaddress.h"
#include "livesource.h"

namespace korvex2 {

/// What was asked for.
struct ServerOptions {
  ListenAddress listen;  ///< this machine only, unless asked otherwise
  QString databaseDir;   ///< empty: the user's own
  QString trajectory;    ///< empty: the recorded motion that comes with the program
  int rate = LiveSource::defaultRate;
};

/// Parses the arguments of the running application. Ends the program itself for --help and --version (exit code 0)
/// and for what it does not understand (message on standard error, exit code 1).
ServerOptions parseServerOptions(const QStringList& arguments);

}  // namespace korvex2

#endif
