// Result of a change or an order given to the backend: done, or a number and a text that say why not.
#ifndef KORVEX2_BACKEND_OUTCOME_H
#define KORVEX2_BACKEND_OUTCOME_H

#include <QString>

namespace korvex2 {

/// Numbers of `korvex2 err NUMBER "text"`. They are part of the protocol: new ones are appended, none is reused.
enum class ErrorNumber {
  None = 0,
  BadLine = 1,        ///< not a command line: bytes, quotes or length out of order
  Unknown = 2,        ///< no such command, query or setting
  WrongFields = 3,    ///< too few or too many fields
  BadValue = 4,       ///< a field that is not what belongs there
  NoSuchBody = 5,     ///< body type or body number
  NoSuchMarker = 6,   ///< marker number
  Locked = 7,         ///< the configuration may not be changed
  NotAvailable = 8,   ///< tracking, a mode or a body that cannot be used now
  TooFewMarkers = 9,  ///< a body would keep fewer than three markers
  NotSaved = 10,      ///< the change could not be written and was taken back
  Changed = 11,       ///< the body's markers are not those that the sender expects
};

/// Converts to true when the order was carried out. `text` is one sentence without quotes and line ends.
struct Outcome {
  ErrorNumber number = ErrorNumber::None;
  QString text;

  static Outcome done() { return {}; }
  static Outcome failed(ErrorNumber number, const QString& text) { return {number, text}; }
  explicit operator bool() const { return number == ErrorNumber::None; }
};

}  // namespace korvex2

#endif
