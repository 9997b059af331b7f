// See serverlogging.h.
#include "serverlogging.h"

Q_LOGGING_CATEGORY(logBackend, "korvex2.backend", QtWarningMsg)
