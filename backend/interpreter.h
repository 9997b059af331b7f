// The backend's command language: answers one complete command line at a time.
#ifndef KORVEX2_BACKEND_INTERPRETER_H
#define KORVEX2_BACKEND_INTERPRETER_H

#include <QByteArray>

#include "bodydatabase.h"
#include "clientstate.h"

namespace korvex2 {

/// Answers command lines. It knows nothing of how lines come and go: whoever has the bytes calls answer().
///
///   korvex2 get QUERY            ->  korvex2 set QUERY VALUE
///   korvex2 set NAME VALUES      ->  korvex2 ok
///   korvex2 tracking start|stop, korvex2 body transform ..., korvex2 body delete_marker ...,
///   korvex2 body expect ...      ->  korvex2 ok
///   anything wrong               ->  korvex2 err NUMBER "text"       (numbers: ErrorNumber)
///
/// Fields are separated by blanks; a field in double quotes may contain blanks. Descriptions are answered in double
/// quotes, target types in apostrophes. Numbers have a decimal point in every locale and enough digits to be read back
/// as the same double. An answer is one line of printable text without a line end.
///
/// Measurement and outputs are running state, not database: a new interpreter is idle. Several clients can share one
/// interpreter, each with a state of its own (see ClientState); one that is alone needs none. Not thread-safe.
class Interpreter {
 public:
  /// Without its line end. Long enough for a body file in one field.
  static constexpr int longestLine = 131072;

  /// `database` must outlive the interpreter.
  explicit Interpreter(BodyDatabase& database);

  /// Answer to one line of a client; a line end behind it is ignored. Any bytes may come.
  QByteArray answer(const QByteArray& line, ClientState& client);
  /// Answer to the only client, which is in this program: there is no network between.
  QByteArray answer(const QByteArray& line) { return answer(line, ownClient_); }

  /// Whether a line asks only: neither database nor measurement nor anything of a client is another one afterwards.
  static bool isQuery(const QByteArray& line) { return line.startsWith("korvex2 get "); }

  BodyDatabase& database() { return database_; }
  const BodyDatabase& database() const { return database_; }

  /// Whether the measurement runs ("mea"); it cannot while tracking is not available.
  bool isMeasuring() const { return measuring_ && database_.settings().trackingAvailable; }
  Outcome startMeasurement();
  void stopMeasurement() { measuring_ = false; }
  /// As the database's setting of that name; a running measurement ends when tracking goes.
  Outcome setTrackingAvailable(bool available);

  /// Whether lines of a kind ("6d", "6dw", "6dw2") are switched on for the only client's output channel "chmon".
  bool isOutputActive(const QByteArray& kind) const { return ownClient_.isOutputActive("chmon", kind); }

 private:
  BodyDatabase& database_;
  bool measuring_ = false;
  ClientState ownClient_;
};

}  // namespace korvex2

#endif
