// The host's input/output object: command channel to the backend, live lines, messages between modules.
#ifndef KORVEX2_IOMANAGER_H
#define KORVEX2_IOMANAGER_H

#include <QMetaType>

class MessageReceiver;
class Requester;

#if defined(__GNUC__)
#define KORVEX2_PRINTF(format_index, first_value) __attribute__((format(printf, format_index, first_value)))
#else
#define KORVEX2_PRINTF(format_index, first_value)
#endif

/// Owned by the host, handed to modules with ModuleInterface::set_param("CommandManager", ...).
///
/// Text-carrying operations take a printf-style format and its values; the channel formats the text with the decimal
/// point in every locale and adds what the backend protocol needs. They return 0 on success and another value when
/// the backend could not be reached, answered an error or answered something that does not parse; what the answer
/// holds then is not to be relied on. Answer buffers belong to the caller and hold at least 200 characters; the channel
/// writes at most 200 with the terminating zero.
///
/// All operations are called on the GUI thread, but for register_requester and unregister_requester, which may be
/// called on any thread.
///
/// Binary contract: 20 virtual slots in this order, no data, no virtual destructor. Unused slots are kept as named
/// placeholders so that the slots in use stay at their numbers. Never reorder.
class IOManager {
 public:
  virtual int reserved_slot_0() { return -1; }  // slot 0
  virtual int reserved_slot_1() { return -1; }  // slot 1
  virtual int reserved_slot_2() { return -1; }  // slot 2
  virtual int reserved_slot_3() { return -1; }  // slot 3
  /// Slot 4. Sends a complete protocol command ("korvex2 ...") and returns the raw answer ("korvex2 ok").
  virtual int send_raw_command(char* answer, const char* format, ...) KORVEX2_PRINTF(3, 4) = 0;
  virtual int reserved_slot_5() { return -1; }  // slot 5
  /// Slot 6. Asks for a text value.
  virtual int get_string(char* answer, const char* format, ...) KORVEX2_PRINTF(3, 4) = 0;
  /// Slot 7. Asks for an integer value.
  virtual int get_int(int* answer, const char* format, ...) KORVEX2_PRINTF(3, 4) = 0;
  virtual int reserved_slot_8() { return -1; }  // slot 8
  virtual int reserved_slot_9() { return -1; }  // slot 9
  /// Slot 10. Asks for `count` real values, written to values[0] .. values[count - 1].
  virtual int get_reals(double* values, int count, const char* format, ...) KORVEX2_PRINTF(4, 5) = 0;
  virtual int reserved_slot_11() { return -1; }  // slot 11
  /// Slot 12. Changes a setting.
  virtual int set_value(const char* format, ...) KORVEX2_PRINTF(2, 3) = 0;
  /// Slot 13. Subscribes to the live lines of one record kind ("fr", "ts", "6d", "6dw", "6dw2"). The requester stays
  /// the caller's.
  virtual int register_requester(const char* tag, Requester* requester) = 0;
  /// Slot 14. Ends a subscription; no call to the requester for this tag is in flight when it returns.
  virtual int unregister_requester(const char* tag, Requester* requester) = 0;
  virtual int reserved_slot_15() { return -1; }  // slot 15
  virtual int reserved_slot_16() { return -1; }  // slot 16
  /// Slot 17. Sends a text to the module registered as `receiver`; "standard" is the host's error and status report.
  virtual int send_message(const char* receiver, const char* sender, int kind, const char* text) = 0;
  /// Slot 18. Registers a receiver for messages addressed to `name`. The receiver stays the caller's.
  virtual int register_message_receiver(const char* name, MessageReceiver* receiver) = 0;
  /// Slot 19. Removes that registration.
  virtual int unregister_message_receiver(const char* name, MessageReceiver* receiver) = 0;

 protected:
  ~IOManager() = default;  // modules never delete the host's channel
};

Q_DECLARE_METATYPE(IOManager*)

#endif
