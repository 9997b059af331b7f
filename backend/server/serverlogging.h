// Logging category of the backend as a server.
#ifndef KORVEX2_BACKEND_SERVERLOGGING_H
#define KORVEX2_BACKEND_SERVERLOGGING_H

#include <QLoggingCategory>

/// "korvex2.backend": clients that were dropped or turned away, and why. Who comes and goes is told, too, with
/// QT_LOGGING_RULES="korvex2.backend.info=true".
Q_DECLARE_LOGGING_CATEGORY(logBackend)

#endif
