// Keeps a module's change of a body from meeting other markers than those the module had read.
#ifndef KORVEX2_HOST_CHANGEGUARD_H
#define KORVEX2_HOST_CHANGEGUARD_H

#include <map>
#include <optional>
#include <utility>

#include <QByteArray>
#include <QString>

namespace korvex2 {

class BackendConnection;

/// A change of a body's markers is meant for the markers that its sender knows. Another program may have changed them
/// since, or the sender's own command did, whose answer was lost: then a transform would be done twice, and markers
/// that are written back would wipe out what the other program was told to be done.
///
/// So with a body's number of markers, which is how reading it begins, the body's state is asked for, a digest of its
/// markers, and noted. Every change of a body with a note travels between two lines: in front the backend is told to
/// refuse the change in any other state, behind it is asked which state the change has made, and that becomes the note.
/// When the change succeeded but that answer did not come, or nothing came at all, the note stays as it was: until the
/// body is read again its changes are refused then, for nobody knows what its sender believes. For the same reason a
/// reading that breaks off does not count.
///
/// The same state means the same markers at every backend, so notes outlast a connection.
class ChangeGuard {
 public:
  /// As BackendConnection::exchange(). `told` is set to what the operator has to be told, which is rarely anything.
  bool exchange(BackendConnection& connection, const QByteArray& line, QByteArray& answer, QString& told);

 private:
  using Body = std::pair<QByteArray, int>;  // type and number
  struct Note {
    QByteArray state;
    QByteArray before;  // what was noted before the body was read again; empty when nothing was
    bool told = false;  // the operator knows that the markers are other ones
  };
  using Notes = std::map<Body, Note>;

  bool beginReading(BackendConnection& connection, const Body& body, const QByteArray& line, QByteArray& answer);
  void readingBrokeOff(const std::optional<Body>& body);
  bool change(BackendConnection& connection, Notes::iterator noted, const QByteArray& line, QByteArray& answer,
              QString& told);

  Notes notes_;
};

}  // namespace korvex2

#endif
