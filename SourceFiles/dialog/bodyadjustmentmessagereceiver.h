// Takes messages of other host modules and turns a request for the dialog into a signal.
#ifndef BODYADJUSTMENTMESSAGERECEIVER_H
#define BODYADJUSTMENTMESSAGERECEIVER_H

#include <QObject>
#include <QString>

#include "messagereceiver.h"

class IOManager;

/// Registered with the host under "BodyAdjustmentModule". A text that begins with "OpenBodyAdjustmentDialog" asks for
/// the dialog on the body whose key follows the first blank, for example "OpenBodyAdjustmentDialog standard|2".
class BodyAdjustmentMessageReceiver : public QObject, public MessageReceiver {
  Q_OBJECT

 public:
  /// The channel is accepted for the sake of the callers' habit and not kept.
  BodyAdjustmentMessageReceiver(QObject* parent, IOManager* channel);

  /// Returns 0 whatever the text. Null texts are ignored.
  int transmit_message(int kind, const char* sender, const char* text) override;

 signals:
  /// @param sender  the asking module's name
  /// @param key     the body key, empty when none was given
  void OpenBodyAdjustmentDialog(QString sender, QString key);
};

#endif
