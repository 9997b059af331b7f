// See connectionsettings.h.
#include "connectionsettings.h"

#include <optional>

#include <QSettings>

namespace korvex2 {

namespace {

const char* const recentKey = "connection/recent";
const char* const timeoutKey = "connection/timeout";

QSettings settings() { return QSettings(QStringLiteral("korvex2"), QStringLiteral("frontend")); }

}  // namespace

QStringList ConnectionSettings::recent() {
  QStringList addresses;
  const QStringList stored = settings().value(QLatin1String(recentKey)).toStringList();
  for (const QString& text : stored) {
    const std::optional<BackendAddress> address = BackendAddress::parse(text);
    if (address && !addresses.contains(address->text()) && addresses.size() < mostRecent) {
      addresses += address->text();
    }
  }
  return addresses;
}

void ConnectionSettings::remember(const BackendAddress& address) {
  QStringList addresses = recent();
  addresses.removeAll(address.text());
  addresses.prepend(address.text());
  settings().setValue(QLatin1String(recentKey), QStringList(addresses.mid(0, mostRecent)));
}

int ConnectionSettings::timeout() {
  bool ok = false;
  const int stored = settings().value(QLatin1String(timeoutKey)).toInt(&ok);
  return ok && stored >= shortestTimeout && stored <= longestTimeout ? stored : usualTimeout;
}

void ConnectionSettings::setTimeout(int milliseconds) {
  settings().setValue(QLatin1String(timeoutKey), qBound(shortestTimeout, milliseconds, longestTimeout));
}

}  // namespace korvex2
