// The backend's command language: answers one complete command line at a time.
#ifndef KORVEX2_BACKEND_INTERPRETER_H
#define KORVEX2_BACKEND_INTERPRETER_H

#include <QByteArray>

#include <set>

#include "bodydatabase.h"

namespace korvex2 {

/// Answers command lines. It knows nothing of how lines come and go: whoever has the bytes calls answer().
///
///   korvex2 get QUERY            ->  korvex2 set QUERY VALUE
///   korvex2 set NAME VALUES      ->  korvex2 ok
///   korvex2 tracking start|stop, korvex2 body transform ..., korvex2 body delete_marker ...  ->  korvex2 ok
///   anything wrong               ->  korvex2 err NUMBER "text"       (numbers: ErrorNumber)
///
/// Fields are separated by blanks; a field in double quotes may contain blanks. Descriptions are answered in double
/// quotes, target types in apostrophes. Numbers have a decimal point in every locale and enough digits to be read back
/// as the same double. An answer is one line of printable text without a line end.
///
/// Measurement and outputs are running state, not database: a new interpreter is idle and has only the output of
/// standard bodies ("6d") switched on. Not thread-safe.
class Interpreter {
 public:
  static constexpr int longestLine = 4096;

  /// `database` must outlive the interpreter.
  explicit Interpreter(BodyDatabase& database);

  /// Answer to one line; a line end behind it is ignored. Any bytes may come.
  QByteArray answer(const QByteArray& line);

  BodyDatabase& database() { return database_; }
  const BodyDatabase& database() const { return database_; }

  /// Whether the measurement runs ("mea"); it cannot while tracking is not available.
  bool isMeasuring() const { return measuring_ && database_.settings().trackingAvailable; }
  Outcome startMeasurement();
  void stopMeasurement() { measuring_ = false; }
  /// As the database's setting of that name; a running measurement ends when tracking goes.
  Outcome setTrackingAvailable(bool available);

  /// Whether lines of a kind ("6d", "6dw", "6dw2") are switched on for the output channel "chmon".
  bool isOutputActive(const QByteArray& kind) const { return activeOutputs_.count(kind) != 0; }
  void setOutputActive(const QByteArray& kind, bool active);

 private:
  BodyDatabase& database_;
  bool measuring_ = false;
  std::set<QByteArray> activeOutputs_;
};

}  // namespace korvex2

#endif
