// See bodyadjustmentmessagereceiver.h.
#include "bodyadjustmentmessagereceiver.h"

BodyAdjustmentMessageReceiver::BodyAdjustmentMessageReceiver(QObject* parent, IOManager* /*channel*/)
    : QObject(parent) {}

int BodyAdjustmentMessageReceiver::transmit_message(int /*kind*/, const char* sender, const char* text) {
  const QString message = QString::fromLatin1(text);
  if (message.startsWith(QLatin1String("OpenBodyAdjustmentDialog"), Qt::CaseSensitive)) {
    emit OpenBodyAdjustmentDialog(QString::fromLatin1(sender), message.section(QLatin1Char(' '), 1));
  }
  return 0;
}
