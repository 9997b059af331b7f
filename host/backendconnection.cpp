// See backendconnection.h.
#include "backendconnection.h"

namespace korvex2 {

QByteArrayList BackendConnection::exchangeTogether(const QByteArrayList& lines) {
  QByteArrayList answers;
  for (const QByteArray& line : lines) {
    QByteArray answer;
    if (!exchange(line, answer)) {
      break;
    }
    answers += answer;
  }
  return answers;
}

}  // namespace korvex2
