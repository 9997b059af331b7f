// What the host remembers of connections from one run to the next.
#ifndef KORVEX2_HOST_CONNECTIONSETTINGS_H
#define KORVEX2_HOST_CONNECTIONSETTINGS_H

#include <QStringList>

#include "backendaddress.h"

namespace korvex2 {

/// Kept in QSettings("korvex2", "frontend"), where anybody may have edited it: what makes no sense is left out.
class ConnectionSettings {
 public:
  static constexpr int mostRecent = 8;
  static constexpr int shortestTimeout = 100;  // milliseconds, as are the next two
  static constexpr int longestTimeout = 60000;
  static constexpr int usualTimeout = 2000;

  /// Addresses that the operator chose, the latest first, each once, as BackendAddress::text() writes them: connected
  /// to, or not reached yet when he went on trying.
  static QStringList recent();
  /// Puts an address in front of the recent ones.
  static void remember(const BackendAddress& address);

  /// Time within which a command has to be answered.
  static int timeout();
  static void setTimeout(int milliseconds);
};

}  // namespace korvex2

#endif
