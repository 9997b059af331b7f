// What a connection offers whose body database is at hand: taking body files into it and giving them out.
#ifndef KORVEX2_HOST_BODYFILESTORE_H
#define KORVEX2_HOST_BODYFILESTORE_H

#include <QByteArray>
#include <QString>

namespace korvex2 {

/// Names a body as BodySummary does: by its type and its number within the type, from 1.
struct BodyId {
  QString type;
  int number = 0;

  friend bool operator==(const BodyId& a, const BodyId& b) { return a.number == b.number && a.type == b.type; }
};

/// A body file's content as far as the operator needs it; when `problem` is not empty, why no body can take it:
/// "FILE, line 3: what is wrong".
struct BodyFileSummary {
  int markers = 0;
  int lines = 0;
  QString problem;
};

/// How an import ended.
struct ImportOutcome {
  QString problem;            ///< empty: the body has taken the file
  bool mayHaveTaken = false;  ///< with a problem: the answer was lost, so that the body may have taken the file or not
};

/// An optional part of a connection, see BackendConnection::bodyFiles(). All operations are called on the GUI thread.
/// Those that can fail return an empty text, or one line without a full stop that says what went wrong.
class BodyFileStore {
 public:
  BodyFileStore() = default;
  BodyFileStore(const BodyFileStore&) = delete;
  BodyFileStore& operator=(const BodyFileStore&) = delete;
  virtual ~BodyFileStore() = default;

  /// Why no body can take a file just now, whatever the file; empty when one can.
  virtual QString importObstacle() const = 0;
  virtual BodyFileSummary summaryOf(const QString& path) const = 0;
  /// The body takes the file's markers, lines and free text. On failure nothing has changed, unless that is not known.
  virtual ImportOutcome importBody(const BodyId& body, const QString& path) = 0;
  /// Writes the body to a file; on failure the file is what it was before.
  virtual QString exportBody(const BodyId& body, const QString& path) const = 0;
};

}  // namespace korvex2

#endif
