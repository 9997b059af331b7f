// Keeps a module's change of a body from meeting other markers than those the module had read.
#ifndef KORVEX2_HOST_CHANGEGUARD_H
#define KORVEX2_HOST_CHANGEGUARD_H

#include <map>
#include <utility>

#include <QByteArray>
#include <QString>

namespace korvex2 {

class BackendConnection;

/// A transform or the deletion of a marker is meant for the markers that its sender knows. Another program may have
/// changed them since, or the sender's own command did, whose answer was lost: then doing it would do harm, and doing
/// it a second time would do it twice.
///
/// So before a module asks for a body's number of markers, which is how reading it begins, the backend is asked for the
/// body's state, a digest of its markers; and before a relative change the backend is told to refuse it in any other
/// state. A change that was answered with success ends what is known of the body; one without an answer does not, for
/// the state tells whether it was carried out.
class ChangeGuard {
 public:
  enum class Verdict {
    go,          ///< the line may be sent
    refused,     ///< it must not: `answer` says why
    notAnswered  ///< the backend is out of reach
  };

  /// Looks at a line that is about to be sent, and asks the backend what is needed for it.
  Verdict before(BackendConnection& connection, const QByteArray& line, QByteArray& answer);
  /// Learns from the answer to the line. Not to be called when none came: then what is known stays.
  /// @return what the operator has to be told; usually nothing
  QString after(const QByteArray& line, const QByteArray& answer);
  /// Another backend from now on.
  void clear() { states_.clear(); }

 private:
  using Body = std::pair<QByteArray, int>;  // type and number

  std::map<Body, QByteArray> states_;
};

}  // namespace korvex2

#endif
