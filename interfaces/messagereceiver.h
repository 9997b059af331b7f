// Receiver of messages between host modules, implemented by modules and called by the host.
#ifndef KORVEX2_MESSAGERECEIVER_H
#define KORVEX2_MESSAGERECEIVER_H

/// Takes messages addressed to the name it was registered under (see IOManager::register_message_receiver).
///
/// Binary contract: exactly one virtual slot, no data, no virtual destructor.
class MessageReceiver {
 public:
  /// Slot 0. Called on the GUI thread.
  /// @param kind    kind of message, the sender's choice (1 for all of this project's messages)
  /// @param sender  name of the sending module, zero-terminated ASCII
  /// @param text    the message, zero-terminated ASCII
  /// @return 0
  virtual int transmit_message(int kind, const char* sender, const char* text) = 0;

 protected:
  ~MessageReceiver() = default;  // the host never deletes a receiver
};

#endif
