// The real backend program made to be what a scripted backend's fields say, and read back into them.
#ifndef KORVEX2_TESTS_MIRROREDBACKEND_H
#define KORVEX2_TESTS_MIRROREDBACKEND_H

#include <memory>
#include <string>
#include <vector>

#include "backendprocess.h"
#include "plainclient.h"
#include "scriptedbackend.h"

namespace korvex2_test {

/// One program serves all cases of a test program; it is started anew when bodies come or go, for which the protocol
/// has no command. Everything else is changed over a connection of its own.
class MirroredBackend {
 public:
  /// The one of this test program; it ends with the program's cases.
  static MirroredBackend& instance();

  /// Makes the program have what these fields say.
  /// @param tolerant  settings that are refused do not fail the case
  /// @return true when it was started anew, so that connections to it are gone
  bool bring(const ScriptedBackend& wanted, bool tolerant);
  /// Takes over what a text that changes something has changed.
  void readBack(ScriptedBackend& fields, const std::string& text);
  quint16 port() const { return process_.port(); }

 private:
  struct Known;

  MirroredBackend();
  ~MirroredBackend();
  friend struct std::default_delete<MirroredBackend>;

  void restart(const ScriptedBackend& wanted);
  void bringBody(const ScriptedBody& wanted, ScriptedBody& known);
  void set(const QByteArray& what);
  void command(const QByteArray& line);
  QByteArray get(const QByteArray& what);
  void readBody(ScriptedBody& body);
  bool flag(const QByteArray& what) { return get(what) == "yes"; }

  BackendProcess process_;
  std::unique_ptr<PlainClient> control_;
  std::unique_ptr<Known> known_;  // what the program has
  bool tolerant_ = false;
};

}  // namespace korvex2_test

#endif
