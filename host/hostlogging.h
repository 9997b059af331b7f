// Logging categories of the host.
#ifndef KORVEX2_HOST_HOSTLOGGING_H
#define KORVEX2_HOST_HOSTLOGGING_H

#include <QLoggingCategory>

/// "korvex2.host": modules, window, start and stop. Warnings and above by default; more with
/// QT_LOGGING_RULES="korvex2.host.debug=true".
Q_DECLARE_LOGGING_CATEGORY(logHost)
/// "korvex2.channel": traffic with the backend and messages between modules.
Q_DECLARE_LOGGING_CATEGORY(logChannel)

#endif
