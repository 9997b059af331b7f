// See hostlogging.h.
#include "hostlogging.h"

Q_LOGGING_CATEGORY(logHost, "korvex2.host", QtWarningMsg)
Q_LOGGING_CATEGORY(logChannel, "korvex2.channel", QtWarningMsg)
