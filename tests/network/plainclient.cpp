// See plainclient.h.
#include "plainclient.h"

#include <poll.h>

#include <QDeadlineTimer>

namespace korvex2_test {

namespace {
constexpr int limitMs = 10000;
}

QByteArray PlainClient::ask(const QByteArray& line) {
  send(line + '\n');
  return readLine();
}

void PlainClient::send(const QByteArray& bytes) {
  if (!socket_.write(bytes)) {
    socket_.close();
  }
}

QByteArray PlainClient::readLine() {
  const QDeadlineTimer deadline(limitMs);
  bool ended = !isConnected();
  while (!ended && !received_.contains('\n') && !deadline.hasExpired()) {
    pollfd entry{socket_.descriptor(), POLLIN, 0};
    ::poll(&entry, 1, static_cast<int>(deadline.remainingTime()));
    received_ += socket_.read(ended);
  }
  if (ended) {
    socket_.close();
  }
  const int end = received_.indexOf('\n');
  if (end < 0) {
    return {};
  }
  const QByteArray line = received_.left(end);
  received_.remove(0, end + 1);
  return line;
}

}  // namespace korvex2_test
